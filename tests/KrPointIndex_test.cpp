// Numbering points as the routing sketch merges them, on points placed by hand around the
// tolerance.
#include <krlayout/model/KrPointIndex.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

TEST(KrPointIndex, DistinctPointsAreNumberedInTheOrderGiven) {
    KrPointIndex index;
    EXPECT_EQ(index.NumberOf(ALPoint(0, 0, 0)), 0u);
    EXPECT_EQ(index.NumberOf(ALPoint(1, 0, 0)), 1u);
    EXPECT_EQ(index.NumberOf(ALPoint(0, 1, 0)), 2u);
    EXPECT_EQ(index.Count(), 3u);
}

TEST(KrPointIndex, APointWithinTheToleranceTakesTheEarlierNumberAndTheFirstPointStands) {
    KrPointIndex index;
    EXPECT_EQ(index.NumberOf(ALPoint(2, 3, 0)), 0u);
    EXPECT_EQ(index.NumberOf(ALPoint(2 + 0.9e-5, 3 - 0.9e-5, 0)), 0u);
    EXPECT_EQ(index.Count(), 1u);
    EXPECT_EQ(index.PointOf(0).x, 2.0);
    EXPECT_EQ(index.PointOf(0).y, 3.0);
    // 1e-5 apart is not equal: the tolerance is strict.
    EXPECT_EQ(index.NumberOf(ALPoint(2 + 1.1e-5, 3, 0)), 1u);
}

TEST(KrPointIndex, EqualityIsNotChained) {
    // B equals A and takes its number; C equals B but not A, and B is no numbered point.
    KrPointIndex index;
    EXPECT_EQ(index.NumberOf(ALPoint(0, 0, 0)), 0u);
    EXPECT_EQ(index.NumberOf(ALPoint(0.8e-5, 0, 0)), 0u);
    EXPECT_EQ(index.NumberOf(ALPoint(1.6e-5, 0, 0)), 1u);
}

TEST(KrPointIndex, APointEqualToSeveralTakesTheFirstNumber) {
    KrPointIndex index;
    EXPECT_EQ(index.NumberOf(ALPoint(0, 0, 0)), 0u);
    EXPECT_EQ(index.NumberOf(ALPoint(1.5e-5, 0, 0)), 1u);
    EXPECT_EQ(index.NumberOf(ALPoint(0.75e-5, 0, 0)), 0u);
    EXPECT_EQ(index.NumberOf(ALPoint(1.4e-5, 0, 0)), 1u);  // 1.4e-5 from the first: the second only
}

TEST(KrPointIndex, PointsOnEitherSideOfACellBoundaryAreFound) {
    // Cells are 2e-5 wide: 3.99e-5 and 4.01e-5 lie in neighbouring cells.
    KrPointIndex index;
    EXPECT_EQ(index.NumberOf(ALPoint(3.99e-5, -3.99e-5, 0)), 0u);
    EXPECT_EQ(index.NumberOf(ALPoint(4.01e-5, -4.01e-5, 0)), 0u);
}

TEST(KrPointIndex, ZTellsPointsApart) {
    KrPointIndex index;
    EXPECT_EQ(index.NumberOf(ALPoint(0, 0, 0)), 0u);
    EXPECT_EQ(index.NumberOf(ALPoint(0, 0, 1)), 1u);
}

TEST(KrPointIndex, APointThatIsNoNumberEqualsNothing) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    KrPointIndex index;
    EXPECT_EQ(index.NumberOf(ALPoint(nan, 0, 0)), 0u);
    EXPECT_EQ(index.NumberOf(ALPoint(nan, 0, 0)), 1u);
    EXPECT_EQ(index.NumberOf(ALPoint(0, 0, 0)), 2u);
    EXPECT_TRUE(std::isnan(index.PointOf(0).x));
}
