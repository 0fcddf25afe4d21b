#include <krlayout/api/KrLayoutQuality.h>

#include <krlayout/model/ALPoint.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrLineChain.h>
#include <krlayout/model/KrPointIndex.h>
#include <krlayout/model/KrSegmentGeometry.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace {

using Point = KrSegmentGeometry::Point;

constexpr double kTol = GEO_TOLERANCE;
constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
constexpr double kUnlimited = std::numeric_limits<double>::infinity();

Point PlaneOf(ALPoint const& p)
{
    return {p.x, p.y};
}

bool Finite(Point const& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y);
}

// A uniform grid of cells over the lines of a drawing, so that the lines near a line are found
// without comparing all pairs. Lines are asked for one at a time, and only lines of later segments
// are handed back, each pair of lines once: a caller that walks the lines in order deals with one
// segment's pairs at a time and never holds the pairs of the whole drawing.
class LineGrid {
public:
    struct Line {
        std::size_t segment = 0;
        Point a;
        Point b;
    };
    struct Box {
        double x0, y0, x1, y1;
    };

    // lines: with finite coordinates, ordered by segment. reach: how far apart two lines' boxes
    // may be for the pair to be handed back (at least 0; the largest finite double stands for
    // "any distance").
    LineGrid(std::vector<Line> lines, double reach);

    std::size_t size() const { return lines_.size(); }
    Line const& line(std::size_t i) const { return lines_[i]; }
    // The line's bounding box, not grown by the reach.
    Box const& box(std::size_t i) const { return boxes_[i]; }

    // Calls near(q) once for every line q of a later segment than line p's whose box comes
    // within the reach of p's box, in no particular order. Over all p, every such pair of lines
    // is handed back exactly once.
    template <class Near>
    void laterNeighbours(std::size_t p, Near&& near) const;

private:
    Box grown(std::size_t i) const
    {
        Box const& b = boxes_[i];
        return {b.x0 - half_, b.y0 - half_, b.x1 + half_, b.y1 + half_};
    }
    std::uint64_t cellOf(double v, double origin) const
    {
        return static_cast<std::uint64_t>(std::max(0.0, std::floor((v - origin) / cell_)));
    }

    std::vector<Line> lines_;
    std::vector<Box> boxes_;
    double half_ = 0.0;  // half the reach: every box is grown by it
    double originX_ = 0.0;
    double originY_ = 0.0;
    double cell_ = 1.0;
    // (cell x << 32 | cell y, line) for every cell a line's grown box covers, sorted.
    std::vector<std::pair<std::uint64_t, std::uint32_t>> entries_;
};

LineGrid::LineGrid(std::vector<Line> lines, double reach) : lines_(std::move(lines))
{
    if (!(reach >= 0.0)) {
        reach = 0.0;
    }
    half_ = reach / 2.0;
    boxes_.reserve(lines_.size());
    for (Line const& l : lines_) {
        boxes_.push_back({std::min(l.a.x, l.b.x), std::min(l.a.y, l.b.y), std::max(l.a.x, l.b.x),
                          std::max(l.a.y, l.b.y)});
    }
    if (lines_.empty()) {
        return;
    }

    // Two lines whose boxes come within the reach have grown boxes that overlap, so they share a
    // cell.
    Box all = grown(0);
    std::vector<double> sizes;
    sizes.reserve(lines_.size());
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        Box const g = grown(i);
        all.x0 = std::min(all.x0, g.x0);
        all.y0 = std::min(all.y0, g.y0);
        all.x1 = std::max(all.x1, g.x1);
        all.y1 = std::max(all.y1, g.y1);
        Box const& b = boxes_[i];
        sizes.push_back(std::max(b.x1 - b.x0, b.y1 - b.y0));
    }
    originX_ = all.x0;
    originY_ = all.y0;
    // Cells as wide as a typical line (the median), and no narrower than the reach; wider still
    // when the lines would fill too many cells, or the drawing would need more than 2^30 cells
    // along a side (a cell's x and y share one 64-bit key).
    std::nth_element(sizes.begin(), sizes.begin() + static_cast<std::ptrdiff_t>(sizes.size() / 2), sizes.end());
    double const span = std::max(all.x1 - all.x0, all.y1 - all.y0);
    cell_ = std::max({reach, sizes[sizes.size() / 2], span / 1073741824.0});
    if (!(cell_ > 0.0)) {
        cell_ = 1.0;  // every line a point on one spot: one cell holds them all
    }
    double const budget = 8.0 * static_cast<double>(lines_.size()) + 65536.0;
    for (;;) {
        double entries = 0.0;
        for (std::size_t i = 0; i < lines_.size(); ++i) {
            Box const g = grown(i);
            entries += static_cast<double>(cellOf(g.x1, originX_) - cellOf(g.x0, originX_) + 1) *
                       static_cast<double>(cellOf(g.y1, originY_) - cellOf(g.y0, originY_) + 1);
        }
        if (entries <= budget || cell_ >= span) {
            break;
        }
        cell_ *= 2.0;
    }

    for (std::size_t i = 0; i < lines_.size(); ++i) {
        Box const g = grown(i);
        std::uint64_t const cx1 = cellOf(g.x1, originX_);
        std::uint64_t const cy1 = cellOf(g.y1, originY_);
        for (std::uint64_t cx = cellOf(g.x0, originX_); cx <= cx1; ++cx) {
            for (std::uint64_t cy = cellOf(g.y0, originY_); cy <= cy1; ++cy) {
                entries_.push_back({cx << 32 | cy, static_cast<std::uint32_t>(i)});
            }
        }
    }
    std::sort(entries_.begin(), entries_.end());
}

template <class Near>
void LineGrid::laterNeighbours(std::size_t p, Near&& near) const
{
    std::size_t const segment = lines_[p].segment;
    Box const gp = grown(p);
    std::uint64_t const cx0 = cellOf(gp.x0, originX_);
    std::uint64_t const cx1 = cellOf(gp.x1, originX_);
    std::uint64_t const cy0 = cellOf(gp.y0, originY_);
    std::uint64_t const cy1 = cellOf(gp.y1, originY_);
    for (std::uint64_t cx = cx0; cx <= cx1; ++cx) {
        // The cells cy0 .. cy1 of this column are one run of the sorted entries.
        std::uint64_t const first = cx << 32 | cy0;
        std::uint64_t const last = cx << 32 | cy1;
        auto it = std::lower_bound(entries_.begin(), entries_.end(),
                                   std::pair<std::uint64_t, std::uint32_t>(first, 0));
        for (; it != entries_.end() && it->first <= last; ++it) {
            std::size_t const q = it->second;
            if (lines_[q].segment <= segment) {
                continue;
            }
            // The pair is handed back from one cell only: the one holding the lower left corner
            // of the overlap of the two grown boxes (a cell both boxes cover).
            Box const gq = grown(q);
            double const ox = std::max(gp.x0, gq.x0);
            double const oy = std::max(gp.y0, gq.y0);
            if (ox > std::min(gp.x1, gq.x1) || oy > std::min(gp.y1, gq.y1)) {
                continue;
            }
            if (cellOf(ox, originX_) != cx || cellOf(oy, originY_) != (it->first & 0xFFFFFFFFULL)) {
                continue;
            }
            near(q);
        }
    }
}

// The harness as a forest: nodes are the segments' end points, edges the segments. Paths are
// answered by lifting both ends towards their common ancestor in power-of-two steps, each step
// remembering the shortest segment it passes; the step tables are built on the first question.
class Forest {
public:
    Forest(std::size_t nodes, std::vector<std::pair<std::size_t, std::size_t>> const& ends,
           std::vector<double> const& lengths)
        : parent_(nodes, kNone), parentLength_(nodes, kUnlimited), depth_(nodes, 0), piece_(nodes, kNone)
    {
        // Adjacency in one array: the edges of node v are first[v] .. first[v + 1].
        std::vector<std::size_t> first(nodes + 1, 0);
        for (auto const& e : ends) {
            if (e.first == kNone || e.second == kNone || e.first == e.second) {
                continue;
            }
            ++first[e.first + 1];
            ++first[e.second + 1];
        }
        for (std::size_t v = 0; v < nodes; ++v) {
            first[v + 1] += first[v];
        }
        std::vector<std::pair<std::size_t, std::size_t>> adjacent(first[nodes]);
        std::vector<std::size_t> fill(first.begin(), first.end() - 1);
        for (std::size_t s = 0; s < ends.size(); ++s) {
            auto const& e = ends[s];
            if (e.first == kNone || e.second == kNone || e.first == e.second) {
                continue;
            }
            adjacent[fill[e.first]++] = {e.second, s};
            adjacent[fill[e.second]++] = {e.first, s};
        }
        // Breadth first from every node not reached yet: a spanning tree of each piece.
        std::vector<std::size_t> queue;
        queue.reserve(nodes);
        for (std::size_t root = 0; root < nodes; ++root) {
            if (piece_[root] != kNone) {
                continue;
            }
            piece_[root] = root;
            queue.clear();
            queue.push_back(root);
            for (std::size_t qi = 0; qi < queue.size(); ++qi) {
                std::size_t const v = queue[qi];
                for (std::size_t k = first[v]; k < first[v + 1]; ++k) {
                    std::size_t const w = adjacent[k].first;
                    if (piece_[w] != kNone) {
                        continue;
                    }
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
    std::pair<std::size_t, double> path(std::size_t x, std::size_t y)
    {
        if (piece_[x] != piece_[y]) {
            return {kNone, kUnlimited};
        }
        buildSteps();
        std::size_t const edges0 = depth_[x] + depth_[y];
        double shortest = kUnlimited;
        if (depth_[x] < depth_[y]) {
            std::swap(x, y);
        }
        std::size_t rise = depth_[x] - depth_[y];
        for (std::size_t k = 0; rise != 0; ++k, rise >>= 1) {
            if (rise & 1) {
                shortest = std::min(shortest, low_[k][x]);
                x = up_[k][x];
            }
        }
        if (x != y) {
            for (std::size_t k = up_.size(); k-- > 0;) {
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
        if (!up_.empty()) {
            return;
        }
        std::size_t const n = parent_.size();
        std::size_t levels = 1;
        while ((std::size_t(1) << levels) <= maxDepth_) {
            ++levels;
        }
        up_.assign(levels, std::vector<std::size_t>(n));
        low_.assign(levels, std::vector<double>(n, kUnlimited));
        for (std::size_t v = 0; v < n; ++v) {
            up_[0][v] = parent_[v] == kNone ? v : parent_[v];
            low_[0][v] = parentLength_[v];
        }
        for (std::size_t k = 1; k < levels; ++k) {
            for (std::size_t v = 0; v < n; ++v) {
                std::size_t const mid = up_[k - 1][v];
                up_[k][v] = up_[k - 1][mid];
                low_[k][v] = std::min(low_[k - 1][v], low_[k - 1][mid]);
            }
        }
    }

    std::vector<std::size_t> parent_;
    std::vector<double> parentLength_;
    std::vector<std::size_t> depth_;
    std::vector<std::size_t> piece_;
    std::size_t maxDepth_ = 0;
    std::vector<std::vector<std::size_t>> up_;
    std::vector<std::vector<double>> low_;
};

// The two end nodes of a segment (points numbered by KrPointIndex): the ends of the chain its
// sketch forms. A chain that closes on
// itself or branches has no such pair; its first line's start and last line's end stand for them
// then. Every point of the sketch gets its node first, in the order of the lines, so that the
// nodes are numbered as the points first appear.
std::pair<std::size_t, std::size_t> EndsOf(KrLayoutQuality::Segment const& s, KrPointIndex& nodes)
{
    if (s.sketch.empty()) {
        return {kNone, kNone};
    }
    for (ALLine const& l : s.sketch) {
        nodes.NumberOf(l.start);
        nodes.NumberOf(l.end);
    }
    std::vector<ALPoint> ends;
    KrLineChain::FindEnds(s.sketch, ends);
    if (ends.size() != 2) {
        ends = {s.sketch.front().start, s.sketch.back().end};
    }
    std::size_t const a = nodes.NumberOf(ends[0]);
    std::size_t const b = nodes.NumberOf(ends[1]);
    return {a, a == b ? kNone : b};
}

// The pairs of segments closer than the rule allows, handed to `found` by a, then b.
void FindClosePairs(std::vector<KrLayoutQuality::Segment> const& segments, std::vector<LineGrid::Line> lines,
                    double clearance, std::function<void(KrLayoutQuality::ClosePair const&)> const& found)
{
    if (!(clearance >= 0.0)) {
        clearance = 0.0;
    }
    // The farthest any pair can be asked to keep apart: the grid hands back the lines whose boxes
    // come that close.
    double reach = clearance;
    for (KrLayoutQuality::Segment const& s : segments) {
        if (!s.lines.empty() && std::isfinite(s.diameter)) {
            reach = std::max(reach, s.diameter);
        }
    }
    if (!(reach > kTol) || lines.size() < 2) {
        return;
    }
    if (!std::isfinite(reach)) {
        reach = std::numeric_limits<double>::max();
    }
    LineGrid const grid(std::move(lines), reach);

    // Which segments meet and the tree paths between them, from the sketches.
    KrPointIndex nodes;
    std::vector<std::pair<std::size_t, std::size_t>> ends(segments.size());
    std::vector<double> lengths(segments.size());
    for (std::size_t si = 0; si < segments.size(); ++si) {
        ends[si] = EndsOf(segments[si], nodes);
        lengths[si] = segments[si].length;
    }
    Forest forest(nodes.Count(), ends, lengths);
    auto meet = [&](std::size_t a, std::size_t b) {
        auto const& ea = ends[a];
        auto const& eb = ends[b];
        for (std::size_t x : {ea.first, ea.second}) {
            if (x != kNone && (x == eb.first || x == eb.second)) {
                return true;
            }
        }
        return false;
    };
    // The shortest segment between a and b: the one on the shortest of the paths between an end
    // of a and an end of b, which passes through neither.
    auto shortestBetween = [&](std::size_t a, std::size_t b) {
        std::size_t bestEdges = kNone;
        double shortest = kUnlimited;
        for (std::size_t x : {ends[a].first, ends[a].second}) {
            for (std::size_t y : {ends[b].first, ends[b].second}) {
                if (x == kNone || y == kNone) {
                    continue;
                }
                auto const [edges, low] = forest.path(x, y);
                if (edges == kNone) {
                    continue;
                }
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
    std::vector<KrLayoutQuality::ClosePair> ofSegment;
    auto handOn = [&]() {
        std::sort(ofSegment.begin(), ofSegment.end(),
                  [](KrLayoutQuality::ClosePair const& x, KrLayoutQuality::ClosePair const& y) {
                      return x.b != y.b ? x.b < y.b : x.distance < y.distance;
                  });
        for (std::size_t i = 0; i < ofSegment.size(); ++i) {
            if (i == 0 || ofSegment[i].b != ofSegment[i - 1].b) {
                found(ofSegment[i]);
            }
        }
        ofSegment.clear();
    };
    for (std::size_t p = 0; p < grid.size(); ++p) {
        std::size_t const a = grid.line(p).segment;
        if (p > 0 && a != grid.line(p - 1).segment) {
            handOn();
        }
        LineGrid::Box const& bp = grid.box(p);
        grid.laterNeighbours(p, [&](std::size_t q) {
            std::size_t const b = grid.line(q).segment;
            double const base = std::max(clearance, (segments[a].diameter + segments[b].diameter) / 2.0);
            // The boxes are never further apart than the lines.
            LineGrid::Box const& bq = grid.box(q);
            double const gapX = std::max({0.0, bp.x0 - bq.x1, bq.x0 - bp.x1});
            double const gapY = std::max({0.0, bp.y0 - bq.y1, bq.y0 - bp.y1});
            if (std::hypot(gapX, gapY) >= base - kTol) {
                return;
            }
            LineGrid::Line const& lp = grid.line(p);
            LineGrid::Line const& lq = grid.line(q);
            double const distance = KrSegmentGeometry::SegmentDistance(lp.a, lp.b, lq.a, lq.b);
            if (distance >= base - kTol || meet(a, b)) {
                return;
            }
            double const required = std::min(base, shortestBetween(a, b));
            if (distance < required - kTol) {
                ofSegment.push_back({a, b, distance, required});
            }
        });
    }
    handOn();
}

// A crossing or an overlap of line p (of the segment at hand) with line q of a later segment.
struct Meeting {
    std::size_t p;
    std::size_t q;
    bool crossing;
    Point at;             // crossing point
    double shared = 0.0;  // overlap length
};

}  // namespace

int KrLayoutQuality::Measure(std::vector<Segment> const& segments, double clearance, Findings const& findings)
{
    lines = 0;
    crossingPairs = 0;
    crossingPoints = 0;
    overlappingPieces = 0;
    overlapLength = 0.0;
    closePairs = 0;
    drawnLengths.assign(segments.size(), 0.0);
    largestLengthDeviation = 0.0;
    largestLengthDeviationSegment = 0;

    std::vector<LineGrid::Line> flat;
    for (std::size_t si = 0; si < segments.size(); ++si) {
        Segment const& s = segments[si];
        for (ALLine const& l : s.lines) {
            Point const a = PlaneOf(l.start);
            Point const b = PlaneOf(l.end);
            ++lines;
            // A line with a coordinate that is not a number meets nothing.
            if (Finite(a) && Finite(b)) {
                flat.push_back({si, a, b});
            }
            drawnLengths[si] += KrSegmentGeometry::Distance(a, b);
        }
        if (s.length > 0.0) {
            double const deviation = std::fabs(drawnLengths[si] - s.length) / s.length;
            if (deviation > largestLengthDeviation) {
                largestLengthDeviation = deviation;
                largestLengthDeviationSegment = si;
            }
        }
    }

    FindClosePairs(segments, flat, clearance, [&](ClosePair const& c) {
        ++closePairs;
        if (findings.closePair) {
            findings.closePair(c);
        }
    });

    // Lines whose boxes come within the tolerance of each other, one segment at a time: its
    // crossings and overlaps with later segments are gathered, then counted and handed on in the
    // order of the later segment and of the lines.
    LineGrid const grid(std::move(flat), kTol);
    std::vector<Meeting> ofSegment;
    auto handOn = [&]() {
        std::sort(ofSegment.begin(), ofSegment.end(), [&](Meeting const& x, Meeting const& y) {
            return grid.line(x.q).segment != grid.line(y.q).segment
                       ? grid.line(x.q).segment < grid.line(y.q).segment
                       : x.p != y.p ? x.p < y.p : x.q < y.q;
        });
        std::size_t lastCrossed = kNone;
        for (Meeting const& m : ofSegment) {
            std::size_t const a = grid.line(m.p).segment;
            std::size_t const b = grid.line(m.q).segment;
            if (m.crossing) {
                ++crossingPoints;
                if (b != lastCrossed) {
                    ++crossingPairs;
                }
                lastCrossed = b;
                if (findings.crossing) {
                    findings.crossing(Crossing{a, b, m.at.x, m.at.y});
                }
            } else {
                ++overlappingPieces;
                overlapLength += m.shared;
                if (findings.overlap) {
                    findings.overlap(Overlap{a, b, m.shared});
                }
            }
        }
        ofSegment.clear();
    };
    for (std::size_t p = 0; p < grid.size(); ++p) {
        if (p > 0 && grid.line(p).segment != grid.line(p - 1).segment) {
            handOn();
        }
        LineGrid::Line const& lp = grid.line(p);
        grid.laterNeighbours(p, [&](std::size_t q) {
            LineGrid::Line const& lq = grid.line(q);
            Point at;
            if (KrSegmentGeometry::ProperCrossing(lp.a, lp.b, lq.a, lq.b, kTol, at)) {
                ofSegment.push_back({p, q, true, at, 0.0});
                return;
            }
            double const shared = KrSegmentGeometry::CollinearOverlap(lp.a, lp.b, lq.a, lq.b, kTol);
            if (shared > 0.0) {
                ofSegment.push_back({p, q, false, Point{}, shared});
            }
        });
    }
    handOn();
    return 0;
}
