// The orthogonal lattice on which route segments are laid out. Owns every way point it hands out.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/model/e_AngleArea.h>

#include <cstdint>
#include <unordered_map>
#include <vector>

class KrRouteCADLine;
class KrRouteSegment;
class KrRoutingWayPoint;
class KrSketch;

class KRLAYOUT_EXPORT KrRoutingGrid {
public:
    KrRoutingGrid();
    // Member-wise (the node vectors are copied shallowly); the library never copies a grid.
    KrRoutingGrid(KrRoutingGrid const& other);
    KrRoutingGrid& operator=(KrRoutingGrid const& other);
    // Deletes every grid node, then every non-grid node.
    ~KrRoutingGrid();

    // Construction and lookup.
    int CreateGrids(double xSpan, double ySpan, double s1, double s2, double s3, double s4);
    int SetGridSpan(double x, double y);
    int GetGridSpan(double& x, double& y);
    int SetScale(double s1, double s2, double s3, double s4);
    int SetSketch(KrSketch* sketch);
    int GetSketch(KrSketch*& sketch);
    int GetGridNode(double x, double y, KrRoutingWayPoint*& node);
    int GetNonGridNode(double x, double y, KrRoutingWayPoint*& node);
    int AddNonNodePoint(KrRoutingWayPoint* p);
    int IsNonGridNode(KrRoutingWayPoint* p, bool& result);
    int GetRowNum(double y, int& row);
    int GetAllWayPoint(std::vector<KrRoutingWayPoint*>& out);
    int ArrangeVector(std::vector<KrRoutingWayPoint*>& points, bool a, bool b);  // no-op

    // Traversal.
    int GetNextHorGridNode(KrRoutingWayPoint* p, double angle, KrRoutingWayPoint*& next);
    int GetNextNodeByDirect(KrRoutingWayPoint* from, KrRoutingWayPoint* to,
                            KrRoutingWayPoint*& next);
    int GetNextNodeByDirect(KrRoutingWayPoint* p, double* direction, KrRoutingWayPoint*& next);
    int GetPointByAngle(KrRoutingWayPoint* p, double angle, int row, KrRoutingWayPoint*& first,
                        std::vector<KrRoutingWayPoint*>& points);
    int GetEndPointByLength(KrRouteSegment* seg, KrRoutingWayPoint* start,
                            KrRoutingWayPoint* next, KrRoutingWayPoint*& end);
    int GetAllNodeBetweenTwoPoint(KrRoutingWayPoint* a, KrRoutingWayPoint* b,
                                  std::vector<KrRoutingWayPoint*>& points);
    int IsDirectMatch(e_AngleArea area, double* v, bool& match);
    int MoveCrossSegment(KrRouteCADLine* line, double dx, double dy,
                         std::vector<KrRouteSegment*>& moved);

private:
    double ySpan;
    double xSpan;
    double scale1;
    double scale2;
    double scale3;
    double scale4;
    KrSketch* sketch;
    std::vector<KrRoutingWayPoint*> gridNodes;
    std::vector<KrRoutingWayPoint*> nonGridNodes;
};
