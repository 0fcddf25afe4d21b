// Lays a whole routing sketch out on its grid: the root segment from the origin, then every branch.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/layout/e_LayOutType.h>
#include <krlayout/model/e_AngleArea.h>

#include <memory>
#include <vector>

class IAssignAngle;
class ICrossLineUpdate;
class IPriority;
class IRoutingSketch;
class KrRouteSegment;
class KrRoutingGrid;
class KrSegmentIndex;
class KrRoutingWayPoint;

class KRLAYOUT_EXPORT KrRoutingLayout {
public:
    KrRoutingLayout();
    // Releases the three strategy objects.
    ~KrRoutingLayout();
    KrRoutingLayout(KrRoutingLayout const&) = delete;
    KrRoutingLayout& operator=(KrRoutingLayout const&) = delete;

    int LayOut(IRoutingSketch* sketch, e_LayOutType type);
    int CreatePriority(e_LayOutType type);
    int CreateAssignAngle(e_LayOutType type);
    int CreateCrossLineUpdate(e_LayOutType type);
    int GetIPriority(IPriority*& priority);
    int PlaceSegment(std::vector<KrRoutingWayPoint*>& points, KrRouteSegment* seg);
    int PlaceOneSegment(std::vector<KrRoutingWayPoint*>& points, KrRouteSegment* seg,
                        KrRoutingGrid* grid);
    int GetRootSegment(KrRoutingWayPoint*& point, KrRouteSegment*& seg);
    int GetSpreadAngle(e_AngleArea area, double& angle);

    // Kept in the interface; they do nothing and return 0.
    int PlaceAngle(KrRoutingWayPoint* point, double& angle);
    int UpdateAllSegmentNecessary(KrRouteSegment* seg);
    int GetNextFreeGridPoint(KrRoutingWayPoint* a, KrRoutingWayPoint* b);
    int FindOutAllSegmentNeedExtend(KrRoutingWayPoint* a, KrRoutingWayPoint* b,
                                    std::vector<KrRouteSegment*>& segs);

    // Segment moves used by the cross-line strategies.
    int FindOutAllSegmentNeedUpdate(KrRoutingGrid* grid, KrRouteSegment* seg,
                                    KrRoutingWayPoint*& start, KrRoutingWayPoint*& first,
                                    KrRoutingWayPoint*& last, KrRoutingWayPoint*& hitPoint,
                                    KrRoutingWayPoint*& movedRoot,
                                    std::vector<KrRouteSegment*>& movedSegments,
                                    std::vector<KrRoutingWayPoint*>& points);
    int GetFirstCrossLine(KrRoutingGrid* grid, KrRouteSegment* seg, KrRoutingWayPoint* start,
                          KrRoutingWayPoint* first, KrRoutingWayPoint* last, bool& found);
    int MoveSegment(KrRoutingGrid* grid, KrRouteSegment* seg, KrRoutingWayPoint* from,
                    KrRoutingWayPoint* to, KrRoutingWayPoint* root);
    int MoveSegmentAway(KrRoutingGrid* grid, KrRoutingWayPoint* a, KrRoutingWayPoint* b,
                        std::vector<KrRouteSegment*>& segs);
    int MoveSegmentAway(KrRoutingGrid* grid, e_AngleArea area, KrRoutingWayPoint* p,
                        std::vector<KrRouteSegment*>& segs);
    int ExtendSegments(KrRoutingGrid* grid, KrRoutingWayPoint* a, KrRoutingWayPoint* b,
                       std::vector<KrRouteSegment*> segs, std::vector<KrRoutingWayPoint*> points);
    int ExtendSegments(KrRoutingGrid* grid, e_AngleArea area, KrRoutingWayPoint* p,
                       std::vector<KrRouteSegment*> segs, std::vector<KrRoutingWayPoint*> points);

private:
    // Tests install stub strategies through this peer.
    friend class KrRoutingLayoutTestAccess;

    // Places a child at `end`: attempts at its row, pushing a rejected vertical child outwards.
    void PlaceChild(KrRoutingGrid* grid, KrRouteSegment* child, KrRoutingWayPoint* end,
                    std::vector<KrRoutingWayPoint*>& pointList);
    // Number of row pushes after which a rejected vertical child stays where it is.
    long RowPushBound(KrRoutingGrid* grid);
    // Re-reads the geometry of seg into the index (no-op outside LayOut).
    void RefreshHandled(KrRouteSegment* seg);
    // Refreshes the handled segments whose lines run through p.
    void RefreshHandledAt(KrRoutingWayPoint* p);

    ICrossLineUpdate* crossLineUpdate;
    IAssignAngle* assignAngle;
    IPriority* priority;
    std::unique_ptr<KrSegmentIndex> handledIndex;  // alive only during LayOut
    bool handledIndexEnabled;  // tests switch the index off to compare with the linear scan
};
