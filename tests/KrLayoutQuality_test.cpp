// The quality measures of a drawing on small drawings whose answers are worked out by hand: the
// clearance rule (which pairs of segments lie too close, and what the rule asks of them), crossings,
// overlaps and drawn lengths.
#include <krlayout/api/KrLayoutQuality.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace {

ALLine L(double x0, double y0, double x1, double y1)
{
    double const a[3] = {x0, y0, 0.0};
    double const b[3] = {x1, y1, 0.0};
    return ALLine(a, b);
}

struct Pt {
    double x;
    double y;
};

// A straight segment drawn where its sketch has it, its true length that of the line unless
// given.
KrLayoutQuality::Segment straight(Pt a, Pt b, double diameter, double length = -1.0)
{
    KrLayoutQuality::Segment s;
    s.diameter = diameter;
    s.length = length >= 0.0 ? length : std::hypot(b.x - a.x, b.y - a.y);
    s.sketch.push_back(L(a.x, a.y, b.x, b.y));
    s.lines.push_back(L(a.x, a.y, b.x, b.y));
    return s;
}

// The pairs closer than the clearance rule allows, in the order they are handed on.
std::vector<KrLayoutQuality::ClosePair> ClosePairs(std::vector<KrLayoutQuality::Segment> const& s,
                                                   double clearance)
{
    std::vector<KrLayoutQuality::ClosePair> out;
    KrLayoutQuality::Findings found;
    found.closePair = [&](KrLayoutQuality::ClosePair const& v) { out.push_back(v); };
    KrLayoutQuality quality;
    EXPECT_EQ(quality.Measure(s, clearance, found), 0);
    EXPECT_EQ(quality.closePairs, out.size());
    return out;
}

}  // namespace

TEST(KrLayoutQuality, ParallelSegmentsCloserThanTheClearance)
{
    // Two unconnected parallel segments 15 mm apart, 4 mm thick: the rule asks for
    // max(20 mm, (4 + 4) / 2 mm) = 20 mm.
    std::vector<KrLayoutQuality::Segment> s = {straight({0, 0}, {1, 0}, 0.004),
                                              straight({0, 0.015}, {1, 0.015}, 0.004)};
    auto v = ClosePairs(s, 0.02);
    ASSERT_EQ(v.size(), 1u);
    EXPECT_EQ(v[0].a, 0u);
    EXPECT_EQ(v[0].b, 1u);
    EXPECT_NEAR(v[0].distance, 0.015, 1e-12);
    EXPECT_NEAR(v[0].required, 0.02, 1e-12);

    // With 10 mm of clearance 15 mm is enough.
    EXPECT_TRUE(ClosePairs(s, 0.01).empty());
    // 15 mm is exactly the clearance: not closer than it.
    EXPECT_TRUE(ClosePairs(s, 0.015).empty());
}

TEST(KrLayoutQuality, ThickBundlesNeedHalfTheirDiametersSummed)
{
    // 25 mm apart, 30 mm and 24 mm thick: (30 + 24) / 2 = 27 mm > the 10 mm clearance.
    std::vector<KrLayoutQuality::Segment> s = {straight({0, 0}, {1, 0}, 0.030),
                                              straight({0.2, 0.025}, {0.6, 0.025}, 0.024)};
    auto v = ClosePairs(s, 0.01);
    ASSERT_EQ(v.size(), 1u);
    EXPECT_NEAR(v[0].distance, 0.025, 1e-12);
    EXPECT_NEAR(v[0].required, 0.027, 1e-12);
}

TEST(KrLayoutQuality, SegmentsThatMeetAreIgnored)
{
    // 0 and 1 share the end (0, 0) and open at 1 mm a metre: never a violation. 2 meets neither
    // and runs 5 mm above 1's far end.
    std::vector<KrLayoutQuality::Segment> s = {straight({0, 0}, {1, 0}, 0.004),
                                              straight({0, 0}, {1, 0.001}, 0.004),
                                              straight({0.9, 0.006}, {1.2, 0.006}, 0.004)};
    auto v = ClosePairs(s, 0.02);
    ASSERT_EQ(v.size(), 2u);
    EXPECT_EQ(v[0].a, 0u);
    EXPECT_EQ(v[0].b, 2u);
    EXPECT_NEAR(v[0].distance, 0.006, 1e-12);
    EXPECT_EQ(v[1].a, 1u);
    EXPECT_EQ(v[1].b, 2u);
    EXPECT_NEAR(v[1].distance, 0.005, 1e-12);
}

TEST(KrLayoutQuality, AShortSegmentBetweenLimitsTheRule)
{
    // A runs from (0, 0) to (1, 0), the 4 mm segment C up to (1, 0.004), and B back above A:
    // A and B lie 4 mm apart, which is all the rule can ask, C being 4 mm long.
    std::vector<KrLayoutQuality::Segment> s = {straight({0, 0}, {1, 0}, 0.004),
                                              straight({1, 0}, {1, 0.004}, 0.004),
                                              straight({1, 0.004}, {0, 0.004}, 0.004)};
    EXPECT_TRUE(ClosePairs(s, 0.02).empty());

    // C's true length is 10 mm (its sketch is crooked; drawn straight it is shorter): the rule
    // now asks 10 mm of A and B.
    s[1].length = 0.010;
    auto v = ClosePairs(s, 0.02);
    ASSERT_EQ(v.size(), 1u);
    EXPECT_EQ(v[0].a, 0u);
    EXPECT_EQ(v[0].b, 2u);
    EXPECT_NEAR(v[0].distance, 0.004, 1e-12);
    EXPECT_NEAR(v[0].required, 0.010, 1e-12);
}

TEST(KrLayoutQuality, TheShortestSegmentOnThePathCounts)
{
    // A - C1 (6 mm) - C2 (3 mm, back down along C1) - B. Each pair that does not meet gets the
    // shortest segment between its two:
    //   A and C2: C1 between, 6 mm asked; C2's far end is 3 mm above A's end.
    //   A and B: C1 and C2 between, 3 mm asked; B's far end is 2 mm above A.
    //   C1 and B: C2 between, 3 mm asked; B starts on C1's line (0 apart).
    std::vector<KrLayoutQuality::Segment> s = {
        straight({0, 0}, {0.5, 0}, 0.004),              // A
        straight({0.5, 0}, {0.5, 0.006}, 0.004),        // C1
        straight({0.5, 0.006}, {0.5, 0.003}, 0.004),    // C2
        straight({0.5, 0.003}, {0.2, 0.002}, 0.004)};   // B
    auto v = ClosePairs(s, 0.02);
    ASSERT_EQ(v.size(), 3u);
    EXPECT_EQ(v[0].a, 0u);
    EXPECT_EQ(v[0].b, 2u);
    EXPECT_NEAR(v[0].distance, 0.003, 1e-12);
    EXPECT_NEAR(v[0].required, 0.006, 1e-12);
    EXPECT_EQ(v[1].a, 0u);
    EXPECT_EQ(v[1].b, 3u);
    EXPECT_NEAR(v[1].distance, 0.002, 1e-12);
    EXPECT_NEAR(v[1].required, 0.003, 1e-12);
    EXPECT_EQ(v[2].a, 1u);
    EXPECT_EQ(v[2].b, 3u);
    EXPECT_NEAR(v[2].distance, 0.0, 1e-12);
    EXPECT_NEAR(v[2].required, 0.003, 1e-12);
}

TEST(KrLayoutQuality, EndsTouchingInTheDrawingOnlyAreAViolation)
{
    // The sketch keeps the two apart; the drawing puts the end of one on the other.
    std::vector<KrLayoutQuality::Segment> s = {straight({0, 0}, {1, 0}, 0.004),
                                              straight({0, 0.5}, {1, 0.5}, 0.004)};
    s[1].lines = {L(1, 0, 1, 0.3)};
    auto v = ClosePairs(s, 0.02);
    ASSERT_EQ(v.size(), 1u);
    EXPECT_EQ(v[0].distance, 0.0);
    EXPECT_NEAR(v[0].required, 0.02, 1e-12);
}

TEST(KrLayoutQuality, ACombWithOneLongerSpineSegment)
{
    // A spine of 200 segments, 10 mm each, along x with a 50 mm tooth up from every point.
    // Whatever does not meet is 10 mm or more apart with a 10 mm spine segment between: enough.
    // Then spine segment 100 is made 20 mm long in truth (still drawn 10 mm): the pairs with it
    // as the only segment between must keep 20 mm and are 10 mm apart: spines 99 and 101, spine
    // 99 and tooth 101, spine 101 and tooth 100, teeth 100 and 101. The deep spine takes the path
    // search through many levels.
    std::vector<KrLayoutQuality::Segment> s;
    size_t const n = 200;
    for (size_t i = 0; i < n; ++i)
        s.push_back(straight({0.01 * i, 0}, {0.01 * (i + 1), 0}, 0.002));
    for (size_t i = 0; i <= n; ++i)
        s.push_back(straight({0.01 * i, 0}, {0.01 * i, 0.05}, 0.002));
    EXPECT_TRUE(ClosePairs(s, 0.02).empty());
    s[100].length = 0.02;
    auto v = ClosePairs(s, 0.02);
    std::vector<std::pair<size_t, size_t>> const wanted = {
        {99, 101}, {99, n + 101}, {101, n + 100}, {n + 100, n + 101}};
    ASSERT_EQ(v.size(), wanted.size());
    for (size_t i = 0; i < wanted.size(); ++i) {
        EXPECT_EQ(v[i].a, wanted[i].first) << i;
        EXPECT_EQ(v[i].b, wanted[i].second) << i;
        EXPECT_NEAR(v[i].distance, 0.01, 1e-12) << i;
        EXPECT_NEAR(v[i].required, 0.02, 1e-12) << i;
    }
}

TEST(KrLayoutQuality, NoClearanceAndNoThicknessAskNothing)
{
    std::vector<KrLayoutQuality::Segment> s = {straight({0, 0}, {1, 0}, 0.0),
                                              straight({0, 0}, {1, 1}, 0.0),
                                              straight({0.5, -1}, {0.5, 1}, 0.0)};
    EXPECT_TRUE(ClosePairs(s, 0.0).empty());
}

TEST(KrLayoutQuality, HandsOnEachPairOnceInTheOrderOfTheSegments)
{
    // Segment 0 has two lines; both run within 20 mm of segment 1, the second closer (12 mm at
    // x = 2). Segment 2 lies 15 mm below segment 0 and 27 mm below segment 1.
    std::vector<KrLayoutQuality::Segment> s = {straight({0, 0}, {1, 0}, 0.004),
                                              straight({0, 0.015}, {1, 0.015}, 0.004),
                                              straight({0, -0.015}, {2, -0.015}, 0.004)};
    s[0].sketch.push_back(L(1, 0, 2, 0));
    s[0].lines.push_back(L(1, 0, 2, 0));
    s[1].sketch.push_back(L(1, 0.015, 2, 0.012));
    s[1].lines.push_back(L(1, 0.015, 2, 0.012));
    std::vector<KrLayoutQuality::ClosePair> seen;
    KrLayoutQuality::Findings found;
    found.closePair = [&](KrLayoutQuality::ClosePair const& v) { seen.push_back(v); };
    KrLayoutQuality().Measure(s, 0.02, found);
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].a, 0u);
    EXPECT_EQ(seen[0].b, 1u);
    EXPECT_NEAR(seen[0].distance, 0.012, 1e-12);
    EXPECT_EQ(seen[1].a, 0u);
    EXPECT_EQ(seen[1].b, 2u);
    EXPECT_NEAR(seen[1].distance, 0.015, 1e-12);
}

TEST(KrLayoutQuality, AClearanceThatIsNoNumberOrNegativeCountsAsZero)
{
    // 4 mm thick, 3 mm apart: (4 + 4) / 2 = 4 mm asked whatever the clearance.
    std::vector<KrLayoutQuality::Segment> s = {straight({0, 0}, {1, 0}, 0.004),
                                               straight({0, 0.003}, {1, 0.003}, 0.004)};
    for (double clearance : {-1.0, std::numeric_limits<double>::quiet_NaN(), 0.0}) {
        auto v = ClosePairs(s, clearance);
        ASSERT_EQ(v.size(), 1u) << clearance;
        EXPECT_NEAR(v[0].required, 0.004, 1e-12) << clearance;
    }
}

TEST(KrLayoutQuality, CrossingsAreCountedByPointAndByPairWithTheirPoints)
{
    // Segment 0 zigzags across the horizontal segment 1 twice: (0, -1) - (1, 1) - (2, -1) crosses
    // y = 0 at x = 0.5 and 1.5. Segment 2 crosses segment 1 once at x = 3.
    std::vector<KrLayoutQuality::Segment> s = {straight({0, -1}, {1, 1}, 0.0),
                                               straight({-1, 0}, {4, 0}, 0.0),
                                               straight({3, -1}, {3, 1}, 0.0)};
    s[0].sketch.push_back(L(1, 1, 2, -1));
    s[0].lines.push_back(L(1, 1, 2, -1));
    std::vector<KrLayoutQuality::Crossing> seen;
    KrLayoutQuality::Findings found;
    found.crossing = [&](KrLayoutQuality::Crossing const& c) { seen.push_back(c); };
    KrLayoutQuality q;
    EXPECT_EQ(q.Measure(s, 0.0, found), 0);
    EXPECT_EQ(q.crossingPoints, 3u);
    EXPECT_EQ(q.crossingPairs, 2u);
    ASSERT_EQ(seen.size(), 3u);
    // By a, then b, then the lines of a.
    EXPECT_EQ(std::make_pair(seen[0].a, seen[0].b), std::make_pair(size_t{0}, size_t{1}));
    EXPECT_DOUBLE_EQ(seen[0].x, 0.5);
    EXPECT_DOUBLE_EQ(seen[0].y, 0.0);
    EXPECT_EQ(std::make_pair(seen[1].a, seen[1].b), std::make_pair(size_t{0}, size_t{1}));
    EXPECT_DOUBLE_EQ(seen[1].x, 1.5);
    EXPECT_EQ(std::make_pair(seen[2].a, seen[2].b), std::make_pair(size_t{1}, size_t{2}));
    EXPECT_DOUBLE_EQ(seen[2].x, 3.0);
    EXPECT_EQ(q.overlappingPieces, 0u);
}

TEST(KrLayoutQuality, EndsTouchingAnotherLineAreNoCrossing)
{
    // A T and two segments meeting end to end: nothing crosses.
    std::vector<KrLayoutQuality::Segment> s = {straight({0, 0}, {2, 0}, 0.0), straight({1, 0}, {1, 1}, 0.0),
                                               straight({2, 0}, {3, 1}, 0.0)};
    KrLayoutQuality q;
    q.Measure(s, 0.0);
    EXPECT_EQ(q.crossingPoints, 0u);
    EXPECT_EQ(q.crossingPairs, 0u);
}

TEST(KrLayoutQuality, OverlapsAreTheCollinearStretchesOfDifferentSegments)
{
    // Segment 1 runs back over 0.5 of segment 0; segment 2 lies inside segment 0 over 0.25;
    // segment 3 continues segment 0 without sharing more than its end.
    std::vector<KrLayoutQuality::Segment> s = {straight({0, 0}, {2, 0}, 0.0), straight({2, 0}, {1.5, 0}, 0.0),
                                               straight({0.5, 0}, {0.75, 0}, 0.0), straight({2, 0}, {3, 0}, 0.0)};
    std::vector<KrLayoutQuality::Overlap> seen;
    KrLayoutQuality::Findings found;
    found.overlap = [&](KrLayoutQuality::Overlap const& o) { seen.push_back(o); };
    KrLayoutQuality q;
    q.Measure(s, 0.0, found);
    EXPECT_EQ(q.overlappingPieces, 2u);
    EXPECT_DOUBLE_EQ(q.overlapLength, 0.75);
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(std::make_pair(seen[0].a, seen[0].b), std::make_pair(size_t{0}, size_t{1}));
    EXPECT_DOUBLE_EQ(seen[0].length, 0.5);
    EXPECT_EQ(std::make_pair(seen[1].a, seen[1].b), std::make_pair(size_t{0}, size_t{2}));
    EXPECT_DOUBLE_EQ(seen[1].length, 0.25);
    EXPECT_EQ(q.crossingPoints, 0u);
}

TEST(KrLayoutQuality, DrawnLengthsAreSummedAndTheLargestDeviationIsRelative)
{
    // Segment 0: true 1.0, drawn 0.6 + 0.5 = 1.1: 10 %. Segment 1: true 0.2, drawn 0.25: 25 %.
    // Segment 2: no true length, left out of the deviation.
    std::vector<KrLayoutQuality::Segment> s = {straight({0, 0}, {0.6, 0}, 0.004, 1.0),
                                               straight({0, 0}, {-0.25, 0}, 0.004, 0.2),
                                               straight({0.6, 0.5}, {0.7, 0.5}, 0.004, 0.0)};
    s[0].sketch.push_back(L(0.6, 0, 0.6, 0.5));
    s[0].lines.push_back(L(0.6, 0, 0.6, 0.5));
    KrLayoutQuality q;
    q.Measure(s, 0.02);
    EXPECT_EQ(q.lines, 4u);
    ASSERT_EQ(q.drawnLengths.size(), 3u);
    EXPECT_DOUBLE_EQ(q.drawnLengths[0], 1.1);
    EXPECT_DOUBLE_EQ(q.drawnLengths[1], 0.25);
    EXPECT_NEAR(q.drawnLengths[2], 0.1, 1e-15);
    EXPECT_NEAR(q.largestLengthDeviation, 0.25, 1e-12);
    EXPECT_EQ(q.largestLengthDeviationSegment, 1u);
}

TEST(KrLayoutQuality, LinesThatAreNoNumbersAreCountedButMeetNothing)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    std::vector<KrLayoutQuality::Segment> s = {straight({0, 0}, {2, 0}, 0.004), straight({1, -1}, {1, 1}, 0.004)};
    s[1].lines = {L(1, -1, nan, 1)};
    KrLayoutQuality q;
    q.Measure(s, 0.02);
    EXPECT_EQ(q.lines, 2u);
    EXPECT_EQ(q.crossingPoints, 0u);
    EXPECT_EQ(q.closePairs, 0u);
    EXPECT_TRUE(std::isnan(q.drawnLengths[1]));
}

TEST(KrLayoutQuality, EveryFigureIsResetByTheNextMeasure)
{
    std::vector<KrLayoutQuality::Segment> tangled = {straight({0, 0}, {2, 2}, 0.004, 1.0),
                                                     straight({0, 2}, {2, 0}, 0.004)};
    KrLayoutQuality q;
    q.Measure(tangled, 0.02);
    EXPECT_EQ(q.crossingPairs, 1u);
    EXPECT_EQ(q.closePairs, 1u);
    EXPECT_GT(q.largestLengthDeviation, 0.0);
    q.Measure({}, 0.02);
    EXPECT_EQ(q.lines, 0u);
    EXPECT_EQ(q.crossingPairs, 0u);
    EXPECT_EQ(q.crossingPoints, 0u);
    EXPECT_EQ(q.closePairs, 0u);
    EXPECT_TRUE(q.drawnLengths.empty());
    EXPECT_EQ(q.largestLengthDeviation, 0.0);
    EXPECT_EQ(q.largestLengthDeviationSegment, 0u);
}
