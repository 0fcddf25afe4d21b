// Spatial index of the placed (handled) route segments of one sketch, used during a layout for its
// geometric queries: the first-crossing search of the layout driver and the crossing tests of the
// grid's cross-segment moves. Library-internal: the layout creates one on the grid for the time of
// one LayOut call; exported only so that the tests can check it against the linear scans.
//
// Every query answers in store order (the order of KrSketch::GetAllSegments): candidates come back
// sorted by their place in the store, so a caller that tests them in that order and stops at the
// first hit returns exactly what a scan over the store returns.
//
// The index must be told about every change of a placed segment's lines: Refresh re-reads one at
// once, MarkDirty notes one whose lines are still changing, and every query first re-reads the
// noted ones.
#pragma once

#include <krlayout/krlayout_export.h>

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class KrRouteCADLine;
class KrRouteSegment;
class KrRoutingWayPoint;

class KRLAYOUT_EXPORT KrSegmentIndex {
public:
    // segments: the store in order. Cells are max(4 spacings, mean segment length) wide.
    KrSegmentIndex(std::vector<KrRouteSegment*> const& segments, double xSpan, double ySpan);
    KrSegmentIndex(KrSegmentIndex const&) = delete;
    KrSegmentIndex& operator=(KrSegmentIndex const&) = delete;

    // False once the index cannot answer as the scans do (no usable cell size, or a placed segment
    // that is not in the store); callers then scan.
    bool Usable() const { return usable; }

    // Re-reads seg's lines (placed segments only; an unplaced one is left out).
    void Refresh(KrRouteSegment* seg);
    // Re-reads the segments whose lines run through p.
    void RefreshAt(KrRoutingWayPoint* p);
    // Notes seg for a re-read before the next query.
    void MarkDirty(KrRouteSegment* seg);
    // Re-reads every noted segment.
    void Flush();

    // Store places (ascending, each once) of the placed segments whose lines may come within the
    // tolerance of the box of (x0, y0)-(x1, y1): a superset of those whose lines touch it. Those
    // whose bounding box (widened by the margin) misses the widened query box are left out.
    void Candidates(double x0, double y0, double x1, double y1, std::vector<std::size_t>& out);
    KrRouteSegment* At(std::size_t place) const { return store[place]; }
    // The segment's two ends when it has exactly two (as of its last re-read).
    bool Ends(std::size_t place, KrRoutingWayPoint*& a, KrRoutingWayPoint*& b) const;

    // The first placed segment (store order) not connected to seg by an end whose lines the line
    // p1-p2 crosses (KrRouteSegment::IsSecWith), and the line hit; null when none.
    KrRouteCADLine* FirstCross(KrRouteSegment* seg, double* p1, double* p2);

    // The two ends of a segment (its ends[0] and ends[1]); false with fewer than two.
    static bool SegmentEnds(KrRouteSegment* seg, KrRoutingWayPoint*& a, KrRoutingWayPoint*& b);

    // The grid coordinates of a line's start and end point; false (nothing written) when the line
    // or either point is missing.
    static bool LineEnds(KrRouteCADLine* line, double& x0, double& y0, double& x1, double& y1);

    // The line of h that the line p1-p2 crosses (KrRouteSegment::IsSecWith), or null.
    static KrRouteCADLine* CrossedLine(KrRouteSegment* h, double* p1, double* p2);

    std::size_t SegmentCount() const { return store.size(); }
    // Vertical extent of all geometry ever read (it only grows); false before any.
    bool VerticalExtent(double& yMin, double& yMax) const;

private:
    struct Key {
        std::int64_t cx;
        std::int64_t cy;
        bool operator==(Key const& o) const { return cx == o.cx && cy == o.cy; }
    };
    struct KeyHash {
        std::size_t operator()(Key const& k) const;
    };
    struct Entry {
        std::vector<Key> keys;  // cells that list this entry
        bool linked = false;
        std::size_t linkedPos = 0;  // place in linkedPlaces while linked
        bool always = false;    // geometry no cell can hold: a candidate of every query
        std::size_t stamp = 0;  // last query that visited this entry
        // The bounding box of the lines read (x0, y0, x1, y1), widened by the margin of the
        // cells; boxed is false when there is none (no lines, or geometry no cell can hold).
        bool boxed = false;
        double box[4] = {0.0, 0.0, 0.0, 0.0};
        bool twoEnds = false;   // exactly two ends, e0 and e1
        KrRoutingWayPoint* e0 = nullptr;
        KrRoutingWayPoint* e1 = nullptr;
    };

    bool Range(double x0, double y0, double x1, double y1, std::int64_t limit, Key& lo, Key& hi) const;
    void Unlink(std::size_t place);
    void Read(std::size_t place, std::vector<Key>& keys, bool& fits);
    void Attach(std::size_t place, std::vector<Key>& keys, bool fits);

    double cell;
    bool usable;
    std::vector<KrRouteSegment*> store;
    std::unordered_map<KrRouteSegment*, std::size_t> placeOf;
    std::vector<Entry> entries;
    std::unordered_map<Key, std::vector<std::size_t>, KeyHash> cells;
    std::vector<std::size_t> always;
    std::vector<std::size_t> linkedPlaces;
    std::size_t stamp;
    std::vector<KrRouteSegment*> dirty;
    // Scratch of Read.
    std::vector<KrRouteCADLine*> lineScratch;
    std::vector<Key> keyScratch;
    std::unordered_set<KrRouteSegment*> dirtySet;
    bool hasY;
    double yMin;
    double yMax;
};
