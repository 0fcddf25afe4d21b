// Writing laid-out lines back: the array variant (coordinates, axis codes, (k, k) line ids) and the
// direct variant (lines drawn into the host sketch with relations, fillets and host ids).
#include <krlayout/host/IHostApplication.h>
#include <krlayout/host/IHostDocument.h>
#include <krlayout/host/IHostFeature.h>
#include <krlayout/host/IHostSelectionManager.h>
#include <krlayout/host/IHostSketch.h>
#include <krlayout/host/KrHostInterfaceId.h>
#include <krlayout/host/KrHostRef.h>
#include <krlayout/host/KrHostRouteWriter.h>
#include <krlayout/host/KrHostSession.h>
#include <krlayout/sketch/KrSketch.h>

#include <JsonHostDocument.h>

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using IdPair = std::pair<long, long>;
using IdList = std::vector<IdPair>;

// A real sketch that also records what the writer hands it.
class RecordingSketch : public KrSketch {
public:
    std::vector<std::pair<long, IdList>> lineIdCalls;
    std::vector<std::pair<long, IdList>> pointIdCalls;
    int bendCalls = 0;
    int lineIdResult = -1;  // when not -1, returned instead of the store's result

    int SetCADLineIdByRouteId(long id, IdList const& ids) override {
        lineIdCalls.emplace_back(id, ids);
        int const r = KrSketch::SetCADLineIdByRouteId(id, ids);
        return lineIdResult == -1 ? r : lineIdResult;
    }
    int SetCADPointIdByRouteId(long id, std::vector<long*>& ids) override {
        IdList copy;
        for (long* p : ids) {
            copy.emplace_back(p[0], p[1]);
        }
        pointIdCalls.emplace_back(id, copy);
        return KrSketch::SetCADPointIdByRouteId(id, ids);
    }
    int ModifySketchByBends() override {
        ++bendCalls;
        return KrSketch::ModifySketchByBends();
    }
};

struct Seg {
    int id;
    std::vector<std::pair<ALPoint, ALPoint>> lines;
};

// Builds a sketch whose lines are exactly the given ones (no layout): way points keep the input
// positions as their grid coordinates.
void Build(KrSketch& sketch, std::vector<Seg> const& segs, double gridX = 0.4, double gridY = 0.02) {
    sketch.CreateGrid(gridX, gridY);
    std::map<long, long> counts;
    std::vector<ALPoint> points;
    for (Seg const& s : segs) {
        sketch.CreateRouteSegment(s.id, 0.0, 1.0);
        counts[s.id] = static_cast<long>(s.lines.size());
        for (auto const& l : s.lines) {
            points.push_back(l.first);
            points.push_back(l.second);
        }
    }
    sketch.CreateWayPoint(counts, points);
}

ALPoint P(double x, double y) { return ALPoint(x, y, 0.0); }

// Segment 10: vertical, horizontal, slanted. Segment 20: vertical within 1e-5 (x differs by 9e-6),
// then horizontal within 1e-5 (y differs by 1e-6).
std::vector<Seg> TwoSegments() {
    return {
        {10, {{P(0, 0), P(0, 1)}, {P(0, 1), P(1, 1)}, {P(1, 1), P(2, 3)}}},
        {20, {{P(2, 3), P(2.000009, 4)}, {P(2.000009, 4), P(5, 4.000001)}}},
    };
}

// TwoSegments plus segment 30 of a single horizontal line.
std::vector<Seg> ThreeSegments() {
    std::vector<Seg> segs = TwoSegments();
    segs.push_back({30, {{P(7, 0), P(9, 0)}}});
    return segs;
}

std::string const kDocument = R"({
  "name": "writer",
  "features": ["Sketch1", "Route1"],
  "segments": [ { "id": 1, "value": 1, "entities": [ { "kind": "line", "start": [0,0,0], "end": [1,0,0] } ] } ]
})";

class KrHostRouteWriterTest : public ::testing::Test {
protected:
    void SetUp() override { doc = Load(kDocument); }

    void TearDown() override {
        for (auto const& d : docs) {
            // Every reference the library or the test took is given back.
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

    IHostFeature* Feature(std::wstring const& name) {
        IHostFeature* f = nullptr;
        EXPECT_TRUE(KrHostSession::FindFeature(doc->application(), name, f));
        return f;
    }

    std::vector<std::string> RequestsOf(std::vector<std::string> const& methods) const {
        std::vector<std::string> out;
        for (auto const& r : doc->results().requests()) {
            for (auto const& m : methods) {
                if (r.method == m) out.push_back(m);
            }
        }
        return out;
    }

    std::vector<std::unique_ptr<JsonHostDocument>> docs;
    JsonHostDocument* doc = nullptr;
};

// The selection a relation was added to, as the host names its entities.
std::vector<std::string> Texts(std::vector<JsonHostRecorder::Target> const& targets) {
    std::vector<std::string> out;
    for (auto const& t : targets) out.push_back(t.text());
    return out;
}

using Names = std::vector<std::string>;

// ---------------------------------------------------------------------------------------------
// Axis codes

TEST(KrHostRouteWriterAxisCode, VerticalIsTwoHorizontalIsOneSlantedIsZero) {
    ALLine l;
    l.start = P(1, 1);
    l.end = P(1, 5);
    EXPECT_EQ(KrHostRouteWriter::AxisCode(l), 2);
    l.end = P(4, 1);
    EXPECT_EQ(KrHostRouteWriter::AxisCode(l), 1);
    l.end = P(4, 5);
    EXPECT_EQ(KrHostRouteWriter::AxisCode(l), 0);
}

TEST(KrHostRouteWriterAxisCode, XEqualWithinTheToleranceCountsAsVertical) {
    ALLine l;
    l.start = P(1, 1);
    l.end = P(1.000009, 5);  // |dx| = 9e-6 < 1e-5
    EXPECT_EQ(KrHostRouteWriter::AxisCode(l), 2);
    l.end = P(1.00002, 5);   // 2e-5 apart, y differs too
    EXPECT_EQ(KrHostRouteWriter::AxisCode(l), 0);
    l.end = P(1.00002, 1.000009);  // x apart, y within the tolerance
    EXPECT_EQ(KrHostRouteWriter::AxisCode(l), 1);
}

TEST(KrHostRouteWriterAxisCode, DegenerateLineIsVerticalBecauseXIsTestedFirst) {
    ALLine l;
    l.start = P(3, 3);
    l.end = P(3, 3);
    EXPECT_EQ(KrHostRouteWriter::AxisCode(l), 2);
}

// ---------------------------------------------------------------------------------------------
// Array variant

TEST(KrHostRouteWriterArrays, ThreeAndTwoLinesGiveThirtyDoublesAndFiveCodes) {
    RecordingSketch sketch;
    Build(sketch, TwoSegments());
    std::vector<double> points;
    std::vector<int> codes;
    ASSERT_EQ(KrHostRouteWriter::WriteArrays(&sketch, points, codes), 0);
    // Six doubles per line, start then end, z written as 0; lines in segment and line order.
    std::vector<double> const expected = {
        0, 0, 0, 0, 1, 0,
        0, 1, 0, 1, 1, 0,
        1, 1, 0, 2, 3, 0,
        2, 3, 0, 2.000009, 4, 0,
        2.000009, 4, 0, 5, 4.000001, 0,
    };
    ASSERT_EQ(points.size(), 30u);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(points[i], expected[i], 1e-12) << i;
    }
    EXPECT_EQ(codes, (std::vector<int>{2, 1, 0, 2, 1}));
}

TEST(KrHostRouteWriterArrays, LineIdsAreTheRunningIndexAndNoPointIdsAreSet) {
    RecordingSketch sketch;
    Build(sketch, TwoSegments());
    std::vector<double> points;
    std::vector<int> codes;
    KrHostRouteWriter::WriteArrays(&sketch, points, codes);
    ASSERT_EQ(sketch.lineIdCalls.size(), 2u);
    EXPECT_EQ(sketch.lineIdCalls[0], std::make_pair(10L, IdList{{0, 0}, {1, 1}, {2, 2}}));
    EXPECT_EQ(sketch.lineIdCalls[1], std::make_pair(20L, IdList{{3, 3}, {4, 4}}));
    ASSERT_EQ(sketch.pointIdCalls.size(), 2u);
    EXPECT_EQ(sketch.pointIdCalls[0], std::make_pair(10L, IdList{}));
    EXPECT_EQ(sketch.pointIdCalls[1], std::make_pair(20L, IdList{}));
    // The sketch hands the ids back.
    IdList ids;
    EXPECT_EQ(sketch.GetCADLineIdByRouteId(20, ids), 0);
    EXPECT_EQ(ids, (IdList{{3, 3}, {4, 4}}));
    // No bend rewrite in the array variant.
    EXPECT_EQ(sketch.bendCalls, 0);
}

TEST(KrHostRouteWriterArrays, AppendsBehindEarlierContentAndRestartsTheIndex) {
    RecordingSketch sketch;
    Build(sketch, TwoSegments());
    std::vector<double> points = {42.0};
    std::vector<int> codes = {7};
    KrHostRouteWriter::WriteArrays(&sketch, points, codes);
    KrHostRouteWriter::WriteArrays(&sketch, points, codes);
    // 1 + 30 + 30 doubles, 1 + 5 + 5 codes.
    ASSERT_EQ(points.size(), 61u);
    EXPECT_EQ(points[0], 42.0);
    for (std::size_t i = 0; i < 30; ++i) {
        EXPECT_EQ(points[1 + i], points[31 + i]) << i;
    }
    EXPECT_EQ(codes, (std::vector<int>{7, 2, 1, 0, 2, 1, 2, 1, 0, 2, 1}));
    // k restarts at 0 in every call.
    ASSERT_EQ(sketch.lineIdCalls.size(), 4u);
    EXPECT_EQ(sketch.lineIdCalls[2].second, (IdList{{0, 0}, {1, 1}, {2, 2}}));
}

TEST(KrHostRouteWriterArrays, DegenerateLineGetsCodeTwo) {
    RecordingSketch sketch;
    Build(sketch, {{40, {{P(3, 3), P(3, 3)}}}});
    std::vector<double> points;
    std::vector<int> codes;
    KrHostRouteWriter::WriteArrays(&sketch, points, codes);
    EXPECT_EQ(points, (std::vector<double>{3, 3, 0, 3, 3, 0}));
    EXPECT_EQ(codes, (std::vector<int>{2}));
}

TEST(KrHostRouteWriterArrays, EmptySketchWritesNothing) {
    KrSketch sketch;
    std::vector<double> points = {1.0};
    std::vector<int> codes = {1};
    EXPECT_EQ(KrHostRouteWriter::WriteArrays(&sketch, points, codes), 0);
    EXPECT_EQ(points, (std::vector<double>{1.0}));
    EXPECT_EQ(codes, (std::vector<int>{1}));
}

TEST(KrHostRouteWriterArrays, NullSketchIsRefused) {
    std::vector<double> points = {1.0};
    std::vector<int> codes;
    EXPECT_EQ(KrHostRouteWriter::WriteArrays(nullptr, points, codes), 1);
    EXPECT_EQ(points.size(), 1u);
    EXPECT_TRUE(codes.empty());
}

TEST(KrHostRouteWriterArrays, FailingIdStoreDoesNotStopTheWrite) {
    RecordingSketch sketch;
    Build(sketch, TwoSegments());
    sketch.lineIdResult = 1;
    std::vector<double> points;
    std::vector<int> codes;
    EXPECT_EQ(KrHostRouteWriter::WriteArrays(&sketch, points, codes), 0);
    EXPECT_EQ(points.size(), 30u);
    EXPECT_EQ(codes.size(), 5u);
}

// ---------------------------------------------------------------------------------------------
// Direct variant

TEST_F(KrHostRouteWriterTest, DrawsEveryLineInOrderAndRecordsHostIds) {
    RecordingSketch sketch;
    Build(sketch, ThreeSegments());
    void* result = nullptr;
    ASSERT_EQ(KrHostRouteWriter::WriteToHost(doc->application(), &sketch, nullptr, false, false, &result), 0);

    auto const& lines = doc->results().lines();
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[0].start, (JsonHostRecorder::Vec3{0, 0, 0}));
    EXPECT_EQ(lines[0].end, (JsonHostRecorder::Vec3{0, 1, 0}));
    EXPECT_EQ(lines[2].end, (JsonHostRecorder::Vec3{2, 3, 0}));
    EXPECT_EQ(lines[4].end, (JsonHostRecorder::Vec3{5, 4.000001, 0}));
    EXPECT_EQ(lines[5].start, (JsonHostRecorder::Vec3{7, 0, 0}));
    EXPECT_EQ(lines[5].end, (JsonHostRecorder::Vec3{9, 0, 0}));

    // Host line ids (1, n) in drawing order, per segment.
    ASSERT_EQ(sketch.lineIdCalls.size(), 3u);
    EXPECT_EQ(sketch.lineIdCalls[0], std::make_pair(10L, IdList{{1, 1}, {1, 2}, {1, 3}}));
    EXPECT_EQ(sketch.lineIdCalls[1], std::make_pair(20L, IdList{{1, 4}, {1, 5}}));
    EXPECT_EQ(sketch.lineIdCalls[2], std::make_pair(30L, IdList{{1, 6}}));
    IdList stored;
    EXPECT_EQ(sketch.GetCADLineIdByRouteId(20, stored), 0);
    EXPECT_EQ(stored, (IdList{{1, 4}, {1, 5}}));

    // The host makes one point per position: (0,0)=(2,1), (0,1)=(2,2), (1,1)=(2,3), (2,3)=(2,4),
    // (2.000009,4)=(2,5), (5,4.000001)=(2,6), (7,0)=(2,7), (9,0)=(2,8). Line 0 gives its start and
    // end, every later line its end: n + 1 ids for n lines.
    ASSERT_EQ(sketch.pointIdCalls.size(), 3u);
    EXPECT_EQ(sketch.pointIdCalls[0], std::make_pair(10L, IdList{{2, 1}, {2, 2}, {2, 3}, {2, 4}}));
    EXPECT_EQ(sketch.pointIdCalls[1], std::make_pair(20L, IdList{{2, 4}, {2, 5}, {2, 6}}));
    EXPECT_EQ(sketch.pointIdCalls[2], std::make_pair(30L, IdList{{2, 7}, {2, 8}}));

    EXPECT_EQ(sketch.bendCalls, 1);
    EXPECT_TRUE(doc->results().relations().empty());
    EXPECT_TRUE(doc->results().fillets().empty());

    ASSERT_NE(result, nullptr);
    static_cast<IHostSketch*>(result)->Release();
}

TEST_F(KrHostRouteWriterTest, ResultSketchCarriesOneReferenceForTheCaller) {
    RecordingSketch sketch;
    Build(sketch, TwoSegments());
    void* result = nullptr;
    KrHostRouteWriter::WriteToHost(doc->application(), &sketch, nullptr, false, false, &result);
    ASSERT_NE(result, nullptr);
    auto* hostSketch = static_cast<IHostSketch*>(result);
    auto const count = doc->referenceCount(hostSketch);
    ASSERT_TRUE(count.has_value());
    EXPECT_EQ(count->count, count->baseline + 1);
    hostSketch->Release();
}

TEST_F(KrHostRouteWriterTest, NullResultPointerTakesNoReference) {
    RecordingSketch sketch;
    Build(sketch, TwoSegments());
    EXPECT_EQ(KrHostRouteWriter::WriteToHost(doc->application(), &sketch, nullptr, false, false, nullptr), 0);
    EXPECT_EQ(doc->results().lines().size(), 5u);
    // TearDown checks that no reference is left behind.
}

TEST_F(KrHostRouteWriterTest, AxisRelationsByDirectionSlantedGetsNone) {
    RecordingSketch sketch;
    Build(sketch, ThreeSegments());
    void* result = nullptr;
    KrHostRouteWriter::WriteToHost(doc->application(), &sketch, nullptr, false, true, &result);
    auto const& rel = doc->results().relations();
    // Lines 1..6: vertical, horizontal, slanted, vertical within 1e-5, horizontal within 1e-5,
    // horizontal. No feature: no coincident relation.
    ASSERT_EQ(rel.size(), 5u);
    EXPECT_EQ(rel[0].name, L"sgALONGY3D");
    EXPECT_EQ(Texts(rel[0].entities), (Names{"line(1,1)"}));
    EXPECT_EQ(rel[1].name, L"sgALONGX3D");
    EXPECT_EQ(Texts(rel[1].entities), (Names{"line(1,2)"}));
    EXPECT_EQ(rel[2].name, L"sgALONGY3D");
    EXPECT_EQ(Texts(rel[2].entities), (Names{"line(1,4)"}));
    EXPECT_EQ(rel[3].name, L"sgALONGX3D");
    EXPECT_EQ(Texts(rel[3].entities), (Names{"line(1,5)"}));
    EXPECT_EQ(rel[4].name, L"sgALONGX3D");
    EXPECT_EQ(Texts(rel[4].entities), (Names{"line(1,6)"}));
    // The selection is cleared after each relation.
    EXPECT_TRUE(doc->results().selection().empty());
    static_cast<IHostSketch*>(result)->Release();
}

TEST_F(KrHostRouteWriterTest, DegenerateLineGetsTheAlongYRelation) {
    RecordingSketch sketch;
    Build(sketch, {{40, {{P(3, 3), P(3, 3)}}}});
    void* result = nullptr;
    KrHostRouteWriter::WriteToHost(doc->application(), &sketch, nullptr, false, true, &result);
    auto const& rel = doc->results().relations();
    ASSERT_EQ(rel.size(), 1u);
    EXPECT_EQ(rel[0].name, L"sgALONGY3D");
    static_cast<IHostSketch*>(result)->Release();
}

TEST_F(KrHostRouteWriterTest, CoincidentRelationWithTheFeatureOnEveryLine) {
    RecordingSketch sketch;
    Build(sketch, TwoSegments());
    IHostFeature* feature = Feature(L"Route1");
    void* result = nullptr;
    KrHostRouteWriter::WriteToHost(doc->application(), &sketch, feature, false, true, &result);
    auto const& rel = doc->results().relations();
    // Per line: its axis relation (none for the slanted line 3), then the coincident relation of
    // the line and the feature: 4 + 5 relations.
    std::vector<std::wstring> names;
    for (auto const& r : rel) names.push_back(r.name);
    EXPECT_EQ(names, (std::vector<std::wstring>{
                         L"sgALONGY3D", L"sgCOINCIDENT", L"sgALONGX3D", L"sgCOINCIDENT", L"sgCOINCIDENT",
                         L"sgALONGY3D", L"sgCOINCIDENT", L"sgALONGX3D", L"sgCOINCIDENT"}));
    EXPECT_EQ(Texts(rel[1].entities), (Names{"line(1,1)", "feature(Route1)"}));
    EXPECT_EQ(Texts(rel[4].entities), (Names{"line(1,3)", "feature(Route1)"}));
    EXPECT_EQ(Texts(rel[8].entities), (Names{"line(1,5)", "feature(Route1)"}));
    feature->Release();
    static_cast<IHostSketch*>(result)->Release();
}

TEST_F(KrHostRouteWriterTest, NoRelationsWithoutAddAxisRelationsEvenWithAFeature) {
    RecordingSketch sketch;
    Build(sketch, TwoSegments());
    IHostFeature* feature = Feature(L"Route1");
    void* result = nullptr;
    KrHostRouteWriter::WriteToHost(doc->application(), &sketch, feature, false, false, &result);
    EXPECT_TRUE(doc->results().relations().empty());
    EXPECT_EQ(doc->results().countRequests("AddRelation"), 0u);
    feature->Release();
    static_cast<IHostSketch*>(result)->Release();
}

TEST_F(KrHostRouteWriterTest, FilletsAtEveryJointWithHalfTheGridXSpacing) {
    RecordingSketch sketch;
    Build(sketch, ThreeSegments(), 0.4, 0.02);
    void* result = nullptr;
    KrHostRouteWriter::WriteToHost(doc->application(), &sketch, nullptr, true, false, &result);
    auto const& f = doc->results().fillets();
    // Joints: segment 10 at the starts of its lines 1 and 2, (0,1) and (1,1); segment 20 at the
    // start of its line 1, (2.000009,4). Segment 30 has one line: no fillet. Radius 0.5 x 0.4.
    ASSERT_EQ(f.size(), 3u);
    EXPECT_EQ(f[0].point, IdPair(2, 2));
    EXPECT_EQ(f[0].at, (JsonHostRecorder::Vec3{0, 1, 0}));
    EXPECT_EQ(f[0].firstLine, IdPair(1, 1));
    EXPECT_EQ(f[0].secondLine, IdPair(1, 2));
    EXPECT_EQ(f[1].point, IdPair(2, 3));
    EXPECT_EQ(f[2].point, IdPair(2, 5));
    for (auto const& x : f) {
        EXPECT_DOUBLE_EQ(x.radius, 0.2);
    }
    static_cast<IHostSketch*>(result)->Release();
}

TEST_F(KrHostRouteWriterTest, SingleLineSegmentNeverGetsAFillet) {
    RecordingSketch sketch;
    Build(sketch, {{30, {{P(7, 0), P(9, 0)}}}, {31, {{P(9, 0), P(9, 2)}}}});
    void* result = nullptr;
    KrHostRouteWriter::WriteToHost(doc->application(), &sketch, nullptr, true, true, &result);
    // (9,0) joins two lines, but of different segments, each of one line.
    EXPECT_TRUE(doc->results().fillets().empty());
    EXPECT_EQ(doc->results().countRequests("FilletSelectedCorner"), 0u);
    static_cast<IHostSketch*>(result)->Release();
}

TEST_F(KrHostRouteWriterTest, PerLineOrderIsDrawRelationsThenFillet) {
    RecordingSketch sketch;
    Build(sketch, TwoSegments());
    void* result = nullptr;
    KrHostRouteWriter::WriteToHost(doc->application(), &sketch, nullptr, true, true, &result);
    EXPECT_EQ(RequestsOf({"CreateLine", "AddRelation", "FilletSelectedCorner"}),
              (std::vector<std::string>{"CreateLine", "AddRelation",                          // line 1
                                        "CreateLine", "AddRelation", "FilletSelectedCorner",  // line 2
                                        "CreateLine", "FilletSelectedCorner",                 // line 3
                                        "CreateLine", "AddRelation",                          // line 4
                                        "CreateLine", "AddRelation", "FilletSelectedCorner"}));
    static_cast<IHostSketch*>(result)->Release();
}

TEST_F(KrHostRouteWriterTest, DrawingSettingsAreSetForTheInsertionAndRestored) {
    RecordingSketch sketch;
    Build(sketch, TwoSegments());
    void* result = nullptr;
    KrHostRouteWriter::WriteToHost(doc->application(), &sketch, nullptr, false, false, &result);
    auto const& changes = doc->results().settingChanges();
    // The document starts with bulk insertion off and inferred relations on.
    ASSERT_EQ(changes.size(), 4u);
    EXPECT_EQ(changes[0].setting, KR_SETTING_BULK_INSERT);
    EXPECT_TRUE(changes[0].value);
    EXPECT_EQ(changes[1].setting, KR_SETTING_AUTO_RELATIONS);
    EXPECT_FALSE(changes[1].value);
    EXPECT_EQ(changes[2].setting, KR_SETTING_BULK_INSERT);
    EXPECT_FALSE(changes[2].value);
    EXPECT_EQ(changes[3].setting, KR_SETTING_AUTO_RELATIONS);
    EXPECT_TRUE(changes[3].value);
    EXPECT_FALSE(doc->results().setting(KR_SETTING_BULK_INSERT));
    EXPECT_TRUE(doc->results().setting(KR_SETTING_AUTO_RELATIONS));
    EXPECT_EQ(doc->results().redraws(), 1u);
    static_cast<IHostSketch*>(result)->Release();
}

TEST_F(KrHostRouteWriterTest, OpensASketchWhenNoneIsOpenAndClosesItAtTheEnd) {
    RecordingSketch sketch;
    Build(sketch, TwoSegments());
    void* result = nullptr;
    KrHostRouteWriter::WriteToHost(doc->application(), &sketch, nullptr, false, false, &result);
    EXPECT_EQ(doc->results().sketchesOpened(), 1u);
    EXPECT_EQ(doc->results().sketchesClosed(), 1u);
    EXPECT_EQ(doc->results().countRequests("ToggleSketchEdit"), 2u);
    EXPECT_EQ(doc->results().lines()[0].sketch, 1);
    static_cast<IHostSketch*>(result)->Release();
}

TEST_F(KrHostRouteWriterTest, DrawsIntoTheOpenSketchAndTogglesEditingOffOnce) {
    JsonHostDocument* open = Load(R"({ "sketchOpen": true, "segments": [] })");
    RecordingSketch sketch;
    Build(sketch, TwoSegments());
    void* result = nullptr;
    KrHostRouteWriter::WriteToHost(open->application(), &sketch, nullptr, false, false, &result);
    EXPECT_EQ(open->results().countRequests("ToggleSketchEdit"), 1u);
    EXPECT_EQ(open->results().sketchesClosed(), 1u);
    EXPECT_EQ(open->results().lines().size(), 5u);
    ASSERT_NE(result, nullptr);
    static_cast<IHostSketch*>(result)->Release();
}

TEST_F(KrHostRouteWriterTest, WithoutActiveDocumentNothingIsWrittenAndNoSketchHandedOut) {
    JsonHostDocument* none = Load(R"({ "available": { "activeDocument": false }, "segments": [] })");
    RecordingSketch sketch;
    Build(sketch, TwoSegments());
    void* result = &sketch;  // any non-null value: it must be overwritten
    EXPECT_EQ(KrHostRouteWriter::WriteToHost(none->application(), &sketch, nullptr, true, true, &result), 0);
    EXPECT_EQ(result, nullptr);
    EXPECT_TRUE(none->results().lines().empty());
    EXPECT_TRUE(sketch.lineIdCalls.empty());
    EXPECT_EQ(sketch.bendCalls, 0);
}

TEST_F(KrHostRouteWriterTest, NullApplicationOrSketchIsRefused) {
    RecordingSketch sketch;
    Build(sketch, TwoSegments());
    void* result = nullptr;
    EXPECT_EQ(KrHostRouteWriter::WriteToHost(nullptr, &sketch, nullptr, true, true, &result), 1);
    EXPECT_EQ(KrHostRouteWriter::WriteToHost(doc->application(), nullptr, nullptr, true, true, &result), 1);
    EXPECT_EQ(result, nullptr);
    EXPECT_TRUE(doc->results().requests().empty());
}

TEST_F(KrHostRouteWriterTest, RelationOnAnEntityThatIsNotASketchLineIsRefused) {
    IHostFeature* feature = Feature(L"Route1");
    KrHostRef<IHostDocument> d;
    doc->application()->GetActiveDocument(d.Out());
    ASSERT_TRUE(d);
    EXPECT_EQ(KrHostRouteWriter::AddRelation(d.Get(), nullptr, feature, KrHostRouteWriter::AlongXRelation), 1);
    EXPECT_EQ(KrHostRouteWriter::AddRelation(nullptr, nullptr, feature, KrHostRouteWriter::AlongXRelation), 1);
    EXPECT_TRUE(doc->results().relations().empty());
    EXPECT_EQ(KrHostRouteWriter::AddCoincidence(d.Get(), nullptr, nullptr, feature), 1);
    feature->Release();
}

TEST(KrHostRouteWriterNames, RelationNames) {
    EXPECT_EQ(KrHostRouteWriter::AlongXRelation, L"sgALONGX3D");
    EXPECT_EQ(KrHostRouteWriter::AlongYRelation, L"sgALONGY3D");
    EXPECT_EQ(KrHostRouteWriter::CoincidentRelation, L"sgCOINCIDENT");
}

}  // namespace
