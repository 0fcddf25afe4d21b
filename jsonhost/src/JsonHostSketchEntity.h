// A sketch entity: a line, an arc or another curve of a route segment, or a line drawn in a sketch.
// Lines answer IHostSketchLine, arcs IHostSketchArc; every entity is selectable.
#pragma once

#include "JsonHostObject.h"

#include <krlayout/host/IHostSelectable.h>
#include <krlayout/host/IHostSketchArc.h>
#include <krlayout/host/IHostSketchEntity.h>
#include <krlayout/host/IHostSketchLine.h>

class JsonHostCurve;
class JsonHostPoint;

class JsonHostSketchEntity final : public IHostSketchEntity,
                                   public IHostSketchLine,
                                   public IHostSketchArc,
                                   public IHostSelectable,
                                   public JsonHostObject {
public:
    struct Shape {
        int kindCode = 0;                   // KR_ENTITY_LINE, KR_ENTITY_ARC or another curve
        double length = 0.0;
        JsonHostPoint* start = nullptr;     // lines and arcs; held by the host
        JsonHostPoint* end = nullptr;
        bool hasCurve = false;
        JsonHostRecorder::Vec3 curveStart{};
        JsonHostRecorder::Vec3 curveEnd{};
    };

    // target: "entity" for an entity of a route segment, "line" for a drawn line.
    JsonHostSketchEntity(std::shared_ptr<JsonHostState> state, JsonHostRecorder::Target target, Shape shape);

    long QueryInterface(int interfaceId, void** object) override;
    unsigned long AddRef() override { return clientAddRef(); }
    unsigned long Release() override { return clientRelease(); }

    long GetLength(double* length) override;
    long GetKind(int* kind) override;
    long GetCurve(IHostCurve** curve) override;
    // IHostSketchLine and IHostSketchArc alike.
    long GetStartPoint(IHostPoint** point) override;
    long GetEndPoint(IHostPoint** point) override;
    long GetId(long* first, long* second) override;
    long Select(bool append) override;
    long SelectWithCallout(bool append, IHostCallout* callout) override;

    JsonHostRecorder::IdPair id() const { return target_.id; }
    JsonHostRecorder::Target const& target() const { return target_; }
    JsonHostPoint* startPoint() const { return shape_.start; }
    JsonHostPoint* endPoint() const { return shape_.end; }

    std::string describe() const override { return target_.text(); }
    IHostUnknown* identity() override { return static_cast<IHostSketchEntity*>(this); }
    bool hasInterface(void const* p) const override;

private:
    long handOutPoint(char const* method, JsonHostPoint* point, IHostPoint** out);

    JsonHostRecorder::Target target_;
    Shape shape_;
    JsonHostCurve* curve_ = nullptr;    // made on first request, held by the host
};
