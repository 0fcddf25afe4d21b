// The quality report as the tool prints and writes it: the library's measures by segment id, the
// length deviation and crowded points in its JSON, and its lists on drawings with more pairs than
// a list keeps. The measures themselves are tested with the library (KrLayoutQuality_test).
#include "CappedList.h"
#include "LayoutType.h"
#include "QualityReport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using krtool::Point2;

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
