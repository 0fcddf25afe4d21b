// The in-process JSON host through its automation interfaces: interface queries, reference
// counting, route reading, drawing, selection, relations, fillets, settings, features and the
// request log.
#include <JsonHostDocument.h>

#include <krlayout/host/IHostApplication.h>
#include <krlayout/host/IHostCallout.h>
#include <krlayout/host/IHostCurve.h>
#include <krlayout/host/IHostDocument.h>
#include <krlayout/host/IHostFeature.h>
#include <krlayout/host/IHostPoint.h>
#include <krlayout/host/IHostRouteContainer.h>
#include <krlayout/host/IHostRouteData.h>
#include <krlayout/host/IHostRouteItem.h>
#include <krlayout/host/IHostRouteModel.h>
#include <krlayout/host/IHostSelectable.h>
#include <krlayout/host/IHostSelectionManager.h>
#include <krlayout/host/IHostSketch.h>
#include <krlayout/host/IHostSketchArc.h>
#include <krlayout/host/IHostSketchEntity.h>
#include <krlayout/host/IHostSketchLine.h>
#include <krlayout/host/KrHostInterfaceId.h>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

// Holds one reference and releases it when it goes.
template <typename T>
class Ref {
public:
    Ref() = default;
    explicit Ref(T* adopted) : p_(adopted) {}
    Ref(Ref const&) = delete;
    Ref& operator=(Ref const&) = delete;
    Ref(Ref&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
    Ref& operator=(Ref&& other) noexcept {
        if (this != &other) {
            reset();
            p_ = std::exchange(other.p_, nullptr);
        }
        return *this;
    }
    ~Ref() { reset(); }

    T** out() {
        reset();
        return &p_;
    }
    T* get() const { return p_; }
    T* operator->() const { return p_; }
    explicit operator bool() const { return p_ != nullptr; }
    void reset() {
        if (p_ != nullptr) std::exchange(p_, nullptr)->Release();
    }

private:
    T* p_ = nullptr;
};

template <typename T>
Ref<T> query(IHostUnknown* object, int interfaceId) {
    void* raw = nullptr;
    object->QueryInterface(interfaceId, &raw);
    return Ref<T>(static_cast<T*>(raw));
}

std::unique_ptr<JsonHostDocument> loadExample(char const* name) {
    return JsonHostDocument::LoadFile(JsonHostDocument::ExamplePath(name));
}

// Two segments: 5 (two lines and an entity without a curve) and 9 (an arc drawn clockwise);
// segment 5 is listed again at the end with another value.
char const* const kSmallDocument = R"({
  "name": "small",
  "features": ["Origin", "Route1", "Route2"],
  "settings": { "bulkInsert": true, "autoRelations": false },
  "segments": [
    { "id": 9, "value": 0.75, "entities": [
        { "kind": "arc", "start": [1, 0, 0], "end": [0, 1, 0], "center": [0, 0, 0], "clockwise": true } ] },
    { "id": 5, "value": 0.25, "entities": [
        { "kind": "line", "start": [0, 0, 0], "end": [3, 4, 0] },
        { "kind": "line", "start": [3, 4, 0], "end": [3, 4, 2], "length": 7.5 },
        { "kind": "ellipse", "length": 2 } ] },
    { "id": 5, "value": 99, "entities": [] }
  ]
})";

class JsonHost : public ::testing::Test {
protected:
    void SetUp() override { host = JsonHostDocument::LoadString(kSmallDocument); }

    Ref<IHostDocument> document() {
        Ref<IHostDocument> doc;
        EXPECT_EQ(host->application()->GetActiveDocument(doc.out()), KR_HOST_OK);
        return doc;
    }

    Ref<IHostRouteContainer> container() {
        Ref<IHostDocument> doc = document();
        auto model = query<IHostRouteModel>(doc.get(), KR_IID_ROUTE_MODEL);
        Ref<IHostUnknown> routeSketch;
        EXPECT_EQ(model->GetRouteSketch(routeSketch.out()), KR_HOST_OK);
        auto data = query<IHostRouteData>(routeSketch.get(), KR_IID_ROUTE_DATA);
        Ref<IHostRouteContainer> routes;
        EXPECT_EQ(data->GetRouteContainer(routes.out()), KR_HOST_OK);
        return routes;
    }

    std::vector<Ref<IHostUnknown>> entities(int segmentId) {
        Ref<IHostRouteContainer> routes = container();
        int count = 0;
        EXPECT_EQ(routes->GetSketchEntityCount(segmentId, &count), KR_HOST_OK);
        std::vector<IHostUnknown*> raw(static_cast<std::size_t>(count), nullptr);
        EXPECT_EQ(routes->GetSketchEntities(segmentId, count, raw.data()), KR_HOST_OK);
        std::vector<Ref<IHostUnknown>> held;
        for (IHostUnknown* entity : raw) held.emplace_back(entity);
        return held;
    }

    Ref<IHostSketch> openSketch(Ref<IHostDocument> const& doc) {
        EXPECT_EQ(doc->ToggleSketchEdit(), KR_HOST_OK);
        Ref<IHostSketch> sketch;
        EXPECT_EQ(doc->GetActiveSketch(sketch.out()), KR_HOST_OK);
        return sketch;
    }

    static Ref<IHostSketchLine> line(Ref<IHostSketch> const& sketch, double x1, double y1, double x2, double y2) {
        Ref<IHostSketchLine> made;
        EXPECT_EQ(sketch->CreateLine(x1, y1, 0, x2, y2, 0, made.out()), KR_HOST_OK);
        return made;
    }

    static Ref<IHostPoint> startPoint(Ref<IHostSketchLine> const& l) {
        Ref<IHostPoint> p;
        EXPECT_EQ(l->GetStartPoint(p.out()), KR_HOST_OK);
        return p;
    }

    static Ref<IHostPoint> endPoint(Ref<IHostSketchLine> const& l) {
        Ref<IHostPoint> p;
        EXPECT_EQ(l->GetEndPoint(p.out()), KR_HOST_OK);
        return p;
    }

    static std::pair<long, long> idOf(IHostPoint* point) {
        std::pair<long, long> id{0, 0};
        EXPECT_EQ(point->GetId(&id.first, &id.second), KR_HOST_OK);
        return id;
    }

    static std::pair<long, long> idOf(IHostSketchLine* l) {
        std::pair<long, long> id{0, 0};
        EXPECT_EQ(l->GetId(&id.first, &id.second), KR_HOST_OK);
        return id;
    }

    static long select(IHostUnknown* object, bool append) {
        auto selectable = query<IHostSelectable>(object, KR_IID_SELECTABLE);
        return selectable ? selectable->Select(append) : -1;
    }

    std::unique_ptr<JsonHostDocument> host;
};

using Pair = std::pair<long, long>;

TEST_F(JsonHost, ApplicationAnswersUnknownAndApplicationOnly) {
    IHostApplication* app = host->application();
    ASSERT_NE(app, nullptr);
    void* raw = nullptr;
    EXPECT_EQ(app->QueryInterface(KR_IID_UNKNOWN, &raw), KR_HOST_OK);
    Ref<IHostUnknown> unknown(static_cast<IHostUnknown*>(raw));
    EXPECT_EQ(static_cast<void*>(unknown.get()), static_cast<void*>(app));
    raw = nullptr;
    EXPECT_EQ(app->QueryInterface(KR_IID_APPLICATION, &raw), KR_HOST_OK);
    Ref<IHostApplication> again(static_cast<IHostApplication*>(raw));
    EXPECT_EQ(again.get(), app);

    for (int iid : {int(KR_IID_DOCUMENT), int(KR_IID_ROUTE_MODEL), int(KR_IID_SKETCH), int(KR_IID_FEATURE), 99}) {
        raw = reinterpret_cast<void*>(app);
        EXPECT_EQ(app->QueryInterface(iid, &raw), KR_HOST_NOINTERFACE) << iid;
        EXPECT_EQ(raw, nullptr) << iid;
    }
    EXPECT_EQ(app->QueryInterface(KR_IID_APPLICATION, nullptr), KR_HOST_INVALIDARG);
}

TEST_F(JsonHost, QueryInterfaceAddsOneReferenceOnlyOnSuccess) {
    IHostApplication* app = host->application();
    auto const before = host->referenceCount(app);
    ASSERT_TRUE(before.has_value());
    EXPECT_EQ(before->object, "application");
    EXPECT_EQ(before->count, before->baseline);

    void* raw = nullptr;
    ASSERT_EQ(app->QueryInterface(KR_IID_APPLICATION, &raw), KR_HOST_OK);
    EXPECT_EQ(host->referenceCount(app)->count, before->count + 1);
    EXPECT_EQ(host->clientReferences(), 1u);
    app->QueryInterface(KR_IID_SKETCH, &raw);
    EXPECT_EQ(host->referenceCount(app)->count, before->count + 1);
    EXPECT_EQ(app->Release(), before->count);
    EXPECT_EQ(host->clientReferences(), 0u);
}

TEST_F(JsonHost, AddRefAndReleaseReturnTheNewCount) {
    IHostApplication* app = host->application();
    unsigned long const base = host->referenceCount(app)->count;
    EXPECT_EQ(app->AddRef(), base + 1);
    EXPECT_EQ(app->AddRef(), base + 2);
    EXPECT_EQ(app->Release(), base + 1);
    EXPECT_EQ(app->Release(), base);
}

TEST_F(JsonHost, ActiveDocumentAnswersDocumentAndRouteModel) {
    Ref<IHostDocument> doc = document();
    ASSERT_TRUE(doc);
    auto model = query<IHostRouteModel>(doc.get(), KR_IID_ROUTE_MODEL);
    ASSERT_TRUE(model);
    auto asDocument = query<IHostDocument>(model.get(), KR_IID_DOCUMENT);
    EXPECT_EQ(asDocument.get(), doc.get());
    auto unknownFromDoc = query<IHostUnknown>(doc.get(), KR_IID_UNKNOWN);
    auto unknownFromModel = query<IHostUnknown>(model.get(), KR_IID_UNKNOWN);
    EXPECT_EQ(unknownFromDoc.get(), unknownFromModel.get());
    EXPECT_FALSE(query<IHostRouteData>(doc.get(), KR_IID_ROUTE_DATA));
    EXPECT_FALSE(query<IHostApplication>(doc.get(), KR_IID_APPLICATION));
}

TEST_F(JsonHost, RouteContainerListsIdsInDocumentOrder) {
    Ref<IHostRouteContainer> routes = container();
    ASSERT_TRUE(routes);
    int count = 0;
    ASSERT_EQ(routes->GetRouteSegmentCount(&count), KR_HOST_OK);
    ASSERT_EQ(count, 3);
    std::vector<int> ids(4, -1);
    ASSERT_EQ(routes->GetRouteSegmentIds(count, ids.data()), KR_HOST_OK);
    EXPECT_EQ(ids, (std::vector<int>{9, 5, 5, -1}));

    std::vector<int> fewer(2, -1);
    ASSERT_EQ(routes->GetRouteSegmentIds(1, fewer.data()), KR_HOST_OK);
    EXPECT_EQ(fewer, (std::vector<int>{9, -1}));
    EXPECT_EQ(routes->GetRouteSegmentIds(-1, fewer.data()), KR_HOST_INVALIDARG);
    EXPECT_EQ(routes->GetRouteSegmentIds(2, nullptr), KR_HOST_INVALIDARG);
    EXPECT_EQ(routes->GetRouteSegmentCount(nullptr), KR_HOST_INVALIDARG);
}

TEST_F(JsonHost, RouteItemGivesTheValueOfTheFirstSegmentWithTheId) {
    Ref<IHostRouteContainer> routes = container();
    Ref<IHostUnknown> item;
    ASSERT_EQ(routes->GetRouteItem(5, item.out()), KR_HOST_OK);
    auto routeItem = query<IHostRouteItem>(item.get(), KR_IID_ROUTE_ITEM);
    ASSERT_TRUE(routeItem);
    double value = 0;
    ASSERT_EQ(routeItem->GetValue(&value), KR_HOST_OK);
    EXPECT_EQ(value, 0.25);

    ASSERT_EQ(routes->GetRouteItem(9, item.out()), KR_HOST_OK);
    routeItem = query<IHostRouteItem>(item.get(), KR_IID_ROUTE_ITEM);
    ASSERT_EQ(routeItem->GetValue(&value), KR_HOST_OK);
    EXPECT_EQ(value, 0.75);

    ASSERT_EQ(routes->GetRouteItem(42, item.out()), KR_HOST_FAIL);
    EXPECT_FALSE(item);
    EXPECT_EQ(routes->GetRouteItem(5, nullptr), KR_HOST_INVALIDARG);
}

TEST_F(JsonHost, SketchEntitiesComeInSegmentOrderWithAFreshReferenceEachTime) {
    Ref<IHostRouteContainer> routes = container();
    int count = -1;
    ASSERT_EQ(routes->GetSketchEntityCount(5, &count), KR_HOST_OK);
    EXPECT_EQ(count, 3);
    ASSERT_EQ(routes->GetSketchEntityCount(42, &count), KR_HOST_FAIL);
    EXPECT_EQ(count, 0);

    IHostUnknown* first[3] = {};
    IHostUnknown* second[3] = {};
    ASSERT_EQ(routes->GetSketchEntities(5, 3, first), KR_HOST_OK);
    unsigned long const afterFirst = host->referenceCount(first[0])->count;
    ASSERT_EQ(routes->GetSketchEntities(5, 3, second), KR_HOST_OK);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(first[i], second[i]);
    EXPECT_EQ(host->referenceCount(first[0])->count, afterFirst + 1);
    EXPECT_EQ(host->clientReferences(), 1u + 6u);   // the container and six entity references
    for (int i = 0; i < 3; ++i) {
        first[i]->Release();
        second[i]->Release();
    }

    // Slots beyond the segment's entities are nulled; fewer slots take the first entities.
    IHostUnknown* wide[5] = {};
    for (auto& slot : wide) slot = routes.get();
    ASSERT_EQ(routes->GetSketchEntities(9, 5, wide), KR_HOST_OK);
    EXPECT_NE(wide[0], nullptr);
    for (int i = 1; i < 5; ++i) EXPECT_EQ(wide[i], nullptr);
    wide[0]->Release();
    IHostUnknown* one[1] = {};
    ASSERT_EQ(routes->GetSketchEntities(5, 1, one), KR_HOST_OK);
    EXPECT_EQ(one[0], first[0]);
    one[0]->Release();
    EXPECT_EQ(routes->GetSketchEntities(5, 3, nullptr), KR_HOST_INVALIDARG);
    EXPECT_EQ(routes->GetSketchEntities(42, 0, nullptr), KR_HOST_FAIL);
}

TEST_F(JsonHost, LineEntityAnswersLineAndSelectableButNotArc) {
    auto held = entities(5);
    ASSERT_EQ(held.size(), 3u);
    auto entity = query<IHostSketchEntity>(held[0].get(), KR_IID_SKETCH_ENTITY);
    ASSERT_TRUE(entity);
    int kind = -1;
    ASSERT_EQ(entity->GetKind(&kind), KR_HOST_OK);
    EXPECT_EQ(kind, KR_ENTITY_LINE);
    double length = 0;
    ASSERT_EQ(entity->GetLength(&length), KR_HOST_OK);
    EXPECT_DOUBLE_EQ(length, 5.0);   // (0,0,0) to (3,4,0)

    auto line = query<IHostSketchLine>(held[0].get(), KR_IID_SKETCH_LINE);
    ASSERT_TRUE(line);
    EXPECT_FALSE(query<IHostSketchArc>(held[0].get(), KR_IID_SKETCH_ARC));
    EXPECT_TRUE(query<IHostSelectable>(held[0].get(), KR_IID_SELECTABLE));
    EXPECT_FALSE(query<IHostPoint>(held[0].get(), KR_IID_POINT));

    Ref<IHostPoint> start = startPoint(line);
    Ref<IHostPoint> end = endPoint(line);
    double x = -1, y = -1, z = -1;
    ASSERT_EQ(end->GetCoords(&x, &y, &z), KR_HOST_OK);
    EXPECT_EQ(x, 3.0);
    EXPECT_EQ(y, 4.0);
    EXPECT_EQ(z, 0.0);
    // Route entities are numbered (3, n) and their end points (4, n) in document order; the arc
    // of segment 9 comes first.
    EXPECT_EQ(idOf(line.get()), Pair(3, 2));
    EXPECT_EQ(idOf(start.get()), Pair(4, 3));
    EXPECT_EQ(idOf(end.get()), Pair(4, 4));

    auto second = query<IHostSketchEntity>(held[1].get(), KR_IID_SKETCH_ENTITY);
    ASSERT_EQ(second->GetLength(&length), KR_HOST_OK);
    EXPECT_EQ(length, 7.5);   // given, not the distance 2
}

TEST_F(JsonHost, ArcEntityAnswersArcWithItsEndPointsAndArcLength) {
    auto held = entities(9);
    ASSERT_EQ(held.size(), 1u);
    auto entity = query<IHostSketchEntity>(held[0].get(), KR_IID_SKETCH_ENTITY);
    int kind = -1;
    ASSERT_EQ(entity->GetKind(&kind), KR_HOST_OK);
    EXPECT_EQ(kind, KR_ENTITY_ARC);
    double length = 0;
    ASSERT_EQ(entity->GetLength(&length), KR_HOST_OK);
    // Clockwise from (1,0) to (0,1) around the origin is three quarters of the unit circle.
    EXPECT_NEAR(length, 1.5 * std::acos(-1.0), 1e-12);

    EXPECT_FALSE(query<IHostSketchLine>(held[0].get(), KR_IID_SKETCH_LINE));
    auto arc = query<IHostSketchArc>(held[0].get(), KR_IID_SKETCH_ARC);
    ASSERT_TRUE(arc);
    Ref<IHostPoint> start;
    Ref<IHostPoint> end;
    ASSERT_EQ(arc->GetStartPoint(start.out()), KR_HOST_OK);
    ASSERT_EQ(arc->GetEndPoint(end.out()), KR_HOST_OK);
    double x = 0, y = 0, z = 0;
    start->GetCoords(&x, &y, &z);
    EXPECT_EQ(x, 1.0);
    EXPECT_EQ(y, 0.0);
    end->GetCoords(&x, &y, &z);
    EXPECT_EQ(x, 0.0);
    EXPECT_EQ(y, 1.0);
}

TEST_F(JsonHost, OtherCurvesGiveTheirCurveEndPointsAndCurvelessEntitiesNone) {
    auto tree = loadExample("tree.json");
    Ref<IHostDocument> doc;
    ASSERT_EQ(tree->application()->GetActiveDocument(doc.out()), KR_HOST_OK);
    auto model = query<IHostRouteModel>(doc.get(), KR_IID_ROUTE_MODEL);
    Ref<IHostUnknown> routeSketch;
    ASSERT_EQ(model->GetRouteSketch(routeSketch.out()), KR_HOST_OK);
    auto data = query<IHostRouteData>(routeSketch.get(), KR_IID_ROUTE_DATA);
    Ref<IHostRouteContainer> routes;
    ASSERT_EQ(data->GetRouteContainer(routes.out()), KR_HOST_OK);
    IHostUnknown* raw = nullptr;
    ASSERT_EQ(routes->GetSketchEntities(3, 1, &raw), KR_HOST_OK);
    Ref<IHostUnknown> spline(raw);
    auto entity = query<IHostSketchEntity>(spline.get(), KR_IID_SKETCH_ENTITY);
    int kind = -1;
    entity->GetKind(&kind);
    EXPECT_NE(kind, KR_ENTITY_LINE);
    EXPECT_NE(kind, KR_ENTITY_ARC);
    EXPECT_FALSE(query<IHostSketchLine>(spline.get(), KR_IID_SKETCH_LINE));
    EXPECT_FALSE(query<IHostSketchArc>(spline.get(), KR_IID_SKETCH_ARC));
    Ref<IHostCurve> curve;
    ASSERT_EQ(entity->GetCurve(curve.out()), KR_HOST_OK);
    double start[3] = {9, 9, 9};
    double end[3] = {9, 9, 9};
    ASSERT_EQ(curve->GetEndPoints(start, end), KR_HOST_OK);
    EXPECT_EQ(std::vector<double>(start, start + 3), (std::vector<double>{2, 0, 0}));
    EXPECT_EQ(std::vector<double>(end, end + 3), (std::vector<double>{3, -1, 0}));
    EXPECT_TRUE(query<IHostCurve>(curve.get(), KR_IID_CURVE));
    EXPECT_EQ(curve->GetEndPoints(nullptr, end), KR_HOST_INVALIDARG);

    auto small = entities(5);
    auto ellipse = query<IHostSketchEntity>(small[2].get(), KR_IID_SKETCH_ENTITY);
    Ref<IHostCurve> none;
    EXPECT_EQ(ellipse->GetCurve(none.out()), KR_HOST_FAIL);
    EXPECT_FALSE(none);
    double length = 0;
    ellipse->GetLength(&length);
    EXPECT_EQ(length, 2.0);

    routes.reset();
    data.reset();
    routeSketch.reset();
    model.reset();
    doc.reset();
    spline.reset();
    entity.reset();
    curve.reset();
    EXPECT_EQ(tree->clientReferences(), 0u);
}

TEST_F(JsonHost, LinesAndArcsHaveCurvesToo) {
    auto held = entities(9);
    auto entity = query<IHostSketchEntity>(held[0].get(), KR_IID_SKETCH_ENTITY);
    Ref<IHostCurve> curve;
    ASSERT_EQ(entity->GetCurve(curve.out()), KR_HOST_OK);
    double start[3] = {};
    double end[3] = {};
    curve->GetEndPoints(start, end);
    EXPECT_EQ(start[0], 1.0);
    EXPECT_EQ(end[1], 1.0);
    Ref<IHostCurve> again;
    ASSERT_EQ(entity->GetCurve(again.out()), KR_HOST_OK);
    EXPECT_EQ(again.get(), curve.get());
}

TEST_F(JsonHost, EveryWithheldPartFailsWhereTheLibraryAsksForIt) {
    {
        auto doc = loadExample("no-active-document.json");
        Ref<IHostDocument> active;
        EXPECT_EQ(doc->application()->GetActiveDocument(active.out()), KR_HOST_FAIL);
        EXPECT_FALSE(active);
    }
    {
        auto doc = loadExample("no-route-model.json");
        Ref<IHostDocument> active;
        ASSERT_EQ(doc->application()->GetActiveDocument(active.out()), KR_HOST_OK);
        void* raw = active.get();
        EXPECT_EQ(active->QueryInterface(KR_IID_ROUTE_MODEL, &raw), KR_HOST_NOINTERFACE);
        EXPECT_EQ(raw, nullptr);
    }
    {
        auto doc = loadExample("no-route-sketch.json");
        Ref<IHostDocument> active;
        ASSERT_EQ(doc->application()->GetActiveDocument(active.out()), KR_HOST_OK);
        auto model = query<IHostRouteModel>(active.get(), KR_IID_ROUTE_MODEL);
        ASSERT_TRUE(model);
        Ref<IHostUnknown> routeSketch;
        EXPECT_EQ(model->GetRouteSketch(routeSketch.out()), KR_HOST_FAIL);
        EXPECT_FALSE(routeSketch);
    }
    {
        auto doc = loadExample("no-route-data.json");
        Ref<IHostDocument> active;
        ASSERT_EQ(doc->application()->GetActiveDocument(active.out()), KR_HOST_OK);
        auto model = query<IHostRouteModel>(active.get(), KR_IID_ROUTE_MODEL);
        Ref<IHostUnknown> routeSketch;
        ASSERT_EQ(model->GetRouteSketch(routeSketch.out()), KR_HOST_OK);
        EXPECT_TRUE(query<IHostUnknown>(routeSketch.get(), KR_IID_UNKNOWN));
        EXPECT_FALSE(query<IHostRouteData>(routeSketch.get(), KR_IID_ROUTE_DATA));
    }
    {
        auto doc = loadExample("no-route-container.json");
        Ref<IHostDocument> active;
        ASSERT_EQ(doc->application()->GetActiveDocument(active.out()), KR_HOST_OK);
        auto model = query<IHostRouteModel>(active.get(), KR_IID_ROUTE_MODEL);
        Ref<IHostUnknown> routeSketch;
        ASSERT_EQ(model->GetRouteSketch(routeSketch.out()), KR_HOST_OK);
        auto data = query<IHostRouteData>(routeSketch.get(), KR_IID_ROUTE_DATA);
        ASSERT_TRUE(data);
        Ref<IHostRouteContainer> routes;
        EXPECT_EQ(data->GetRouteContainer(routes.out()), KR_HOST_FAIL);
        EXPECT_FALSE(routes);
    }
    {
        auto doc = loadExample("no-route-segments.json");
        Ref<IHostDocument> active;
        ASSERT_EQ(doc->application()->GetActiveDocument(active.out()), KR_HOST_OK);
        auto model = query<IHostRouteModel>(active.get(), KR_IID_ROUTE_MODEL);
        Ref<IHostUnknown> routeSketch;
        ASSERT_EQ(model->GetRouteSketch(routeSketch.out()), KR_HOST_OK);
        auto data = query<IHostRouteData>(routeSketch.get(), KR_IID_ROUTE_DATA);
        Ref<IHostRouteContainer> routes;
        ASSERT_EQ(data->GetRouteContainer(routes.out()), KR_HOST_OK);
        int count = -1;
        ASSERT_EQ(routes->GetRouteSegmentCount(&count), KR_HOST_OK);
        EXPECT_EQ(count, 0);
    }
}

TEST_F(JsonHost, ToggleSketchEditOpensANewSketchAndClosesIt) {
    Ref<IHostDocument> doc = document();
    Ref<IHostSketch> none;
    EXPECT_EQ(doc->GetActiveSketch(none.out()), KR_HOST_FAIL);
    EXPECT_FALSE(none);

    Ref<IHostSketch> first = openSketch(doc);
    ASSERT_TRUE(first);
    EXPECT_TRUE(query<IHostSketch>(first.get(), KR_IID_SKETCH));
    Ref<IHostSketch> same;
    ASSERT_EQ(doc->GetActiveSketch(same.out()), KR_HOST_OK);
    EXPECT_EQ(same.get(), first.get());

    ASSERT_EQ(doc->ToggleSketchEdit(), KR_HOST_OK);
    EXPECT_EQ(doc->GetActiveSketch(same.out()), KR_HOST_FAIL);
    // A closed sketch draws nothing.
    Ref<IHostSketchLine> refused;
    EXPECT_EQ(first->CreateLine(0, 0, 0, 1, 0, 0, refused.out()), KR_HOST_FAIL);
    EXPECT_FALSE(refused);

    Ref<IHostSketch> second = openSketch(doc);
    EXPECT_NE(second.get(), first.get());
    line(second, 0, 0, 1, 0);
    ASSERT_EQ(host->results().lines().size(), 1u);
    EXPECT_EQ(host->results().lines()[0].sketch, 2);
    EXPECT_EQ(host->results().sketchesOpened(), 2u);
    EXPECT_EQ(host->results().sketchesClosed(), 1u);
}

TEST_F(JsonHost, SketchOpenAtLoadIsTheActiveSketch) {
    auto opened = JsonHostDocument::LoadString(R"({"sketchOpen": true, "segments": []})");
    Ref<IHostDocument> doc;
    ASSERT_EQ(opened->application()->GetActiveDocument(doc.out()), KR_HOST_OK);
    Ref<IHostSketch> sketch;
    ASSERT_EQ(doc->GetActiveSketch(sketch.out()), KR_HOST_OK);
    ASSERT_EQ(doc->ToggleSketchEdit(), KR_HOST_OK);
    EXPECT_EQ(doc->GetActiveSketch(sketch.out()), KR_HOST_FAIL);
    EXPECT_EQ(opened->results().sketchesOpened(), 0u);
    EXPECT_EQ(opened->results().sketchesClosed(), 1u);
}

TEST_F(JsonHost, NewLinesGetNewIdPairsAndPointsOfTheirOwn) {
    Ref<IHostDocument> doc = document();
    Ref<IHostSketch> sketch = openSketch(doc);
    Ref<IHostSketchLine> a = line(sketch, 0, 0, 1, 0);
    Ref<IHostSketchLine> b = line(sketch, 5, 5, 6, 5);
    EXPECT_EQ(idOf(a.get()), Pair(1, 1));
    EXPECT_EQ(idOf(b.get()), Pair(1, 2));
    EXPECT_EQ(idOf(startPoint(a).get()), Pair(2, 1));
    EXPECT_EQ(idOf(endPoint(a).get()), Pair(2, 2));
    EXPECT_EQ(idOf(startPoint(b).get()), Pair(2, 3));
    EXPECT_EQ(idOf(endPoint(b).get()), Pair(2, 4));

    auto entity = query<IHostSketchEntity>(a.get(), KR_IID_SKETCH_ENTITY);
    ASSERT_TRUE(entity);
    int kind = -1;
    entity->GetKind(&kind);
    EXPECT_EQ(kind, KR_ENTITY_LINE);
    double length = 0;
    entity->GetLength(&length);
    EXPECT_EQ(length, 1.0);
    EXPECT_TRUE(query<IHostSelectable>(a.get(), KR_IID_SELECTABLE));
    EXPECT_FALSE(query<IHostSketchArc>(a.get(), KR_IID_SKETCH_ARC));

    auto const& lines = host->results().lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1].id, Pair(1, 2));
    EXPECT_EQ(lines[1].start, (JsonHostRecorder::Vec3{5, 5, 0}));
    EXPECT_EQ(lines[1].end, (JsonHostRecorder::Vec3{6, 5, 0}));
    EXPECT_EQ(lines[1].startPoint, Pair(2, 3));
    EXPECT_EQ(lines[1].endPoint, Pair(2, 4));
    EXPECT_EQ(host->results().points().size(), 4u);
}

TEST_F(JsonHost, ConsecutiveLinesShareTheirCornerPoint) {
    Ref<IHostDocument> doc = document();
    Ref<IHostSketch> sketch = openSketch(doc);
    Ref<IHostSketchLine> a = line(sketch, 0, 0, 1, 0);
    Ref<IHostSketchLine> b = line(sketch, 1, 0, 1, 1);
    // Within 1e-9 of (1, 1): the same point.
    Ref<IHostSketchLine> c = line(sketch, 1 + 5e-10, 1 - 5e-10, 2, 1);
    // 1e-8 away: a point of its own.
    Ref<IHostSketchLine> d = line(sketch, 2 + 1e-8, 1, 3, 1);

    Ref<IHostPoint> corner1 = endPoint(a);
    Ref<IHostPoint> bStart = startPoint(b);
    EXPECT_EQ(corner1.get(), bStart.get());
    EXPECT_EQ(endPoint(b).get(), startPoint(c).get());
    EXPECT_NE(endPoint(c).get(), startPoint(d).get());
    EXPECT_EQ(idOf(bStart.get()), Pair(2, 2));

    double x = 0, y = 0, z = 0;
    startPoint(c)->GetCoords(&x, &y, &z);
    EXPECT_EQ(x, 1.0);   // the existing point keeps its place
    EXPECT_EQ(y, 1.0);
    // 4 lines, 5 distinct points: (0,0) (1,0) (1,1) (2,1) (2+1e-8,1) (3,1).
    EXPECT_EQ(host->results().points().size(), 6u);
    EXPECT_EQ(host->results().lines()[2].startPoint, host->results().lines()[1].endPoint);
}

TEST_F(JsonHost, CreateLineRefusesBadArguments) {
    Ref<IHostDocument> doc = document();
    Ref<IHostSketch> sketch = openSketch(doc);
    EXPECT_EQ(sketch->CreateLine(0, 0, 0, 1, 0, 0, nullptr), KR_HOST_INVALIDARG);
    Ref<IHostSketchLine> made;
    EXPECT_EQ(sketch->CreateLine(0, std::nan(""), 0, 1, 0, 0, made.out()), KR_HOST_INVALIDARG);
    EXPECT_EQ(sketch->CreateLine(0, 0, 0, HUGE_VAL, 0, 0, made.out()), KR_HOST_INVALIDARG);
    EXPECT_FALSE(made);
    EXPECT_TRUE(host->results().lines().empty());
}

TEST_F(JsonHost, DegenerateLineStartsAndEndsAtOnePoint) {
    Ref<IHostDocument> doc = document();
    Ref<IHostSketch> sketch = openSketch(doc);
    Ref<IHostSketchLine> dot = line(sketch, 2, 2, 2, 2);
    EXPECT_EQ(startPoint(dot).get(), endPoint(dot).get());
    EXPECT_EQ(host->results().points().size(), 1u);
}

TEST_F(JsonHost, SelectionReplacesOrAppendsAndRecordsCallouts) {
    Ref<IHostDocument> doc = document();
    Ref<IHostSelectionManager> selection;
    ASSERT_EQ(doc->GetSelectionManager(selection.out()), KR_HOST_OK);
    EXPECT_TRUE(query<IHostSelectionManager>(selection.get(), KR_IID_SELECTION_MANAGER));
    auto held = entities(5);
    auto arc = entities(9);

    EXPECT_EQ(select(held[0].get(), false), KR_HOST_OK);
    EXPECT_EQ(select(held[1].get(), true), KR_HOST_OK);
    auto const& current = host->results().selection();
    ASSERT_EQ(current.size(), 2u);
    EXPECT_EQ(current[0].target.kind, "entity");
    EXPECT_EQ(current[0].target.segment, 5);
    EXPECT_EQ(current[1].target.id, Pair(3, 3));
    EXPECT_FALSE(current[0].hasCallout);

    EXPECT_EQ(select(arc[0].get(), false), KR_HOST_OK);
    ASSERT_EQ(host->results().selection().size(), 1u);
    EXPECT_EQ(host->results().selection()[0].target.segment, 9);

    Ref<IHostCallout> callout;
    ASSERT_EQ(selection->CreateCallout(L"Loop Segment", callout.out()), KR_HOST_OK);
    std::wstring text;
    ASSERT_EQ(callout->GetText(&text), KR_HOST_OK);
    EXPECT_EQ(text, L"Loop Segment");
    EXPECT_TRUE(query<IHostCallout>(callout.get(), KR_IID_CALLOUT));
    auto selectable = query<IHostSelectable>(held[0].get(), KR_IID_SELECTABLE);
    EXPECT_EQ(selectable->SelectWithCallout(true, callout.get()), KR_HOST_OK);
    EXPECT_EQ(selectable->SelectWithCallout(true, nullptr), KR_HOST_INVALIDARG);
    ASSERT_EQ(host->results().selection().size(), 2u);
    EXPECT_TRUE(host->results().selection()[1].hasCallout);
    EXPECT_EQ(host->results().selection()[1].callout, L"Loop Segment");
    // Selecting an entity that is already selected keeps it once.
    EXPECT_EQ(select(held[0].get(), true), KR_HOST_OK);
    EXPECT_EQ(host->results().selection().size(), 2u);

    ASSERT_EQ(selection->ClearSelection(true), KR_HOST_OK);
    EXPECT_TRUE(host->results().selection().empty());
    ASSERT_EQ(host->results().callouts().size(), 1u);
    EXPECT_EQ(host->results().callouts()[0].target.id, Pair(3, 2));
    EXPECT_EQ(host->results().callouts()[0].callout, L"Loop Segment");
    EXPECT_EQ(host->results().selectionClears(), 1u);
}

TEST_F(JsonHost, CalloutBelongsToTheCallerAlone) {
    Ref<IHostDocument> doc = document();
    Ref<IHostSelectionManager> selection;
    ASSERT_EQ(doc->GetSelectionManager(selection.out()), KR_HOST_OK);
    unsigned long const before = host->clientReferences();
    IHostCallout* callout = nullptr;
    ASSERT_EQ(selection->CreateCallout(L"Disjoint Segment", &callout), KR_HOST_OK);
    auto const count = host->referenceCount(callout);
    ASSERT_TRUE(count.has_value());
    EXPECT_EQ(count->count, 1u);
    EXPECT_EQ(count->baseline, 0u);
    EXPECT_EQ(host->clientReferences(), before + 1);
    EXPECT_EQ(callout->Release(), 0u);
    EXPECT_EQ(host->clientReferences(), before);
    EXPECT_EQ(selection->CreateCallout(L"x", nullptr), KR_HOST_INVALIDARG);
}

TEST_F(JsonHost, AddRelationRecordsTheSelectedEntities) {
    Ref<IHostDocument> doc = document();
    Ref<IHostSketch> sketch = openSketch(doc);
    Ref<IHostSketchLine> a = line(sketch, 0, 0, 1, 0);
    Ref<IHostSelectionManager> selection;
    ASSERT_EQ(doc->GetSelectionManager(selection.out()), KR_HOST_OK);

    EXPECT_EQ(doc->AddRelation(L"sgALONGX3D"), KR_HOST_FAIL);   // nothing selected
    EXPECT_TRUE(host->results().relations().empty());

    ASSERT_EQ(select(a.get(), false), KR_HOST_OK);
    ASSERT_EQ(doc->AddRelation(L"sgALONGX3D"), KR_HOST_OK);
    Ref<IHostFeature> feature;
    ASSERT_EQ(doc->GetFirstFeature(feature.out()), KR_HOST_OK);
    ASSERT_EQ(select(feature.get(), true), KR_HOST_OK);
    ASSERT_EQ(doc->AddRelation(L"sgCOINCIDENT"), KR_HOST_OK);
    EXPECT_EQ(doc->AddRelation(L""), KR_HOST_INVALIDARG);

    auto const& relations = host->results().relations();
    ASSERT_EQ(relations.size(), 2u);
    EXPECT_EQ(relations[0].name, L"sgALONGX3D");
    ASSERT_EQ(relations[0].entities.size(), 1u);
    EXPECT_EQ(relations[0].entities[0].kind, "line");
    EXPECT_EQ(relations[0].entities[0].id, Pair(1, 1));
    EXPECT_EQ(relations[1].name, L"sgCOINCIDENT");
    ASSERT_EQ(relations[1].entities.size(), 2u);
    EXPECT_EQ(relations[1].entities[1].kind, "feature");
    EXPECT_EQ(relations[1].entities[1].name, L"Origin");
    EXPECT_EQ(relations[1].entities[1].text(), "feature(Origin)");
}

TEST_F(JsonHost, FilletRecordsTheCornerBetweenTwoLines) {
    Ref<IHostDocument> doc = document();
    Ref<IHostSketch> sketch = openSketch(doc);
    Ref<IHostSketchLine> a = line(sketch, 0, 0, 1, 0);
    Ref<IHostSketchLine> b = line(sketch, 1, 0, 1, 1);
    Ref<IHostPoint> corner = startPoint(b);
    ASSERT_EQ(select(corner.get(), false), KR_HOST_OK);
    ASSERT_EQ(doc->FilletSelectedCorner(0.01), KR_HOST_OK);

    auto const& fillets = host->results().fillets();
    ASSERT_EQ(fillets.size(), 1u);
    EXPECT_EQ(fillets[0].point, Pair(2, 2));
    EXPECT_EQ(fillets[0].at, (JsonHostRecorder::Vec3{1, 0, 0}));
    EXPECT_EQ(fillets[0].radius, 0.01);
    EXPECT_EQ(fillets[0].firstLine, Pair(1, 1));
    EXPECT_EQ(fillets[0].secondLine, Pair(1, 2));
}

TEST_F(JsonHost, FilletFailsUnlessOnePointJoiningTwoLinesIsSelected) {
    Ref<IHostDocument> doc = document();
    Ref<IHostSketch> sketch = openSketch(doc);
    Ref<IHostSketchLine> a = line(sketch, 0, 0, 1, 0);
    Ref<IHostSketchLine> b = line(sketch, 1, 0, 1, 1);

    EXPECT_EQ(doc->FilletSelectedCorner(0.01), KR_HOST_FAIL);   // nothing selected
    ASSERT_EQ(select(a.get(), false), KR_HOST_OK);
    EXPECT_EQ(doc->FilletSelectedCorner(0.01), KR_HOST_FAIL);   // a line, not a point
    ASSERT_EQ(select(startPoint(a).get(), false), KR_HOST_OK);
    EXPECT_EQ(doc->FilletSelectedCorner(0.01), KR_HOST_FAIL);   // an end of one line
    ASSERT_EQ(select(startPoint(b).get(), false), KR_HOST_OK);
    ASSERT_EQ(select(endPoint(b).get(), true), KR_HOST_OK);
    EXPECT_EQ(doc->FilletSelectedCorner(0.01), KR_HOST_FAIL);   // two points
    ASSERT_EQ(select(startPoint(b).get(), false), KR_HOST_OK);
    EXPECT_EQ(doc->FilletSelectedCorner(0.0), KR_HOST_INVALIDARG);
    EXPECT_EQ(doc->FilletSelectedCorner(-1.0), KR_HOST_INVALIDARG);
    EXPECT_EQ(doc->FilletSelectedCorner(std::nan("")), KR_HOST_INVALIDARG);
    Ref<IHostSketchLine> c = line(sketch, 1, 0, 2, -1);
    EXPECT_EQ(doc->FilletSelectedCorner(0.01), KR_HOST_FAIL);   // three lines meet there

    // A point of a route entity is not in the open sketch.
    auto held = entities(5);
    auto routeLine = query<IHostSketchLine>(held[1].get(), KR_IID_SKETCH_LINE);
    ASSERT_EQ(select(startPoint(routeLine).get(), false), KR_HOST_OK);
    EXPECT_EQ(doc->FilletSelectedCorner(0.01), KR_HOST_FAIL);
    EXPECT_TRUE(host->results().fillets().empty());
}

TEST_F(JsonHost, DrawingSettingsStartAsLoadedAndRecordChanges) {
    Ref<IHostDocument> doc = document();
    bool value = false;
    ASSERT_EQ(doc->GetDrawingSetting(KR_SETTING_BULK_INSERT, &value), KR_HOST_OK);
    EXPECT_TRUE(value);
    ASSERT_EQ(doc->GetDrawingSetting(KR_SETTING_AUTO_RELATIONS, &value), KR_HOST_OK);
    EXPECT_FALSE(value);

    ASSERT_EQ(doc->SetDrawingSetting(KR_SETTING_AUTO_RELATIONS, true), KR_HOST_OK);
    ASSERT_EQ(doc->GetDrawingSetting(KR_SETTING_AUTO_RELATIONS, &value), KR_HOST_OK);
    EXPECT_TRUE(value);
    EXPECT_EQ(doc->SetDrawingSetting(7, true), KR_HOST_INVALIDARG);
    EXPECT_EQ(doc->GetDrawingSetting(-1, &value), KR_HOST_INVALIDARG);
    EXPECT_EQ(doc->GetDrawingSetting(KR_SETTING_BULK_INSERT, nullptr), KR_HOST_INVALIDARG);

    auto const& changes = host->results().settingChanges();
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_EQ(changes[0].setting, KR_SETTING_AUTO_RELATIONS);
    EXPECT_TRUE(changes[0].value);
    EXPECT_TRUE(host->results().setting(KR_SETTING_AUTO_RELATIONS));
}

TEST_F(JsonHost, RedrawsAreCounted) {
    Ref<IHostDocument> doc = document();
    EXPECT_EQ(host->results().redraws(), 0u);
    ASSERT_EQ(doc->Redraw(), KR_HOST_OK);
    ASSERT_EQ(doc->Redraw(), KR_HOST_OK);
    EXPECT_EQ(host->results().redraws(), 2u);
}

TEST_F(JsonHost, FeaturesWalkInDocumentOrderAndEndWithFailure) {
    Ref<IHostDocument> doc = document();
    Ref<IHostFeature> feature;
    ASSERT_EQ(doc->GetFirstFeature(feature.out()), KR_HOST_OK);
    std::vector<std::wstring> names;
    while (feature) {
        EXPECT_TRUE(query<IHostFeature>(feature.get(), KR_IID_FEATURE));
        EXPECT_TRUE(query<IHostSelectable>(feature.get(), KR_IID_SELECTABLE));
        std::wstring name;
        ASSERT_EQ(feature->GetName(&name), KR_HOST_OK);
        names.push_back(name);
        Ref<IHostFeature> next;
        long const status = feature->GetNextFeature(next.out());
        if (!next) {
            EXPECT_EQ(status, KR_HOST_FAIL);
        }
        feature = std::move(next);
    }
    EXPECT_EQ(names, (std::vector<std::wstring>{L"Origin", L"Route1", L"Route2"}));

    auto bare = JsonHostDocument::LoadString(R"({"segments": []})");
    Ref<IHostDocument> bareDoc;
    ASSERT_EQ(bare->application()->GetActiveDocument(bareDoc.out()), KR_HOST_OK);
    EXPECT_EQ(bareDoc->GetFirstFeature(feature.out()), KR_HOST_FAIL);
    EXPECT_FALSE(feature);
}

TEST_F(JsonHost, RequestLogRecordsEveryRequestInOrder) {
    Ref<IHostDocument> doc = document();
    Ref<IHostSketch> sketch = openSketch(doc);
    line(sketch, 0, 0.5, 1, 0.5);
    doc->AddRelation(L"sgALONGX3D");

    auto const& log = host->results().requests();
    ASSERT_EQ(log.size(), 5u);
    EXPECT_EQ(log[0].object, "application");
    EXPECT_EQ(log[0].method, "GetActiveDocument");
    EXPECT_EQ(log[0].status, KR_HOST_OK);
    EXPECT_EQ(log[1].method, "ToggleSketchEdit");
    EXPECT_EQ(log[2].method, "GetActiveSketch");
    EXPECT_EQ(log[3].object, "sketch(1)");
    EXPECT_EQ(log[3].method, "CreateLine");
    EXPECT_EQ(log[3].arguments, "0, 0.5, 0, 1, 0.5, 0");
    EXPECT_EQ(log[4].method, "AddRelation");
    EXPECT_EQ(log[4].arguments, "\"sgALONGX3D\"");
    EXPECT_EQ(log[4].status, KR_HOST_FAIL);
    EXPECT_EQ(host->results().countRequests("CreateLine"), 1u);

    void* raw = nullptr;
    doc->QueryInterface(KR_IID_ROUTE_DATA, &raw);
    EXPECT_EQ(log.back().method, "QueryInterface");
    EXPECT_EQ(log.back().arguments, "KR_IID_ROUTE_DATA");
    EXPECT_EQ(log.back().status, KR_HOST_NOINTERFACE);
}

TEST_F(JsonHost, ReferencesBalanceAfterAFullWalk) {
    EXPECT_EQ(host->clientReferences(), 0u);
    {
        Ref<IHostDocument> doc = document();
        Ref<IHostRouteContainer> routes = container();
        for (int id : {9, 5}) {
            for (auto& entity : entities(id)) {
                auto e = query<IHostSketchEntity>(entity.get(), KR_IID_SKETCH_ENTITY);
                Ref<IHostCurve> curve;
                e->GetCurve(curve.out());
                auto l = query<IHostSketchLine>(entity.get(), KR_IID_SKETCH_LINE);
                if (l) {
                    startPoint(l);
                    endPoint(l);
                }
            }
        }
        Ref<IHostSketch> sketch = openSketch(doc);
        Ref<IHostSketchLine> a = line(sketch, 0, 0, 1, 0);
        Ref<IHostSketchLine> b = line(sketch, 1, 0, 1, 1);
        select(startPoint(b).get(), false);
        doc->FilletSelectedCorner(0.5);
        Ref<IHostSelectionManager> selection;
        doc->GetSelectionManager(selection.out());
        Ref<IHostCallout> callout;
        selection->CreateCallout(L"c", callout.out());
        query<IHostSelectable>(a.get(), KR_IID_SELECTABLE)->SelectWithCallout(true, callout.get());
        Ref<IHostFeature> feature;
        doc->GetFirstFeature(feature.out());
        Ref<IHostFeature> next;
        feature->GetNextFeature(next.out());
        EXPECT_GT(host->clientReferences(), 0u);
    }
    EXPECT_EQ(host->clientReferences(), 0u);
    EXPECT_EQ(host->results().overReleases(), 0u);   // no request handed out a reference it did not add
    for (auto const& object : host->referenceCounts()) {
        EXPECT_EQ(object.count, object.baseline) << object.object;
        EXPECT_EQ(object.baseline, 1u) << object.object;
    }
}

TEST_F(JsonHost, ReferenceCountReportsEveryObjectByAnyOfItsInterfaces) {
    auto held = entities(5);
    auto line = query<IHostSketchLine>(held[0].get(), KR_IID_SKETCH_LINE);
    auto selectable = query<IHostSelectable>(held[0].get(), KR_IID_SELECTABLE);
    auto byUnknown = host->referenceCount(held[0].get());
    auto byLine = host->referenceCount(line.get());
    auto bySelectable = host->referenceCount(selectable.get());
    ASSERT_TRUE(byUnknown && byLine && bySelectable);
    EXPECT_EQ(byUnknown->object, "entity(3,2)");
    EXPECT_EQ(byLine->object, "entity(3,2)");
    EXPECT_EQ(byUnknown->count, 1u + 3u);   // the host's and three client references
    EXPECT_EQ(byUnknown->baseline, 1u);
    int unrelated = 0;
    EXPECT_FALSE(host->referenceCount(reinterpret_cast<IHostUnknown const*>(&unrelated)).has_value());
    EXPECT_FALSE(host->referenceCount(nullptr).has_value());
}

TEST_F(JsonHost, ReleaseBeyondTheClientReferencesIsRefusedAndCounted) {
    IHostApplication* app = host->application();
    unsigned long const base = host->referenceCount(app)->count;
    EXPECT_EQ(app->Release(), base);
    EXPECT_EQ(host->referenceCount(app)->count, base);
    EXPECT_EQ(host->results().overReleases(), 1u);
    Ref<IHostDocument> doc = document();
    EXPECT_EQ(doc->GetActiveSketch(nullptr), KR_HOST_INVALIDARG);   // the host still works
}

TEST_F(JsonHost, ObjectsOutliveTheDocumentWhileClientsHoldThem) {
    IHostApplication* app = host->application();
    app->AddRef();
    Ref<IHostDocument> doc = document();
    auto held = entities(5);
    auto line = query<IHostSketchLine>(held[0].get(), KR_IID_SKETCH_LINE);
    Ref<IHostSketch> sketch = openSketch(doc);
    host.reset();

    // Own data still answers; requests that reach other objects fail.
    auto entity = query<IHostSketchEntity>(held[0].get(), KR_IID_SKETCH_ENTITY);
    ASSERT_TRUE(entity);
    double length = 0;
    EXPECT_EQ(entity->GetLength(&length), KR_HOST_OK);
    EXPECT_EQ(length, 5.0);
    Ref<IHostPoint> point;
    EXPECT_EQ(line->GetStartPoint(point.out()), KR_HOST_FAIL);
    Ref<IHostDocument> again;
    EXPECT_EQ(app->GetActiveDocument(again.out()), KR_HOST_FAIL);
    Ref<IHostSketchLine> made;
    EXPECT_EQ(sketch->CreateLine(0, 0, 0, 1, 1, 0, made.out()), KR_HOST_FAIL);
    EXPECT_EQ(doc->ToggleSketchEdit(), KR_HOST_FAIL);
    EXPECT_EQ(app->Release(), 0u);
    // The remaining references go with the Refs; the sanitizer build checks nothing leaks.
}

TEST_F(JsonHost, NullOutPointersAreRejected) {
    Ref<IHostDocument> doc = document();
    EXPECT_EQ(host->application()->GetActiveDocument(nullptr), KR_HOST_INVALIDARG);
    EXPECT_EQ(doc->GetSelectionManager(nullptr), KR_HOST_INVALIDARG);
    EXPECT_EQ(doc->GetFirstFeature(nullptr), KR_HOST_INVALIDARG);
    auto model = query<IHostRouteModel>(doc.get(), KR_IID_ROUTE_MODEL);
    EXPECT_EQ(model->GetRouteSketch(nullptr), KR_HOST_INVALIDARG);
    Ref<IHostRouteContainer> routes = container();
    int count = 0;
    EXPECT_EQ(routes->GetSketchEntityCount(5, nullptr), KR_HOST_INVALIDARG);
    EXPECT_EQ(routes->GetSketchEntities(5, -1, nullptr), KR_HOST_INVALIDARG);
    auto held = entities(5);
    auto entity = query<IHostSketchEntity>(held[0].get(), KR_IID_SKETCH_ENTITY);
    EXPECT_EQ(entity->GetLength(nullptr), KR_HOST_INVALIDARG);
    EXPECT_EQ(entity->GetKind(nullptr), KR_HOST_INVALIDARG);
    EXPECT_EQ(entity->GetCurve(nullptr), KR_HOST_INVALIDARG);
    auto line = query<IHostSketchLine>(held[0].get(), KR_IID_SKETCH_LINE);
    EXPECT_EQ(line->GetStartPoint(nullptr), KR_HOST_INVALIDARG);
    long first = 0;
    EXPECT_EQ(line->GetId(&first, nullptr), KR_HOST_INVALIDARG);
    Ref<IHostPoint> point = startPoint(line);
    double x = 0;
    EXPECT_EQ(point->GetCoords(&x, nullptr, &x), KR_HOST_INVALIDARG);
    EXPECT_EQ(point->GetId(nullptr, &first), KR_HOST_INVALIDARG);
    EXPECT_EQ(routes->GetRouteSegmentCount(&count), KR_HOST_OK);
}

}  // namespace
