// What a plain-data layout run hands back: its status, and per laid-out segment its lines, their
// axis codes and the connectors its component text names; the ids a failed check names; the
// segments of the input that the result does not hold.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/model/ALLine.h>

#include <string>
#include <utility>
#include <vector>

class KRLAYOUT_EXPORT KrLayoutResult {
public:
    struct Connector {
        std::wstring connector;
        std::wstring pins;
    };
    struct Segment {
        long id = 0;
        double length = 0.0;    // the true length the segment was laid out with
        double diameter = 0.0;
        // The laid-out lines in the order of the output arrays, and per line its axis code
        // (2 along y, 1 along x, 0 neither, as the array write-back gives it).
        std::vector<ALLine> lines;
        std::vector<int> axes;
        // The connectors its component text names, in the text's order.
        std::vector<Connector> connectors;
    };

    // 0 laid out; 1 no route segments; 9 the input is not valid (see `message`); otherwise the
    // code of the check that failed (the loop check or the disjoint check).
    int status = 0;
    // The reason of status 9, or the check's message ("Loop Segment", "Disjoint Segment").
    std::wstring message;
    // The ids the failed check names, in its order.
    std::vector<long> failedIds;
    // The laid-out segments, in the order of the output arrays.
    std::vector<Segment> segments;
    // Ids of the input that the result does not hold (removed by the clean-up of several
    // segments to one connector, or by the final check after the layout), ascending.
    std::vector<long> droppedIds;

    // Board layout figures (0 for the grid layouts): branch points where some clearance could
    // not be kept, segments placed, the clearance used.
    long crowdedPoints = 0;
    long placedSegments = 0;
    double usedClearance = 0.0;

    // The line count over all segments.
    std::size_t LineCount() const;
};
