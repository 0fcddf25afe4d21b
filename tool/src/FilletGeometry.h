// The arc of a corner fillet, computed from the corner and the two lines that meet there.
#pragma once

#include "LayoutResult.h"

namespace krtool {

class FilletGeometry {
public:
    // Fits an arc of the given radius tangent to the lines prevStart->corner and corner->nextEnd.
    // The radius shrinks so that no line loses more than half its length. Returns false when the
    // lines are collinear, fold back on each other, or are too short for any arc.
    static bool compute(Point2 const& prevStart, Point2 const& corner, Point2 const& nextEnd,
                        double radius, ResultFillet& out);
    // Fills the segment's fillets from the joints the host filleted, given as the index of the
    // line that starts at the corner and the radius asked for, and trims the lines' drawn
    // stretches to the tangent points.
    static void apply(ResultSegment& segment, std::vector<std::pair<int, double>> const& joints);
};

}  // namespace krtool
