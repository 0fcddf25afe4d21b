#include <krlayout/api/KrFormboardLayoutRun.h>

#include <krlayout/layout/KrFormboardLayout.h>

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
    KrFormboardLayout layout;
    layout.SetClearance(clearance);
    int const status = layout.LayOut(routingSketch);
    layout.GetCrowdedPointCount(crowded);
    layout.GetPlacedSegmentCount(placedSegments);
    layout.GetUsedClearance(usedClearance);
    return status;
}
