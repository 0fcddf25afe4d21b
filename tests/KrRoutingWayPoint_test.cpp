#include <krlayout/model/KrRoutingWayPoint.h>

#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

std::vector<KrRouteCADLine*> ParentsOf(KrRoutingWayPoint& p)
{
    std::vector<KrRouteCADLine*> out;
    p.GetParent(out);
    return out;
}

std::vector<KrRoutingWayPoint*> PointsOf(KrRouteCADLine* line)
{
    std::vector<KrRoutingWayPoint*> out;
    line->GetWayPoint(out);
    return out;
}

// A segment with one CAD line through the given points; the first and last become its ends.
KrRouteCADLine* BuildLine(KrRouteSegment& seg, std::vector<KrRoutingWayPoint*> const& pts,
                          bool setEnds = true)
{
    KrRouteCADLine* line = nullptr;
    seg.CreateCADLine(line);
    for (KrRoutingWayPoint* p : pts) {
        line->AddPoint(p);
    }
    if (setEnds) {
        seg.AddPoint(pts.front());
        seg.AddPoint(pts.back());
    }
    return line;
}

}  // namespace

TEST(KrRoutingWayPoint, DefaultIsAtOriginWithoutIdOrParents)
{
    KrRoutingWayPoint p;
    double x = -1.0, y = -1.0;
    EXPECT_EQ(p.GetGridCoord(x, y), 0);
    EXPECT_EQ(x, 0.0);
    EXPECT_EQ(y, 0.0);
    EXPECT_TRUE(ParentsOf(p).empty());
}

TEST(KrRoutingWayPoint, ConstructedFromPointTakesItsCoordinates)
{
    KrRoutingWayPoint p(ALPoint(1.5, -2.5, 9.0));
    double xy[2] = {0.0, 0.0};
    EXPECT_EQ(p.GetGridCoord(xy), 0);
    EXPECT_EQ(xy[0], 1.5);
    EXPECT_EQ(xy[1], -2.5);
}

TEST(KrRoutingWayPoint, SetGridCoordIsReadBackByBothGetters)
{
    KrRoutingWayPoint p;
    EXPECT_EQ(p.SetGridCoord(3.0, 4.0), 0);
    double x = 0.0, y = 0.0;
    p.GetGridCoord(x, y);
    EXPECT_EQ(x, 3.0);
    EXPECT_EQ(y, 4.0);
    double xy[2] = {0.0, 0.0};
    p.GetGridCoord(xy);
    EXPECT_EQ(xy[0], 3.0);
    EXPECT_EQ(xy[1], 4.0);
    EXPECT_EQ(p.GetGridCoord(nullptr), 1);
}

TEST(KrRoutingWayPoint, SetUsedDoesNothingAndReturnsZero)
{
    KrRoutingWayPoint p;
    p.SetGridCoord(1.0, 2.0);
    EXPECT_EQ(p.SetUsed(true), 0);
    double x = 0.0, y = 0.0;
    p.GetGridCoord(x, y);
    EXPECT_EQ(x, 1.0);
    EXPECT_EQ(y, 2.0);
}

TEST(KrRoutingWayPoint, GetPointIdWithoutIdReturnsOneAndLeavesPairUntouched)
{
    KrRoutingWayPoint p;
    std::pair<long, long> id(7, 8);
    EXPECT_EQ(p.GetPointId(id), 1);
    EXPECT_EQ(id.first, 7);
    EXPECT_EQ(id.second, 8);
}

TEST(KrRoutingWayPoint, SetPointIdTwiceKeepsOnlyTheSecondPair)
{
    KrRoutingWayPoint p;
    long first[2] = {1, 2};
    long second[2] = {30, -40};
    EXPECT_EQ(p.SetPointId(first), 0);
    EXPECT_EQ(p.SetPointId(second), 0);
    std::pair<long, long> id(0, 0);
    EXPECT_EQ(p.GetPointId(id), 0);
    EXPECT_EQ(id.first, 30);
    EXPECT_EQ(id.second, -40);
}

TEST(KrRoutingWayPoint, SetPointIdFromNullReturnsOneAndKeepsTheOldId)
{
    KrRoutingWayPoint p;
    long ids[2] = {5, 6};
    p.SetPointId(ids);
    EXPECT_EQ(p.SetPointId(nullptr), 1);
    std::pair<long, long> id(0, 0);
    EXPECT_EQ(p.GetPointId(id), 0);
    EXPECT_EQ(id.first, 5);
}

TEST(KrRoutingWayPoint, CopiesShareParentsAndCarryEveryField)
{
    KrRouteCADLine line;
    KrRoutingWayPoint p(ALPoint(1.0, 2.0, 0.0));
    long ids[2] = {3, 4};
    p.SetPointId(ids);
    p.AddParent(&line);
    KrRoutingWayPoint c(p);
    KrRoutingWayPoint d;
    d = p;
    for (KrRoutingWayPoint* q : {&c, &d}) {
        std::pair<long, long> id(0, 0);
        EXPECT_EQ(q->GetPointId(id), 0);
        EXPECT_EQ(id.second, 4);
        EXPECT_EQ(ParentsOf(*q), std::vector<KrRouteCADLine*>{&line});
        bool same = false;
        q->IsSamePoint(&p, same);
        EXPECT_TRUE(same);
    }
}

TEST(KrRoutingWayPoint, IsSamePointIgnoresZ)
{
    KrRoutingWayPoint a(ALPoint(1.0, 2.0, 3.0));
    KrRoutingWayPoint b(ALPoint(1.0, 2.0, 500.0));
    bool same = false;
    EXPECT_EQ(a.IsSamePoint(&b, same), 0);
    EXPECT_TRUE(same);
}

TEST(KrRoutingWayPoint, IsSamePointUsesTheTolerance)
{
    KrRoutingWayPoint a(ALPoint(1.0, 2.0, 0.0));
    KrRoutingWayPoint near(ALPoint(1.0 + 0.5e-05, 2.0 - 0.5e-05, 0.0));
    KrRoutingWayPoint far(ALPoint(1.0, 2.0 + 2e-05, 0.0));
    bool same = false;
    a.IsSamePoint(&near, same);
    EXPECT_TRUE(same);
    a.IsSamePoint(&far, same);
    EXPECT_FALSE(same);
}

TEST(KrRoutingWayPoint, IsSamePointWithNullReturnsOne)
{
    KrRoutingWayPoint a;
    bool same = true;
    EXPECT_EQ(a.IsSamePoint(nullptr, same), 1);
    EXPECT_FALSE(same);
}

TEST(KrRoutingWayPoint, AddParentTwiceKeepsOneEntryAndNullReturnsOne)
{
    KrRoutingWayPoint p;
    KrRouteCADLine a;
    KrRouteCADLine b;
    EXPECT_EQ(p.AddParent(&a), 0);
    EXPECT_EQ(p.AddParent(&b), 0);
    EXPECT_EQ(p.AddParent(&a), 0);
    EXPECT_EQ(p.AddParent(nullptr), 1);
    EXPECT_EQ(ParentsOf(p), (std::vector<KrRouteCADLine*>{&a, &b}));
}

TEST(KrRoutingWayPoint, RemoveParentKeepsTheOrderOfTheRest)
{
    KrRoutingWayPoint p;
    KrRouteCADLine a, b, c, absent;
    p.AddParent(&a);
    p.AddParent(&b);
    p.AddParent(&c);
    EXPECT_EQ(p.RemoveParent(&b), 0);
    EXPECT_EQ(ParentsOf(p), (std::vector<KrRouteCADLine*>{&a, &c}));
    EXPECT_EQ(p.RemoveParent(&absent), 0);
    EXPECT_EQ(ParentsOf(p), (std::vector<KrRouteCADLine*>{&a, &c}));
    EXPECT_EQ(p.RemoveParent(nullptr), 1);
    EXPECT_EQ(ParentsOf(p).size(), 2u);
}

TEST(KrRoutingWayPoint, GetParentAppendsWithoutClearing)
{
    KrRoutingWayPoint p;
    KrRouteCADLine a, b;
    p.AddParent(&b);
    std::vector<KrRouteCADLine*> out{&a};
    p.GetParent(out);
    EXPECT_EQ(out, (std::vector<KrRouteCADLine*>{&a, &b}));
}

TEST(KrRoutingWayPoint, RemoveParentBySegmentRemovesEveryLineOfThatSegment)
{
    KrRoutingWayPoint p;
    KrRouteSegment segA(1, 10.0, 1.0);
    KrRouteSegment segB(2, 10.0, 1.0);
    KrRouteCADLine *a1 = nullptr, *a2 = nullptr, *b1 = nullptr;
    segA.CreateCADLine(a1);
    segB.CreateCADLine(b1);
    segA.CreateCADLine(a2);
    p.AddParent(a1);
    p.AddParent(b1);
    p.AddParent(a2);
    EXPECT_EQ(p.RemoveParentBySegment(&segA), 0);
    EXPECT_EQ(ParentsOf(p), std::vector<KrRouteCADLine*>{b1});
    EXPECT_EQ(p.RemoveParentBySegment(nullptr), 1);
    EXPECT_EQ(ParentsOf(p).size(), 1u);
}

TEST(KrRoutingWayPoint, GetCADLineBySegmentFindsTheFirstLineOfThatSegment)
{
    KrRoutingWayPoint p;
    KrRouteSegment segA(1, 10.0, 1.0);
    KrRouteSegment segB(2, 10.0, 1.0);
    KrRouteCADLine *a1 = nullptr, *a2 = nullptr, *b1 = nullptr;
    segA.CreateCADLine(a1);
    segA.CreateCADLine(a2);
    segB.CreateCADLine(b1);
    p.AddParent(b1);
    p.AddParent(a2);
    p.AddParent(a1);
    KrRouteCADLine* line = nullptr;
    EXPECT_EQ(p.GetCADLineBySegment(&segA, line), 0);
    EXPECT_EQ(line, a2);
}

TEST(KrRoutingWayPoint, GetCADLineBySegmentNotThroughPointLeavesOutPointerUnchanged)
{
    KrRoutingWayPoint p;
    KrRouteSegment segA(1, 10.0, 1.0);
    KrRouteSegment other(2, 10.0, 1.0);
    KrRouteCADLine* a1 = nullptr;
    segA.CreateCADLine(a1);
    p.AddParent(a1);
    KrRouteCADLine sentinel;
    KrRouteCADLine* line = &sentinel;
    EXPECT_EQ(p.GetCADLineBySegment(&other, line), 0);
    EXPECT_EQ(line, &sentinel);
}

TEST(KrRoutingWayPoint, TwoLinesOfOneSegmentGiveThatSegmentOnce)
{
    KrRoutingWayPoint a(ALPoint(0, 0, 0)), b(ALPoint(1, 0, 0)), c(ALPoint(1, 1, 0));
    KrRouteSegment seg(1, 2.0, 1.0);
    BuildLine(seg, {&a, &b}, false);
    BuildLine(seg, {&b, &c}, false);
    std::vector<KrRouteSegment*> out;
    EXPECT_EQ(b.GetConnectSegment(out), 0);
    EXPECT_EQ(out, std::vector<KrRouteSegment*>{&seg});
}

TEST(KrRoutingWayPoint, GetConnectSegmentAppendsInParentOrderAndSkipsSegmentsAlreadyListed)
{
    KrRoutingWayPoint a, b, c, hub;
    KrRouteSegment s1(1, 1.0, 1.0), s2(2, 1.0, 1.0), s3(3, 1.0, 1.0);
    BuildLine(s2, {&hub, &b});
    BuildLine(s1, {&hub, &a});
    BuildLine(s3, {&c, &hub});
    std::vector<KrRouteSegment*> out{&s3};
    hub.GetConnectSegment(out);
    EXPECT_EQ(out, (std::vector<KrRouteSegment*>{&s3, &s2, &s1}));
}

TEST(KrRoutingWayPoint, LinesWithoutSegmentAddNoSegment)
{
    KrRoutingWayPoint p;
    KrRouteCADLine loose;
    loose.AddPoint(&p);
    std::vector<KrRouteSegment*> out;
    p.GetConnectSegment(out);
    EXPECT_TRUE(out.empty());
    KrRouteSegment* root = nullptr;
    EXPECT_EQ(p.GetRootSegment(root), 1);
}

TEST(KrRoutingWayPoint, GetSegmentsFiltersByRedefineFlag)
{
    KrRoutingWayPoint hub, a, b, c;
    KrRouteSegment s1(1, 1.0, 1.0), s2(2, 1.0, 1.0), s3(3, 1.0, 1.0);
    BuildLine(s1, {&hub, &a});
    BuildLine(s2, {&hub, &b});
    BuildLine(s3, {&hub, &c});
    s2.SetRedefine(true);
    std::vector<KrRouteSegment*> placed, open, unhandled;
    EXPECT_EQ(hub.GetSegments(true, placed), 0);
    EXPECT_EQ(hub.GetSegments(false, open), 0);
    EXPECT_EQ(hub.GetUnHandledSegments(unhandled), 0);
    EXPECT_EQ(placed, std::vector<KrRouteSegment*>{&s2});
    EXPECT_EQ(open, (std::vector<KrRouteSegment*>{&s1, &s3}));
    EXPECT_EQ(unhandled, (std::vector<KrRouteSegment*>{&s1, &s3}));
}

TEST(KrRoutingWayPoint, GetConnectSegmentExcludeRemovesTheGivenSegment)
{
    KrRoutingWayPoint hub, a, b;
    KrRouteSegment s1(1, 1.0, 1.0), s2(2, 1.0, 1.0);
    BuildLine(s1, {&hub, &a});
    BuildLine(s2, {&hub, &b});
    std::vector<KrRouteSegment*> out;
    EXPECT_EQ(hub.GetConnectSegmentExclude(&s1, out), 0);
    EXPECT_EQ(out, std::vector<KrRouteSegment*>{&s2});
    std::vector<KrRouteSegment*> none;
    EXPECT_EQ(hub.GetConnectSegmentExclude(nullptr, none), 1);
    EXPECT_TRUE(none.empty());
}

TEST(KrRoutingWayPoint, IsOwnBySegmentComparesIds)
{
    KrRoutingWayPoint hub, a;
    KrRouteSegment s1(41, 1.0, 1.0);
    BuildLine(s1, {&hub, &a});
    bool owned = false;
    EXPECT_EQ(hub.IsOwnBySegment(41, owned), 0);
    EXPECT_TRUE(owned);
    EXPECT_EQ(hub.IsOwnBySegment(42, owned), 0);
    EXPECT_FALSE(owned);
}

TEST(KrRoutingWayPoint, GetRootSegmentOfPointThatOnlyStartsPlacedSegmentsIsOneWithNull)
{
    KrRoutingWayPoint hub, a, b;
    KrRouteSegment s1(1, 1.0, 1.0), s2(2, 1.0, 1.0);
    BuildLine(s1, {&hub, &a});
    BuildLine(s2, {&hub, &b});
    s1.SetRedefine(true);
    s2.SetRedefine(true);
    KrRouteSegment dummy(9, 1.0, 1.0);
    KrRouteSegment* root = &dummy;
    EXPECT_EQ(hub.GetRootSegment(root), 1);
    EXPECT_EQ(root, nullptr);
}

TEST(KrRoutingWayPoint, GetRootSegmentIsThePlacedSegmentEndingHere)
{
    // hub is the end of s1 (not placed) and s2 (placed), and the start of s3 (placed).
    KrRoutingWayPoint hub, a, b, c;
    KrRouteSegment s3(3, 1.0, 1.0), s1(1, 1.0, 1.0), s2(2, 1.0, 1.0);
    BuildLine(s3, {&hub, &c});
    BuildLine(s1, {&a, &hub});
    BuildLine(s2, {&b, &hub});
    s3.SetRedefine(true);
    s2.SetRedefine(true);
    KrRouteSegment* root = nullptr;
    EXPECT_EQ(hub.GetRootSegment(root), 0);
    EXPECT_EQ(root, &s2);
}

TEST(KrRoutingWayPoint, GetRootSegmentTakesTheFirstMatchInParentOrder)
{
    KrRoutingWayPoint hub, a, b;
    KrRouteSegment s1(1, 1.0, 1.0), s2(2, 1.0, 1.0);
    BuildLine(s2, {&b, &hub});
    BuildLine(s1, {&a, &hub});
    s1.SetRedefine(true);
    s2.SetRedefine(true);
    KrRouteSegment* root = nullptr;
    EXPECT_EQ(hub.GetRootSegment(root), 0);
    EXPECT_EQ(root, &s2);
}

TEST(KrRoutingWayPoint, AddParentsFromPointTakesOverLinesAndSegmentEnds)
{
    // s: one line A-B with ends (A, B). B2 lies where B is and takes B's place.
    KrRoutingWayPoint A(ALPoint(0, 0, 0)), B(ALPoint(5, 0, 0)), B2(ALPoint(5, 0, 0));
    KrRouteSegment s(1, 5.0, 1.0);
    KrRouteCADLine* line = BuildLine(s, {&A, &B});
    EXPECT_EQ(B2.AddParentsFromPoint(&B), 0);
    EXPECT_EQ(PointsOf(line), (std::vector<KrRoutingWayPoint*>{&A, &B2}));
    EXPECT_TRUE(ParentsOf(B).empty());
    EXPECT_EQ(ParentsOf(B2), std::vector<KrRouteCADLine*>{line});
    bool isEnd = false;
    s.IsOneEnd(&B2, isEnd);
    EXPECT_TRUE(isEnd);
    s.IsOneEnd(&B, isEnd);
    EXPECT_FALSE(isEnd);
    KrRoutingWayPoint* other = nullptr;
    s.GetOtherEnd(&A, other);
    EXPECT_EQ(other, &B2);
}

TEST(KrRoutingWayPoint, AddParentsFromPointReplacesTheStartEndAndAppendsToTheLine)
{
    // B2 takes over the start of A-B: B is removed and B2 appended, so the line now lists
    // (A, B2) while the segment's start becomes B2.
    KrRoutingWayPoint B(ALPoint(0, 0, 0)), A(ALPoint(5, 0, 0)), B2(ALPoint(0, 0, 0));
    KrRouteSegment s(1, 5.0, 1.0);
    KrRouteCADLine* line = BuildLine(s, {&B, &A});
    EXPECT_EQ(B2.AddParentsFromPoint(&B), 0);
    EXPECT_EQ(PointsOf(line), (std::vector<KrRoutingWayPoint*>{&A, &B2}));
    bool isStart = false;
    s.IsStartPoint(&B2, isStart);
    EXPECT_TRUE(isStart);
}

TEST(KrRoutingWayPoint, AddParentsFromPointLeavesEndsOfSegmentsWhereThePointIsInterior)
{
    // t: one line C-B-D with ends (C, D); B is interior. u: line B-E with ends (B, E).
    KrRoutingWayPoint C(ALPoint(0, 0, 0)), B(ALPoint(1, 0, 0)), D(ALPoint(2, 0, 0));
    KrRoutingWayPoint E(ALPoint(1, 1, 0)), B2(ALPoint(1, 0, 0));
    KrRouteSegment t(1, 2.0, 1.0), u(2, 1.0, 1.0);
    KrRouteCADLine* lt = BuildLine(t, {&C, &B, &D});
    KrRouteCADLine* lu = BuildLine(u, {&B, &E});
    EXPECT_EQ(B2.AddParentsFromPoint(&B), 0);
    EXPECT_EQ(PointsOf(lt), (std::vector<KrRoutingWayPoint*>{&C, &D, &B2}));
    EXPECT_EQ(PointsOf(lu), (std::vector<KrRoutingWayPoint*>{&E, &B2}));
    EXPECT_EQ(ParentsOf(B2), (std::vector<KrRouteCADLine*>{lt, lu}));
    EXPECT_TRUE(ParentsOf(B).empty());
    KrRoutingWayPoint* other = nullptr;
    t.GetOtherEnd(&C, other);
    EXPECT_EQ(other, &D);
    bool isEnd = false;
    u.IsOneEnd(&B2, isEnd);
    EXPECT_TRUE(isEnd);
}

TEST(KrRoutingWayPoint, AddParentsFromPointKeepsTheTargetsOwnLines)
{
    KrRoutingWayPoint A, B, B2, F;
    KrRouteSegment s(1, 1.0, 1.0), own(2, 1.0, 1.0);
    KrRouteCADLine* mine = BuildLine(own, {&B2, &F});
    KrRouteCADLine* taken = BuildLine(s, {&A, &B});
    B2.AddParentsFromPoint(&B);
    EXPECT_EQ(ParentsOf(B2), (std::vector<KrRouteCADLine*>{mine, taken}));
}

TEST(KrRoutingWayPoint, AddParentsFromPointHandlesLinesWithoutSegment)
{
    KrRoutingWayPoint X, B, B2;
    KrRouteCADLine loose;
    loose.AddPoint(&B);
    loose.AddPoint(&X);
    EXPECT_EQ(B2.AddParentsFromPoint(&B), 0);
    EXPECT_EQ(PointsOf(&loose), (std::vector<KrRoutingWayPoint*>{&X, &B2}));
    EXPECT_TRUE(ParentsOf(B).empty());
}

TEST(KrRoutingWayPoint, AddParentsFromNullReturnsOneAndChangesNothing)
{
    KrRoutingWayPoint A, B;
    KrRouteSegment s(1, 1.0, 1.0);
    KrRouteCADLine* line = BuildLine(s, {&A, &B});
    EXPECT_EQ(B.AddParentsFromPoint(nullptr), 1);
    EXPECT_EQ(PointsOf(line), (std::vector<KrRoutingWayPoint*>{&A, &B}));
    EXPECT_EQ(ParentsOf(B), std::vector<KrRouteCADLine*>{line});
}

TEST(KrRoutingWayPoint, AddParentsFromItselfMovesThePointToTheEndOfEachLine)
{
    // B starts line B-A and ends line C-B: taking over its own lines removes B from each list
    // and appends it again, so B-A becomes A-B and C-B stays C-B. The segments' ends keep B.
    KrRoutingWayPoint A, B, C;
    KrRouteSegment s(1, 1.0, 1.0), t(2, 1.0, 1.0);
    KrRouteCADLine* first = BuildLine(s, {&B, &A});
    KrRouteCADLine* second = BuildLine(t, {&C, &B});
    EXPECT_EQ(B.AddParentsFromPoint(&B), 0);
    EXPECT_EQ(PointsOf(first), (std::vector<KrRoutingWayPoint*>{&A, &B}));
    EXPECT_EQ(PointsOf(second), (std::vector<KrRoutingWayPoint*>{&C, &B}));
    EXPECT_EQ(ParentsOf(B), (std::vector<KrRouteCADLine*>{first, second}));
    bool isStart = false;
    s.IsStartPoint(&B, isStart);
    EXPECT_TRUE(isStart);
}
