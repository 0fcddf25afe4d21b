// A sketch point: coordinates and host id pair; selectable (a selected point is a fillet corner).
#pragma once

#include "JsonHostObject.h"

#include <krlayout/host/IHostPoint.h>
#include <krlayout/host/IHostSelectable.h>

class JsonHostPoint final : public IHostPoint, public IHostSelectable, public JsonHostObject {
public:
    // sketch: number of the sketch the point was drawn in, 0 for end points of route entities.
    JsonHostPoint(std::shared_ptr<JsonHostState> state, JsonHostRecorder::IdPair id,
                  JsonHostRecorder::Vec3 coords, int sketch);

    long QueryInterface(int interfaceId, void** object) override;
    unsigned long AddRef() override { return clientAddRef(); }
    unsigned long Release() override { return clientRelease(); }

    long GetCoords(double* x, double* y, double* z) override;
    long GetId(long* first, long* second) override;
    long Select(bool append) override;
    long SelectWithCallout(bool append, IHostCallout* callout) override;

    JsonHostRecorder::IdPair id() const { return id_; }
    JsonHostRecorder::Vec3 const& coords() const { return coords_; }
    int sketch() const { return sketch_; }
    JsonHostRecorder::Target target() const;

    std::string describe() const override { return target().text(); }
    IHostUnknown* identity() override { return static_cast<IHostPoint*>(this); }
    bool hasInterface(void const* p) const override;

private:
    JsonHostRecorder::IdPair id_;
    JsonHostRecorder::Vec3 coords_;
    int sketch_;
};
