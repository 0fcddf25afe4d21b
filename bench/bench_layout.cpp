// Building routing sketches, checking them and laying them out, on chains of route segments (1k,
// 10k, 100k), on random trees of 1k segments and on a star of 1k children around one point.
//
// Every sketch is built the way the layout run builds one: a KrSketch with a unit grid
// (CreateGrid(1, 1)), one CreateRouteSegment per segment, then a single CreateWayPoint(map, points)
// with one line per segment. Sketch building and tear-down are kept out of the timed region.
#include <krlayout/krlayout.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace {

// The input of one sketch: per segment its id, length and diameter, and the two end points of its
// one line.
struct SketchInput {
    std::vector<int> ids;
    std::vector<double> lengths;
    std::vector<double> diameters;
    std::map<long, long> linesPerSegment;
    std::vector<ALPoint> points;  // start and end of each line, in ascending id order

    void Add(int id, double length, double diameter, ALPoint const& a, ALPoint const& b) {
        ids.push_back(id);
        lengths.push_back(length);
        diameters.push_back(diameter);
        linesPerSegment[id] = 1;
        points.push_back(a);
        points.push_back(b);
    }
    std::int64_t Size() const { return static_cast<std::int64_t>(ids.size()); }
};

// n unit segments end to end along +x: segment k (id k + 1) runs from (k, 0) to (k + 1, 0).
SketchInput Chain(std::int64_t n) {
    SketchInput in;
    for (std::int64_t k = 0; k < n; ++k) {
        double const x = static_cast<double>(k);
        in.Add(static_cast<int>(k + 1), 1.0, 1.0, ALPoint(x, 0.0, 0.0), ALPoint(x + 1.0, 0.0, 0.0));
    }
    return in;
}

// n segments forming a tree, with a fixed seed: the first joins two fresh points, every later one
// joins a random earlier point to a fresh one, in a random orientation, with a random length
// (0.5 to 8) and diameter (1 to 4). Fresh points are at least 1e-3 apart.
SketchInput RandomTree(std::int64_t n, std::uint32_t seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> coord(0.0, 100.0);
    std::uniform_real_distribution<double> length(0.5, 8.0);
    std::uniform_int_distribution<int> diameter(1, 4);
    std::bernoulli_distribution flip(0.5);
    std::vector<ALPoint> nodes;
    std::set<std::pair<long, long>> used;
    auto fresh = [&]() {
        for (;;) {
            ALPoint p(coord(rng), coord(rng), 0.0);
            auto key = std::make_pair(std::lround(p.x * 1000.0), std::lround(p.y * 1000.0));
            if (used.insert(key).second) {
                nodes.push_back(p);
                return p;
            }
        }
    };
    SketchInput in;
    for (std::int64_t k = 0; k < n; ++k) {
        ALPoint a;
        if (k == 0) {
            a = fresh();
        } else {
            std::uniform_int_distribution<std::size_t> pick(0, nodes.size() - 1);
            a = nodes[pick(rng)];
        }
        ALPoint b = fresh();
        if (flip(rng)) std::swap(a, b);
        in.Add(static_cast<int>(k + 1), length(rng), static_cast<double>(diameter(rng)), a, b);
    }
    return in;
}

// A root segment from (-10, 0) to the centre (0, 0), first-ranked by diameter and by length, and
// n children from the centre out to a circle of radius 100 at evenly spread angles, with lengths
// and diameters that vary from child to child.
SketchInput Star(std::int64_t n) {
    SketchInput in;
    in.Add(1, 10.0, 5.0, ALPoint(-10.0, 0.0, 0.0), ALPoint(0.0, 0.0, 0.0));
    double const twoPi = 6.2831853072;
    for (std::int64_t k = 0; k < n; ++k) {
        double const angle = twoPi * static_cast<double>(k) / static_cast<double>(n);
        ALPoint const tip(100.0 * std::cos(angle), 100.0 * std::sin(angle), 0.0);
        double const length = 1.0 + static_cast<double>(k % 7);
        double const diameter = 1.0 + static_cast<double>(k % 3);
        in.Add(static_cast<int>(k + 2), length, diameter, ALPoint(0.0, 0.0, 0.0), tip);
    }
    return in;
}

// A fresh sketch with a unit grid and the input's segments, but no way points yet.
std::unique_ptr<KrSketch> SketchWithSegments(SketchInput const& in) {
    auto sketch = std::make_unique<KrSketch>();
    if (sketch->CreateGrid(1.0, 1.0) != 0) return nullptr;
    for (std::size_t i = 0; i < in.ids.size(); ++i) {
        if (sketch->CreateRouteSegment(in.ids[i], in.lengths[i], in.diameters[i]) != 0) return nullptr;
    }
    return sketch;
}

// A fully built sketch (segments, way points and lines); null if a step failed.
std::unique_ptr<KrSketch> BuildSketch(SketchInput const& in) {
    std::unique_ptr<KrSketch> sketch = SketchWithSegments(in);
    if (sketch == nullptr) return nullptr;
    if (sketch->CreateWayPoint(in.linesPerSegment, in.points) != 0) return nullptr;
    return sketch;
}

// Inputs are made once per shape and size and kept for the whole run.
SketchInput const& ChainInput(std::int64_t n) {
    static std::map<std::int64_t, SketchInput> inputs;
    auto it = inputs.find(n);
    if (it == inputs.end()) it = inputs.emplace(n, Chain(n)).first;
    return it->second;
}

SketchInput const& TreeInput(std::int64_t n) {
    static std::map<std::int64_t, SketchInput> inputs;
    auto it = inputs.find(n);
    if (it == inputs.end()) it = inputs.emplace(n, RandomTree(n, 20240611u)).first;
    return it->second;
}

SketchInput const& StarInput(std::int64_t n) {
    static std::map<std::int64_t, SketchInput> inputs;
    auto it = inputs.find(n);
    if (it == inputs.end()) it = inputs.emplace(n, Star(n)).first;
    return it->second;
}

// Built chains, kept for the checks (which only read the sketch).
KrSketch* BuiltChain(std::int64_t n) {
    static std::map<std::int64_t, std::unique_ptr<KrSketch>> sketches;
    auto it = sketches.find(n);
    if (it != sketches.end()) return it->second.get();
    std::unique_ptr<KrSketch> sketch = BuildSketch(ChainInput(n));
    if (sketch == nullptr) return nullptr;
    return sketches.emplace(n, std::move(sketch)).first->second.get();
}

void SetCounters(benchmark::State& state, std::int64_t segments) {
    state.SetItemsProcessed(state.iterations() * segments);
    state.counters["segments"] = static_cast<double>(segments);
}

// ---------------------------------------------------------------------------------------------
// Building.

// CreateWayPoint(map, points) on a sketch that already has its grid and segments.
void BM_CreateWayPointChain(benchmark::State& state) {
    SketchInput const& in = ChainInput(state.range(0));
    std::unique_ptr<KrSketch> sketch;
    for (auto _ : state) {
        state.PauseTiming();
        sketch.reset();
        sketch = SketchWithSegments(in);
        if (sketch == nullptr) {
            state.SkipWithError("could not create the segments");
            break;
        }
        state.ResumeTiming();
        int status = sketch->CreateWayPoint(in.linesPerSegment, in.points);
        benchmark::DoNotOptimize(status);
        if (status != 0) {
            state.SkipWithError("CreateWayPoint failed");
            break;
        }
    }
    sketch.reset();  // after the loop: not timed
    SetCounters(state, in.Size());
}
BENCHMARK(BM_CreateWayPointChain)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------------------------------------
// Checks.

void BM_CheckSketchChain(benchmark::State& state) {
    std::int64_t const n = state.range(0);
    KrSketch* sketch = BuiltChain(n);
    if (sketch == nullptr) {
        state.SkipWithError("could not build the chain");
        return;
    }
    KrRoutingCheck check;
    for (auto _ : state) {
        std::vector<long> loopIds;
        int status = check.CheckSketch(sketch, loopIds);
        benchmark::DoNotOptimize(status);
        if (status != 0) {
            state.SkipWithError("CheckSketch found a loop in a chain");
            break;
        }
    }
    SetCounters(state, n);
}
BENCHMARK(BM_CheckSketchChain)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_CheckDisjointChain(benchmark::State& state) {
    std::int64_t const n = state.range(0);
    KrSketch* sketch = BuiltChain(n);
    if (sketch == nullptr) {
        state.SkipWithError("could not build the chain");
        return;
    }
    KrRoutingCheck check;
    for (auto _ : state) {
        std::vector<long> pieceIds;
        int status = check.CheckDisjoint(sketch, pieceIds);
        benchmark::DoNotOptimize(status);
        if (status != 0) {
            state.SkipWithError("CheckDisjoint split a chain");
            break;
        }
    }
    SetCounters(state, n);
}
BENCHMARK(BM_CheckDisjointChain)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------------------------------------
// Layout: a fresh sketch per iteration (a layout changes the sketch it works on); only LayOut is
// timed. The second argument is the layout type (0 by diameter, 1 by length).

void LayOutFresh(benchmark::State& state, SketchInput const& in) {
    e_LayOutType const type = static_cast<e_LayOutType>(state.range(1));
    std::unique_ptr<KrSketch> sketch;
    std::unique_ptr<KrRoutingLayout> layout;
    for (auto _ : state) {
        state.PauseTiming();
        layout.reset();
        sketch.reset();
        sketch = BuildSketch(in);
        if (sketch == nullptr) {
            state.SkipWithError("could not build the sketch");
            break;
        }
        layout = std::make_unique<KrRoutingLayout>();
        state.ResumeTiming();
        int status = layout->LayOut(sketch.get(), type);
        benchmark::DoNotOptimize(status);
        if (status != 0) {
            state.SkipWithError("LayOut failed");
            break;
        }
    }
    layout.reset();  // after the loop: not timed
    sketch.reset();
    SetCounters(state, in.Size());
}

void BM_LayOutChain(benchmark::State& state) {
    LayOutFresh(state, ChainInput(state.range(0)));
}
BENCHMARK(BM_LayOutChain)
    ->ArgNames({"segments", "type"})
    ->ArgsProduct({{1000, 10000}, {LayOutByDiameter, LayOutByLength}})
    ->Unit(benchmark::kMillisecond);

void BM_LayOutRandomTree(benchmark::State& state) {
    LayOutFresh(state, TreeInput(state.range(0)));
}
BENCHMARK(BM_LayOutRandomTree)
    ->ArgNames({"segments", "type"})
    ->ArgsProduct({{1000}, {LayOutByDiameter, LayOutByLength}})
    ->Unit(benchmark::kMillisecond);

void BM_LayOutStar(benchmark::State& state) {
    LayOutFresh(state, StarInput(state.range(0)));
}
BENCHMARK(BM_LayOutStar)
    ->ArgNames({"children", "type"})
    ->ArgsProduct({{1000}, {LayOutByDiameter, LayOutByLength}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
