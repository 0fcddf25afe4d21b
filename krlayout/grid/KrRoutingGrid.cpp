// The routing grid: node lookup and creation, walks by direction, angle and length, and the
// moves of segments that a shifted line would cross.
#include <krlayout/grid/KrRoutingGrid.h>

#include <krlayout/grid/KrSegmentIndex.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/sketch/KrSketch.h>  // SetSketch takes a KrSketch*; moves read its placed segments

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>

namespace {

constexpr double kTol = GEO_TOLERANCE;
constexpr double kZero = 0.0;

// Cell indices stay below 2^50: there the rounding of v / size is at most 1/8, so two values
// closer than half a cell never land more than one cell apart. Larger values are outliers.
constexpr double kCellLimit = 1125899906842624.0;
// Cell size of the non-grid index: equal points (closer than tol) lie in neighbouring cells.
constexpr double kNonGridCell = 2.0 * GEO_TOLERANCE;
// Step limit of a walk whose length is non-finite or huge.
constexpr std::size_t kWalkCap = 10000000;
// Cross-move nesting beyond which further segment moves are postponed to the outermost call,
// so that long chains of segments pushing each other cannot exhaust the stack.
constexpr int kMaxMoveDepth = 256;
constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

// Truncation toward zero that saturates: NaN gives 0, values beyond the int range clamp to it.
int SaturateToInt(double v) {
    if (std::isnan(v)) {
        return 0;
    }
    if (v >= 2147483647.0) {
        return std::numeric_limits<int>::max();
    }
    if (v <= -2147483648.0) {
        return std::numeric_limits<int>::min();
    }
    return static_cast<int>(v);
}

bool CellSizeUsable(double size) { return std::isfinite(size) && size > 0.0; }

// Spacings for which the lattice index is used: a node within half a spacing (plus the tolerance)
// of a query then lies at one of at most four lattice indices per axis.
bool LatticeSpanUsable(double span) { return std::isfinite(span) && span >= 1.0e-3; }

std::uint64_t LatticeHash(std::int64_t bx, std::int64_t by) {
    std::uint64_t h = static_cast<std::uint64_t>(bx) * 0x9E3779B97F4A7C15ULL;
    h ^= static_cast<std::uint64_t>(by) + 0x7F4A7C159E3779B9ULL + (h << 6) + (h >> 2);
    h ^= h >> 31;
    h *= 0xBF58476D1CE4E5B9ULL;
    h ^= h >> 29;
    return h;
}

// Floor division by a positive block side.
std::int64_t BlockOf(std::int64_t i, std::int64_t side) {
    return i >= 0 ? i / side : -((-i + side - 1) / side);
}

// The lattice indices (ascending, within the int range) that a node within half a spacing of v
// can have on an axis of spacing span; count is 0 when there is none (v not finite, or beyond
// the nodes' saturated indices). A candidate still has to pass the exact test.
int LatticeCandidates(double v, double span, std::int32_t* out) {
    if (!std::isfinite(v)) {
        return 0;
    }
    // A node within half a spacing plus the tolerance is at most one index from the nearest: with
    // spacings of 1e-3 and more the tolerance and every rounding stay far below half an index.
    double const k = std::nearbyint(v / span);
    double const first = std::max(k - 1.0, -2147483648.0);
    double const last = std::min(k + 1.0, 2147483647.0);
    int count = 0;
    for (double i = first; i <= last && count < 3; i += 1.0) {
        out[count++] = static_cast<std::int32_t>(i);
    }
    return count;
}

// The index cell of v; false when v does not fit a cell (non-finite or too far out).
bool CellOf(double v, double size, std::int64_t& cell) {
    double const q = std::floor(v / size);
    if (!(std::fabs(q) < kCellLimit)) {
        return false;
    }
    cell = static_cast<std::int64_t>(q);
    return true;
}

// The cells a match of (x, y), lying within reach of it on each axis, can be in: those that the
// box [x -+ reachX] x [y -+ reachY] touches, never more than the query's own cell (cx, cy) and its
// neighbours (which is also what is left on an axis where the box does not fit the cells).
struct CellWindow {
    std::int64_t loX;
    std::int64_t hiX;
    std::int64_t loY;
    std::int64_t hiY;
};

CellWindow WindowOf(double x, double y, double reachX, double reachY, double sizeX, double sizeY,
                    std::int64_t cx, std::int64_t cy) {
    CellWindow w{cx - 1, cx + 1, cy - 1, cy + 1};
    std::int64_t c0 = 0;
    std::int64_t c1 = 0;
    if (CellOf(x - reachX, sizeX, c0) && CellOf(x + reachX, sizeX, c1)) {
        w.loX = std::max(w.loX, c0);
        w.hiX = std::min(w.hiX, c1);
    }
    if (CellOf(y - reachY, sizeY, c0) && CellOf(y + reachY, sizeY, c1)) {
        w.loY = std::max(w.loY, c0);
        w.hiY = std::min(w.hiY, c1);
    }
    return w;
}

// The smallest index below best that the cells of the window hold and that matches; best when
// there is none. The cells list their indices in ascending order.
template <class Index, class Matches>
std::size_t FirstInCells(Index const& index, CellWindow const& w, std::size_t best, Matches matches) {
    for (std::int64_t cx = w.loX; cx <= w.hiX; ++cx) {
        for (std::int64_t cy = w.loY; cy <= w.hiY; ++cy) {
            auto const it = index.find({cx, cy});
            if (it == index.end()) {
                continue;
            }
            for (std::size_t i : it->second) {
                if (i >= best) {
                    break;
                }
                if (matches(i)) {
                    best = i;
                    break;
                }
            }
        }
    }
    return best;
}

bool SameXY(KrRoutingWayPoint* a, KrRoutingWayPoint* b) {
    bool same = false;
    a->IsSamePoint(b, same);
    return same;
}

// One of a's first two ends (start and end) is also an end of b.
bool EndsOnSegment(KrRouteSegment* a, KrRouteSegment* b) {
    KrRoutingWayPoint* first = nullptr;
    if (a->GetOtherEnd(nullptr, first) != 0 || first == nullptr) {
        return false;
    }
    bool isEnd = false;
    b->IsOneEnd(first, isEnd);
    if (isEnd) {
        return true;
    }
    KrRoutingWayPoint* second = nullptr;
    if (a->GetOtherEnd(first, second) != 0 || second == nullptr) {
        return false;
    }
    b->IsOneEnd(second, isEnd);
    return isEnd;
}

// Segments meeting at a joint touch there; they do not cross.
bool ShareEnd(KrRouteSegment* a, KrRouteSegment* b) {
    return EndsOnSegment(a, b) || EndsOnSegment(b, a);
}

// Some CAD line (with two points or more) of seg properly intersects the segment target[0..3].
bool CrossesSegment(KrRouteSegment* seg, double const* target) {
    // Asked for every candidate of every shifted line: the list of lines is read into a buffer
    // kept per thread rather than into a new vector each time. Nothing below calls back here.
    thread_local std::vector<KrRouteCADLine*> lines;
    lines.clear();
    seg->GetAllCADLine(lines);
    for (KrRouteCADLine* line : lines) {
        if (line == nullptr) {
            continue;
        }
        bool ok = false;
        line->CheckPoint(ok);
        if (!ok) {
            continue;
        }
        double sx = 0.0;
        double sy = 0.0;
        double ex = 0.0;
        double ey = 0.0;
        if (!KrSegmentIndex::LineEnds(line, sx, sy, ex, ey)) {
            continue;
        }
        double px = 0.0;
        double py = 0.0;
        if (KrGeoUtility::LineSegment2DIntersection(&px, &py, target[0], target[1], target[2],
                                                    target[3], sx, sy, ex, ey, kTol) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::size_t KrRoutingGrid::CellKeyHash::operator()(CellKey const& key) const {
    std::uint64_t h = static_cast<std::uint64_t>(key.cx) * 0x9E3779B97F4A7C15ULL;
    h ^= static_cast<std::uint64_t>(key.cy) + 0x7F4A7C159E3779B9ULL + (h << 6) + (h >> 2);
    return static_cast<std::size_t>(h);
}

// Spacings and scales start at 0 (rather than unset) so that nothing reads an indeterminate
// value; a grid is meant to be used only after CreateGrids or SetGridSpan.
KrRoutingGrid::KrRoutingGrid()
    : ySpan(0.0),
      xSpan(0.0),
      scale1(0.0),
      scale2(0.0),
      scale3(0.0),
      scale4(0.0),
      sketch(nullptr),
      latticeIndexed(false),
      lastBlock(0),
      gridCellX(2.0 * kTol),
      gridCellY(2.0 * kTol),
      moveDepth(0),
      segmentIndex(nullptr),
      movedOf(nullptr),
      movedSeen(0),
      movedBatch(0) {}

KrRoutingGrid::KrRoutingGrid(KrRoutingGrid const& other) = default;

KrRoutingGrid& KrRoutingGrid::operator=(KrRoutingGrid const& other) = default;

KrRoutingGrid::~KrRoutingGrid() {
    // A caller may have registered a grid node as a non-grid node too: it is deleted once, with
    // the non-grid nodes. Each list holds a point at most once (grid nodes are made new, non-grid
    // registrations go through nonGridSet), and only a point some grid holds as a non-grid node
    // needs the lookup.
    for (KrRoutingWayPoint* p : gridNodes) {
        if (p->nonGridMarks != 0 && nonGridSet.count(p) != 0) {
            continue;
        }
        delete p;
    }
    gridNodes.clear();
    gridNodes.shrink_to_fit();
    for (KrRoutingWayPoint* p : nonGridNodes) {
        delete p;
    }
    nonGridNodes.clear();
    nonGridNodes.shrink_to_fit();
}

int KrRoutingGrid::CreateGrids(double x, double y, double s1, double s2, double s3, double s4) {
    SetGridSpan(x, y);
    SetScale(s1, s2, s3, s4);
    return 0;
}

int KrRoutingGrid::SetGridSpan(double x, double y) {
    xSpan = x;
    ySpan = y;
    RebuildGridIndex();
    return 0;
}

int KrRoutingGrid::GetGridSpan(double& x, double& y) {
    x = xSpan;
    y = ySpan;
    return 0;
}

int KrRoutingGrid::SetScale(double s1, double s2, double s3, double s4) {
    scale1 = s1;
    scale2 = s2;
    scale3 = s3;
    scale4 = s4;
    return 0;
}

int KrRoutingGrid::SetSketch(KrSketch* s) {
    sketch = s;
    return 0;
}

int KrRoutingGrid::GetSketch(KrSketch*& s) {
    s = sketch;
    return 0;
}

// ---------------------------------------------------------------------------------------------
// Lookup index

void KrRoutingGrid::RebuildGridIndex() {
    // A node matches within half a spacing plus the tolerance; a cell of a whole spacing plus two
    // tolerances keeps every match in the query's cell or a neighbouring one.
    double const cellX = std::fabs(xSpan) + 2.0 * kTol;
    double const cellY = std::fabs(ySpan) + 2.0 * kTol;
    if (gridNodes.empty()) {
        // Nodes are yet to come, all at the lattice of these spacings.
        latticeIndexed = LatticeSpanUsable(xSpan) && LatticeSpanUsable(ySpan);
        latticeBlocks.clear();
        latticeTable.clear();
        lastBlock = 0;
        gridCellX = cellX;
        gridCellY = cellY;
        gridIndex.clear();
        gridOutliers.clear();
        return;
    }
    bool const wasLattice = latticeIndexed;
    if (wasLattice) {
        // The existing nodes lie on the lattice of the former spacings: from now on they are
        // found through the cell index.
        latticeIndexed = false;
        std::vector<LatticeBlock>().swap(latticeBlocks);
        std::vector<std::uint32_t>().swap(latticeTable);
        lastBlock = 0;
    } else if (cellX == gridCellX && cellY == gridCellY) {
        return;
    }
    gridCellX = cellX;
    gridCellY = cellY;
    gridIndex.clear();
    gridOutliers.clear();
    for (std::size_t i = 0; i < gridNodes.size(); ++i) {
        IndexGridNode(i);
    }
}

// The number of the block (bx, by), kNone when there is none and create is false.
std::size_t KrRoutingGrid::LatticeBlockOf(std::int64_t bx, std::int64_t by, bool create) {
    if (lastBlock < latticeBlocks.size() && latticeBlocks[lastBlock].bx == bx &&
        latticeBlocks[lastBlock].by == by) {
        return lastBlock;
    }
    if (!latticeTable.empty()) {
        std::size_t const mask = latticeTable.size() - 1;
        for (std::size_t slot = LatticeHash(bx, by) & mask; latticeTable[slot] != 0; slot = (slot + 1) & mask) {
            std::size_t const b = latticeTable[slot] - 1;
            if (latticeBlocks[b].bx == bx && latticeBlocks[b].by == by) {
                lastBlock = b;
                return b;
            }
        }
    }
    if (!create) {
        return kNone;
    }
    LatticeBlock block;
    block.bx = bx;
    block.by = by;
    std::fill(std::begin(block.node), std::end(block.node), 0u);
    latticeBlocks.push_back(block);
    if (2 * latticeBlocks.size() > latticeTable.size()) {
        // Twice the size, every block filed anew (the new one with them).
        latticeTable.assign(latticeTable.empty() ? 64 : 2 * latticeTable.size(), 0u);
        for (std::size_t b = 0; b < latticeBlocks.size(); ++b) {
            FileLatticeBlock(b);
        }
    } else {
        FileLatticeBlock(latticeBlocks.size() - 1);
    }
    lastBlock = latticeBlocks.size() - 1;
    return lastBlock;
}

// Files block b in the first free slot of the table from its hash on.
void KrRoutingGrid::FileLatticeBlock(std::size_t b) {
    std::size_t const mask = latticeTable.size() - 1;
    std::size_t slot = LatticeHash(latticeBlocks[b].bx, latticeBlocks[b].by) & mask;
    while (latticeTable[slot] != 0) {
        slot = (slot + 1) & mask;
    }
    latticeTable[slot] = static_cast<std::uint32_t>(b + 1);
}

std::size_t KrRoutingGrid::LatticeFind(std::int32_t ix, std::int32_t iy) {
    std::int64_t const bx = BlockOf(ix, kLatticeBlockW);
    std::int64_t const by = BlockOf(iy, kLatticeBlockH);
    std::size_t const b = LatticeBlockOf(bx, by, false);
    if (b == kNone) {
        return kNone;
    }
    std::size_t const cell = static_cast<std::size_t>((iy - by * kLatticeBlockH) * kLatticeBlockW + (ix - bx * kLatticeBlockW));
    std::uint32_t const node = latticeBlocks[b].node[cell];
    return node == 0 ? kNone : static_cast<std::size_t>(node) - 1;
}

// Keeps the first node of a lattice position: a later one at the same indices has the same
// coordinates, so it matches exactly when the first does, and the first comes earlier. False
// when the index cannot number the node (the caller then moves to the cell index).
bool KrRoutingGrid::LatticeInsert(std::int32_t ix, std::int32_t iy, std::size_t index) {
    if (index >= 0xFFFFFFFEu || latticeBlocks.size() >= 0x7FFFFFFEu) {
        return false;
    }
    std::int64_t const bx = BlockOf(ix, kLatticeBlockW);
    std::int64_t const by = BlockOf(iy, kLatticeBlockH);
    std::size_t const b = LatticeBlockOf(bx, by, true);
    std::size_t const cell = static_cast<std::size_t>((iy - by * kLatticeBlockH) * kLatticeBlockW + (ix - bx * kLatticeBlockW));
    std::uint32_t& node = latticeBlocks[b].node[cell];
    if (node == 0) {
        node = static_cast<std::uint32_t>(index + 1);
    }
    return true;
}

// The first node in creation order that matches (x, y) while the lattice index is in use: the
// lattice positions near (x, y) that pass the exact test on each axis are looked up, and the
// smallest creation index among them wins, as in a scan of gridNodes.
KrRoutingWayPoint* KrRoutingGrid::FindLatticeNode(double x, double y) {
    std::int32_t xs[3];
    std::int32_t ys[3];
    int const nx = LatticeCandidates(x, xSpan, xs);
    int const ny = LatticeCandidates(y, ySpan, ys);
    double const hx = xSpan * 0.5;
    double const hy = ySpan * 0.5;
    int mx = 0;
    for (int i = 0; i < nx; ++i) {
        // The coordinate a node at this index was given: static_cast<double>(ix) * xSpan.
        double const dx = std::fabs(x - static_cast<double>(xs[i]) * xSpan);
        if (KrGeoUtility::LessEqualThan(dx, hx, kTol)) {
            xs[mx++] = xs[i];
        }
    }
    int my = 0;
    for (int i = 0; i < ny; ++i) {
        double const dy = std::fabs(y - static_cast<double>(ys[i]) * ySpan);
        if (KrGeoUtility::LessEqualThan(dy, hy, kTol)) {
            ys[my++] = ys[i];
        }
    }
    std::size_t best = kNone;
    for (int i = 0; i < mx; ++i) {
        for (int j = 0; j < my; ++j) {
            best = std::min(best, LatticeFind(xs[i], ys[j]));
        }
    }
    return best == kNone ? nullptr : gridNodes[best];
}

void KrRoutingGrid::IndexGridNode(std::size_t index) {
    double gx = 0.0;
    double gy = 0.0;
    gridNodes[index]->GetGridCoord(gx, gy);
    CellKey key{0, 0};
    if (CellSizeUsable(gridCellX) && CellSizeUsable(gridCellY) && CellOf(gx, gridCellX, key.cx) &&
        CellOf(gy, gridCellY, key.cy)) {
        gridIndex[key].push_back(index);
    } else {
        gridOutliers.push_back(index);
    }
}

void KrRoutingGrid::IndexNonGridNode(std::size_t index) {
    double gx = 0.0;
    double gy = 0.0;
    nonGridNodes[index]->GetGridCoord(gx, gy);
    CellKey key{0, 0};
    if (CellOf(gx, kNonGridCell, key.cx) && CellOf(gy, kNonGridCell, key.cy)) {
        nonGridIndex[key].push_back(index);
    } else {
        nonGridOutliers.push_back(index);
    }
}

bool KrRoutingGrid::GridNodeMatches(std::size_t index, double x, double y) {
    double gx = 0.0;
    double gy = 0.0;
    gridNodes[index]->GetGridCoord(gx, gy);
    double const dx = std::fabs(x - gx);
    double const dy = std::fabs(y - gy);
    double const hx = xSpan * 0.5;
    double const hy = ySpan * 0.5;
    return KrGeoUtility::LessEqualThan(dx, hx, kTol) && KrGeoUtility::LessEqualThan(dy, hy, kTol);
}

bool KrRoutingGrid::NonGridNodeMatches(std::size_t index, double x, double y) {
    double gx = 0.0;
    double gy = 0.0;
    nonGridNodes[index]->GetGridCoord(gx, gy);
    return KrGeoUtility::IsEqual(gx, x, kTol) && KrGeoUtility::IsEqual(gy, y, kTol);
}

// The first grid node in creation order that matches (x, y), as a scan of gridNodes would find
// it: the candidates come from the index, and the smallest matching creation index wins.
KrRoutingWayPoint* KrRoutingGrid::FindGridNode(double x, double y) {
    if (latticeIndexed) {
        return FindLatticeNode(x, y);
    }
    CellKey key{0, 0};
    bool const indexed = CellSizeUsable(gridCellX) && CellSizeUsable(gridCellY) &&
                         CellOf(x, gridCellX, key.cx) && CellOf(y, gridCellY, key.cy);
    if (!indexed) {
        for (std::size_t i = 0; i < gridNodes.size(); ++i) {
            if (GridNodeMatches(i, x, y)) {
                return gridNodes[i];
            }
        }
        return nullptr;
    }
    std::size_t best = kNone;
    for (std::size_t i : gridOutliers) {  // ascending
        if (GridNodeMatches(i, x, y)) {
            best = i;
            break;
        }
    }
    // A match lies within half a spacing (plus the tolerance) of (x, y) on each axis: only the
    // cells that this interval touches can hold one, usually two per axis instead of three. The
    // widening covers the tolerance and the rounding of the bounds far from the origin.
    double const reachX = 0.5 * std::fabs(xSpan) + 2.0 * kTol + 1e-9 * (std::fabs(x) + std::fabs(xSpan));
    double const reachY = 0.5 * std::fabs(ySpan) + 2.0 * kTol + 1e-9 * (std::fabs(y) + std::fabs(ySpan));
    CellWindow const w = WindowOf(x, y, reachX, reachY, gridCellX, gridCellY, key.cx, key.cy);
    best = FirstInCells(gridIndex, w, best, [&](std::size_t i) { return GridNodeMatches(i, x, y); });
    return best == kNone ? nullptr : gridNodes[best];
}

// The first non-grid node in insertion order equal to (x, y) on both axes.
KrRoutingWayPoint* KrRoutingGrid::FindNonGridNode(double x, double y) {
    CellKey key{0, 0};
    if (!CellOf(x, kNonGridCell, key.cx) || !CellOf(y, kNonGridCell, key.cy)) {
        for (std::size_t i = 0; i < nonGridNodes.size(); ++i) {
            if (NonGridNodeMatches(i, x, y)) {
                return nonGridNodes[i];
            }
        }
        return nullptr;
    }
    std::size_t best = kNone;
    for (std::size_t i : nonGridOutliers) {
        if (NonGridNodeMatches(i, x, y)) {
            best = i;
            break;
        }
    }
    // A match lies within the tolerance of (x, y) on each axis: only the cells that this interval
    // touches can hold one, one or two per axis instead of three. The widening covers the rounding
    // of the bounds far from the origin.
    double const reachX = kTol * (1.0 + 1e-6) + 1e-12 * std::fabs(x);
    double const reachY = kTol * (1.0 + 1e-6) + 1e-12 * std::fabs(y);
    CellWindow const w = WindowOf(x, y, reachX, reachY, kNonGridCell, kNonGridCell, key.cx, key.cy);
    best = FirstInCells(nonGridIndex, w, best, [&](std::size_t i) { return NonGridNodeMatches(i, x, y); });
    return best == kNone ? nullptr : nonGridNodes[best];
}

// ---------------------------------------------------------------------------------------------
// Lookup

int KrRoutingGrid::GetGridNode(double x, double y, KrRoutingWayPoint*& node) {
    KrRoutingWayPoint* found = FindGridNode(x, y);
    if (found == nullptr) {
        // Lattice index rounded half away from zero, truncated (saturating) to 32 bits.
        double const fx = KrGeoUtility::LargerEqualThan(x, kZero, kTol) ? x / xSpan + 0.5
                                                                         : x / xSpan - 0.5;
        double const fy = KrGeoUtility::LargerEqualThan(y, kZero, kTol) ? y / ySpan + 0.5
                                                                         : y / ySpan - 0.5;
        int const ix = SaturateToInt(fx);
        int const iy = SaturateToInt(fy);
        found = new KrRoutingWayPoint();
        found->SetGridCoord(static_cast<double>(ix) * xSpan, static_cast<double>(iy) * ySpan);
        gridNodes.push_back(found);
        if (!latticeIndexed) {
            IndexGridNode(gridNodes.size() - 1);
        } else if (!LatticeInsert(ix, iy, gridNodes.size() - 1)) {
            // Too many nodes to number in the lattice blocks: every node goes to the cell index.
            latticeIndexed = false;
            std::vector<LatticeBlock>().swap(latticeBlocks);
            std::vector<std::uint32_t>().swap(latticeTable);
            lastBlock = 0;
            for (std::size_t i = 0; i < gridNodes.size(); ++i) {
                IndexGridNode(i);
            }
        }
    }
    node = found;
    return 0;
}

int KrRoutingGrid::GetNonGridNode(double x, double y, KrRoutingWayPoint*& node) {
    KrRoutingWayPoint* lattice = nullptr;
    GetGridNode(x, y, lattice);
    double gx = 0.0;
    double gy = 0.0;
    lattice->GetGridCoord(gx, gy);
    if (KrGeoUtility::IsEqual(gx, x, kTol) && KrGeoUtility::IsEqual(gy, y, kTol)) {
        node = lattice;
        return 0;
    }
    KrRoutingWayPoint* found = FindNonGridNode(x, y);
    if (found == nullptr) {
        found = new KrRoutingWayPoint();
        found->SetGridCoord(x, y);
        AddNonNodePoint(found);
    }
    node = found;
    return 0;
}

int KrRoutingGrid::AddNonNodePoint(KrRoutingWayPoint* p) {
    if (p == nullptr) {
        return 1;
    }
    if (!nonGridSet.insert(p).second) {
        return 0;
    }
    ++p->nonGridMarks;
    nonGridNodes.push_back(p);
    IndexNonGridNode(nonGridNodes.size() - 1);
    return 0;
}

int KrRoutingGrid::IsNonGridNode(KrRoutingWayPoint* p, bool& result) {
    if (p == nullptr) {
        return 1;
    }
    // Only a point that some grid holds as a non-grid node needs the lookup.
    result = p->nonGridMarks != 0 && nonGridSet.count(p) != 0;
    return 0;
}

int KrRoutingGrid::GetRowNum(double y, int& row) {
    row = SaturateToInt(std::floor(y / ySpan + 0.5));
    return 0;
}

int KrRoutingGrid::GetAllWayPoint(std::vector<KrRoutingWayPoint*>& out) {
    out.insert(out.end(), gridNodes.begin(), gridNodes.end());
    return 0;
}

int KrRoutingGrid::ArrangeVector(std::vector<KrRoutingWayPoint*>&, bool, bool) { return 0; }

// ---------------------------------------------------------------------------------------------
// Traversal

int KrRoutingGrid::GetNextHorGridNode(KrRoutingWayPoint* p, double angle,
                                      KrRoutingWayPoint*& next) {
    if (p == nullptr) {
        return 1;
    }
    double px = 0.0;
    double py = 0.0;
    p->GetGridCoord(px, py);
    double const c = std::cos(angle);
    double const x = KrGeoUtility::LargerThan(c, kZero, kTol) ? px + xSpan : px - xSpan;
    return GetGridNode(x, py, next);
}

int KrRoutingGrid::GetNextNodeByDirect(KrRoutingWayPoint* from, KrRoutingWayPoint* to,
                                       KrRoutingWayPoint*& next) {
    if (from == nullptr || to == nullptr) {
        return 1;
    }
    double f[2] = {0.0, 0.0};
    double t[2] = {0.0, 0.0};
    from->GetGridCoord(f);
    to->GetGridCoord(t);
    double u[2] = {t[0] - f[0], t[1] - f[1]};
    KrGeoUtility::UniteVector(u, 2);  // a zero vector becomes (0, 0): the node at `to`
    return GetGridNode(t[0] + u[0] * xSpan, t[1] + u[1] * ySpan, next);
}

int KrRoutingGrid::GetNextNodeByDirect(KrRoutingWayPoint* p, double* direction,
                                       KrRoutingWayPoint*& next) {
    if (p == nullptr || direction == nullptr) {
        return 1;
    }
    double px = 0.0;
    double py = 0.0;
    p->GetGridCoord(px, py);
    KrRoutingWayPoint* n = nullptr;
    GetGridNode(px, py, n);
    bool onLattice = false;
    p->IsSamePoint(n, onLattice);
    KrGeoUtility::UniteVector(direction, 2);
    double const dx = direction[0];
    double const dy = direction[1];
    // "dy is 0" is the tolerant test, like every other comparison with 0 here: float noise in
    // a nearly horizontal direction must not turn into a huge x step.
    bool const level = KrGeoUtility::IsEqual(dy, kZero, kTol);

    double baseX = px;
    double baseY = py;
    double stepX = 0.0;
    double stepY = 0.0;
    if (!onLattice) {
        double nx = 0.0;
        double ny = 0.0;
        n->GetGridCoord(nx, ny);
        double v[2] = {nx - px, ny - py};
        KrGeoUtility::UniteVector(v, 2);
        if (KrGeoUtility::IsEqual(v[0], dx, kTol) && KrGeoUtility::IsEqual(v[1], dy, kTol)) {
            next = n;  // the snap already moves in the wanted direction
            return 0;
        }
        baseX = nx;
        baseY = ny;
        stepX = level ? xSpan * dx : xSpan * dx / std::fabs(dy);
    } else {
        // On the lattice the slanted x step is scaled by the y spacing (on purpose).
        stepX = level ? xSpan * dx : ySpan * dx / std::fabs(dy);
    }
    stepY = level ? dy * ySpan : dy * ySpan / std::fabs(dy);
    return GetGridNode(baseX + stepX, baseY + stepY, next);
}

int KrRoutingGrid::GetPointByAngle(KrRoutingWayPoint* p, double angle, int row,
                                   KrRoutingWayPoint*& first,
                                   std::vector<KrRoutingWayPoint*>& points) {
    if (p == nullptr) {
        return 1;
    }
    double dx = 0.0;
    double dy = 0.0;
    if (KrGeoUtility::IsEqual(angle, kZero, kTol)) {
        dx = xSpan;
    } else if (KrGeoUtility::IsEqual(angle, KR_PI, kTol)) {
        dx = -xSpan;
    } else if (KrGeoUtility::IsEqual(angle, HALF_PI, kTol) ||
               KrGeoUtility::IsEqual(angle, KR_THREE_HALF_PI, kTol)) {
        dy = static_cast<double>(row) * ySpan;  // the sign of row decides up or down
    } else {
        dy = static_cast<double>(row) * ySpan;
        dx = dy / std::tan(angle);
    }
    double px = 0.0;
    double py = 0.0;
    p->GetGridCoord(px, py);
    double const tx = px + dx;
    double const ty = py + dy;
    KrRoutingWayPoint* n = nullptr;
    GetGridNode(tx, ty, n);
    double nx = 0.0;
    double ny = 0.0;
    n->GetGridCoord(nx, ny);
    if (KrGeoUtility::IsEqual(nx, tx, kTol) && KrGeoUtility::IsEqual(ny, ty, kTol)) {
        first = n;
        GetAllNodeBetweenTwoPoint(p, n, points);
        return 0;
    }
    KrRoutingWayPoint* off = new KrRoutingWayPoint();
    off->SetGridCoord(tx, ty);
    AddNonNodePoint(off);
    first = off;
    points.push_back(p);
    points.push_back(off);
    return 0;
}

int KrRoutingGrid::GetEndPointByLength(KrRouteSegment* seg, KrRoutingWayPoint* start,
                                       KrRoutingWayPoint* next, KrRoutingWayPoint*& end) {
    if (seg == nullptr || start == nullptr || next == nullptr) {
        return 1;
    }
    double s[2] = {0.0, 0.0};
    double n[2] = {0.0, 0.0};
    start->GetGridCoord(s);
    next->GetGridCoord(n);
    double const dist = KrGeoUtility::GetLength(s, n, 2);
    double length = 0.0;
    seg->GetLength(length);
    double angle = 0.0;
    seg->GetDirectAngle(angle);
    e_AngleArea type = e_AngleAreaNone;
    seg->GetType(type);

    // Shorter than the first step: the segment ends at `next` itself (no snap).
    if (KrGeoUtility::LessThan(length, dist, kTol)) {
        end = next;
        return 0;
    }
    double const rest = length - dist;
    double const c = std::cos(angle);
    double x = 0.0;
    // Tolerant tests against 0: cos of the pi/2 and 3pi/2 literals is about 1e-11 and counts
    // as vertical.
    if (KrGeoUtility::LargerThan(c, kZero, kTol)) {
        x = n[0] + rest;
    } else if (KrGeoUtility::LessThan(c, kZero, kTol)) {
        x = n[0] - rest;
    } else {
        switch (type) {
            case e_AngleAreaQuarter1:
            case e_AngleAreaQuarter4:
                x = n[0] + rest;
                break;
            case e_AngleAreaQuarter2:
            case e_AngleAreaQuarter3:
                x = n[0] - rest;
                break;
            default:
                x = 0.0;  // falls back to x = 0 on the row of `next`, as it always did
                break;
        }
    }
    KrRoutingWayPoint* node = nullptr;
    GetGridNode(x, n[1], node);
    double gx = 0.0;
    double gy = 0.0;
    node->GetGridCoord(gx, gy);
    double v[2] = {gx - x, gy - n[1]};  // the rounding error of the snap
    bool match = false;
    IsDirectMatch(type, v, match);
    if (match) {
        end = node;
        return 0;
    }
    double back[2] = {-v[0], -v[1]};
    return GetNextNodeByDirect(node, back, end);
}

std::size_t KrRoutingGrid::WalkBound(double dx, double dy) const {
    double const sx = std::fabs(xSpan);
    double const sy = std::fabs(ySpan);
    if (!CellSizeUsable(sx) || !CellSizeUsable(sy)) {
        return 0;  // a zero or non-finite spacing cannot advance a walk
    }
    double const steps = std::fabs(dx) / sx + std::fabs(dy) / sy + 4.0;
    if (!(steps < static_cast<double>(kWalkCap))) {
        return kWalkCap;  // non-finite or huge
    }
    return static_cast<std::size_t>(steps);
}

// Walks that cannot reach b (b off the lattice, a spacing that does not divide the distance, a
// negative spacing) stop after WalkBound steps, or as soon as the next position lies beyond b
// along a -> b; b is then not appended. Walks that reach b list exactly the nodes met.
int KrRoutingGrid::GetAllNodeBetweenTwoPoint(KrRoutingWayPoint* a, KrRoutingWayPoint* b,
                                             std::vector<KrRoutingWayPoint*>& points) {
    if (a == nullptr || b == nullptr) {
        return 1;
    }
    if (SameXY(a, b)) {
        points.push_back(b);
        return 0;
    }
    double ax = 0.0;
    double ay = 0.0;
    double bx = 0.0;
    double by = 0.0;
    a->GetGridCoord(ax, ay);
    b->GetGridCoord(bx, by);
    double const dx = bx - ax;
    double const dy = by - ay;
    double const len = std::sqrt(dx * dx + dy * dy);
    double const ux = dx / len;
    double const uy = dy / len;
    // Beyond b by at least the tolerance (NaN counts as beyond).
    auto beyond = [&](double qx, double qy) {
        double const along = (qx - ax) * ux + (qy - ay) * uy;
        return !(along - len < kTol);
    };
    std::size_t const bound = WalkBound(dx, dy);
    points.push_back(a);

    if (KrGeoUtility::IsEqual(dy, kZero, kTol) || KrGeoUtility::IsEqual(dx, kZero, kTol)) {
        KrRoutingWayPoint* current = a;
        for (std::size_t step = 0; step < bound; ++step) {
            double dir[2] = {dx, dy};
            KrRoutingWayPoint* next = nullptr;
            GetNextNodeByDirect(current, dir, next);
            if (next == nullptr) {
                break;
            }
            bool const reached = SameXY(next, b);
            if (!reached) {
                double nx = 0.0;
                double ny = 0.0;
                next->GetGridCoord(nx, ny);
                if (beyond(nx, ny)) {
                    break;
                }
            }
            points.push_back(next);
            if (reached) {
                break;
            }
            current = next;
        }
        return 0;
    }

    // Slanted: a scratch point walks the exact line one row at a time; only lattice nodes lying
    // exactly on it (both coordinates equal within the tolerance) are listed.
    KrRoutingWayPoint scratch;
    scratch.SetGridCoord(ax, ay);
    double const stepX = ySpan * dx / std::fabs(dy);
    double const stepY = ySpan * dy / std::fabs(dy);
    for (std::size_t step = 0; step < bound; ++step) {
        double cx = 0.0;
        double cy = 0.0;
        scratch.GetGridCoord(cx, cy);
        double const ex = cx + stepX;
        double const ey = cy + stepY;
        bool const reachesB = KrGeoUtility::IsEqual(ex, bx, kTol) && KrGeoUtility::IsEqual(ey, by, kTol);
        if (!reachesB && beyond(ex, ey)) {
            break;
        }
        double dir[2] = {dx, dy};
        KrRoutingWayPoint* node = nullptr;
        GetNextNodeByDirect(&scratch, dir, node);
        double nx = 0.0;
        double ny = 0.0;
        if (node != nullptr) {
            node->GetGridCoord(nx, ny);
        }
        if (node != nullptr && KrGeoUtility::IsEqual(nx, ex, kTol) &&
            KrGeoUtility::IsEqual(ny, ey, kTol)) {
            points.push_back(node);
            scratch.SetGridCoord(nx, ny);
        } else {
            scratch.SetGridCoord(ex, ey);
        }
        if (SameXY(&scratch, b)) {
            break;
        }
    }
    return 0;
}

int KrRoutingGrid::IsDirectMatch(e_AngleArea area, double* v, bool& match) {
    if (v == nullptr) {
        return 1;
    }
    match = false;
    bool const xPos = KrGeoUtility::LargerEqualThan(v[0], kZero, kTol);
    bool const xNeg = KrGeoUtility::LessEqualThan(v[0], kZero, kTol);
    bool const yPos = KrGeoUtility::LargerEqualThan(v[1], kZero, kTol);
    bool const yNeg = KrGeoUtility::LessEqualThan(v[1], kZero, kTol);
    switch (area) {
        case e_AngleAreaRoot:
            match = true;
            break;
        case e_AngleAreaPositiveX:
            match = xPos;
            break;
        case e_AngleAreaNegativeX:
            match = xNeg;
            break;
        case e_AngleAreaQuarter1:
            match = xPos && yPos;
            break;
        case e_AngleAreaQuarter2:
            match = xNeg && yPos;
            break;
        case e_AngleAreaQuarter3:
            match = xNeg && yNeg;
            break;
        case e_AngleAreaQuarter4:
            match = xPos && yNeg;
            break;
        default:
            break;
    }
    return 0;
}

// A segment crosses the line when the line's target position (start and end shifted by
// (dx, dy)) properly intersects (intersection code 0) one of the segment's CAD lines.
// Candidates are the placed segments of the grid's sketch in store order (without a sketch: the
// segments whose lines pass through way points of this grid, grid nodes in creation order, then
// non-grid nodes, segments in first-seen order) that are not the line's own segment, are not
// yet in `moved` and share no end with the line's segment. Reading the sketch's list keeps a
// move linear in the number of segments rather than in the number of grid nodes.
// Each crossing one is listed in `moved`, then moved by the same offset; a listed segment is
// never taken again, so moves that push each other always end.
int KrRoutingGrid::MoveCrossSegment(KrRouteCADLine* line, double dx, double dy,
                                    std::vector<KrRouteSegment*>& moved) {
    if (line == nullptr) {
        return 1;
    }
    bool ok = false;
    line->CheckPoint(ok);
    if (!ok) {
        return 0;  // no two points, no target position
    }
    double target[4] = {0.0, 0.0, 0.0, 0.0};
    if (!KrSegmentIndex::LineEnds(line, target[0], target[1], target[2], target[3])) {
        return 0;
    }
    target[0] += dx;
    target[1] += dy;
    target[2] += dx;
    target[3] += dy;
    KrRouteSegment* own = nullptr;
    line->GetParentSegment(own);

    // Membership in `moved`. Without the index: a set of the entries present now, plus a scan of
    // the few entries that nested moves append while this call runs. With it: the batch's set.
    bool const indexed = segmentIndex != nullptr && segmentIndex->Usable();
    std::unordered_set<KrRouteSegment*> movedBefore;
    if (indexed) {
        if (movedOf != &moved || moved.size() < movedSeen) {
            static std::atomic<std::uint64_t> batches{0};
            movedOf = &moved;
            movedSeen = 0;
            movedBatch = ++batches;
        }
    } else {
        movedBefore.insert(moved.begin(), moved.end());
    }
    std::size_t const movedStart = moved.size();
    auto isMoved = [&](KrRouteSegment* seg) {
        if (indexed) {
            for (; movedSeen < moved.size(); ++movedSeen) {
                if (moved[movedSeen] != nullptr) {
                    moved[movedSeen]->moveMark.batch = movedBatch;
                }
            }
            return seg->moveMark.batch == movedBatch;
        }
        return movedBefore.count(seg) != 0 ||
               std::find(moved.begin() + static_cast<std::ptrdiff_t>(movedStart), moved.end(),
                         seg) != moved.end();
    };
    auto takes = [&](KrRouteSegment* cand) {
        if (cand == nullptr || cand == own || isMoved(cand)) {
            return false;
        }
        bool placed = false;
        cand->IsRedefine(placed);
        return placed && !(own != nullptr && ShareEnd(own, cand)) && CrossesSegment(cand, target);
    };
    auto moveOne = [&](KrRouteSegment* cand) {
        moved.push_back(cand);
        if (moveDepth > kMaxMoveDepth) {
            pendingMoves.push_back(PendingMove{cand, dx, dy, &moved});
        } else {
            cand->Move(this, dx, dy, moved);
            if (segmentIndex != nullptr) {
                segmentIndex->MarkDirty(cand);
            }
        }
    };

    ++moveDepth;
    if (indexed) {
        // The same candidates in the same order as the scan below: the placed segments of the
        // store, each tested with its geometry at the moment the scan would reach it. Geometry
        // changes only when a candidate is moved, so after each move the candidates beyond the
        // moved one are asked for again. The line's own segment may be in the middle of a move.
        segmentIndex->MarkDirty(own);
        std::vector<std::size_t> places;
        std::size_t from = 0;
        bool more = true;
        while (more) {
            more = false;
            segmentIndex->Candidates(target[0], target[1], target[2], target[3], places);
            for (auto it = std::lower_bound(places.begin(), places.end(), from); it != places.end(); ++it) {
                KrRouteSegment* cand = segmentIndex->At(*it);
                if (!takes(cand)) {
                    continue;
                }
                from = *it + 1;
                moveOne(cand);
                more = true;
                break;
            }
        }
    } else {
        std::vector<KrRouteSegment*> candidates;
        if (sketch != nullptr) {
            sketch->GetAllHandledRouteSegment(candidates);
        } else {
            std::unordered_set<KrRouteSegment*> seen;
            std::vector<KrRouteCADLine*> parents;
            auto collect = [&](std::vector<KrRoutingWayPoint*> const& nodes) {
                for (KrRoutingWayPoint* p : nodes) {
                    parents.clear();
                    p->GetParent(parents);
                    for (KrRouteCADLine* l : parents) {
                        KrRouteSegment* seg = nullptr;
                        if (l != nullptr) {
                            l->GetParentSegment(seg);
                        }
                        if (seg != nullptr && seen.insert(seg).second) {
                            candidates.push_back(seg);
                        }
                    }
                }
            };
            collect(gridNodes);
            collect(nonGridNodes);
        }
        for (KrRouteSegment* cand : candidates) {
            if (takes(cand)) {
                moveOne(cand);
            }
        }
    }
    if (moveDepth == 1) {
        // The outermost call carries out the moves postponed by deep nesting, in their order.
        for (std::size_t i = 0; i < pendingMoves.size(); ++i) {
            PendingMove const pending = pendingMoves[i];
            pending.segment->Move(this, pending.dx, pending.dy, *pending.moved);
            if (segmentIndex != nullptr) {
                segmentIndex->MarkDirty(pending.segment);
            }
        }
        pendingMoves.clear();
    }
    --moveDepth;
    return 0;
}
