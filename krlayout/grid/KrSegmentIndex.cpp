// Buckets of square cells: every CAD line of a placed segment enters its (slightly widened) box
// into the cells it covers, and a query visits the cells of its own box. Two lines that cross or
// touch within the tolerance have overlapping widened boxes, so every segment a query can hit is
// among its candidates.
#include <krlayout/grid/KrSegmentIndex.h>

#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

// Cell indices stay well inside the 64-bit range and exact in a double.
constexpr double kCellLimit = 1125899906842624.0;  // 2^50
// A segment whose boxes cover more cells than this is kept in the always-list.
constexpr std::int64_t kMaxCellsPerEntry = 256;
// A query box covering more cells than this takes every placed segment as a candidate.
constexpr std::int64_t kMaxCellsPerQuery = 1024;

// Widening of a box: well above the 1e-5 tolerance of the intersection tests, and above the
// rounding of coordinates far from the origin.
double Margin(double a, double b, double c, double d) {
    double const m = std::max(std::max(std::fabs(a), std::fabs(b)), std::max(std::fabs(c), std::fabs(d)));
    return 1e-4 + 1e-9 * m;
}

}  // namespace

bool KrSegmentIndex::LineEnds(KrRouteCADLine* line, double& x0, double& y0, double& x1, double& y1) {
    KrRoutingWayPoint* s = nullptr;
    KrRoutingWayPoint* t = nullptr;
    if (line == nullptr) {
        return false;
    }
    line->GetStartPoint(s);
    line->GetEndPoint(t);
    if (s == nullptr || t == nullptr) {
        return false;
    }
    s->GetGridCoord(x0, y0);
    t->GetGridCoord(x1, y1);
    return true;
}

bool KrSegmentIndex::SegmentEnds(KrRouteSegment* seg, KrRoutingWayPoint*& a, KrRoutingWayPoint*& b) {
    a = nullptr;
    b = nullptr;
    if (seg->GetOtherEnd(nullptr, a) != 0 || a == nullptr) {
        return false;
    }
    return seg->GetOtherEnd(a, b) == 0 && b != nullptr;
}

std::size_t KrSegmentIndex::KeyHash::operator()(Key const& k) const {
    std::uint64_t h = static_cast<std::uint64_t>(k.cx) * 0x9E3779B97F4A7C15ULL;
    h ^= static_cast<std::uint64_t>(k.cy) + 0x7F4A7C159E3779B9ULL + (h << 6) + (h >> 2);
    return static_cast<std::size_t>(h);
}

KrSegmentIndex::KrSegmentIndex(std::vector<KrRouteSegment*> const& segments, double xSpan, double ySpan)
    : cell(0.0), usable(false), store(segments), stamp(0), hasY(false), yMin(0.0), yMax(0.0) {
    entries.resize(store.size());
    double sum = 0.0;
    std::size_t n = 0;
    for (std::size_t i = 0; i < store.size(); ++i) {
        KrRouteSegment* s = store[i];
        if (s == nullptr) {
            continue;
        }
        placeOf.emplace(s, i);  // the first occurrence keeps its place
        double len = 0.0;
        s->GetLength(len);
        if (std::isfinite(len) && len > 0.0 && len < 1e12) {
            sum += len;
            ++n;
        }
    }
    double const span = std::max(std::fabs(xSpan), std::fabs(ySpan));
    cell = std::max(4.0 * span, n > 0 ? sum / static_cast<double>(n) : 0.0);
    usable = std::isfinite(cell) && cell > 0.0;
    for (KrRouteSegment* s : store) {
        Refresh(s);
    }
}

bool KrSegmentIndex::Range(double x0, double y0, double x1, double y1, std::int64_t limit, Key& lo,
                           Key& hi) const {
    double const e = Margin(x0, y0, x1, y1);
    double const fx0 = std::floor((std::min(x0, x1) - e) / cell);
    double const fx1 = std::floor((std::max(x0, x1) + e) / cell);
    double const fy0 = std::floor((std::min(y0, y1) - e) / cell);
    double const fy1 = std::floor((std::max(y0, y1) + e) / cell);
    for (double f : {fx0, fx1, fy0, fy1}) {
        if (!(std::fabs(f) < kCellLimit)) {
            return false;  // also NaN
        }
    }
    double const count = (fx1 - fx0 + 1.0) * (fy1 - fy0 + 1.0);
    if (!(count <= static_cast<double>(limit))) {
        return false;
    }
    lo = Key{static_cast<std::int64_t>(fx0), static_cast<std::int64_t>(fy0)};
    hi = Key{static_cast<std::int64_t>(fx1), static_cast<std::int64_t>(fy1)};
    return true;
}

void KrSegmentIndex::Unlink(std::size_t place) {
    Entry& e = entries[place];
    if (!e.linked) {
        return;
    }
    for (Key const& k : e.keys) {
        auto it = cells.find(k);
        if (it == cells.end()) {
            continue;
        }
        std::vector<std::size_t>& list = it->second;
        auto pos = std::find(list.begin(), list.end(), place);
        if (pos != list.end()) {
            *pos = list.back();
            list.pop_back();
        }
    }
    e.keys.clear();
    if (e.always) {
        auto pos = std::find(always.begin(), always.end(), place);
        if (pos != always.end()) {
            *pos = always.back();
            always.pop_back();
        }
        e.always = false;
    }
    std::size_t const moved = linkedPlaces.back();
    linkedPlaces[e.linkedPos] = moved;
    entries[moved].linkedPos = e.linkedPos;
    linkedPlaces.pop_back();
    e.linked = false;
}

// Reads the ends and the cells of the lines of the segment at place (keys sorted, each once);
// fits is false when its geometry does not fit the cells. Widens the vertical extent.
void KrSegmentIndex::Read(std::size_t place, std::vector<Key>& keys, bool& fits) {
    KrRouteSegment* seg = store[place];
    Entry& entry = entries[place];
    bool degenerated = false;
    entry.twoEnds = seg->IsDegenerated(degenerated) == 0;  // 0 exactly with two ends
    entry.e0 = nullptr;
    entry.e1 = nullptr;
    if (entry.twoEnds) {
        SegmentEnds(seg, entry.e0, entry.e1);
    }
    lineScratch.clear();
    seg->GetAllCADLine(lineScratch);
    keys.clear();
    fits = true;
    double bx0 = 0.0;
    double by0 = 0.0;
    double bx1 = 0.0;
    double by1 = 0.0;
    bool any = false;
    for (KrRouteCADLine* line : lineScratch) {
        double x0 = 0.0;
        double y0 = 0.0;
        double x1 = 0.0;
        double y1 = 0.0;
        if (!LineEnds(line, x0, y0, x1, y1)) {
            continue;  // the crossing tests skip such lines as well
        }
        for (double y : {y0, y1}) {
            if (std::isfinite(y)) {
                yMin = hasY ? std::min(yMin, y) : y;
                yMax = hasY ? std::max(yMax, y) : y;
                hasY = true;
            }
        }
        Key lo{0, 0};
        Key hi{0, 0};
        if (!fits || !Range(x0, y0, x1, y1, kMaxCellsPerEntry, lo, hi)) {
            fits = false;
            continue;
        }
        bx0 = any ? std::min({bx0, x0, x1}) : std::min(x0, x1);
        by0 = any ? std::min({by0, y0, y1}) : std::min(y0, y1);
        bx1 = any ? std::max({bx1, x0, x1}) : std::max(x0, x1);
        by1 = any ? std::max({by1, y0, y1}) : std::max(y0, y1);
        any = true;
        for (std::int64_t cx = lo.cx; cx <= hi.cx; ++cx) {
            for (std::int64_t cy = lo.cy; cy <= hi.cy; ++cy) {
                keys.push_back(Key{cx, cy});
            }
        }
        if (static_cast<std::int64_t>(keys.size()) > kMaxCellsPerEntry) {
            fits = false;
        }
    }
    entry.boxed = fits && any;
    if (entry.boxed) {
        double const m = Margin(bx0, by0, bx1, by1);
        entry.box[0] = bx0 - m;
        entry.box[1] = by0 - m;
        entry.box[2] = bx1 + m;
        entry.box[3] = by1 + m;
    }
    if (!fits) {
        keys.clear();
        return;
    }
    std::sort(keys.begin(), keys.end(),
              [](Key const& a, Key const& b) { return a.cx < b.cx || (a.cx == b.cx && a.cy < b.cy); });
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
}

// Files the (unlinked) entry at place in the cells of keys, or among the entries of every query.
void KrSegmentIndex::Attach(std::size_t place, std::vector<Key>& keys, bool fits) {
    Entry& entry = entries[place];
    entry.linked = true;
    entry.linkedPos = linkedPlaces.size();
    linkedPlaces.push_back(place);
    if (!fits) {
        entry.always = true;
        always.push_back(place);
        return;
    }
    for (Key const& k : keys) {
        cells[k].push_back(place);
    }
    entry.keys.swap(keys);
}

void KrSegmentIndex::Refresh(KrRouteSegment* seg) {
    if (!usable || seg == nullptr) {
        return;
    }
    bool handled = false;
    seg->IsRedefine(handled);
    auto const found = placeOf.find(seg);
    if (found == placeOf.end()) {
        if (handled) {
            usable = false;  // its place in the store order is unknown: the callers scan
        }
        return;
    }
    std::size_t const place = found->second;
    if (!handled) {
        Unlink(place);
        return;
    }
    bool fits = true;
    Read(place, keyScratch, fits);
    Entry const& entry = entries[place];
    // A move of a spacing or two seldom leaves a cell: an entry whose cells stay the same stays
    // filed where it is (the cell lists are unordered; queries sort what they find).
    if (entry.linked && !entry.always && fits && entry.keys == keyScratch) {
        return;
    }
    Unlink(place);
    Attach(place, keyScratch, fits);
}

void KrSegmentIndex::RefreshAt(KrRoutingWayPoint* p) {
    if (p == nullptr) {
        return;
    }
    std::vector<KrRouteSegment*> segs;
    p->GetConnectSegment(segs);
    for (KrRouteSegment* s : segs) {
        Refresh(s);
    }
}

void KrSegmentIndex::MarkDirty(KrRouteSegment* seg) {
    if (seg != nullptr && dirtySet.insert(seg).second) {
        dirty.push_back(seg);
    }
}

void KrSegmentIndex::Flush() {
    // Refresh never marks, so the list does not grow while it is worked off.
    for (KrRouteSegment* s : dirty) {
        Refresh(s);
    }
    dirty.clear();
    dirtySet.clear();
}

void KrSegmentIndex::Candidates(double x0, double y0, double x1, double y1, std::vector<std::size_t>& out) {
    Flush();
    out.clear();
    ++stamp;
    Key lo{0, 0};
    Key hi{0, 0};
    if (!Range(x0, y0, x1, y1, kMaxCellsPerQuery, lo, hi)) {
        out = linkedPlaces;
    } else {
        // The query box, widened like the entries' boxes (Range succeeded: it is finite).
        double const m = Margin(x0, y0, x1, y1);
        double const qx0 = std::min(x0, x1) - m;
        double const qy0 = std::min(y0, y1) - m;
        double const qx1 = std::max(x0, x1) + m;
        double const qy1 = std::max(y0, y1) + m;
        auto take = [&](std::size_t place) {
            Entry& e = entries[place];
            if (e.stamp != stamp) {
                e.stamp = stamp;
                if (!e.boxed || (e.box[0] <= qx1 && qx0 <= e.box[2] && e.box[1] <= qy1 && qy0 <= e.box[3])) {
                    out.push_back(place);
                }
            }
        };
        for (std::size_t place : always) {
            take(place);
        }
        for (std::int64_t cx = lo.cx; cx <= hi.cx; ++cx) {
            for (std::int64_t cy = lo.cy; cy <= hi.cy; ++cy) {
                auto const it = cells.find(Key{cx, cy});
                if (it == cells.end()) {
                    continue;
                }
                for (std::size_t place : it->second) {
                    take(place);
                }
            }
        }
    }
    std::sort(out.begin(), out.end());
}

bool KrSegmentIndex::Ends(std::size_t place, KrRoutingWayPoint*& a, KrRoutingWayPoint*& b) const {
    Entry const& e = entries[place];
    a = e.e0;
    b = e.e1;
    return e.twoEnds;
}

KrRouteCADLine* KrSegmentIndex::FirstCross(KrRouteSegment* seg, double* p1, double* p2) {
    std::vector<std::size_t> places;
    Candidates(p1[0], p1[1], p2[0], p2[1], places);
    // seg's own ends, when it has exactly two: then IsOneEnd is a comparison with them.
    KrRoutingWayPoint* sa = nullptr;
    KrRoutingWayPoint* sb = nullptr;
    bool degenerated = false;
    bool const segTwoEnds = seg->IsDegenerated(degenerated) == 0 && SegmentEnds(seg, sa, sb);
    for (std::size_t place : places) {
        Entry const& e = entries[place];
        KrRouteSegment* h = store[place];
        // With exactly two ends, the root point and the opposite end that IsConnectByEnd tests
        // are those two ends: test them directly (no angle arithmetic per candidate).
        bool connected = false;
        if (e.twoEnds && segTwoEnds) {
            connected = e.e0 == sa || e.e0 == sb || e.e1 == sa || e.e1 == sb;
        } else if (e.twoEnds) {
            seg->IsOneEnd(e.e0, connected);
            if (!connected) {
                seg->IsOneEnd(e.e1, connected);
            }
        } else {
            seg->IsConnectByEnd(h, connected);
        }
        if (connected) {
            continue;
        }
        if (KrRouteCADLine* line = CrossedLine(h, p1, p2)) {
            return line;
        }
    }
    return nullptr;
}

KrRouteCADLine* KrSegmentIndex::CrossedLine(KrRouteSegment* h, double* p1, double* p2) {
    double hit[2] = {0.0, 0.0};
    KrRouteCADLine* line = nullptr;
    bool crosses = false;
    h->IsSecWith(p1, p2, hit, line, crosses);
    return crosses ? line : nullptr;
}

bool KrSegmentIndex::VerticalExtent(double& lo, double& hi) const {
    lo = yMin;
    hi = yMax;
    return hasY;
}
