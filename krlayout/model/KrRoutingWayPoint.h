// One point of the routing sketch: a vertex of the CAD lines and, after layout, a grid position.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/model/ALPoint.h>

#include <cstdint>
#include <utility>
#include <vector>

class KrRouteCADLine;
class KrRouteSegment;

class KRLAYOUT_EXPORT KrRoutingWayPoint {
public:
    KrRoutingWayPoint();
    explicit KrRoutingWayPoint(ALPoint const& point);
    KrRoutingWayPoint(KrRoutingWayPoint const& other);
    KrRoutingWayPoint& operator=(KrRoutingWayPoint const& other);
    ~KrRoutingWayPoint();

    int SetGridCoord(double x, double y);
    int GetGridCoord(double& x, double& y);
    int GetGridCoord(double* xy);
    // Does nothing; the used flag is carried only.
    int SetUsed(bool used);

    // Host sketch point id pair.
    int SetPointId(long* ids);
    int GetPointId(std::pair<long, long>& id);

    // Same x and y within GEO_TOLERANCE; z is not compared.
    int IsSamePoint(KrRoutingWayPoint* other, bool& same);

    // Parents: the CAD lines through this point (not owned).
    int AddParent(KrRouteCADLine* line);
    int RemoveParent(KrRouteCADLine* line);
    int RemoveParentBySegment(KrRouteSegment* seg);
    int GetParent(std::vector<KrRouteCADLine*>& out);
    int GetCADLineBySegment(KrRouteSegment* seg, KrRouteCADLine*& line);

    // Segment queries, answered through the parents' parent segments.
    int GetConnectSegment(std::vector<KrRouteSegment*>& out);
    int GetSegments(bool redefined, std::vector<KrRouteSegment*>& out);
    int GetUnHandledSegments(std::vector<KrRouteSegment*>& out);
    int GetConnectSegmentExclude(KrRouteSegment* seg, std::vector<KrRouteSegment*>& out);
    int IsOwnBySegment(long segId, bool& owned);
    int GetRootSegment(KrRouteSegment*& root);

    // Takes over every CAD line of other; other is left without parents. Null other: 1. With
    // other being this point, the point moves to the end of the point list of each of its lines.
    int AddParentsFromPoint(KrRoutingWayPoint* other);

private:
    // A grid keeps the count of its non-grid registrations of this point current, so that asking
    // whether an ordinary lattice node is a non-grid node needs no lookup.
    friend class KrRoutingGrid;

    ALPoint position;
    bool used;
    std::vector<long> pointId;
    std::vector<KrRouteCADLine*> parents;
    std::uint64_t reserved;
    // How many grids hold this very object as a non-grid node. A copy is a new object that no
    // grid holds: it starts at 0, and assignment keeps the count of the object assigned to.
    std::uint32_t nonGridMarks;
};
