// Measures of a drawn layout: how many segments cross or overlap, which pairs of segments come
// closer than the clearance rule allows, and how far the drawn lengths stray from the true ones.
// It measures plain per-segment lines, so it serves any drawing: a layout result, the input
// sketch of a run that stopped before the layout, or a sketch a test laid out.
//
// Crossings and overlaps: every proper crossing point between lines of two different segments,
// and every collinear stretch two such lines share (KrSegmentGeometry::ProperCrossing and
// CollinearOverlap with GEO_TOLERANCE as margin: ends within the tolerance of a line touch it,
// they do not cross it).
//
// The clearance rule: two segments that do not meet (share no end) must be at least
// max(clearance, (d1 + d2) / 2) apart, d1 and d2 their diameters: the clearance, or the room two
// bundles need side by side when that is more. Where a segment on the tree path between the two
// is shorter than that, the length of the shortest such segment is enough: two segments joined by
// a 1 mm segment cannot be further apart than 1 mm. A pair is closer than the rule allows when its
// drawn lines come closer than that by more than GEO_TOLERANCE.
//
// Which segments meet and the tree paths between them are read from each segment's sketch (where
// its ends are, as opposed to where it is drawn, so that a drawing which makes two ends touch is
// not taken to join them): its ends are those of the chain its sketch lines form
// (KrLineChain::FindEnds; a chain that closes on itself or branches stands for its first line's
// start and last line's end), and ends that are equal as ALPoints are one point. A sketch that is
// not a tree (one with a loop, measured before any layout) is read along a spanning tree; segments
// in different pieces get no shorter limit. Distances are measured in the plane (x and y).
//
// Drawn lines with a coordinate that is not finite are counted but cross, overlap and come close
// to nothing. Close pairs and crossings are found through a uniform grid of cells over the lines,
// so a drawing of n lines takes about n log n time rather than comparing all pairs, and the
// findings are handed on as they are found: a tangled drawing of 100,000 segments has millions of
// them, and the caller keeps what it needs.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/model/ALLine.h>

#include <cstddef>
#include <functional>
#include <vector>

class KRLAYOUT_EXPORT KrLayoutQuality {
public:
    struct Segment {
        double length = 0.0;    // the true length; it limits the rule for the segments it joins
        double diameter = 0.0;
        // The segment's sketch, start and end per entity: where its ends are.
        std::vector<ALLine> sketch;
        // The drawn lines that are measured.
        std::vector<ALLine> lines;
    };

    // Findings name segments by their index in the measured list; a < b.
    struct Crossing {
        std::size_t a = 0;
        std::size_t b = 0;
        double x = 0.0;          // the crossing point
        double y = 0.0;
    };
    struct Overlap {
        std::size_t a = 0;
        std::size_t b = 0;
        double length = 0.0;     // of the shared stretch
    };
    struct ClosePair {
        std::size_t a = 0;
        std::size_t b = 0;
        double distance = 0.0;   // least distance between their drawn lines
        double required = 0.0;   // what the rule asks of this pair
    };

    // What Measure hands on, each as it is found; an empty function is not called.
    // Crossings and overlaps come in the order of the segments: by a, then b, then by the lines
    // of a and of b. Close pairs come by a, then b, once a pair: of a pair with several close
    // lines the closest stand for it.
    struct Findings {
        std::function<void(Crossing const&)> crossing;
        std::function<void(Overlap const&)> overlap;
        std::function<void(ClosePair const&)> closePair;
    };

    // Measures `segments` against the clearance (a negative or NaN clearance counts as 0), handing
    // on every finding and setting the figures below (all of them reset first). 0.
    int Measure(std::vector<Segment> const& segments, double clearance,
                Findings const& findings = Findings());

    // The figures of the latest Measure.
    // Drawn lines, also those with a coordinate that is not finite.
    std::size_t lines = 0;
    // Pairs of segments with at least one crossing, and all crossing points.
    std::size_t crossingPairs = 0;
    std::size_t crossingPoints = 0;
    // Collinear stretches shared by lines of two segments, and their total length.
    std::size_t overlappingPieces = 0;
    double overlapLength = 0.0;
    // Pairs of segments closer than the clearance rule allows.
    std::size_t closePairs = 0;
    // Per segment, in the order measured: the summed lengths of its drawn lines.
    std::vector<double> drawnLengths;
    // The largest |drawn - true| / true over the segments with a true length above 0 (0 without
    // any), and the index of the first segment that has it (0 when the largest is 0).
    double largestLengthDeviation = 0.0;
    std::size_t largestLengthDeviationSegment = 0;
};
