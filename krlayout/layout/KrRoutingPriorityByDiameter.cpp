#include <krlayout/layout/KrRoutingPriorityByDiameter.h>

#include <krlayout/model/KrRouteSegment.h>

KrRoutingPriorityByDiameter::KrRoutingPriorityByDiameter() = default;

KrRoutingPriorityByDiameter::KrRoutingPriorityByDiameter(KrRoutingPriorityByDiameter const&) = default;

KrRoutingPriorityByDiameter& KrRoutingPriorityByDiameter::operator=(KrRoutingPriorityByDiameter const&) = default;

KrRoutingPriorityByDiameter::~KrRoutingPriorityByDiameter() = default;

// The shared one-pass selection (IPriority::SelectBest), diameter first.
int KrRoutingPriorityByDiameter::GetPriorestSegment(std::vector<KrRouteSegment*>& segments, KrRouteSegment*& result)
{
    result = SelectBest(segments, true);
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
