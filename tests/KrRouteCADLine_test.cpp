#include <krlayout/model/KrRouteCADLine.h>

#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/model/ALLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

namespace {

std::vector<KrRoutingWayPoint*> PointsOf(KrRouteCADLine* line)
{
    std::vector<KrRoutingWayPoint*> out;
    line->GetWayPoint(out);
    return out;
}

std::vector<KrRouteCADLine*> ParentsOf(KrRoutingWayPoint* p)
{
    std::vector<KrRouteCADLine*> out;
    p->GetParent(out);
    return out;
}

KrRoutingWayPoint At(double x, double y)
{
    return KrRoutingWayPoint(ALPoint(x, y, 0.0));
}

void ExpectAt(KrRoutingWayPoint* p, double x, double y)
{
    ASSERT_NE(p, nullptr);
    double px = 0.0, py = 0.0;
    p->GetGridCoord(px, py);
    EXPECT_NEAR(px, x, 1e-12);
    EXPECT_NEAR(py, y, 1e-12);
}

// A CAD line of seg through pts; the first and last become the segment's ends.
KrRouteCADLine* BuildLine(KrRouteSegment& seg, std::vector<KrRoutingWayPoint*> pts)
{
    KrRouteCADLine* line = nullptr;
    seg.CreateCADLine(line);
    line->AddPoints(pts);
    seg.AddPoint(pts.front());
    seg.AddPoint(pts.back());
    return line;
}

}  // namespace

// ---- Construction and accessors ----

TEST(KrRouteCADLine, NewLineHasUnsetIdNoParentAndNoPoints)
{
    KrRouteCADLine line;
    std::pair<long, long> id(0, 0);
    line.GetId(id);
    EXPECT_EQ(id.first, -1);
    EXPECT_EQ(id.second, -1);
    KrRouteSegment dummySeg;
    KrRouteSegment* seg = &dummySeg;
    EXPECT_EQ(line.GetParentSegment(seg), 0);
    EXPECT_EQ(seg, nullptr);
    KrRoutingWayPoint dummy;
    KrRoutingWayPoint* p = &dummy;
    EXPECT_EQ(line.GetStartPoint(p), 1);
    EXPECT_EQ(p, nullptr);
    p = &dummy;
    EXPECT_EQ(line.GetEndPoint(p), 1);
    EXPECT_EQ(p, nullptr);
    bool ok = true;
    EXPECT_EQ(line.CheckPoint(ok), 1);
    EXPECT_FALSE(ok);
}

TEST(KrRouteCADLine, SetIdAndParentSegmentAreReadBack)
{
    KrRouteCADLine line;
    line.SetId(std::make_pair(12L, -3L));
    std::pair<long, long> id(0, 0);
    line.GetId(id);
    EXPECT_EQ(id.first, 12);
    EXPECT_EQ(id.second, -3);
    KrRouteSegment seg(1, 1.0, 1.0);
    EXPECT_EQ(line.SetParentSegment(&seg), 0);
    KrRouteSegment* got = nullptr;
    line.GetParentSegment(got);
    EXPECT_EQ(got, &seg);
}

TEST(KrRouteCADLine, CopySharesPointsParentAndId)
{
    KrRoutingWayPoint a = At(0, 0), b = At(1, 0);
    KrRouteSegment seg(1, 1.0, 1.0);
    KrRouteCADLine line;
    line.SetParentSegment(&seg);
    line.SetId(std::make_pair(4L, 5L));
    line.AddPoint(&a);
    line.AddPoint(&b);
    KrRouteCADLine copy(line);
    KrRouteCADLine assigned;
    assigned = line;
    for (KrRouteCADLine* l : {&copy, &assigned}) {
        EXPECT_EQ(PointsOf(l), (std::vector<KrRoutingWayPoint*>{&a, &b}));
        std::pair<long, long> id;
        l->GetId(id);
        EXPECT_EQ(id.first, 4);
        KrRouteSegment* s = nullptr;
        l->GetParentSegment(s);
        EXPECT_EQ(s, &seg);
    }
    // Copying does not register the copies with the points.
    EXPECT_EQ(ParentsOf(&a), std::vector<KrRouteCADLine*>{&line});
}

TEST(KrRouteCADLine, StartEndAndCheckPoint)
{
    KrRoutingWayPoint a = At(0, 0), m = At(1, 0), b = At(2, 0);
    KrRouteCADLine line;
    line.AddPoint(&a);
    bool ok = true;
    EXPECT_EQ(line.CheckPoint(ok), 1);
    EXPECT_FALSE(ok);
    line.AddPoint(&m);
    line.AddPoint(&b);
    EXPECT_EQ(line.CheckPoint(ok), 0);
    EXPECT_TRUE(ok);
    KrRoutingWayPoint* p = nullptr;
    EXPECT_EQ(line.GetStartPoint(p), 0);
    EXPECT_EQ(p, &a);
    EXPECT_EQ(line.GetEndPoint(p), 0);
    EXPECT_EQ(p, &b);
    std::vector<KrRoutingWayPoint*> out{&b};
    line.GetWayPoint(out);
    EXPECT_EQ(out, (std::vector<KrRoutingWayPoint*>{&b, &a, &m, &b}));
}

// ---- Point list ----

TEST(KrRouteCADLine, AddPointAppendsAndRegistersTheLineAsParent)
{
    KrRoutingWayPoint a = At(0, 0), b = At(1, 0);
    KrRouteCADLine line;
    EXPECT_EQ(line.AddPoint(&a), 0);
    EXPECT_EQ(line.AddPoint(&b), 0);
    EXPECT_EQ(PointsOf(&line), (std::vector<KrRoutingWayPoint*>{&a, &b}));
    EXPECT_EQ(ParentsOf(&a), std::vector<KrRouteCADLine*>{&line});
    EXPECT_EQ(line.AddPoint(nullptr), 1);
    EXPECT_EQ(PointsOf(&line).size(), 2u);
}

TEST(KrRouteCADLine, AddPointAlreadyInLineChangesNothing)
{
    KrRoutingWayPoint a = At(0, 0), b = At(1, 0);
    KrRouteCADLine line, other;
    line.AddPoint(&a);
    line.AddPoint(&b);
    other.AddPoint(&a);
    EXPECT_EQ(line.AddPoint(&a), 0);
    EXPECT_EQ(PointsOf(&line), (std::vector<KrRoutingWayPoint*>{&a, &b}));
    EXPECT_EQ(ParentsOf(&a), (std::vector<KrRouteCADLine*>{&line, &other}));
}

TEST(KrRouteCADLine, AddPointsAddsInOrderAndDropsRepeats)
{
    KrRoutingWayPoint a = At(0, 0), b = At(1, 0), c = At(2, 0);
    KrRouteCADLine line;
    std::vector<KrRoutingWayPoint*> pts{&a, &b, &a, nullptr, &c, &b};
    EXPECT_EQ(line.AddPoints(pts), 0);
    EXPECT_EQ(PointsOf(&line), (std::vector<KrRoutingWayPoint*>{&a, &b, &c}));
}

TEST(KrRouteCADLine, RemovePointEditsOnlyTheList)
{
    KrRoutingWayPoint a = At(0, 0), b = At(1, 0), c = At(2, 0);
    KrRouteCADLine line;
    line.AddPoint(&a);
    line.AddPoint(&b);
    line.AddPoint(&c);
    EXPECT_EQ(line.RemovePoint(&b), 0);
    EXPECT_EQ(PointsOf(&line), (std::vector<KrRoutingWayPoint*>{&a, &c}));
    // b still lists the line: the caller fixes parents.
    EXPECT_EQ(ParentsOf(&b), std::vector<KrRouteCADLine*>{&line});
    KrRoutingWayPoint absent;
    EXPECT_EQ(line.RemovePoint(&absent), 0);
    EXPECT_EQ(line.RemovePoint(nullptr), 1);
    EXPECT_EQ(PointsOf(&line).size(), 2u);
}

TEST(KrRouteCADLine, ReplaceEndReplacesAPointInTheMiddleToo)
{
    KrRoutingWayPoint a = At(0, 0), m = At(1, 0), b = At(2, 0), n = At(1, 1);
    KrRouteCADLine line;
    line.AddPoint(&a);
    line.AddPoint(&m);
    line.AddPoint(&b);
    EXPECT_EQ(line.ReplaceEnd(&m, &n), 0);
    EXPECT_EQ(PointsOf(&line), (std::vector<KrRoutingWayPoint*>{&a, &n, &b}));
    EXPECT_TRUE(ParentsOf(&m).empty());
    EXPECT_EQ(ParentsOf(&n), std::vector<KrRouteCADLine*>{&line});
}

TEST(KrRouteCADLine, ReplaceEndAtTheEnd)
{
    KrRoutingWayPoint a = At(0, 0), b = At(2, 0), c = At(3, 0);
    KrRouteCADLine line;
    line.AddPoint(&a);
    line.AddPoint(&b);
    line.ReplaceEnd(&b, &c);
    KrRoutingWayPoint* end = nullptr;
    line.GetEndPoint(end);
    EXPECT_EQ(end, &c);
    EXPECT_EQ(line.ReplaceEnd(nullptr, &a), 1);
    EXPECT_EQ(line.ReplaceEnd(&a, nullptr), 1);
    EXPECT_EQ(PointsOf(&line), (std::vector<KrRoutingWayPoint*>{&a, &c}));
}

TEST(KrRouteCADLine, ClearPointsEmptiesTheLineAndDetachesEveryPoint)
{
    KrRoutingWayPoint a = At(0, 0), b = At(1, 0), c = At(2, 0);
    KrRouteCADLine line, other;
    line.AddPoint(&a);
    line.AddPoint(&b);
    line.AddPoint(&c);
    other.AddPoint(&b);
    EXPECT_EQ(line.ClearPoints(), 0);
    EXPECT_TRUE(PointsOf(&line).empty());
    EXPECT_TRUE(ParentsOf(&a).empty());
    EXPECT_EQ(ParentsOf(&b), std::vector<KrRouteCADLine*>{&other});
    EXPECT_TRUE(ParentsOf(&c).empty());
}

// ---- Geometry ----

TEST(KrRouteCADLine, GetDirIsEndMinusStartUnnormalised)
{
    KrRoutingWayPoint a = At(1, 2), m = At(9, 9), b = At(4, 6);
    KrRouteCADLine line;
    line.AddPoint(&a);
    line.AddPoint(&m);
    line.AddPoint(&b);
    double dir[2] = {0, 0};
    EXPECT_EQ(line.GetDir(dir), 0);
    EXPECT_EQ(dir[0], 3.0);
    EXPECT_EQ(dir[1], 4.0);
    EXPECT_EQ(line.GetDir(nullptr), 1);
}

TEST(KrRouteCADLine, GetDirOfEmptyLineReturnsOneAndLeavesDir)
{
    KrRouteCADLine line;
    double dir[2] = {7, 8};
    EXPECT_EQ(line.GetDir(dir), 1);
    EXPECT_EQ(dir[0], 7.0);
    EXPECT_EQ(dir[1], 8.0);
}

TEST(KrRouteCADLine, GetLineWritesXYOnlyAndKeepsZAndId)
{
    KrRoutingWayPoint a = At(1, 2), b = At(4, 6);
    KrRouteCADLine line;
    line.AddPoint(&a);
    line.AddPoint(&b);
    double const s[3] = {0, 0, 5};
    double const e[3] = {0, 0, 6};
    ALLine out(s, e);
    out.SetId(33);
    EXPECT_EQ(line.GetLine(&out), 0);
    EXPECT_EQ(out.start.x, 1.0);
    EXPECT_EQ(out.start.y, 2.0);
    EXPECT_EQ(out.start.z, 5.0);
    EXPECT_EQ(out.end.x, 4.0);
    EXPECT_EQ(out.end.y, 6.0);
    EXPECT_EQ(out.end.z, 6.0);
    EXPECT_EQ(out.GetId(), 33);
    EXPECT_EQ(line.GetLine(nullptr), 1);
    KrRouteCADLine empty;
    EXPECT_EQ(empty.GetLine(&out), 1);
    EXPECT_EQ(out.start.x, 1.0);
}

TEST(KrRouteCADLine, MinAndMaxYOfAHorizontalLineAreBothTheStart)
{
    KrRoutingWayPoint a = At(5, 1), b = At(0, 1);
    KrRouteCADLine line;
    line.AddPoint(&a);
    line.AddPoint(&b);
    double lo[2] = {0, 0}, hi[2] = {0, 0};
    EXPECT_EQ(line.GetMinYPoint(lo), 0);
    EXPECT_EQ(line.GetMaxYPoint(hi), 0);
    EXPECT_EQ(lo[0], 5.0);
    EXPECT_EQ(hi[0], 5.0);
}

TEST(KrRouteCADLine, MinAndMaxYOnATieWithinToleranceAreBothTheStart)
{
    KrRoutingWayPoint a = At(0, 1), b = At(3, 1 + 0.5e-05);
    KrRouteCADLine line;
    line.AddPoint(&a);
    line.AddPoint(&b);
    double lo[2] = {9, 9}, hi[2] = {9, 9};
    line.GetMinYPoint(lo);
    line.GetMaxYPoint(hi);
    EXPECT_EQ(lo[0], 0.0);
    EXPECT_EQ(hi[0], 0.0);
}

TEST(KrRouteCADLine, MinAndMaxYOfASlopedLineConsiderOnlyTheEnds)
{
    // Start (0,5), an interior point lower than both ends, end (3,1).
    KrRoutingWayPoint a = At(0, 5), m = At(1, -10), b = At(3, 1);
    KrRouteCADLine line;
    line.AddPoint(&a);
    line.AddPoint(&m);
    line.AddPoint(&b);
    double lo[2] = {0, 0}, hi[2] = {0, 0};
    line.GetMinYPoint(lo);
    line.GetMaxYPoint(hi);
    EXPECT_EQ(lo[0], 3.0);
    EXPECT_EQ(lo[1], 1.0);
    EXPECT_EQ(hi[0], 0.0);
    EXPECT_EQ(hi[1], 5.0);
}

TEST(KrRouteCADLine, MinAndMaxYOfEmptyLineOrNullReturnOne)
{
    KrRouteCADLine line;
    double xy[2] = {4, 4};
    EXPECT_EQ(line.GetMinYPoint(xy), 1);
    EXPECT_EQ(line.GetMaxYPoint(xy), 1);
    EXPECT_EQ(xy[0], 4.0);
    KrRoutingWayPoint a = At(0, 0);
    line.AddPoint(&a);
    EXPECT_EQ(line.GetMinYPoint(nullptr), 1);
    EXPECT_EQ(line.GetMaxYPoint(nullptr), 1);
}

TEST(KrRouteCADLine, PointIsOnLineAcceptsTheEndAndBeyondOnly)
{
    KrRoutingWayPoint a = At(0, 0), b = At(2, 0);
    KrRouteCADLine line;
    line.AddPoint(&a);
    line.AddPoint(&b);
    KrRoutingWayPoint beyond = At(5, 0), between = At(1, 0), off = At(3, 1), nearEnd = At(2 + 0.5e-05, 0);
    bool on = true;
    EXPECT_EQ(line.PointIsOnLine(&a, on), 0);
    EXPECT_FALSE(on);
    line.PointIsOnLine(&b, on);
    EXPECT_TRUE(on);
    line.PointIsOnLine(&beyond, on);
    EXPECT_TRUE(on);
    line.PointIsOnLine(&between, on);
    EXPECT_FALSE(on);
    line.PointIsOnLine(&off, on);
    EXPECT_FALSE(on);
    // Closer to the end than the tolerance: the zero vector case.
    line.PointIsOnLine(&nearEnd, on);
    EXPECT_TRUE(on);
}

TEST(KrRouteCADLine, PointIsOnLineOfASlopedLine)
{
    // Direction (3,4)/5 = (0.6, 0.8); (6,8) - (3,4) = (3,4): same direction.
    KrRoutingWayPoint a = At(0, 0), b = At(3, 4), beyond = At(6, 8), skew = At(6, 9);
    KrRouteCADLine line;
    line.AddPoint(&a);
    line.AddPoint(&b);
    bool on = false;
    line.PointIsOnLine(&beyond, on);
    EXPECT_TRUE(on);
    line.PointIsOnLine(&skew, on);
    EXPECT_FALSE(on);
}

TEST(KrRouteCADLine, PointIsOnBeelineAcceptsBothSidesOfTheEnd)
{
    KrRoutingWayPoint a = At(0, 0), b = At(2, 0);
    KrRouteCADLine line;
    line.AddPoint(&a);
    line.AddPoint(&b);
    KrRoutingWayPoint between = At(1, 0), before = At(-4, 0), beyond = At(5, 0), off = At(3, 1);
    bool on = false;
    EXPECT_EQ(line.PointIsOnBeeline(&a, on), 0);
    EXPECT_TRUE(on);
    line.PointIsOnBeeline(&b, on);
    EXPECT_TRUE(on);
    line.PointIsOnBeeline(&between, on);
    EXPECT_TRUE(on);
    line.PointIsOnBeeline(&before, on);
    EXPECT_TRUE(on);
    line.PointIsOnBeeline(&beyond, on);
    EXPECT_TRUE(on);
    line.PointIsOnBeeline(&off, on);
    EXPECT_FALSE(on);
}

TEST(KrRouteCADLine, PointTestsWithNullPointOrEmptyLineReturnOne)
{
    KrRoutingWayPoint a = At(0, 0), b = At(2, 0);
    KrRouteCADLine line;
    bool on = true;
    EXPECT_EQ(line.PointIsOnLine(&a, on), 1);
    EXPECT_FALSE(on);
    line.AddPoint(&a);
    line.AddPoint(&b);
    on = true;
    EXPECT_EQ(line.PointIsOnBeeline(nullptr, on), 1);
    EXPECT_FALSE(on);
}

TEST(KrRouteCADLine, GetPointBetweenPointKeepsPointsWithinTheDistanceThenAppendsB)
{
    // Points at x = 0, 1, 2, 3; a = (0,0), b = (1.5,0): L = 1.5, keeps x = 0 and 1.
    KrRoutingWayPoint p0 = At(0, 0), p1 = At(1, 0), p2 = At(2, 0), p3 = At(3, 0), b = At(1.5, 0);
    KrRouteCADLine line;
    for (KrRoutingWayPoint* p : {&p0, &p1, &p2, &p3}) {
        line.AddPoint(p);
    }
    std::vector<KrRoutingWayPoint*> out;
    EXPECT_EQ(line.GetPointBetweenPoint(&p0, &b, out), 0);
    EXPECT_EQ(out, (std::vector<KrRoutingWayPoint*>{&p0, &p1, &b}));
}

TEST(KrRouteCADLine, GetPointBetweenPointIsADistanceTestAndListsBTwice)
{
    // a = (1,0), b = (2,0): L = 1. (0,0) is 1 away on the other side and is kept; (2,0) is b
    // itself and is listed, then appended again; (3,0) is 2 away.
    KrRoutingWayPoint p0 = At(0, 0), p1 = At(1, 0), p2 = At(2, 0), p3 = At(3, 0);
    KrRouteCADLine line;
    for (KrRoutingWayPoint* p : {&p0, &p1, &p2, &p3}) {
        line.AddPoint(p);
    }
    std::vector<KrRoutingWayPoint*> out;
    line.GetPointBetweenPoint(&p1, &p2, out);
    EXPECT_EQ(out, (std::vector<KrRoutingWayPoint*>{&p0, &p1, &p2, &p2}));
    std::vector<KrRoutingWayPoint*> none;
    EXPECT_EQ(line.GetPointBetweenPoint(nullptr, &p2, none), 1);
    EXPECT_EQ(line.GetPointBetweenPoint(&p1, nullptr, none), 1);
    EXPECT_TRUE(none.empty());
}

// ---- Short ----

TEST(KrRouteCADLine, ShortByThreeOfALoneLineOfTenFromItsEnd)
{
    // ref = A; d = 10; delta = 10 - 3 = 7; u = (1,0): new end at (7,0). The interior point at 4
    // is within 7 of A and stays, the one at 9 does not.
    KrRoutingWayPoint A = At(0, 0), M = At(4, 0), N = At(9, 0), B = At(10, 0);
    KrRouteSegment seg(1, 10.0, 1.0);
    KrRouteCADLine* line = BuildLine(seg, {&A, &M, &N, &B});
    KrRoutingWayPoint* newEnd = nullptr;
    EXPECT_EQ(line->Short(3.0, &B, newEnd), 0);
    std::unique_ptr<KrRoutingWayPoint> owned(newEnd);
    ExpectAt(newEnd, 7.0, 0.0);
    EXPECT_EQ(PointsOf(line), (std::vector<KrRoutingWayPoint*>{&A, &M, newEnd}));
    EXPECT_TRUE(ParentsOf(&B).empty());
    EXPECT_TRUE(ParentsOf(&N).empty());
    EXPECT_EQ(ParentsOf(&A), std::vector<KrRouteCADLine*>{line});
    EXPECT_EQ(ParentsOf(newEnd), std::vector<KrRouteCADLine*>{line});
}

TEST(KrRouteCADLine, ShortFromTheStartRunsTheLineFromTheOtherEnd)
{
    // from = A is the start, so ref = B (10,0); u = (-1,0); new point at 10 - 7 = 3.
    KrRoutingWayPoint A = At(0, 0), B = At(10, 0);
    KrRouteSegment seg(1, 10.0, 1.0);
    KrRouteCADLine* line = BuildLine(seg, {&A, &B});
    KrRoutingWayPoint* newEnd = nullptr;
    EXPECT_EQ(line->Short(3.0, &A, newEnd), 0);
    std::unique_ptr<KrRoutingWayPoint> owned(newEnd);
    ExpectAt(newEnd, 3.0, 0.0);
    EXPECT_EQ(PointsOf(line), (std::vector<KrRoutingWayPoint*>{&B, newEnd}));
}

TEST(KrRouteCADLine, ShortOfASlopedLine)
{
    // (0,0)-(3,4) has length 5; shortening by 2 leaves 3 along (0.6, 0.8): (1.8, 2.4).
    KrRoutingWayPoint A = At(0, 0), B = At(3, 4);
    KrRouteSegment seg(1, 5.0, 1.0);
    KrRouteCADLine* line = BuildLine(seg, {&A, &B});
    KrRoutingWayPoint* newEnd = nullptr;
    line->Short(2.0, &B, newEnd);
    std::unique_ptr<KrRoutingWayPoint> owned(newEnd);
    ExpectAt(newEnd, 1.8, 2.4);
}

TEST(KrRouteCADLine, ShortByTwelveOfALoneLineOfTenHalvesIt)
{
    // 12 > 10 and the segment has one line: shortened by 10 * 0.5 = 5, new end at (5,0).
    KrRoutingWayPoint A = At(0, 0), B = At(10, 0);
    KrRouteSegment seg(1, 10.0, 1.0);
    KrRouteCADLine* line = BuildLine(seg, {&A, &B});
    KrRoutingWayPoint* newEnd = nullptr;
    EXPECT_EQ(line->Short(12.0, &B, newEnd), 0);
    std::unique_ptr<KrRoutingWayPoint> owned(newEnd);
    ExpectAt(newEnd, 5.0, 0.0);
    EXPECT_EQ(PointsOf(line), (std::vector<KrRoutingWayPoint*>{&A, newEnd}));
}

TEST(KrRouteCADLine, ShortOfALineWithoutSegmentCountsAsLoneAndHalves)
{
    KrRoutingWayPoint A = At(0, 0), B = At(0, 10);
    KrRouteCADLine line;
    line.AddPoint(&A);
    line.AddPoint(&B);
    KrRoutingWayPoint* newEnd = nullptr;
    EXPECT_EQ(line.Short(12.0, &B, newEnd), 0);
    std::unique_ptr<KrRoutingWayPoint> owned(newEnd);
    ExpectAt(newEnd, 0.0, 5.0);
}

TEST(KrRouteCADLine, ShortOfATooShortLineOfATwoLineSegmentEmptiesIt)
{
    // L1 = A-B (length 10), L2 = B-C. Shortening L1 by 12 from B empties it; newEnd = A.
    KrRoutingWayPoint A = At(0, 0), B = At(10, 0), C = At(10, 5);
    KrRouteSegment seg(1, 15.0, 1.0);
    KrRouteCADLine* l1 = nullptr;
    KrRouteCADLine* l2 = nullptr;
    seg.CreateCADLine(l1);
    seg.CreateCADLine(l2);
    l1->AddPoint(&A);
    l1->AddPoint(&B);
    l2->AddPoint(&B);
    l2->AddPoint(&C);
    KrRoutingWayPoint* newEnd = nullptr;
    EXPECT_EQ(l1->Short(12.0, &B, newEnd), 0);
    EXPECT_EQ(newEnd, &A);
    EXPECT_TRUE(PointsOf(l1).empty());
    EXPECT_TRUE(ParentsOf(&A).empty());
    EXPECT_EQ(ParentsOf(&B), std::vector<KrRouteCADLine*>{l2});
    int count = 0;
    seg.GetCADLineNum(count);
    EXPECT_EQ(count, 2);
}

TEST(KrRouteCADLine, ShortWithNullFromOrNoPointsReturnsOne)
{
    KrRoutingWayPoint A = At(0, 0), B = At(10, 0);
    KrRouteCADLine empty;
    KrRoutingWayPoint* newEnd = nullptr;
    EXPECT_EQ(empty.Short(1.0, &A, newEnd), 1);
    EXPECT_EQ(newEnd, nullptr);
    KrRouteCADLine line;
    line.AddPoint(&A);
    line.AddPoint(&B);
    EXPECT_EQ(line.Short(1.0, nullptr, newEnd), 1);
    EXPECT_EQ(newEnd, nullptr);
    EXPECT_EQ(PointsOf(&line), (std::vector<KrRoutingWayPoint*>{&A, &B}));
}

TEST(KrRouteCADLine, StubsReturnZero)
{
    KrRouteCADLine line;
    KrRoutingWayPoint a;
    EXPECT_EQ(line.SetStartEnd(0, 0, 1, 1), 0);
    EXPECT_EQ(line.InsertWayPoint(&a), 0);
    EXPECT_TRUE(PointsOf(&line).empty());
}

// ---- Move on a real grid of spacing 1 ----

TEST(KrRouteCADLine, MoveWithNullGridReturnsOneAndKeepsThePoints)
{
    KrRoutingWayPoint a = At(0, 0), b = At(1, 0);
    KrRouteCADLine line;
    line.AddPoint(&a);
    line.AddPoint(&b);
    std::vector<KrRouteSegment*> moved;
    EXPECT_EQ(line.Move(nullptr, 1.0, 0.0, moved), 1);
    EXPECT_EQ(PointsOf(&line), (std::vector<KrRoutingWayPoint*>{&a, &b}));
}

TEST(KrRouteCADLine, MoveReplacesGridNodesByTheShiftedNodes)
{
    KrRoutingGrid grid;
    grid.CreateGrids(1, 1, 0, 0, 0, 0);
    KrRoutingWayPoint *p0 = nullptr, *p1 = nullptr;
    grid.GetGridNode(0, 0, p0);
    grid.GetGridNode(2, 0, p1);
    KrRouteSegment seg(1, 2.0, 1.0);
    KrRouteCADLine* line = BuildLine(seg, {p0, p1});
    std::vector<KrRouteSegment*> moved;
    EXPECT_EQ(line->Move(&grid, 0.0, 1.0, moved), 0);
    std::vector<KrRoutingWayPoint*> pts = PointsOf(line);
    ASSERT_EQ(pts.size(), 2u);
    ExpectAt(pts[0], 0.0, 1.0);
    ExpectAt(pts[1], 2.0, 1.0);
    // The new points are the grid's own nodes there.
    KrRoutingWayPoint* q0 = nullptr;
    grid.GetGridNode(0, 1, q0);
    EXPECT_EQ(pts[0], q0);
    // Old points are left where they were, without the line; the new ones gain it.
    ExpectAt(p0, 0.0, 0.0);
    EXPECT_TRUE(ParentsOf(p0).empty());
    EXPECT_TRUE(ParentsOf(p1).empty());
    EXPECT_EQ(ParentsOf(pts[0]), std::vector<KrRouteCADLine*>{line});
    EXPECT_EQ(ParentsOf(pts[1]), std::vector<KrRouteCADLine*>{line});
    // The old points are no longer ends of the segment.
    bool isEnd = true;
    seg.IsOneEnd(p0, isEnd);
    EXPECT_FALSE(isEnd);
    seg.IsOneEnd(p1, isEnd);
    EXPECT_FALSE(isEnd);
}

TEST(KrRouteCADLine, MoveAlongItselfReusesNodesThatStayOnTheLine)
{
    // Nodes at x = 0, 1, 2 shifted by +1: (1,0), (2,0), (3,0). The nodes at 1 and 2 stay in the
    // line (they are looked up again), the node at 0 drops out.
    KrRoutingGrid grid;
    grid.CreateGrids(1, 1, 0, 0, 0, 0);
    KrRoutingWayPoint *p0 = nullptr, *p1 = nullptr, *p2 = nullptr, *p3 = nullptr;
    grid.GetGridNode(0, 0, p0);
    grid.GetGridNode(1, 0, p1);
    grid.GetGridNode(2, 0, p2);
    KrRouteSegment seg(1, 2.0, 1.0);
    KrRouteCADLine* line = BuildLine(seg, {p0, p1, p2});
    std::vector<KrRouteSegment*> moved;
    line->Move(&grid, 1.0, 0.0, moved);
    grid.GetGridNode(3, 0, p3);
    EXPECT_EQ(PointsOf(line), (std::vector<KrRoutingWayPoint*>{p1, p2, p3}));
    EXPECT_TRUE(ParentsOf(p0).empty());
    EXPECT_EQ(ParentsOf(p1), std::vector<KrRouteCADLine*>{line});
}

TEST(KrRouteCADLine, MoveKeepsNonGridNodesOffTheLattice)
{
    KrRoutingGrid grid;
    grid.CreateGrids(1, 1, 0, 0, 0, 0);
    KrRoutingWayPoint *n = nullptr, *p1 = nullptr;
    grid.GetNonGridNode(0.5, 0, n);
    grid.GetGridNode(2, 0, p1);
    KrRouteSegment seg(1, 1.5, 1.0);
    KrRouteCADLine* line = BuildLine(seg, {n, p1});
    std::vector<KrRouteSegment*> moved;
    EXPECT_EQ(line->Move(&grid, 0.0, 1.0, moved), 0);
    std::vector<KrRoutingWayPoint*> pts = PointsOf(line);
    ASSERT_EQ(pts.size(), 2u);
    ExpectAt(pts[0], 0.5, 1.0);
    ExpectAt(pts[1], 2.0, 1.0);
    bool nonGrid = false;
    grid.IsNonGridNode(pts[0], nonGrid);
    EXPECT_TRUE(nonGrid);
    EXPECT_TRUE(ParentsOf(n).empty());
}

TEST(KrRouteCADLine, MoveSnapsAPointTheGridDoesNotKnowToTheNearestNode)
{
    // A sketch way point at (0.4, 0) is not a non-grid node, so it is looked up as a grid node:
    // (0.4, 1) snaps to (0, 1).
    KrRoutingGrid grid;
    grid.CreateGrids(1, 1, 0, 0, 0, 0);
    KrRoutingWayPoint w = At(0.4, 0);
    KrRoutingWayPoint* p1 = nullptr;
    grid.GetGridNode(2, 0, p1);
    KrRouteSegment seg(1, 1.6, 1.0);
    KrRouteCADLine* line = BuildLine(seg, {&w, p1});
    std::vector<KrRouteSegment*> moved;
    line->Move(&grid, 0.0, 1.0, moved);
    std::vector<KrRoutingWayPoint*> pts = PointsOf(line);
    ASSERT_EQ(pts.size(), 2u);
    ExpectAt(pts[0], 0.0, 1.0);
    EXPECT_TRUE(ParentsOf(&w).empty());
}
