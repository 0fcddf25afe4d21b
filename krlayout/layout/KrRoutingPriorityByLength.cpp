#include <krlayout/layout/KrRoutingPriorityByLength.h>

#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteSegment.h>

KrRoutingPriorityByLength::KrRoutingPriorityByLength() = default;

KrRoutingPriorityByLength::KrRoutingPriorityByLength(KrRoutingPriorityByLength const&) = default;

KrRoutingPriorityByLength& KrRoutingPriorityByLength::operator=(KrRoutingPriorityByLength const&) = default;

KrRoutingPriorityByLength::~KrRoutingPriorityByLength() = default;

// One pass against the current best only: tolerant comparisons, and the strict less-than keeps
// the earlier segment on a tie.
int KrRoutingPriorityByLength::GetPriorestSegment(std::vector<KrRouteSegment*>& segments,
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
        double lBest = 0.0;
        double lC = 0.0;
        best->GetLength(lBest);
        c->GetLength(lC);
        if (KrGeoUtility::LessThan(lBest, lC, tol)) {
            best = c;
        } else if (KrGeoUtility::IsEqual(lBest, lC, tol)) {
            double dBest = 0.0;
            double dC = 0.0;
            best->GetDiameter(dBest);
            c->GetDiameter(dC);
            if (KrGeoUtility::LessThan(dBest, dC, tol)) {
                best = c;
            }
        }
    }
    result = best;
    return 0;
}
