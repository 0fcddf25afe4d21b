#include <krlayout/model/KrRouteCADLine.h>

#include <krlayout/grid/KrRoutingGrid.h>  // Move is handed a KrRoutingGrid* and calls its members
#include <krlayout/model/ALLine.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>

#include <algorithm>
#include <cstddef>
#include <functional>

namespace {

// Lines up to this many points add their moved points one by one.
constexpr std::size_t kShortLine = 16;

}  // namespace

KrRouteCADLine::KrRouteCADLine() : parentSegment(nullptr), points(), id(-1, -1) {}

KrRouteCADLine::KrRouteCADLine(KrRouteCADLine const& other)
    : parentSegment(other.parentSegment), points(other.points), id(other.id)
{
}

KrRouteCADLine& KrRouteCADLine::operator=(KrRouteCADLine const& other)
{
    if (this != &other) {
        parentSegment = other.parentSegment;
        points = other.points;
        id = other.id;
    }
    return *this;
}

// The way points belong to the sketch or the grid; they are neither deleted nor detached here.
KrRouteCADLine::~KrRouteCADLine() = default;

void KrRouteCADLine::SetId(std::pair<long, long> const& newId)
{
    id = newId;
}

void KrRouteCADLine::GetId(std::pair<long, long>& out) const
{
    out = id;
}

int KrRouteCADLine::SetParentSegment(KrRouteSegment* seg)
{
    parentSegment = seg;
    return 0;
}

int KrRouteCADLine::GetParentSegment(KrRouteSegment*& seg)
{
    seg = parentSegment;
    return 0;
}

int KrRouteCADLine::GetStartPoint(KrRoutingWayPoint*& p)
{
    if (points.empty()) {
        p = nullptr;
        return 1;
    }
    p = points.front();
    return 0;
}

int KrRouteCADLine::GetEndPoint(KrRoutingWayPoint*& p)
{
    if (points.empty()) {
        p = nullptr;
        return 1;
    }
    p = points.back();
    return 0;
}

int KrRouteCADLine::GetWayPoint(std::vector<KrRoutingWayPoint*>& out)
{
    out.insert(out.end(), points.begin(), points.end());
    return 0;
}

int KrRouteCADLine::CheckPoint(bool& ok)
{
    ok = points.size() >= 2;
    return ok ? 0 : 1;
}

int KrRouteCADLine::AddPoint(KrRoutingWayPoint* p)
{
    if (p == nullptr) {
        return 1;
    }
    if (std::find(points.begin(), points.end(), p) != points.end()) {
        return 0;
    }
    points.push_back(p);
    p->AddParent(this);
    return 0;
}

int KrRouteCADLine::AddPoints(std::vector<KrRoutingWayPoint*>& pts)
{
    for (KrRoutingWayPoint* p : pts) {
        AddPoint(p);
    }
    return 0;
}

// Edits the list only; the caller fixes the point's parents.
int KrRouteCADLine::RemovePoint(KrRoutingWayPoint* p)
{
    if (p == nullptr) {
        return 1;
    }
    auto it = std::find(points.begin(), points.end(), p);
    if (it != points.end()) {
        points.erase(it);
    }
    return 0;
}

// Every occurrence of oldP is replaced, not only at the ends.
int KrRouteCADLine::ReplaceEnd(KrRoutingWayPoint* oldP, KrRoutingWayPoint* newP)
{
    if (oldP == nullptr || newP == nullptr) {
        return 1;
    }
    oldP->RemoveParent(this);
    newP->AddParent(this);
    std::replace(points.begin(), points.end(), oldP, newP);
    return 0;
}

int KrRouteCADLine::ClearPoints()
{
    // Each round removes one entry, so the loop ends after at most points.size() rounds.
    while (!points.empty()) {
        KrRoutingWayPoint* p = points.back();
        p->RemoveParent(this);
        RemovePoint(p);
    }
    return 0;
}

int KrRouteCADLine::GetDir(double* dir)
{
    // A line without points has no direction; dir is left as it was.
    if (dir == nullptr || points.empty()) {
        return 1;
    }
    double s[2] = {0.0, 0.0};
    double e[2] = {0.0, 0.0};
    points.front()->GetGridCoord(s);
    points.back()->GetGridCoord(e);
    dir[0] = e[0] - s[0];
    dir[1] = e[1] - s[1];
    return 0;
}

int KrRouteCADLine::GetLine(ALLine* line)
{
    // Nothing is written for a missing line or a line without points.
    if (line == nullptr || points.empty()) {
        return 1;
    }
    double s[2] = {0.0, 0.0};
    double e[2] = {0.0, 0.0};
    points.front()->GetGridCoord(s);
    points.back()->GetGridCoord(e);
    line->start.x = s[0];
    line->start.y = s[1];
    line->end.x = e[0];
    line->end.y = e[1];
    return 0;
}

namespace {

// Writes x, y of the start or of the end of points, whichever has the larger y (maxY) or the
// smaller y; on a tie within GEO_TOLERANCE the start. 1 for a null xy or no points.
int WriteYExtreme(std::vector<KrRoutingWayPoint*> const& points, double* xy, bool maxY)
{
    if (xy == nullptr || points.empty()) {
        return 1;
    }
    double s[2] = {0.0, 0.0};
    double e[2] = {0.0, 0.0};
    points.front()->GetGridCoord(s);
    points.back()->GetGridCoord(e);
    bool const start = maxY ? KrGeoUtility::LargerEqualThan(s[1], e[1], GEO_TOLERANCE)
                            : KrGeoUtility::LargerEqualThan(e[1], s[1], GEO_TOLERANCE);
    double const* pick = start ? s : e;
    xy[0] = pick[0];
    xy[1] = pick[1];
    return 0;
}

}  // namespace

int KrRouteCADLine::GetMaxYPoint(double* xy)
{
    return WriteYExtreme(points, xy, true);
}

int KrRouteCADLine::GetMinYPoint(double* xy)
{
    return WriteYExtreme(points, xy, false);
}

namespace {

// Unit direction of the line and unit vector from its end to p (a vector shorter than the
// tolerance reads as (0, 0)).
void DirectionAndOffset(KrRouteCADLine& line, KrRoutingWayPoint* end, KrRoutingWayPoint* p, double* d,
                        double* v)
{
    line.GetDir(d);
    KrGeoUtility::UniteVector(d, 2);
    double pe[2] = {0.0, 0.0};
    double pp[2] = {0.0, 0.0};
    end->GetGridCoord(pe);
    p->GetGridCoord(pp);
    v[0] = pp[0] - pe[0];
    v[1] = pp[1] - pe[1];
    KrGeoUtility::UniteVector(v, 2);
}

bool SameVector(double const* a, double ax, double ay)
{
    return KrGeoUtility::IsEqual(a[0], ax, GEO_TOLERANCE) &&
           KrGeoUtility::IsEqual(a[1], ay, GEO_TOLERANCE);
}

}  // namespace

// On the line's continuation beyond its end (the end itself included).
int KrRouteCADLine::PointIsOnLine(KrRoutingWayPoint* p, bool& on)
{
    on = false;
    if (p == nullptr || points.empty()) {
        return 1;
    }
    double d[2] = {0.0, 0.0};
    double v[2] = {0.0, 0.0};
    DirectionAndOffset(*this, points.back(), p, d, v);
    on = SameVector(v, d[0], d[1]) || SameVector(v, 0.0, 0.0);
    return 0;
}

// On the infinite straight line, measured from the end point in either direction.
int KrRouteCADLine::PointIsOnBeeline(KrRoutingWayPoint* p, bool& on)
{
    on = false;
    if (p == nullptr || points.empty()) {
        return 1;
    }
    double d[2] = {0.0, 0.0};
    double v[2] = {0.0, 0.0};
    DirectionAndOffset(*this, points.back(), p, d, v);
    on = SameVector(v, d[0], d[1]) || SameVector(v, 0.0, 0.0) || SameVector(v, -d[0], -d[1]);
    return 0;
}

// A distance test from a only: b is appended at the end even when it was already listed.
int KrRouteCADLine::GetPointBetweenPoint(KrRoutingWayPoint* a, KrRoutingWayPoint* b,
                                         std::vector<KrRoutingWayPoint*>& out)
{
    if (a == nullptr || b == nullptr) {
        return 1;
    }
    double pa[2] = {0.0, 0.0};
    double pb[2] = {0.0, 0.0};
    a->GetGridCoord(pa);
    b->GetGridCoord(pb);
    double const limit = KrGeoUtility::GetLength(pa, pb, 2);
    for (KrRoutingWayPoint* p : points) {
        double pp[2] = {0.0, 0.0};
        p->GetGridCoord(pp);
        double const dist = KrGeoUtility::GetLength(pa, pp, 2);
        if (KrGeoUtility::LessEqualThan(dist, limit, GEO_TOLERANCE)) {
            out.push_back(p);
        }
    }
    out.push_back(b);
    return 0;
}

// The points are replaced by the grid's nodes at the shifted positions, never moved themselves.
int KrRouteCADLine::Move(KrRoutingGrid* grid, double dx, double dy, std::vector<KrRouteSegment*>& moved)
{
    if (grid == nullptr) {
        return 1;
    }
    grid->MoveCrossSegment(this, dx, dy, moved);

    // The points are read in place: nothing in the loop changes this line's list.
    std::vector<KrRoutingWayPoint*> targets;
    targets.reserve(points.size());
    for (KrRoutingWayPoint* p : points) {
        double x = 0.0;
        double y = 0.0;
        p->GetGridCoord(x, y);
        bool nonGrid = false;
        grid->IsNonGridNode(p, nonGrid);
        KrRoutingWayPoint* q = nullptr;
        if (nonGrid) {
            grid->GetNonGridNode(x + dx, y + dy, q);
        } else {
            grid->GetGridNode(x + dx, y + dy, q);
        }
        p->RemoveParent(this);
        if (parentSegment != nullptr) {
            parentSegment->RemovePoint(p);
        }
        targets.push_back(q);
    }

    // AddPoint searches the points added so far: quadratic on a long line. The shifted points of
    // a line are nearly always distinct; a sorted copy tells, and then the list of targets becomes
    // the line's list as it stands, with the same order and parents as through AddPoint.
    bool distinct = targets.size() > kShortLine;
    if (distinct) {
        thread_local std::vector<KrRoutingWayPoint*> sorted;
        sorted.assign(targets.begin(), targets.end());
        std::sort(sorted.begin(), sorted.end(), std::less<KrRoutingWayPoint*>());
        // A null point (AddPoint skips it) sorts first.
        distinct = sorted.front() != nullptr &&
                   std::adjacent_find(sorted.begin(), sorted.end()) == sorted.end();
    }
    if (!distinct) {
        points.clear();
        for (KrRoutingWayPoint* q : targets) {
            AddPoint(q);
        }
        return 0;
    }
    points.swap(targets);
    for (KrRoutingWayPoint* q : points) {
        q->AddParent(this);
    }
    return 0;
}

int KrRouteCADLine::Short(double len, KrRoutingWayPoint* from, KrRoutingWayPoint*& newEnd)
{
    if (from == nullptr || points.empty()) {
        return 1;
    }
    KrRoutingWayPoint* ref = points.front();
    if (ref == from) {
        ref = points.back();
    }
    double pr[2] = {0.0, 0.0};
    double pf[2] = {0.0, 0.0};
    ref->GetGridCoord(pr);
    from->GetGridCoord(pf);
    double const d = KrGeoUtility::GetLength(pr, pf, 2);

    if (KrGeoUtility::LessThan(d, len, GEO_TOLERANCE)) {
        int count = 0;
        if (parentSegment != nullptr) {
            parentSegment->GetCADLineNum(count);
        }
        if (count >= 2) {
            // One of several lines: it is emptied but stays in its segment.
            while (!points.empty()) {
                KrRoutingWayPoint* p = points.back();
                p->RemoveParent(this);
                points.pop_back();
            }
            newEnd = ref;
            return 0;
        }
        // A lone line (or one without a segment) is halved, never removed. The halved length is
        // applied directly rather than by calling Short again, which gives the same result for
        // every finite length and cannot recurse without end on NaN or infinity.
        len = d * 0.5;
    }

    double const delta = d - len;
    double u[2] = {pf[0] - pr[0], pf[1] - pr[1]};
    KrGeoUtility::UniteVector(u, 2);
    KrRoutingWayPoint* created = new KrRoutingWayPoint();
    created->SetGridCoord(pr[0] + u[0] * delta, pr[1] + u[1] * delta);
    newEnd = created;

    std::vector<KrRoutingWayPoint*> kept;
    GetPointBetweenPoint(ref, created, kept);
    for (KrRoutingWayPoint* p : points) {
        p->RemoveParent(this);
    }
    points.clear();
    AddPoints(kept);
    return 0;
}

int KrRouteCADLine::SetStartEnd(double, double, double, double)
{
    return 0;
}

int KrRouteCADLine::InsertWayPoint(KrRoutingWayPoint*)
{
    return 0;
}
