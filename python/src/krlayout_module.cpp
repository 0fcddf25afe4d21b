// The extension module krlayout._core: route documents, and layout runs on them in arrays mode
// (the plain-data run, no host). Loading, the option checks, the document checks, the run, the
// quality report and the result document are the command-line tool's own (krlayout_toolcore), so
// that the module and the tool take the same inputs, refuse the same mistakes with the same words
// and give the same results. The Python package (krlayout/__init__.py) wraps what is here.

#include <JsonHostError.h>
#include <LayoutOptionChecks.h>
#include <LayoutResult.h>
#include <LayoutSession.h>
#include <QualityReport.h>
#include <ResultDocument.h>
#include <ToolOptions.h>

#include <krlayout/krlayout_version.h>

#include <nlohmann/json.hpp>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace {

using krtool::LayoutOptionChecks;
using krtool::LayoutResult;
using krtool::LayoutSession;
using krtool::QualityReport;
using krtool::ResultDocument;
using krtool::ToolOptions;
using Json = nlohmann::ordered_json;

// Layouts running right now with the GIL released. Only read by the tests, which show with it
// that Python code runs while a layout does.
std::atomic<int> layoutsInProgress{0};

struct InProgress {
    InProgress() { ++layoutsInProgress; }
    ~InProgress() { --layoutsInProgress; }
    InProgress(InProgress const&) = delete;
    InProgress& operator=(InProgress const&) = delete;
};

// A route document held as its text. A layout parses the text afresh into a session of its own,
// so that layouts of one route in several threads share nothing; the document's own session is
// only ever read.
class Document {
public:
    Document(std::string text, std::string source)
        : text_(std::move(text)), source_(std::move(source)),
          session_(LayoutSession::fromText(text_, source_))
    {
    }

    // Reads the file as the tool's loader does; a file it cannot read is reported in the
    // loader's own words, by the loader itself.
    static std::shared_ptr<Document> load(std::string const& path)
    {
        std::string text;
        {
            py::gil_scoped_release release;
            std::error_code error;
            std::ifstream in;
            if (!std::filesystem::is_directory(path, error))
                in.open(path, std::ios::binary);
            std::ostringstream read;
            if (in.is_open())
                read << in.rdbuf();
            if (!in.is_open() || in.bad()) {
                // Throws the message the tool prints for the same file.
                LayoutSession const probe(path);
                throw JsonHostError("cannot read " + path);
            }
            text = read.str();
        }
        return fromText(std::move(text), path);
    }

    static std::shared_ptr<Document> fromText(std::string text, std::string source)
    {
        py::gil_scoped_release release;
        return std::make_shared<Document>(std::move(text), std::move(source));
    }

    std::string const& text() const { return text_; }
    std::string const& source() const { return source_; }
    LayoutSession const& session() const { return *session_; }

private:
    std::string text_;
    std::string source_;
    std::unique_ptr<LayoutSession> session_;
};

// One finished layout: the tool's result, its quality report and its result document.
class Outcome {
public:
    Outcome(LayoutResult result, QualityReport report, std::string source)
        : result_(std::move(result)), report_(std::move(report)), source_(std::move(source)),
          document_(ResultDocument::build(result_, report_, source_))
    {
    }

    LayoutResult const& result() const { return result_; }
    Json const& document() const { return document_; }

    // The tool's .json output, byte for byte.
    std::string toJson() const
    {
        py::gil_scoped_release release;
        std::ostringstream out;
        ResultDocument::write(out, result_, report_, source_);
        return out.str();
    }

private:
    LayoutResult result_;
    QualityReport report_;
    std::string source_;
    Json document_;
};

py::object toPython(Json const& j)
{
    switch (j.type()) {
    case Json::value_t::null:
    case Json::value_t::discarded:
        return py::none();
    case Json::value_t::boolean:
        return py::bool_(j.get<bool>());
    case Json::value_t::number_integer:
        return py::int_(j.get<std::int64_t>());
    case Json::value_t::number_unsigned:
        return py::int_(j.get<std::uint64_t>());
    case Json::value_t::number_float:
        return py::float_(j.get<double>());
    case Json::value_t::string:
        return py::str(j.get_ref<std::string const&>());
    case Json::value_t::array: {
        py::list list;
        for (Json const& item : j)
            list.append(toPython(item));
        return std::move(list);
    }
    case Json::value_t::object: {
        py::dict dict;
        for (auto const& [key, value] : j.items())
            dict[py::str(key)] = toPython(value);
        return std::move(dict);
    }
    case Json::value_t::binary:
        break;
    }
    return py::none();
}

py::tuple point2(krtool::Point2 const& p)
{
    return py::make_tuple(p.x, p.y);
}

// Everything the Python result holds, as plain Python values.
py::dict fields(Outcome const& outcome)
{
    LayoutResult const& r = outcome.result();
    Json const& doc = outcome.document();
    std::vector<double> const& points = r.outputPoints;
    std::size_t const lineCount = points.size() / 6;

    py::list segments;
    for (krtool::ResultSegment const& s : r.segments) {
        py::list lines;
        py::list axes;
        for (krtool::ResultLine const& l : s.lines) {
            // Arrays mode: the line id (k, k) is the line's row in the output arrays, which hold
            // its z as well.
            std::size_t const k = static_cast<std::size_t>(l.lineId.first);
            if (l.lineId.first >= 0 && k < lineCount) {
                double const* p = points.data() + 6 * k;
                lines.append(py::make_tuple(py::make_tuple(p[0], p[1], p[2]),
                                            py::make_tuple(p[3], p[4], p[5])));
            } else {
                lines.append(py::make_tuple(py::make_tuple(l.start.x, l.start.y, 0.0),
                                            py::make_tuple(l.end.x, l.end.y, 0.0)));
            }
            axes.append(l.axis);
        }
        py::list connectors;
        for (krtool::ConnectorEnd const& c : s.connectors)
            connectors.append(py::make_tuple(c.name, point2(c.at)));
        py::list input;
        for (auto const& l : s.inputLines)
            input.append(py::make_tuple(point2(l.first), point2(l.second)));
        py::dict seg;
        seg["id"] = s.id;
        seg["length"] = s.length;
        seg["diameter"] = s.diameter;
        seg["lines"] = py::tuple(lines);
        seg["axes"] = py::tuple(axes);
        seg["connectors"] = connectors;
        seg["input_lines"] = py::tuple(input);
        segments.append(seg);
    }

    py::array_t<double> pointArray({static_cast<py::ssize_t>(lineCount), py::ssize_t{6}});
    std::copy(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(6 * lineCount),
              pointArray.mutable_data());
    py::array_t<std::int64_t> axisArray(static_cast<py::ssize_t>(r.outputAxes.size()));
    std::copy(r.outputAxes.begin(), r.outputAxes.end(), axisArray.mutable_data());

    py::list messages;
    for (auto const& [id, text] : r.messages)
        messages.append(py::make_tuple(id, text));

    py::dict f;
    f["document"] = r.documentName;
    f["source"] = doc["source"].get<std::string>();
    f["units"] = r.units;
    f["units_source"] = r.unitsSource;
    f["options"] = toPython(doc["options"]);
    f["layout_type"] = r.layoutType;
    f["grid"] = py::make_tuple(r.gridX, r.gridY);
    f["clearance"] = r.clearance;
    f["crowded_points"] = r.crowdedPoints >= 0 ? py::object(py::int_(r.crowdedPoints)) : py::none();
    f["status"] = r.status;
    f["status_text"] = r.statusText;
    f["laid_out"] = r.laidOut;
    f["complete"] = doc["complete"].get<bool>();
    f["message"] = r.checkMessage;
    f["failed_ids"] = r.failedIds;
    f["messages"] = messages;
    f["removed_ids"] = r.removedIds;
    f["dropped"] = toPython(doc["dropped_segments"]);
    f["warnings"] = toPython(doc["warnings"]);
    f["segments"] = segments;
    f["points"] = pointArray;
    f["axes"] = axisArray;
    f["quality"] = toPython(doc["quality"]);
    return f;
}

// The layout and what came before it: the outcome (null when the document was refused), why the
// document was refused (empty when it was not) and the warnings about the input, which the tool
// prints before either.
py::tuple layout(Document const& document, std::string const& type,
                                std::optional<std::string> const& grid,
                                std::optional<std::string> const& gridX,
                                std::optional<std::string> const& gridY,
                                std::optional<std::string> const& clearance,
                                std::optional<std::string> const& units)
{
    // Python runs arrays mode: the plain-data run, no host.
    ToolOptions options;
    options.arrays = true;
    LayoutOptionChecks::Given given;
    given.type = type;
    given.grid = grid;
    given.gridX = gridX;
    given.gridY = gridY;
    given.clearance = clearance;
    given.units = units;
    std::string problem = LayoutOptionChecks::apply(given, options);
    if (!problem.empty())
        throw py::value_error(problem);

    std::shared_ptr<Outcome> outcome;
    std::vector<std::string> warnings;
    {
        // Nothing below touches a Python object.
        py::gil_scoped_release release;
        InProgress const inProgress;
        std::unique_ptr<LayoutSession> session =
            LayoutSession::fromText(document.text(), document.source());
        LayoutOptionChecks::DocumentCheck check = LayoutOptionChecks::document(*session, options);
        problem = check.problem;
        for (krtool::RunWarning const& w : check.warnings)
            warnings.push_back(w.message);
        if (problem.empty()) {
            LayoutResult result = session->run(options, options.units, options.metresPerUnit);
            result.unitsSource = check.unitsSource;
            result.warnings = std::move(check.warnings);
            QualityReport report = QualityReport::measure(result);
            outcome = std::make_shared<Outcome>(std::move(result), std::move(report),
                                                document.source());
        }
    }
    return py::make_tuple(outcome, problem, warnings);
}

}  // namespace

PYBIND11_MODULE(_core, m)
{
    m.doc() = "The compiled part of krlayout: route documents and layout runs on them. Use the "
              "krlayout package, which wraps it.";
    m.attr("__version__") = KRLAYOUT_VERSION_STRING;

    // A document that does not load is a bad value, said in the loader's words.
    py::register_exception_translator([](std::exception_ptr p) {
        try {
            if (p)
                std::rethrow_exception(p);
        } catch (JsonHostError const& e) {
            PyErr_SetString(PyExc_ValueError, e.what());
        }
    });

    py::class_<Document, std::shared_ptr<Document>>(
        m, "Document", "A route document, held as its JSON text and checked when it is made.")
        .def_static("load", &Document::load, py::arg("path"),
                    "Reads and checks the route document in the file at `path`; raises ValueError "
                    "with the loader's message when it cannot be read or is not a route document.")
        .def_static("from_text", &Document::fromText, py::arg("text"), py::arg("source"),
                    "Checks the route document `text`; `source` names it in messages. Raises "
                    "ValueError with the loader's message when it is not a route document.")
        .def_property_readonly("text", &Document::text, "The document's JSON text.")
        .def_property_readonly("source", &Document::source,
                               "What messages call the document: its path, or the name given.")
        .def_property_readonly(
            "units", [](Document const& d) { return d.session().documentUnits(); },
            "The document's units ('m' when it gives none).")
        .def_property_readonly(
            "units_given", [](Document const& d) { return d.session().documentGivesUnits(); },
            "Whether the document gives its units.")
        .def_property_readonly(
            "segment_lengths", [](Document const& d) { return d.session().segmentLengths(); },
            "The true length of every segment (the sum of its entities), in document order.")
        .def_property_readonly(
            "components", [](Document const& d) { return d.session().componentTexts(); },
            "The component map: text by segment id.");

    py::class_<Outcome, std::shared_ptr<Outcome>>(m, "Outcome",
                                                  "One finished layout of a route document.")
        .def("fields", &fields,
             "Everything the layout gave, as a dict of plain Python values and NumPy arrays.")
        .def("to_json", &Outcome::toJson,
             "The result document, the same text as the command-line tool's .json output.");

    m.def("layout", &layout, py::arg("document"), py::arg("type"), py::arg("grid"),
          py::arg("grid_x"), py::arg("grid_y"), py::arg("clearance"), py::arg("units"),
          "Lays the document out in arrays mode; returns (outcome, problem, warnings). The "
          "options are given as the command line spells them (text; None when not given) and "
          "checked as the command line checks them: a value refused raises ValueError with the "
          "tool's message. A grid that cannot hold the document gives no outcome and the "
          "tool's message as the problem; warnings are the messages about the input. The GIL "
          "is released while the document is read, checked and laid out.");
    m.def(
        "_layouts_in_progress", []() { return layoutsInProgress.load(); },
        "How many layouts are running right now with the GIL released (for the tests).");
}
