#include "LabelPlacer.h"

#include <algorithm>
#include <limits>

namespace krtool {

void LabelPlacer::setBounds(Rect const& bounds)
{
    bounds_ = bounds;
    hasBounds_ = true;
}

void LabelPlacer::addLine(Point2 const& a, Point2 const& b)
{
    lines_.push_back({a, b});
}

void LabelPlacer::addBox(Rect const& box)
{
    boxes_.push_back(box);
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
    for (Rect const& o : boxes_) {
        double const w = std::min(box.x1, o.x1) - std::max(box.x0, o.x0);
        double const h = std::min(box.y1, o.y1) - std::max(box.y0, o.y0);
        if (w > 0.0 && h > 0.0)
            cost += 100.0 + 1000.0 * (w * h) / area;
    }
    // A slightly shrunk box, so that a label resting against a line does not count as covering it.
    Rect const inner{box.x0 + 0.5, box.y0 + 0.5, box.x1 - 0.5, box.y1 - 0.5};
    for (auto const& l : lines_) {
        if (lineHitsBox(l.first, l.second, inner))
            cost += 4.0;
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
        boxes_.push_back(candidates[static_cast<size_t>(best)].box);
    return best;
}

}  // namespace krtool
