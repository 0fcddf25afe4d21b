// Cross-line update strategy (see the comment at the top of the source for its rules).
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/layout/ICrossLineUpdate.h>

class KRLAYOUT_EXPORT KrCrossLineUpdate : public ICrossLineUpdate {
public:
    KrCrossLineUpdate();
    ~KrCrossLineUpdate() override;
    int UpdateCrossLine(KrRoutingLayout* layout, KrRoutingGrid* grid, KrRouteSegment* seg,
                        KrRoutingWayPoint*& start, KrRoutingWayPoint*& first,
                        KrRoutingWayPoint*& last, KrRoutingWayPoint*& hitPoint,
                        KrRoutingWayPoint*& movedRoot, std::vector<KrRouteSegment*>& movedSegments,
                        std::vector<KrRoutingWayPoint*>& points) override;

private:
    // The selection at an occupied way point: the first movable segment at `at` (at most one; the list is not changed).
    static KrRouteSegment* PickFirstMovable(KrRouteSegment* seg, KrRoutingWayPoint* at,
                              std::vector<KrRouteSegment*> const& candidates);
};
