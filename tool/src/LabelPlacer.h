// Chooses where text labels go on a drawing so that they cover as few other labels and lines as
// possible. Works in paper coordinates (points, y down).
#pragma once

#include "LayoutResult.h"

#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

namespace krtool {

struct Rect {
    double x0 = 0.0;
    double y0 = 0.0;
    double x1 = 0.0;
    double y1 = 0.0;

    double area() const { return (x1 - x0) * (y1 - y0); }
};

class LabelPlacer {
public:
    struct Candidate {
        Rect box;
        double preference = 0.0;   // added to the cost: lower is a better spot
    };

    // Labels should stay inside this area; candidates reaching out of it cost more.
    void setBounds(Rect const& bounds);
    void addLine(Point2 const& a, Point2 const& b);
    void addBox(Rect const& box);

    // The cheapest candidate (its index, -1 for none); it is reserved so later labels avoid it.
    // Ties go to the earlier candidate. cost receives its cost: below 1 means it covers no other
    // label and no line.
    int place(std::vector<Candidate> const& candidates, double& cost);
    // Not safe to call from several threads at once: the lookups share scratch space.
    double costOf(Rect const& box) const;

private:
    // Lines and boxes are filed in uniform grids of square cells so that a cost looks only at
    // what lies near the box instead of at every line and label of the drawing. The grids only
    // narrow the search: every line and box they return goes through the same exact tests, and
    // the box costs are summed in the order in which the boxes were added, so costs and choices
    // are those of a full scan to the last bit.
    using CellKey = std::uint64_t;
    using Grid = std::unordered_map<CellKey, std::vector<std::uint32_t>>;

    static bool lineHitsBox(Point2 const& a, Point2 const& b, Rect const& box);
    static bool nearby(Rect const& box);
    static long long cellOf(double v, double size);
    static CellKey keyOf(long long cx, long long cy);

    void fileBox(std::uint32_t index);
    void fileLine(std::uint32_t index);
    // Collects into found the items of the grid filed in the cells that the stretch
    // [x0, x1] x [y0, y1] reaches, each once; false when that spans too many cells to be worth it.
    bool gather(Grid const& grid, double size, double x0, double y0, double x1, double y1,
                std::vector<std::uint32_t>& seen, std::vector<std::uint32_t>& found) const;
    void nextQuery() const;

    Rect bounds_;
    bool hasBounds_ = false;
    std::vector<std::pair<Point2, Point2>> lines_;
    std::vector<Rect> boxes_;

    Grid boxCells_;
    Grid lineCells_;
    // Lines and boxes too far out or too large for the grids: tested for every box.
    std::vector<std::uint32_t> farBoxes_;
    std::vector<std::uint32_t> farLines_;

    // Scratch of the lookups: the last lookup that saw each line and box, what they found, and
    // the boxes that overlap with the cost each adds.
    mutable std::vector<std::uint32_t> boxSeen_;
    mutable std::vector<std::uint32_t> lineSeen_;
    mutable std::uint32_t query_ = 0;
    mutable std::vector<std::uint32_t> foundBoxes_;
    mutable std::vector<std::uint32_t> foundLines_;
    mutable std::vector<std::pair<std::uint32_t, double>> overlaps_;
};

}  // namespace krtool
