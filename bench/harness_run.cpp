// krlayout_harness_run: lays out one harness-like route tree once and prints how long the layout
// took and the peak resident memory of the process that did it; or writes the same tree as a DOT
// graph (for Graphviz) or as a route document (for the krlayout command-line tool), so that
// scripts/bench can compare them on identical input.
//
// The run happens in a child process: with --time-limit a layout that runs longer is killed and
// reported as "timeout" (exit code 124) instead of holding up the caller.
#include "TimedChild.h"

#include <HarnessTree.h>

#include <krlayout/krlayout.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int kExitUsage = 2;
constexpr int kExitFailed = 3;
constexpr int kExitTimeout = 124;  // what timeout(1) uses

void PrintUsage(std::FILE* out) {
    std::fputs(
        "usage: krlayout_harness_run [--segments N] [--seed S] [--type diameter|length|formboard]\n"
        "                            [--time-limit SECONDS] [--dot FILE] [--document FILE]\n"
        "\n"
        "Builds a harness-like route tree of N segments (default 1000) from seed S (default 1).\n"
        "Without --dot/--document it builds the checked sketch and lays it out once, in a child\n"
        "process, and prints one line:\n"
        "  segments=N seed=S type=T status=0 tree_s=... sketch_s=... layout_s=... peak_mb=...\n"
        "tree_s is generating the tree, sketch_s building and checking the sketch, layout_s the\n"
        "LayOut call alone; peak_mb the peak resident memory of that process (getrusage\n"
        "ru_maxrss, MB of 10^6 bytes). With --time-limit (seconds, 0 = none, the default) a run\n"
        "that takes longer in all is killed and printed as layout_s=timeout, with the step it was\n"
        "in (step=tree, sketch or layout), the times of the steps it finished and the peak memory\n"
        "reached so far; the exit code is then 124.\n"
        "--dot FILE writes the tree as an undirected DOT graph (one node per way point, one edge\n"
        "per segment with len= its length); --document FILE writes it as a route document for\n"
        "the krlayout tool. Either replaces the layout; FILE '-' is standard output. A summary\n"
        "line (segments, points, total length) goes to standard error.\n",
        out);
}

struct Options {
    int segments = 1000;
    unsigned seed = 1;
    e_LayOutType type = LayOutByDiameter;
    bool board = false;  // the board layout instead of a grid layout type
    double limitSeconds = 0.0;
    std::string dotPath;
    std::string documentPath;
};

bool ParseInt(char const* text, long lo, long hi, long& out) {
    char* end = nullptr;
    errno = 0;
    long const v = std::strtol(text, &end, 10);
    if (errno != 0 || end == text || *end != '\0' || v < lo || v > hi) {
        return false;
    }
    out = v;
    return true;
}

// Parses the command line; returns -1 to go on, otherwise the exit code.
int ParseOptions(int argc, char** argv, Options& o) {
    for (int i = 1; i < argc; ++i) {
        std::string const arg = argv[i];
        if (arg == "-h" || arg == "--help") {
            PrintUsage(stdout);
            return 0;
        }
        if (i + 1 >= argc) {
            std::fprintf(stderr, "krlayout_harness_run: %s needs a value (or is unknown)\n", arg.c_str());
            return kExitUsage;
        }
        char const* value = argv[++i];
        long n = 0;
        if (arg == "--segments" || arg == "-n") {
            if (!ParseInt(value, 1, 10000000, n)) {
                std::fprintf(stderr, "krlayout_harness_run: bad --segments %s\n", value);
                return kExitUsage;
            }
            o.segments = static_cast<int>(n);
        } else if (arg == "--seed") {
            if (!ParseInt(value, 0, 4294967295L, n)) {
                std::fprintf(stderr, "krlayout_harness_run: bad --seed %s\n", value);
                return kExitUsage;
            }
            o.seed = static_cast<unsigned>(n);
        } else if (arg == "--type" || arg == "-t") {
            std::string const t = value;
            if (t == "diameter" || t == "0") {
                o.type = LayOutByDiameter;
            } else if (t == "length" || t == "1") {
                o.type = LayOutByLength;
            } else if (t == "formboard" || t == "2") {
                o.board = true;
            } else {
                std::fprintf(stderr, "krlayout_harness_run: bad --type %s (diameter, length or formboard)\n", value);
                return kExitUsage;
            }
        } else if (arg == "--time-limit") {
            char* end = nullptr;
            double const s = std::strtod(value, &end);
            if (end == value || *end != '\0' || !std::isfinite(s) || s < 0) {
                std::fprintf(stderr, "krlayout_harness_run: bad --time-limit %s\n", value);
                return kExitUsage;
            }
            o.limitSeconds = s;
        } else if (arg == "--dot") {
            o.dotPath = value;
        } else if (arg == "--document") {
            o.documentPath = value;
        } else {
            std::fprintf(stderr, "krlayout_harness_run: unknown option %s\n", arg.c_str());
            PrintUsage(stderr);
            return kExitUsage;
        }
    }
    return -1;
}

char const* TypeName(Options const& o) {
    return o.board ? "formboard" : o.type == LayOutByLength ? "length" : "diameter";
}

// Opens FILE for writing, '-' being standard output.
class OutputFile {
public:
    explicit OutputFile(std::string const& path)
        : file_(path == "-" ? stdout : std::fopen(path.c_str(), "w")), owned_(path != "-") {
        if (file_ == nullptr) {
            throw std::runtime_error("cannot write " + path + ": " + std::strerror(errno));
        }
    }
    ~OutputFile() {
        if (owned_ && file_ != nullptr) {
            std::fclose(file_);
        }
    }
    OutputFile(OutputFile const&) = delete;
    OutputFile& operator=(OutputFile const&) = delete;
    std::FILE* get() const { return file_; }
    void Close(std::string const& path) {
        bool const failed = std::ferror(file_) != 0 || (owned_ ? std::fclose(file_) != 0 : std::fflush(file_) != 0);
        file_ = nullptr;
        if (failed) {
            throw std::runtime_error("cannot write " + path);
        }
    }

private:
    std::FILE* file_;
    bool owned_;
};

// Node numbers of the tree's way points: equal coordinates are one point (the generator hands
// out shared points as exact copies), numbered in order of first appearance.
std::vector<std::pair<int, int>> NumberPoints(std::vector<harness::TreeSegment> const& tree, int& points) {
    std::map<std::pair<double, double>, int> index;
    auto number = [&](ALPoint const& p) {
        auto const it = index.emplace(std::make_pair(p.x, p.y), static_cast<int>(index.size())).first;
        return it->second;
    };
    std::vector<std::pair<int, int>> ends;
    ends.reserve(tree.size());
    for (harness::TreeSegment const& s : tree) {
        int const a = number(s.a);
        int const b = number(s.b);
        ends.emplace_back(a, b);
    }
    points = static_cast<int>(index.size());
    return ends;
}

void WriteDot(std::vector<harness::TreeSegment> const& tree, Options const& o, std::string const& path) {
    int points = 0;
    std::vector<std::pair<int, int>> const ends = NumberPoints(tree, points);
    OutputFile out(path);
    std::FILE* f = out.get();
    std::fprintf(f, "graph harness_%d_%u {\n  node [shape=point];\n", o.segments, o.seed);
    for (int i = 0; i < points; ++i) {
        std::fprintf(f, "  n%d;\n", i);
    }
    for (std::size_t i = 0; i < tree.size(); ++i) {
        std::fprintf(f, "  n%d -- n%d [len=%.9g];\n", ends[i].first, ends[i].second, tree[i].length);
    }
    std::fputs("}\n", f);
    out.Close(path);
}

// The route document format of the in-process host: one segment per tree segment with its
// diameter as the route value and one line entity carrying the true length (the generated
// points are far apart, so the length cannot come from the geometry).
void WriteDocument(std::vector<harness::TreeSegment> const& tree, Options const& o, std::string const& path) {
    OutputFile out(path);
    std::FILE* f = out.get();
    std::fprintf(f, "{\n  \"name\": \"harness tree, %d segments, seed %u\",\n  \"segments\": [\n", o.segments, o.seed);
    for (std::size_t i = 0; i < tree.size(); ++i) {
        harness::TreeSegment const& s = tree[i];
        std::fprintf(f,
                     "    {\"id\": %ld, \"value\": %.17g, \"entities\": [{\"kind\": \"line\", \"start\": [%.17g, "
                     "%.17g, 0], \"end\": [%.17g, %.17g, 0], \"length\": %.17g}]}%s\n",
                     s.id, s.diameter, s.a.x, s.a.y, s.b.x, s.b.y, s.length, i + 1 < tree.size() ? "," : "");
    }
    std::fputs("  ]\n}\n", f);
    out.Close(path);
}

double Seconds(std::chrono::steady_clock::time_point from, std::chrono::steady_clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

// The steps of a run, as posted to the parent.
constexpr double kStepTree = 1.0;    // generating the tree
constexpr double kStepSketch = 2.0;  // building and checking the sketch
constexpr double kStepLayout = 3.0;  // LayOut

char const* StepName(double step) {
    if (step == kStepTree) {
        return "tree";
    }
    if (step == kStepSketch) {
        return "sketch";
    }
    return step == kStepLayout ? "layout" : "start";
}

double Megabytes(long kib) { return static_cast<double>(kib) * 1024.0 / 1e6; }

}  // namespace

int main(int argc, char** argv) {
    Options o;
    int const parsed = ParseOptions(argc, argv, o);
    if (parsed >= 0) {
        return parsed;
    }

    if (!o.dotPath.empty() || !o.documentPath.empty()) {
        try {
            std::vector<harness::TreeSegment> const tree =
                harness::MakeTree(harness::TreeKind::Harness, o.seed, o.segments);
            int points = 0;
            NumberPoints(tree, points);
            double total = 0.0;
            for (harness::TreeSegment const& s : tree) {
                total += s.length;
            }
            if (!o.dotPath.empty()) {
                WriteDot(tree, o, o.dotPath);
            }
            if (!o.documentPath.empty()) {
                WriteDocument(tree, o, o.documentPath);
            }
            std::fprintf(stderr, "segments=%d seed=%u points=%d total_length=%.6g grid=%g\n", o.segments, o.seed,
                         points, total, harness::GridFor(harness::TreeKind::Harness));
        } catch (std::exception const& e) {
            std::fprintf(stderr, "krlayout_harness_run: %s\n", e.what());
            return kExitFailed;
        }
        return 0;
    }

    // The child returns {check status, layout status, tree seconds, sketch seconds, layout seconds}
    // and posts {step, tree seconds, sketch seconds} as it goes.
    auto const run = [&o](bench_support::Progress progress) {
        using Clock = std::chrono::steady_clock;
        harness::TreeKind const kind = harness::TreeKind::Harness;
        progress[0] = kStepTree;
        Clock::time_point const t0 = Clock::now();
        std::vector<harness::TreeSegment> tree = harness::MakeTree(kind, o.seed, o.segments);
        Clock::time_point const t1 = Clock::now();
        progress[1] = Seconds(t0, t1);
        progress[0] = kStepSketch;
        KrSketch sketch;
        int const checked = harness::BuildCheckedSketch(std::move(tree), harness::GridFor(kind), sketch);
        Clock::time_point const t2 = Clock::now();
        progress[2] = Seconds(t1, t2);
        if (checked != 0) {
            return std::vector<double>{static_cast<double>(checked), 0.0, Seconds(t0, t1), Seconds(t1, t2), 0.0};
        }
        progress[0] = kStepLayout;
        int status = 0;
        if (o.board) {
            KrFormboardLayout layout;
            status = layout.LayOut(&sketch);
        } else {
            KrRoutingLayout layout;
            status = layout.LayOut(&sketch, o.type);
        }
        Clock::time_point const t3 = Clock::now();
        return std::vector<double>{0.0, static_cast<double>(status), Seconds(t0, t1), Seconds(t1, t2),
                                   Seconds(t2, t3)};
    };
    bench_support::ChildResult const r = bench_support::RunInChild(o.limitSeconds, run);

    std::printf("segments=%d seed=%u type=%s ", o.segments, o.seed, TypeName(o));
    switch (r.outcome) {
    case bench_support::ChildResult::Outcome::TimedOut:
        // How far the run got: the step it was killed in, and the steps it finished.
        std::printf("layout_s=timeout limit_s=%g step=%s", o.limitSeconds, StepName(r.progress[0]));
        if (r.progress[0] > kStepTree) {
            std::printf(" tree_s=%.6f", r.progress[1]);
        }
        if (r.progress[0] > kStepSketch) {
            std::printf(" sketch_s=%.6f", r.progress[2]);
        }
        std::printf(" peak_mb=%.1f\n", Megabytes(r.peakKb));
        return kExitTimeout;
    case bench_support::ChildResult::Outcome::Failed:
        std::printf("layout_s=failed\n");
        std::fprintf(stderr, "krlayout_harness_run: %s\n", r.error.c_str());
        return kExitFailed;
    case bench_support::ChildResult::Outcome::Done:
        break;
    }
    if (r.values.size() != 5) {
        std::printf("layout_s=failed\n");
        return kExitFailed;
    }
    int const checked = static_cast<int>(r.values[0]);
    int const status = static_cast<int>(r.values[1]);
    if (checked != 0) {
        std::printf("check=%d layout_s=failed\n", checked);
        std::fprintf(stderr, "krlayout_harness_run: the generated tree failed check %d\n", checked);
        return kExitFailed;
    }
    std::printf("status=%d tree_s=%.6f sketch_s=%.6f layout_s=%.6f peak_mb=%.1f\n", status, r.values[2],
                r.values[3], r.values[4], Megabytes(r.peakKb));
    return status == 0 ? 0 : kExitFailed;
}
