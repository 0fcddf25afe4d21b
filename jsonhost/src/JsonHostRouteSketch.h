// The route sketch object of the document; its route-data interface leads to the route container.
#pragma once

#include "JsonHostObject.h"

#include <krlayout/host/IHostRouteData.h>

class JsonHostRouteSketch final : public IHostRouteData, public JsonHostObject {
public:
    explicit JsonHostRouteSketch(std::shared_ptr<JsonHostState> state);

    // Answers KR_IID_UNKNOWN always and KR_IID_ROUTE_DATA unless the document withholds it.
    long QueryInterface(int interfaceId, void** object) override;
    unsigned long AddRef() override { return clientAddRef(); }
    unsigned long Release() override { return clientRelease(); }
    long GetRouteContainer(IHostRouteContainer** container) override;

    std::string describe() const override { return "routeSketch"; }
    IHostUnknown* identity() override { return static_cast<IHostRouteData*>(this); }
    bool hasInterface(void const* p) const override;
};
