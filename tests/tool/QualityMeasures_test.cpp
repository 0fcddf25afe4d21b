// The quality report's clearance rule and length deviation on small drawings whose answers are
// worked out by hand.
#include "ClearanceCheck.h"
#include "LayoutType.h"
#include "QualityReport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using krtool::ClearanceCheck;
using krtool::Point2;

// A straight segment drawn where its sketch has it, its true length that of the line unless
// given.
ClearanceCheck::Segment straight(Point2 a, Point2 b, double diameter, double length = -1.0)
{
    ClearanceCheck::Segment s;
    s.diameter = diameter;
    s.length = length >= 0.0 ? length : std::hypot(b.x - a.x, b.y - a.y);
    s.sketch.push_back({a, b});
    s.lines.push_back({a, b});
    return s;
}

TEST(ClearanceCheck, ParallelSegmentsCloserThanTheClearance)
{
    // Two unconnected parallel segments 15 mm apart, 4 mm thick: the rule asks for
    // max(20 mm, (4 + 4) / 2 mm) = 20 mm.
    std::vector<ClearanceCheck::Segment> s = {straight({0, 0}, {1, 0}, 0.004),
                                              straight({0, 0.015}, {1, 0.015}, 0.004)};
    auto v = ClearanceCheck::find(s, 0.02);
    ASSERT_EQ(v.size(), 1u);
    EXPECT_EQ(v[0].a, 0u);
    EXPECT_EQ(v[0].b, 1u);
    EXPECT_NEAR(v[0].distance, 0.015, 1e-12);
    EXPECT_NEAR(v[0].required, 0.02, 1e-12);

    // With 10 mm of clearance 15 mm is enough.
    EXPECT_TRUE(ClearanceCheck::find(s, 0.01).empty());
    // 15 mm is exactly the clearance: not closer than it.
    EXPECT_TRUE(ClearanceCheck::find(s, 0.015).empty());
}

TEST(ClearanceCheck, ThickBundlesNeedHalfTheirDiametersSummed)
{
    // 25 mm apart, 30 mm and 24 mm thick: (30 + 24) / 2 = 27 mm > the 10 mm clearance.
    std::vector<ClearanceCheck::Segment> s = {straight({0, 0}, {1, 0}, 0.030),
                                              straight({0.2, 0.025}, {0.6, 0.025}, 0.024)};
    auto v = ClearanceCheck::find(s, 0.01);
    ASSERT_EQ(v.size(), 1u);
    EXPECT_NEAR(v[0].distance, 0.025, 1e-12);
    EXPECT_NEAR(v[0].required, 0.027, 1e-12);
}

TEST(ClearanceCheck, SegmentsThatMeetAreIgnored)
{
    // 0 and 1 share the end (0, 0) and open at 1 mm a metre: never a violation. 2 meets neither
    // and runs 5 mm above 1's far end.
    std::vector<ClearanceCheck::Segment> s = {straight({0, 0}, {1, 0}, 0.004),
                                              straight({0, 0}, {1, 0.001}, 0.004),
                                              straight({0.9, 0.006}, {1.2, 0.006}, 0.004)};
    auto v = ClearanceCheck::find(s, 0.02);
    ASSERT_EQ(v.size(), 2u);
    EXPECT_EQ(v[0].a, 0u);
    EXPECT_EQ(v[0].b, 2u);
    EXPECT_NEAR(v[0].distance, 0.006, 1e-12);
    EXPECT_EQ(v[1].a, 1u);
    EXPECT_EQ(v[1].b, 2u);
    EXPECT_NEAR(v[1].distance, 0.005, 1e-12);
}

TEST(ClearanceCheck, AShortSegmentBetweenLimitsTheRule)
{
    // A runs from (0, 0) to (1, 0), the 4 mm segment C up to (1, 0.004), and B back above A:
    // A and B lie 4 mm apart, which is all the rule can ask, C being 4 mm long.
    std::vector<ClearanceCheck::Segment> s = {straight({0, 0}, {1, 0}, 0.004),
                                              straight({1, 0}, {1, 0.004}, 0.004),
                                              straight({1, 0.004}, {0, 0.004}, 0.004)};
    EXPECT_TRUE(ClearanceCheck::find(s, 0.02).empty());

    // C's true length is 10 mm (its sketch is crooked; drawn straight it is shorter): the rule
    // now asks 10 mm of A and B.
    s[1].length = 0.010;
    auto v = ClearanceCheck::find(s, 0.02);
    ASSERT_EQ(v.size(), 1u);
    EXPECT_EQ(v[0].a, 0u);
    EXPECT_EQ(v[0].b, 2u);
    EXPECT_NEAR(v[0].distance, 0.004, 1e-12);
    EXPECT_NEAR(v[0].required, 0.010, 1e-12);
}

TEST(ClearanceCheck, TheShortestSegmentOnThePathCounts)
{
    // A - C1 (6 mm) - C2 (3 mm, back down along C1) - B. Each pair that does not meet gets the
    // shortest segment between its two:
    //   A and C2: C1 between, 6 mm asked; C2's far end is 3 mm above A's end.
    //   A and B: C1 and C2 between, 3 mm asked; B's far end is 2 mm above A.
    //   C1 and B: C2 between, 3 mm asked; B starts on C1's line (0 apart).
    std::vector<ClearanceCheck::Segment> s = {
        straight({0, 0}, {0.5, 0}, 0.004),              // A
        straight({0.5, 0}, {0.5, 0.006}, 0.004),        // C1
        straight({0.5, 0.006}, {0.5, 0.003}, 0.004),    // C2
        straight({0.5, 0.003}, {0.2, 0.002}, 0.004)};   // B
    auto v = ClearanceCheck::find(s, 0.02);
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

TEST(ClearanceCheck, EndsTouchingInTheDrawingOnlyAreAViolation)
{
    // The sketch keeps the two apart; the drawing puts the end of one on the other.
    std::vector<ClearanceCheck::Segment> s = {straight({0, 0}, {1, 0}, 0.004),
                                              straight({0, 0.5}, {1, 0.5}, 0.004)};
    s[1].lines = {{{1, 0}, {1, 0.3}}};
    auto v = ClearanceCheck::find(s, 0.02);
    ASSERT_EQ(v.size(), 1u);
    EXPECT_EQ(v[0].distance, 0.0);
    EXPECT_NEAR(v[0].required, 0.02, 1e-12);
}

TEST(ClearanceCheck, ACombWithOneLongerSpineSegment)
{
    // A spine of 200 segments, 10 mm each, along x with a 50 mm tooth up from every point.
    // Whatever does not meet is 10 mm or more apart with a 10 mm spine segment between: enough.
    // Then spine segment 100 is made 20 mm long in truth (still drawn 10 mm): the pairs with it
    // as the only segment between must keep 20 mm and are 10 mm apart: spines 99 and 101, spine
    // 99 and tooth 101, spine 101 and tooth 100, teeth 100 and 101. The deep spine takes the path
    // search through many levels.
    std::vector<ClearanceCheck::Segment> s;
    size_t const n = 200;
    for (size_t i = 0; i < n; ++i)
        s.push_back(straight({0.01 * i, 0}, {0.01 * (i + 1), 0}, 0.002));
    for (size_t i = 0; i <= n; ++i)
        s.push_back(straight({0.01 * i, 0}, {0.01 * i, 0.05}, 0.002));
    EXPECT_TRUE(ClearanceCheck::find(s, 0.02).empty());
    s[100].length = 0.02;
    auto v = ClearanceCheck::find(s, 0.02);
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

TEST(ClearanceCheck, NoClearanceAndNoThicknessAskNothing)
{
    std::vector<ClearanceCheck::Segment> s = {straight({0, 0}, {1, 0}, 0.0),
                                              straight({0, 0}, {1, 1}, 0.0),
                                              straight({0.5, -1}, {0.5, 1}, 0.0)};
    EXPECT_TRUE(ClearanceCheck::find(s, 0.0).empty());
}

krtool::ResultSegment laidOut(long id, double length, double diameter,
                              std::vector<std::pair<Point2, Point2>> const& lines)
{
    krtool::ResultSegment s;
    s.id = id;
    s.length = length;
    s.diameter = diameter;
    for (auto const& l : lines) {
        krtool::ResultLine line;
        line.start = l.first;
        line.end = l.second;
        s.lines.push_back(line);
        s.inputLines.push_back(l);
    }
    return s;
}

TEST(QualityReport, LargestLengthDeviationIsRelative)
{
    // Segment 1: true 1.0, drawn 0.6 + 0.5 = 1.1: 10 %. Segment 2: true 0.2, drawn 0.25: 25 %.
    // Segment 3: no true length, left out.
    krtool::LayoutResult r;
    r.laidOut = true;
    r.clearance = 0.02;
    r.segments.push_back(laidOut(1, 1.0, 0.004, {{{0, 0}, {0.6, 0}}, {{0.6, 0}, {0.6, 0.5}}}));
    r.segments.push_back(laidOut(2, 0.2, 0.004, {{{0, 0}, {-0.25, 0}}}));
    r.segments.push_back(laidOut(3, 0.0, 0.004, {{{0.6, 0.5}, {0.7, 0.5}}}));
    auto const q = krtool::QualityReport::measure(r);
    EXPECT_NEAR(q.largestLengthDeviation(), 0.25, 1e-12);
    auto const j = q.toJson();
    EXPECT_NEAR(j["largest_length_deviation"].get<double>(), 0.25, 1e-12);
    EXPECT_EQ(j["clearance_violations"].get<size_t>(), 0u);
    EXPECT_EQ(j["clearance"].get<double>(), 0.02);
    // Crowded points belong to the board layout only.
    EXPECT_FALSE(j.contains("crowded_points"));
}

TEST(QualityReport, BoardLayoutReportsCrowdedPointsAndClosePairs)
{
    krtool::LayoutResult r;
    r.laidOut = true;
    r.layoutType = krtool::LayoutType::kBoard;
    r.clearance = 0.02;
    r.crowdedPoints = 3;
    r.segments.push_back(laidOut(7, 1.0, 0.004, {{{0, 0}, {1, 0}}}));
    r.segments.push_back(laidOut(9, 1.0, 0.004, {{{0, 0.015}, {1, 0.015}}}));
    auto const q = krtool::QualityReport::measure(r);
    ASSERT_EQ(q.clearanceViolations().count(), 1u);
    EXPECT_EQ(q.clearanceViolations().kept()[0].segmentA, 7);
    EXPECT_EQ(q.clearanceViolations().kept()[0].segmentB, 9);
    auto const j = q.toJson();
    EXPECT_EQ(j["crowded_points"].get<long>(), 3);
    EXPECT_EQ(j["clearance_violations"].get<size_t>(), 1u);
    EXPECT_NEAR(j["close_pairs"][0]["distance"].get<double>(), 0.015, 1e-12);
    EXPECT_NEAR(j["close_pairs"][0]["required"].get<double>(), 0.02, 1e-12);
    EXPECT_EQ(j["largest_length_deviation"].get<double>(), 0.0);
}

}  // namespace
