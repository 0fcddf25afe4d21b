// The bend checks run before the loop check: EliminateMultiLineBetweenTwoPoint and CheckBends
// leave the sketch as it is.
#include <krlayout/check/KrRoutingCheck.h>
#include <krlayout/model/ALPoint.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/sketch/IRoutingSketch.h>
#include <krlayout/sketch/KrSketch.h>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

// A sketch that counts every call that could change it or record a bend.
class CountingSketch : public IRoutingSketch {
public:
    int changes = 0;
    int reads = 0;
    int Change() {
        ++changes;
        return 0;
    }
    int Read() {
        ++reads;
        return 0;
    }

    int CreateRouteSegment(int, double, double) override { return Change(); }
    int CreateCADLine(int) override { return Change(); }
    int CreateGrid(double, double) override { return Change(); }
    int GetGrid(KrRoutingGrid*& grid) override {
        grid = nullptr;
        return Read();
    }
    int GetAllSegments(std::vector<KrRouteSegment*>&) override { return Read(); }
    int GetGridNode(double, double, KrRoutingWayPoint*& node) override {
        node = nullptr;
        return Read();
    }
    int CreateWayPoint(std::vector<ALPoint> const&) override { return Change(); }
    int CreateWayPoint(std::map<long, long> const&, std::vector<ALPoint> const&) override {
        return Change();
    }
    int GetAllLineNewPos(std::vector<ALPoint>&) override { return Read(); }
    int GetLinesByRouteId(long, std::vector<ALLine>&) override { return Read(); }
    int GetCADLineIdByRouteId(long, std::vector<std::pair<long, long>>&) override {
        return Read();
    }
    int SetCADLineIdByRouteId(long, std::vector<std::pair<long, long>> const&) override {
        return Change();
    }
    int GetAllRouteSegment(std::vector<long>&) override { return Read(); }
    int CheckRouteSegment() override { return Change(); }
    int GetGridXSpacing(double&) override { return Read(); }
    int SetCADPointIdByRouteId(long, std::vector<long*>&) override { return Change(); }
    int GetSketchPointIdByRouteSegmentId(long, std::vector<std::pair<long, long>>&) override {
        return Read();
    }
    int InsertConnector(long, std::wstring, std::wstring) override { return Change(); }
    int UniqueMultiPinSegment() override { return Change(); }
    int SetBendsId(std::vector<long*>&) override { return Change(); }
    int ModifySketchByBends() override { return Change(); }
    int AddBends(KrRouteBends*) override { return Change(); }
    int RemoveDegenerateRouteSegment() override { return Change(); }
};

// Everything a check could alter, read back from a built sketch.
struct Snapshot {
    std::vector<KrRouteSegment*> segments;
    std::vector<long> ids;
    std::vector<ALPoint> positions;
    std::vector<std::vector<KrRoutingWayPoint*>> points;  // per segment, all its way points

    explicit Snapshot(KrSketch& sketch) {
        sketch.GetAllSegments(segments);
        sketch.GetAllRouteSegment(ids);
        sketch.GetAllLineNewPos(positions);
        for (KrRouteSegment* seg : segments) {
            std::vector<KrRoutingWayPoint*> pts;
            KrRoutingWayPoint* start = nullptr;
            KrRoutingWayPoint* end = nullptr;
            seg->GetOtherEnd(nullptr, start);
            seg->GetOtherEnd(start, end);
            pts.push_back(start);
            pts.push_back(end);
            std::vector<KrRouteCADLine*> lines;
            seg->GetAllCADLine(lines);
            for (KrRouteCADLine* line : lines) {
                line->GetWayPoint(pts);
            }
            points.push_back(pts);
        }
    }
};

void ExpectSame(Snapshot const& a, Snapshot const& b) {
    EXPECT_EQ(a.segments, b.segments);
    EXPECT_EQ(a.ids, b.ids);
    EXPECT_EQ(a.points, b.points);
    ASSERT_EQ(a.positions.size(), b.positions.size());
    for (std::size_t i = 0; i < a.positions.size(); ++i) {
        EXPECT_EQ(a.positions[i].x, b.positions[i].x);
        EXPECT_EQ(a.positions[i].y, b.positions[i].y);
        EXPECT_EQ(a.positions[i].z, b.positions[i].z);
    }
}

// Segment 1 bends at (10,0) (two lines); segments 2 and 3 both join (10,0) and (10,10).
void BuildBentSketch(KrSketch& sketch) {
    ASSERT_EQ(0, sketch.CreateGrid(1.0, 1.0));
    ASSERT_EQ(0, sketch.CreateRouteSegment(1, 20.0, 1.0));
    ASSERT_EQ(0, sketch.CreateRouteSegment(2, 10.0, 1.0));
    ASSERT_EQ(0, sketch.CreateRouteSegment(3, 12.0, 1.0));
    std::map<long, long> linesPerSegment{{1, 2}, {2, 1}, {3, 1}};
    std::vector<ALPoint> points{ALPoint(0, -10, 0),  ALPoint(0, 0, 0),   // 1, first line
                                ALPoint(0, 0, 0),    ALPoint(10, 0, 0),  // 1, second line
                                ALPoint(10, 0, 0),   ALPoint(10, 10, 0),  // 2
                                ALPoint(10, 0, 0),   ALPoint(10, 10, 0)};  // 3
    ASSERT_EQ(0, sketch.CreateWayPoint(linesPerSegment, points));
}

TEST(KrRoutingCheckBends, NullSketchReturnsOne) {
    KrRoutingCheck check;
    EXPECT_EQ(1, check.EliminateMultiLineBetweenTwoPoint(nullptr));
    EXPECT_EQ(1, check.CheckBends(nullptr));
}

TEST(KrRoutingCheckBends, EliminateMultiLineReturnsZeroAndCallsNothingThatChangesTheSketch) {
    CountingSketch sketch;
    KrRoutingCheck check;
    EXPECT_EQ(0, check.EliminateMultiLineBetweenTwoPoint(&sketch));
    EXPECT_EQ(0, sketch.changes);
}

TEST(KrRoutingCheckBends, CheckBendsReturnsZeroAndRecordsNoBend) {
    CountingSketch sketch;
    KrRoutingCheck check;
    EXPECT_EQ(0, check.CheckBends(&sketch));
    EXPECT_EQ(0, sketch.changes);
}

TEST(KrRoutingCheckBends, BentSketchIsLeftUnchanged) {
    KrSketch sketch;
    BuildBentSketch(sketch);
    Snapshot before(sketch);
    ASSERT_EQ(3u, before.segments.size());
    KrRoutingCheck check;
    EXPECT_EQ(0, check.EliminateMultiLineBetweenTwoPoint(&sketch));
    EXPECT_EQ(0, check.CheckBends(&sketch));
    Snapshot after(sketch);
    ExpectSame(before, after);
}

TEST(KrRoutingCheckBends, TwoSegmentsBetweenTwoPointsAreLeftForTheLoopCheck) {
    // After both bend checks the doubled pair 2, 3 is still there. Segment 1 runs from
    // A(0,-10) to C(10,0); its root is the start A (0 < 10), a dead end. From C without 1: C lists
    // [1,2,3], so 2 -> D(10,10); D lists [2,3], so 3 -> C, on the path: C D C.
    // (C,D): first of [1,2,3] in [2,3] = 2; (D,C): first of [2,3] in [1,2,3] = 2.
    KrSketch sketch;
    BuildBentSketch(sketch);
    KrRoutingCheck check;
    ASSERT_EQ(0, check.EliminateMultiLineBetweenTwoPoint(&sketch));
    ASSERT_EQ(0, check.CheckBends(&sketch));
    std::vector<long> ids;
    EXPECT_EQ(7, check.CheckSketch(&sketch, ids));
    EXPECT_EQ((std::vector<long>{2, 2}), ids);
}

}  // namespace
