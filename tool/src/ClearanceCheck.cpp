#include "ClearanceCheck.h"

#include "Geometry2D.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <unordered_map>

namespace krtool {

namespace {

constexpr double kTol = Geometry2D::kTolerance;
constexpr size_t kNone = std::numeric_limits<size_t>::max();
constexpr double kUnlimited = std::numeric_limits<double>::infinity();

// The points of the sketch, each point within the tolerance of an earlier one taken as that one.
// Points are hashed into cells as wide as the tolerance, so a point finds its match in its own
// cell or one of the eight around it.
class NodeIndex {
public:
    size_t nodeOf(Point2 const& p)
    {
        long long const cx = cellOf(p.x);
        long long const cy = cellOf(p.y);
        for (long long dx = -1; dx <= 1; ++dx) {
            for (long long dy = -1; dy <= 1; ++dy) {
                auto it = cells_.find({cx + dx, cy + dy});
                if (it == cells_.end())
                    continue;
                for (size_t id : it->second) {
                    if (Geometry2D::samePoint(points_[id], p))
                        return id;
                }
            }
        }
        size_t const id = points_.size();
        points_.push_back(p);
        cells_[{cx, cy}].push_back(id);
        return id;
    }
    size_t count() const { return points_.size(); }

private:
    struct CellHash {
        size_t operator()(std::pair<long long, long long> const& c) const
        {
            return std::hash<long long>()(c.first) * 0x9E3779B97F4A7C15ULL ^
                   std::hash<long long>()(c.second);
        }
    };
    static long long cellOf(double v)
    {
        // Far beyond any drawing, and NaN, share the outermost cells.
        double const c = std::floor(v / kTol);
        double const limit = 4.0e18;
        if (!(c > -limit))
            return -static_cast<long long>(limit);
        if (!(c < limit))
            return static_cast<long long>(limit);
        return static_cast<long long>(c);
    }

    std::vector<Point2> points_;
    std::unordered_map<std::pair<long long, long long>, std::vector<size_t>, CellHash> cells_;
};

// The harness as a forest: nodes are the segments' end points, edges the segments. Paths are
// answered by lifting both ends towards their common ancestor in power-of-two steps, each step
// remembering the shortest segment it passes; the step tables are built on the first question.
class Forest {
public:
    Forest(size_t nodes, std::vector<std::pair<size_t, size_t>> const& ends,
           std::vector<double> const& lengths)
        : parent_(nodes, kNone), parentLength_(nodes, kUnlimited), depth_(nodes, 0),
          piece_(nodes, kNone)
    {
        // Adjacency in one array: the edges of node v are first_[v] .. first_[v + 1].
        std::vector<size_t> first(nodes + 1, 0);
        for (auto const& e : ends) {
            if (e.first == kNone || e.second == kNone || e.first == e.second)
                continue;
            ++first[e.first + 1];
            ++first[e.second + 1];
        }
        for (size_t v = 0; v < nodes; ++v)
            first[v + 1] += first[v];
        std::vector<std::pair<size_t, size_t>> adjacent(first[nodes]);
        std::vector<size_t> fill(first.begin(), first.end() - 1);
        for (size_t s = 0; s < ends.size(); ++s) {
            auto const& e = ends[s];
            if (e.first == kNone || e.second == kNone || e.first == e.second)
                continue;
            adjacent[fill[e.first]++] = {e.second, s};
            adjacent[fill[e.second]++] = {e.first, s};
        }
        // Breadth first from every node not reached yet: a spanning tree of each piece.
        std::vector<size_t> queue;
        queue.reserve(nodes);
        for (size_t root = 0; root < nodes; ++root) {
            if (piece_[root] != kNone)
                continue;
            piece_[root] = root;
            queue.clear();
            queue.push_back(root);
            for (size_t qi = 0; qi < queue.size(); ++qi) {
                size_t const v = queue[qi];
                for (size_t k = first[v]; k < first[v + 1]; ++k) {
                    size_t const w = adjacent[k].first;
                    if (piece_[w] != kNone)
                        continue;
                    piece_[w] = root;
                    parent_[w] = v;
                    parentLength_[w] = lengths[adjacent[k].second];
                    depth_[w] = depth_[v] + 1;
                    maxDepth_ = std::max(maxDepth_, depth_[w]);
                    queue.push_back(w);
                }
            }
        }
    }

    // The number of segments on the tree path from x to y and the shortest length among them
    // (kUnlimited when there are none); kNone segments when x and y lie in different pieces.
    std::pair<size_t, double> path(size_t x, size_t y)
    {
        if (piece_[x] != piece_[y])
            return {kNone, kUnlimited};
        buildSteps();
        size_t const edges0 = depth_[x] + depth_[y];
        double shortest = kUnlimited;
        if (depth_[x] < depth_[y])
            std::swap(x, y);
        size_t rise = depth_[x] - depth_[y];
        for (size_t k = 0; rise != 0; ++k, rise >>= 1) {
            if (rise & 1) {
                shortest = std::min(shortest, low_[k][x]);
                x = up_[k][x];
            }
        }
        if (x != y) {
            for (size_t k = up_.size(); k-- > 0;) {
                if (up_[k][x] != up_[k][y]) {
                    shortest = std::min({shortest, low_[k][x], low_[k][y]});
                    x = up_[k][x];
                    y = up_[k][y];
                }
            }
            shortest = std::min({shortest, low_[0][x], low_[0][y]});
            x = up_[0][x];
        }
        return {edges0 - 2 * depth_[x], shortest};
    }

private:
    void buildSteps()
    {
        if (!up_.empty())
            return;
        size_t const n = parent_.size();
        size_t levels = 1;
        while ((size_t(1) << levels) <= maxDepth_)
            ++levels;
        up_.assign(levels, std::vector<size_t>(n));
        low_.assign(levels, std::vector<double>(n, kUnlimited));
        for (size_t v = 0; v < n; ++v) {
            up_[0][v] = parent_[v] == kNone ? v : parent_[v];
            low_[0][v] = parentLength_[v];
        }
        for (size_t k = 1; k < levels; ++k) {
            for (size_t v = 0; v < n; ++v) {
                size_t const mid = up_[k - 1][v];
                up_[k][v] = up_[k - 1][mid];
                low_[k][v] = std::min(low_[k - 1][v], low_[k - 1][mid]);
            }
        }
    }

    std::vector<size_t> parent_;
    std::vector<double> parentLength_;
    std::vector<size_t> depth_;
    std::vector<size_t> piece_;
    size_t maxDepth_ = 0;
    std::vector<std::vector<size_t>> up_;
    std::vector<std::vector<double>> low_;
};

// The two end nodes of a segment: the points of its sketch that only one of its entities
// reaches. A chain that closes on itself or branches has no such pair; its first entity's start
// and last entity's end stand for them then.
std::pair<size_t, size_t> endsOf(ClearanceCheck::Segment const& s, NodeIndex& nodes)
{
    if (s.sketch.empty())
        return {kNone, kNone};
    std::vector<size_t> touched;
    touched.reserve(2 * s.sketch.size());
    for (auto const& l : s.sketch) {
        touched.push_back(nodes.nodeOf(l.first));
        touched.push_back(nodes.nodeOf(l.second));
    }
    std::vector<size_t> odd;
    std::vector<size_t> sorted = touched;
    std::sort(sorted.begin(), sorted.end());
    for (size_t i = 0; i < sorted.size();) {
        size_t j = i;
        while (j < sorted.size() && sorted[j] == sorted[i])
            ++j;
        if ((j - i) % 2 == 1)
            odd.push_back(sorted[i]);
        i = j;
    }
    if (odd.size() == 2)
        return {odd[0], odd[1]};
    size_t const a = touched.front();
    size_t const b = touched.back();
    return {a, a == b ? kNone : b};
}

struct Box {
    double x0, y0, x1, y1;
};

struct Item {
    size_t segment;
    Point2 a;
    Point2 b;
    Box box;
};

bool finite(Point2 const& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y);
}

}  // namespace

std::vector<ClearanceCheck::Violation> ClearanceCheck::find(std::vector<Segment> const& segments,
                                                            double clearance)
{
    std::vector<Violation> out;
    if (!(clearance >= 0.0))
        clearance = 0.0;

    // The farthest any pair can be asked to keep apart; the cells are at least that wide.
    double reach = clearance;
    std::vector<Item> items;
    for (size_t si = 0; si < segments.size(); ++si) {
        Segment const& s = segments[si];
        if (!s.lines.empty() && std::isfinite(s.diameter))
            reach = std::max(reach, s.diameter);
        for (auto const& l : s.lines) {
            if (!finite(l.first) || !finite(l.second))
                continue;
            items.push_back({si, l.first, l.second,
                             {std::min(l.first.x, l.second.x), std::min(l.first.y, l.second.y),
                              std::max(l.first.x, l.second.x), std::max(l.first.y, l.second.y)}});
        }
    }
    if (!(reach > kTol) || items.size() < 2)
        return out;
    if (!std::isfinite(reach))
        reach = std::numeric_limits<double>::max();

    // Every line's box grown by half the reach: two lines closer than the reach have grown boxes
    // that overlap, so they share a cell.
    double const half = reach / 2.0;
    auto grown = [half](Box const& b) {
        return Box{b.x0 - half, b.y0 - half, b.x1 + half, b.y1 + half};
    };
    Box all = grown(items.front().box);
    std::vector<double> sizes;
    sizes.reserve(items.size());
    for (Item const& it : items) {
        Box const g = grown(it.box);
        all.x0 = std::min(all.x0, g.x0);
        all.y0 = std::min(all.y0, g.y0);
        all.x1 = std::max(all.x1, g.x1);
        all.y1 = std::max(all.y1, g.y1);
        sizes.push_back(std::max(it.box.x1 - it.box.x0, it.box.y1 - it.box.y0));
    }
    // Cells as wide as a typical line (the median), and no narrower than the reach; wider still
    // when the lines would fill too many cells, or the drawing would need more than 2^30 cells
    // along a side.
    std::nth_element(sizes.begin(), sizes.begin() + sizes.size() / 2, sizes.end());
    double const span = std::max(all.x1 - all.x0, all.y1 - all.y0);
    double cell = std::max({reach, sizes[sizes.size() / 2], span / 1073741824.0});
    auto cellOf = [&](double v, double origin) {
        return static_cast<std::uint64_t>(std::max(0.0, std::floor((v - origin) / cell)));
    };
    double const budget = 8.0 * static_cast<double>(items.size()) + 65536.0;
    for (;;) {
        double entries = 0.0;
        for (Item const& it : items) {
            Box const g = grown(it.box);
            entries += static_cast<double>(cellOf(g.x1, all.x0) - cellOf(g.x0, all.x0) + 1) *
                       static_cast<double>(cellOf(g.y1, all.y0) - cellOf(g.y0, all.y0) + 1);
        }
        if (entries <= budget || cell >= span)
            break;
        cell *= 2.0;
    }

    std::vector<std::pair<std::uint64_t, std::uint32_t>> entries;
    for (size_t i = 0; i < items.size(); ++i) {
        Box const g = grown(items[i].box);
        std::uint64_t const cx1 = cellOf(g.x1, all.x0);
        std::uint64_t const cy1 = cellOf(g.y1, all.y0);
        for (std::uint64_t cx = cellOf(g.x0, all.x0); cx <= cx1; ++cx) {
            for (std::uint64_t cy = cellOf(g.y0, all.y0); cy <= cy1; ++cy)
                entries.push_back({cx << 32 | cy, static_cast<std::uint32_t>(i)});
        }
    }
    std::sort(entries.begin(), entries.end());

    // Which segments meet and the tree paths between them, from the sketch.
    NodeIndex nodes;
    std::vector<std::pair<size_t, size_t>> ends(segments.size());
    std::vector<double> lengths(segments.size());
    for (size_t si = 0; si < segments.size(); ++si) {
        ends[si] = endsOf(segments[si], nodes);
        lengths[si] = segments[si].length;
    }
    Forest forest(nodes.count(), ends, lengths);
    auto meet = [&](size_t a, size_t b) {
        auto const& ea = ends[a];
        auto const& eb = ends[b];
        for (size_t x : {ea.first, ea.second}) {
            if (x != kNone && (x == eb.first || x == eb.second))
                return true;
        }
        return false;
    };
    // The shortest segment between a and b: the one on the shortest of the paths between an end
    // of a and an end of b, which passes through neither.
    auto shortestBetween = [&](size_t a, size_t b) {
        size_t bestEdges = kNone;
        double shortest = kUnlimited;
        for (size_t x : {ends[a].first, ends[a].second}) {
            for (size_t y : {ends[b].first, ends[b].second}) {
                if (x == kNone || y == kNone)
                    continue;
                auto const [edges, low] = forest.path(x, y);
                if (edges == kNone)
                    continue;
                if (edges < bestEdges || (edges == bestEdges && low < shortest)) {
                    bestEdges = edges;
                    shortest = low;
                }
            }
        }
        return shortest;
    };

    // Every pair of lines closer than the rule asks of their segments; a pair of segments with
    // several such lines is merged once all are found.
    for (size_t g0 = 0; g0 < entries.size();) {
        size_t g1 = g0;
        while (g1 < entries.size() && entries[g1].first == entries[g0].first)
            ++g1;
        std::uint64_t const cx = entries[g0].first >> 32;
        std::uint64_t const cy = entries[g0].first & 0xFFFFFFFFULL;
        for (size_t i = g0; i < g1; ++i) {
            Item const& p = items[entries[i].second];
            Box const gp = grown(p.box);
            for (size_t j = i + 1; j < g1; ++j) {
                Item const& q = items[entries[j].second];
                if (p.segment == q.segment)
                    continue;
                // The pair is looked at in one cell only: the one holding the lower left corner
                // of the overlap of their grown boxes.
                Box const gq = grown(q.box);
                double const ox = std::max(gp.x0, gq.x0);
                double const oy = std::max(gp.y0, gq.y0);
                if (ox > std::min(gp.x1, gq.x1) || oy > std::min(gp.y1, gq.y1))
                    continue;
                if (cellOf(ox, all.x0) != cx || cellOf(oy, all.y0) != cy)
                    continue;
                size_t const a = std::min(p.segment, q.segment);
                size_t const b = std::max(p.segment, q.segment);
                double const base = std::max(
                    clearance, (segments[a].diameter + segments[b].diameter) / 2.0);
                // The boxes are never further apart than the lines.
                double const gapX = std::max({0.0, p.box.x0 - q.box.x1, q.box.x0 - p.box.x1});
                double const gapY = std::max({0.0, p.box.y0 - q.box.y1, q.box.y0 - p.box.y1});
                if (std::hypot(gapX, gapY) >= base - kTol)
                    continue;
                double const distance = Geometry2D::lineDistance(p.a, p.b, q.a, q.b);
                if (distance >= base - kTol || meet(a, b))
                    continue;
                double const required = std::min(base, shortestBetween(a, b));
                if (distance < required - kTol)
                    out.push_back({a, b, distance, required});
            }
        }
        g0 = g1;
    }
    std::sort(out.begin(), out.end(), [](Violation const& x, Violation const& y) {
        return x.a != y.a ? x.a < y.a : x.b != y.b ? x.b < y.b : x.distance < y.distance;
    });
    // The closest lines of each pair stand for it.
    out.erase(std::unique(out.begin(), out.end(),
                          [](Violation const& x, Violation const& y) {
                              return x.a == y.a && x.b == y.b;
                          }),
              out.end());
    return out;
}

}  // namespace krtool
