#include <krlayout/api/KrFormboardLayoutRun.h>

#include <krlayout/api/KrLayoutResult.h>
#include <krlayout/api/KrLayoutTypeRegistry.h>

KrFormboardLayoutRun::KrFormboardLayoutRun()
    : KrLayoutRun(), clearance(-1.0), crowded(0), placedSegments(0), usedClearance(0.0)
{
}

KrFormboardLayoutRun::~KrFormboardLayoutRun() = default;

int KrFormboardLayoutRun::SetClearance(double value)
{
    clearance = value;
    return 0;
}

long KrFormboardLayoutRun::GetCrowdedPointCount() const
{
    return crowded;
}

long KrFormboardLayoutRun::GetPlacedSegmentCount() const
{
    return placedSegments;
}

double KrFormboardLayoutRun::GetUsedClearance() const
{
    return usedClearance;
}

int KrFormboardLayoutRun::LayOut(IRoutingSketch* routingSketch, int /*layoutType*/)
{
    KrLayoutResult figures;
    int const status = KrLayoutTypeRegistry::LayOut(routingSketch, KrLayoutTypeRegistry::FormboardType,
                                                    clearance, figures);
    crowded = figures.crowdedPoints;
    placedSegments = figures.placedSegments;
    usedClearance = figures.usedClearance;
    return status;
}
