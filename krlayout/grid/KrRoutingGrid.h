// The orthogonal lattice on which route segments are laid out. Owns every way point it hands out.
//
// Lookups keep first-match-in-creation-order semantics but find their candidates through a
// private hash index keyed by each node's coordinates when it was stored. Callers must therefore
// never rewrite (SetGridCoord) the coordinates of a way point the grid owns: grid nodes, non-grid
// nodes and points registered with AddNonNodePoint. The library itself never does.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/model/e_AngleArea.h>

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class KrRouteCADLine;
class KrRouteSegment;
class KrSegmentIndex;
class KrRoutingWayPoint;
class KrSketch;

class KRLAYOUT_EXPORT KrRoutingGrid {
public:
    KrRoutingGrid();
    // Member-wise (the node vectors are copied shallowly); the library never copies a grid.
    KrRoutingGrid(KrRoutingGrid const& other);
    KrRoutingGrid& operator=(KrRoutingGrid const& other);
    // Deletes every grid node, then every non-grid node.
    ~KrRoutingGrid();

    // Construction and lookup. Spacings and scales read 0 until set.
    int CreateGrids(double xSpan, double ySpan, double s1, double s2, double s3, double s4);
    int SetGridSpan(double x, double y);
    int GetGridSpan(double& x, double& y);
    int SetScale(double s1, double s2, double s3, double s4);
    int SetSketch(KrSketch* sketch);
    int GetSketch(KrSketch*& sketch);
    // The first grid node (creation order) within half a spacing on both axes; created on
    // demand at the lattice position rounded half away from zero.
    int GetGridNode(double x, double y, KrRoutingWayPoint*& node);
    // The way point exactly at (x, y): the lattice node there, else the first non-grid node
    // there, else a new non-grid node. Always creates the lattice node as a side effect.
    int GetNonGridNode(double x, double y, KrRoutingWayPoint*& node);
    // Registers p as a non-grid node; the grid then owns (and deletes) it. Null gives 1.
    int AddNonNodePoint(KrRoutingWayPoint* p);
    // Null p gives 1 and leaves result untouched.
    int IsNonGridNode(KrRoutingWayPoint* p, bool& result);
    // floor(y / ySpan + 0.5), saturated to the int range (NaN gives 0).
    int GetRowNum(double y, int& row);
    int GetAllWayPoint(std::vector<KrRoutingWayPoint*>& out);
    int ArrangeVector(std::vector<KrRoutingWayPoint*>& points, bool a, bool b);  // no-op

    // Traversal. A null way point, segment, line or vector argument gives 1 and writes nothing.
    // Walks stop after a number of steps bounded by the distance over the spacing.
    int GetNextHorGridNode(KrRoutingWayPoint* p, double angle, KrRoutingWayPoint*& next);
    int GetNextNodeByDirect(KrRoutingWayPoint* from, KrRoutingWayPoint* to,
                            KrRoutingWayPoint*& next);
    int GetNextNodeByDirect(KrRoutingWayPoint* p, double* direction, KrRoutingWayPoint*& next);
    int GetPointByAngle(KrRoutingWayPoint* p, double angle, int row, KrRoutingWayPoint*& first,
                        std::vector<KrRoutingWayPoint*>& points);
    int GetEndPointByLength(KrRouteSegment* seg, KrRoutingWayPoint* start,
                            KrRoutingWayPoint* next, KrRoutingWayPoint*& end);
    int GetAllNodeBetweenTwoPoint(KrRoutingWayPoint* a, KrRoutingWayPoint* b,
                                  std::vector<KrRoutingWayPoint*>& points);
    int IsDirectMatch(e_AngleArea area, double* v, bool& match);
    // Moves (by dx, dy) every placed segment, other than the line's own and those already in
    // moved, whose CAD line the line's shifted position crosses; each is listed in moved first.
    int MoveCrossSegment(KrRouteCADLine* line, double dx, double dy,
                         std::vector<KrRouteSegment*>& moved);

private:
    // The layout lends the grid its index of placed segments for the time of one LayOut call.
    friend class KrRoutingLayout;

    // Lattice cell of the lookup index.
    struct CellKey {
        std::int64_t cx;
        std::int64_t cy;
        bool operator==(CellKey const& other) const { return cx == other.cx && cy == other.cy; }
    };
    struct CellKeyHash {
        std::size_t operator()(CellKey const& key) const;
    };
    using CellIndex = std::unordered_map<CellKey, std::vector<std::size_t>, CellKeyHash>;

    // A segment move postponed because the cross-move recursion got too deep.
    struct PendingMove {
        KrRouteSegment* segment;
        double dx;
        double dy;
        std::vector<KrRouteSegment*>* moved;
    };

    // A block of the lattice index: kLatticeBlockW x kLatticeBlockH lattice positions starting
    // at lattice indices (bx * W, by * H), each with the creation index plus one of the first
    // node made there (0: none yet). Blocks keep the nodes of a line together in memory.
    static constexpr int kLatticeBlockW = 8;
    static constexpr int kLatticeBlockH = 4;
    struct LatticeBlock {
        std::int64_t bx;
        std::int64_t by;
        std::uint32_t node[kLatticeBlockW * kLatticeBlockH];
    };
    bool GridNodeMatches(std::size_t index, double x, double y);
    std::size_t LatticeBlockOf(std::int64_t bx, std::int64_t by, bool create);
    void FileLatticeBlock(std::size_t b);
    std::size_t LatticeFind(std::int32_t ix, std::int32_t iy);
    bool LatticeInsert(std::int32_t ix, std::int32_t iy, std::size_t index);
    KrRoutingWayPoint* FindLatticeNode(double x, double y);
    bool NonGridNodeMatches(std::size_t index, double x, double y);
    KrRoutingWayPoint* FindGridNode(double x, double y);
    KrRoutingWayPoint* FindNonGridNode(double x, double y);
    void IndexGridNode(std::size_t index);
    void IndexNonGridNode(std::size_t index);
    void RebuildGridIndex();
    std::size_t WalkBound(double dx, double dy) const;

    double ySpan;
    double xSpan;
    double scale1;
    double scale2;
    double scale3;
    double scale4;
    KrSketch* sketch;
    std::vector<KrRoutingWayPoint*> gridNodes;
    std::vector<KrRoutingWayPoint*> nonGridNodes;

    // While every grid node was created at the lattice of the current spacings (both finite and
    // at least 1e-3), gridNodes are found through the lattice index: blocks of lattice positions,
    // whose nodes have coordinates exactly ix * xSpan and iy * ySpan, found through an
    // open-addressing table of block numbers plus one (latticeTable) keyed by the block's indices;
    // the block asked last is remembered. Changing the spacings once nodes exist ends this for
    // good (as do more than 2^32 - 2 nodes); the cell index below then takes over.
    bool latticeIndexed;
    std::vector<LatticeBlock> latticeBlocks;
    std::vector<std::uint32_t> latticeTable;
    std::size_t lastBlock;
    // Otherwise, the lookup index of gridNodes: cells of (|xSpan| + 2 tol) by (|ySpan| + 2 tol), so every node
    // within half a spacing of a query lies in the query's cell or a neighbouring one. Nodes whose
    // coordinates do not fit a cell are kept in gridOutliers and tested on every lookup.
    double gridCellX;
    double gridCellY;
    CellIndex gridIndex;
    std::vector<std::size_t> gridOutliers;
    // Lookup index of nonGridNodes: cells of 2 tol, likewise with outliers.
    CellIndex nonGridIndex;
    std::vector<std::size_t> nonGridOutliers;
    std::unordered_set<KrRoutingWayPoint*> nonGridSet;
    // Cross-move recursion depth and the moves postponed beyond the depth limit.
    int moveDepth;
    std::vector<PendingMove> pendingMoves;
    // Index of the placed segments of the grid's sketch, owned by the layout running on this grid
    // (null outside LayOut): the cross-segment moves take their candidates from it.
    KrSegmentIndex* segmentIndex;
    // Membership of the list of moved segments of the current batch of moves (with the index
    // only): the list only grows during a batch, so its entries are marked as they appear instead
    // of being collected anew by every call. The layout starts a new batch with movedOf null.
    std::vector<KrRouteSegment*> const* movedOf;
    std::size_t movedSeen;
    // The number of the current batch: its listed segments carry it as their move mark. Numbers
    // come from one counter for all grids, so a mark never matches another batch. A segment takes
    // part in one batch at a time (the batches of one grid follow each other, and a segment is
    // laid out on one grid at a time).
    std::uint64_t movedBatch;
};
