// The layout driver: strategies, LayOut's steps and guards, child order, the row push of
// rejected vertical children, GetRootSegment, and long routes without recursion.
#include "LayoutTestSupport.h"

#include <krlayout/layout/KrCrossLineUpdate.h>
#include <krlayout/layout/KrCrossLineUpdateByLength.h>
#include <krlayout/layout/KrRoutingAssignAngleAllPositiveByDiameter.h>
#include <krlayout/layout/KrRoutingAssignAngleByLength.h>
#include <krlayout/layout/KrRoutingPriorityByDiameter.h>
#include <krlayout/layout/KrRoutingPriorityByLength.h>

#include <gtest/gtest.h>

using namespace layout_test;
using Access = KrRoutingLayoutTestAccess;

namespace {

ALPoint P(double x, double y) { return ALPoint(x, y, 0.0); }

e_LayOutType const kUnknownType = static_cast<e_LayOutType>(2);

KrRoutingGrid* GridOf(KrSketch& sketch) {
    KrRoutingGrid* grid = nullptr;
    sketch.GetGrid(grid);
    return grid;
}

std::size_t NodeCount(KrSketch& sketch) {
    std::vector<KrRoutingWayPoint*> nodes;
    GridOf(sketch)->GetAllWayPoint(nodes);
    return nodes.size();
}

bool Placed(KrRouteSegment* seg) {
    bool placed = false;
    seg->IsRedefine(placed);
    return placed;
}

int RowOf(KrRouteSegment* seg) {
    int r = 0;
    seg->GetRow(r);
    return r;
}

std::vector<KrRoutingWayPoint*> Nodes(KrRoutingGrid* grid, std::vector<std::pair<double, double>> const& xy) {
    std::vector<KrRoutingWayPoint*> out;
    for (auto const& p : xy) {
        KrRoutingWayPoint* n = nullptr;
        grid->GetGridNode(p.first, p.second, n);
        out.push_back(n);
    }
    return out;
}

// Root 1 (length 3, diameter 5) from P(0,0) to P(10,0), with the given children at P(10,0).
std::unique_ptr<KrSketch> RootWithChildren(std::vector<std::pair<int, double>> const& childLengths) {
    std::vector<SegmentInput> inputs{{1, 3.0, 5.0, {P(0, 0), P(10, 0)}}};
    double y = 1.0;
    for (auto const& c : childLengths) {
        inputs.push_back({c.first, c.second, 1.0, {P(10, 0), P(12, y)}});
        y += 1.0;
    }
    return BuildSketch(inputs);
}

// A layout with a recording cross-line stub and fixed angles, placing the sketch's segment 1 as
// the root the way LayOut does.
struct StubRun {
    KrRoutingLayout layout;
    RecordingCrossLine* crossLine;

    StubRun(std::map<long, FixedAngles::Setting> angles, std::vector<int> answers) {
        crossLine = new RecordingCrossLine(std::move(answers));
        Access::SetCrossLineUpdate(layout, crossLine);
        Access::SetAssignAngle(layout, new FixedAngles(std::move(angles)));
    }
    std::vector<long> Order() const {
        std::vector<long> ids;
        for (auto const& c : crossLine->calls) {
            ids.push_back(c.id);
        }
        return ids;
    }
    std::vector<int> Rows(long id) const {
        std::vector<int> rows;
        for (auto const& c : crossLine->calls) {
            if (c.id == id) {
                rows.push_back(c.row);
            }
        }
        return rows;
    }
};

}  // namespace

// ---------------------------------------------------------------------------------------------
// Strategies.

TEST(KrRoutingLayout, NewLayoutHoldsNoStrategy) {
    KrRoutingLayout layout;
    EXPECT_EQ(nullptr, Access::CrossLineUpdate(layout));
    EXPECT_EQ(nullptr, Access::AssignAngle(layout));
    EXPECT_EQ(nullptr, Access::Priority(layout));
    IPriority* p = reinterpret_cast<IPriority*>(&layout);
    EXPECT_EQ(0, layout.GetIPriority(p));
    EXPECT_EQ(nullptr, p);
}

TEST(KrRoutingLayout, TypeZeroCreatesTheDiameterStrategies) {
    KrRoutingLayout layout;
    EXPECT_EQ(0, layout.CreateCrossLineUpdate(LayOutByDiameter));
    EXPECT_EQ(0, layout.CreateAssignAngle(LayOutByDiameter));
    EXPECT_EQ(0, layout.CreatePriority(LayOutByDiameter));
    EXPECT_NE(nullptr, dynamic_cast<KrCrossLineUpdate*>(Access::CrossLineUpdate(layout)));
    EXPECT_NE(nullptr, dynamic_cast<KrRoutingAssignAngleAllPositiveByDiameter*>(Access::AssignAngle(layout)));
    EXPECT_NE(nullptr, dynamic_cast<KrRoutingPriorityByDiameter*>(Access::Priority(layout)));
    IPriority* p = nullptr;
    EXPECT_EQ(0, layout.GetIPriority(p));
    EXPECT_EQ(Access::Priority(layout), p);
}

TEST(KrRoutingLayout, TypeOneCreatesTheLengthStrategies) {
    KrRoutingLayout layout;
    EXPECT_EQ(0, layout.CreateCrossLineUpdate(LayOutByLength));
    EXPECT_EQ(0, layout.CreateAssignAngle(LayOutByLength));
    EXPECT_EQ(0, layout.CreatePriority(LayOutByLength));
    EXPECT_NE(nullptr, dynamic_cast<KrCrossLineUpdateByLength*>(Access::CrossLineUpdate(layout)));
    EXPECT_NE(nullptr, dynamic_cast<KrRoutingAssignAngleByLength*>(Access::AssignAngle(layout)));
    EXPECT_NE(nullptr, dynamic_cast<KrRoutingPriorityByLength*>(Access::Priority(layout)));
}

TEST(KrRoutingLayout, UnknownTypeCreatesNothingAndKeepsTheField) {
    KrRoutingLayout layout;
    EXPECT_EQ(1, layout.CreateCrossLineUpdate(kUnknownType));
    EXPECT_EQ(1, layout.CreateAssignAngle(kUnknownType));
    EXPECT_EQ(1, layout.CreatePriority(static_cast<e_LayOutType>(-1)));
    EXPECT_EQ(nullptr, Access::CrossLineUpdate(layout));
    EXPECT_EQ(nullptr, Access::AssignAngle(layout));
    EXPECT_EQ(nullptr, Access::Priority(layout));

    layout.CreatePriority(LayOutByLength);
    IPriority* before = Access::Priority(layout);
    EXPECT_EQ(1, layout.CreatePriority(kUnknownType));
    EXPECT_EQ(before, Access::Priority(layout));
}

// The previous strategy is released (the sanitizer build reports a leak otherwise) and replaced.
TEST(KrRoutingLayout, CreatingAgainReplacesTheStrategy) {
    KrRoutingLayout layout;
    layout.CreatePriority(LayOutByDiameter);
    IPriority* first = Access::Priority(layout);
    EXPECT_EQ(0, layout.CreatePriority(LayOutByLength));
    EXPECT_NE(first, Access::Priority(layout));
    EXPECT_NE(nullptr, dynamic_cast<KrRoutingPriorityByLength*>(Access::Priority(layout)));
    layout.CreateAssignAngle(LayOutByDiameter);
    layout.CreateAssignAngle(LayOutByDiameter);
    layout.CreateCrossLineUpdate(LayOutByLength);
    layout.CreateCrossLineUpdate(LayOutByDiameter);
    EXPECT_NE(nullptr, dynamic_cast<KrCrossLineUpdate*>(Access::CrossLineUpdate(layout)));
}

// ---------------------------------------------------------------------------------------------
// LayOut guards.

TEST(KrRoutingLayout, NullSketchReturnsOneAfterCreatingTheStrategies) {
    KrRoutingLayout layout;
    EXPECT_EQ(1, layout.LayOut(nullptr, LayOutByDiameter));
    EXPECT_NE(nullptr, Access::CrossLineUpdate(layout));
    EXPECT_NE(nullptr, Access::AssignAngle(layout));
    EXPECT_NE(nullptr, Access::Priority(layout));
}

TEST(KrRoutingLayout, UnknownTypeReturnsOneAndLaysOutNothing) {
    auto sketch = BuildSketch({{1, 3.0, 1.0, {P(0, 0), P(1, 0)}}});
    KrRoutingLayout layout;
    EXPECT_EQ(1, layout.LayOut(sketch.get(), kUnknownType));
    EXPECT_EQ(nullptr, Access::CrossLineUpdate(layout));
    EXPECT_EQ(nullptr, Access::AssignAngle(layout));
    EXPECT_EQ(nullptr, Access::Priority(layout));
    EXPECT_FALSE(Placed(SegmentById(*sketch, 1)));
    EXPECT_EQ(0u, NodeCount(*sketch));
}

TEST(KrRoutingLayout, EmptySketchReturnsZeroAndCreatesNoGridNode) {
    KrSketch sketch;
    sketch.CreateGrid(1.0, 1.0);
    KrRoutingLayout layout;
    EXPECT_EQ(0, layout.LayOut(&sketch, LayOutByDiameter));
    EXPECT_EQ(0u, NodeCount(sketch));
}

// Guard: a sketch without a grid has no origin to lay out from.
TEST(KrRoutingLayout, SketchWithoutGridReturnsOne) {
    KrSketch sketch;
    sketch.CreateRouteSegment(1, 3.0, 1.0);
    KrRoutingLayout layout;
    EXPECT_EQ(1, layout.LayOut(&sketch, LayOutByLength));
    EXPECT_FALSE(Placed(SegmentById(sketch, 1)));
}

TEST(KrRoutingLayout, OneSegmentIsLaidFromTheOriginTowardMinusXWithType1) {
    auto sketch = BuildSketch({{1, 2.0, 1.0, {P(4, 4), P(5, 5)}}});
    KrRoutingLayout layout;
    EXPECT_EQ(0, layout.LayOut(sketch.get(), LayOutByDiameter));
    KrRouteSegment* s = SegmentById(*sketch, 1);
    // First step (0,0) -> (-1,0), remaining 2 - 1 = 1 to the left: (-2,0).
    EXPECT_TRUE(HasCorners(s, {{0, 0}, {-2, 0}}));
    e_AngleArea type = e_AngleAreaNone;
    s->GetType(type);
    EXPECT_EQ(e_AngleAreaRoot, type);
    EXPECT_TRUE(Placed(s));
}

// A second LayOut with the same object replaces the strategies (no leak) and works again.
TEST(KrRoutingLayout, LayOutCanRunTwiceOnOneObject) {
    KrRoutingLayout layout;
    auto first = BuildSketch({{1, 2.0, 1.0, {P(0, 0), P(1, 0)}}});
    auto second = BuildSketch({{1, 3.0, 1.0, {P(0, 0), P(1, 0)}}});
    EXPECT_EQ(0, layout.LayOut(first.get(), LayOutByDiameter));
    EXPECT_EQ(0, layout.LayOut(second.get(), LayOutByLength));
    EXPECT_TRUE(HasCorners(SegmentById(*second, 1), {{0, 0}, {-3, 0}}));
}

// ---------------------------------------------------------------------------------------------
// Small operations.

TEST(KrRoutingLayout, PlaceSegmentSetsThePathAndMarksThePlacement) {
    auto sketch = BuildSketch({{1, 3.0, 1.0, {P(0, 0), P(1, 0)}}});
    KrRoutingLayout layout;
    KrRouteSegment* s = SegmentById(*sketch, 1);
    std::vector<KrRoutingWayPoint*> path = Nodes(GridOf(*sketch), {{0, 0}, {0, 1}, {0, 2}, {1, 2}});
    EXPECT_EQ(0, layout.PlaceSegment(path, s));
    EXPECT_TRUE(Placed(s));
    EXPECT_TRUE(HasCorners(s, {{0, 0}, {0, 2}, {1, 2}}));
    EXPECT_EQ(1, layout.PlaceSegment(path, nullptr));
}

TEST(KrRoutingLayout, PlaceOneSegmentWithoutPointsReturnsOneAndPlacesNothing) {
    auto sketch = BuildSketch({{1, 3.0, 1.0, {P(0, 0), P(1, 0)}}});
    KrRoutingLayout layout;
    KrRouteSegment* s = SegmentById(*sketch, 1);
    KrRoutingGrid* grid = GridOf(*sketch);
    std::vector<KrRoutingWayPoint*> none;
    EXPECT_EQ(1, layout.PlaceOneSegment(none, s, grid));
    std::vector<KrRoutingWayPoint*> nullFirst{nullptr};
    EXPECT_EQ(1, layout.PlaceOneSegment(nullFirst, s, grid));
    std::vector<KrRoutingWayPoint*> path = Nodes(grid, {{0, 0}, {1, 0}});
    EXPECT_EQ(1, layout.PlaceOneSegment(path, nullptr, grid));
    EXPECT_EQ(1, layout.PlaceOneSegment(path, s, nullptr));
    EXPECT_FALSE(Placed(s));
}

TEST(KrRoutingLayout, SpreadAngleIsZeroOrPiByArea) {
    KrRoutingLayout layout;
    for (int area : {2, 4, 7}) {
        double angle = 9.0;
        EXPECT_EQ(0, layout.GetSpreadAngle(static_cast<e_AngleArea>(area), angle));
        EXPECT_EQ(0.0, angle) << area;
    }
    for (int area : {3, 5, 6}) {
        double angle = 9.0;
        EXPECT_EQ(0, layout.GetSpreadAngle(static_cast<e_AngleArea>(area), angle));
        EXPECT_EQ(KR_PI, angle) << area;
    }
    for (int area : {0, 1, 8, -3}) {
        double angle = 9.0;
        EXPECT_EQ(0, layout.GetSpreadAngle(static_cast<e_AngleArea>(area), angle));
        EXPECT_EQ(9.0, angle) << area;
    }
}

TEST(KrRoutingLayout, NoOpsReturnZero) {
    KrRoutingLayout layout;
    KrRoutingWayPoint a;
    KrRoutingWayPoint b;
    double angle = 4.0;
    std::vector<KrRouteSegment*> segs;
    EXPECT_EQ(0, layout.PlaceAngle(&a, angle));
    EXPECT_EQ(4.0, angle);
    EXPECT_EQ(0, layout.UpdateAllSegmentNecessary(nullptr));
    EXPECT_EQ(0, layout.GetNextFreeGridPoint(&a, &b));
    EXPECT_EQ(0, layout.FindOutAllSegmentNeedExtend(&a, &b, segs));
    EXPECT_TRUE(segs.empty());
}

// ---------------------------------------------------------------------------------------------
// GetRootSegment.

namespace {

// P: (0,0) to (-3,0) at pi (type 1); V1 (-3,0) to (-3,2) and V2 (-3,2) to (-3,4) at pi/2;
// C (-3,4) to (-4,4) at pi.
struct VerticalChain {
    std::unique_ptr<KrSketch> sketch;
    KrRoutingLayout layout;
    KrRoutingGrid* grid;

    VerticalChain() {
        sketch = BuildSketch({{1, 3.0, 1.0, {P(0, 0), P(10, 0)}},
                              {2, 2.0, 1.0, {P(10, 0), P(10, 2)}},
                              {3, 2.0, 1.0, {P(10, 2), P(10, 4)}},
                              {4, 1.0, 1.0, {P(10, 4), P(9, 4)}}});
        grid = GridOf(*sketch);
        Place(1, KR_PI, e_AngleAreaRoot, {{0, 0}, {-1, 0}, {-2, 0}, {-3, 0}});
        Place(2, HALF_PI, e_AngleAreaQuarter2, {{-3, 0}, {-3, 1}, {-3, 2}});
        Place(3, HALF_PI, e_AngleAreaQuarter2, {{-3, 2}, {-3, 3}, {-3, 4}});
        Place(4, KR_PI, e_AngleAreaQuarter2, {{-3, 4}, {-4, 4}});
    }
    void Place(long id, double angle, e_AngleArea type, std::vector<std::pair<double, double>> const& xy) {
        KrRouteSegment* s = SegmentById(*sketch, id);
        s->SetDirectAngle(angle);
        s->SetType(type);
        std::vector<KrRoutingWayPoint*> path = Nodes(grid, xy);
        layout.PlaceSegment(path, s);
    }
    KrRoutingWayPoint* Node(double x, double y) { return Nodes(grid, {{x, y}})[0]; }
};

}  // namespace

TEST(KrRoutingLayout, RootSegmentOfAPointBelowAHorizontalParentIsThatParent) {
    VerticalChain c;
    KrRoutingWayPoint* point = c.Node(-3, 0);
    KrRoutingWayPoint* const original = point;
    KrRouteSegment* seg = nullptr;
    EXPECT_EQ(0, c.layout.GetRootSegment(point, seg));
    EXPECT_EQ(SegmentById(*c.sketch, 1), seg);
    EXPECT_EQ(original, point);
}

// From (-3,4): V2 is vertical, climb to its root (-3,2); V1 is vertical, climb to (-3,0);
// there P is not vertical: P, with the point moved to (-3,0).
TEST(KrRoutingLayout, RootSegmentClimbsVerticalParents) {
    VerticalChain c;
    KrRoutingWayPoint* point = c.Node(-3, 4);
    KrRouteSegment* seg = nullptr;
    EXPECT_EQ(0, c.layout.GetRootSegment(point, seg));
    EXPECT_EQ(SegmentById(*c.sketch, 1), seg);
    EXPECT_EQ(c.Node(-3, 0), point);
}

TEST(KrRoutingLayout, PointWithoutParentReturnsOneAndChangesNothing) {
    VerticalChain c;
    KrRoutingWayPoint* point = c.Node(0, 0);  // only the start of P
    KrRoutingWayPoint* const original = point;
    KrRouteSegment* const sentinel = SegmentById(*c.sketch, 4);
    KrRouteSegment* seg = sentinel;
    EXPECT_EQ(1, c.layout.GetRootSegment(point, seg));
    EXPECT_EQ(sentinel, seg);
    EXPECT_EQ(original, point);
    KrRoutingWayPoint* none = nullptr;
    EXPECT_EQ(1, c.layout.GetRootSegment(none, seg));
}

// A vertical chain that reaches no parent: 0, seg as it was, point at the top of the climb.
TEST(KrRoutingLayout, VerticalChainWithoutParentKeepsSegAndMovesThePoint) {
    auto sketch = BuildSketch({{1, 2.0, 1.0, {P(0, 0), P(0, 5)}}});
    KrRoutingLayout layout;
    KrRoutingGrid* grid = GridOf(*sketch);
    KrRouteSegment* v = SegmentById(*sketch, 1);
    v->SetDirectAngle(HALF_PI);
    std::vector<KrRoutingWayPoint*> path = Nodes(grid, {{0, 0}, {0, 1}, {0, 2}});
    layout.PlaceSegment(path, v);
    KrRoutingWayPoint* point = path.back();
    KrRouteSegment* seg = v;  // any value: it must stay
    EXPECT_EQ(0, layout.GetRootSegment(point, seg));
    EXPECT_EQ(v, seg);
    EXPECT_EQ(path.front(), point);
}

// A child listed before the parent at the point is skipped (its root point is the point).
TEST(KrRoutingLayout, ChildrenAtThePointAreSkipped) {
    KrRoutingWayPoint a(ALPoint(0, 0, 0));
    KrRoutingWayPoint w(ALPoint(5, 0, 0));
    KrRoutingWayPoint b(ALPoint(8, 0, 0));
    KrRouteSegment child(1, 3.0, 1.0);
    KrRouteSegment parent(2, 5.0, 1.0);
    child.SetDirectAngle(0.0);   // laid toward +x from w: its root point is w
    parent.SetDirectAngle(0.0);  // laid toward +x from a: its root point is a
    KrRouteCADLine* line = nullptr;
    child.CreateCADLine(line);
    line->AddPoint(&w);
    line->AddPoint(&b);
    child.AddPoint(&w);
    child.AddPoint(&b);
    parent.CreateCADLine(line);
    line->AddPoint(&a);
    line->AddPoint(&w);
    parent.AddPoint(&a);
    parent.AddPoint(&w);
    std::vector<KrRouteSegment*> order;
    w.GetConnectSegment(order);
    ASSERT_EQ(&child, order.front());

    KrRoutingLayout layout;
    KrRoutingWayPoint* point = &w;
    KrRouteSegment* seg = nullptr;
    EXPECT_EQ(0, layout.GetRootSegment(point, seg));
    EXPECT_EQ(&parent, seg);
    EXPECT_EQ(&w, point);
}

// ---------------------------------------------------------------------------------------------
// Child order and row push (stub strategies, root placed as LayOut does: (0,0) to (-3,0)).

TEST(KrRoutingLayout, MostHorizontalChildIsPlacedFirst) {
    auto sketch = RootWithChildren({{2, 2.0}, {3, 2.0}, {4, 2.0}});
    StubRun run({{2, {HALF_PI, e_AngleAreaQuarter1, 2}},
                 {3, {KR_QUARTER_PI, e_AngleAreaQuarter1, 1}},
                 {4, {0.0, e_AngleAreaPositiveX, 0}}},
                {0});
    EXPECT_EQ(0, PlaceRootLikeLayOut(run.layout, *sketch, SegmentById(*sketch, 1)));
    EXPECT_EQ((std::vector<long>{4, 3, 2}), run.Order());
}

// |sin| of 0 is 0 and of the pi literal about 2e-11: a near-tie, so the child listed first wins.
TEST(KrRoutingLayout, NearlyEquallyHorizontalChildrenGoInListOrder) {
    {
        auto sketch = RootWithChildren({{2, 2.0}, {3, 2.0}});
        StubRun run({{2, {0.0, e_AngleAreaPositiveX, 0}}, {3, {KR_PI, e_AngleAreaNegativeX, 0}}}, {0});
        PlaceRootLikeLayOut(run.layout, *sketch, SegmentById(*sketch, 1));
        EXPECT_EQ((std::vector<long>{2, 3}), run.Order());
    }
    {
        auto sketch = RootWithChildren({{2, 2.0}, {3, 2.0}});
        StubRun run({{2, {KR_PI, e_AngleAreaNegativeX, 0}}, {3, {0.0, e_AngleAreaPositiveX, 0}}}, {0});
        PlaceRootLikeLayOut(run.layout, *sketch, SegmentById(*sketch, 1));
        EXPECT_EQ((std::vector<long>{2, 3}), run.Order());
    }
}

// Rejected twice, the vertical child moves from row 2 to 3 to 4. At row 4 its first point is
// (-3,4); length 6 - 4 = 2 remains, to the left for type 5: (-5,4).
TEST(KrRoutingLayout, RejectedVerticalChildMovesOutwardRowByRow) {
    auto sketch = RootWithChildren({{2, 6.0}});
    StubRun run({{2, {HALF_PI, e_AngleAreaQuarter2, 2}}}, {1, 1, 0});
    PlaceRootLikeLayOut(run.layout, *sketch, SegmentById(*sketch, 1));
    EXPECT_EQ((std::vector<int>{2, 3, 4}), run.Rows(2));
    KrRouteSegment* child = SegmentById(*sketch, 2);
    EXPECT_EQ(4, RowOf(child));
    EXPECT_TRUE(HasCorners(child, {{-3, 0}, {-3, 4}, {-5, 4}}));
}

// Row -1 becomes -2: first point (-3,-2), length 3 - 2 = 1 to the left for type 6: (-4,-2).
TEST(KrRoutingLayout, RejectedDownwardChildMovesFurtherDown) {
    auto sketch = RootWithChildren({{2, 3.0}});
    StubRun run({{2, {KR_THREE_HALF_PI, e_AngleAreaQuarter3, -1}}}, {1, 0});
    PlaceRootLikeLayOut(run.layout, *sketch, SegmentById(*sketch, 1));
    EXPECT_EQ((std::vector<int>{-1, -2}), run.Rows(2));
    KrRouteSegment* child = SegmentById(*sketch, 2);
    EXPECT_EQ(-2, RowOf(child));
    EXPECT_TRUE(HasCorners(child, {{-3, 0}, {-3, -2}, {-4, -2}}));
}

TEST(KrRoutingLayout, RejectedVerticalChildInRowZeroStaysWhereItIs) {
    auto sketch = RootWithChildren({{2, 2.0}});
    StubRun run({{2, {HALF_PI, e_AngleAreaQuarter2, 0}}}, {1});
    PlaceRootLikeLayOut(run.layout, *sketch, SegmentById(*sketch, 1));
    EXPECT_EQ((std::vector<int>{0}), run.Rows(2));
    EXPECT_EQ(0, RowOf(SegmentById(*sketch, 2)));
    EXPECT_TRUE(Placed(SegmentById(*sketch, 2)));
}

TEST(KrRoutingLayout, RejectedSlantedChildStaysWhereItIs) {
    auto sketch = RootWithChildren({{2, 2.0}});
    StubRun run({{2, {KR_THREE_QUARTER_PI, e_AngleAreaQuarter2, 1}}}, {1});
    PlaceRootLikeLayOut(run.layout, *sketch, SegmentById(*sketch, 1));
    EXPECT_EQ((std::vector<int>{1}), run.Rows(2));
    EXPECT_EQ(1, RowOf(SegmentById(*sketch, 2)));
    // First point (-4,1); 2 < sqrt 2 is false, remaining 0.59 to the left snaps to (-5,1).
    EXPECT_TRUE(HasCorners(SegmentById(*sketch, 2), {{-3, 0}, {-4, 1}, {-5, 1}}));
}

// A strategy that rejects every row: the push stops after (segments of the sketch 2) + (rows
// spanned by placed geometry: the root alone spans 0) + 1 = 3 pushes, at row 1 + 3 = 4, and the
// attempt there stands. Length 2 is shorter than the 4 rows up, so the child ends at (-3,4).
TEST(KrRoutingLayout, RowPushOfAlwaysRejectedChildStopsAtTheBound) {
    auto sketch = RootWithChildren({{2, 2.0}});
    StubRun run({{2, {HALF_PI, e_AngleAreaQuarter2, 1}}}, {1});
    EXPECT_EQ(0, PlaceRootLikeLayOut(run.layout, *sketch, SegmentById(*sketch, 1)));
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4}), run.Rows(2));
    EXPECT_EQ(4, RowOf(SegmentById(*sketch, 2)));
    EXPECT_TRUE(HasCorners(SegmentById(*sketch, 2), {{-3, 0}, {-3, 4}}));
}

// The bound counts the rows spanned by what is placed: child 2 (accepted at row 3, length 3)
// reaches y = 3, so child 3 (always rejected) gets 3 segments + 3 rows + 1 = 7 pushes: row 8.
TEST(KrRoutingLayout, RowPushBoundGrowsWithThePlacedRows) {
    auto sketch = RootWithChildren({{2, 3.0}, {3, 1.0}});
    StubRun run({{2, {HALF_PI, e_AngleAreaQuarter2, 3}}, {3, {HALF_PI, e_AngleAreaQuarter2, 1}}}, {0, 1});
    PlaceRootLikeLayOut(run.layout, *sketch, SegmentById(*sketch, 1));
    EXPECT_EQ((std::vector<int>{3}), run.Rows(2));
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8}), run.Rows(3));
    EXPECT_EQ(8, RowOf(SegmentById(*sketch, 3)));
}

// Without strategies (no LayOut yet) the children keep their angles and rows and every
// candidate stands.
TEST(KrRoutingLayout, PlacingWithoutStrategiesUsesTheAnglesAsTheyAre) {
    auto sketch = RootWithChildren({{2, 2.0}});
    KrRouteSegment* child = SegmentById(*sketch, 2);
    child->SetDirectAngle(KR_PI);
    child->SetType(e_AngleAreaNegativeX);
    KrRoutingLayout layout;
    EXPECT_EQ(0, PlaceRootLikeLayOut(layout, *sketch, SegmentById(*sketch, 1)));
    EXPECT_TRUE(HasCorners(child, {{-3, 0}, {-5, 0}}));
}

// ---------------------------------------------------------------------------------------------
// Long routes: the placement keeps its own stack.

// Segment i of the chain (length 1, laid at pi one after the other) runs from (1 - i, 0) to (-i, 0).
TEST(KrRoutingLayout, ChainOfHundredThousandSegmentsLaysOutWithoutRecursion) {
    int const n = 100000;
    std::vector<SegmentInput> inputs;
    inputs.reserve(n);
    for (int i = 0; i < n; ++i) {
        inputs.push_back({i + 1, 1.0, 1.0, {P(i, 0), P(i + 1, 0)}});
    }
    for (e_LayOutType type : {LayOutByDiameter, LayOutByLength}) {
        auto sketch = BuildSketch(inputs);
        KrRoutingLayout layout;
        ASSERT_EQ(0, layout.LayOut(sketch.get(), type));
        std::vector<KrRouteSegment*> segs;
        sketch->GetAllSegments(segs);
        ASSERT_EQ(static_cast<std::size_t>(n), segs.size());
        std::size_t wrong = 0;
        for (KrRouteSegment* s : segs) {
            std::vector<ALPoint> c = Corners(s);
            double const i = static_cast<double>(s->GetId());
            if (!Placed(s) || c.size() != 2 || c[0].x != 1.0 - i || c[1].x != -i || c[0].y != 0.0 ||
                c[1].y != 0.0) {
                ++wrong;
            }
        }
        EXPECT_EQ(0u, wrong) << "type " << type;
    }
}

TEST(KrRoutingLayout, StarOfTenThousandChildrenAtOnePointLaysOut) {
    int const n = 10000;
    std::vector<SegmentInput> inputs{{1, 3.0, 5.0, {P(0, 0), P(1, 0)}}};
    for (int i = 0; i < n; ++i) {
        inputs.push_back({i + 2, 2.0, 1.0, {P(1, 0), P(2, i + 1)}});
    }
    auto sketch = BuildSketch(inputs);
    KrRoutingLayout layout;
    ASSERT_EQ(0, layout.LayOut(sketch.get(), LayOutByDiameter));
    std::vector<KrRouteSegment*> segs;
    sketch->GetAllSegments(segs);
    ASSERT_EQ(static_cast<std::size_t>(n + 1), segs.size());
    std::size_t wrong = 0;
    for (KrRouteSegment* s : segs) {
        if (s->GetId() == 1) {
            continue;
        }
        std::vector<ALPoint> c = Corners(s);
        if (!Placed(s) || c.size() < 2 || c[0].x != -3.0 || c[0].y != 0.0) {
            ++wrong;  // every child starts at the root's far end
        }
    }
    EXPECT_EQ(0u, wrong);
    EXPECT_TRUE(HasCorners(SegmentById(*sketch, 1), {{0, 0}, {-3, 0}}));
    // The heaviest child continues the root at pi: (-3,0) to (-5,0).
    EXPECT_TRUE(HasCorners(SegmentById(*sketch, 2), {{-3, 0}, {-5, 0}}));
}
