// The board layout: hand-worked drawings, the direction set, edge cases, and properties over
// thousands of random trees checked from the drawn lines alone.
#include "FormboardCheck.h"
#include "HarnessTree.h"
#include "Watchdog.h"

#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/layout/KrFormboardLayout.h>
#include <krlayout/model/ALLine.h>
#include <krlayout/sketch/KrSketch.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstdint>
#include <vector>

namespace {

using harness::TreeSegment;

ALPoint Pt(double x, double y) { return ALPoint(x, y, 0.0); }

// Builds the checked sketch of `tree` on a grid of `grid` and lays it out; the status of LayOut.
struct Board {
    KrSketch sketch;
    KrFormboardLayout layout;
    std::vector<TreeSegment> tree;
    int status = -1;

    Board(std::vector<TreeSegment> const& input, double grid, double clearance = -1.0) : tree(input) {
        EXPECT_EQ(harness::BuildCheckedSketch(tree, grid, sketch), 0);
        layout.SetClearance(clearance);
        status = layout.LayOut(&sketch);
    }
    ALLine Line(long id) {
        std::vector<ALLine> lines;
        sketch.GetLinesByRouteId(id, lines);
        EXPECT_EQ(lines.size(), 1u) << "segment " << id;
        return lines.empty() ? ALLine() : lines.front();
    }
    long Crowded() {
        long n = -1;
        layout.GetCrowdedPointCount(n);
        return n;
    }
    board::Report Check() {
        double c = 0.0;
        layout.GetUsedClearance(c);
        return board::Check(sketch, tree, c);
    }
};

void ExpectLine(ALLine const& l, double x0, double y0, double x1, double y1) {
    EXPECT_NEAR(l.start.x, x0, 1e-12);
    EXPECT_NEAR(l.start.y, y0, 1e-12);
    EXPECT_NEAR(l.end.x, x1, 1e-12);
    EXPECT_NEAR(l.end.y, y1, 1e-12);
}

double const h = std::sqrt(0.5);

}  // namespace

TEST(KrFormboardLayout, NullSketchReturnsOne) {
    KrFormboardLayout layout;
    EXPECT_EQ(layout.LayOut(nullptr), 1);
}

TEST(KrFormboardLayout, SketchWithoutGridReturnsOne) {
    KrSketch sketch;
    KrFormboardLayout layout;
    EXPECT_EQ(layout.LayOut(&sketch), 1);
}

TEST(KrFormboardLayout, EmptySketchIsLeftUntouched) {
    KrSketch sketch;
    sketch.CreateGrid(0.02, 0.02);
    KrFormboardLayout layout;
    EXPECT_EQ(layout.LayOut(&sketch), 0);
    long placed = -1;
    layout.GetPlacedSegmentCount(placed);
    EXPECT_EQ(placed, 0);
    KrRoutingGrid* grid = nullptr;
    sketch.GetGrid(grid);
    std::vector<KrRoutingWayPoint*> nodes;
    grid->GetAllWayPoint(nodes);
    EXPECT_TRUE(nodes.empty());
}

TEST(KrFormboardLayout, ClearanceDefaultsToTheLargerGridSpacingAndCanBeSet) {
    std::vector<TreeSegment> tree{{1, 1.0, 0.01, Pt(0, 0), Pt(1, 0)}};
    Board a(tree, 0.02);
    double used = 0.0;
    a.layout.GetUsedClearance(used);
    EXPECT_DOUBLE_EQ(used, 0.02);

    KrFormboardLayout layout;
    double c = 0.0;
    layout.GetClearance(c);
    EXPECT_EQ(c, -1.0);
    layout.SetClearance(0.005);
    layout.GetClearance(c);
    EXPECT_EQ(c, 0.005);
    layout.SetClearance(std::nan(""));
    layout.GetClearance(c);
    EXPECT_EQ(c, -1.0);
    layout.SetClearance(-3.0);
    layout.GetClearance(c);
    EXPECT_EQ(c, -1.0);
}

TEST(KrFormboardLayout, OneSegmentRunsFromTheOriginTowardMinusXAtItsTrueLength) {
    Board b({{1, 0.737, 0.01, Pt(3, 4), Pt(5, 6)}}, 0.02);
    EXPECT_EQ(b.status, 0);
    ExpectLine(b.Line(1), 0, 0, -0.737, 0);
    std::vector<KrRouteSegment*> segs;
    b.sketch.GetAllSegments(segs);
    ASSERT_EQ(segs.size(), 1u);
    e_AngleArea type = e_AngleAreaNone;
    segs[0]->GetType(type);
    EXPECT_EQ(type, e_AngleAreaRoot);
    bool redefined = false;
    segs[0]->IsRedefine(redefined);
    EXPECT_TRUE(redefined);
}

// A Y: the root, then the thicker branch straight on and the thinner one turned left in the
// root's frame (the root runs toward -x, so left is -y).
TEST(KrFormboardLayout, YBranchesStraightOnThenLeft) {
    Board b({{1, 1.0, 0.030, Pt(0, 0), Pt(1, 0)},
             {2, 0.5, 0.020, Pt(1, 0), Pt(2, 0)},
             {3, 0.3, 0.010, Pt(1, 0), Pt(1, 1)}},
            0.02);
    ExpectLine(b.Line(1), 0, 0, -1, 0);
    ExpectLine(b.Line(2), -1, 0, -1.5, 0);
    ExpectLine(b.Line(3), -1, 0, -1, -0.3);
    EXPECT_EQ(b.Crowded(), 0);
    EXPECT_TRUE(b.Check().Clean()) << b.Check().first;
}

// A star of 8: the root and seven bare ends at its far end take the seven directions in order of
// diameter: straight on, left, right, front diagonals, back diagonals.
TEST(KrFormboardLayout, StarOfEightTakesTheSevenDirectionsInOrder) {
    std::vector<TreeSegment> tree{{1, 1.0, 0.030, Pt(0, 0), Pt(1, 0)}};
    for (long k = 2; k <= 8; ++k) {
        tree.push_back({k, 0.4, 0.021 - 0.001 * static_cast<double>(k), Pt(1, 0), Pt(1 + 0.1 * k, 2)});
    }
    Board b(tree, 0.02);
    ExpectLine(b.Line(2), -1, 0, -1.4, 0);
    ExpectLine(b.Line(3), -1, 0, -1, -0.4);
    ExpectLine(b.Line(4), -1, 0, -1, 0.4);
    ExpectLine(b.Line(5), -1, 0, -1 - 0.4 * h, -0.4 * h);
    ExpectLine(b.Line(6), -1, 0, -1 - 0.4 * h, 0.4 * h);
    ExpectLine(b.Line(7), -1, 0, -1 + 0.4 * h, -0.4 * h);
    ExpectLine(b.Line(8), -1, 0, -1 + 0.4 * h, 0.4 * h);
    EXPECT_EQ(b.Crowded(), 0);
    EXPECT_TRUE(b.Check().Clean()) << b.Check().first;
}

// A comb: a trunk of three segments with a tooth at each inner joint and one at the root's start.
TEST(KrFormboardLayout, CombKeepsTheTrunkStraightWithTeethAtTheJoints) {
    Board b({{1, 1.0, 0.030, Pt(0, 0), Pt(1, 0)},
             {2, 1.0, 0.029, Pt(1, 0), Pt(2, 0)},
             {3, 1.0, 0.028, Pt(2, 0), Pt(3, 0)},
             {4, 0.3, 0.005, Pt(1, 0), Pt(1, 1)},
             {5, 0.3, 0.005, Pt(2, 0), Pt(2, 1)},
             {6, 0.3, 0.005, Pt(0, 0), Pt(0, 1)}},
            0.02);
    ExpectLine(b.Line(1), 0, 0, -1, 0);
    ExpectLine(b.Line(2), -1, 0, -2, 0);
    ExpectLine(b.Line(3), -2, 0, -3, 0);
    ExpectLine(b.Line(4), -1, 0, -1, -0.3);
    ExpectLine(b.Line(5), -2, 0, -2, -0.3);
    ExpectLine(b.Line(6), 0, 0, 0.3, 0);
    EXPECT_EQ(b.Crowded(), 0);
    EXPECT_TRUE(b.Check().Clean()) << b.Check().first;
}

// A long chain continues straight on: every joint lies at the running sum of the lengths.
TEST(KrFormboardLayout, LongChainLiesOnOneLineAtTheRunningSums) {
    std::vector<TreeSegment> tree;
    for (long k = 1; k <= 200; ++k) {
        tree.push_back({k, 0.01 * static_cast<double>(k % 17 + 1), 0.04 - 0.0001 * static_cast<double>(k),
                        Pt(static_cast<double>(k), 0), Pt(static_cast<double>(k + 1), 0)});
    }
    Board b(tree, 0.02);
    double x = 0.0;
    for (long k = 1; k <= 200; ++k) {
        double const next = x - tree[static_cast<std::size_t>(k - 1)].length;
        ALLine const l = b.Line(k);
        EXPECT_EQ(l.start.x, x);
        EXPECT_EQ(l.end.x, next);
        EXPECT_EQ(l.start.y, 0.0);
        EXPECT_EQ(l.end.y, 0.0);
        x = next;
    }
    EXPECT_TRUE(b.Check().Clean()) << b.Check().first;
}

// A branch whose subtree would reach back over the segment it hangs off is mirrored or turned so
// that it keeps the clearance: the box checks see the whole subtree.
TEST(KrFormboardLayout, SubtreesKeepClearOfTheirSiblingsSubtrees) {
    // At the root's far end: a trunk (straight on) that turns up after 0.1 with a 1 m branch, and
    // a side branch of 0.05 carrying a 1 m segment; drawn naively the two 1 m segments would cross.
    Board b({{1, 1.0, 0.030, Pt(0, 0), Pt(1, 0)},
             {2, 0.1, 0.020, Pt(1, 0), Pt(2, 0)},
             {3, 1.0, 0.019, Pt(2, 0), Pt(2, 1)},
             {4, 0.2, 0.018, Pt(2, 0), Pt(3, 0)},
             {5, 0.05, 0.010, Pt(1, 0), Pt(1, 1)},
             {6, 1.0, 0.009, Pt(1, 1), Pt(1, 2)},
             {7, 0.3, 0.008, Pt(1, 1), Pt(0, 1)}},
            0.02);
    EXPECT_EQ(b.Crowded(), 0);
    board::Report const r = b.Check();
    EXPECT_TRUE(r.Clean()) << r.first;
}

TEST(KrFormboardLayout, DirectionsAreTheSevenMainOnesUpToSevenChildren) {
    std::vector<std::uint32_t> d;
    KrFormboardLayout::GetDirections(3, d);
    std::uint32_t const e = 1u << 29;
    EXPECT_EQ(d, (std::vector<std::uint32_t>{0u, 2 * e, 6 * e, e, 7 * e, 3 * e, 5 * e}));
    KrFormboardLayout::GetDirections(7, d);
    EXPECT_EQ(d.size(), 7u);
}

TEST(KrFormboardLayout, FanHasADirectionForEveryChildAndNeverPointsBack) {
    for (long children : {8L, 9L, 12L, 13L, 49L, 50L, 1000L}) {
        std::vector<std::uint32_t> d;
        KrFormboardLayout::GetDirections(children, d);
        EXPECT_GE(static_cast<long>(d.size()), children);
        std::vector<std::uint32_t> sorted = d;
        std::sort(sorted.begin(), sorted.end());
        EXPECT_EQ(std::adjacent_find(sorted.begin(), sorted.end()), sorted.end()) << "repeated direction";
        for (std::size_t i = 0; i < d.size(); ++i) {
            EXPECT_NE(d[i], 1u << 31) << "backward";
            if (i >= 7) {
                // Fan directions stay within three eighths of a turn of straight on.
                std::int64_t const signedTurn = static_cast<std::int32_t>(d[i]);
                EXPECT_LE(std::llabs(signedTurn), 3LL << 29);
            }
        }
    }
    // Eight children take the fan of 16 steps of 22.5 degrees: straight on and six steps to each
    // side reach 135 degrees, thirteen directions, the seven main ones first.
    std::vector<std::uint32_t> d;
    KrFormboardLayout::GetDirections(8, d);
    EXPECT_EQ(d.size(), 13u);
    EXPECT_EQ(d[7], 1u << 28);
    EXPECT_EQ(d[8], static_cast<std::uint32_t>(-(1 << 28)));
}

TEST(KrFormboardLayout, StarOfFiftyFansItsBareEndsOut) {
    std::vector<TreeSegment> tree{{1, 1.0, 0.030, Pt(0, 0), Pt(1, 0)}};
    for (long k = 2; k <= 51; ++k) {
        tree.push_back({k, 0.001 * static_cast<double>(k), 0.005, Pt(1, 0), Pt(1 + 0.01 * k, 3)});
    }
    Board b(tree, 0.02);
    long placed = 0;
    b.layout.GetPlacedSegmentCount(placed);
    EXPECT_EQ(placed, 51);
    EXPECT_EQ(b.Crowded(), 0);
    board::Report const r = b.Check();
    EXPECT_TRUE(r.Clean()) << r.first;
}

TEST(KrFormboardLayout, StarOfFiveThousandEndsWithEverySegmentPlaced) {
    layout_test::Watchdog dog(std::chrono::seconds(120));
    std::vector<TreeSegment> tree{{1, 1.0, 0.030, Pt(0, 0), Pt(1, 0)}};
    for (long k = 2; k <= 5001; ++k) {
        tree.push_back({k, 0.5, 0.005, Pt(1, 0), Pt(1 + 0.001 * k, 3)});
    }
    Board b(tree, 0.02);
    long placed = 0;
    b.layout.GetPlacedSegmentCount(placed);
    EXPECT_EQ(placed, 5001);
    board::Report const r = b.Check();
    EXPECT_EQ(r.missing, 0);
    EXPECT_LT(r.worstLengthError, 1e-9);
    EXPECT_EQ(r.sharedOverlaps, 0);
}

// Properties over random trees. Always: every segment laid out at its true length, no two
// segments leaving a point in the same direction. Wherever the layout reports no crowded point:
// every line axis-parallel or 45 degrees (fans of bare ends apart) and every clearance kept.
namespace {

struct Tally {
    long trees = 0;
    long uncrowded = 0;
};

void CheckTree(std::vector<TreeSegment> const& tree, double grid, Tally& tally, char const* what, unsigned seed) {
    Board b(tree, grid);
    ASSERT_EQ(b.status, 0);
    board::Report const r = b.Check();
    ++tally.trees;
    EXPECT_EQ(r.segments, static_cast<long>(tree.size())) << what << " seed " << seed;
    EXPECT_EQ(r.missing, 0) << what << " seed " << seed << ": " << r.first;
    EXPECT_LT(r.worstLengthError, 1e-9) << what << " seed " << seed << ": " << r.first;
    EXPECT_EQ(r.sharedOverlaps, 0) << what << " seed " << seed << ": " << r.first;
    if (b.Crowded() == 0) {
        ++tally.uncrowded;
        EXPECT_EQ(r.badDirections, 0) << what << " seed " << seed << ": " << r.first;
        EXPECT_EQ(r.clearanceBreaks, 0) << what << " seed " << seed << ": " << r.first;
    }
}

}  // namespace

TEST(KrFormboardLayoutProperties, RandomBoardTreesKeepLengthsAndUncrowdedOnesKeepEveryClearance) {
    layout_test::Watchdog dog(std::chrono::seconds(600));
    Tally tally;
    for (unsigned seed = 1; seed <= 2000; ++seed) {
        int const n = seed % 100 == 0 ? 2000 : seed % 10 == 0 ? 300 : static_cast<int>(2 + seed % 60);
        CheckTree(harness::BoardTree(seed, n), 0.02, tally, "board", seed);
    }
    RecordProperty("uncrowded", static_cast<int>(tally.uncrowded));
    std::printf("board trees: %ld of %ld without a crowded point\n", tally.uncrowded, tally.trees);
    EXPECT_GT(tally.uncrowded, 0);
}

TEST(KrFormboardLayoutProperties, HarnessTreesKeepLengthsAndUncrowdedOnesKeepEveryClearance) {
    layout_test::Watchdog dog(std::chrono::seconds(600));
    Tally tally;
    for (unsigned seed = 1; seed <= 1000; ++seed) {
        int const n = seed % 100 == 0 ? 2000 : static_cast<int>(10 + seed % 150);
        CheckTree(harness::HarnessTree(seed, n), 0.02, tally, "harness", seed);
    }
    std::printf("harness trees: %ld of %ld without a crowded point\n", tally.uncrowded, tally.trees);
    EXPECT_GT(tally.uncrowded, 0);
}
