// Grid traversal: neighbours by angle and direction, segment starts by angle and row, segment
// ends by length, node chains between two points, direction areas, and cross moves.
#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace {

std::pair<double, double> At(KrRoutingWayPoint* p) {
    double x = 0.0;
    double y = 0.0;
    p->GetGridCoord(x, y);
    return {x, y};
}

void ExpectAt(KrRoutingWayPoint* p, double x, double y) {
    ASSERT_NE(p, nullptr);
    auto const xy = At(p);
    EXPECT_NEAR(xy.first, x, 1e-9);
    EXPECT_NEAR(xy.second, y, 1e-9);
}

void ExpectChain(std::vector<KrRoutingWayPoint*> const& points,
                 std::vector<std::pair<double, double>> const& expected) {
    ASSERT_EQ(points.size(), expected.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        SCOPED_TRACE(i);
        ExpectAt(points[i], expected[i].first, expected[i].second);
    }
}

KrRoutingWayPoint* Node(KrRoutingGrid& grid, double x, double y) {
    KrRoutingWayPoint* n = nullptr;
    grid.GetGridNode(x, y, n);
    return n;
}

struct Grid {
    explicit Grid(double xs = 1.0, double ys = 1.0) { grid.CreateGrids(xs, ys, 0, 0, 0, 0); }
    KrRoutingGrid grid;
};

std::unique_ptr<KrRouteSegment> Seg(double length, double angle, e_AngleArea type) {
    auto seg = std::make_unique<KrRouteSegment>(1, length, 1.0);
    seg->SetDirectAngle(angle);
    seg->SetType(type);
    return seg;
}

// A segment made of one straight CAD line per run of points, through the grid's nodes.
std::unique_ptr<KrRouteSegment> Laid(KrRoutingGrid& grid, long id,
                                     std::vector<std::vector<std::pair<double, double>>> runs,
                                     bool placed = true) {
    auto seg = std::make_unique<KrRouteSegment>(id, 1.0, 1.0);
    KrRoutingWayPoint* first = nullptr;
    KrRoutingWayPoint* last = nullptr;
    for (auto const& run : runs) {
        KrRouteCADLine* line = nullptr;
        seg->CreateCADLine(line);
        for (auto const& xy : run) {
            KrRoutingWayPoint* n = Node(grid, xy.first, xy.second);
            line->AddPoint(n);
            if (first == nullptr) {
                first = n;
            }
            last = n;
        }
    }
    seg->AddPoint(first);
    seg->AddPoint(last);
    seg->SetRedefine(placed);
    return seg;
}

KrRouteCADLine* LineOf(KrRouteSegment* seg, std::size_t i = 0) {
    std::vector<KrRouteCADLine*> lines;
    seg->GetAllCADLine(lines);
    return i < lines.size() ? lines[i] : nullptr;
}

void ExpectLine(KrRouteSegment* seg, double x1, double y1, double x2, double y2,
                std::size_t i = 0) {
    KrRouteCADLine* line = LineOf(seg, i);
    ASSERT_NE(line, nullptr);
    KrRoutingWayPoint* s = nullptr;
    KrRoutingWayPoint* e = nullptr;
    line->GetStartPoint(s);
    line->GetEndPoint(e);
    ExpectAt(s, x1, y1);
    ExpectAt(e, x2, y2);
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// GetNextHorGridNode

TEST(KrRoutingGridTraversal, NextHorGridNodeStepsRightForPositiveCosine) {
    Grid g;
    KrRoutingWayPoint* p = Node(g.grid, 0, 0);
    KrRoutingWayPoint* next = nullptr;
    EXPECT_EQ(g.grid.GetNextHorGridNode(p, 0.0, next), 0);
    ExpectAt(next, 1, 0);
    g.grid.GetNextHorGridNode(p, 0.5, next);  // cos 0.5 = 0.88
    ExpectAt(next, 1, 0);
}

TEST(KrRoutingGridTraversal, NextHorGridNodeStepsLeftForPiAndForHalfPi) {
    Grid g(2.0, 1.0);
    KrRoutingWayPoint* p = Node(g.grid, 2, 3);
    KrRoutingWayPoint* next = nullptr;
    g.grid.GetNextHorGridNode(p, KR_PI, next);
    ExpectAt(next, 0, 3);
    // cos(pi/2) is about -5e-12: not greater than 0, so one spacing to the left.
    g.grid.GetNextHorGridNode(p, HALF_PI, next);
    ExpectAt(next, 0, 3);
}

TEST(KrRoutingGridTraversal, NextHorGridNodeWithNullPointReturnsOne) {
    Grid g;
    KrRoutingWayPoint sentinel;
    KrRoutingWayPoint* next = &sentinel;
    EXPECT_EQ(g.grid.GetNextHorGridNode(nullptr, 0.0, next), 1);
    EXPECT_EQ(next, &sentinel);
}

// ---------------------------------------------------------------------------------------------
// GetNextNodeByDirect

TEST(KrRoutingGridTraversal, NextNodeBeyondToAlongFromTo) {
    Grid g;
    KrRoutingWayPoint* from = Node(g.grid, 0, 0);
    KrRoutingWayPoint* to = Node(g.grid, 1, 1);
    KrRoutingWayPoint* next = nullptr;
    // u = (0.707, 0.707): (1.707, 1.707) snaps to (2, 2).
    EXPECT_EQ(g.grid.GetNextNodeByDirect(from, to, next), 0);
    ExpectAt(next, 2, 2);
}

TEST(KrRoutingGridTraversal, NextNodeBeyondToScalesEachAxisBySpacing) {
    Grid g(2.0, 1.0);
    KrRoutingWayPoint* from = Node(g.grid, 0, 0);
    KrRoutingWayPoint* to = Node(g.grid, 2, 1);
    KrRoutingWayPoint* next = nullptr;
    // u = (2, 1) / sqrt 5 = (0.894, 0.447): (2 + 1.789, 1 + 0.447) = (3.789, 1.447);
    // 3.789 / 2 + 0.5 = 2.39 -> 2 -> x = 4; 1.447 + 0.5 -> 1.
    g.grid.GetNextNodeByDirect(from, to, next);
    ExpectAt(next, 4, 1);
}

TEST(KrRoutingGridTraversal, NextNodeBeyondToOfTheSamePointIsThatNode) {
    Grid g;
    KrRoutingWayPoint* p = Node(g.grid, 3, -2);
    KrRoutingWayPoint* next = nullptr;
    g.grid.GetNextNodeByDirect(p, p, next);
    EXPECT_EQ(next, p);
}

TEST(KrRoutingGridTraversal, NextNodeByDirectWithNullArgumentsReturnsOne) {
    Grid g;
    KrRoutingWayPoint* p = Node(g.grid, 0, 0);
    KrRoutingWayPoint sentinel;
    KrRoutingWayPoint* next = &sentinel;
    EXPECT_EQ(g.grid.GetNextNodeByDirect(nullptr, p, next), 1);
    EXPECT_EQ(g.grid.GetNextNodeByDirect(p, static_cast<KrRoutingWayPoint*>(nullptr), next), 1);
    EXPECT_EQ(g.grid.GetNextNodeByDirect(p, static_cast<double*>(nullptr), next), 1);
    double dir[2] = {1.0, 0.0};
    EXPECT_EQ(g.grid.GetNextNodeByDirect(nullptr, dir, next), 1);
    EXPECT_EQ(next, &sentinel);
}

TEST(KrRoutingGridTraversal, DirectionIsNormalisedInPlace) {
    Grid g;
    KrRoutingWayPoint* p = Node(g.grid, 0, 0);
    double dir[2] = {3.0, 0.0};
    KrRoutingWayPoint* next = nullptr;
    g.grid.GetNextNodeByDirect(p, dir, next);
    EXPECT_DOUBLE_EQ(dir[0], 1.0);
    EXPECT_DOUBLE_EQ(dir[1], 0.0);
    ExpectAt(next, 1, 0);
}

TEST(KrRoutingGridTraversal, OnLatticeSlantedStepAdvancesOneRow) {
    Grid g;
    KrRoutingWayPoint* p = Node(g.grid, 0, 0);
    double dir[2] = {1.0, 1.0};
    KrRoutingWayPoint* next = nullptr;
    g.grid.GetNextNodeByDirect(p, dir, next);  // (1 * 0.707 / 0.707, 1) = (1, 1)
    ExpectAt(next, 1, 1);
    double down[2] = {-2.0, -1.0};
    g.grid.GetNextNodeByDirect(p, down, next);  // (1 * -0.894 / 0.447, -1) = (-2, -1)
    ExpectAt(next, -2, -1);
}

TEST(KrRoutingGridTraversal, OnLatticeXStepUsesYSpacingOffLatticeUsesXSpacing) {
    // Spacing 2 x 1, direction (1, 2): dx / |dy| = 0.5.
    Grid on(2.0, 1.0);
    KrRoutingWayPoint* p = Node(on.grid, 0, 0);
    double dir[2] = {1.0, 2.0};
    KrRoutingWayPoint* next = nullptr;
    // On the lattice: (ySpan * 0.5, 1) = (0.5, 1); 0.5 / 2 + 0.5 = 0.75 -> 0.
    on.grid.GetNextNodeByDirect(p, dir, next);
    ExpectAt(next, 0, 1);

    Grid off(2.0, 1.0);
    KrRoutingWayPoint* q = nullptr;
    off.grid.GetNonGridNode(0.4, 0, q);  // snaps to (0, 0); (0,0) - q points along -x
    double dir2[2] = {1.0, 2.0};
    // Off the lattice: from (0, 0) by (xSpan * 0.5, 1) = (1, 1); 1 / 2 + 0.5 = 1 -> x = 2.
    off.grid.GetNextNodeByDirect(q, dir2, next);
    ExpectAt(next, 2, 1);
}

TEST(KrRoutingGridTraversal, OffLatticePointWhoseSnapFollowsTheDirectionGetsTheSnap) {
    Grid g;
    KrRoutingWayPoint* q = nullptr;
    g.grid.GetNonGridNode(0.4, 0, q);  // nearest node (0, 0), which lies along -x
    KrRoutingWayPoint* origin = Node(g.grid, 0, 0);
    double back[2] = {-5.0, 0.0};
    KrRoutingWayPoint* next = nullptr;
    g.grid.GetNextNodeByDirect(q, back, next);
    EXPECT_EQ(next, origin);
    double ahead[2] = {1.0, 0.0};
    g.grid.GetNextNodeByDirect(q, ahead, next);  // from (0, 0) one xSpan: (1, 0)
    ExpectAt(next, 1, 0);
}

TEST(KrRoutingGridTraversal, ZeroDirectionStaysOnTheNode) {
    Grid g;
    KrRoutingWayPoint* p = Node(g.grid, 2, 2);
    double dir[2] = {0.0, 0.0};
    KrRoutingWayPoint* next = nullptr;
    EXPECT_EQ(g.grid.GetNextNodeByDirect(p, dir, next), 0);
    EXPECT_EQ(next, p);
}

TEST(KrRoutingGridTraversal, NearlyLevelDirectionStepsOneXSpacing) {
    // dy of 1e-9 counts as 0: one step along x, not a huge slanted jump.
    Grid g;
    KrRoutingWayPoint* p = Node(g.grid, 0, 0);
    double dir[2] = {1.0, 1e-9};
    KrRoutingWayPoint* next = nullptr;
    g.grid.GetNextNodeByDirect(p, dir, next);
    ExpectAt(next, 1, 0);
}

// ---------------------------------------------------------------------------------------------
// GetPointByAngle

TEST(KrRoutingGridTraversal, PointByAngleZeroAndPiStepOneXSpacing) {
    Grid g;
    KrRoutingWayPoint* p = Node(g.grid, 0, 0);
    KrRoutingWayPoint* first = nullptr;
    std::vector<KrRoutingWayPoint*> points;
    EXPECT_EQ(g.grid.GetPointByAngle(p, 0.0, 7, first, points), 0);  // row ignored
    ExpectAt(first, 1, 0);
    ExpectChain(points, {{0, 0}, {1, 0}});
    EXPECT_EQ(points[0], p);
    EXPECT_EQ(points[1], first);
    points.clear();
    g.grid.GetPointByAngle(p, KR_PI, 3, first, points);
    ExpectAt(first, -1, 0);
    ExpectChain(points, {{0, 0}, {-1, 0}});
}

TEST(KrRoutingGridTraversal, PointByAngleHalfPiWithNegativeRowGoesDown) {
    Grid g;
    KrRoutingWayPoint* p = Node(g.grid, 0, 0);
    KrRoutingWayPoint* first = nullptr;
    std::vector<KrRoutingWayPoint*> points;
    g.grid.GetPointByAngle(p, HALF_PI, -2, first, points);
    ExpectAt(first, 0, -2);
    ExpectChain(points, {{0, 0}, {0, -1}, {0, -2}});
    points.clear();
    g.grid.GetPointByAngle(p, KR_THREE_HALF_PI, 2, first, points);  // the row's sign decides
    ExpectAt(first, 0, 2);
    ExpectChain(points, {{0, 0}, {0, 1}, {0, 2}});
}

TEST(KrRoutingGridTraversal, PointByAngleHalfPiRowZeroIsTheOwnNode) {
    Grid g;
    KrRoutingWayPoint* p = Node(g.grid, 1, 1);
    KrRoutingWayPoint* first = nullptr;
    std::vector<KrRoutingWayPoint*> points;
    g.grid.GetPointByAngle(p, HALF_PI, 0, first, points);
    EXPECT_EQ(first, p);
    ASSERT_EQ(points.size(), 1u);
    EXPECT_EQ(points[0], p);
}

TEST(KrRoutingGridTraversal, PointByAngleLandingOnTheLatticeListsTheChain) {
    Grid g;
    KrRoutingWayPoint* p = Node(g.grid, 0, 0);
    KrRoutingWayPoint* first = nullptr;
    std::vector<KrRoutingWayPoint*> points;
    // dy = 2, dx = 2 / tan(pi/4) = 2: (2, 2) is a node; the walk meets (1, 1) on the way.
    g.grid.GetPointByAngle(p, KR_QUARTER_PI, 2, first, points);
    ExpectAt(first, 2, 2);
    ExpectChain(points, {{0, 0}, {1, 1}, {2, 2}});
    bool nonGrid = true;
    g.grid.IsNonGridNode(first, nonGrid);
    EXPECT_FALSE(nonGrid);
    points.clear();
    // dy = 1, dx = 1 / tan(3pi/4) = -1.
    g.grid.GetPointByAngle(p, KR_THREE_QUARTER_PI, 1, first, points);
    ExpectAt(first, -1, 1);
    ExpectChain(points, {{0, 0}, {-1, 1}});
}

TEST(KrRoutingGridTraversal, PointByAngleOffTheLatticeCreatesARegisteredPoint) {
    Grid g;
    KrRoutingWayPoint* p = Node(g.grid, 0, 0);
    KrRoutingWayPoint* first = nullptr;
    std::vector<KrRoutingWayPoint*> points;
    double const angle = 1.1071487178;  // atan 2: dx = 1 / 2
    g.grid.GetPointByAngle(p, angle, 1, first, points);
    ExpectAt(first, 0.5, 1.0);
    ASSERT_EQ(points.size(), 2u);
    EXPECT_EQ(points[0], p);
    EXPECT_EQ(points[1], first);
    bool nonGrid = false;
    g.grid.IsNonGridNode(first, nonGrid);
    EXPECT_TRUE(nonGrid);
    std::vector<KrRoutingWayPoint*> nodes;
    g.grid.GetAllWayPoint(nodes);
    EXPECT_EQ(nodes.size(), 2u);  // (0, 0) and the snap (1, 1) looked up on the way
    // Each call creates its own point, even at the same position.
    KrRoutingWayPoint* again = nullptr;
    std::vector<KrRoutingWayPoint*> more;
    g.grid.GetPointByAngle(p, angle, 1, again, more);
    EXPECT_NE(again, first);
    ExpectAt(again, 0.5, 1.0);
}

TEST(KrRoutingGridTraversal, PointByAngleWithNullPointReturnsOne) {
    Grid g;
    KrRoutingWayPoint sentinel;
    KrRoutingWayPoint* first = &sentinel;
    std::vector<KrRoutingWayPoint*> points;
    EXPECT_EQ(g.grid.GetPointByAngle(nullptr, 0.0, 1, first, points), 1);
    EXPECT_EQ(first, &sentinel);
    EXPECT_TRUE(points.empty());
}

// ---------------------------------------------------------------------------------------------
// GetEndPointByLength

TEST(KrRoutingGridTraversal, EndPointOfASegmentShorterThanTheFirstStepIsNext) {
    Grid g;
    KrRoutingWayPoint* start = Node(g.grid, 0, 0);
    KrRoutingWayPoint* next = Node(g.grid, 1, 0);
    auto seg = Seg(0.5, 0.0, e_AngleAreaPositiveX);
    KrRoutingWayPoint* end = nullptr;
    EXPECT_EQ(g.grid.GetEndPointByLength(seg.get(), start, next, end), 0);
    EXPECT_EQ(end, next);
    // Also for an off-lattice next: it is returned as it is.
    KrRoutingWayPoint* off = nullptr;
    g.grid.GetNonGridNode(0.5, 1.0, off);
    g.grid.GetEndPointByLength(seg.get(), start, off, end);  // dist 1.118 > 0.5
    EXPECT_EQ(end, off);
}

TEST(KrRoutingGridTraversal, EndPointTowardsPlusXRoundsOutwards) {
    Grid g;
    KrRoutingWayPoint* start = Node(g.grid, 0, 0);
    KrRoutingWayPoint* next = Node(g.grid, 1, 0);
    KrRoutingWayPoint* end = nullptr;
    // L 3.4: x = 1 + 2.4 = 3.4 snaps to (3, 0); error (-0.4, 0) is not in area 2, so one step
    // back against it: (4, 0).
    auto a = Seg(3.4, 0.0, e_AngleAreaPositiveX);
    g.grid.GetEndPointByLength(a.get(), start, next, end);
    ExpectAt(end, 4, 0);
    // L 3.6: x = 3.6 snaps to (4, 0); error (0.4, 0) is in area 2.
    auto b = Seg(3.6, 0.0, e_AngleAreaPositiveX);
    g.grid.GetEndPointByLength(b.get(), start, next, end);
    ExpectAt(end, 4, 0);
    // L 1 = dist: x = 1 exactly.
    auto c = Seg(1.0, 0.0, e_AngleAreaPositiveX);
    g.grid.GetEndPointByLength(c.get(), start, next, end);
    EXPECT_EQ(end, next);
}

TEST(KrRoutingGridTraversal, EndPointTowardsMinusXRoundsOutwards) {
    Grid g;
    KrRoutingWayPoint* start = Node(g.grid, 0, 0);
    KrRoutingWayPoint* next = Node(g.grid, -1, 0);
    KrRoutingWayPoint* end = nullptr;
    // x = -1 - 2.4 = -3.4 snaps to (-3, 0); error (0.4, 0) is not in area 3: back to (-4, 0).
    auto a = Seg(3.4, KR_PI, e_AngleAreaNegativeX);
    g.grid.GetEndPointByLength(a.get(), start, next, end);
    ExpectAt(end, -4, 0);
}

TEST(KrRoutingGridTraversal, EndPointOfAVerticalSegmentFollowsItsType) {
    // Angle pi/2 (cos about -5e-12 counts as 0), start (0, 0), next (0, 1), L 3.4: rest 2.4.
    Grid g;
    KrRoutingWayPoint* start = Node(g.grid, 0, 0);
    KrRoutingWayPoint* next = Node(g.grid, 0, 1);
    KrRoutingWayPoint* end = nullptr;
    // Types 4 and 7: x = 2.4 snaps to (2, 1); error (-0.4, 0) misses both areas: (3, 1).
    auto q1 = Seg(3.4, HALF_PI, e_AngleAreaQuarter1);
    g.grid.GetEndPointByLength(q1.get(), start, next, end);
    ExpectAt(end, 3, 1);
    auto q4 = Seg(3.4, HALF_PI, e_AngleAreaQuarter4);
    g.grid.GetEndPointByLength(q4.get(), start, next, end);
    ExpectAt(end, 3, 1);
    // Types 5 and 6: x = -2.4 snaps to (-2, 1); error (0.4, 0) misses both: (-3, 1).
    auto q2 = Seg(3.4, HALF_PI, e_AngleAreaQuarter2);
    g.grid.GetEndPointByLength(q2.get(), start, next, end);
    ExpectAt(end, -3, 1);
    auto q3 = Seg(3.4, HALF_PI, e_AngleAreaQuarter3);
    g.grid.GetEndPointByLength(q3.get(), start, next, end);
    ExpectAt(end, -3, 1);
    // Any other type: x = 0 on the row of next.
    auto other = Seg(3.4, HALF_PI, e_AngleAreaPositiveX);
    g.grid.GetEndPointByLength(other.get(), start, next, end);
    EXPECT_EQ(end, next);
}

TEST(KrRoutingGridTraversal, EndPointAtThreeHalfPiTakesTheVerticalBranch) {
    // cos(4.7123889804) is about +1.5e-11: the tolerant test treats it as 0, so type 5 goes
    // left (a strict test would go right and end at (2, -1)).
    Grid g;
    KrRoutingWayPoint* start = Node(g.grid, 0, 0);
    KrRoutingWayPoint* next = Node(g.grid, 0, -1);
    KrRoutingWayPoint* end = nullptr;
    auto seg = Seg(3.4, KR_THREE_HALF_PI, e_AngleAreaQuarter2);
    g.grid.GetEndPointByLength(seg.get(), start, next, end);
    ExpectAt(end, -3, -1);
}

TEST(KrRoutingGridTraversal, EndPointWithNullArgumentsReturnsOne) {
    Grid g;
    KrRoutingWayPoint* p = Node(g.grid, 0, 0);
    auto seg = Seg(1.0, 0.0, e_AngleAreaPositiveX);
    KrRoutingWayPoint sentinel;
    KrRoutingWayPoint* end = &sentinel;
    EXPECT_EQ(g.grid.GetEndPointByLength(nullptr, p, p, end), 1);
    EXPECT_EQ(g.grid.GetEndPointByLength(seg.get(), nullptr, p, end), 1);
    EXPECT_EQ(g.grid.GetEndPointByLength(seg.get(), p, nullptr, end), 1);
    EXPECT_EQ(end, &sentinel);
}

// ---------------------------------------------------------------------------------------------
// GetAllNodeBetweenTwoPoint

TEST(KrRoutingGridTraversal, NodesBetweenAPointAndItselfAppendItOnce) {
    Grid g;
    KrRoutingWayPoint* a = Node(g.grid, 2, 2);
    KrRoutingWayPoint sentinel;
    std::vector<KrRoutingWayPoint*> points{&sentinel};
    EXPECT_EQ(g.grid.GetAllNodeBetweenTwoPoint(a, a, points), 0);
    ASSERT_EQ(points.size(), 2u);
    EXPECT_EQ(points[0], &sentinel);
    EXPECT_EQ(points[1], a);
}

TEST(KrRoutingGridTraversal, HorizontalRunOfThreeSpacingsListsFourNodes) {
    Grid g;
    KrRoutingWayPoint* a = Node(g.grid, 0, 0);
    KrRoutingWayPoint* b = Node(g.grid, 3, 0);
    std::vector<KrRoutingWayPoint*> points;
    g.grid.GetAllNodeBetweenTwoPoint(a, b, points);
    ExpectChain(points, {{0, 0}, {1, 0}, {2, 0}, {3, 0}});
    EXPECT_EQ(points.front(), a);
    EXPECT_EQ(points.back(), b);
    points.clear();
    g.grid.GetAllNodeBetweenTwoPoint(b, a, points);
    ExpectChain(points, {{3, 0}, {2, 0}, {1, 0}, {0, 0}});
}

TEST(KrRoutingGridTraversal, VerticalRunListsEveryRow) {
    Grid g(2.0, 1.0);
    KrRoutingWayPoint* a = Node(g.grid, 0, 0);
    KrRoutingWayPoint* b = Node(g.grid, 0, -3);
    std::vector<KrRoutingWayPoint*> points;
    g.grid.GetAllNodeBetweenTwoPoint(a, b, points);
    ExpectChain(points, {{0, 0}, {0, -1}, {0, -2}, {0, -3}});
    points.clear();
    KrRoutingWayPoint* c = Node(g.grid, 6, 0);  // horizontal on 2 x 1: steps of 2
    g.grid.GetAllNodeBetweenTwoPoint(a, c, points);
    ExpectChain(points, {{0, 0}, {2, 0}, {4, 0}, {6, 0}});
}

TEST(KrRoutingGridTraversal, SlantedRunListsOnlyTheLatticeNodesOnTheLine) {
    // (0,0) to (4,2): one row per step, x step 4 / 2 = 2: (2, 1) and (4, 2) are nodes.
    Grid g;
    KrRoutingWayPoint* a = Node(g.grid, 0, 0);
    KrRoutingWayPoint* b = Node(g.grid, 4, 2);
    std::vector<KrRoutingWayPoint*> points;
    g.grid.GetAllNodeBetweenTwoPoint(a, b, points);
    ExpectChain(points, {{0, 0}, {2, 1}, {4, 2}});
    EXPECT_EQ(points.back(), b);
    std::vector<KrRoutingWayPoint*> nodes;
    g.grid.GetAllWayPoint(nodes);
    EXPECT_EQ(nodes.size(), 3u);
}

TEST(KrRoutingGridTraversal, SlantedRunOnANonSquareLattice) {
    // Spacing 2 x 1, (0,0) to (4,2): exact steps (2, 1), both nodes.
    Grid g(2.0, 1.0);
    KrRoutingWayPoint* a = Node(g.grid, 0, 0);
    KrRoutingWayPoint* b = Node(g.grid, 4, 2);
    std::vector<KrRoutingWayPoint*> points;
    g.grid.GetAllNodeBetweenTwoPoint(a, b, points);
    ExpectChain(points, {{0, 0}, {2, 1}, {4, 2}});
}

TEST(KrRoutingGridTraversal, SlantedRunMeetingNoNodeBetweenListsOnlyItsEnds) {
    // (0,0) to (2,3): exact positions (0.67, 1) and (1.33, 2) are off the lattice.
    Grid g;
    KrRoutingWayPoint* a = Node(g.grid, 0, 0);
    KrRoutingWayPoint* b = Node(g.grid, 2, 3);
    std::vector<KrRoutingWayPoint*> points;
    g.grid.GetAllNodeBetweenTwoPoint(a, b, points);
    ExpectChain(points, {{0, 0}, {2, 3}});
    EXPECT_EQ(points.back(), b);
}

TEST(KrRoutingGridTraversal, WalkTowardsAnOffLatticeEndStopsBeforePassingIt) {
    Grid g;
    KrRoutingWayPoint* a = Node(g.grid, 0, 0);
    KrRoutingWayPoint* b = nullptr;
    g.grid.GetNonGridNode(2.5, 0, b);
    std::vector<KrRoutingWayPoint*> points;
    EXPECT_EQ(g.grid.GetAllNodeBetweenTwoPoint(a, b, points), 0);
    // (3, 0) would lie beyond b: the walk ends at (2, 0), without b.
    ExpectChain(points, {{0, 0}, {1, 0}, {2, 0}});
}

TEST(KrRoutingGridTraversal, SlantedWalkTowardsAnOffRowEndStops) {
    // (0,0) to (1, 0.5): the first exact step (2, 1) already passes b.
    Grid g;
    KrRoutingWayPoint* a = Node(g.grid, 0, 0);
    KrRoutingWayPoint* b = nullptr;
    g.grid.GetNonGridNode(1.0, 0.5, b);
    std::vector<KrRoutingWayPoint*> points;
    g.grid.GetAllNodeBetweenTwoPoint(a, b, points);
    ExpectChain(points, {{0, 0}});
}

TEST(KrRoutingGridTraversal, WalkWithZeroOrNonFiniteSpacingTakesNoStep) {
    KrRoutingWayPoint a;
    KrRoutingWayPoint b;
    b.SetGridCoord(3.0, 0.0);
    KrRoutingGrid zero;  // spacing 0
    std::vector<KrRoutingWayPoint*> points;
    zero.GetAllNodeBetweenTwoPoint(&a, &b, points);
    ASSERT_EQ(points.size(), 1u);
    EXPECT_EQ(points[0], &a);

    KrRoutingGrid nan;
    nan.CreateGrids(std::nan(""), 1.0, 0, 0, 0, 0);
    points.clear();
    nan.GetAllNodeBetweenTwoPoint(&a, &b, points);
    ASSERT_EQ(points.size(), 1u);
}

TEST(KrRoutingGridTraversal, WalkWithNegativeSpacingStopsWithinItsBound) {
    // The walk runs away from b; |dx| / |xSpan| + 4 = 7 steps at most.
    KrRoutingWayPoint a;
    KrRoutingWayPoint b;
    b.SetGridCoord(3.0, 0.0);
    KrRoutingGrid grid;
    grid.CreateGrids(-1.0, -1.0, 0, 0, 0, 0);
    std::vector<KrRoutingWayPoint*> points;
    EXPECT_EQ(grid.GetAllNodeBetweenTwoPoint(&a, &b, points), 0);
    EXPECT_GE(points.size(), 1u);
    EXPECT_LE(points.size(), 8u);
    EXPECT_EQ(std::find(points.begin(), points.end(), &b), points.end());
}

TEST(KrRoutingGridTraversal, WalkTowardsANaNEndStopsAtOnce) {
    Grid g;
    KrRoutingWayPoint* a = Node(g.grid, 0, 0);
    KrRoutingWayPoint b;
    b.SetGridCoord(std::nan(""), 0.0);
    std::vector<KrRoutingWayPoint*> points;
    g.grid.GetAllNodeBetweenTwoPoint(a, &b, points);
    ASSERT_EQ(points.size(), 1u);
    EXPECT_EQ(points[0], a);
    KrRoutingWayPoint c;
    c.SetGridCoord(std::numeric_limits<double>::infinity(), 5.0);
    points.clear();
    g.grid.GetAllNodeBetweenTwoPoint(a, &c, points);
    ASSERT_EQ(points.size(), 1u);
}

TEST(KrRoutingGridTraversal, NodesBetweenWithNullPointsReturnsOne) {
    Grid g;
    KrRoutingWayPoint* a = Node(g.grid, 0, 0);
    std::vector<KrRoutingWayPoint*> points;
    EXPECT_EQ(g.grid.GetAllNodeBetweenTwoPoint(nullptr, a, points), 1);
    EXPECT_EQ(g.grid.GetAllNodeBetweenTwoPoint(a, nullptr, points), 1);
    EXPECT_TRUE(points.empty());
}

// ---------------------------------------------------------------------------------------------
// IsDirectMatch

TEST(KrRoutingGridTraversal, DirectMatchTable) {
    KrRoutingGrid grid;
    struct Row {
        double x;
        double y;
        bool expected[8];  // areas 0 .. 7
    };
    Row const rows[] = {
        {1, 1, {false, true, true, false, true, false, false, false}},
        {-1, 1, {false, true, false, true, false, true, false, false}},
        {-1, -1, {false, true, false, true, false, false, true, false}},
        {1, -1, {false, true, true, false, false, false, false, true}},
        {0, 0, {false, true, true, true, true, true, true, true}},
        // Within the tolerance of 0 on both axes: every area but 0 matches.
        {-9e-6, 9e-6, {false, true, true, true, true, true, true, true}},
        {-2e-5, 0, {false, true, false, true, false, true, true, false}},
    };
    for (Row const& row : rows) {
        for (int area = 0; area < 8; ++area) {
            SCOPED_TRACE(testing::Message() << "v = (" << row.x << ", " << row.y << "), area "
                                            << area);
            double v[2] = {row.x, row.y};
            bool match = !row.expected[area];
            EXPECT_EQ(grid.IsDirectMatch(static_cast<e_AngleArea>(area), v, match), 0);
            EXPECT_EQ(match, row.expected[area]);
        }
    }
}

TEST(KrRoutingGridTraversal, DirectMatchOfAnUnknownAreaIsFalse) {
    KrRoutingGrid grid;
    double v[2] = {0.0, 0.0};
    bool match = true;
    grid.IsDirectMatch(static_cast<e_AngleArea>(8), v, match);
    EXPECT_FALSE(match);
    match = true;
    grid.IsDirectMatch(static_cast<e_AngleArea>(-1), v, match);
    EXPECT_FALSE(match);
}

TEST(KrRoutingGridTraversal, DirectMatchWithNullVectorReturnsOne) {
    KrRoutingGrid grid;
    bool match = true;
    EXPECT_EQ(grid.IsDirectMatch(e_AngleAreaRoot, nullptr, match), 1);
    EXPECT_TRUE(match);
}

// ---------------------------------------------------------------------------------------------
// MoveCrossSegment

TEST(KrRoutingGridTraversal, SegmentInTheWayOfAShiftedLineIsMovedAndListed) {
    Grid g;
    auto p = Laid(g.grid, 1, {{{0, 1}, {2, 1}}});
    auto q = Laid(g.grid, 2, {{{4, 0}, {4, 2}}});
    std::vector<KrRouteSegment*> moved;
    // Target (3,1)-(5,1) crosses q at (4, 1): q moves by (3, 0) as well.
    EXPECT_EQ(g.grid.MoveCrossSegment(LineOf(p.get()), 3, 0, moved), 0);
    ASSERT_EQ(moved.size(), 1u);
    EXPECT_EQ(moved[0], q.get());
    ExpectLine(q.get(), 7, 0, 7, 2);
    ExpectLine(p.get(), 0, 1, 2, 1);  // the line itself is left to its caller
}

TEST(KrRoutingGridTraversal, MovedSegmentPushesTheNextOneItsTargetCrosses) {
    Grid g;
    auto p = Laid(g.grid, 1, {{{0, 1}, {2, 1}}});
    auto q = Laid(g.grid, 2, {{{4, 0}, {4, 2}}});
    auto t = Laid(g.grid, 3, {{{6, 1}, {8, 1}}});  // q's target (7,0)-(7,2) crosses it
    std::vector<KrRouteSegment*> moved;
    g.grid.MoveCrossSegment(LineOf(p.get()), 3, 0, moved);
    ASSERT_EQ(moved.size(), 2u);
    EXPECT_EQ(moved[0], q.get());
    EXPECT_EQ(moved[1], t.get());
    ExpectLine(q.get(), 7, 0, 7, 2);
    ExpectLine(t.get(), 9, 1, 11, 1);
}

TEST(KrRoutingGridTraversal, SegmentMeetingTheLinesSegmentAtAJointIsNotMoved) {
    Grid g;
    auto p = Laid(g.grid, 1, {{{0, 0}, {2, 0}}});
    auto r = Laid(g.grid, 2, {{{2, 0}, {2, 2}}});    // shares p's end (2, 0)
    auto r2 = Laid(g.grid, 3, {{{2, -1}, {2, 2}}});  // crosses too, no shared end with p
    std::vector<KrRouteSegment*> moved;
    // Target (1,1)-(3,1) crosses both at (2, 1).
    g.grid.MoveCrossSegment(LineOf(p.get()), 1, 1, moved);
    ASSERT_EQ(moved.size(), 1u);
    EXPECT_EQ(moved[0], r2.get());
    ExpectLine(r.get(), 2, 0, 2, 2);
    ExpectLine(r2.get(), 3, 0, 3, 3);
}

TEST(KrRoutingGridTraversal, SegmentAlreadyListedIsNotMovedAgain) {
    Grid g;
    auto p = Laid(g.grid, 1, {{{0, 1}, {2, 1}}});
    auto q = Laid(g.grid, 2, {{{4, 0}, {4, 2}}});
    std::vector<KrRouteSegment*> moved{q.get()};
    g.grid.MoveCrossSegment(LineOf(p.get()), 3, 0, moved);
    ASSERT_EQ(moved.size(), 1u);
    ExpectLine(q.get(), 4, 0, 4, 2);
}

TEST(KrRoutingGridTraversal, UnplacedSegmentIsNotMoved) {
    Grid g;
    auto p = Laid(g.grid, 1, {{{0, 1}, {2, 1}}});
    auto q = Laid(g.grid, 2, {{{4, 0}, {4, 2}}}, false);
    std::vector<KrRouteSegment*> moved;
    g.grid.MoveCrossSegment(LineOf(p.get()), 3, 0, moved);
    EXPECT_TRUE(moved.empty());
    ExpectLine(q.get(), 4, 0, 4, 2);
}

TEST(KrRoutingGridTraversal, TheLinesOwnSegmentIsNotMoved) {
    // Target (2,2)-(4,2) crosses p's second line (2,1)-(3,3) at (2.5, 2).
    Grid g;
    auto p = Laid(g.grid, 1, {{{0, 1}, {2, 1}}, {{2, 1}, {3, 3}}});
    std::vector<KrRouteSegment*> moved;
    g.grid.MoveCrossSegment(LineOf(p.get(), 0), 2, 1, moved);
    EXPECT_TRUE(moved.empty());
    ExpectLine(p.get(), 2, 1, 3, 3, 1);
}

TEST(KrRoutingGridTraversal, SegmentBesideTheTargetIsNotMoved) {
    Grid g;
    auto p = Laid(g.grid, 1, {{{0, 1}, {2, 1}}});
    auto q = Laid(g.grid, 2, {{{6, 0}, {6, 2}}});  // target (3,1)-(5,1) stops short of x = 6
    std::vector<KrRouteSegment*> moved;
    g.grid.MoveCrossSegment(LineOf(p.get()), 3, 0, moved);
    EXPECT_TRUE(moved.empty());
    ExpectLine(q.get(), 6, 0, 6, 2);
}

TEST(KrRoutingGridTraversal, MoveCrossSegmentWithNullLineReturnsOne) {
    Grid g;
    std::vector<KrRouteSegment*> moved;
    EXPECT_EQ(g.grid.MoveCrossSegment(nullptr, 1, 0, moved), 1);
    EXPECT_TRUE(moved.empty());
}

TEST(KrRoutingGridTraversal, LineWithoutTwoPointsMovesNothing) {
    Grid g;
    auto q = Laid(g.grid, 2, {{{0, -1}, {0, 1}}});
    KrRouteCADLine lone;
    lone.AddPoint(Node(g.grid, -1, 0));
    std::vector<KrRouteSegment*> moved;
    EXPECT_EQ(g.grid.MoveCrossSegment(&lone, 1, 0, moved), 0);
    EXPECT_TRUE(moved.empty());
    ExpectLine(q.get(), 0, -1, 0, 1);
    KrRoutingWayPoint* p = Node(g.grid, -1, 0);
    p->RemoveParent(&lone);
}

TEST(KrRoutingGridTraversal, SegmentMoveCarriesCrossedSegmentsAlong) {
    Grid g;
    auto p = Laid(g.grid, 1, {{{0, 1}, {2, 1}}});
    auto q = Laid(g.grid, 2, {{{4, 0}, {4, 2}}});
    std::vector<KrRouteSegment*> moved{p.get()};
    EXPECT_EQ(p->Move(&g.grid, 3, 0, moved), 0);
    ASSERT_EQ(moved.size(), 2u);
    EXPECT_EQ(moved[1], q.get());
    ExpectLine(p.get(), 3, 1, 5, 1);
    ExpectLine(q.get(), 7, 0, 7, 2);
}

TEST(KrRoutingGridTraversal, LongChainOfPushedSegmentsMovesEachOnceInOrder) {
    // Zig-zag segments: s_k is (4k,0)-(4k+2,2) for even k and (4k,2)-(4k+2,0) for odd k. Shifted
    // by (3, 0), s_k crosses s_k+1 (e.g. (3,0)-(5,2) meets (4,2)-(6,0) at (4.5, 1.5)) and nothing
    // else, so moving s_0's line pushes the whole chain, deeper than the nesting limit.
    Grid g;
    int const n = 1500;
    std::vector<std::unique_ptr<KrRouteSegment>> segs;
    for (int k = 0; k < n; ++k) {
        double const x = 4.0 * k;
        if (k % 2 == 0) {
            segs.push_back(Laid(g.grid, k, {{{x, 0}, {x + 2, 2}}}));
        } else {
            segs.push_back(Laid(g.grid, k, {{{x, 2}, {x + 2, 0}}}));
        }
    }
    std::vector<KrRouteSegment*> moved;
    EXPECT_EQ(g.grid.MoveCrossSegment(LineOf(segs[0].get()), 3, 0, moved), 0);
    ASSERT_EQ(moved.size(), static_cast<std::size_t>(n - 1));
    for (int k = 1; k < n; ++k) {
        SCOPED_TRACE(k);
        ASSERT_EQ(moved[k - 1], segs[k].get());
        double const x = 4.0 * k + 3.0;
        if (k % 2 == 0) {
            ExpectLine(segs[k].get(), x, 0, x + 2, 2);
        } else {
            ExpectLine(segs[k].get(), x, 2, x + 2, 0);
        }
    }
    ExpectLine(segs[0].get(), 0, 0, 2, 2);
}
