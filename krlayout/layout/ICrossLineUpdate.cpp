#include <krlayout/layout/ICrossLineUpdate.h>

#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/layout/KrRoutingLayout.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>

ICrossLineUpdate::~ICrossLineUpdate() = default;

// A segment that hangs from `at` (its root point is there) cannot free `at`: moving its subtree
// leaves its parent in place. Unplaced segments have no geometry to move.
bool ICrossLineUpdate::MovableAt(KrRouteSegment* seg, KrRoutingWayPoint* at,
                                 KrRouteSegment* candidate) {
    if (candidate == nullptr || candidate == seg) {
        return false;
    }
    bool placed = false;
    candidate->IsRedefine(placed);
    KrRoutingWayPoint* root = nullptr;
    if (!placed || candidate->GetRootPoint(root) != 0 || root == nullptr) {
        return false;
    }
    bool here = false;
    root->IsSamePoint(at, here);
    return !here;
}

int ICrossLineUpdate::WalkOccupiedPoints(KrRoutingLayout* layout, KrRoutingGrid* grid,
                                         KrRouteSegment* seg, KrRoutingWayPoint* first,
                                         KrRoutingWayPoint* last, KrRoutingWayPoint*& hitPoint,
                                         KrRoutingWayPoint*& movedRoot,
                                         std::vector<KrRouteSegment*>& movedSegments, PickRule pick) {
    std::vector<KrRoutingWayPoint*> nodes;
    grid->GetAllNodeBetweenTwoPoint(first, last, nodes);
    for (KrRoutingWayPoint* w : nodes) {
        if (w == nullptr) {
            continue;
        }
        std::vector<KrRouteSegment*> users;
        w->GetConnectSegment(users);
        if (users.empty()) {
            continue;
        }
        hitPoint = w;
        bool vertical = false;
        seg->IsVer(vertical);
        if (vertical) {
            return 1;  // the driver tries the next row out
        }
        KrRouteSegment* picked = pick(seg, w, users);
        KrRoutingWayPoint* root = nullptr;
        if (picked != nullptr && picked->GetRootPoint(root) == 0 && root != nullptr) {
            movedRoot = root;
            if (layout->MoveSegment(grid, seg, w, last, root) == 0) {
                movedSegments.push_back(picked);
            }
        }
        break;
    }
    return 0;
}
