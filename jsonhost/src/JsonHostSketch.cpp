#include "JsonHostSketch.h"

#include "JsonHostPoint.h"
#include "JsonHostSketchEntity.h"
#include "JsonHostState.h"
#include "JsonHostText.h"

#include <krlayout/host/KrHostInterfaceId.h>

#include <cmath>

JsonHostSketch::JsonHostSketch(std::shared_ptr<JsonHostState> state, int number)
    : JsonHostObject(std::move(state)), number_(number) {}

long JsonHostSketch::QueryInterface(int interfaceId, void** object) {
    void* iface = nullptr;
    if (interfaceId == KR_IID_UNKNOWN || interfaceId == KR_IID_SKETCH) {
        iface = static_cast<IHostSketch*>(this);
    }
    return answerQuery(interfaceId, object, iface);
}

long JsonHostSketch::CreateLine(double x1, double y1, double z1, double x2, double y2, double z2,
                                IHostSketchLine** line) {
    double const values[] = {x1, y1, z1, x2, y2, z2};
    std::string arguments;
    bool finite = true;
    for (double v : values) {
        if (!arguments.empty()) arguments += ", ";
        arguments += JsonHostText::Number(v);
        finite = finite && std::isfinite(v);
    }
    if (line == nullptr || !finite) {
        if (line != nullptr) *line = nullptr;
        return record("CreateLine", arguments, KR_HOST_INVALIDARG);
    }
    *line = nullptr;
    if (!live() || state_->activeSketch() != this) return record("CreateLine", arguments, KR_HOST_FAIL);

    JsonHostRecorder::Vec3 const start{x1, y1, z1};
    JsonHostRecorder::Vec3 const end{x2, y2, z2};
    JsonHostPoint* a = pointAt(start);
    JsonHostPoint* b = pointAt(end);

    JsonHostRecorder::Target target;
    target.kind = "line";
    target.id = state_->newLineId();
    JsonHostSketchEntity::Shape shape;
    shape.kindCode = KR_ENTITY_LINE;
    shape.length = JsonHostModel::Distance(start, end);
    shape.start = a;
    shape.end = b;
    shape.hasCurve = true;
    shape.curveStart = start;
    shape.curveEnd = end;
    JsonHostSketchEntity* made = state_->adopt<JsonHostSketchEntity>(target, shape);
    lines_.push_back(made);

    JsonHostRecorder::Line drawn;
    drawn.sketch = number_;
    drawn.id = target.id;
    drawn.start = start;
    drawn.end = end;
    drawn.startPoint = a->id();
    drawn.endPoint = b->id();
    state_->recorder().addLine(drawn);

    made->clientAddRef();
    *line = made;
    return record("CreateLine", arguments, KR_HOST_OK);
}

JsonHostPoint* JsonHostSketch::pointAt(JsonHostRecorder::Vec3 const& at) {
    for (JsonHostPoint* point : points_) {
        JsonHostRecorder::Vec3 const& p = point->coords();
        if (std::fabs(p[0] - at[0]) <= kPointTolerance && std::fabs(p[1] - at[1]) <= kPointTolerance &&
            std::fabs(p[2] - at[2]) <= kPointTolerance) {
            return point;
        }
    }
    JsonHostPoint* made = state_->adopt<JsonHostPoint>(state_->newPointId(), at, number_);
    points_.push_back(made);
    state_->recorder().addPoint(JsonHostRecorder::Point{number_, made->id(), at});
    return made;
}

JsonHostPoint* JsonHostSketch::findPoint(JsonHostRecorder::IdPair id) const {
    for (JsonHostPoint* point : points_) {
        if (point->id() == id) return point;
    }
    return nullptr;
}

std::vector<JsonHostSketchEntity*> JsonHostSketch::linesAt(JsonHostPoint const* point) const {
    std::vector<JsonHostSketchEntity*> found;
    for (JsonHostSketchEntity* line : lines_) {
        if (line->startPoint() == point || line->endPoint() == point) found.push_back(line);
    }
    return found;
}

bool JsonHostSketch::hasInterface(void const* p) const {
    return p == static_cast<IHostSketch const*>(this);
}
