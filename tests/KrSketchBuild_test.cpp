// Building the sketch from input: point merging, way points, lines and segment ends, the grid,
// ConnectSegment, CheckRouteSegment and the host line ids.
#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/sketch/KrSketch.h>

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <random>
#include <unordered_set>
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

bool IsEnd(KrRouteSegment* s, KrRoutingWayPoint* p)
{
    bool e = false;
    s->IsOneEnd(p, e);
    return e;
}

// The two ends of a segment that has exactly two (start first); fails the test otherwise.
std::pair<KrRoutingWayPoint*, KrRoutingWayPoint*> Ends(KrRouteSegment* s)
{
    bool deg = false;
    EXPECT_EQ(0, s->IsDegenerated(deg)) << "segment has not exactly two ends";
    KrRoutingWayPoint* a = nullptr;
    KrRoutingWayPoint* b = nullptr;
    s->GetOtherEnd(nullptr, a);
    s->GetOtherEnd(a, b);
    return {a, b};
}

ALPoint P(double x, double y, double z = 0.0)
{
    return ALPoint(x, y, z);
}

void ExpectAt(KrRoutingWayPoint* p, double x, double y)
{
    ASSERT_NE(nullptr, p);
    double gx = 0.0;
    double gy = 0.0;
    p->GetGridCoord(gx, gy);
    EXPECT_DOUBLE_EQ(x, gx);
    EXPECT_DOUBLE_EQ(y, gy);
}

// wp[k] of every input point, read back from a sketch built with one single-line segment per
// pair of points (ids 0, 1, 2, ...): a line holding one point had both its ends merged.
std::vector<KrRoutingWayPoint*> WayPointsOfPoints(KrSketch& sk, std::vector<ALPoint> const& pts)
{
    std::map<long, long> m;
    for (std::size_t l = 0; l < pts.size() / 2; ++l) {
        sk.CreateRouteSegment(static_cast<int>(l), 1.0, 1.0);
        m[static_cast<long>(l)] = 1;
    }
    EXPECT_EQ(0, sk.CreateWayPoint(m, pts));
    std::vector<KrRoutingWayPoint*> wp(pts.size(), nullptr);
    for (std::size_t l = 0; l < pts.size() / 2; ++l) {
        std::vector<KrRouteCADLine*> lines = Lines(Seg(sk, static_cast<long>(l)));
        EXPECT_EQ(1u, lines.size());
        if (lines.size() != 1) {
            continue;
        }
        std::vector<KrRoutingWayPoint*> lp = Pts(lines[0]);
        EXPECT_TRUE(lp.size() == 1 || lp.size() == 2);
        if (lp.empty()) {
            continue;
        }
        wp[2 * l] = lp.front();
        wp[2 * l + 1] = lp.back();
    }
    return wp;
}

// The pairwise grouping, written out literally: a point joins the group of the first earlier
// unassigned point that it equals.
std::vector<long long> ReferenceGroups(std::vector<ALPoint> const& p)
{
    std::vector<long long> g(p.size(), -1);
    for (std::size_t i = 0; i < p.size(); ++i) {
        if (g[i] >= 0) {
            continue;
        }
        for (std::size_t j = i + 1; j < p.size(); ++j) {
            if (g[j] >= 0) {
                continue;
            }
            if (p[i] == p[j]) {
                g[i] = static_cast<long long>(i);
                g[j] = static_cast<long long>(i);
            }
        }
    }
    return g;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Point merging and way points.

TEST(KrSketchBuild, EmptyPointVectorCreatesNothing)
{
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    std::vector<ALPoint> none;
    EXPECT_EQ(0, sk.CreateWayPoint(none));
    std::map<long, long> m{{1, 1}};
    EXPECT_EQ(0, sk.CreateWayPoint(m, none));
    int n = -1;
    Seg(sk, 1)->GetCADLineNum(n);
    EXPECT_EQ(0, n);
    bool deg = false;
    EXPECT_EQ(1, Seg(sk, 1)->IsDegenerated(deg));  // no ends
}

TEST(KrSketchBuild, MergingIsNotTransitive)
{
    // x: A = 0, B = 0.6e-5, C = 1.2e-5. A == B and B == C (0.6e-5 < 1e-5), A != C (1.2e-5).
    // B joins A's group; C, equal only to B, gets its own way point.
    KrSketch sk;
    std::vector<ALPoint> pts{P(0, 0), P(5, 0), P(0.6e-5, 0), P(6, 0), P(1.2e-5, 0), P(7, 0)};
    std::vector<KrRoutingWayPoint*> wp = WayPointsOfPoints(sk, pts);
    EXPECT_EQ(wp[0], wp[2]);
    EXPECT_NE(wp[0], wp[4]);
    ExpectAt(wp[4], 1.2e-5, 0);
    ExpectAt(wp[0], 0, 0);  // the way point takes the position of the group's first point
}

TEST(KrSketchBuild, APointLeftOutOfAGroupStartsItsOwnGroup)
{
    // x: A = 0, B = 0.6e-5, C = 1.2e-5, D = 1.8e-5. A takes B; C (not equal to A) is first of the
    // next group and takes D (0.6e-5 away).
    KrSketch sk;
    std::vector<ALPoint> pts{P(0, 0), P(1.2e-5, 0), P(0.6e-5, 0), P(1.8e-5, 0)};
    std::vector<KrRoutingWayPoint*> wp = WayPointsOfPoints(sk, pts);
    EXPECT_EQ(wp[0], wp[2]);
    EXPECT_EQ(wp[1], wp[3]);
    EXPECT_NE(wp[0], wp[1]);
}

TEST(KrSketchBuild, SamePositionTwiceYieldsOneWayPoint)
{
    // Two lines meeting at (1, 1): both hold the same way point, stored once (the sketch frees
    // it once; a second copy in the store would be a double free in the sanitizer run).
    KrSketch sk;
    std::vector<ALPoint> pts{P(0, 0), P(1, 1), P(1, 1), P(2, 0)};
    std::vector<KrRoutingWayPoint*> wp = WayPointsOfPoints(sk, pts);
    EXPECT_EQ(wp[1], wp[2]);
    std::vector<KrRouteCADLine*> parents;
    wp[1]->GetParent(parents);
    EXPECT_EQ(2u, parents.size());

    KrSketch only;
    EXPECT_EQ(0, only.CreateWayPoint(pts));
}

TEST(KrSketchBuild, PointsEqualAcrossZeroAreMerged)
{
    // -0.3e-5 and 0.3e-5 differ by 0.6e-5 < 1e-5 in x and in y.
    KrSketch sk;
    std::vector<ALPoint> pts{P(-0.3e-5, -0.3e-5), P(3, 3), P(0.3e-5, 0.3e-5), P(4, 4)};
    std::vector<KrRoutingWayPoint*> wp = WayPointsOfPoints(sk, pts);
    EXPECT_EQ(wp[0], wp[2]);
}

TEST(KrSketchBuild, PointsDifferingOnlyInZAreNotMerged)
{
    // z differs by 1e-4 > 1e-5: ALPoint equality fails, so two way points.
    KrSketch sk;
    std::vector<ALPoint> pts{P(1, 1, 0), P(3, 3), P(1, 1, 1e-4), P(4, 4)};
    std::vector<KrRoutingWayPoint*> wp = WayPointsOfPoints(sk, pts);
    EXPECT_NE(wp[0], wp[2]);
}

TEST(KrSketchBuild, NonFinitePointsAreNeverMerged)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    double const inf = std::numeric_limits<double>::infinity();
    KrSketch sk;
    std::vector<ALPoint> pts{P(nan, 0), P(1, 0), P(nan, 0), P(2, 0),
                             P(inf, 0), P(3, 0), P(inf, 0), P(4, 0)};
    std::vector<KrRoutingWayPoint*> wp = WayPointsOfPoints(sk, pts);
    EXPECT_NE(wp[0], wp[2]);
    EXPECT_NE(wp[4], wp[6]);
}

TEST(KrSketchBuild, HugeCoordinatesAreMergedOnlyWhenEqual)
{
    double const big = 1e300;
    KrSketch sk;
    std::vector<ALPoint> pts{P(big, -big), P(0, 0), P(big, -big), P(1, 0),
                             P(std::nextafter(big, 0.0), -big), P(2, 0)};
    std::vector<KrRoutingWayPoint*> wp = WayPointsOfPoints(sk, pts);
    EXPECT_EQ(wp[0], wp[2]);
    EXPECT_NE(wp[0], wp[4]);
}

TEST(KrSketchBuild, GroupingMatchesThePairwiseRuleOnCrowdedPoints)
{
    // Points packed at 0.35e-5 steps around cell borders (0, +-2e-5, 1e6), some lifted in z, a few
    // non-finite: the merged way points must be exactly those of the literal pairwise rule.
    std::mt19937 rng(12345);
    std::uniform_int_distribution<int> step(-6, 6);
    std::uniform_int_distribution<int> pick(0, 9);
    double const bases[] = {0.0, 2e-5, -2e-5, 1e6};
    std::vector<ALPoint> pts;
    for (int i = 0; i < 1600; ++i) {
        double const bx = bases[pick(rng) % 4];
        double const by = bases[pick(rng) % 4];
        double z = 0.0;
        int const r = pick(rng);
        if (r == 0) {
            z = 0.7e-5;
        } else if (r == 1) {
            z = 2e-5;
        }
        ALPoint p(bx + step(rng) * 0.35e-5, by + step(rng) * 0.35e-5, z);
        if (i % 397 == 0) {
            p.x = std::numeric_limits<double>::quiet_NaN();
        }
        pts.push_back(p);
    }
    std::vector<long long> const ref = ReferenceGroups(pts);
    KrSketch sk;
    std::vector<KrRoutingWayPoint*> wp = WayPointsOfPoints(sk, pts);
    auto rep = [&ref](std::size_t k) { return ref[k] < 0 ? static_cast<long long>(k) : ref[k]; };
    std::size_t mismatches = 0;
    for (std::size_t a = 0; a < pts.size(); ++a) {
        for (std::size_t b = a + 1; b < pts.size(); ++b) {
            if ((wp[a] == wp[b]) != (rep(a) == rep(b))) {
                ++mismatches;
            }
        }
    }
    EXPECT_EQ(0u, mismatches);
}

TEST(KrSketchBuild, VectorFormCreatesWayPointsOnly)
{
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    std::vector<ALPoint> pts{P(0, 0), P(1, 0)};
    EXPECT_EQ(0, sk.CreateWayPoint(pts));
    int n = -1;
    Seg(sk, 1)->GetCADLineNum(n);
    EXPECT_EQ(0, n);
}

TEST(KrSketchBuild, EachCallMergesOnlyItsOwnPoints)
{
    // A second call at the same positions makes new way points; nothing is merged with the
    // way points of the first call.
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    sk.CreateRouteSegment(2, 1, 1);
    std::vector<ALPoint> pts{P(0, 0), P(1, 0)};
    sk.CreateWayPoint(std::map<long, long>{{1, 1}}, pts);
    sk.CreateWayPoint(std::map<long, long>{{2, 1}}, pts);
    EXPECT_NE(Pts(Lines(Seg(sk, 1))[0])[0], Pts(Lines(Seg(sk, 2))[0])[0]);
}

// ---------------------------------------------------------------------------------------------
// Lines and segment ends.

TEST(KrSketchBuild, TwoLineSegmentHasEndsAtItsOuterPointsOnly)
{
    // Lines (P0,P1), (P1,P2): P1 is used twice and cancels; ends P0 and P2.
    KrSketch sk;
    sk.CreateRouteSegment(1, 2, 1);
    std::vector<ALPoint> pts{P(0, 0), P(1, 0), P(1, 0), P(1, 1)};
    EXPECT_EQ(0, sk.CreateWayPoint(std::map<long, long>{{1, 2}}, pts));
    KrRouteSegment* s = Seg(sk, 1);
    std::vector<KrRouteCADLine*> lines = Lines(s);
    ASSERT_EQ(2u, lines.size());
    KrRoutingWayPoint* p1 = Pts(lines[0])[1];
    EXPECT_EQ(p1, Pts(lines[1])[0]);
    auto ends = Ends(s);
    ExpectAt(ends.first, 0, 0);
    ExpectAt(ends.second, 1, 1);
    EXPECT_FALSE(IsEnd(s, p1));
}

TEST(KrSketchBuild, ThreeUsesOfAPositionCancelTheFirstTwo)
{
    // Lines (A,B), (B,C), (B,D): the range is A B B C B D. B at 1 and 2 cancel; B at 4 is lone.
    // Ends in range order: A (0), C (3), B (4), D (5).
    KrSketch sk;
    sk.CreateRouteSegment(1, 3, 1);
    std::vector<ALPoint> pts{P(0, 0), P(1, 0), P(1, 0), P(2, 0), P(1, 0), P(1, 1)};
    sk.CreateWayPoint(std::map<long, long>{{1, 3}}, pts);
    KrRouteSegment* s = Seg(sk, 1);
    std::vector<KrRouteCADLine*> lines = Lines(s);
    ASSERT_EQ(3u, lines.size());
    KrRoutingWayPoint* a = Pts(lines[0])[0];
    KrRoutingWayPoint* b = Pts(lines[0])[1];
    KrRoutingWayPoint* c = Pts(lines[1])[1];
    KrRoutingWayPoint* d = Pts(lines[2])[1];
    bool isStart = false;
    s->IsStartPoint(a, isStart);
    EXPECT_TRUE(isStart);
    KrRoutingWayPoint* second = nullptr;
    s->GetOtherEnd(a, second);
    EXPECT_EQ(c, second);
    EXPECT_TRUE(IsEnd(s, b));
    EXPECT_TRUE(IsEnd(s, d));
    bool deg = false;
    EXPECT_EQ(1, s->IsDegenerated(deg));  // four ends
}

TEST(KrSketchBuild, FourUsesOfAPositionGiveNoEnd)
{
    // Lines (A,B), (B,C), (B,D), (B,E): B four times cancels in two pairs.
    KrSketch sk;
    sk.CreateRouteSegment(1, 4, 1);
    std::vector<ALPoint> pts{P(0, 0), P(1, 0), P(1, 0), P(2, 0),
                             P(1, 0), P(1, 1), P(1, 0), P(1, -1)};
    sk.CreateWayPoint(std::map<long, long>{{1, 4}}, pts);
    KrRouteSegment* s = Seg(sk, 1);
    std::vector<KrRouteCADLine*> lines = Lines(s);
    ASSERT_EQ(4u, lines.size());
    EXPECT_FALSE(IsEnd(s, Pts(lines[0])[1]));
    EXPECT_TRUE(IsEnd(s, Pts(lines[0])[0]));
    EXPECT_TRUE(IsEnd(s, Pts(lines[3])[1]));
}

TEST(KrSketchBuild, SmallTreeBuiltThroughTheRealPath)
{
    // Segment 10: O(0,0) -> A(1,0), one line. Segment 20: O -> M(0,0.5) -> B(0,1), two lines.
    // Segment 30: C(-1,0) -> O, one line. Points in key order: O A | O M M B | C O (8 points).
    // Way points: O, A, M, B, C (5). Ends: 10 (O, A); 20 (O, B), M cancels; 30 (C, O).
    KrSketch sk;
    ASSERT_EQ(0, sk.CreateGrid(0.02, 0.02));
    sk.CreateRouteSegment(10, 1.0, 0.1);
    sk.CreateRouteSegment(20, 1.0, 0.1);
    sk.CreateRouteSegment(30, 1.0, 0.1);
    std::map<long, long> m{{10, 1}, {20, 2}, {30, 1}};
    std::vector<ALPoint> pts{P(0, 0), P(1, 0), P(0, 0), P(0, 0.5),
                             P(0, 0.5), P(0, 1), P(-1, 0), P(0, 0)};
    ASSERT_EQ(0, sk.CreateWayPoint(m, pts));

    KrRouteSegment* s10 = Seg(sk, 10);
    KrRouteSegment* s20 = Seg(sk, 20);
    KrRouteSegment* s30 = Seg(sk, 30);
    std::vector<KrRouteCADLine*> l10 = Lines(s10);
    std::vector<KrRouteCADLine*> l20 = Lines(s20);
    std::vector<KrRouteCADLine*> l30 = Lines(s30);
    ASSERT_EQ(1u, l10.size());
    ASSERT_EQ(2u, l20.size());
    ASSERT_EQ(1u, l30.size());

    KrRoutingWayPoint* o = Pts(l10[0])[0];
    KrRoutingWayPoint* a = Pts(l10[0])[1];
    KrRoutingWayPoint* m0 = Pts(l20[0])[1];
    KrRoutingWayPoint* b = Pts(l20[1])[1];
    KrRoutingWayPoint* c = Pts(l30[0])[0];
    EXPECT_EQ(o, Pts(l20[0])[0]);
    EXPECT_EQ(m0, Pts(l20[1])[0]);
    EXPECT_EQ(o, Pts(l30[0])[1]);
    ExpectAt(o, 0, 0);
    ExpectAt(a, 1, 0);
    ExpectAt(m0, 0, 0.5);
    ExpectAt(b, 0, 1);
    ExpectAt(c, -1, 0);

    std::unordered_set<KrRoutingWayPoint*> distinct;
    for (KrRouteCADLine* l : {l10[0], l20[0], l20[1], l30[0]}) {
        EXPECT_EQ(2u, Pts(l).size());
        for (KrRoutingWayPoint* p : Pts(l)) {
            distinct.insert(p);
        }
        KrRouteSegment* parent = nullptr;
        l->GetParentSegment(parent);
        EXPECT_NE(nullptr, parent);
    }
    EXPECT_EQ(5u, distinct.size());

    EXPECT_EQ(std::make_pair(o, a), Ends(s10));
    EXPECT_EQ(std::make_pair(o, b), Ends(s20));
    EXPECT_EQ(std::make_pair(c, o), Ends(s30));
    EXPECT_FALSE(IsEnd(s20, m0));

    std::vector<KrRouteCADLine*> parentsO;
    o->GetParent(parentsO);
    EXPECT_EQ((std::vector<KrRouteCADLine*>{l10[0], l20[0], l30[0]}), parentsO);
    std::vector<KrRouteCADLine*> parentsM;
    m0->GetParent(parentsM);
    EXPECT_EQ((std::vector<KrRouteCADLine*>{l20[0], l20[1]}), parentsM);
    std::vector<KrRouteSegment*> atO;
    o->GetConnectSegment(atO);
    EXPECT_EQ((std::vector<KrRouteSegment*>{s10, s20, s30}), atO);
    std::vector<KrRouteCADLine*> parentsA;
    a->GetParent(parentsA);
    EXPECT_EQ((std::vector<KrRouteCADLine*>{l10[0]}), parentsA);
}

TEST(KrSketchBuild, KeyWithoutSegmentStillConsumesItsPoints)
{
    // Keys 1, 5, 9; segment 5 does not exist. Points 2 and 3 belong to key 5: they get way points
    // but no line; segment 9 gets points 4 and 5.
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    sk.CreateRouteSegment(9, 1, 1);
    std::vector<ALPoint> pts{P(0, 0), P(1, 0), P(2, 0), P(3, 0), P(4, 0), P(5, 0)};
    EXPECT_EQ(0, sk.CreateWayPoint(std::map<long, long>{{1, 1}, {5, 1}, {9, 1}}, pts));
    std::vector<KrRouteCADLine*> l1 = Lines(Seg(sk, 1));
    std::vector<KrRouteCADLine*> l9 = Lines(Seg(sk, 9));
    ASSERT_EQ(1u, l1.size());
    ASSERT_EQ(1u, l9.size());
    ExpectAt(Pts(l1[0])[0], 0, 0);
    ExpectAt(Pts(l1[0])[1], 1, 0);
    ExpectAt(Pts(l9[0])[0], 4, 0);
    ExpectAt(Pts(l9[0])[1], 5, 0);
    auto ends = Ends(Seg(sk, 9));
    ExpectAt(ends.first, 4, 0);
    ExpectAt(ends.second, 5, 0);
}

TEST(KrSketchBuild, PointsBeyondTheCountsGetNoLine)
{
    // The map covers 2 points; points 2 and 3 get way points only (the shared one at (1,0) is
    // the same way point but gains no parent from them).
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    std::vector<ALPoint> pts{P(0, 0), P(1, 0), P(1, 0), P(2, 0)};
    EXPECT_EQ(0, sk.CreateWayPoint(std::map<long, long>{{1, 1}}, pts));
    std::vector<KrRouteCADLine*> l1 = Lines(Seg(sk, 1));
    ASSERT_EQ(1u, l1.size());
    std::vector<KrRouteCADLine*> parents;
    Pts(l1[0])[1]->GetParent(parents);
    EXPECT_EQ(1u, parents.size());
    auto ends = Ends(Seg(sk, 1));
    ExpectAt(ends.first, 0, 0);
    ExpectAt(ends.second, 1, 0);
}

TEST(KrSketchBuild, NegativeLineCountCoversNoPoint)
{
    // A negative count counts as no lines: segment 2 still gets points 0 and 1.
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    sk.CreateRouteSegment(2, 1, 1);
    std::vector<ALPoint> pts{P(0, 0), P(1, 0)};
    EXPECT_EQ(0, sk.CreateWayPoint(std::map<long, long>{{1, -1}, {2, 1}}, pts));
    int n = -1;
    Seg(sk, 1)->GetCADLineNum(n);
    EXPECT_EQ(0, n);
    Seg(sk, 2)->GetCADLineNum(n);
    EXPECT_EQ(1, n);
    auto ends = Ends(Seg(sk, 2));
    ExpectAt(ends.first, 0, 0);
    ExpectAt(ends.second, 1, 0);
}

TEST(KrSketchBuild, HugeLineCountDoesNotOverflow)
{
    // LONG_MAX lines cover every point; the four points make two lines of segment 1, whose range
    // stops where the points do: ends (0,0) and (2,0), (1,0) cancels.
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    sk.CreateRouteSegment(2, 1, 1);
    std::vector<ALPoint> pts{P(0, 0), P(1, 0), P(1, 0), P(2, 0)};
    EXPECT_EQ(0, sk.CreateWayPoint(std::map<long, long>{{1, LONG_MAX}, {2, LONG_MAX}}, pts));
    int n = -1;
    Seg(sk, 1)->GetCADLineNum(n);
    EXPECT_EQ(2, n);
    Seg(sk, 2)->GetCADLineNum(n);
    EXPECT_EQ(0, n);
    auto ends = Ends(Seg(sk, 1));
    ExpectAt(ends.first, 0, 0);
    ExpectAt(ends.second, 2, 0);
}

TEST(KrSketchBuild, MapKeyNamingTwoSegmentsFeedsTheFirst)
{
    KrSketch sk;
    sk.CreateRouteSegment(3, 1, 1);
    sk.CreateRouteSegment(3, 2, 2);
    std::vector<ALPoint> pts{P(0, 0), P(1, 0)};
    sk.CreateWayPoint(std::map<long, long>{{3, 1}}, pts);
    std::vector<KrRouteSegment*> all;
    sk.GetAllSegments(all);
    ASSERT_EQ(2u, all.size());
    int n = -1;
    all[0]->GetCADLineNum(n);
    EXPECT_EQ(1, n);
    all[1]->GetCADLineNum(n);
    EXPECT_EQ(0, n);
}

TEST(KrSketchBuild, LineWithCoincidentEndsHoldsOnePoint)
{
    // (0,0) and (0.5e-5,0) merge: the line holds a single way point, which cancels itself in
    // the segment's range, leaving the segment with no ends.
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    std::vector<ALPoint> pts{P(0, 0), P(0.5e-5, 0)};
    sk.CreateWayPoint(std::map<long, long>{{1, 1}}, pts);
    std::vector<KrRouteCADLine*> l = Lines(Seg(sk, 1));
    ASSERT_EQ(1u, l.size());
    EXPECT_EQ(1u, Pts(l[0]).size());
    EXPECT_FALSE(IsEnd(Seg(sk, 1), Pts(l[0])[0]));
}

TEST(KrSketchBuild, LongChainOfTwoHundredThousandPointsIsBuiltQuickly)
{
    // 100,000 single-line segments in a chain along x: segment i runs from x = i to x = i + 1.
    // 200,000 points merge into 100,001 way points; inner ones have two parents.
    int const n = 100000;
    KrSketch sk;
    std::map<long, long> m;
    std::vector<ALPoint> pts;
    pts.reserve(2 * n);
    for (int i = 0; i < n; ++i) {
        sk.CreateRouteSegment(i, 1.0, 1.0);
        m[i] = 1;
        pts.push_back(P(i, 0));
        pts.push_back(P(i + 1, 0));
    }
    auto const t0 = std::chrono::steady_clock::now();
    ASSERT_EQ(0, sk.CreateWayPoint(m, pts));
    auto const ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                        std::chrono::steady_clock::now() - t0)
                        .count();
    RecordProperty("create_way_point_ms", static_cast<int>(ms));

    std::vector<KrRouteSegment*> all;
    sk.GetAllSegments(all);
    ASSERT_EQ(static_cast<std::size_t>(n), all.size());
    std::unordered_set<KrRoutingWayPoint*> distinct;
    for (KrRouteSegment* s : all) {
        for (KrRouteCADLine* l : Lines(s)) {
            for (KrRoutingWayPoint* p : Pts(l)) {
                distinct.insert(p);
            }
        }
    }
    EXPECT_EQ(static_cast<std::size_t>(n + 1), distinct.size());
    auto ends = Ends(all[n / 2]);
    ExpectAt(ends.first, n / 2, 0);
    ExpectAt(ends.second, n / 2 + 1, 0);
    std::vector<KrRouteCADLine*> parents;
    ends.first->GetParent(parents);
    EXPECT_EQ(2u, parents.size());
    EXPECT_EQ(ends.first, Ends(all[n / 2 - 1]).second);
}

// ---------------------------------------------------------------------------------------------
// ConnectSegment and CheckRouteSegment.

TEST(KrSketchBuild, ConnectSegmentAddsOneLineAndBothEnds)
{
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    KrRoutingWayPoint* a = new KrRoutingWayPoint(P(0, 0));
    KrRoutingWayPoint* b = new KrRoutingWayPoint(P(1, 0));
    KrRoutingWayPoint* c = new KrRoutingWayPoint(P(2, 0));
    sk.AddPoint(a);
    sk.AddPoint(b);
    sk.AddPoint(c);
    std::vector<KrRoutingWayPoint*> pts{a, b, c};
    KrRouteSegment* s = Seg(sk, 1);
    EXPECT_EQ(0, sk.ConnectSegment(s, pts));
    std::vector<KrRouteCADLine*> l = Lines(s);
    ASSERT_EQ(1u, l.size());
    EXPECT_EQ(pts, Pts(l[0]));
    KrRouteSegment* parent = nullptr;
    l[0]->GetParentSegment(parent);
    EXPECT_EQ(s, parent);
    EXPECT_EQ(std::make_pair(a, c), Ends(s));
    EXPECT_FALSE(IsEnd(s, b));
    std::vector<KrRouteCADLine*> parentsB;
    b->GetParent(parentsB);
    EXPECT_EQ(l, parentsB);
}

TEST(KrSketchBuild, ConnectSegmentRefusesNullSegmentOrEmptyPoints)
{
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    std::vector<KrRoutingWayPoint*> none;
    EXPECT_EQ(1, sk.ConnectSegment(Seg(sk, 1), none));
    KrRoutingWayPoint* a = new KrRoutingWayPoint(P(0, 0));
    sk.AddPoint(a);
    std::vector<KrRoutingWayPoint*> one{a};
    EXPECT_EQ(1, sk.ConnectSegment(nullptr, one));
    int n = -1;
    Seg(sk, 1)->GetCADLineNum(n);
    EXPECT_EQ(0, n);
}

TEST(KrSketchBuild, CheckRouteSegmentKeepsAPassingSketchUnchanged)
{
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    sk.CreateRouteSegment(2, 1, 1);
    std::vector<ALPoint> pts{P(0, 0), P(1, 0), P(1, 0), P(2, 0)};
    sk.CreateWayPoint(std::map<long, long>{{1, 1}, {2, 1}}, pts);
    std::vector<KrRouteSegment*> before;
    sk.GetAllSegments(before);
    EXPECT_EQ(0, sk.CheckRouteSegment());
    std::vector<KrRouteSegment*> after;
    sk.GetAllSegments(after);
    EXPECT_EQ(before, after);
}

TEST(KrSketchBuild, CheckRouteSegmentDropsFailingSegmentsAndKeepsTheOrder)
{
    // 1 passes; 2 has no ends; 3 passes; 4 has two ends but a one-point line (its second line
    // (C, C) cancels itself); 5 passes. Left: 1, 3, 5, in that order.
    KrSketch sk;
    for (int id = 1; id <= 5; ++id) {
        sk.CreateRouteSegment(id, 1, 1);
    }
    std::vector<ALPoint> pts{P(0, 0), P(1, 0),                       // 1
                             P(3, 0), P(4, 0), P(5, 5), P(5, 5),     // 4
                             P(6, 0), P(7, 0)};                      // 5
    sk.CreateWayPoint(std::map<long, long>{{1, 1}, {4, 2}, {5, 1}}, pts);
    std::vector<ALPoint> pts3{P(10, 0), P(11, 0)};
    sk.CreateWayPoint(std::map<long, long>{{3, 1}}, pts3);
    EXPECT_EQ(0, sk.CheckRouteSegment());
    std::vector<long> ids;
    sk.GetAllRouteSegment(ids);
    EXPECT_EQ((std::vector<long>{1, 3, 5}), ids);
}

TEST(KrSketchBuild, CheckRouteSegmentDetachesDroppedLinesFromWayPoints)
{
    // Segment 2 (one end only) shares (1,0) with segment 1; once 2 is dropped the way point
    // keeps only segment 1's line as parent.
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    sk.CreateRouteSegment(2, 1, 1);
    std::vector<ALPoint> pts{P(0, 0), P(1, 0)};
    sk.CreateWayPoint(std::map<long, long>{{1, 1}}, pts);
    KrRoutingWayPoint* shared = Pts(Lines(Seg(sk, 1))[0])[1];
    std::vector<KrRoutingWayPoint*> one{shared};
    sk.ConnectSegment(Seg(sk, 2), one);
    sk.CheckRouteSegment();
    std::vector<KrRouteSegment*> at;
    shared->GetConnectSegment(at);
    EXPECT_EQ((std::vector<KrRouteSegment*>{Seg(sk, 1)}), at);
    EXPECT_EQ(nullptr, Seg(sk, 2));
}

// ---------------------------------------------------------------------------------------------
// Host ids.

namespace {

// Segment 7 with lines (0,0)-(1,0) and (1,0)-(1,1); segment 8 with one line (5,0)-(6,0).
void BuildTwoSegments(KrSketch& sk)
{
    sk.CreateRouteSegment(7, 2, 1);
    sk.CreateRouteSegment(8, 1, 1);
    std::vector<ALPoint> pts{P(0, 0), P(1, 0), P(1, 0), P(1, 1), P(5, 0), P(6, 0)};
    sk.CreateWayPoint(std::map<long, long>{{7, 2}, {8, 1}}, pts);
}

std::pair<long, long> IdOf(KrRouteCADLine* l)
{
    std::pair<long, long> id;
    l->GetId(id);
    return id;
}

}  // namespace

TEST(KrSketchBuild, SetCADLineIdByRouteIdGivesEachLineItsPair)
{
    KrSketch sk;
    BuildTwoSegments(sk);
    std::vector<std::pair<long, long>> ids{{1, 10}, {2, 20}};
    EXPECT_EQ(0, sk.SetCADLineIdByRouteId(7, ids));
    std::vector<KrRouteCADLine*> l = Lines(Seg(sk, 7));
    EXPECT_EQ(std::make_pair(1L, 10L), IdOf(l[0]));
    EXPECT_EQ(std::make_pair(2L, 20L), IdOf(l[1]));
    EXPECT_EQ(std::make_pair(-1L, -1L), IdOf(Lines(Seg(sk, 8))[0]));
}

TEST(KrSketchBuild, SetCADLineIdByRouteIdCountMismatchFails)
{
    KrSketch sk;
    BuildTwoSegments(sk);
    std::vector<std::pair<long, long>> ids{{1, 10}};
    EXPECT_EQ(1, sk.SetCADLineIdByRouteId(7, ids));
    EXPECT_EQ(std::make_pair(-1L, -1L), IdOf(Lines(Seg(sk, 7))[0]));
}

TEST(KrSketchBuild, SetCADLineIdByRouteIdStopsAtAShortLineKeepingEarlierIds)
{
    // Segment 9: lines (0,0)-(1,0) and (2,2)-(2,2), the second merged to one point.
    KrSketch sk;
    sk.CreateRouteSegment(9, 1, 1);
    std::vector<ALPoint> pts{P(0, 0), P(1, 0), P(2, 2), P(2, 2)};
    sk.CreateWayPoint(std::map<long, long>{{9, 2}}, pts);
    std::vector<std::pair<long, long>> ids{{1, 10}, {2, 20}};
    EXPECT_EQ(1, sk.SetCADLineIdByRouteId(9, ids));
    std::vector<KrRouteCADLine*> l = Lines(Seg(sk, 9));
    EXPECT_EQ(std::make_pair(1L, 10L), IdOf(l[0]));
    EXPECT_EQ(std::make_pair(-1L, -1L), IdOf(l[1]));
}

TEST(KrSketchBuild, SetCADLineIdByRouteIdUnknownIdSucceedsAndChangesNothing)
{
    KrSketch sk;
    BuildTwoSegments(sk);
    std::vector<std::pair<long, long>> ids{{1, 10}};
    EXPECT_EQ(0, sk.SetCADLineIdByRouteId(99, ids));
    EXPECT_EQ(std::make_pair(-1L, -1L), IdOf(Lines(Seg(sk, 8))[0]));
}

TEST(KrSketchBuild, SetCADLineIdByRouteIdSetsEverySegmentWithTheId)
{
    KrSketch sk;
    sk.CreateRouteSegment(4, 1, 1);
    sk.CreateRouteSegment(4, 1, 1);
    std::vector<KrRouteSegment*> all;
    sk.GetAllSegments(all);
    KrRoutingWayPoint* a = new KrRoutingWayPoint(P(0, 0));
    KrRoutingWayPoint* b = new KrRoutingWayPoint(P(1, 0));
    sk.AddPoint(a);
    sk.AddPoint(b);
    std::vector<KrRoutingWayPoint*> ab{a, b};
    sk.ConnectSegment(all[0], ab);
    sk.ConnectSegment(all[1], ab);
    std::vector<std::pair<long, long>> ids{{3, 30}};
    EXPECT_EQ(0, sk.SetCADLineIdByRouteId(4, ids));
    EXPECT_EQ(std::make_pair(3L, 30L), IdOf(Lines(all[0])[0]));
    EXPECT_EQ(std::make_pair(3L, 30L), IdOf(Lines(all[1])[0]));
}

TEST(KrSketchBuild, SetCADLineIdAssignsInSegmentAndLineOrder)
{
    // Lines with two or more points: 7a, 7b, 8a -> pairs 0, 1, 2.
    KrSketch sk;
    BuildTwoSegments(sk);
    std::vector<std::pair<long, long>> ids{{1, 1}, {2, 2}, {3, 3}};
    EXPECT_EQ(0, sk.SetCADLineId(ids));
    EXPECT_EQ(std::make_pair(2L, 2L), IdOf(Lines(Seg(sk, 7))[1]));
    EXPECT_EQ(std::make_pair(3L, 3L), IdOf(Lines(Seg(sk, 8))[0]));
}

TEST(KrSketchBuild, SetCADLineIdSkipsShortLinesWithoutUsingAPair)
{
    // Segment 1: (0,0)-(1,0), then (2,2)-(2,2) merged to one point; segment 2: (5,0)-(6,0).
    // Usable lines: 1a and 2a, which take pairs 0 and 1.
    KrSketch sk;
    sk.CreateRouteSegment(1, 1, 1);
    sk.CreateRouteSegment(2, 1, 1);
    std::vector<ALPoint> pts{P(0, 0), P(1, 0), P(2, 2), P(2, 2), P(5, 0), P(6, 0)};
    sk.CreateWayPoint(std::map<long, long>{{1, 2}, {2, 1}}, pts);
    std::vector<std::pair<long, long>> ids{{1, 1}, {2, 2}};
    EXPECT_EQ(0, sk.SetCADLineId(ids));
    EXPECT_EQ(std::make_pair(1L, 1L), IdOf(Lines(Seg(sk, 1))[0]));
    EXPECT_EQ(std::make_pair(-1L, -1L), IdOf(Lines(Seg(sk, 1))[1]));
    EXPECT_EQ(std::make_pair(2L, 2L), IdOf(Lines(Seg(sk, 2))[0]));
}

TEST(KrSketchBuild, SetCADLineIdWithMorePairsThanLinesAssignsAllAndFails)
{
    KrSketch sk;
    BuildTwoSegments(sk);
    std::vector<std::pair<long, long>> ids{{1, 1}, {2, 2}, {3, 3}, {4, 4}};
    EXPECT_EQ(1, sk.SetCADLineId(ids));
    EXPECT_EQ(std::make_pair(1L, 1L), IdOf(Lines(Seg(sk, 7))[0]));
    EXPECT_EQ(std::make_pair(2L, 2L), IdOf(Lines(Seg(sk, 7))[1]));
    EXPECT_EQ(std::make_pair(3L, 3L), IdOf(Lines(Seg(sk, 8))[0]));
}

TEST(KrSketchBuild, SetCADLineIdWithTooFewPairsAssignsWhatItHasAndFails)
{
    // Three usable lines, two pairs: the first two lines get them, the third keeps (-1, -1).
    KrSketch sk;
    BuildTwoSegments(sk);
    std::vector<std::pair<long, long>> ids{{1, 1}, {2, 2}};
    EXPECT_EQ(1, sk.SetCADLineId(ids));
    EXPECT_EQ(std::make_pair(2L, 2L), IdOf(Lines(Seg(sk, 7))[1]));
    EXPECT_EQ(std::make_pair(-1L, -1L), IdOf(Lines(Seg(sk, 8))[0]));
}
