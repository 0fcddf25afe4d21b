// The layout run: host references, feature selection, component map, the driver's stages and
// status codes, the check reports, both write-back variants and what survives between runs.
#include <krlayout/api/KrLayoutRun.h>
#include <krlayout/check/KrRoutingCheck.h>
#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/host/IHostApplication.h>
#include <krlayout/host/IHostSketch.h>
#include <krlayout/host/KrHostLocale.h>
#include <krlayout/sketch/KrSketch.h>

#include <JsonHostDocument.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using IdPair = std::pair<long, long>;
using IdList = std::vector<IdPair>;

// A real sketch that records the run's calls and its own destruction.
class RecordingSketch : public KrSketch {
public:
    RecordingSketch(std::vector<std::string>& log, int number) : log_(log), number_(number) {
        log_.push_back("create#" + std::to_string(number_));
    }
    ~RecordingSketch() override { log_.push_back("destroy#" + std::to_string(number_)); }

    std::vector<std::tuple<long, std::wstring, std::wstring>> connectors;
    std::vector<std::pair<std::map<long, long>, std::size_t>> wayPointCalls;
    bool failLineIds = false;

    int InsertConnector(long routeId, std::wstring connector, std::wstring pin) override {
        connectors.emplace_back(routeId, connector, pin);
        return KrSketch::InsertConnector(routeId, connector, pin);
    }
    int CreateWayPoint(std::map<long, long> const& counts, std::vector<ALPoint> const& points) override {
        wayPointCalls.emplace_back(counts, points.size());
        return KrSketch::CreateWayPoint(counts, points);
    }
    using KrSketch::CreateWayPoint;
    int SetCADLineIdByRouteId(long id, IdList const& ids) override {
        int const r = KrSketch::SetCADLineIdByRouteId(id, ids);
        return failLineIds ? 1 : r;
    }

private:
    std::vector<std::string>& log_;
    int number_;
};

// A run whose sketch records, and whose bend check and layout stage can be replaced.
class TestRun : public KrLayoutRun {
public:
    explicit TestRun(std::vector<std::string>& log) : log_(log) {}

    int bendResult = 0;      // non-zero: the bend check reports this code
    bool realLayout = true;  // false: the layout stage does nothing and reports layoutResult
    int layoutResult = 1;
    bool failLineIds = false;
    int bendCalls = 0;
    int layoutCalls = 0;
    int lastLayoutType = -1;
    std::vector<RecordingSketch*> sketches;  // not owned

    RecordingSketch* Latest() const { return static_cast<RecordingSketch*>(GetSketch()); }

protected:
    IRoutingSketch* CreateSketch() override {
        auto* s = new RecordingSketch(log_, static_cast<int>(sketches.size()) + 1);
        s->failLineIds = failLineIds;
        sketches.push_back(s);
        return s;
    }
    int CheckBends(KrRoutingCheck& check, IRoutingSketch* sketch) override {
        ++bendCalls;
        return bendResult != 0 ? bendResult : KrLayoutRun::CheckBends(check, sketch);
    }
    int LayOut(IRoutingSketch* sketch, int type) override {
        ++layoutCalls;
        lastLayoutType = type;
        return realLayout ? KrLayoutRun::LayOut(sketch, type) : layoutResult;
    }

private:
    std::vector<std::string>& log_;
};

// Segment 1: vertical, horizontal, slanted lines; segment 2: vertical, horizontal.
std::string const kThreeAndTwo = R"({
  "features": ["Sketch1", "Route1", "Route2"],
  "segments": [
    { "id": 1, "value": 2, "entities": [
        { "kind": "line", "start": [0,0,0], "end": [0,1,0] },
        { "kind": "line", "start": [0,1,0], "end": [1,1,0] },
        { "kind": "line", "start": [1,1,0], "end": [2,3,0] } ] },
    { "id": 2, "value": 1, "entities": [
        { "kind": "line", "start": [2,3,0], "end": [2,4,0] },
        { "kind": "line", "start": [2,4,0], "end": [5,4,0] } ] }
  ]
})";

// One segment of length 0.12 (given), anywhere in the host.
std::string const kSingle = R"({
  "segments": [ { "id": 4, "value": 1, "entities": [
      { "kind": "line", "length": 0.12, "start": [5,5,0], "end": [5.12,5,0] } ] } ]
})";

// A triangle 1-2-3 (segment 2 of two lines) with a tail 4 at (1,0); optionally a far piece 5.
std::string Loop(bool withFarPiece) {
    std::string far = withFarPiece ? R"(,
    { "id": 5, "value": 1, "entities": [ { "kind": "line", "start": [10,10,0], "end": [11,10,0] } ] })"
                                   : "";
    return R"({
  "segments": [
    { "id": 1, "value": 1, "entities": [ { "kind": "line", "start": [0,0,0], "end": [1,0,0] } ] },
    { "id": 2, "value": 1, "entities": [
        { "kind": "line", "start": [1,0,0], "end": [1,1,0] },
        { "kind": "line", "start": [1,1,0], "end": [0,1,0] } ] },
    { "id": 3, "value": 1, "entities": [ { "kind": "line", "start": [0,1,0], "end": [0,0,0] } ] },
    { "id": 4, "value": 1, "entities": [ { "kind": "line", "start": [1,0,0], "end": [2,0,0] } ] })" +
           far + R"(
  ]
})";
}

// Two pieces: segment 1 of length 10, segments 2 and 3 of total length 4.
std::string const kDisjoint = R"({
  "segments": [
    { "id": 1, "value": 1, "entities": [ { "kind": "line", "start": [0,0,0], "end": [10,0,0] } ] },
    { "id": 2, "value": 1, "entities": [ { "kind": "line", "start": [20,0,0], "end": [22,0,0] } ] },
    { "id": 3, "value": 1, "entities": [ { "kind": "line", "start": [22,0,0], "end": [24,0,0] } ] }
  ]
})";

std::string Unavailable(std::string const& part) {
    return R"({ "available": { ")" + part + R"(": false }, "segments": [
      { "id": 1, "value": 1, "entities": [ { "kind": "line", "start": [0,0,0], "end": [1,0,0] } ] } ] })";
}

class KrLayoutRunTest : public ::testing::Test {
protected:
    void TearDown() override {
        run.reset();
        Adopt(nullptr);
        for (auto const& d : docs) {
            EXPECT_EQ(d->clientReferences(), 0u);
            EXPECT_EQ(d->results().overReleases(), 0u);
            for (auto const& c : d->referenceCounts()) {
                EXPECT_EQ(c.count, c.baseline) << c.object;
            }
        }
    }

    JsonHostDocument* Load(std::string const& text) {
        docs.push_back(JsonHostDocument::LoadString(text));
        return docs.back().get();
    }

    // What the facade does on a start: drop the library's reference, adopt the one the caller
    // hands over, and let the run take its own.
    void Adopt(JsonHostDocument* doc) {
        if (libraryHost != nullptr) {
            libraryHost->Release();
        }
        libraryHost = doc != nullptr ? doc->application() : nullptr;
        if (libraryHost != nullptr) {
            libraryHost->AddRef();
        }
    }
    void Attach(JsonHostDocument* doc) {
        Adopt(doc);
        run->AttachHost(libraryHost);
    }

    unsigned long Count(JsonHostDocument* doc, IHostUnknown const* object) {
        auto c = doc->referenceCount(object);
        return c ? c->count - c->baseline : 0;
    }

    static std::vector<std::string> CalloutTexts(JsonHostDocument* doc) {
        std::vector<std::string> out;
        for (auto const& s : doc->results().callouts()) {
            out.push_back(s.target.kind + ":" + std::to_string(s.target.segment) + ":" +
                          (s.callout == L"Loop Segment" ? "loop" : s.callout == L"Disjoint Segment" ? "disjoint" : "?"));
        }
        return out;
    }

    std::vector<std::string> log;
    std::unique_ptr<TestRun> run = std::make_unique<TestRun>(log);
    std::vector<std::unique_ptr<JsonHostDocument>> docs;
    IHostApplication* libraryHost = nullptr;
};

// ---------------------------------------------------------------------------------------------
// Construction and host references

TEST_F(KrLayoutRunTest, StartsEmptyWritingToTheHost) {
    EXPECT_TRUE(run->GetApplyToHost());
    EXPECT_EQ(run->GetSketch(), nullptr);
    EXPECT_TRUE(run->GetOutputPoints().empty());
    EXPECT_TRUE(run->GetOutputConstraints().empty());
    EXPECT_TRUE(run->GetSegmentRecords().empty());
    EXPECT_TRUE(run->GetRunText().empty());
    EXPECT_TRUE(run->GetFeatureName().empty());
    EXPECT_FALSE(run->HasFeature());
    EXPECT_TRUE(run->GetComponentMap().empty());
}

TEST_F(KrLayoutRunTest, AttachTakesOneReferenceAndKeepsItBalancedAcrossHosts) {
    JsonHostDocument* a = Load(kSingle);
    JsonHostDocument* b = Load(kSingle);
    Attach(a);
    // The library's reference and the run's own.
    EXPECT_EQ(Count(a, a->application()), 2u);
    // Attaching the same pointer again: the run drops its reference and takes it again.
    EXPECT_EQ(run->AttachHost(libraryHost), 0);
    EXPECT_EQ(Count(a, a->application()), 2u);
    Attach(b);
    EXPECT_EQ(Count(a, a->application()), 0u);
    EXPECT_EQ(Count(b, b->application()), 2u);
    // A null library pointer: the run drops its reference and holds none.
    Attach(nullptr);
    EXPECT_EQ(Count(b, b->application()), 0u);
}

TEST_F(KrLayoutRunTest, TeardownReleasesHostAndFeatureAndEmptiesEverything) {
    JsonHostDocument* doc = Load(kThreeAndTwo);
    Attach(doc);
    ASSERT_TRUE(run->SelectFeature(L"Route1"));
    run->SetApplyToHost(false);
    run->SetRunText(L"text");
    run->SetComponentMap({{1, L"a@b@c"}});
    ASSERT_EQ(run->Run(0.02, 0.02, 0, false, false, nullptr), 0);
    run->Teardown();
    EXPECT_EQ(run->GetSketch(), nullptr);
    EXPECT_FALSE(run->HasFeature());
    EXPECT_TRUE(run->GetOutputPoints().empty());
    EXPECT_TRUE(run->GetOutputConstraints().empty());
    EXPECT_TRUE(run->GetSegmentRecords().empty());
    EXPECT_TRUE(run->GetComponentMap().empty());
    EXPECT_TRUE(run->GetRunText().empty());
    EXPECT_TRUE(run->GetFeatureName().empty());
    // Only the library's own reference is left.
    EXPECT_EQ(Count(doc, doc->application()), 1u);
    EXPECT_EQ(log, (std::vector<std::string>{"create#1", "destroy#1"}));
}

// ---------------------------------------------------------------------------------------------
// Feature selection

TEST_F(KrLayoutRunTest, SelectFeatureFindsTheFirstEqualNameAndHoldsOneReference) {
    JsonHostDocument* doc = Load(kThreeAndTwo);
    Attach(doc);
    EXPECT_TRUE(run->SelectFeature(L"Route1"));
    EXPECT_TRUE(run->HasFeature());
    EXPECT_EQ(run->GetFeatureName(), L"Route1");
    // The walk stops at the match: Sketch1, then Route1.
    EXPECT_EQ(doc->results().countRequests("GetNextFeature"), 1u);
    EXPECT_EQ(doc->results().countRequests("GetName"), 2u);
    // The library's and the run's references to the application, one to the feature.
    EXPECT_EQ(doc->clientReferences(), 3u);
}

TEST_F(KrLayoutRunTest, UnknownFeatureNameWalksToTheEndAndDropsTheEarlierFeature) {
    JsonHostDocument* doc = Load(kThreeAndTwo);
    Attach(doc);
    ASSERT_TRUE(run->SelectFeature(L"Route2"));
    // Names compare with case: "route1" is no feature of this document.
    EXPECT_FALSE(run->SelectFeature(L"route1"));
    EXPECT_FALSE(run->HasFeature());
    EXPECT_EQ(run->GetFeatureName(), L"route1");
    // First walk: 2 steps to Route2; second walk: Sketch1 -> Route1 -> Route2 -> end.
    EXPECT_EQ(doc->results().countRequests("GetNextFeature"), 5u);
    EXPECT_EQ(doc->clientReferences(), 2u);
}

TEST_F(KrLayoutRunTest, SelectFeatureWithoutHostOrFeaturesIsFalse) {
    EXPECT_FALSE(run->SelectFeature(L"Route1"));
    EXPECT_EQ(run->GetFeatureName(), L"Route1");
    JsonHostDocument* none = Load(kSingle);
    Attach(none);
    EXPECT_FALSE(run->SelectFeature(L"Route1"));
    JsonHostDocument* noDoc = Load(Unavailable("activeDocument"));
    Attach(noDoc);
    EXPECT_FALSE(run->SelectFeature(L"Route1"));
}

TEST_F(KrLayoutRunTest, ClearFeatureReleasesTheFeature) {
    JsonHostDocument* doc = Load(kThreeAndTwo);
    Attach(doc);
    ASSERT_TRUE(run->SelectFeature(L"Route1"));
    run->ClearFeature();
    EXPECT_FALSE(run->HasFeature());
    EXPECT_EQ(run->GetFeatureName(), L"Route1");
    EXPECT_EQ(doc->clientReferences(), 2u);
}

TEST(KrHostLocaleTest, ComparesInTheUserLocaleAndFallsBackWhenItIsUnusable) {
    EXPECT_TRUE(KrHostLocale::Equal(L"Route1", L"Route1"));
    EXPECT_FALSE(KrHostLocale::Equal(L"Route1", L"route1"));
    EXPECT_FALSE(KrHostLocale::Equal(L"Route1", L"Route10"));
    EXPECT_TRUE(KrHostLocale::Equal(L"", L""));
    EXPECT_LT(KrHostLocale::Compare(L"a", L"b"), 0);
    EXPECT_GT(KrHostLocale::Compare(L"b", L"a"), 0);

    char const* old = std::getenv("LC_ALL");
    std::string const saved = old != nullptr ? old : "";
    setenv("LC_ALL", "xx_NOWHERE.bogus", 1);
    EXPECT_EQ(KrHostLocale::UserDefault(), std::locale::classic());
    EXPECT_TRUE(KrHostLocale::Equal(L"Route1", L"Route1"));
    EXPECT_FALSE(KrHostLocale::Equal(L"Route1", L"Route2"));
    if (old != nullptr) {
        setenv("LC_ALL", saved.c_str(), 1);
    } else {
        unsetenv("LC_ALL");
    }
}

// ---------------------------------------------------------------------------------------------
// Component map

TEST_F(KrLayoutRunTest, ComponentMapInsertsIfAbsentWithKeysNarrowedToInt) {
    EXPECT_EQ(run->SetComponentMap({{1, L"a"}, {2, L"b"}}), 0);
    EXPECT_EQ(run->SetComponentMap({{1, L"changed"}, {3, L"c"}, {(1L << 32) + 2, L"wide"}}), 0);
    // 2^32 + 2 narrows to 2, which is already present.
    EXPECT_EQ(run->GetComponentMap(), (std::map<int, std::wstring>{{1, L"a"}, {2, L"b"}, {3, L"c"}}));
}

TEST_F(KrLayoutRunTest, ComponentTextsNameConnectorsAndPins) {
    JsonHostDocument* doc = Load(kThreeAndTwo);
    Attach(doc);
    run->SetApplyToHost(false);
    run->SetComponentMap({
        {2, L"A@B@C:D@E@F"},     // two halves: (B@C, A) and (E@F, D)
        {1, L"P@Q@R"},           // no ":": the whole text is the second half: (Q@R, P)
        {3, L"X@Y"},             // tail "Y" holds no "@": nothing
        {4, L"A@@B"},            // tail "@B" holds its "@" at 0: nothing
        {5, L"@x@y:head@t@u"},   // first half: empty head, tail "x@y"; second: (t@u, head)
        {6, L"noat:noat"},       // no "@" anywhere: nothing
    });
    run->Run(0.02, 0.02, 0, false, false, nullptr);
    using C = std::tuple<long, std::wstring, std::wstring>;
    // Ascending id order; (id, tail, head).
    EXPECT_EQ(run->Latest()->connectors,
              (std::vector<C>{C{1, L"Q@R", L"P"}, C{2, L"B@C", L"A"}, C{2, L"E@F", L"D"}, C{5, L"x@y", L""},
                              C{5, L"t@u", L"head"}}));
}

TEST_F(KrLayoutRunTest, ComponentMapStepRunsBeforeTheRouteSketchIsTestedButNotWithoutRouteModel) {
    JsonHostDocument* noSketch = Load(Unavailable("routeSketch"));
    Attach(noSketch);
    run->SetComponentMap({{1, L"pin@conn@x"}});
    EXPECT_EQ(run->Run(0.02, 0.02, 0, false, false, nullptr), 3);
    EXPECT_EQ(run->Latest()->connectors.size(), 1u);

    JsonHostDocument* noModel = Load(Unavailable("routeModel"));
    Attach(noModel);
    EXPECT_EQ(run->Run(0.02, 0.02, 0, false, false, nullptr), 2);
    EXPECT_TRUE(run->Latest()->connectors.empty());
}

// ---------------------------------------------------------------------------------------------
// Status codes

TEST_F(KrLayoutRunTest, NoHostIsSix) {
    EXPECT_EQ(run->Run(0.02, 0.02, 0, false, false, nullptr), 6);
    // The sketch and its grid were made before the host was looked at.
    ASSERT_NE(run->GetSketch(), nullptr);
    EXPECT_TRUE(run->GetOutputPoints().empty());
}

TEST_F(KrLayoutRunTest, EachMissingHostPartStopsWithItsCodeAndLeavesTheArrays) {
    JsonHostDocument* good = Load(kThreeAndTwo);
    Attach(good);
    run->SetApplyToHost(false);
    ASSERT_EQ(run->Run(0.02, 0.02, 0, false, false, nullptr), 0);
    std::vector<double> const points = run->GetOutputPoints();
    std::vector<int> const codes = run->GetOutputConstraints();
    std::vector<int> const records = run->GetSegmentRecords();
    ASSERT_FALSE(points.empty());

    std::vector<std::pair<std::string, int>> const cases = {
        {Unavailable("activeDocument"), 2}, {Unavailable("routeModel"), 2}, {Unavailable("routeSketch"), 3},
        {Unavailable("routeData"), 4},      {Unavailable("routeContainer"), 5}, {R"({ "segments": [] })", 1},
    };
    for (auto const& c : cases) {
        JsonHostDocument* doc = Load(c.first);
        Attach(doc);
        EXPECT_EQ(run->Run(0.02, 0.02, 0, false, false, nullptr), c.second) << c.first;
        EXPECT_EQ(run->GetOutputPoints(), points);
        EXPECT_EQ(run->GetOutputConstraints(), codes);
        EXPECT_EQ(run->GetSegmentRecords(), records);
        EXPECT_EQ(run->layoutCalls, 1);
    }
    Attach(nullptr);
    EXPECT_EQ(run->Run(0.02, 0.02, 0, false, false, nullptr), 6);
    EXPECT_EQ(run->GetOutputPoints(), points);
}

TEST_F(KrLayoutRunTest, NoActiveDocumentEndsWithTwoBeforeAnythingIsRead) {
    JsonHostDocument* doc = Load(Unavailable("activeDocument"));
    Attach(doc);
    EXPECT_EQ(run->Run(0.02, 0.02, 0, false, false, nullptr), 2);
    auto const& requests = doc->results().requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].method, "GetActiveDocument");
    EXPECT_EQ(doc->results().selectionClears(), 0u);
}

TEST_F(KrLayoutRunTest, SelectionIsClearedBeforeTheIdsAreRead) {
    JsonHostDocument* doc = Load(kThreeAndTwo);
    Attach(doc);
    run->SetApplyToHost(false);
    run->Run(0.02, 0.02, 0, false, false, nullptr);
    std::vector<std::string> methods;
    for (auto const& r : doc->results().requests()) {
        if (r.method == "ClearSelection" || r.method == "GetRouteSegmentCount") methods.push_back(r.method);
    }
    EXPECT_EQ(methods, (std::vector<std::string>{"ClearSelection", "GetRouteSegmentCount"}));
}

// ---------------------------------------------------------------------------------------------
// Checks

TEST_F(KrLayoutRunTest, LoopSelectsExactlyTheLoopsEntitiesAndSkipsTheRest) {
    JsonHostDocument* doc = Load(Loop(true));
    Attach(doc);
    run->SetApplyToHost(false);
    EXPECT_EQ(run->Run(0.02, 0.02, 0, false, false, nullptr), 7);
    // The loop found from segment 1's root (0,0): (0,0) -3- (0,1) -2- (1,0) -1- (0,0); segment 2
    // has two entities. The tail 4 and the far piece 5 are not named, and the disjoint check (which
    // would name 5) does not run.
    EXPECT_EQ(CalloutTexts(doc),
              (std::vector<std::string>{"entity:3:loop", "entity:2:loop", "entity:2:loop", "entity:1:loop"}));
    EXPECT_EQ(doc->results().selection().size(), 4u);
    EXPECT_EQ(run->layoutCalls, 0);
    EXPECT_TRUE(run->GetOutputPoints().empty());
    // The failed run's sketch stays for the queries.
    std::vector<long> ids;
    run->GetSketch()->GetAllRouteSegment(ids);
    EXPECT_EQ(ids, (std::vector<long>{1, 2, 3, 4, 5}));
}

TEST_F(KrLayoutRunTest, DisjointNamesTheShortestPiece) {
    JsonHostDocument* doc = Load(kDisjoint);
    Attach(doc);
    run->SetApplyToHost(false);
    EXPECT_EQ(run->Run(0.02, 0.02, 0, false, false, nullptr), 8);
    // Pieces {1} of length 10 and {2, 3} of length 2 + 2.
    EXPECT_EQ(CalloutTexts(doc), (std::vector<std::string>{"entity:2:disjoint", "entity:3:disjoint"}));
    EXPECT_EQ(run->layoutCalls, 0);
    EXPECT_TRUE(run->GetOutputPoints().empty());
}

TEST_F(KrLayoutRunTest, BendFailureReturnsItsCodeWithOnlyTheSelectionCleared) {
    JsonHostDocument* doc = Load(Loop(false));
    Attach(doc);
    run->bendResult = 9;
    run->SetApplyToHost(false);
    EXPECT_EQ(run->Run(0.02, 0.02, 0, false, false, nullptr), 9);
    EXPECT_EQ(run->bendCalls, 1);
    EXPECT_TRUE(doc->results().callouts().empty());
    EXPECT_TRUE(doc->results().selection().empty());
    EXPECT_EQ(doc->results().countRequests("ClearSelection"), 1u);
    EXPECT_EQ(run->layoutCalls, 0);
}

// ---------------------------------------------------------------------------------------------
// Layout stage and write-back

TEST_F(KrLayoutRunTest, LayoutFailureStillWritesWhatTheSketchHolds) {
    JsonHostDocument* doc = Load(kThreeAndTwo);
    Attach(doc);
    run->realLayout = false;  // the layout stage reports 1 and moves nothing
    run->SetApplyToHost(false);
    EXPECT_EQ(run->Run(0.02, 0.02, 1, false, false, nullptr), 0);
    EXPECT_EQ(run->layoutCalls, 1);
    EXPECT_EQ(run->lastLayoutType, 1);
    // The lines as read: 3 + 2 lines give 30 doubles and 5 codes.
    EXPECT_EQ(run->GetOutputPoints(), (std::vector<double>{0, 0, 0, 0, 1, 0, 0, 1, 0, 1, 1, 0, 1, 1, 0, 2, 3, 0,
                                                           2, 3, 0, 2, 4, 0, 2, 4, 0, 5, 4, 0}));
    EXPECT_EQ(run->GetOutputConstraints(), (std::vector<int>{2, 1, 0, 2, 1}));
    IdList ids;
    EXPECT_EQ(run->GetSketch()->GetCADLineIdByRouteId(2, ids), 0);
    EXPECT_EQ(ids, (IdList{{3, 3}, {4, 4}}));
    // The array variant leaves the host alone.
    EXPECT_TRUE(doc->results().lines().empty());
}

TEST_F(KrLayoutRunTest, FailingArrayWriteBackStillYieldsZero) {
    JsonHostDocument* doc = Load(kThreeAndTwo);
    Attach(doc);
    run->realLayout = false;
    run->failLineIds = true;
    run->SetApplyToHost(false);
    EXPECT_EQ(run->Run(0.02, 0.02, 0, false, false, nullptr), 0);
    EXPECT_EQ(run->GetOutputConstraints().size(), 5u);
}

TEST_F(KrLayoutRunTest, SingleSegmentIsLaidFromTheOriginTowardMinusX) {
    JsonHostDocument* doc = Load(kSingle);
    Attach(doc);
    run->SetApplyToHost(false);
    ASSERT_EQ(run->Run(0.02, 0.02, 0, false, false, nullptr), 0);
    // Next node (-0.02, 0); end at -0.02 - (0.12 - 0.02) = -0.12, a lattice node.
    auto const& p = run->GetOutputPoints();
    ASSERT_EQ(p.size(), 6u);
    std::vector<double> const want = {0, 0, 0, -0.12, 0, 0};
    for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(p[i], want[i], 1e-9) << i;
    EXPECT_EQ(run->GetOutputConstraints(), (std::vector<int>{1}));
}

TEST_F(KrLayoutRunTest, GridSpacingsReachTheGrid) {
    JsonHostDocument* doc = Load(kSingle);
    Attach(doc);
    run->SetApplyToHost(false);
    ASSERT_EQ(run->Run(0.05, 0.01, 0, false, false, nullptr), 0);
    KrRoutingGrid* grid = nullptr;
    run->GetSketch()->GetGrid(grid);
    ASSERT_NE(grid, nullptr);
    double x = 0;
    double y = 0;
    grid->GetGridSpan(x, y);
    EXPECT_EQ(x, 0.05);
    EXPECT_EQ(y, 0.01);
    // Next node (-0.05, 0); -0.05 - (0.12 - 0.05) = -0.12 snaps to -0.10 (index -2.4 - 0.5 -> -2).
    // The root's area is not set yet when its end is found, so the snap error (+0.02) matches no
    // area and the end steps one node back against it: -0.15.
    auto const& p = run->GetOutputPoints();
    ASSERT_EQ(p.size(), 6u);
    EXPECT_NEAR(p[3], -0.15, 1e-9);
}

TEST_F(KrLayoutRunTest, DirectWriteBackDrawsWithTheFeatureAndHandsTheSketchOut) {
    JsonHostDocument* doc = Load(kThreeAndTwo);
    Attach(doc);
    ASSERT_TRUE(run->SelectFeature(L"Route1"));
    run->realLayout = false;
    void* result = nullptr;
    EXPECT_EQ(run->Run(0.4, 0.02, 0, true, true, &result), 0);
    auto const& r = doc->results();
    EXPECT_EQ(r.lines().size(), 5u);
    // 4 axis relations (the slanted line has none) and 5 coincident relations.
    EXPECT_EQ(r.relations().size(), 9u);
    std::size_t coincident = 0;
    for (auto const& rel : r.relations()) coincident += rel.name == L"sgCOINCIDENT" ? 1 : 0;
    EXPECT_EQ(coincident, 5u);
    // Joints of segment 1 at (0,1) and (1,1), of segment 2 at (2,4); radius 0.5 x 0.4.
    ASSERT_EQ(r.fillets().size(), 3u);
    EXPECT_DOUBLE_EQ(r.fillets()[0].radius, 0.2);
    EXPECT_TRUE(run->GetOutputPoints().empty());
    IdList ids;
    EXPECT_EQ(run->GetSketch()->GetCADLineIdByRouteId(1, ids), 0);
    EXPECT_EQ(ids, (IdList{{1, 1}, {1, 2}, {1, 3}}));
    ASSERT_NE(result, nullptr);
    static_cast<IHostSketch*>(result)->Release();
}

TEST_F(KrLayoutRunTest, DirectWriteBackWithoutFeatureAddsNoCoincidence) {
    JsonHostDocument* doc = Load(kThreeAndTwo);
    Attach(doc);
    run->realLayout = false;
    void* result = nullptr;
    EXPECT_EQ(run->Run(0.02, 0.02, 0, false, true, &result), 0);
    EXPECT_EQ(doc->results().relations().size(), 4u);
    EXPECT_EQ(doc->results().countRequests("AddRelation"), 4u);
    static_cast<IHostSketch*>(result)->Release();
}

// ---------------------------------------------------------------------------------------------
// Between runs

TEST_F(KrLayoutRunTest, SecondRunReadsWayPointsForEveryRecordedIdAndAppends) {
    JsonHostDocument* doc = Load(kThreeAndTwo);
    Attach(doc);
    run->realLayout = false;
    run->SetApplyToHost(false);
    ASSERT_EQ(run->Run(0.02, 0.02, 0, false, false, nullptr), 0);
    ASSERT_EQ(run->Run(0.02, 0.02, 0, false, false, nullptr), 0);
    EXPECT_EQ(run->GetSegmentRecords(), (std::vector<int>{1, 2, 1, 2}));
    // First run: 5 lines, 10 points. Second run: the ids 1, 2, 1, 2 give 20 points; the map keeps
    // one entry per id.
    ASSERT_EQ(run->sketches.size(), 2u);
    ASSERT_EQ(run->Latest()->wayPointCalls.size(), 1u);
    EXPECT_EQ(run->Latest()->wayPointCalls[0].first, (std::map<long, long>{{1, 3}, {2, 2}}));
    EXPECT_EQ(run->Latest()->wayPointCalls[0].second, 20u);
    // The arrays hold both runs; the second run's ids restart at 0.
    EXPECT_EQ(run->GetOutputPoints().size(), 60u);
    EXPECT_EQ(run->GetOutputConstraints(), (std::vector<int>{2, 1, 0, 2, 1, 2, 1, 0, 2, 1}));
    IdList ids;
    run->GetSketch()->GetCADLineIdByRouteId(1, ids);
    EXPECT_EQ(ids, (IdList{{0, 0}, {1, 1}, {2, 2}}));
}

TEST_F(KrLayoutRunTest, PreviousSketchIsFreedOnceTheNewOneExists) {
    JsonHostDocument* doc = Load(kSingle);
    Attach(doc);
    run->SetApplyToHost(false);
    run->Run(0.02, 0.02, 0, false, false, nullptr);
    EXPECT_EQ(log, (std::vector<std::string>{"create#1"}));
    run->Run(0.02, 0.02, 0, false, false, nullptr);
    EXPECT_EQ(log, (std::vector<std::string>{"create#1", "create#2", "destroy#1"}));
    EXPECT_EQ(run->GetSketch(), run->sketches[1]);
}

}  // namespace
