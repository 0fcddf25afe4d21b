// Laying out harness-like route trees (a trunk, short branches, deep chains, connectors with many
// branches: tests/HarnessTree.h) of 1,000, 10,000 and 100,000 segments, by diameter and by length,
// on the grid those trees are meant for.
//
// Each tree is generated once per size and kept. Every iteration runs in a forked child process:
// the child builds and checks the sketch as a layout run does (not timed), times the LayOut call
// alone and hands the seconds back (manual time). A layout that runs past the time limit is killed
// and the case is reported as skipped with an error instead of stalling the whole program; larger
// sizes of that layout type are then skipped straight away.
//
// KRLAYOUT_BENCH_TIME_LIMIT: seconds one layout may take (default 300; 0 waits for ever).
// KRLAYOUT_BENCH_SEED: the seed of the trees (default 2).
//
// Counters: segments, and peak_MB, the peak resident memory of the child that did the last
// iteration (MB of 10^6 bytes; it includes the tree and the sketch).
#include "TimedChild.h"

#include <HarnessTree.h>

#include <krlayout/krlayout.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

double EnvNumber(char const* name, double fallback) {
    char const* text = std::getenv(name);
    if (text == nullptr || *text == '\0') {
        return fallback;
    }
    char* end = nullptr;
    double const v = std::strtod(text, &end);
    if (end == text || *end != '\0' || v < 0) {
        std::fprintf(stderr, "ignoring %s=%s: not a number >= 0\n", name, text);
        return fallback;
    }
    return v;
}

double TimeLimitSeconds() {
    static double const limit = EnvNumber("KRLAYOUT_BENCH_TIME_LIMIT", 300.0);
    return limit;
}

unsigned TreeSeed() {
    static unsigned const seed = static_cast<unsigned>(EnvNumber("KRLAYOUT_BENCH_SEED", 2.0));
    return seed;
}

// The tree of each size, made once and kept for the whole run.
std::vector<harness::TreeSegment> const& Tree(int segments) {
    static std::map<int, std::vector<harness::TreeSegment>> trees;
    auto it = trees.find(segments);
    if (it == trees.end()) {
        it = trees.emplace(segments, harness::MakeTree(harness::TreeKind::Harness, TreeSeed(), segments)).first;
    }
    return it->second;
}

// Per layout type, the smallest size that ran past the time limit.
std::map<int, int>& TimedOutAt() {
    static std::map<int, int> sizes;
    return sizes;
}

void BM_LayOutHarnessTree(benchmark::State& state) {
    int const segments = static_cast<int>(state.range(0));
    e_LayOutType const type = static_cast<e_LayOutType>(state.range(1));
    double const limit = TimeLimitSeconds();
    state.counters["segments"] = static_cast<double>(segments);

    auto const earlier = TimedOutAt().find(type);
    if (earlier != TimedOutAt().end() && earlier->second <= segments) {
        std::string const why = "not run: " + std::to_string(earlier->second) +
                                " segments already took longer than the time limit";
        state.SkipWithError(why.c_str());
        return;
    }

    std::vector<harness::TreeSegment> const& tree = Tree(segments);
    double const grid = harness::GridFor(harness::TreeKind::Harness);
    for (auto _ : state) {
        // The child returns {check status, layout status, layout seconds}.
        auto const run = [&tree, grid, type](bench_support::Progress) {
            KrSketch sketch;
            int const checked = harness::BuildCheckedSketch(tree, grid, sketch);
            if (checked != 0) {
                return std::vector<double>{static_cast<double>(checked), 0.0, 0.0};
            }
            KrRoutingLayout layout;
            auto const start = std::chrono::steady_clock::now();
            int const status = layout.LayOut(&sketch, type);
            auto const stop = std::chrono::steady_clock::now();
            return std::vector<double>{0.0, static_cast<double>(status),
                                       std::chrono::duration<double>(stop - start).count()};
        };
        bench_support::ChildResult const r = bench_support::RunInChild(limit, run);
        if (r.outcome == bench_support::ChildResult::Outcome::TimedOut) {
            TimedOutAt()[type] = segments;
            char why[96];
            std::snprintf(why, sizeof why, "timeout: the layout took longer than %g s", limit);
            state.SkipWithError(why);
            break;
        }
        if (r.outcome == bench_support::ChildResult::Outcome::Failed || r.values.size() != 3) {
            state.SkipWithError(("the layout process failed: " + r.error).c_str());
            break;
        }
        if (r.values[0] != 0.0) {
            state.SkipWithError("the generated tree failed a sketch check");
            break;
        }
        if (r.values[1] != 0.0) {
            state.SkipWithError("LayOut failed");
            break;
        }
        state.SetIterationTime(r.values[2]);
        state.counters["peak_MB"] = static_cast<double>(r.peakKb) * 1024.0 / 1e6;
    }
}

BENCHMARK(BM_LayOutHarnessTree)
    ->ArgNames({"segments", "type"})
    ->ArgsProduct({{1000}, {LayOutByDiameter, LayOutByLength}})
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LayOutHarnessTree)
    ->ArgNames({"segments", "type"})
    ->ArgsProduct({{10000, 100000}, {LayOutByDiameter, LayOutByLength}})
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kSecond);

}  // namespace
