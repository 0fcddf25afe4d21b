// The layout driver: LayOut on empty and one-segment sketches, the order in which the children at
// one way point are placed, the row push of a rejected vertical child, the spread angle of every
// area, the strategy factories and the climb to the root segment.
#include "LayoutTestSupport.h"

#include <krlayout/layout/KrCrossLineUpdate.h>
#include <krlayout/layout/KrCrossLineUpdateByLength.h>
#include <krlayout/layout/KrRoutingAssignAngleAllPositiveByDiameter.h>
#include <krlayout/layout/KrRoutingAssignAngleByLength.h>
#include <krlayout/layout/KrRoutingPriorityByDiameter.h>
#include <krlayout/layout/KrRoutingPriorityByLength.h>

#include <gtest/gtest.h>

#include <map>
#include <vector>

namespace {

using layout_test::At;
using layout_test::BuildSketch;
using layout_test::SegmentById;
using layout_test::SegmentInput;

constexpr double kPi = 3.1415926536;
constexpr double kHalfPi = 1.5707963268;
constexpr double kQuarterPi = 0.7853981634;
constexpr double kThreeHalfPi = 4.7123889804;

// Gives every unhandled segment at `end` the angle, row and area listed for its id.
class StubAssignAngle : public IAssignAngle {
public:
    struct Direction {
        double angle;
        int row;
        e_AngleArea area;
    };
    explicit StubAssignAngle(std::map<long, Direction> d) : directions(std::move(d)) {}
    int AssignAngles(KrRouteSegment*, KrRoutingWayPoint* end) override {
        std::vector<KrRouteSegment*> segs;
        end->GetUnHandledSegments(segs);
        for (KrRouteSegment* s : segs) {
            auto it = directions.find(s->GetId());
            if (it != directions.end()) {
                s->SetDirectAngle(it->second.angle);
                s->SetRow(it->second.row);
                s->SetType(it->second.area);
            }
        }
        return 0;
    }
    int GenerateAngles(int, e_AngleArea, std::vector<double>&) override { return 0; }

private:
    std::map<long, Direction> directions;
};

// Records every candidate (segment id and row); rejects (returns 1) while the row of the
// segment is strictly between `acceptRow` and 0 on the same side, accepts otherwise.
class RecordingCrossLine : public ICrossLineUpdate {
public:
    struct Call {
        long id;
        int row;
    };
    RecordingCrossLine(std::vector<Call>* log, bool rejectAll, int acceptRow)
        : calls(log), rejectAll(rejectAll), acceptRow(acceptRow) {}
    int UpdateCrossLine(KrRoutingLayout*, KrRoutingGrid*, KrRouteSegment* seg, KrRoutingWayPoint*&,
                        KrRoutingWayPoint*&, KrRoutingWayPoint*&, KrRoutingWayPoint*&,
                        KrRoutingWayPoint*&, std::vector<KrRouteSegment*>&,
                        std::vector<KrRoutingWayPoint*>&) override {
        int row = 0;
        seg->GetRow(row);
        calls->push_back(Call{seg->GetId(), row});
        if (rejectAll) {
            return 1;
        }
        if (acceptRow > 0) {
            return row < acceptRow ? 1 : 0;
        }
        if (acceptRow < 0) {
            return row > acceptRow ? 1 : 0;
        }
        return 0;
    }

private:
    std::vector<Call>* calls;
    bool rejectAll;
    int acceptRow;
};

std::vector<long> Ids(std::vector<RecordingCrossLine::Call> const& calls) {
    std::vector<long> out;
    for (auto const& c : calls) {
        out.push_back(c.id);
    }
    return out;
}

std::vector<int> Rows(std::vector<RecordingCrossLine::Call> const& calls) {
    std::vector<int> out;
    for (auto const& c : calls) {
        out.push_back(c.row);
    }
    return out;
}

void ExpectAt(KrRoutingWayPoint* p, double x, double y) {
    ASSERT_NE(p, nullptr);
    ALPoint q = At(p);
    EXPECT_NEAR(q.x, x, 1e-9);
    EXPECT_NEAR(q.y, y, 1e-9);
}

// The two ends of a segment (ends[0], then the other one).
void Ends(KrRouteSegment* seg, KrRoutingWayPoint*& start, KrRoutingWayPoint*& end) {
    start = nullptr;
    end = nullptr;
    ASSERT_EQ(seg->GetOtherEnd(nullptr, start), 0);
    ASSERT_EQ(seg->GetOtherEnd(start, end), 0);
}

// A sketch on a unit lattice with root 1 from (0,0) to (3,0) and the given children, each of
// length 1, starting at (3,0). The root is laid by hand as LayOut lays it: type 1, angle pi,
// through the lattice nodes (0,0), (-1,0), (-2,0), (-3,0), so the children wait at (-3,0).
struct RootedSketch {
    std::unique_ptr<KrSketch> sketch;
    KrRoutingGrid* grid = nullptr;
    KrRouteSegment* root = nullptr;
    std::vector<KrRoutingWayPoint*> rootPoints;
};

RootedSketch MakeRooted(std::vector<ALPoint> const& childEnds) {
    std::vector<SegmentInput> inputs;
    inputs.push_back(SegmentInput{1, 3.0, 1.0, {ALPoint(0, 0, 0), ALPoint(3, 0, 0)}});
    int id = 2;
    for (ALPoint const& e : childEnds) {
        inputs.push_back(SegmentInput{id++, 1.0, 1.0, {ALPoint(3, 0, 0), e}});
    }
    RootedSketch r;
    r.sketch = BuildSketch(inputs);
    r.sketch->GetGrid(r.grid);
    r.root = SegmentById(*r.sketch, 1);
    r.root->SetDirectAngle(kPi);
    r.root->SetType(static_cast<e_AngleArea>(1));
    for (int x = 0; x >= -3; --x) {
        KrRoutingWayPoint* n = nullptr;
        r.grid->GetGridNode(x, 0, n);
        r.rootPoints.push_back(n);
    }
    return r;
}

// ---------------------------------------------------------------------------------------------
// LayOut

TEST(KrRoutingLayoutDriver, LayOutWithNullSketchReturnsOneAfterCreatingStrategies) {
    KrRoutingLayout layout;
    EXPECT_EQ(layout.LayOut(nullptr, static_cast<e_LayOutType>(0)), 1);
    // The strategies are created before the null test.
    EXPECT_NE(KrRoutingLayoutTestAccess::CrossLineUpdate(layout), nullptr);
    EXPECT_NE(KrRoutingLayoutTestAccess::AssignAngle(layout), nullptr);
    EXPECT_NE(KrRoutingLayoutTestAccess::Priority(layout), nullptr);
}

TEST(KrRoutingLayoutDriver, EmptySketchReturnsZeroAndCreatesNoGridNode) {
    KrSketch sketch;
    sketch.CreateGrid(1.0, 1.0);
    KrRoutingLayout layout;
    EXPECT_EQ(layout.LayOut(&sketch, static_cast<e_LayOutType>(0)), 0);
    KrRoutingGrid* grid = nullptr;
    sketch.GetGrid(grid);
    ASSERT_NE(grid, nullptr);
    std::vector<KrRoutingWayPoint*> nodes;
    grid->GetAllWayPoint(nodes);
    // The origin lookup comes after the empty test: not even the node at (0,0) exists.
    EXPECT_TRUE(nodes.empty());
}

class OneSegmentLayOut : public ::testing::TestWithParam<int> {};

TEST_P(OneSegmentLayOut, SingleSegmentRunsFromOriginTowardMinusXOverItsLength) {
    KrSketch sketch;
    sketch.CreateGrid(1.0, 1.0);
    sketch.CreateRouteSegment(1, 3.0, 1.0);
    std::map<long, long> lines{{1, 1}};
    sketch.CreateWayPoint(lines, std::vector<ALPoint>{ALPoint(0, 0, 0), ALPoint(3, 0, 0)});
    KrRoutingLayout layout;
    EXPECT_EQ(layout.LayOut(&sketch, static_cast<e_LayOutType>(GetParam())), 0);
    KrRouteSegment* seg = SegmentById(sketch, 1);
    ASSERT_NE(seg, nullptr);
    // Origin (0,0); next node toward pi is (-1,0) at distance 1; length 3 leaves 3 - 1 = 2 more
    // to the left (cos pi < 0): end x = -1 - 2 = -3, y = 0.
    KrRoutingWayPoint* s = nullptr;
    KrRoutingWayPoint* e = nullptr;
    Ends(seg, s, e);
    ExpectAt(s, 0.0, 0.0);
    ExpectAt(e, -3.0, 0.0);
    // The run lies on the lattice: the four nodes x = 0, -1, -2, -3 at y = 0, in that order.
    std::vector<ALPoint> pts = layout_test::AllLinePoints(seg);
    ASSERT_EQ(pts.size(), 4u);
    for (std::size_t i = 0; i < pts.size(); ++i) {
        EXPECT_NEAR(pts[i].x, -static_cast<double>(i), 1e-9);
        EXPECT_NEAR(pts[i].y, 0.0, 1e-9);
    }
    e_AngleArea type = static_cast<e_AngleArea>(0);
    seg->GetType(type);
    EXPECT_EQ(static_cast<int>(type), 1);
    bool redefined = false;
    seg->IsRedefine(redefined);
    EXPECT_TRUE(redefined);
    double angle = 0.0;
    seg->GetDirectAngle(angle);
    EXPECT_NEAR(angle, kPi, 1e-12);  // the second SetDirectAngle (pi) stands
}

INSTANTIATE_TEST_SUITE_P(BothTypes, OneSegmentLayOut, ::testing::Values(0, 1));

// ---------------------------------------------------------------------------------------------
// Order of the children at one way point

TEST(KrRoutingLayoutDriver, MostHorizontalChildIsPlacedFirst) {
    // Children 2, 3, 4 listed in that order with angles pi/2, pi/4, 0: |sin| = 1, 0.707, 0, so
    // 4 goes first; then among 2 and 3, |sin| 0.707 < 1 puts 3 before 2.
    RootedSketch r = MakeRooted({ALPoint(3, 1, 0), ALPoint(4, 1, 0), ALPoint(4, 0, 0)});
    KrRoutingLayout layout;
    std::vector<RecordingCrossLine::Call> calls;
    KrRoutingLayoutTestAccess::SetAssignAngle(
        layout, new StubAssignAngle({{2, {kHalfPi, 1, static_cast<e_AngleArea>(4)}},
                                     {3, {kQuarterPi, 1, static_cast<e_AngleArea>(4)}},
                                     {4, {0.0, 0, static_cast<e_AngleArea>(2)}}}));
    KrRoutingLayoutTestAccess::SetCrossLineUpdate(layout, new RecordingCrossLine(&calls, false, 0));
    EXPECT_EQ(layout.PlaceOneSegment(r.rootPoints, r.root, r.grid), 0);
    EXPECT_EQ(Ids(calls), (std::vector<long>{4, 3, 2}));
    for (long id : {2L, 3L, 4L}) {
        bool redefined = false;
        SegmentById(*r.sketch, id)->IsRedefine(redefined);
        EXPECT_TRUE(redefined) << "segment " << id;
    }
}

TEST(KrRoutingLayoutDriver, TiedHorizontalChildrenKeepTheirListedOrder) {
    // Child 2 at 0 and child 3 at pi: |sin 0| = 0 and |sin 3.1415926536| ~ 1e-11, equal within
    // 1e-5, so the first listed (2) goes first.
    for (bool piFirst : {false, true}) {
        RootedSketch r = MakeRooted({ALPoint(4, 0, 0), ALPoint(2, 0, 0)});
        KrRoutingLayout layout;
        std::vector<RecordingCrossLine::Call> calls;
        double const a2 = piFirst ? kPi : 0.0;
        double const a3 = piFirst ? 0.0 : kPi;
        auto area = [](double a) { return static_cast<e_AngleArea>(a == 0.0 ? 2 : 3); };
        KrRoutingLayoutTestAccess::SetAssignAngle(
            layout, new StubAssignAngle({{2, {a2, 0, area(a2)}}, {3, {a3, 0, area(a3)}}}));
        KrRoutingLayoutTestAccess::SetCrossLineUpdate(layout,
                                                      new RecordingCrossLine(&calls, false, 0));
        EXPECT_EQ(layout.PlaceOneSegment(r.rootPoints, r.root, r.grid), 0);
        EXPECT_EQ(Ids(calls), (std::vector<long>{2, 3})) << "pi first: " << piFirst;
    }
}

// ---------------------------------------------------------------------------------------------
// Row push of a rejected vertical child

TEST(KrRoutingLayoutDriver, RejectedVerticalChildInRowTwoMovesOutUntilAccepted) {
    RootedSketch r = MakeRooted({ALPoint(3, 1, 0)});
    KrRoutingLayout layout;
    std::vector<RecordingCrossLine::Call> calls;
    KrRoutingLayoutTestAccess::SetAssignAngle(
        layout, new StubAssignAngle({{2, {kHalfPi, 2, static_cast<e_AngleArea>(4)}}}));
    // Rejected in rows 2 and 3, accepted in row 4.
    KrRoutingLayoutTestAccess::SetCrossLineUpdate(layout, new RecordingCrossLine(&calls, false, 4));
    EXPECT_EQ(layout.PlaceOneSegment(r.rootPoints, r.root, r.grid), 0);
    EXPECT_EQ(Rows(calls), (std::vector<int>{2, 3, 4}));
    KrRouteSegment* child = SegmentById(*r.sketch, 2);
    int row = 0;
    child->GetRow(row);
    EXPECT_EQ(row, 4);
    // Row 4 at pi/2 from (-3,0): first = (-3, 0 + 4 * 1) = (-3,4); length 1 < distance 4, so
    // the end is that first point.
    KrRoutingWayPoint* s = nullptr;
    KrRoutingWayPoint* e = nullptr;
    Ends(child, s, e);
    ExpectAt(s, -3.0, 0.0);
    ExpectAt(e, -3.0, 4.0);
}

TEST(KrRoutingLayoutDriver, RejectedVerticalChildInRowMinusOneMovesToMinusTwo) {
    RootedSketch r = MakeRooted({ALPoint(3, -1, 0)});
    KrRoutingLayout layout;
    std::vector<RecordingCrossLine::Call> calls;
    KrRoutingLayoutTestAccess::SetAssignAngle(
        layout, new StubAssignAngle({{2, {kThreeHalfPi, -1, static_cast<e_AngleArea>(6)}}}));
    KrRoutingLayoutTestAccess::SetCrossLineUpdate(layout, new RecordingCrossLine(&calls, false, -2));
    EXPECT_EQ(layout.PlaceOneSegment(r.rootPoints, r.root, r.grid), 0);
    EXPECT_EQ(Rows(calls), (std::vector<int>{-1, -2}));
    KrRouteSegment* child = SegmentById(*r.sketch, 2);
    int row = 0;
    child->GetRow(row);
    EXPECT_EQ(row, -2);
    // Row -2: first = (-3, 0 + (-2) * 1) = (-3,-2); length 1 < distance 2, end = first.
    KrRoutingWayPoint* s = nullptr;
    KrRoutingWayPoint* e = nullptr;
    Ends(child, s, e);
    ExpectAt(s, -3.0, 0.0);
    ExpectAt(e, -3.0, -2.0);
}

TEST(KrRoutingLayoutDriver, RejectedVerticalChildInRowZeroIsPlacedWhereItIs) {
    RootedSketch r = MakeRooted({ALPoint(3, 1, 0)});
    KrRoutingLayout layout;
    std::vector<RecordingCrossLine::Call> calls;
    KrRoutingLayoutTestAccess::SetAssignAngle(
        layout, new StubAssignAngle({{2, {kHalfPi, 0, static_cast<e_AngleArea>(4)}}}));
    KrRoutingLayoutTestAccess::SetCrossLineUpdate(layout, new RecordingCrossLine(&calls, true, 0));
    EXPECT_EQ(layout.PlaceOneSegment(r.rootPoints, r.root, r.grid), 0);
    EXPECT_EQ(Rows(calls), (std::vector<int>{0}));  // one attempt only
    KrRouteSegment* child = SegmentById(*r.sketch, 2);
    int row = 7;
    child->GetRow(row);
    EXPECT_EQ(row, 0);
    bool redefined = false;
    child->IsRedefine(redefined);
    EXPECT_TRUE(redefined);
}

TEST(KrRoutingLayoutDriver, RejectedNonVerticalChildIsNotPushed) {
    // A child at pi/4 in row 1 rejected by the strategy: the attempt stands (only vertical
    // children move out).
    RootedSketch r = MakeRooted({ALPoint(4, 1, 0)});
    KrRoutingLayout layout;
    std::vector<RecordingCrossLine::Call> calls;
    KrRoutingLayoutTestAccess::SetAssignAngle(
        layout, new StubAssignAngle({{2, {kQuarterPi, 1, static_cast<e_AngleArea>(4)}}}));
    KrRoutingLayoutTestAccess::SetCrossLineUpdate(layout, new RecordingCrossLine(&calls, true, 0));
    EXPECT_EQ(layout.PlaceOneSegment(r.rootPoints, r.root, r.grid), 0);
    EXPECT_EQ(Rows(calls), (std::vector<int>{1}));
}

TEST(KrRoutingLayoutDriver, PlaceOneSegmentWithoutPointsReturnsOne) {
    RootedSketch r = MakeRooted({});
    KrRoutingLayout layout;
    std::vector<KrRoutingWayPoint*> none;
    EXPECT_EQ(layout.PlaceOneSegment(none, r.root, r.grid), 1);
    std::vector<KrRoutingWayPoint*> nullFirst{nullptr};
    EXPECT_EQ(layout.PlaceOneSegment(nullFirst, r.root, r.grid), 1);
    bool redefined = true;
    r.root->IsRedefine(redefined);
    EXPECT_FALSE(redefined);
}

// ---------------------------------------------------------------------------------------------
// Spread angle and factories

TEST(KrRoutingLayoutDriver, SpreadAngleOfEveryArea) {
    KrRoutingLayout layout;
    double const sentinel = -42.5;
    double const expected[] = {sentinel, sentinel, 0.0, kPi, 0.0, kPi, kPi, 0.0, sentinel};
    for (int area = 0; area <= 8; ++area) {
        double angle = sentinel;
        EXPECT_EQ(layout.GetSpreadAngle(static_cast<e_AngleArea>(area), angle), 0);
        EXPECT_NEAR(angle, expected[area], 1e-12) << "area " << area;
    }
}

TEST(KrRoutingLayoutDriver, FactoriesCreateTheStrategiesOfTheType) {
    KrRoutingLayout byDiameter;
    EXPECT_EQ(byDiameter.CreatePriority(static_cast<e_LayOutType>(0)), 0);
    EXPECT_EQ(byDiameter.CreateAssignAngle(static_cast<e_LayOutType>(0)), 0);
    EXPECT_EQ(byDiameter.CreateCrossLineUpdate(static_cast<e_LayOutType>(0)), 0);
    EXPECT_NE(dynamic_cast<KrRoutingPriorityByDiameter*>(KrRoutingLayoutTestAccess::Priority(byDiameter)), nullptr);
    EXPECT_NE(dynamic_cast<KrRoutingAssignAngleAllPositiveByDiameter*>(
                  KrRoutingLayoutTestAccess::AssignAngle(byDiameter)),
              nullptr);
    EXPECT_NE(dynamic_cast<KrCrossLineUpdate*>(KrRoutingLayoutTestAccess::CrossLineUpdate(byDiameter)), nullptr);
    IPriority* p = nullptr;
    EXPECT_EQ(byDiameter.GetIPriority(p), 0);
    EXPECT_EQ(p, KrRoutingLayoutTestAccess::Priority(byDiameter));

    KrRoutingLayout byLength;
    EXPECT_EQ(byLength.CreatePriority(static_cast<e_LayOutType>(1)), 0);
    EXPECT_EQ(byLength.CreateAssignAngle(static_cast<e_LayOutType>(1)), 0);
    EXPECT_EQ(byLength.CreateCrossLineUpdate(static_cast<e_LayOutType>(1)), 0);
    EXPECT_NE(dynamic_cast<KrRoutingPriorityByLength*>(KrRoutingLayoutTestAccess::Priority(byLength)), nullptr);
    EXPECT_NE(dynamic_cast<KrRoutingAssignAngleByLength*>(KrRoutingLayoutTestAccess::AssignAngle(byLength)),
              nullptr);
    EXPECT_NE(dynamic_cast<KrCrossLineUpdateByLength*>(KrRoutingLayoutTestAccess::CrossLineUpdate(byLength)),
              nullptr);
}

TEST(KrRoutingLayoutDriver, FactoriesRejectAnUnknownTypeAndLeaveTheFieldUnchanged) {
    KrRoutingLayout layout;
    EXPECT_EQ(layout.CreatePriority(static_cast<e_LayOutType>(7)), 1);
    EXPECT_EQ(layout.CreateAssignAngle(static_cast<e_LayOutType>(7)), 1);
    EXPECT_EQ(layout.CreateCrossLineUpdate(static_cast<e_LayOutType>(7)), 1);
    EXPECT_EQ(KrRoutingLayoutTestAccess::Priority(layout), nullptr);
    EXPECT_EQ(KrRoutingLayoutTestAccess::AssignAngle(layout), nullptr);
    EXPECT_EQ(KrRoutingLayoutTestAccess::CrossLineUpdate(layout), nullptr);
    // A strategy already present stays the same object.
    layout.CreatePriority(static_cast<e_LayOutType>(0));
    IPriority* before = KrRoutingLayoutTestAccess::Priority(layout);
    EXPECT_EQ(layout.CreatePriority(static_cast<e_LayOutType>(7)), 1);
    EXPECT_EQ(KrRoutingLayoutTestAccess::Priority(layout), before);
}

TEST(KrRoutingLayoutDriver, KeptNoOpsReturnZero) {
    KrRoutingLayout layout;
    double angle = 1.25;
    std::vector<KrRouteSegment*> segs;
    EXPECT_EQ(layout.PlaceAngle(nullptr, angle), 0);
    EXPECT_EQ(angle, 1.25);
    EXPECT_EQ(layout.UpdateAllSegmentNecessary(nullptr), 0);
    EXPECT_EQ(layout.GetNextFreeGridPoint(nullptr, nullptr), 0);
    EXPECT_EQ(layout.FindOutAllSegmentNeedExtend(nullptr, nullptr, segs), 0);
    EXPECT_TRUE(segs.empty());
}

// ---------------------------------------------------------------------------------------------
// GetRootSegment

// W (id 1): C(2,1) -> (3,1), laid at 0, so its root point is C (a child of C; listed first at C).
// P (id 2): A(0,0) -> B(2,0), laid at 0: root point A.
// V (id 3): B(2,0) -> C(2,1), laid at pi/2: root point B (the lower end).
struct VerticalChain {
    std::unique_ptr<KrSketch> sketch;
    KrRouteSegment* w = nullptr;
    KrRouteSegment* p = nullptr;
    KrRouteSegment* v = nullptr;
    KrRoutingWayPoint* a = nullptr;
    KrRoutingWayPoint* b = nullptr;
    KrRoutingWayPoint* c = nullptr;
};

VerticalChain MakeChain() {
    VerticalChain ch;
    ch.sketch = BuildSketch({SegmentInput{1, 1.0, 1.0, {ALPoint(2, 1, 0), ALPoint(3, 1, 0)}},
                             SegmentInput{2, 2.0, 1.0, {ALPoint(0, 0, 0), ALPoint(2, 0, 0)}},
                             SegmentInput{3, 1.0, 1.0, {ALPoint(2, 0, 0), ALPoint(2, 1, 0)}}});
    ch.w = SegmentById(*ch.sketch, 1);
    ch.p = SegmentById(*ch.sketch, 2);
    ch.v = SegmentById(*ch.sketch, 3);
    ch.w->SetDirectAngle(0.0);
    ch.p->SetDirectAngle(0.0);
    ch.v->SetDirectAngle(kHalfPi);
    ch.p->GetOtherEnd(nullptr, ch.a);
    ch.p->GetOtherEnd(ch.a, ch.b);
    ch.v->GetOtherEnd(ch.b, ch.c);
    return ch;
}

TEST(KrRoutingLayoutDriver, GetRootSegmentClimbsThroughAVerticalParent) {
    VerticalChain ch = MakeChain();
    ExpectAt(ch.c, 2.0, 1.0);
    ExpectAt(ch.b, 2.0, 0.0);
    KrRoutingLayout layout;
    KrRoutingWayPoint* point = ch.c;
    KrRouteSegment* seg = nullptr;
    // At C: W's root is C itself (skipped); V's root is B, V is vertical, so climb from B: P's
    // root is A (elsewhere) and P is horizontal, so seg = P and the point becomes B.
    EXPECT_EQ(layout.GetRootSegment(point, seg), 0);
    EXPECT_EQ(seg, ch.p);
    EXPECT_EQ(point, ch.b);
}

TEST(KrRoutingLayoutDriver, GetRootSegmentOfANonVerticalParentKeepsThePoint) {
    VerticalChain ch = MakeChain();
    KrRoutingLayout layout;
    KrRoutingWayPoint* point = ch.b;
    KrRouteSegment* seg = nullptr;
    // At B: P's root A is elsewhere and P is laid at 0: seg = P, point stays B.
    EXPECT_EQ(layout.GetRootSegment(point, seg), 0);
    EXPECT_EQ(seg, ch.p);
    EXPECT_EQ(point, ch.b);
}

TEST(KrRoutingLayoutDriver, GetRootSegmentWithoutParentReturnsOne) {
    VerticalChain ch = MakeChain();
    KrRoutingLayout layout;
    KrRoutingWayPoint* point = ch.a;
    KrRouteSegment* seg = ch.w;
    // At A only P meets, and A is P's own root point: no parent.
    EXPECT_EQ(layout.GetRootSegment(point, seg), 1);
    EXPECT_EQ(seg, ch.w);
    EXPECT_EQ(point, ch.a);
}

}  // namespace
