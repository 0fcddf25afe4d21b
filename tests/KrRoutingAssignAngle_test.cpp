// Angle assignment strategies: the angle generators and the assignment of angles, areas and rows
// to the segments waiting at one end of a placed segment.
#include <krlayout/layout/IAssignAngle.h>
#include <krlayout/layout/KrRoutingAssignAngleAllPositiveByDiameter.h>
#include <krlayout/layout/KrRoutingAssignAngleByDiameter.h>
#include <krlayout/layout/KrRoutingAssignAngleByLength.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <memory>
#include <vector>

namespace {

constexpr double kEps = 1e-12;
constexpr double kUnsetAngle = 42.0;  // sentinel: an angle no generator produces
constexpr int kUnsetRow = 99;         // sentinel: a row no assignment produces here

void ExpectAngles(std::vector<double> const& actual, std::vector<double> const& expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(actual[i], expected[i], kEps) << "angle " << i;
    }
}

// A placed parent segment from `start` (0, 0) to `end` (10, 0) and children hanging off either
// end. Each segment gets one CAD line through its two end way points, so the children are found
// through the shared way point's parent lines.
class Route {
public:
    Route(e_AngleArea type, double angle)
    {
        start.SetGridCoord(0.0, 0.0);
        end.SetGridCoord(10.0, 0.0);
        parent = std::make_unique<KrRouteSegment>(1, 10.0, 1.0);
        Link(*parent, &start, &end);
        parent->SetType(type);
        parent->SetDirectAngle(angle);
        parent->SetRedefine(true);
    }

    // A new unplaced child from `at` to a far point of its own, with sentinel angle and row.
    KrRouteSegment* AddChild(KrRoutingWayPoint* at, double length, double diameter)
    {
        auto far = std::make_unique<KrRoutingWayPoint>();
        far->SetGridCoord(20.0 + static_cast<double>(children.size()), 5.0);
        auto child =
            std::make_unique<KrRouteSegment>(static_cast<long>(children.size()) + 2, length, diameter);
        Link(*child, at, far.get());
        child->SetDirectAngle(kUnsetAngle);
        child->SetRow(kUnsetRow);
        farPoints.push_back(std::move(far));
        children.push_back(std::move(child));
        return children.back().get();
    }

    KrRoutingWayPoint start;
    KrRoutingWayPoint end;
    std::unique_ptr<KrRouteSegment> parent;
    std::vector<std::unique_ptr<KrRoutingWayPoint>> farPoints;
    std::vector<std::unique_ptr<KrRouteSegment>> children;

private:
    static void Link(KrRouteSegment& seg, KrRoutingWayPoint* a, KrRoutingWayPoint* b)
    {
        KrRouteCADLine* line = nullptr;
        seg.CreateCADLine(line);
        line->AddPoint(a);
        line->AddPoint(b);
        seg.AddPoint(a);
        seg.AddPoint(b);
    }
};

double AngleOf(KrRouteSegment* s)
{
    double a = 0.0;
    s->GetDirectAngle(a);
    return a;
}

e_AngleArea TypeOf(KrRouteSegment* s)
{
    e_AngleArea t = e_AngleAreaNone;
    s->GetType(t);
    return t;
}

int RowOf(KrRouteSegment* s)
{
    int r = 0;
    s->GetRow(r);
    return r;
}

void ExpectUntouched(KrRouteSegment* s)
{
    EXPECT_EQ(AngleOf(s), kUnsetAngle);
    EXPECT_EQ(TypeOf(s), e_AngleAreaNone);
    EXPECT_EQ(RowOf(s), kUnsetRow);
}

// The single child of a root or typed parent, assigned by the all-positive strategy.
struct OneChild {
    double angle;
    e_AngleArea type;
};

}  // namespace

// ---------------------------------------------------------------------------------------------
// Bisection generator (all-positive).

TEST(KrRoutingAssignAngleAllPositiveByDiameter, QuarterBisectionFillsOddMultiplesLevelByLevel)
{
    // Area 4: w = pi/2, b = 0. Level p = 1 (k = 3, 4): step pi/8, then pi/8 + pi/4 = 3pi/8.
    // Level p = 2 (k = 5..8): step pi/16, then + pi/8 each: 3pi/16, 5pi/16, 7pi/16.
    // Level p = 3 starts at k = 9 with pi/32.
    KrRoutingAssignAngleAllPositiveByDiameter s;
    std::vector<double> angles;
    EXPECT_EQ(s.GenerateAngles(10, e_AngleAreaQuarter1, angles), 0);
    ExpectAngles(angles, {0.0, HALF_PI, KR_QUARTER_PI, KR_PI / 8, 3 * KR_PI / 8, KR_PI / 16,
                          3 * KR_PI / 16, 5 * KR_PI / 16, 7 * KR_PI / 16, KR_PI / 32});
}

TEST(KrRoutingAssignAngleAllPositiveByDiameter, HalfPlanesUseTheirUpperQuarter)
{
    KrRoutingAssignAngleAllPositiveByDiameter s;
    std::vector<double> a2;
    EXPECT_EQ(s.GenerateAngles(5, e_AngleAreaPositiveX, a2), 0);
    // Area 2 as area 4: b = 0, w = pi/2.
    ExpectAngles(a2, {0.0, HALF_PI, KR_QUARTER_PI, KR_PI / 8, 3 * KR_PI / 8});
    std::vector<double> a3;
    EXPECT_EQ(s.GenerateAngles(5, e_AngleAreaNegativeX, a3), 0);
    // Area 3 as area 5: b = pi/2, w = pi/2.
    ExpectAngles(a3, {KR_PI, HALF_PI, KR_THREE_QUARTER_PI, HALF_PI + KR_PI / 8,
                      HALF_PI + 3 * KR_PI / 8});
}

TEST(KrRoutingAssignAngleAllPositiveByDiameter, LowerQuartersStartFromTheirOwnBase)
{
    KrRoutingAssignAngleAllPositiveByDiameter s;
    std::vector<double> a6;
    EXPECT_EQ(s.GenerateAngles(6, e_AngleAreaQuarter3, a6), 0);
    // b = pi: pi + pi/8, pi + 3pi/8, then the next level pi + pi/16.
    ExpectAngles(a6, {KR_PI, KR_THREE_HALF_PI, KR_FIVE_QUARTER_PI, KR_PI + KR_PI / 8,
                      KR_PI + 3 * KR_PI / 8, KR_PI + KR_PI / 16});
    std::vector<double> a7;
    EXPECT_EQ(s.GenerateAngles(6, e_AngleAreaQuarter4, a7), 0);
    // b = 3pi/2.
    ExpectAngles(a7, {0.0, KR_THREE_HALF_PI, KR_SEVEN_QUARTER_PI, KR_THREE_HALF_PI + KR_PI / 8,
                      KR_THREE_HALF_PI + 3 * KR_PI / 8, KR_THREE_HALF_PI + KR_PI / 16});
    std::vector<double> a5;
    EXPECT_EQ(s.GenerateAngles(4, e_AngleAreaQuarter2, a5), 0);
    ExpectAngles(a5, {KR_PI, HALF_PI, KR_THREE_QUARTER_PI, HALF_PI + KR_PI / 8});
}

TEST(KrRoutingAssignAngleAllPositiveByDiameter, FewerThanThreeStillGiveTheThreeBaseAngles)
{
    KrRoutingAssignAngleAllPositiveByDiameter s;
    for (int count : {3, 2, 1, 0, -1, INT_MIN}) {
        std::vector<double> angles;
        EXPECT_EQ(s.GenerateAngles(count, e_AngleAreaQuarter3, angles), 0) << count;
        ExpectAngles(angles, {KR_PI, KR_THREE_HALF_PI, KR_FIVE_QUARTER_PI});
    }
}

TEST(KrRoutingAssignAngleAllPositiveByDiameter, AreaOutsideTwoToSevenReturnsOneAndAppendsNothing)
{
    KrRoutingAssignAngleAllPositiveByDiameter s;
    for (int area : {0, 1, 8, -3}) {
        std::vector<double> angles{7.0};
        EXPECT_EQ(s.GenerateAngles(10, static_cast<e_AngleArea>(area), angles), 1) << area;
        ExpectAngles(angles, {7.0});
    }
}

TEST(KrRoutingAssignAngleAllPositiveByDiameter, GenerateAnglesAppendsToTheList)
{
    KrRoutingAssignAngleAllPositiveByDiameter s;
    std::vector<double> angles{-1.0};
    EXPECT_EQ(s.GenerateAngles(3, e_AngleAreaQuarter1, angles), 0);
    ExpectAngles(angles, {-1.0, 0.0, HALF_PI, KR_QUARTER_PI});
}

TEST(KrRoutingAssignAngleAllPositiveByDiameter, HugeCountStaysExactWithoutOverflow)
{
    // Index k lies in level p when 2^p + 1 <= k <= 2^(p+1); k = 99999 is in level 16 (65537 ..
    // 131072): angle = w/2^17 + (99999 - 65536 - 1) * w/2^16 = w * 68925 / 2^17.
    KrRoutingAssignAngleAllPositiveByDiameter s;
    std::vector<double> angles;
    EXPECT_EQ(s.GenerateAngles(100000, e_AngleAreaQuarter1, angles), 0);
    ASSERT_EQ(angles.size(), 100000u);
    EXPECT_NEAR(angles[99999], HALF_PI * 68925.0 / 131072.0, kEps);
    // First of level 16: w / 2^17.
    EXPECT_NEAR(angles[65537], HALF_PI / 131072.0, kEps);
    // Last of level 15 (k = 65536): w/2^16 + (65536 - 32768 - 1) * w/2^15 = w * 65535 / 2^16.
    EXPECT_NEAR(angles[65536], HALF_PI * 65535.0 / 65536.0, kEps);
    for (double a : angles) {
        ASSERT_GE(a, 0.0);
        ASSERT_LE(a, HALF_PI);
    }
}

// ---------------------------------------------------------------------------------------------
// Bisection generator over whole half-planes.

TEST(KrRoutingAssignAngleByDiameter, PositiveHalfPlaneWrapsAnglesBelowZero)
{
    // Area 2: b = -pi/2, w = pi. k = 3: -pi/2 + pi/4 = -pi/4 -> 7pi/4. k = 4: -pi/2 + pi/4 + pi/2
    // = pi/4. k = 5 (next level): -pi/2 + pi/8 = -3pi/8 -> 13pi/8. k = 6: -3pi/8 + pi/4 -> 15pi/8.
    // k = 7: -3pi/8 + pi/2 = pi/8.
    KrRoutingAssignAngleByDiameter s;
    std::vector<double> angles;
    EXPECT_EQ(s.GenerateAngles(8, e_AngleAreaPositiveX, angles), 0);
    ExpectAngles(angles, {0.0, HALF_PI, KR_THREE_HALF_PI, KR_SEVEN_QUARTER_PI, KR_PI / 4,
                          13 * KR_PI / 8, 15 * KR_PI / 8, KR_PI / 8});
}

TEST(KrRoutingAssignAngleByDiameter, NegativeHalfPlaneSpreadsFromHalfPi)
{
    // Area 3: b = pi/2, w = pi. k = 3: pi/2 + pi/4 = 3pi/4; k = 4: 3pi/4 + pi/2 = 5pi/4;
    // k = 5: pi/2 + pi/8 = 5pi/8.
    KrRoutingAssignAngleByDiameter s;
    std::vector<double> angles;
    EXPECT_EQ(s.GenerateAngles(6, e_AngleAreaNegativeX, angles), 0);
    ExpectAngles(angles, {KR_PI, HALF_PI, KR_THREE_HALF_PI, KR_THREE_QUARTER_PI,
                          KR_FIVE_QUARTER_PI, 5 * KR_PI / 8});
}

TEST(KrRoutingAssignAngleByDiameter, QuartersAsAllPositive)
{
    KrRoutingAssignAngleByDiameter s;
    KrRoutingAssignAngleAllPositiveByDiameter p;
    for (int area = 4; area <= 7; ++area) {
        std::vector<double> mine;
        std::vector<double> theirs;
        EXPECT_EQ(s.GenerateAngles(9, static_cast<e_AngleArea>(area), mine), 0);
        EXPECT_EQ(p.GenerateAngles(9, static_cast<e_AngleArea>(area), theirs), 0);
        ExpectAngles(mine, theirs);
    }
    std::vector<double> a6;
    s.GenerateAngles(4, e_AngleAreaQuarter3, a6);
    ExpectAngles(a6, {KR_PI, KR_THREE_HALF_PI, KR_FIVE_QUARTER_PI, KR_PI + KR_PI / 8});
}

TEST(KrRoutingAssignAngleByDiameter, AreaOutsideTwoToSevenReturnsOneAndAppendsNothing)
{
    KrRoutingAssignAngleByDiameter s;
    for (int area : {0, 1, 8}) {
        std::vector<double> angles;
        EXPECT_EQ(s.GenerateAngles(10, static_cast<e_AngleArea>(area), angles), 1) << area;
        EXPECT_TRUE(angles.empty());
    }
}

TEST(KrRoutingAssignAngleByDiameter, NonPositiveCountGivesTheBaseAngles)
{
    KrRoutingAssignAngleByDiameter s;
    std::vector<double> angles;
    EXPECT_EQ(s.GenerateAngles(-7, e_AngleAreaPositiveX, angles), 0);
    ExpectAngles(angles, {0.0, HALF_PI, KR_THREE_HALF_PI});
}

// ---------------------------------------------------------------------------------------------
// Even-step generator.

TEST(KrRoutingAssignAngleByLength, QuarterOneFourChildrenStepDownFromHalfPi)
{
    // step = (pi/2) / 3 = pi/6: pi/2 - pi/6, pi/2 - 2pi/6.
    KrRoutingAssignAngleByLength s;
    std::vector<double> angles;
    EXPECT_EQ(s.GenerateAngles(4, e_AngleAreaQuarter1, angles), 0);
    ExpectAngles(angles, {0.0, HALF_PI, HALF_PI - KR_PI / 6, HALF_PI - 2 * KR_PI / 6});
}

TEST(KrRoutingAssignAngleByLength, QuartersStepFromTheirLimits)
{
    KrRoutingAssignAngleByLength s;
    // Area 5, count 3: step pi/4, lo + pi/4 = 3pi/4.
    std::vector<double> a5;
    EXPECT_EQ(s.GenerateAngles(3, e_AngleAreaQuarter2, a5), 0);
    ExpectAngles(a5, {KR_PI, HALF_PI, HALF_PI + KR_PI / 4});
    // Area 6, count 4: step pi/6 down from 3pi/2.
    std::vector<double> a6;
    EXPECT_EQ(s.GenerateAngles(4, e_AngleAreaQuarter3, a6), 0);
    ExpectAngles(a6, {KR_PI, KR_THREE_HALF_PI, KR_THREE_HALF_PI - KR_PI / 6,
                      KR_THREE_HALF_PI - 2 * KR_PI / 6});
    // Area 7, count 4: step pi/6 up from 3pi/2.
    std::vector<double> a7;
    EXPECT_EQ(s.GenerateAngles(4, e_AngleAreaQuarter4, a7), 0);
    ExpectAngles(a7, {0.0, KR_THREE_HALF_PI, KR_THREE_HALF_PI + KR_PI / 6,
                      KR_THREE_HALF_PI + 2 * KR_PI / 6});
}

TEST(KrRoutingAssignAngleByLength, QuarterWithTwoOrFewerGivesTheTwoBaseAngles)
{
    KrRoutingAssignAngleByLength s;
    for (int count : {2, 1, 0, -4, INT_MIN}) {
        std::vector<double> angles;
        EXPECT_EQ(s.GenerateAngles(count, e_AngleAreaQuarter4, angles), 0) << count;
        ExpectAngles(angles, {0.0, KR_THREE_HALF_PI});
    }
}

TEST(KrRoutingAssignAngleByLength, HalfPlaneFiveChildrenRepeatHiAndLo)
{
    // count - 3 = 2: u = 1, v = 1; j = 0 appends hi = pi/2 and lo = -pi/2 themselves.
    KrRoutingAssignAngleByLength s;
    std::vector<double> angles;
    EXPECT_EQ(s.GenerateAngles(5, e_AngleAreaPositiveX, angles), 0);
    ExpectAngles(angles, {0.0, HALF_PI, KR_THREE_HALF_PI, HALF_PI, -HALF_PI});
}

TEST(KrRoutingAssignAngleByLength, HalfPlaneSplitsExtrasBetweenHiAndLo)
{
    KrRoutingAssignAngleByLength s;
    // count 4: u = 0, v = 1: only lo.
    std::vector<double> a4;
    s.GenerateAngles(4, e_AngleAreaPositiveX, a4);
    ExpectAngles(a4, {0.0, HALF_PI, KR_THREE_HALF_PI, -HALF_PI});
    // count 6: u = 1, v = 2: hi, lo, then lo + (pi/2)/3.
    std::vector<double> a6;
    s.GenerateAngles(6, e_AngleAreaPositiveX, a6);
    ExpectAngles(a6, {0.0, HALF_PI, KR_THREE_HALF_PI, HALF_PI, -HALF_PI, -HALF_PI + KR_PI / 6});
    // count 7, area 3: u = 2, v = 2: hi = 3pi/2, lo = pi/2, then 3pi/2 - pi/6, pi/2 + pi/6.
    std::vector<double> a7;
    s.GenerateAngles(7, e_AngleAreaNegativeX, a7);
    ExpectAngles(a7, {KR_PI, HALF_PI, KR_THREE_HALF_PI, KR_THREE_HALF_PI, HALF_PI,
                      KR_THREE_HALF_PI - KR_PI / 6, HALF_PI + KR_PI / 6});
    // count 3 and below: base angles only.
    std::vector<double> a0;
    s.GenerateAngles(0, e_AngleAreaNegativeX, a0);
    ExpectAngles(a0, {KR_PI, HALF_PI, KR_THREE_HALF_PI});
}

TEST(KrRoutingAssignAngleByLength, AreaOutsideTwoToSevenReturnsOneAndAppendsNothing)
{
    KrRoutingAssignAngleByLength s;
    for (int area : {0, 1, 8}) {
        std::vector<double> angles;
        EXPECT_EQ(s.GenerateAngles(5, static_cast<e_AngleArea>(area), angles), 1) << area;
        EXPECT_TRUE(angles.empty());
    }
}

TEST(KrRoutingAssignAngleByLength, HugeCountIsEvenlySpaced)
{
    // Area 4, count 100000: step = (pi/2) / 99999; the last extra is pi/2 - 99998 * step.
    KrRoutingAssignAngleByLength s;
    std::vector<double> angles;
    EXPECT_EQ(s.GenerateAngles(100000, e_AngleAreaQuarter1, angles), 0);
    ASSERT_EQ(angles.size(), 100000u);
    EXPECT_NEAR(angles.back(), HALF_PI / 99999.0, 1e-10);
}

// ---------------------------------------------------------------------------------------------
// AssignAngles: parent area.

namespace {

OneChild AssignOne(e_AngleArea parentType, double parentAngle, bool atStart)
{
    Route r(parentType, parentAngle);
    KrRouteSegment* c = r.AddChild(atStart ? &r.start : &r.end, 1.0, 1.0);
    KrRoutingAssignAngleAllPositiveByDiameter s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), atStart ? &r.start : &r.end), 0);
    return {AngleOf(c), TypeOf(c)};
}

}  // namespace

TEST(KrRoutingAssignAngle, RootFarEndAtPiOpensTheNegativeHalfPlane)
{
    OneChild c = AssignOne(e_AngleAreaRoot, KR_PI, false);
    EXPECT_NEAR(c.angle, KR_PI, kEps);
    EXPECT_EQ(c.type, e_AngleAreaNegativeX);  // exactly pi in area 3 keeps the half-plane
}

TEST(KrRoutingAssignAngle, RootFarEndAtOtherAngleOpensThePositiveHalfPlane)
{
    OneChild c = AssignOne(e_AngleAreaRoot, 0.0, false);
    EXPECT_NEAR(c.angle, 0.0, kEps);
    EXPECT_EQ(c.type, e_AngleAreaPositiveX);  // exactly 0 in area 2 keeps the half-plane
    OneChild d = AssignOne(e_AngleAreaRoot, HALF_PI, false);
    EXPECT_EQ(d.type, e_AngleAreaPositiveX);
}

TEST(KrRoutingAssignAngle, RootStartAtPiOpensThePositiveHalfPlane)
{
    OneChild c = AssignOne(e_AngleAreaRoot, KR_PI, true);
    EXPECT_NEAR(c.angle, 0.0, kEps);
    EXPECT_EQ(c.type, e_AngleAreaPositiveX);
}

TEST(KrRoutingAssignAngle, RootStartAtOtherAngleOpensTheNegativeHalfPlane)
{
    OneChild c = AssignOne(e_AngleAreaRoot, 0.0, true);
    EXPECT_NEAR(c.angle, KR_PI, kEps);
    EXPECT_EQ(c.type, e_AngleAreaNegativeX);
}

TEST(KrRoutingAssignAngle, NonRootFarEndUsesTheParentsOwnArea)
{
    // Area 5 gives pi first (type 5); area 6 gives pi too, typed 6; area 7 gives 0, typed 7.
    OneChild c5 = AssignOne(e_AngleAreaQuarter2, KR_THREE_QUARTER_PI, false);
    EXPECT_NEAR(c5.angle, KR_PI, kEps);
    EXPECT_EQ(c5.type, e_AngleAreaQuarter2);
    OneChild c6 = AssignOne(e_AngleAreaQuarter3, KR_FIVE_QUARTER_PI, false);
    EXPECT_NEAR(c6.angle, KR_PI, kEps);
    EXPECT_EQ(c6.type, e_AngleAreaQuarter3);
    OneChild c7 = AssignOne(e_AngleAreaQuarter4, KR_SEVEN_QUARTER_PI, false);
    EXPECT_NEAR(c7.angle, 0.0, kEps);
    EXPECT_EQ(c7.type, e_AngleAreaQuarter4);
    // A half-plane parent that is not the root keeps its area too.
    OneChild c3 = AssignOne(e_AngleAreaNegativeX, KR_PI, false);
    EXPECT_EQ(c3.type, e_AngleAreaNegativeX);
}

TEST(KrRoutingAssignAngle, StartOfNonRootReturnsOneAndChangesNothing)
{
    Route r(e_AngleAreaQuarter1, KR_QUARTER_PI);
    KrRouteSegment* c = r.AddChild(&r.start, 1.0, 1.0);
    KrRouteSegment* d = r.AddChild(&r.start, 2.0, 2.0);
    KrRoutingAssignAngleAllPositiveByDiameter s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), &r.start), 1);
    ExpectUntouched(c);
    ExpectUntouched(d);
    KrRoutingAssignAngleByLength l;
    EXPECT_EQ(l.AssignAngles(r.parent.get(), &r.start), 1);
    ExpectUntouched(c);
}

TEST(KrRoutingAssignAngle, UntypedParentReturnsOneAndChangesNothing)
{
    // Area 0 has no angles: nothing to hand out, so the children are left as they are.
    Route r(e_AngleAreaNone, 0.0);
    KrRouteSegment* c = r.AddChild(&r.end, 1.0, 1.0);
    KrRoutingAssignAngleByDiameter s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), &r.end), 1);
    ExpectUntouched(c);
    KrRoutingAssignAngleByLength l;
    EXPECT_EQ(l.AssignAngles(r.parent.get(), &r.end), 1);
    ExpectUntouched(c);
}

TEST(KrRoutingAssignAngle, NullSegmentOrEndReturnsOne)
{
    Route r(e_AngleAreaRoot, KR_PI);
    KrRouteSegment* c = r.AddChild(&r.end, 1.0, 1.0);
    KrRoutingAssignAngleAllPositiveByDiameter a;
    KrRoutingAssignAngleByDiameter b;
    KrRoutingAssignAngleByLength l;
    for (IAssignAngle* s : std::vector<IAssignAngle*>{&a, &b, &l}) {
        EXPECT_EQ(s->AssignAngles(nullptr, &r.end), 1);
        EXPECT_EQ(s->AssignAngles(r.parent.get(), nullptr), 1);
        EXPECT_EQ(s->AssignAngles(nullptr, nullptr), 1);
    }
    ExpectUntouched(c);
}

TEST(KrRoutingAssignAngle, NoWaitingChildrenReturnsZero)
{
    Route r(e_AngleAreaRoot, KR_PI);
    KrRoutingAssignAngleAllPositiveByDiameter s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), &r.end), 0);
}

TEST(KrRoutingAssignAngle, PlacedSegmentsAtTheEndAreLeftAlone)
{
    Route r(e_AngleAreaRoot, KR_PI);
    KrRouteSegment* placed = r.AddChild(&r.end, 9.0, 9.0);
    placed->SetRedefine(true);
    KrRouteSegment* waiting = r.AddChild(&r.end, 1.0, 1.0);
    KrRoutingAssignAngleAllPositiveByDiameter s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), &r.end), 0);
    ExpectUntouched(placed);
    // The only waiting child takes the first angle of area 3.
    EXPECT_NEAR(AngleOf(waiting), KR_PI, kEps);
}

// ---------------------------------------------------------------------------------------------
// AssignAngles: order, types and rows.

TEST(KrRoutingAssignAngleAllPositiveByDiameter, RootFarEndTwoChildrenLargerDiameterGetsPi)
{
    Route r(e_AngleAreaRoot, KR_PI);
    KrRouteSegment* thin = r.AddChild(&r.end, 50.0, 1.0);
    KrRouteSegment* thick = r.AddChild(&r.end, 5.0, 3.0);
    KrRoutingAssignAngleAllPositiveByDiameter s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), &r.end), 0);
    EXPECT_NEAR(AngleOf(thick), KR_PI, kEps);
    EXPECT_EQ(TypeOf(thick), e_AngleAreaNegativeX);
    EXPECT_NEAR(AngleOf(thin), HALF_PI, kEps);
    EXPECT_EQ(TypeOf(thin), e_AngleAreaQuarter2);
    // Rows only for areas 4..7: the lone area-5 child is not horizontal and gets row 1; the
    // area-3 child keeps its row.
    EXPECT_EQ(RowOf(thin), 1);
    EXPECT_EQ(RowOf(thick), kUnsetRow);
}

TEST(KrRoutingAssignAngleAllPositiveByDiameter, RootFarEndFiveChildrenInDiameterOrder)
{
    Route r(e_AngleAreaRoot, KR_PI);
    // Listed out of order; diameters rank them d5, d4, d3, d2, d1.
    KrRouteSegment* d2 = r.AddChild(&r.end, 1.0, 2.0);
    KrRouteSegment* d5 = r.AddChild(&r.end, 1.0, 5.0);
    KrRouteSegment* d1 = r.AddChild(&r.end, 1.0, 1.0);
    KrRouteSegment* d3 = r.AddChild(&r.end, 1.0, 3.0);
    KrRouteSegment* d4 = r.AddChild(&r.end, 1.0, 4.0);
    KrRoutingAssignAngleAllPositiveByDiameter s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), &r.end), 0);
    EXPECT_NEAR(AngleOf(d5), KR_PI, kEps);
    EXPECT_NEAR(AngleOf(d4), HALF_PI, kEps);
    EXPECT_NEAR(AngleOf(d3), KR_THREE_QUARTER_PI, kEps);
    EXPECT_NEAR(AngleOf(d2), HALF_PI + KR_PI / 8, kEps);
    EXPECT_NEAR(AngleOf(d1), HALF_PI + 3 * KR_PI / 8, kEps);
    EXPECT_EQ(TypeOf(d5), e_AngleAreaNegativeX);
    for (KrRouteSegment* c : {d4, d3, d2, d1}) {
        EXPECT_EQ(TypeOf(c), e_AngleAreaQuarter2);
    }
    // Area 5 rows, most horizontal first: |sin| of 7pi/8 = 0.383 (d1), 3pi/4 = 0.707 (d3),
    // 5pi/8 = 0.924 (d2), pi/2 = 1 (d4).
    EXPECT_EQ(RowOf(d1), 1);
    EXPECT_EQ(RowOf(d3), 2);
    EXPECT_EQ(RowOf(d2), 3);
    EXPECT_EQ(RowOf(d4), 4);
    EXPECT_EQ(RowOf(d5), kUnsetRow);
}

TEST(KrRoutingAssignAngleAllPositiveByDiameter, QuarterParentChildrenGetRowsMostHorizontalFirst)
{
    // Area 4, three children at 0, pi/2, pi/4 in diameter order. Rows: the one at 0 is horizontal,
    // row 0; the count restarts at 1 for pi/4 (|sin| 0.707), then 2 for pi/2 (|sin| 1).
    Route r(e_AngleAreaQuarter1, KR_QUARTER_PI);
    KrRouteSegment* a = r.AddChild(&r.end, 1.0, 3.0);
    KrRouteSegment* b = r.AddChild(&r.end, 1.0, 2.0);
    KrRouteSegment* c = r.AddChild(&r.end, 1.0, 1.0);
    KrRoutingAssignAngleAllPositiveByDiameter s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), &r.end), 0);
    EXPECT_NEAR(AngleOf(a), 0.0, kEps);
    EXPECT_NEAR(AngleOf(b), HALF_PI, kEps);
    EXPECT_NEAR(AngleOf(c), KR_QUARTER_PI, kEps);
    for (KrRouteSegment* x : {a, b, c}) {
        EXPECT_EQ(TypeOf(x), e_AngleAreaQuarter1);
    }
    EXPECT_EQ(RowOf(a), 0);
    EXPECT_EQ(RowOf(c), 1);
    EXPECT_EQ(RowOf(b), 2);
}

TEST(KrRoutingAssignAngleAllPositiveByDiameter, LowerQuarterRowsCountDownwards)
{
    // Area 6: pi (row 0, horizontal), 3pi/2 (|sin| 1), 5pi/4 (|sin| 0.707): rows 0, -2, -1.
    Route r(e_AngleAreaQuarter3, KR_FIVE_QUARTER_PI);
    KrRouteSegment* a = r.AddChild(&r.end, 1.0, 3.0);
    KrRouteSegment* b = r.AddChild(&r.end, 1.0, 2.0);
    KrRouteSegment* c = r.AddChild(&r.end, 1.0, 1.0);
    KrRoutingAssignAngleAllPositiveByDiameter s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), &r.end), 0);
    EXPECT_NEAR(AngleOf(a), KR_PI, kEps);
    EXPECT_NEAR(AngleOf(b), KR_THREE_HALF_PI, kEps);
    EXPECT_NEAR(AngleOf(c), KR_FIVE_QUARTER_PI, kEps);
    EXPECT_EQ(RowOf(a), 0);
    EXPECT_EQ(RowOf(c), -1);
    EXPECT_EQ(RowOf(b), -2);
}

TEST(KrRoutingAssignAngleByDiameter, PositiveHalfPlaneFourthChildWrapsToSevenQuarterPi)
{
    // Area 2 (root far end, angle 0): 0 (type 2), pi/2 (type 4), 3pi/2 (type 7), -pi/4 wrapped
    // to 7pi/4 (type 7).
    Route r(e_AngleAreaRoot, 0.0);
    KrRouteSegment* a = r.AddChild(&r.end, 1.0, 4.0);
    KrRouteSegment* b = r.AddChild(&r.end, 1.0, 3.0);
    KrRouteSegment* c = r.AddChild(&r.end, 1.0, 2.0);
    KrRouteSegment* d = r.AddChild(&r.end, 1.0, 1.0);
    KrRoutingAssignAngleByDiameter s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), &r.end), 0);
    EXPECT_NEAR(AngleOf(a), 0.0, kEps);
    EXPECT_NEAR(AngleOf(b), HALF_PI, kEps);
    EXPECT_NEAR(AngleOf(c), KR_THREE_HALF_PI, kEps);
    EXPECT_NEAR(AngleOf(d), KR_SEVEN_QUARTER_PI, kEps);
    EXPECT_EQ(TypeOf(a), e_AngleAreaPositiveX);
    EXPECT_EQ(TypeOf(b), e_AngleAreaQuarter1);
    EXPECT_EQ(TypeOf(c), e_AngleAreaQuarter4);
    EXPECT_EQ(TypeOf(d), e_AngleAreaQuarter4);
    // Area 4: b alone, row 1. Area 7 downwards: 7pi/4 (|sin| 0.707) -1, then 3pi/2 -2.
    EXPECT_EQ(RowOf(a), kUnsetRow);
    EXPECT_EQ(RowOf(b), 1);
    EXPECT_EQ(RowOf(d), -1);
    EXPECT_EQ(RowOf(c), -2);
}

TEST(KrRoutingAssignAngleByDiameter, NegativeHalfPlaneSplitsIntoQuartersFiveAndSix)
{
    // Area 3 (root start, angle 0): pi (type 3), pi/2 (5), 3pi/2 (6, upper limit included),
    // 3pi/4 (5), 5pi/4 (6).
    Route r(e_AngleAreaRoot, 0.0);
    KrRouteSegment* a = r.AddChild(&r.start, 1.0, 5.0);
    KrRouteSegment* b = r.AddChild(&r.start, 1.0, 4.0);
    KrRouteSegment* c = r.AddChild(&r.start, 1.0, 3.0);
    KrRouteSegment* d = r.AddChild(&r.start, 1.0, 2.0);
    KrRouteSegment* e = r.AddChild(&r.start, 1.0, 1.0);
    KrRoutingAssignAngleByDiameter s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), &r.start), 0);
    EXPECT_NEAR(AngleOf(a), KR_PI, kEps);
    EXPECT_NEAR(AngleOf(b), HALF_PI, kEps);
    EXPECT_NEAR(AngleOf(c), KR_THREE_HALF_PI, kEps);
    EXPECT_NEAR(AngleOf(d), KR_THREE_QUARTER_PI, kEps);
    EXPECT_NEAR(AngleOf(e), KR_FIVE_QUARTER_PI, kEps);
    EXPECT_EQ(TypeOf(a), e_AngleAreaNegativeX);
    EXPECT_EQ(TypeOf(b), e_AngleAreaQuarter2);
    EXPECT_EQ(TypeOf(c), e_AngleAreaQuarter3);
    EXPECT_EQ(TypeOf(d), e_AngleAreaQuarter2);
    EXPECT_EQ(TypeOf(e), e_AngleAreaQuarter3);
    // Area 5: 3pi/4 (0.707) row 1, pi/2 row 2. Area 6: 5pi/4 row -1, 3pi/2 row -2.
    EXPECT_EQ(RowOf(d), 1);
    EXPECT_EQ(RowOf(b), 2);
    EXPECT_EQ(RowOf(e), -1);
    EXPECT_EQ(RowOf(c), -2);
}

TEST(KrRoutingAssignAngleByLength, QuarterFourChildrenInLengthOrder)
{
    // Area 4: 0, pi/2, pi/3, pi/6 by length. Rows: 0 -> row 0; then pi/6 (0.5) 1, pi/3 (0.866) 2,
    // pi/2 3.
    Route r(e_AngleAreaQuarter1, KR_QUARTER_PI);
    KrRouteSegment* l2 = r.AddChild(&r.end, 2.0, 9.0);
    KrRouteSegment* l4 = r.AddChild(&r.end, 4.0, 1.0);
    KrRouteSegment* l1 = r.AddChild(&r.end, 1.0, 9.0);
    KrRouteSegment* l3 = r.AddChild(&r.end, 3.0, 1.0);
    KrRoutingAssignAngleByLength s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), &r.end), 0);
    EXPECT_NEAR(AngleOf(l4), 0.0, kEps);
    EXPECT_NEAR(AngleOf(l3), HALF_PI, kEps);
    EXPECT_NEAR(AngleOf(l2), KR_PI / 3, kEps);
    EXPECT_NEAR(AngleOf(l1), KR_PI / 6, kEps);
    for (KrRouteSegment* x : {l1, l2, l3, l4}) {
        EXPECT_EQ(TypeOf(x), e_AngleAreaQuarter1);
    }
    EXPECT_EQ(RowOf(l4), 0);
    EXPECT_EQ(RowOf(l1), 1);
    EXPECT_EQ(RowOf(l2), 2);
    EXPECT_EQ(RowOf(l3), 3);
}

TEST(KrRoutingAssignAngleByLength, PositiveHalfPlaneFiveChildren)
{
    // Area 2: 0 (type 2), pi/2 (4), 3pi/2 (7), pi/2 again (4), -pi/2 (not wrapped: neither above
    // 0 nor at least 3pi/2, so type 2).
    Route r(e_AngleAreaRoot, 0.0);
    KrRouteSegment* a = r.AddChild(&r.end, 5.0, 1.0);
    KrRouteSegment* b = r.AddChild(&r.end, 4.0, 1.0);
    KrRouteSegment* c = r.AddChild(&r.end, 3.0, 1.0);
    KrRouteSegment* d = r.AddChild(&r.end, 2.0, 1.0);
    KrRouteSegment* e = r.AddChild(&r.end, 1.0, 1.0);
    KrRoutingAssignAngleByLength s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), &r.end), 0);
    EXPECT_NEAR(AngleOf(a), 0.0, kEps);
    EXPECT_NEAR(AngleOf(b), HALF_PI, kEps);
    EXPECT_NEAR(AngleOf(c), KR_THREE_HALF_PI, kEps);
    EXPECT_NEAR(AngleOf(d), HALF_PI, kEps);
    EXPECT_NEAR(AngleOf(e), -HALF_PI, kEps);
    EXPECT_EQ(TypeOf(a), e_AngleAreaPositiveX);
    EXPECT_EQ(TypeOf(b), e_AngleAreaQuarter1);
    EXPECT_EQ(TypeOf(c), e_AngleAreaQuarter4);
    EXPECT_EQ(TypeOf(d), e_AngleAreaQuarter1);
    EXPECT_EQ(TypeOf(e), e_AngleAreaPositiveX);
    // Area 4: b and d tie at |sin| 1, the earlier listed (b) first.
    EXPECT_EQ(RowOf(b), 1);
    EXPECT_EQ(RowOf(d), 2);
    EXPECT_EQ(RowOf(c), -1);
    EXPECT_EQ(RowOf(a), kUnsetRow);
    EXPECT_EQ(RowOf(e), kUnsetRow);
}

TEST(KrRoutingAssignAngle, DiameterAndLengthStrategiesOrderChildrenDifferently)
{
    // Area 4, three children; both generators give 0, pi/2, pi/4 here (even step: pi/2 - pi/4).
    // By diameter: (d2, l7) > (d2, l5) > (d1, l100). By length: (l100) > (l7) > (l5).
    Route r(e_AngleAreaQuarter1, KR_QUARTER_PI);
    KrRouteSegment* d2l5 = r.AddChild(&r.end, 5.0, 2.0);
    KrRouteSegment* d2l7 = r.AddChild(&r.end, 7.0, 2.0);
    KrRouteSegment* d1l100 = r.AddChild(&r.end, 100.0, 1.0);

    KrRoutingAssignAngleAllPositiveByDiameter byDiameter;
    EXPECT_EQ(byDiameter.AssignAngles(r.parent.get(), &r.end), 0);
    EXPECT_NEAR(AngleOf(d2l7), 0.0, kEps);
    EXPECT_NEAR(AngleOf(d2l5), HALF_PI, kEps);
    EXPECT_NEAR(AngleOf(d1l100), KR_QUARTER_PI, kEps);

    KrRoutingAssignAngleByLength byLength;
    EXPECT_EQ(byLength.AssignAngles(r.parent.get(), &r.end), 0);
    EXPECT_NEAR(AngleOf(d1l100), 0.0, kEps);
    EXPECT_NEAR(AngleOf(d2l7), HALF_PI, kEps);
    EXPECT_NEAR(AngleOf(d2l5), KR_QUARTER_PI, kEps);
    EXPECT_EQ(RowOf(d1l100), 0);
    EXPECT_EQ(RowOf(d2l5), 1);
    EXPECT_EQ(RowOf(d2l7), 2);
}

TEST(KrRoutingAssignAngle, WorksThroughTheInterface)
{
    Route r(e_AngleAreaRoot, KR_PI);
    KrRouteSegment* c = r.AddChild(&r.end, 1.0, 1.0);
    std::unique_ptr<IAssignAngle> s = std::make_unique<KrRoutingAssignAngleByLength>();
    EXPECT_EQ(s->AssignAngles(r.parent.get(), &r.end), 0);
    EXPECT_NEAR(AngleOf(c), KR_PI, kEps);
    EXPECT_EQ(TypeOf(c), e_AngleAreaNegativeX);
}

// ---------------------------------------------------------------------------------------------
// AssignAngles with a generator that yields too few angles or fails.

namespace {

// Uses the object's own generator: one angle only.
class OneAngleStrategy : public KrRoutingAssignAngleByDiameter {
public:
    int GenerateAngles(int, e_AngleArea, std::vector<double>& angles) override
    {
        angles.push_back(HALF_PI);
        return 0;
    }
};

class FailingStrategy : public KrRoutingAssignAngleByDiameter {
public:
    int GenerateAngles(int, e_AngleArea, std::vector<double>&) override { return 1; }
};

}  // namespace

TEST(KrRoutingAssignAngle, ChildrenBeyondTheGeneratedAnglesKeepAngleAndType)
{
    Route r(e_AngleAreaRoot, KR_PI);
    KrRouteSegment* small = r.AddChild(&r.end, 1.0, 1.0);
    KrRouteSegment* big = r.AddChild(&r.end, 1.0, 2.0);
    OneAngleStrategy s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), &r.end), 0);
    EXPECT_NEAR(AngleOf(big), HALF_PI, kEps);
    EXPECT_EQ(TypeOf(big), e_AngleAreaQuarter2);
    EXPECT_EQ(RowOf(big), 1);
    ExpectUntouched(small);
}

TEST(KrRoutingAssignAngle, FailingGeneratorReturnsOneAndChangesNothing)
{
    Route r(e_AngleAreaRoot, KR_PI);
    KrRouteSegment* c = r.AddChild(&r.end, 1.0, 1.0);
    FailingStrategy s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), &r.end), 1);
    ExpectUntouched(c);
}

// ---------------------------------------------------------------------------------------------
// A large star.

TEST(KrRoutingAssignAngle, StarOfTenThousandChildrenGetsEveryAngle)
{
    // Root far end at pi, all-positive: area 3 spread over pi/2 .. pi. Diameters fall with the
    // index, so child i takes angles[i].
    constexpr int n = 10000;
    Route r(e_AngleAreaRoot, KR_PI);
    std::vector<KrRouteSegment*> kids;
    for (int i = 0; i < n; ++i) {
        kids.push_back(r.AddChild(&r.end, 1.0, static_cast<double>(n - i)));
    }
    KrRoutingAssignAngleAllPositiveByDiameter s;
    EXPECT_EQ(s.AssignAngles(r.parent.get(), &r.end), 0);
    EXPECT_NEAR(AngleOf(kids[0]), KR_PI, kEps);
    EXPECT_EQ(TypeOf(kids[0]), e_AngleAreaNegativeX);
    // k = 9999 lies in level 13 (8193 .. 16384): pi/2 + w/2^14 + (9999 - 8192 - 1) * w/2^13
    // = pi/2 + w * 3613 / 2^14, with w = pi/2.
    EXPECT_NEAR(AngleOf(kids[n - 1]), HALF_PI + HALF_PI * 3613.0 / 16384.0, kEps);
    // None of the area-5 angles is horizontal, so their rows are 1 .. n - 1, each once.
    std::vector<int> rows;
    for (int i = 1; i < n; ++i) {
        ASSERT_EQ(TypeOf(kids[i]), e_AngleAreaQuarter2) << i;
        rows.push_back(RowOf(kids[i]));
    }
    std::sort(rows.begin(), rows.end());
    for (int i = 1; i < n; ++i) {
        ASSERT_EQ(rows[static_cast<std::size_t>(i - 1)], i);
    }
    EXPECT_EQ(RowOf(kids[0]), kUnsetRow);
}
