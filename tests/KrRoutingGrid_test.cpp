// Grid construction and node lookup: lattice rounding, creation-order matching, non-grid nodes,
// row numbers, registration, and the lookup index against a plain scan.
#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRoutingWayPoint.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace {

std::pair<double, double> At(KrRoutingWayPoint* p) {
    double x = 0.0;
    double y = 0.0;
    p->GetGridCoord(x, y);
    return {x, y};
}

void ExpectAt(KrRoutingWayPoint* p, double x, double y) {
    ASSERT_NE(p, nullptr);
    auto const xy = At(p);
    EXPECT_NEAR(xy.first, x, 1e-12);
    EXPECT_NEAR(xy.second, y, 1e-12);
}

std::vector<KrRoutingWayPoint*> Nodes(KrRoutingGrid& grid) {
    std::vector<KrRoutingWayPoint*> out;
    grid.GetAllWayPoint(out);
    return out;
}

// Random lookups around half-spacing ties, on both sides of the origin (negative lattice indices)
// and across many index blocks, against a scan of the nodes in creation order: roundsPerSpan
// lookups at each of the spacings in turn (changed with SetGridSpan, nodes kept).
void ExpectLookupsAgreeWithAScan(std::vector<std::pair<double, double>> const& spans,
                                 int roundsPerSpan, unsigned seed) {
    KrRoutingGrid grid;
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> half(-70, 70);
    double const jitter[] = {-2e-5, -1.1e-5, -9e-6, -5e-6, 0.0, 5e-6, 9e-6, 1.1e-5, 2e-5};
    std::uniform_int_distribution<int> pick(0, 8);
    for (std::size_t k = 0; k < spans.size(); ++k) {
        double const xs = spans[k].first;
        double const ys = spans[k].second;
        if (k == 0) {
            grid.CreateGrids(xs, ys, 0, 0, 0, 0);
        } else {
            grid.SetGridSpan(xs, ys);
        }
        for (int round = 0; round < roundsPerSpan; ++round) {
            double const x = half(rng) * xs * 0.5 + jitter[pick(rng)];
            double const y = half(rng) * ys * 0.5 + jitter[pick(rng)];
            std::vector<KrRoutingWayPoint*> before = Nodes(grid);
            KrRoutingWayPoint* expected = nullptr;
            for (KrRoutingWayPoint* node : before) {
                auto const g = At(node);
                if (KrGeoUtility::LessEqualThan(std::fabs(x - g.first), xs * 0.5, GEO_TOLERANCE) &&
                    KrGeoUtility::LessEqualThan(std::fabs(y - g.second), ys * 0.5, GEO_TOLERANCE)) {
                    expected = node;
                    break;
                }
            }
            KrRoutingWayPoint* got = nullptr;
            grid.GetGridNode(x, y, got);
            if (expected != nullptr) {
                ASSERT_EQ(got, expected) << "spacing " << xs << " round " << round << " at " << x << ", " << y;
            } else {
                ASSERT_EQ(std::find(before.begin(), before.end(), got), before.end());
                ASSERT_EQ(Nodes(grid).size(), before.size() + 1);
            }
        }
    }
}

}  // namespace

TEST(KrRoutingGrid, DefaultGridHasZeroSpacingNoNodesAndNoSketch) {
    KrRoutingGrid grid;
    double x = -1.0;
    double y = -1.0;
    EXPECT_EQ(grid.GetGridSpan(x, y), 0);
    EXPECT_EQ(x, 0.0);
    EXPECT_EQ(y, 0.0);
    EXPECT_TRUE(Nodes(grid).empty());
    KrSketch* sketch = reinterpret_cast<KrSketch*>(&grid);
    EXPECT_EQ(grid.GetSketch(sketch), 0);
    EXPECT_EQ(sketch, nullptr);
}

TEST(KrRoutingGrid, CreateGridsStoresSpacingsXFirst) {
    KrRoutingGrid grid;
    EXPECT_EQ(grid.CreateGrids(0.02, 0.03, 1, 2, 3, 4), 0);
    double x = 0.0;
    double y = 0.0;
    grid.GetGridSpan(x, y);
    EXPECT_EQ(x, 0.02);
    EXPECT_EQ(y, 0.03);
    EXPECT_EQ(grid.SetGridSpan(5.0, 7.0), 0);
    grid.GetGridSpan(x, y);
    EXPECT_EQ(x, 5.0);
    EXPECT_EQ(y, 7.0);
    EXPECT_EQ(grid.SetScale(1, 2, 3, 4), 0);
}

TEST(KrRoutingGrid, SketchBackPointerRoundTrips) {
    KrRoutingGrid grid;
    int anchor = 0;
    KrSketch* sketch = reinterpret_cast<KrSketch*>(&anchor);
    EXPECT_EQ(grid.SetSketch(sketch), 0);
    KrSketch* back = nullptr;
    grid.GetSketch(back);
    EXPECT_EQ(back, sketch);
}

TEST(KrRoutingGrid, CopyAndAssignmentCopySpacingsAndSketch) {
    KrRoutingGrid grid;
    grid.CreateGrids(0.5, 0.25, 0, 0, 0, 0);
    int anchor = 0;
    grid.SetSketch(reinterpret_cast<KrSketch*>(&anchor));
    KrRoutingGrid copy(grid);
    double x = 0.0;
    double y = 0.0;
    copy.GetGridSpan(x, y);
    EXPECT_EQ(x, 0.5);
    EXPECT_EQ(y, 0.25);
    KrSketch* s = nullptr;
    copy.GetSketch(s);
    EXPECT_EQ(s, reinterpret_cast<KrSketch*>(&anchor));
    KrRoutingGrid assigned;
    assigned = grid;
    assigned.GetGridSpan(x, y);
    EXPECT_EQ(x, 0.5);
    EXPECT_EQ(y, 0.25);
    assigned.GetSketch(s);
    EXPECT_EQ(s, reinterpret_cast<KrSketch*>(&anchor));
}

TEST(KrRoutingGrid, GetGridNodeCreatesRoundedNodeAndFindsItAgain) {
    KrRoutingGrid grid;
    grid.CreateGrids(0.02, 0.02, 0, 0, 0, 0);
    KrRoutingWayPoint* a = nullptr;
    // 0.01 / 0.02 + 0.5 = 1 -> x = 0.02; 0 / 0.02 + 0.5 = 0.5 -> y = 0.
    EXPECT_EQ(grid.GetGridNode(0.01, 0, a), 0);
    ExpectAt(a, 0.02, 0.0);
    // |0.011 - 0.02| = 0.009 <= 0.01 and |0.001| <= 0.01: the same node.
    KrRoutingWayPoint* b = nullptr;
    grid.GetGridNode(0.011, 0.001, b);
    EXPECT_EQ(b, a);
    EXPECT_EQ(Nodes(grid).size(), 1u);
}

TEST(KrRoutingGrid, GetGridNodeRoundsNegativeHalvesAwayFromZero) {
    KrRoutingGrid grid;
    grid.CreateGrids(0.02, 0.02, 0, 0, 0, 0);
    KrRoutingWayPoint* n = nullptr;
    // -0.03 / 0.02 - 0.5 = -2 -> x = -0.04.
    grid.GetGridNode(-0.03, 0, n);
    ExpectAt(n, -0.04, 0.0);
    int row = 0;
    // floor(-0.05 / 0.02 + 0.5) = floor(-2) = -2.
    EXPECT_EQ(grid.GetRowNum(-0.05, row), 0);
    EXPECT_EQ(row, -2);
}

TEST(KrRoutingGrid, GridNodeRoundsHalvesAwayFromZeroWhileRowNumRoundsThemUp) {
    KrRoutingGrid grid;
    grid.CreateGrids(1.0, 1.0, 0, 0, 0, 0);
    KrRoutingWayPoint* n = nullptr;
    grid.GetGridNode(0, -2.5, n);  // -2.5 - 0.5 = -3
    ExpectAt(n, 0.0, -3.0);
    grid.GetGridNode(0, 2.5, n);  // 2.5 + 0.5 = 3
    ExpectAt(n, 0.0, 3.0);
    int row = 0;
    grid.GetRowNum(-2.5, row);  // floor(-2.0) = -2
    EXPECT_EQ(row, -2);
    grid.GetRowNum(2.5, row);  // floor(3.0) = 3
    EXPECT_EQ(row, 3);
    grid.GetRowNum(-2.6, row);  // floor(-2.1) = -3
    EXPECT_EQ(row, -3);
    grid.GetRowNum(0.49, row);  // floor(0.99) = 0
    EXPECT_EQ(row, 0);
}

TEST(KrRoutingGrid, GetGridNodeUsesEachAxisOwnSpacing) {
    KrRoutingGrid grid;
    grid.CreateGrids(2.0, 3.0, 0, 0, 0, 0);
    KrRoutingWayPoint* n = nullptr;
    // x: 5 / 2 + 0.5 = 3 -> 6; y: 4 / 3 + 0.5 = 1.83 -> 1 -> 3.
    grid.GetGridNode(5, 4, n);
    ExpectAt(n, 6.0, 3.0);
    int row = 0;
    grid.GetRowNum(4.0, row);  // floor(4 / 3 + 0.5) = floor(1.83) = 1
    EXPECT_EQ(row, 1);
}

TEST(KrRoutingGrid, PointHalfWayBetweenTwoNodesGoesToTheEarlierCreated) {
    KrRoutingGrid grid;
    grid.CreateGrids(1.0, 1.0, 0, 0, 0, 0);
    KrRoutingWayPoint* left = nullptr;
    KrRoutingWayPoint* right = nullptr;
    grid.GetGridNode(0, 0, left);
    grid.GetGridNode(1, 0, right);
    KrRoutingWayPoint* n = nullptr;
    grid.GetGridNode(0.5, 0, n);  // |0.5 - 0| = 0.5 <= 0.5: the first created wins
    EXPECT_EQ(n, left);

    KrRoutingGrid other;
    other.CreateGrids(1.0, 1.0, 0, 0, 0, 0);
    other.GetGridNode(1, 0, right);
    other.GetGridNode(0, 0, left);
    other.GetGridNode(0.5, 0, n);  // now (1, 0) is the earlier one
    EXPECT_EQ(n, right);
}

TEST(KrRoutingGrid, MatchWindowIsHalfASpacingWidenedByTheTolerance) {
    KrRoutingGrid grid;
    grid.CreateGrids(1.0, 1.0, 0, 0, 0, 0);
    KrRoutingWayPoint* left = nullptr;
    KrRoutingWayPoint* right = nullptr;
    grid.GetGridNode(0, 0, left);
    grid.GetGridNode(1, 0, right);
    KrRoutingWayPoint* n = nullptr;
    grid.GetGridNode(0.500009, 0, n);  // 0.500009 - 0.5 < 1e-5: still (0, 0)
    EXPECT_EQ(n, left);
    grid.GetGridNode(0.50002, 0, n);  // outside (0, 0)'s window, inside (1, 0)'s
    EXPECT_EQ(n, right);
    EXPECT_EQ(Nodes(grid).size(), 2u);
}

TEST(KrRoutingGrid, GetNonGridNodeCreatesLatticeNodeAndReturnsOffLatticePoint) {
    KrRoutingGrid grid;
    grid.CreateGrids(0.02, 0.02, 0, 0, 0, 0);
    KrRoutingWayPoint* p = nullptr;
    EXPECT_EQ(grid.GetNonGridNode(0.005, 0, p), 0);
    ExpectAt(p, 0.005, 0.0);
    auto nodes = Nodes(grid);
    ASSERT_EQ(nodes.size(), 1u);  // the lattice node (0, 0), created as a side effect
    ExpectAt(nodes[0], 0.0, 0.0);
    EXPECT_NE(nodes[0], p);
    bool nonGrid = false;
    grid.IsNonGridNode(p, nonGrid);
    EXPECT_TRUE(nonGrid);
    grid.IsNonGridNode(nodes[0], nonGrid);
    EXPECT_FALSE(nonGrid);

    KrRoutingWayPoint* again = nullptr;
    grid.GetNonGridNode(0.005, 0, again);
    EXPECT_EQ(again, p);
    EXPECT_EQ(Nodes(grid).size(), 1u);
}

TEST(KrRoutingGrid, GetNonGridNodeMatchesWithinTheToleranceOnly) {
    KrRoutingGrid grid;
    grid.CreateGrids(0.02, 0.02, 0, 0, 0, 0);
    KrRoutingWayPoint* p = nullptr;
    grid.GetNonGridNode(0.005, 0.003, p);
    KrRoutingWayPoint* q = nullptr;
    grid.GetNonGridNode(0.005009, 0.002991, q);  // both axes within 1e-5
    EXPECT_EQ(q, p);
    grid.GetNonGridNode(0.00502, 0.003, q);  // x off by 2e-5: a new point
    EXPECT_NE(q, p);
    ExpectAt(q, 0.00502, 0.003);
}

TEST(KrRoutingGrid, GetNonGridNodeOnTheLatticeReturnsTheGridNode) {
    KrRoutingGrid grid;
    grid.CreateGrids(0.02, 0.02, 0, 0, 0, 0);
    KrRoutingWayPoint* p = nullptr;
    grid.GetNonGridNode(0.04, -0.02, p);
    ExpectAt(p, 0.04, -0.02);
    bool nonGrid = true;
    grid.IsNonGridNode(p, nonGrid);
    EXPECT_FALSE(nonGrid);
    KrRoutingWayPoint* g = nullptr;
    grid.GetGridNode(0.04, -0.02, g);
    EXPECT_EQ(g, p);
}

TEST(KrRoutingGrid, GetNonGridNodeReturnsTheFirstRegisteredEqualPoint) {
    KrRoutingGrid grid;
    grid.CreateGrids(1.0, 1.0, 0, 0, 0, 0);
    auto* first = new KrRoutingWayPoint();
    first->SetGridCoord(0.3, 0.3);
    auto* second = new KrRoutingWayPoint();
    second->SetGridCoord(0.300001, 0.3);
    grid.AddNonNodePoint(first);
    grid.AddNonNodePoint(second);
    KrRoutingWayPoint* p = nullptr;
    grid.GetNonGridNode(0.300001, 0.3, p);
    EXPECT_EQ(p, first);
}

TEST(KrRoutingGrid, AddNonNodePointKeepsOneEntryPerPointer) {
    KrRoutingWayPoint* p = nullptr;
    {
        KrRoutingGrid grid;
        grid.CreateGrids(1.0, 1.0, 0, 0, 0, 0);
        p = new KrRoutingWayPoint();
        p->SetGridCoord(0.25, 0.75);
        EXPECT_EQ(grid.AddNonNodePoint(p), 0);
        EXPECT_EQ(grid.AddNonNodePoint(p), 0);
        bool nonGrid = false;
        grid.IsNonGridNode(p, nonGrid);
        EXPECT_TRUE(nonGrid);
        KrRoutingWayPoint* q = nullptr;
        grid.GetNonGridNode(0.25, 0.75, q);
        EXPECT_EQ(q, p);
        // Leaving the scope deletes p once; a second entry would be a double delete.
    }
}

TEST(KrRoutingGrid, AddNonNodePointRejectsNull) {
    KrRoutingGrid grid;
    EXPECT_EQ(grid.AddNonNodePoint(nullptr), 1);
}

TEST(KrRoutingGrid, GridNodeRegisteredAsNonGridNodeIsDeletedOnce) {
    KrRoutingGrid grid;
    grid.CreateGrids(1.0, 1.0, 0, 0, 0, 0);
    KrRoutingWayPoint* n = nullptr;
    grid.GetGridNode(2, 3, n);
    EXPECT_EQ(grid.AddNonNodePoint(n), 0);
    bool nonGrid = false;
    grid.IsNonGridNode(n, nonGrid);
    EXPECT_TRUE(nonGrid);
}

TEST(KrRoutingGrid, IsNonGridNodeWithNullReturnsOneAndLeavesResult) {
    KrRoutingGrid grid;
    bool result = true;
    EXPECT_EQ(grid.IsNonGridNode(nullptr, result), 1);
    EXPECT_TRUE(result);
    KrRoutingWayPoint foreign;
    EXPECT_EQ(grid.IsNonGridNode(&foreign, result), 0);
    EXPECT_FALSE(result);
}

TEST(KrRoutingGrid, GetAllWayPointAppendsGridNodesOnlyInCreationOrder) {
    KrRoutingGrid grid;
    grid.CreateGrids(1.0, 1.0, 0, 0, 0, 0);
    KrRoutingWayPoint* a = nullptr;
    KrRoutingWayPoint* b = nullptr;
    KrRoutingWayPoint* off = nullptr;
    grid.GetGridNode(3, 0, a);
    grid.GetGridNode(-1, 2, b);
    grid.GetNonGridNode(4.4, 0.25, off);  // also creates the lattice node (4, 0)
    KrRoutingWayPoint sentinel;
    std::vector<KrRoutingWayPoint*> out{&sentinel};
    EXPECT_EQ(grid.GetAllWayPoint(out), 0);
    ASSERT_EQ(out.size(), 4u);
    EXPECT_EQ(out[0], &sentinel);
    EXPECT_EQ(out[1], a);
    EXPECT_EQ(out[2], b);
    ExpectAt(out[3], 4.0, 0.0);
    EXPECT_EQ(std::find(out.begin(), out.end(), off), out.end());
}

TEST(KrRoutingGrid, ArrangeVectorDoesNothing) {
    KrRoutingGrid grid;
    KrRoutingWayPoint a;
    KrRoutingWayPoint b;
    std::vector<KrRoutingWayPoint*> v{&b, &a};
    EXPECT_EQ(grid.ArrangeVector(v, true, false), 0);
    EXPECT_EQ(grid.ArrangeVector(v, false, true), 0);
    ASSERT_EQ(v.size(), 2u);
    EXPECT_EQ(v[0], &b);
    EXPECT_EQ(v[1], &a);
}

TEST(KrRoutingGrid, ChangingTheSpacingKeepsNodesAndWidensTheirWindow) {
    KrRoutingGrid grid;
    grid.CreateGrids(1.0, 1.0, 0, 0, 0, 0);
    KrRoutingWayPoint* n0 = nullptr;
    KrRoutingWayPoint* n1 = nullptr;
    KrRoutingWayPoint* n2 = nullptr;
    grid.GetGridNode(0, 0, n0);
    grid.GetGridNode(1, 0, n1);
    grid.GetGridNode(2, 0, n2);
    grid.SetGridSpan(3.0, 3.0);  // windows are now 1.5 wide on each side
    KrRoutingWayPoint* n = nullptr;
    grid.GetGridNode(1.2, 0, n);  // |1.2 - 0| <= 1.5: the first node
    EXPECT_EQ(n, n0);
    grid.GetGridNode(2.9, 0, n);  // 2.9 and 1.9 are too far; |2.9 - 2| = 0.9
    EXPECT_EQ(n, n2);
    grid.GetGridNode(-1.6, 1.4, n);  // nothing within 1.5 in x: new node at (-3, 0)
    ExpectAt(n, -3.0, 0.0);
    EXPECT_EQ(Nodes(grid).size(), 4u);
}

TEST(KrRoutingGrid, NodesFarOutsideTheIndexRangeAreStillFound) {
    KrRoutingGrid grid;
    grid.CreateGrids(1e10, 1e10, 0, 0, 0, 0);
    KrRoutingWayPoint* far = nullptr;
    grid.GetGridNode(1e19, 0, far);  // 1e9 + 0.5 -> 1e9 -> x = 1e19
    ExpectAt(far, 1e19, 0.0);
    grid.SetGridSpan(1e-3, 1e-3);  // 1e19 / 1e-3 is beyond any index cell
    KrRoutingWayPoint* n = nullptr;
    grid.GetGridNode(1e19, 0, n);
    EXPECT_EQ(n, far);
    grid.GetGridNode(0, 0, n);
    EXPECT_NE(n, far);
    ExpectAt(n, 0.0, 0.0);
}

// Index cells stop at 2^50 cells from the origin; a node stored just past that (it became an
// outlier when the spacing shrank) must still be found from a query just inside it.
TEST(KrRoutingGrid, NodeJustPastTheLastIndexCellIsFoundFromJustInside) {
    KrRoutingGrid grid;
    grid.CreateGrids(1024.0, 1024.0, 0, 0, 0, 0);
    double const g = 1100000000.0 * 1024.0;
    KrRoutingWayPoint* far = nullptr;
    grid.GetGridNode(g, 0, far);
    ExpectAt(far, g, 0.0);
    // Cell size = spacing + 2e-5 = g / (2^50 + 0.25): the node sits at cell 2^50.
    double const cell = g / (1125899906842624.0 + 0.25);
    double const span = cell - 2e-5;
    grid.SetGridSpan(span, span);
    double const x = g - 0.45 * (std::fabs(span) + 2e-5);  // |x - g| < span / 2
    KrRoutingWayPoint* n = nullptr;
    grid.GetGridNode(x, 0, n);
    EXPECT_EQ(n, far);
}

TEST(KrRoutingGrid, LatticeIndexSaturatesAtTheIntRange) {
    KrRoutingGrid grid;
    grid.CreateGrids(1.0, 1.0, 0, 0, 0, 0);
    KrRoutingWayPoint* n = nullptr;
    grid.GetGridNode(1e300, -1e300, n);
    ExpectAt(n, 2147483647.0, -2147483648.0);
    grid.GetGridNode(std::numeric_limits<double>::infinity(), 0, n);
    ExpectAt(n, 2147483647.0, 0.0);

    KrRoutingGrid tiny;
    tiny.CreateGrids(1e-300, 1.0, 0, 0, 0, 0);
    tiny.GetGridNode(1e10, 0, n);  // 1e310 overflows to infinity, clamped to INT_MAX
    ExpectAt(n, 2147483647.0 * 1e-300, 0.0);
}

TEST(KrRoutingGrid, RowNumSaturatesAndMapsNaNToZero) {
    KrRoutingGrid grid;
    grid.CreateGrids(1.0, 1.0, 0, 0, 0, 0);
    int row = 5;
    grid.GetRowNum(1e20, row);
    EXPECT_EQ(row, INT_MAX);
    grid.GetRowNum(-1e20, row);
    EXPECT_EQ(row, INT_MIN);
    grid.GetRowNum(std::nan(""), row);
    EXPECT_EQ(row, 0);
    KrRoutingGrid zero;
    zero.CreateGrids(0.0, 0.0, 0, 0, 0, 0);
    zero.GetRowNum(1.0, row);  // 1 / 0 = inf
    EXPECT_EQ(row, INT_MAX);
    zero.GetRowNum(0.0, row);  // 0 / 0 = NaN
    EXPECT_EQ(row, 0);
}

TEST(KrRoutingGrid, ZeroSpacingLookupsStayDefined) {
    KrRoutingGrid grid;  // spacing 0 until set
    KrRoutingWayPoint* n = nullptr;
    grid.GetGridNode(0.5, -0.5, n);  // index +-inf clamps, times 0 gives 0
    ExpectAt(n, 0.0, 0.0);
    KrRoutingWayPoint* same = nullptr;
    grid.GetGridNode(0.000005, 0.0, same);  // within the tolerance of (0, 0)
    EXPECT_EQ(same, n);
    KrRoutingWayPoint* p = nullptr;
    grid.GetNonGridNode(0.5, -0.5, p);
    ExpectAt(p, 0.5, -0.5);
}

TEST(KrRoutingGrid, NaNSpacingLookupsDoNotCrash) {
    KrRoutingGrid grid;
    grid.CreateGrids(std::nan(""), std::nan(""), 0, 0, 0, 0);
    KrRoutingWayPoint* a = nullptr;
    grid.GetGridNode(1.0, 2.0, a);
    ASSERT_NE(a, nullptr);
    KrRoutingWayPoint* b = nullptr;
    grid.GetGridNode(std::nan(""), 7.0, b);
    ASSERT_NE(b, nullptr);
    int row = 3;
    grid.GetRowNum(2.0, row);
    EXPECT_EQ(row, 0);
}

// The index must answer exactly as a scan of the nodes in creation order, also for points
// right on the edge of a window and after the spacing changed under existing nodes.
// Nodes made at one spacing are found from the next ones (windows of the new half spacing).
TEST(KrRoutingGrid, IndexedLookupAgreesWithAScanInCreationOrder) {
    ExpectLookupsAgreeWithAScan({{0.7, 0.3}, {1.1, 0.45}, {0.35, 0.9}}, 1000, 12345);
}

TEST(KrRoutingGrid, IndexedNonGridLookupAgreesWithAScanInInsertionOrder) {
    KrRoutingGrid grid;
    grid.CreateGrids(1.0, 1.0, 0, 0, 0, 0);
    std::mt19937 rng(777);
    std::uniform_int_distribution<int> base(0, 20);
    double const jitter[] = {-1.5e-5, -1e-5, -6e-6, -3e-6, 0.0, 3e-6, 6e-6, 1e-5, 1.5e-5};
    std::uniform_int_distribution<int> pick(0, 8);
    std::vector<KrRoutingWayPoint*> registered;
    for (int round = 0; round < 2000; ++round) {
        // Off-lattice positions on a 0.1 raster, jittered around the tolerance.
        double const x = 0.05 + base(rng) * 0.1 + jitter[pick(rng)];
        double const y = 0.05 + base(rng) * 0.1 + jitter[pick(rng)];
        KrRoutingWayPoint* expected = nullptr;
        for (KrRoutingWayPoint* p : registered) {
            auto const g = At(p);
            if (KrGeoUtility::IsEqual(g.first, x, GEO_TOLERANCE) &&
                KrGeoUtility::IsEqual(g.second, y, GEO_TOLERANCE)) {
                expected = p;
                break;
            }
        }
        KrRoutingWayPoint* got = nullptr;
        grid.GetNonGridNode(x, y, got);
        if (expected != nullptr) {
            ASSERT_EQ(got, expected) << "round " << round;
        } else {
            ASSERT_EQ(std::find(registered.begin(), registered.end(), got), registered.end());
            registered.push_back(got);
        }
    }
}

// 100,000 nodes, each found again from a quarter spacing away; how long it takes is measured by
// the benchmarks, not here.
TEST(KrRoutingGrid, HundredThousandNodesAreEachFoundAgain) {
    KrRoutingGrid grid;
    grid.CreateGrids(0.02, 0.02, 0, 0, 0, 0);
    std::vector<KrRoutingWayPoint*> created;
    created.reserve(100000);
    for (int i = 0; i < 400; ++i) {
        for (int j = 0; j < 250; ++j) {
            KrRoutingWayPoint* n = nullptr;
            grid.GetGridNode(i * 0.02, j * 0.02, n);
            created.push_back(n);
        }
    }
    ASSERT_EQ(Nodes(grid).size(), 100000u);
    std::size_t k = 0;
    for (int i = 0; i < 400; ++i) {
        for (int j = 0; j < 250; ++j) {
            KrRoutingWayPoint* n = nullptr;
            grid.GetGridNode(i * 0.02 + 0.004, j * 0.02 - 0.004, n);
            ASSERT_EQ(n, created[k]);
            ++k;
        }
    }
    for (int i = 0; i < 1000; ++i) {
        KrRoutingWayPoint* p = nullptr;
        grid.GetNonGridNode(i * 0.02 + 0.005, 0.003, p);
    }
    // Each non-grid lookup makes the lattice node it rounds to if it is missing: (i, 0) exists for
    // i < 400, so only columns 400 to 999 of row 0 are new.
    EXPECT_EQ(Nodes(grid).size(), 100600u);
}


// The grid's usual spacings (lattice index) and ones below 1e-3, where the tolerance reaches
// past the neighbouring nodes (cell index): both answer as the scan does.
TEST(KrRoutingGrid, LookupsOnAFixedLatticeAgreeWithAScanOnBothSidesOfTheOrigin) {
    ExpectLookupsAgreeWithAScan({{0.02, 0.02}}, 3000, 1);
    ExpectLookupsAgreeWithAScan({{0.05, 0.013}}, 3000, 2);
    ExpectLookupsAgreeWithAScan({{1.0, 3.0}}, 3000, 3);
    ExpectLookupsAgreeWithAScan({{5e-4, 2e-5}}, 3000, 4);
}

// Worked by hand: on a 0.02 grid the nodes at x = 0 and x = 0.02 both lie half a spacing from
// x = 0.01; the one created first is returned, whichever side of the tie it is on.
TEST(KrRoutingGrid, HalfSpacingTieOnTheLatticeGoesToTheEarlierNode) {
    KrRoutingGrid grid;
    grid.CreateGrids(0.02, 0.02, 0, 0, 0, 0);
    KrRoutingWayPoint* right = nullptr;
    KrRoutingWayPoint* left = nullptr;
    grid.GetGridNode(0.02, -0.16, right);
    grid.GetGridNode(0.0, -0.16, left);
    KrRoutingWayPoint* n = nullptr;
    grid.GetGridNode(0.01, -0.16, n);
    EXPECT_EQ(n, right);
    // Across a block edge on the negative side: -0.16 and -0.18 are rows -8 and -9.
    KrRoutingWayPoint* low = nullptr;
    KrRoutingWayPoint* high = nullptr;
    grid.GetGridNode(0.3, -0.18, low);
    grid.GetGridNode(0.3, -0.16, high);
    grid.GetGridNode(0.3, -0.17, n);
    EXPECT_EQ(n, low);
}

TEST(KrRoutingGrid, OnlyTheRegisteredObjectIsANonGridNodeNotACopyOfIt) {
    KrRoutingGrid grid;
    grid.CreateGrids(1.0, 1.0, 0, 0, 0, 0);
    KrRoutingWayPoint* off = nullptr;
    grid.GetNonGridNode(0.5, 0.25, off);
    KrRoutingWayPoint* node = nullptr;
    grid.GetGridNode(0.0, 0.0, node);
    KrRoutingWayPoint copy(*off);
    bool result = true;
    grid.IsNonGridNode(off, result);
    EXPECT_TRUE(result);
    grid.IsNonGridNode(&copy, result);
    EXPECT_FALSE(result);
    grid.IsNonGridNode(node, result);
    EXPECT_FALSE(result);
    // A point registered with one grid is a non-grid node of that grid only; a copy of it of none.
    KrRoutingGrid other;
    KrRoutingWayPoint* extra = new KrRoutingWayPoint();
    grid.AddNonNodePoint(extra);
    KrRoutingWayPoint copied;
    copied = *extra;
    grid.IsNonGridNode(extra, result);
    EXPECT_TRUE(result);
    other.IsNonGridNode(extra, result);
    EXPECT_FALSE(result);
    grid.IsNonGridNode(&copied, result);
    EXPECT_FALSE(result);
}
