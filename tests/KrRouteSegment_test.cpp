// Route segments: accessors, ends, topology queries and ids.
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

namespace {

using Segs = std::vector<KrRouteSegment*>;
using Ids = std::vector<std::pair<long, long>>;

// Owns the way points and segments of one test route; segments go first (they delete their
// lines, which never touch the way points).
struct Route {
    std::vector<KrRoutingWayPoint*> points;
    Segs segments;

    Route() = default;
    Route(Route const&) = delete;
    Route& operator=(Route const&) = delete;
    ~Route() {
        for (KrRouteSegment* s : segments) {
            delete s;
        }
        for (KrRoutingWayPoint* p : points) {
            delete p;
        }
    }

    KrRoutingWayPoint* Point(double x, double y) {
        auto* p = new KrRoutingWayPoint();
        p->SetGridCoord(x, y);
        points.push_back(p);
        return p;
    }

    KrRouteSegment* Empty(long id) {
        auto* s = new KrRouteSegment(id, 1.0, 1.0);
        segments.push_back(s);
        return s;
    }

    // One CAD line through every point of chain; the first and last points become the ends.
    KrRouteSegment* Segment(long id, std::vector<KrRoutingWayPoint*> const& chain,
                            bool placed = false) {
        KrRouteSegment* s = Empty(id);
        KrRouteCADLine* line = nullptr;
        s->CreateCADLine(line);
        for (KrRoutingWayPoint* p : chain) {
            line->AddPoint(p);
        }
        s->AddPoint(chain.front());
        s->AddPoint(chain.back());
        s->SetRedefine(placed);
        return s;
    }

    // One CAD line per consecutive pair of chain.
    KrRouteSegment* Polyline(long id, std::vector<KrRoutingWayPoint*> const& chain) {
        KrRouteSegment* s = Empty(id);
        for (std::size_t i = 1; i < chain.size(); ++i) {
            KrRouteCADLine* line = nullptr;
            s->CreateCADLine(line);
            line->AddPoint(chain[i - 1]);
            line->AddPoint(chain[i]);
        }
        s->AddPoint(chain.front());
        s->AddPoint(chain.back());
        return s;
    }
};

// ---------------------------------------------------------------------------------------------
// Construction and accessors.

TEST(KrRouteSegment, DefaultConstructorReadsZeroEverywhere) {
    KrRouteSegment s;
    double length = -1.0, diameter = -1.0, angle = -1.0;
    bool redefine = true, degenerated = true;
    e_AngleArea type = e_AngleAreaQuarter4;
    int row = -7, lines = -1;
    EXPECT_EQ(s.GetId(), 0);
    EXPECT_EQ(s.GetLength(length), 0);
    EXPECT_EQ(length, 0.0);
    EXPECT_EQ(s.GetDiameter(diameter), 0);
    EXPECT_EQ(diameter, 0.0);
    EXPECT_EQ(s.GetDirectAngle(angle), 0);
    EXPECT_EQ(angle, 0.0);
    EXPECT_EQ(s.IsRedefine(redefine), 0);
    EXPECT_FALSE(redefine);
    EXPECT_EQ(s.GetDegenerated(degenerated), 0);
    EXPECT_FALSE(degenerated);
    EXPECT_EQ(s.GetType(type), 0);
    EXPECT_EQ(type, e_AngleAreaNone);
    EXPECT_EQ(s.GetRow(row), 0);
    EXPECT_EQ(row, 0);
    EXPECT_EQ(s.GetCADLineNum(lines), 0);
    EXPECT_EQ(lines, 0);
}

TEST(KrRouteSegment, ValueConstructorStoresIdLengthDiameterAndZeroAngle) {
    KrRouteSegment s(42, 12.5, 0.75);
    double length = 0.0, diameter = 0.0, angle = -1.0;
    bool redefine = true;
    e_AngleArea type = e_AngleAreaRoot;
    int row = 3;
    s.GetLength(length);
    s.GetDiameter(diameter);
    s.GetDirectAngle(angle);
    s.IsRedefine(redefine);
    s.GetType(type);
    s.GetRow(row);
    EXPECT_EQ(s.GetId(), 42);
    EXPECT_EQ(length, 12.5);
    EXPECT_EQ(diameter, 0.75);
    EXPECT_EQ(angle, 0.0);
    EXPECT_FALSE(redefine);
    EXPECT_EQ(type, e_AngleAreaNone);
    EXPECT_EQ(row, 0);
}

TEST(KrRouteSegment, SettersRoundTrip) {
    KrRouteSegment s(1, 2.0, 3.0);
    EXPECT_EQ(s.SetDiameter(4.5), 0);
    EXPECT_EQ(s.SetRedefine(true), 0);
    EXPECT_EQ(s.SetDirectAngle(HALF_PI), 0);
    EXPECT_EQ(s.SetType(e_AngleAreaQuarter3), 0);
    EXPECT_EQ(s.SetRow(-2), 0);
    EXPECT_EQ(s.SetDegenerated(true), 0);
    double diameter = 0.0, angle = 0.0;
    bool redefine = false, degenerated = false;
    e_AngleArea type = e_AngleAreaNone;
    int row = 0;
    s.GetDiameter(diameter);
    s.GetDirectAngle(angle);
    s.IsRedefine(redefine);
    s.GetType(type);
    s.GetRow(row);
    s.GetDegenerated(degenerated);
    EXPECT_EQ(diameter, 4.5);
    EXPECT_EQ(angle, HALF_PI);
    EXPECT_TRUE(redefine);
    EXPECT_EQ(type, e_AngleAreaQuarter3);
    EXPECT_EQ(row, -2);
    EXPECT_TRUE(degenerated);
}

TEST(KrRouteSegment, SetLengthLeavesLengthUnchanged) {
    KrRouteSegment s(1, 2.0, 3.0);
    EXPECT_EQ(s.SetLength(5.0), 0);
    double length = 0.0;
    s.GetLength(length);
    EXPECT_EQ(length, 2.0);
}

TEST(KrRouteSegment, NoOpOperationsReturnZeroAndChangeNothing) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRouteSegment* s = r.Segment(1, {a, b});
    KrRouteCADLine spare;
    EXPECT_EQ(s->SetStartEnd(), 0);
    EXPECT_EQ(s->InsertCADLine(&spare), 0);
    EXPECT_EQ(s->ExtendSegment(a), 0);
    EXPECT_EQ(s->PlaceSegment(a), 0);
    EXPECT_EQ(s->MoveSegment(1, 2), 0);
    EXPECT_EQ(s->GetSegmentNeedExtend(a), 0);
    int count = 0;
    s->GetCADLineNum(count);
    EXPECT_EQ(count, 1);
    KrRoutingWayPoint* other = nullptr;
    s->GetOtherEnd(a, other);
    EXPECT_EQ(other, b);
    KrRouteSegment* parent = nullptr;
    spare.GetParentSegment(parent);
    EXPECT_EQ(parent, nullptr);
}

TEST(KrRouteSegment, CopySharesLinesAndValues) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRouteSegment* s = r.Segment(9, {a, b});
    s->SetRow(4);
    auto* copy = new KrRouteSegment(*s);
    std::vector<KrRouteCADLine*> mine, theirs;
    s->GetAllCADLine(mine);
    copy->GetAllCADLine(theirs);
    EXPECT_EQ(copy->GetId(), 9);
    EXPECT_EQ(theirs, mine);
    int row = 0;
    copy->GetRow(row);
    EXPECT_EQ(row, 4);
    // Drop the shared lines from the copy before it goes, so they are deleted once.
    *copy = KrRouteSegment();
    EXPECT_EQ(copy->GetId(), 0);
    delete copy;
}

// ---------------------------------------------------------------------------------------------
// Lines and ends.

TEST(KrRouteSegment, CreateCADLineAppendsALineOwnedByTheSegment) {
    KrRouteSegment s(1, 1.0, 1.0);
    KrRouteCADLine* line = nullptr;
    EXPECT_EQ(s.CreateCADLine(line), 0);
    ASSERT_NE(line, nullptr);
    KrRouteSegment* parent = nullptr;
    line->GetParentSegment(parent);
    EXPECT_EQ(parent, &s);
    std::pair<long, long> id;
    line->GetId(id);
    EXPECT_EQ(id, std::make_pair(-1L, -1L));
    int count = 0;
    s.GetCADLineNum(count);
    EXPECT_EQ(count, 1);
}

TEST(KrRouteSegment, AddCADLineHoldsOnceAndReparentsEachTime) {
    KrRouteSegment first(1, 1.0, 1.0);
    KrRouteSegment second(2, 1.0, 1.0);
    auto* line = new KrRouteCADLine();
    EXPECT_EQ(second.AddCADLine(line), 0);
    line->SetParentSegment(&first);
    EXPECT_EQ(second.AddCADLine(line), 0);
    int count = 0;
    second.GetCADLineNum(count);
    EXPECT_EQ(count, 1);
    KrRouteSegment* parent = nullptr;
    line->GetParentSegment(parent);
    EXPECT_EQ(parent, &second);
    EXPECT_EQ(second.AddCADLine(nullptr), 1);
}

TEST(KrRouteSegment, AddPointRefusesNullAndKeepsEachEndOnce) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRouteSegment* s = r.Empty(1);
    EXPECT_EQ(s->AddPoint(nullptr), 1);
    EXPECT_EQ(s->AddPoint(a), 0);
    EXPECT_EQ(s->AddPoint(a), 0);
    EXPECT_EQ(s->AddPoint(b), 0);
    KrRoutingWayPoint* other = nullptr;
    EXPECT_EQ(s->GetOtherEnd(a, other), 0);
    EXPECT_EQ(other, b);
    // The ends do not touch the way point's parents.
    std::vector<KrRouteCADLine*> parents;
    a->GetParent(parents);
    EXPECT_TRUE(parents.empty());
}

TEST(KrRouteSegment, RemovePointDropsTheEnd) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRouteSegment* s = r.Segment(1, {a, b});
    EXPECT_EQ(s->RemovePoint(a), 0);
    bool isEnd = true;
    s->IsOneEnd(a, isEnd);
    EXPECT_FALSE(isEnd);
    bool isStart = false;
    s->IsStartPoint(b, isStart);
    EXPECT_TRUE(isStart);
}

TEST(KrRouteSegment, ReplaceEndReplacesEveryOccurrence) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRoutingWayPoint* c = r.Point(2, 0);
    KrRouteSegment* s = r.Segment(1, {a, b});
    s->ReplaceEnd(b, a);  // ends (a, a)
    EXPECT_EQ(s->ReplaceEnd(a, c), 0);
    KrRoutingWayPoint* other = nullptr;
    s->GetOtherEnd(c, other);
    EXPECT_EQ(other, c);  // both ends are c now
    bool isEnd = true;
    s->IsOneEnd(a, isEnd);
    EXPECT_FALSE(isEnd);
    EXPECT_EQ(s->ReplaceEnd(c, nullptr), 1);
    EXPECT_EQ(s->ReplaceEnd(nullptr, a), 1);
    s->IsOneEnd(c, isEnd);
    EXPECT_TRUE(isEnd);
}

TEST(KrRouteSegment, IsStartPointWithoutEndsFails) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRouteSegment* s = r.Empty(1);
    bool isStart = true;
    EXPECT_EQ(s->IsStartPoint(a, isStart), 1);
    EXPECT_FALSE(isStart);
    s->AddPoint(a);
    s->AddPoint(b);
    EXPECT_EQ(s->IsStartPoint(a, isStart), 0);
    EXPECT_TRUE(isStart);
    EXPECT_EQ(s->IsStartPoint(b, isStart), 0);
    EXPECT_FALSE(isStart);
}

TEST(KrRouteSegment, OneEndMakesOtherEndAndRootPointFailAndReadsDegenerated) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRouteSegment* s = r.Empty(1);
    s->AddPoint(a);
    KrRoutingWayPoint* other = a;
    EXPECT_EQ(s->GetOtherEnd(a, other), 1);
    EXPECT_EQ(other, a);  // untouched
    KrRoutingWayPoint* root = a;
    EXPECT_EQ(s->GetRootPoint(root), 1);
    EXPECT_EQ(root, a);
    bool degenerated = false;
    EXPECT_EQ(s->IsDegenerated(degenerated), 1);
    EXPECT_TRUE(degenerated);
}

TEST(KrRouteSegment, EndsWithinToleranceAreDegenerated) {
    Route r;
    // Differences 0.5e-05 and 0.9e-05 are both below 1e-05.
    KrRoutingWayPoint* a = r.Point(1.0, 1.0);
    KrRoutingWayPoint* b = r.Point(1.0 + 0.5e-05, 1.0 - 0.9e-05);
    KrRouteSegment* s = r.Empty(1);
    s->AddPoint(a);
    s->AddPoint(b);
    bool degenerated = false;
    EXPECT_EQ(s->IsDegenerated(degenerated), 0);
    EXPECT_TRUE(degenerated);
}

TEST(KrRouteSegment, DistinctEndsAreNotDegenerated) {
    Route r;
    // 1.0 + 2e-05 differs from 1.0 by more than the tolerance.
    KrRoutingWayPoint* a = r.Point(1.0, 1.0);
    KrRoutingWayPoint* b = r.Point(1.0 + 2e-05, 1.0);
    KrRouteSegment* s = r.Empty(1);
    s->AddPoint(a);
    s->AddPoint(b);
    bool degenerated = true;
    EXPECT_EQ(s->IsDegenerated(degenerated), 0);
    EXPECT_FALSE(degenerated);
}

TEST(KrRouteSegment, ThreeEndsReadDegeneratedWithFailure) {
    Route r;
    KrRouteSegment* s = r.Empty(1);
    s->AddPoint(r.Point(0, 0));
    s->AddPoint(r.Point(1, 0));
    s->AddPoint(r.Point(2, 0));
    bool degenerated = false;
    EXPECT_EQ(s->IsDegenerated(degenerated), 1);
    EXPECT_TRUE(degenerated);
}

TEST(KrRouteSegment, OtherEndOfAForeignPointIsTheStart) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRoutingWayPoint* elsewhere = r.Point(5, 5);
    KrRouteSegment* s = r.Segment(1, {a, b});
    KrRoutingWayPoint* other = nullptr;
    EXPECT_EQ(s->GetOtherEnd(a, other), 0);
    EXPECT_EQ(other, b);
    EXPECT_EQ(s->GetOtherEnd(b, other), 0);
    EXPECT_EQ(other, a);
    EXPECT_EQ(s->GetOtherEnd(elsewhere, other), 0);
    EXPECT_EQ(other, a);
    other = nullptr;
    EXPECT_EQ(s->GetOtherEnd(nullptr, other), 0);
    EXPECT_EQ(other, a);
}

// ---------------------------------------------------------------------------------------------
// Connected segments.

// p0 --A-- p1 --B-- p2, and C from p0 to p3.
struct Star : Route {
    KrRoutingWayPoint* p0 = Point(0, 0);
    KrRoutingWayPoint* p1 = Point(1, 0);
    KrRoutingWayPoint* p2 = Point(2, 0);
    KrRoutingWayPoint* p3 = Point(0, 1);
    KrRouteSegment* a = Segment(1, {p0, p1});
    KrRouteSegment* b = Segment(2, {p1, p2});
    KrRouteSegment* c = Segment(3, {p0, p3});
};

TEST(KrRouteSegment, AllConnectSegmentReadsStartThenEndWithoutItself) {
    Star r;
    Segs out;
    EXPECT_EQ(r.a->GetAllConnectSegment(out), 0);
    // p0 gives (A, C), p1 adds B; A is then removed.
    EXPECT_EQ(out, (Segs{r.c, r.b}));
}

TEST(KrRouteSegment, AllConnectSegmentNeedsTwoEnds) {
    Route r;
    KrRouteSegment* s = r.Empty(1);
    s->AddPoint(r.Point(0, 0));
    Segs out;
    EXPECT_EQ(s->GetAllConnectSegment(out), 1);
    EXPECT_TRUE(out.empty());
}

TEST(KrRouteSegment, AllConnectSegmentByEndReadsStartOrLastEnd) {
    Star r;
    Segs atStart, atEnd;
    EXPECT_EQ(r.a->GetAllConnectSegmentByEnd(true, atStart), 0);
    EXPECT_EQ(r.a->GetAllConnectSegmentByEnd(false, atEnd), 0);
    EXPECT_EQ(atStart, (Segs{r.c}));
    EXPECT_EQ(atEnd, (Segs{r.b}));
}

TEST(KrRouteSegment, AllConnectSegmentByEndWithoutEndsFails) {
    KrRouteSegment s(1, 1.0, 1.0);
    Segs out;
    EXPECT_EQ(s.GetAllConnectSegmentByEnd(true, out), 1);
    EXPECT_TRUE(out.empty());
}

TEST(KrRouteSegment, ConnectSegmentByPointFiltersByRedefineAndDropsItself) {
    Star r;
    r.a->SetRedefine(true);
    r.c->SetRedefine(true);
    Segs placed, unplaced;
    EXPECT_EQ(r.a->GetConnectSegmentByPoint(r.p0, true, placed), 0);
    EXPECT_EQ(placed, (Segs{r.c}));
    EXPECT_EQ(r.a->GetConnectSegmentByPoint(r.p1, false, unplaced), 0);
    EXPECT_EQ(unplaced, (Segs{r.b}));
    EXPECT_EQ(r.a->GetConnectSegmentByPoint(nullptr, true, placed), 1);
}

TEST(KrRouteSegment, ConnectByEndThroughOthersRootPoint) {
    Star r;
    // B at angle 0 from x = 1 to x = 2: its root point is its start p1, an end of A.
    r.b->SetDirectAngle(0.0);
    bool connected = false;
    EXPECT_EQ(r.a->IsConnectByEnd(r.b, connected), 0);
    EXPECT_TRUE(connected);
}

TEST(KrRouteSegment, ConnectByEndThroughOthersOppositeEnd) {
    Star r;
    // G from p1 (x = 1) to q (x = -3) at angle 0: LessThan(1, -3) is false, so its root is q and
    // its opposite end p1 is an end of A.
    KrRoutingWayPoint* q = r.Point(-3, 0);
    KrRouteSegment* g = r.Segment(7, {r.p1, q});
    bool connected = false;
    EXPECT_EQ(r.a->IsConnectByEnd(g, connected), 0);
    EXPECT_TRUE(connected);
}

TEST(KrRouteSegment, NotConnectByEndReturnsOne) {
    Star r;
    KrRouteSegment* far = r.Segment(8, {r.Point(10, 10), r.Point(11, 10)});
    bool connected = true;
    EXPECT_EQ(r.a->IsConnectByEnd(far, connected), 1);
    EXPECT_FALSE(connected);
    connected = true;
    EXPECT_EQ(r.a->IsConnectByEnd(nullptr, connected), 1);
    EXPECT_FALSE(connected);
}

TEST(KrRouteSegment, ConnectEndPrefersTheStart) {
    Star r;
    KrRoutingWayPoint* end = nullptr;
    // Two segments (A, C) meet at A's start p0.
    EXPECT_EQ(r.a->GetConnectEnd(end), 0);
    EXPECT_EQ(end, r.p0);
    // B's start p1 holds A and B.
    EXPECT_EQ(r.b->GetConnectEnd(end), 0);
    EXPECT_EQ(end, r.p1);
}

TEST(KrRouteSegment, ConnectEndFallsBackToTheEnd) {
    Star r;
    KrRoutingWayPoint* p4 = r.Point(5, 5);
    KrRouteSegment* d = r.Segment(4, {p4, r.p2});  // p4 free, p2 shared with B
    KrRoutingWayPoint* end = nullptr;
    EXPECT_EQ(d->GetConnectEnd(end), 0);
    EXPECT_EQ(end, r.p2);
}

TEST(KrRouteSegment, IsolatedSegmentHasNoConnectEnd) {
    Route r;
    KrRouteSegment* s = r.Segment(1, {r.Point(0, 0), r.Point(1, 0)});
    KrRoutingWayPoint* sentinel = r.Point(9, 9);
    KrRoutingWayPoint* end = sentinel;
    EXPECT_EQ(s->GetConnectEnd(end), 1);
    EXPECT_EQ(end, sentinel);
}

TEST(KrRouteSegment, UnHandledEndIsTheLastEndWhenSegmentsWaitThere) {
    Star r;
    r.a->SetRedefine(true);
    r.a->SetType(e_AngleAreaQuarter1);
    KrRoutingWayPoint* end = nullptr;
    Segs segs;
    EXPECT_EQ(r.a->GetUnHandledEnd(end, segs), 0);
    EXPECT_EQ(end, r.p1);
    EXPECT_EQ(segs, (Segs{r.b}));
}

TEST(KrRouteSegment, UnHandledEndOfABranchIgnoresItsStart) {
    Star r;
    r.a->SetRedefine(true);
    r.b->SetRedefine(true);
    r.a->SetType(e_AngleAreaQuarter1);
    KrRoutingWayPoint* end = r.p3;
    Segs segs;
    // Nothing waits at p1; C waits at the start p0 but A is not the root segment.
    EXPECT_EQ(r.a->GetUnHandledEnd(end, segs), 0);
    EXPECT_EQ(end, nullptr);
    EXPECT_TRUE(segs.empty());
}

TEST(KrRouteSegment, UnHandledEndOfTheRootFallsBackToItsStart) {
    Star r;
    r.a->SetRedefine(true);
    r.b->SetRedefine(true);
    r.a->SetType(e_AngleAreaRoot);
    KrRoutingWayPoint* end = nullptr;
    Segs segs;
    EXPECT_EQ(r.a->GetUnHandledEnd(end, segs), 0);
    EXPECT_EQ(end, r.p0);
    EXPECT_EQ(segs, (Segs{r.c}));
}

TEST(KrRouteSegment, UnHandledEndOfAFinishedRootIsNull) {
    Star r;
    for (KrRouteSegment* s : r.segments) {
        s->SetRedefine(true);
    }
    r.a->SetType(e_AngleAreaRoot);
    KrRoutingWayPoint* end = r.p3;
    Segs segs;
    EXPECT_EQ(r.a->GetUnHandledEnd(end, segs), 0);
    EXPECT_EQ(end, nullptr);
    EXPECT_TRUE(segs.empty());
}

TEST(KrRouteSegment, UnHandledEndNeedsTwoEnds) {
    Route r;
    KrRouteSegment* s = r.Empty(1);
    s->AddPoint(r.Point(0, 0));
    KrRoutingWayPoint* end = nullptr;
    Segs segs;
    EXPECT_EQ(s->GetUnHandledEnd(end, segs), 1);
}

// ---------------------------------------------------------------------------------------------
// Root point: which end the segment is laid from.

struct RootPointCase {
    double angle;
    double x0, y0, x1, y1;
};

KrRoutingWayPoint* RootOf(Route& r, RootPointCase const& c, KrRoutingWayPoint*& start) {
    start = r.Point(c.x0, c.y0);
    KrRouteSegment* s = r.Segment(1, {start, r.Point(c.x1, c.y1)});
    s->SetDirectAngle(c.angle);
    KrRoutingWayPoint* root = nullptr;
    EXPECT_EQ(s->GetRootPoint(root), 0);
    return root;
}

TEST(KrRouteSegment, RootPointTowardsPlusXIsTheLeftEnd) {
    Route r;
    KrRoutingWayPoint* start = nullptr;
    // cos 0 = 1 > 0: start at x = 10, end at x = 0, LessThan(10, 0) false: the end is the root.
    KrRoutingWayPoint* root = RootOf(r, {0.0, 10, 0, 0, 0}, start);
    EXPECT_EQ(root, r.points.back());  // the end
    // Start at x = 0, end at x = 10: LessThan(0, 10) true: the start.
    root = RootOf(r, {0.0, 0, 0, 10, 0}, start);
    EXPECT_EQ(root, start);
}

TEST(KrRouteSegment, RootPointTowardsMinusXIsTheRightEnd) {
    Route r;
    KrRoutingWayPoint* start = nullptr;
    // cos pi = -1 < 0: start x = 0, end x = 10, LessThan(0, 10) true: the end.
    KrRoutingWayPoint* root = RootOf(r, {KR_PI, 0, 0, 10, 0}, start);
    EXPECT_EQ(root, r.points.back());  // the end
    // start x = 10, end x = 0: LessThan false: the start.
    root = RootOf(r, {KR_PI, 10, 0, 0, 0}, start);
    EXPECT_EQ(root, start);
}

TEST(KrRouteSegment, RootPointUpwardsIsTheLowerEnd) {
    Route r;
    KrRoutingWayPoint* start = nullptr;
    // cos(1.5707963268) is about -2e-11, neither side of 0: vertical, angle equals HALF_PI.
    // start y = 0, end y = 5: LessThan(0, 5): the start.
    KrRoutingWayPoint* root = RootOf(r, {HALF_PI, 0, 0, 0, 5}, start);
    EXPECT_EQ(root, start);
    root = RootOf(r, {HALF_PI, 0, 5, 0, 0}, start);
    EXPECT_EQ(root, r.points.back());  // the end
}

TEST(KrRouteSegment, RootPointDownwardsIsTheUpperEnd) {
    Route r;
    KrRoutingWayPoint* start = nullptr;
    // 3pi/2: vertical but not HALF_PI: start y = 5, end y = 0, LessThan(5, 0) false: the start.
    KrRoutingWayPoint* root = RootOf(r, {KR_THREE_HALF_PI, 0, 5, 0, 0}, start);
    EXPECT_EQ(root, start);
    root = RootOf(r, {KR_THREE_HALF_PI, 0, 0, 0, 5}, start);
    EXPECT_EQ(root, r.points.back());  // the end
}

TEST(KrRouteSegment, RootPointComparesXWithinTolerance) {
    Route r;
    KrRoutingWayPoint* start = nullptr;
    // Angle 0, x0 = 0 and x1 = 0.5e-05 count as equal: LessThan false, the end is the root.
    KrRoutingWayPoint* root = RootOf(r, {0.0, 0, 0, 0.5e-05, 3}, start);
    EXPECT_EQ(root, r.points.back());  // the end
}

// ---------------------------------------------------------------------------------------------
// Root segment.

TEST(KrRouteSegment, RootSegmentOfTheRootIsNull) {
    Star r;
    r.a->SetType(e_AngleAreaRoot);
    KrRouteSegment* root = r.b;
    EXPECT_EQ(r.a->GetRootSegment(root), 0);
    EXPECT_EQ(root, nullptr);
}

TEST(KrRouteSegment, RootSegmentIsThePlacedSegmentEndingAtAnEnd) {
    Star r;
    r.a->SetRedefine(true);
    // p1 is A's end (not its start) and A is placed: B's root segment is A.
    KrRouteSegment* root = nullptr;
    EXPECT_EQ(r.b->GetRootSegment(root), 0);
    EXPECT_EQ(root, r.a);
}

TEST(KrRouteSegment, RootSegmentSkipsAnAnswerWithItsOwnId) {
    Route r;
    KrRoutingWayPoint* p0 = r.Point(0, 0);
    KrRoutingWayPoint* p1 = r.Point(1, 0);
    KrRoutingWayPoint* p2 = r.Point(-1, 0);
    // B (p2 -> p1) is created first, so p1 answers B before A.
    KrRouteSegment* b = r.Segment(2, {p2, p1}, true);
    r.Segment(1, {p0, p1}, true);
    KrRouteSegment* root = b;
    // p2 is B's start: no answer. p1 answers B itself: skipped.
    EXPECT_EQ(b->GetRootSegment(root), 1);
    EXPECT_EQ(root, nullptr);
}

TEST(KrRouteSegment, RootSegmentWithoutPlacedNeighboursFails) {
    Star r;
    KrRouteSegment* root = r.c;
    EXPECT_EQ(r.b->GetRootSegment(root), 1);
    EXPECT_EQ(root, nullptr);
}

// ---------------------------------------------------------------------------------------------
// Placed segments beyond a point.

// R: p0-p1; A: p1-p2; B: p1-p3; C: p2-p4; D: p3-p5; E (unplaced): p2-p6. All but E placed.
struct Tree : Route {
    KrRoutingWayPoint* p0 = Point(0, 0);
    KrRoutingWayPoint* p1 = Point(1, 0);
    KrRoutingWayPoint* p2 = Point(2, 1);
    KrRoutingWayPoint* p3 = Point(2, -1);
    KrRoutingWayPoint* p4 = Point(3, 1);
    KrRoutingWayPoint* p5 = Point(3, -1);
    KrRoutingWayPoint* p6 = Point(2, 2);
    KrRouteSegment* root = Segment(10, {p0, p1}, true);
    KrRouteSegment* a = Segment(11, {p1, p2}, true);
    KrRouteSegment* b = Segment(12, {p1, p3}, true);
    KrRouteSegment* c = Segment(13, {p2, p4}, true);
    KrRouteSegment* d = Segment(14, {p3, p5}, true);
    KrRouteSegment* e = Segment(15, {p2, p6}, false);
};

TEST(KrRouteSegment, TailHandledListsDirectSegmentsThenEachBranchInOrder) {
    Tree r;
    Segs out;
    // At p1: (A, B). Beyond A at p2: C (E is unplaced). Beyond B at p3: D.
    // out = (A, B) + (C) + (D).
    EXPECT_EQ(r.root->GetTailHandledSegment(r.p1, out), 0);
    EXPECT_EQ(out, (Segs{r.a, r.b, r.c, r.d}));
}

TEST(KrRouteSegment, TailHandledOfALeafIsEmpty) {
    Tree r;
    Segs out;
    EXPECT_EQ(r.c->GetTailHandledSegment(r.p4, out), 0);
    EXPECT_TRUE(out.empty());
}

TEST(KrRouteSegment, TailHandledWithNullPointFails) {
    Tree r;
    Segs out;
    EXPECT_EQ(r.root->GetTailHandledSegment(nullptr, out), 1);
    EXPECT_TRUE(out.empty());
}

TEST(KrRouteSegment, TailHandledAppendsAfterEarlierEntries) {
    Tree r;
    KrRouteSegment* x = r.Segment(99, {r.Point(20, 20), r.Point(21, 20)}, true);
    Segs out{x};
    // x is expanded too (beyond its start, where nothing else meets), adding nothing.
    EXPECT_EQ(r.root->GetTailHandledSegment(r.p1, out), 0);
    EXPECT_EQ(out, (Segs{x, r.a, r.b, r.c, r.d}));
}

TEST(KrRouteSegment, TailHandledFailureKeepsOnlyCompletedBranches) {
    Tree r;
    // F leaves p3 with a single end: beyond B, F has no other end and the walk fails there.
    KrRoutingWayPoint* p7 = r.Point(2, -2);
    KrRouteSegment* f = r.Empty(16);
    KrRouteCADLine* line = nullptr;
    f->CreateCADLine(line);
    line->AddPoint(r.p3);
    line->AddPoint(p7);
    f->AddPoint(r.p3);
    f->SetRedefine(true);
    Segs out;
    // (A, B) and A's branch (C) are complete; B's branch (D, F) fails and is not merged.
    EXPECT_EQ(r.root->GetTailHandledSegment(r.p1, out), 1);
    EXPECT_EQ(out, (Segs{r.a, r.b, r.c}));
}

TEST(KrRouteSegment, TailHandledOnALongChainDoesNotOverflowTheStack) {
    constexpr int kSegments = 100000;
    Route r;
    r.points.reserve(kSegments + 1);
    r.segments.reserve(kSegments);
    for (int i = 0; i <= kSegments; ++i) {
        r.Point(i, 0);
    }
    for (int i = 0; i < kSegments; ++i) {
        r.Segment(i, {r.points[i], r.points[i + 1]}, true);
    }
    Segs out;
    EXPECT_EQ(r.segments[0]->GetTailHandledSegment(r.points[1], out), 0);
    ASSERT_EQ(out.size(), static_cast<std::size_t>(kSegments - 1));
    for (int i = 1; i < kSegments; ++i) {
        ASSERT_EQ(out[i - 1], r.segments[i]) << "at " << i;
    }
}

TEST(KrRouteSegment, TailHandledStopsOnALoop) {
    Route r;
    KrRoutingWayPoint* p0 = r.Point(0, 0);
    KrRoutingWayPoint* p1 = r.Point(1, 0);
    KrRoutingWayPoint* p2 = r.Point(0, 1);
    KrRouteSegment* a = r.Segment(1, {p0, p1}, true);
    KrRouteSegment* b = r.Segment(2, {p1, p2}, true);
    KrRouteSegment* c = r.Segment(3, {p2, p0}, true);
    Segs out;
    // At p1: B; beyond B at p2: C; beyond C at p0: A, which is being expanded and stops there.
    EXPECT_EQ(a->GetTailHandledSegment(p1, out), 0);
    EXPECT_EQ(out, (Segs{b, c, a}));
}

// The recursive rule, written out plainly, with the same loop guard (a segment on the current
// path is not expanded again). Used only on small routes.
int RecursiveTail(KrRouteSegment* seg, KrRoutingWayPoint* p, Segs& out, Segs& path) {
    if (p == nullptr) {
        return 1;
    }
    seg->GetConnectSegmentByPoint(p, true, out);
    std::size_t const n = out.size();
    path.push_back(seg);
    for (std::size_t i = 0; i < n; ++i) {
        KrRouteSegment* s = out[i];
        if (s->GetId() == seg->GetId() || std::find(path.begin(), path.end(), s) != path.end()) {
            continue;
        }
        KrRoutingWayPoint* e = nullptr;
        s->GetOtherEnd(p, e);
        Segs sub;
        if (RecursiveTail(s, e, sub, path) != 0) {
            path.pop_back();
            return 1;
        }
        for (KrRouteSegment* x : sub) {
            if (std::find(out.begin(), out.end(), x) == out.end()) {
                out.push_back(x);
            }
        }
    }
    path.pop_back();
    return 0;
}

// The walk against the rule from every point of the route, for every segment.
void ExpectTailFollowsTheRuleEverywhere(Route& r, int round) {
    for (KrRouteSegment* s : r.segments) {
        for (KrRoutingWayPoint* p : r.points) {
            Segs expected, got, path;
            int const want = RecursiveTail(s, p, expected, path);
            ASSERT_EQ(s->GetTailHandledSegment(p, got), want) << "round " << round;
            ASSERT_EQ(got, expected) << "round " << round;
        }
    }
}

TEST(KrRouteSegment, TailHandledMatchesTheRecursiveRuleOnRandomRoutes) {
    std::mt19937 rng(20240611u);
    for (int round = 0; round < 300; ++round) {
        Route r;
        int const pointCount = 2 + static_cast<int>(rng() % 5);
        int const segmentCount = 1 + static_cast<int>(rng() % 7);
        for (int i = 0; i < pointCount; ++i) {
            r.Point(i, 0);
        }
        for (int k = 0; k < segmentCount; ++k) {
            // Two different points: the second index is offset from the first by 1 .. n-1.
            std::size_t const i = rng() % pointCount;
            std::size_t const j = (i + 1 + rng() % (pointCount - 1)) % pointCount;
            KrRoutingWayPoint* a = r.points[i];
            KrRoutingWayPoint* b = r.points[j];
            KrRouteSegment* s = r.Segment(k, {a, b}, rng() % 4 != 0);
            if (rng() % 10 == 0) {
                s->RemovePoint(b);  // a placed segment with one end makes the walk fail
            }
        }
        ExpectTailFollowsTheRuleEverywhere(r, round);
        if (::testing::Test::HasFatalFailure()) {
            return;
        }
    }
}

// Lines through several points: a segment is listed at every point its lines pass through, and
// from a point that is not its start it is left toward its start.
TEST(KrRouteSegment, TailHandledMatchesTheRecursiveRuleWhereLinesRunThroughOtherJoints) {
    std::mt19937 rng(20261124u);
    for (int round = 0; round < 300; ++round) {
        Route r;
        int const pointCount = 3 + static_cast<int>(rng() % 5);
        int const segmentCount = 2 + static_cast<int>(rng() % 7);
        for (int i = 0; i < pointCount; ++i) {
            r.Point(i, 0);
        }
        for (int k = 0; k < segmentCount; ++k) {
            std::vector<KrRoutingWayPoint*> chain;
            std::vector<std::size_t> order(r.points.size());
            for (std::size_t i = 0; i < order.size(); ++i) {
                order[i] = i;
            }
            std::shuffle(order.begin(), order.end(), rng);
            std::size_t const length = 2 + rng() % 2;
            for (std::size_t i = 0; i < length; ++i) {
                chain.push_back(r.points[order[i]]);
            }
            r.Segment(k, chain, rng() % 5 != 0);
        }
        ExpectTailFollowsTheRuleEverywhere(r, round);
        if (::testing::Test::HasFatalFailure()) {
            return;
        }
    }
}

// A ladder: two rails of placed segments joined by a rung at every joint, hanging off a first
// segment. The rule's simple paths through it are exponential in its length; the walk lists the
// same segments in the same order as the rule on a short ladder and ends at once on a long one,
// listing every segment once. The first segment is listed too: the ladder's cycles lead back to
// the joint it ends at.
struct Ladder {
    Route r;
    KrRouteSegment* first = nullptr;
    KrRoutingWayPoint* from = nullptr;
    explicit Ladder(int rungs) {
        std::vector<KrRoutingWayPoint*> top;
        std::vector<KrRoutingWayPoint*> bottom;
        for (int i = 0; i <= rungs; ++i) {
            top.push_back(r.Point(i, 1));
            bottom.push_back(r.Point(i, 0));
        }
        KrRoutingWayPoint* anchor = r.Point(-1, 1);
        first = r.Segment(1, {anchor, top[0]}, true);
        from = top[0];
        long id = 2;
        for (int i = 0; i <= rungs; ++i) {
            r.Segment(id++, {top[i], bottom[i]}, true);
            if (i < rungs) {
                r.Segment(id++, {top[i], top[i + 1]}, true);
                r.Segment(id++, {bottom[i], bottom[i + 1]}, true);
            }
        }
    }
};

TEST(KrRouteSegment, TailHandledOnAShortLadderFollowsTheRecursiveRule) {
    Ladder l(5);
    Segs expected, got, path;
    ASSERT_EQ(RecursiveTail(l.first, l.from, expected, path), 0);
    ASSERT_EQ(l.first->GetTailHandledSegment(l.from, got), 0);
    EXPECT_EQ(got, expected);
    EXPECT_EQ(got.size(), l.r.segments.size());
}

TEST(KrRouteSegment, TailHandledOnALongLadderEndsAndListsEverySegmentOnce) {
    Ladder l(400);  // the rule alone would walk more than 2^400 paths
    Segs got;
    ASSERT_EQ(l.first->GetTailHandledSegment(l.from, got), 0);
    EXPECT_EQ(got.size(), l.r.segments.size());
    std::sort(got.begin(), got.end());
    EXPECT_TRUE(std::adjacent_find(got.begin(), got.end()) == got.end());
}

// ---------------------------------------------------------------------------------------------
// Duplicates between the same two points.

TEST(KrRouteSegment, SameBothEndsListsItselfThenDuplicatesEitherWay) {
    Route r;
    KrRoutingWayPoint* p0 = r.Point(0, 0);
    KrRoutingWayPoint* p1 = r.Point(1, 0);
    KrRoutingWayPoint* p2 = r.Point(0, 1);
    KrRouteSegment* a = r.Segment(1, {p0, p1});
    KrRouteSegment* b = r.Segment(2, {p0, p1});
    r.Segment(3, {p0, p2});
    KrRouteSegment* d = r.Segment(4, {p1, p0});
    Segs out;
    // Others at p0: (B, C, D). B's other end from p0 is p1, C's p2, D's (p0 not its start) p1.
    EXPECT_EQ(a->GetSameBothEndsSegments(out), 0);
    EXPECT_EQ(out, (Segs{a, b, d}));
}

TEST(KrRouteSegment, SameBothEndsWithoutDuplicatesIsItselfAlone) {
    Star r;
    Segs out;
    EXPECT_EQ(r.a->GetSameBothEndsSegments(out), 0);
    EXPECT_EQ(out, (Segs{r.a}));
}

TEST(KrRouteSegment, SameBothEndsWithOneEndListsItselfAndFails) {
    Route r;
    KrRouteSegment* s = r.Empty(1);
    s->AddPoint(r.Point(0, 0));
    Segs out;
    EXPECT_EQ(s->GetSameBothEndsSegments(out), 1);
    EXPECT_EQ(out, (Segs{s}));
}

// ---------------------------------------------------------------------------------------------
// Ids.

TEST(KrRouteSegment, SetPointIdGivesLineEndsTheirPairsInOrder) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRoutingWayPoint* c = r.Point(1, 1);
    KrRouteSegment* s = r.Polyline(1, {a, b, c});
    long idA[2] = {1, 2}, idB[2] = {3, 4}, idC[2] = {5, 6};
    std::vector<long*> ids{idA, idB, idC};
    EXPECT_EQ(s->SetPointId(ids), 0);
    std::pair<long, long> got;
    a->GetPointId(got);
    EXPECT_EQ(got, std::make_pair(1L, 2L));
    b->GetPointId(got);
    EXPECT_EQ(got, std::make_pair(3L, 4L));
    c->GetPointId(got);
    EXPECT_EQ(got, std::make_pair(5L, 6L));
}

TEST(KrRouteSegment, SetPointIdWithFewerPairsSetsOnlyTheFirstPoints) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRouteSegment* s = r.Segment(1, {a, b});
    long idA[2] = {7, 8};
    std::vector<long*> ids{idA};
    EXPECT_EQ(s->SetPointId(ids), 0);
    std::pair<long, long> got(-5, -5);
    EXPECT_EQ(a->GetPointId(got), 0);
    EXPECT_EQ(got, std::make_pair(7L, 8L));
    EXPECT_EQ(b->GetPointId(got), 1);
}

TEST(KrRouteSegment, SetPointIdWithSurplusOrNullPairsReportsOne) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRouteSegment* s = r.Segment(1, {a, b});
    long idA[2] = {1, 2}, idC[2] = {5, 6};
    std::vector<long*> ids{idA, nullptr, idC};
    EXPECT_EQ(s->SetPointId(ids), 1);
    std::pair<long, long> got;
    EXPECT_EQ(a->GetPointId(got), 0);
    EXPECT_EQ(got, std::make_pair(1L, 2L));
    EXPECT_EQ(b->GetPointId(got), 1);
}

TEST(KrRouteSegment, SketchPointIdOnlyForAFreeEnd) {
    Star r;
    long id0[2] = {7, 8}, id1[2] = {9, 10};
    r.p2->SetPointId(id0);
    r.p1->SetPointId(id1);
    Ids out;
    EXPECT_EQ(r.b->GetSketchPointId(r.p2, out), 0);  // only B at p2
    EXPECT_EQ(r.b->GetSketchPointId(r.p1, out), 0);  // A and B at p1
    EXPECT_EQ(out, (Ids{{7, 8}}));
    EXPECT_EQ(r.b->GetSketchPointId(nullptr, out), 1);
}

TEST(KrRouteSegment, SketchPointIdOfAFreeEndWithoutIdAddsNothing) {
    Star r;
    Ids out;
    EXPECT_EQ(r.b->GetSketchPointId(r.p2, out), 0);
    EXPECT_TRUE(out.empty());
}

TEST(KrRouteSegment, SketchPointIdOfAnotherSegmentsPointAddsNothing) {
    Star r;
    long id3[2] = {1, 1};
    r.p3->SetPointId(id3);
    Ids out;
    EXPECT_EQ(r.b->GetSketchPointId(r.p3, out), 0);  // only C meets there
    EXPECT_TRUE(out.empty());
}

TEST(KrRouteSegment, ConnectorSketchPointIdsAreTheFreeEndsStartFirst) {
    Route r;
    KrRoutingWayPoint* p0 = r.Point(0, 0);
    KrRoutingWayPoint* p1 = r.Point(1, 0);
    KrRoutingWayPoint* p2 = r.Point(2, 0);
    KrRouteSegment* a = r.Segment(1, {p0, p1});
    long id0[2] = {1, 2}, id1[2] = {3, 4}, id2[2] = {5, 6};
    p0->SetPointId(id0);
    p1->SetPointId(id1);
    p2->SetPointId(id2);
    Ids lone;
    EXPECT_EQ(a->GetConnectorSketchPointId(lone), 0);
    EXPECT_EQ(lone, (Ids{{1, 2}, {3, 4}}));
    r.Segment(2, {p1, p2});
    Ids joined;
    EXPECT_EQ(a->GetConnectorSketchPointId(joined), 0);
    EXPECT_EQ(joined, (Ids{{1, 2}}));
}

TEST(KrRouteSegment, ConnectorSketchPointIdWithoutEndsFails) {
    KrRouteSegment s(1, 1.0, 1.0);
    Ids out;
    EXPECT_EQ(s.GetConnectorSketchPointId(out), 1);
    EXPECT_TRUE(out.empty());
}

TEST(KrRouteSegment, PointByRouteSegmentIdNeedsEverySegmentListed) {
    Star r;  // A (id 1) p0-p1; at p0 also C (id 3), at p1 also B (id 2)
    KrRoutingWayPoint* p = nullptr;
    std::vector<long> onlyAandC{1, 3};
    EXPECT_EQ(r.a->GetPointByRouteSegmentId(onlyAandC, p), 0);
    EXPECT_EQ(p, r.p0);  // p1 also holds B (2), not listed
    std::vector<long> onlyAandB{2, 1};
    EXPECT_EQ(r.a->GetPointByRouteSegmentId(onlyAandB, p), 0);
    EXPECT_EQ(p, r.p1);
}

TEST(KrRouteSegment, PointByRouteSegmentIdEndWinsOverStart) {
    Star r;
    KrRoutingWayPoint* p = nullptr;
    std::vector<long> all{1, 2, 3};
    EXPECT_EQ(r.a->GetPointByRouteSegmentId(all, p), 0);
    EXPECT_EQ(p, r.p1);
}

TEST(KrRouteSegment, PointByRouteSegmentIdLeavesPointWhenNoneQualifies) {
    Star r;
    KrRoutingWayPoint* p = r.p3;
    std::vector<long> none{1};
    EXPECT_EQ(r.a->GetPointByRouteSegmentId(none, p), 0);
    EXPECT_EQ(p, r.p3);
}

}  // namespace
