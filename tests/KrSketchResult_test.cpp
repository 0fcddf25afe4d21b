// Reading results out of the sketch: segment lists, new line positions, lines and host ids.
#include <krlayout/model/ALLine.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/sketch/KrSketch.h>

#include <gtest/gtest.h>

#include <map>
#include <vector>

namespace {

KrRouteSegment* Seg(KrSketch& sk, long id)
{
    KrRouteSegment* s = nullptr;
    sk.GetRouteSegmentById(id, s);
    return s;
}

std::vector<KrRouteCADLine*> Lines(KrRouteSegment* s)
{
    std::vector<KrRouteCADLine*> out;
    s->GetAllCADLine(out);
    return out;
}

std::vector<KrRoutingWayPoint*> Pts(KrRouteCADLine* l)
{
    std::vector<KrRoutingWayPoint*> out;
    l->GetWayPoint(out);
    return out;
}

// Segment 10: O(0,0) -> A(1,0); segment 20: O -> M(0,0.5) -> B(0,1) (two lines);
// segment 30: C(-1,0) -> O. The input carries z = 3 everywhere.
void BuildTree(KrSketch& sk)
{
    sk.CreateGrid(0.02, 0.02);
    sk.CreateRouteSegment(10, 1.0, 0.1);
    sk.CreateRouteSegment(20, 1.0, 0.1);
    sk.CreateRouteSegment(30, 1.0, 0.1);
    std::map<long, long> m{{10, 1}, {20, 2}, {30, 1}};
    std::vector<ALPoint> pts{ALPoint(0, 0, 3),   ALPoint(1, 0, 3),   ALPoint(0, 0, 3),
                             ALPoint(0, 0.5, 3), ALPoint(0, 0.5, 3), ALPoint(0, 1, 3),
                             ALPoint(-1, 0, 3),  ALPoint(0, 0, 3)};
    sk.CreateWayPoint(m, pts);
}

void ExpectPoint(ALPoint const& p, double x, double y, double z)
{
    EXPECT_DOUBLE_EQ(x, p.x);
    EXPECT_DOUBLE_EQ(y, p.y);
    EXPECT_DOUBLE_EQ(z, p.z);
}

}  // namespace

TEST(KrSketchResult, GetAllSegmentsSkipsDegeneratedOnesAndAppends)
{
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    sk.CreateRouteSegment(2, 1, 1);
    sk.CreateRouteSegment(3, 1, 1);
    Seg(sk, 2)->SetDegenerated(true);
    KrRouteSegment before(0, 0, 0);
    std::vector<KrRouteSegment*> out{&before};
    EXPECT_EQ(0, sk.GetAllSegments(out));
    EXPECT_EQ((std::vector<KrRouteSegment*>{&before, Seg(sk, 1), Seg(sk, 3)}), out);
}

TEST(KrSketchResult, DegeneratedSegmentStillCountedByIdsAndNewPositions)
{
    KrSketch sk;
    BuildTree(sk);
    Seg(sk, 20)->SetDegenerated(true);
    std::vector<KrRouteSegment*> live;
    sk.GetAllSegments(live);
    EXPECT_EQ(2u, live.size());
    std::vector<long> ids;
    EXPECT_EQ(0, sk.GetAllRouteSegment(ids));
    EXPECT_EQ((std::vector<long>{10, 20, 30}), ids);
    std::vector<ALPoint> pos;
    sk.GetAllLineNewPos(pos);
    EXPECT_EQ(8u, pos.size());  // 4 lines, segment 20's two included
}

TEST(KrSketchResult, GetAllRouteSegmentAppendsIdsInStoreOrder)
{
    KrSketch sk;
    sk.CreateRouteSegment(30, 1, 1);
    sk.CreateRouteSegment(-4, 1, 1);
    sk.CreateRouteSegment(30, 1, 1);
    std::vector<long> ids{99};
    EXPECT_EQ(0, sk.GetAllRouteSegment(ids));
    EXPECT_EQ((std::vector<long>{99, 30, -4, 30}), ids);
}

TEST(KrSketchResult, NoSegmentIsHandledBeforeTheLayout)
{
    KrSketch sk;
    BuildTree(sk);
    std::vector<KrRouteSegment*> out;
    EXPECT_EQ(0, sk.GetAllHandledRouteSegment(out));
    EXPECT_TRUE(out.empty());
}

TEST(KrSketchResult, HandledSegmentsAreThoseMarkedRedefined)
{
    KrSketch sk;
    BuildTree(sk);
    Seg(sk, 30)->SetRedefine(true);
    Seg(sk, 10)->SetRedefine(true);
    std::vector<KrRouteSegment*> out;
    sk.GetAllHandledRouteSegment(out);
    EXPECT_EQ((std::vector<KrRouteSegment*>{Seg(sk, 10), Seg(sk, 30)}), out);
}

TEST(KrSketchResult, GetAllLineNewPosGivesStartAndEndOfEveryLineWithZeroZ)
{
    // Lines in segment and line order: (0,0)-(1,0), (0,0)-(0,0.5), (0,0.5)-(0,1), (-1,0)-(0,0);
    // z is 0 although the input said 3.
    KrSketch sk;
    BuildTree(sk);
    std::vector<ALPoint> pos{ALPoint(9, 9, 9)};
    EXPECT_EQ(0, sk.GetAllLineNewPos(pos));
    ASSERT_EQ(9u, pos.size());
    ExpectPoint(pos[0], 9, 9, 9);
    ExpectPoint(pos[1], 0, 0, 0);
    ExpectPoint(pos[2], 1, 0, 0);
    ExpectPoint(pos[3], 0, 0, 0);
    ExpectPoint(pos[4], 0, 0.5, 0);
    ExpectPoint(pos[5], 0, 0.5, 0);
    ExpectPoint(pos[6], 0, 1, 0);
    ExpectPoint(pos[7], -1, 0, 0);
    ExpectPoint(pos[8], 0, 0, 0);
}

TEST(KrSketchResult, GetAllLineNewPosReadsTheCurrentGridCoordinates)
{
    // The layout moves the shared point O to (0.04, 0.02): every line end at O follows.
    KrSketch sk;
    BuildTree(sk);
    KrRoutingWayPoint* o = Pts(Lines(Seg(sk, 10))[0])[0];
    o->SetGridCoord(0.04, 0.02);
    std::vector<ALPoint> pos;
    sk.GetAllLineNewPos(pos);
    ASSERT_EQ(8u, pos.size());
    ExpectPoint(pos[0], 0.04, 0.02, 0);
    ExpectPoint(pos[2], 0.04, 0.02, 0);
    ExpectPoint(pos[7], 0.04, 0.02, 0);
}

TEST(KrSketchResult, LineWithOneWayPointAddsNoNewPosition)
{
    // Segment 1: (0,0)-(2,0) and a line whose ends merged into one point: only the first counts.
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    std::vector<ALPoint> pts{ALPoint(0, 0, 0), ALPoint(2, 0, 0), ALPoint(5, 5, 0),
                             ALPoint(5, 5, 0)};
    sk.CreateWayPoint(std::map<long, long>{{1, 2}}, pts);
    ASSERT_EQ(1u, Pts(Lines(Seg(sk, 1))[1]).size());
    std::vector<ALPoint> pos;
    sk.GetAllLineNewPos(pos);
    ASSERT_EQ(2u, pos.size());
    ExpectPoint(pos[0], 0, 0, 0);
    ExpectPoint(pos[1], 2, 0, 0);
}

TEST(KrSketchResult, GetLinesByRouteIdCollectsEverySegmentWithTheId)
{
    // Two segments with id 5: (0,0)-(1,0) and (2,0)-(2,3); id 6 is someone else.
    KrSketch sk;
    sk.CreateRouteSegment(5, 1, 1);
    sk.CreateRouteSegment(6, 1, 1);
    sk.CreateRouteSegment(5, 3, 1);
    std::vector<KrRouteSegment*> all;
    sk.GetAllSegments(all);
    auto connect = [&sk](KrRouteSegment* s, double x1, double y1, double x2, double y2) {
        KrRoutingWayPoint* a = new KrRoutingWayPoint(ALPoint(x1, y1, 0));
        KrRoutingWayPoint* b = new KrRoutingWayPoint(ALPoint(x2, y2, 0));
        sk.AddPoint(a);
        sk.AddPoint(b);
        std::vector<KrRoutingWayPoint*> ab{a, b};
        sk.ConnectSegment(s, ab);
    };
    connect(all[0], 0, 0, 1, 0);
    connect(all[1], 7, 7, 8, 8);
    connect(all[2], 2, 0, 2, 3);
    std::vector<ALLine> out(1);
    EXPECT_EQ(0, sk.GetLinesByRouteId(5, out));
    ASSERT_EQ(3u, out.size());
    ExpectPoint(out[1].start, 0, 0, 0);
    ExpectPoint(out[1].end, 1, 0, 0);
    ExpectPoint(out[2].start, 2, 0, 0);
    ExpectPoint(out[2].end, 2, 3, 0);
}

TEST(KrSketchResult, GetLinesByRouteIdUnknownIdSucceedsWithNothing)
{
    KrSketch sk;
    BuildTree(sk);
    std::vector<ALLine> out;
    EXPECT_EQ(0, sk.GetLinesByRouteId(77, out));
    EXPECT_TRUE(out.empty());
}

TEST(KrSketchResult, GetLinesByRouteIdGivesEveryLineOfTheSegment)
{
    KrSketch sk;
    BuildTree(sk);
    std::vector<ALLine> out;
    sk.GetLinesByRouteId(20, out);
    ASSERT_EQ(2u, out.size());
    ExpectPoint(out[0].start, 0, 0, 0);
    ExpectPoint(out[0].end, 0, 0.5, 0);
    ExpectPoint(out[1].start, 0, 0.5, 0);
    ExpectPoint(out[1].end, 0, 1, 0);
}

TEST(KrSketchResult, GetCADLineIdByRouteIdAppendsThePairs)
{
    KrSketch sk;
    BuildTree(sk);
    std::vector<std::pair<long, long>> ids{{4, 40}, {5, 50}};
    ASSERT_EQ(0, sk.SetCADLineIdByRouteId(20, ids));
    std::vector<std::pair<long, long>> out{{0, 0}};
    EXPECT_EQ(0, sk.GetCADLineIdByRouteId(20, out));
    EXPECT_EQ((std::vector<std::pair<long, long>>{{0, 0}, {4, 40}, {5, 50}}), out);
}

TEST(KrSketchResult, GetCADLineIdByRouteIdUnknownIdFailsWithOne)
{
    KrSketch sk;
    BuildTree(sk);
    std::vector<std::pair<long, long>> out{{1, 1}};
    EXPECT_EQ(1, sk.GetCADLineIdByRouteId(99, out));
    EXPECT_EQ((std::vector<std::pair<long, long>>{{1, 1}}), out);
}

TEST(KrSketchResult, GetCADLineIdByRouteIdLineWithoutHostIdClearsTheOutput)
{
    // Segment 20: the first line has (4, 40), the second none: out loses even its old entry.
    KrSketch sk;
    BuildTree(sk);
    Lines(Seg(sk, 20))[0]->SetId(std::make_pair(4L, 40L));
    std::vector<std::pair<long, long>> out{{1, 1}};
    EXPECT_EQ(2, sk.GetCADLineIdByRouteId(20, out));
    EXPECT_TRUE(out.empty());
}

TEST(KrSketchResult, ConnectorPointIdsAreTheFreeEndsIds)
{
    // Segment 10 runs O -> A: its points in order are O and A, which get (1,2) and (3,4). O is
    // shared by three segments, so only A (a free end) reports its id.
    // Segment 30 runs C -> O: C gets (5,6), O (7,8); only C is free.
    KrSketch sk;
    BuildTree(sk);
    long o10[2] = {1, 2};
    long a10[2] = {3, 4};
    std::vector<long*> ids10{o10, a10};
    EXPECT_EQ(0, sk.SetCADPointIdByRouteId(10, ids10));
    std::vector<std::pair<long, long>> out;
    EXPECT_EQ(0, sk.GetSketchPointIdByRouteSegmentId(10, out));
    EXPECT_EQ((std::vector<std::pair<long, long>>{{3, 4}}), out);

    long c30[2] = {5, 6};
    long o30[2] = {7, 8};
    std::vector<long*> ids30{c30, o30};
    sk.SetCADPointIdByRouteId(30, ids30);
    EXPECT_EQ(0, sk.GetSketchPointIdByRouteSegmentId(30, out));
    EXPECT_EQ((std::vector<std::pair<long, long>>{{3, 4}, {5, 6}}), out);
}

TEST(KrSketchResult, PointIdsForAnUnknownSegmentSucceedWithNothing)
{
    KrSketch sk;
    BuildTree(sk);
    long id[2] = {1, 2};
    std::vector<long*> ids{id};
    EXPECT_EQ(0, sk.SetCADPointIdByRouteId(99, ids));
    std::vector<std::pair<long, long>> out;
    EXPECT_EQ(0, sk.GetSketchPointIdByRouteSegmentId(99, out));
    EXPECT_TRUE(out.empty());
}
