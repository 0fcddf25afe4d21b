// The loop check: CheckSketch, CheckLoopByPoint and GetSegmentChainByWayPoint.
#include <krlayout/check/KrRoutingCheck.h>
#include <krlayout/model/ALPoint.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/sketch/IRoutingSketch.h>
#include <krlayout/sketch/KrSketch.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "CheckTestSupport.h"

namespace {

// ---- CheckSketch through the real input path -------------------------------------------------

TEST(KrRoutingCheckLoop, NullSketchReturnsOne) {
    KrRoutingCheck check;
    std::vector<long> ids{42};
    EXPECT_EQ(1, check.CheckSketch(nullptr, ids));
    EXPECT_EQ(std::vector<long>{42}, ids);
}

TEST(KrRoutingCheckLoop, EmptySketchReturnsZero) {
    KrSketch sketch;
    ASSERT_EQ(0, sketch.CreateGrid(1.0, 1.0));
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(0, check.CheckSketch(&sketch, ids));
    EXPECT_TRUE(ids.empty());
}

TEST(KrRoutingCheckLoop, SingleSegmentReturnsZeroAndAppendsNothing) {
    KrSketch sketch;
    BuildSketch(sketch, {{1, 10.0}}, {{1, At(0, 0), At(10, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(0, check.CheckSketch(&sketch, ids));
    EXPECT_TRUE(ids.empty());
}

TEST(KrRoutingCheckLoop, SimpleChainReturnsZeroAndAppendsNothing) {
    // Three segments end to end; segment 2 is drawn with two lines through an inner joint.
    KrSketch sketch;
    BuildSketch(sketch, {{1, 10.0}, {2, 10.0}, {3, 10.0}},
                {{1, At(0, 0), At(10, 0)},
                 {2, At(10, 0), At(15, 0)},
                 {2, At(15, 0), At(20, 0)},
                 {3, At(20, 0), At(30, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(0, check.CheckSketch(&sketch, ids));
    EXPECT_TRUE(ids.empty());
}

TEST(KrRoutingCheckLoop, TreeReturnsZero) {
    // A star at (0,0) with three arms, one of them continued by a fourth segment.
    KrSketch sketch;
    BuildSketch(sketch, {{1, 10.0}, {2, 10.0}, {3, 10.0}, {4, 10.0}},
                {{1, At(0, 0), At(10, 0)},
                 {2, At(0, 0), At(0, 10)},
                 {3, At(0, 0), At(-10, 0)},
                 {4, At(10, 0), At(20, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(0, check.CheckSketch(&sketch, ids));
    EXPECT_TRUE(ids.empty());
}

TEST(KrRoutingCheckLoop, TriangleReportsItsThreeIdsInPathOrder) {
    // P(0,0) Q(10,0) R(5,5); segments 1 = P-Q, 2 = Q-R, 3 = R-P.
    // Connections: P [1,3], Q [1,2], R [2,3]. Root of 1 is P (0 < 10).
    // From P without 1: segment 3 -> R; from R without 3: segment 2 -> Q; from Q without 2:
    // segment 1 -> P, on the path: path P R Q P.
    // Pairs: (P,R) first of [1,3] in [2,3] = 3; (R,Q) first of [2,3] in [1,2] = 2;
    // (Q,P) first of [1,2] in [1,3] = 1.
    KrSketch sketch;
    BuildSketch(sketch, {{1, 10.0}, {2, 7.0}, {3, 7.0}},
                {{1, At(0, 0), At(10, 0)}, {2, At(10, 0), At(5, 5)}, {3, At(5, 5), At(0, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(7, check.CheckSketch(&sketch, ids));
    EXPECT_EQ((std::vector<long>{3, 2, 1}), ids);
}

TEST(KrRoutingCheckLoop, TriangleSearchStartsAtTheRootPointOfTheFirstSegment) {
    // As above, but segment 1 is drawn from Q(10,0) to P(0,0): ends [Q,P], and its root point is
    // the end P (10 is not less than 0). Connections: Q [1,2], P [1,3], R [2,3].
    // From P without 1: 3 -> R (R is ends[0] of 3); from R: 2 -> Q; from Q: 1 -> P on the path.
    // Path P R Q P gives 3, 2, 1. Starting at the start point Q would give Q R P Q: 2, 3, 1.
    KrSketch sketch;
    BuildSketch(sketch, {{1, 10.0}, {2, 7.0}, {3, 7.0}},
                {{1, At(10, 0), At(0, 0)}, {2, At(10, 0), At(5, 5)}, {3, At(5, 5), At(0, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(7, check.CheckSketch(&sketch, ids));
    EXPECT_EQ((std::vector<long>{3, 2, 1}), ids);
}

TEST(KrRoutingCheckLoop, TwoSegmentsBetweenTheSamePointsReportTheFirstIdTwice) {
    // Segments 1 and 2 both join X(0,0) and Y(10,0); both points list [1,2].
    // Root X; from X without 1: 2 -> Y; from Y without 2: 1 -> X on the path: X Y X.
    // (X,Y): first of [1,2] in [1,2] = 1; (Y,X): again 1.
    KrSketch sketch;
    BuildSketch(sketch, {{1, 10.0}, {2, 10.0}},
                {{1, At(0, 0), At(10, 0)}, {2, At(0, 0), At(10, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(7, check.CheckSketch(&sketch, ids));
    EXPECT_EQ((std::vector<long>{1, 1}), ids);
}

TEST(KrRoutingCheckLoop, LoopBeyondTheOtherEndOfTheFirstSegmentIsFound) {
    // P(0,0) Q(10,0) R(20,0) T(15,5); 1 = P-Q, 2 = Q-R, 3 = R-T, 4 = T-Q.
    // Connections: P [1], Q [1,2,4], R [2,3], T [3,4]. Root P: nothing but 1 there, so the
    // search goes on from Q: 2 -> R, 3 -> T, 4 -> Q on the path: Q R T Q.
    // (Q,R) = 2, (R,T) = 3, (T,Q) first of [3,4] in [1,2,4] = 4.
    KrSketch sketch;
    BuildSketch(sketch, {{1, 10.0}, {2, 10.0}, {3, 7.0}, {4, 7.0}},
                {{1, At(0, 0), At(10, 0)},
                 {2, At(10, 0), At(20, 0)},
                 {3, At(20, 0), At(15, 5)},
                 {4, At(15, 5), At(10, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(7, check.CheckSketch(&sketch, ids));
    EXPECT_EQ((std::vector<long>{2, 3, 4}), ids);
}

TEST(KrRoutingCheckLoop, LoopInAPieceWithoutTheFirstSegmentIsNotFound) {
    // Segment 1 alone at x 100..110; segments 2, 3, 4 form a triangle elsewhere.
    KrSketch sketch;
    BuildSketch(sketch, {{1, 10.0}, {2, 10.0}, {3, 7.0}, {4, 7.0}},
                {{1, At(100, 0), At(110, 0)},
                 {2, At(0, 0), At(10, 0)},
                 {3, At(10, 0), At(5, 5)},
                 {4, At(5, 5), At(0, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(0, check.CheckSketch(&sketch, ids));
    EXPECT_TRUE(ids.empty());
}

TEST(KrRoutingCheckLoop, LoopIdsAreAppendedAfterExistingEntries) {
    KrSketch sketch;
    BuildSketch(sketch, {{1, 10.0}, {2, 10.0}},
                {{1, At(0, 0), At(10, 0)}, {2, At(0, 0), At(10, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids{-5};
    EXPECT_EQ(7, check.CheckSketch(&sketch, ids));
    EXPECT_EQ((std::vector<long>{-5, 1, 1}), ids);
}

TEST(KrRoutingCheckLoop, CheckDoesNotChangeTheSketch) {
    KrSketch sketch;
    BuildSketch(sketch, {{1, 10.0}, {2, 7.0}, {3, 7.0}},
                {{1, At(0, 0), At(10, 0)}, {2, At(10, 0), At(5, 5)}, {3, At(5, 5), At(0, 0)}});
    std::vector<KrRouteSegment*> before;
    sketch.GetAllSegments(before);
    std::vector<ALPoint> posBefore;
    sketch.GetAllLineNewPos(posBefore);
    KrRoutingCheck check;
    std::vector<long> ids;
    ASSERT_EQ(7, check.CheckSketch(&sketch, ids));
    std::vector<KrRouteSegment*> after;
    sketch.GetAllSegments(after);
    std::vector<ALPoint> posAfter;
    sketch.GetAllLineNewPos(posAfter);
    EXPECT_EQ(before, after);
    ASSERT_EQ(posBefore.size(), posAfter.size());
    for (std::size_t i = 0; i < posBefore.size(); ++i) {
        EXPECT_TRUE(posBefore[i] == posAfter[i]);
    }
}

// ---- Exploration order and path handling, on topology built from the model ------------------

TEST(KrRoutingCheckLoop, FirstLoopInConnectionOrderIsReported) {
    // W(-10,0)-X(0,0) is segment 1 (root W, a dead end). Two triangles hang off X:
    // 2 = X-Y1, 3 = Y1-Z1, 4 = Z1-X and 5 = X-Y2, 6 = Y2-Z2, 7 = Z2-X.
    // X lists [1,2,4,5,7]; without 1 the first is 2, so the walk is X Y1 Z1 X.
    // (X,Y1) first of X's list in [2,3] = 2; (Y1,Z1) first of [2,3] in [3,4] = 3;
    // (Z1,X) first of [3,4] in X's list = 4. Walking the triangle the other way would give 4 3 2.
    ModelSketch sketch;
    KrRoutingWayPoint* w = sketch.Point(-10, 0);
    KrRoutingWayPoint* x = sketch.Point(0, 0);
    KrRoutingWayPoint* y1 = sketch.Point(10, 0);
    KrRoutingWayPoint* z1 = sketch.Point(10, 10);
    KrRoutingWayPoint* y2 = sketch.Point(-10, 10);
    KrRoutingWayPoint* z2 = sketch.Point(0, 20);
    sketch.Segment(1, 10, w, x);
    sketch.Segment(2, 10, x, y1);
    sketch.Segment(3, 10, y1, z1);
    sketch.Segment(4, 14, z1, x);
    sketch.Segment(5, 14, x, y2);
    sketch.Segment(6, 14, y2, z2);
    sketch.Segment(7, 20, z2, x);
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(7, check.CheckSketch(&sketch, ids));
    EXPECT_EQ((std::vector<long>{2, 3, 4}), ids);
}

TEST(KrRoutingCheckLoop, CheckLoopByPointRewritesThePathFromTheRepeatedPoint) {
    // Square P0(0,0) P1(10,0) P2(10,10) P3(0,10): 1 = P0-P1, 2 = P1-P2, 3 = P2-P3, 4 = P3-P0,
    // plus a tail 5 = P1-T. Path [Z, P0, P1], arriving at P1 by 1.
    // P1 lists [1,2,5]; without 1: 2 -> P2, 3 -> P3, 4 -> P0, which is at position 1.
    // The path becomes [P0, P1, P2, P3, P0]: the prefix Z is dropped, P0 repeated at the end.
    ModelSketch sketch;
    KrRoutingWayPoint* z = sketch.Point(-50, -50);
    KrRoutingWayPoint* p0 = sketch.Point(0, 0);
    KrRoutingWayPoint* p1 = sketch.Point(10, 0);
    KrRoutingWayPoint* p2 = sketch.Point(10, 10);
    KrRoutingWayPoint* p3 = sketch.Point(0, 10);
    KrRoutingWayPoint* t = sketch.Point(20, 0);
    KrRouteSegment* s1 = sketch.Segment(1, 10, p0, p1);
    sketch.Segment(2, 10, p1, p2);
    sketch.Segment(3, 10, p2, p3);
    sketch.Segment(4, 10, p3, p0);
    sketch.Segment(5, 10, p1, t);
    KrRoutingCheck check;
    std::vector<KrRoutingWayPoint*> path{z, p0, p1};
    EXPECT_EQ(7, check.CheckLoopByPoint(p1, s1, path));
    EXPECT_EQ((std::vector<KrRoutingWayPoint*>{p0, p1, p2, p3, p0}), path);
}

TEST(KrRoutingCheckLoop, CheckLoopByPointWithoutLoopPopsItsPoint) {
    // Chain A-B-C-D: from B (arrived by 1) the walk visits C and D, pops them, then pops B.
    ModelSketch sketch;
    KrRoutingWayPoint* a = sketch.Point(0, 0);
    KrRoutingWayPoint* b = sketch.Point(10, 0);
    KrRoutingWayPoint* c = sketch.Point(20, 0);
    KrRoutingWayPoint* d = sketch.Point(30, 0);
    KrRouteSegment* s1 = sketch.Segment(1, 10, a, b);
    sketch.Segment(2, 10, b, c);
    sketch.Segment(3, 10, c, d);
    KrRoutingCheck check;
    std::vector<KrRoutingWayPoint*> path{a, b};
    EXPECT_EQ(0, check.CheckLoopByPoint(b, s1, path));
    EXPECT_EQ(std::vector<KrRoutingWayPoint*>{a}, path);
}

TEST(KrRoutingCheckLoop, CheckLoopByPointExcludesOnlyTheArrivingSegment) {
    // Two segments between X and Y, both listed [1,2]. Arriving at Y by 1, only that segment is
    // left out: 2 leads back to X on the path, X Y X.
    ModelSketch sketch;
    KrRoutingWayPoint* x = sketch.Point(0, 0);
    KrRoutingWayPoint* y = sketch.Point(10, 0);
    KrRouteSegment* s1 = sketch.Segment(1, 10, x, y);
    sketch.Segment(2, 10, x, y);
    KrRoutingCheck check;
    std::vector<KrRoutingWayPoint*> path{x, y};
    EXPECT_EQ(7, check.CheckLoopByPoint(y, s1, path));
    EXPECT_EQ((std::vector<KrRoutingWayPoint*>{x, y, x}), path);
}

TEST(KrRoutingCheckLoop, CheckLoopByPointWithNullPointReturnsOne) {
    KrRoutingCheck check;
    std::vector<KrRoutingWayPoint*> path;
    EXPECT_EQ(1, check.CheckLoopByPoint(nullptr, nullptr, path));
    EXPECT_TRUE(path.empty());
}

TEST(KrRoutingCheckLoop, SegmentChainTakesFirstSharedSegmentOfEachPair) {
    // A(0,0) B(10,0) C(20,0); 1 = A-B, 2 = B-C, 3 = A-B again. A lists [1,3], B [1,2,3], C [2].
    // Path A B C A: (A,B) = 1; (B,C) = 2; (C,A) shares nothing: no entry.
    ModelSketch sketch;
    KrRoutingWayPoint* a = sketch.Point(0, 0);
    KrRoutingWayPoint* b = sketch.Point(10, 0);
    KrRoutingWayPoint* c = sketch.Point(20, 0);
    sketch.Segment(1, 10, a, b);
    sketch.Segment(2, 10, b, c);
    sketch.Segment(3, 10, a, b);
    KrRoutingCheck check;
    std::vector<KrRoutingWayPoint*> path{a, b, c, a};
    std::vector<long> ids{9};
    EXPECT_EQ(0, check.GetSegmentChainByWayPoint(path, ids));
    EXPECT_EQ((std::vector<long>{9, 1, 2}), ids);
}

TEST(KrRoutingCheckLoop, SegmentChainOfFewerThanTwoPointsIsEmpty) {
    ModelSketch sketch;
    KrRoutingWayPoint* a = sketch.Point(0, 0);
    KrRoutingWayPoint* b = sketch.Point(10, 0);
    sketch.Segment(1, 10, a, b);
    KrRoutingCheck check;
    std::vector<long> ids;
    std::vector<KrRoutingWayPoint*> none;
    EXPECT_EQ(0, check.GetSegmentChainByWayPoint(none, ids));
    std::vector<KrRoutingWayPoint*> one{a};
    EXPECT_EQ(0, check.GetSegmentChainByWayPoint(one, ids));
    EXPECT_TRUE(ids.empty());
}

TEST(KrRoutingCheckLoop, SegmentChainSkipsPairsWithANullPoint) {
    ModelSketch sketch;
    KrRoutingWayPoint* a = sketch.Point(0, 0);
    KrRoutingWayPoint* b = sketch.Point(10, 0);
    sketch.Segment(4, 10, a, b);
    KrRoutingCheck check;
    std::vector<long> ids;
    std::vector<KrRoutingWayPoint*> path{a, nullptr, a, b};
    EXPECT_EQ(0, check.GetSegmentChainByWayPoint(path, ids));
    EXPECT_EQ(std::vector<long>{4}, ids);
}

TEST(KrRoutingCheckLoop, FirstSegmentWithOneEndFindsNothing) {
    // A segment with a single end has no root point: nothing is searched.
    ModelSketch sketch;
    KrRoutingWayPoint* a = sketch.Point(0, 0);
    KrRoutingWayPoint* b = sketch.Point(10, 0);
    sketch.Segment(1, 10, a, a);  // ends [a]
    sketch.Segment(2, 10, a, b);
    sketch.Segment(3, 10, a, b);
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(0, check.CheckSketch(&sketch, ids));
    EXPECT_TRUE(ids.empty());
}

// ---- Long chains -------------------------------------------------------------------------------

constexpr int kChain = 100000;

// Segment i (1..n) joins p[i-1] and p[i] at x = i-1 and x = i.
std::vector<KrRoutingWayPoint*> MakeChain(ModelSketch& sketch, int n) {
    std::vector<KrRoutingWayPoint*> p;
    p.reserve(static_cast<std::size_t>(n) + 1);
    for (int i = 0; i <= n; ++i) {
        p.push_back(sketch.Point(i, 0));
    }
    for (int i = 1; i <= n; ++i) {
        sketch.Segment(i, 1.0, p[static_cast<std::size_t>(i - 1)], p[static_cast<std::size_t>(i)]);
    }
    return p;
}

// The same chain through the real input path: segment i is the line (i-1,0)-(i,0).
void BuildChainSketch(KrSketch& sketch, int n, std::vector<InputLine> extra,
                      std::vector<std::pair<int, double>> extraSegments) {
    std::vector<std::pair<int, double>> segments;
    std::vector<InputLine> lines;
    for (int i = 1; i <= n; ++i) {
        segments.emplace_back(i, 1.0);
        lines.push_back({i, At(i - 1, 0), At(i, 0)});
    }
    segments.insert(segments.end(), extraSegments.begin(), extraSegments.end());
    lines.insert(lines.end(), extra.begin(), extra.end());
    BuildSketch(sketch, segments, lines);
}

TEST(KrRoutingCheckLoop, ChainOfOneHundredThousandSegmentsHasNoLoop) {
    // Root (0,0) is a dead end; the walk then runs 100,000 way points deep from (1,0).
    KrSketch sketch;
    BuildChainSketch(sketch, kChain, {}, {});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(0, check.CheckSketch(&sketch, ids));
    EXPECT_TRUE(ids.empty());
}

TEST(KrRoutingCheckLoop, ChainOfOneHundredThousandSegmentsClosedAtTheFarEnd) {
    // Extra segment n+1 from p[n] = (n,0) over a bend at (n-1,5) back to p[n-2]; its ends are
    // [p[n], p[n-2]]. Root p[0] is a dead end; from p[1] the walk runs to p[n], where n+1 leads
    // to p[n-2] on the path: p[n-2] p[n-1] p[n] p[n-2].
    // (p[n-2],p[n-1]): first of [n-2, n-1, n+1] in [n-1, n] = n-1; (p[n-1],p[n]) = n;
    // (p[n],p[n-2]): first of [n, n+1] in [n-2, n-1, n+1] = n+1.
    KrSketch sketch;
    BuildChainSketch(sketch, kChain,
                     {{kChain + 1, At(kChain, 0), At(kChain - 1, 5)},
                      {kChain + 1, At(kChain - 1, 5), At(kChain - 2, 0)}},
                     {{kChain + 1, 12.0}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(7, check.CheckSketch(&sketch, ids));
    EXPECT_EQ((std::vector<long>{kChain - 1, kChain, kChain + 1}), ids);
}

TEST(KrRoutingCheckLoop, CheckLoopByPointWalksALongChainAndPopsEverything) {
    ModelSketch sketch;
    std::vector<KrRoutingWayPoint*> p = MakeChain(sketch, kChain);
    std::vector<KrRouteSegment*> segs;
    sketch.GetAllSegments(segs);
    KrRoutingCheck check;
    std::vector<KrRoutingWayPoint*> path{p[0], p[1]};
    EXPECT_EQ(0, check.CheckLoopByPoint(p[1], segs[0], path));
    EXPECT_EQ(std::vector<KrRoutingWayPoint*>{p[0]}, path);
}

}  // namespace
