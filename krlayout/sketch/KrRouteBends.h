// A bend found by the bend check: the way point where a route segment changes direction and the
// segment's id. The sketch keeps these records without owning them.
#pragma once

#include <krlayout/krlayout_export.h>

class KrRoutingWayPoint;

class KRLAYOUT_EXPORT KrRouteBends {
public:
    KrRouteBends();
    KrRouteBends(long routeId, KrRoutingWayPoint* point);
    ~KrRouteBends();

    long GetRouteId() const;
    KrRoutingWayPoint* GetPoint() const;

private:
    long routeId;
    KrRoutingWayPoint* point;
};
