#include "JsonHostReader.h"

#include "JsonHostError.h"

#include <krlayout/api/KrUtf8Codec.h>
#include <krlayout/host/KrHostInterfaceId.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <sstream>

namespace {

using Json = nlohmann::ordered_json;
using Vec3 = JsonHostModel::Vec3;

constexpr std::size_t kMaxDepth = 256;

std::string escapePointerToken(std::string const& token) {
    std::string out;
    for (char c : token) {
        if (c == '~') {
            out += "~0";
        } else if (c == '/') {
            out += "~1";
        } else {
            out += c;
        }
    }
    return out;
}

// Builds the document from parser events, keeping the members in the order given and refusing a
// member given twice in one object.
class Builder : public nlohmann::json_sax<Json> {
public:
    Json root;
    // Set when the parser reported an error.
    bool syntaxError = false;
    std::size_t errorPosition = 0;
    std::string errorToken;
    int errorId = 0;
    std::string errorText;
    // Set when the document is well-formed JSON but cannot be kept.
    std::string fieldError;
    std::string fieldPointer;

    bool null() override { return put(Json(nullptr)); }
    bool boolean(bool value) override { return put(Json(value)); }
    bool number_integer(number_integer_t value) override { return put(Json(value)); }
    bool number_unsigned(number_unsigned_t value) override { return put(Json(value)); }
    bool number_float(number_float_t value, string_t const&) override { return put(Json(value)); }
    bool string(string_t& value) override { return put(Json(std::move(value))); }
    bool binary(binary_t& value) override { return put(Json::binary(std::move(value))); }

    bool start_object(std::size_t) override { return open(Json::object()); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(Json::array()); }
    bool end_array() override { return close(); }

    bool key(string_t& name) override {
        Frame& top = stack_.back();
        if (top.value->contains(name)) {
            fieldPointer = pointer() + "/" + escapePointerToken(name);
            fieldError = "field given twice in the same object";
            return false;
        }
        top.key = name;
        return true;
    }

    bool parse_error(std::size_t position, std::string const& lastToken,
                     nlohmann::detail::exception const& error) override {
        syntaxError = true;
        errorPosition = position;
        errorToken = lastToken;
        errorId = error.id;
        errorText = error.what();
        return false;
    }

private:
    struct Frame {
        Json* value;
        std::string key;
    };

    Json* place(Json&& value) {
        if (stack_.empty()) {
            root = std::move(value);
            return &root;
        }
        Frame& top = stack_.back();
        if (top.value->is_array()) {
            top.value->push_back(std::move(value));
            return &top.value->back();
        }
        Json& slot = (*top.value)[top.key];
        slot = std::move(value);
        return &slot;
    }

    bool put(Json&& value) {
        place(std::move(value));
        return true;
    }

    bool open(Json&& container) {
        if (stack_.size() >= kMaxDepth) {
            fieldPointer = pointer();
            fieldError = "nested deeper than " + std::to_string(kMaxDepth) + " levels";
            return false;
        }
        Json* made = place(std::move(container));
        stack_.push_back(Frame{made, std::string()});
        return true;
    }

    bool close() {
        stack_.pop_back();
        return true;
    }

    // The JSON pointer of the value being read.
    std::string pointer() const {
        std::string out;
        // Every frame but the innermost holds the child being read: its last element or its key.
        for (std::size_t i = 0; i + 1 < stack_.size(); ++i) {
            Json const& value = *stack_[i].value;
            if (value.is_array()) {
                out += "/" + std::to_string(value.size() - 1);
            } else {
                out += "/" + escapePointerToken(stack_[i].key);
            }
        }
        return out;
    }

    std::vector<Frame> stack_;
};

// Line and column (from 1; columns count characters) of the byte at offset in text.
std::pair<int, int> lineAndColumn(std::string const& text, std::size_t offset) {
    offset = std::min(offset, text.size());
    int line = 1;
    int column = 1;
    for (std::size_t i = 0; i < offset; ++i) {
        auto const c = static_cast<unsigned char>(text[i]);
        if (c == '\n') {
            ++line;
            column = 1;
        } else if ((c & 0xC0) != 0x80) {
            ++column;
        }
    }
    return {line, column};
}

// The parser's reason without its "[json.exception...] parse error at line L, column C: " prefix.
std::string parserReason(std::string const& what) {
    std::string reason = what;
    if (!reason.empty() && reason.front() == '[') {
        std::size_t const end = reason.find("] ");
        if (end != std::string::npos) reason = reason.substr(end + 2);
    }
    if (reason.rfind("parse error", 0) == 0) {
        std::size_t const colon = reason.find(": ");
        if (colon != std::string::npos) reason = reason.substr(colon + 2);
    }
    return reason;
}

std::string describeValue(Json const& value) {
    if (value.is_string()) {
        std::string text = value.get<std::string>();
        if (text.size() > 40) text = text.substr(0, 40) + "...";
        return "string \"" + text + "\"";
    }
    if (value.is_number_integer()) return "integer " + value.dump();
    if (value.is_number_float()) return "number " + value.dump();
    if (value.is_boolean()) return std::string("boolean ") + (value.get<bool>() ? "true" : "false");
    if (value.is_binary()) return "binary data";
    return value.type_name();
}

// Checks one document against the format and turns it into a model.
class Checker {
public:
    explicit Checker(std::string source) : source_(std::move(source)) {}

    JsonHostModel check(Json const& document) {
        JsonHostModel model;
        if (!document.is_object()) fail("", "a route document is a JSON object, found " + describeValue(document));
        allowOnly(document, "", {"$schema", "name", "description", "units", "available", "sketchOpen",
                                 "settings", "features", "components", "segments", "result"});
        optionalString(document, "", "$schema");
        optionalString(document, "", "description");
        if (document.contains("name")) model.name = KrUtf8Codec::Decode(string(document["name"], "/name"));
        if (document.contains("units")) readUnits(document["units"], model);
        if (document.contains("result") && !document["result"].is_object()) {
            fail("/result", "expected an object, found " + describeValue(document["result"]));
        }
        if (document.contains("available")) readAvailable(document["available"], model);
        if (document.contains("sketchOpen")) model.sketchOpen = boolean(document["sketchOpen"], "/sketchOpen");
        if (document.contains("settings")) readSettings(document["settings"], model);
        if (document.contains("features")) readFeatures(document["features"], model);
        if (document.contains("components")) readComponents(document["components"], model);
        if (!document.contains("segments")) fail("/segments", "required field is missing");
        readSegments(document["segments"], model);
        return model;
    }

private:
    [[noreturn]] void fail(std::string const& pointer, std::string const& reason) const {
        throw JsonHostError::AtField(source_, pointer, reason);
    }

    static std::string join(std::string const& pointer, std::string const& key) {
        return pointer + "/" + escapePointerToken(key);
    }

    static std::string join(std::string const& pointer, std::size_t index) {
        return pointer + "/" + std::to_string(index);
    }

    void allowOnly(Json const& object, std::string const& pointer, std::initializer_list<char const*> names) const {
        for (auto const& item : object.items()) {
            bool known = false;
            for (char const* name : names) known = known || item.key() == name;
            if (known) continue;
            std::string list;
            for (char const* name : names) list += std::string(list.empty() ? "" : ", ") + "\"" + name + "\"";
            fail(join(pointer, item.key()), "unknown field (expected one of " + list + ")");
        }
    }

    void expectObject(Json const& value, std::string const& pointer) const {
        if (!value.is_object()) fail(pointer, "expected an object, found " + describeValue(value));
    }

    void expectArray(Json const& value, std::string const& pointer) const {
        if (!value.is_array()) fail(pointer, "expected an array, found " + describeValue(value));
    }

    std::string string(Json const& value, std::string const& pointer) const {
        if (!value.is_string()) fail(pointer, "expected a string, found " + describeValue(value));
        return value.get<std::string>();
    }

    void optionalString(Json const& object, std::string const& pointer, char const* name) const {
        if (object.contains(name)) string(object[name], join(pointer, name));
    }

    bool boolean(Json const& value, std::string const& pointer) const {
        if (!value.is_boolean()) fail(pointer, "expected true or false, found " + describeValue(value));
        return value.get<bool>();
    }

    double number(Json const& value, std::string const& pointer) const {
        if (!value.is_number()) fail(pointer, "expected a number, found " + describeValue(value));
        double const result = value.get<double>();
        if (!std::isfinite(result)) fail(pointer, "number is not finite");
        return result;
    }

    int id32(Json const& value, std::string const& pointer) const {
        if (!value.is_number_integer()) fail(pointer, "expected an integer, found " + describeValue(value));
        bool fits = false;
        long long result = 0;
        if (value.is_number_unsigned()) {
            auto const u = value.get<unsigned long long>();
            fits = u <= static_cast<unsigned long long>(INT_MAX);
            result = static_cast<long long>(fits ? u : 0);
        } else {
            result = value.get<long long>();
            fits = result >= INT_MIN && result <= INT_MAX;
        }
        if (!fits) fail(pointer, value.dump() + " does not fit a 32-bit id");
        return static_cast<int>(result);
    }

    Vec3 point(Json const& value, std::string const& pointer) const {
        if (!value.is_array()) fail(pointer, "expected a point [x, y, z], found " + describeValue(value));
        if (value.size() != 3) {
            fail(pointer, "expected 3 coordinates [x, y, z], found " + std::to_string(value.size()));
        }
        Vec3 result{};
        for (std::size_t i = 0; i < 3; ++i) result[i] = number(value[i], join(pointer, i));
        return result;
    }

    Vec3 requiredPoint(Json const& entity, std::string const& pointer, char const* name) const {
        if (!entity.contains(name)) fail(join(pointer, name), "required field is missing");
        return point(entity[name], join(pointer, name));
    }

    void readAvailable(Json const& value, JsonHostModel& model) const {
        std::string const pointer = "/available";
        expectObject(value, pointer);
        allowOnly(value, pointer, {"activeDocument", "routeModel", "routeSketch", "routeData", "routeContainer"});
        std::pair<char const*, bool*> const flags[] = {
            {"activeDocument", &model.activeDocument}, {"routeModel", &model.routeModel},
            {"routeSketch", &model.routeSketch},       {"routeData", &model.routeData},
            {"routeContainer", &model.routeContainer}};
        for (auto const& flag : flags) {
            if (value.contains(flag.first)) *flag.second = boolean(value[flag.first], join(pointer, flag.first));
        }
    }

    // Only the listed unit names, spelt exactly: a document in an unknown unit is refused rather
    // than read as metres.
    void readUnits(Json const& value, JsonHostModel& model) const {
        std::string const units = string(value, "/units");
        std::string list;
        for (std::string const& name : JsonHostModel::UnitNames()) list += (list.empty() ? "" : ", ") + name;
        if (JsonHostModel::MetresPerUnit(units) == 0.0)
            fail("/units", "unknown unit " + value.dump() + " (expected one of " + list + ")");
        model.units = units;
        model.unitsGiven = true;
    }

    void readSettings(Json const& value, JsonHostModel& model) const {
        std::string const pointer = "/settings";
        expectObject(value, pointer);
        allowOnly(value, pointer, {"bulkInsert", "autoRelations"});
        if (value.contains("bulkInsert")) model.bulkInsert = boolean(value["bulkInsert"], pointer + "/bulkInsert");
        if (value.contains("autoRelations")) {
            model.autoRelations = boolean(value["autoRelations"], pointer + "/autoRelations");
        }
    }

    void readFeatures(Json const& value, JsonHostModel& model) const {
        expectArray(value, "/features");
        for (std::size_t i = 0; i < value.size(); ++i) {
            model.features.push_back(KrUtf8Codec::Decode(string(value[i], join("/features", i))));
        }
    }

    void readComponents(Json const& value, JsonHostModel& model) const {
        expectArray(value, "/components");
        for (std::size_t i = 0; i < value.size(); ++i) {
            std::string const pointer = join("/components", i);
            Json const& entry = value[i];
            expectObject(entry, pointer);
            allowOnly(entry, pointer, {"id", "text"});
            if (!entry.contains("id")) fail(pointer + "/id", "required field is missing");
            if (!entry.contains("text")) fail(pointer + "/text", "required field is missing");
            JsonHostModel::Component component;
            component.id = id32(entry["id"], pointer + "/id");
            component.text = KrUtf8Codec::Decode(string(entry["text"], pointer + "/text"));
            for (std::size_t k = 0; k < model.components.size(); ++k) {
                if (model.components[k].id == component.id) {
                    fail(pointer + "/id", "component id " + std::to_string(component.id) +
                                              " is already given at " + join("/components", k));
                }
            }
            model.components.push_back(std::move(component));
        }
    }

    void readSegments(Json const& value, JsonHostModel& model) const {
        expectArray(value, "/segments");
        for (std::size_t i = 0; i < value.size(); ++i) {
            std::string const pointer = join("/segments", i);
            Json const& entry = value[i];
            expectObject(entry, pointer);
            allowOnly(entry, pointer, {"id", "value", "entities"});
            if (!entry.contains("id")) fail(pointer + "/id", "required field is missing");
            if (!entry.contains("value")) fail(pointer + "/value", "required field is missing");
            JsonHostModel::Segment segment;
            segment.id = id32(entry["id"], pointer + "/id");
            segment.value = number(entry["value"], pointer + "/value");
            if (entry.contains("entities")) {
                Json const& entities = entry["entities"];
                expectArray(entities, pointer + "/entities");
                for (std::size_t k = 0; k < entities.size(); ++k) {
                    segment.entities.push_back(readEntity(entities[k], join(pointer + "/entities", k)));
                }
            }
            model.segments.push_back(std::move(segment));
        }
    }

    JsonHostModel::Entity readEntity(Json const& value, std::string const& pointer) const {
        expectObject(value, pointer);
        if (!value.contains("kind")) fail(pointer + "/kind", "required field is missing");
        JsonHostModel::Entity entity;
        entity.kind = string(value["kind"], pointer + "/kind");
        if (entity.kind.empty()) fail(pointer + "/kind", "kind must not be empty");
        if (entity.kind == "line") {
            allowOnly(value, pointer, {"kind", "length", "start", "end"});
            entity.kindCode = KR_ENTITY_LINE;
            entity.start = requiredPoint(value, pointer, "start");
            entity.end = requiredPoint(value, pointer, "end");
            entity.length = JsonHostModel::Distance(entity.start, entity.end);
        } else if (entity.kind == "arc") {
            allowOnly(value, pointer, {"kind", "length", "start", "end", "center", "clockwise"});
            entity.kindCode = KR_ENTITY_ARC;
            entity.start = requiredPoint(value, pointer, "start");
            entity.end = requiredPoint(value, pointer, "end");
            entity.center = requiredPoint(value, pointer, "center");
            if (value.contains("clockwise")) entity.clockwise = boolean(value["clockwise"], pointer + "/clockwise");
            checkArc(entity, pointer);
            entity.length = JsonHostModel::ArcLength(entity.start, entity.end, entity.center, entity.clockwise);
        } else {
            allowOnly(value, pointer, {"kind", "length", "points"});
            entity.kindCode = JsonHostModel::kOtherCurveKind;
            if (value.contains("points")) {
                Json const& points = value["points"];
                expectArray(points, pointer + "/points");
                if (points.size() < 2) {
                    fail(pointer + "/points", "a curve needs at least 2 points, found " + std::to_string(points.size()));
                }
                for (std::size_t k = 0; k < points.size(); ++k) {
                    entity.points.push_back(point(points[k], join(pointer + "/points", k)));
                }
            }
            entity.length = JsonHostModel::PolylineLength(entity.points);
        }
        if (value.contains("length")) {
            entity.length = number(value["length"], pointer + "/length");
            entity.lengthGiven = true;
            if (entity.length < 0.0) fail(pointer + "/length", "length must not be negative");
        } else if (!std::isfinite(entity.length)) {
            fail(pointer, "the length computed from the coordinates is too large; give \"length\"");
        }
        return entity;
    }

    void checkArc(JsonHostModel::Entity const& arc, std::string const& pointer) const {
        double const radius = JsonHostModel::Distance(arc.center, arc.start);
        if (!(radius > 0.0)) fail(pointer + "/center", "the arc's center coincides with its start");
        double const toEnd = JsonHostModel::Distance(arc.center, arc.end);
        if (!std::isfinite(radius) || !std::isfinite(toEnd)) {
            fail(pointer, "the arc's radius is too large for a double");
        }
        if (std::fabs(toEnd - radius) > 1e-6 * std::max(1.0, radius)) {
            std::ostringstream reason;
            reason.precision(17);
            reason << "the arc's end is not on its circle: the start is " << radius << " from the center, the end "
                   << toEnd;
            fail(pointer + "/end", reason.str());
        }
    }

    std::string source_;
};

}  // namespace

JsonHostReader::Result JsonHostReader::Read(std::string const& text, std::string const& source) {
    if (text.find_first_not_of(" \t\r\n") == std::string::npos) {
        throw JsonHostError(source + ": empty document: no JSON value");
    }
    // The parser takes a NUL byte for the end of the text and would quietly ignore whatever follows
    // it; a route document is text, so a NUL anywhere is refused where it stands.
    std::size_t const nul = text.find('\0');
    if (nul != std::string::npos) {
        auto const [line, column] = lineAndColumn(text, nul);
        throw JsonHostError::AtPosition(source, line, column,
                                        "not valid JSON: NUL byte at byte offset " + std::to_string(nul));
    }
    Builder builder;
    bool const parsed = Json::sax_parse(text, &builder, nlohmann::detail::input_format_t::json, true, false);
    if (!parsed) {
        if (!builder.syntaxError) throw JsonHostError::AtField(source, builder.fieldPointer, builder.fieldError);
        std::size_t offset = builder.errorPosition > 0 ? builder.errorPosition - 1 : 0;
        std::string reason = "not valid JSON: " + parserReason(builder.errorText);
        if (builder.errorId == 406) {
            // A number beyond the range of a double: point at its first character.
            offset = builder.errorPosition >= builder.errorToken.size() ? builder.errorPosition - builder.errorToken.size()
                                                                         : 0;
            reason = "number too large for a double: " + builder.errorToken;
        }
        auto const [line, column] = lineAndColumn(text, offset);
        throw JsonHostError::AtPosition(source, line, column, reason);
    }
    Result result;
    result.model = Checker(source).check(builder.root);
    result.document = std::move(builder.root);
    result.document.erase("result");
    return result;
}

JsonHostReader::Result JsonHostReader::ReadFile(std::string const& path) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) throw JsonHostError("cannot read " + path + ": it is a directory");
    std::ifstream in(path, std::ios::binary);
    if (!in) throw JsonHostError("cannot read " + path + ": " + std::strerror(errno));
    std::ostringstream text;
    text << in.rdbuf();
    if (in.bad()) throw JsonHostError("cannot read " + path + ": " + std::strerror(errno));
    return Read(text.str(), path);
}
