// The checks a routing sketch must pass before it is laid out: no closed loop, one connected piece.
#pragma once

#include <krlayout/krlayout_export.h>

#include <vector>

class IRoutingSketch;
class KrRouteSegment;
class KrRoutingWayPoint;

class KRLAYOUT_EXPORT KrRoutingCheck {
public:
    KrRoutingCheck();
    virtual ~KrRoutingCheck();

    // Loop check: 0, or 7 with the loop's segment ids appended in path order.
    int CheckSketch(IRoutingSketch* sketch, std::vector<long>& loopIds);
    int CheckLoopByPoint(KrRoutingWayPoint* point, KrRouteSegment* from,
                         std::vector<KrRoutingWayPoint*>& path);
    int GetSegmentChainByWayPoint(std::vector<KrRoutingWayPoint*>& path, std::vector<long>& ids);

    // Disjoint check: 0, or 8 with the ids of the shortest piece appended.
    int CheckDisjoint(IRoutingSketch* sketch, std::vector<long>& pieceIds);
    int TraversalSegmentByPoint(KrRoutingWayPoint* point, KrRouteSegment* from,
                                std::vector<KrRoutingWayPoint*>& visited,
                                std::vector<KrRouteSegment*>& piece);
    int GetMiniDisjoint(std::vector<KrRouteSegment*>& segs, std::vector<long>& ids);
    int GetOneSegmentNotGrouped(std::vector<KrRouteSegment*>& segs,
                                std::vector<std::vector<KrRouteSegment*>>& pieces,
                                KrRouteSegment*& seg);
    int GetTotalLength(std::vector<KrRouteSegment*>& segs, double& total);

    // Bend checks run before the loop check.
    int EliminateMultiLineBetweenTwoPoint(IRoutingSketch* sketch);
    int CheckBends(IRoutingSketch* sketch);
};
