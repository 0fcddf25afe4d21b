// The board drawing of a route sketch: every route segment drawn as one straight line at its true
// length, in one of the eight axis-parallel or 45-degree directions (a point where more than eight
// segments meet fans its extra segments out at finer equal angles), with no two segments crossing,
// touching or overlapping except at the point they share, and with a clearance between segments
// that do not meet.
//
// The drawing is built bottom-up: every segment's subtree (the segment and everything beyond its
// far end) is drawn in the segment's own frame, and the box around everything but the segment
// itself is all its parent needs to know of it. At a branch point the children are placed one by
// one in order of importance, each in the first free direction (straight on, then left and right
// alternately, then the diagonals) and mirror where its box keeps the clearance from the segment it
// hangs off and from every sibling placed so far. Because every pair of segments that do not meet
// is separated at exactly one such branch point, checking the boxes there proves the clearance for
// the whole drawing. The segments are then placed top-down from the root, which runs from the
// origin toward -x like the root of the grid layouts.
//
// Clearance between two segments that do not meet: at least the larger of the clearance setting
// and half the sum of their diameters, or, where a segment on the tree path between them is shorter
// than that, the length of the shortest such segment (two segments joined by a 1 mm segment cannot
// be further apart than 1 mm). Where no direction at a branch point keeps that clearance (a short
// segment carrying a large subtree among crowded siblings) the child takes the free direction that
// breaks the fewest box checks, the point is counted as crowded, and lengths and directions stay
// exact; GetCrowdedPointCount reports how many points needed that.
//
// The result is left where the grid layouts leave theirs: every placed segment gets new way points
// (owned by the sketch's grid as non-grid nodes), its redefine flag, its direction and, for the
// root, type 1; the sketch then settles its segments (CheckRouteSegment).
#pragma once

#include <krlayout/krlayout_export.h>

#include <cstdint>
#include <vector>

class IRoutingSketch;

class KRLAYOUT_EXPORT KrFormboardLayout {
public:
    // The clearance starts unset: the larger grid spacing of the sketch is used.
    KrFormboardLayout();
    ~KrFormboardLayout();
    KrFormboardLayout(KrFormboardLayout const&) = delete;
    KrFormboardLayout& operator=(KrFormboardLayout const&) = delete;

    // A clearance of 0 or more replaces the grid spacing; a negative value (or NaN) restores the
    // default. 0.
    int SetClearance(double clearance);
    // The clearance set, or -1 when the grid spacing is used. 0.
    int GetClearance(double& clearance);

    // Lays out every segment reachable from the root. 1 for a null sketch or a sketch without a
    // grid, else 0 (also for a sketch without segments, which is left untouched).
    int LayOut(IRoutingSketch* sketch);

    // Results of the latest LayOut.
    // Branch points where some child could not keep every clearance.
    int GetCrowdedPointCount(long& count);
    // Segments the layout placed (every one reachable from the root through shared end points).
    int GetPlacedSegmentCount(long& count);
    // The clearance used (the setting or the grid spacing).
    int GetUsedClearance(double& clearance);

    // The direction set at a point with `children` segments leaving it besides the one it is
    // reached through, as angles in units of 2^-32 turns relative to the incoming direction, in
    // the order they are tried: straight on, left, right, the four diagonals (front ones first),
    // and, when more than seven are needed, the finer equal steps nearest straight on first. The
    // backward direction (half a turn) is never listed.
    static int GetDirections(long children, std::vector<std::uint32_t>& out);

private:
    double clearance;
    long crowded;
    long placed;
    double usedClearance;
};
