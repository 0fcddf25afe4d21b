// The routing sketch as a store: grid, lookups by id, way point ownership, connectors, bends and
// the degenerate list.
#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/model/ALLine.h>
#include <krlayout/model/ALPoint.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/sketch/IRoutingSketch.h>
#include <krlayout/sketch/KrRouteBends.h>
#include <krlayout/sketch/KrRoutingSketchLineEnd.h>
#include <krlayout/sketch/KrSketch.h>

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <type_traits>
#include <vector>

namespace {

// A way point that the sketch owns from now on.
KrRoutingWayPoint* Owned(KrSketch& sk, double x, double y)
{
    KrRoutingWayPoint* p = new KrRoutingWayPoint(ALPoint(x, y, 0.0));
    sk.AddPoint(p);
    return p;
}

double LengthOf(KrRouteSegment* s)
{
    double l = -1.0;
    s->GetLength(l);
    return l;
}

}  // namespace

TEST(KrSketch, GetGridBeforeCreateGridGivesNullAndZero)
{
    KrSketch sk;
    KrRoutingGrid other;
    KrRoutingGrid* g = &other;
    EXPECT_EQ(0, sk.GetGrid(g));
    EXPECT_EQ(nullptr, g);
}

TEST(KrSketch, GetGridNodeBeforeCreateGridFailsWithNullNode)
{
    KrSketch sk;
    KrRoutingWayPoint dummy;
    KrRoutingWayPoint* node = &dummy;
    EXPECT_EQ(1, sk.GetGridNode(0.0, 0.0, node));
    EXPECT_EQ(nullptr, node);
}

TEST(KrSketch, GetGridXSpacingBeforeCreateGridFailsAndLeavesValue)
{
    KrSketch sk;
    double x = 42.0;
    EXPECT_EQ(1, sk.GetGridXSpacing(x));
    EXPECT_EQ(42.0, x);
}

TEST(KrSketch, CreateGridSetsBothSpacingsAndTheBackPointer)
{
    KrSketch sk;
    EXPECT_EQ(0, sk.CreateGrid(0.03, 0.05));
    KrRoutingGrid* g = nullptr;
    sk.GetGrid(g);
    ASSERT_NE(nullptr, g);
    double x = 0.0;
    double y = 0.0;
    g->GetGridSpan(x, y);
    EXPECT_EQ(0.03, x);
    EXPECT_EQ(0.05, y);
    KrSketch* back = nullptr;
    g->GetSketch(back);
    EXPECT_EQ(&sk, back);
    double sx = 0.0;
    EXPECT_EQ(0, sk.GetGridXSpacing(sx));
    EXPECT_EQ(0.03, sx);
}

TEST(KrSketch, CreateGridAgainReplacesTheGridAndItsNodes)
{
    KrSketch sk;
    sk.CreateGrid(0.02, 0.02);
    KrRoutingWayPoint* first = nullptr;
    sk.GetGridNode(0.0, 0.0, first);
    ASSERT_NE(nullptr, first);
    // The old grid and its node are freed here (the sanitizer run checks for leaks).
    EXPECT_EQ(0, sk.CreateGrid(0.5, 0.25));
    KrRoutingGrid* g = nullptr;
    sk.GetGrid(g);
    ASSERT_NE(nullptr, g);
    double x = 0.0;
    double y = 0.0;
    g->GetGridSpan(x, y);
    EXPECT_EQ(0.5, x);
    EXPECT_EQ(0.25, y);
    std::vector<KrRoutingWayPoint*> nodes;
    g->GetAllWayPoint(nodes);
    EXPECT_TRUE(nodes.empty());
}

TEST(KrSketch, GetGridNodeForwardsToTheGrid)
{
    // Spacing 0.02: 0.01 / 0.02 + 0.5 = 1, so the node (0.02, 0) is created; (0.011, 0.001)
    // lies within half a spacing of it and finds the same node.
    KrSketch sk;
    sk.CreateGrid(0.02, 0.02);
    KrRoutingWayPoint* a = nullptr;
    KrRoutingWayPoint* b = nullptr;
    EXPECT_EQ(0, sk.GetGridNode(0.01, 0.0, a));
    EXPECT_EQ(0, sk.GetGridNode(0.011, 0.001, b));
    ASSERT_NE(nullptr, a);
    EXPECT_EQ(a, b);
    double x = 0.0;
    double y = 1.0;
    a->GetGridCoord(x, y);
    EXPECT_NEAR(0.02, x, 1e-12);
    EXPECT_NEAR(0.0, y, 1e-12);
}

TEST(KrSketch, CreateRouteSegmentKeepsIdLengthAndDiameter)
{
    KrSketch sk;
    EXPECT_EQ(0, sk.CreateRouteSegment(-7, 2.5, 0.75));
    KrRouteSegment* s = nullptr;
    ASSERT_EQ(0, sk.GetRouteSegmentById(-7, s));
    ASSERT_NE(nullptr, s);
    EXPECT_EQ(-7, s->GetId());
    EXPECT_EQ(2.5, LengthOf(s));
    double d = 0.0;
    s->GetDiameter(d);
    EXPECT_EQ(0.75, d);
}

TEST(KrSketch, TwoSegmentsWithOneIdAreBothKeptAndLookupsFindTheFirst)
{
    KrSketch sk;
    sk.CreateRouteSegment(5, 1.0, 1.0);
    sk.CreateRouteSegment(5, 2.0, 2.0);
    std::vector<long> ids;
    sk.GetAllRouteSegment(ids);
    EXPECT_EQ((std::vector<long>{5, 5}), ids);

    KrRouteSegment* s = nullptr;
    ASSERT_EQ(0, sk.GetRouteSegmentById(5, s));
    EXPECT_EQ(1.0, LengthOf(s));

    // The per-id operations go through the same lookup: the first segment gets the line ids.
    KrRoutingWayPoint* a = Owned(sk, 0, 0);
    KrRoutingWayPoint* b = Owned(sk, 1, 0);
    std::vector<KrRouteSegment*> all;
    sk.GetAllSegments(all);
    ASSERT_EQ(2u, all.size());
    std::vector<KrRoutingWayPoint*> pts{a, b};
    sk.ConnectSegment(all[0], pts);
    std::vector<KrRoutingWayPoint*> pts2{b, a};
    sk.ConnectSegment(all[1], pts2);
    std::vector<std::pair<long, long>> ids2{{1, 2}};
    sk.SetCADLineIdByRouteId(5, ids2);
    std::vector<std::pair<long, long>> got;
    EXPECT_EQ(0, sk.GetCADLineIdByRouteId(5, got));
    EXPECT_EQ(ids2, got);
}

TEST(KrSketch, GetRouteSegmentByIdUnknownNullsThePointerAndFails)
{
    KrSketch sk;
    sk.CreateRouteSegment(1, 1.0, 1.0);
    KrRouteSegment dummy(9, 0, 0);
    KrRouteSegment* s = &dummy;
    EXPECT_EQ(1, sk.GetRouteSegmentById(2, s));
    EXPECT_EQ(nullptr, s);
}

TEST(KrSketch, CreateCADLineOnlyLooksTheSegmentUp)
{
    KrSketch sk;
    sk.CreateRouteSegment(3, 1.0, 1.0);
    EXPECT_EQ(0, sk.CreateCADLine(3));
    EXPECT_EQ(1, sk.CreateCADLine(4));
    KrRouteSegment* s = nullptr;
    sk.GetRouteSegmentById(3, s);
    int n = -1;
    s->GetCADLineNum(n);
    EXPECT_EQ(0, n);
}

TEST(KrSketch, GetDegenerateRouteSegmentByIdUnknownSucceedsAndLeavesThePointer)
{
    KrSketch sk;
    KrRouteSegment dummy(9, 0, 0);
    KrRouteSegment* s = &dummy;
    EXPECT_EQ(0, sk.GetDegenerateRouteSegmentById(9, s));
    EXPECT_EQ(&dummy, s);
}

TEST(KrSketch, GetDegenerateRouteSegmentByIdFindsTheFirstMatch)
{
    KrSketch sk;
    KrRouteSegment a(4, 1.0, 0.0);
    KrRouteSegment b(4, 2.0, 0.0);
    sk.AddDegenerateSegment(&a);
    sk.AddDegenerateSegment(&b);
    KrRouteSegment* s = nullptr;
    EXPECT_EQ(0, sk.GetDegenerateRouteSegmentById(4, s));
    EXPECT_EQ(&a, s);
    // Not owned by the sketch: a and b outlive it safely.
}

TEST(KrSketch, AddDegenerateSegmentNullAddsNothingAndSucceeds)
{
    KrSketch sk;
    EXPECT_EQ(0, sk.AddDegenerateSegment(nullptr));
    KrRouteSegment* s = nullptr;
    sk.GetDegenerateRouteSegmentById(0, s);
    EXPECT_EQ(nullptr, s);
}

TEST(KrSketch, AddDegenerateSegmentDoesNotTestForDuplicates)
{
    // Recovering once takes out only the first of the two entries: the second is still found.
    KrSketch sk;
    KrRouteSegment* a = new KrRouteSegment(4, 1.0, 0.0);
    sk.AddDegenerateSegment(a);
    sk.AddDegenerateSegment(a);
    EXPECT_EQ(0, sk.RecoverDegenerateRouteSegment(a));
    KrRouteSegment* s = nullptr;
    sk.GetDegenerateRouteSegmentById(4, s);
    EXPECT_EQ(a, s);
    // Recovered, a is live again (and now owned and freed by the sketch).
    std::vector<long> ids;
    sk.GetAllRouteSegment(ids);
    EXPECT_EQ((std::vector<long>{4}), ids);
}

TEST(KrSketch, CopiesAreDeclaredShallowAndNeverUsedByTheLibrary)
{
    static_assert(std::is_copy_constructible_v<KrSketch>);
    static_assert(std::is_copy_assignable_v<KrSketch>);
    SUCCEED();
}

TEST(KrSketch, AddPointSamePointerTwiceIsStoredOnce)
{
    // Stored twice, the destructor would free the point twice (caught by the allocator and by
    // the sanitizer run).
    auto sk = std::make_unique<KrSketch>();
    KrRoutingWayPoint* p = new KrRoutingWayPoint(ALPoint(1, 2, 0));
    EXPECT_EQ(0, sk->AddPoint(p));
    EXPECT_EQ(0, sk->AddPoint(p));
    sk.reset();
    SUCCEED();
}

TEST(KrSketch, AddPointKeepsTwoDistinctPointsAtOnePosition)
{
    // Both are owned and freed by the sketch (a dropped one would leak in the sanitizer run);
    // both can be used as distinct ends of a segment.
    KrSketch sk;
    KrRoutingWayPoint* a = Owned(sk, 1, 1);
    KrRoutingWayPoint* b = Owned(sk, 1, 1);
    EXPECT_NE(a, b);
    sk.CreateRouteSegment(1, 1, 1);
    KrRouteSegment* s = nullptr;
    sk.GetRouteSegmentById(1, s);
    std::vector<KrRoutingWayPoint*> pts{a, b};
    sk.ConnectSegment(s, pts);
    KrRoutingWayPoint* other = nullptr;
    s->GetOtherEnd(a, other);
    EXPECT_EQ(b, other);
}

TEST(KrSketch, AddPointNullIsRefused)
{
    KrSketch sk;
    EXPECT_EQ(1, sk.AddPoint(nullptr));
}

TEST(KrSketch, AddBendsNullFailsAndABendIsRecordedWithoutOwnership)
{
    KrRouteBends bend(3, nullptr);
    {
        KrSketch sk;
        EXPECT_EQ(1, sk.AddBends(nullptr));
        EXPECT_EQ(0, sk.AddBends(&bend));
    }
    // The sketch is gone; the bend (on the stack) was not freed by it.
    EXPECT_EQ(3, bend.GetRouteId());
}

TEST(KrSketch, InsertConnectorWithEmptyNameFails)
{
    KrSketch sk;
    EXPECT_EQ(1, sk.InsertConnector(1, L"", L"1"));
    EXPECT_EQ(0, sk.InsertConnector(1, L"J1", L""));
    EXPECT_EQ(0, sk.InsertConnector(2, L"J1", L"2"));
}

TEST(KrSketch, StubsReportSuccessAndChangeNothing)
{
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    std::vector<long*> ids;
    EXPECT_EQ(0, sk.GetCurrentSegment());
    EXPECT_EQ(0, sk.HideRouteSegment(1));
    EXPECT_EQ(0, sk.SetBendsId(ids));
    std::vector<long> all;
    sk.GetAllRouteSegment(all);
    EXPECT_EQ((std::vector<long>{1}), all);
}

TEST(KrSketch, RecoverDegenerateRouteSegmentOfAnUnknownSegmentChangesNothing)
{
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    KrRouteSegment outside(2, 1, 1);
    EXPECT_EQ(0, sk.RecoverDegenerateRouteSegment(&outside));
    EXPECT_EQ(0, sk.RecoverDegenerateRouteSegment(nullptr));
    std::vector<long> all;
    sk.GetAllRouteSegment(all);
    EXPECT_EQ((std::vector<long>{1}), all);
}

TEST(KrSketch, RecoverDegenerateRouteSegmentOfALiveSegmentDoesNotDuplicateIt)
{
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    KrRouteSegment* s = nullptr;
    sk.GetRouteSegmentById(1, s);
    sk.AddDegenerateSegment(s);
    EXPECT_EQ(0, sk.RecoverDegenerateRouteSegment(s));
    std::vector<long> all;
    sk.GetAllRouteSegment(all);
    EXPECT_EQ((std::vector<long>{1}), all);
    KrRouteSegment* d = nullptr;
    sk.GetDegenerateRouteSegmentById(1, d);
    EXPECT_EQ(nullptr, d);
}

TEST(KrSketch, DestroyedThroughTheInterface)
{
    // The virtual destructor frees segments, grid, way points and connectors (leak-checked in
    // the sanitizer run).
    IRoutingSketch* sk = new KrSketch();
    sk->CreateGrid(0.02, 0.02);
    sk->CreateRouteSegment(1, 1, 1);
    std::map<long, long> m{{1, 1}};
    std::vector<ALPoint> pts{ALPoint(0, 0, 0), ALPoint(1, 0, 0)};
    sk->CreateWayPoint(m, pts);
    sk->InsertConnector(1, L"J1", L"1");
    KrRoutingWayPoint* node = nullptr;
    sk->GetGridNode(0.5, 0.5, node);
    delete sk;
    SUCCEED();
}

TEST(KrSketch, BendRecordKeepsRouteIdAndPoint)
{
    KrRoutingWayPoint p;
    KrRouteBends empty;
    EXPECT_EQ(0, empty.GetRouteId());
    EXPECT_EQ(nullptr, empty.GetPoint());
    KrRouteBends b(12, &p);
    EXPECT_EQ(12, b.GetRouteId());
    EXPECT_EQ(&p, b.GetPoint());
}

TEST(KrSketch, LineEndRecordKeepsItsFields)
{
    KrRoutingSketchLineEnd e0;
    EXPECT_EQ(0, e0.routeId);
    EXPECT_EQ(0, e0.lineIndex);
    EXPECT_FALSE(e0.isStart);
    EXPECT_TRUE(e0.point == ALPoint(0, 0, 0));
    KrRoutingSketchLineEnd e(7, 2, true, ALPoint(1, 2, 3));
    EXPECT_EQ(7, e.routeId);
    EXPECT_EQ(2, e.lineIndex);
    EXPECT_TRUE(e.isStart);
    EXPECT_TRUE(e.point == ALPoint(1, 2, 3));
}

// Lookups by id go through an index of the store; they answer as a scan in store order does,
// also after segments were appended or removed.
TEST(KrSketch, LookupsByIdFollowTheStoreThroughAppendsAndRemovals) {
    KrSketch sketch;
    sketch.CreateGrid(1.0, 1.0);
    sketch.CreateRouteSegment(7, 1.0, 1.0);
    sketch.CreateRouteSegment(5, 2.0, 1.0);
    sketch.CreateRouteSegment(7, 3.0, 1.0);  // a second segment with id 7: it gets no line
    std::map<long, long> lines{{5, 1}, {7, 1}};
    std::vector<ALPoint> points{ALPoint(0, 0, 0), ALPoint(2, 0, 0), ALPoint(2, 0, 0), ALPoint(2, 3, 0)};
    sketch.CreateWayPoint(lines, points);
    KrRouteSegment* seven = nullptr;
    ASSERT_EQ(0, sketch.GetRouteSegmentById(7, seven));
    double length = 0.0;
    seven->GetLength(length);
    EXPECT_EQ(1.0, length);  // the first in store order
    KrRouteSegment* none = seven;
    EXPECT_EQ(1, sketch.GetRouteSegmentById(6, none));
    EXPECT_EQ(nullptr, none);

    sketch.CreateRouteSegment(9, 4.0, 1.0);  // appended after the index was built
    KrRouteSegment* nine = nullptr;
    ASSERT_EQ(0, sketch.GetRouteSegmentById(9, nine));
    EXPECT_EQ(9, nine->GetId());
    std::vector<ALLine> got;
    sketch.GetLinesByRouteId(7, got);
    EXPECT_EQ(1u, got.size());  // both segments with id 7 are read; only the first has a line

    sketch.CheckRouteSegment();  // drops the segments without lines: the second 7 and 9
    EXPECT_EQ(1, sketch.GetRouteSegmentById(9, nine));
    EXPECT_EQ(nullptr, nine);
    ASSERT_EQ(0, sketch.GetRouteSegmentById(7, seven));
    seven->GetLength(length);
    EXPECT_EQ(1.0, length);
    std::vector<long> ids;
    sketch.GetAllRouteSegment(ids);
    EXPECT_EQ(ids, (std::vector<long>{7, 5}));
}
