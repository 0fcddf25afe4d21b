// Ranks route segments by length, then by diameter, then by list order.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/layout/IPriority.h>

class KRLAYOUT_EXPORT KrRoutingPriorityByLength : public IPriority {
public:
    KrRoutingPriorityByLength();
    KrRoutingPriorityByLength(KrRoutingPriorityByLength const& other);
    KrRoutingPriorityByLength& operator=(KrRoutingPriorityByLength const& other);
    ~KrRoutingPriorityByLength() override;

    // Largest length; equal lengths (within 1e-5): the larger diameter; still equal: the earliest.
    // Null entries are skipped; an empty list (or one of nulls only) gives null. Returns 0.
    int GetPriorestSegment(std::vector<KrRouteSegment*>& segments, KrRouteSegment*& result) override;
};
