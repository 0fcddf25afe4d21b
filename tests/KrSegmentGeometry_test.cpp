// The exact plane geometry of segments, on small figures whose answers are worked out by hand.
#include <krlayout/model/KrSegmentGeometry.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using P = KrSegmentGeometry::Point;
using G = KrSegmentGeometry;

}  // namespace

TEST(KrSegmentGeometry, CrossIsPositiveForALeftTurnNegativeForARightTurnAndZeroWhenCollinear) {
    // (0,0) -> (2,0), then (1,3): twice the area 2 * 3 = 6, to the left.
    EXPECT_EQ(G::Cross({0, 0}, {2, 0}, {1, 3}), 6.0);
    EXPECT_EQ(G::Cross({0, 0}, {2, 0}, {1, -3}), -6.0);
    EXPECT_EQ(G::Cross({1, 1}, {3, 3}, {7, 7}), 0.0);
}

TEST(KrSegmentGeometry, DistanceIsEuclidean) {
    EXPECT_EQ(G::Distance({1, 1}, {4, 5}), 5.0);
    EXPECT_EQ(G::Distance({-2, 0}, {-2, 0}), 0.0);
}

TEST(KrSegmentGeometry, InSpanIsAClosedBoxTestOnly) {
    EXPECT_TRUE(G::InSpan({1, 1}, {0, 2}, {2, 0}));
    EXPECT_TRUE(G::InSpan({2, 2}, {0, 0}, {2, 2}));   // a corner
    EXPECT_TRUE(G::InSpan({0, 2}, {0, 0}, {2, 2}));   // in the box, off the line
    EXPECT_FALSE(G::InSpan({2.5, 1}, {0, 0}, {2, 2}));
}

TEST(KrSegmentGeometry, PointSegmentDistanceTakesThePerpendicularFootOrTheNearerEnd) {
    // Foot inside the segment: the perpendicular.
    EXPECT_EQ(G::PointSegmentDistance({1, 2}, {0, 0}, {4, 0}), 2.0);
    // Beyond an end: the distance to that end, 3-4-5.
    EXPECT_EQ(G::PointSegmentDistance({7, 4}, {0, 0}, {4, 0}), 5.0);
    EXPECT_EQ(G::PointSegmentDistance({-3, -4}, {0, 0}, {4, 0}), 5.0);
    // On the segment: 0.
    EXPECT_EQ(G::PointSegmentDistance({2, 0}, {0, 0}, {4, 0}), 0.0);
}

TEST(KrSegmentGeometry, PointSegmentDistanceToADegenerateSegmentIsThatToItsPoint) {
    EXPECT_EQ(G::PointSegmentDistance({4, 4}, {1, 0}, {1, 0}), 5.0);
}

TEST(KrSegmentGeometry, IntersectHoldsForCrossingsTouchingEndsAndCollinearOverlaps) {
    EXPECT_TRUE(G::Intersect({0, 0}, {2, 2}, {0, 2}, {2, 0}));     // an X
    EXPECT_TRUE(G::Intersect({0, 0}, {2, 0}, {1, 0}, {1, 5}));     // a T: an end on the other
    EXPECT_TRUE(G::Intersect({0, 0}, {2, 0}, {2, 0}, {3, 1}));     // shared end
    EXPECT_TRUE(G::Intersect({0, 0}, {2, 0}, {1, 0}, {3, 0}));     // collinear overlap
    EXPECT_FALSE(G::Intersect({0, 0}, {2, 0}, {3, 0}, {4, 0}));    // collinear, apart
    EXPECT_FALSE(G::Intersect({0, 0}, {2, 0}, {1, 0.5}, {1, 5}));  // a T that stops short
}

TEST(KrSegmentGeometry, IntersectIsExactWithoutATolerance) {
    // 1e-9 above the line is not on it.
    EXPECT_FALSE(G::Intersect({0, 0}, {2, 0}, {1, 1e-9}, {1, 5}));
}

TEST(KrSegmentGeometry, SegmentDistanceIsZeroWhenTheyCrossElseFromTheNearestEnd) {
    EXPECT_EQ(G::SegmentDistance({0, 0}, {2, 2}, {0, 2}, {2, 0}), 0.0);
    // A T: the end (1, 0) on the bar, its perpendicular foot exactly itself.
    EXPECT_EQ(G::SegmentDistance({0, 0}, {2, 0}, {1, 0}, {1, 5}), 0.0);
    // Collinear, overlapping: an end of each lies on the other.
    EXPECT_EQ(G::SegmentDistance({0, 0}, {2, 0}, {1, 0}, {3, 0}), 0.0);
    // Parallel, 3 apart.
    EXPECT_EQ(G::SegmentDistance({0, 0}, {4, 0}, {1, 3}, {2, 3}), 3.0);
    // A T stopping 0.5 short of the bar.
    EXPECT_EQ(G::SegmentDistance({0, 0}, {2, 0}, {1, 0.5}, {1, 5}), 0.5);
    // Skew, nearest from the end (5, 4) of the second to the end (2, 0) of the first: 3-4-5.
    EXPECT_EQ(G::SegmentDistance({0, 0}, {2, 0}, {5, 4}, {5, 10}), 5.0);
}

TEST(KrSegmentGeometry, ProperCrossingGivesTheCrossingPoint) {
    P at{-1, -1};
    ASSERT_TRUE(G::ProperCrossing({0, 0}, {4, 4}, {0, 4}, {4, 0}, 0.0, at));
    EXPECT_EQ(at.x, 2.0);
    EXPECT_EQ(at.y, 2.0);
    // (0, 1) to (4, 1) crosses x = 3 at (3, 1), a quarter from the end.
    ASSERT_TRUE(G::ProperCrossing({0, 1}, {4, 1}, {3, -1}, {3, 2}, 1e-5, at));
    EXPECT_EQ(at.x, 3.0);
    EXPECT_EQ(at.y, 1.0);
}

TEST(KrSegmentGeometry, TouchingIsNoProperCrossing) {
    P at{7, 7};
    EXPECT_FALSE(G::ProperCrossing({0, 0}, {2, 0}, {1, 0}, {1, 5}, 0.0, at));   // a T
    EXPECT_FALSE(G::ProperCrossing({0, 0}, {2, 0}, {2, 0}, {3, 1}, 0.0, at));   // shared end
    EXPECT_FALSE(G::ProperCrossing({0, 0}, {2, 0}, {1, 0}, {3, 0}, 0.0, at));   // collinear
    EXPECT_EQ(at.x, 7.0);
    EXPECT_EQ(at.y, 7.0);
}

TEST(KrSegmentGeometry, ProperCrossingAsksEveryEndToLieBeyondTheMargin) {
    P at;
    // The vertical reaches 1e-6 below the bar: a crossing without a margin, none within 1e-5.
    EXPECT_TRUE(G::ProperCrossing({0, 0}, {2, 0}, {1, -1e-6}, {1, 5}, 0.0, at));
    EXPECT_FALSE(G::ProperCrossing({0, 0}, {2, 0}, {1, -1e-6}, {1, 5}, 1e-5, at));
    EXPECT_TRUE(G::ProperCrossing({0, 0}, {2, 0}, {1, -1e-4}, {1, 5}, 1e-5, at));
    // A segment shorter than the margin crosses nothing.
    EXPECT_FALSE(G::ProperCrossing({0, 0}, {2, 0}, {1, -4e-6}, {1, 4e-6}, 1e-5, at));
}

TEST(KrSegmentGeometry, CollinearOverlapIsTheSharedStretch) {
    // (0,0)-(4,0) and (3,0)-(1,0): 2 shared, whichever way the second runs.
    EXPECT_EQ(G::CollinearOverlap({0, 0}, {4, 0}, {3, 0}, {1, 0}, 1e-5), 2.0);
    // Along a 3-4-5 diagonal: (0,0)-(3,4) and (3,4)-(6,8) share only their end.
    EXPECT_EQ(G::CollinearOverlap({0, 0}, {3, 4}, {3, 4}, {6, 8}, 1e-5), 0.0);
    // One inside the other: the shorter one's length.
    EXPECT_EQ(G::CollinearOverlap({0, 0}, {0, 10}, {0, 2}, {0, 5}, 1e-5), 3.0);
}

TEST(KrSegmentGeometry, CollinearOverlapNeedsBothEndsWithinTheMarginOfTheLine) {
    // Parallel 1e-6 apart: collinear within 1e-5, not exactly.
    EXPECT_EQ(G::CollinearOverlap({0, 0}, {4, 0}, {1, 1e-6}, {3, 1e-6}, 1e-5), 2.0);
    EXPECT_EQ(G::CollinearOverlap({0, 0}, {4, 0}, {1, 1e-6}, {3, 1e-6}, 0.0), 0.0);
    // Crossing at a small angle: one end 1e-3 off the line.
    EXPECT_EQ(G::CollinearOverlap({0, 0}, {4, 0}, {1, 0}, {3, 1e-3}, 1e-5), 0.0);
    // A shared stretch no longer than the margin is none.
    EXPECT_EQ(G::CollinearOverlap({0, 0}, {4, 0}, {4 - 5e-6, 0}, {6, 0}, 1e-5), 0.0);
}

TEST(KrSegmentGeometry, PointBoxDistanceIsZeroInsideAndOnTheEdge) {
    KrSegmentGeometry::Box const box{0, 0, 2, 1};
    EXPECT_EQ(G::PointBoxDistance({1, 0.5}, box), 0.0);
    EXPECT_EQ(G::PointBoxDistance({2, 0.5}, box), 0.0);
    EXPECT_EQ(G::PointBoxDistance({1, 3}, box), 2.0);     // above
    EXPECT_EQ(G::PointBoxDistance({5, 5}, box), 5.0);     // off the corner (2, 1): 3-4-5
}

TEST(KrSegmentGeometry, SegmentBoxDistanceIsZeroWhenTheSegmentMeetsTheBox) {
    KrSegmentGeometry::Box const box{0, 0, 2, 1};
    EXPECT_EQ(G::SegmentBoxDistance({-1, 0.5}, {3, 0.5}, box), 0.0);    // through it
    EXPECT_EQ(G::SegmentBoxDistance({1, 0.5}, {1, 5}, box), 0.0);       // from inside
    EXPECT_EQ(G::SegmentBoxDistance({-1, 0}, {1, 2}, box), 0.0);        // through the corner (0, 1) only
}

TEST(KrSegmentGeometry, SegmentBoxDistanceIsReachedAtACornerOrAnEnd) {
    KrSegmentGeometry::Box const box{0, 0, 2, 1};
    // A horizontal 2 above the box, longer than it: from the top edge's corners, 2.
    EXPECT_EQ(G::SegmentBoxDistance({-5, 3}, {5, 3}, box), 2.0);
    // A diagonal x + y = 5 past the corner (2, 1): 2 / sqrt(2) from it.
    EXPECT_DOUBLE_EQ(G::SegmentBoxDistance({0, 5}, {5, 0}, box), std::sqrt(2.0));
    // A short segment right of the box: from its near end, 1.
    EXPECT_EQ(G::SegmentBoxDistance({3, 0.5}, {4, 0.5}, box), 1.0);
}
