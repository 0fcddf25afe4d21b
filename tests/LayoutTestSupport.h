// Helpers shared by the layout suites: sketches built from polylines, random trees, strategy
// stubs, and the library's quality measure applied to a finished layout.
#pragma once

#include <krlayout/api/KrLayoutQuality.h>
#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/layout/IAssignAngle.h>
#include <krlayout/layout/ICrossLineUpdate.h>
#include <krlayout/layout/IPriority.h>
#include <krlayout/layout/KrRoutingLayout.h>
#include <krlayout/model/ALPoint.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/sketch/KrSketch.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

// Lets the tests install strategy stubs in a layout object (the layout owns and deletes them).
class KrRoutingLayoutTestAccess {
public:
    static void SetCrossLineUpdate(KrRoutingLayout& layout, ICrossLineUpdate* s) {
        delete layout.crossLineUpdate;
        layout.crossLineUpdate = s;
    }
    static void SetAssignAngle(KrRoutingLayout& layout, IAssignAngle* s) {
        delete layout.assignAngle;
        layout.assignAngle = s;
    }
    static void SetPriority(KrRoutingLayout& layout, IPriority* s) {
        delete layout.priority;
        layout.priority = s;
    }
    static void EnableHandledIndex(KrRoutingLayout& layout, bool on) { layout.handledIndexEnabled = on; }
    static ICrossLineUpdate* CrossLineUpdate(KrRoutingLayout& layout) { return layout.crossLineUpdate; }
    static IAssignAngle* AssignAngle(KrRoutingLayout& layout) { return layout.assignAngle; }
    static IPriority* Priority(KrRoutingLayout& layout) { return layout.priority; }
};

namespace layout_test {

// One input route segment: id, length, diameter and its polyline (one CAD line per step).
struct SegmentInput {
    int id;
    double length;
    double diameter;
    std::vector<ALPoint> polyline;
};

// A sketch with a grid of the given spacing, built from the inputs through CreateRouteSegment and
// CreateWayPoint(map, points): points are given per line, segments in ascending id order.
inline std::unique_ptr<KrSketch> BuildSketch(std::vector<SegmentInput> inputs, double xSpan = 1.0,
                                             double ySpan = 1.0) {
    std::unique_ptr<KrSketch> sketch(new KrSketch());
    sketch->CreateGrid(xSpan, ySpan);
    std::sort(inputs.begin(), inputs.end(),
              [](SegmentInput const& a, SegmentInput const& b) { return a.id < b.id; });
    std::map<long, long> linesPerSegment;
    std::vector<ALPoint> points;
    for (SegmentInput const& s : inputs) {
        sketch->CreateRouteSegment(s.id, s.length, s.diameter);
    }
    for (SegmentInput const& s : inputs) {
        linesPerSegment[s.id] = static_cast<long>(s.polyline.size()) - 1;
        for (std::size_t i = 1; i < s.polyline.size(); ++i) {
            points.push_back(s.polyline[i - 1]);
            points.push_back(s.polyline[i]);
        }
    }
    sketch->CreateWayPoint(linesPerSegment, points);
    return sketch;
}

inline KrRouteSegment* SegmentById(KrSketch& sketch, long id) {
    KrRouteSegment* seg = nullptr;
    sketch.GetRouteSegmentById(id, seg);
    return seg;
}

inline ALPoint At(KrRoutingWayPoint* p) {
    double x = 0.0;
    double y = 0.0;
    p->GetGridCoord(x, y);
    return ALPoint(x, y, 0.0);
}

// The corner points of a placed segment: every line's start and end, shared joints once.
inline std::vector<ALPoint> Corners(KrRouteSegment* seg) {
    std::vector<KrRoutingWayPoint*> pts;
    seg->GetAllPointInSegment(pts);
    std::vector<ALPoint> out;
    for (KrRoutingWayPoint* p : pts) {
        out.push_back(At(p));
    }
    return out;
}

// All way points of the segment's lines in order (interior lattice nodes included).
inline std::vector<ALPoint> AllLinePoints(KrRouteSegment* seg) {
    std::vector<KrRouteCADLine*> lines;
    seg->GetAllCADLine(lines);
    std::vector<ALPoint> out;
    for (KrRouteCADLine* line : lines) {
        std::vector<KrRoutingWayPoint*> pts;
        line->GetWayPoint(pts);
        for (KrRoutingWayPoint* p : pts) {
            out.push_back(At(p));
        }
    }
    return out;
}

// Expects the corner points (line starts and ends, joints once) of seg to be `want`.
inline ::testing::AssertionResult HasCorners(KrRouteSegment* seg,
                                             std::vector<std::pair<double, double>> const& want) {
    if (seg == nullptr) {
        return ::testing::AssertionFailure() << "no segment";
    }
    std::vector<ALPoint> got = Corners(seg);
    auto describe = [&]() {
        std::string text;
        for (ALPoint const& p : got) {
            text += "(" + std::to_string(p.x) + ", " + std::to_string(p.y) + ") ";
        }
        return text;
    };
    if (got.size() != want.size()) {
        return ::testing::AssertionFailure() << "segment " << seg->GetId() << " has corners " << describe();
    }
    for (std::size_t i = 0; i < got.size(); ++i) {
        if (std::fabs(got[i].x - want[i].first) > 1e-9 || std::fabs(got[i].y - want[i].second) > 1e-9) {
            return ::testing::AssertionFailure() << "segment " << seg->GetId() << " has corners " << describe();
        }
    }
    return ::testing::AssertionSuccess();
}

// ---------------------------------------------------------------------------------------------
// Strategy stubs.

// A cross-line strategy that records every call and answers from a script (the last answer
// repeats once the script is used up).
class RecordingCrossLine : public ICrossLineUpdate {
public:
    struct Call {
        long id;
        int row;
        ALPoint start;
        ALPoint first;
        ALPoint last;
    };
    explicit RecordingCrossLine(std::vector<int> answers = {0}) : answers_(std::move(answers)) {}
    int UpdateCrossLine(KrRoutingLayout*, KrRoutingGrid*, KrRouteSegment* seg, KrRoutingWayPoint*& start,
                        KrRoutingWayPoint*& first, KrRoutingWayPoint*& last, KrRoutingWayPoint*&,
                        KrRoutingWayPoint*&, std::vector<KrRouteSegment*>&,
                        std::vector<KrRoutingWayPoint*>&) override {
        int row = 0;
        seg->GetRow(row);
        calls.push_back(Call{seg->GetId(), row, At(start), At(first), At(last)});
        int const answer = answers_.empty() ? 0 : answers_[std::min(next_, answers_.size() - 1)];
        ++next_;
        return answer;
    }
    std::vector<Call> calls;

private:
    std::vector<int> answers_;
    std::size_t next_ = 0;
};

// An angle strategy that gives the unhandled segments at an end fixed angles, types and rows.
class FixedAngles : public IAssignAngle {
public:
    struct Setting {
        double angle;
        e_AngleArea type;
        int row;
    };
    explicit FixedAngles(std::map<long, Setting> settings) : settings_(std::move(settings)) {}
    int AssignAngles(KrRouteSegment* seg, KrRoutingWayPoint* end) override {
        std::vector<KrRouteSegment*> children;
        seg->GetConnectSegmentByPoint(end, false, children);
        for (KrRouteSegment* c : children) {
            auto it = settings_.find(c->GetId());
            if (it != settings_.end()) {
                c->SetDirectAngle(it->second.angle);
                c->SetType(it->second.type);
                c->SetRow(it->second.row);
            }
        }
        return 0;
    }
    int GenerateAngles(int, e_AngleArea, std::vector<double>&) override { return 0; }

private:
    std::map<long, Setting> settings_;
};

// Steps 5 to 11 of LayOut with the strategies the layout object holds: the root laid toward -x
// from the origin over its length, then everything that hangs off it.
inline int PlaceRootLikeLayOut(KrRoutingLayout& layout, KrSketch& sketch, KrRouteSegment* root) {
    KrRoutingGrid* grid = nullptr;
    sketch.GetGrid(grid);
    KrRoutingWayPoint* origin = nullptr;
    sketch.GetGridNode(0.0, 0.0, origin);
    root->SetDirectAngle(KR_PI);
    KrRoutingWayPoint* next = nullptr;
    grid->GetNextHorGridNode(origin, KR_PI, next);
    KrRoutingWayPoint* end = nullptr;
    grid->GetEndPointByLength(root, origin, next, end);
    std::vector<KrRoutingWayPoint*> points;
    grid->GetAllNodeBetweenTwoPoint(origin, end, points);
    root->SetType(e_AngleAreaRoot);
    return layout.PlaceOneSegment(points, root, grid);
}

// ---------------------------------------------------------------------------------------------
// Random trees.

// n segments forming a tree: segment 0 joins two fresh points; every later segment joins a
// random existing point to a fresh one, in a random orientation. Fresh points are distinct.
inline std::vector<SegmentInput> RandomTree(std::mt19937& rng, int n) {
    std::uniform_real_distribution<double> coord(0.0, 100.0);
    std::uniform_real_distribution<double> length(0.5, 8.0);
    std::uniform_int_distribution<int> diameter(1, 4);
    std::bernoulli_distribution flip(0.5);
    std::vector<ALPoint> nodes;
    std::set<std::pair<long, long>> used;
    auto fresh = [&]() {
        for (;;) {
            ALPoint p(coord(rng), coord(rng), 0.0);
            auto key = std::make_pair(std::lround(p.x * 1000.0), std::lround(p.y * 1000.0));
            if (used.insert(key).second) {
                nodes.push_back(p);
                return p;
            }
        }
    };
    std::vector<SegmentInput> inputs;
    for (int i = 0; i < n; ++i) {
        ALPoint a = i == 0 ? fresh() : nodes[std::uniform_int_distribution<std::size_t>(0, nodes.size() - 1)(rng)];
        ALPoint b = fresh();
        if (flip(rng)) {
            std::swap(a, b);
        }
        inputs.push_back(SegmentInput{i + 1, length(rng), static_cast<double>(diameter(rng)), {a, b}});
    }
    return inputs;
}

// ---------------------------------------------------------------------------------------------
// Quality of a finished layout.

// The drawn lines of a segment: each CAD line from its first to its last way point.
inline std::vector<ALLine> DrawnLines(KrRouteSegment* seg) {
    std::vector<KrRouteCADLine*> lines;
    seg->GetAllCADLine(lines);
    std::vector<ALLine> out;
    for (KrRouteCADLine* line : lines) {
        ALLine l;
        if (line->GetLine(&l) == 0) {
            out.push_back(l);
        }
    }
    return out;
}

// Measures the segments left in a laid-out sketch with the library's quality measure: each is
// drawn as its CAD lines, and its sketch (where its ends are), true length and diameter are those
// of the input with its id.
inline KrLayoutQuality MeasureLayout(std::vector<KrRouteSegment*> const& segs,
                                     std::vector<SegmentInput> const& inputs, double clearance) {
    std::map<long, SegmentInput const*> byId;
    for (SegmentInput const& in : inputs) {
        byId.emplace(in.id, &in);
    }
    std::vector<KrLayoutQuality::Segment> measured;
    for (KrRouteSegment* seg : segs) {
        KrLayoutQuality::Segment m;
        auto it = byId.find(seg->GetId());
        if (it != byId.end()) {
            SegmentInput const& in = *it->second;
            m.length = in.length;
            m.diameter = in.diameter;
            for (std::size_t i = 1; i < in.polyline.size(); ++i) {
                ALLine l;
                l.start = in.polyline[i - 1];
                l.end = in.polyline[i];
                m.sketch.push_back(l);
            }
        }
        m.lines = DrawnLines(seg);
        measured.push_back(m);
    }
    KrLayoutQuality quality;
    quality.Measure(measured, clearance);
    return quality;
}

}  // namespace layout_test
