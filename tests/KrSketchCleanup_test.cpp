// Sketch clean-up: parallel segments of multi-pin connectors, degenerate segments and bends.
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/sketch/KrRouteBends.h>
#include <krlayout/sketch/KrRouteConnector.h>
#include <krlayout/sketch/KrSketch.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

KrRouteSegment* Seg(KrSketch& sk, long id)
{
    KrRouteSegment* s = nullptr;
    sk.GetRouteSegmentById(id, s);
    return s;
}

std::vector<long> Ids(KrSketch& sk)
{
    std::vector<long> ids;
    sk.GetAllRouteSegment(ids);
    return ids;
}

std::vector<KrRouteSegment*> At(KrRoutingWayPoint* p)
{
    std::vector<KrRouteSegment*> out;
    p->GetConnectSegment(out);
    return out;
}

// A sketch with three way points P(0,0), Q(1,0), R(0,1) that it owns, and a helper to add a
// segment with one line between two of them.
struct Fixture {
    KrSketch sk;
    KrRoutingWayPoint* p;
    KrRoutingWayPoint* q;
    KrRoutingWayPoint* r;

    Fixture()
    {
        p = Point(0, 0);
        q = Point(1, 0);
        r = Point(0, 1);
    }

    KrRoutingWayPoint* Point(double x, double y)
    {
        KrRoutingWayPoint* w = new KrRoutingWayPoint(ALPoint(x, y, 0));
        sk.AddPoint(w);
        return w;
    }

    KrRouteSegment* Add(int id, double length, double diameter, KrRoutingWayPoint* a,
                        KrRoutingWayPoint* b)
    {
        sk.CreateRouteSegment(id, length, diameter);
        std::vector<KrRouteSegment*> all;
        sk.GetAllSegments(all);
        KrRouteSegment* s = all.back();
        std::vector<KrRoutingWayPoint*> pts{a, b};
        sk.ConnectSegment(s, pts);
        return s;
    }
};

}  // namespace

// ---------------------------------------------------------------------------------------------
// Multi-pin connectors.

TEST(KrSketchCleanup, ShorterOfTwoParallelSegmentsOfOneConnectorIsRemoved)
{
    // Segments 1 (length 5) and 2 (length 3) both join P and Q; pins 1 and 2 of J1 name them.
    Fixture f;
    KrRouteSegment* s1 = f.Add(1, 5.0, 1.0, f.p, f.q);
    f.Add(2, 3.0, 1.0, f.p, f.q);
    f.sk.InsertConnector(1, L"J1", L"1");
    f.sk.InsertConnector(2, L"J1", L"2");
    EXPECT_EQ(0, f.sk.UniqueMultiPinSegment());
    EXPECT_EQ((std::vector<long>{1}), Ids(f.sk));
    // No way point keeps a line of the removed segment.
    EXPECT_EQ((std::vector<KrRouteSegment*>{s1}), At(f.p));
    EXPECT_EQ((std::vector<KrRouteSegment*>{s1}), At(f.q));
}

TEST(KrSketchCleanup, LongerSegmentStaysWhicheverComesFirst)
{
    Fixture f;
    f.Add(1, 3.0, 1.0, f.p, f.q);
    f.Add(2, 5.0, 1.0, f.q, f.p);  // reversed direction, same two points
    f.sk.InsertConnector(1, L"J1", L"1");
    f.sk.InsertConnector(2, L"J1", L"2");
    f.sk.UniqueMultiPinSegment();
    EXPECT_EQ((std::vector<long>{2}), Ids(f.sk));
}

TEST(KrSketchCleanup, ConnectorSegmentNotParallelToAnotherStays)
{
    // 1 and 2 join P-Q (5 and 3 long), 3 joins P-R: only 2 goes.
    Fixture f;
    f.Add(1, 5.0, 1.0, f.p, f.q);
    f.Add(2, 3.0, 1.0, f.p, f.q);
    f.Add(3, 1.0, 1.0, f.p, f.r);
    f.sk.InsertConnector(1, L"J1", L"1");
    f.sk.InsertConnector(2, L"J1", L"2");
    f.sk.InsertConnector(3, L"J1", L"3");
    f.sk.UniqueMultiPinSegment();
    EXPECT_EQ((std::vector<long>{1, 3}), Ids(f.sk));
}

TEST(KrSketchCleanup, OnlyTheLongestOfThreeParallelSegmentsStays)
{
    Fixture f;
    f.Add(1, 2.0, 1.0, f.p, f.q);
    f.Add(2, 7.0, 1.0, f.p, f.q);
    f.Add(3, 4.0, 1.0, f.p, f.q);
    f.sk.InsertConnector(3, L"J1", L"c");
    f.sk.InsertConnector(1, L"J1", L"a");
    f.sk.InsertConnector(2, L"J1", L"b");
    f.sk.UniqueMultiPinSegment();
    EXPECT_EQ((std::vector<long>{2}), Ids(f.sk));
}

TEST(KrSketchCleanup, EqualLengthsKeepTheLargerDiameterThenTheFirstNamed)
{
    // Lengths differ by 0.5e-5 (equal within 1e-5): diameter 2 beats 1.
    Fixture f;
    f.Add(1, 4.0, 1.0, f.p, f.q);
    f.Add(2, 4.000005, 2.0, f.p, f.q);
    f.sk.InsertConnector(1, L"J1", L"1");
    f.sk.InsertConnector(2, L"J1", L"2");
    f.sk.UniqueMultiPinSegment();
    EXPECT_EQ((std::vector<long>{2}), Ids(f.sk));

    // All equal: the first in entry order (here segment 4, named before 3) stays.
    Fixture g;
    g.Add(3, 4.0, 1.0, g.p, g.q);
    g.Add(4, 4.0, 1.0, g.p, g.q);
    g.sk.InsertConnector(4, L"J1", L"1");
    g.sk.InsertConnector(3, L"J1", L"2");
    g.sk.UniqueMultiPinSegment();
    EXPECT_EQ((std::vector<long>{4}), Ids(g.sk));
}

TEST(KrSketchCleanup, ParallelSegmentsOfDifferentConnectorsStay)
{
    Fixture f;
    f.Add(1, 5.0, 1.0, f.p, f.q);
    f.Add(2, 3.0, 1.0, f.p, f.q);
    f.sk.InsertConnector(1, L"J1", L"1");
    f.sk.InsertConnector(2, L"J2", L"1");
    EXPECT_EQ(0, f.sk.UniqueMultiPinSegment());
    EXPECT_EQ((std::vector<long>{1, 2}), Ids(f.sk));
}

TEST(KrSketchCleanup, SecondCallWithTheSameConnectorNameAddsToItsRecord)
{
    // Pins recorded one at a time under "J1" end up in one record, which then has two entries.
    Fixture f;
    f.Add(1, 5.0, 1.0, f.p, f.q);
    f.Add(2, 3.0, 1.0, f.p, f.q);
    EXPECT_EQ(0, f.sk.InsertConnector(1, L"J1", L"1"));
    EXPECT_EQ(0, f.sk.InsertConnector(2, L"J1", L"2"));
    f.sk.UniqueMultiPinSegment();
    EXPECT_EQ((std::vector<long>{1}), Ids(f.sk));
}

TEST(KrSketchCleanup, EntriesWithAnEmptyConnectorNameAreNotRecorded)
{
    Fixture f;
    f.Add(1, 5.0, 1.0, f.p, f.q);
    f.Add(2, 3.0, 1.0, f.p, f.q);
    EXPECT_EQ(1, f.sk.InsertConnector(1, L"", L"1"));
    EXPECT_EQ(1, f.sk.InsertConnector(2, L"", L"2"));
    f.sk.UniqueMultiPinSegment();
    EXPECT_EQ((std::vector<long>{1, 2}), Ids(f.sk));
}

TEST(KrSketchCleanup, OneSegmentNamedTwiceIsNoBundle)
{
    // Both pins of J1 name segment 1; segment 2 is parallel but not at J1: nothing goes.
    Fixture f;
    f.Add(1, 3.0, 1.0, f.p, f.q);
    f.Add(2, 5.0, 1.0, f.p, f.q);
    f.sk.InsertConnector(1, L"J1", L"1");
    f.sk.InsertConnector(1, L"J1", L"2");
    f.sk.UniqueMultiPinSegment();
    EXPECT_EQ((std::vector<long>{1, 2}), Ids(f.sk));
}

TEST(KrSketchCleanup, UnknownSegmentIdsAtAConnectorAreIgnored)
{
    Fixture f;
    f.Add(1, 5.0, 1.0, f.p, f.q);
    f.Add(2, 3.0, 1.0, f.p, f.q);
    f.sk.InsertConnector(1, L"J1", L"1");
    f.sk.InsertConnector(99, L"J1", L"9");
    f.sk.InsertConnector(2, L"J1", L"2");
    f.sk.UniqueMultiPinSegment();
    EXPECT_EQ((std::vector<long>{1}), Ids(f.sk));
}

TEST(KrSketchCleanup, RemoveMultiPinRedundantSegmentRefusesNull)
{
    KrSketch sk;
    EXPECT_EQ(1, sk.RemoveMultiPinRedundantSegment(nullptr));
}

TEST(KrSketchCleanup, RemoveMultiPinRedundantSegmentWorksOnOneRecord)
{
    Fixture f;
    f.Add(1, 5.0, 1.0, f.p, f.q);
    f.Add(2, 3.0, 1.0, f.p, f.q);
    KrRouteConnector one;
    one.AddEntry(L"1", 1);
    EXPECT_EQ(0, f.sk.RemoveMultiPinRedundantSegment(&one));
    EXPECT_EQ((std::vector<long>{1, 2}), Ids(f.sk));
    KrRouteConnector two;
    two.AddEntry(L"1", 1);
    two.AddEntry(L"2", 2);
    EXPECT_EQ(0, f.sk.RemoveMultiPinRedundantSegment(&two));
    EXPECT_EQ((std::vector<long>{1}), Ids(f.sk));
}

TEST(KrSketchCleanup, ExcludeLongestSegmentTakesTheFirstRankedOutOfTheList)
{
    KrRouteSegment a(1, 3.0, 1.0);
    KrRouteSegment b(2, 5.0, 1.0);
    KrRouteSegment c(3, 4.0, 1.0);
    std::vector<KrRouteSegment*> list{&a, &b, &c};
    KrRouteSegment* longest = nullptr;
    KrSketch sk;
    EXPECT_EQ(0, sk.ExcludeLongestSegment(list, longest));
    EXPECT_EQ(&b, longest);
    EXPECT_EQ((std::vector<KrRouteSegment*>{&a, &c}), list);
}

TEST(KrSketchCleanup, ExcludeLongestSegmentOfAnEmptyListGivesNull)
{
    KrRouteSegment a(1, 3.0, 1.0);
    KrRouteSegment* longest = &a;
    std::vector<KrRouteSegment*> empty;
    KrSketch sk;
    EXPECT_EQ(0, sk.ExcludeLongestSegment(empty, longest));
    EXPECT_EQ(nullptr, longest);
    std::vector<KrRouteSegment*> nulls{nullptr, nullptr};
    longest = &a;
    EXPECT_EQ(0, sk.ExcludeLongestSegment(nulls, longest));
    EXPECT_EQ(nullptr, longest);
    EXPECT_EQ(2u, nulls.size());
}

TEST(KrSketchCleanup, RemoveSegmentsNeverCutsASegmentWithoutBypass)
{
    // Segment 1 alone joins P and Q: removing it would cut Q off, so it stays.
    Fixture f;
    f.Add(1, 5.0, 1.0, f.p, f.q);
    f.Add(2, 1.0, 1.0, f.p, f.r);
    std::vector<KrRouteSegment*> list{Seg(f.sk, 1)};
    EXPECT_EQ(0, f.sk.RemoveSegments(list));
    EXPECT_EQ((std::vector<long>{1, 2}), Ids(f.sk));
}

TEST(KrSketchCleanup, RemoveSegmentsKeepsTheLastOfAParallelPair)
{
    // Both of a parallel pair listed: the first goes (the second still joins P and Q); the
    // second then has no bypass left and stays.
    Fixture f;
    KrRouteSegment* s1 = f.Add(1, 5.0, 1.0, f.p, f.q);
    KrRouteSegment* s2 = f.Add(2, 3.0, 1.0, f.p, f.q);
    std::vector<KrRouteSegment*> list{s1, nullptr, s1, s2};
    EXPECT_EQ(0, f.sk.RemoveSegments(list));
    EXPECT_EQ((std::vector<long>{2}), Ids(f.sk));
    EXPECT_EQ((std::vector<KrRouteSegment*>{s2}), At(f.q));
}

TEST(KrSketchCleanup, RemoveSegmentsIgnoresASegmentThroughAnEndThatEndsElsewhere)
{
    // Segment 2 runs Q -> P -> R (P is an inner joint): it passes both ends of segment 1 but
    // does not join P and Q, so segment 1 stays.
    Fixture f;
    KrRouteSegment* s1 = f.Add(1, 1.0, 1.0, f.p, f.q);
    f.sk.CreateRouteSegment(2, 2.0, 1.0);
    KrRouteSegment* s2 = Seg(f.sk, 2);
    std::vector<KrRoutingWayPoint*> qp{f.q, f.p};
    std::vector<KrRoutingWayPoint*> pr{f.p, f.r};
    KrRouteCADLine* l1 = nullptr;
    s2->CreateCADLine(l1);
    l1->AddPoints(qp);
    KrRouteCADLine* l2 = nullptr;
    s2->CreateCADLine(l2);
    l2->AddPoints(pr);
    s2->AddPoint(f.q);
    s2->AddPoint(f.r);
    std::vector<KrRouteSegment*> list{s1};
    f.sk.RemoveSegments(list);
    EXPECT_EQ((std::vector<long>{1, 2}), Ids(f.sk));
}

TEST(KrSketchCleanup, RemoveSegmentsLeavesSegmentsTheSketchDoesNotHold)
{
    Fixture f;
    f.Add(1, 5.0, 1.0, f.p, f.q);
    KrRouteSegment outside(9, 1.0, 1.0);
    std::vector<KrRouteSegment*> list{&outside};
    EXPECT_EQ(0, f.sk.RemoveSegments(list));
    EXPECT_EQ((std::vector<long>{1}), Ids(f.sk));
    EXPECT_EQ(9, outside.GetId());  // still alive: not deleted by the sketch
}

// ---------------------------------------------------------------------------------------------
// Degenerate segments.

TEST(KrSketchCleanup, DegenerateSegmentsLeaveTheSegmentList)
{
    // The sketch does not free degenerate segments; the test takes them over. `keep` is declared
    // first so that it is destroyed after the sketch.
    std::vector<std::unique_ptr<KrRouteSegment>> keep;
    Fixture f;
    f.Add(1, 1.0, 1.0, f.p, f.q);
    KrRoutingWayPoint* p2 = f.Point(0.000001, 0.0);  // at P's position within 1e-5
    f.Add(2, 1.0, 1.0, f.p, p2);                     // both ends at one position
    f.Add(3, 1.0, 1.0, f.q, f.q);                    // one end only
    f.sk.CreateRouteSegment(4, 1.0, 1.0);            // no ends
    f.Add(5, 1.0, 1.0, f.q, f.r);

    EXPECT_EQ(0, f.sk.RemoveDegenerateRouteSegment());
    EXPECT_EQ((std::vector<long>{1, 5}), Ids(f.sk));
    for (long id : {2L, 3L, 4L}) {
        KrRouteSegment* d = nullptr;
        EXPECT_EQ(0, f.sk.GetDegenerateRouteSegmentById(id, d));
        ASSERT_NE(nullptr, d) << id;
        bool flag = false;
        d->GetDegenerated(flag);
        EXPECT_TRUE(flag) << id;
        keep.emplace_back(d);
    }
    bool flag = true;
    Seg(f.sk, 1)->GetDegenerated(flag);
    EXPECT_FALSE(flag);
}

TEST(KrSketchCleanup, RecoveredDegenerateSegmentReturnsToTheEnd)
{
    std::vector<std::unique_ptr<KrRouteSegment>> keep;  // freed after the sketch, see above
    Fixture f;
    f.Add(1, 1.0, 1.0, f.p, f.p);
    f.Add(2, 1.0, 1.0, f.p, f.q);
    f.Add(3, 1.0, 1.0, f.q, f.q);
    f.sk.RemoveDegenerateRouteSegment();
    KrRouteSegment* d1 = nullptr;
    KrRouteSegment* d3 = nullptr;
    f.sk.GetDegenerateRouteSegmentById(1, d1);
    f.sk.GetDegenerateRouteSegmentById(3, d3);
    ASSERT_NE(nullptr, d1);
    ASSERT_NE(nullptr, d3);
    keep.emplace_back(d3);

    EXPECT_EQ(0, f.sk.RecoverDegenerateRouteSegment(d1));  // owned by the sketch again
    EXPECT_EQ((std::vector<long>{2, 1}), Ids(f.sk));
    KrRouteSegment* gone = nullptr;
    f.sk.GetDegenerateRouteSegmentById(1, gone);
    EXPECT_EQ(nullptr, gone);
    // Still flagged: listed by id but not among the live segments.
    std::vector<KrRouteSegment*> live;
    f.sk.GetAllSegments(live);
    EXPECT_EQ((std::vector<KrRouteSegment*>{Seg(f.sk, 2)}), live);
}

// ---------------------------------------------------------------------------------------------
// Bends.

TEST(KrSketchCleanup, ModifySketchByBendsWithoutBendsChangesNothing)
{
    Fixture f;
    f.Add(1, 1.0, 1.0, f.p, f.q);
    std::vector<ALPoint> before;
    f.sk.GetAllLineNewPos(before);
    EXPECT_EQ(0, f.sk.ModifySketchByBends());
    std::vector<ALPoint> after;
    f.sk.GetAllLineNewPos(after);
    ASSERT_EQ(before.size(), after.size());
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_TRUE(before[i] == after[i]);
    }
    EXPECT_EQ((std::vector<long>{1}), Ids(f.sk));
}

TEST(KrSketchCleanup, ModifySketchByBendsWithRecordedBendsChangesNothing)
{
    Fixture f;
    f.Add(1, 1.0, 1.0, f.p, f.q);
    f.Add(2, 1.0, 1.0, f.q, f.r);
    KrRouteBends bend(2, f.q);
    ASSERT_EQ(0, f.sk.AddBends(&bend));
    EXPECT_EQ(0, f.sk.ModifySketchByBends());
    EXPECT_EQ((std::vector<long>{1, 2}), Ids(f.sk));
    std::vector<ALPoint> pos;
    f.sk.GetAllLineNewPos(pos);
    ASSERT_EQ(4u, pos.size());
    EXPECT_TRUE(pos[2] == ALPoint(1, 0, 0));
    EXPECT_TRUE(pos[3] == ALPoint(0, 1, 0));
}
