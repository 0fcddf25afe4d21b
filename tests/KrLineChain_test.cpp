// The free ends of chains of lines, on small chains worked out by hand.
#include <krlayout/model/KrLineChain.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

ALLine Line(double x0, double y0, double x1, double y1) {
    double const a[3] = {x0, y0, 0.0};
    double const b[3] = {x1, y1, 0.0};
    return ALLine(a, b);
}

std::vector<ALPoint> Ends(std::vector<ALLine> const& lines) {
    std::vector<ALPoint> ends;
    EXPECT_EQ(KrLineChain::FindEnds(lines, ends), 0);
    return ends;
}

void ExpectPoint(ALPoint const& p, double x, double y) {
    EXPECT_EQ(p.x, x);
    EXPECT_EQ(p.y, y);
}

}  // namespace

TEST(KrLineChain, AChainInOrderEndsAtItsFirstStartAndLastEnd) {
    auto const ends = Ends({Line(0, 0, 1, 0), Line(1, 0, 1, 1), Line(1, 1, 2, 1)});
    ASSERT_EQ(ends.size(), 2u);
    ExpectPoint(ends[0], 0, 0);
    ExpectPoint(ends[1], 2, 1);
}

TEST(KrLineChain, EndsComeInTheOrderTheyFirstAppearWhateverTheLinesOrderAndSense) {
    // The chain (0,0) - (1,0) - (1,1) - (2,1) given middle line first, reversed, then the others
    // reversed: (1,1) appears first, then (1,0), then (2,1), then (0,0).
    auto const ends = Ends({Line(1, 1, 1, 0), Line(2, 1, 1, 1), Line(1, 0, 0, 0)});
    ASSERT_EQ(ends.size(), 2u);
    ExpectPoint(ends[0], 2, 1);
    ExpectPoint(ends[1], 0, 0);
}

TEST(KrLineChain, PointsWithinTheToleranceAreOneAndTheFirstStandsForThem) {
    // The joint is given once as (1, 0) and once 0.5e-5 off: one point. The chain's start is
    // given as (0, 0), its end as (2 + 0.4e-5, 0).
    auto const ends = Ends({Line(0, 0, 1, 0), Line(1 + 0.5e-5, -0.5e-5, 2 + 0.4e-5, 0)});
    ASSERT_EQ(ends.size(), 2u);
    ExpectPoint(ends[0], 0, 0);
    ExpectPoint(ends[1], 2 + 0.4e-5, 0);
}

TEST(KrLineChain, AGapOfTheToleranceOrMoreLeavesFourEnds) {
    // 1e-5 apart is not equal (the tolerance is strict): the chain falls apart in two.
    auto const ends = Ends({Line(0, 0, 1, 0), Line(1 + 1e-5, 0, 2, 0)});
    ASSERT_EQ(ends.size(), 4u);
    ExpectPoint(ends[0], 0, 0);
    ExpectPoint(ends[1], 1, 0);
    ExpectPoint(ends[2], 1 + 1e-5, 0);
    ExpectPoint(ends[3], 2, 0);
}

TEST(KrLineChain, EqualityIsNotChained) {
    // A = (0, 0), B = A + 0.8e-5, C = B + 0.8e-5. B equals A and is taken as A; C equals B but
    // not A, and B was taken, so C is a point of its own: (5, 5) and C are the ends.
    auto const ends = Ends({Line(5, 5, 0, 0), Line(0.8e-5, 0, 1.6e-5, 0)});
    ASSERT_EQ(ends.size(), 2u);
    ExpectPoint(ends[0], 5, 5);
    ExpectPoint(ends[1], 1.6e-5, 0);
}

TEST(KrLineChain, AClosedChainGivesItsFirstStartAndLastEnd) {
    auto const ends = Ends({Line(0, 0, 1, 0), Line(1, 0, 1, 1), Line(1, 1, 0, 0)});
    ASSERT_EQ(ends.size(), 2u);
    ExpectPoint(ends[0], 0, 0);
    ExpectPoint(ends[1], 0, 0);
}

TEST(KrLineChain, ABranchingChainGivesEveryPointReachedAnOddNumberOfTimes) {
    // A Y: three lines from (0, 0), which three line ends reach: it counts as an end too.
    auto const ends = Ends({Line(0, 0, 1, 0), Line(0, 0, 0, 1), Line(-1, -1, 0, 0)});
    ASSERT_EQ(ends.size(), 4u);
    ExpectPoint(ends[0], 0, 0);
    ExpectPoint(ends[1], 1, 0);
    ExpectPoint(ends[2], 0, 1);
    ExpectPoint(ends[3], -1, -1);
}

TEST(KrLineChain, ALineOfZeroLengthIsAClosedChain) {
    auto const ends = Ends({Line(3, 4, 3, 4)});
    ASSERT_EQ(ends.size(), 2u);
    ExpectPoint(ends[0], 3, 4);
    ExpectPoint(ends[1], 3, 4);
}

TEST(KrLineChain, NoLinesReturnOneAndEndsAreAppendedToWhatIsThere) {
    std::vector<ALPoint> ends(1, ALPoint(9, 9, 9));
    EXPECT_EQ(KrLineChain::FindEnds({}, ends), 1);
    ASSERT_EQ(ends.size(), 1u);
    EXPECT_EQ(KrLineChain::FindEnds({Line(0, 0, 1, 0)}, ends), 0);
    ASSERT_EQ(ends.size(), 3u);
    ExpectPoint(ends[0], 9, 9);
    ExpectPoint(ends[1], 0, 0);
    ExpectPoint(ends[2], 1, 0);
}
