#include "JsonHostRouteItem.h"

#include <krlayout/host/KrHostInterfaceId.h>

JsonHostRouteItem::JsonHostRouteItem(std::shared_ptr<JsonHostState> state, int segmentId, double value)
    : JsonHostObject(std::move(state)), segmentId_(segmentId), value_(value) {}

long JsonHostRouteItem::QueryInterface(int interfaceId, void** object) {
    void* iface = nullptr;
    if (interfaceId == KR_IID_UNKNOWN || interfaceId == KR_IID_ROUTE_ITEM) {
        iface = static_cast<IHostRouteItem*>(this);
    }
    return answerQuery(interfaceId, object, iface);
}

long JsonHostRouteItem::GetValue(double* value) {
    if (value == nullptr) return record("GetValue", "", KR_HOST_INVALIDARG);
    *value = value_;
    return record("GetValue", "", KR_HOST_OK);
}

std::string JsonHostRouteItem::describe() const {
    return "routeItem(" + std::to_string(segmentId_) + ")";
}

bool JsonHostRouteItem::hasInterface(void const* p) const {
    return p == static_cast<IHostRouteItem const*>(this);
}
