#include "JsonHostWriter.h"

#include "JsonHostError.h"
#include "JsonHostState.h"

#include <krlayout/api/KrUtf8Codec.h>
#include <krlayout/host/KrHostInterfaceId.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <unistd.h>

namespace {

using Json = nlohmann::ordered_json;

Json idPair(JsonHostRecorder::IdPair const& id) {
    return Json::array({id.first, id.second});
}

Json vec3(JsonHostRecorder::Vec3 const& v) {
    return Json::array({v[0], v[1], v[2]});
}

Json target(JsonHostRecorder::Target const& t) {
    Json out = Json::object();
    out["kind"] = t.kind;
    out["id"] = idPair(t.id);
    if (t.kind == "entity") out["segment"] = t.segment;
    if (t.kind == "feature") out["name"] = KrUtf8Codec::Encode(t.name);
    return out;
}

Json selected(JsonHostRecorder::Selected const& s) {
    Json out = Json::object();
    out["entity"] = target(s.target);
    if (s.hasCallout) out["callout"] = KrUtf8Codec::Encode(s.callout);
    return out;
}

char const* settingName(int setting) {
    return setting == KR_SETTING_BULK_INSERT ? "bulkInsert" : "autoRelations";
}

Json result(JsonHostState const& state) {
    JsonHostRecorder const& r = state.recorder();
    Json out = Json::object();

    Json lines = Json::array();
    for (auto const& line : r.lines()) {
        Json entry = Json::object();
        entry["sketch"] = line.sketch;
        entry["id"] = idPair(line.id);
        entry["start"] = vec3(line.start);
        entry["end"] = vec3(line.end);
        entry["startPoint"] = idPair(line.startPoint);
        entry["endPoint"] = idPair(line.endPoint);
        lines.push_back(std::move(entry));
    }
    out["lines"] = std::move(lines);

    Json points = Json::array();
    for (auto const& point : r.points()) {
        Json entry = Json::object();
        entry["sketch"] = point.sketch;
        entry["id"] = idPair(point.id);
        entry["at"] = vec3(point.at);
        points.push_back(std::move(entry));
    }
    out["points"] = std::move(points);

    Json relations = Json::array();
    for (auto const& relation : r.relations()) {
        Json entry = Json::object();
        entry["name"] = KrUtf8Codec::Encode(relation.name);
        Json entities = Json::array();
        for (auto const& t : relation.entities) entities.push_back(target(t));
        entry["entities"] = std::move(entities);
        relations.push_back(std::move(entry));
    }
    out["relations"] = std::move(relations);

    Json fillets = Json::array();
    for (auto const& fillet : r.fillets()) {
        Json entry = Json::object();
        entry["point"] = idPair(fillet.point);
        entry["at"] = vec3(fillet.at);
        entry["radius"] = fillet.radius;
        entry["lines"] = Json::array({idPair(fillet.firstLine), idPair(fillet.secondLine)});
        fillets.push_back(std::move(entry));
    }
    out["fillets"] = std::move(fillets);

    Json selection = Json::array();
    for (auto const& s : r.selection()) selection.push_back(selected(s));
    out["selection"] = std::move(selection);

    Json callouts = Json::array();
    for (auto const& s : r.callouts()) callouts.push_back(selected(s));
    out["callouts"] = std::move(callouts);

    Json settings = Json::object();
    settings["bulkInsert"] = r.setting(KR_SETTING_BULK_INSERT);
    settings["autoRelations"] = r.setting(KR_SETTING_AUTO_RELATIONS);
    Json changes = Json::array();
    for (auto const& change : r.settingChanges()) {
        Json entry = Json::object();
        entry["setting"] = settingName(change.setting);
        entry["value"] = change.value;
        changes.push_back(std::move(entry));
    }
    settings["changes"] = std::move(changes);
    out["settings"] = std::move(settings);

    out["sketchOpen"] = !state.closed() && state.activeSketch() != nullptr;

    Json counters = Json::object();
    counters["redraws"] = r.redraws();
    counters["sketchesOpened"] = r.sketchesOpened();
    counters["sketchesClosed"] = r.sketchesClosed();
    counters["selectionClears"] = r.selectionClears();
    counters["overReleases"] = r.overReleases();
    counters["requests"] = r.requests().size();
    out["counters"] = std::move(counters);

    Json requests = Json::array();
    for (auto const& request : r.requests()) {
        Json entry = Json::object();
        entry["object"] = request.object;
        entry["method"] = request.method;
        entry["arguments"] = request.arguments;
        entry["status"] = request.status;
        requests.push_back(std::move(entry));
    }
    out["requests"] = std::move(requests);
    return out;
}

}  // namespace

std::string JsonHostWriter::ToText(JsonHostState const& state) {
    Json document = state.input();
    document["result"] = result(state);
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void JsonHostWriter::ToFile(JsonHostState const& state, std::string const& path) {
    std::string const text = ToText(state);
    static std::atomic<unsigned> serial{0};
    std::string const temporary =
        path + ".tmp-" + std::to_string(::getpid()) + "-" + std::to_string(serial.fetch_add(1));
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        if (!out) throw JsonHostError("cannot write " + path + ": " + std::strerror(errno));
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
        out.close();
        if (out.fail()) {
            int const error = errno;
            std::remove(temporary.c_str());
            throw JsonHostError("cannot write " + path + ": " + std::strerror(error));
        }
    }
    std::error_code error;
    std::filesystem::rename(temporary, path, error);
    if (error) {
        std::remove(temporary.c_str());
        throw JsonHostError("cannot write " + path + ": " + error.message());
    }
}
