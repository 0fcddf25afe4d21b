// Reading the host's route data: segment ids, route values, entity lengths and end points, and
// the calls made on the routing sketch.
#include <krlayout/host/IHostRouteContainer.h>
#include <krlayout/host/KrHostInterfaceId.h>
#include <krlayout/host/KrHostRef.h>
#include <krlayout/host/KrHostRouteReader.h>
#include <krlayout/host/KrHostSession.h>
#include <krlayout/sketch/KrSketch.h>

#include <JsonHostDocument.h>

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace {

// Records the calls the reader makes, then lets the store do its work.
class RecordingSketch : public KrSketch {
public:
    std::vector<std::tuple<int, double, double>> created;
    std::vector<std::pair<std::map<long, long>, std::vector<ALPoint>>> wayPointCalls;

    int CreateRouteSegment(int id, double length, double diameter) override {
        created.emplace_back(id, length, diameter);
        return KrSketch::CreateRouteSegment(id, length, diameter);
    }
    int CreateWayPoint(std::map<long, long> const& counts, std::vector<ALPoint> const& points) override {
        wayPointCalls.emplace_back(counts, points);
        return KrSketch::CreateWayPoint(counts, points);
    }
    using KrSketch::CreateWayPoint;
};

// Host order 7, 3, 5, 9, 11, 13.
// 7: one line of length 2. 3: three lines; the third gives its own length 2.5 (its geometry
// would say 3), so the sum is 3 + 4 + 2.5 = 9.5. 5: a half circle of radius 1 from (3,4,1) to
// (5,4,1) around (4,4,1), counter-clockwise: length pi. 9: a spline through three points, length
// given as 3. 11: a spline without a curve, length given as 1.5. 13: no entity at all.
std::string const kDocument = R"({
  "segments": [
    { "id": 7, "value": 0.5, "entities": [ { "kind": "line", "start": [10,0,0], "end": [10,2,0] } ] },
    { "id": 3, "value": 2.0, "entities": [
        { "kind": "line", "start": [0,0,0], "end": [3,0,0] },
        { "kind": "line", "start": [3,0,0], "end": [3,4,0] },
        { "kind": "line", "length": 2.5, "start": [3,4,0], "end": [0,4,0] } ] },
    { "id": 5, "value": 1.0, "entities": [
        { "kind": "arc", "start": [3,4,1], "end": [5,4,1], "center": [4,4,1] } ] },
    { "id": 9, "value": 1.5, "entities": [
        { "kind": "spline", "length": 3, "points": [[0,0,0], [1,1,0], [2,0,0]] } ] },
    { "id": 11, "value": 1.5, "entities": [ { "kind": "spline", "length": 1.5 } ] },
    { "id": 13, "value": 4.0 }
  ]
})";

class KrHostRouteReaderTest : public ::testing::Test {
protected:
    void SetUp() override {
        doc = Load(kDocument);
        session = std::make_unique<KrHostSession>(doc->application());
        ASSERT_TRUE(session->OpenRouteModel());
        ASSERT_TRUE(session->OpenRouteSketch());
        ASSERT_TRUE(session->OpenRouteData());
        ASSERT_TRUE(session->OpenRouteContainer());
        container = session->GetRouteContainer();
    }

    void TearDown() override {
        session.reset();
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

    std::vector<std::unique_ptr<JsonHostDocument>> docs;
    JsonHostDocument* doc = nullptr;
    std::unique_ptr<KrHostSession> session;
    IHostRouteContainer* container = nullptr;
};

void ExpectPoints(std::vector<ALPoint> const& got, std::vector<ALPoint> const& want) {
    ASSERT_EQ(got.size(), want.size());
    for (std::size_t i = 0; i < got.size(); ++i) {
        EXPECT_EQ(got[i].x, want[i].x) << i;
        EXPECT_EQ(got[i].y, want[i].y) << i;
        EXPECT_EQ(got[i].z, want[i].z) << i;
    }
}

TEST_F(KrHostRouteReaderTest, IdsAreAppendedInTheHostsOrder) {
    KrHostRouteReader reader(container);
    std::vector<int> ids = {100};
    EXPECT_EQ(reader.ReadRouteSegmentIds(ids), 0);
    EXPECT_EQ(ids, (std::vector<int>{100, 7, 3, 5, 9, 11, 13}));
}

TEST_F(KrHostRouteReaderTest, NoIdsIsAFailureAndLeavesTheVector) {
    JsonHostDocument* empty = Load(R"({ "segments": [] })");
    KrHostSession s(empty->application());
    ASSERT_TRUE(s.OpenRouteModel() && s.OpenRouteSketch() && s.OpenRouteData() && s.OpenRouteContainer());
    KrHostRouteReader reader(s.GetRouteContainer());
    std::vector<int> ids = {1};
    EXPECT_EQ(reader.ReadRouteSegmentIds(ids), 1);
    EXPECT_EQ(ids, (std::vector<int>{1}));
}

TEST_F(KrHostRouteReaderTest, ValuesAreMappedByAscendingIdAndTheFirstValueStays) {
    KrHostRouteReader reader(container);
    std::map<int, double> values = {{5, 99.0}};
    EXPECT_EQ(reader.ReadRouteValues({7, 3, 5}, values), 0);
    EXPECT_EQ(values, (std::map<int, double>{{3, 2.0}, {5, 99.0}, {7, 0.5}}));
    // Each route item is asked for once per id and released again (TearDown).
    EXPECT_EQ(doc->results().countRequests("GetRouteItem"), 3u);
    EXPECT_EQ(doc->results().countRequests("GetValue"), 3u);
}

TEST_F(KrHostRouteReaderTest, LengthIsTheSumOfTheHostsEntityLengths) {
    KrHostRouteReader reader(container);
    double length = -1.0;
    EXPECT_EQ(reader.ReadSegmentLength(3, length), 0);
    EXPECT_DOUBLE_EQ(length, 9.5);  // 3 + 4 + 2.5 (the host's own length of the third line)
    EXPECT_EQ(reader.ReadSegmentLength(5, length), 0);
    EXPECT_NEAR(length, M_PI, 1e-12);  // half circle of radius 1
}

TEST_F(KrHostRouteReaderTest, SegmentWithoutEntitiesReportsOneAndKeepsTheLength) {
    KrHostRouteReader reader(container);
    double length = 42.0;
    EXPECT_EQ(reader.ReadSegmentLength(13, length), 1);
    EXPECT_EQ(length, 42.0);
    EXPECT_EQ(reader.ReadSegmentLength(99, length), 1);  // an id the host does not know
    EXPECT_EQ(length, 42.0);
}

TEST_F(KrHostRouteReaderTest, HostOrderSevenThreeFiveCreatesThreeFiveSevenAndReadsWayPointsSo) {
    KrHostRouteReader reader(container);
    std::map<int, double> values;
    reader.ReadRouteValues({7, 3, 5}, values);
    RecordingSketch sketch;
    std::vector<int> records = {1};
    EXPECT_EQ(reader.CreateRouteSegments(values, &sketch, records), 0);
    EXPECT_EQ(records, (std::vector<int>{1, 3, 5, 7}));
    ASSERT_EQ(sketch.created.size(), 3u);
    // (id, summed length first, route value second).
    EXPECT_EQ(std::get<0>(sketch.created[0]), 3);
    EXPECT_DOUBLE_EQ(std::get<1>(sketch.created[0]), 9.5);
    EXPECT_DOUBLE_EQ(std::get<2>(sketch.created[0]), 2.0);
    EXPECT_EQ(std::get<0>(sketch.created[1]), 5);
    EXPECT_NEAR(std::get<1>(sketch.created[1]), M_PI, 1e-12);
    EXPECT_DOUBLE_EQ(std::get<2>(sketch.created[1]), 1.0);
    EXPECT_EQ(std::get<0>(sketch.created[2]), 7);
    EXPECT_DOUBLE_EQ(std::get<1>(sketch.created[2]), 2.0);
    EXPECT_DOUBLE_EQ(std::get<2>(sketch.created[2]), 0.5);

    EXPECT_EQ(reader.CreateWayPoints({3, 5, 7}, &sketch), 0);
    ASSERT_EQ(sketch.wayPointCalls.size(), 1u);
    EXPECT_EQ(sketch.wayPointCalls[0].first, (std::map<long, long>{{3, 3}, {5, 1}, {7, 1}}));
    ExpectPoints(sketch.wayPointCalls[0].second,
                 {ALPoint(0, 0, 0), ALPoint(3, 0, 0), ALPoint(3, 0, 0), ALPoint(3, 4, 0), ALPoint(3, 4, 0),
                  ALPoint(0, 4, 0), ALPoint(3, 4, 1), ALPoint(5, 4, 1), ALPoint(10, 0, 0), ALPoint(10, 2, 0)});
}

TEST_F(KrHostRouteReaderTest, SegmentWithoutEntitiesIsCreatedWithLengthZero) {
    KrHostRouteReader reader(container);
    RecordingSketch sketch;
    std::vector<int> records;
    reader.CreateRouteSegments({{13, 4.0}}, &sketch, records);
    ASSERT_EQ(sketch.created.size(), 1u);
    EXPECT_EQ(sketch.created[0], std::make_tuple(13, 0.0, 4.0));
    EXPECT_EQ(records, (std::vector<int>{13}));
}

TEST_F(KrHostRouteReaderTest, ThreeLinesGiveSixPointsAndTheEntryThree) {
    KrHostRouteReader reader(container);
    std::map<long, long> counts;
    std::vector<ALPoint> points;
    EXPECT_EQ(reader.ReadWayPoints({3}, counts, points), 0);
    EXPECT_EQ(counts, (std::map<long, long>{{3, 3}}));
    ExpectPoints(points, {ALPoint(0, 0, 0), ALPoint(3, 0, 0), ALPoint(3, 0, 0), ALPoint(3, 4, 0),
                          ALPoint(3, 4, 0), ALPoint(0, 4, 0)});
}

TEST_F(KrHostRouteReaderTest, ArcGivesOnlyItsStartAndEndPoint) {
    KrHostRouteReader reader(container);
    std::map<long, long> counts;
    std::vector<ALPoint> points;
    reader.ReadWayPoints({5}, counts, points);
    EXPECT_EQ(counts, (std::map<long, long>{{5, 1}}));
    // z is taken as the host gives it.
    ExpectPoints(points, {ALPoint(3, 4, 1), ALPoint(5, 4, 1)});
}

TEST_F(KrHostRouteReaderTest, OtherCurveGivesTheEndsOfItsCurveAndNoneWithoutACurve) {
    KrHostRouteReader reader(container);
    std::map<long, long> counts;
    std::vector<ALPoint> points;
    reader.ReadWayPoints({9, 11}, counts, points);
    // The spline's first and last point; the curve-less entity adds nothing but is counted.
    ExpectPoints(points, {ALPoint(0, 0, 0), ALPoint(2, 0, 0)});
    EXPECT_EQ(counts, (std::map<long, long>{{9, 1}, {11, 1}}));
}

TEST_F(KrHostRouteReaderTest, CountsAreInsertedIfAbsentAndUnknownIdsCountZero) {
    KrHostRouteReader reader(container);
    std::map<long, long> counts = {{3, 99}};
    std::vector<ALPoint> points;
    reader.ReadWayPoints({3, 13, 99, 3}, counts, points);
    EXPECT_EQ(counts, (std::map<long, long>{{3, 99}, {13, 0}, {99, 0}}));
    // Segment 3 is read both times it is listed: 2 x 6 points.
    EXPECT_EQ(points.size(), 12u);
}

TEST_F(KrHostRouteReaderTest, FetchedEntitiesCarryOneReferenceEach) {
    unsigned long const before = doc->clientReferences();
    std::vector<KrHostRef<IHostUnknown>> entities;
    int count = -1;
    EXPECT_EQ(KrHostRouteReader::FetchEntities(container, 3, entities, &count), 0);
    EXPECT_EQ(count, 3);
    ASSERT_EQ(entities.size(), 3u);
    for (auto const& e : entities) {
        auto c = doc->referenceCount(e.Get());
        ASSERT_TRUE(c.has_value());
        EXPECT_EQ(c->count, c->baseline + 1);
    }
    entities.clear();
    EXPECT_EQ(doc->clientReferences(), before);
}

TEST_F(KrHostRouteReaderTest, MissingContainerOrSketchIsRefused) {
    KrHostRouteReader reader(nullptr);
    std::vector<int> ids;
    EXPECT_EQ(reader.ReadRouteSegmentIds(ids), 1);
    std::map<int, double> values;
    EXPECT_EQ(reader.ReadRouteValues({1}, values), 1);
    EXPECT_TRUE(values.empty());
    double length = 5.0;
    EXPECT_EQ(reader.ReadSegmentLength(1, length), 1);
    EXPECT_EQ(length, 5.0);
    KrSketch sketch;
    std::vector<int> records;
    EXPECT_EQ(reader.CreateRouteSegments({{1, 1.0}}, &sketch, records), 1);
    EXPECT_TRUE(records.empty());
    std::map<long, long> counts;
    std::vector<ALPoint> points;
    EXPECT_EQ(reader.ReadWayPoints({1}, counts, points), 1);
    EXPECT_EQ(reader.CreateWayPoints({1}, &sketch), 1);

    KrHostRouteReader withContainer(container);
    EXPECT_EQ(withContainer.CreateRouteSegments({{3, 1.0}}, nullptr, records), 1);
    EXPECT_EQ(withContainer.CreateWayPoints({3}, nullptr), 1);
    EXPECT_TRUE(records.empty());

    std::vector<KrHostRef<IHostUnknown>> entities;
    EXPECT_EQ(KrHostRouteReader::FetchEntities(nullptr, 3, entities), 1);
    EXPECT_EQ(KrHostRouteReader::ReadEntityEndPoints(nullptr, points), 1);
    EXPECT_TRUE(points.empty());
}

// ---------------------------------------------------------------------------------------------
// The session that reaches the container

TEST_F(KrHostRouteReaderTest, SessionStepsOpenedAgainTakeNoFurtherReference) {
    unsigned long const before = doc->clientReferences();
    EXPECT_TRUE(session->OpenRouteModel());
    EXPECT_TRUE(session->OpenRouteSketch());
    EXPECT_TRUE(session->OpenRouteData());
    EXPECT_TRUE(session->OpenRouteContainer());
    EXPECT_EQ(doc->clientReferences(), before);
    session->Close();
    EXPECT_EQ(doc->clientReferences(), 0u);
    EXPECT_EQ(session->GetRouteContainer(), nullptr);
    EXPECT_EQ(session->GetDocument(), nullptr);
}

TEST_F(KrHostRouteReaderTest, SessionWithoutRouteModelKeepsTheDocumentUntilClosed) {
    JsonHostDocument* noModel = Load(R"({ "available": { "routeModel": false }, "segments": [] })");
    KrHostSession s(noModel->application());
    EXPECT_FALSE(s.OpenRouteModel());
    EXPECT_FALSE(s.OpenRouteModel());
    EXPECT_NE(s.GetDocument(), nullptr);
    EXPECT_EQ(noModel->clientReferences(), 1u);
    // Later steps cannot succeed without the earlier ones.
    EXPECT_FALSE(s.OpenRouteSketch());
    EXPECT_FALSE(s.OpenRouteData());
    EXPECT_FALSE(s.OpenRouteContainer());
    EXPECT_EQ(s.ReportSegments({1}, L"x"), 1);
    s.Close();
    EXPECT_EQ(noModel->clientReferences(), 0u);
}

TEST(KrHostSessionTest, NullApplicationOpensNothing) {
    KrHostSession s(nullptr);
    EXPECT_FALSE(s.OpenRouteModel());
    EXPECT_EQ(s.ClearSelection(), 1);
    EXPECT_EQ(s.ReportSegments({1}, L"x"), 1);
    IHostFeature* f = nullptr;
    EXPECT_FALSE(KrHostSession::FindFeature(nullptr, L"x", f));
    EXPECT_EQ(f, nullptr);
}

// A container that answers every count with one value and counts the buffer requests.
class CountingContainer : public IHostRouteContainer {
public:
    explicit CountingContainer(int n) : count(n) {}
    int count;
    int idRequests = 0;
    int entityRequests = 0;

    long QueryInterface(int, void** object) override {
        *object = nullptr;
        return KR_HOST_NOINTERFACE;
    }
    unsigned long AddRef() override { return 1; }
    unsigned long Release() override { return 1; }
    long GetRouteSegmentCount(int* n) override {
        *n = count;
        return KR_HOST_OK;
    }
    long GetRouteSegmentIds(int, int*) override {
        ++idRequests;
        return KR_HOST_OK;
    }
    long GetRouteItem(int, IHostUnknown** item) override {
        *item = nullptr;
        return KR_HOST_FAIL;
    }
    long GetSketchEntityCount(int, int* n) override {
        *n = count;
        return KR_HOST_OK;
    }
    long GetSketchEntities(int, int, IHostUnknown**) override {
        ++entityRequests;
        return KR_HOST_OK;
    }
};

TEST(KrHostRouteReaderCounts, AbsurdCountsAreReadAsNone) {
    CountingContainer c(0x7fffffff);
    KrHostRouteReader reader(&c);
    std::vector<int> ids;
    EXPECT_EQ(reader.ReadRouteSegmentIds(ids), 1);
    EXPECT_TRUE(ids.empty());
    EXPECT_EQ(c.idRequests, 0);
    double length = 3.0;
    EXPECT_EQ(reader.ReadSegmentLength(1, length), 1);
    EXPECT_EQ(length, 3.0);
    std::map<long, long> counts;
    std::vector<ALPoint> points;
    reader.ReadWayPoints({1}, counts, points);
    EXPECT_EQ(counts, (std::map<long, long>{{1, 0}}));
    EXPECT_EQ(c.entityRequests, 0);
}

TEST(KrHostRouteReaderCounts, NegativeCountsAreReadAsNone) {
    CountingContainer c(-5);
    KrHostRouteReader reader(&c);
    std::vector<int> ids;
    EXPECT_EQ(reader.ReadRouteSegmentIds(ids), 1);
    std::map<long, long> counts;
    std::vector<ALPoint> points;
    reader.ReadWayPoints({1}, counts, points);
    EXPECT_EQ(counts, (std::map<long, long>{{1, 0}}));
    EXPECT_EQ(c.idRequests + c.entityRequests, 0);
}

TEST(KrHostRouteReaderCounts, MissingRouteItemGivesValueZero) {
    CountingContainer c(1);
    KrHostRouteReader reader(&c);
    std::map<int, double> values;
    EXPECT_EQ(reader.ReadRouteValues({4, 2}, values), 0);
    EXPECT_EQ(values, (std::map<int, double>{{2, 0.0}, {4, 0.0}}));
}

}  // namespace
