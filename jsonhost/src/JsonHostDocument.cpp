#include "JsonHostDocument.h"

#include "JsonHostApplication.h"
#include "JsonHostReader.h"
#include "JsonHostState.h"
#include "JsonHostWriter.h"

#include <set>

JsonHostDocument::JsonHostDocument(std::shared_ptr<JsonHostState> state)
    : state_(std::move(state)), application_(state_->application()) {}

JsonHostDocument::~JsonHostDocument() {
    state_->close();
}

std::unique_ptr<JsonHostDocument> JsonHostDocument::LoadFile(std::string const& path) {
    JsonHostReader::Result read = JsonHostReader::ReadFile(path);
    auto state = std::make_shared<JsonHostState>(std::move(read.model), std::move(read.document));
    state->build();
    return std::unique_ptr<JsonHostDocument>(new JsonHostDocument(std::move(state)));
}

std::unique_ptr<JsonHostDocument> JsonHostDocument::LoadString(std::string const& text, std::string const& source) {
    JsonHostReader::Result read = JsonHostReader::Read(text, source);
    auto state = std::make_shared<JsonHostState>(std::move(read.model), std::move(read.document));
    state->build();
    return std::unique_ptr<JsonHostDocument>(new JsonHostDocument(std::move(state)));
}

std::string JsonHostDocument::ExamplePath(std::string const& fileName) {
    return std::string(JSONHOST_EXAMPLES_DIR) + "/" + fileName;
}

IHostApplication* JsonHostDocument::application() const {
    return application_;
}

JsonHostModel const& JsonHostDocument::model() const {
    return state_->model();
}

std::map<long, std::wstring> JsonHostDocument::componentMap() const {
    return state_->model().componentMap();
}

KrLayoutInput JsonHostDocument::layoutInput() const {
    JsonHostModel const& model = state_->model();
    KrLayoutInput input;
    std::set<long> seen;
    for (JsonHostModel::Segment const& s : model.segments) {
        if (!seen.insert(s.id).second) {
            continue;
        }
        KrLayoutInput::Segment segment;
        segment.id = s.id;
        segment.diameter = s.value;
        segment.length = 0.0;
        for (JsonHostModel::Entity const& e : s.entities) {
            segment.length += e.length;
            if (!e.hasCurve()) {
                continue;
            }
            JsonHostModel::Vec3 const a = e.curveStart();
            JsonHostModel::Vec3 const b = e.curveEnd();
            ALLine line;
            line.start = ALPoint(a[0], a[1], a[2]);
            line.end = ALPoint(b[0], b[1], b[2]);
            segment.lines.push_back(line);
        }
        input.segments.push_back(std::move(segment));
    }
    input.componentMap = model.componentMap();
    return input;
}

JsonHostRecorder const& JsonHostDocument::results() const {
    return state_->recorder();
}

std::string JsonHostDocument::SaveString() const {
    return JsonHostWriter::ToText(*state_);
}

void JsonHostDocument::SaveFile(std::string const& path) const {
    JsonHostWriter::ToFile(*state_, path);
}

std::vector<JsonHostDocument::ObjectCount> JsonHostDocument::referenceCounts() const {
    std::vector<ObjectCount> counts;
    for (auto const& entry : state_->objects()) {
        JsonHostObject const* object = entry.second;
        counts.push_back(ObjectCount{object->describe(), object->count(), object->hostHeld()});
    }
    return counts;
}

std::optional<JsonHostDocument::ObjectCount> JsonHostDocument::referenceCount(IHostUnknown const* object) const {
    if (object == nullptr) return std::nullopt;
    for (auto const& entry : state_->objects()) {
        JsonHostObject const* candidate = entry.second;
        if (candidate->hasInterface(object)) {
            return ObjectCount{candidate->describe(), candidate->count(), candidate->hostHeld()};
        }
    }
    return std::nullopt;
}

unsigned long JsonHostDocument::clientReferences() const {
    unsigned long total = 0;
    for (auto const& entry : state_->objects()) total += entry.second->count() - entry.second->hostHeld();
    return total;
}
