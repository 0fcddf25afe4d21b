// A line-end record: which end of which line of which route segment, and where it is.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/model/ALPoint.h>

class KRLAYOUT_EXPORT KrRoutingSketchLineEnd {
public:
    KrRoutingSketchLineEnd();
    KrRoutingSketchLineEnd(long routeId, long lineIndex, bool isStart, ALPoint const& point);

    long routeId;
    long lineIndex;
    bool isStart;
    ALPoint point;
};
