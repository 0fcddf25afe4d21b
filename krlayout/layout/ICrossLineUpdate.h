// Inspects a candidate placement before a child segment is placed and makes room where it is blocked.
#pragma once

#include <krlayout/krlayout_export.h>

#include <vector>

class KrRouteSegment;
class KrRoutingGrid;
class KrRoutingLayout;
class KrRoutingWayPoint;

class KRLAYOUT_EXPORT ICrossLineUpdate {
public:
    virtual ~ICrossLineUpdate();
    // Returns 0 when the candidate placement stands (after moving, where needed, a segment in its
    // way) and 1 when seg is vertical and its path runs through a way point other segments use.
    // hitPoint, movedRoot and movedSegments report what was found and moved; points is the point
    // list of the placement.
    virtual int UpdateCrossLine(KrRoutingLayout* layout, KrRoutingGrid* grid, KrRouteSegment* seg,
                                KrRoutingWayPoint*& start, KrRoutingWayPoint*& first,
                                KrRoutingWayPoint*& last, KrRoutingWayPoint*& hitPoint,
                                KrRoutingWayPoint*& movedRoot,
                                std::vector<KrRouteSegment*>& movedSegments,
                                std::vector<KrRoutingWayPoint*>& points) = 0;

private:
    // The two strategies share the node walk; they differ in the first-crossing test and in the
    // rule that picks the segment to move.
    friend class KrCrossLineUpdate;
    friend class KrCrossLineUpdateByLength;

    // Picks at most one of the segments using way point `at` (candidates is not changed).
    using PickRule = KrRouteSegment* (*)(KrRouteSegment* seg, KrRoutingWayPoint* at,
                                         std::vector<KrRouteSegment*> const& candidates);

    // A segment whose subtree may be moved to free `at`: placed, not seg itself, with a root
    // point that can be read and lies elsewhere than `at`.
    static bool MovableAt(KrRouteSegment* seg, KrRoutingWayPoint* at, KrRouteSegment* candidate);

    // Walks the way points from first to last. At the first one that segments use: hitPoint is
    // set to it; a vertical seg returns 1; otherwise the subtree of the segment `pick` chooses
    // is moved past last (movedRoot = its root point, the segment appended to movedSegments).
    // Returns 0 otherwise.
    static int WalkOccupiedPoints(KrRoutingLayout* layout, KrRoutingGrid* grid,
                                  KrRouteSegment* seg, KrRoutingWayPoint* first,
                                  KrRoutingWayPoint* last, KrRoutingWayPoint*& hitPoint,
                                  KrRoutingWayPoint*& movedRoot,
                                  std::vector<KrRouteSegment*>& movedSegments, PickRule pick);
};
