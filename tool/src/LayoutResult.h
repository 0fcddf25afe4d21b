// What one run of the tool produced: the input sketch, the laid-out lines per route segment, the
// host's relations and fillets, and the status of the run. Every output is written from this.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace krtool {

struct Point2 {
    double x = 0.0;
    double y = 0.0;
};

// One straight line of a segment. drawnStart/drawnEnd are the stretch left visible once the
// fillets at its ends have trimmed it (equal to start/end without fillets).
struct ResultLine {
    Point2 start;
    Point2 end;
    Point2 drawnStart;
    Point2 drawnEnd;
    int axis = 0;                         // 2 along y, 1 along x, 0 neither
    std::pair<long, long> lineId{-1, -1};
    std::vector<std::string> relations;   // relation names the host recorded on this line
};

// A fillet at the joint between line `line - 1` and line `line` of a segment, drawn as the arc
// from tangentPrev to tangentNext around center.
struct ResultFillet {
    int line = 0;
    Point2 corner;
    double requestedRadius = 0.0;
    double radius = 0.0;                  // smaller than requested when the lines are too short
    Point2 center;
    Point2 tangentPrev;
    Point2 tangentNext;
    double startAngle = 0.0;              // radians from +x, counter-clockwise sweep to endAngle
    double endAngle = 0.0;
};

struct ConnectorEnd {
    std::string name;                     // connector name, with the pin when one is given
    Point2 at;
};

struct ResultSegment {
    long id = 0;
    double length = 0.0;                  // true length (sum of the input lines)
    double diameter = 0.0;
    // The input sketch: per entity its start and end (what the library reads) and, for drawing,
    // the entity as a polyline (arcs and curves sampled).
    std::vector<std::pair<Point2, Point2>> inputLines;
    std::vector<std::vector<Point2>> inputShapes;
    std::vector<ResultLine> lines;
    std::vector<std::pair<long, long>> pointIds;
    std::vector<ResultFillet> fillets;
    std::vector<ConnectorEnd> connectors;
    std::vector<std::string> connectorNames;  // from the component map, in map order
};

// A segment of the document that the layout result does not hold, and why it is missing.
struct DroppedSegment {
    enum class Reason {
        // The multi-pin clean-up kept only the longest of several segments that run between the
        // same two points to one connector: deliberate, the kept segment stands for it.
        MultiPinCleanUp,
        // The layout's final check deleted it after placing it (a laid-out line that ended on
        // the grid node it started from): the result lacks the segment.
        FinalCheck,
    };
    long id = 0;
    Reason reason = Reason::FinalCheck;
    long keptId = 0;                      // MultiPinCleanUp: the segment kept in its place
    std::string connector;                // MultiPinCleanUp: the connector both run to
};

// Something in the input that the run went on with but that the user should hear about: a
// component text that names no connector, or segment lengths implausible for the unit.
struct RunWarning {
    enum class Kind {
        ComponentText,      // a component text yields no connector
        Units,              // the median segment length is implausible for the unit
    };
    Kind kind = Kind::ComponentText;
    std::string message;                  // the warning in words, as printed
    long component = 0;                   // component warnings: the id (the segment's id)
    std::string text;                     // component warnings: the text as given
    double medianLength = 0.0;            // Units: the median segment length in model units
};

struct LayoutResult {
    std::string documentName;
    std::string units = "m";
    double metresPerUnit = 1.0;
    std::string unitsSource = "default";  // "option" (--units), "document" (its units) or "default"
    int layoutType = 0;                   // LayoutType: 0 by diameter, 1 by length, 2 board
    std::string mode = "host";
    double gridX = 0.02;
    double gridY = 0.02;
    bool relations = true;
    bool fillets = true;
    std::string feature;
    bool clearanceGiven = false;          // --clearance given (board layout only)
    // The clearance the quality report measures against: the board layout's own (as given, or
    // its default) once it has run, else --clearance or the larger grid spacing.
    double clearance = 0.02;
    // Board layout: branch points where it could not keep every clearance; -1 for the grid
    // layouts and for a board run that did not get to the layout.
    long crowdedPoints = -1;

    long status = 0;
    std::string statusText;               // "ok", or what went wrong
    std::string checkMessage;             // "Loop Segment" / "Disjoint Segment" when a check failed
    std::vector<long> failedIds;
    // Every segment the host showed with a callout, and the callout's text.
    std::vector<std::pair<long, std::string>> messages;
    bool laidOut = false;                 // false: segments hold the input sketch only
    // Segments of the document that the layout result does not list (dropped by its clean-up).
    std::vector<long> removedIds;
    // The same segments, in the same order, each with the reason it is missing.
    std::vector<DroppedSegment> dropped;
    // The same segments again, in the same order, as the document has them (length, diameter,
    // input sketch): a cut list still has to name them.
    std::vector<ResultSegment> missing;
    // The component map's texts by segment id, as the document has them.
    std::map<long, std::string> componentTexts;
    // What the host was asked to do: name and count, in a fixed order.
    std::vector<std::pair<std::string, long>> hostCounters;
    // Warnings about the input, in the order they were printed.
    std::vector<RunWarning> warnings;

    std::vector<ResultSegment> segments;
    // The output arrays of a laid-out run as the library filled them: six numbers per line
    // (start x, y, z, end x, y, z) and an axis code per line. In arrays mode the lines' ids
    // (k, k) index them.
    std::vector<double> outputPoints;
    std::vector<int> outputAxes;
};

}  // namespace krtool
