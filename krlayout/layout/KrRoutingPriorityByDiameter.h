// Ranks route segments by diameter, then by length, then by list order.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/layout/IPriority.h>

class KRLAYOUT_EXPORT KrRoutingPriorityByDiameter : public IPriority {
public:
    KrRoutingPriorityByDiameter();
    KrRoutingPriorityByDiameter(KrRoutingPriorityByDiameter const& other);
    KrRoutingPriorityByDiameter& operator=(KrRoutingPriorityByDiameter const& other);
    ~KrRoutingPriorityByDiameter() override;

    // Largest diameter; equal diameters (within 1e-5): the longer; still equal: the earliest.
    // Null entries are skipped; an empty list (or one of nulls only) gives null. Returns 0.
    int GetPriorestSegment(std::vector<KrRouteSegment*>& segments, KrRouteSegment*& result) override;

    // Placeholders: always true, for any arguments.
    bool IsPriorerThan(KrRouteSegment* a, KrRouteSegment* b) const;
    bool IsCloserThan(KrRouteSegment* a, KrRouteSegment* b) const;
};
