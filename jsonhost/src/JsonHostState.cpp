#include "JsonHostState.h"

#include "JsonHostApplication.h"
#include "JsonHostCadDocument.h"
#include "JsonHostFeature.h"
#include "JsonHostPoint.h"
#include "JsonHostRouteContainer.h"
#include "JsonHostRouteItem.h"
#include "JsonHostRouteSketch.h"
#include "JsonHostSelectionManager.h"
#include "JsonHostSketch.h"
#include "JsonHostSketchEntity.h"

#include <vector>

JsonHostState::JsonHostState(JsonHostModel model, nlohmann::ordered_json input)
    : model_(std::move(model)), input_(std::move(input)), recorder_(model_.bulkInsert, model_.autoRelations) {}

JsonHostState::~JsonHostState() = default;

void JsonHostState::build() {
    application_ = adopt<JsonHostApplication>();
    document_ = adopt<JsonHostCadDocument>();
    routeSketch_ = adopt<JsonHostRouteSketch>();
    routeContainer_ = adopt<JsonHostRouteContainer>();
    selectionManager_ = adopt<JsonHostSelectionManager>();

    long entityNumber = 0;
    long pointNumber = 0;
    for (JsonHostModel::Segment const& segment : model_.segments) {
        routeItems_.push_back(adopt<JsonHostRouteItem>(segment.id, segment.value));
        std::vector<JsonHostSketchEntity*> made;
        for (JsonHostModel::Entity const& entity : segment.entities) {
            JsonHostSketchEntity::Shape shape;
            shape.kindCode = entity.kindCode;
            shape.length = entity.length;
            if (entity.kind == "line" || entity.kind == "arc") {
                shape.start = adopt<JsonHostPoint>(JsonHostRecorder::IdPair{4, ++pointNumber}, entity.start, 0);
                shape.end = adopt<JsonHostPoint>(JsonHostRecorder::IdPair{4, ++pointNumber}, entity.end, 0);
            }
            shape.hasCurve = entity.hasCurve();
            shape.curveStart = entity.curveStart();
            shape.curveEnd = entity.curveEnd();
            JsonHostRecorder::Target target;
            target.kind = "entity";
            target.id = {3, ++entityNumber};
            target.segment = segment.id;
            made.push_back(adopt<JsonHostSketchEntity>(target, shape));
        }
        entities_.push_back(std::move(made));
    }
    for (std::size_t i = 0; i < model_.features.size(); ++i) {
        features_.push_back(adopt<JsonHostFeature>(i, model_.features[i]));
    }
    if (model_.sketchOpen) {
        activeSketch_ = adopt<JsonHostSketch>(++lastSketch_);
        sketches_.push_back(activeSketch_);
    }
}

void JsonHostState::close() {
    if (closed_) return;
    closed_ = true;
    application_ = nullptr;
    document_ = nullptr;
    routeSketch_ = nullptr;
    routeContainer_ = nullptr;
    selectionManager_ = nullptr;
    routeItems_.clear();
    entities_.clear();
    features_.clear();
    sketches_.clear();
    activeSketch_ = nullptr;
    // No object holds another, so releasing one never frees a different one.
    std::vector<JsonHostObject*> held;
    for (auto const& entry : objects_) held.push_back(entry.second);
    for (JsonHostObject* object : held) {
        while (object->hostHeld() > 0) {
            bool const last = object->count() == 1;
            object->hostRelease();
            if (last) break;
        }
    }
}

std::uint64_t JsonHostState::track(JsonHostObject* object) {
    objects_.emplace(++lastObject_, object);
    return lastObject_;
}

void JsonHostState::untrack(std::uint64_t key) {
    objects_.erase(key);
}

JsonHostSketch* JsonHostState::openSketch() {
    activeSketch_ = adopt<JsonHostSketch>(++lastSketch_);
    sketches_.push_back(activeSketch_);
    recorder_.countSketchOpened();
    return activeSketch_;
}

void JsonHostState::closeSketch() {
    if (activeSketch_ == nullptr) return;
    activeSketch_ = nullptr;
    recorder_.countSketchClosed();
}
