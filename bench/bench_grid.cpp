// Routing grid node lookup and creation, and segment intersection, on grids of 1k, 10k and 100k
// nodes. Nodes lie on a unit lattice of kColumns columns, row after row.
#include <krlayout/krlayout.h>

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace {

constexpr std::int64_t kColumns = 100;

void NodeCoord(std::int64_t i, double& x, double& y) {
    x = static_cast<double>(i % kColumns);
    y = static_cast<double>(i / kColumns);
}

// Fills a fresh unit grid with n nodes; returns false if the grid refused one.
bool FillGrid(KrRoutingGrid& grid, std::int64_t n) {
    if (grid.CreateGrids(1, 1, 0, 0, 0, 0) != 0) return false;
    for (std::int64_t i = 0; i < n; ++i) {
        double x = 0.0;
        double y = 0.0;
        NodeCoord(i, x, y);
        KrRoutingWayPoint* node = nullptr;
        if (grid.GetGridNode(x, y, node) != 0 || node == nullptr) return false;
    }
    return true;
}

// Filled grids are built once per size and kept for the whole run.
KrRoutingGrid* FilledGrid(std::int64_t n) {
    static std::map<std::int64_t, std::unique_ptr<KrRoutingGrid>> grids;
    auto it = grids.find(n);
    if (it != grids.end()) return it->second.get();
    auto grid = std::make_unique<KrRoutingGrid>();
    if (!FillGrid(*grid, n)) return nullptr;
    return grids.emplace(n, std::move(grid)).first->second.get();
}

// A fixed pseudo-random order of node indices (no std::rand, same order every run).
std::vector<std::int64_t> LookupOrder(std::int64_t n, std::size_t count) {
    std::vector<std::int64_t> order(count);
    std::uint64_t state = 0x9E3779B97F4A7C15ull;
    for (auto& index : order) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        index = static_cast<std::int64_t>(state % static_cast<std::uint64_t>(n));
    }
    return order;
}

// Looks up nodes that already exist, in scattered order.
void BM_GridNodeLookup(benchmark::State& state) {
    std::int64_t const n = state.range(0);
    KrRoutingGrid* grid = FilledGrid(n);
    if (grid == nullptr) {
        state.SkipWithError("could not fill the grid");
        return;
    }
    std::vector<std::int64_t> const order = LookupOrder(n, 4096);
    std::size_t next = 0;
    for (auto _ : state) {
        double x = 0.0;
        double y = 0.0;
        NodeCoord(order[next], x, y);
        next = (next + 1) % order.size();
        KrRoutingWayPoint* node = nullptr;
        int status = grid->GetGridNode(x, y, node);
        benchmark::DoNotOptimize(status);
        benchmark::DoNotOptimize(node);
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["nodes"] = static_cast<double>(n);
}
BENCHMARK(BM_GridNodeLookup)->Arg(1000)->Arg(10000)->Arg(100000);

// Creates n nodes in a fresh grid, one GetGridNode call per node; grid set-up and tear-down are
// not timed.
void BM_GridNodeCreate(benchmark::State& state) {
    std::int64_t const n = state.range(0);
    for (auto _ : state) {
        state.PauseTiming();
        auto grid = std::make_unique<KrRoutingGrid>();
        if (grid->CreateGrids(1, 1, 0, 0, 0, 0) != 0) {
            state.SkipWithError("CreateGrids failed");
            break;
        }
        state.ResumeTiming();
        for (std::int64_t i = 0; i < n; ++i) {
            double x = 0.0;
            double y = 0.0;
            NodeCoord(i, x, y);
            KrRoutingWayPoint* node = nullptr;
            int status = grid->GetGridNode(x, y, node);
            benchmark::DoNotOptimize(status);
            benchmark::DoNotOptimize(node);
        }
        state.PauseTiming();
        grid.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * n);
    state.counters["nodes"] = static_cast<double>(n);
}
BENCHMARK(BM_GridNodeCreate)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

// Segment pairs that cross, touch at an end, overlap, run parallel and miss each other.
struct SegmentPair {
    double x1, y1, x2, y2, x3, y3, x4, y4;
};

void BM_LineSegment2DIntersection(benchmark::State& state) {
    static SegmentPair const pairs[] = {
        {0.0, 0.0, 2.0, 2.0, 0.0, 2.0, 2.0, 0.0},  // crossing
        {0.0, 0.0, 1.0, 0.0, 1.0, 0.0, 1.0, 1.0},  // touching at an end
        {0.0, 0.0, 2.0, 0.0, 1.0, 0.0, 3.0, 0.0},  // overlapping on one line
        {0.0, 0.0, 2.0, 0.0, 0.0, 1.0, 2.0, 1.0},  // parallel
        {0.0, 0.0, 1.0, 1.0, 3.0, 0.0, 2.0, 5.0},  // lines cross outside both segments
    };
    constexpr std::size_t kPairs = sizeof(pairs) / sizeof(pairs[0]);
    std::size_t next = 0;
    for (auto _ : state) {
        SegmentPair const& s = pairs[next];
        next = (next + 1) % kPairs;
        double px = 0.0;
        double py = 0.0;
        int code = KrGeoUtility::LineSegment2DIntersection(&px, &py, s.x1, s.y1, s.x2, s.y2, s.x3,
                                                           s.y3, s.x4, s.y4, GEO_TOLERANCE);
        benchmark::DoNotOptimize(code);
        benchmark::DoNotOptimize(px);
        benchmark::DoNotOptimize(py);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LineSegment2DIntersection);

}  // namespace
