// Cross-line update of layout type 1.
//
// First-crossing test: GetFirstCrossLine over the candidate's first step (start to first) and,
// when that finds nothing, over its run (first to last), so a crossing anywhere on the candidate
// path moves the crossed subtree past the end of the run. At most one subtree is moved. Handled
// segments that share an end with the candidate (its parent and its siblings at start) are never
// counted: touching them at the start way point is not a crossing.
//
// Selection at an occupied way point: the last segment in connection order at that point that is
// placed and does not hang from it (its root point lies elsewhere).
//
// Both were chosen by measuring crossing and overlapping pairs of segments over random trees:
// testing the whole path leaves fewer of both than testing the first step only or not testing,
// and the last movable segment leaves fewer than the first one.
//
// What the call carries back: as the type 0 strategy (hitPoint the occupied way point, movedRoot
// the root point of the moved subtree, movedSegments the segment picked there; nothing for a
// crossing move).
#include <krlayout/layout/KrCrossLineUpdateByLength.h>

#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/layout/KrRoutingLayout.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>

KrCrossLineUpdateByLength::KrCrossLineUpdateByLength() = default;
KrCrossLineUpdateByLength::~KrCrossLineUpdateByLength() = default;

int KrCrossLineUpdateByLength::UpdateCrossLine(KrRoutingLayout* layout, KrRoutingGrid* grid,
                                               KrRouteSegment* seg, KrRoutingWayPoint*& start,
                                               KrRoutingWayPoint*& first, KrRoutingWayPoint*& last,
                                               KrRoutingWayPoint*& hitPoint,
                                               KrRoutingWayPoint*& movedRoot,
                                               std::vector<KrRouteSegment*>& movedSegments,
                                               std::vector<KrRoutingWayPoint*>&) {
    hitPoint = nullptr;
    movedRoot = nullptr;
    if (layout == nullptr || grid == nullptr || seg == nullptr || start == nullptr ||
        first == nullptr || last == nullptr) {
        return 1;
    }
    bool found = false;
    layout->GetFirstCrossLine(grid, seg, start, first, last, found);
    if (!found) {
        layout->GetFirstCrossLine(grid, seg, first, last, last, found);
    }
    return WalkOccupiedPoints(layout, grid, seg, first, last, hitPoint, movedRoot, movedSegments,
                              &PickLastMovable);
}

KrRouteSegment* KrCrossLineUpdateByLength::PickLastMovable(KrRouteSegment* seg, KrRoutingWayPoint* at,
                                                           std::vector<KrRouteSegment*> const& candidates) {
    for (auto it = candidates.rbegin(); it != candidates.rend(); ++it) {
        if (MovableAt(seg, at, *it)) {
            return *it;
        }
    }
    return nullptr;
}
