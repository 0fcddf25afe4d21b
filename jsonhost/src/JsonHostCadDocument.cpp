#include "JsonHostCadDocument.h"

#include "JsonHostFeature.h"
#include "JsonHostPoint.h"
#include "JsonHostRouteSketch.h"
#include "JsonHostSelectionManager.h"
#include "JsonHostSketch.h"
#include "JsonHostSketchEntity.h"
#include "JsonHostState.h"
#include "JsonHostText.h"

#include <krlayout/host/KrHostInterfaceId.h>

#include <cmath>

JsonHostCadDocument::JsonHostCadDocument(std::shared_ptr<JsonHostState> state)
    : JsonHostObject(std::move(state)) {}

long JsonHostCadDocument::QueryInterface(int interfaceId, void** object) {
    void* iface = nullptr;
    if (interfaceId == KR_IID_UNKNOWN || interfaceId == KR_IID_DOCUMENT) {
        iface = static_cast<IHostDocument*>(this);
    } else if (interfaceId == KR_IID_ROUTE_MODEL && state_->model().routeModel) {
        iface = static_cast<IHostRouteModel*>(this);
    }
    return answerQuery(interfaceId, object, iface);
}

long JsonHostCadDocument::GetActiveSketch(IHostSketch** sketch) {
    if (sketch == nullptr) return record("GetActiveSketch", "", KR_HOST_INVALIDARG);
    *sketch = nullptr;
    JsonHostSketch* active = live() ? state_->activeSketch() : nullptr;
    if (active == nullptr) return record("GetActiveSketch", "", KR_HOST_FAIL);
    active->clientAddRef();
    *sketch = active;
    return record("GetActiveSketch", "", KR_HOST_OK);
}

long JsonHostCadDocument::ToggleSketchEdit() {
    if (!live()) return record("ToggleSketchEdit", "", KR_HOST_FAIL);
    if (state_->activeSketch() != nullptr) {
        state_->closeSketch();
    } else {
        state_->openSketch();
    }
    return record("ToggleSketchEdit", "", KR_HOST_OK);
}

long JsonHostCadDocument::GetSelectionManager(IHostSelectionManager** manager) {
    if (manager == nullptr) return record("GetSelectionManager", "", KR_HOST_INVALIDARG);
    *manager = nullptr;
    if (!live()) return record("GetSelectionManager", "", KR_HOST_FAIL);
    JsonHostSelectionManager* selection = state_->selectionManager();
    selection->clientAddRef();
    *manager = selection;
    return record("GetSelectionManager", "", KR_HOST_OK);
}

long JsonHostCadDocument::AddRelation(std::wstring const& name) {
    std::string const arguments = JsonHostText::Quoted(name);
    if (name.empty()) return record("AddRelation", arguments, KR_HOST_INVALIDARG);
    if (!live()) return record("AddRelation", arguments, KR_HOST_FAIL);
    JsonHostRecorder& recorder = state_->recorder();
    if (recorder.selection().empty()) return record("AddRelation", arguments, KR_HOST_FAIL);
    JsonHostRecorder::Relation relation;
    relation.name = name;
    for (JsonHostRecorder::Selected const& selected : recorder.selection()) {
        relation.entities.push_back(selected.target);
    }
    recorder.addRelation(std::move(relation));
    return record("AddRelation", arguments, KR_HOST_OK);
}

long JsonHostCadDocument::FilletSelectedCorner(double radius) {
    std::string const arguments = JsonHostText::Number(radius);
    if (!std::isfinite(radius) || radius <= 0.0) return record("FilletSelectedCorner", arguments, KR_HOST_INVALIDARG);
    JsonHostSketch* sketch = live() ? state_->activeSketch() : nullptr;
    JsonHostRecorder& recorder = state_->recorder();
    // The corner must be a single selected point of the open sketch where exactly two lines meet.
    if (sketch == nullptr || recorder.selection().size() != 1) {
        return record("FilletSelectedCorner", arguments, KR_HOST_FAIL);
    }
    JsonHostRecorder::Target const& target = recorder.selection().front().target;
    JsonHostPoint* corner = target.kind == "point" ? sketch->findPoint(target.id) : nullptr;
    if (corner == nullptr) return record("FilletSelectedCorner", arguments, KR_HOST_FAIL);
    std::vector<JsonHostSketchEntity*> const lines = sketch->linesAt(corner);
    if (lines.size() != 2) return record("FilletSelectedCorner", arguments, KR_HOST_FAIL);
    JsonHostRecorder::Fillet fillet;
    fillet.point = corner->id();
    fillet.at = corner->coords();
    fillet.radius = radius;
    fillet.firstLine = lines[0]->id();
    fillet.secondLine = lines[1]->id();
    recorder.addFillet(fillet);
    return record("FilletSelectedCorner", arguments, KR_HOST_OK);
}

long JsonHostCadDocument::GetDrawingSetting(int setting, bool* value) {
    std::string const arguments = std::to_string(setting);
    if (value == nullptr || !JsonHostRecorder::IsSetting(setting)) {
        return record("GetDrawingSetting", arguments, KR_HOST_INVALIDARG);
    }
    *value = state_->recorder().setting(setting);
    return record("GetDrawingSetting", arguments, KR_HOST_OK);
}

long JsonHostCadDocument::SetDrawingSetting(int setting, bool value) {
    std::string const arguments = std::to_string(setting) + ", " + JsonHostText::Bool(value);
    if (!JsonHostRecorder::IsSetting(setting)) return record("SetDrawingSetting", arguments, KR_HOST_INVALIDARG);
    if (!live()) return record("SetDrawingSetting", arguments, KR_HOST_FAIL);
    state_->recorder().changeSetting(setting, value);
    return record("SetDrawingSetting", arguments, KR_HOST_OK);
}

long JsonHostCadDocument::Redraw() {
    if (!live()) return record("Redraw", "", KR_HOST_FAIL);
    state_->recorder().countRedraw();
    return record("Redraw", "", KR_HOST_OK);
}

long JsonHostCadDocument::GetFirstFeature(IHostFeature** feature) {
    if (feature == nullptr) return record("GetFirstFeature", "", KR_HOST_INVALIDARG);
    *feature = nullptr;
    if (!live() || state_->features().empty()) return record("GetFirstFeature", "", KR_HOST_FAIL);
    JsonHostFeature* first = state_->features().front();
    first->clientAddRef();
    *feature = first;
    return record("GetFirstFeature", "", KR_HOST_OK);
}

long JsonHostCadDocument::GetRouteSketch(IHostUnknown** routeSketch) {
    if (routeSketch == nullptr) return record("GetRouteSketch", "", KR_HOST_INVALIDARG);
    *routeSketch = nullptr;
    if (!live() || !state_->model().routeSketch) return record("GetRouteSketch", "", KR_HOST_FAIL);
    JsonHostRouteSketch* sketch = state_->routeSketch();
    sketch->clientAddRef();
    *routeSketch = sketch->identity();
    return record("GetRouteSketch", "", KR_HOST_OK);
}

bool JsonHostCadDocument::hasInterface(void const* p) const {
    return p == static_cast<IHostDocument const*>(this) || p == static_cast<IHostRouteModel const*>(this);
}
