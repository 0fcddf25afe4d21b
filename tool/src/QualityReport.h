// Measures of a layout: how many segments cross or overlap, how far drawn lengths stray from the
// true lengths, and how large the drawing is.
#pragma once

#include "Geometry2D.h"
#include "LayoutResult.h"

#include <nlohmann/json.hpp>

#include <iosfwd>
#include <vector>

namespace krtool {

class QualityReport {
public:
    struct Crossing {
        long segmentA = 0;
        long segmentB = 0;
        Point2 at;
    };
    struct Overlap {
        long segmentA = 0;
        long segmentB = 0;
        double length = 0.0;
    };
    struct SegmentLength {
        long id = 0;
        double trueLength = 0.0;
        double drawnLength = 0.0;
    };

    // Measures the laid-out lines, or the input sketch when the run stopped before the layout.
    static QualityReport measure(LayoutResult const& result);

    nlohmann::ordered_json toJson() const;
    void print(std::ostream& out, std::string const& units) const;

    bool laidOut() const { return laidOut_; }
    size_t crossingPairs() const;
    std::vector<Crossing> const& crossings() const { return crossings_; }
    std::vector<Overlap> const& overlaps() const { return overlaps_; }

private:
    bool laidOut_ = false;
    size_t segments_ = 0;
    size_t lines_ = 0;
    std::vector<Crossing> crossings_;   // every proper crossing point between two segments
    std::vector<Overlap> overlaps_;     // every collinear shared stretch between two segments
    std::vector<SegmentLength> lengths_;
    Extent extent_;
};

}  // namespace krtool
