#include <krlayout/model/ALPoint.h>

#include <gtest/gtest.h>

#include <cmath>

TEST(ALPoint, DefaultIsOrigin)
{
    ALPoint p;
    EXPECT_EQ(p.x, 0.0);
    EXPECT_EQ(p.y, 0.0);
    EXPECT_EQ(p.z, 0.0);
}

TEST(ALPoint, PointerConstructorCopiesXYZInOrder)
{
    double const xyz[3] = {1.5, -2.0, 3.25};
    ALPoint p(xyz);
    EXPECT_EQ(p.x, 1.5);
    EXPECT_EQ(p.y, -2.0);
    EXPECT_EQ(p.z, 3.25);
}

TEST(ALPoint, NullPointerConstructorGivesOrigin)
{
    ALPoint p(static_cast<double const*>(nullptr));
    EXPECT_EQ(p.x, 0.0);
    EXPECT_EQ(p.y, 0.0);
    EXPECT_EQ(p.z, 0.0);
}

TEST(ALPoint, ThreeDoubleAndCopyConstructors)
{
    ALPoint a(4.0, 5.0, 6.0);
    ALPoint b(a);
    EXPECT_EQ(b.x, 4.0);
    EXPECT_EQ(b.y, 5.0);
    EXPECT_EQ(b.z, 6.0);
}

TEST(ALPoint, AssignmentCopiesCoordinatesAndReturnsAnIndependentValue)
{
    ALPoint a(1.0, 2.0, 3.0);
    ALPoint b;
    ALPoint r = (b = a);
    EXPECT_EQ(b.x, 1.0);
    EXPECT_EQ(b.y, 2.0);
    EXPECT_EQ(b.z, 3.0);
    EXPECT_EQ(r.x, 1.0);
    // The result is a copy: changing it leaves the target alone.
    r.x = 9.0;
    EXPECT_EQ(b.x, 1.0);
}

TEST(ALPoint, PointsWithinHalfToleranceInEveryCoordinateAreEqual)
{
    ALPoint a(1.0, 2.0, 3.0);
    ALPoint b(1.0 + 0.5e-05, 2.0 + 0.5e-05, 3.0 + 0.5e-05);
    EXPECT_TRUE(a == b);
    EXPECT_TRUE(b == a);
}

TEST(ALPoint, PointsDifferingOnlyInZByMoreThanToleranceAreNotEqual)
{
    ALPoint a(1.0, 2.0, 3.0);
    ALPoint b(1.0, 2.0, 3.0 + 1e-04);
    EXPECT_FALSE(a == b);
}

TEST(ALPoint, EqualityIsStrictAtTheTolerance)
{
    // 2e-05 apart in x: well outside; in y: 0.9e-05 inside.
    EXPECT_FALSE(ALPoint(0.0, 0.0, 0.0) == ALPoint(2e-05, 0.0, 0.0));
    EXPECT_TRUE(ALPoint(0.0, 0.0, 0.0) == ALPoint(0.0, 0.9e-05, 0.0));
    EXPECT_FALSE(ALPoint(0.0, 0.0, 0.0) == ALPoint(0.0, 1.5e-05, 0.0));
}

TEST(ALPoint, NaNCoordinateIsNeverEqual)
{
    ALPoint a(std::nan(""), 0.0, 0.0);
    EXPECT_FALSE(a == a);
}
