// Plane geometry of straight segments, computed exactly as written: orientation, distances between
// points, segments and boxes, proper crossings with their point, and the stretch two collinear
// segments share. The board layout proves its clearances with these functions, and the quality
// measure of a drawing (KrLayoutQuality) counts crossings, overlaps and close pairs with them, so
// that a drawing is judged by the same arithmetic that built it.
//
// Why not KrGeoUtility: its comparisons are tolerant by contract (equal within GEO_TOLERANCE, the
// inclusive ones always at GEO_TOLERANCE whatever is passed, a box test widened by it) and the
// grid layouts depend on exactly that. A clearance proof needs the opposite: a segment that lies
// 1e-6 off another is not touching it, and a distance is the number computed, not a number rounded
// to the tolerance. Nothing here compares within a tolerance unless the caller passes one (the
// `margin` of ProperCrossing and CollinearOverlap, which the quality measure sets to the library's
// tolerance for what a drawing shows).
//
// No function checks its input for NaN or infinity; callers that may hold such coordinates leave
// those lines out.
#pragma once

#include <krlayout/krlayout_export.h>

class KRLAYOUT_EXPORT KrSegmentGeometry {
public:
    struct Point {
        double x = 0.0;
        double y = 0.0;
    };
    // The closed axis-aligned box x0 <= x <= x1, y0 <= y <= y1.
    struct Box {
        double x0 = 0.0;
        double y0 = 0.0;
        double x1 = 0.0;
        double y1 = 0.0;
    };

    KrSegmentGeometry() = delete;

    // Twice the signed area of the triangle o, a, b: positive when b lies left of the direction
    // o -> a, negative when right, 0 when the three are collinear.
    static double Cross(Point const& o, Point const& a, Point const& b);
    // The Euclidean distance between a and b.
    static double Distance(Point const& a, Point const& b);
    // Whether p lies in the closed box spanned by a and b (no test that it lies on the line a-b).
    static bool InSpan(Point const& p, Point const& a, Point const& b);

    // The least distance from p to the closed segment a-b (to a when a and b coincide).
    static double PointSegmentDistance(Point const& p, Point const& a, Point const& b);
    // Whether the closed segments a-b and c-d have a point in common: a crossing, an end on the
    // other segment, or a collinear overlap.
    static bool Intersect(Point const& a, Point const& b, Point const& c, Point const& d);
    // The least distance between the closed segments a-b and c-d: 0 when they cross (the ends of
    // each strictly on opposite sides of the other's line), else the least distance from an end
    // of one to the other. Segments that touch or overlap are so as far apart as the touching end
    // computes, which is 0 up to the rounding of the foot of its perpendicular.
    static double SegmentDistance(Point const& a, Point const& b, Point const& c, Point const& d);

    // Whether a-b and c-d cross properly: both have a length of at least `margin`, and the ends of
    // each lie on opposite sides of the other's line, each more than `margin` away from it (with a
    // margin of 0: strictly on opposite sides). When they do, the crossing point is written to `at`.
    static bool ProperCrossing(Point const& a, Point const& b, Point const& c, Point const& d,
                               double margin, Point& at);
    // The length of the stretch a-b and c-d share when both c and d lie within `margin` of the
    // line through a and b (both segments at least `margin` long), measured along a-b; 0 when
    // they are not collinear or share no more than `margin`.
    static double CollinearOverlap(Point const& a, Point const& b, Point const& c, Point const& d,
                                   double margin);

    // The least distance from p to the box (0 inside it or on its edge).
    static double PointBoxDistance(Point const& p, Box const& box);
    // The least distance between the closed segment a-b and the box: 0 when they meet, else the
    // least of the distances from the box's corners to the segment and from the segment's ends to
    // the box (both are convex, so the least distance is reached at one of those).
    static double SegmentBoxDistance(Point const& a, Point const& b, Box const& box);
};
