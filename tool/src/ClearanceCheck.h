// Finds the pairs of segments of a drawing that lie closer together than the clearance rule
// allows.
//
// The rule: two segments that do not meet (share no end point in the harness) must be at least
// max(clearance, (d1 + d2) / 2) apart, d1 and d2 their diameters: the clearance, or the room two
// bundles need side by side when that is more. Where a segment on the tree path between the two
// is shorter than that, the length of the shortest such segment is enough: two segments joined
// by a 1 mm segment cannot be further apart than 1 mm.
//
// Which segments meet and the tree paths between them are read from each segment's sketch lines
// (the document's entities, so that a drawing which makes two ends touch is not taken to join
// them); distances are measured between the drawn lines. A sketch that is not a tree (one with a
// loop, measured before any layout) is read along a spanning tree; segments in different pieces
// get no shorter limit. Close pairs are found through a uniform grid of cells (LineGrid), so a
// drawing of n lines takes about n log n time rather than comparing all pairs.
#pragma once

#include "LayoutResult.h"

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

namespace krtool {

class ClearanceCheck {
public:
    struct Segment {
        double length = 0.0;    // true length: what limits the rule for the segments it joins
        double diameter = 0.0;
        // The sketch's entities as start and end: where the segment's two ends are.
        std::vector<std::pair<Point2, Point2>> sketch;
        // The drawn lines the distances are measured between.
        std::vector<std::pair<Point2, Point2>> lines;
    };
    struct Violation {
        size_t a = 0;            // indexes into the segments, a < b
        size_t b = 0;
        double distance = 0.0;   // least distance between their drawn lines
        double required = 0.0;   // what the rule asks of this pair
    };

    // Calls found(v) for every pair closer than the rule asks by more than the library's
    // tolerance, once a pair, ordered by a, then b; of a pair with several close lines the
    // closest stand for it. Only the pairs of one segment a are held at a time, so a drawing with
    // millions of close pairs costs the caller only what it keeps of them.
    static void find(std::vector<Segment> const& segments, double clearance,
                     std::function<void(Violation const&)> const& found);
    // The same pairs gathered into one list, for drawings known to have few.
    static std::vector<Violation> find(std::vector<Segment> const& segments, double clearance);
};

}  // namespace krtool
