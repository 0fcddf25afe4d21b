#include <krlayout/layout/IPriority.h>

#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteSegment.h>

IPriority::~IPriority() = default;

namespace {

void ReadKeys(KrRouteSegment* seg, bool byDiameter, double& primary, double& secondary)
{
    double diameter = 0.0;
    double length = 0.0;
    seg->GetDiameter(diameter);
    seg->GetLength(length);
    primary = byDiameter ? diameter : length;
    secondary = byDiameter ? length : diameter;
}

}  // namespace

KrRouteSegment* IPriority::SelectBest(std::vector<KrRouteSegment*> const& segments, bool byDiameter)
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
        double pBest = 0.0, sBest = 0.0, pC = 0.0, sC = 0.0;
        ReadKeys(best, byDiameter, pBest, sBest);
        ReadKeys(c, byDiameter, pC, sC);
        if (KrGeoUtility::LessThan(pBest, pC, tol) ||
            (KrGeoUtility::IsEqual(pBest, pC, tol) && KrGeoUtility::LessThan(sBest, sC, tol))) {
            best = c;
        }
    }
    return best;
}
