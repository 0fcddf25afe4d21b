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

struct Check {
    char const* name;
    int (*run)();
};

// One entry per exported class (or group of free definitions) of <krlayout/krlayout.h>.
Check const kChecks[] = {
    {"version", CheckVersion},
    {"ALPoint", CheckALPoint},
    {"ALLine", CheckALLine},
    {"KrGeoUtility", CheckKrGeoUtility},
    {"e_AngleArea", CheckAngleArea},
    {"KrRoutingWayPoint", CheckKrRoutingWayPoint},
    {"KrRouteCADLine", CheckKrRouteCADLine},
    {"KrRouteSegment", CheckKrRouteSegment},
    {"KrRoutingGrid", CheckKrRoutingGrid},
    {"KrRoutingGridNode", CheckKrRoutingGridNode},
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
