#include <krlayout/model/KrRoutingWayPoint.h>

#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>

#include <algorithm>
#include <cstddef>
#include <unordered_set>

namespace {

template <typename T>
bool Contains(std::vector<T*> const& v, T* item)
{
    return std::find(v.begin(), v.end(), item) != v.end();
}

KrRouteSegment* ParentSegmentOf(KrRouteCADLine* line)
{
    KrRouteSegment* seg = nullptr;
    if (line != nullptr) {
        line->GetParentSegment(seg);
    }
    return seg;
}

// Above this many parents plus entries, "not already in out" is answered by a set instead of a
// scan of out per parent, which is quadratic where thousands of segments meet at one point.
constexpr std::size_t kScanLimit = 32;

// Appends the parent segment of every line in parents that `keep` accepts and out does not hold
// yet, in parent order.
template <typename Keep>
void AppendParentSegments(std::vector<KrRouteCADLine*> const& parents, std::vector<KrRouteSegment*>& out,
                          Keep keep)
{
    if (parents.size() + out.size() <= kScanLimit) {
        for (KrRouteCADLine* parent : parents) {
            KrRouteSegment* seg = ParentSegmentOf(parent);
            if (seg != nullptr && !Contains(out, seg) && keep(seg)) {
                out.push_back(seg);
            }
        }
        return;
    }
    std::unordered_set<KrRouteSegment*> held(out.begin(), out.end());
    for (KrRouteCADLine* parent : parents) {
        KrRouteSegment* seg = ParentSegmentOf(parent);
        if (seg != nullptr && held.count(seg) == 0 && keep(seg)) {
            held.insert(seg);
            out.push_back(seg);
        }
    }
}

}  // namespace

// The used flag is never changed by any operation; it starts false so that copies are defined.
KrRoutingWayPoint::KrRoutingWayPoint()
    : position(), used(false), pointId(), parents(), reserved(0), nonGridMarks(0)
{
}

KrRoutingWayPoint::KrRoutingWayPoint(ALPoint const& point)
    : position(point), used(false), pointId(), parents(), reserved(0), nonGridMarks(0)
{
}

KrRoutingWayPoint::KrRoutingWayPoint(KrRoutingWayPoint const& other)
    : position(other.position),
      used(other.used),
      pointId(other.pointId),
      parents(other.parents),
      reserved(other.reserved),
      nonGridMarks(0)
{
}

KrRoutingWayPoint& KrRoutingWayPoint::operator=(KrRoutingWayPoint const& other)
{
    if (this != &other) {
        position = other.position;
        used = other.used;
        pointId = other.pointId;
        parents = other.parents;
        reserved = other.reserved;
    }
    return *this;
}

KrRoutingWayPoint::~KrRoutingWayPoint() = default;

int KrRoutingWayPoint::SetGridCoord(double x, double y)
{
    position.x = x;
    position.y = y;
    return 0;
}

int KrRoutingWayPoint::GetGridCoord(double& x, double& y)
{
    x = position.x;
    y = position.y;
    return 0;
}

int KrRoutingWayPoint::GetGridCoord(double* xy)
{
    if (xy == nullptr) {
        return 1;
    }
    xy[0] = position.x;
    xy[1] = position.y;
    return 0;
}

int KrRoutingWayPoint::SetUsed(bool /*used*/)
{
    return 0;
}

int KrRoutingWayPoint::SetPointId(long* ids)
{
    if (ids == nullptr) {
        return 1;
    }
    pointId.clear();
    pointId.push_back(ids[0]);
    pointId.push_back(ids[1]);
    return 0;
}

int KrRoutingWayPoint::GetPointId(std::pair<long, long>& id)
{
    if (pointId.size() < 2) {
        return 1;
    }
    id.first = pointId[0];
    id.second = pointId[1];
    return 0;
}

int KrRoutingWayPoint::IsSamePoint(KrRoutingWayPoint* other, bool& same)
{
    if (other == nullptr) {
        same = false;
        return 1;
    }
    double ox = 0.0;
    double oy = 0.0;
    other->GetGridCoord(ox, oy);
    same = KrGeoUtility::IsEqual(ox, position.x, GEO_TOLERANCE) &&
           KrGeoUtility::IsEqual(oy, position.y, GEO_TOLERANCE);
    return 0;
}

int KrRoutingWayPoint::AddParent(KrRouteCADLine* line)
{
    if (line == nullptr) {
        return 1;
    }
    if (!Contains(parents, line)) {
        parents.push_back(line);
    }
    return 0;
}

int KrRoutingWayPoint::RemoveParent(KrRouteCADLine* line)
{
    if (line == nullptr) {
        return 1;
    }
    auto it = std::find(parents.begin(), parents.end(), line);
    if (it != parents.end()) {
        parents.erase(it);
    }
    return 0;
}

int KrRoutingWayPoint::RemoveParentBySegment(KrRouteSegment* seg)
{
    if (seg == nullptr) {
        return 1;
    }
    for (std::size_t i = parents.size(); i > 0; --i) {
        if (ParentSegmentOf(parents[i - 1]) == seg) {
            parents.erase(parents.begin() + static_cast<std::ptrdiff_t>(i - 1));
        }
    }
    return 0;
}

int KrRoutingWayPoint::GetParent(std::vector<KrRouteCADLine*>& out)
{
    out.insert(out.end(), parents.begin(), parents.end());
    return 0;
}

int KrRoutingWayPoint::GetCADLineBySegment(KrRouteSegment* seg, KrRouteCADLine*& line)
{
    if (seg == nullptr) {
        return 1;
    }
    for (KrRouteCADLine* parent : parents) {
        if (ParentSegmentOf(parent) == seg) {
            line = parent;
            return 0;
        }
    }
    return 0;
}

// Lines without a parent segment contribute no segment to the segment queries below.
int KrRoutingWayPoint::GetConnectSegment(std::vector<KrRouteSegment*>& out)
{
    AppendParentSegments(parents, out, [](KrRouteSegment*) { return true; });
    return 0;
}

int KrRoutingWayPoint::GetSegments(bool redefined, std::vector<KrRouteSegment*>& out)
{
    AppendParentSegments(parents, out, [redefined](KrRouteSegment* seg) {
        bool flag = false;
        seg->IsRedefine(flag);
        return flag == redefined;
    });
    return 0;
}

int KrRoutingWayPoint::GetUnHandledSegments(std::vector<KrRouteSegment*>& out)
{
    return GetSegments(false, out);
}

int KrRoutingWayPoint::GetConnectSegmentExclude(KrRouteSegment* seg, std::vector<KrRouteSegment*>& out)
{
    if (seg == nullptr) {
        return 1;
    }
    GetConnectSegment(out);
    auto it = std::find(out.begin(), out.end(), seg);
    if (it != out.end()) {
        out.erase(it);
    }
    return 0;
}

int KrRoutingWayPoint::IsOwnBySegment(long segId, bool& owned)
{
    std::vector<KrRouteSegment*> segs;
    GetConnectSegment(segs);
    owned = false;
    for (KrRouteSegment* seg : segs) {
        if (seg->GetId() == segId) {
            owned = true;
            break;
        }
    }
    return 0;
}

// The root segment is the placed segment through which the layout reached this point: the first
// connected segment that is redefined and does not start here.
int KrRoutingWayPoint::GetRootSegment(KrRouteSegment*& root)
{
    std::vector<KrRouteSegment*> segs;
    GetConnectSegment(segs);
    for (KrRouteSegment* seg : segs) {
        bool isStart = false;
        seg->IsStartPoint(this, isStart);
        bool redefined = false;
        seg->IsRedefine(redefined);
        if (!isStart && redefined) {
            root = seg;
            return 0;
        }
    }
    root = nullptr;
    return 1;
}

int KrRoutingWayPoint::AddParentsFromPoint(KrRoutingWayPoint* other)
{
    if (other == nullptr) {
        return 1;
    }
    // other may be this point: the five steps then move it to the end of each of its lines'
    // point lists (a start becomes the last point). SetNewPoints relies on that, so it is kept.
    // other's parent list shrinks while it is walked: iterate over a copy.
    std::vector<KrRouteCADLine*> lines;
    other->GetParent(lines);
    for (KrRouteCADLine* line : lines) {
        KrRouteSegment* seg = ParentSegmentOf(line);
        if (seg != nullptr) {
            bool isEnd = false;
            seg->IsOneEnd(other, isEnd);
            if (isEnd) {
                seg->ReplaceEnd(other, this);
            }
        }
        AddParent(line);
        line->RemovePoint(other);
        other->RemoveParent(line);
        line->AddPoint(this);
    }
    return 0;
}
