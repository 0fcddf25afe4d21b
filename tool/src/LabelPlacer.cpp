#include "LabelPlacer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace krtool {

namespace {

// Cell sides in points, powers of two so that cell edges are exact multiples. Labels are a few
// cells of the box grid wide; lines, which crowd much more densely, go in finer cells.
constexpr double kBoxCell = 32.0;
constexpr double kLineCell = 8.0;
// Lines and boxes are filed, and looked up, this much wider than they are: far more than any
// rounding in the exact tests can move a hit (about 1e-6 points at the largest coordinates the
// grids take), so a lookup never misses one.
constexpr double kSlack = 0.25;
// costOf tests lines against the box shrunk by this much on every side.
constexpr double kShrink = 0.5;
// Coordinates beyond this (or not finite) stay out of the grids; such lines and boxes are tested
// every time, and a box reaching there is tested against everything.
constexpr double kNearbyLimit = 1e9;
// Lines, boxes and lookups spanning more cells than this are not worth handling cell by cell:
// such a line or box is tested every time, such a lookup tests everything. Every line of a
// drawing fitted to a sheet (at most 6000 points a side) stays under the limit; only lines of
// several metres drawn at full size go over it, and those are few.
constexpr long long kMaxCellsPerLine = 4096;
constexpr long long kMaxCellsPerBox = 4096;
constexpr long long kMaxCellsPerLookup = 4096;

// What covering the other box o adds to the cost of box (of the given area), 0 when they do not
// overlap. One expression for the indexed and the full scan, so that both add the same numbers.
inline bool overlapCost(Rect const& box, double area, Rect const& o, double& cost)
{
    double const w = std::min(box.x1, o.x1) - std::max(box.x0, o.x0);
    double const h = std::min(box.y1, o.y1) - std::max(box.y0, o.y0);
    if (!(w > 0.0 && h > 0.0))
        return false;
    cost = 100.0 + 1000.0 * (w * h) / area;
    return true;
}

}  // namespace

void LabelPlacer::setBounds(Rect const& bounds)
{
    bounds_ = bounds;
    hasBounds_ = true;
}

void LabelPlacer::addLine(Point2 const& a, Point2 const& b)
{
    lines_.push_back({a, b});
    fileLine(static_cast<std::uint32_t>(lines_.size() - 1));
}

void LabelPlacer::addBox(Rect const& box)
{
    boxes_.push_back(box);
    fileBox(static_cast<std::uint32_t>(boxes_.size() - 1));
}

bool LabelPlacer::nearby(Rect const& box)
{
    // False for NaN as well.
    return std::fabs(box.x0) <= kNearbyLimit && std::fabs(box.y0) <= kNearbyLimit &&
           std::fabs(box.x1) <= kNearbyLimit && std::fabs(box.y1) <= kNearbyLimit;
}

long long LabelPlacer::cellOf(double v, double size)
{
    // Only called for nearby coordinates (give or take the slack): the cell numbers fit in 32 bits.
    return static_cast<long long>(std::floor(v / size));
}

LabelPlacer::CellKey LabelPlacer::keyOf(long long cx, long long cy)
{
    return (static_cast<CellKey>(static_cast<std::uint32_t>(cx)) << 32) |
           static_cast<CellKey>(static_cast<std::uint32_t>(cy));
}

void LabelPlacer::fileBox(std::uint32_t index)
{
    Rect const& b = boxes_[index];
    if (!nearby(b)) {
        farBoxes_.push_back(index);
        return;
    }
    long long const cx0 = cellOf(std::min(b.x0, b.x1) - kSlack, kBoxCell);
    long long const cx1 = cellOf(std::max(b.x0, b.x1) + kSlack, kBoxCell);
    long long const cy0 = cellOf(std::min(b.y0, b.y1) - kSlack, kBoxCell);
    long long const cy1 = cellOf(std::max(b.y0, b.y1) + kSlack, kBoxCell);
    if ((cx1 - cx0 + 1) * (cy1 - cy0 + 1) > kMaxCellsPerBox) {
        farBoxes_.push_back(index);
        return;
    }
    for (long long cx = cx0; cx <= cx1; ++cx) {
        for (long long cy = cy0; cy <= cy1; ++cy)
            boxCells_[keyOf(cx, cy)].push_back(index);
    }
}

void LabelPlacer::fileLine(std::uint32_t index)
{
    Point2 const& a = lines_[index].first;
    Point2 const& b = lines_[index].second;
    if (!nearby(Rect{a.x, a.y, b.x, b.y})) {
        farLines_.push_back(index);
        return;
    }
    // Walk the line along its longer axis (u), one column of cells at a time; in each column the
    // line covers the stretch of the other axis (v) between its values at the column's edges.
    // The slope along the walk is at most 1, so a column holds at most three cells of it.
    bool const alongX = std::fabs(b.x - a.x) >= std::fabs(b.y - a.y);
    double const u0 = alongX ? a.x : a.y;
    double const u1 = alongX ? b.x : b.y;
    double const v0 = alongX ? a.y : a.x;
    double const v1 = alongX ? b.y : b.x;
    double const du = u1 - u0;
    double const slope = du != 0.0 ? (v1 - v0) / du : 0.0;
    double const uLow = std::min(u0, u1);
    double const uHigh = std::max(u0, u1);
    long long const c0 = cellOf(uLow - kSlack, kLineCell);
    long long const c1 = cellOf(uHigh + kSlack, kLineCell);
    if (3 * (c1 - c0 + 1) > kMaxCellsPerLine) {
        farLines_.push_back(index);
        return;
    }
    for (long long c = c0; c <= c1; ++c) {
        double const edge = static_cast<double>(c) * kLineCell;
        double const s0 = std::clamp(edge, uLow, uHigh);
        double const s1 = std::clamp(edge + kLineCell, uLow, uHigh);
        double const w0 = v0 + (s0 - u0) * slope;
        double const w1 = v0 + (s1 - u0) * slope;
        long long const r0 = cellOf(std::min(w0, w1) - kSlack, kLineCell);
        long long const r1 = cellOf(std::max(w0, w1) + kSlack, kLineCell);
        for (long long r = r0; r <= r1; ++r)
            lineCells_[alongX ? keyOf(c, r) : keyOf(r, c)].push_back(index);
    }
}

void LabelPlacer::nextQuery() const
{
    if (++query_ == 0) {
        std::fill(boxSeen_.begin(), boxSeen_.end(), 0u);
        std::fill(lineSeen_.begin(), lineSeen_.end(), 0u);
        query_ = 1;
    }
}

bool LabelPlacer::gather(Grid const& grid, double size, double x0, double y0, double x1,
                         double y1, std::vector<std::uint32_t>& seen,
                         std::vector<std::uint32_t>& found) const
{
    long long const cx0 = cellOf(x0, size);
    long long const cx1 = cellOf(x1, size);
    long long const cy0 = cellOf(y0, size);
    long long const cy1 = cellOf(y1, size);
    if ((cx1 - cx0 + 1) * (cy1 - cy0 + 1) > kMaxCellsPerLookup)
        return false;
    found.clear();
    for (long long cx = cx0; cx <= cx1; ++cx) {
        for (long long cy = cy0; cy <= cy1; ++cy) {
            auto const it = grid.find(keyOf(cx, cy));
            if (it == grid.end())
                continue;
            for (std::uint32_t i : it->second) {
                if (seen[i] != query_) {
                    seen[i] = query_;
                    found.push_back(i);
                }
            }
        }
    }
    return true;
}

bool LabelPlacer::lineHitsBox(Point2 const& a, Point2 const& b, Rect const& box)
{
    // Liang-Barsky clipping of a->b against the box.
    double t0 = 0.0;
    double t1 = 1.0;
    double const dx = b.x - a.x;
    double const dy = b.y - a.y;
    double const p[4] = {-dx, dx, -dy, dy};
    double const q[4] = {a.x - box.x0, box.x1 - a.x, a.y - box.y0, box.y1 - a.y};
    for (int i = 0; i < 4; ++i) {
        if (p[i] == 0.0) {
            if (q[i] < 0.0)
                return false;
            continue;
        }
        double const t = q[i] / p[i];
        if (p[i] < 0.0)
            t0 = std::max(t0, t);
        else
            t1 = std::min(t1, t);
        if (t0 > t1)
            return false;
    }
    return true;
}

double LabelPlacer::costOf(Rect const& box) const
{
    double const area = std::max(box.area(), 1e-9);
    double cost = 0.0;
    nextQuery();
    boxSeen_.resize(boxes_.size(), 0u);
    lineSeen_.resize(lines_.size(), 0u);

    // Every label the box overlaps. Only boxes near it can; their costs are added in the order
    // the boxes were placed, as a scan of all of them adds them.
    if (nearby(box) &&
        gather(boxCells_, kBoxCell, std::min(box.x0, box.x1) - kSlack,
               std::min(box.y0, box.y1) - kSlack, std::max(box.x0, box.x1) + kSlack,
               std::max(box.y0, box.y1) + kSlack, boxSeen_, foundBoxes_)) {
        foundBoxes_.insert(foundBoxes_.end(), farBoxes_.begin(), farBoxes_.end());
        overlaps_.clear();
        for (std::uint32_t i : foundBoxes_) {
            double add = 0.0;
            if (overlapCost(box, area, boxes_[i], add))
                overlaps_.push_back({i, add});
        }
        std::sort(overlaps_.begin(), overlaps_.end());
        for (auto const& o : overlaps_)
            cost += o.second;
    } else {
        for (Rect const& o : boxes_) {
            double add = 0.0;
            if (overlapCost(box, area, o, add))
                cost += add;
        }
    }

    // A slightly shrunk box, so that a label resting against a line does not count as covering it.
    // Every line through it adds the same amount: their order does not matter.
    Rect const inner{box.x0 + kShrink, box.y0 + kShrink, box.x1 - kShrink, box.y1 - kShrink};
    // Shrinking inverts a box under a point wide: the lookup spans it either way round.
    if (nearby(inner) &&
        gather(lineCells_, kLineCell, std::min(inner.x0, inner.x1) - kSlack,
               std::min(inner.y0, inner.y1) - kSlack, std::max(inner.x0, inner.x1) + kSlack,
               std::max(inner.y0, inner.y1) + kSlack, lineSeen_, foundLines_)) {
        foundLines_.insert(foundLines_.end(), farLines_.begin(), farLines_.end());
        for (std::uint32_t i : foundLines_) {
            if (lineHitsBox(lines_[i].first, lines_[i].second, inner))
                cost += 4.0;
        }
    } else {
        for (auto const& l : lines_) {
            if (lineHitsBox(l.first, l.second, inner))
                cost += 4.0;
        }
    }

    if (hasBounds_) {
        double const out = std::max(0.0, bounds_.x0 - box.x0) + std::max(0.0, box.x1 - bounds_.x1) +
                           std::max(0.0, bounds_.y0 - box.y0) + std::max(0.0, box.y1 - bounds_.y1);
        cost += 50.0 * out;
    }
    return cost;
}

int LabelPlacer::place(std::vector<Candidate> const& candidates, double& cost)
{
    int best = -1;
    double bestCost = std::numeric_limits<double>::infinity();
    double bestRaw = 0.0;
    for (size_t i = 0; i < candidates.size(); ++i) {
        double const raw = costOf(candidates[i].box);
        double const c = raw + candidates[i].preference;
        if (c < bestCost) {
            bestCost = c;
            bestRaw = raw;
            best = static_cast<int>(i);
        }
    }
    cost = bestRaw;
    if (best >= 0)
        addBox(candidates[static_cast<size_t>(best)].box);
    return best;
}

}  // namespace krtool
