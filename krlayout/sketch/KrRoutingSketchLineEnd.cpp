#include <krlayout/sketch/KrRoutingSketchLineEnd.h>

KrRoutingSketchLineEnd::KrRoutingSketchLineEnd() : routeId(0), lineIndex(0), isStart(false), point() {}

KrRoutingSketchLineEnd::KrRoutingSketchLineEnd(long route, long index, bool start, ALPoint const& p)
    : routeId(route), lineIndex(index), isStart(start), point(p)
{
}
