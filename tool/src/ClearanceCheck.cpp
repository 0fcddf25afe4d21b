#include "ClearanceCheck.h"

#include "Geometry2D.h"
#include "LineGrid.h"

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

// The two end nodes of a segment: the ends of the chain its sketch forms (Geometry2D::chainEnds).
// A chain that closes on itself or branches has no such pair; its first entity's start and last
// entity's end stand for them then. Every point of the sketch gets its node first, in the order of
// the entities, so that the nodes are numbered as the points first appear.
std::pair<size_t, size_t> endsOf(ClearanceCheck::Segment const& s, NodeIndex& nodes)
{
    if (s.sketch.empty())
        return {kNone, kNone};
    for (auto const& l : s.sketch) {
        nodes.nodeOf(l.first);
        nodes.nodeOf(l.second);
    }
    std::vector<Point2> ends = Geometry2D::chainEnds(s.sketch);
    if (ends.size() != 2)
        ends = {s.sketch.front().first, s.sketch.back().second};
    size_t const a = nodes.nodeOf(ends[0]);
    size_t const b = nodes.nodeOf(ends[1]);
    return {a, a == b ? kNone : b};
}

bool finite(Point2 const& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y);
}

}  // namespace

void ClearanceCheck::find(std::vector<Segment> const& segments, double clearance,
                          std::function<void(Violation const&)> const& found)
{
    if (!(clearance >= 0.0))
        clearance = 0.0;

    // The farthest any pair can be asked to keep apart: the grid hands back the lines whose
    // boxes come that close.
    double reach = clearance;
    std::vector<LineGrid::Line> lines;
    for (size_t si = 0; si < segments.size(); ++si) {
        Segment const& s = segments[si];
        if (!s.lines.empty() && std::isfinite(s.diameter))
            reach = std::max(reach, s.diameter);
        for (auto const& l : s.lines) {
            if (finite(l.first) && finite(l.second))
                lines.push_back({si, l.first, l.second});
        }
    }
    if (!(reach > kTol) || lines.size() < 2)
        return;
    if (!std::isfinite(reach))
        reach = std::numeric_limits<double>::max();
    LineGrid const grid(std::move(lines), reach);

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

    // The lines come in the order of their segments: the pairs of one segment a with the later
    // ones are gathered, then handed on by b, the closest lines of each pair standing for it.
    // Only one segment's pairs are held at a time.
    std::vector<Violation> ofSegment;
    auto handOn = [&]() {
        std::sort(ofSegment.begin(), ofSegment.end(), [](Violation const& x, Violation const& y) {
            return x.b != y.b ? x.b < y.b : x.distance < y.distance;
        });
        for (size_t i = 0; i < ofSegment.size(); ++i) {
            if (i == 0 || ofSegment[i].b != ofSegment[i - 1].b)
                found(ofSegment[i]);
        }
        ofSegment.clear();
    };
    for (size_t p = 0; p < grid.size(); ++p) {
        size_t const a = grid.line(p).segment;
        if (p > 0 && a != grid.line(p - 1).segment)
            handOn();
        LineGrid::Box const& bp = grid.box(p);
        grid.laterNeighbours(p, [&](size_t q) {
            size_t const b = grid.line(q).segment;
            double const base =
                std::max(clearance, (segments[a].diameter + segments[b].diameter) / 2.0);
            // The boxes are never further apart than the lines.
            LineGrid::Box const& bq = grid.box(q);
            double const gapX = std::max({0.0, bp.x0 - bq.x1, bq.x0 - bp.x1});
            double const gapY = std::max({0.0, bp.y0 - bq.y1, bq.y0 - bp.y1});
            if (std::hypot(gapX, gapY) >= base - kTol)
                return;
            LineGrid::Line const& lp = grid.line(p);
            LineGrid::Line const& lq = grid.line(q);
            double const distance = Geometry2D::lineDistance(lp.a, lp.b, lq.a, lq.b);
            if (distance >= base - kTol || meet(a, b))
                return;
            double const required = std::min(base, shortestBetween(a, b));
            if (distance < required - kTol)
                ofSegment.push_back({a, b, distance, required});
        });
    }
    handOn();
}

std::vector<ClearanceCheck::Violation> ClearanceCheck::find(std::vector<Segment> const& segments,
                                                            double clearance)
{
    std::vector<Violation> out;
    find(segments, clearance, [&out](Violation const& v) { out.push_back(v); });
    return out;
}

}  // namespace krtool
