// The free ends of a chain of lines: where a route segment drawn as several lines begins and
// ends, found from the lines alone (for a drawing, a document's sketch entities or a laid-out
// result; nothing of a routing sketch is needed).
//
// The routing sketch does not use this finder. KrSketch::CreateWayPoint keeps its own end rule on
// way points: within a segment, the uses of one way point cancel in pairs in order, and the ends
// are added in the order of their last unpaired use. The grid layouts depend on that order, so it
// stays as it is; both rules find the same two points for a chain that has two ends.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/model/ALLine.h>
#include <krlayout/model/ALPoint.h>

#include <vector>

class KRLAYOUT_EXPORT KrLineChain {
public:
    KrLineChain() = delete;

    // Appends the ends of the chain the lines form to `ends`: the points that an odd number of
    // line ends reach, in the order they first appear (line by line, start before end). Points
    // are the same as CreateWayPoint merges them (KrPointIndex: equal as ALPoints, within
    // GEO_TOLERANCE in each coordinate), each end given as the first line end of its point; a
    // point with a coordinate that is not finite equals nothing. A chain that reaches
    // every point an even number of times (closed on itself) gives its first line's start and its
    // last line's end. A chain that branches gives more than two ends. 1 for no lines (nothing
    // appended), else 0.
    static int FindEnds(std::vector<ALLine> const& lines, std::vector<ALPoint>& ends);
};
