// Measures of a layout: how many segments cross or overlap, which pairs come closer than the
// clearance rule allows (ClearanceCheck), how far drawn lengths stray from the true lengths, and
// how large the drawing is.
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
    struct ClosePair {
        long segmentA = 0;
        long segmentB = 0;
        double distance = 0.0;
        double required = 0.0;
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
    // Pairs of segments that do not meet and lie closer than the clearance rule allows.
    std::vector<ClosePair> const& clearanceViolations() const { return closePairs_; }
    double clearance() const { return clearance_; }
    // The largest |drawn - true| / true over the segments with a true length; 0 without any.
    double largestLengthDeviation() const { return largestDeviation_; }

private:
    bool laidOut_ = false;
    size_t segments_ = 0;
    size_t lines_ = 0;
    std::vector<Crossing> crossings_;   // every proper crossing point between two segments
    std::vector<Overlap> overlaps_;     // every collinear shared stretch between two segments
    std::vector<ClosePair> closePairs_; // by the segments' order in the result
    double clearance_ = 0.0;
    std::vector<SegmentLength> lengths_;
    double largestDeviation_ = 0.0;
    long largestDeviationId_ = 0;
    bool board_ = false;                // board layout: crowded points are reported
    long crowdedPoints_ = -1;           // -1: the board layout did not run
    Extent extent_;
};

}  // namespace krtool
