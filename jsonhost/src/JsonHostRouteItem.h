// The route item of one route segment: its route value.
#pragma once

#include "JsonHostObject.h"

#include <krlayout/host/IHostRouteItem.h>

class JsonHostRouteItem final : public IHostRouteItem, public JsonHostObject {
public:
    JsonHostRouteItem(std::shared_ptr<JsonHostState> state, int segmentId, double value);

    long QueryInterface(int interfaceId, void** object) override;
    unsigned long AddRef() override { return clientAddRef(); }
    unsigned long Release() override { return clientRelease(); }
    long GetValue(double* value) override;

    std::string describe() const override;
    IHostUnknown* identity() override { return static_cast<IHostRouteItem*>(this); }
    bool hasInterface(void const* p) const override;

private:
    int segmentId_;
    double value_;
};
