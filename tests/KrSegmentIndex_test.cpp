// The index of placed segments: its candidates hold every placed segment a line can cross, in
// store order; it follows placements and moves; its first crossing is the linear scan's.
#include <krlayout/grid/KrSegmentIndex.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

namespace {

// Segments of one straight line each between two own way points.
struct Store {
    std::vector<std::unique_ptr<KrRoutingWayPoint>> points;
    std::vector<std::unique_ptr<KrRouteSegment>> owned;
    std::vector<KrRouteSegment*> segments;

    KrRoutingWayPoint* Point(double x, double y) {
        points.emplace_back(new KrRoutingWayPoint());
        points.back()->SetGridCoord(x, y);
        return points.back().get();
    }
    KrRouteSegment* Add(long id, double x0, double y0, double x1, double y1, bool placed) {
        owned.emplace_back(new KrRouteSegment(id, std::hypot(x1 - x0, y1 - y0), 1.0));
        KrRouteSegment* s = owned.back().get();
        Line(s, x0, y0, x1, y1);
        s->SetRedefine(placed);
        segments.push_back(s);
        return s;
    }
    // Replaces the line's points by new ones at (x0, y0)-(x1, y1), as a move does.
    void MoveTo(KrRouteSegment* s, double x0, double y0, double x1, double y1) {
        s->ClearLines();
        Line(s, x0, y0, x1, y1);
    }
    // A new line of s from a new point at (x0, y0) to one at (x1, y1), both ends of s.
    void Line(KrRouteSegment* s, double x0, double y0, double x1, double y1) {
        KrRouteCADLine* line = nullptr;
        s->CreateCADLine(line);
        KrRoutingWayPoint* a = Point(x0, y0);
        KrRoutingWayPoint* b = Point(x1, y1);
        line->AddPoint(a);
        line->AddPoint(b);
        s->AddPoint(a);
        s->AddPoint(b);
    }
};

bool Crosses(KrRouteSegment* s, double const* p1, double const* p2) {
    std::vector<KrRouteCADLine*> lines;
    s->GetAllCADLine(lines);
    for (KrRouteCADLine* line : lines) {
        KrRoutingWayPoint* a = nullptr;
        KrRoutingWayPoint* b = nullptr;
        line->GetStartPoint(a);
        line->GetEndPoint(b);
        double ax = 0, ay = 0, bx = 0, by = 0;
        a->GetGridCoord(ax, ay);
        b->GetGridCoord(bx, by);
        if (KrGeoUtility::LineSegment2DIntersection(nullptr, nullptr, p1[0], p1[1], p2[0], p2[1], ax, ay, bx,
                                                    by, GEO_TOLERANCE) == 0) {
            return true;
        }
    }
    return false;
}

TEST(KrSegmentIndex, CandidatesOfABoxAreThePlacedSegmentsNearItInStoreOrder) {
    Store st;
    st.Add(1, 0, 0, 1, 0, true);     // place 0: crosses the query
    st.Add(2, 50, 50, 51, 50, true); // place 1: far away
    st.Add(3, 0.5, -1, 0.5, 1, false);  // place 2: crosses, but not placed
    st.Add(4, 0.2, -1, 0.2, 1, true);   // place 3: crosses
    KrSegmentIndex index(st.segments, 1.0, 1.0);
    std::vector<std::size_t> places;
    index.Candidates(0.0, -0.5, 1.0, 0.5, places);
    EXPECT_EQ(places, (std::vector<std::size_t>{0, 3}));
    EXPECT_EQ(index.At(3), st.segments[3]);
}

TEST(KrSegmentIndex, CandidatesHoldEveryCrossedSegmentOnRandomLines) {
    std::mt19937 rng(77u);
    std::uniform_real_distribution<double> coord(-20.0, 20.0);
    std::uniform_real_distribution<double> step(-3.0, 3.0);
    Store st;
    for (int i = 0; i < 400; ++i) {
        double const x = coord(rng);
        double const y = coord(rng);
        st.Add(i + 1, x, y, x + step(rng), y + step(rng), rng() % 5 != 0);
    }
    KrSegmentIndex index(st.segments, 0.5, 0.5);
    for (int round = 0; round < 300; ++round) {
        if (round % 3 == 0) {
            // Move some segments and tell the index, half at once and half before the next query.
            KrRouteSegment* s = st.segments[rng() % st.segments.size()];
            double const x = coord(rng);
            double const y = coord(rng);
            st.MoveTo(s, x, y, x + step(rng), y + step(rng));
            if (round % 2 == 0) {
                index.Refresh(s);
            } else {
                index.MarkDirty(s);
            }
        }
        double p1[2] = {coord(rng), coord(rng)};
        double p2[2] = {p1[0] + 4.0 * step(rng), p1[1] + 4.0 * step(rng)};
        std::vector<std::size_t> places;
        index.Candidates(p1[0], p1[1], p2[0], p2[1], places);
        ASSERT_TRUE(std::is_sorted(places.begin(), places.end()));
        ASSERT_TRUE(std::adjacent_find(places.begin(), places.end()) == places.end());
        for (std::size_t i = 0; i < st.segments.size(); ++i) {
            bool placed = false;
            st.segments[i]->IsRedefine(placed);
            bool const listed = std::binary_search(places.begin(), places.end(), i);
            if (placed && Crosses(st.segments[i], p1, p2)) {
                ASSERT_TRUE(listed) << "round " << round << " segment " << i;
            }
            if (!placed) {
                ASSERT_FALSE(listed) << "round " << round << " segment " << i;
            }
        }
        // The first crossing is the first crossed placed segment in store order (none of these
        // segments shares an end with the probe).
        KrRouteSegment probe(9999, 1.0, 1.0);
        KrRouteCADLine* hit = index.FirstCross(&probe, p1, p2);
        KrRouteSegment* expected = nullptr;
        for (KrRouteSegment* s : st.segments) {
            bool placed = false;
            s->IsRedefine(placed);
            if (placed && Crosses(s, p1, p2)) {
                expected = s;
                break;
            }
        }
        KrRouteSegment* got = nullptr;
        if (hit != nullptr) {
            hit->GetParentSegment(got);
        }
        ASSERT_EQ(got, expected) << "round " << round;
    }
}

TEST(KrSegmentIndex, APlacedSegmentOutsideTheStoreMakesTheIndexUnusable) {
    Store st;
    st.Add(1, 0, 0, 1, 0, true);
    KrSegmentIndex index(st.segments, 1.0, 1.0);
    EXPECT_TRUE(index.Usable());
    Store other;
    index.Refresh(other.Add(2, 0, 0, 1, 1, true));
    EXPECT_FALSE(index.Usable());
}

TEST(KrSegmentIndex, AZeroSpacingWithoutLengthsGivesNoUsableIndex) {
    Store st;
    st.Add(1, 0, 0, 0, 0, true);
    KrSegmentIndex index(st.segments, 0.0, 0.0);
    EXPECT_FALSE(index.Usable());
}

TEST(KrSegmentIndex, VerticalExtentGrowsWithEveryPlacedLineRead) {
    Store st;
    st.Add(1, 0, -2, 1, 3, true);
    st.Add(2, 0, 10, 1, 10, false);
    KrSegmentIndex index(st.segments, 1.0, 1.0);
    double lo = 0.0;
    double hi = 0.0;
    ASSERT_TRUE(index.VerticalExtent(lo, hi));
    EXPECT_EQ(lo, -2.0);
    EXPECT_EQ(hi, 3.0);
    st.segments[1]->SetRedefine(true);
    index.Refresh(st.segments[1]);
    index.VerticalExtent(lo, hi);
    EXPECT_EQ(hi, 10.0);
    EXPECT_EQ(index.SegmentCount(), 2u);
}

}  // namespace
