// The routing sketch as every other subsystem sees it. The order of the virtual operations is part of
// the contract: the layout run, the checks and the layout engine call through this interface only.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/model/ALLine.h>
#include <krlayout/model/ALPoint.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

class KrRouteBends;
class KrRouteSegment;
class KrRoutingGrid;
class KrRoutingWayPoint;

class KRLAYOUT_EXPORT IRoutingSketch {
public:
    virtual ~IRoutingSketch();                                                        // slot 0
    virtual int CreateRouteSegment(int id, double length, double diameter) = 0;       // slot 1
    virtual int CreateCADLine(int id) = 0;                                            // slot 2
    virtual int CreateGrid(double xSpacing, double ySpacing) = 0;                     // slot 3
    virtual int GetGrid(KrRoutingGrid*& grid) = 0;                                    // slot 4
    virtual int GetAllSegments(std::vector<KrRouteSegment*>& out) = 0;                // slot 5
    virtual int GetGridNode(double x, double y, KrRoutingWayPoint*& node) = 0;        // slot 6
    virtual int CreateWayPoint(std::vector<ALPoint> const& points) = 0;               // slot 7
    virtual int CreateWayPoint(std::map<long, long> const& linesPerSegment,
                               std::vector<ALPoint> const& points) = 0;               // slot 8
    virtual int GetAllLineNewPos(std::vector<ALPoint>& out) = 0;                      // slot 9
    virtual int GetLinesByRouteId(long id, std::vector<ALLine>& out) = 0;             // slot 10
    virtual int GetCADLineIdByRouteId(long id,
                                      std::vector<std::pair<long, long>>& out) = 0;   // slot 11
    virtual int SetCADLineIdByRouteId(long id,
                                      std::vector<std::pair<long, long>> const& ids) = 0;  // slot 12
    virtual int GetAllRouteSegment(std::vector<long>& out) = 0;                       // slot 13
    virtual int CheckRouteSegment() = 0;                                              // slot 14
    virtual int GetGridXSpacing(double& x) = 0;                                       // slot 15
    virtual int SetCADPointIdByRouteId(long id, std::vector<long*>& ids) = 0;         // slot 16
    virtual int GetSketchPointIdByRouteSegmentId(
        long id, std::vector<std::pair<long, long>>& out) = 0;                        // slot 17
    virtual int InsertConnector(long routeId, std::wstring connector,
                                std::wstring pin) = 0;                                // slot 18
    virtual int UniqueMultiPinSegment() = 0;                                          // slot 19
    virtual int SetBendsId(std::vector<long*>& ids) = 0;                              // slot 20
    virtual int ModifySketchByBends() = 0;                                            // slot 21
    virtual int AddBends(KrRouteBends* bend) = 0;                                     // slot 22
    virtual int RemoveDegenerateRouteSegment() = 0;                                   // slot 23
};
