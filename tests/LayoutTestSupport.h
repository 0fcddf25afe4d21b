// Helpers shared by the layout suites: sketches built from polylines, random trees, strategy
// stubs, and a measure of crossing and overlapping segments in a finished layout.
#pragma once

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
// Crossing and overlap measure.

struct Quality {
    std::size_t crossings = 0;  // pairs of segments with a crossing
    std::size_t overlaps = 0;   // pairs of segments with a collinear overlap of positive length
};

struct LinePiece {
    double x0, y0, x1, y1;
};

inline std::vector<LinePiece> Pieces(KrRouteSegment* seg) {
    std::vector<KrRouteCADLine*> lines;
    seg->GetAllCADLine(lines);
    std::vector<LinePiece> out;
    for (KrRouteCADLine* line : lines) {
        KrRoutingWayPoint* s = nullptr;
        KrRoutingWayPoint* e = nullptr;
        line->GetStartPoint(s);
        line->GetEndPoint(e);
        if (s == nullptr || e == nullptr) {
            continue;
        }
        ALPoint a = At(s);
        ALPoint b = At(e);
        if (std::hypot(b.x - a.x, b.y - a.y) > 1e-9) {
            out.push_back(LinePiece{a.x, a.y, b.x, b.y});
        }
    }
    return out;
}

// The way points of seg's lines and its two ends (pointer identity).
inline void PointSets(KrRouteSegment* seg, std::set<KrRoutingWayPoint*>& all,
                      std::set<KrRoutingWayPoint*>& ends) {
    std::vector<KrRouteCADLine*> lines;
    seg->GetAllCADLine(lines);
    for (KrRouteCADLine* line : lines) {
        std::vector<KrRoutingWayPoint*> pts;
        line->GetWayPoint(pts);
        all.insert(pts.begin(), pts.end());
    }
    KrRoutingWayPoint* a = nullptr;
    KrRoutingWayPoint* b = nullptr;
    if (seg->GetOtherEnd(nullptr, a) == 0) {
        ends.insert(a);
        if (seg->GetOtherEnd(a, b) == 0) {
            ends.insert(b);
        }
    }
}

// Two segments meet at (x, y) when some way point there is an end of one of them and a point of
// the other's lines (a joint of the route), by pointer identity.
inline bool MeetAt(double x, double y, std::set<KrRoutingWayPoint*> const& allA,
                   std::set<KrRoutingWayPoint*> const& endsA, std::set<KrRoutingWayPoint*> const& allB,
                   std::set<KrRoutingWayPoint*> const& endsB) {
    auto near = [&](KrRoutingWayPoint* p) {
        ALPoint q = At(p);
        return std::fabs(q.x - x) < 1e-6 && std::fabs(q.y - y) < 1e-6;
    };
    for (KrRoutingWayPoint* p : endsA) {
        if (allB.count(p) != 0 && near(p)) {
            return true;
        }
    }
    for (KrRoutingWayPoint* p : endsB) {
        if (allA.count(p) != 0 && near(p)) {
            return true;
        }
    }
    return false;
}

// Counts, over all pairs of different segments, those whose lines cross at a point where they do
// not meet at a joint, and those with collinear lines sharing a stretch of positive length.
inline Quality Measure(std::vector<KrRouteSegment*> const& segs) {
    Quality q;
    std::vector<std::vector<LinePiece>> pieces;
    std::vector<std::set<KrRoutingWayPoint*>> all(segs.size());
    std::vector<std::set<KrRoutingWayPoint*>> ends(segs.size());
    for (std::size_t i = 0; i < segs.size(); ++i) {
        pieces.push_back(Pieces(segs[i]));
        PointSets(segs[i], all[i], ends[i]);
    }
    double const eps = 1e-7;
    for (std::size_t i = 0; i < segs.size(); ++i) {
        for (std::size_t j = i + 1; j < segs.size(); ++j) {
            bool crossing = false;
            bool overlap = false;
            for (LinePiece const& a : pieces[i]) {
                for (LinePiece const& b : pieces[j]) {
                    double const dax = a.x1 - a.x0;
                    double const day = a.y1 - a.y0;
                    double const dbx = b.x1 - b.x0;
                    double const dby = b.y1 - b.y0;
                    double const la = std::hypot(dax, day);
                    double const lb = std::hypot(dbx, dby);
                    double const cross = dax * dby - day * dbx;
                    if (std::fabs(cross) <= 1e-9 * la * lb) {
                        // Parallel: collinear when b's start lies on a's line.
                        double const dist = std::fabs(dax * (b.y0 - a.y0) - day * (b.x0 - a.x0)) / la;
                        if (dist > eps) {
                            continue;
                        }
                        double const ux = dax / la;
                        double const uy = day / la;
                        double t0 = (b.x0 - a.x0) * ux + (b.y0 - a.y0) * uy;
                        double t1 = (b.x1 - a.x0) * ux + (b.y1 - a.y0) * uy;
                        if (t0 > t1) {
                            std::swap(t0, t1);
                        }
                        if (std::min(la, t1) - std::max(0.0, t0) > eps) {
                            overlap = true;
                        }
                        continue;
                    }
                    double const wx = b.x0 - a.x0;
                    double const wy = b.y0 - a.y0;
                    double const t = (wx * dby - wy * dbx) / cross;
                    double const u = (wx * day - wy * dax) / cross;
                    double const ta = eps / la;
                    double const tb = eps / lb;
                    if (t < -ta || t > 1.0 + ta || u < -tb || u > 1.0 + tb) {
                        continue;
                    }
                    double const px = a.x0 + t * dax;
                    double const py = a.y0 + t * day;
                    if (!MeetAt(px, py, all[i], ends[i], all[j], ends[j])) {
                        crossing = true;
                    }
                }
            }
            q.crossings += crossing ? 1 : 0;
            q.overlaps += overlap ? 1 : 0;
        }
    }
    return q;
}

}  // namespace layout_test
