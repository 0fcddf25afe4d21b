// A sketch of the document. While it is open for editing it draws lines; a line end that lies
// within 1e-9 of a point already in the sketch (each coordinate) is that point, so lines drawn
// end to end share their corner.
#pragma once

#include "JsonHostObject.h"

#include <krlayout/host/IHostSketch.h>

#include <vector>

class JsonHostPoint;
class JsonHostSketchEntity;

class JsonHostSketch final : public IHostSketch, public JsonHostObject {
public:
    static constexpr double kPointTolerance = 1e-9;

    JsonHostSketch(std::shared_ptr<JsonHostState> state, int number);

    long QueryInterface(int interfaceId, void** object) override;
    unsigned long AddRef() override { return clientAddRef(); }
    unsigned long Release() override { return clientRelease(); }
    // Fails unless the sketch is the one open for editing.
    long CreateLine(double x1, double y1, double z1, double x2, double y2, double z2,
                    IHostSketchLine** line) override;

    int number() const { return number_; }
    JsonHostPoint* findPoint(JsonHostRecorder::IdPair id) const;
    // The lines that start or end at the point, in drawing order.
    std::vector<JsonHostSketchEntity*> linesAt(JsonHostPoint const* point) const;

    std::string describe() const override { return "sketch(" + std::to_string(number_) + ")"; }
    IHostUnknown* identity() override { return static_cast<IHostSketch*>(this); }
    bool hasInterface(void const* p) const override;

private:
    JsonHostPoint* pointAt(JsonHostRecorder::Vec3 const& at);

    int number_;
    std::vector<JsonHostPoint*> points_;            // held by the host
    std::vector<JsonHostSketchEntity*> lines_;      // held by the host
};
