// The facade: spacings, layout type, both start forms, output arrays, id queries, failure codes,
// check reports and the library-wide host reference.
#include <krlayout/api/KrAutoLayout.h>
#include <krlayout/host/IHostApplication.h>
#include <krlayout/host/IHostSketch.h>

#include <JsonHostDocument.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

// Makes the next nothrow allocations fail, so that a facade can be built without its run object.
namespace {
bool failNothrowNew = false;
}

void* operator new(std::size_t size, std::nothrow_t const&) noexcept {
    if (failNothrowNew) {
        return nullptr;
    }
    try {
        return ::operator new(size);
    } catch (...) {
        return nullptr;
    }
}

namespace {

using IdPair = std::pair<long, long>;
using IdList = std::vector<IdPair>;

// One segment of length 0.12.
std::string const kSingle = R"({
  "segments": [ { "id": 4, "value": 1, "entities": [
      { "kind": "line", "length": 0.12, "start": [5,5,0], "end": [5.12,5,0] } ] } ]
})";

// A (id 1, diameter 3, length 0.1) from P0 to P1; B (id 2, diameter 2, length 0.1) and C (id 3,
// diameter 1, length 0.06) both leave P1.
std::string const kTree = R"({
  "features": ["Sketch1", "Route1"],
  "segments": [
    { "id": 1, "value": 3, "entities": [ { "kind": "line", "length": 0.1, "start": [0,0,0], "end": [1,0,0] } ] },
    { "id": 2, "value": 2, "entities": [ { "kind": "line", "length": 0.1, "start": [1,0,0], "end": [2,0,0] } ] },
    { "id": 3, "value": 1, "entities": [ { "kind": "line", "length": 0.06, "start": [1,0,0], "end": [1,1,0] } ] }
  ]
})";

// S1 (id 1, length 0.2, diameter 1) from P0 to P1; S2 (id 2, length 0.1, diameter 2) from P1 on.
// By diameter S2 is the root, by length S1.
std::string const kTwoKeys = R"({
  "segments": [
    { "id": 1, "value": 1, "entities": [ { "kind": "line", "length": 0.2, "start": [0,0,0], "end": [1,0,0] } ] },
    { "id": 2, "value": 2, "entities": [ { "kind": "line", "length": 0.1, "start": [1,0,0], "end": [2,0,0] } ] }
  ]
})";

// A triangle 1-2-3 with a tail 4.
std::string const kLoop = R"({
  "segments": [
    { "id": 1, "value": 1, "entities": [ { "kind": "line", "start": [0,0,0], "end": [1,0,0] } ] },
    { "id": 2, "value": 1, "entities": [ { "kind": "line", "start": [1,0,0], "end": [0,1,0] } ] },
    { "id": 3, "value": 1, "entities": [ { "kind": "line", "start": [0,1,0], "end": [0,0,0] } ] },
    { "id": 4, "value": 1, "entities": [ { "kind": "line", "start": [1,0,0], "end": [2,0,0] } ] }
  ]
})";

// Pieces {1} of length 10 and {2} of length 4.
std::string const kDisjoint = R"({
  "segments": [
    { "id": 1, "value": 1, "entities": [ { "kind": "line", "start": [0,0,0], "end": [10,0,0] } ] },
    { "id": 2, "value": 1, "entities": [ { "kind": "line", "start": [20,0,0], "end": [24,0,0] } ] }
  ]
})";

std::string Unavailable(std::string const& part) {
    return R"({ "available": { ")" + part + R"(": false }, "segments": [
      { "id": 1, "value": 1, "entities": [ { "kind": "line", "start": [0,0,0], "end": [1,0,0] } ] } ] })";
}

void ExpectNear(std::vector<double> const& got, std::vector<double> const& want) {
    ASSERT_EQ(got.size(), want.size());
    for (std::size_t i = 0; i < got.size(); ++i) {
        EXPECT_NEAR(got[i], want[i], 1e-9) << "index " << i;
    }
}

class KrAutoLayoutTest : public ::testing::Test {
protected:
    void TearDown() override {
        layout.reset();
        for (auto const& d : docs) {
            // With every facade gone, each host object is back at its starting count: the
            // reference handed over with each start was released by the library.
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

    // The caller hands the library one reference to the application.
    static void* Hand(JsonHostDocument* doc) {
        doc->application()->AddRef();
        return doc->application();
    }

    long ArrayRun(KrAutoLayout& f, JsonHostDocument* doc, int type = 0) {
        std::wstring text;
        return f.StartAutoLayout(doc != nullptr ? Hand(doc) : nullptr, type, false, false, nullptr, false, text);
    }

    static unsigned long AppRefs(JsonHostDocument* doc) {
        auto c = doc->referenceCount(doc->application());
        return c ? c->count - c->baseline : 0;
    }

    std::vector<std::unique_ptr<JsonHostDocument>> docs;
    std::unique_ptr<KrAutoLayout> layout = std::make_unique<KrAutoLayout>();
};

// Layout of kTree with spacings (0.05, 0.01): A from the origin to (-0.1, 0); at A's far end B
// (larger diameter) gets angle pi and C angle pi/2 in row 1. B: first node (-0.15, 0), end
// -0.15 - (0.1 - 0.05) = -0.2. C: up one row to (-0.1, 0.01), then left by 0.06 - 0.01 = 0.05 to
// (-0.15, 0.01): two lines.
std::vector<double> const kTreeWide = {
    0, 0, 0, -0.1, 0, 0,              // A
    -0.1, 0, 0, -0.2, 0, 0,           // B
    -0.1, 0, 0, -0.1, 0.01, 0,        // C, vertical part
    -0.1, 0.01, 0, -0.15, 0.01, 0,    // C, horizontal part
};
// The same with the default spacings 0.02: B ends at -0.12 - 0.08 = -0.2; C rises to 0.02 and
// runs 0.06 - 0.02 = 0.04 to the left.
std::vector<double> const kTreeDefault = {
    0, 0, 0, -0.1, 0, 0,
    -0.1, 0, 0, -0.2, 0, 0,
    -0.1, 0, 0, -0.1, 0.02, 0,
    -0.1, 0.02, 0, -0.14, 0.02, 0,
};

// ---------------------------------------------------------------------------------------------
// Spacings and layout type

TEST_F(KrAutoLayoutTest, FreshFacadeLaysOutWithTwoHundredthsInBothDirections) {
    JsonHostDocument* doc = Load(kTree);
    ASSERT_EQ(ArrayRun(*layout, doc), 0);
    std::vector<double> points;
    std::vector<int> codes;
    EXPECT_EQ(layout->getOutputPoints(points), 0);
    EXPECT_EQ(layout->getOutputConstraints(codes), 0);
    ExpectNear(points, kTreeDefault);
    EXPECT_EQ(codes, (std::vector<int>{1, 1, 2, 1}));
}

TEST_F(KrAutoLayoutTest, SpacingSetterMakesTheGridUseBothValues) {
    JsonHostDocument* doc = Load(kTree);
    EXPECT_EQ(layout->setRouteGridSpacing(0.05, 0.01), 0);
    ASSERT_EQ(ArrayRun(*layout, doc), 0);
    std::vector<double> points;
    layout->getOutputPoints(points);
    ExpectNear(points, kTreeWide);
}

TEST_F(KrAutoLayoutTest, SingleSegmentRunsFromTheOriginOverItsLength) {
    JsonHostDocument* doc = Load(kSingle);
    ASSERT_EQ(ArrayRun(*layout, doc), 0);
    std::vector<double> points;
    std::vector<int> codes;
    layout->getOutputPoints(points);
    layout->getOutputConstraints(codes);
    ExpectNear(points, {0, 0, 0, -0.12, 0, 0});
    EXPECT_EQ(codes, (std::vector<int>{1}));
}

// kTwoKeys: by diameter S2 is the root, from the origin to -0.1; S1 hangs at the root's start and
// goes right to 0.02 + (0.2 - 0.02) = 0.2. By length S1 is the root, to -0.2; S2 continues left to
// -0.22 - (0.1 - 0.02) = -0.3.
std::vector<double> const kByDiameter = {0, 0, 0, 0.2, 0, 0, 0, 0, 0, -0.1, 0, 0};
std::vector<double> const kByLength = {0, 0, 0, -0.2, 0, 0, -0.2, 0, 0, -0.3, 0, 0};

TEST_F(KrAutoLayoutTest, LayoutTypeOneRunsByLengthEveryOtherValueByDiameter) {
    std::vector<std::pair<int, std::vector<double>>> const cases = {
        {0, kByDiameter}, {1, kByLength}, {7, kByDiameter}, {-1, kByDiameter}, {2, kByDiameter}};
    for (auto const& c : cases) {
        KrAutoLayout f;
        JsonHostDocument* doc = Load(kTwoKeys);
        ASSERT_EQ(ArrayRun(f, doc, c.first), 0) << c.first;
        std::vector<double> points;
        f.getOutputPoints(points);
        SCOPED_TRACE(c.first);
        ExpectNear(points, c.second);
    }
}

// ---------------------------------------------------------------------------------------------
// Output arrays and id queries

TEST_F(KrAutoLayoutTest, TwoArrayRunsConcatenateAndTheIdsCountFromTheLatestRun) {
    JsonHostDocument* doc = Load(kTree);
    ASSERT_EQ(ArrayRun(*layout, doc), 0);
    ASSERT_EQ(ArrayRun(*layout, doc), 0);
    std::vector<double> points;
    std::vector<int> codes;
    layout->getOutputPoints(points);
    layout->getOutputConstraints(codes);
    std::vector<double> both = kTreeDefault;
    both.insert(both.end(), kTreeDefault.begin(), kTreeDefault.end());
    ExpectNear(points, both);
    EXPECT_EQ(codes, (std::vector<int>{1, 1, 2, 1, 1, 1, 2, 1}));
    // Lines 0 .. 3 of the second run: A is 0, B is 1, C is 2 and 3.
    IdList ids;
    EXPECT_EQ(layout->GetSketchLineIdByRouteSegmentId(3, ids), 0);
    EXPECT_EQ(ids, (IdList{{2, 2}, {3, 3}}));
    std::vector<long> segs;
    EXPECT_EQ(layout->getRouteSegmentIDs(segs), 0);
    EXPECT_EQ(segs, (std::vector<long>{1, 2, 3}));
    // Entity counts asked: first run 3 (lengths) + 3 (way points of 1, 2, 3); second run 3
    // (lengths) + 6 (way points of the recorded 1, 2, 3, 1, 2, 3).
    EXPECT_EQ(doc->results().countRequests("GetSketchEntityCount"), 15u);
}

TEST_F(KrAutoLayoutTest, GettersReplaceTheArgumentAndQueriesAppend) {
    JsonHostDocument* doc = Load(kSingle);
    ArrayRun(*layout, doc);
    std::vector<double> points = {9, 9, 9};
    std::vector<int> codes = {9};
    layout->getOutputPoints(points);
    layout->getOutputConstraints(codes);
    EXPECT_EQ(points.size(), 6u);
    EXPECT_EQ(codes, (std::vector<int>{1}));
    std::vector<long> segs = {99};
    layout->getRouteSegmentIDs(segs);
    EXPECT_EQ(segs, (std::vector<long>{99, 4}));
    // An array run records no point ids.
    IdList pointIds;
    EXPECT_EQ(layout->GetSketchPointIdByRouteSegmentId(4, pointIds), 0);
    EXPECT_TRUE(pointIds.empty());
}

TEST_F(KrAutoLayoutTest, FreshFacadeHasNoSketchToQuery) {
    std::vector<long> segs;
    IdList ids;
    EXPECT_EQ(layout->getRouteSegmentIDs(segs), 1);
    EXPECT_EQ(layout->GetSketchLineIdByRouteSegmentId(1, ids), 1);
    EXPECT_EQ(layout->GetSketchPointIdByRouteSegmentId(1, ids), 1);
    std::vector<double> points = {1};
    EXPECT_EQ(layout->getOutputPoints(points), 0);
    EXPECT_TRUE(points.empty());
}

TEST_F(KrAutoLayoutTest, ArrayRunLeavesTheResultSketchAndTheTextAlone) {
    JsonHostDocument* doc = Load(kSingle);
    int sentinel = 0;
    void* result = &sentinel;
    std::wstring text = L"keep";
    EXPECT_EQ(layout->StartAutoLayout(Hand(doc), 0, true, true, &result, false, text), 0);
    EXPECT_EQ(result, &sentinel);
    EXPECT_EQ(text, L"keep");
    EXPECT_TRUE(doc->results().lines().empty());
}

// ---------------------------------------------------------------------------------------------
// Failure codes

TEST_F(KrAutoLayoutTest, NullHostIsSixAndTheArraysStay) {
    JsonHostDocument* doc = Load(kSingle);
    ASSERT_EQ(ArrayRun(*layout, doc), 0);
    EXPECT_EQ(ArrayRun(*layout, nullptr), 6);
    std::vector<double> points;
    layout->getOutputPoints(points);
    EXPECT_EQ(points.size(), 6u);
    // The library dropped its reference to the earlier host when the null one came.
    EXPECT_EQ(AppRefs(doc), 0u);
}

TEST_F(KrAutoLayoutTest, EveryFailureCodeLeavesTheArraysUnchanged) {
    JsonHostDocument* good = Load(kTree);
    ASSERT_EQ(ArrayRun(*layout, good), 0);
    std::vector<double> before;
    std::vector<int> codesBefore;
    layout->getOutputPoints(before);
    layout->getOutputConstraints(codesBefore);

    std::vector<std::pair<std::string, long>> const cases = {
        {R"({ "segments": [] })", 1},      {Unavailable("activeDocument"), 2}, {Unavailable("routeModel"), 2},
        {Unavailable("routeSketch"), 3},   {Unavailable("routeData"), 4},      {Unavailable("routeContainer"), 5},
        {kLoop, 7},                        {kDisjoint, 8},
    };
    for (auto const& c : cases) {
        JsonHostDocument* doc = Load(c.first);
        EXPECT_EQ(ArrayRun(*layout, doc), c.second) << c.first;
        std::vector<double> points;
        std::vector<int> codes;
        layout->getOutputPoints(points);
        layout->getOutputConstraints(codes);
        EXPECT_EQ(points, before);
        EXPECT_EQ(codes, codesBefore);
    }
    EXPECT_EQ(ArrayRun(*layout, nullptr), 6);
    std::vector<double> points;
    layout->getOutputPoints(points);
    EXPECT_EQ(points, before);
}

TEST_F(KrAutoLayoutTest, LoopAndDisjointSegmentsAreShownWithTheirMessages) {
    JsonHostDocument* loop = Load(kLoop);
    EXPECT_EQ(ArrayRun(*layout, loop), 7);
    std::vector<int> segments;
    for (auto const& s : loop->results().callouts()) {
        EXPECT_EQ(s.callout, L"Loop Segment");
        segments.push_back(s.target.segment);
    }
    // From segment 1's root (0,0): along 3 to (0,1), along 2 to (1,0), along 1 back.
    EXPECT_EQ(segments, (std::vector<int>{3, 2, 1}));
    // The failed run's sketch answers the queries.
    std::vector<long> ids;
    EXPECT_EQ(layout->getRouteSegmentIDs(ids), 0);
    EXPECT_EQ(ids, (std::vector<long>{1, 2, 3, 4}));

    JsonHostDocument* disjoint = Load(kDisjoint);
    EXPECT_EQ(ArrayRun(*layout, disjoint), 8);
    ASSERT_EQ(disjoint->results().callouts().size(), 1u);
    EXPECT_EQ(disjoint->results().callouts()[0].callout, L"Disjoint Segment");
    EXPECT_EQ(disjoint->results().callouts()[0].target.segment, 2);
}

TEST_F(KrAutoLayoutTest, MessagesKeepTheirTexts) {
    EXPECT_EQ(KrAutoLayout::loopMessage, L"Loop Segment");
    EXPECT_EQ(KrAutoLayout::disjoinMessage, L"Disjoint Segment");
}

// ---------------------------------------------------------------------------------------------
// Direct write-back and the second start form

TEST_F(KrAutoLayoutTest, StartAutoLayout2DrawsWithCoincidenceToTheNamedFeature) {
    JsonHostDocument* doc = Load(kTree);
    std::wstring feature = L"Route1";
    std::wstring text = L"run text";
    void* result = nullptr;
    ASSERT_EQ(layout->StartAutoLayout2(Hand(doc), 0, true, true, feature, &result, true, text), 0);
    auto const& r = doc->results();
    ASSERT_EQ(r.lines().size(), 4u);
    // A, B and C's top part are horizontal, C's first part vertical; each line also coincides with
    // the feature.
    std::vector<std::wstring> names;
    for (auto const& rel : r.relations()) names.push_back(rel.name);
    EXPECT_EQ(names, (std::vector<std::wstring>{L"sgALONGX3D", L"sgCOINCIDENT", L"sgALONGX3D", L"sgCOINCIDENT",
                                                L"sgALONGY3D", L"sgCOINCIDENT", L"sgALONGX3D", L"sgCOINCIDENT"}));
    ASSERT_EQ(r.relations()[1].entities.size(), 2u);
    EXPECT_EQ(r.relations()[1].entities[1].text(), "feature(Route1)");
    // C's joint at (-0.1, 0.02), radius 0.5 x 0.02.
    ASSERT_EQ(r.fillets().size(), 1u);
    EXPECT_NEAR(r.fillets()[0].radius, 0.01, 1e-15);
    EXPECT_NEAR(r.fillets()[0].at[1], 0.02, 1e-12);
    // Host ids: lines (1, 1) .. (1, 4) in drawing order.
    IdList ids;
    EXPECT_EQ(layout->GetSketchLineIdByRouteSegmentId(3, ids), 0);
    EXPECT_EQ(ids, (IdList{{1, 3}, {1, 4}}));
    // Connector ends: A's start at the origin is point (2, 1); C's free end is its third point
    // (-0.14, 0.02), drawn after (0,0), (-0.1,0), (-0.2,0) and (-0.1,0.02): (2, 5).
    IdList pointIds;
    EXPECT_EQ(layout->GetSketchPointIdByRouteSegmentId(1, pointIds), 0);
    EXPECT_EQ(pointIds, (IdList{{2, 1}}));
    pointIds.clear();
    layout->GetSketchPointIdByRouteSegmentId(3, pointIds);
    EXPECT_EQ(pointIds, (IdList{{2, 5}}));
    // No arrays in the direct variant; the texts are not written.
    std::vector<double> points;
    layout->getOutputPoints(points);
    EXPECT_TRUE(points.empty());
    EXPECT_EQ(feature, L"Route1");
    EXPECT_EQ(text, L"run text");
    ASSERT_NE(result, nullptr);
    static_cast<IHostSketch*>(result)->Release();
}

TEST_F(KrAutoLayoutTest, UnknownFeatureNameRunsWithoutCoincidence) {
    JsonHostDocument* doc = Load(kTree);
    std::wstring feature = L"NoSuchFeature";
    std::wstring text;
    void* result = nullptr;
    EXPECT_EQ(layout->StartAutoLayout2(Hand(doc), 0, false, true, feature, &result, true, text), 0);
    EXPECT_EQ(doc->results().relations().size(), 4u);
    // The whole feature list was walked: Sketch1 -> Route1 -> end.
    EXPECT_EQ(doc->results().countRequests("GetNextFeature"), 2u);
    static_cast<IHostSketch*>(result)->Release();
}

TEST_F(KrAutoLayoutTest, StartAutoLayoutAfterStartAutoLayout2AddsNoCoincidence) {
    JsonHostDocument* first = Load(kTree);
    std::wstring feature = L"Route1";
    std::wstring text;
    void* result = nullptr;
    ASSERT_EQ(layout->StartAutoLayout2(Hand(first), 0, false, true, feature, &result, true, text), 0);
    static_cast<IHostSketch*>(result)->Release();
    JsonHostDocument* second = Load(kTree);
    result = nullptr;
    ASSERT_EQ(layout->StartAutoLayout(Hand(second), 0, false, true, &result, true, text), 0);
    for (auto const& rel : second->results().relations()) {
        EXPECT_NE(rel.name, L"sgCOINCIDENT");
    }
    EXPECT_EQ(second->results().relations().size(), 4u);
    static_cast<IHostSketch*>(result)->Release();
}

TEST_F(KrAutoLayoutTest, StartAutoLayoutWithoutAxisRelationsOrFilletsDrawsOnlyLines) {
    JsonHostDocument* doc = Load(kTree);
    std::wstring text;
    void* result = nullptr;
    EXPECT_EQ(layout->StartAutoLayout(Hand(doc), 1, false, false, &result, true, text), 0);
    EXPECT_EQ(doc->results().lines().size(), 4u);
    EXPECT_TRUE(doc->results().relations().empty());
    EXPECT_TRUE(doc->results().fillets().empty());
    static_cast<IHostSketch*>(result)->Release();
}

// ---------------------------------------------------------------------------------------------
// The library-wide host reference

TEST_F(KrAutoLayoutTest, LibraryAdoptsTheHandedReferenceAndTheRunTakesItsOwn) {
    JsonHostDocument* a = Load(kSingle);
    ArrayRun(*layout, a);
    EXPECT_EQ(AppRefs(a), 2u);  // the adopted one and the run's
    JsonHostDocument* b = Load(kSingle);
    ArrayRun(*layout, b);
    EXPECT_EQ(AppRefs(a), 0u);
    EXPECT_EQ(AppRefs(b), 2u);
    layout.reset();
    EXPECT_EQ(AppRefs(b), 0u);
}

TEST_F(KrAutoLayoutTest, AnyDestructorReleasesTheSharedReference) {
    JsonHostDocument* a = Load(kSingle);
    ArrayRun(*layout, a);
    {
        KrAutoLayout other;  // never started
    }
    // The library's reference went with the other facade; the run still holds its own.
    EXPECT_EQ(AppRefs(a), 1u);
    layout.reset();
    EXPECT_EQ(AppRefs(a), 0u);
}

TEST_F(KrAutoLayoutTest, TwoFacadesShareOneLibraryReference) {
    JsonHostDocument* a = Load(kSingle);
    JsonHostDocument* b = Load(kSingle);
    KrAutoLayout second;
    ArrayRun(*layout, a);
    ArrayRun(second, b);
    // b's start released the library's reference to a; the first run keeps its own.
    EXPECT_EQ(AppRefs(a), 1u);
    EXPECT_EQ(AppRefs(b), 2u);
}

TEST_F(KrAutoLayoutTest, FacadeWithoutRunObjectReportsOneAndStillReleasesTheHost) {
    failNothrowNew = true;
    auto broken = std::make_unique<KrAutoLayout>();
    failNothrowNew = false;
    std::vector<long> segs;
    IdList ids;
    EXPECT_EQ(broken->getRouteSegmentIDs(segs), 1);
    EXPECT_EQ(broken->GetSketchLineIdByRouteSegmentId(1, ids), 1);
    EXPECT_EQ(broken->GetSketchPointIdByRouteSegmentId(1, ids), 1);
    std::vector<double> points;
    std::vector<int> codes;
    EXPECT_EQ(broken->getOutputPoints(points), 1);
    EXPECT_EQ(broken->getOutputConstraints(codes), 1);
    EXPECT_EQ(broken->setComponentMap({{1, L"a@b@c"}}), 1);
    EXPECT_EQ(broken->setRouteGridSpacing(0.1, 0.1), 0);
    JsonHostDocument* doc = Load(kSingle);
    EXPECT_EQ(ArrayRun(*broken, doc), 1);
    std::wstring name = L"Route1";
    std::wstring text;
    EXPECT_EQ(broken->StartAutoLayout2(Hand(doc), 0, false, false, name, nullptr, false, text), 1);
    EXPECT_EQ(AppRefs(doc), 1u);  // the adopted reference, dropped by the destructor
    broken.reset();
    EXPECT_EQ(AppRefs(doc), 0u);
}

TEST_F(KrAutoLayoutTest, ComponentMapIsAccepted) {
    EXPECT_EQ(layout->setComponentMap({{1, L"pin@conn@x"}}), 0);
    JsonHostDocument* doc = Load(kSingle);
    EXPECT_EQ(ArrayRun(*layout, doc), 0);
}

}  // namespace
