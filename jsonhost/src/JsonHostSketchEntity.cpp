#include "JsonHostSketchEntity.h"

#include "JsonHostCurve.h"
#include "JsonHostPoint.h"
#include "JsonHostState.h"

#include <krlayout/host/KrHostInterfaceId.h>

JsonHostSketchEntity::JsonHostSketchEntity(std::shared_ptr<JsonHostState> state, JsonHostRecorder::Target target,
                                           Shape shape)
    : JsonHostObject(std::move(state)), target_(std::move(target)), shape_(shape) {}

long JsonHostSketchEntity::QueryInterface(int interfaceId, void** object) {
    void* iface = nullptr;
    switch (interfaceId) {
    case KR_IID_UNKNOWN:
    case KR_IID_SKETCH_ENTITY:
        iface = static_cast<IHostSketchEntity*>(this);
        break;
    case KR_IID_SKETCH_LINE:
        if (shape_.kindCode == KR_ENTITY_LINE) iface = static_cast<IHostSketchLine*>(this);
        break;
    case KR_IID_SKETCH_ARC:
        if (shape_.kindCode == KR_ENTITY_ARC) iface = static_cast<IHostSketchArc*>(this);
        break;
    case KR_IID_SELECTABLE:
        iface = static_cast<IHostSelectable*>(this);
        break;
    default:
        break;
    }
    return answerQuery(interfaceId, object, iface);
}

long JsonHostSketchEntity::GetLength(double* length) {
    if (length == nullptr) return record("GetLength", "", KR_HOST_INVALIDARG);
    *length = shape_.length;
    return record("GetLength", "", KR_HOST_OK);
}

long JsonHostSketchEntity::GetKind(int* kind) {
    if (kind == nullptr) return record("GetKind", "", KR_HOST_INVALIDARG);
    *kind = shape_.kindCode;
    return record("GetKind", "", KR_HOST_OK);
}

long JsonHostSketchEntity::GetCurve(IHostCurve** curve) {
    if (curve == nullptr) return record("GetCurve", "", KR_HOST_INVALIDARG);
    *curve = nullptr;
    if (!shape_.hasCurve || !live()) return record("GetCurve", "", KR_HOST_FAIL);
    if (curve_ == nullptr) {
        curve_ = state_->adopt<JsonHostCurve>(describe(), shape_.curveStart, shape_.curveEnd);
    }
    curve_->clientAddRef();
    *curve = curve_;
    return record("GetCurve", "", KR_HOST_OK);
}

long JsonHostSketchEntity::handOutPoint(char const* method, JsonHostPoint* point, IHostPoint** out) {
    if (out == nullptr) return record(method, "", KR_HOST_INVALIDARG);
    *out = nullptr;
    if (point == nullptr || !live()) return record(method, "", KR_HOST_FAIL);
    point->clientAddRef();
    *out = point;
    return record(method, "", KR_HOST_OK);
}

long JsonHostSketchEntity::GetStartPoint(IHostPoint** point) {
    return handOutPoint("GetStartPoint", shape_.start, point);
}

long JsonHostSketchEntity::GetEndPoint(IHostPoint** point) {
    return handOutPoint("GetEndPoint", shape_.end, point);
}

long JsonHostSketchEntity::GetId(long* first, long* second) {
    if (first == nullptr || second == nullptr) return record("GetId", "", KR_HOST_INVALIDARG);
    *first = target_.id.first;
    *second = target_.id.second;
    return record("GetId", "", KR_HOST_OK);
}

long JsonHostSketchEntity::Select(bool append) {
    return selectAs(target_, append);
}

long JsonHostSketchEntity::SelectWithCallout(bool append, IHostCallout* callout) {
    return selectWithCalloutAs(target_, append, callout);
}

bool JsonHostSketchEntity::hasInterface(void const* p) const {
    return p == static_cast<IHostSketchEntity const*>(this) || p == static_cast<IHostSketchLine const*>(this) ||
           p == static_cast<IHostSketchArc const*>(this) || p == static_cast<IHostSelectable const*>(this);
}
