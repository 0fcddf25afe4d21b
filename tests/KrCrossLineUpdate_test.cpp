// Cross-line strategies and the segment moves of the layout: FindOutAllSegmentNeedUpdate,
// GetFirstCrossLine, MoveSegment, MoveSegmentAway, ExtendSegments, UpdateCrossLine.
#include "LayoutTestSupport.h"

#include <krlayout/layout/KrCrossLineUpdate.h>
#include <krlayout/layout/KrCrossLineUpdateByLength.h>

#include <gtest/gtest.h>

using namespace layout_test;
using Access = KrRoutingLayoutTestAccess;

namespace {

ALPoint P(double x, double y) { return ALPoint(x, y, 0.0); }

using Snapshot = std::map<long, std::vector<ALPoint>>;

Snapshot Take(KrSketch& sketch) {
    std::vector<KrRouteSegment*> segs;
    sketch.GetAllSegments(segs);
    Snapshot s;
    for (KrRouteSegment* seg : segs) {
        s[seg->GetId()] = AllLinePoints(seg);
    }
    return s;
}

bool Same(Snapshot const& a, Snapshot const& b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (auto const& [id, pts] : a) {
        auto it = b.find(id);
        if (it == b.end() || it->second.size() != pts.size()) {
            return false;
        }
        for (std::size_t i = 0; i < pts.size(); ++i) {
            if (!(pts[i] == it->second[i])) {
                return false;
            }
        }
    }
    return true;
}

// Root 1 (length 5) laid out with children 2 (length 2, at pi) and 3 (length 3, at pi/2) by
// type 0: 1 (0,0)-(-5,0); 2 (-5,0)-(-7,0); 3 (-5,0)-(-5,1)-(-7,1). Segments 9 and 10 are
// unplaced, apart from the route; the tests use them as the segment being placed.
struct TwoChildren {
    std::unique_ptr<KrSketch> sketch;
    KrRoutingLayout layout;
    KrRoutingGrid* grid = nullptr;

    TwoChildren() {
        sketch = BuildSketch({{1, 5.0, 3.0, {P(0, 0), P(10, 0)}},
                              {2, 2.0, 2.0, {P(10, 0), P(12, 1)}},
                              {3, 3.0, 1.0, {P(10, 0), P(12, -1)}},
                              {9, 1.0, 0.5, {P(30, 30), P(31, 30)}},
                              {10, 1.0, 0.5, {P(40, 30), P(41, 30)}}});
        layout.LayOut(sketch.get(), LayOutByDiameter);
        sketch->GetGrid(grid);
    }
    KrRouteSegment* Seg(long id) { return SegmentById(*sketch, id); }
    KrRoutingWayPoint* Node(double x, double y) {
        KrRoutingWayPoint* n = nullptr;
        grid->GetGridNode(x, y, n);
        return n;
    }
};

// R: root (4,0) to (0,0) at pi; D hangs at (0,0) and runs straight to (-1,2), crossing row 1 at
// (-0.5,1) between lattice nodes. Segment 9 is unplaced and apart.
struct Diagonal {
    std::unique_ptr<KrSketch> sketch;
    KrRoutingLayout layout;
    KrRoutingGrid* grid = nullptr;

    Diagonal() {
        sketch = BuildSketch({{1, 4.0, 1.0, {P(10, 0), P(20, 0)}},
                              {2, 3.0, 1.0, {P(20, 0), P(19, 9)}},
                              {9, 1.0, 0.5, {P(30, 30), P(31, 30)}}});
        sketch->GetGrid(grid);
        Place(1, KR_PI, e_AngleAreaRoot, {{4, 0}, {3, 0}, {2, 0}, {1, 0}, {0, 0}});
        Place(2, 2.0344439358, e_AngleAreaQuarter2, {{0, 0}, {-1, 2}});
    }
    void Place(long id, double angle, e_AngleArea type, std::vector<std::pair<double, double>> const& xy) {
        KrRouteSegment* s = SegmentById(*sketch, id);
        s->SetDirectAngle(angle);
        s->SetType(type);
        std::vector<KrRoutingWayPoint*> path;
        for (auto const& p : xy) {
            path.push_back(Node(p.first, p.second));
        }
        layout.PlaceSegment(path, s);
    }
    KrRouteSegment* Seg(long id) { return SegmentById(*sketch, id); }
    KrRoutingWayPoint* Node(double x, double y) {
        KrRoutingWayPoint* n = nullptr;
        grid->GetGridNode(x, y, n);
        return n;
    }
};

// Two placed segments through the lattice node (2,2): P (2,0)-(2,4) at pi/2 hanging from R
// ((6,0)-(2,0) at pi), placed first; Q (0,2)-(4,2) at 0 hanging from R2 ((-3,2)-(0,2) at 0).
// Segment 9 is unplaced; it is given the far ends of P and Q as ends, so that it counts as
// connected to both and only the node walk sees them.
struct Crossing {
    std::unique_ptr<KrSketch> sketch;
    KrRoutingLayout layout;
    KrRoutingGrid* grid = nullptr;

    Crossing() {
        sketch = BuildSketch({{1, 4.0, 1.0, {P(16, 0), P(12, 0)}},
                              {2, 4.0, 1.0, {P(12, 0), P(12, 4)}},
                              {3, 3.0, 1.0, {P(7, 2), P(10, 2)}},
                              {4, 4.0, 1.0, {P(10, 2), P(14, 9)}},
                              {9, 1.0, 0.5, {P(30, 30), P(31, 30)}}});
        sketch->GetGrid(grid);
        Place(1, KR_PI, e_AngleAreaRoot, {{6, 0}, {5, 0}, {4, 0}, {3, 0}, {2, 0}});
        Place(2, HALF_PI, e_AngleAreaQuarter2, {{2, 0}, {2, 1}, {2, 2}, {2, 3}, {2, 4}});
        Place(3, 0.0, e_AngleAreaPositiveX, {{-3, 2}, {-2, 2}, {-1, 2}, {0, 2}});
        Place(4, 0.0, e_AngleAreaQuarter1, {{0, 2}, {1, 2}, {2, 2}, {3, 2}, {4, 2}});
        KrRouteSegment* x = SegmentById(*sketch, 9);
        x->AddPoint(Node(2, 4));
        x->AddPoint(Node(4, 2));
        x->SetDirectAngle(KR_PI);
        x->SetType(e_AngleAreaNegativeX);
    }
    void Place(long id, double angle, e_AngleArea type, std::vector<std::pair<double, double>> const& xy) {
        KrRouteSegment* s = SegmentById(*sketch, id);
        s->SetDirectAngle(angle);
        s->SetType(type);
        std::vector<KrRoutingWayPoint*> path;
        for (auto const& p : xy) {
            path.push_back(Node(p.first, p.second));
        }
        layout.PlaceSegment(path, s);
    }
    KrRouteSegment* Seg(long id) { return SegmentById(*sketch, id); }
    KrRoutingWayPoint* Node(double x, double y) {
        KrRoutingWayPoint* n = nullptr;
        grid->GetGridNode(x, y, n);
        return n;
    }
};

}  // namespace

// ---------------------------------------------------------------------------------------------
// FindOutAllSegmentNeedUpdate.

TEST(KrCrossLineUpdate, FindOutWithoutStrategyReturnsTwo) {
    TwoChildren t;
    KrRoutingLayout bare;
    KrRoutingWayPoint* start = t.Node(-5, 0);
    KrRoutingWayPoint* first = t.Node(-5, 1);
    KrRoutingWayPoint* last = t.Node(-7, 1);
    KrRoutingWayPoint* hit = nullptr;
    KrRoutingWayPoint* root = nullptr;
    std::vector<KrRouteSegment*> moved;
    std::vector<KrRoutingWayPoint*> points;
    EXPECT_EQ(2, bare.FindOutAllSegmentNeedUpdate(t.grid, t.Seg(9), start, first, last, hit, root, moved, points));
}

TEST(KrCrossLineUpdate, FindOutForwardsToTheStrategyAndReturnsItsResult) {
    TwoChildren t;
    KrRoutingLayout layout;
    auto* stub = new RecordingCrossLine({7});
    Access::SetCrossLineUpdate(layout, stub);
    KrRoutingWayPoint* start = t.Node(-5, 0);
    KrRoutingWayPoint* first = t.Node(-5, 1);
    KrRoutingWayPoint* last = t.Node(-7, 1);
    KrRoutingWayPoint* hit = nullptr;
    KrRoutingWayPoint* root = nullptr;
    std::vector<KrRouteSegment*> moved;
    std::vector<KrRoutingWayPoint*> points;
    EXPECT_EQ(7, layout.FindOutAllSegmentNeedUpdate(t.grid, t.Seg(9), start, first, last, hit, root, moved, points));
    ASSERT_EQ(1u, stub->calls.size());
    EXPECT_EQ(9, stub->calls[0].id);
    EXPECT_TRUE(stub->calls[0].first == P(-5, 1));
    EXPECT_TRUE(stub->calls[0].last == P(-7, 1));
}

// ---------------------------------------------------------------------------------------------
// MoveSegmentAway and ExtendSegments.

// Offset: the node beyond (-5,1) on the line from (-5,0) is (-5,2); minus (-5,0) gives (0,2).
TEST(KrCrossLineUpdate, MoveSegmentAwayMovesByTheStepBeyondB) {
    TwoChildren t;
    std::vector<KrRouteSegment*> segs{t.Seg(3)};
    EXPECT_EQ(0, t.layout.MoveSegmentAway(t.grid, t.Node(-5, 0), t.Node(-5, 1), segs));
    EXPECT_TRUE(HasCorners(t.Seg(3), {{-5, 2}, {-5, 3}, {-7, 3}}));
    EXPECT_TRUE(HasCorners(t.Seg(2), {{-5, 0}, {-7, 0}}));
    EXPECT_EQ(1u, segs.size());
    EXPECT_EQ(1, t.layout.MoveSegmentAway(nullptr, t.Node(-5, 0), t.Node(-5, 1), segs));
    EXPECT_EQ(1, t.layout.MoveSegmentAway(t.grid, nullptr, t.Node(-5, 1), segs));
    EXPECT_EQ(1, t.layout.MoveSegmentAway(t.grid, t.Node(-5, 0), nullptr, segs));
}

// Moving P one step left makes it cross Q at (1,2): the move of P's line moves Q along and lists
// it. Q moves once (to (-1,2)-(3,2)), not a second time as a listed entry.
TEST(KrCrossLineUpdate, MoveSegmentAwayMovesSegmentsItCrossesOnlyOnce) {
    Crossing c;
    std::vector<KrRouteSegment*> segs{c.Seg(2)};
    EXPECT_EQ(0, c.layout.MoveSegmentAway(c.grid, e_AngleAreaNegativeX, c.Node(2, 2), segs));
    EXPECT_TRUE(HasCorners(c.Seg(2), {{1, 0}, {1, 4}}));
    ASSERT_EQ(2u, segs.size());
    EXPECT_EQ(c.Seg(4), segs[1]);
    EXPECT_TRUE(HasCorners(c.Seg(4), {{-1, 2}, {3, 2}}));
}

// One xSpan toward the area's side: right for 1, 2, 4, 7 (and areas without a side), left for
// 3, 5, 6. Segment 2 starts at (-5,0).
TEST(KrCrossLineUpdate, MoveSegmentAwayByAreaTakesTheAreasSide) {
    for (int area = 0; area <= 8; ++area) {
        TwoChildren t;
        std::vector<KrRouteSegment*> segs{t.Seg(2)};
        EXPECT_EQ(0, t.layout.MoveSegmentAway(t.grid, static_cast<e_AngleArea>(area), t.Node(-7, 0), segs));
        bool const left = area == 3 || area == 5 || area == 6;
        double const x = left ? -6.0 : -4.0;
        EXPECT_TRUE(HasCorners(t.Seg(2), {{x, 0}, {x - 2.0, 0}})) << "area " << area;
    }
    TwoChildren t;
    std::vector<KrRouteSegment*> segs{t.Seg(2)};
    EXPECT_EQ(1, t.layout.MoveSegmentAway(t.grid, e_AngleAreaNegativeX, nullptr, segs));
}

// Offset from (-5,0) through (-6,0): node beyond is (-7,0), so (-2,0); segment 2 grows at
// (-7,0) to (-9,0).
TEST(KrCrossLineUpdate, ExtendSegmentsStretchesEachSegmentAtItsPoint) {
    TwoChildren t;
    EXPECT_EQ(0, t.layout.ExtendSegments(t.grid, t.Node(-5, 0), t.Node(-6, 0), {t.Seg(2)}, {t.Node(-7, 0)}));
    EXPECT_TRUE(HasCorners(t.Seg(2), {{-5, 0}, {-9, 0}}));
    EXPECT_EQ(1, t.layout.ExtendSegments(t.grid, nullptr, t.Node(-6, 0), {t.Seg(2)}, {t.Node(-9, 0)}));
}

TEST(KrCrossLineUpdate, ExtendSegmentsByAreaStretchesOneStepToTheSide) {
    TwoChildren t;
    EXPECT_EQ(0, t.layout.ExtendSegments(t.grid, e_AngleAreaNegativeX, t.Node(-7, 0), {t.Seg(2)}, {t.Node(-7, 0)}));
    EXPECT_TRUE(HasCorners(t.Seg(2), {{-5, 0}, {-8, 0}}));
    EXPECT_EQ(1, t.layout.ExtendSegments(t.grid, e_AngleAreaNegativeX, nullptr, {t.Seg(2)}, {t.Node(-8, 0)}));
}

TEST(KrCrossLineUpdate, ExtendSegmentsWithTwoSegmentsAndOnePointReturnsTwo) {
    TwoChildren t;
    Snapshot before = Take(*t.sketch);
    EXPECT_EQ(2, t.layout.ExtendSegments(t.grid, t.Node(-5, 0), t.Node(-6, 0), {t.Seg(2), t.Seg(3)},
                                         {t.Node(-7, 0)}));
    EXPECT_EQ(2, t.layout.ExtendSegments(t.grid, e_AngleAreaNegativeX, t.Node(-7, 0), {t.Seg(2), t.Seg(3)},
                                         {t.Node(-7, 0)}));
    EXPECT_TRUE(Same(before, Take(*t.sketch)));
}

// ---------------------------------------------------------------------------------------------
// MoveSegment.

TEST(KrCrossLineUpdate, MoveSegmentWithoutRootSegmentReturnsOne) {
    TwoChildren t;
    Snapshot before = Take(*t.sketch);
    EXPECT_EQ(1, t.layout.MoveSegment(t.grid, t.Seg(9), t.Node(-5, 1), t.Node(-7, 1), t.Node(0, 0)));
    EXPECT_TRUE(Same(before, Take(*t.sketch)));
    EXPECT_EQ(1, t.layout.MoveSegment(t.grid, nullptr, t.Node(-5, 1), t.Node(-7, 1), t.Node(-5, 0)));
}

// From (-5,1) to (-7,1): the node beyond is (-8,1), offset (-3,0). The subtree below (-5,0)
// (segments 2 and 3) moves by it, and the root segment 1 is stretched at (-5,0) to (-8,0).
TEST(KrCrossLineUpdate, MoveSegmentMovesTheSubtreePastToAndStretchesItsRootSegment) {
    TwoChildren t;
    EXPECT_EQ(0, t.layout.MoveSegment(t.grid, t.Seg(9), t.Node(-5, 1), t.Node(-7, 1), t.Node(-5, 0)));
    EXPECT_TRUE(HasCorners(t.Seg(2), {{-8, 0}, {-10, 0}}));
    EXPECT_TRUE(HasCorners(t.Seg(3), {{-8, 0}, {-8, 1}, {-10, 1}}));
    EXPECT_TRUE(HasCorners(t.Seg(1), {{0, 0}, {-8, 0}}));
}

// Same point: one xSpan toward the side of the placed segment's type.
TEST(KrCrossLineUpdate, MoveSegmentAtOnePointMovesOneStepTowardTheTypesSide) {
    for (int type = 1; type <= 7; ++type) {
        TwoChildren t;
        t.Seg(9)->SetType(static_cast<e_AngleArea>(type));
        KrRoutingWayPoint* p = t.Node(-7, 1);
        EXPECT_EQ(0, t.layout.MoveSegment(t.grid, t.Seg(9), p, p, t.Node(-5, 0)));
        bool const left = type == 3 || type == 5 || type == 6;
        double const x = left ? -6.0 : -4.0;
        EXPECT_TRUE(HasCorners(t.Seg(2), {{x, 0}, {x - 2.0, 0}})) << "type " << type;
        EXPECT_TRUE(HasCorners(t.Seg(3), {{x, 0}, {x, 1}, {x - 2.0, 1}})) << "type " << type;
        if (left) {
            EXPECT_TRUE(HasCorners(t.Seg(1), {{0, 0}, {-6, 0}})) << "type " << type;
        }
    }
}

// ---------------------------------------------------------------------------------------------
// GetFirstCrossLine.

// The line (-6,-1)-(-6,2) crosses segment 2 at (-6,0) (segment 1 is not reached). Its root point
// is (-5,0); the temporary point is (-5, last.y) = (-5,2) and the move goes from there through
// last (-8,2): offset (-9,2) - (-5,2) = (-4,0) for segments 2 and 3, root stretched to (-9,0).
TEST(KrCrossLineUpdate, FirstCrossLineMovesTheSubtreeOfTheCrossedSegment) {
    TwoChildren t;
    bool found = false;
    EXPECT_EQ(0, t.layout.GetFirstCrossLine(t.grid, t.Seg(9), t.Node(-6, -1), t.Node(-6, 2), t.Node(-8, 2), found));
    EXPECT_TRUE(found);
    EXPECT_TRUE(HasCorners(t.Seg(2), {{-9, 0}, {-11, 0}}));
    EXPECT_TRUE(HasCorners(t.Seg(3), {{-9, 0}, {-9, 1}, {-11, 1}}));
    EXPECT_TRUE(HasCorners(t.Seg(1), {{0, 0}, {-9, 0}}));
}

TEST(KrCrossLineUpdate, FirstCrossLineSkipsSegmentsConnectedByAnEnd) {
    TwoChildren t;
    KrRoutingWayPoint* upper = nullptr;
    t.grid->GetNonGridNode(-6, 0.5, upper);
    KrRouteSegment* x = t.Seg(10);
    Snapshot before = Take(*t.sketch);
    bool found = true;
    // Unconnected, the line (-6,-1)-(-6,0.5) would cross segment 2 at (-6,0).
    x->AddPoint(t.Node(-7, 0));  // segment 2's far end is now an end of segment 10
    EXPECT_EQ(0, t.layout.GetFirstCrossLine(t.grid, x, t.Node(-6, -1), upper, upper, found));
    EXPECT_FALSE(found);
    EXPECT_TRUE(Same(before, Take(*t.sketch)));
}

TEST(KrCrossLineUpdate, FirstCrossLineWithNothingCrossedMovesNothing) {
    TwoChildren t;
    Snapshot before = Take(*t.sketch);
    bool found = true;
    EXPECT_EQ(0, t.layout.GetFirstCrossLine(t.grid, t.Seg(9), t.Node(3, 3), t.Node(4, 4), t.Node(6, 4), found));
    EXPECT_FALSE(found);
    EXPECT_TRUE(Same(before, Take(*t.sketch)));
    found = true;
    EXPECT_EQ(1, t.layout.GetFirstCrossLine(t.grid, nullptr, t.Node(3, 3), t.Node(4, 4), t.Node(6, 4), found));
    EXPECT_FALSE(found);
}

// Inside LayOut the first crossing comes from the spatial index; it must give what the scan of
// every handled segment gives, so whole layouts agree point for point.
TEST(KrCrossLineUpdate, IndexedSearchGivesTheLayoutOfTheLinearScan) {
    for (e_LayOutType type : {LayOutByDiameter, LayOutByLength}) {
        for (unsigned seed = 0; seed < 60; ++seed) {
            std::mt19937 rng(7000u + seed);
            int const n = std::uniform_int_distribution<int>(2, 40)(rng);
            std::vector<SegmentInput> inputs = RandomTree(rng, n);
            auto indexed = BuildSketch(inputs);
            auto scanned = BuildSketch(inputs);
            KrRoutingLayout a;
            KrRoutingLayout b;
            Access::EnableHandledIndex(b, false);
            a.LayOut(indexed.get(), type);
            b.LayOut(scanned.get(), type);
            EXPECT_TRUE(Same(Take(*indexed), Take(*scanned))) << "type " << type << " seed " << seed;
        }
    }
}

// ---------------------------------------------------------------------------------------------
// UpdateCrossLine, both strategies.

namespace {

struct Result {
    int status;
    KrRoutingWayPoint* hit;
    KrRoutingWayPoint* root;
    std::vector<KrRouteSegment*> moved;
};

Result Update(ICrossLineUpdate& strategy, KrRoutingLayout& layout, KrRoutingGrid* grid, KrRouteSegment* seg,
              KrRoutingWayPoint* start, KrRoutingWayPoint* first, KrRoutingWayPoint* last) {
    Result r{0, nullptr, nullptr, {}};
    std::vector<KrRoutingWayPoint*> points{start, first};
    std::vector<KrRoutingWayPoint*> const pointsBefore = points;
    r.status = strategy.UpdateCrossLine(&layout, grid, seg, start, first, last, r.hit, r.root, r.moved, points);
    EXPECT_EQ(pointsBefore, points);  // the point list is left as it is
    return r;
}

std::vector<std::unique_ptr<ICrossLineUpdate>> BothStrategies() {
    std::vector<std::unique_ptr<ICrossLineUpdate>> v;
    v.emplace_back(new KrCrossLineUpdate());
    v.emplace_back(new KrCrossLineUpdateByLength());
    return v;
}

}  // namespace

TEST(KrCrossLineUpdate, FreeCandidateChangesNothingAndReturnsZero) {
    for (auto& strategy : BothStrategies()) {
        TwoChildren t;
        Snapshot before = Take(*t.sketch);
        Result r{};
        std::vector<KrRouteSegment*> moved{t.Seg(1)};
        KrRoutingWayPoint* start = t.Node(3, 3);
        KrRoutingWayPoint* first = t.Node(4, 4);
        KrRoutingWayPoint* last = t.Node(6, 4);
        std::vector<KrRoutingWayPoint*> points{start, first};
        r.status = strategy->UpdateCrossLine(&t.layout, t.grid, t.Seg(9), start, first, last, r.hit, r.root,
                                             moved, points);
        EXPECT_EQ(0, r.status);
        EXPECT_EQ(nullptr, r.hit);
        EXPECT_EQ(nullptr, r.root);
        EXPECT_EQ((std::vector<KrRouteSegment*>{t.Seg(1)}), moved);  // appended to, never cleared
        EXPECT_TRUE(Same(before, Take(*t.sketch)));
    }
}

// Segment 9 hangs at (-5,0) like a third child; vertical at row 1 its run (-5,1)-(-7,1) meets
// segment 3 at (-5,1).
TEST(KrCrossLineUpdate, VerticalCandidateThroughAUsedWayPointReturnsOneAndMovesNothing) {
    for (auto& strategy : BothStrategies()) {
        TwoChildren t;
        KrRouteSegment* x = t.Seg(9);
        x->AddPoint(t.Node(-5, 0));
        x->SetDirectAngle(HALF_PI);
        x->SetType(e_AngleAreaQuarter2);
        Snapshot before = Take(*t.sketch);
        Result r = Update(*strategy, t.layout, t.grid, x, t.Node(-5, 0), t.Node(-5, 1), t.Node(-7, 1));
        EXPECT_EQ(1, r.status);
        EXPECT_EQ(t.Node(-5, 1), r.hit);
        EXPECT_EQ(nullptr, r.root);
        EXPECT_TRUE(r.moved.empty());
        EXPECT_TRUE(Same(before, Take(*t.sketch)));
    }
}

// The same candidate laid slanted: segment 3 (root point (-5,0), not the used point) is picked,
// its subtree moved by (-8,1) - (-5,1) = (-3,0) and the root stretched to (-8,0).
TEST(KrCrossLineUpdate, SlantedCandidateThroughAUsedWayPointMovesTheUsersSubtree) {
    for (auto& strategy : BothStrategies()) {
        TwoChildren t;
        KrRouteSegment* x = t.Seg(9);
        x->AddPoint(t.Node(-5, 0));
        x->SetDirectAngle(KR_THREE_QUARTER_PI);
        x->SetType(e_AngleAreaQuarter2);
        KrRoutingWayPoint* root3 = t.Node(-5, 0);
        Result r = Update(*strategy, t.layout, t.grid, x, t.Node(-5, 0), t.Node(-5, 1), t.Node(-7, 1));
        EXPECT_EQ(0, r.status);
        EXPECT_EQ(t.Node(-5, 1), r.hit);
        EXPECT_EQ(root3, r.root);
        EXPECT_EQ((std::vector<KrRouteSegment*>{t.Seg(3)}), r.moved);
        EXPECT_TRUE(HasCorners(t.Seg(2), {{-8, 0}, {-10, 0}}));
        EXPECT_TRUE(HasCorners(t.Seg(3), {{-8, 0}, {-8, 1}, {-10, 1}}));
        EXPECT_TRUE(HasCorners(t.Seg(1), {{0, 0}, {-8, 0}}));
    }
}

// At (2,2) both P (placed first) and Q pass and neither hangs from it: type 0 moves the first
// (P, root point (2,0)), type 1 the last (Q, root point (0,2)).
TEST(KrCrossLineUpdate, SelectionTakesTheFirstMovableByDiameterAndTheLastByLength) {
    {
        Crossing c;
        KrCrossLineUpdate strategy;
        KrRoutingWayPoint* w = c.Node(2, 2);
        Result r = Update(strategy, c.layout, c.grid, c.Seg(9), w, w, w);
        EXPECT_EQ(0, r.status);
        EXPECT_EQ(w, r.hit);
        EXPECT_EQ(c.Node(2, 0), r.root);
        EXPECT_EQ((std::vector<KrRouteSegment*>{c.Seg(2)}), r.moved);
        EXPECT_TRUE(HasCorners(c.Seg(2), {{1, 0}, {1, 4}}));  // one step left (type 3)
    }
    {
        Crossing c;
        KrCrossLineUpdateByLength strategy;
        KrRoutingWayPoint* w = c.Node(2, 2);
        Result r = Update(strategy, c.layout, c.grid, c.Seg(9), w, w, w);
        EXPECT_EQ(0, r.status);
        EXPECT_EQ(w, r.hit);
        EXPECT_EQ(c.Node(0, 2), r.root);
        EXPECT_EQ((std::vector<KrRouteSegment*>{c.Seg(4)}), r.moved);
        EXPECT_TRUE(HasCorners(c.Seg(4), {{-1, 2}, {3, 2}}));
    }
}

// A segment hanging from the used point cannot free it and is never picked: at (0,2) Q hangs
// from the point and R2 ends there; only R2 (root point (-3,2)) qualifies, but it has no parent
// segment, so nothing is moved (the point is still reported).
TEST(KrCrossLineUpdate, SegmentsHangingFromTheUsedPointAreNotPicked) {
    for (auto& strategy : BothStrategies()) {
        Crossing c;
        Snapshot before = Take(*c.sketch);
        KrRoutingWayPoint* w = c.Node(0, 2);
        Result r = Update(*strategy, c.layout, c.grid, c.Seg(9), w, w, w);
        EXPECT_EQ(0, r.status);
        EXPECT_EQ(w, r.hit);
        EXPECT_EQ(c.Node(-3, 2), r.root);
        EXPECT_TRUE(r.moved.empty());
        EXPECT_TRUE(Same(before, Take(*c.sketch)));
    }
}

// The run (1,1)-(-3,1) crosses D at (-0.5,1), between lattice nodes; the first step (1,2)-(1,1)
// crosses nothing. Type 1 tests the run too: D's subtree moves from (0, last.y) = (0,1) past
// last (-3,1): offset (-4,0), D to (-4,0)-(-5,2), R stretched to (-4,0). Type 0 tests the first
// step only and the walk finds no used lattice node: nothing moves.
TEST(KrCrossLineUpdate, ByLengthAlsoTestsTheRunForCrossings) {
    {
        Diagonal d;
        KrCrossLineUpdateByLength strategy;
        Result r = Update(strategy, d.layout, d.grid, d.Seg(9), d.Node(1, 2), d.Node(1, 1), d.Node(-3, 1));
        EXPECT_EQ(0, r.status);
        EXPECT_TRUE(HasCorners(d.Seg(2), {{-4, 0}, {-5, 2}}));
        EXPECT_TRUE(HasCorners(d.Seg(1), {{4, 0}, {-4, 0}}));
    }
    {
        Diagonal d;
        KrCrossLineUpdate strategy;
        Snapshot before = Take(*d.sketch);
        Result r = Update(strategy, d.layout, d.grid, d.Seg(9), d.Node(1, 2), d.Node(1, 1), d.Node(-3, 1));
        EXPECT_EQ(0, r.status);
        EXPECT_TRUE(Same(before, Take(*d.sketch)));
    }
}

// A candidate hanging at (0,0) touches R and D there only: not a crossing for either strategy.
TEST(KrCrossLineUpdate, TouchingTheParentAtTheStartIsNotACrossing) {
    for (auto& strategy : BothStrategies()) {
        Diagonal d;
        KrRouteSegment* x = d.Seg(9);
        x->AddPoint(d.Node(0, 0));
        Snapshot before = Take(*d.sketch);
        Result r = Update(*strategy, d.layout, d.grid, x, d.Node(0, 0), d.Node(1, 1), d.Node(3, 1));
        EXPECT_EQ(0, r.status);
        EXPECT_EQ(nullptr, r.hit);
        EXPECT_TRUE(Same(before, Take(*d.sketch)));
    }
}

TEST(KrCrossLineUpdate, MissingArgumentsReturnOne) {
    for (auto& strategy : BothStrategies()) {
        TwoChildren t;
        KrRoutingWayPoint* a = t.Node(3, 3);
        KrRoutingWayPoint* b = t.Node(4, 4);
        KrRoutingWayPoint* none = nullptr;
        KrRoutingWayPoint* hit = nullptr;
        KrRoutingWayPoint* root = nullptr;
        std::vector<KrRouteSegment*> moved;
        std::vector<KrRoutingWayPoint*> points;
        EXPECT_EQ(1, strategy->UpdateCrossLine(nullptr, t.grid, t.Seg(9), a, b, b, hit, root, moved, points));
        EXPECT_EQ(1, strategy->UpdateCrossLine(&t.layout, nullptr, t.Seg(9), a, b, b, hit, root, moved, points));
        EXPECT_EQ(1, strategy->UpdateCrossLine(&t.layout, t.grid, nullptr, a, b, b, hit, root, moved, points));
        EXPECT_EQ(1, strategy->UpdateCrossLine(&t.layout, t.grid, t.Seg(9), none, b, b, hit, root, moved, points));
        EXPECT_EQ(1, strategy->UpdateCrossLine(&t.layout, t.grid, t.Seg(9), a, none, b, hit, root, moved, points));
        EXPECT_EQ(1, strategy->UpdateCrossLine(&t.layout, t.grid, t.Seg(9), a, b, none, hit, root, moved, points));
    }
}
