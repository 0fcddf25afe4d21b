#include "JsonHostFeature.h"

#include "JsonHostState.h"

#include <krlayout/host/KrHostInterfaceId.h>

JsonHostFeature::JsonHostFeature(std::shared_ptr<JsonHostState> state, std::size_t index, std::wstring name)
    : JsonHostObject(std::move(state)), index_(index), name_(std::move(name)) {}

long JsonHostFeature::QueryInterface(int interfaceId, void** object) {
    void* iface = nullptr;
    if (interfaceId == KR_IID_UNKNOWN || interfaceId == KR_IID_FEATURE) {
        iface = static_cast<IHostFeature*>(this);
    } else if (interfaceId == KR_IID_SELECTABLE) {
        iface = static_cast<IHostSelectable*>(this);
    }
    return answerQuery(interfaceId, object, iface);
}

long JsonHostFeature::GetName(std::wstring* name) {
    if (name == nullptr) return record("GetName", "", KR_HOST_INVALIDARG);
    *name = name_;
    return record("GetName", "", KR_HOST_OK);
}

long JsonHostFeature::GetNextFeature(IHostFeature** next) {
    if (next == nullptr) return record("GetNextFeature", "", KR_HOST_INVALIDARG);
    *next = nullptr;
    if (!live() || index_ + 1 >= state_->features().size()) return record("GetNextFeature", "", KR_HOST_FAIL);
    JsonHostFeature* following = state_->features()[index_ + 1];
    following->clientAddRef();
    *next = following;
    return record("GetNextFeature", "", KR_HOST_OK);
}

long JsonHostFeature::Select(bool append) {
    return selectAs(target(), append);
}

long JsonHostFeature::SelectWithCallout(bool append, IHostCallout* callout) {
    return selectWithCalloutAs(target(), append, callout);
}

JsonHostRecorder::Target JsonHostFeature::target() const {
    JsonHostRecorder::Target target;
    target.kind = "feature";
    target.id = {5, static_cast<long>(index_ + 1)};
    target.name = name_;
    return target;
}

bool JsonHostFeature::hasInterface(void const* p) const {
    return p == static_cast<IHostFeature const*>(this) || p == static_cast<IHostSelectable const*>(this);
}
