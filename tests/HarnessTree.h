// Random route trees for the fingerprint, stress and benchmark programs: plain random trees (every
// segment hangs off a random existing point) and harness-like trees (a trunk, short branches, deep
// chains, connectors with many branches). Header-only and free of GoogleTest, so that the
// benchmarks and the recording tool share exactly the trees the tests use.
#pragma once

#include <krlayout/check/KrRoutingCheck.h>
#include <krlayout/layout/KrRoutingLayout.h>
#include <krlayout/model/ALLine.h>
#include <krlayout/model/ALPoint.h>
#include <krlayout/sketch/KrSketch.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace harness {

// One route segment of a generated tree: its id, true length, diameter and the two input points.
struct TreeSegment {
    long id;
    double length;
    double diameter;
    ALPoint a;
    ALPoint b;
};

enum class TreeKind { Random, Harness };

inline char const* KindName(TreeKind kind) { return kind == TreeKind::Random ? "random" : "harness"; }

// Fresh input points: distinct positions on a 1 mm raster of a 1 km square, so that no two fresh
// points fall within the sketch's coincidence tolerance of each other.
class PointSource {
public:
    explicit PointSource(std::mt19937& rng) : rng_(rng) {}
    int Fresh() {
        std::uniform_int_distribution<long> raster(0, 999999);
        for (;;) {
            long const x = raster(rng_);
            long const y = raster(rng_);
            if (used_.insert(std::make_pair(x, y)).second) {
                points.emplace_back(static_cast<double>(x) * 1e-3, static_cast<double>(y) * 1e-3, 0.0);
                return static_cast<int>(points.size()) - 1;
            }
        }
    }
    std::vector<ALPoint> points;

private:
    std::mt19937& rng_;
    std::set<std::pair<long, long>> used_;
};

// n segments: segment 1 joins two fresh points, every later one a random existing point to a
// fresh one, in a random orientation. Lengths 0.5 to 8, diameters 1 to 4 (laid out on a grid of 1).
inline std::vector<TreeSegment> RandomTree(unsigned seed, int n) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> length(0.5, 8.0);
    std::uniform_int_distribution<int> diameter(1, 4);
    std::bernoulli_distribution flip(0.5);
    PointSource src(rng);
    std::vector<TreeSegment> out;
    for (int i = 0; i < n; ++i) {
        int a = i == 0 ? src.Fresh()
                       : std::uniform_int_distribution<int>(0, static_cast<int>(src.points.size()) - 1)(rng);
        int b = src.Fresh();
        if (flip(rng)) {
            std::swap(a, b);
        }
        out.push_back(TreeSegment{i + 1, length(rng), static_cast<double>(diameter(rng)), src.points[a],
                                  src.points[b]});
    }
    return out;
}

// A harness-like tree of n segments in metres (laid out on the default 0.02 grid): a trunk of
// about n/8 segments of 5 to 40 cm and 12 to 30 mm; then, until n segments exist, one of
//  - a short branch (45 %): 2 to 60 cm, 2 to 8 mm, off a random point of the tree;
//  - a connector with many branches (10 %): 5 to 40 leads of 1 to 25 cm off one point;
//  - a deep chain (10 %): 10 to 60 segments of 2 to 30 cm, each off the last;
//  - a sub-bundle (35 %): 2 to 6 segments of 5 to 50 cm, each off the last or the one before.
// Segment ids are shuffled, so that store order is not tree order.
inline std::vector<TreeSegment> HarnessTree(unsigned seed, int n) {
    std::mt19937 rng(seed);
    auto uniform = [&](double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); };
    auto count = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    std::bernoulli_distribution flip(0.5);
    PointSource src(rng);
    std::vector<TreeSegment> out;
    auto add = [&](int from, double length, double diameter) {
        int a = from;
        int b = src.Fresh();
        int const far = b;
        if (flip(rng)) {
            std::swap(a, b);
        }
        out.push_back(TreeSegment{0, length, diameter, src.points[a], src.points[b]});
        return far;
    };
    auto anyPoint = [&]() { return count(0, static_cast<int>(src.points.size()) - 1); };
    int const trunk = std::max(1, n / 8);
    int tip = src.Fresh();
    for (int i = 0; i < trunk && static_cast<int>(out.size()) < n; ++i) {
        tip = add(tip, uniform(0.05, 0.40), uniform(0.012, 0.030));
    }
    while (static_cast<int>(out.size()) < n) {
        double const pick = uniform(0.0, 1.0);
        int const left = n - static_cast<int>(out.size());
        if (pick < 0.45) {
            add(anyPoint(), uniform(0.02, 0.60), uniform(0.002, 0.008));
        } else if (pick < 0.55) {
            int const hub = anyPoint();
            for (int k = std::min(left, count(5, 40)); k > 0; --k) {
                add(hub, uniform(0.01, 0.25), uniform(0.001, 0.004));
            }
        } else if (pick < 0.65) {
            int at = anyPoint();
            for (int k = std::min(left, count(10, 60)); k > 0; --k) {
                at = add(at, uniform(0.02, 0.30), uniform(0.002, 0.010));
            }
        } else {
            int prev = anyPoint();
            int at = prev;
            for (int k = std::min(left, count(2, 6)); k > 0; --k) {
                int const from = flip(rng) ? at : prev;
                prev = at;
                at = add(from, uniform(0.05, 0.50), uniform(0.004, 0.015));
            }
        }
    }
    std::vector<long> ids(out.size());
    for (std::size_t i = 0; i < ids.size(); ++i) {
        ids[i] = static_cast<long>(i) + 1;
    }
    std::shuffle(ids.begin(), ids.end(), rng);
    for (std::size_t i = 0; i < out.size(); ++i) {
        out[i].id = ids[i];
    }
    return out;
}

// A tree of the ranges a board drawing must cope with, in metres: lengths from 1 mm to 10 m
// (log-uniform, so that short segments are common), diameters from 1 to 40 mm; segments hang off a
// random point (50 %), continue the last one (deep chains, 35 %) or, now and then, a star of 50
// bare ends leaves one point (15 % of the draws, while room is left).
inline std::vector<TreeSegment> BoardTree(unsigned seed, int n) {
    std::mt19937 rng(seed);
    auto uniform = [&](double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); };
    auto length = [&]() { return std::exp(uniform(std::log(0.001), std::log(10.0))); };
    auto diameter = [&]() { return uniform(0.001, 0.040); };
    std::bernoulli_distribution flip(0.5);
    PointSource src(rng);
    std::vector<TreeSegment> out;
    auto add = [&](int from) {
        int a = from;
        int b = src.Fresh();
        int const far = b;
        if (flip(rng)) {
            std::swap(a, b);
        }
        out.push_back(TreeSegment{static_cast<long>(out.size()) + 1, length(), diameter(), src.points[a],
                                  src.points[b]});
        return far;
    };
    int tip = add(src.Fresh());
    while (static_cast<int>(out.size()) < n) {
        double const pick = uniform(0.0, 1.0);
        int const left = n - static_cast<int>(out.size());
        if (pick < 0.5) {
            tip = add(std::uniform_int_distribution<int>(0, static_cast<int>(src.points.size()) - 1)(rng));
        } else if (pick < 0.85) {
            tip = add(tip);
        } else {
            int const hub = std::uniform_int_distribution<int>(0, static_cast<int>(src.points.size()) - 1)(rng);
            for (int k = std::min(left, 50); k > 0; --k) {
                add(hub);
            }
        }
    }
    return out;
}

inline std::vector<TreeSegment> MakeTree(TreeKind kind, unsigned seed, int n) {
    return kind == TreeKind::Random ? RandomTree(seed, n) : HarnessTree(seed, n);
}

// The grid spacing the tree is meant for.
inline double GridFor(TreeKind kind) { return kind == TreeKind::Random ? 1.0 : 0.02; }

// The sketch as a layout run builds it: segments created in ascending id order, then every line's
// two points in that order, then the multi-pin clean-up and the checks in the run's order.
// Returns the status of the first failing check (0 when the tree passes them all).
inline int BuildCheckedSketch(std::vector<TreeSegment> tree, double grid, KrSketch& sketch) {
    sketch.CreateGrid(grid, grid);
    std::sort(tree.begin(), tree.end(), [](TreeSegment const& x, TreeSegment const& y) { return x.id < y.id; });
    std::map<long, long> linesPerSegment;
    std::vector<ALPoint> points;
    for (TreeSegment const& s : tree) {
        sketch.CreateRouteSegment(static_cast<int>(s.id), s.length, s.diameter);
        linesPerSegment[s.id] = 1;
        points.push_back(s.a);
        points.push_back(s.b);
    }
    sketch.CreateWayPoint(linesPerSegment, points);
    sketch.UniqueMultiPinSegment();
    KrRoutingCheck check;
    check.EliminateMultiLineBetweenTwoPoint(&sketch);
    int status = check.CheckBends(&sketch);
    if (status != 0) {
        return status;
    }
    std::vector<long> ids;
    status = check.CheckSketch(&sketch, ids);
    if (status != 0) {
        return status;
    }
    return check.CheckDisjoint(&sketch, ids);
}

// 64-bit FNV-1a over the result a run hands out: the LayOut status, then for every route segment
// left in the sketch (store order) its id, its number of lines and each line's start and end x, y
// as bit patterns.
class Fingerprint {
public:
    void Add(void const* data, std::size_t size) {
        unsigned char const* p = static_cast<unsigned char const*>(data);
        for (std::size_t i = 0; i < size; ++i) {
            hash_ ^= p[i];
            hash_ *= 1099511628211ULL;
        }
    }
    void AddLong(long v) {
        std::int64_t const w = v;
        Add(&w, sizeof w);
    }
    void AddDouble(double v) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &v, sizeof bits);
        Add(&bits, sizeof bits);
    }
    std::uint64_t Value() const { return hash_; }

private:
    std::uint64_t hash_ = 1469598103934665603ULL;
};

inline std::uint64_t LayoutFingerprint(KrSketch& sketch, int layoutStatus) {
    Fingerprint fp;
    fp.AddLong(layoutStatus);
    std::vector<long> ids;
    sketch.GetAllRouteSegment(ids);
    fp.AddLong(static_cast<long>(ids.size()));
    for (long id : ids) {
        std::vector<ALLine> lines;
        sketch.GetLinesByRouteId(id, lines);
        fp.AddLong(id);
        fp.AddLong(static_cast<long>(lines.size()));
        for (ALLine const& l : lines) {
            fp.AddDouble(l.start.x);
            fp.AddDouble(l.start.y);
            fp.AddDouble(l.end.x);
            fp.AddDouble(l.end.y);
        }
    }
    return fp.Value();
}

// Builds, checks and lays out one tree; the fingerprint of the result (or of the check status when
// a check fails, which generated trees never do).
inline std::uint64_t RunTree(TreeKind kind, unsigned seed, int n, e_LayOutType type, std::size_t* kept = nullptr) {
    KrSketch sketch;
    int const checked = BuildCheckedSketch(MakeTree(kind, seed, n), GridFor(kind), sketch);
    if (checked != 0) {
        Fingerprint fp;
        fp.AddLong(-checked);
        return fp.Value();
    }
    KrRoutingLayout layout;
    int const status = layout.LayOut(&sketch, type);
    if (kept != nullptr) {
        std::vector<long> ids;
        sketch.GetAllRouteSegment(ids);
        *kept = ids.size();
    }
    return LayoutFingerprint(sketch, status);
}

// The corpus of recorded layouts: which trees, of which sizes, how many of each.
struct CorpusGroup {
    TreeKind kind;
    int size;
    int count;
};

inline std::vector<CorpusGroup> FingerprintCorpus() {
    return {
        {TreeKind::Random, 10, 600},   {TreeKind::Random, 20, 600},   {TreeKind::Random, 40, 500},
        {TreeKind::Random, 80, 300},   {TreeKind::Random, 150, 200},  {TreeKind::Random, 400, 40},
        {TreeKind::Random, 1000, 8},   {TreeKind::Random, 2000, 4},   {TreeKind::Harness, 10, 300},
        {TreeKind::Harness, 40, 300},  {TreeKind::Harness, 150, 150}, {TreeKind::Harness, 400, 40},
        {TreeKind::Harness, 1000, 10}, {TreeKind::Harness, 2000, 6},
    };
}

// The seed of tree i of a group: distinct across groups and kinds.
inline unsigned CorpusSeed(CorpusGroup const& g, int i) {
    return static_cast<unsigned>((g.kind == TreeKind::Random ? 1000003u : 7000003u) +
                                 static_cast<unsigned>(g.size) * 10007u + static_cast<unsigned>(i));
}

}  // namespace harness
