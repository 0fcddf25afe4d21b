// What a plain-data layout run lays out: route segments with their lines, the component map, the
// grid and the layout type. No host is involved; a caller with a list of segments fills this in.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/model/ALLine.h>
#include <krlayout/model/ALPoint.h>

#include <map>
#include <string>
#include <vector>

class KRLAYOUT_EXPORT KrLayoutInput {
public:
    struct Segment {
        long id = 0;
        // The true length; a negative value stands for the sum of the lines' lengths.
        double length = -1.0;
        double diameter = 0.0;
        // The segment's sketch lines, start and end; segments meet where line ends coincide
        // (within the library's point tolerance).
        std::vector<ALLine> lines;
    };

    // In any order: the run creates the segments in ascending id order.
    std::vector<Segment> segments;
    // Component texts by segment id ("PINS@CONNECTOR", or two joined by ":").
    std::map<long, std::wstring> componentMap;
    double gridSpacingX = 0.02;
    double gridSpacingY = 0.02;
    // A number of KrLayoutTypeRegistry (0 diameter, 1 length, 2 formboard).
    int layoutType = 0;
    // The board layout's clearance; negative for its default (the larger grid spacing).
    double clearance = -1.0;

    // The way points in the form a host reader gathers them: line counts by segment id and two
    // end points per line, the segments one after another in the counts' (ascending id) order.
    // When `hostWayPoints` is set they replace the segments' lines, so that a host run keeps every
    // detail of its reading (an entity whose ends could not be read, ids of an earlier run).
    bool hostWayPoints = false;
    std::map<long, long> hostLineCounts;
    std::vector<ALPoint> hostLineEnds;

    // The length a segment is laid out with: its own, or the sum of its lines' lengths.
    static double LengthOf(Segment const& segment);
    // Why the input cannot be laid out (a duplicate id, an id outside the int range, a length,
    // diameter, coordinate, grid spacing or clearance that is not a finite number, a negative
    // diameter, a grid spacing not above 0, a layout type that is no type); empty when it can.
    // An input without segments is valid here; the run answers it with status 1.
    std::string Problem() const;
};
