#include "JsonHostRouteSketch.h"

#include "JsonHostRouteContainer.h"
#include "JsonHostState.h"

#include <krlayout/host/KrHostInterfaceId.h>

JsonHostRouteSketch::JsonHostRouteSketch(std::shared_ptr<JsonHostState> state)
    : JsonHostObject(std::move(state)) {}

long JsonHostRouteSketch::QueryInterface(int interfaceId, void** object) {
    void* iface = nullptr;
    if (interfaceId == KR_IID_UNKNOWN) {
        iface = identity();
    } else if (interfaceId == KR_IID_ROUTE_DATA && state_->model().routeData) {
        iface = static_cast<IHostRouteData*>(this);
    }
    return answerQuery(interfaceId, object, iface);
}

long JsonHostRouteSketch::GetRouteContainer(IHostRouteContainer** container) {
    if (container == nullptr) return record("GetRouteContainer", "", KR_HOST_INVALIDARG);
    *container = nullptr;
    if (!live() || !state_->model().routeContainer) return record("GetRouteContainer", "", KR_HOST_FAIL);
    JsonHostRouteContainer* routes = state_->routeContainer();
    routes->clientAddRef();
    *container = routes;
    return record("GetRouteContainer", "", KR_HOST_OK);
}

bool JsonHostRouteSketch::hasInterface(void const* p) const {
    return p == static_cast<IHostRouteData const*>(this);
}
