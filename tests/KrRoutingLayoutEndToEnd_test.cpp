// Whole layouts traced by hand on a 1 x 1 grid: exact coordinates of every placed segment.
#include "LayoutTestSupport.h"

#include <gtest/gtest.h>

using namespace layout_test;

namespace {

ALPoint P(double x, double y) { return ALPoint(x, y, 0.0); }

KrRouteSegment* Seg(KrSketch& sketch, long id) { return SegmentById(sketch, id); }

e_AngleArea TypeOf(KrRouteSegment* seg) {
    e_AngleArea t = e_AngleAreaNone;
    seg->GetType(t);
    return t;
}

int RowOf(KrRouteSegment* seg) {
    int r = 0;
    seg->GetRow(r);
    return r;
}

double AngleOf(KrRouteSegment* seg) {
    double a = 0.0;
    seg->GetDirectAngle(a);
    return a;
}

}  // namespace

// One segment of length 3: origin (0, 0), first step to (-1, 0), remaining 3 - 1 = 2 to the
// left gives x = -3; the run lists every lattice node on the way.
TEST(KrRoutingLayoutEndToEnd, OneSegmentRunsFromTheOriginTowardMinusXOverItsLength) {
    for (e_LayOutType type : {LayOutByDiameter, LayOutByLength}) {
        auto sketch = BuildSketch({{1, 3.0, 1.0, {P(7, 7), P(9, 8)}}});
        KrRoutingLayout layout;
        ASSERT_EQ(0, layout.LayOut(sketch.get(), type));
        KrRouteSegment* s = Seg(*sketch, 1);
        ASSERT_NE(nullptr, s);
        EXPECT_TRUE(HasCorners(s, {{0, 0}, {-3, 0}}));
        std::vector<ALPoint> all = AllLinePoints(s);
        ASSERT_EQ(4u, all.size());
        for (int i = 0; i < 4; ++i) {
            EXPECT_DOUBLE_EQ(-i, all[i].x);
            EXPECT_DOUBLE_EQ(0.0, all[i].y);
        }
        EXPECT_EQ(e_AngleAreaRoot, TypeOf(s));
        EXPECT_DOUBLE_EQ(KR_PI, AngleOf(s));
        bool placed = false;
        s->IsRedefine(placed);
        EXPECT_TRUE(placed);
    }
}

// Root 1 (length 5, diameter 3) with children 2 (length 2, diameter 2) and 3 (length 3,
// diameter 1) at its far end. Root: (0,0) to (-5,0). Its far end faces area 3; the
// all-positive spread gives pi, pi/2, 3pi/4 in order of diameter: 2 gets pi (type 3, row 0),
// 3 gets pi/2 (type 5, row 1). 2 goes first (|sin pi| = 0): first (-6,0), remaining 2 - 1 = 1
// gives (-7,0). 3: first (-5,1) one row up, remaining 3 - 1 = 2 to the left (type 5) gives (-7,1).
TEST(KrRoutingLayoutEndToEnd, RootWithTwoChildrenByDiameter) {
    auto sketch = BuildSketch({{1, 5.0, 3.0, {P(0, 0), P(10, 0)}},
                               {2, 2.0, 2.0, {P(10, 0), P(12, 1)}},
                               {3, 3.0, 1.0, {P(10, 0), P(12, -1)}}});
    KrRoutingLayout layout;
    ASSERT_EQ(0, layout.LayOut(sketch.get(), LayOutByDiameter));
    EXPECT_TRUE(HasCorners(Seg(*sketch, 1), {{0, 0}, {-5, 0}}));
    EXPECT_TRUE(HasCorners(Seg(*sketch, 2), {{-5, 0}, {-7, 0}}));
    EXPECT_TRUE(HasCorners(Seg(*sketch, 3), {{-5, 0}, {-5, 1}, {-7, 1}}));
    EXPECT_EQ(e_AngleAreaNegativeX, TypeOf(Seg(*sketch, 2)));
    EXPECT_EQ(e_AngleAreaQuarter2, TypeOf(Seg(*sketch, 3)));
    EXPECT_EQ(0, RowOf(Seg(*sketch, 2)));
    EXPECT_EQ(1, RowOf(Seg(*sketch, 3)));
}

// The same sketch by length: root 1 is also the longest. The even-step spread of area 3 gives
// pi, pi/2, 3pi/2, in order of length: 3 (length 3) gets pi, 2 gets pi/2. 3: first (-6,0),
// remaining 3 - 1 = 2 gives (-8,0). 2: first (-5,1), remaining 2 - 1 = 1 to the left gives (-6,1).
TEST(KrRoutingLayoutEndToEnd, RootWithTwoChildrenByLength) {
    auto sketch = BuildSketch({{1, 5.0, 3.0, {P(0, 0), P(10, 0)}},
                               {2, 2.0, 2.0, {P(10, 0), P(12, 1)}},
                               {3, 3.0, 1.0, {P(10, 0), P(12, -1)}}});
    KrRoutingLayout layout;
    ASSERT_EQ(0, layout.LayOut(sketch.get(), LayOutByLength));
    EXPECT_TRUE(HasCorners(Seg(*sketch, 1), {{0, 0}, {-5, 0}}));
    EXPECT_TRUE(HasCorners(Seg(*sketch, 3), {{-5, 0}, {-8, 0}}));
    EXPECT_TRUE(HasCorners(Seg(*sketch, 2), {{-5, 0}, {-5, 1}, {-6, 1}}));
    EXPECT_EQ(e_AngleAreaNegativeX, TypeOf(Seg(*sketch, 3)));
    EXPECT_EQ(e_AngleAreaQuarter2, TypeOf(Seg(*sketch, 2)));
}

// Chain A-B-C-D of segments 1 (length 1), 2 (length 3) and 3 (length 2), equal diameters: both
// priorities take 2 as the root. Root: (0,0) to (-3,0); its input start B becomes the origin.
// Far end: 3 continues at pi: (-4,0), remaining 1 gives (-5,0). Then the root's start: area 2,
// first angle 0 (type 2, row 0): 1 runs from (0,0) to (1,0) (length 1 = the first step).
TEST(KrRoutingLayoutEndToEnd, ChainOfThreeWithTheRootInTheMiddle) {
    for (e_LayOutType type : {LayOutByDiameter, LayOutByLength}) {
        auto sketch = BuildSketch({{1, 1.0, 1.0, {P(20, 5), P(21, 5)}},
                                   {2, 3.0, 1.0, {P(21, 5), P(22, 6)}},
                                   {3, 2.0, 1.0, {P(22, 6), P(23, 6)}}});
        KrRoutingLayout layout;
        ASSERT_EQ(0, layout.LayOut(sketch.get(), type));
        EXPECT_TRUE(HasCorners(Seg(*sketch, 2), {{0, 0}, {-3, 0}}));
        EXPECT_TRUE(HasCorners(Seg(*sketch, 3), {{-3, 0}, {-5, 0}}));
        EXPECT_TRUE(HasCorners(Seg(*sketch, 1), {{0, 0}, {1, 0}}));
        EXPECT_EQ(e_AngleAreaRoot, TypeOf(Seg(*sketch, 2)));
        EXPECT_EQ(e_AngleAreaNegativeX, TypeOf(Seg(*sketch, 3)));
        EXPECT_EQ(e_AngleAreaPositiveX, TypeOf(Seg(*sketch, 1)));
    }
}

// Root 1 (length 3, diameter 5) with a (id 2: length 2, diameter 4), b (id 3: length 5,
// diameter 3) and c (id 4: length 2, diameter 2) at its far end (-3,0); c has d (id 5: length 1,
// diameter 1.5) and e (id 6: length 3, diameter 1) at its far end.
// Angles at (-3,0): a pi (type 3), b pi/2, c 3pi/4 (both type 5; rows: c 1, b 2).
// Order: a, c (|sin| 0.71), then b (|sin| 1).
// a: (-3,0) to (-5,0).
// c: first (-3 - 1, 0 + 1) = (-4,1); remaining 2 - sqrt 2 = 0.59 left gives x = -4.59, snapped to
//    -5 (the error -0.41 points into area 5): (-5,1).
// At (-5,1): d pi (row 0), e pi/2 (row 1). d: (-6,1). e: first (-5,2), remaining 2 left: (-7,2).
// b, row 2: first (-3,2), remaining 5 - 2 = 3 left: run (-3,2) to (-6,2) meets e at (-5,2), so
// the vertical b is rejected and pushed to row 3: first (-3,3), remaining 2: (-5,3), free.
TEST(KrRoutingLayoutEndToEnd, VerticalChildIsPushedOutOneRow) {
    auto sketch = BuildSketch({{1, 3.0, 5.0, {P(0, 0), P(10, 0)}},
                               {2, 2.0, 4.0, {P(10, 0), P(12, 1)}},
                               {3, 5.0, 3.0, {P(10, 0), P(12, 2)}},
                               {4, 2.0, 2.0, {P(10, 0), P(12, 3)}},
                               {5, 1.0, 1.5, {P(12, 3), P(14, 3)}},
                               {6, 3.0, 1.0, {P(12, 3), P(14, 4)}}});
    KrRoutingLayout layout;
    ASSERT_EQ(0, layout.LayOut(sketch.get(), LayOutByDiameter));
    EXPECT_TRUE(HasCorners(Seg(*sketch, 1), {{0, 0}, {-3, 0}}));
    EXPECT_TRUE(HasCorners(Seg(*sketch, 2), {{-3, 0}, {-5, 0}}));
    EXPECT_TRUE(HasCorners(Seg(*sketch, 4), {{-3, 0}, {-4, 1}, {-5, 1}}));
    EXPECT_TRUE(HasCorners(Seg(*sketch, 5), {{-5, 1}, {-6, 1}}));
    EXPECT_TRUE(HasCorners(Seg(*sketch, 6), {{-5, 1}, {-5, 2}, {-7, 2}}));
    EXPECT_TRUE(HasCorners(Seg(*sketch, 3), {{-3, 0}, {-3, 3}, {-5, 3}}));
    EXPECT_EQ(3, RowOf(Seg(*sketch, 3)));
    EXPECT_EQ(1, RowOf(Seg(*sketch, 4)));
}
