#include "JsonHostPoint.h"

#include <krlayout/host/KrHostInterfaceId.h>

JsonHostPoint::JsonHostPoint(std::shared_ptr<JsonHostState> state, JsonHostRecorder::IdPair id,
                             JsonHostRecorder::Vec3 coords, int sketch)
    : JsonHostObject(std::move(state)), id_(id), coords_(coords), sketch_(sketch) {}

long JsonHostPoint::QueryInterface(int interfaceId, void** object) {
    void* iface = nullptr;
    if (interfaceId == KR_IID_UNKNOWN || interfaceId == KR_IID_POINT) {
        iface = static_cast<IHostPoint*>(this);
    } else if (interfaceId == KR_IID_SELECTABLE) {
        iface = static_cast<IHostSelectable*>(this);
    }
    return answerQuery(interfaceId, object, iface);
}

long JsonHostPoint::GetCoords(double* x, double* y, double* z) {
    if (x == nullptr || y == nullptr || z == nullptr) return record("GetCoords", "", KR_HOST_INVALIDARG);
    *x = coords_[0];
    *y = coords_[1];
    *z = coords_[2];
    return record("GetCoords", "", KR_HOST_OK);
}

long JsonHostPoint::GetId(long* first, long* second) {
    if (first == nullptr || second == nullptr) return record("GetId", "", KR_HOST_INVALIDARG);
    *first = id_.first;
    *second = id_.second;
    return record("GetId", "", KR_HOST_OK);
}

long JsonHostPoint::Select(bool append) {
    return selectAs(target(), append);
}

long JsonHostPoint::SelectWithCallout(bool append, IHostCallout* callout) {
    return selectWithCalloutAs(target(), append, callout);
}

JsonHostRecorder::Target JsonHostPoint::target() const {
    JsonHostRecorder::Target target;
    target.kind = "point";
    target.id = id_;
    return target;
}

bool JsonHostPoint::hasInterface(void const* p) const {
    return p == static_cast<IHostPoint const*>(this) || p == static_cast<IHostSelectable const*>(this);
}
