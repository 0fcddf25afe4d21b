// Route segments: rebuilding, moving, shortening and extending, rows and geometric tests.
#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/layout/IPriority.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

using Segs = std::vector<KrRouteSegment*>;
using Points = std::vector<KrRoutingWayPoint*>;
using Lines = std::vector<KrRouteCADLine*>;

// Owns the way points and segments of one test route; segments go first.
struct Route {
    Points points;
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

    // One CAD line per consecutive pair of chain; the first and last points become the ends.
    KrRouteSegment* Polyline(long id, Points const& chain, bool placed = false) {
        KrRouteSegment* s = Empty(id);
        for (std::size_t i = 1; i < chain.size(); ++i) {
            KrRouteCADLine* line = nullptr;
            s->CreateCADLine(line);
            line->AddPoint(chain[i - 1]);
            line->AddPoint(chain[i]);
        }
        s->AddPoint(chain.front());
        s->AddPoint(chain.back());
        s->SetRedefine(placed);
        return s;
    }
};

Lines LinesOf(KrRouteSegment* s) {
    Lines out;
    s->GetAllCADLine(out);
    return out;
}

Points PointsOf(KrRouteCADLine* line) {
    Points out;
    line->GetWayPoint(out);
    return out;
}

Lines ParentsOf(KrRoutingWayPoint* p) {
    Lines out;
    p->GetParent(out);
    return out;
}

Points EndsOf(KrRouteSegment* s) {
    Points out;
    KrRoutingWayPoint* start = nullptr;
    KrRoutingWayPoint* end = nullptr;
    if (s->GetOtherEnd(nullptr, start) == 0) {
        out.push_back(start);
        s->GetOtherEnd(start, end);
        out.push_back(end);
    }
    return out;
}

Segs SegmentsAt(KrRoutingWayPoint* p) {
    Segs out;
    p->GetConnectSegment(out);
    return out;
}

void ExpectAt(KrRoutingWayPoint* p, double x, double y) {
    ASSERT_NE(p, nullptr);
    double px = 0.0, py = 0.0;
    p->GetGridCoord(px, py);
    EXPECT_NEAR(px, x, 1e-9);
    EXPECT_NEAR(py, y, 1e-9);
}

// Records the candidates it is asked about and answers a fixed segment.
class FixedPriority : public IPriority {
public:
    explicit FixedPriority(KrRouteSegment* answer) : answer(answer) {}
    int GetPriorestSegment(std::vector<KrRouteSegment*>& segs, KrRouteSegment*& result) override {
        asked = segs;
        result = answer;
        return 0;
    }
    KrRouteSegment* answer;
    Segs asked;
};

// ---------------------------------------------------------------------------------------------
// SetNewPoints.

TEST(KrRouteSegmentGeometry, NewPointsJoinCollinearRunsIntoOneLine) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* x = r.Point(5, 5);
    KrRouteSegment* s = r.Polyline(1, {a, x});
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRoutingWayPoint* c = r.Point(2, 0);
    KrRoutingWayPoint* d = r.Point(2, 1);
    Points path{a, b, c, d};
    EXPECT_EQ(s->SetNewPoints(path), 0);
    // A, B, C on y = 0: one line; C to D turns upwards: a second line.
    Lines lines = LinesOf(s);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(PointsOf(lines[0]), (Points{a, b, c}));
    EXPECT_EQ(PointsOf(lines[1]), (Points{c, d}));
    EXPECT_EQ(EndsOf(s), (Points{a, d}));
    KrRouteSegment* parent = nullptr;
    lines[1]->GetParentSegment(parent);
    EXPECT_EQ(parent, s);
    EXPECT_EQ(ParentsOf(c), (Lines{lines[0], lines[1]}));
    EXPECT_TRUE(ParentsOf(x).empty());
}

TEST(KrRouteSegmentGeometry, NewPointsFromAnOldEndHandTheOtherEndsBranchesToTheNewEnd) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* x = r.Point(5, 5);
    KrRoutingWayPoint* g = r.Point(6, 6);
    KrRouteSegment* s = r.Polyline(1, {a, x});
    KrRouteSegment* branch = r.Polyline(2, {x, g});
    KrRoutingWayPoint* e = r.Point(3, 0);
    Points path{a, e};
    EXPECT_EQ(s->SetNewPoints(path), 0);
    EXPECT_EQ(EndsOf(s), (Points{a, e}));
    Lines lines = LinesOf(s);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(PointsOf(lines[0]), (Points{a, e}));
    // The old end x is left without lines; the branch now starts at e.
    EXPECT_TRUE(ParentsOf(x).empty());
    EXPECT_EQ(EndsOf(branch), (Points{e, g}));
    Lines branchLines = LinesOf(branch);
    EXPECT_EQ(PointsOf(branchLines[0]), (Points{g, e}));
    EXPECT_EQ(SegmentsAt(e), (Segs{branch, s}));
    EXPECT_EQ(ParentsOf(a), (Lines{lines[0]}));
}

TEST(KrRouteSegmentGeometry, NewPointsFromTheFarEndSwapTheEnds) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* x = r.Point(5, 0);
    KrRouteSegment* s = r.Polyline(1, {a, x});
    KrRoutingWayPoint* e = r.Point(5, 3);
    Points path{x, e};
    // path[0] is the old end x: S = x and E = a, so a hands its lines to e.
    EXPECT_EQ(s->SetNewPoints(path), 0);
    EXPECT_EQ(EndsOf(s), (Points{x, e}));
    EXPECT_TRUE(ParentsOf(a).empty());
    Lines lines = LinesOf(s);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(PointsOf(lines[0]), (Points{x, e}));
}

TEST(KrRouteSegmentGeometry, NewPointsElsewhereMoveBothEndsBranchesToTheNewPoints) {
    Route r;
    KrRoutingWayPoint* s0 = r.Point(0, 0);
    KrRoutingWayPoint* e0 = r.Point(4, 0);
    KrRoutingWayPoint* h = r.Point(0, -2);
    KrRoutingWayPoint* g = r.Point(4, 2);
    KrRouteSegment* s = r.Polyline(1, {s0, e0});
    KrRouteSegment* atStart = r.Polyline(2, {s0, h});
    KrRouteSegment* atEnd = r.Polyline(3, {g, e0});
    KrRoutingWayPoint* n0 = r.Point(10, 10);
    KrRoutingWayPoint* n1 = r.Point(12, 10);
    Points path{n0, n1};
    EXPECT_EQ(s->SetNewPoints(path), 0);
    EXPECT_EQ(EndsOf(s), (Points{n0, n1}));
    Lines lines = LinesOf(s);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(PointsOf(lines[0]), (Points{n0, n1}));
    // The old ends are emptied into the new ones, with the other segments' lines.
    EXPECT_TRUE(ParentsOf(s0).empty());
    EXPECT_TRUE(ParentsOf(e0).empty());
    EXPECT_EQ(EndsOf(atStart), (Points{n0, h}));
    EXPECT_EQ(PointsOf(LinesOf(atStart)[0]), (Points{h, n0}));
    EXPECT_EQ(EndsOf(atEnd), (Points{g, n1}));
    EXPECT_EQ(PointsOf(LinesOf(atEnd)[0]), (Points{g, n1}));
    EXPECT_EQ(SegmentsAt(n0), (Segs{atStart, s}));
    EXPECT_EQ(SegmentsAt(n1), (Segs{atEnd, s}));
}

TEST(KrRouteSegmentGeometry, EmptyPathLeavesTheSegmentUnchanged) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRouteSegment* s = r.Polyline(1, {a, b});
    Lines before = LinesOf(s);
    Points path;
    EXPECT_EQ(s->SetNewPoints(path), 1);
    EXPECT_EQ(LinesOf(s), before);
    EXPECT_EQ(PointsOf(before[0]), (Points{a, b}));
    EXPECT_EQ(EndsOf(s), (Points{a, b}));
}

TEST(KrRouteSegmentGeometry, PathWithANullEntryLeavesTheSegmentUnchanged) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRouteSegment* s = r.Polyline(1, {a, b});
    Lines before = LinesOf(s);
    Points path{a, nullptr, r.Point(3, 0)};
    EXPECT_EQ(s->SetNewPoints(path), 1);
    EXPECT_EQ(LinesOf(s), before);
    EXPECT_EQ(PointsOf(before[0]), (Points{a, b}));
    EXPECT_EQ(EndsOf(s), (Points{a, b}));
}

TEST(KrRouteSegmentGeometry, NewPointsNeedTwoDistinctEnds) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRouteSegment* single = r.Empty(1);
    single->AddPoint(a);
    Points fromEnd{a, r.Point(1, 0)};
    // path[0] is the only end: no other end to pair it with.
    EXPECT_EQ(single->SetNewPoints(fromEnd), 1);
    Points elsewhere{r.Point(5, 5), r.Point(6, 5)};
    EXPECT_EQ(single->SetNewPoints(elsewhere), 1);
    KrRouteSegment* none = r.Empty(2);
    EXPECT_EQ(none->SetNewPoints(elsewhere), 1);
    bool isEnd = false;
    single->IsOneEnd(a, isEnd);
    EXPECT_TRUE(isEnd);
}

// ---------------------------------------------------------------------------------------------
// Lines and points as a whole.

TEST(KrRouteSegmentGeometry, ClearLinesDropsLinesEndsAndParents) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRoutingWayPoint* c = r.Point(1, 1);
    KrRouteSegment* s = r.Polyline(1, {a, b, c});
    EXPECT_EQ(s->ClearLines(), 0);
    int count = -1;
    s->GetCADLineNum(count);
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(EndsOf(s).empty());
    bool isEnd = true;
    s->IsOneEnd(a, isEnd);
    EXPECT_FALSE(isEnd);
    EXPECT_TRUE(ParentsOf(a).empty());
    EXPECT_TRUE(ParentsOf(b).empty());
    EXPECT_TRUE(ParentsOf(c).empty());
}

TEST(KrRouteSegmentGeometry, AllPointsAreLineEndsWithJointsOnce) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRoutingWayPoint* c = r.Point(2, 0);
    KrRoutingWayPoint* d = r.Point(2, 1);
    KrRouteSegment* s = r.Empty(1);
    KrRouteCADLine* first = nullptr;
    KrRouteCADLine* second = nullptr;
    s->CreateCADLine(first);
    first->AddPoint(a);
    first->AddPoint(b);  // interior point, not listed
    first->AddPoint(c);
    s->CreateCADLine(second);
    second->AddPoint(c);
    second->AddPoint(d);
    Points out{d};
    EXPECT_EQ(s->GetAllPointInSegment(out), 0);
    // (a, c) + (c, d) with the repeated c once, after the earlier entry d.
    EXPECT_EQ(out, (Points{d, a, c, d}));
}

TEST(KrRouteSegmentGeometry, AllCADLinesAreAppendedInOrder) {
    Route r;
    KrRouteSegment* s = r.Polyline(1, {r.Point(0, 0), r.Point(1, 0), r.Point(1, 1)});
    KrRouteCADLine* extra = nullptr;
    s->CreateCADLine(extra);
    Lines out{nullptr};
    EXPECT_EQ(s->GetAllCADLine(out), 0);
    ASSERT_EQ(out.size(), 4u);
    EXPECT_EQ(out[0], nullptr);
    EXPECT_EQ(out[3], extra);
}

// L1 from (0,0) to (2,0), L2 from (2,0) to (2,2).
struct Corner : Route {
    KrRoutingWayPoint* a = Point(0, 0);
    KrRoutingWayPoint* b = Point(2, 0);
    KrRoutingWayPoint* c = Point(2, 2);
    KrRouteSegment* s = Polyline(1, {a, b, c});
    Lines lines = LinesOf(s);
};

TEST(KrRouteSegmentGeometry, CADLineByPointUsesTheInfiniteLine) {
    Corner r;
    Lines beyond, joint, off;
    // (5, 0) lies on y = 0 beyond L1's end; not on x = 2.
    EXPECT_EQ(r.s->GetCADLineByPoint(r.Point(5, 0), beyond), 0);
    EXPECT_EQ(beyond, (Lines{r.lines[0]}));
    // (2, 0) is L1's end and on L2 behind its end (2, 2).
    EXPECT_EQ(r.s->GetCADLineByPoint(r.b, joint), 0);
    EXPECT_EQ(joint, r.lines);
    EXPECT_EQ(r.s->GetCADLineByPoint(r.Point(1, 1), off), 0);
    EXPECT_TRUE(off.empty());
    EXPECT_EQ(r.s->GetCADLineByPoint(nullptr, off), 1);
}

// ---------------------------------------------------------------------------------------------
// Short.

TEST(KrRouteSegmentGeometry, ShortALoneLineFromItsEnd) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(10, 0);
    KrRouteSegment* s = r.Polyline(1, {a, b});
    KrRoutingWayPoint* newEnd = nullptr;
    // Length 10, shortened by 3 at b: the new end lies 7 from a, at (7, 0).
    EXPECT_EQ(s->Short(3.0, b, newEnd), 0);
    ExpectAt(newEnd, 7.0, 0.0);
    EXPECT_EQ(EndsOf(s), (Points{a, newEnd}));
    EXPECT_EQ(PointsOf(LinesOf(s)[0]), (Points{a, newEnd}));
    EXPECT_TRUE(ParentsOf(b).empty());
    delete s;  // the line points at newEnd; drop it before newEnd goes
    r.segments.clear();
    delete newEnd;
}

TEST(KrRouteSegmentGeometry, ShortFromTheStartMakesTheNewPointTheLastEnd) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(0, 4);
    KrRouteSegment* s = r.Polyline(1, {a, b});
    KrRoutingWayPoint* newEnd = nullptr;
    // From a: ref = b, d = 4, delta = 4 - 1 = 3 from b towards a: (0, 1).
    EXPECT_EQ(s->Short(1.0, a, newEnd), 0);
    ExpectAt(newEnd, 0.0, 1.0);
    // a is removed from the ends and the new point appended.
    EXPECT_EQ(EndsOf(s), (Points{b, newEnd}));
    delete s;
    r.segments.clear();
    delete newEnd;
}

TEST(KrRouteSegmentGeometry, ShortFromAJointOfCollinearLinesFails) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* j = r.Point(1, 0);
    KrRoutingWayPoint* b = r.Point(3, 0);
    KrRouteSegment* s = r.Polyline(1, {a, j, b});
    KrRoutingWayPoint* newEnd = nullptr;
    // j is on the straight line of both lines.
    EXPECT_EQ(s->Short(0.5, j, newEnd), 1);
    EXPECT_EQ(newEnd, nullptr);
    EXPECT_EQ(EndsOf(s), (Points{a, b}));
}

TEST(KrRouteSegmentGeometry, ShortFromAPointOffEveryLineFails) {
    Corner r;
    KrRoutingWayPoint* newEnd = nullptr;
    EXPECT_EQ(r.s->Short(0.5, r.Point(1, 1), newEnd), 1);
    EXPECT_EQ(r.s->Short(0.5, nullptr, newEnd), 1);
    EXPECT_EQ(newEnd, nullptr);
}

// ---------------------------------------------------------------------------------------------
// Moves on the grid (spacing 1 by 1).

struct OnGrid {
    KrRoutingGrid grid;
    OnGrid() { grid.CreateGrids(1, 1, 0, 0, 0, 0); }
    KrRoutingWayPoint* Node(double x, double y) {
        KrRoutingWayPoint* n = nullptr;
        grid.GetGridNode(x, y, n);
        return n;
    }
};

TEST(KrRouteSegmentGeometry, MoveShiftsTheLinesAndTakesNewEnds) {
    OnGrid g;
    KrRoutingWayPoint* a = g.Node(0, 0);
    KrRoutingWayPoint* b = g.Node(2, 0);
    KrRouteSegment s(1, 2.0, 1.0);
    KrRouteCADLine* line = nullptr;
    s.CreateCADLine(line);
    line->AddPoint(a);
    line->AddPoint(b);
    s.AddPoint(a);
    s.AddPoint(b);
    Segs moved;
    EXPECT_EQ(s.Move(&g.grid, 0.0, 1.0, moved), 0);
    // (0,0) and (2,0) shifted by (0, 1): the grid's nodes (0,1) and (2,1).
    KrRoutingWayPoint* a1 = g.Node(0, 1);
    KrRoutingWayPoint* b1 = g.Node(2, 1);
    EXPECT_EQ(PointsOf(line), (Points{a1, b1}));
    EXPECT_EQ(EndsOf(&s), (Points{a1, b1}));
    EXPECT_TRUE(ParentsOf(a).empty());
    EXPECT_TRUE(ParentsOf(b).empty());
    EXPECT_EQ(ParentsOf(a1), (Lines{line}));
}

TEST(KrRouteSegmentGeometry, MoveWithoutAGridFails) {
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRouteSegment* s = r.Polyline(1, {a, b});
    Segs moved;
    EXPECT_EQ(s->Move(nullptr, 1.0, 0.0, moved), 1);
    EXPECT_EQ(EndsOf(s), (Points{a, b}));
}

TEST(KrRouteSegmentGeometry, MoveOfASegmentWithoutLinesKeepsItsEnds) {
    OnGrid g;
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRouteSegment* s = r.Empty(1);
    s->AddPoint(a);
    s->AddPoint(b);
    Segs moved;
    EXPECT_EQ(s->Move(&g.grid, 1.0, 0.0, moved), 0);
    EXPECT_EQ(EndsOf(s), (Points{a, b}));
}

TEST(KrRouteSegmentGeometry, ExtendsAddsTheNodesUpToTheTarget) {
    OnGrid g;
    KrRoutingWayPoint* a = g.Node(0, 0);
    KrRoutingWayPoint* p = g.Node(2, 0);
    KrRouteSegment s(1, 2.0, 1.0);
    KrRouteCADLine* line = nullptr;
    s.CreateCADLine(line);
    line->AddPoint(a);
    line->AddPoint(p);
    s.AddPoint(a);
    s.AddPoint(p);
    // From (2,0) by (2,0): target (4,0); nodes between: (2,0), (3,0), (4,0).
    EXPECT_EQ(s.Extends(&g.grid, p, 2.0, 0.0), 0);
    KrRoutingWayPoint* n3 = g.Node(3, 0);
    KrRoutingWayPoint* n4 = g.Node(4, 0);
    EXPECT_EQ(PointsOf(line), (Points{a, p, n3, n4}));
    EXPECT_EQ(EndsOf(&s), (Points{a, n4}));
    EXPECT_EQ(ParentsOf(n4), (Lines{line}));
}

TEST(KrRouteSegmentGeometry, ExtendsLeavesOtherSegmentsLinesAlone) {
    OnGrid g;
    KrRoutingWayPoint* a = g.Node(0, 0);
    KrRoutingWayPoint* p = g.Node(2, 0);
    KrRoutingWayPoint* up = g.Node(2, 3);
    KrRouteSegment s(1, 2.0, 1.0);
    KrRouteSegment other(2, 3.0, 1.0);
    KrRouteCADLine* line = nullptr;
    s.CreateCADLine(line);
    line->AddPoint(a);
    line->AddPoint(p);
    s.AddPoint(a);
    s.AddPoint(p);
    KrRouteCADLine* otherLine = nullptr;
    other.CreateCADLine(otherLine);
    otherLine->AddPoint(p);
    otherLine->AddPoint(up);
    other.AddPoint(p);
    other.AddPoint(up);
    EXPECT_EQ(s.Extends(&g.grid, p, 1.0, 0.0), 0);
    EXPECT_EQ(PointsOf(otherLine), (Points{p, up}));
    EXPECT_EQ(EndsOf(&other), (Points{p, up}));
    EXPECT_EQ(EndsOf(&s), (Points{a, g.Node(3, 0)}));
}

TEST(KrRouteSegmentGeometry, ExtendsWithoutAGridOrPointFails) {
    OnGrid g;
    Route r;
    KrRoutingWayPoint* a = r.Point(0, 0);
    KrRoutingWayPoint* b = r.Point(1, 0);
    KrRouteSegment* s = r.Polyline(1, {a, b});
    EXPECT_EQ(s->Extends(nullptr, b, 1.0, 0.0), 1);
    EXPECT_EQ(s->Extends(&g.grid, nullptr, 1.0, 0.0), 1);
    EXPECT_EQ(EndsOf(s), (Points{a, b}));
}

// ---------------------------------------------------------------------------------------------
// Rows.

struct Rows {
    KrRouteSegment first{1, 1.0, 1.0};
    KrRouteSegment second{2, 1.0, 1.0};
    KrRouteSegment third{3, 1.0, 1.0};
    Segs all{&first, &second, &third};

    Rows(e_AngleArea area, double a1, double a2, double a3) {
        double angles[3] = {a1, a2, a3};
        for (int i = 0; i < 3; ++i) {
            all[i]->SetType(area);
            all[i]->SetDirectAngle(angles[i]);
            all[i]->SetRow(99);
        }
    }
    std::vector<int> Read() {
        std::vector<int> out;
        for (KrRouteSegment* s : all) {
            int row = 0;
            s->GetRow(row);
            out.push_back(row);
        }
        return out;
    }
};

TEST(KrRouteSegmentGeometry, AssignRowPutsTheHorizontalFirstInRowZero) {
    Rows r(e_AngleAreaQuarter1, HALF_PI, 0.0, HALF_PI);
    // |sin|: 1, 0, 1. The horizontal one first: row 0, then 1 and 2 in list order.
    EXPECT_EQ(r.first.AssignRow(e_AngleAreaQuarter1, r.all), 0);
    EXPECT_EQ(r.Read(), (std::vector<int>{1, 0, 2}));
}

TEST(KrRouteSegmentGeometry, AssignRowCountsDownwardsInTheLowerQuarters) {
    Rows r(e_AngleAreaQuarter3, HALF_PI, 0.0, HALF_PI);
    EXPECT_EQ(r.first.AssignRow(e_AngleAreaQuarter3, r.all), 0);
    EXPECT_EQ(r.Read(), (std::vector<int>{-1, 0, -2}));
}

TEST(KrRouteSegmentGeometry, AssignRowOrdersByAbsoluteSine) {
    // |sin 1.0| = 0.841, |sin 0.5| = 0.479, |sin 1.2| = 0.932: 0.5, then 1.0, then 1.2.
    Rows r(e_AngleAreaQuarter4, 1.0, 0.5, 1.2);
    EXPECT_EQ(r.first.AssignRow(e_AngleAreaQuarter4, r.all), 0);
    EXPECT_EQ(r.Read(), (std::vector<int>{-2, -1, -3}));
}

TEST(KrRouteSegmentGeometry, AssignRowRestartsAtEachHorizontalSegment) {
    // Angles 0.5, pi, 0: pi first (|sin| about 1e-11 ties with 0, earlier wins) gets 0, then the
    // 0 gets 0 again, then 0.5 gets 1.
    Rows r(e_AngleAreaQuarter2, 0.5, KR_PI, 0.0);
    EXPECT_EQ(r.first.AssignRow(e_AngleAreaQuarter2, r.all), 0);
    EXPECT_EQ(r.Read(), (std::vector<int>{1, 0, 0}));
}

TEST(KrRouteSegmentGeometry, AssignRowTouchesOnlyTheArea) {
    Rows r(e_AngleAreaQuarter1, 0.0, 0.3, 0.6);
    r.second.SetType(e_AngleAreaQuarter2);
    Segs withNull = r.all;
    withNull.push_back(nullptr);
    EXPECT_EQ(r.first.AssignRow(e_AngleAreaQuarter1, withNull), 0);
    // first (0) gets 0, third (0.6) gets 1; second is in another area and keeps 99.
    EXPECT_EQ(r.Read(), (std::vector<int>{0, 99, 1}));
}

TEST(KrRouteSegmentGeometry, AssignRowToSegmentCoversTheFourQuarters) {
    KrRouteSegment q1(1, 1.0, 1.0), q2(2, 1.0, 1.0), q3(3, 1.0, 1.0), q4(4, 1.0, 1.0);
    KrRouteSegment half(5, 1.0, 1.0);
    q1.SetType(e_AngleAreaQuarter1);
    q2.SetType(e_AngleAreaQuarter2);
    q3.SetType(e_AngleAreaQuarter3);
    q4.SetType(e_AngleAreaQuarter4);
    half.SetType(e_AngleAreaPositiveX);
    Segs all{&q1, &q2, &q3, &q4, &half};
    for (KrRouteSegment* s : all) {
        s->SetDirectAngle(1.0);
        s->SetRow(99);
    }
    EXPECT_EQ(q1.AssignRowToSegment(all), 0);
    // Each quarter holds one non-horizontal segment: row 1, negated in quarters 3 and 4.
    int row = 0;
    q1.GetRow(row);
    EXPECT_EQ(row, 1);
    q2.GetRow(row);
    EXPECT_EQ(row, 1);
    q3.GetRow(row);
    EXPECT_EQ(row, -1);
    q4.GetRow(row);
    EXPECT_EQ(row, -1);
    half.GetRow(row);
    EXPECT_EQ(row, 99);
}

// ---------------------------------------------------------------------------------------------
// Horizontal and vertical.

TEST(KrRouteSegmentGeometry, IsHorWithoutARootSegmentIsTrue) {
    Route r;
    KrRouteSegment* s = r.Polyline(1, {r.Point(0, 0), r.Point(1, 0)});
    bool hor = false;
    EXPECT_EQ(s->IsHor(nullptr, hor), 0);
    EXPECT_TRUE(hor);
    FixedPriority none(nullptr);
    hor = false;
    s->SetType(e_AngleAreaRoot);
    EXPECT_EQ(s->IsHor(&none, hor), 0);
    EXPECT_TRUE(hor);
    EXPECT_TRUE(none.asked.empty());
}

// Root R laid at angle 0 from p0 (0,0) to p1 (2,0); B1 and B2 leave p1.
struct Fork : Route {
    KrRoutingWayPoint* p0 = Point(0, 0);
    KrRoutingWayPoint* p1 = Point(2, 0);
    KrRouteSegment* root = Polyline(10, {p0, p1}, true);
    KrRouteSegment* b1 = Polyline(11, {p1, Point(4, 0)});
    KrRouteSegment* b2 = Polyline(12, {p1, Point(2, 2)});
};

TEST(KrRouteSegmentGeometry, IsHorAsksThePriorityAmongTheRootsFarSegments) {
    Fork r;
    r.root->SetDirectAngle(0.0);
    // B1's root segment is R (placed, ends at p1); R's root point is p0 (0 < 2), its far end p1;
    // at p1: (R, B1, B2) without R.
    FixedPriority pickB2(r.b2);
    bool hor = true;
    EXPECT_EQ(r.b1->IsHor(&pickB2, hor), 0);
    EXPECT_FALSE(hor);
    EXPECT_EQ(pickB2.asked, (Segs{r.b1, r.b2}));
    EXPECT_EQ(r.b2->IsHor(&pickB2, hor), 0);
    EXPECT_TRUE(hor);
}

TEST(KrRouteSegmentGeometry, IsHorWithARootButNoPriorityFails) {
    Fork r;
    bool hor = false;
    EXPECT_EQ(r.b1->IsHor(nullptr, hor), 1);
}

TEST(KrRouteSegmentGeometry, IsVerAtHalfPiAndThreeHalvesPi) {
    KrRouteSegment s(1, 1.0, 1.0);
    bool ver = false;
    s.SetDirectAngle(HALF_PI);
    s.IsVer(ver);
    EXPECT_TRUE(ver);
    s.SetDirectAngle(KR_THREE_HALF_PI);
    s.IsVer(ver);
    EXPECT_TRUE(ver);
    s.SetDirectAngle(HALF_PI + 0.5e-05);  // within the tolerance
    s.IsVer(ver);
    EXPECT_TRUE(ver);
    s.SetDirectAngle(HALF_PI + 2e-05);
    EXPECT_EQ(s.IsVer(ver), 0);
    EXPECT_FALSE(ver);
    s.SetDirectAngle(KR_PI);
    s.IsVer(ver);
    EXPECT_FALSE(ver);
}

// ---------------------------------------------------------------------------------------------
// Crossing and consistency.

TEST(KrRouteSegmentGeometry, IsSecWithFindsTheCrossedLine) {
    Corner r;
    double p1[2] = {1, -1};
    double p2[2] = {1, 1};
    double hit[2] = {-9, -9};
    KrRouteCADLine* line = nullptr;
    bool crosses = false;
    // x = 1 against L1 on y = 0 (second line horizontal): py = 0, px = 1 + 0 * (0 + 1) = 1.
    EXPECT_EQ(r.s->IsSecWith(p1, p2, hit, line, crosses), 0);
    EXPECT_TRUE(crosses);
    EXPECT_EQ(line, r.lines[0]);
    EXPECT_DOUBLE_EQ(hit[0], 1.0);
    EXPECT_DOUBLE_EQ(hit[1], 0.0);
}

TEST(KrRouteSegmentGeometry, IsSecWithReachesTheSecondLine) {
    Corner r;
    double p1[2] = {1, 1};
    double p2[2] = {3, 1};
    double hit[2] = {-9, -9};
    KrRouteCADLine* line = nullptr;
    bool crosses = false;
    // L1 on y = 0 is below y = 1 (box test, 3). L2 on x = 2: first line horizontal,
    // py = 1, px = 2 + 0 * (1 - 0) = 2, inside both: 0.
    EXPECT_EQ(r.s->IsSecWith(p1, p2, hit, line, crosses), 0);
    EXPECT_TRUE(crosses);
    EXPECT_EQ(line, r.lines[1]);
    EXPECT_DOUBLE_EQ(hit[0], 2.0);
    EXPECT_DOUBLE_EQ(hit[1], 1.0);
}

TEST(KrRouteSegmentGeometry, IsSecWithMissLeavesNoLine) {
    Corner r;
    double p1[2] = {3, -1};
    double p2[2] = {3, -0.5};
    double hit[2] = {-9, -9};
    KrRouteCADLine* line = r.lines[0];
    bool crosses = true;
    // x = 3 lies right of both lines' boxes.
    EXPECT_EQ(r.s->IsSecWith(p1, p2, hit, line, crosses), 0);
    EXPECT_FALSE(crosses);
    EXPECT_EQ(line, nullptr);
    EXPECT_EQ(r.s->IsSecWith(nullptr, p2, hit, line, crosses), 1);
    EXPECT_FALSE(crosses);
}

TEST(KrRouteSegmentGeometry, CheckPointAndLineAcceptsAWellFormedSegment) {
    Corner r;
    bool ok = false;
    EXPECT_EQ(r.s->CheckPointAndLine(ok), 0);
    EXPECT_TRUE(ok);
}

TEST(KrRouteSegmentGeometry, CheckPointAndLineRejectsOneEnd) {
    Corner r;
    r.s->RemovePoint(r.c);
    bool ok = true;
    EXPECT_EQ(r.s->CheckPointAndLine(ok), 1);
    EXPECT_FALSE(ok);
}

TEST(KrRouteSegmentGeometry, CheckPointAndLineRejectsALineWithOnePoint) {
    Corner r;
    KrRouteCADLine* stub = nullptr;
    r.s->CreateCADLine(stub);
    stub->AddPoint(r.c);
    bool ok = true;
    EXPECT_EQ(r.s->CheckPointAndLine(ok), 1);
    EXPECT_FALSE(ok);
}

}  // namespace
