// The layout driver: lays the root segment from the origin, then walks the segment tree outward,
// giving the segments at every unhandled end their directions and placing them row by row.
#include <krlayout/layout/KrRoutingLayout.h>

#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/grid/KrSegmentIndex.h>
#include <krlayout/layout/IAssignAngle.h>
#include <krlayout/layout/ICrossLineUpdate.h>
#include <krlayout/layout/IPriority.h>
#include <krlayout/layout/KrCrossLineUpdate.h>
#include <krlayout/layout/KrCrossLineUpdateByLength.h>
#include <krlayout/layout/KrRoutingAssignAngleAllPositiveByDiameter.h>
#include <krlayout/layout/KrRoutingAssignAngleByLength.h>
#include <krlayout/layout/KrRoutingPriorityByDiameter.h>
#include <krlayout/layout/KrRoutingPriorityByLength.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/sketch/IRoutingSketch.h>
#include <krlayout/sketch/KrSketch.h>  // the grid gives its sketch as a KrSketch*, with its placed segments

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace {

constexpr double kTol = GEO_TOLERANCE;

// Upper limit of the rows that count as spanned by placed geometry in the row-push bound.
constexpr double kMaxSpannedRows = 1.0e9;

bool IsVerticalAngle(double angle) {
    return KrGeoUtility::IsEqual(angle, HALF_PI, kTol) ||
           KrGeoUtility::IsEqual(angle, KR_THREE_HALF_PI, kTol);
}

// |sin| of a child's direction angle, kept with the angle it was computed from.
struct SineOf {
    double angle;
    double sine;
};

// The most nearly horizontal child (smallest |sin| of its direction angle). A later child
// replaces the current choice only when its |sin| is smaller by LessThan at 1e-5, so near-ties
// go to the earlier one. cache runs parallel to children (or is empty); an entry is reused only
// while the child's angle is the one it was computed from, and the cache is rewritten.
KrRouteSegment* ChooseChild(std::vector<KrRouteSegment*> const& children, std::vector<SineOf>& cache) {
    bool const reuse = cache.size() == children.size();
    KrRouteSegment* best = nullptr;
    double bestSin = 0.0;
    for (std::size_t i = 0; i < children.size(); ++i) {
        KrRouteSegment* c = children[i];
        if (c == nullptr) {
            continue;
        }
        double angle = 0.0;
        c->GetDirectAngle(angle);
        if (!reuse || !(cache[i].angle == angle)) {
            if (!reuse) {
                cache.resize(children.size(), SineOf{0.0, 0.0});
            }
            cache[i] = SineOf{angle, std::fabs(std::sin(angle))};
        }
        double const s = cache[i].sine;
        if (best == nullptr || KrGeoUtility::LessThan(s, bestSin, kTol)) {
            best = c;
            bestSin = s;
        }
    }
    if (!reuse) {
        cache.resize(children.size(), SineOf{0.0, 0.0});
    }
    return best;
}

// The unhandled segments at p, as KrRoutingWayPoint::GetUnHandledSegments lists them (parent
// lines in order, each segment once, at its first line); repeats are removed by sorting rather
// than by a lookup in the list per line, which is quadratic where thousands of segments meet.
void UnhandledAt(KrRoutingWayPoint* p, std::vector<KrRouteSegment*>& out) {
    std::vector<KrRouteCADLine*> lines;
    p->GetParent(lines);
    std::vector<std::pair<KrRouteSegment*, std::size_t>> found;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        KrRouteSegment* s = nullptr;
        if (lines[i] != nullptr) {
            lines[i]->GetParentSegment(s);
        }
        bool handled = true;
        if (s != nullptr) {
            s->IsRedefine(handled);
        }
        if (!handled) {
            found.emplace_back(s, i);
        }
    }
    std::sort(found.begin(), found.end(), [](auto const& x, auto const& y) {
        return std::less<KrRouteSegment*>()(x.first, y.first) ||
               (x.first == y.first && x.second < y.second);
    });
    found.erase(std::unique(found.begin(), found.end(),
                            [](auto const& x, auto const& y) { return x.first == y.first; }),
                found.end());
    std::sort(found.begin(), found.end(),
              [](auto const& x, auto const& y) { return x.second < y.second; });
    for (auto const& f : found) {
        out.push_back(f.first);
    }
}

// True when the unhandled segments met along p's parent lines, in order and counting repeats,
// are exactly `expected` (a list without repeats), which is then what UnhandledAt returns. The
// driver asks after every child, and the answer is nearly always the previous list without the
// child just placed; this check costs one pass and no allocation (lines is a reused buffer).
bool UnhandledAre(KrRoutingWayPoint* p, std::vector<KrRouteSegment*> const& expected,
                  std::vector<KrRouteCADLine*>& lines) {
    lines.clear();
    p->GetParent(lines);
    std::size_t next = 0;
    for (KrRouteCADLine* line : lines) {
        KrRouteSegment* s = nullptr;
        if (line != nullptr) {
            line->GetParentSegment(s);
        }
        bool handled = true;
        if (s != nullptr) {
            s->IsRedefine(handled);
        }
        if (handled) {
            continue;
        }
        if (next >= expected.size() || expected[next] != s) {
            return false;
        }
        ++next;
    }
    return next == expected.size();
}

// Moves every entry that segs holds when the call starts; KrRouteSegment::Move appends the
// segments it moves itself (those its lines would cross) to segs, and these are not moved again.
// Each moved segment is noted in the index (when there is one) before the next move asks it.
void MoveListed(KrRoutingGrid* grid, double dx, double dy, std::vector<KrRouteSegment*>& segs,
                KrSegmentIndex* index) {
    std::size_t const count = segs.size();
    for (std::size_t i = 0; i < count; ++i) {
        KrRouteSegment* s = segs[i];  // re-read: the list may have grown and moved in memory
        if (s != nullptr) {
            s->Move(grid, dx, dy, segs);
            if (index != nullptr) {
                index->MarkDirty(s);
            }
        }
    }
}

// (next - p) in grid coordinates.
void Offset(KrRoutingWayPoint* p, KrRoutingWayPoint* next, double& dx, double& dy) {
    double px = 0.0;
    double py = 0.0;
    double nx = 0.0;
    double ny = 0.0;
    p->GetGridCoord(px, py);
    next->GetGridCoord(nx, ny);
    dx = nx - px;
    dy = ny - py;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Construction and strategies.

KrRoutingLayout::KrRoutingLayout()
    : crossLineUpdate(nullptr),
      assignAngle(nullptr),
      priority(nullptr),
      handledIndex(),
      handledIndexEnabled(true) {}

KrRoutingLayout::~KrRoutingLayout() {
    delete crossLineUpdate;
    delete assignAngle;
    delete priority;
}

namespace {

// Replaces `field` by a new strategy of the class the layout type selects: ByDiameter for type 0,
// ByLength for type 1. The old strategy is released, so a layout object can be used for several
// LayOut calls without leaking. An unknown type returns 1 and leaves the field as it was.
template <class Base, class ByDiameter, class ByLength>
int ReplaceStrategy(e_LayOutType type, Base*& field) {
    Base* made = nullptr;
    switch (type) {
        case LayOutByDiameter:
            made = new ByDiameter();
            break;
        case LayOutByLength:
            made = new ByLength();
            break;
        default:
            return 1;
    }
    delete field;
    field = made;
    return 0;
}

}  // namespace

int KrRoutingLayout::CreatePriority(e_LayOutType type) {
    return ReplaceStrategy<IPriority, KrRoutingPriorityByDiameter, KrRoutingPriorityByLength>(
        type, priority);
}

int KrRoutingLayout::CreateAssignAngle(e_LayOutType type) {
    return ReplaceStrategy<IAssignAngle, KrRoutingAssignAngleAllPositiveByDiameter,
                           KrRoutingAssignAngleByLength>(type, assignAngle);
}

int KrRoutingLayout::CreateCrossLineUpdate(e_LayOutType type) {
    return ReplaceStrategy<ICrossLineUpdate, KrCrossLineUpdate, KrCrossLineUpdateByLength>(
        type, crossLineUpdate);
}

int KrRoutingLayout::GetIPriority(IPriority*& p) {
    p = priority;
    return 0;
}

// ---------------------------------------------------------------------------------------------
// The layout.

int KrRoutingLayout::LayOut(IRoutingSketch* sketch, e_LayOutType type) {
    CreateCrossLineUpdate(type);
    CreateAssignAngle(type);
    CreatePriority(type);
    if (sketch == nullptr) {
        return 1;
    }
    // Guard: an unknown type creates no strategy, and there is nothing to lay out with.
    if (type != LayOutByDiameter && type != LayOutByLength) {
        return 1;
    }

    std::vector<KrRouteSegment*> segments;
    sketch->GetAllSegments(segments);
    if (segments.empty()) {
        return 0;
    }
    KrRouteSegment* root = nullptr;
    priority->GetPriorestSegment(segments, root);
    // The grid is read before the origin is looked up, so that a sketch without a grid fails
    // cleanly instead of asking a missing grid for a node.
    KrRoutingGrid* grid = nullptr;
    sketch->GetGrid(grid);
    if (root == nullptr || grid == nullptr) {
        return 1;
    }
    KrRoutingWayPoint* origin = nullptr;
    sketch->GetGridNode(0.0, 0.0, origin);
    if (origin == nullptr) {
        return 1;
    }

    // The index of placed segments answers the first-crossing search, and the grid's crossing
    // moves when the grid's sketch is the one laid out (their candidates are its store).
    KrSketch* store = nullptr;
    grid->GetSketch(store);
    struct Lend {
        KrRoutingGrid* grid;
        ~Lend() { grid->segmentIndex = nullptr; }
    } lend{grid};
    if (handledIndexEnabled) {
        double xs = 0.0;
        double ys = 0.0;
        grid->GetGridSpan(xs, ys);
        handledIndex.reset(new KrSegmentIndex(segments, xs, ys));
        if (store != nullptr && static_cast<IRoutingSketch*>(store) == sketch) {
            grid->segmentIndex = handledIndex.get();
        }
    }

    // The first angle is set and immediately replaced: the root is laid toward -x.
    root->SetDirectAngle(0.0);
    root->SetDirectAngle(KR_PI);
    KrRoutingWayPoint* next = nullptr;
    grid->GetNextHorGridNode(origin, KR_PI, next);
    KrRoutingWayPoint* end = nullptr;
    grid->GetEndPointByLength(root, origin, next, end);
    std::vector<KrRoutingWayPoint*> points;
    grid->GetAllNodeBetweenTwoPoint(origin, end, points);
    root->SetType(e_AngleAreaRoot);
    PlaceOneSegment(points, root, grid);  // its result is not passed on

    grid->segmentIndex = nullptr;
    handledIndex.reset();
    sketch->CheckRouteSegment();
    return 0;
}

int KrRoutingLayout::PlaceSegment(std::vector<KrRoutingWayPoint*>& points, KrRouteSegment* seg) {
    if (seg == nullptr) {
        return 1;
    }
    bool startKept = false;
    if (!points.empty()) {
        seg->IsOneEnd(points.front(), startKept);
    }
    seg->SetNewPoints(points);
    seg->SetRedefine(true);
    if (handledIndex) {
        // SetNewPoints hands the lines through the old ends over to the new ones; segments
        // whose ends changed that way now run through the new ends.
        RefreshHandled(seg);
        KrRoutingWayPoint* a = nullptr;
        KrRoutingWayPoint* b = nullptr;
        if (KrSegmentIndex::SegmentEnds(seg, a, b)) {
            if (!startKept) {
                RefreshHandledAt(a);
            }
            RefreshHandledAt(b);
        }
    }
    return 0;
}

// Without an iterative form a long chain of segments would recurse once per segment. The stack
// below holds one frame per segment whose end is being worked on; the top frame places one child
// at a time and pushes the child's own frame, so a child's subtree is finished before its
// siblings, exactly as the recursive placement does it.
//
// A layout object without strategies (before any LayOut) can still place: the children then keep
// the angles and rows they have, and every candidate placement stands.
int KrRoutingLayout::PlaceOneSegment(std::vector<KrRoutingWayPoint*>& points, KrRouteSegment* seg,
                                     KrRoutingGrid* grid) {
    if (points.empty() || points.front() == nullptr || seg == nullptr || grid == nullptr) {
        return 1;
    }
    struct Frame {
        KrRouteSegment* seg;
        KrRoutingWayPoint* end;                 // the end being worked on; null when done
        std::vector<KrRouteSegment*> children;  // unhandled segments at end
        KrRouteSegment* child;                  // the next child to place; null when none
        KrRouteSegment* placed;                 // the child placed last; re-read the children
        std::vector<SineOf> sines;              // ChooseChild's cache for children
    };
    std::vector<Frame> stack;
    std::vector<KrRouteCADLine*> lineScratch;

    // Steps 2 to 5 for one segment: place it and open a frame at its unhandled end.
    auto enter = [&](std::vector<KrRoutingWayPoint*>& pts, KrRouteSegment* s) {
        PlaceSegment(pts, s);
        Frame f{s, nullptr, {}, nullptr, nullptr, {}};
        s->GetUnHandledEnd(f.end, f.children);
        if (f.end == nullptr) {
            return;
        }
        if (assignAngle != nullptr) {
            assignAngle->AssignAngles(s, f.end);
        }
        f.child = ChooseChild(f.children, f.sines);
        stack.push_back(std::move(f));
    };

    enter(points, seg);
    // Every pass either places a new segment (each at most once: it is handled afterwards) or
    // moves a frame to its next end or closes it, so the loop ends.
    while (!stack.empty()) {
        Frame& f = stack.back();
        if (f.end == nullptr) {
            stack.pop_back();
            continue;
        }
        if (f.child != nullptr) {
            KrRouteSegment* child = f.child;
            KrRoutingWayPoint* end = f.end;
            f.child = nullptr;
            f.placed = child;
            std::vector<KrRoutingWayPoint*> pointList;
            PlaceChild(grid, child, end, pointList);
            if (pointList.empty()) {
                pointList.push_back(end);
            }
            enter(pointList, child);  // may grow the stack: f is not used after this
            continue;
        }
        if (f.placed != nullptr) {
            // Expected: the list without the child just placed (its cached sines kept).
            auto const at = std::find(f.children.begin(), f.children.end(), f.placed);
            if (at != f.children.end()) {
                std::size_t const i = static_cast<std::size_t>(at - f.children.begin());
                f.children.erase(at);
                if (i < f.sines.size()) {
                    f.sines.erase(f.sines.begin() + static_cast<std::ptrdiff_t>(i));
                }
            }
            f.placed = nullptr;
            if (!UnhandledAre(f.end, f.children, lineScratch)) {
                f.children.clear();
                f.sines.clear();
                UnhandledAt(f.end, f.children);
            }
            if (!f.children.empty()) {
                f.child = ChooseChild(f.children, f.sines);
                continue;
            }
        }
        // No child remains at this end: look for another unhandled end of the segment.
        f.children.clear();
        f.sines.clear();
        KrRoutingWayPoint* other = nullptr;
        f.seg->GetUnHandledEnd(other, f.children);
        f.end = other;
        if (other != nullptr) {
            if (assignAngle != nullptr) {
                assignAngle->AssignAngles(f.seg, other);
            }
            f.child = ChooseChild(f.children, f.sines);
        }
    }
    return 0;
}

// The row push of a rejected vertical child stops after RowPushBound pushes and the child is
// placed at the last row tried. A row beyond the rows spanned by the placed geometry has no used
// way point (every move the strategies make is horizontal, so that span does not grow while the
// child waits), so a child a strategy really blocks is accepted within that many pushes; the
// bound adds the number of segments of the sketch on top and cannot change such a layout. It only
// stops a strategy that rejects every row.
void KrRoutingLayout::PlaceChild(KrRoutingGrid* grid, KrRouteSegment* child, KrRoutingWayPoint* end,
                                 std::vector<KrRoutingWayPoint*>& pointList) {
    double angle = 0.0;
    child->GetDirectAngle(angle);
    long pushes = 0;
    long bound = -1;
    for (;;) {
        pointList.clear();
        int row = 0;
        child->GetRow(row);
        KrRoutingWayPoint* first = nullptr;
        KrRoutingWayPoint* last = nullptr;
        grid->GetPointByAngle(end, angle, row, first, pointList);
        grid->GetEndPointByLength(child, end, first, last);
        KrRoutingWayPoint* start = end;
        KrRoutingWayPoint* hitPoint = nullptr;
        KrRoutingWayPoint* movedRoot = nullptr;
        std::vector<KrRouteSegment*> moved;
        int const r = FindOutAllSegmentNeedUpdate(grid, child, start, first, last, hitPoint,
                                                  movedRoot, moved, pointList);
        grid->GetAllNodeBetweenTwoPoint(first, last, pointList);
        bool vertical = false;
        child->IsVer(vertical);
        if (r != 1 || !vertical || row == 0) {
            return;
        }
        if (bound < 0) {
            bound = RowPushBound(grid);
        }
        if (pushes >= bound || row == INT_MAX || row == INT_MIN) {
            return;  // the attempt at the last row tried stands
        }
        ++pushes;
        child->SetRow(row > 0 ? row + 1 : row - 1);
    }
}

long KrRoutingLayout::RowPushBound(KrRoutingGrid* grid) {
    std::size_t segmentCount = 0;
    bool hasY = false;
    double yMin = 0.0;
    double yMax = 0.0;
    if (handledIndex && handledIndex->Usable()) {
        segmentCount = handledIndex->SegmentCount();
        hasY = handledIndex->VerticalExtent(yMin, yMax);
    } else {
        KrSketch* sketch = nullptr;
        grid->GetSketch(sketch);
        if (sketch != nullptr) {
            std::vector<KrRouteSegment*> all;
            sketch->GetAllSegments(all);
            segmentCount = all.size();
            std::vector<KrRouteSegment*> handled;
            sketch->GetAllHandledRouteSegment(handled);
            for (KrRouteSegment* s : handled) {
                std::vector<KrRoutingWayPoint*> pts;
                s->GetAllPointInSegment(pts);
                for (KrRoutingWayPoint* p : pts) {
                    double x = 0.0;
                    double y = 0.0;
                    p->GetGridCoord(x, y);
                    if (std::isfinite(y)) {
                        yMin = hasY ? std::min(yMin, y) : y;
                        yMax = hasY ? std::max(yMax, y) : y;
                        hasY = true;
                    }
                }
            }
        }
    }
    double xs = 0.0;
    double ys = 0.0;
    grid->GetGridSpan(xs, ys);
    double rows = 0.0;
    if (hasY && std::isfinite(ys) && std::fabs(ys) > 0.0) {
        rows = std::ceil((yMax - yMin) / std::fabs(ys));
    }
    if (!(rows <= kMaxSpannedRows)) {
        rows = kMaxSpannedRows;
    }
    double const bound = static_cast<double>(std::min<std::size_t>(segmentCount, 1000000000)) + rows + 1.0;
    return static_cast<long>(bound);
}

void KrRoutingLayout::RefreshHandled(KrRouteSegment* seg) {
    if (handledIndex) {
        handledIndex->Refresh(seg);
    }
}

void KrRoutingLayout::RefreshHandledAt(KrRoutingWayPoint* p) {
    if (handledIndex) {
        handledIndex->RefreshAt(p);
    }
}

// Iterative: the nearest non-vertical segment above point. Climbing a vertical parent moves on to
// its root point; when no parent is found there, seg keeps what it held and point is the last
// point reached (the recursive rule). A parent met twice (only possible on a loop) counts as no
// parent. A segment whose root point cannot be read (fewer than two ends) is not a parent.
int KrRoutingLayout::GetRootSegment(KrRoutingWayPoint*& point, KrRouteSegment*& seg) {
    if (point == nullptr) {
        return 1;
    }
    KrRoutingWayPoint* current = point;
    bool climbed = false;
    std::unordered_set<KrRouteSegment*> visited;
    for (;;) {
        std::vector<KrRouteSegment*> segments;
        current->GetConnectSegment(segments);
        KrRouteSegment* parent = nullptr;
        KrRoutingWayPoint* parentRoot = nullptr;
        for (KrRouteSegment* s : segments) {
            KrRoutingWayPoint* r = nullptr;
            if (s == nullptr || s->GetRootPoint(r) != 0 || r == nullptr) {
                continue;
            }
            bool same = false;
            r->IsSamePoint(current, same);
            if (same) {
                continue;  // a child of current
            }
            parent = s;
            parentRoot = r;
            break;
        }
        if (parent == nullptr || !visited.insert(parent).second) {
            if (!climbed) {
                return 1;
            }
            point = current;
            return 0;
        }
        double angle = 0.0;
        parent->GetDirectAngle(angle);
        if (IsVerticalAngle(angle)) {
            current = parentRoot;
            climbed = true;
            continue;
        }
        seg = parent;
        point = current;
        return 0;
    }
}

int KrRoutingLayout::GetSpreadAngle(e_AngleArea area, double& angle) {
    switch (area) {
        case e_AngleAreaPositiveX:
        case e_AngleAreaQuarter1:
        case e_AngleAreaQuarter4:
            angle = 0.0;
            break;
        case e_AngleAreaNegativeX:
        case e_AngleAreaQuarter2:
        case e_AngleAreaQuarter3:
            angle = KR_PI;
            break;
        default:
            break;
    }
    return 0;
}

int KrRoutingLayout::PlaceAngle(KrRoutingWayPoint*, double&) { return 0; }
int KrRoutingLayout::UpdateAllSegmentNecessary(KrRouteSegment*) { return 0; }
int KrRoutingLayout::GetNextFreeGridPoint(KrRoutingWayPoint*, KrRoutingWayPoint*) { return 0; }
int KrRoutingLayout::FindOutAllSegmentNeedExtend(KrRoutingWayPoint*, KrRoutingWayPoint*,
                                                 std::vector<KrRouteSegment*>&) {
    return 0;
}

// ---------------------------------------------------------------------------------------------
// Segment moves.

int KrRoutingLayout::FindOutAllSegmentNeedUpdate(KrRoutingGrid* grid, KrRouteSegment* seg,
                                                 KrRoutingWayPoint*& start, KrRoutingWayPoint*& first,
                                                 KrRoutingWayPoint*& last, KrRoutingWayPoint*& hitPoint,
                                                 KrRoutingWayPoint*& movedRoot,
                                                 std::vector<KrRouteSegment*>& movedSegments,
                                                 std::vector<KrRoutingWayPoint*>& points) {
    if (crossLineUpdate == nullptr) {
        return 2;
    }
    return crossLineUpdate->UpdateCrossLine(this, grid, seg, start, first, last, hitPoint, movedRoot,
                                            movedSegments, points);
}

// The temporary way point is a local object: it is never registered with a line or the grid,
// and it is gone when the call returns. A hit segment whose root point cannot be read moves
// nothing and leaves found false. Missing arguments, or (outside LayOut) a grid without a sketch
// to list the handled segments, return 1 with found false.
int KrRoutingLayout::GetFirstCrossLine(KrRoutingGrid* grid, KrRouteSegment* seg,
                                       KrRoutingWayPoint* start, KrRoutingWayPoint* first,
                                       KrRoutingWayPoint* last, bool& found) {
    found = false;
    if (grid == nullptr || seg == nullptr || start == nullptr || first == nullptr || last == nullptr) {
        return 1;
    }
    double p1[2] = {0.0, 0.0};
    double p2[2] = {0.0, 0.0};
    start->GetGridCoord(p1);
    first->GetGridCoord(p2);
    KrRouteCADLine* hitLine = nullptr;
    if (handledIndex && handledIndex->Usable()) {
        hitLine = handledIndex->FirstCross(seg, p1, p2);
    } else {
        KrSketch* sketch = nullptr;
        grid->GetSketch(sketch);
        if (sketch == nullptr) {
            return 1;
        }
        std::vector<KrRouteSegment*> handled;
        sketch->GetAllHandledRouteSegment(handled);
        for (KrRouteSegment* h : handled) {
            if (h == nullptr) {
                continue;
            }
            bool connected = false;
            seg->IsConnectByEnd(h, connected);
            if (connected) {
                continue;
            }
            hitLine = KrSegmentIndex::CrossedLine(h, p1, p2);
            if (hitLine != nullptr) {
                break;
            }
        }
    }
    if (hitLine == nullptr) {
        return 0;
    }
    KrRouteSegment* parent = nullptr;
    hitLine->GetParentSegment(parent);
    KrRoutingWayPoint* r = nullptr;
    if (parent == nullptr || parent->GetRootPoint(r) != 0 || r == nullptr) {
        return 0;
    }
    double rx = 0.0;
    double ry = 0.0;
    double lx = 0.0;
    double ly = 0.0;
    r->GetGridCoord(rx, ry);
    last->GetGridCoord(lx, ly);
    KrRoutingWayPoint temporary;
    temporary.SetGridCoord(rx, ly);
    MoveSegment(grid, seg, &temporary, last, r);
    found = true;
    return 0;
}

// "Different points" means different positions (IsSamePoint): a temporary point at the position
// of `to` gives no direction and takes the area's side, like `to` itself.
int KrRoutingLayout::MoveSegment(KrRoutingGrid* grid, KrRouteSegment* seg, KrRoutingWayPoint* from,
                                 KrRoutingWayPoint* to, KrRoutingWayPoint* root) {
    if (grid == nullptr || seg == nullptr || from == nullptr || to == nullptr || root == nullptr) {
        return 1;
    }
    e_AngleArea type = e_AngleAreaNone;
    seg->GetType(type);
    KrRouteSegment* rootSeg = nullptr;
    GetRootSegment(root, rootSeg);
    if (rootSeg == nullptr) {
        return 1;
    }
    std::vector<KrRouteSegment*> tail;
    rootSeg->GetTailHandledSegment(root, tail);
    bool same = false;
    from->IsSamePoint(to, same);
    if (!same) {
        MoveSegmentAway(grid, from, to, tail);
    } else {
        MoveSegmentAway(grid, type, to, tail);
    }
    std::vector<KrRouteSegment*> segs{rootSeg};
    std::vector<KrRoutingWayPoint*> pts{root};
    if (!same) {
        ExtendSegments(grid, from, to, segs, pts);
    } else {
        ExtendSegments(grid, type, to, segs, pts);
    }
    return 0;
}

int KrRoutingLayout::MoveSegmentAway(KrRoutingGrid* grid, KrRoutingWayPoint* a, KrRoutingWayPoint* b,
                                     std::vector<KrRouteSegment*>& segs) {
    if (grid == nullptr || a == nullptr || b == nullptr) {
        return 1;
    }
    KrRoutingWayPoint* next = nullptr;
    grid->GetNextNodeByDirect(a, b, next);
    if (next == nullptr) {
        return 1;
    }
    double dx = 0.0;
    double dy = 0.0;
    Offset(a, next, dx, dy);
    grid->movedOf = nullptr;  // a new batch of moves
    MoveListed(grid, dx, dy, segs, handledIndex.get());
    for (KrRouteSegment* s : segs) {
        RefreshHandled(s);
    }
    return 0;
}

int KrRoutingLayout::MoveSegmentAway(KrRoutingGrid* grid, e_AngleArea area, KrRoutingWayPoint* p,
                                     std::vector<KrRouteSegment*>& segs) {
    if (grid == nullptr || p == nullptr) {
        return 1;
    }
    double angle = 0.0;  // areas without a side move toward +x
    GetSpreadAngle(area, angle);
    KrRoutingWayPoint* next = nullptr;
    grid->GetNextHorGridNode(p, angle, next);
    if (next == nullptr) {
        return 1;
    }
    double dx = 0.0;
    double dy = 0.0;
    Offset(p, next, dx, dy);
    grid->movedOf = nullptr;  // a new batch of moves
    MoveListed(grid, dx, dy, segs, handledIndex.get());
    for (KrRouteSegment* s : segs) {
        RefreshHandled(s);
    }
    return 0;
}

// The offset is taken first (as for MoveSegmentAway), then the two lists are compared: lists of
// different lengths return 2 and extend nothing.
int KrRoutingLayout::ExtendSegments(KrRoutingGrid* grid, KrRoutingWayPoint* a, KrRoutingWayPoint* b,
                                    std::vector<KrRouteSegment*> segs,
                                    std::vector<KrRoutingWayPoint*> points) {
    if (grid == nullptr || a == nullptr || b == nullptr) {
        return 1;
    }
    KrRoutingWayPoint* next = nullptr;
    grid->GetNextNodeByDirect(a, b, next);
    if (next == nullptr) {
        return 1;
    }
    if (segs.size() != points.size()) {
        return 2;
    }
    double dx = 0.0;
    double dy = 0.0;
    Offset(a, next, dx, dy);
    for (std::size_t i = 0; i < segs.size(); ++i) {
        if (segs[i] != nullptr) {
            segs[i]->Extends(grid, points[i], dx, dy);
        }
    }
    for (KrRouteSegment* s : segs) {
        RefreshHandled(s);
    }
    return 0;
}

int KrRoutingLayout::ExtendSegments(KrRoutingGrid* grid, e_AngleArea area, KrRoutingWayPoint* p,
                                    std::vector<KrRouteSegment*> segs,
                                    std::vector<KrRoutingWayPoint*> points) {
    if (grid == nullptr || p == nullptr) {
        return 1;
    }
    double angle = 0.0;
    GetSpreadAngle(area, angle);
    KrRoutingWayPoint* next = nullptr;
    grid->GetNextHorGridNode(p, angle, next);
    if (next == nullptr) {
        return 1;
    }
    if (segs.size() != points.size()) {
        return 2;
    }
    double dx = 0.0;
    double dy = 0.0;
    Offset(p, next, dx, dy);
    for (std::size_t i = 0; i < segs.size(); ++i) {
        if (segs[i] != nullptr) {
            segs[i]->Extends(grid, points[i], dx, dy);
        }
    }
    for (KrRouteSegment* s : segs) {
        RefreshHandled(s);
    }
    return 0;
}
