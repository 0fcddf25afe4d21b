// A program outside the tree that uses an installed krlayout: it includes only the umbrella header
// and touches every class that header exports, so a missing header, a symbol that is not exported
// or a broken package file shows up as a build, link or run failure.
//
// To cover a new class: write one `static int CheckNewClass()` that returns 0 when all is well and
// a non-zero line number otherwise, and add it to kChecks at the bottom.
#include <krlayout/krlayout.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

bool Near(double a, double b) { return std::fabs(a - b) < 1e-9; }

int CheckVersion() {
    if (KRLAYOUT_VERSION_MAJOR < 0) return __LINE__;
    if (std::strlen(KRLAYOUT_VERSION_STRING) == 0) return __LINE__;
    return 0;
}

int CheckALPoint() {
    ALPoint origin;
    if (!Near(origin.x, 0.0) || !Near(origin.y, 0.0) || !Near(origin.z, 0.0)) return __LINE__;

    double const xyz[3] = {1.0, 2.0, 3.0};
    ALPoint p(xyz);
    if (!Near(p.x, 1.0) || !Near(p.y, 2.0) || !Near(p.z, 3.0)) return __LINE__;

    ALPoint fromNull(static_cast<double const*>(nullptr));
    if (!(fromNull == origin)) return __LINE__;

    ALPoint q(1.0 + 1e-7, 2.0, 3.0);
    if (!(p == q)) return __LINE__;
    ALPoint far(1.1, 2.0, 3.0);
    if (p == far) return __LINE__;

    ALPoint copy(p);
    if (!(copy == p)) return __LINE__;
    ALPoint assigned;
    assigned = far;
    if (!(assigned == far)) return __LINE__;
    return 0;
}

int CheckALLine() {
    double const a[3] = {0.0, 0.0, 0.0};
    double const b[3] = {4.0, 3.0, 0.0};
    ALLine line(a, b);
    if (!(line.start == ALPoint(0.0, 0.0, 0.0))) return __LINE__;
    if (!(line.end == ALPoint(4.0, 3.0, 0.0))) return __LINE__;
    if (line.GetId() != 0) return __LINE__;

    line.SetId(42);
    if (line.GetId() != 42) return __LINE__;

    ALLine copy(line);  // the id is not carried
    if (copy.GetId() != 0) return __LINE__;
    if (!(copy.end == line.end)) return __LINE__;

    ALLine other;
    other.SetId(7);
    other = line;  // keeps its own id
    if (other.GetId() != 7) return __LINE__;
    if (!(other.end == line.end)) return __LINE__;
    return 0;
}

int CheckKrGeoUtility() {
    KrGeoUtility utility;  // every operation is static; the class is constructible all the same
    (void)utility;

    if (!KrGeoUtility::IsEqual(1.0, 1.0 + 1e-6, GEO_TOLERANCE)) return __LINE__;
    if (KrGeoUtility::IsEqual(1.0, 1.1, GEO_TOLERANCE)) return __LINE__;
    if (!KrGeoUtility::LessThan(1.0, 2.0, GEO_TOLERANCE)) return __LINE__;
    if (KrGeoUtility::LessThan(2.0, 1.0, GEO_TOLERANCE)) return __LINE__;
    if (!KrGeoUtility::LargerThan(2.0, 1.0, GEO_TOLERANCE)) return __LINE__;
    if (!KrGeoUtility::LessEqualThan(1.0, 1.0, GEO_TOLERANCE)) return __LINE__;
    if (!KrGeoUtility::LargerEqualThan(1.0, 1.0, GEO_TOLERANCE)) return __LINE__;

    if (!KrGeoUtility::InsideLine2D(0.5, 0.5, 0.0, 0.0, 1.0, 1.0)) return __LINE__;
    if (KrGeoUtility::InsideLine2D(2.0, 0.5, 0.0, 0.0, 1.0, 1.0)) return __LINE__;

    double const p0[2] = {0.0, 0.0};
    double const p1[2] = {3.0, 4.0};
    if (!Near(KrGeoUtility::GetLength(p0, p1, 2), 5.0)) return __LINE__;

    double v[2] = {3.0, 4.0};
    if (!KrGeoUtility::UniteVector(v, 2)) return __LINE__;
    if (!Near(v[0], 0.6) || !Near(v[1], 0.8)) return __LINE__;
    if (KrGeoUtility::UniteVector(nullptr, 2)) return __LINE__;

    double x = 0.0;
    double y = 0.0;
    int code = KrGeoUtility::Line2DIntersec(&x, &y, 0.0, 0.0, 2.0, 2.0, 0.0, 2.0, 2.0, 0.0,
                                            GEO_TOLERANCE);
    if (code != 0) return __LINE__;
    if (!KrGeoUtility::IsEqual(x, 1.0, GEO_TOLERANCE) || !KrGeoUtility::IsEqual(y, 1.0, GEO_TOLERANCE))
        return __LINE__;

    code = KrGeoUtility::LineSegment2DIntersection(&x, &y, 0.0, 0.0, 2.0, 2.0, 0.0, 2.0, 2.0, 0.0,
                                                   GEO_TOLERANCE);
    if (code < 0 || code > 4) return __LINE__;
    return 0;
}

int CheckKrSegmentGeometry() {
    using P = KrSegmentGeometry::Point;
    if (!Near(KrSegmentGeometry::Cross(P{0, 0}, P{2, 0}, P{1, 3}), 6.0)) return __LINE__;
    if (!Near(KrSegmentGeometry::SegmentDistance(P{0, 0}, P{4, 0}, P{1, 3}, P{2, 3}), 3.0)) return __LINE__;
    P at;
    if (!KrSegmentGeometry::ProperCrossing(P{0, 0}, P{4, 4}, P{0, 4}, P{4, 0}, GEO_TOLERANCE, at)) return __LINE__;
    if (!Near(at.x, 2.0) || !Near(at.y, 2.0)) return __LINE__;
    if (!Near(KrSegmentGeometry::CollinearOverlap(P{0, 0}, P{4, 0}, P{3, 0}, P{1, 0}, 0.0), 2.0)) return __LINE__;
    KrSegmentGeometry::Box const box{0, 0, 2, 1};
    if (!Near(KrSegmentGeometry::SegmentBoxDistance(P{3, 0.5}, P{4, 0.5}, box), 1.0)) return __LINE__;
    return 0;
}

int CheckKrPointIndex() {
    KrPointIndex index;
    if (index.NumberOf(ALPoint(1.0, 2.0, 0.0)) != 0) return __LINE__;
    if (index.NumberOf(ALPoint(1.0 + 1e-6, 2.0, 0.0)) != 0) return __LINE__;
    if (index.NumberOf(ALPoint(3.0, 2.0, 0.0)) != 1) return __LINE__;
    if (index.Count() != 2 || !Near(index.PointOf(1).x, 3.0)) return __LINE__;
    return 0;
}

int CheckKrLineChain() {
    double const a[3] = {0.0, 0.0, 0.0};
    double const b[3] = {1.0, 0.0, 0.0};
    double const c[3] = {1.0, 1.0, 0.0};
    std::vector<ALLine> lines{ALLine(b, c), ALLine(a, b)};
    std::vector<ALPoint> ends;
    if (KrLineChain::FindEnds(lines, ends) != 0) return __LINE__;
    if (ends.size() != 2 || !Near(ends[0].y, 1.0) || !Near(ends[1].x, 0.0)) return __LINE__;
    return 0;
}

int CheckKrLayoutQuality() {
    double const a[3] = {0.0, 0.0, 0.0};
    double const b[3] = {2.0, 2.0, 0.0};
    double const c[3] = {0.0, 2.0, 0.0};
    double const d[3] = {2.0, 0.0, 0.0};
    std::vector<KrLayoutQuality::Segment> segments(2);
    segments[0].length = 1.0;
    segments[0].sketch.push_back(ALLine(a, b));
    segments[0].lines.push_back(ALLine(a, b));
    segments[1].sketch.push_back(ALLine(c, d));
    segments[1].lines.push_back(ALLine(c, d));
    std::size_t crossings = 0;
    KrLayoutQuality::Findings found;
    found.crossing = [&crossings](KrLayoutQuality::Crossing const&) { ++crossings; };
    KrLayoutQuality quality;
    if (quality.Measure(segments, 0.02, found) != 0) return __LINE__;
    if (crossings != 1 || quality.crossingPairs != 1 || quality.closePairs != 1) return __LINE__;
    if (quality.drawnLengths.size() != 2 || quality.largestLengthDeviationSegment != 0) return __LINE__;
    return 0;
}

int CheckAngleArea() {
    e_AngleArea area = e_AngleAreaRoot;
    if (static_cast<int>(area) != 1) return __LINE__;
    if (static_cast<int>(e_AngleAreaQuarter4) != 7) return __LINE__;
    return 0;
}

int CheckKrRoutingWayPoint() {
    KrRoutingWayPoint a(ALPoint(1.0, 2.0, 0.0));
    KrRoutingWayPoint b(ALPoint(1.0, 2.0, 0.0));
    bool same = false;
    if (a.IsSamePoint(&b, same) != 0 || !same) return __LINE__;

    if (a.SetGridCoord(3.0, 4.0) != 0) return __LINE__;
    double x = 0.0;
    double y = 0.0;
    if (a.GetGridCoord(x, y) != 0) return __LINE__;
    if (!Near(x, 3.0) || !Near(y, 4.0)) return __LINE__;
    double xy[2] = {0.0, 0.0};
    if (a.GetGridCoord(xy) != 0 || !Near(xy[0], 3.0) || !Near(xy[1], 4.0)) return __LINE__;

    long ids[2] = {5, 6};
    if (a.SetPointId(ids) != 0) return __LINE__;
    std::pair<long, long> id;
    if (a.GetPointId(id) != 0) return __LINE__;
    if (id.first != 5 || id.second != 6) return __LINE__;

    if (a.SetUsed(true) != 0) return __LINE__;

    std::vector<KrRouteCADLine*> parents;
    if (b.GetParent(parents) != 0) return __LINE__;
    if (!parents.empty()) return __LINE__;
    return 0;
}

int CheckKrRouteCADLine() {
    // The way points outlive the line that refers to them.
    KrRoutingWayPoint start(ALPoint(0.0, 0.0, 0.0));
    KrRoutingWayPoint end(ALPoint(2.0, 0.0, 0.0));
    KrRouteCADLine line;

    line.SetId(std::make_pair(3L, 9L));
    std::pair<long, long> id;
    line.GetId(id);
    if (id.first != 3 || id.second != 9) return __LINE__;

    if (line.AddPoint(&start) != 0) return __LINE__;
    if (line.AddPoint(&end) != 0) return __LINE__;

    KrRoutingWayPoint* p = nullptr;
    if (line.GetStartPoint(p) != 0 || p != &start) return __LINE__;
    if (line.GetEndPoint(p) != 0 || p != &end) return __LINE__;

    std::vector<KrRoutingWayPoint*> points;
    if (line.GetWayPoint(points) != 0 || points.size() != 2) return __LINE__;

    ALLine geometry;
    if (line.GetLine(&geometry) != 0) return __LINE__;
    if (!(geometry.start == ALPoint(0.0, 0.0, 0.0))) return __LINE__;
    if (!(geometry.end == ALPoint(2.0, 0.0, 0.0))) return __LINE__;

    double dir[3] = {0.0, 0.0, 0.0};
    if (line.GetDir(dir) != 0) return __LINE__;
    if (!(dir[0] > 0.0) || !KrGeoUtility::IsEqual(dir[1], 0.0, GEO_TOLERANCE)) return __LINE__;

    if (line.ClearPoints() != 0) return __LINE__;
    return 0;
}

int CheckKrRouteSegment() {
    KrRouteSegment segment(5, 10.0, 2.0);
    if (segment.GetId() != 5) return __LINE__;

    double value = 0.0;
    if (segment.GetLength(value) != 0 || !Near(value, 10.0)) return __LINE__;
    if (segment.SetLength(99.0) != 0) return __LINE__;  // fixed at construction
    if (segment.GetLength(value) != 0 || !Near(value, 10.0)) return __LINE__;
    if (segment.GetDiameter(value) != 0 || !Near(value, 2.0)) return __LINE__;
    if (segment.SetDiameter(3.0) != 0) return __LINE__;
    if (segment.GetDiameter(value) != 0 || !Near(value, 3.0)) return __LINE__;

    int row = -1;
    if (segment.SetRow(4) != 0 || segment.GetRow(row) != 0 || row != 4) return __LINE__;

    e_AngleArea area = e_AngleAreaNone;
    if (segment.SetType(e_AngleAreaQuarter2) != 0) return __LINE__;
    if (segment.GetType(area) != 0 || area != e_AngleAreaQuarter2) return __LINE__;

    bool flag = false;
    if (segment.SetRedefine(true) != 0 || segment.IsRedefine(flag) != 0 || !flag) return __LINE__;

    // The segment owns (and deletes) the CAD lines it creates.
    KrRouteCADLine* line = nullptr;
    if (segment.CreateCADLine(line) != 0 || line == nullptr) return __LINE__;
    int count = 0;
    if (segment.GetCADLineNum(count) != 0 || count != 1) return __LINE__;
    std::vector<KrRouteCADLine*> lines;
    if (segment.GetAllCADLine(lines) != 0 || lines.size() != 1 || lines[0] != line) return __LINE__;

    KrRouteSegment empty;
    if (empty.GetId() != 0) return __LINE__;
    return 0;
}

int CheckKrRoutingGrid() {
    KrRoutingGrid grid;
    if (grid.CreateGrids(1.0, 1.0, 0.0, 0.0, 0.0, 0.0) != 0) return __LINE__;

    double xSpan = 0.0;
    double ySpan = 0.0;
    if (grid.GetGridSpan(xSpan, ySpan) != 0) return __LINE__;
    if (!(xSpan > 0.0) || !(ySpan > 0.0)) return __LINE__;

    // The grid owns the nodes it hands out; the same coordinates give the same node.
    KrRoutingWayPoint* node = nullptr;
    if (grid.GetGridNode(2.0, 3.0, node) != 0 || node == nullptr) return __LINE__;
    KrRoutingWayPoint* again = nullptr;
    if (grid.GetGridNode(2.0, 3.0, again) != 0 || again != node) return __LINE__;
    KrRoutingWayPoint* other = nullptr;
    if (grid.GetGridNode(5.0, 3.0, other) != 0 || other == nullptr || other == node)
        return __LINE__;

    std::vector<KrRoutingWayPoint*> all;
    if (grid.GetAllWayPoint(all) != 0 || all.size() < 2) return __LINE__;
    return 0;
}

int CheckKrRoutingGridNode() {
    KrRoutingGridNode node;
    node.x = 1.5;
    node.y = -2.5;
    node.used = true;
    node.position = ALPoint(1.5, -2.5, 0.0);

    KrRoutingGridNode copy(node);
    if (!Near(copy.x, 1.5) || !Near(copy.y, -2.5) || !copy.used) return __LINE__;
    if (!(copy.position == node.position)) return __LINE__;

    KrRoutingGridNode assigned;
    assigned = node;
    if (!Near(assigned.y, -2.5)) return __LINE__;
    return 0;
}

// A routing sketch of two route segments that meet at (3, 0): segment 1 runs from (0, 0) to (3, 0)
// (length 3, diameter 1), segment 2 from (3, 0) to (3, 2) (length 2, diameter 2). Segment 1 is the
// longer one, segment 2 the thicker one.
std::unique_ptr<IRoutingSketch> SmallSketch(int& status) {
    std::unique_ptr<IRoutingSketch> sketch(new KrSketch());
    status = sketch->CreateGrid(1.0, 1.0);
    if (status != 0) return sketch;
    status = sketch->CreateRouteSegment(1, 3.0, 1.0);
    if (status != 0) return sketch;
    status = sketch->CreateRouteSegment(2, 2.0, 2.0);
    if (status != 0) return sketch;
    std::map<long, long> const linesPerSegment = {{1L, 1L}, {2L, 1L}};
    std::vector<ALPoint> const points = {ALPoint(0.0, 0.0, 0.0), ALPoint(3.0, 0.0, 0.0),
                                         ALPoint(3.0, 0.0, 0.0), ALPoint(3.0, 2.0, 0.0)};
    status = sketch->CreateWayPoint(linesPerSegment, points);
    return sketch;
}

KrRouteSegment* SegmentWithId(std::vector<KrRouteSegment*> const& segments, int id) {
    for (KrRouteSegment* segment : segments) {
        if (segment != nullptr && segment->GetId() == id) return segment;
    }
    return nullptr;
}

int CheckKrSketch() {
    int status = -1;
    std::unique_ptr<IRoutingSketch> sketch = SmallSketch(status);
    if (status != 0) return __LINE__;

    KrRoutingGrid* grid = nullptr;
    if (sketch->GetGrid(grid) != 0 || grid == nullptr) return __LINE__;
    double xSpacing = 0.0;
    if (sketch->GetGridXSpacing(xSpacing) != 0 || !Near(xSpacing, 1.0)) return __LINE__;

    std::vector<KrRouteSegment*> segments;
    if (sketch->GetAllSegments(segments) != 0 || segments.size() != 2) return __LINE__;
    KrRouteSegment* first = SegmentWithId(segments, 1);
    KrRouteSegment* second = SegmentWithId(segments, 2);
    if (first == nullptr || second == nullptr) return __LINE__;

    // The two segments share the way point at (3, 0).
    bool connected = false;
    if (first->IsConnectByEnd(second, connected) != 0 || !connected) return __LINE__;

    std::vector<long> ids;
    if (sketch->GetAllRouteSegment(ids) != 0) return __LINE__;
    if (ids.size() != 2 || ids[0] != 1 || ids[1] != 2) return __LINE__;

    std::vector<ALLine> lines;
    if (sketch->GetLinesByRouteId(2, lines) != 0 || lines.size() != 1) return __LINE__;
    if (!(lines[0].start == ALPoint(3.0, 0.0, 0.0))) return __LINE__;
    if (!(lines[0].end == ALPoint(3.0, 2.0, 0.0))) return __LINE__;
    lines.clear();
    if (sketch->GetLinesByRouteId(99, lines) != 0 || !lines.empty()) return __LINE__;

    // The store members of the implementation are reachable as well.
    KrSketch* store = dynamic_cast<KrSketch*>(sketch.get());
    if (store == nullptr) return __LINE__;
    KrRouteSegment* found = nullptr;
    if (store->GetRouteSegmentById(1, found) != 0 || found != first) return __LINE__;
    return 0;
}

int CheckKrRouteConnector() {
    KrRouteConnector connector;
    if (connector.SetName(L"J1") != 0) return __LINE__;
    std::wstring name;
    if (connector.GetName(name) != 0 || name != L"J1") return __LINE__;

    if (connector.AddEntry(L"pin1", 4) != 0) return __LINE__;
    if (connector.AddEntry(L"pin2", 5) != 0) return __LINE__;
    std::vector<std::pair<std::wstring, long>> entries;
    if (connector.GetEntries(entries) != 0 || entries.size() != 2) return __LINE__;
    if (entries[0].first != L"pin1" || entries[0].second != 4) return __LINE__;
    if (entries[1].first != L"pin2" || entries[1].second != 5) return __LINE__;

    KrSketch sketch;
    if (connector.SetSketch(&sketch) != 0) return __LINE__;
    KrSketch* back = nullptr;
    if (connector.GetSketch(back) != 0 || back != &sketch) return __LINE__;
    return 0;
}

int CheckKrRouteBends() {
    KrRouteBends empty;
    (void)empty;

    KrRoutingWayPoint point(ALPoint(1.0, 1.0, 0.0));
    KrRouteBends bend(12, &point);
    if (bend.GetRouteId() != 12) return __LINE__;
    if (bend.GetPoint() != &point) return __LINE__;
    return 0;
}

int CheckKrRoutingSketchLineEnd() {
    KrRoutingSketchLineEnd empty;
    (void)empty;

    KrRoutingSketchLineEnd end(7, 2, true, ALPoint(4.0, 5.0, 0.0));
    if (end.routeId != 7 || end.lineIndex != 2 || !end.isStart) return __LINE__;
    if (!(end.point == ALPoint(4.0, 5.0, 0.0))) return __LINE__;

    KrRoutingSketchLineEnd copy(end);
    if (copy.routeId != 7 || !(copy.point == end.point)) return __LINE__;
    return 0;
}

int CheckPriorities() {
    KrRouteSegment thin(1, 3.0, 1.0);   // the longer one
    KrRouteSegment thick(2, 2.0, 2.0);  // the thicker one
    std::vector<KrRouteSegment*> segments = {&thin, &thick};

    std::unique_ptr<IPriority> byDiameter(new KrRoutingPriorityByDiameter());
    KrRouteSegment* result = nullptr;
    if (byDiameter->GetPriorestSegment(segments, result) != 0 || result != &thick) return __LINE__;

    std::unique_ptr<IPriority> byLength(new KrRoutingPriorityByLength());
    result = nullptr;
    if (byLength->GetPriorestSegment(segments, result) != 0 || result != &thin) return __LINE__;

    std::vector<KrRouteSegment*> none;
    result = &thin;
    if (byLength->GetPriorestSegment(none, result) != 0 || result != nullptr) return __LINE__;
    return 0;
}

// GenerateAngles for the quarter from 0 to pi/2 and four children: every strategy starts with 0
// and pi/2.
int CheckAngleStrategy(IAssignAngle* strategy) {
    std::unique_ptr<IAssignAngle> owned(strategy);
    std::vector<double> angles;
    if (owned->GenerateAngles(4, e_AngleAreaQuarter1, angles) != 0) return __LINE__;
    if (angles.size() < 4) return __LINE__;
    if (!KrGeoUtility::IsEqual(angles[0], 0.0, GEO_TOLERANCE)) return __LINE__;
    if (!KrGeoUtility::IsEqual(angles[1], 1.5707963268, GEO_TOLERANCE)) return __LINE__;
    for (double angle : angles) {
        if (KrGeoUtility::LessThan(angle, 0.0, GEO_TOLERANCE)) return __LINE__;
        if (KrGeoUtility::LargerThan(angle, 1.5707963268, GEO_TOLERANCE)) return __LINE__;
    }
    return 0;
}

int CheckAssignAngleByDiameter() {
    return CheckAngleStrategy(new KrRoutingAssignAngleByDiameter());
}

int CheckAssignAngleByLength() {
    return CheckAngleStrategy(new KrRoutingAssignAngleByLength());
}

int CheckAssignAngleAllPositiveByDiameter() {
    return CheckAngleStrategy(new KrRoutingAssignAngleAllPositiveByDiameter());
}

int CheckCrossLineUpdates() {
    ICrossLineUpdate* update = new KrCrossLineUpdate();
    delete update;
    update = new KrCrossLineUpdateByLength();
    delete update;
    return 0;
}

// Lays the small sketch out with one layout type; every segment ends up redefined.
int LayOutSmallSketch(e_LayOutType type) {
    int status = -1;
    std::unique_ptr<IRoutingSketch> sketch = SmallSketch(status);
    if (status != 0) return __LINE__;

    KrRoutingLayout layout;
    if (layout.LayOut(sketch.get(), type) != 0) return __LINE__;

    std::vector<KrRouteSegment*> segments;
    if (sketch->GetAllSegments(segments) != 0 || segments.size() != 2) return __LINE__;
    for (KrRouteSegment* segment : segments) {
        bool redefined = false;
        if (segment->IsRedefine(redefined) != 0 || !redefined) return __LINE__;
        std::vector<ALLine> lines;
        if (sketch->GetLinesByRouteId(segment->GetId(), lines) != 0 || lines.empty())
            return __LINE__;
        for (ALLine const& line : lines) {
            if (!Near(line.start.z, 0.0) || !Near(line.end.z, 0.0)) return __LINE__;
        }
    }

    // The first-ranked segment is the root: horizontal, from the origin.
    int const rootId = type == LayOutByDiameter ? 2 : 1;
    KrRouteSegment* root = SegmentWithId(segments, rootId);
    if (root == nullptr) return __LINE__;
    e_AngleArea area = e_AngleAreaNone;
    if (root->GetType(area) != 0 || area != e_AngleAreaRoot) return __LINE__;
    std::vector<ALLine> rootLines;
    if (sketch->GetLinesByRouteId(rootId, rootLines) != 0 || rootLines.empty()) return __LINE__;
    if (!(rootLines.front().start == ALPoint(0.0, 0.0, 0.0))) return __LINE__;
    if (!KrGeoUtility::IsEqual(rootLines.back().end.y, 0.0, GEO_TOLERANCE)) return __LINE__;

    // The array write-back gives six doubles and one axis code per line.
    std::vector<double> points;
    std::vector<int> constraints;
    if (KrHostRouteWriter::WriteArrays(sketch.get(), points, constraints) != 0) return __LINE__;
    if (constraints.empty() || points.size() != constraints.size() * 6) return __LINE__;
    return 0;
}

int CheckKrRoutingLayout() {
    if (static_cast<int>(LayOutByDiameter) != 0 || static_cast<int>(LayOutByLength) != 1)
        return __LINE__;
    int line = LayOutSmallSketch(LayOutByDiameter);
    if (line != 0) return line;
    line = LayOutSmallSketch(LayOutByLength);
    if (line != 0) return line;

    KrRoutingLayout layout;
    double angle = -1.0;
    if (layout.GetSpreadAngle(e_AngleAreaNegativeX, angle) != 0) return __LINE__;
    if (!KrGeoUtility::IsEqual(angle, 3.1415926536, GEO_TOLERANCE)) return __LINE__;
    if (layout.LayOut(nullptr, LayOutByDiameter) == 0) return __LINE__;
    return 0;
}

int CheckKrRoutingCheck() {
    int status = -1;
    std::unique_ptr<IRoutingSketch> sketch = SmallSketch(status);
    if (status != 0) return __LINE__;

    KrRoutingCheck check;
    std::vector<long> loopIds;
    if (check.CheckSketch(sketch.get(), loopIds) != 0 || !loopIds.empty()) return __LINE__;
    std::vector<long> pieceIds;
    if (check.CheckDisjoint(sketch.get(), pieceIds) != 0 || !pieceIds.empty()) return __LINE__;
    return 0;
}

int CheckKrAutoLayout() {
    if (KrAutoLayout::loopMessage != L"Loop Segment") return __LINE__;
    if (KrAutoLayout::disjoinMessage != L"Disjoint Segment") return __LINE__;

    KrAutoLayout facade;
    std::vector<long> ids;
    if (facade.getRouteSegmentIDs(ids) != 1 || !ids.empty()) return __LINE__;
    std::vector<std::pair<long, long>> lineIds;
    if (facade.GetSketchLineIdByRouteSegmentId(1, lineIds) != 1) return __LINE__;

    if (facade.setRouteGridSpacing(0.5, 0.5) != 0) return __LINE__;
    std::map<long, std::wstring> const components = {{1L, L"J1"}};
    if (facade.setComponentMap(components) != 0) return __LINE__;

    std::wstring text;
    void* resultSketch = nullptr;
    if (facade.StartAutoLayout(nullptr, 0, false, false, &resultSketch, false, text) != 6)
        return __LINE__;
    if (resultSketch != nullptr) return __LINE__;

    std::vector<double> points;
    if (facade.getOutputPoints(points) != 0 || !points.empty()) return __LINE__;
    std::vector<int> constraints;
    if (facade.getOutputConstraints(constraints) != 0 || !constraints.empty()) return __LINE__;
    return 0;
}

int CheckKrLayoutRun() {
    std::unique_ptr<KrLayoutRun> run(new KrLayoutRun());
    if (run->GetSketch() != nullptr) return __LINE__;
    if (!run->GetOutputPoints().empty() || !run->GetOutputConstraints().empty()) return __LINE__;

    run->SetApplyToHost(true);
    if (!run->GetApplyToHost()) return __LINE__;
    run->SetRunText(L"run");
    if (run->GetRunText() != L"run") return __LINE__;
    if (run->HasFeature()) return __LINE__;

    std::map<long, std::wstring> const components = {{3L, L"J3"}};
    if (run->SetComponentMap(components) != 0) return __LINE__;
    if (run->GetComponentMap().size() != 1) return __LINE__;

    run->Teardown();
    run.reset();
    return 0;
}

int CheckKrHostLocale() {
    std::locale const locale = KrHostLocale::UserDefault();
    (void)locale;
    std::wstring const a = L"Route Feature";
    std::wstring const b = L"Route Feature";
    if (KrHostLocale::Compare(a, b) != 0) return __LINE__;
    if (!KrHostLocale::Equal(a, b)) return __LINE__;
    if (KrHostLocale::Equal(a, L"Other Feature")) return __LINE__;
    return 0;
}

int CheckKrHostSession() {
    KrHostSession session(nullptr);
    if (session.OpenRouteModel()) return __LINE__;
    if (session.OpenRouteContainer()) return __LINE__;
    if (session.ClearSelection() != 1) return __LINE__;
    if (session.GetDocument() != nullptr || session.GetRouteContainer() != nullptr) return __LINE__;
    session.Close();

    IHostApplication* application = nullptr;
    KrHostSession::AddReference(application);
    KrHostSession::ReleaseReference(application);
    IHostFeature* feature = nullptr;
    if (KrHostSession::FindFeature(nullptr, L"Route", feature)) return __LINE__;
    if (feature != nullptr) return __LINE__;
    return 0;
}

int CheckKrHostRouteReader() {
    KrHostRouteReader reader(nullptr);
    std::vector<int> ids;
    if (reader.ReadRouteSegmentIds(ids) != 1 || !ids.empty()) return __LINE__;
    double length = 4.0;
    if (reader.ReadSegmentLength(1, length) != 1 || !Near(length, 4.0)) return __LINE__;
    if (reader.CreateWayPoints(ids, nullptr) != 1) return __LINE__;

    std::vector<KrHostRef<IHostUnknown>> entities;
    if (KrHostRouteReader::FetchEntities(nullptr, 1, entities) != 1) return __LINE__;
    KrHostRef<IHostUnknown> none = KrHostQuery<IHostUnknown>(nullptr, KR_IID_UNKNOWN);
    if (none) return __LINE__;
    return 0;
}

int CheckKrHostRouteWriter() {
    if (KrHostRouteWriter::AlongXRelation != L"sgALONGX3D") return __LINE__;
    if (KrHostRouteWriter::AlongYRelation != L"sgALONGY3D") return __LINE__;
    if (KrHostRouteWriter::CoincidentRelation != L"sgCOINCIDENT") return __LINE__;

    double const origin[3] = {0.0, 0.0, 0.0};
    double const up[3] = {0.0, 2.0, 0.0};
    double const right[3] = {2.0, 0.0, 0.0};
    double const diagonal[3] = {2.0, 2.0, 0.0};
    if (KrHostRouteWriter::AxisCode(ALLine(origin, up)) != 2) return __LINE__;
    if (KrHostRouteWriter::AxisCode(ALLine(origin, right)) != 1) return __LINE__;
    if (KrHostRouteWriter::AxisCode(ALLine(origin, diagonal)) != 0) return __LINE__;

    std::vector<double> points;
    std::vector<int> constraints;
    if (KrHostRouteWriter::WriteArrays(nullptr, points, constraints) != 1) return __LINE__;
    if (KrHostRouteWriter::WriteToHost(nullptr, nullptr, nullptr, false, false, nullptr) != 1)
        return __LINE__;
    return 0;
}

struct Check {
    char const* name;
    int (*run)();
};

// One entry per exported class (or group of free definitions) of <krlayout/krlayout.h>.
Check const kChecks[] = {
    {"version", CheckVersion},
    {"ALPoint", CheckALPoint},
    {"ALLine", CheckALLine},
    {"KrSegmentGeometry", CheckKrSegmentGeometry},
    {"KrPointIndex", CheckKrPointIndex},
    {"KrLineChain", CheckKrLineChain},
    {"KrLayoutQuality", CheckKrLayoutQuality},
    {"KrGeoUtility", CheckKrGeoUtility},
    {"e_AngleArea", CheckAngleArea},
    {"KrRoutingWayPoint", CheckKrRoutingWayPoint},
    {"KrRouteCADLine", CheckKrRouteCADLine},
    {"KrRouteSegment", CheckKrRouteSegment},
    {"KrRoutingGrid", CheckKrRoutingGrid},
    {"KrRoutingGridNode", CheckKrRoutingGridNode},
    {"KrSketch", CheckKrSketch},
    {"KrRouteConnector", CheckKrRouteConnector},
    {"KrRouteBends", CheckKrRouteBends},
    {"KrRoutingSketchLineEnd", CheckKrRoutingSketchLineEnd},
    {"priorities", CheckPriorities},
    {"KrRoutingAssignAngleByDiameter", CheckAssignAngleByDiameter},
    {"KrRoutingAssignAngleByLength", CheckAssignAngleByLength},
    {"KrRoutingAssignAngleAllPositiveByDiameter", CheckAssignAngleAllPositiveByDiameter},
    {"cross-line updates", CheckCrossLineUpdates},
    {"KrRoutingLayout", CheckKrRoutingLayout},
    {"KrRoutingCheck", CheckKrRoutingCheck},
    {"KrAutoLayout", CheckKrAutoLayout},
    {"KrLayoutRun", CheckKrLayoutRun},
    {"KrHostLocale", CheckKrHostLocale},
    {"KrHostSession", CheckKrHostSession},
    {"KrHostRouteReader", CheckKrHostRouteReader},
    {"KrHostRouteWriter", CheckKrHostRouteWriter},
};

}  // namespace

int main() {
    int failures = 0;
    for (Check const& check : kChecks) {
        int const line = check.run();
        if (line != 0) {
            std::printf("consumer: %s failed at consumer.cpp:%d\n", check.name, line);
            ++failures;
        }
    }
    if (failures != 0) return 1;
    std::printf("consumer: krlayout %s, %zu checks passed\n", KRLAYOUT_VERSION_STRING,
                sizeof(kChecks) / sizeof(kChecks[0]));
    return 0;
}
