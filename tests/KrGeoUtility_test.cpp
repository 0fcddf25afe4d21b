#include <krlayout/model/KrGeoUtility.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

std::uint64_t Bits(double d)
{
    std::uint64_t u = 0;
    std::memcpy(&u, &d, sizeof u);
    return u;
}

constexpr double kUntouched = -777.0;

}  // namespace

TEST(KrGeoUtility, ToleranceAndAngleLiteralsHaveTheirExactBits)
{
    EXPECT_EQ(Bits(GEO_TOLERANCE), 0x3EE4F8B588E368F1ULL);
    EXPECT_EQ(Bits(HALF_PI), 0x3FF921FB544486E0ULL);
    EXPECT_EQ(Bits(KR_THREE_HALF_PI), 0x4012D97C7F336528ULL);
    EXPECT_EQ(KR_PI, 3.1415926536);
    EXPECT_EQ(KR_TWO_PI, 6.2831853072);
}

TEST(KrGeoUtility, IsEqualIsStrictOnBothSides)
{
    double const tol = 1e-05;
    EXPECT_FALSE(KrGeoUtility::IsEqual(1.0, 1.0 + 1e-05, tol));
    EXPECT_TRUE(KrGeoUtility::IsEqual(1.0, 1.0 + 0.9e-05, tol));
    EXPECT_TRUE(KrGeoUtility::IsEqual(1.0 + 0.9e-05, 1.0, tol));
    EXPECT_FALSE(KrGeoUtility::IsEqual(1.0 + 2e-05, 1.0, tol));
}

TEST(KrGeoUtility, IsEqualWithZeroToleranceIsNeverTrue)
{
    double const zero = 0.0;
    EXPECT_FALSE(KrGeoUtility::IsEqual(3.0, 3.0, zero));
}

TEST(KrGeoUtility, LessThanNeedsAGapBeyondTolerance)
{
    double const tol = 1e-05;
    EXPECT_TRUE(KrGeoUtility::LessThan(1.0, 2.0, tol));
    EXPECT_FALSE(KrGeoUtility::LessThan(2.0, 1.0, tol));
    EXPECT_FALSE(KrGeoUtility::LessThan(1.0, 1.0 + 0.5e-05, tol));
    // A wide tolerance is honoured here: 1 and 1.5 are equal within 1.0.
    double const wide = 1.0;
    EXPECT_FALSE(KrGeoUtility::LessThan(1.0, 1.5, wide));
}

TEST(KrGeoUtility, LargerThanNeedsAGapBeyondTolerance)
{
    double const tol = 1e-05;
    EXPECT_TRUE(KrGeoUtility::LargerThan(2.0, 1.0, tol));
    EXPECT_FALSE(KrGeoUtility::LargerThan(1.0, 2.0, tol));
    EXPECT_FALSE(KrGeoUtility::LargerThan(1.0 + 0.5e-05, 1.0, tol));
    double const wide = 1.0;
    EXPECT_FALSE(KrGeoUtility::LargerThan(1.5, 1.0, wide));
}

TEST(KrGeoUtility, InclusiveComparisonsIgnoreTheToleranceArgument)
{
    double const tol = 0.1;
    EXPECT_TRUE(KrGeoUtility::LessEqualThan(1.0, 1.05, tol));
    EXPECT_FALSE(KrGeoUtility::LessEqualThan(1.05, 1.0, tol));
    EXPECT_TRUE(KrGeoUtility::LargerEqualThan(1.05, 1.0, tol));
    EXPECT_FALSE(KrGeoUtility::LargerEqualThan(1.0, 1.05, tol));
    // A zero tolerance argument still leaves values within GEO_TOLERANCE equal.
    double const zero = 0.0;
    EXPECT_TRUE(KrGeoUtility::LessEqualThan(1.0 + 0.5e-05, 1.0, zero));
    EXPECT_TRUE(KrGeoUtility::LargerEqualThan(1.0, 1.0 + 0.5e-05, zero));
}

TEST(KrGeoUtility, InsideLine2DIsABoxTestWidenedByTolerance)
{
    EXPECT_TRUE(KrGeoUtility::InsideLine2D(1.0, 1.0, 0.0, 0.0, 2.0, 2.0));
    // Off the diagonal but inside the box: still inside.
    EXPECT_TRUE(KrGeoUtility::InsideLine2D(0.5, 1.5, 0.0, 0.0, 2.0, 2.0));
    // Corners given in either order.
    EXPECT_TRUE(KrGeoUtility::InsideLine2D(0.5, 1.5, 2.0, 2.0, 0.0, 0.0));
    // On the border, and just outside within the tolerance.
    EXPECT_TRUE(KrGeoUtility::InsideLine2D(2.0, 0.0, 0.0, 0.0, 2.0, 2.0));
    EXPECT_TRUE(KrGeoUtility::InsideLine2D(2.0 + 0.5e-05, 1.0, 0.0, 0.0, 2.0, 2.0));
    EXPECT_FALSE(KrGeoUtility::InsideLine2D(2.0 + 2e-05, 1.0, 0.0, 0.0, 2.0, 2.0));
    EXPECT_FALSE(KrGeoUtility::InsideLine2D(-1.0, 1.0, 0.0, 0.0, 2.0, 2.0));
    EXPECT_FALSE(KrGeoUtility::InsideLine2D(1.0, -1.0, 0.0, 0.0, 2.0, 2.0));
    EXPECT_FALSE(KrGeoUtility::InsideLine2D(1.0, 3.0, 0.0, 0.0, 2.0, 2.0));
    // A degenerate (horizontal) box still admits its own segment.
    EXPECT_TRUE(KrGeoUtility::InsideLine2D(1.0, 0.0, 0.0, 0.0, 2.0, 0.0));
}

TEST(KrGeoUtility, UniteVectorNormalises)
{
    // (3, 4) has length 5.
    double v[2] = {3.0, 4.0};
    EXPECT_TRUE(KrGeoUtility::UniteVector(v, 2));
    EXPECT_DOUBLE_EQ(v[0], 0.6);
    EXPECT_DOUBLE_EQ(v[1], 0.8);
    // (1, 2, 2) has length 3.
    double w[3] = {1.0, 2.0, 2.0};
    EXPECT_TRUE(KrGeoUtility::UniteVector(w, 3));
    EXPECT_DOUBLE_EQ(w[0], 1.0 / 3.0);
    EXPECT_DOUBLE_EQ(w[1], 2.0 / 3.0);
    EXPECT_DOUBLE_EQ(w[2], 2.0 / 3.0);
}

TEST(KrGeoUtility, UniteVectorOfNullIsFalse)
{
    EXPECT_FALSE(KrGeoUtility::UniteVector(nullptr, 2));
}

TEST(KrGeoUtility, UniteVectorOfTinyThreeVectorLeavesZAlone)
{
    double v[3] = {0.0, 0.0, 7e-06};
    EXPECT_FALSE(KrGeoUtility::UniteVector(v, 3));
    EXPECT_EQ(v[0], 0.0);
    EXPECT_EQ(v[1], 0.0);
    EXPECT_EQ(v[2], 7e-06);
}

TEST(KrGeoUtility, UniteVectorClearsXAndYOfAVectorShorterThanTolerance)
{
    // Length 5e-06 < 1e-05: treated as zero and cleared.
    double v[2] = {3e-06, 4e-06};
    EXPECT_FALSE(KrGeoUtility::UniteVector(v, 2));
    EXPECT_EQ(v[0], 0.0);
    EXPECT_EQ(v[1], 0.0);
    // Length about 7.1e-06: x and y are cleared, the tiny z stays.
    double w[3] = {5e-06, 0.0, 5e-06};
    EXPECT_FALSE(KrGeoUtility::UniteVector(w, 3));
    EXPECT_EQ(w[0], 0.0);
    EXPECT_EQ(w[2], 5e-06);
}

TEST(KrGeoUtility, UniteVectorWithShortCountWritesOnlyItsComponents)
{
    double v[2] = {0.0, 99.0};
    EXPECT_FALSE(KrGeoUtility::UniteVector(v, 1));
    EXPECT_EQ(v[0], 0.0);
    EXPECT_EQ(v[1], 99.0);
    double w[2] = {5.0, 99.0};
    EXPECT_FALSE(KrGeoUtility::UniteVector(w, 0));
    EXPECT_EQ(w[0], 5.0);
    EXPECT_EQ(w[1], 99.0);
}

TEST(KrGeoUtility, GetLengthOverFirstNComponents)
{
    double const a[3] = {0.0, 0.0, 0.0};
    double const b[3] = {3.0, 4.0, 12.0};
    EXPECT_DOUBLE_EQ(KrGeoUtility::GetLength(a, b, 2), 5.0);   // sqrt(9 + 16)
    EXPECT_DOUBLE_EQ(KrGeoUtility::GetLength(a, b, 3), 13.0);  // sqrt(9 + 16 + 144)
    EXPECT_DOUBLE_EQ(KrGeoUtility::GetLength(b, a, 1), 3.0);
    double const c[2] = {1.0, 2.0};
    double const d[2] = {4.0, 6.0};
    EXPECT_DOUBLE_EQ(KrGeoUtility::GetLength(c, d, 2), 5.0);  // (3, 4)
}

TEST(KrGeoUtility, GetLengthOfNoComponentsOrNullIsZero)
{
    double const a[2] = {0.0, 0.0};
    double const b[2] = {3.0, 4.0};
    EXPECT_EQ(KrGeoUtility::GetLength(a, b, 0), 0.0);
    EXPECT_EQ(KrGeoUtility::GetLength(a, b, -3), 0.0);
    EXPECT_EQ(KrGeoUtility::GetLength(nullptr, b, 2), 0.0);
    EXPECT_EQ(KrGeoUtility::GetLength(a, nullptr, 2), 0.0);
}

// ---- Line2DIntersec ----

TEST(KrGeoUtility, Line2DIntersecCrossingSlopedLines)
{
    // (0,0)-(2,2): k1 = 1; (0,2)-(2,0): k2 = -1.
    // py = (1*0 - (-1)*2 - 0 + 0) / (1 - -1) = 1; px = 0 + 1*(1 - 0) = 1.
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::Line2DIntersec(&px, &py, 0, 0, 2, 2, 0, 2, 2, 0, GEO_TOLERANCE), 0);
    EXPECT_DOUBLE_EQ(px, 1.0);
    EXPECT_DOUBLE_EQ(py, 1.0);
}

TEST(KrGeoUtility, Line2DIntersecVerticalMeetsHorizontal)
{
    // x = 0 through (0,0)-(0,10); y = 5 through (-3,5)-(4,5): second line horizontal,
    // py = 5, px = 0 + 0/10 * (5 - 0) = 0.
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::Line2DIntersec(&px, &py, 0, 0, 0, 10, -3, 5, 4, 5, GEO_TOLERANCE), 0);
    EXPECT_DOUBLE_EQ(px, 0.0);
    EXPECT_DOUBLE_EQ(py, 5.0);
}

TEST(KrGeoUtility, Line2DIntersecFirstLineHorizontal)
{
    // y = 2 through (0,2)-(5,2); (1,0)-(3,4): px = 1 + (2/4) * (2 - 0) = 2.
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::Line2DIntersec(&px, &py, 0, 2, 5, 2, 1, 0, 3, 4, GEO_TOLERANCE), 0);
    EXPECT_DOUBLE_EQ(px, 2.0);
    EXPECT_DOUBLE_EQ(py, 2.0);
}

TEST(KrGeoUtility, Line2DIntersecSecondLineHorizontal)
{
    // (1,0)-(3,4) against y = 3: px = 1 + (2/4) * (3 - 0) = 2.5.
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::Line2DIntersec(&px, &py, 1, 0, 3, 4, -10, 3, 10, 3, GEO_TOLERANCE), 0);
    EXPECT_DOUBLE_EQ(px, 2.5);
    EXPECT_DOUBLE_EQ(py, 3.0);
}

TEST(KrGeoUtility, Line2DIntersecParallelSlopedLinesGiveOneAndWriteNothing)
{
    // k1 = k2 = 1; xs = 1 + 1*(0 - 0) = 1, x1 = 0: distinct.
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::Line2DIntersec(&px, &py, 0, 0, 1, 1, 1, 0, 2, 1, GEO_TOLERANCE), 1);
    EXPECT_EQ(px, kUntouched);
    EXPECT_EQ(py, kUntouched);
}

TEST(KrGeoUtility, Line2DIntersecCollinearSlopedLinesGiveTwo)
{
    // xs = 2 + 1*(0 - 2) = 0 = x1: the same line.
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::Line2DIntersec(&px, &py, 0, 0, 1, 1, 2, 2, 3, 3, GEO_TOLERANCE), 2);
    EXPECT_EQ(px, kUntouched);
    EXPECT_EQ(py, kUntouched);
}

TEST(KrGeoUtility, Line2DIntersecVerticalParallelsAreNotSpecial)
{
    // k1 = k2 = 0; xs = x3.
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::Line2DIntersec(&px, &py, 0, 0, 0, 1, 1, 0, 1, 1, GEO_TOLERANCE), 1);
    EXPECT_EQ(KrGeoUtility::Line2DIntersec(&px, &py, 0, 0, 0, 1, 0, 5, 0, 6, GEO_TOLERANCE), 2);
    EXPECT_EQ(px, kUntouched);
    EXPECT_EQ(py, kUntouched);
}

TEST(KrGeoUtility, Line2DIntersecHorizontalLinesAtSameHeightGiveOne)
{
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::Line2DIntersec(&px, &py, 0, 1, 2, 1, 3, 1, 5, 1, GEO_TOLERANCE), 1);
    EXPECT_EQ(px, kUntouched);
    EXPECT_EQ(py, kUntouched);
}

TEST(KrGeoUtility, Line2DIntersecHorizontalLinesAtDifferentHeightsGiveTwo)
{
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::Line2DIntersec(&px, &py, 0, 1, 2, 1, 0, 3, 2, 3, GEO_TOLERANCE), 2);
    EXPECT_EQ(px, kUntouched);
    EXPECT_EQ(py, kUntouched);
}

TEST(KrGeoUtility, Line2DIntersecIgnoresTheToleranceArgument)
{
    // Heights 1 and 3 would be equal within 100; the argument is not used.
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::Line2DIntersec(&px, &py, 0, 1, 2, 1, 0, 3, 2, 3, 100.0), 2);
}

TEST(KrGeoUtility, Line2DIntersecWithNullOutputsStillReportsTheCode)
{
    EXPECT_EQ(KrGeoUtility::Line2DIntersec(nullptr, nullptr, 0, 0, 2, 2, 0, 2, 2, 0, GEO_TOLERANCE), 0);
    double py = kUntouched;
    EXPECT_EQ(KrGeoUtility::Line2DIntersec(nullptr, &py, 0, 0, 2, 2, 0, 2, 2, 0, GEO_TOLERANCE), 0);
    EXPECT_DOUBLE_EQ(py, 1.0);
}

TEST(KrGeoUtility, Line2DIntersecWithNaNInputWritesNaNWithoutCrashing)
{
    // k1 = (2 - NaN) / 2 is NaN, never equal to k2 = -1, so the crossing branch runs and
    // writes NaN.
    double const nan = std::nan("");
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::Line2DIntersec(&px, &py, nan, 0, 2, 2, 0, 2, 2, 0, GEO_TOLERANCE), 0);
    EXPECT_TRUE(std::isnan(px));
    EXPECT_TRUE(std::isnan(py));
    EXPECT_FALSE(KrGeoUtility::IsEqual(nan, nan, GEO_TOLERANCE));
}

// ---- LineSegment2DIntersection ----

TEST(KrGeoUtility, SegmentsThatCrossGiveZeroAndThePoint)
{
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::LineSegment2DIntersection(&px, &py, 0, 0, 2, 2, 0, 2, 2, 0, GEO_TOLERANCE), 0);
    EXPECT_DOUBLE_EQ(px, 1.0);
    EXPECT_DOUBLE_EQ(py, 1.0);
}

TEST(KrGeoUtility, SegmentsMeetingAtACommonEndGiveZero)
{
    // (0,0)-(1,1): k1 = 1; (1,1)-(2,0): k2 = -1; py = (0 + 1 - 0 + 1) / 2 = 1, px = 1.
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::LineSegment2DIntersection(&px, &py, 0, 0, 1, 1, 1, 1, 2, 0, GEO_TOLERANCE), 0);
    EXPECT_DOUBLE_EQ(px, 1.0);
    EXPECT_DOUBLE_EQ(py, 1.0);
}

TEST(KrGeoUtility, LinesCrossingOutsideASegmentGiveFourWithThePointWritten)
{
    // (2,0)-(1.5,0.5): k2 = -1; the lines cross at (1, 1), beyond the second segment.
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::LineSegment2DIntersection(&px, &py, 0, 0, 2, 2, 2, 0, 1.5, 0.5, GEO_TOLERANCE), 4);
    EXPECT_DOUBLE_EQ(px, 1.0);
    EXPECT_DOUBLE_EQ(py, 1.0);
}

TEST(KrGeoUtility, SegmentsWithBoxesApartInXGiveThree)
{
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::LineSegment2DIntersection(&px, &py, 0, 0, 1, 0, 2, -1, 2, 1, GEO_TOLERANCE), 3);
    EXPECT_EQ(px, kUntouched);
    EXPECT_EQ(py, kUntouched);
    // Both below on x as well.
    EXPECT_EQ(KrGeoUtility::LineSegment2DIntersection(&px, &py, 5, 0, 6, 1, 0, 0, 1, 3, GEO_TOLERANCE), 3);
    EXPECT_EQ(px, kUntouched);
}

TEST(KrGeoUtility, SegmentsWithBoxesApartInYGiveThree)
{
    // Second segment spans y 2..3, first y 0..1.
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::LineSegment2DIntersection(&px, &py, 0, 0, 0, 1, -1, 3, 1, 2, GEO_TOLERANCE), 3);
    EXPECT_EQ(px, kUntouched);
    EXPECT_EQ(py, kUntouched);
}

TEST(KrGeoUtility, SegmentBoxPreTestUsesTheToleranceArgument)
{
    // The second segment is the vertical x = 1.05; the first ends at x = 1.
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::LineSegment2DIntersection(&px, &py, 0, 0, 1, 0, 1.05, -1, 1.05, 1, 0.01), 3);
    EXPECT_EQ(px, kUntouched);
    // Within a tolerance of 0.1 the boxes touch; the lines cross at (1.05, 0), outside the first.
    EXPECT_EQ(KrGeoUtility::LineSegment2DIntersection(&px, &py, 0, 0, 1, 0, 1.05, -1, 1.05, 1, 0.1), 4);
    EXPECT_DOUBLE_EQ(px, 1.05);
    EXPECT_DOUBLE_EQ(py, 0.0);
}

TEST(KrGeoUtility, ParallelSegmentsGiveOneWithNothingWritten)
{
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::LineSegment2DIntersection(&px, &py, 0, 0, 2, 2, 1, 0, 3, 2, GEO_TOLERANCE), 1);
    EXPECT_EQ(px, kUntouched);
    EXPECT_EQ(py, kUntouched);
}

TEST(KrGeoUtility, CollinearOverlappingSegmentsGiveTwoWithNothingWritten)
{
    double px = kUntouched, py = kUntouched;
    EXPECT_EQ(KrGeoUtility::LineSegment2DIntersection(&px, &py, 0, 0, 2, 2, 1, 1, 3, 3, GEO_TOLERANCE), 2);
    EXPECT_EQ(px, kUntouched);
    EXPECT_EQ(py, kUntouched);
}

TEST(KrGeoUtility, HorizontalSegmentsKeepTheInvertedCodes)
{
    double px = kUntouched, py = kUntouched;
    // Same height, overlapping: 1.
    EXPECT_EQ(KrGeoUtility::LineSegment2DIntersection(&px, &py, 0, 0, 2, 0, 1, 0, 3, 0, GEO_TOLERANCE), 1);
    // Heights 0 and 0.5, boxes overlapping within a tolerance of 1: 2.
    EXPECT_EQ(KrGeoUtility::LineSegment2DIntersection(&px, &py, 0, 0, 2, 0, 1, 0.5, 3, 0.5, 1.0), 2);
    EXPECT_EQ(px, kUntouched);
    EXPECT_EQ(py, kUntouched);
}

TEST(KrGeoUtility, SegmentIntersectionWithNullOutputsDoesNotCrash)
{
    EXPECT_EQ(KrGeoUtility::LineSegment2DIntersection(nullptr, nullptr, 0, 0, 2, 2, 0, 2, 2, 0, GEO_TOLERANCE), 0);
    EXPECT_EQ(KrGeoUtility::LineSegment2DIntersection(nullptr, nullptr, 0, 0, 2, 2, 2, 0, 1.5, 0.5, GEO_TOLERANCE), 4);
}

TEST(KrGeoUtility, ObjectsCanBeCreatedAndAssigned)
{
    KrGeoUtility a;
    KrGeoUtility b;
    b = a;
    SUCCEED();
}
