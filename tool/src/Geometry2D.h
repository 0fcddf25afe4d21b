// Plane geometry the report, the fillets and the drawings share, and the tool's points and lines
// in the library's types.
#pragma once

#include "LayoutResult.h"

#include <krlayout/model/ALLine.h>
#include <krlayout/model/ALPoint.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrSegmentGeometry.h>

#include <utility>
#include <vector>

namespace krtool {

struct Extent {
    bool empty = true;
    double minX = 0.0;
    double minY = 0.0;
    double maxX = 0.0;
    double maxY = 0.0;

    void add(Point2 const& p);
    double width() const { return empty ? 0.0 : maxX - minX; }
    double height() const { return empty ? 0.0 : maxY - minY; }
};

class Geometry2D {
public:
    // Coordinates closer than this are the same point (the library's own tolerance).
    static constexpr double kTolerance = GEO_TOLERANCE;
    static constexpr double kPi = 3.14159265358979323846;

    // The library's plane geometry (KrSegmentGeometry) on the tool's points.
    static double distance(Point2 const& a, Point2 const& b);
    // Twice the signed area of (a, b, c): > 0 when c lies left of a->b.
    static double cross(Point2 const& a, Point2 const& b, Point2 const& c);
    static bool samePoint(Point2 const& a, Point2 const& b);
    static Extent extentOf(LayoutResult const& result, bool laidOut);

    // The tool's points and lines as the library's (z = 0), and back.
    static ALPoint toLibrary(Point2 const& p);
    static KrSegmentGeometry::Point toPlane(Point2 const& p);
    static ALLine toLibrary(std::pair<Point2, Point2> const& line);
    static Point2 fromLibrary(ALPoint const& p);
    // The free ends of a chain of lines, found by the library's KrLineChain: the points an odd
    // number of line ends reach (points within the library's tolerance are one), in the order
    // they first appear; the first line's start and the last line's end for a closed chain;
    // none for no lines.
    static std::vector<Point2> chainEnds(std::vector<std::pair<Point2, Point2>> const& lines);
};

}  // namespace krtool
