// A uniform grid of cells over the lines of a drawing, so that the lines near a line are found
// without comparing all pairs: a drawing of n lines takes about n log n time.
//
// Lines are asked for one at a time, and only lines of later segments are handed back, each pair
// of lines once. A caller that walks the lines in order can so deal with one segment's pairs at a
// time and never hold the pairs of the whole drawing.
#pragma once

#include "LayoutResult.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace krtool {

class LineGrid {
public:
    struct Line {
        size_t segment = 0;
        Point2 a;
        Point2 b;
    };
    struct Box {
        double x0, y0, x1, y1;
    };

    // lines: with finite coordinates, ordered by segment. reach: how far apart two lines' boxes
    // may be for the pair to be handed back (at least 0; the largest finite double stands for
    // "any distance").
    LineGrid(std::vector<Line> lines, double reach);

    size_t size() const { return lines_.size(); }
    Line const& line(size_t i) const { return lines_[i]; }
    // The line's bounding box, not grown by the reach.
    Box const& box(size_t i) const { return boxes_[i]; }

    // Calls near(q) once for every line q of a later segment than line p's whose box comes
    // within the reach of p's box, in no particular order. Over all p, every such pair of lines
    // is handed back exactly once.
    template <class Near>
    void laterNeighbours(size_t p, Near&& near) const;

private:
    Box grown(size_t i) const
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
    double half_ = 0.0;    // half the reach: every box is grown by it
    double originX_ = 0.0;
    double originY_ = 0.0;
    double cell_ = 1.0;
    // (cell x << 32 | cell y, line) for every cell a line's grown box covers, sorted.
    std::vector<std::pair<std::uint64_t, std::uint32_t>> entries_;
};

template <class Near>
void LineGrid::laterNeighbours(size_t p, Near&& near) const
{
    size_t const segment = lines_[p].segment;
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
            size_t const q = it->second;
            if (lines_[q].segment <= segment)
                continue;
            // The pair is handed back from one cell only: the one holding the lower left corner
            // of the overlap of the two grown boxes (a cell both boxes cover).
            Box const gq = grown(q);
            double const ox = std::max(gp.x0, gq.x0);
            double const oy = std::max(gp.y0, gq.y0);
            if (ox > std::min(gp.x1, gq.x1) || oy > std::min(gp.y1, gq.y1))
                continue;
            if (cellOf(ox, originX_) != cx || cellOf(oy, originY_) != (it->first & 0xFFFFFFFFULL))
                continue;
            near(q);
        }
    }
}

}  // namespace krtool
