// One straight sketch line of a route segment, drawn through an ordered list of way points.
#pragma once

#include <krlayout/krlayout_export.h>

#include <utility>
#include <vector>

class ALLine;
class KrRoutingGrid;
class KrRoutingWayPoint;
class KrRouteSegment;

class KRLAYOUT_EXPORT KrRouteCADLine {
public:
    KrRouteCADLine();
    KrRouteCADLine(KrRouteCADLine const& other);
    KrRouteCADLine& operator=(KrRouteCADLine const& other);
    ~KrRouteCADLine();

    void SetId(std::pair<long, long> const& id);
    void GetId(std::pair<long, long>& id) const;

    int SetParentSegment(KrRouteSegment* seg);
    int GetParentSegment(KrRouteSegment*& seg);

    int GetStartPoint(KrRoutingWayPoint*& p);
    int GetEndPoint(KrRoutingWayPoint*& p);
    int GetWayPoint(std::vector<KrRoutingWayPoint*>& out);
    int CheckPoint(bool& ok);

    int AddPoint(KrRoutingWayPoint* p);
    int AddPoints(std::vector<KrRoutingWayPoint*>& pts);
    int RemovePoint(KrRoutingWayPoint* p);
    int ReplaceEnd(KrRoutingWayPoint* oldP, KrRoutingWayPoint* newP);
    int ClearPoints();

    int GetDir(double* dir);
    int GetLine(ALLine* line);
    int GetMaxYPoint(double* xy);
    int GetMinYPoint(double* xy);
    int PointIsOnLine(KrRoutingWayPoint* p, bool& on);
    int PointIsOnBeeline(KrRoutingWayPoint* p, bool& on);
    int GetPointBetweenPoint(KrRoutingWayPoint* a, KrRoutingWayPoint* b,
                             std::vector<KrRoutingWayPoint*>& out);

    // Shifts the line by (dx, dy) on the grid, moving crossing segments first. Null grid: 1.
    int Move(KrRoutingGrid* grid, double dx, double dy, std::vector<KrRouteSegment*>& moved);
    // Shortens the line by len at the end `from`. When the line is long enough (a lone line
    // shorter than len is halved instead), newEnd is a new way point that the caller owns and
    // must delete. When the line is one of several in its segment and shorter than len, it is
    // emptied and newEnd is its existing opposite end (not new, not owned by the caller).
    // Null `from` or a line without points: 1.
    int Short(double len, KrRoutingWayPoint* from, KrRoutingWayPoint*& newEnd);

    // Do nothing; return 0.
    int SetStartEnd(double x1, double y1, double x2, double y2);
    int InsertWayPoint(KrRoutingWayPoint* p);

private:
    KrRouteSegment* parentSegment;
    std::vector<KrRoutingWayPoint*> points;
    std::pair<long, long> id;
};
