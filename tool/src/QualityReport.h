// The quality report of a layout as the tool prints and writes it: the library's measures
// (KrLayoutQuality: crossings, overlaps, pairs closer than the clearance rule allows, drawn
// against true lengths) by segment id, and how large the drawing is.
//
// Crossings, overlaps and close pairs are counted exactly, but each list keeps only its first
// entries (CappedList): a tangled drawing of 100,000 segments has millions of them.
#pragma once

#include "CappedList.h"
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

    // How many entries each list keeps.
    static constexpr size_t kListed = 1000;

    // Measures the laid-out lines, or the input sketch when the run stopped before the layout.
    // Each list keeps its first `listed` entries, in the order of the segments in the result (by
    // the first segment of a pair, then the second, then their lines).
    static QualityReport measure(LayoutResult const& result, size_t listed = kListed);

    nlohmann::ordered_json toJson() const;
    void print(std::ostream& out, std::string const& units) const;

    bool laidOut() const { return laidOut_; }
    // Pairs of segments with at least one crossing.
    size_t crossingPairs() const { return crossingPairs_; }
    // Every proper crossing point between lines of two segments.
    CappedList<Crossing> const& crossings() const { return crossings_; }
    // Every collinear stretch two segments share, and their total length.
    CappedList<Overlap> const& overlaps() const { return overlaps_; }
    double overlapLength() const { return overlapLength_; }
    // Pairs of segments that do not meet and lie closer than the clearance rule allows.
    CappedList<ClosePair> const& clearanceViolations() const { return closePairs_; }
    double clearance() const { return clearance_; }
    // The largest |drawn - true| / true over the segments with a true length; 0 without any.
    double largestLengthDeviation() const { return largestDeviation_; }

private:
    bool laidOut_ = false;
    size_t segments_ = 0;
    size_t lines_ = 0;
    size_t crossingPairs_ = 0;
    CappedList<Crossing> crossings_{kListed};
    CappedList<Overlap> overlaps_{kListed};
    double overlapLength_ = 0.0;
    CappedList<ClosePair> closePairs_{kListed};
    double clearance_ = 0.0;
    std::vector<SegmentLength> lengths_;
    double largestDeviation_ = 0.0;
    long largestDeviationId_ = 0;
    bool board_ = false;                // board layout: crowded points are reported
    long crowdedPoints_ = -1;           // -1: the board layout did not run
    Extent extent_;
};

}  // namespace krtool
