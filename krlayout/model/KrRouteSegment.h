// One route segment: a run of CAD lines between two end way points, with id, length and diameter.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/model/e_AngleArea.h>

#include <utility>
#include <cstdint>
#include <vector>

class IPriority;
class KrRouteCADLine;
class KrRoutingGrid;
class KrRoutingWayPoint;

class KRLAYOUT_EXPORT KrRouteSegment {
public:
    // id, length and diameter read 0; the direct angle reads 0 until set.
    KrRouteSegment();
    KrRouteSegment(long id, double length, double diameter);
    // Memberwise: the CAD line pointers are shared with the source.
    KrRouteSegment(KrRouteSegment const& other);
    KrRouteSegment& operator=(KrRouteSegment const& other);
    // Deletes the segment's CAD lines; never its way points.
    ~KrRouteSegment();

    // Accessors.
    long GetId() const;
    int SetDiameter(double diameter);
    int GetDiameter(double& diameter);
    int GetLength(double& length);
    int SetLength(double length);  // does nothing: the length is fixed at construction
    int SetRedefine(bool redefine);
    int IsRedefine(bool& redefine);
    int SetDirectAngle(double angle);
    int GetDirectAngle(double& angle);
    int SetType(e_AngleArea type);
    int GetType(e_AngleArea& type);
    int SetRow(int row);
    int GetRow(int& row);
    int SetDegenerated(bool degenerated);
    int GetDegenerated(bool& degenerated);
    int GetCADLineNum(int& count);

    // Do nothing; return 0.
    int SetStartEnd();
    int InsertCADLine(KrRouteCADLine* line);
    int ExtendSegment(KrRoutingWayPoint* p);
    int PlaceSegment(KrRoutingWayPoint* p);
    int MoveSegment(long a, long b);
    int GetSegmentNeedExtend(KrRoutingWayPoint* p);

    // Lines and ends.
    int CreateCADLine(KrRouteCADLine*& line);
    int AddCADLine(KrRouteCADLine* line);
    int AddPoint(KrRoutingWayPoint* p);
    int RemovePoint(KrRoutingWayPoint* p);
    int ReplaceEnd(KrRoutingWayPoint* oldP, KrRoutingWayPoint* newP);
    int IsOneEnd(KrRoutingWayPoint* p, bool& isEnd);
    int IsStartPoint(KrRoutingWayPoint* p, bool& isStart);
    int GetOtherEnd(KrRoutingWayPoint* p, KrRoutingWayPoint*& other);
    int IsDegenerated(bool& degenerated);

    // Topology.
    int GetAllConnectSegment(std::vector<KrRouteSegment*>& out);
    int GetAllConnectSegmentByEnd(bool atStart, std::vector<KrRouteSegment*>& out);
    int GetConnectSegmentByPoint(KrRoutingWayPoint* p, bool redefined,
                                 std::vector<KrRouteSegment*>& out);
    int IsConnectByEnd(KrRouteSegment* other, bool& connected);
    int GetConnectEnd(KrRoutingWayPoint*& end);
    int GetUnHandledEnd(KrRoutingWayPoint*& end, std::vector<KrRouteSegment*>& segs);
    int GetRootPoint(KrRoutingWayPoint*& root);
    int GetRootSegment(KrRouteSegment*& root);
    int GetTailHandledSegment(KrRoutingWayPoint* p, std::vector<KrRouteSegment*>& out);
    int GetSameBothEndsSegments(std::vector<KrRouteSegment*>& out);

    // Ids.
    int SetPointId(std::vector<long*>& ids);
    int GetSketchPointId(KrRoutingWayPoint* p, std::vector<std::pair<long, long>>& out);
    int GetConnectorSketchPointId(std::vector<std::pair<long, long>>& out);
    int GetPointByRouteSegmentId(std::vector<long>& segIds, KrRoutingWayPoint*& p);

    // Geometry.
    int SetNewPoints(std::vector<KrRoutingWayPoint*>& path);
    int ClearLines();
    int GetAllPointInSegment(std::vector<KrRoutingWayPoint*>& out);
    int GetAllCADLine(std::vector<KrRouteCADLine*>& out);
    int GetCADLineByPoint(KrRoutingWayPoint* p, std::vector<KrRouteCADLine*>& out);
    int Move(KrRoutingGrid* grid, double dx, double dy, std::vector<KrRouteSegment*>& moved);
    int Short(double len, KrRoutingWayPoint* from, KrRoutingWayPoint*& newEnd);
    int Extends(KrRoutingGrid* grid, KrRoutingWayPoint* p, double dx, double dy);
    int AssignRow(e_AngleArea area, std::vector<KrRouteSegment*>& segs);
    int AssignRowToSegment(std::vector<KrRouteSegment*>& segs);
    int IsHor(IPriority* priority, bool& hor);
    int IsVer(bool& ver);
    int IsSecWith(double* p1, double* p2, double* hit, KrRouteCADLine*& line, bool& crosses);
    int CheckPointAndLine(bool& ok);

private:
    long id;
    double length;
    double diameter;
    bool redefine;
    std::vector<KrRouteCADLine*> lines;
    std::vector<KrRoutingWayPoint*> ends;
    double directAngle;
    e_AngleArea type;
    bool degenerated;
    int row;

    // The grid marks each segment it lists as moved in a batch of moves with the batch's number,
    // so that asking whether a segment was moved in this batch needs no lookup. The mark belongs
    // to this object: a copy starts unmarked and assignment keeps the mark.
    friend class KrRoutingGrid;
    struct MoveMark {
        std::uint64_t batch = 0;
        MoveMark() = default;
        MoveMark(MoveMark const&) {}
        MoveMark& operator=(MoveMark const&) { return *this; }
    };
    MoveMark moveMark;
};
