#include "LineGrid.h"

namespace krtool {

LineGrid::LineGrid(std::vector<Line> lines, double reach) : lines_(std::move(lines))
{
    if (!(reach >= 0.0))
        reach = 0.0;
    half_ = reach / 2.0;
    boxes_.reserve(lines_.size());
    for (Line const& l : lines_) {
        boxes_.push_back({std::min(l.a.x, l.b.x), std::min(l.a.y, l.b.y), std::max(l.a.x, l.b.x),
                          std::max(l.a.y, l.b.y)});
    }
    if (lines_.empty())
        return;

    // Two lines whose boxes come within the reach have grown boxes that overlap, so they share a
    // cell.
    Box all = grown(0);
    std::vector<double> sizes;
    sizes.reserve(lines_.size());
    for (size_t i = 0; i < lines_.size(); ++i) {
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
    std::nth_element(sizes.begin(), sizes.begin() + sizes.size() / 2, sizes.end());
    double const span = std::max(all.x1 - all.x0, all.y1 - all.y0);
    cell_ = std::max({reach, sizes[sizes.size() / 2], span / 1073741824.0});
    if (!(cell_ > 0.0))
        cell_ = 1.0;  // every line a point on one spot: one cell holds them all
    double const budget = 8.0 * static_cast<double>(lines_.size()) + 65536.0;
    for (;;) {
        double entries = 0.0;
        for (size_t i = 0; i < lines_.size(); ++i) {
            Box const g = grown(i);
            entries += static_cast<double>(cellOf(g.x1, originX_) - cellOf(g.x0, originX_) + 1) *
                       static_cast<double>(cellOf(g.y1, originY_) - cellOf(g.y0, originY_) + 1);
        }
        if (entries <= budget || cell_ >= span)
            break;
        cell_ *= 2.0;
    }

    for (size_t i = 0; i < lines_.size(); ++i) {
        Box const g = grown(i);
        std::uint64_t const cx1 = cellOf(g.x1, originX_);
        std::uint64_t const cy1 = cellOf(g.y1, originY_);
        for (std::uint64_t cx = cellOf(g.x0, originX_); cx <= cx1; ++cx) {
            for (std::uint64_t cy = cellOf(g.y0, originY_); cy <= cy1; ++cy)
                entries_.push_back({cx << 32 | cy, static_cast<std::uint32_t>(i)});
        }
    }
    std::sort(entries_.begin(), entries_.end());
}

}  // namespace krtool
