// Test support shared by the loop and disjoint check suites: sketches built straight from the
// model, and sketches built through the real input path (CreateGrid, CreateRouteSegment, one
// CreateWayPoint(map, points)).
#pragma once

#include <krlayout/model/ALPoint.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/sketch/IRoutingSketch.h>
#include <krlayout/sketch/KrSketch.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

// A sketch whose topology is built straight from the model: each segment is one line from `a` to
// `b`, with ends [a, b]; a way point's connection list follows the order in which segments were
// made through it. Only GetAllSegments does anything.
class ModelSketch : public IRoutingSketch {
public:
    KrRoutingWayPoint* Point(double x, double y) {
        points_.push_back(std::make_unique<KrRoutingWayPoint>(ALPoint(x, y, 0.0)));
        return points_.back().get();
    }
    KrRouteSegment* Segment(long id, double length, KrRoutingWayPoint* a, KrRoutingWayPoint* b) {
        segments_.push_back(std::make_unique<KrRouteSegment>(id, length, 1.0));
        KrRouteSegment* seg = segments_.back().get();
        KrRouteCADLine* line = nullptr;
        seg->CreateCADLine(line);
        line->AddPoint(a);
        line->AddPoint(b);
        seg->AddPoint(a);
        seg->AddPoint(b);
        return seg;
    }

    int GetAllSegments(std::vector<KrRouteSegment*>& out) override {
        for (auto const& seg : segments_) {
            out.push_back(seg.get());
        }
        return 0;
    }
    int CreateRouteSegment(int, double, double) override { return 0; }
    int CreateCADLine(int) override { return 0; }
    int CreateGrid(double, double) override { return 0; }
    int GetGrid(KrRoutingGrid*& grid) override {
        grid = nullptr;
        return 0;
    }
    int GetGridNode(double, double, KrRoutingWayPoint*& node) override {
        node = nullptr;
        return 0;
    }
    int CreateWayPoint(std::vector<ALPoint> const&) override { return 0; }
    int CreateWayPoint(std::map<long, long> const&, std::vector<ALPoint> const&) override {
        return 0;
    }
    int GetAllLineNewPos(std::vector<ALPoint>&) override { return 0; }
    int GetLinesByRouteId(long, std::vector<ALLine>&) override { return 0; }
    int GetCADLineIdByRouteId(long, std::vector<std::pair<long, long>>&) override { return 0; }
    int SetCADLineIdByRouteId(long, std::vector<std::pair<long, long>> const&) override {
        return 0;
    }
    int GetAllRouteSegment(std::vector<long>&) override { return 0; }
    int CheckRouteSegment() override { return 0; }
    int GetGridXSpacing(double&) override { return 0; }
    int SetCADPointIdByRouteId(long, std::vector<long*>&) override { return 0; }
    int GetSketchPointIdByRouteSegmentId(long, std::vector<std::pair<long, long>>&) override {
        return 0;
    }
    int InsertConnector(long, std::wstring, std::wstring) override { return 0; }
    int UniqueMultiPinSegment() override { return 0; }
    int SetBendsId(std::vector<long*>&) override { return 0; }
    int ModifySketchByBends() override { return 0; }
    int AddBends(KrRouteBends*) override { return 0; }
    int RemoveDegenerateRouteSegment() override { return 0; }

private:
    std::vector<std::unique_ptr<KrRoutingWayPoint>> points_;
    std::vector<std::unique_ptr<KrRouteSegment>> segments_;
};

// One host line of the input: the segment it belongs to and its two end points.
struct InputLine {
    int seg;
    ALPoint a;
    ALPoint b;
};

// Builds a KrSketch the way a layout run does: the grid, one CreateRouteSegment per segment (in the
// order given, which is the store order), then one CreateWayPoint with two points per line, the
// lines grouped by ascending segment id (the order the map is walked in).
void BuildSketch(KrSketch& sketch, std::vector<std::pair<int, double>> const& segments,
                 std::vector<InputLine> lines) {
    ASSERT_EQ(0, sketch.CreateGrid(1.0, 1.0));
    for (auto const& seg : segments) {
        ASSERT_EQ(0, sketch.CreateRouteSegment(seg.first, seg.second, 1.0));
    }
    std::stable_sort(lines.begin(), lines.end(),
                     [](InputLine const& l, InputLine const& r) { return l.seg < r.seg; });
    std::map<long, long> linesPerSegment;
    std::vector<ALPoint> points;
    for (auto const& line : lines) {
        ++linesPerSegment[line.seg];
        points.push_back(line.a);
        points.push_back(line.b);
    }
    ASSERT_EQ(0, sketch.CreateWayPoint(linesPerSegment, points));
}

ALPoint At(double x, double y) { return ALPoint(x, y, 0.0); }
}  // namespace
