// Cross-line update of layout type 0.
//
// Selection at an occupied way point: the first segment in connection order at that point that
// is placed and does not hang from it (its root point lies elsewhere), so that moving its subtree
// takes the point's use away; segments hanging from the point would leave their parent there.
// Over random trees this picks the same segment as "the last such segment", "one ending there
// first" and "one passing through first", and far fewer crossings remain than when nothing is
// moved.
//
// What the call carries back (hitPoint and movedRoot are set to null first; movedSegments is
// only appended to): hitPoint is the occupied way point the walk stopped at (also when a
// vertical seg is rejected there), movedRoot the root point of the segment whose subtree was
// moved, and movedSegments gets that segment appended. A move made for a crossing found by
// GetFirstCrossLine reports nothing (hitPoint and movedRoot stay null).
#include <krlayout/layout/KrCrossLineUpdate.h>

#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/layout/KrRoutingLayout.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>

KrCrossLineUpdate::KrCrossLineUpdate() = default;
KrCrossLineUpdate::~KrCrossLineUpdate() = default;

int KrCrossLineUpdate::UpdateCrossLine(KrRoutingLayout* layout, KrRoutingGrid* grid,
                                       KrRouteSegment* seg, KrRoutingWayPoint*& start,
                                       KrRoutingWayPoint*& first, KrRoutingWayPoint*& last,
                                       KrRoutingWayPoint*& hitPoint, KrRoutingWayPoint*& movedRoot,
                                       std::vector<KrRouteSegment*>& movedSegments,
                                       std::vector<KrRoutingWayPoint*>&) {
    hitPoint = nullptr;
    movedRoot = nullptr;
    if (layout == nullptr || grid == nullptr || seg == nullptr || start == nullptr ||
        first == nullptr || last == nullptr) {
        return 1;
    }
    e_AngleArea type = e_AngleAreaNone;
    seg->GetType(type);  // read, not used further
    bool found = false;
    layout->GetFirstCrossLine(grid, seg, start, first, last, found);
    if (found) {
        return 0;
    }
    return WalkOccupiedPoints(layout, grid, seg, first, last, hitPoint, movedRoot, movedSegments,
                              &PickFirstMovable);
}

KrRouteSegment* KrCrossLineUpdate::PickFirstMovable(KrRouteSegment* seg, KrRoutingWayPoint* at,
                                                    std::vector<KrRouteSegment*> const& candidates) {
    for (KrRouteSegment* c : candidates) {
        if (MovableAt(seg, at, c)) {
            return c;
        }
    }
    return nullptr;
}
