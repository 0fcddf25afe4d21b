#include <krlayout/sketch/KrRouteBends.h>

KrRouteBends::KrRouteBends() : routeId(0), point(nullptr) {}

KrRouteBends::KrRouteBends(long id, KrRoutingWayPoint* p) : routeId(id), point(p) {}

// The way point belongs to the sketch or the grid.
KrRouteBends::~KrRouteBends() = default;

long KrRouteBends::GetRouteId() const
{
    return routeId;
}

KrRoutingWayPoint* KrRouteBends::GetPoint() const
{
    return point;
}
