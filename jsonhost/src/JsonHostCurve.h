// The curve of a sketch entity: its two end points.
#pragma once

#include "JsonHostObject.h"

#include <krlayout/host/IHostCurve.h>

class JsonHostCurve final : public IHostCurve, public JsonHostObject {
public:
    // owner: the describe() text of the entity the curve belongs to.
    JsonHostCurve(std::shared_ptr<JsonHostState> state, std::string owner, JsonHostRecorder::Vec3 start,
                  JsonHostRecorder::Vec3 end);

    long QueryInterface(int interfaceId, void** object) override;
    unsigned long AddRef() override { return clientAddRef(); }
    unsigned long Release() override { return clientRelease(); }
    long GetEndPoints(double* start, double* end) override;

    std::string describe() const override { return "curve of " + owner_; }
    IHostUnknown* identity() override { return static_cast<IHostCurve*>(this); }
    bool hasInterface(void const* p) const override;

private:
    std::string owner_;
    JsonHostRecorder::Vec3 start_;
    JsonHostRecorder::Vec3 end_;
};
