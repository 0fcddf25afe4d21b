// Chooses where text labels go on a drawing so that they cover as few other labels and lines as
// possible. Works in paper coordinates (points, y down).
#pragma once

#include "LayoutResult.h"

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
    // cost receives its cost: below 1 means it covers no other label and no line.
    int place(std::vector<Candidate> const& candidates, double& cost);
    double costOf(Rect const& box) const;

private:
    static bool lineHitsBox(Point2 const& a, Point2 const& b, Rect const& box);

    Rect bounds_;
    bool hasBounds_ = false;
    std::vector<std::pair<Point2, Point2>> lines_;
    std::vector<Rect> boxes_;
};

}  // namespace krtool
