#include <krlayout/model/KrRouteSegment.h>

#include <krlayout/grid/KrRoutingGrid.h>  // Extends is handed a KrRoutingGrid* and calls its members
#include <krlayout/layout/IPriority.h>  // IsHor is handed an IPriority* and asks it for a ranking
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRoutingWayPoint.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <unordered_set>
#include <utility>

namespace {

template <typename T>
void EraseFirst(std::vector<T*>& v, T* item) {
    auto it = std::find(v.begin(), v.end(), item);
    if (it != v.end()) {
        v.erase(it);
    }
}

// Work budget of GetTailHandledSegment (see there): a fixed part plus a part per state of the
// walk's first search. The layouts of thousands of recorded random trees need at most 0.6 million.
constexpr std::size_t kTailWalkBudget = 1000000;
constexpr std::size_t kTailWalkBudgetPerState = 64;

template <typename T>
bool Holds(std::vector<T*> const& v, T* item) {
    return std::find(v.begin(), v.end(), item) != v.end();
}

}  // namespace

KrRouteSegment::KrRouteSegment() : KrRouteSegment(0, 0.0, 0.0) {}

KrRouteSegment::KrRouteSegment(long id, double length, double diameter)
    : id(id),
      length(length),
      diameter(diameter),
      redefine(false),
      directAngle(0.0),
      type(e_AngleAreaNone),
      degenerated(false),
      row(0) {}

KrRouteSegment::KrRouteSegment(KrRouteSegment const& other) = default;

KrRouteSegment& KrRouteSegment::operator=(KrRouteSegment const& other) = default;

KrRouteSegment::~KrRouteSegment() {
    for (KrRouteCADLine* line : lines) {
        delete line;
    }
    lines.clear();
    ends.clear();
}

// ---------------------------------------------------------------------------------------------
// Accessors.

long KrRouteSegment::GetId() const { return id; }

int KrRouteSegment::SetDiameter(double d) {
    diameter = d;
    return 0;
}

int KrRouteSegment::GetDiameter(double& d) {
    d = diameter;
    return 0;
}

int KrRouteSegment::GetLength(double& len) {
    len = length;
    return 0;
}

int KrRouteSegment::SetLength(double) { return 0; }

int KrRouteSegment::SetRedefine(bool r) {
    redefine = r;
    return 0;
}

int KrRouteSegment::IsRedefine(bool& r) {
    r = redefine;
    return 0;
}

int KrRouteSegment::SetDirectAngle(double angle) {
    directAngle = angle;
    return 0;
}

int KrRouteSegment::GetDirectAngle(double& angle) {
    angle = directAngle;
    return 0;
}

int KrRouteSegment::SetType(e_AngleArea t) {
    type = t;
    return 0;
}

int KrRouteSegment::GetType(e_AngleArea& t) {
    t = type;
    return 0;
}

int KrRouteSegment::SetRow(int r) {
    row = r;
    return 0;
}

int KrRouteSegment::GetRow(int& r) {
    r = row;
    return 0;
}

int KrRouteSegment::SetDegenerated(bool d) {
    degenerated = d;
    return 0;
}

int KrRouteSegment::GetDegenerated(bool& d) {
    d = degenerated;
    return 0;
}

int KrRouteSegment::GetCADLineNum(int& count) {
    count = static_cast<int>(lines.size());
    return 0;
}

int KrRouteSegment::SetStartEnd() { return 0; }
int KrRouteSegment::InsertCADLine(KrRouteCADLine*) { return 0; }
int KrRouteSegment::ExtendSegment(KrRoutingWayPoint*) { return 0; }
int KrRouteSegment::PlaceSegment(KrRoutingWayPoint*) { return 0; }
int KrRouteSegment::MoveSegment(long, long) { return 0; }
int KrRouteSegment::GetSegmentNeedExtend(KrRoutingWayPoint*) { return 0; }

// ---------------------------------------------------------------------------------------------
// Lines and ends.

int KrRouteSegment::CreateCADLine(KrRouteCADLine*& line) {
    line = new KrRouteCADLine();
    line->SetParentSegment(this);
    lines.push_back(line);
    return 0;
}

int KrRouteSegment::AddCADLine(KrRouteCADLine* line) {
    if (line == nullptr) {
        return 1;
    }
    if (!Holds(lines, line)) {
        lines.push_back(line);
    }
    line->SetParentSegment(this);
    return 0;
}

int KrRouteSegment::AddPoint(KrRoutingWayPoint* p) {
    if (p == nullptr) {
        return 1;
    }
    if (!Holds(ends, p)) {
        ends.push_back(p);
    }
    return 0;
}

int KrRouteSegment::RemovePoint(KrRoutingWayPoint* p) {
    EraseFirst(ends, p);
    return 0;
}

int KrRouteSegment::ReplaceEnd(KrRoutingWayPoint* oldP, KrRoutingWayPoint* newP) {
    // The ends never hold null, so a null on either side is refused.
    if (oldP == nullptr || newP == nullptr) {
        return 1;
    }
    std::replace(ends.begin(), ends.end(), oldP, newP);
    return 0;
}

int KrRouteSegment::IsOneEnd(KrRoutingWayPoint* p, bool& isEnd) {
    isEnd = Holds(ends, p);
    return 0;
}

int KrRouteSegment::IsStartPoint(KrRoutingWayPoint* p, bool& isStart) {
    if (ends.empty()) {
        isStart = false;
        return 1;
    }
    isStart = (p == ends[0]);
    return 0;
}

int KrRouteSegment::GetOtherEnd(KrRoutingWayPoint* p, KrRoutingWayPoint*& other) {
    if (ends.size() < 2) {
        return 1;
    }
    other = (p == ends[0]) ? ends[1] : ends[0];
    return 0;
}

int KrRouteSegment::IsDegenerated(bool& degen) {
    if (ends.size() != 2) {
        degen = true;
        return 1;
    }
    bool same = false;
    ends[0]->IsSamePoint(ends[1], same);
    degen = same;
    return 0;
}

// ---------------------------------------------------------------------------------------------
// Topology.

int KrRouteSegment::GetAllConnectSegment(std::vector<KrRouteSegment*>& out) {
    if (ends.size() < 2) {
        return 1;
    }
    ends.front()->GetConnectSegment(out);
    ends.back()->GetConnectSegment(out);
    EraseFirst(out, this);
    return 0;
}

int KrRouteSegment::GetAllConnectSegmentByEnd(bool atStart, std::vector<KrRouteSegment*>& out) {
    // Without any end there is no point to read.
    if (ends.empty()) {
        return 1;
    }
    KrRoutingWayPoint* p = atStart ? ends.front() : ends.back();
    p->GetConnectSegment(out);
    EraseFirst(out, this);
    return 0;
}

int KrRouteSegment::GetConnectSegmentByPoint(KrRoutingWayPoint* p, bool redefined,
                                             std::vector<KrRouteSegment*>& out) {
    if (p == nullptr) {
        return 1;
    }
    p->GetSegments(redefined, out);
    EraseFirst(out, this);
    return 0;
}

int KrRouteSegment::IsConnectByEnd(KrRouteSegment* other, bool& connected) {
    connected = false;
    if (other == nullptr) {
        return 1;
    }
    KrRoutingWayPoint* rootPoint = nullptr;
    other->GetRootPoint(rootPoint);
    KrRoutingWayPoint* far = nullptr;
    other->GetOtherEnd(rootPoint, far);
    bool isEnd = false;
    if (rootPoint != nullptr) {
        IsOneEnd(rootPoint, isEnd);
    }
    if (!isEnd && far != nullptr) {
        IsOneEnd(far, isEnd);
    }
    connected = isEnd;
    return connected ? 0 : 1;
}

int KrRouteSegment::GetConnectEnd(KrRoutingWayPoint*& end) {
    // On failure end is left as it was.
    if (ends.empty()) {
        return 1;
    }
    for (KrRoutingWayPoint* p : {ends.front(), ends.back()}) {
        std::vector<KrRouteSegment*> segs;
        p->GetConnectSegment(segs);
        if (segs.size() >= 2) {
            end = p;
            return 0;
        }
    }
    return 1;
}

int KrRouteSegment::GetUnHandledEnd(KrRoutingWayPoint*& end, std::vector<KrRouteSegment*>& segs) {
    if (ends.size() < 2) {
        return 1;
    }
    // "Any" means any appended by this call: segs may already hold entries.
    std::size_t before = segs.size();
    ends.back()->GetUnHandledSegments(segs);
    if (segs.size() > before) {
        end = ends.back();
        return 0;
    }
    end = nullptr;
    if (type == e_AngleAreaRoot) {
        ends.front()->GetUnHandledSegments(segs);
        if (segs.size() > before) {
            end = ends.front();
        }
    }
    return 0;
}

int KrRouteSegment::GetRootPoint(KrRoutingWayPoint*& root) {
    if (ends.size() < 2) {
        return 1;
    }
    KrRoutingWayPoint* start = ends.front();
    KrRoutingWayPoint* end = ends.back();
    double x0 = 0.0, y0 = 0.0, x1 = 0.0, y1 = 0.0;
    start->GetGridCoord(x0, y0);
    end->GetGridCoord(x1, y1);
    double const c = std::cos(directAngle);
    double const zero = 0.0;
    if (KrGeoUtility::LargerThan(c, zero, GEO_TOLERANCE)) {
        root = KrGeoUtility::LessThan(x0, x1, GEO_TOLERANCE) ? start : end;
    } else if (KrGeoUtility::LessThan(c, zero, GEO_TOLERANCE)) {
        root = !KrGeoUtility::LessThan(x0, x1, GEO_TOLERANCE) ? start : end;
    } else if (KrGeoUtility::IsEqual(directAngle, HALF_PI, GEO_TOLERANCE)) {
        root = KrGeoUtility::LessThan(y0, y1, GEO_TOLERANCE) ? start : end;
    } else {
        root = !KrGeoUtility::LessThan(y0, y1, GEO_TOLERANCE) ? start : end;
    }
    return 0;
}

int KrRouteSegment::GetRootSegment(KrRouteSegment*& root) {
    if (type == e_AngleAreaRoot) {
        root = nullptr;
        return 0;
    }
    for (KrRoutingWayPoint* p : ends) {
        KrRouteSegment* candidate = nullptr;
        p->GetRootSegment(candidate);
        if (candidate != nullptr && candidate->GetId() != id) {
            root = candidate;
            return 0;
        }
    }
    root = nullptr;
    return 1;
}

// Walks the route beyond p with an explicit stack instead of recursion. The recursive rule is:
// out = the placed segments at p other than this one (its first n entries); then for each of
// those entries s (skipping this segment's id), the result of s beyond its other end is appended,
// entries not yet in out only. Nested "append what is new" merges collapse into one stream: the
// result is the depth-first sequence (each segment's own list, then its entries expanded in
// order), keeping first occurrences only. That stream is written straight into out. A segment
// already being expanded on the current path is not expanded again, so a route with a loop ends.
//
// Where the placed segments form a tree, every segment is reached once and the walk is linear.
// Where moves have made placed segments share way points, the rule walks every simple path, which
// takes exponential time, yet nearly all of those paths only list segments already in out. Two
// prunings skip exactly that work and nothing else, so the result is the rule's to the entry:
//  1. The walk ends as soon as every segment it could ever list is in out. Those segments are
//     found once beforehand by a search over the way points reachable beyond p (through placed
//     segments other than this one), which over-approximates what the walk can reach.
//  2. A segment reached again (it was expanded before, on another path) is expanded again only
//     when, avoiding the segments on the current path, the same kind of search from its far end
//     reaches a way point where a segment not yet in out (or a segment without two ends, at which
//     the rule fails) is listed. Otherwise its expansion could append nothing.
// First expansions are never pruned, so each segment costs one expansion plus, per further time
// it is reached, one search; the searches stop once everything reachable is listed.
//
// The searches over-approximate (they may pass through one segment twice, which a path may not),
// so on some tangled placements the rule still explores many paths that end up listing nothing.
// The walk therefore has a budget: kTailWalkBudget plus kTailWalkBudgetPerState per state of the
// first search, counting every expansion and every state searched. Once it is spent, a segment
// reached again is no longer expanded: every segment expanded so far stays where the rule put it
// in out, and the rest of the walk lists each remaining reachable segment at its first discovery.
// No recorded layout that ended before needs a fifth of the budget; walks that exceed it took
// minutes or hours before.
int KrRouteSegment::GetTailHandledSegment(KrRoutingWayPoint* p, std::vector<KrRouteSegment*>& out) {
    if (p == nullptr) {
        return 1;
    }
    GetConnectSegmentByPoint(p, true, out);

    struct Frame {
        KrRouteSegment* seg;
        KrRoutingWayPoint* at;  // the way point at which this level's entries were collected
        std::size_t begin;      // this level's entries: lists[begin, end)
        std::size_t end;
        std::size_t next;       // index of the next entry to expand
    };

    std::unordered_set<KrRouteSegment*> inOut(out.begin(), out.end());
    std::vector<KrRouteSegment*> scratch;

    // Search over the ways the walk could go beyond a start: a state is a way point and the
    // segment the walk arrived by; from it every placed segment at the point other than that one
    // and those in `avoid` leads to its other end. Calls visit(segment) for every segment listed
    // at a reached state (all placed segments there but the arriving one) until visit returns
    // true. The walk's paths are among these ways, so this over-approximates what it can reach.
    std::size_t work = 0;  // states searched plus segments expanded: the walk's budget
    using State = std::pair<KrRouteSegment*, KrRoutingWayPoint*>;
    struct StateHash {
        std::size_t operator()(State const& st) const {
            return std::hash<KrRouteSegment*>()(st.first) * 31u + std::hash<KrRoutingWayPoint*>()(st.second);
        }
    };
    std::vector<State> queue;
    std::unordered_set<State, StateHash> seen;
    auto search = [&](std::vector<State> const& from, std::unordered_set<KrRouteSegment*> const& avoid,
                      auto&& visit) {
        queue.assign(from.begin(), from.end());
        seen.clear();
        seen.insert(from.begin(), from.end());
        for (std::size_t i = 0; i < queue.size(); ++i) {
            ++work;
            State const st = queue[i];
            scratch.clear();
            st.second->GetSegments(true, scratch);
            for (KrRouteSegment* d : scratch) {
                if (d == st.first) {
                    continue;
                }
                if (visit(d)) {
                    return true;
                }
                if (avoid.count(d) != 0) {
                    continue;
                }
                KrRoutingWayPoint* next = nullptr;
                if (d->GetOtherEnd(st.second, next) == 0 && next != nullptr &&
                    seen.insert(State(d, next)).second) {
                    queue.push_back(State(d, next));
                }
            }
        }
        return false;
    };

    // Everything the walk could list, and whether a segment without two ends is among it.
    std::unordered_set<KrRouteSegment*> const thisOnly{this};
    std::unordered_set<KrRouteSegment*> reachable(out.begin(), out.end());
    bool failurePossible = false;
    {
        std::vector<State> starts;
        for (KrRouteSegment* s : out) {
            KrRoutingWayPoint* e = nullptr;
            if (s == nullptr || s->GetId() == id) {
                continue;
            }
            if (s->GetOtherEnd(p, e) != 0 || e == nullptr) {
                failurePossible = true;
                continue;
            }
            starts.push_back(State(s, e));
        }
        search(starts, thisOnly, [&](KrRouteSegment* d) {
            reachable.insert(d);
            KrRoutingWayPoint* e = nullptr;
            if (d->GetOtherEnd(nullptr, e) != 0 || d->GetOtherEnd(e, e) != 0) {
                failurePossible = true;
            }
            return false;
        });
    }
    // Budget of the exhaustive rule: beyond it, segments reached again are no longer expanded.
    std::size_t const budget = kTailWalkBudget + kTailWalkBudgetPerState * work;
    std::size_t missing = 0;
    for (KrRouteSegment* s : reachable) {
        missing += inOut.count(s) == 0 ? 1 : 0;
    }

    std::vector<KrRouteSegment*> lists(out.begin(), out.end());
    std::unordered_set<KrRouteSegment*> onPath{this};
    std::unordered_set<KrRouteSegment*> expanded;
    std::vector<Frame> stack;
    stack.push_back(Frame{this, p, 0, lists.size(), 0});
    // Size of out when the current top-level entry began its expansion: a failure below it
    // leaves out as the recursion would, with only the completed entries merged.
    std::size_t committed = out.size();
    std::vector<KrRouteSegment*> found;
    std::vector<State> from(1);

    while (!stack.empty()) {
        if (missing == 0 && !failurePossible) {
            break;  // pruning 1: nothing left that the walk could append
        }
        Frame& top = stack.back();
        if (top.begin + top.next >= top.end) {
            lists.resize(top.begin);
            onPath.erase(top.seg);
            stack.pop_back();
            if (stack.size() == 1) {
                committed = out.size();
            }
            continue;
        }
        KrRouteSegment* s = lists[top.begin + top.next];
        ++top.next;
        if (s == nullptr || s->GetId() == top.seg->GetId() || onPath.count(s) != 0) {
            continue;
        }
        KrRoutingWayPoint* e = nullptr;
        s->GetOtherEnd(top.at, e);
        if (e == nullptr) {
            out.resize(committed);
            return 1;
        }
        if (!expanded.insert(s).second) {
            // Pruning 2: reached again; expand only when something new lies beyond.
            if (work > budget) {
                continue;
            }
            onPath.insert(s);
            from[0] = State(s, e);
            bool const worth = search(from, onPath, [&](KrRouteSegment* d) {
                if (inOut.count(d) == 0) {
                    return true;
                }
                KrRoutingWayPoint* a = nullptr;
                return d->GetOtherEnd(nullptr, a) != 0 || d->GetOtherEnd(a, a) != 0;
            });
            onPath.erase(s);
            if (!worth) {
                continue;
            }
        }
        ++work;
        found.clear();
        s->GetConnectSegmentByPoint(e, true, found);
        for (KrRouteSegment* c : found) {
            if (inOut.insert(c).second) {
                out.push_back(c);
                if (reachable.count(c) != 0 && missing > 0) {
                    --missing;
                }
            }
        }
        std::size_t const begin = lists.size();
        lists.insert(lists.end(), found.begin(), found.end());
        onPath.insert(s);
        stack.push_back(Frame{s, e, begin, lists.size(), 0});
    }
    return 0;
}

int KrRouteSegment::GetSameBothEndsSegments(std::vector<KrRouteSegment*>& out) {
    KrRoutingWayPoint* s = nullptr;
    if (GetOtherEnd(nullptr, s) != 0) {
        // Fewer than two ends: the list still starts with this segment, but nothing is compared.
        out.push_back(this);
        return 1;
    }
    std::vector<KrRouteSegment*> others;
    s->GetConnectSegmentExclude(this, others);
    out.push_back(this);
    KrRoutingWayPoint* e = nullptr;
    GetOtherEnd(s, e);
    for (KrRouteSegment* o : others) {
        if (o == nullptr) {
            continue;
        }
        KrRoutingWayPoint* oe = nullptr;
        o->GetOtherEnd(s, oe);
        if (oe != nullptr && oe == e) {
            out.push_back(o);
        }
    }
    return 0;
}

// ---------------------------------------------------------------------------------------------
// Ids.

int KrRouteSegment::SetPointId(std::vector<long*>& ids) {
    std::vector<KrRoutingWayPoint*> points;
    GetAllPointInSegment(points);
    // Pairs beyond the segment's points, and null pairs, are skipped and reported with 1.
    int status = 0;
    for (std::size_t i = 0; i < ids.size(); ++i) {
        if (i >= points.size() || ids[i] == nullptr) {
            status = 1;
            continue;
        }
        points[i]->SetPointId(ids[i]);
    }
    return status;
}

int KrRouteSegment::GetSketchPointId(KrRoutingWayPoint* p,
                                     std::vector<std::pair<long, long>>& out) {
    if (p == nullptr) {
        return 1;
    }
    std::vector<KrRouteSegment*> segs;
    p->GetConnectSegment(segs);
    if (segs.size() == 1 && segs[0] == this) {
        // A point whose id was never set has nothing to report.
        std::pair<long, long> pointId(-1, -1);
        if (p->GetPointId(pointId) == 0) {
            out.push_back(pointId);
        }
    }
    return 0;
}

int KrRouteSegment::GetConnectorSketchPointId(std::vector<std::pair<long, long>>& out) {
    if (ends.empty()) {
        return 1;
    }
    GetSketchPointId(ends.front(), out);
    GetSketchPointId(ends.back(), out);
    return 0;
}

int KrRouteSegment::GetPointByRouteSegmentId(std::vector<long>& segIds, KrRoutingWayPoint*& p) {
    if (ends.empty()) {
        return 1;
    }
    std::unordered_set<long> wanted(segIds.begin(), segIds.end());
    for (KrRoutingWayPoint* candidate : {ends.front(), ends.back()}) {
        std::vector<KrRouteSegment*> segs;
        candidate->GetConnectSegment(segs);
        bool all = true;
        for (KrRouteSegment* s : segs) {
            if (s == nullptr || wanted.count(s->GetId()) == 0) {
                all = false;
                break;
            }
        }
        if (all) {
            p = candidate;
        }
    }
    return 0;
}

// ---------------------------------------------------------------------------------------------
// Geometry.

int KrRouteSegment::SetNewPoints(std::vector<KrRoutingWayPoint*>& path) {
    if (path.empty() || Holds(path, static_cast<KrRoutingWayPoint*>(nullptr))) {
        return 1;
    }
    KrRoutingWayPoint* first = path.front();
    KrRoutingWayPoint* last = path.back();
    KrRoutingWayPoint* s = nullptr;
    KrRoutingWayPoint* e = nullptr;
    if (Holds(ends, first)) {
        s = first;
        for (KrRoutingWayPoint* p : ends) {
            if (p != s) {
                e = p;
                break;
            }
        }
        if (e == nullptr) {
            return 1;
        }
        ends.clear();
        ends.push_back(s);
        ends.push_back(e);
    } else {
        // Two distinct old ends are needed: the path's ends take their places.
        if (ends.size() < 2 || ends[0] == ends[1]) {
            return 1;
        }
        s = ends[0];
        e = ends[1];
    }

    if (first != s) {
        first->AddParentsFromPoint(s);
        KrRouteCADLine* line = nullptr;
        s->GetCADLineBySegment(this, line);
        if (line != nullptr) {
            s->RemoveParent(line);
        }
    }
    // Also when last is e itself: that moves e to the end of every line through it.
    last->AddParentsFromPoint(e);
    if (last != e) {
        KrRouteCADLine* line = nullptr;
        e->GetCADLineBySegment(this, line);
        if (line != nullptr) {
            e->RemoveParent(line);
        }
    }

    ClearLines();

    for (std::size_t i = 1; i < path.size(); ++i) {
        bool onLine = false;
        if (!lines.empty()) {
            lines.back()->PointIsOnLine(path[i], onLine);
        }
        if (onLine) {
            lines.back()->AddPoint(path[i]);
        } else {
            KrRouteCADLine* line = new KrRouteCADLine();
            line->AddPoint(path[i - 1]);
            line->AddPoint(path[i]);
            AddCADLine(line);
        }
    }

    ends.clear();
    ends.push_back(first);
    ends.push_back(last);
    return 0;
}

int KrRouteSegment::ClearLines() {
    for (KrRouteCADLine* line : lines) {
        line->ClearPoints();
        delete line;
    }
    lines.clear();
    ends.clear();
    return 0;
}

int KrRouteSegment::GetAllPointInSegment(std::vector<KrRoutingWayPoint*>& out) {
    // Repeats are collapsed among the points of this call only; out's earlier entries stay.
    std::vector<KrRoutingWayPoint*> points;
    for (KrRouteCADLine* line : lines) {
        KrRoutingWayPoint* start = nullptr;
        KrRoutingWayPoint* end = nullptr;
        line->GetStartPoint(start);
        line->GetEndPoint(end);
        for (KrRoutingWayPoint* p : {start, end}) {
            if (p != nullptr && (points.empty() || points.back() != p)) {
                points.push_back(p);
            }
        }
    }
    out.insert(out.end(), points.begin(), points.end());
    return 0;
}

int KrRouteSegment::GetAllCADLine(std::vector<KrRouteCADLine*>& out) {
    out.insert(out.end(), lines.begin(), lines.end());
    return 0;
}

int KrRouteSegment::GetCADLineByPoint(KrRoutingWayPoint* p, std::vector<KrRouteCADLine*>& out) {
    if (p == nullptr) {
        return 1;
    }
    for (KrRouteCADLine* line : lines) {
        bool on = false;
        line->PointIsOnBeeline(p, on);
        if (on) {
            out.push_back(line);
        }
    }
    return 0;
}

int KrRouteSegment::Move(KrRoutingGrid* grid, double dx, double dy,
                         std::vector<KrRouteSegment*>& moved) {
    if (grid == nullptr) {
        return 1;
    }
    // A segment without lines has nothing to move and keeps its ends.
    if (lines.empty()) {
        return 0;
    }
    // A copy: moving crossing segments must not disturb this walk.
    std::vector<KrRouteCADLine*> toMove = lines;
    for (KrRouteCADLine* line : toMove) {
        line->Move(grid, dx, dy, moved);
    }
    KrRoutingWayPoint* start = nullptr;
    KrRoutingWayPoint* end = nullptr;
    lines.front()->GetStartPoint(start);
    lines.back()->GetEndPoint(end);
    ends.clear();
    if (start != nullptr) {
        ends.push_back(start);
    }
    if (end != nullptr) {
        ends.push_back(end);
    }
    return 0;
}

// newEnd is a new way point owned by the caller, except when the line through `from` is shorter
// than len and the segment has other lines: then the line is emptied and newEnd is its other,
// existing end.
int KrRouteSegment::Short(double len, KrRoutingWayPoint* from, KrRoutingWayPoint*& newEnd) {
    if (from == nullptr) {
        return 1;
    }
    std::vector<KrRouteCADLine*> found;
    GetCADLineByPoint(from, found);
    if (found.size() != 1) {
        return 1;
    }
    KrRoutingWayPoint* result = nullptr;
    if (found[0]->Short(len, from, result) != 0 || result == nullptr) {
        return 1;
    }
    newEnd = result;
    RemovePoint(from);
    AddPoint(newEnd);
    return 0;
}

int KrRouteSegment::Extends(KrRoutingGrid* grid, KrRoutingWayPoint* p, double dx, double dy) {
    if (grid == nullptr || p == nullptr) {
        return 1;
    }
    double x = 0.0, y = 0.0;
    p->GetGridCoord(x, y);
    KrRoutingWayPoint* target = nullptr;
    grid->GetGridNode(x + dx, y + dy, target);
    if (target == nullptr) {
        return 1;
    }
    std::vector<KrRoutingWayPoint*> between;
    grid->GetAllNodeBetweenTwoPoint(p, target, between);
    std::vector<KrRouteCADLine*> parents;
    p->GetParent(parents);
    for (KrRouteCADLine* line : parents) {
        KrRouteSegment* owner = nullptr;
        if (line != nullptr) {
            line->GetParentSegment(owner);
        }
        if (owner == this) {
            line->AddPoints(between);
        }
    }
    std::replace(ends.begin(), ends.end(), p, target);
    return 0;
}

int KrRouteSegment::AssignRow(e_AngleArea area, std::vector<KrRouteSegment*>& segs) {
    std::vector<KrRouteSegment*> sel;
    for (KrRouteSegment* s : segs) {
        e_AngleArea t = e_AngleAreaNone;
        if (s != nullptr && s->GetType(t) == 0 && t == area) {
            sel.push_back(s);
        }
    }
    bool const downwards = (area == e_AngleAreaQuarter3 || area == e_AngleAreaQuarter4);
    int next = 1;
    while (!sel.empty()) {
        std::size_t best = 0;
        double bestAngle = 0.0;
        sel[0]->GetDirectAngle(bestAngle);
        double bestSin = std::fabs(std::sin(bestAngle));
        for (std::size_t i = 1; i < sel.size(); ++i) {
            double angle = 0.0;
            sel[i]->GetDirectAngle(angle);
            double const sine = std::fabs(std::sin(angle));
            if (KrGeoUtility::LessThan(sine, bestSin, GEO_TOLERANCE)) {
                best = i;
                bestAngle = angle;
                bestSin = sine;
            }
        }
        double const zero = 0.0;
        if (KrGeoUtility::IsEqual(bestAngle, zero, GEO_TOLERANCE) ||
            KrGeoUtility::IsEqual(bestAngle, KR_PI, GEO_TOLERANCE)) {
            next = 0;
        }
        sel[best]->SetRow(downwards ? -next : next);
        // The count is bounded by the number of segments, far below INT_MAX.
        ++next;
        sel.erase(sel.begin() + static_cast<std::ptrdiff_t>(best));
    }
    return 0;
}

int KrRouteSegment::AssignRowToSegment(std::vector<KrRouteSegment*>& segs) {
    AssignRow(e_AngleAreaQuarter1, segs);
    AssignRow(e_AngleAreaQuarter2, segs);
    AssignRow(e_AngleAreaQuarter3, segs);
    AssignRow(e_AngleAreaQuarter4, segs);
    return 0;
}

int KrRouteSegment::IsHor(IPriority* priority, bool& hor) {
    KrRouteSegment* root = nullptr;
    GetRootSegment(root);
    if (root == nullptr) {
        hor = true;
        return 0;
    }
    if (priority == nullptr) {
        return 1;
    }
    KrRoutingWayPoint* rootPoint = nullptr;
    root->GetRootPoint(rootPoint);
    KrRoutingWayPoint* far = nullptr;
    if (root->GetOtherEnd(rootPoint, far) != 0 || far == nullptr) {
        return 1;
    }
    std::vector<KrRouteSegment*> candidates;
    far->GetConnectSegment(candidates);
    EraseFirst(candidates, root);
    KrRouteSegment* best = nullptr;
    priority->GetPriorestSegment(candidates, best);
    hor = (best == this);
    return 0;
}

int KrRouteSegment::IsVer(bool& ver) {
    ver = KrGeoUtility::IsEqual(directAngle, HALF_PI, GEO_TOLERANCE) ||
          KrGeoUtility::IsEqual(directAngle, KR_THREE_HALF_PI, GEO_TOLERANCE);
    return 0;
}

int KrRouteSegment::IsSecWith(double* p1, double* p2, double* hit, KrRouteCADLine*& line,
                              bool& crosses) {
    crosses = false;
    line = nullptr;
    if (p1 == nullptr || p2 == nullptr || hit == nullptr) {
        return 1;
    }
    for (KrRouteCADLine* l : lines) {
        KrRoutingWayPoint* start = nullptr;
        KrRoutingWayPoint* end = nullptr;
        l->GetStartPoint(start);
        l->GetEndPoint(end);
        if (start == nullptr || end == nullptr) {
            continue;
        }
        double sx = 0.0, sy = 0.0, ex = 0.0, ey = 0.0;
        start->GetGridCoord(sx, sy);
        end->GetGridCoord(ex, ey);
        int const r = KrGeoUtility::LineSegment2DIntersection(&hit[0], &hit[1], p1[0], p1[1], p2[0],
                                                              p2[1], sx, sy, ex, ey, GEO_TOLERANCE);
        if (r == 0) {
            line = l;
            crosses = true;
            return 0;
        }
    }
    return 0;
}

int KrRouteSegment::CheckPointAndLine(bool& ok) {
    ok = true;
    if (ends.size() != 2) {
        ok = false;
        return 1;
    }
    for (KrRouteCADLine* line : lines) {
        bool lineOk = false;
        line->CheckPoint(lineOk);
        if (!lineOk) {
            ok = false;
            return 1;
        }
    }
    return 0;
}
