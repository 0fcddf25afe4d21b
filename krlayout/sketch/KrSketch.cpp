#include <krlayout/sketch/KrSketch.h>

#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/layout/KrRoutingPriorityByLength.h>  // ExcludeLongestSegment ranks with this strategy
#include <krlayout/model/ALLine.h>
#include <krlayout/model/ALPoint.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/sketch/KrRouteBends.h>
#include <krlayout/sketch/KrRouteConnector.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <functional>
#include <unordered_map>

namespace {

long long SaturatingAdd(long long a, long long b)
{
    long long r = 0;
    if (__builtin_add_overflow(a, b, &r)) {
        return b > 0 ? LLONG_MAX : LLONG_MIN;
    }
    return r;
}

// Number of points that `count` host lines take (two per line), saturated instead of overflowing.
// A negative count is taken as no lines, so it covers no point and never moves later segments'
// points backwards.
long long PointsOfLines(long count)
{
    if (count <= 0) {
        return 0;
    }
    return SaturatingAdd(count, count);
}

// Cell of the point index used to find equal candidates. Cells are twice the tolerance wide, so
// two points equal within the tolerance lie in the same or in neighbouring cells even after
// rounding.
struct CellKey {
    double cx;
    double cy;
    bool operator==(CellKey const& o) const { return cx == o.cx && cy == o.cy; }
    bool operator<(CellKey const& o) const { return cx < o.cx || (cx == o.cx && cy < o.cy); }
};

CellKey CellOf(double x, double y)
{
    double const size = 2.0 * GEO_TOLERANCE;
    // + 0.0 folds -0.0 into 0.0; huge values may give infinite cells, which is harmless: points
    // that far out are equal only when identical.
    return CellKey{std::floor(x / size) + 0.0, std::floor(y / size) + 0.0};
}

bool IsFinitePoint(ALPoint const& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

// group[k] = -1 for a point equal to no other, else the index of the first point of its group.
// A point joins the group of the first earlier unassigned point that it equals; equality is not
// chained. Candidates come from the point's own and the eight neighbouring cells instead of from
// every later point; the result is the same as the pairwise scan. Non-finite points are never
// equal to anything and stay single.
//
// The cell index is flat for speed: the finite points sorted by cell (then by index) form one
// run per cell, and the runs of each cell's neighbours are found by linear merges over the
// sorted cells.
std::vector<std::int64_t> GroupPoints(std::vector<ALPoint> const& points)
{
    std::size_t const n = points.size();
    std::size_t const none = static_cast<std::size_t>(-1);
    std::vector<std::int64_t> group(n, -1);

    std::vector<CellKey> key(n, CellKey{0.0, 0.0});
    std::vector<std::size_t> order;
    order.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        if (IsFinitePoint(points[i])) {
            key[i] = CellOf(points[i].x, points[i].y);
            order.push_back(i);
        }
    }
    std::sort(order.begin(), order.end(), [&key](std::size_t a, std::size_t b) {
        if (key[a] == key[b]) {
            return a < b;
        }
        return key[a] < key[b];
    });

    std::vector<CellKey> cellKey;
    std::vector<std::size_t> runStart;
    std::vector<std::size_t> runLen;
    std::vector<std::size_t> cellOf(n, none);
    for (std::size_t r = 0; r < order.size();) {
        std::size_t const s = r;
        while (r < order.size() && key[order[r]] == key[order[s]]) {
            cellOf[order[r]] = cellKey.size();
            ++r;
        }
        cellKey.push_back(key[order[s]]);
        runStart.push_back(s);
        runLen.push_back(r - s);
    }

    // near[9c + slot]: the cell at offset (dx, dy) from cell c, or none. For a fixed offset the
    // shifted keys rise with c, so one forward pointer finds them all.
    std::size_t const m = cellKey.size();
    std::vector<std::size_t> near(m * 9, none);
    std::size_t slot = 0;
    for (int dx = -1; dx <= 1; ++dx) {
        for (int dy = -1; dy <= 1; ++dy, ++slot) {
            std::size_t p = 0;
            for (std::size_t c = 0; c < m; ++c) {
                CellKey const t{cellKey[c].cx + dx, cellKey[c].cy + dy};
                while (p < m && cellKey[p] < t) {
                    ++p;
                }
                if (p < m && cellKey[p] == t) {
                    near[c * 9 + slot] = p;
                }
            }
        }
    }

    for (std::size_t i = 0; i < n; ++i) {
        std::size_t const c = cellOf[i];
        if (group[i] >= 0 || c == none) {
            continue;
        }
        std::size_t const* const cand = &near[c * 9];
        for (std::size_t sl = 0; sl < 9; ++sl) {
            std::size_t const run = cand[sl];
            // Far out, neighbouring cells may coincide; visit each once.
            if (run == none || std::find(cand, cand + sl, run) != cand + sl) {
                continue;
            }
            // Entries at or before i, and entries already grouped, can never be taken again by a
            // later point: drop them while scanning.
            std::size_t* const list = &order[runStart[run]];
            std::size_t kept = 0;
            for (std::size_t r = 0; r < runLen[run]; ++r) {
                std::size_t const j = list[r];
                if (j <= i || group[j] >= 0) {
                    continue;
                }
                if (points[i] == points[j]) {
                    group[i] = static_cast<std::int64_t>(i);
                    group[j] = static_cast<std::int64_t>(i);
                    continue;
                }
                list[kept++] = j;
            }
            runLen[run] = kept;
        }
    }
    return group;
}

bool Contains(std::vector<KrRouteSegment*> const& v, KrRouteSegment* s)
{
    return std::find(v.begin(), v.end(), s) != v.end();
}

}  // namespace

KrSketch::KrSketch()
    : segments(), grid(nullptr), wayPoints(), connectors(), bends(), degenerateSegments()
{
}

// Shallow on purpose: the copy shares every owned object with the source. The library never
// copies a sketch; destroying both would free the shared objects twice.
KrSketch::KrSketch(KrSketch const& other)
    : IRoutingSketch(other),
      segments(other.segments),
      grid(other.grid),
      wayPoints(other.wayPoints),
      connectors(other.connectors),
      bends(other.bends),
      degenerateSegments(other.degenerateSegments),
      segmentsById(other.segmentsById),
      indexedSegments(other.indexedSegments),
      segmentIndexStale(other.segmentIndexStale)
{
}

KrSketch& KrSketch::operator=(KrSketch const& other)
{
    if (this != &other) {
        segments = other.segments;
        grid = other.grid;
        wayPoints = other.wayPoints;
        connectors = other.connectors;
        bends = other.bends;
        degenerateSegments = other.degenerateSegments;
        StoreChanged();
    }
    return *this;
}

// Frees segments, grid, way points and connector records, in that order. Bends and the
// segments in the degenerate list are not freed: the sketch keeps them without owning them, and
// a degenerate segment never recovered is left to whoever holds it. This is deliberate.
KrSketch::~KrSketch()
{
    for (KrRouteSegment* s : segments) {
        delete s;
    }
    segments.clear();
    StoreChanged();
    delete grid;
    grid = nullptr;
    for (KrRoutingWayPoint* p : wayPoints) {
        delete p;
    }
    wayPoints.clear();
    for (KrRouteConnector* c : connectors) {
        delete c;
    }
    connectors.clear();
    std::vector<KrRouteSegment*>().swap(degenerateSegments);
    std::vector<KrRouteBends*>().swap(bends);
    std::vector<KrRouteConnector*>().swap(connectors);
    std::vector<KrRoutingWayPoint*>().swap(wayPoints);
    std::vector<KrRouteSegment*>().swap(segments);
}

// ---------------------------------------------------------------------------------------------
// Building from input.

// The int id is kept as the segment's long id. No test for a duplicate id: lookups find the
// first segment with an id.
int KrSketch::CreateRouteSegment(int id, double length, double diameter)
{
    segments.push_back(new KrRouteSegment(static_cast<long>(id), length, diameter));
    return 0;
}

// Only checks that the segment exists; lines are made by CreateWayPoint.
int KrSketch::CreateCADLine(int id)
{
    KrRouteSegment* seg = nullptr;
    return GetRouteSegmentById(static_cast<long>(id), seg);
}

int KrSketch::CreateGrid(double xSpacing, double ySpacing)
{
    delete grid;  // takes every way point the old grid handed out with it
    grid = new KrRoutingGrid();
    grid->CreateGrids(xSpacing, ySpacing, 0.0, 0.0, 0.0, 0.0);
    grid->SetSketch(this);
    return 0;
}

int KrSketch::GetGrid(KrRoutingGrid*& out)
{
    out = grid;
    return 0;
}

// Before CreateGrid there is no grid to ask: a safe failure (1, node null) instead of a crash.
int KrSketch::GetGridNode(double x, double y, KrRoutingWayPoint*& node)
{
    if (grid == nullptr) {
        node = nullptr;
        return 1;
    }
    grid->GetGridNode(x, y, node);
    return 0;
}

// Before CreateGrid: 1 and x left untouched.
int KrSketch::GetGridXSpacing(double& x)
{
    if (grid == nullptr) {
        return 1;
    }
    double y = 0.0;
    grid->GetGridSpan(x, y);
    return 0;
}

int KrSketch::CreateWayPoint(std::vector<ALPoint> const& points)
{
    return BuildWayPoints(nullptr, points);
}

int KrSketch::CreateWayPoint(std::map<long, long> const& linesPerSegment,
                             std::vector<ALPoint> const& points)
{
    return BuildWayPoints(&linesPerSegment, points);
}

// Points come two per host line, the lines of the segments one segment after another in the
// map's key order. A key that names no segment still consumes its points: they get way points
// but join no line and give no segment end. Points beyond what the counts cover likewise get way
// points only.
int KrSketch::BuildWayPoints(std::map<long, long> const* linesPerSegment,
                             std::vector<ALPoint> const& points)
{
    std::size_t const n = points.size();
    if (n == 0) {
        return 0;
    }
    std::vector<std::int64_t> const group = GroupPoints(points);

    // The store does not change during the call: look ids up through a map built once (first
    // segment with an id wins, as in GetRouteSegmentById).
    std::unordered_map<long, KrRouteSegment*> byId;
    if (linesPerSegment != nullptr) {
        byId.reserve(segments.size());
        for (KrRouteSegment* s : segments) {
            byId.emplace(s->GetId(), s);
        }
    }
    auto lookup = [&byId](long id) -> KrRouteSegment* {
        auto it = byId.find(id);
        return it == byId.end() ? nullptr : it->second;
    };

    // Running walk over the map: `entry` is the first entry whose running total exceeds k. That
    // entry only moves forward as k grows, so one pass over the map suffices.
    std::map<long, long>::const_iterator entry;
    long long total = 0;
    if (linesPerSegment != nullptr) {
        entry = linesPerSegment->begin();
        if (entry != linesPerSegment->end()) {
            total = PointsOfLines(entry->second);
        }
    }

    std::vector<KrRoutingWayPoint*> wp(n, nullptr);
    KrRouteCADLine* line = nullptr;
    for (std::size_t k = 0; k < n; ++k) {
        if (linesPerSegment != nullptr && k % 2 == 0) {
            line = nullptr;
            long long const kk = static_cast<long long>(k);
            while (entry != linesPerSegment->end() && !(kk < total)) {
                ++entry;
                if (entry != linesPerSegment->end()) {
                    total = SaturatingAdd(total, PointsOfLines(entry->second));
                }
            }
            if (entry != linesPerSegment->end()) {
                if (KrRouteSegment* seg = lookup(entry->first)) {
                    seg->CreateCADLine(line);
                }
            }
        }

        KrRoutingWayPoint* p = nullptr;
        if (group[k] < 0 || static_cast<std::size_t>(group[k]) == k) {
            p = new KrRoutingWayPoint(points[k]);
            // A fresh pointer cannot be stored yet: append without AddPoint's scan.
            wayPoints.push_back(p);
        } else {
            p = wp[static_cast<std::size_t>(group[k])];
        }
        wp[k] = p;
        if (line != nullptr) {
            line->AddPoint(p);
        }
    }

    if (linesPerSegment == nullptr) {
        return 0;
    }

    // Segment ends: within a segment's range, uses of one way point cancel in pairs in order
    // (first with second, third with fourth, ...); an unpaired last use is an end of the chain.
    // Pairing through a sort keeps this linear-logarithmic in the range size.
    std::vector<std::pair<KrRoutingWayPoint*, std::size_t>> uses;
    std::vector<std::size_t> lone;
    std::size_t pos = 0;
    for (auto const& kv : *linesPerSegment) {
        if (pos >= n) {
            break;
        }
        long long const want = PointsOfLines(kv.second);
        std::size_t const avail = n - pos;
        std::size_t const take =
            static_cast<unsigned long long>(want) < avail ? static_cast<std::size_t>(want) : avail;
        std::size_t const begin = pos;
        pos += take;
        KrRouteSegment* seg = lookup(kv.first);
        if (seg == nullptr || take == 0) {
            continue;
        }
        uses.clear();
        for (std::size_t q = begin; q < begin + take; ++q) {
            if (wp[q] != nullptr) {
                uses.emplace_back(wp[q], q);
            }
        }
        std::sort(uses.begin(), uses.end(),
                  [](std::pair<KrRoutingWayPoint*, std::size_t> const& a,
                     std::pair<KrRoutingWayPoint*, std::size_t> const& b) {
                      if (a.first != b.first) {
                          return std::less<KrRoutingWayPoint*>()(a.first, b.first);
                      }
                      return a.second < b.second;
                  });
        lone.clear();
        for (std::size_t a = 0; a < uses.size();) {
            std::size_t b = a;
            while (b < uses.size() && uses[b].first == uses[a].first) {
                ++b;
            }
            if ((b - a) % 2 == 1) {
                lone.push_back(uses[b - 1].second);
            }
            a = b;
        }
        std::sort(lone.begin(), lone.end());
        for (std::size_t q : lone) {
            seg->AddPoint(wp[q]);
        }
    }
    return 0;
}

int KrSketch::AddPoint(KrRoutingWayPoint* p)
{
    // A null point is not stored: it could only crash the destructor's owners later.
    if (p == nullptr) {
        return 1;
    }
    if (std::find(wayPoints.begin(), wayPoints.end(), p) == wayPoints.end()) {
        wayPoints.push_back(p);
    }
    return 0;
}

// A null segment or an empty point list is refused with 1 and nothing is created.
int KrSketch::ConnectSegment(KrRouteSegment* seg, std::vector<KrRoutingWayPoint*>& pts)
{
    if (seg == nullptr || pts.empty()) {
        return 1;
    }
    KrRouteCADLine* line = new KrRouteCADLine();
    line->AddPoints(pts);
    seg->AddCADLine(line);
    seg->AddPoint(pts.front());
    seg->AddPoint(pts.back());
    return 0;
}

// Checks from the last segment to the first; failing segments have their lines cleared and are
// deleted in that order, then the list is compacted in one pass (a segment's check reads only
// its own ends and lines, so the result is the same as erasing one by one).
int KrSketch::CheckRouteSegment()
{
    std::vector<char> drop(segments.size(), 0);
    for (std::size_t i = segments.size(); i-- > 0;) {
        bool ok = true;
        segments[i]->CheckPointAndLine(ok);
        if (!ok) {
            drop[i] = 1;
            segments[i]->ClearLines();
            delete segments[i];
            segments[i] = nullptr;
        }
    }
    std::size_t kept = 0;
    for (std::size_t i = 0; i < segments.size(); ++i) {
        if (!drop[i]) {
            segments[kept++] = segments[i];
        }
    }
    segments.resize(kept);
    StoreChanged();
    return 0;
}

int KrSketch::SetCADLineIdByRouteId(long id, std::vector<std::pair<long, long>> const& ids)
{
    std::vector<KrRouteSegment*> const* withId = SegmentsWithId(id);
    if (withId == nullptr) {
        return 0;
    }
    for (KrRouteSegment* seg : *withId) {
        std::vector<KrRouteCADLine*> lines;
        seg->GetAllCADLine(lines);
        if (lines.size() != ids.size()) {
            return 1;
        }
        for (std::size_t i = 0; i < lines.size(); ++i) {
            std::vector<KrRoutingWayPoint*> pts;
            lines[i]->GetWayPoint(pts);
            if (pts.size() < 2) {
                return 1;  // earlier lines keep the ids already set
            }
            lines[i]->SetId(ids[i]);
        }
    }
    return 0;
}

// With fewer pairs than usable lines, the pairs go to the first usable lines in order, the rest
// keep their ids, and the result is 1 (never reads past the pairs).
int KrSketch::SetCADLineId(std::vector<std::pair<long, long>> const& ids)
{
    std::size_t r = 0;
    bool shortOfPairs = false;
    for (KrRouteSegment* seg : segments) {
        std::vector<KrRouteCADLine*> lines;
        seg->GetAllCADLine(lines);
        for (KrRouteCADLine* line : lines) {
            std::vector<KrRoutingWayPoint*> pts;
            line->GetWayPoint(pts);
            if (pts.size() < 2) {
                continue;
            }
            if (r >= ids.size()) {
                shortOfPairs = true;
                continue;
            }
            line->SetId(ids[r]);
            ++r;
        }
    }
    return (!shortOfPairs && r == ids.size()) ? 0 : 1;
}

int KrSketch::SetCADPointIdByRouteId(long id, std::vector<long*>& ids)
{
    KrRouteSegment* seg = nullptr;
    if (GetRouteSegmentById(id, seg) == 0) {
        seg->SetPointId(ids);
    }
    return 0;
}

// ---------------------------------------------------------------------------------------------
// Store.

int KrSketch::GetRouteSegmentById(long id, KrRouteSegment*& seg)
{
    std::vector<KrRouteSegment*> const* withId = SegmentsWithId(id);
    if (withId != nullptr && !withId->empty()) {
        seg = withId->front();  // the first in store order, as a scan finds it
        return 0;
    }
    seg = nullptr;
    return 1;
}

std::vector<KrRouteSegment*> const* KrSketch::SegmentsWithId(long id)
{
    if (segmentIndexStale || indexedSegments > segments.size()) {
        segmentsById.clear();
        indexedSegments = 0;
        segmentIndexStale = false;
    }
    for (; indexedSegments < segments.size(); ++indexedSegments) {
        KrRouteSegment* s = segments[indexedSegments];
        segmentsById[s->GetId()].push_back(s);
    }
    auto const it = segmentsById.find(id);
    return it == segmentsById.end() ? nullptr : &it->second;
}

// Unlike GetRouteSegmentById, an unknown id is not a failure and leaves seg as it was.
int KrSketch::GetDegenerateRouteSegmentById(long id, KrRouteSegment*& seg)
{
    for (KrRouteSegment* s : degenerateSegments) {
        if (s->GetId() == id) {
            seg = s;
            return 0;
        }
    }
    return 0;
}

int KrSketch::AddDegenerateSegment(KrRouteSegment* seg)
{
    if (seg != nullptr) {
        degenerateSegments.push_back(seg);
    }
    return 0;
}

int KrSketch::RecoverDegenerateRouteSegment(KrRouteSegment* seg)
{
    auto it = std::find(degenerateSegments.begin(), degenerateSegments.end(), seg);
    if (it == degenerateSegments.end()) {
        return 0;
    }
    degenerateSegments.erase(it);
    if (!Contains(segments, seg)) {
        segments.push_back(seg);
    }
    return 0;
}

int KrSketch::InsertConnector(long routeId, std::wstring connector, std::wstring pin)
{
    if (connector.empty()) {
        return 1;
    }
    for (KrRouteConnector* c : connectors) {
        std::wstring name;
        c->GetName(name);
        if (name == connector) {
            c->AddEntry(pin, routeId);
            return 0;
        }
    }
    KrRouteConnector* c = new KrRouteConnector();
    c->SetName(connector);
    c->AddEntry(pin, routeId);
    c->SetSketch(this);
    connectors.push_back(c);
    return 0;
}

// Recorded without ownership and without a duplicate test.
int KrSketch::AddBends(KrRouteBends* bend)
{
    if (bend == nullptr) {
        return 1;
    }
    bends.push_back(bend);
    return 0;
}

// Kept as a no-op that reports success: callers rely on 0.
int KrSketch::SetBendsId(std::vector<long*>&)
{
    return 0;
}

// No-op, 0.
int KrSketch::GetCurrentSegment()
{
    return 0;
}

// No-op, 0.
int KrSketch::HideRouteSegment(long)
{
    return 0;
}

// ---------------------------------------------------------------------------------------------
// Results.

int KrSketch::GetAllSegments(std::vector<KrRouteSegment*>& out)
{
    for (KrRouteSegment* s : segments) {
        bool degenerated = false;
        s->GetDegenerated(degenerated);
        if (!degenerated) {
            out.push_back(s);
        }
    }
    return 0;
}

int KrSketch::GetAllHandledRouteSegment(std::vector<KrRouteSegment*>& out)
{
    for (KrRouteSegment* s : segments) {
        bool redefined = false;
        s->IsRedefine(redefined);
        if (redefined) {
            out.push_back(s);
        }
    }
    return 0;
}

int KrSketch::GetAllRouteSegment(std::vector<long>& out)
{
    for (KrRouteSegment* s : segments) {
        out.push_back(s->GetId());
    }
    return 0;
}

int KrSketch::GetAllLineNewPos(std::vector<ALPoint>& out)
{
    for (KrRouteSegment* s : segments) {
        std::vector<KrRouteCADLine*> lines;
        s->GetAllCADLine(lines);
        for (KrRouteCADLine* line : lines) {
            std::vector<KrRoutingWayPoint*> pts;
            line->GetWayPoint(pts);
            if (pts.size() < 2) {
                continue;
            }
            ALPoint p(0.0, 0.0, 0.0);
            pts.front()->GetGridCoord(p.x, p.y);
            out.push_back(p);
            pts.back()->GetGridCoord(p.x, p.y);
            out.push_back(p);
        }
    }
    return 0;
}

int KrSketch::GetLinesByRouteId(long id, std::vector<ALLine>& out)
{
    std::vector<KrRouteSegment*> const* withId = SegmentsWithId(id);
    if (withId == nullptr) {
        return 0;
    }
    for (KrRouteSegment* s : *withId) {
        std::vector<KrRouteCADLine*> lines;
        s->GetAllCADLine(lines);
        for (KrRouteCADLine* line : lines) {
            ALLine l;
            line->GetLine(&l);
            out.push_back(l);
        }
    }
    return 0;
}

int KrSketch::GetCADLineIdByRouteId(long id, std::vector<std::pair<long, long>>& out)
{
    KrRouteSegment* seg = nullptr;
    if (GetRouteSegmentById(id, seg) != 0) {
        return 1;
    }
    std::vector<KrRouteCADLine*> lines;
    seg->GetAllCADLine(lines);
    for (KrRouteCADLine* line : lines) {
        std::pair<long, long> lineId(-1, -1);
        line->GetId(lineId);
        if (lineId.first < 0) {
            out.clear();  // also drops what the caller had in it
            return 2;
        }
        out.push_back(lineId);
    }
    return 0;
}

int KrSketch::GetSketchPointIdByRouteSegmentId(long id, std::vector<std::pair<long, long>>& out)
{
    KrRouteSegment* seg = nullptr;
    if (GetRouteSegmentById(id, seg) == 0) {
        seg->GetConnectorSketchPointId(out);
    }
    return 0;
}

// ---------------------------------------------------------------------------------------------
// Clean-up.

// Several pins of one connector wired along the same path show up as parallel segments between
// the same two way points, which the loop check would refuse as a closed path. For every
// connector with two or more entries, only the longest of each such bundle is kept. The result
// is always 0 (the run ignores it).
int KrSketch::UniqueMultiPinSegment()
{
    // Removal deletes segments, never connector records, so the list is stable.
    for (KrRouteConnector* c : connectors) {
        std::vector<std::pair<std::wstring, long>> entries;
        c->GetEntries(entries);
        if (entries.size() >= 2) {
            RemoveMultiPinRedundantSegment(c);
        }
    }
    return 0;
}

// The distinct live segments named by the connector's entries (first segment with each id, in
// entry order) are grouped by shared end way points (GetSameBothEndsSegments, restricted to that
// list); of every group of two or more the longest stays and RemoveSegments takes the rest.
int KrSketch::RemoveMultiPinRedundantSegment(KrRouteConnector* connector)
{
    if (connector == nullptr) {
        return 1;
    }
    std::vector<std::pair<std::wstring, long>> entries;
    connector->GetEntries(entries);
    if (entries.size() < 2) {
        return 0;
    }

    std::vector<KrRouteSegment*> list;
    // Segments of the list not grouped yet, by pointer -> index. Only these are ever looked up,
    // and only they are guaranteed alive: grouped segments may be deleted by RemoveSegments.
    std::unordered_map<KrRouteSegment*, std::size_t> pending;
    for (auto const& e : entries) {
        KrRouteSegment* seg = nullptr;
        if (GetRouteSegmentById(e.second, seg) == 0 && pending.count(seg) == 0) {
            pending.emplace(seg, list.size());
            list.push_back(seg);
        }
    }

    std::vector<char> grouped(list.size(), 0);
    for (std::size_t i = 0; i < list.size(); ++i) {
        // After deletions list[i] may dangle, so the index says whether it is still waiting.
        if (grouped[i]) {
            continue;
        }
        std::vector<KrRouteSegment*> same;
        list[i]->GetSameBothEndsSegments(same);
        std::vector<KrRouteSegment*> groupSegs;
        for (KrRouteSegment* s : same) {
            auto it = pending.find(s);
            if (it != pending.end()) {
                groupSegs.push_back(s);
                grouped[it->second] = 1;
                pending.erase(it);
            }
        }
        if (groupSegs.size() < 2) {
            continue;
        }
        KrRouteSegment* kept = nullptr;
        ExcludeLongestSegment(groupSegs, kept);
        RemoveSegments(groupSegs);
    }
    return 0;
}

// The first-ranked segment by length (then diameter, then list order) leaves the list (the others
// keep their order) and comes back through `longest`; an empty list or one of nulls gives null.
int KrSketch::ExcludeLongestSegment(std::vector<KrRouteSegment*>& list, KrRouteSegment*& longest)
{
    KrRoutingPriorityByLength priority;
    KrRouteSegment* best = nullptr;
    priority.GetPriorestSegment(list, best);
    longest = best;
    if (best != nullptr) {
        auto it = std::find(list.begin(), list.end(), best);
        if (it != list.end()) {
            list.erase(it);
        }
    }
    return 0;
}

// A segment of the list is removed only when another live segment of the sketch joins the same
// two end way points, so no removal cuts anything off; segments with other than two ends, and
// pointers the sketch does not hold in `segments`, are left alone. A removed segment leaves
// `segments`, has its lines cleared (no way point keeps a parent pointing at it) and is deleted.
int KrSketch::RemoveSegments(std::vector<KrRouteSegment*>& toRemove)
{
    // Duplicates are dropped up front, while every pointer is still alive.
    std::vector<KrRouteSegment*> todo;
    for (KrRouteSegment* s : toRemove) {
        if (s != nullptr && !Contains(todo, s)) {
            todo.push_back(s);
        }
    }
    for (KrRouteSegment* s : todo) {
        auto it = std::find(segments.begin(), segments.end(), s);
        if (it == segments.end() || !HasBypass(s)) {
            continue;
        }
        segments.erase(it);
        StoreChanged();
        s->ClearLines();
        delete s;
    }
    return 0;
}

bool KrSketch::HasBypass(KrRouteSegment* seg)
{
    bool degenerated = false;
    if (seg->IsDegenerated(degenerated) != 0) {
        return false;  // not exactly two ends
    }
    KrRoutingWayPoint* s = nullptr;
    KrRoutingWayPoint* e = nullptr;
    seg->GetOtherEnd(nullptr, s);  // the start
    seg->GetOtherEnd(s, e);
    if (s == nullptr || e == nullptr) {
        return false;
    }
    std::vector<KrRouteSegment*> others;
    s->GetConnectSegmentExclude(seg, others);
    for (KrRouteSegment* o : others) {
        if (o == nullptr || o == seg || !Contains(segments, o)) {
            continue;
        }
        bool ignored = false;
        if (o->IsDegenerated(ignored) != 0) {
            continue;  // not exactly two ends
        }
        bool atStart = false;
        o->IsOneEnd(s, atStart);
        KrRoutingWayPoint* far = nullptr;
        if (atStart && o->GetOtherEnd(s, far) == 0 && far == e) {
            return true;
        }
    }
    return false;
}

// Degenerate segments (both ends at one position, or not exactly two ends) leave `segments` for
// the degenerate list, marked degenerated; the sketch does not free them from there.
int KrSketch::RemoveDegenerateRouteSegment()
{
    std::size_t kept = 0;
    for (std::size_t i = 0; i < segments.size(); ++i) {
        KrRouteSegment* s = segments[i];
        bool degenerated = false;
        s->IsDegenerated(degenerated);
        if (degenerated) {
            s->SetDegenerated(true);
            AddDegenerateSegment(s);
        } else {
            segments[kept++] = s;
        }
    }
    segments.resize(kept);
    StoreChanged();
    return 0;
}

// The bend check records no bends: the layout redraws every segment as straight runs on the
// grid, so an input bend carries nothing the layout uses. With or without records the sketch
// is left unchanged.
int KrSketch::ModifySketchByBends()
{
    return 0;
}
