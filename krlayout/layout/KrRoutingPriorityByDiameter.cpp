#include <krlayout/layout/KrRoutingPriorityByDiameter.h>

#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteSegment.h>

KrRoutingPriorityByDiameter::KrRoutingPriorityByDiameter() = default;

KrRoutingPriorityByDiameter::KrRoutingPriorityByDiameter(KrRoutingPriorityByDiameter const&) = default;

KrRoutingPriorityByDiameter& KrRoutingPriorityByDiameter::operator=(KrRoutingPriorityByDiameter const&) = default;

KrRoutingPriorityByDiameter::~KrRoutingPriorityByDiameter() = default;

// One pass against the current best only: tolerant comparisons, and the strict less-than keeps
// the earlier segment on a tie.
int KrRoutingPriorityByDiameter::GetPriorestSegment(std::vector<KrRouteSegment*>& segments,
                                                    KrRouteSegment*& result)
{
    double const tol = 1e-5;
    KrRouteSegment* best = nullptr;
    for (KrRouteSegment* c : segments) {
        if (c == nullptr) {
            continue;
        }
        if (best == nullptr) {
            best = c;
            continue;
        }
        double dBest = 0.0;
        double dC = 0.0;
        best->GetDiameter(dBest);
        c->GetDiameter(dC);
        if (KrGeoUtility::LessThan(dBest, dC, tol)) {
            best = c;
        } else if (KrGeoUtility::IsEqual(dBest, dC, tol)) {
            double lBest = 0.0;
            double lC = 0.0;
            best->GetLength(lBest);
            c->GetLength(lC);
            if (KrGeoUtility::LessThan(lBest, lC, tol)) {
                best = c;
            }
        }
    }
    result = best;
    return 0;
}

bool KrRoutingPriorityByDiameter::IsPriorerThan(KrRouteSegment*, KrRouteSegment*) const
{
    return true;
}

bool KrRoutingPriorityByDiameter::IsCloserThan(KrRouteSegment*, KrRouteSegment*) const
{
    return true;
}
