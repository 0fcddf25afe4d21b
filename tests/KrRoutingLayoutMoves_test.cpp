// Segment moves of the layout engine and the cross-line strategies' answers for a free candidate
// and for a vertical candidate running into an occupied way point.
#include "LayoutTestSupport.h"

#include <krlayout/layout/KrCrossLineUpdate.h>
#include <krlayout/layout/KrCrossLineUpdateByLength.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

using layout_test::At;
using layout_test::BuildSketch;
using layout_test::Corners;
using layout_test::SegmentById;
using layout_test::SegmentInput;

constexpr double kPi = 3.1415926536;
constexpr double kHalfPi = 1.5707963268;

void ExpectAt(KrRoutingWayPoint* p, double x, double y) {
    ASSERT_NE(p, nullptr);
    ALPoint q = At(p);
    EXPECT_NEAR(q.x, x, 1e-9);
    EXPECT_NEAR(q.y, y, 1e-9);
}

void ExpectEnds(KrRouteSegment* seg, double x0, double y0, double x1, double y1) {
    KrRoutingWayPoint* s = nullptr;
    KrRoutingWayPoint* e = nullptr;
    ASSERT_EQ(seg->GetOtherEnd(nullptr, s), 0);
    ASSERT_EQ(seg->GetOtherEnd(s, e), 0);
    ExpectAt(s, x0, y0);
    ExpectAt(e, x1, y1);
}

KrRoutingWayPoint* Node(KrRoutingGrid* grid, double x, double y) {
    KrRoutingWayPoint* n = nullptr;
    grid->GetGridNode(x, y, n);
    return n;
}

// The lattice nodes from (x0,y0) to (x1,y1), stepping by one unit along one axis.
std::vector<KrRoutingWayPoint*> Run(KrRoutingGrid* grid, int x0, int y0, int x1, int y1) {
    std::vector<KrRoutingWayPoint*> out;
    int const sx = x1 > x0 ? 1 : (x1 < x0 ? -1 : 0);
    int const sy = y1 > y0 ? 1 : (y1 < y0 ? -1 : 0);
    for (int x = x0, y = y0;; x += sx, y += sy) {
        out.push_back(Node(grid, x, y));
        if (x == x1 && y == y1) {
            break;
        }
    }
    return out;
}

// A unit-lattice sketch with a root R (id 1) laid horizontally from (0,0) to (3*dir, 0) and a
// vertical child C (id 2) laid from R's far end one row up; both placed (redefined). dir = +1
// lays R toward +x (angle 0), dir = -1 toward -x (angle pi).
struct Tree {
    std::unique_ptr<KrSketch> sketch;
    KrRoutingGrid* grid = nullptr;
    KrRouteSegment* r = nullptr;
    KrRouteSegment* c = nullptr;
};

Tree MakeTree(KrRoutingLayout& layout, int dir) {
    Tree t;
    t.sketch = BuildSketch({SegmentInput{1, 3.0, 1.0, {ALPoint(0, 0, 0), ALPoint(3, 0, 0)}},
                            SegmentInput{2, 1.0, 1.0, {ALPoint(3, 0, 0), ALPoint(3, 1, 0)}}});
    t.sketch->GetGrid(t.grid);
    t.r = SegmentById(*t.sketch, 1);
    t.c = SegmentById(*t.sketch, 2);
    t.r->SetType(static_cast<e_AngleArea>(1));
    t.r->SetDirectAngle(dir > 0 ? 0.0 : kPi);
    std::vector<KrRoutingWayPoint*> rp = Run(t.grid, 0, 0, 3 * dir, 0);
    layout.PlaceSegment(rp, t.r);
    t.c->SetType(static_cast<e_AngleArea>(4));
    t.c->SetDirectAngle(kHalfPi);
    std::vector<KrRoutingWayPoint*> cp = Run(t.grid, 3 * dir, 0, 3 * dir, 1);
    layout.PlaceSegment(cp, t.c);
    return t;
}

// ---------------------------------------------------------------------------------------------
// FindOutAllSegmentNeedUpdate

TEST(KrRoutingLayoutMoves, FindOutAllSegmentNeedUpdateWithoutStrategyReturnsTwo) {
    KrRoutingLayout layout;
    Tree t = MakeTree(layout, 1);
    KrRoutingWayPoint* start = Node(t.grid, 10, 5);
    KrRoutingWayPoint* first = Node(t.grid, 10, 6);
    KrRoutingWayPoint* last = Node(t.grid, 10, 7);
    KrRoutingWayPoint* hit = nullptr;
    KrRoutingWayPoint* movedRoot = nullptr;
    std::vector<KrRouteSegment*> moved;
    std::vector<KrRoutingWayPoint*> points;
    EXPECT_EQ(layout.FindOutAllSegmentNeedUpdate(t.grid, t.c, start, first, last, hit, movedRoot,
                                                 moved, points),
              2);
}

// ---------------------------------------------------------------------------------------------
// UpdateCrossLine of both strategies

template <class Strategy>
void FreeCandidateChangesNothing() {
    KrRoutingLayout layout;
    Tree t = MakeTree(layout, 1);
    // A separate vertical segment D laid upward from (10,5): the line (10,5)-(10,6) is far from
    // R (x 0..3, y 0) and C (x 3, y 0..1), and the nodes (10,6) and (10,7) carry no lines.
    std::unique_ptr<KrRouteSegment> d(new KrRouteSegment(9, 2.0, 1.0));
    d->SetDirectAngle(kHalfPi);
    d->SetType(static_cast<e_AngleArea>(4));
    d->SetRow(1);
    KrRoutingWayPoint* start = Node(t.grid, 10, 5);
    KrRoutingWayPoint* first = Node(t.grid, 10, 6);
    KrRoutingWayPoint* last = Node(t.grid, 10, 7);
    KrRoutingWayPoint* hit = nullptr;
    KrRoutingWayPoint* movedRoot = nullptr;
    std::vector<KrRouteSegment*> moved;
    std::vector<KrRoutingWayPoint*> points;
    Strategy s;
    EXPECT_EQ(s.UpdateCrossLine(&layout, t.grid, d.get(), start, first, last, hit, movedRoot, moved,
                                points),
              0);
    EXPECT_TRUE(moved.empty());
    EXPECT_EQ(Corners(t.r).size(), 2u);
    ExpectEnds(t.r, 0, 0, 3, 0);
    ExpectEnds(t.c, 3, 0, 3, 1);
}

TEST(KrRoutingLayoutMoves, FreeCandidateChangesNothingAndReturnsZero) {
    FreeCandidateChangesNothing<KrCrossLineUpdate>();
}

TEST(KrRoutingLayoutMoves, FreeCandidateChangesNothingAndReturnsZeroByLength) {
    FreeCandidateChangesNothing<KrCrossLineUpdateByLength>();
}

template <class Strategy>
void VerticalCandidateThroughOccupiedPointReturnsOne() {
    KrRoutingLayout layout;
    Tree t = MakeTree(layout, 1);
    // D laid upward from (1,-2) through (1,-1) to (1,0): the line (1,-2)-(1,-1) crosses nothing;
    // the walk (1,-1), (1,0) meets (1,0), a node of R's line.
    std::unique_ptr<KrRouteSegment> d(new KrRouteSegment(9, 2.0, 1.0));
    d->SetDirectAngle(kHalfPi);
    d->SetType(static_cast<e_AngleArea>(4));
    d->SetRow(1);
    KrRoutingWayPoint* start = Node(t.grid, 1, -2);
    KrRoutingWayPoint* first = Node(t.grid, 1, -1);
    KrRoutingWayPoint* last = Node(t.grid, 1, 0);
    std::vector<KrRouteSegment*> atLast;
    last->GetConnectSegment(atLast);
    ASSERT_FALSE(atLast.empty());  // the way point is used by R
    KrRoutingWayPoint* hit = nullptr;
    KrRoutingWayPoint* movedRoot = nullptr;
    std::vector<KrRouteSegment*> moved;
    std::vector<KrRoutingWayPoint*> points;
    Strategy s;
    EXPECT_EQ(s.UpdateCrossLine(&layout, t.grid, d.get(), start, first, last, hit, movedRoot, moved,
                                points),
              1);
    EXPECT_TRUE(moved.empty());
    ExpectEnds(t.r, 0, 0, 3, 0);
    ExpectEnds(t.c, 3, 0, 3, 1);
}

TEST(KrRoutingLayoutMoves, VerticalCandidateThroughOccupiedPointReturnsOneWithoutMoving) {
    VerticalCandidateThroughOccupiedPointReturnsOne<KrCrossLineUpdate>();
}

TEST(KrRoutingLayoutMoves, VerticalCandidateThroughOccupiedPointReturnsOneWithoutMovingByLength) {
    VerticalCandidateThroughOccupiedPointReturnsOne<KrCrossLineUpdateByLength>();
}

// ---------------------------------------------------------------------------------------------
// MoveSegment with from == to

class MoveSegmentSameEnds : public ::testing::TestWithParam<int> {};

TEST_P(MoveSegmentSameEnds, SubtreeMovesOneXSpanTowardTheSideOfTheType) {
    int const type = GetParam();
    // Types 1, 2, 4, 7 spread toward angle 0 (area 1 leaves the angle at its start value 0):
    // right; 3, 5, 6 toward pi: left.
    int const dir = (type == 3 || type == 5 || type == 6) ? -1 : 1;
    KrRoutingLayout layout;
    // R is laid toward the same side, so the moved child never touches R's own line.
    Tree t = MakeTree(layout, dir);
    KrRouteSegment seg(9, 1.0, 1.0);
    seg.SetType(static_cast<e_AngleArea>(type));
    KrRoutingWayPoint* joint = Node(t.grid, 3 * dir, 0);
    // root = joint: R's root point is (0,0), elsewhere, and R is horizontal, so R is the root
    // segment; its tail below the joint is C. Offset = one xSpan toward the side: (dir, 0).
    EXPECT_EQ(layout.MoveSegment(t.grid, &seg, joint, joint, joint), 0);
    // C from (3dir,0)-(3dir,1) to (3dir + dir, 0)-(3dir + dir, 1) = (4dir,0)-(4dir,1).
    ExpectEnds(t.c, 4 * dir, 0, 4 * dir, 1);
    // R stretched by the same step: (0,0)-(3dir,0) becomes (0,0)-(4dir,0).
    ExpectEnds(t.r, 0, 0, 4 * dir, 0);
}

INSTANTIATE_TEST_SUITE_P(Types, MoveSegmentSameEnds, ::testing::Values(1, 2, 3, 4, 5, 6, 7));

TEST(KrRoutingLayoutMoves, MoveSegmentWithoutRootSegmentReturnsOne) {
    KrRoutingLayout layout;
    Tree t = MakeTree(layout, 1);
    KrRouteSegment seg(9, 1.0, 1.0);
    seg.SetType(static_cast<e_AngleArea>(2));
    // (0,0) is R's own root point and nothing else meets there: no parent segment.
    KrRoutingWayPoint* origin = Node(t.grid, 0, 0);
    EXPECT_EQ(layout.MoveSegment(t.grid, &seg, origin, origin, origin), 1);
    ExpectEnds(t.r, 0, 0, 3, 0);
    ExpectEnds(t.c, 3, 0, 3, 1);
}

// ---------------------------------------------------------------------------------------------
// MoveSegmentAway

TEST(KrRoutingLayoutMoves, MoveSegmentAwayByTwoPointsShiftsByTheNodeBeyondMinusTheStart) {
    KrRoutingLayout layout;
    Tree t = MakeTree(layout, 1);
    // a = (10,10), b = (11,10): the node beyond b on a->b is (12,10); offset = (12 - 10, 0) = (2,0).
    std::vector<KrRouteSegment*> segs{t.c};
    EXPECT_EQ(layout.MoveSegmentAway(t.grid, Node(t.grid, 10, 10), Node(t.grid, 11, 10), segs), 0);
    // C (3,0)-(3,1) + (2,0) = (5,0)-(5,1).
    ExpectEnds(t.c, 5, 0, 5, 1);
}

TEST(KrRoutingLayoutMoves, MoveSegmentAwayByAreaShiftsOneXSpanTowardTheAreaSide) {
    KrRoutingLayout layout;
    Tree t = MakeTree(layout, 1);
    std::vector<KrRouteSegment*> segs{t.c};
    // Area 6 spreads toward pi: offset = (9,10) - (10,10) = (-1,0).
    EXPECT_EQ(layout.MoveSegmentAway(t.grid, static_cast<e_AngleArea>(6), Node(t.grid, 10, 10), segs), 0);
    // C (3,0)-(3,1) + (-1,0) = (2,0)-(2,1). R's line y = 0 runs x 0..3 and the moved C only
    // touches it at (2,0); only C's ends are checked.
    ExpectEnds(t.c, 2, 0, 2, 1);
}

// ---------------------------------------------------------------------------------------------
// ExtendSegments

TEST(KrRoutingLayoutMoves, ExtendSegmentsWithUnequalListsReturnsTwoAndExtendsNothing) {
    KrRoutingLayout layout;
    Tree t = MakeTree(layout, 1);
    KrRoutingWayPoint* rEnd = Node(t.grid, 3, 0);
    KrRoutingWayPoint* cEnd = Node(t.grid, 3, 1);
    EXPECT_EQ(layout.ExtendSegments(t.grid, Node(t.grid, 10, 10), Node(t.grid, 11, 10),
                                    std::vector<KrRouteSegment*>{t.r, t.c},
                                    std::vector<KrRoutingWayPoint*>{rEnd}),
              2);
    EXPECT_EQ(layout.ExtendSegments(t.grid, static_cast<e_AngleArea>(2), Node(t.grid, 10, 10),
                                    std::vector<KrRouteSegment*>{t.r, t.c},
                                    std::vector<KrRoutingWayPoint*>{cEnd}),
              2);
    ExpectEnds(t.r, 0, 0, 3, 0);
    ExpectEnds(t.c, 3, 0, 3, 1);
}

TEST(KrRoutingLayoutMoves, ExtendSegmentsByAreaStretchesTheEndOneStep) {
    KrRoutingLayout layout;
    Tree t = MakeTree(layout, 1);
    // C's upper end (3,1); area 4 spreads toward 0: offset (1,0); target (3+1, 1) = (4,1).
    EXPECT_EQ(layout.ExtendSegments(t.grid, static_cast<e_AngleArea>(4), Node(t.grid, 10, 10),
                                    std::vector<KrRouteSegment*>{t.c},
                                    std::vector<KrRoutingWayPoint*>{Node(t.grid, 3, 1)}),
              0);
    ExpectEnds(t.c, 3, 0, 4, 1);
    ExpectEnds(t.r, 0, 0, 3, 0);
}

TEST(KrRoutingLayoutMoves, ExtendSegmentsByTwoPointsStretchesTheEndByTheOffset) {
    KrRoutingLayout layout;
    Tree t = MakeTree(layout, 1);
    // a = (10,10), b = (10,11): node beyond b is (10,12); offset (0, 12 - 10) = (0,2).
    // C's upper end (3,1) goes to (3,3).
    EXPECT_EQ(layout.ExtendSegments(t.grid, Node(t.grid, 10, 10), Node(t.grid, 10, 11),
                                    std::vector<KrRouteSegment*>{t.c},
                                    std::vector<KrRoutingWayPoint*>{Node(t.grid, 3, 1)}),
              0);
    ExpectEnds(t.c, 3, 0, 3, 3);
}

}  // namespace
