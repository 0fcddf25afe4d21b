#include <krlayout/layout/KrRoutingPriorityByLength.h>

#include <krlayout/model/KrRouteSegment.h>

KrRoutingPriorityByLength::KrRoutingPriorityByLength() = default;

KrRoutingPriorityByLength::KrRoutingPriorityByLength(KrRoutingPriorityByLength const&) = default;

KrRoutingPriorityByLength& KrRoutingPriorityByLength::operator=(KrRoutingPriorityByLength const&) = default;

KrRoutingPriorityByLength::~KrRoutingPriorityByLength() = default;

// The shared one-pass selection (IPriority::SelectBest), length first.
int KrRoutingPriorityByLength::GetPriorestSegment(std::vector<KrRouteSegment*>& segments, KrRouteSegment*& result)
{
    result = SelectBest(segments, false);
    return 0;
}
