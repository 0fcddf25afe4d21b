#include <krlayout/host/KrHostRouteReader.h>

#include <krlayout/host/IHostCurve.h>
#include <krlayout/host/IHostPoint.h>
#include <krlayout/host/IHostRouteContainer.h>
#include <krlayout/host/IHostRouteItem.h>
#include <krlayout/host/IHostSketchArc.h>
#include <krlayout/host/IHostSketchEntity.h>
#include <krlayout/host/IHostSketchLine.h>
#include <krlayout/host/KrHostInterfaceId.h>
#include <krlayout/sketch/IRoutingSketch.h>

#include <utility>

namespace {

// Largest id or entity count taken from the host. A larger count is no route sketch but a broken
// answer, and a buffer for it could exhaust the memory: it is read as no ids (no entities).
constexpr int kMaxHostCount = 1 << 24;

// Coordinates of a host point; false when the point is missing or gives none.
bool ReadPoint(IHostPoint* point, ALPoint& out)
{
    if (point == nullptr) {
        return false;
    }
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    if (point->GetCoords(&x, &y, &z) != KR_HOST_OK) {
        return false;
    }
    out = ALPoint(x, y, z);
    return true;
}

// Start and end of a line or an arc (both have the same two point requests).
template <class T>
bool ReadEnds(T* shape, ALPoint& start, ALPoint& end)
{
    if (shape == nullptr) {
        return false;
    }
    KrHostRef<IHostPoint> s;
    KrHostRef<IHostPoint> e;
    shape->GetStartPoint(s.Out());
    shape->GetEndPoint(e.Out());
    return ReadPoint(s.Get(), start) && ReadPoint(e.Get(), end);
}

}  // namespace

KrHostRouteReader::KrHostRouteReader(IHostRouteContainer* c) : container(c) {}

int KrHostRouteReader::ReadRouteSegmentIds(std::vector<int>& ids)
{
    if (container == nullptr) {
        return 1;
    }
    int n = 0;
    if (container->GetRouteSegmentCount(&n) != KR_HOST_OK || n <= 0 || n > kMaxHostCount) {
        return 1;
    }
    std::vector<int> fetched(static_cast<std::size_t>(n), 0);
    if (container->GetRouteSegmentIds(n, fetched.data()) != KR_HOST_OK) {
        return 1;
    }
    ids.insert(ids.end(), fetched.begin(), fetched.end());
    return 0;
}

// A segment whose route item (or its value) is unavailable keeps the value 0: it is still laid
// out, as the thinnest segment, rather than dropped together with its lines.
int KrHostRouteReader::ReadRouteValues(std::vector<int> const& ids, std::map<int, double>& values)
{
    if (container == nullptr) {
        return 1;
    }
    for (int id : ids) {
        double value = 0.0;
        KrHostRef<IHostUnknown> object;
        container->GetRouteItem(id, object.Out());
        KrHostRef<IHostRouteItem> item = KrHostQuery<IHostRouteItem>(object.Get(), KR_IID_ROUTE_ITEM);
        if (item) {
            double v = 0.0;
            if (item->GetValue(&v) == KR_HOST_OK) {
                value = v;
            }
        }
        values.emplace(id, value);
    }
    return 0;
}

int KrHostRouteReader::FetchEntities(IHostRouteContainer* c, int segmentId,
                                     std::vector<KrHostRef<IHostUnknown>>& entities, int* count)
{
    if (count != nullptr) {
        *count = 0;
    }
    if (c == nullptr) {
        return 1;
    }
    int m = 0;
    if (c->GetSketchEntityCount(segmentId, &m) != KR_HOST_OK || m < 0 || m > kMaxHostCount) {
        m = 0;
    }
    if (count != nullptr) {
        *count = m;
    }
    if (m == 0) {
        return 0;
    }
    std::vector<IHostUnknown*> raw(static_cast<std::size_t>(m), nullptr);
    c->GetSketchEntities(segmentId, m, raw.data());
    // Every non-null object carries a reference, whatever the status: adopt them all.
    for (IHostUnknown* object : raw) {
        if (object != nullptr) {
            entities.emplace_back(object);
        }
    }
    return 0;
}

int KrHostRouteReader::ReadSegmentLength(int segmentId, double& length)
{
    if (container == nullptr) {
        return 1;
    }
    std::vector<KrHostRef<IHostUnknown>> entities;
    int m = 0;
    FetchEntities(container, segmentId, entities, &m);
    if (m == 0) {
        return 1;
    }
    length = 0.0;
    for (KrHostRef<IHostUnknown> const& object : entities) {
        KrHostRef<IHostSketchEntity> entity =
            KrHostQuery<IHostSketchEntity>(object.Get(), KR_IID_SKETCH_ENTITY);
        if (!entity) {
            continue;
        }
        double l = 0.0;
        if (entity->GetLength(&l) == KR_HOST_OK) {
            length += l;
        }
    }
    return 0;
}

int KrHostRouteReader::CreateRouteSegments(std::map<int, double> const& values,
                                           IRoutingSketch* sketch, std::vector<int>& records)
{
    if (sketch == nullptr || container == nullptr) {
        return 1;
    }
    for (auto const& [id, value] : values) {
        records.push_back(id);
        double length = 0.0;
        // A segment without entities keeps the length 0; it is created all the same.
        ReadSegmentLength(id, length);
        sketch->CreateRouteSegment(id, length, value);
    }
    return 0;
}

int KrHostRouteReader::ReadEntityEndPoints(IHostUnknown* object, std::vector<ALPoint>& points)
{
    KrHostRef<IHostSketchEntity> entity = KrHostQuery<IHostSketchEntity>(object, KR_IID_SKETCH_ENTITY);
    if (!entity) {
        return 1;
    }
    int kind = -1;
    if (entity->GetKind(&kind) != KR_HOST_OK) {
        kind = -1;
    }
    ALPoint start;
    ALPoint end;
    bool ok = false;
    if (kind == KR_ENTITY_LINE) {
        KrHostRef<IHostSketchLine> line = KrHostQuery<IHostSketchLine>(object, KR_IID_SKETCH_LINE);
        ok = ReadEnds(line.Get(), start, end);
    } else if (kind == KR_ENTITY_ARC) {
        KrHostRef<IHostSketchArc> arc = KrHostQuery<IHostSketchArc>(object, KR_IID_SKETCH_ARC);
        ok = ReadEnds(arc.Get(), start, end);
    } else {
        KrHostRef<IHostCurve> curve;
        entity->GetCurve(curve.Out());
        if (curve) {
            double s[3] = {0.0, 0.0, 0.0};
            double e[3] = {0.0, 0.0, 0.0};
            if (curve->GetEndPoints(s, e) == KR_HOST_OK) {
                start = ALPoint(s);
                end = ALPoint(e);
                ok = true;
            }
        }
    }
    // Both ends or none: a lone point would shift every later pair.
    if (!ok) {
        return 1;
    }
    points.push_back(start);
    points.push_back(end);
    return 0;
}

int KrHostRouteReader::ReadWayPoints(std::vector<int> const& ids,
                                     std::map<long, long>& linesPerSegment,
                                     std::vector<ALPoint>& points)
{
    if (container == nullptr) {
        return 1;
    }
    for (int id : ids) {
        std::vector<KrHostRef<IHostUnknown>> entities;
        int m = 0;
        FetchEntities(container, id, entities, &m);
        for (KrHostRef<IHostUnknown> const& entity : entities) {
            ReadEntityEndPoints(entity.Get(), points);
        }
        linesPerSegment.emplace(id, m);
    }
    return 0;
}

int KrHostRouteReader::CreateWayPoints(std::vector<int> const& ids, IRoutingSketch* sketch)
{
    if (sketch == nullptr) {
        return 1;
    }
    std::map<long, long> linesPerSegment;
    std::vector<ALPoint> points;
    if (ReadWayPoints(ids, linesPerSegment, points) != 0) {
        return 1;
    }
    sketch->CreateWayPoint(linesPerSegment, points);
    return 0;
}
