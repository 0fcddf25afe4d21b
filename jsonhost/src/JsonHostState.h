// The in-memory document shared by every host object: the loaded model, the object graph, the
// active sketch and the recorder.
#pragma once

#include "JsonHostModel.h"
#include "JsonHostRecorder.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

class JsonHostApplication;
class JsonHostCadDocument;
class JsonHostFeature;
class JsonHostObject;
class JsonHostPoint;
class JsonHostRouteContainer;
class JsonHostRouteItem;
class JsonHostRouteSketch;
class JsonHostSelectionManager;
class JsonHostSketch;
class JsonHostSketchEntity;

class JsonHostState : public std::enable_shared_from_this<JsonHostState> {
public:
    JsonHostState(JsonHostModel model, nlohmann::ordered_json input);
    ~JsonHostState();
    JsonHostState(JsonHostState const&) = delete;
    JsonHostState& operator=(JsonHostState const&) = delete;

    // Creates the document's objects; the host holds one reference on each.
    void build();
    // Drops every reference the host holds; objects that clients still hold stay alive, but
    // requests that would reach other objects fail from then on.
    void close();
    bool closed() const { return closed_; }

    JsonHostModel const& model() const { return model_; }
    nlohmann::ordered_json const& input() const { return input_; }
    JsonHostRecorder& recorder() { return recorder_; }
    JsonHostRecorder const& recorder() const { return recorder_; }

    // Every live object, by creation order; track returns the object's key.
    std::uint64_t track(JsonHostObject* object);
    void untrack(std::uint64_t key);
    std::map<std::uint64_t, JsonHostObject*> const& objects() const { return objects_; }

    // Creates an object the host keeps (one host reference).
    template <typename T, typename... Args>
    T* adopt(Args&&... args) {
        T* object = new T(shared_from_this(), std::forward<Args>(args)...);
        object->hostAddRef();
        return object;
    }

    // The object graph; valid while the state is open.
    JsonHostApplication* application() const { return application_; }
    JsonHostCadDocument* document() const { return document_; }
    JsonHostRouteSketch* routeSketch() const { return routeSketch_; }
    JsonHostRouteContainer* routeContainer() const { return routeContainer_; }
    JsonHostSelectionManager* selectionManager() const { return selectionManager_; }
    // Route item and entities of the segment at an index of the model's segment list.
    JsonHostRouteItem* routeItem(std::size_t segmentIndex) const { return routeItems_[segmentIndex]; }
    std::vector<JsonHostSketchEntity*> const& entities(std::size_t segmentIndex) const {
        return entities_[segmentIndex];
    }
    std::vector<JsonHostFeature*> const& features() const { return features_; }

    // The sketch open for editing, or null.
    JsonHostSketch* activeSketch() const { return activeSketch_; }
    // Opens a new sketch for editing (sketches are numbered from 1).
    JsonHostSketch* openSketch();
    void closeSketch();

    // Host id pairs: (1, n) drawn lines, (2, n) drawn sketch points, (3, n) route entities,
    // (4, n) end points of route lines and arcs, (5, n) features.
    JsonHostRecorder::IdPair newLineId() { return {1, ++lastLine_}; }
    JsonHostRecorder::IdPair newPointId() { return {2, ++lastPoint_}; }
    int newCalloutNumber() { return ++lastCallout_; }

private:
    JsonHostModel model_;
    nlohmann::ordered_json input_;
    JsonHostRecorder recorder_;
    bool closed_ = false;
    std::map<std::uint64_t, JsonHostObject*> objects_;
    std::uint64_t lastObject_ = 0;

    JsonHostApplication* application_ = nullptr;
    JsonHostCadDocument* document_ = nullptr;
    JsonHostRouteSketch* routeSketch_ = nullptr;
    JsonHostRouteContainer* routeContainer_ = nullptr;
    JsonHostSelectionManager* selectionManager_ = nullptr;
    std::vector<JsonHostRouteItem*> routeItems_;
    std::vector<std::vector<JsonHostSketchEntity*>> entities_;
    std::vector<JsonHostFeature*> features_;
    std::vector<JsonHostSketch*> sketches_;
    JsonHostSketch* activeSketch_ = nullptr;

    long lastLine_ = 0;
    long lastPoint_ = 0;
    int lastSketch_ = 0;
    int lastCallout_ = 0;
};
