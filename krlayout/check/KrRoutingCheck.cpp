#include <krlayout/check/KrRoutingCheck.h>

#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/sketch/IRoutingSketch.h>

#include <algorithm>
#include <cstddef>
#include <deque>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace {

// Status codes of the two checks.
constexpr int kLoopFound = 7;
constexpr int kDisjoint = 8;

using WayPointSet = std::unordered_set<KrRoutingWayPoint*>;
using SegmentSet = std::unordered_set<KrRouteSegment*>;

// The segments connected at `point`, without the first occurrence of `from` (the segment the walk
// arrived by).
std::vector<KrRouteSegment*> ConnectedExcept(KrRoutingWayPoint* point, KrRouteSegment* from) {
    std::vector<KrRouteSegment*> segs;
    point->GetConnectSegment(segs);
    auto it = std::find(segs.begin(), segs.end(), from);
    if (it != segs.end()) {
        segs.erase(it);
    }
    return segs;
}

// The end of `seg` opposite `point`, or null when the segment has fewer than two ends (such a
// segment leads nowhere and is not followed).
KrRoutingWayPoint* OtherEnd(KrRouteSegment* seg, KrRoutingWayPoint* point) {
    KrRoutingWayPoint* other = nullptr;
    if (seg == nullptr || seg->GetOtherEnd(point, other) != 0) {
        return nullptr;
    }
    return other;
}

// Depth-first search for a closed path, as a loop over explicit frames instead of recursion so that
// long chains cannot overflow the stack. Each frame stands for one recursive call: the way point it
// was entered at, the connection list filtered of the arriving segment, and the next index in that
// list. The order of exploration and every change to `path` are those of the recursive form:
//   for each segment s at point (list order): O = other end of s;
//     O on the path at first position f -> path = path[f..] + O, return 7;
//     else push O and recurse (O, s); a non-zero result returns at once;
//   finally pop the last element of the path and return 0.
// `firstPos` maps each way point on the path to its first position, so "is O on the path" costs
// O(1) instead of a scan.
// Bound: a way point is pushed only when it is not on the path, so the path, and with it the frame
// stack, never holds more entries than there are distinct way points, and each frame visits its list
// once. On a sketch whose segments meet at their ends every way point is entered at most once before
// the first closed path ends the search, so the walk is linear in the number of way point visits.
int SearchLoop(KrRoutingWayPoint* point, KrRouteSegment* from,
               std::vector<KrRoutingWayPoint*>& path) {
    std::unordered_map<KrRoutingWayPoint*, std::size_t> firstPos;
    firstPos.reserve(path.size() * 2 + 16);
    for (std::size_t i = 0; i < path.size(); ++i) {
        firstPos.emplace(path[i], i);  // keeps the first occurrence
    }

    struct Frame {
        KrRoutingWayPoint* point;
        std::vector<KrRouteSegment*> segs;
        std::size_t next;
    };
    std::vector<Frame> frames;
    frames.push_back(Frame{point, ConnectedExcept(point, from), 0});

    while (!frames.empty()) {
        Frame& frame = frames.back();
        if (frame.next < frame.segs.size()) {
            KrRouteSegment* seg = frame.segs[frame.next++];
            KrRoutingWayPoint* other = OtherEnd(seg, frame.point);
            if (other == nullptr) {
                continue;
            }
            auto found = firstPos.find(other);
            if (found != firstPos.end()) {
                // Closed path: O, ..., point, O.
                path.erase(path.begin(),
                           path.begin() + static_cast<std::ptrdiff_t>(found->second));
                path.push_back(other);
                return kLoopFound;
            }
            firstPos.emplace(other, path.size());
            path.push_back(other);
            std::vector<KrRouteSegment*> next = ConnectedExcept(other, seg);
            frames.push_back(Frame{other, std::move(next), 0});  // `frame` is not used after this
        } else {
            // No closed path through this point: take it (the last element) off the path.
            if (!path.empty()) {
                auto found = firstPos.find(path.back());
                if (found != firstPos.end() && found->second == path.size() - 1) {
                    firstPos.erase(found);
                }
                path.pop_back();
            }
            frames.pop_back();
        }
    }
    return 0;
}

// Collects the segments reached from `point` into `piece`, as the recursive form would:
//   segments at point without `from` are appended to the piece (list order, no duplicate test);
//   then for each of them, O = other end; if O is not visited, mark it and recurse (O, s).
// Runs over explicit frames so that long chains cannot overflow the stack; `seen` answers "is O
// visited" in O(1), and `visited`, when given, receives the points in the order they are marked.
// Bound: a way point enters `seen` once and a frame is pushed only for a point that was not in it,
// so there are at most as many frames as way points, and the walk always ends, cycles or not.
void Traverse(KrRoutingWayPoint* point, KrRouteSegment* from, WayPointSet& seen,
              std::vector<KrRoutingWayPoint*>* visited, std::vector<KrRouteSegment*>& piece) {
    struct Frame {
        KrRoutingWayPoint* point;
        std::vector<KrRouteSegment*> segs;
        std::size_t next;
    };
    std::vector<Frame> frames;
    auto enter = [&frames, &piece](KrRoutingWayPoint* p, KrRouteSegment* arriving) {
        std::vector<KrRouteSegment*> segs = ConnectedExcept(p, arriving);
        piece.insert(piece.end(), segs.begin(), segs.end());
        frames.push_back(Frame{p, std::move(segs), 0});
    };
    enter(point, from);

    while (!frames.empty()) {
        Frame& frame = frames.back();
        if (frame.next < frame.segs.size()) {
            KrRouteSegment* seg = frame.segs[frame.next++];
            KrRoutingWayPoint* other = OtherEnd(seg, frame.point);
            if (other == nullptr || !seen.insert(other).second) {
                continue;
            }
            if (visited != nullptr) {
                visited->push_back(other);
            }
            enter(other, seg);  // `frame` is not used after this
        } else {
            frames.pop_back();
        }
    }
}

// The piece of `start`: [start], then everything reached from end `a`, then, if the other end was
// not reached, everything reached from it. A null `a` (a segment with fewer than two ends) makes a
// piece of the segment alone.
std::vector<KrRouteSegment*> CollectPiece(KrRouteSegment* start, KrRoutingWayPoint* a) {
    std::vector<KrRouteSegment*> piece{start};
    if (a == nullptr) {
        return piece;
    }
    WayPointSet seen{a};
    Traverse(a, start, seen, nullptr, piece);
    KrRoutingWayPoint* b = OtherEnd(start, a);
    if (b != nullptr && seen.insert(b).second) {
        Traverse(b, start, seen, nullptr, piece);
    }
    return piece;
}

// Membership in `list`: a scan for short lists, a hash set for long ones.
class SegmentLookup {
public:
    explicit SegmentLookup(std::vector<KrRouteSegment*> const& list) : list_(list) {
        if (list_.size() > kScanLimit) {
            set_.insert(list_.begin(), list_.end());
        }
    }
    bool Contains(KrRouteSegment* seg) const {
        if (list_.size() > kScanLimit) {
            return set_.count(seg) != 0;
        }
        return std::find(list_.begin(), list_.end(), seg) != list_.end();
    }

private:
    static constexpr std::size_t kScanLimit = 32;
    std::vector<KrRouteSegment*> const& list_;
    SegmentSet set_;
};

// The working list of GetMiniDisjoint: the segments in their order, with "remove the first
// occurrence" in O(1) (a queue of live positions per segment) and "first entry not grouped yet"
// found by a cursor that only moves forward. The cursor may skip an entry for good because an
// entry it passes is either removed or grouped, and grouped segments stay grouped.
class WorkingList {
public:
    explicit WorkingList(std::vector<KrRouteSegment*> const& segs)
        : entries_(segs), alive_(segs.size(), true) {
        for (std::size_t i = 0; i < entries_.size(); ++i) {
            positions_[entries_[i]].push_back(i);
        }
    }

    void RemoveFirst(KrRouteSegment* seg) {
        auto it = positions_.find(seg);
        if (it == positions_.end() || it->second.empty()) {
            return;
        }
        alive_[it->second.front()] = false;
        it->second.pop_front();
    }

    // First live entry that is not null and not grouped; null when there is none.
    KrRouteSegment* FirstNotGrouped(SegmentSet const& grouped) {
        while (cursor_ < entries_.size()) {
            KrRouteSegment* seg = entries_[cursor_];
            if (alive_[cursor_] && seg != nullptr && grouped.count(seg) == 0) {
                return seg;
            }
            ++cursor_;
        }
        return nullptr;
    }

private:
    std::vector<KrRouteSegment*> entries_;
    std::vector<bool> alive_;
    std::unordered_map<KrRouteSegment*, std::deque<std::size_t>> positions_;
    std::size_t cursor_ = 0;
};

}  // namespace

KrRoutingCheck::KrRoutingCheck() = default;

KrRoutingCheck::~KrRoutingCheck() = default;

// Loop check: searches the piece of the first segment for one closed path, first from its root
// point, then from its other end, and appends the ids along the closed path in path order. Only
// that piece is searched; other pieces are left to the disjoint check.
int KrRoutingCheck::CheckSketch(IRoutingSketch* sketch, std::vector<long>& loopIds) {
    if (sketch == nullptr) {
        return 1;
    }
    std::vector<KrRouteSegment*> segs;
    sketch->GetAllSegments(segs);
    if (segs.empty() || segs.front() == nullptr) {
        return 0;
    }
    KrRouteSegment* first = segs.front();
    // A first segment with fewer than two ends has no root point and leads nowhere: nothing to
    // search, so no closed path is reported.
    KrRoutingWayPoint* root = nullptr;
    if (first->GetRootPoint(root) != 0 || root == nullptr) {
        return 0;
    }
    std::vector<KrRoutingWayPoint*> path{root};
    int result = CheckLoopByPoint(root, first, path);
    if (result != 0) {
        GetSegmentChainByWayPoint(path, loopIds);
        return result;
    }
    KrRoutingWayPoint* end = OtherEnd(first, root);
    if (end == nullptr) {
        return 0;
    }
    if (std::find(path.begin(), path.end(), end) != path.end()) {
        return kLoopFound;
    }
    path.push_back(end);
    result = CheckLoopByPoint(end, first, path);
    if (result == 0) {
        return 0;
    }
    GetSegmentChainByWayPoint(path, loopIds);
    return result;
}

// One depth-first step of the loop check; `path` ends with `point`. 7 leaves the closed path
// O, ..., point, O in `path`; 0 leaves `path` without its last element. Null point: 1.
int KrRoutingCheck::CheckLoopByPoint(KrRoutingWayPoint* point, KrRouteSegment* from,
                                     std::vector<KrRoutingWayPoint*>& path) {
    if (point == nullptr) {
        return 1;
    }
    return SearchLoop(point, from, path);
}

// For each consecutive pair of the path, the first segment of the first point's connections that
// also connects at the second point. Two segments between the same two points X, Y give the path
// X Y X, and both pairs pick the same first shared segment: its id is appended twice, on purpose.
// A pair that shares no segment, or has a null point, adds nothing.
int KrRoutingCheck::GetSegmentChainByWayPoint(std::vector<KrRoutingWayPoint*>& path,
                                              std::vector<long>& ids) {
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        if (path[i] == nullptr || path[i + 1] == nullptr) {
            continue;
        }
        std::vector<KrRouteSegment*> here;
        std::vector<KrRouteSegment*> there;
        path[i]->GetConnectSegment(here);
        path[i + 1]->GetConnectSegment(there);
        SegmentLookup lookup(there);
        for (KrRouteSegment* seg : here) {
            if (seg != nullptr && lookup.Contains(seg)) {
                ids.push_back(seg->GetId());
                break;
            }
        }
    }
    return 0;
}

// Disjoint check: is every segment reachable from the first one? The piece's entry count is
// compared, not its distinct segments; the loop check runs first, so on a tree they agree.
int KrRoutingCheck::CheckDisjoint(IRoutingSketch* sketch, std::vector<long>& pieceIds) {
    if (sketch == nullptr) {
        return 1;
    }
    std::vector<KrRouteSegment*> segs;
    sketch->GetAllSegments(segs);
    if (segs.empty() || segs.front() == nullptr) {
        return 0;
    }
    KrRouteSegment* first = segs.front();
    // A first segment with fewer than two ends has no root point: its piece is the segment alone.
    KrRoutingWayPoint* root = nullptr;
    if (first->GetRootPoint(root) != 0) {
        root = nullptr;
    }
    std::vector<KrRouteSegment*> piece = CollectPiece(first, root);
    if (piece.size() == segs.size()) {
        return 0;
    }
    GetMiniDisjoint(segs, pieceIds);
    return kDisjoint;
}

// Appends the segments reached from `point` (without `from`) to `piece` and the way points entered
// to `visited`; a point already in `visited` is never entered. Null point: 1.
int KrRoutingCheck::TraversalSegmentByPoint(KrRoutingWayPoint* point, KrRouteSegment* from,
                                            std::vector<KrRoutingWayPoint*>& visited,
                                            std::vector<KrRouteSegment*>& piece) {
    if (point == nullptr) {
        return 1;
    }
    WayPointSet seen(visited.begin(), visited.end());
    Traverse(point, from, seen, &visited, piece);
    return 0;
}

// Splits `segs` into connected pieces, in order of their first ungrouped segment, and appends the
// ids of the piece with the smallest total length. Lengths are compared with a plain `<`, so on
// equal lengths the piece formed first (the one holding the first segment) wins. 1 when no piece
// was formed (no non-null segment).
int KrRoutingCheck::GetMiniDisjoint(std::vector<KrRouteSegment*>& segs, std::vector<long>& ids) {
    WorkingList working(segs);
    SegmentSet grouped;
    std::vector<std::vector<KrRouteSegment*>> pieces;
    // Bound: every round groups at least its start segment, which the cursor then passes for good.
    for (KrRouteSegment* start = working.FirstNotGrouped(grouped); start != nullptr;
         start = working.FirstNotGrouped(grouped)) {
        KrRoutingWayPoint* a = OtherEnd(start, nullptr);  // the start end, ends[0]
        std::vector<KrRouteSegment*> piece = CollectPiece(start, a);
        for (KrRouteSegment* seg : piece) {
            working.RemoveFirst(seg);
            grouped.insert(seg);
        }
        pieces.push_back(std::move(piece));
    }
    if (pieces.empty()) {
        return 1;
    }
    std::size_t best = 0;
    double bestLength = 0.0;
    GetTotalLength(pieces[0], bestLength);
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        double length = 0.0;
        GetTotalLength(pieces[i], length);
        if (length < bestLength) {
            best = i;
            bestLength = length;
        }
    }
    for (KrRouteSegment* seg : pieces[best]) {
        if (seg != nullptr) {
            ids.push_back(seg->GetId());
        }
    }
    return 0;
}

// The first segment of `segs` that is in none of `pieces`, or null. Null entries of `segs` are not
// segments and are passed over.
int KrRoutingCheck::GetOneSegmentNotGrouped(std::vector<KrRouteSegment*>& segs,
                                            std::vector<std::vector<KrRouteSegment*>>& pieces,
                                            KrRouteSegment*& seg) {
    seg = nullptr;
    SegmentSet grouped;
    for (auto const& piece : pieces) {
        grouped.insert(piece.begin(), piece.end());
    }
    for (KrRouteSegment* candidate : segs) {
        if (candidate != nullptr && grouped.count(candidate) == 0) {
            seg = candidate;
            break;
        }
    }
    return 0;
}

// Sum of the segments' lengths, in order; null entries count nothing.
int KrRoutingCheck::GetTotalLength(std::vector<KrRouteSegment*>& segs, double& total) {
    total = 0.0;
    for (KrRouteSegment* seg : segs) {
        if (seg == nullptr) {
            continue;
        }
        double length = 0.0;
        seg->GetLength(length);
        total += length;
    }
    return 0;
}

// Nothing to do, deliberately: the layout redraws every segment as straight runs on the grid from its
// length alone, so several lines between two points of one segment do not change what the layout
// produces; two segments between the same two points form a closed path, which the loop check
// reports. The sketch is left unchanged.
int KrRoutingCheck::EliminateMultiLineBetweenTwoPoint(IRoutingSketch* sketch) {
    return sketch == nullptr ? 1 : 0;
}

// Nothing to do, deliberately: a bend in the input does not change what the layout produces, since
// every segment is redrawn as straight runs on the grid from its length alone. No bend is recorded and
// the sketch is left unchanged.
int KrRoutingCheck::CheckBends(IRoutingSketch* sketch) {
    return sketch == nullptr ? 1 : 0;
}
