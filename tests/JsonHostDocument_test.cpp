// Loading, checking and saving route documents of the in-process JSON host.
#include <JsonHostDocument.h>
#include <JsonHostError.h>

#include <krlayout/host/IHostApplication.h>
#include <krlayout/host/IHostDocument.h>
#include <krlayout/host/IHostFeature.h>
#include <krlayout/host/IHostPoint.h>
#include <krlayout/host/IHostSelectable.h>
#include <krlayout/host/IHostSketch.h>
#include <krlayout/host/IHostSketchLine.h>
#include <krlayout/host/KrHostInterfaceId.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// The error thrown by loading text, or a failure when it loads.
JsonHostError loadError(std::string const& text) {
    try {
        JsonHostDocument::LoadString(text, "doc.json");
    } catch (JsonHostError const& error) {
        return error;
    }
    ADD_FAILURE() << "loaded without an error: " << text;
    return JsonHostError("no error");
}

std::string segmentsWith(std::string const& entity) {
    return R"({"segments": [{"id": 1, "value": 1, "entities": [)" + entity + "]}]}";
}

// A fresh directory under the system's temporary directory, removed at the end of the test.
class TempDir {
public:
    TempDir() {
        path_ = fs::temp_directory_path() /
                ("jsonhost-test-" + std::to_string(::getpid()) + "-" + std::to_string(counter_++));
        fs::remove_all(path_);
        fs::create_directories(path_);
    }
    ~TempDir() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    fs::path const& path() const { return path_; }
    std::vector<std::string> entries() const {
        std::vector<std::string> names;
        for (auto const& entry : fs::directory_iterator(path_)) names.push_back(entry.path().filename().string());
        return names;
    }

private:
    static inline int counter_ = 0;
    fs::path path_;
};

std::string readFile(fs::path const& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(JsonHostDocument, LoadsEveryExample) {
    struct Example {
        char const* file;
        std::size_t segments;
    };
    Example const examples[] = {
        {"tree.json", 3},
        {"loop.json", 4},
        {"disjoint.json", 3},
        {"no-active-document.json", 2},
        {"no-route-model.json", 2},
        {"no-route-sketch.json", 2},
        {"no-route-data.json", 2},
        {"no-route-container.json", 2},
        {"no-route-segments.json", 0},
    };
    for (Example const& example : examples) {
        SCOPED_TRACE(example.file);
        auto host = JsonHostDocument::LoadFile(JsonHostDocument::ExamplePath(example.file));
        ASSERT_NE(host, nullptr);
        EXPECT_EQ(host->model().segments.size(), example.segments);
        EXPECT_FALSE(host->model().name.empty());
        EXPECT_NE(host->application(), nullptr);
        EXPECT_EQ(host->clientReferences(), 0u);
    }
}

TEST(JsonHostDocument, FailureExamplesWithholdExactlyTheirPart) {
    auto flags = [](char const* file) {
        auto host = JsonHostDocument::LoadFile(JsonHostDocument::ExamplePath(file));
        JsonHostModel const& m = host->model();
        return std::vector<bool>{m.activeDocument, m.routeModel, m.routeSketch, m.routeData, m.routeContainer};
    };
    EXPECT_EQ(flags("tree.json"), (std::vector<bool>{true, true, true, true, true}));
    EXPECT_EQ(flags("no-active-document.json"), (std::vector<bool>{false, true, true, true, true}));
    EXPECT_EQ(flags("no-route-model.json"), (std::vector<bool>{true, false, true, true, true}));
    EXPECT_EQ(flags("no-route-sketch.json"), (std::vector<bool>{true, true, false, true, true}));
    EXPECT_EQ(flags("no-route-data.json"), (std::vector<bool>{true, true, true, false, true}));
    EXPECT_EQ(flags("no-route-container.json"), (std::vector<bool>{true, true, true, true, false}));
    EXPECT_EQ(flags("no-route-segments.json"), (std::vector<bool>{true, true, true, true, true}));
}

TEST(JsonHostDocument, TreeExampleHoldsALineAnArcAndASpline) {
    auto host = JsonHostDocument::LoadFile(JsonHostDocument::ExamplePath("tree.json"));
    auto const& segments = host->model().segments;
    ASSERT_EQ(segments.size(), 3u);
    EXPECT_EQ(segments[0].id, 1);
    EXPECT_EQ(segments[0].value, 0.4);
    ASSERT_EQ(segments[0].entities.size(), 2u);
    EXPECT_EQ(segments[0].entities[0].kind, "line");
    EXPECT_EQ(segments[0].entities[0].kindCode, KR_ENTITY_LINE);
    EXPECT_EQ(segments[0].entities[0].length, 1.0);

    auto const& arc = segments[1].entities.at(0);
    EXPECT_EQ(arc.kind, "arc");
    EXPECT_EQ(arc.kindCode, KR_ENTITY_ARC);
    EXPECT_NEAR(arc.length, std::acos(-1.0) / 2, 1e-12);   // a quarter of the unit circle
    EXPECT_FALSE(arc.lengthGiven);

    auto const& spline = segments[2].entities.at(0);
    EXPECT_EQ(spline.kind, "spline");
    EXPECT_NE(spline.kindCode, KR_ENTITY_LINE);
    EXPECT_NE(spline.kindCode, KR_ENTITY_ARC);
    EXPECT_TRUE(spline.lengthGiven);
    EXPECT_EQ(spline.length, 1.5);
    EXPECT_TRUE(spline.hasCurve());
    EXPECT_EQ(spline.curveStart(), (JsonHostModel::Vec3{2, 0, 0}));
    EXPECT_EQ(spline.curveEnd(), (JsonHostModel::Vec3{3, -1, 0}));

    auto const components = host->componentMap();
    ASSERT_EQ(components.size(), 2u);
    EXPECT_EQ(components.at(1), L"J1@P1@X:J2@P2@Y");
    EXPECT_EQ(components.at(3), L"J3@P1@X");
    EXPECT_EQ(host->model().features,
              (std::vector<std::wstring>{L"Origin", L"Harness1", L"Route1"}));
}

TEST(JsonHostDocument, DefaultsApplyWhenOptionalFieldsAreAbsent) {
    auto host = JsonHostDocument::LoadString(R"({"segments": [{"id": 4, "value": 2}]})");
    JsonHostModel const& m = host->model();
    EXPECT_TRUE(m.activeDocument && m.routeModel && m.routeSketch && m.routeData && m.routeContainer);
    EXPECT_FALSE(m.sketchOpen);
    EXPECT_FALSE(m.bulkInsert);
    EXPECT_TRUE(m.autoRelations);
    EXPECT_TRUE(m.features.empty());
    EXPECT_TRUE(host->componentMap().empty());
    ASSERT_EQ(m.segments.size(), 1u);
    EXPECT_TRUE(m.segments[0].entities.empty());
    EXPECT_EQ(m.units, "m");
    EXPECT_FALSE(m.unitsGiven);
}

TEST(JsonHostDocument, UnitsAreReadAndNumbersStayUnscaled) {
    for (auto const& [name, metres] : std::vector<std::pair<std::string, double>>{
             {"m", 1.0}, {"cm", 0.01}, {"mm", 0.001}, {"in", 0.0254}, {"ft", 0.3048}}) {
        SCOPED_TRACE(name);
        auto host = JsonHostDocument::LoadString(
            R"({"units": ")" + name + R"(", "segments": [{"id": 1, "value": 6, "entities": [
                {"kind": "line", "start": [0, 0, 0], "end": [300, 400, 0]}]}]})");
        JsonHostModel const& m = host->model();
        EXPECT_EQ(m.units, name);
        EXPECT_TRUE(m.unitsGiven);
        EXPECT_EQ(JsonHostModel::MetresPerUnit(m.units), metres);
        EXPECT_EQ(m.segments.at(0).entities.at(0).length, 500.0);
        EXPECT_EQ(m.segments.at(0).value, 6.0);
        // The saved document keeps the unit.
        EXPECT_NE(host->SaveString().find(R"("units": ")" + name + "\""), std::string::npos);
    }
}

TEST(JsonHostDocument, UnknownUnitsAreRefusedAtTheirPointer) {
    for (char const* text : {R"({"units": "furlong", "segments": []})", R"({"units": "M", "segments": []})",
                             R"({"units": "metres", "segments": []})", R"({"units": "", "segments": []})"}) {
        SCOPED_TRACE(text);
        JsonHostError const error = loadError(text);
        EXPECT_EQ(error.pointer(), "/units") << error.what();
        EXPECT_NE(error.reason().find("unknown unit"), std::string::npos) << error.what();
        EXPECT_NE(error.reason().find("m, cm, mm, in, ft"), std::string::npos) << error.what();
    }
    JsonHostError const number = loadError(R"({"units": 1000, "segments": []})");
    EXPECT_EQ(number.pointer(), "/units");
    EXPECT_NE(number.reason().find("expected a string"), std::string::npos) << number.what();
    EXPECT_EQ(JsonHostModel::MetresPerUnit("furlong"), 0.0);
}

TEST(JsonHostDocument, LengthsAreComputedFromGeometryUnlessGiven) {
    auto host = JsonHostDocument::LoadString(segmentsWith(R"(
        {"kind": "line", "start": [1, 1, 1], "end": [3, 3, 2]},
        {"kind": "spline", "points": [[0, 0, 0], [3, 4, 0], [3, 4, 12]]},
        {"kind": "arc", "start": [2, 0, 0], "end": [2, 0, 0], "center": [0, 0, 0]},
        {"kind": "arc", "start": [0, 1, 0], "end": [1, 0, 0], "center": [0, 0, 0], "length": 0},
        {"kind": "spline"})"));
    auto const& entities = host->model().segments.at(0).entities;
    ASSERT_EQ(entities.size(), 5u);
    EXPECT_DOUBLE_EQ(entities[0].length, 3.0);    // sqrt(4 + 4 + 1)
    EXPECT_DOUBLE_EQ(entities[1].length, 17.0);   // 5 + 12
    EXPECT_NEAR(entities[2].length, 4 * std::acos(-1.0), 1e-12);   // start = end: the full circle
    EXPECT_EQ(entities[3].length, 0.0);
    EXPECT_EQ(entities[4].length, 0.0);
    EXPECT_FALSE(entities[4].hasCurve());
}

TEST(JsonHostDocument, DuplicateSegmentIdsAreKeptAsGiven) {
    auto host = JsonHostDocument::LoadString(
        R"({"segments": [{"id": 2, "value": 1}, {"id": 2, "value": 3}, {"id": 1, "value": 5}]})");
    auto const& segments = host->model().segments;
    ASSERT_EQ(segments.size(), 3u);
    EXPECT_EQ(segments[0].value, 1.0);
    EXPECT_EQ(segments[1].value, 3.0);
    EXPECT_EQ(host->model().segmentIndex(2), 0);
    EXPECT_EQ(host->model().segmentIndex(1), 2);
    EXPECT_EQ(host->model().segmentIndex(7), -1);
}

TEST(JsonHostDocument, TextIsReadAsUtf8IntoWideStrings) {
    auto host = JsonHostDocument::LoadString(
        "{\"name\": \"Wegf\xC3\xBChrung\", \"features\": [\"R\xC3\xA4\xF0\x9F\x94\x8C\", \"\\u00e9\"], "
        "\"components\": [{\"id\": -3, \"text\": \"J\xE2\x82\xAC@P@X\"}], \"segments\": []}");
    EXPECT_EQ(host->model().name, L"Wegf\u00fchrung");
    EXPECT_EQ(host->model().features.at(0), L"R\u00e4\U0001F50C");
    EXPECT_EQ(host->model().features.at(1), L"\u00e9");
    EXPECT_EQ(host->componentMap().at(-3), L"J\u20ac@P@X");
}

TEST(JsonHostDocument, SyntaxErrorGivesLineAndColumn) {
    JsonHostError const error = loadError("{\n  \"segments\": [\n    {\"id\": 1,, \"value\": 2}\n  ]\n}\n");
    EXPECT_EQ(error.line(), 3);
    EXPECT_EQ(error.column(), 14);   // the second comma
    EXPECT_FALSE(error.hasPointer());
    std::string const message = error.what();
    EXPECT_EQ(message.rfind("doc.json:3:14: not valid JSON: ", 0), 0u) << message;
}

TEST(JsonHostDocument, TextThatIsNotJsonIsRejectedAtItsFirstCharacter) {
    JsonHostError const error = loadError("hello");
    EXPECT_EQ(error.line(), 1);
    EXPECT_EQ(error.column(), 1);
    EXPECT_NE(std::string(error.what()).find("not valid JSON"), std::string::npos);
}

TEST(JsonHostDocument, NanAndInfinityLiteralsAreNotJson) {
    for (char const* literal : {"NaN", "Infinity", "-Infinity"}) {
        std::string const text = segmentsWith(std::string(R"({"kind": "line", "start": [0, )") + literal +
                                              R"(, 0], "end": [1, 0, 0]})");
        JsonHostError const error = loadError(text);
        EXPECT_EQ(error.line(), 1) << literal;
        // The parser stops within the literal, at or just after its first character.
        int const first = static_cast<int>(text.find(literal)) + 1;
        EXPECT_GE(error.column(), first) << literal;
        EXPECT_LE(error.column(), first + 1) << literal;
        EXPECT_NE(std::string(error.what()).find("not valid JSON"), std::string::npos) << error.what();
    }
}

TEST(JsonHostDocument, ColumnsCountCharactersNotBytes) {
    // "ä" and "€" take two and three bytes: the stray x is the 15th character of line 2, its 18th byte.
    JsonHostError const error = loadError("{\"segments\": [],\n \"name\": \"\xC3\xA4\xE2\x82\xAC\" x}");
    EXPECT_EQ(error.line(), 2);
    EXPECT_EQ(error.column(), 15);
}

TEST(JsonHostDocument, TruncatedDocumentPointsPastTheEnd) {
    JsonHostError const error = loadError("{\"segments\": [");
    EXPECT_EQ(error.line(), 1);
    EXPECT_EQ(error.column(), 15);
}

TEST(JsonHostDocument, TrailingTextIsRejected) {
    JsonHostError const error = loadError("{\"segments\": []} {}");
    EXPECT_EQ(error.line(), 1);
    EXPECT_EQ(error.column(), 18);
}

TEST(JsonHostDocument, BytesAfterANulAreNotIgnored) {
    // A complete document, a NUL and more text: the NUL is refused where it stands.
    JsonHostError const error = loadError(std::string("{\"segments\": []}\0garbage", 24));
    EXPECT_EQ(error.line(), 1);
    EXPECT_EQ(error.column(), 17);
    std::string const message = error.what();
    EXPECT_EQ(message.rfind("doc.json:1:17: not valid JSON: NUL byte at byte offset 16", 0), 0u) << message;
}

TEST(JsonHostDocument, NulAnywhereIsRejected) {
    std::string const valid = "{\"segments\": []}\n";
    EXPECT_NO_THROW(JsonHostDocument::LoadString(valid, "doc.json"));
    // A trailing NUL alone, a NUL between tokens, and a NUL inside a string on the second line.
    std::string const trailing = valid + std::string(1, '\0');
    EXPECT_EQ(loadError(trailing).column(), 1);
    EXPECT_EQ(loadError(trailing).line(), 2);
    std::string const between = "{\"segments\":" + std::string(1, '\0') + " []}";
    EXPECT_EQ(loadError(between).column(), 13);
    std::string const inString = "{\"segments\": [],\n \"name\": \"a" + std::string(1, '\0') + "b\"}";
    JsonHostError const error = loadError(inString);
    EXPECT_EQ(error.line(), 2);
    EXPECT_EQ(error.column(), 12);
    EXPECT_NE(std::string(error.what()).find("byte offset 28"), std::string::npos) << error.what();
}

TEST(JsonHostDocument, MalformedUtf8IsRejectedWithItsPosition) {
    JsonHostError const error = loadError("{\"segments\": [], \"name\": \"a\xFF\"}");
    EXPECT_EQ(error.line(), 1);
    EXPECT_EQ(error.column(), 28);
}

TEST(JsonHostDocument, EmptyTextIsAnEmptyDocument) {
    for (std::string text : {"", "   \n\t  "}) {
        JsonHostError const error = loadError(text);
        EXPECT_NE(std::string(error.what()).find("empty document"), std::string::npos) << error.what();
    }
}

TEST(JsonHostDocument, EmptyObjectLacksItsSegments) {
    JsonHostError const error = loadError("{}");
    EXPECT_TRUE(error.hasPointer());
    EXPECT_EQ(error.pointer(), "/segments");
    EXPECT_EQ(std::string(error.what()), "doc.json: /segments: required field is missing");
}

TEST(JsonHostDocument, DocumentMustBeAnObject) {
    JsonHostError const error = loadError("[1, 2]");
    EXPECT_TRUE(error.hasPointer());
    EXPECT_EQ(error.pointer(), "");
    EXPECT_NE(error.reason().find("found array"), std::string::npos) << error.what();
}

TEST(JsonHostDocument, WrongTypesNameTheirField) {
    struct Case {
        std::string text;
        std::string pointer;
        std::string reasonPart;
    };
    std::vector<Case> const cases = {
        {R"({"segments": {}})", "/segments", "expected an array"},
        {R"({"segments": [{"id": "7", "value": 1}]})", "/segments/0/id", "expected an integer, found string \"7\""},
        {R"({"segments": [{"id": 7.5, "value": 1}]})", "/segments/0/id", "expected an integer"},
        {R"({"segments": [{"id": 7, "value": "wide"}]})", "/segments/0/value", "expected a number"},
        {segmentsWith(R"({"kind": "line", "start": [0, "NaN", 0], "end": [1, 0, 0]})"),
         "/segments/0/entities/0/start/1", "expected a number, found string \"NaN\""},
        {segmentsWith(R"({"kind": "line", "start": [0, 0, 0], "end": [1, 0, null]})"),
         "/segments/0/entities/0/end/2", "expected a number, found null"},
        {segmentsWith(R"({"kind": 3})"), "/segments/0/entities/0/kind", "expected a string"},
        {segmentsWith(R"({"kind": "arc", "start": [1, 0, 0], "end": [0, 1, 0], "center": [0, 0, 0],
                          "clockwise": "yes"})"),
         "/segments/0/entities/0/clockwise", "expected true or false"},
        {R"({"sketchOpen": 1, "segments": []})", "/sketchOpen", "expected true or false"},
        {R"({"available": {"routeData": "no"}, "segments": []})", "/available/routeData", "expected true or false"},
        {R"({"settings": [], "segments": []})", "/settings", "expected an object"},
        {R"({"features": ["a", 2], "segments": []})", "/features/1", "expected a string"},
        {R"({"components": [{"id": 1, "text": 5}], "segments": []})", "/components/0/text", "expected a string"},
        {R"({"name": false, "segments": []})", "/name", "expected a string"},
        {R"({"result": [], "segments": []})", "/result", "expected an object"},
        {segmentsWith(R"("line")"), "/segments/0/entities/0", "expected an object"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.text);
        JsonHostError const error = loadError(c.text);
        EXPECT_TRUE(error.hasPointer());
        EXPECT_EQ(error.pointer(), c.pointer) << error.what();
        EXPECT_NE(error.reason().find(c.reasonPart), std::string::npos) << error.what();
        EXPECT_EQ(std::string(error.what()), "doc.json: " + c.pointer + ": " + error.reason());
    }
}

TEST(JsonHostDocument, MissingFieldsNameTheirPointer) {
    struct Case {
        std::string text;
        std::string pointer;
    };
    std::vector<Case> const cases = {
        {R"({"segments": [{"id": 1, "value": 1}, {"value": 2}]})", "/segments/1/id"},
        {R"({"segments": [{"id": 1}]})", "/segments/0/value"},
        {R"({"components": [{"text": "J1@P1@X"}], "segments": []})", "/components/0/id"},
        {R"({"components": [{"id": 1}], "segments": []})", "/components/0/text"},
        {segmentsWith(R"({"start": [0, 0, 0]})"), "/segments/0/entities/0/kind"},
        {segmentsWith(R"({"kind": "line", "start": [0, 0, 0]})"), "/segments/0/entities/0/end"},
        {segmentsWith(R"({"kind": "arc", "start": [1, 0, 0], "end": [0, 1, 0]})"), "/segments/0/entities/0/center"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.text);
        JsonHostError const error = loadError(c.text);
        EXPECT_EQ(error.pointer(), c.pointer) << error.what();
        EXPECT_EQ(error.reason(), "required field is missing");
    }
}

TEST(JsonHostDocument, NumbersBeyondADoubleAreRejectedAtTheirPosition) {
    JsonHostError const error = loadError(segmentsWith(R"({"kind": "line", "start": [0, 1e400, 0], "end": [1, 0, 0]})"));
    // The number starts at the 75th character of the one-line document.
    std::string const text = segmentsWith(R"({"kind": "line", "start": [0, 1e400, 0], "end": [1, 0, 0]})");
    EXPECT_EQ(error.line(), 1);
    EXPECT_EQ(error.column(), static_cast<int>(text.find("1e400")) + 1);
    EXPECT_NE(std::string(error.what()).find("number too large for a double: 1e400"), std::string::npos)
        << error.what();

    JsonHostError const negative = loadError(R"({"segments": [{"id": 1, "value": -2e999}]})");
    EXPECT_EQ(negative.column(), 34);
}

TEST(JsonHostDocument, IdsMustFitThirtyTwoBits) {
    for (char const* id : {"2147483648", "-2147483649", "18446744073709551615"}) {
        JsonHostError const error = loadError(std::string(R"({"segments": [{"id": )") + id + R"(, "value": 1}]})");
        EXPECT_EQ(error.pointer(), "/segments/0/id");
        EXPECT_NE(error.reason().find("does not fit a 32-bit id"), std::string::npos) << error.what();
    }
    auto host = JsonHostDocument::LoadString(R"({"segments": [{"id": 2147483647, "value": 1},
                                                              {"id": -2147483648, "value": 1}]})");
    EXPECT_EQ(host->model().segments[0].id, 2147483647);
    EXPECT_EQ(host->model().segments[1].id, -2147483647 - 1);
}

TEST(JsonHostDocument, UnknownFieldsAreRejected) {
    JsonHostError const top = loadError(R"({"segments": [], "segmets": []})");
    EXPECT_EQ(top.pointer(), "/segmets");
    EXPECT_NE(top.reason().find("unknown field"), std::string::npos);

    JsonHostError const entity = loadError(segmentsWith(R"({"kind": "line", "start": [0, 0, 0], "end": [1, 0, 0],
                                                            "lenght": 2})"));
    EXPECT_EQ(entity.pointer(), "/segments/0/entities/0/lenght");

    // A field of one kind is unknown to another.
    JsonHostError const spline = loadError(segmentsWith(R"({"kind": "spline", "start": [0, 0, 0]})"));
    EXPECT_EQ(spline.pointer(), "/segments/0/entities/0/start");

    JsonHostError const escaped = loadError(R"({"segments": [], "a/b~c": 1})");
    EXPECT_EQ(escaped.pointer(), "/a~1b~0c");
}

TEST(JsonHostDocument, FieldGivenTwiceIsRejected) {
    JsonHostError const error = loadError(R"({"segments": [{"id": 1, "value": 2, "id": 3}]})");
    EXPECT_EQ(error.pointer(), "/segments/0/id");
    EXPECT_NE(error.reason().find("given twice"), std::string::npos) << error.what();
}

TEST(JsonHostDocument, GeometryThatCannotBeIsRejected) {
    struct Case {
        std::string entity;
        std::string pointer;
        std::string reasonPart;
    };
    std::vector<Case> const cases = {
        {R"({"kind": "line", "start": [0, 0], "end": [1, 0, 0]})", "/segments/0/entities/0/start",
         "expected 3 coordinates"},
        {R"({"kind": "line", "start": [0, 0, 0, 0], "end": [1, 0, 0]})", "/segments/0/entities/0/start",
         "found 4"},
        {R"({"kind": "line", "start": 0, "end": [1, 0, 0]})", "/segments/0/entities/0/start", "expected a point"},
        {R"({"kind": "arc", "start": [1, 0, 0], "end": [0, 2, 0], "center": [0, 0, 0]})",
         "/segments/0/entities/0/end", "not on its circle"},
        {R"({"kind": "arc", "start": [1, 0, 0], "end": [0, 1, 0], "center": [1, 0, 0]})",
         "/segments/0/entities/0/center", "coincides with its start"},
        {R"({"kind": "spline", "points": [[0, 0, 0]]})", "/segments/0/entities/0/points", "at least 2 points"},
        {R"({"kind": "spline", "points": [[0, 0, 0], [1, 1]]})", "/segments/0/entities/0/points/1",
         "expected 3 coordinates"},
        {R"({"kind": "line", "start": [0, 0, 0], "end": [1, 0, 0], "length": -1})",
         "/segments/0/entities/0/length", "must not be negative"},
        {R"({"kind": "line", "start": [-1e308, 0, 0], "end": [1e308, 0, 0]})", "/segments/0/entities/0",
         "give \"length\""},
        {R"({"kind": ""})", "/segments/0/entities/0/kind", "must not be empty"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.entity);
        JsonHostError const error = loadError(segmentsWith(c.entity));
        EXPECT_EQ(error.pointer(), c.pointer) << error.what();
        EXPECT_NE(error.reason().find(c.reasonPart), std::string::npos) << error.what();
    }
    // A length given for a line too long to measure is taken.
    auto host = JsonHostDocument::LoadString(
        segmentsWith(R"({"kind": "line", "start": [-1e308, 0, 0], "end": [1e308, 0, 0], "length": 1})"));
    EXPECT_EQ(host->model().segments[0].entities[0].length, 1.0);
}

TEST(JsonHostDocument, DuplicateComponentIdsAreRejected) {
    JsonHostError const error = loadError(
        R"({"components": [{"id": 1, "text": "a@b@c"}, {"id": 1, "text": "d@e@f"}], "segments": []})");
    EXPECT_EQ(error.pointer(), "/components/1/id");
    EXPECT_NE(error.reason().find("/components/0"), std::string::npos) << error.what();
}

TEST(JsonHostDocument, DeepNestingIsRejected) {
    std::string text = R"({"segments": [], "result": {"x": )";
    for (int i = 0; i < 1000; ++i) text += "[";
    for (int i = 0; i < 1000; ++i) text += "]";
    text += "}}";
    JsonHostError const error = loadError(text);
    EXPECT_NE(error.reason().find("nested deeper"), std::string::npos) << error.what();
}

TEST(JsonHostDocument, FilesThatCannotBeReadAreReported) {
    TempDir dir;
    std::string const missing = (dir.path() / "missing.json").string();
    try {
        JsonHostDocument::LoadFile(missing);
        FAIL() << "loaded a missing file";
    } catch (JsonHostError const& error) {
        EXPECT_EQ(std::string(error.what()).rfind("cannot read " + missing + ": ", 0), 0u) << error.what();
    }
    try {
        JsonHostDocument::LoadFile(dir.path().string());
        FAIL() << "loaded a directory";
    } catch (JsonHostError const& error) {
        EXPECT_NE(std::string(error.what()).find("directory"), std::string::npos) << error.what();
    }
    fs::path const bad = dir.path() / "bad.json";
    std::ofstream(bad) << "{\n\n   oops";
    try {
        JsonHostDocument::LoadFile(bad.string());
        FAIL() << "loaded a broken file";
    } catch (JsonHostError const& error) {
        EXPECT_EQ(std::string(error.what()).rfind(bad.string() + ":3:4: ", 0), 0u) << error.what();
    }
}

// Draws two lines with a fillet between them, a relation and a callout.
void drawSomething(JsonHostDocument& host) {
    IHostDocument* doc = nullptr;
    ASSERT_EQ(host.application()->GetActiveDocument(&doc), KR_HOST_OK);
    doc->ToggleSketchEdit();
    IHostSketch* sketch = nullptr;
    ASSERT_EQ(doc->GetActiveSketch(&sketch), KR_HOST_OK);
    IHostSketchLine* a = nullptr;
    IHostSketchLine* b = nullptr;
    sketch->CreateLine(0, 0, 0, 1, 0, 0, &a);
    sketch->CreateLine(1, 0, 0, 1, 2, 0, &b);
    void* raw = nullptr;
    a->QueryInterface(KR_IID_SELECTABLE, &raw);
    auto* selectable = static_cast<IHostSelectable*>(raw);
    selectable->Select(false);
    doc->AddRelation(L"sgALONGX3D");
    IHostPoint* corner = nullptr;
    b->GetStartPoint(&corner);
    corner->QueryInterface(KR_IID_SELECTABLE, &raw);
    auto* cornerSelectable = static_cast<IHostSelectable*>(raw);
    cornerSelectable->Select(false);
    doc->FilletSelectedCorner(0.25);
    doc->SetDrawingSetting(KR_SETTING_BULK_INSERT, true);
    doc->Redraw();
    cornerSelectable->Release();
    corner->Release();
    selectable->Release();
    b->Release();
    a->Release();
    sketch->Release();
    doc->Release();
}

TEST(JsonHostDocument, SavedDocumentHoldsTheInputAndTheResult) {
    auto host = JsonHostDocument::LoadFile(JsonHostDocument::ExamplePath("tree.json"));
    drawSomething(*host);
    ASSERT_EQ(host->clientReferences(), 0u);

    TempDir dir;
    fs::path const saved = dir.path() / "saved.json";
    host->SaveFile(saved.string());
    EXPECT_EQ(dir.entries(), (std::vector<std::string>{"saved.json"}));   // no temporary left behind
    std::string const text = readFile(saved);
    EXPECT_EQ(text, host->SaveString());

    // Every input member comes back first, in its order, then the result.
    for (char const* key : {"\"$schema\"", "\"name\"", "\"description\"", "\"settings\"", "\"features\"",
                            "\"components\"", "\"segments\"", "\"result\""}) {
        EXPECT_NE(text.find(key), std::string::npos) << key;
    }
    EXPECT_LT(text.find("\"$schema\""), text.find("\"name\""));
    EXPECT_LT(text.find("\"components\""), text.find("\"segments\""));
    EXPECT_LT(text.find("\"segments\""), text.find("\"result\""));
    for (char const* part : {"\"lines\"", "\"relations\"", "\"sgALONGX3D\"", "\"fillets\"", "\"radius\": 0.25",
                             "\"redraws\": 1", "\"requests\"", "\"FilletSelectedCorner\"", "\"bulkInsert\": true"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part;
    }

    // Reloading gives the same document; the earlier result is not taken as input.
    auto reloaded = JsonHostDocument::LoadFile(saved.string());
    EXPECT_EQ(reloaded->model().segments.size(), host->model().segments.size());
    EXPECT_EQ(reloaded->model().features, host->model().features);
    EXPECT_EQ(reloaded->componentMap(), host->componentMap());
    EXPECT_EQ(reloaded->model().name, host->model().name);
    EXPECT_EQ(reloaded->model().segments[1].entities[0].length, host->model().segments[1].entities[0].length);
    EXPECT_TRUE(reloaded->results().lines().empty());
    EXPECT_FALSE(reloaded->results().setting(KR_SETTING_BULK_INSERT));
    std::string const again = reloaded->SaveString();
    EXPECT_EQ(again.find("\"sgALONGX3D\""), std::string::npos);
}

TEST(JsonHostDocument, SaveReplacesAnExistingFileWhole) {
    TempDir dir;
    fs::path const target = dir.path() / "out.json";
    std::ofstream(target) << std::string(100000, 'x');
    auto host = JsonHostDocument::LoadString(R"({"segments": []})");
    host->SaveFile(target.string());
    std::string const text = readFile(target);
    EXPECT_EQ(text, host->SaveString());
    EXPECT_EQ(dir.entries().size(), 1u);
    // The saved text is itself a valid document.
    EXPECT_NO_THROW(JsonHostDocument::LoadString(text));
}

TEST(JsonHostDocument, SavingIntoAMissingDirectoryFailsAndLeavesNothing) {
    TempDir dir;
    auto host = JsonHostDocument::LoadString(R"({"segments": []})");
    fs::path const target = dir.path() / "no" / "such" / "out.json";
    try {
        host->SaveFile(target.string());
        FAIL() << "saved into a missing directory";
    } catch (JsonHostError const& error) {
        EXPECT_EQ(std::string(error.what()).rfind("cannot write " + target.string(), 0), 0u) << error.what();
    }
    EXPECT_TRUE(dir.entries().empty());
}

TEST(JsonHostDocument, SavedResultNamesSelectionCalloutsAndWideText) {
    auto host = JsonHostDocument::LoadString(
        R"({"features": ["Stra\u00dfe"], "segments": [{"id": 8, "value": 1,
            "entities": [{"kind": "line", "start": [0, 0, 0], "end": [1, 0, 0]}]}]})");
    IHostDocument* doc = nullptr;
    ASSERT_EQ(host->application()->GetActiveDocument(&doc), KR_HOST_OK);
    IHostFeature* feature = nullptr;
    ASSERT_EQ(doc->GetFirstFeature(&feature), KR_HOST_OK);
    void* raw = nullptr;
    feature->QueryInterface(KR_IID_SELECTABLE, &raw);
    auto* selectable = static_cast<IHostSelectable*>(raw);
    selectable->Select(false);
    selectable->Release();
    feature->Release();
    doc->Release();

    std::string const text = host->SaveString();
    EXPECT_NE(text.find("\"kind\": \"feature\""), std::string::npos) << text;
    EXPECT_NE(text.find("\"name\": \"Stra\xC3\x9F" "e\""), std::string::npos) << text;
}

}  // namespace
