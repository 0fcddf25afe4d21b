// The quality report's clearance rule and length deviation on small drawings whose answers are
// worked out by hand, and its lists on drawings with more pairs than a list keeps.
#include "CappedList.h"
#include "ClearanceCheck.h"
#include "LayoutType.h"
#include "QualityReport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <utility>
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

TEST(ClearanceCheck, HandsOnEachPairOnceInTheOrderOfTheSegments)
{
    // Segment 0 has two lines; both run within 20 mm of segment 1, the second closer (12 mm at
    // x = 2). Segment 2 lies 15 mm below segment 0 and 27 mm below segment 1.
    std::vector<ClearanceCheck::Segment> s = {straight({0, 0}, {1, 0}, 0.004),
                                              straight({0, 0.015}, {1, 0.015}, 0.004),
                                              straight({0, -0.015}, {2, -0.015}, 0.004)};
    s[0].sketch.push_back({{1, 0}, {2, 0}});
    s[0].lines.push_back({{1, 0}, {2, 0}});
    s[1].sketch.push_back({{1, 0.015}, {2, 0.012}});
    s[1].lines.push_back({{1, 0.015}, {2, 0.012}});
    std::vector<ClearanceCheck::Violation> seen;
    ClearanceCheck::find(s, 0.02, [&](ClearanceCheck::Violation const& v) { seen.push_back(v); });
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].a, 0u);
    EXPECT_EQ(seen[0].b, 1u);
    EXPECT_NEAR(seen[0].distance, 0.012, 1e-12);
    EXPECT_EQ(seen[1].a, 0u);
    EXPECT_EQ(seen[1].b, 2u);
    EXPECT_NEAR(seen[1].distance, 0.015, 1e-12);
}

TEST(CappedList, CountsEveryEntryAndKeepsOnlyTheFirstUpToTheCap)
{
    krtool::CappedList<int> list(3);
    EXPECT_EQ(list.cap(), 3u);
    EXPECT_FALSE(list.truncated());
    list.add(10);
    list.add(11);
    EXPECT_EQ(list.count(), 2u);
    EXPECT_FALSE(list.truncated());
    // Exactly as many as the cap: all kept, nothing cut.
    list.add(12);
    EXPECT_EQ(list.count(), 3u);
    EXPECT_EQ(list.kept(), (std::vector<int>{10, 11, 12}));
    EXPECT_FALSE(list.truncated());
    // Past the cap: counted, not kept.
    list.add(13);
    list.add(14);
    EXPECT_EQ(list.count(), 5u);
    EXPECT_EQ(list.kept(), (std::vector<int>{10, 11, 12}));
    EXPECT_TRUE(list.truncated());
}

TEST(CappedList, ACapOfZeroCountsWithoutKeeping)
{
    krtool::CappedList<int> list(0);
    EXPECT_FALSE(list.truncated());
    list.add(1);
    EXPECT_EQ(list.count(), 1u);
    EXPECT_TRUE(list.kept().empty());
    EXPECT_TRUE(list.truncated());
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

// 40 horizontal segments (ids 1 .. 40, y = 0, 0.1, ...) across 40 vertical ones (ids 101 .. 140):
// 1,600 crossings, one for every pair of a horizontal and a vertical, and as many pairs closer
// than the clearance (0 apart; no two meet).
krtool::LayoutResult lattice()
{
    krtool::LayoutResult r;
    r.laidOut = true;
    r.clearance = 0.02;
    for (int i = 0; i < 40; ++i)
        r.segments.push_back(laidOut(1 + i, 4.1, 0.004, {{{-0.05, 0.1 * i}, {4.05, 0.1 * i}}}));
    for (int i = 0; i < 40; ++i)
        r.segments.push_back(laidOut(101 + i, 4.1, 0.004, {{{0.1 * i, -0.05}, {0.1 * i, 4.05}}}));
    return r;
}

TEST(QualityReport, CrossingsAndClosePairsPastTheListLimitAreCountedExactly)
{
    auto const q = krtool::QualityReport::measure(lattice());
    EXPECT_EQ(krtool::QualityReport::kListed, 1000u);
    EXPECT_EQ(q.crossingPairs(), 1600u);
    EXPECT_EQ(q.crossings().count(), 1600u);
    EXPECT_EQ(q.clearanceViolations().count(), 1600u);
    EXPECT_EQ(q.overlaps().count(), 0u);

    auto const j = q.toJson();
    EXPECT_EQ(j["list_limit"].get<size_t>(), 1000u);
    EXPECT_EQ(j["crossing_pairs"].get<size_t>(), 1600u);
    EXPECT_EQ(j["crossing_points"].get<size_t>(), 1600u);
    EXPECT_EQ(j["clearance_violations"].get<size_t>(), 1600u);
    EXPECT_EQ(j["overlapping_pieces"].get<size_t>(), 0u);
}

TEST(QualityReport, ListsStopAtTheListLimitInTheOrderOfTheSegments)
{
    auto const q = krtool::QualityReport::measure(lattice());
    ASSERT_EQ(q.crossings().kept().size(), 1000u);
    ASSERT_EQ(q.clearanceViolations().kept().size(), 1000u);
    // By the first segment of a pair, then the second: horizontals 1 .. 25 with every vertical.
    for (size_t k = 0; k < 1000; ++k) {
        long const a = 1 + static_cast<long>(k / 40);
        long const b = 101 + static_cast<long>(k % 40);
        auto const& c = q.crossings().kept()[k];
        ASSERT_EQ(std::make_pair(c.segmentA, c.segmentB), std::make_pair(a, b)) << k;
        EXPECT_NEAR(c.at.x, 0.1 * (k % 40), 1e-12) << k;
        EXPECT_NEAR(c.at.y, 0.1 * (k / 40), 1e-12) << k;
        auto const& p = q.clearanceViolations().kept()[k];
        ASSERT_EQ(std::make_pair(p.segmentA, p.segmentB), std::make_pair(a, b)) << k;
        EXPECT_EQ(p.distance, 0.0) << k;
    }

    auto const j = q.toJson();
    EXPECT_EQ(j["crossings"].size(), 1000u);
    EXPECT_EQ(j["close_pairs"].size(), 1000u);
    EXPECT_EQ(j["crossings"][999]["segments"], nlohmann::ordered_json::array({25, 140}));
    EXPECT_EQ(j["close_pairs"][999]["segments"], nlohmann::ordered_json::array({25, 140}));
}

TEST(QualityReport, TruncatedIsSetOnlyWhenAListIsCut)
{
    // Cut: 1,600 found, 1,000 listed.
    auto const j = krtool::QualityReport::measure(lattice()).toJson();
    EXPECT_TRUE(j["crossings_truncated"].get<bool>());
    EXPECT_TRUE(j["close_pairs_truncated"].get<bool>());
    EXPECT_FALSE(j["overlaps_truncated"].get<bool>());  // none found

    // A limit of exactly the count lists everything and cuts nothing; one less cuts.
    auto const whole = krtool::QualityReport::measure(lattice(), 1600).toJson();
    EXPECT_EQ(whole["list_limit"].get<size_t>(), 1600u);
    EXPECT_EQ(whole["crossings"].size(), 1600u);
    EXPECT_FALSE(whole["crossings_truncated"].get<bool>());
    EXPECT_FALSE(whole["close_pairs_truncated"].get<bool>());
    auto const cut = krtool::QualityReport::measure(lattice(), 1599).toJson();
    EXPECT_EQ(cut["crossings"].size(), 1599u);
    EXPECT_EQ(cut["crossing_points"].get<size_t>(), 1600u);
    EXPECT_TRUE(cut["crossings_truncated"].get<bool>());
    EXPECT_TRUE(cut["close_pairs_truncated"].get<bool>());

    // A small drawing: nothing cut.
    krtool::LayoutResult r;
    r.laidOut = true;
    r.clearance = 0.02;
    r.segments.push_back(laidOut(1, 1.0, 0.004, {{{0, 0}, {1, 0}}}));
    r.segments.push_back(laidOut(2, 1.0, 0.004, {{{0.5, -0.5}, {0.5, 0.5}}}));
    auto const small = krtool::QualityReport::measure(r).toJson();
    EXPECT_EQ(small["crossing_points"].get<size_t>(), 1u);
    EXPECT_EQ(small["crossings"].size(), 1u);
    EXPECT_FALSE(small["crossings_truncated"].get<bool>());
    EXPECT_FALSE(small["overlaps_truncated"].get<bool>());
    EXPECT_FALSE(small["close_pairs_truncated"].get<bool>());
}

TEST(QualityReport, OverlapsPastTheListLimitAreCountedWithTheirWholeLength)
{
    // 50 segments along y = 0, each 1 long and 1 mm right of the one before: every two of them
    // share a stretch, 1,225 pieces in all.
    krtool::LayoutResult r;
    r.laidOut = true;
    r.clearance = 0.02;
    double wanted = 0.0;
    for (int i = 0; i < 50; ++i) {
        r.segments.push_back(laidOut(1 + i, 1.0, 0.004, {{{0.001 * i, 0}, {1 + 0.001 * i, 0}}}));
        for (int k = 0; k < i; ++k)
            wanted += 1.0 - 0.001 * (i - k);
    }
    auto const q = krtool::QualityReport::measure(r);
    EXPECT_EQ(q.overlaps().count(), 1225u);
    EXPECT_EQ(q.overlaps().kept().size(), 1000u);
    EXPECT_TRUE(q.overlaps().truncated());
    EXPECT_NEAR(q.overlapLength(), wanted, 1e-9);
    EXPECT_EQ(q.crossings().count(), 0u);
    EXPECT_EQ(q.clearanceViolations().count(), 1225u);

    auto const j = q.toJson();
    EXPECT_EQ(j["overlapping_pieces"].get<size_t>(), 1225u);
    EXPECT_EQ(j["overlaps"].size(), 1000u);
    EXPECT_TRUE(j["overlaps_truncated"].get<bool>());
    EXPECT_NEAR(j["overlap_length"].get<double>(), wanted, 1e-9);
    // The first pairs are those of segment 1, with 2, 3, ...
    EXPECT_EQ(j["overlaps"][0]["segments"], nlohmann::ordered_json::array({1, 2}));
    EXPECT_EQ(j["overlaps"][48]["segments"], nlohmann::ordered_json::array({1, 50}));
    EXPECT_EQ(j["overlaps"][49]["segments"], nlohmann::ordered_json::array({2, 3}));
}

TEST(QualityReport, PrintedReportGivesTheFullCountsAndTheFirstEntries)
{
    std::ostringstream out;
    krtool::QualityReport::measure(lattice()).print(out, "m");
    std::string const text = out.str();
    EXPECT_NE(text.find("crossing pairs:      1600 (1600 crossing points)"), std::string::npos)
        << text;
    EXPECT_NE(text.find("1600 pairs of segments closer than the rule allows"), std::string::npos);
    EXPECT_NE(text.find("    segments 1 and 101 at (0.000, 0.000)"), std::string::npos);
    EXPECT_NE(text.find("    ... and 1580 more"), std::string::npos);
}

}  // namespace
