// The routing sketch store: owns the route segments, the way points read from input, the connector
// records and the grid of one layout run.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/sketch/IRoutingSketch.h>

#include <map>
#include <string>
#include <utility>
#include <unordered_map>
#include <vector>

class KrRouteConnector;

class KRLAYOUT_EXPORT KrSketch : public IRoutingSketch {
public:
    KrSketch();
    // Shallow: the copy shares the owned objects; the library never copies a sketch.
    KrSketch(KrSketch const& other);
    KrSketch& operator=(KrSketch const& other);
    ~KrSketch() override;

    // IRoutingSketch, in slot order.
    int CreateRouteSegment(int id, double length, double diameter) override;
    int CreateCADLine(int id) override;
    int CreateGrid(double xSpacing, double ySpacing) override;
    int GetGrid(KrRoutingGrid*& grid) override;
    int GetAllSegments(std::vector<KrRouteSegment*>& out) override;
    int GetGridNode(double x, double y, KrRoutingWayPoint*& node) override;
    int CreateWayPoint(std::vector<ALPoint> const& points) override;
    int CreateWayPoint(std::map<long, long> const& linesPerSegment,
                       std::vector<ALPoint> const& points) override;
    int GetAllLineNewPos(std::vector<ALPoint>& out) override;
    int GetLinesByRouteId(long id, std::vector<ALLine>& out) override;
    int GetCADLineIdByRouteId(long id, std::vector<std::pair<long, long>>& out) override;
    int SetCADLineIdByRouteId(long id, std::vector<std::pair<long, long>> const& ids) override;
    int GetAllRouteSegment(std::vector<long>& out) override;
    int CheckRouteSegment() override;
    int GetGridXSpacing(double& x) override;
    int SetCADPointIdByRouteId(long id, std::vector<long*>& ids) override;
    int GetSketchPointIdByRouteSegmentId(long id, std::vector<std::pair<long, long>>& out) override;
    int InsertConnector(long routeId, std::wstring connector, std::wstring pin) override;
    int UniqueMultiPinSegment() override;
    int SetBendsId(std::vector<long*>& ids) override;
    int ModifySketchByBends() override;
    int AddBends(KrRouteBends* bend) override;
    int RemoveDegenerateRouteSegment() override;

    // Store members the other subsystems call directly.
    int AddPoint(KrRoutingWayPoint* p);
    int GetRouteSegmentById(long id, KrRouteSegment*& seg);
    int GetDegenerateRouteSegmentById(long id, KrRouteSegment*& seg);
    int AddDegenerateSegment(KrRouteSegment* seg);
    int RecoverDegenerateRouteSegment(KrRouteSegment* seg);
    int ConnectSegment(KrRouteSegment* seg, std::vector<KrRoutingWayPoint*>& pts);
    int SetCADLineId(std::vector<std::pair<long, long>> const& ids);
    int GetCurrentSegment();           // no-op, 0
    int HideRouteSegment(long id);     // no-op, 0
    int GetAllHandledRouteSegment(std::vector<KrRouteSegment*>& out);

    // Clean-up helpers of UniqueMultiPinSegment.
    int ExcludeLongestSegment(std::vector<KrRouteSegment*>& segments, KrRouteSegment*& longest);
    int RemoveMultiPinRedundantSegment(KrRouteConnector* connector);
    int RemoveSegments(std::vector<KrRouteSegment*>& toRemove);

private:
    // Shared body of both CreateWayPoint forms; a null map builds way points only.
    int BuildWayPoints(std::map<long, long> const* linesPerSegment, std::vector<ALPoint> const& points);
    // True when another live segment joins the same two end way points as seg.
    bool HasBypass(KrRouteSegment* seg);
    // The segments with an id, in store order (null when none), through an index of the store
    // that follows appends and is rebuilt after any other change of the store.
    std::vector<KrRouteSegment*> const* SegmentsWithId(long id);
    void StoreChanged() { segmentIndexStale = true; }

    std::vector<KrRouteSegment*> segments;
    KrRoutingGrid* grid;
    std::vector<KrRoutingWayPoint*> wayPoints;
    std::vector<KrRouteConnector*> connectors;
    std::vector<KrRouteBends*> bends;
    std::vector<KrRouteSegment*> degenerateSegments;
    std::unordered_map<long, std::vector<KrRouteSegment*>> segmentsById;
    std::size_t indexedSegments = 0;
    bool segmentIndexStale = false;
};
