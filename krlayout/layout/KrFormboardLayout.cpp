#include <krlayout/layout/KrFormboardLayout.h>

#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/grid/KrSegmentIndex.h>
#include <krlayout/layout/KrRoutingPriorityByDiameter.h>
#include <krlayout/model/ALPoint.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/model/KrSegmentGeometry.h>
#include <krlayout/model/e_AngleArea.h>
#include <krlayout/sketch/IRoutingSketch.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <unordered_map>
#include <vector>

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
// Angles are counted in units of 2^-32 turns, so that every direction the layout uses (the eight
// 45-degree directions and the fans of finer halvings) is an exact integer and turning wraps.
constexpr std::uint32_t kEighth = 1u << 29;
constexpr std::uint32_t kHalfTurn = 1u << 31;
// The direct angle stored on a segment uses the library's value of pi, as the grid layouts do.
constexpr double kLibraryPi = 3.1415926536;
// Box checks one branch point may make before its remaining children are placed unchecked in
// the next free direction (and the point counted as crowded): enough for a point with thousands
// of children, small enough that no input makes one point quadratic in the whole harness.
constexpr long kChecksPerPoint = 200;

// Points and directions of the drawing; its distances are those of KrSegmentGeometry, the exact
// plane geometry the quality measure of a drawing uses too.
using Vec = KrSegmentGeometry::Point;

// An axis-aligned box; `empty` when it holds nothing.
struct Box {
    double x0 = kInf;
    double y0 = kInf;
    double x1 = -kInf;
    double y1 = -kInf;
    bool Empty() const { return x0 > x1; }
    void Add(Vec p) {
        x0 = std::min(x0, p.x);
        y0 = std::min(y0, p.y);
        x1 = std::max(x1, p.x);
        y1 = std::max(y1, p.y);
    }
    void Add(Box const& b) {
        if (!b.Empty()) {
            Add(Vec{b.x0, b.y0});
            Add(Vec{b.x1, b.y1});
        }
    }
    double Area() const { return Empty() ? 0.0 : (x1 - x0) * (y1 - y0); }
    KrSegmentGeometry::Box Closed() const { return {x0, y0, x1, y1}; }
};

// The unit vector of an angle; the eight 45-degree directions exactly (their diagonal components
// are the double nearest sqrt(1/2)).
Vec UnitOf(std::uint32_t a) {
    if (a % kEighth == 0) {
        static double const h = std::sqrt(0.5);
        static Vec const table[8] = {{1, 0}, {h, h}, {0, 1}, {-h, h}, {-1, 0}, {-h, -h}, {0, -1}, {h, -h}};
        return table[a / kEighth];
    }
    double const turns = static_cast<double>(a) / 4294967296.0;
    double const rad = turns * 2.0 * 3.14159265358979323846;
    return {std::cos(rad), std::sin(rad)};
}

// A point of a child's frame in its parent's frame: mirrored (m = -1 flips y), turned by u and
// moved to q.
Vec Place(Vec p, Vec u, int m, Vec q) {
    double const y = m * p.y;
    return {q.x + u.x * p.x - u.y * y, q.y + u.y * p.x + u.x * y};
}

Box PlaceBox(Box const& b, Vec u, int m, Vec q) {
    Box out;
    if (b.Empty()) {
        return out;
    }
    out.Add(Place({b.x0, b.y0}, u, m, q));
    out.Add(Place({b.x0, b.y1}, u, m, q));
    out.Add(Place({b.x1, b.y0}, u, m, q));
    out.Add(Place({b.x1, b.y1}, u, m, q));
    return out;
}

// A placement of a subtree's frame in the frame of a branch point: mirrored (m = -1 flips y),
// turned by u and moved to t.
struct Xf {
    Vec u{1.0, 0.0};
    int m = 1;
    Vec t{0.0, 0.0};
    Vec operator()(Vec p) const { return Place(p, u, m, t); }
    // This placement after `inner` (inner's frame -> this frame's source frame).
    Xf After(Xf const& inner) const {
        Xf out;
        Vec const iu{inner.u.x, m * inner.u.y};
        out.u = {u.x * iu.x - u.y * iu.y, u.y * iu.x + u.x * iu.y};
        out.m = m * inner.m;
        out.t = (*this)(inner.t);
        return out;
    }
    Box operator()(Box const& b) const { return PlaceBox(b, u, m, t); }
};

// Route segment data of the tree the layout works on.
struct Node {
    KrRouteSegment* seg = nullptr;
    double length = 0.0;
    double diameter = 0.0;
    KrRoutingWayPoint* near = nullptr;  // the end toward the root
    KrRoutingWayPoint* far = nullptr;   // the end its children hang off
    std::vector<int> children;
    long count = 1;  // segments in its subtree
    // Bottom-up result: the box (own frame) of everything beyond the segment, its largest
    // diameter, and for each child its turn and mirror.
    Box box;
    double boxDiameter = 0.0;
    std::vector<std::uint32_t> turn;
    std::vector<int> mirror;
};

// One thing already drawn around a branch point, in the frame of the segment that ends there: a
// segment (a to b), or everything beyond the segment of `node` placed by `xf` (its box `box`).
// `cap` is the length of the shortest segment between it and the branch point (infinite for a
// segment that reaches the point itself); `diameter` the largest diameter it holds.
struct Item {
    bool segment;
    Vec a;
    Vec b;
    Box box;
    double diameter;
    double cap;
    int node;
    Xf xf;
};

Item SegmentItem(Vec a, Vec b, double diameter, double cap) {
    Box box;
    box.Add(a);
    box.Add(b);
    return Item{true, a, b, box, diameter, cap, -1, Xf{}};
}

class Builder {
public:
    Builder(std::vector<Node>& nodes, double clearance) : nodes_(nodes), clearance_(clearance) {}

    long crowded = 0;

    // A child's own segment leaving the branch point q in direction u (it reaches the point).
    Item ChildSegment(int node, Vec q, Vec u) const {
        Node const& n = nodes_[static_cast<std::size_t>(node)];
        return SegmentItem(q, {q.x + n.length * u.x, q.y + n.length * u.y}, n.diameter, kInf);
    }

    // Everything beyond `node`'s segment, placed by xf, as an item with the given cap.
    Item Beyond(int node, Xf const& xf, double cap) const {
        Node const& n = nodes_[static_cast<std::size_t>(node)];
        return Item{false, {}, {}, xf(n.box), n.boxDiameter, cap, node, xf};
    }

    // Places the children of a point at (length, 0) in the frame of a segment running from the
    // origin along +x (diameter `diameter`), keeping clear of `items` (already drawn, for the
    // root's second end) and of each other. Writes the turns and mirrors to `turn` and `mirror`
    // and the box of all placed children (their segments and subtree boxes) to `box`.
    void Compose(double length, double diameter, std::vector<int>& children, std::vector<Item> const& items,
                 std::vector<std::uint32_t>& turn, std::vector<int>& mirror, Box& box, double& boxDiameter) {
        long broken = Try(length, diameter, children, items, turn, mirror, box, boxDiameter);
        if (broken > 0 && children.size() > 1) {
            // Crowded in the first order: try the children with the largest subtree boxes first,
            // then the bare ends first, and keep the order that breaks the fewest checks (the
            // earlier one on a tie).
            std::vector<std::vector<int>> orders(2, children);
            auto area = [this](int c) { return nodes_[static_cast<std::size_t>(c)].box.Area(); };
            std::stable_sort(orders[0].begin(), orders[0].end(), [&](int a, int b) { return area(a) > area(b); });
            std::stable_partition(orders[1].begin(), orders[1].end(),
                                  [this](int c) { return nodes_[static_cast<std::size_t>(c)].children.empty(); });
            for (std::vector<int>& order : orders) {
                std::vector<std::uint32_t> t;
                std::vector<int> m;
                Box b;
                double bd = 0.0;
                long const k = Try(length, diameter, order, items, t, m, b, bd);
                if (k < broken) {
                    broken = k;
                    children = order;
                    turn = t;
                    mirror = m;
                    box = b;
                    boxDiameter = bd;
                }
                if (broken == 0) {
                    break;
                }
            }
        }
        if (broken > 0) {
            ++crowded;
        }
    }

private:
    // One greedy pass over the children in the order given; the number of checks broken.
    long Try(double length, double diameter, std::vector<int> const& children, std::vector<Item> items,
             std::vector<std::uint32_t>& turn, std::vector<int>& mirror, Box& box, double& boxDiameter) {
        Vec const q{length, 0.0};
        // Segments reaching the point (infinite cap) need checking only against capped items, so
        // they are kept apart: a bare end is then checked against the subtrees alone.
        std::vector<Item> reaching{SegmentItem({0.0, 0.0}, q, diameter, kInf)};
        std::vector<std::uint32_t> dirs;
        KrFormboardLayout::GetDirections(static_cast<long>(children.size()), dirs);
        std::vector<char> used(dirs.size(), 0);
        turn.assign(children.size(), 0);
        mirror.assign(children.size(), 1);
        box = Box{};
        boxDiameter = 0.0;
        work_ = 0;
        long brokenHere = 0;
        std::size_t firstFree = 0;
        std::size_t branchesLeft = 0;  // children with a subtree not placed yet
        for (int c : children) {
            branchesLeft += nodes_[static_cast<std::size_t>(c)].children.empty() ? 0 : 1;
        }
        for (std::size_t ci = 0; ci < children.size(); ++ci) {
            int const childIndex = children[ci];
            Node const& child = nodes_[static_cast<std::size_t>(childIndex)];
            while (firstFree < dirs.size() && used[firstFree]) {
                ++firstFree;
            }
            std::size_t bestDir = firstFree;
            int bestMirror = 1;
            long bestBroken = std::numeric_limits<long>::max();
            double bestArea = kInf;
            // A child that carries further segments turns its whole subtree with it, so it keeps
            // to the seven main directions while one is free; only bare ends take the fan.
            // Bare ends leave as many main directions free as there are such children still to come.
            bool const leaf = child.children.empty();
            std::size_t const last = (leaf || FreeBase(used) == 0) ? dirs.size() : 7;
            bool const spareBase = !leaf || FreeBase(used) > branchesLeft;
            std::size_t first = spareBase ? firstFree : std::max<std::size_t>(firstFree, 7);
            while (first < dirs.size() && used[first]) {
                ++first;
            }
            if (first >= dirs.size()) {
                first = firstFree;  // cannot happen: the fan holds a direction for every child
            }
            bestDir = first;
            if (!leaf && branchesLeft > 0) {
                --branchesLeft;
            }
            for (std::size_t d = first; work_ < kChecksPerPoint && d < last && bestBroken > 0; ++d) {
                if (used[d]) {
                    continue;
                }
                Vec const u = UnitOf(dirs[d]);
                for (int m : {1, -1}) {
                    if (m == -1 && child.box.Empty()) {
                        break;
                    }
                    Item const seg = ChildSegment(childIndex, q, u);
                    Item const sub = Beyond(childIndex, Xf{u, m, q}, child.length);
                    long broken = 0;
                    for (Item const& it : items) {
                        if (broken > bestBroken) {
                            break;  // already worse than the best so far
                        }
                        if (Breaks(seg, it)) {
                            ++broken;
                        }
                        if (!sub.box.Empty() && Breaks(sub, it)) {
                            ++broken;
                        }
                    }
                    if (!sub.box.Empty()) {
                        for (Item const& it : reaching) {
                            if (broken > bestBroken) {
                                break;
                            }
                            if (Breaks(sub, it)) {
                                ++broken;
                            }
                        }
                    }
                    Box grown = box;
                    grown.Add(seg.b);
                    grown.Add(sub.box);
                    double const area = grown.Area();
                    if (broken < bestBroken || (broken == bestBroken && area < bestArea)) {
                        bestBroken = broken;
                        bestDir = d;
                        bestMirror = m;
                        bestArea = area;
                    }
                }
            }
            if (bestBroken > 0) {
                brokenHere += bestBroken == std::numeric_limits<long>::max() ? 1 : bestBroken;
            }
            if (bestDir >= dirs.size()) {
                // The fan always has a direction for every child; keep the index valid anyway.
                bestDir = dirs.size() - 1;
            }
            if (!leaf && bestDir >= 7) {
                // More branches with subtrees than main directions: this one and its subtree are
                // drawn turned to a fan direction, which the point reports as crowded.
                brokenHere += 1;
            }
            used[bestDir] = 1;
            turn[ci] = dirs[bestDir];
            mirror[ci] = bestMirror;
            Vec const u = UnitOf(dirs[bestDir]);
            Item const seg = ChildSegment(childIndex, q, u);
            reaching.push_back(seg);
            box.Add(seg.box);
            boxDiameter = std::max(boxDiameter, child.diameter);
            if (!child.box.Empty()) {
                Item const sub = Beyond(childIndex, Xf{u, bestMirror, q}, child.length);
                items.push_back(sub);
                box.Add(sub.box);
                boxDiameter = std::max(boxDiameter, child.boxDiameter);
            }
        }
        return brokenHere;
    }

    static std::size_t FreeBase(std::vector<char> const& used) {
        std::size_t n = 0;
        for (std::size_t d = 0; d < 7 && d < used.size(); ++d) {
            n += used[d] ? 0 : 1;
        }
        return n;
    }

    // Whether p and q break the clearance. Two segments that both reach the branch point meet
    // there (their directions differ) and need none. Where the boxes come too close, the subtree
    // items are opened into their segments and subtrees, down to single segments, while the
    // point's work allowance lasts; past it, closeness counts as breaking.
    bool Breaks(Item const& p, Item const& q) {
        double const cap = std::min(p.cap, q.cap);
        if (cap == kInf) {
            return false;
        }
        // A distance that equals the clearance up to rounding (a chain's next joint lies exactly
        // one segment length on) keeps it.
        double const wanted = std::min(std::max(clearance_, 0.5 * (p.diameter + q.diameter)), cap) * (1.0 - 1e-9);
        double const dx = std::max({0.0, p.box.x0 - q.box.x1, q.box.x0 - p.box.x1});
        double const dy = std::max({0.0, p.box.y0 - q.box.y1, q.box.y0 - p.box.y1});
        if (dx >= wanted || dy >= wanted || dx * dx + dy * dy >= wanted * wanted) {
            return false;
        }
        if (p.segment && q.segment) {
            return KrSegmentGeometry::SegmentDistance(p.a, p.b, q.a, q.b) < wanted;
        }
        if (p.segment != q.segment) {
            Item const& s = p.segment ? p : q;
            Item const& b = p.segment ? q : p;
            if (KrSegmentGeometry::SegmentBoxDistance(s.a, s.b, b.box.Closed()) >= wanted) {
                return false;
            }
        }
        if (++work_ >= kChecksPerPoint) {
            return true;  // out of allowance: closeness counts as breaking
        }
        // Open the larger subtree item.
        bool const openP = !p.segment && (q.segment || p.box.Area() >= q.box.Area());
        Item const& open = openP ? p : q;
        Item const& other = openP ? q : p;
        Node const& n = nodes_[static_cast<std::size_t>(open.node)];
        Vec const far{n.length, 0.0};
        for (std::size_t k = 0; k < n.children.size(); ++k) {
            int const ck = n.children[k];
            Node const& c = nodes_[static_cast<std::size_t>(ck)];
            Vec const u = UnitOf(n.turn[k]);
            Item const seg = SegmentItem(open.xf(far), open.xf(Vec{far.x + c.length * u.x, far.y + c.length * u.y}),
                                         c.diameter, open.cap);
            if (Breaks(seg, other)) {
                return true;
            }
            if (!c.box.Empty() && Breaks(Beyond(ck, open.xf.After(Xf{u, n.mirror[k], far}), std::min(open.cap, c.length)), other)) {
                return true;
            }
        }
        return false;
    }

    std::vector<Node>& nodes_;
    double clearance_;
    long work_ = 0;
};

// Children in the order they pick their directions: segments with a subtree before bare ends,
// then by diameter, subtree size and length (larger first), then by id.
void SortChildren(std::vector<Node> const& nodes, std::vector<int>& children) {
    std::sort(children.begin(), children.end(), [&](int a, int b) {
        Node const& p = nodes[static_cast<std::size_t>(a)];
        Node const& q = nodes[static_cast<std::size_t>(b)];
        bool const pLeaf = p.children.empty();
        bool const qLeaf = q.children.empty();
        if (pLeaf != qLeaf) {
            return qLeaf;
        }
        if (p.diameter != q.diameter) {
            return p.diameter > q.diameter;
        }
        if (p.count != q.count) {
            return p.count > q.count;
        }
        if (p.length != q.length) {
            return p.length > q.length;
        }
        return p.seg->GetId() < q.seg->GetId();
    });
}

}  // namespace

KrFormboardLayout::KrFormboardLayout() : clearance(-1.0), crowded(0), placed(0), usedClearance(0.0) {}

KrFormboardLayout::~KrFormboardLayout() = default;

int KrFormboardLayout::SetClearance(double value) {
    clearance = (value >= 0.0 && std::isfinite(value)) ? value : -1.0;
    return 0;
}

int KrFormboardLayout::GetClearance(double& value) {
    value = clearance;
    return 0;
}

int KrFormboardLayout::GetCrowdedPointCount(long& count) {
    count = crowded;
    return 0;
}

int KrFormboardLayout::GetPlacedSegmentCount(long& count) {
    count = placed;
    return 0;
}

int KrFormboardLayout::GetUsedClearance(double& value) {
    value = usedClearance;
    return 0;
}

int KrFormboardLayout::GetDirections(long children, std::vector<std::uint32_t>& out) {
    // Straight on, left, right, the front diagonals, the back diagonals.
    static std::uint32_t const base[7] = {0u,           2u * kEighth, 6u * kEighth, kEighth,
                                          7u * kEighth, 3u * kEighth, 5u * kEighth};
    out.assign(base, base + 7);
    if (children <= 7) {
        return 0;
    }
    // The smallest fan of 2^k equal steps (k >= 4) whose directions within three eighths of a
    // turn of straight on (the base directions included) give every child its own: the backward
    // quarter, along the segment the point is reached through, is left to the two back diagonals.
    int k = 4;
    auto fits = [children](int bits) {
        std::int64_t const steps = std::int64_t{1} << bits;
        return 2 * (3 * steps / 8) + 1 >= children;  // within +-135 degrees, straight on included
    };
    while (k < 31 && !fits(k)) {
        ++k;
    }
    std::uint32_t const step = static_cast<std::uint32_t>(std::uint64_t{1} << (32 - k));
    std::int64_t const reach = 3 * (std::int64_t{1} << k) / 8;
    for (std::int64_t i = 1; i <= reach; ++i) {
        for (std::int64_t sign : {1, -1}) {
            std::uint32_t const a = static_cast<std::uint32_t>(sign * i) * step;
            if (a % kEighth != 0) {
                out.push_back(a);
            }
        }
    }
    return 0;
}

int KrFormboardLayout::LayOut(IRoutingSketch* sketch) {
    crowded = 0;
    placed = 0;
    usedClearance = 0.0;
    if (sketch == nullptr) {
        return 1;
    }
    KrRoutingGrid* grid = nullptr;
    sketch->GetGrid(grid);
    if (grid == nullptr) {
        return 1;
    }
    double gx = 0.0;
    double gy = 0.0;
    grid->GetGridSpan(gx, gy);
    usedClearance = clearance >= 0.0 ? clearance : std::max({0.0, gx, gy});
    if (!std::isfinite(usedClearance)) {
        usedClearance = 0.0;
    }

    std::vector<KrRouteSegment*> segments;
    sketch->GetAllSegments(segments);
    segments.erase(std::remove(segments.begin(), segments.end(), nullptr), segments.end());
    if (segments.empty()) {
        return 0;
    }
    KrRouteSegment* rootSeg = nullptr;
    KrRoutingPriorityByDiameter priority;
    priority.GetPriorestSegment(segments, rootSeg);
    if (rootSeg == nullptr) {
        rootSeg = segments.front();
    }

    // The segments meeting at each end point (segments with two distinct ends only).
    std::vector<Node> nodes(segments.size());
    std::unordered_map<KrRoutingWayPoint*, std::vector<int>> atPoint;
    atPoint.reserve(segments.size() * 2);
    std::vector<KrRoutingWayPoint*> endA(segments.size(), nullptr);
    std::vector<KrRoutingWayPoint*> endB(segments.size(), nullptr);
    int rootIndex = -1;
    for (std::size_t i = 0; i < segments.size(); ++i) {
        Node& n = nodes[i];
        n.seg = segments[i];
        n.seg->GetLength(n.length);
        n.seg->GetDiameter(n.diameter);
        if (!std::isfinite(n.length) || n.length < 0.0) {
            n.length = 0.0;
        }
        if (!std::isfinite(n.diameter) || n.diameter < 0.0) {
            n.diameter = 0.0;
        }
        KrRoutingWayPoint* a = nullptr;
        KrRoutingWayPoint* b = nullptr;
        if (!KrSegmentIndex::SegmentEnds(n.seg, a, b) || a == b) {
            continue;
        }
        endA[i] = a;
        endB[i] = b;
        atPoint[a].push_back(static_cast<int>(i));
        atPoint[b].push_back(static_cast<int>(i));
        if (n.seg == rootSeg) {
            rootIndex = static_cast<int>(i);
        }
    }
    if (rootIndex < 0) {
        return 0;
    }

    // The tree from the root: breadth first, every point entered once (a segment leading back to
    // a point already entered would close a loop and is left out).
    std::vector<int> order;
    order.reserve(segments.size());
    std::vector<char> seen(segments.size(), 0);
    std::unordered_map<KrRoutingWayPoint*, char> entered;
    entered.reserve(segments.size() * 2);
    Node& root = nodes[static_cast<std::size_t>(rootIndex)];
    root.near = endA[static_cast<std::size_t>(rootIndex)];
    root.far = endB[static_cast<std::size_t>(rootIndex)];
    seen[static_cast<std::size_t>(rootIndex)] = 1;
    entered[root.near] = 1;
    entered[root.far] = 1;
    order.push_back(rootIndex);
    // The root's children at its start (the origin), kept apart from those at its far end.
    std::vector<int> rootStartChildren;
    for (std::size_t head = 0; head < order.size(); ++head) {
        int const si = order[head];
        Node& s = nodes[static_cast<std::size_t>(si)];
        int const sides = si == rootIndex ? 2 : 1;
        for (int side = 0; side < sides; ++side) {
            KrRoutingWayPoint* const p = side == 0 ? s.far : s.near;
            std::vector<int>& out = side == 0 ? s.children : rootStartChildren;
            for (int ci : atPoint[p]) {
                std::size_t const c = static_cast<std::size_t>(ci);
                if (seen[c]) {
                    continue;
                }
                KrRoutingWayPoint* const other = endA[c] == p ? endB[c] : endA[c];
                if (entered.count(other) != 0) {
                    continue;
                }
                seen[c] = 1;
                entered[other] = 1;
                nodes[c].near = p;
                nodes[c].far = other;
                out.push_back(ci);
                order.push_back(ci);
            }
        }
    }

    // Bottom-up: subtree sizes, then each segment's children placed at its far end.
    Builder builder(nodes, usedClearance);
    for (std::size_t k = order.size(); k-- > 0;) {
        Node& n = nodes[static_cast<std::size_t>(order[k])];
        for (int c : n.children) {
            n.count += nodes[static_cast<std::size_t>(c)].count;
        }
    }
    for (std::size_t k = order.size(); k-- > 1;) {
        Node& n = nodes[static_cast<std::size_t>(order[k])];
        SortChildren(nodes, n.children);
        builder.Compose(n.length, n.diameter, n.children, {}, n.turn, n.mirror, n.box, n.boxDiameter);
    }
    // The root: its far end first (frame along +x from the origin, turned half a round into the
    // drawing), then its start, whose children also keep clear of everything at the far end.
    SortChildren(nodes, root.children);
    builder.Compose(root.length, root.diameter, root.children, {}, root.turn, root.mirror, root.box, root.boxDiameter);
    SortChildren(nodes, rootStartChildren);
    std::vector<Item> farSide;
    {
        // Far-end items in the frame of the root's start: the root runs from (0, 0) to (L, 0)
        // there with the start at (L, 0); a far-end point (x, y) is (L - x, -y).
        double const L = root.length;
        Vec const q{L, 0.0};
        Xf const flip{{-1.0, 0.0}, 1, {L, 0.0}};
        for (std::size_t i = 0; i < root.children.size(); ++i) {
            int const ci = root.children[i];
            Node const& c = nodes[static_cast<std::size_t>(ci)];
            Vec const u = UnitOf(root.turn[i]);
            Vec const end{q.x + c.length * u.x, q.y + c.length * u.y};
            farSide.push_back(SegmentItem(flip(q), flip(end), c.diameter, L));
            if (!c.box.Empty()) {
                farSide.push_back(builder.Beyond(ci, flip.After(Xf{u, root.mirror[i], q}), std::min(L, c.length)));
            }
        }
    }
    std::vector<std::uint32_t> startTurn;
    std::vector<int> startMirror;
    Box startBox;
    double startDiameter = 0.0;
    builder.Compose(root.length, root.diameter, rootStartChildren, farSide, startTurn, startMirror, startBox,
                    startDiameter);
    crowded = builder.crowded;

    // Top-down: each segment from the way point its parent left at the shared end.
    struct Pose {
        KrRoutingWayPoint* start;
        Vec at;
        std::uint32_t angle;
        int sigma;
    };
    std::vector<Pose> pose(nodes.size(), Pose{nullptr, {0, 0}, 0, 1});
    auto newPoint = [grid](Vec p) {
        KrRoutingWayPoint* w = new KrRoutingWayPoint(ALPoint(p.x, p.y, 0.0));
        grid->AddNonNodePoint(w);  // the grid owns it from here on
        return w;
    };
    auto place = [&](Node& n, KrRoutingWayPoint* from, KrRoutingWayPoint* to, std::uint32_t angle) {
        std::vector<KrRoutingWayPoint*> path{from, to};
        n.seg->SetNewPoints(path);
        n.seg->SetRedefine(true);
        n.seg->SetDirectAngle(static_cast<double>(angle) / 4294967296.0 * 2.0 * kLibraryPi);
        ++placed;
    };
    auto hang = [&](std::vector<int> const& children, std::vector<std::uint32_t> const& turn,
                    std::vector<int> const& mirror, KrRoutingWayPoint* at, Vec atXY, std::uint32_t angle,
                    int sigma) {
        for (std::size_t i = 0; i < children.size(); ++i) {
            Pose& p = pose[static_cast<std::size_t>(children[i])];
            p.start = at;
            p.at = atXY;
            p.angle = angle + static_cast<std::uint32_t>(sigma) * turn[i];
            p.sigma = sigma * mirror[i];
        }
    };
    {
        Vec const origin{0.0, 0.0};
        Vec const far{-root.length, 0.0};
        KrRoutingWayPoint* a = newPoint(origin);
        KrRoutingWayPoint* b = newPoint(far);
        place(root, a, b, kHalfTurn);
        root.seg->SetType(e_AngleAreaRoot);
        // Far end: the root's own frame turned half a round. Start: the frame running from the
        // far end toward the origin (no turn).
        hang(root.children, root.turn, root.mirror, b, far, kHalfTurn, 1);
        hang(rootStartChildren, startTurn, startMirror, a, origin, 0u, 1);
    }
    for (std::size_t k = 1; k < order.size(); ++k) {
        Node& n = nodes[static_cast<std::size_t>(order[k])];
        Pose const& p = pose[static_cast<std::size_t>(order[k])];
        Vec const u = UnitOf(p.angle);
        Vec const end{p.at.x + n.length * u.x, p.at.y + n.length * u.y};
        KrRoutingWayPoint* w = newPoint(end);
        place(n, p.start, w, p.angle);
        hang(n.children, n.turn, n.mirror, w, end, p.angle, p.sigma);
    }
    sketch->CheckRouteSegment();
    return 0;
}
