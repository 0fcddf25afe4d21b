#include "CommandLine.h"

#include "LayoutOptionChecks.h"
#include "PaperSize.h"

#include <CLI/CLI.hpp>
#include <krlayout/krlayout_version.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <ostream>

namespace krtool {

namespace {

char const* const kFooter = R"(Outputs (-o, any number, chosen by extension):
  .json  the result document: per segment its lines (start, end, axis code, line id),
         point ids, relations, fillets; the status, the checks' messages and the
         quality report
  .svg .pdf .png  a drawing: segments labelled with id, true length and diameter,
         connector names at the ends, fillet arcs, a grid and a scale bar; when a
         check fails, the input sketch with the offending segments in red
  .dxf   ASCII DXF R2000 in the units of --units: a layer SEG_<id> per segment with
         LINE and ARC entities and a TEXT with id, length and diameter; connector
         names on the layer CONNECTORS
  .csv   the cut list: a row per segment of the document (also those the layout lost,
         marked in its status column) with its true length, diameter in mm and what is
         at each end (connector and pins, branch point BP<n> with the segments meeting
         there, or free end); a blank line, then the bill of connectors
PDF and SVG are the same bytes for the same input; a PDF is dated SOURCE_DATE_EPOCH
when that is set, and carries no date otherwise.

Printing at a fixed scale (--scale 1:1, 1:N): with --paper the PDF is tiled onto sheets of
that paper, each at true scale with 10 mm of overlap between neighbours, crop marks, the
sheet's grid name (columns A, B, ..., rows 1, 2, ...: "B2"), its page number and its
neighbours; the first page is an overview of the whole drawing with the sheets drawn over
it (no overview when one sheet holds it all). Each sheet is landscape or portrait, whichever
needs fewer sheets (landscape on a tie). Without --paper the PDF is one page as long as it
is at most 200 in (14,400 pt) on both sides, which viewers accept and plotters print; a
larger drawing is tiled onto A3. SVG and PNG are always one page.

Units: coordinates, lengths, diameters and grid spacings are in the document's model
units: those of --units, else the document's "units" field, else metres. The default
grid spacing is 0.02 m, converted to those units. A median segment length over 50 m
or under 1 mm is warned about on stderr.

Exit codes: 0 done; 1-6 the host could not provide the route sketch (the run's status);
7 the sketch has a closed loop; 8 the sketch has disjoint pieces; 2 bad options;
3 the document cannot be read, is malformed, too large for the grid or smaller than a
grid step; 9 an output file could not be written; 10 an internal error; 11 the run
(reading, layout and writing) exceeded --time-limit, and no output was written;
12 the layout lost segments (named on stderr, in the JSON, the drawings and the cut
list). Outputs are still written when a check fails or segments are lost. Interrupted
(SIGINT, SIGTERM), the tool removes its temporary files and dies of the signal.)";

std::string lower(std::string s)
{
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

bool parseNumber(std::string const& text, double& value)
{
    return LayoutOptionChecks::parseNumber(text, value);
}

}  // namespace

bool CommandLine::knownExtension(std::string const& path, std::string& extension)
{
    std::string::size_type const slash = path.find_last_of('/');
    std::string::size_type const dot = path.find_last_of('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash) ||
        dot + 1 == path.size() || dot == (slash == std::string::npos ? 0 : slash + 1))
        return false;
    extension = lower(path.substr(dot));
    return extension == ".json" || extension == ".svg" || extension == ".pdf" ||
           extension == ".png" || extension == ".dxf" || extension == ".csv";
}

bool CommandLine::parseScale(std::string const& text, double& value)
{
    if (lower(text) == "fit") {
        value = 0.0;
        return true;
    }
    std::string::size_type const colon = text.find(':');
    if (colon == std::string::npos)
        return false;
    double paper = 0.0;
    double model = 0.0;
    if (!parseNumber(text.substr(0, colon), paper) || !parseNumber(text.substr(colon + 1), model))
        return false;
    if (!std::isfinite(paper) || !std::isfinite(model) || paper <= 0.0 || model <= 0.0)
        return false;
    value = paper / model;
    return std::isfinite(value) && value > 0.0;
}

int CommandLine::parse(int argc, char const* const* argv, ToolOptions& options, std::ostream& out,
                       std::ostream& err)
{
    CLI::App app{"Lays out a route document with krlayout and writes the result as JSON, "
                 "drawings (SVG, PDF, PNG), DXF and a cut list (CSV).",
                 "krlayout"};
    app.footer(kFooter);
    app.set_version_flag("--version", std::string("krlayout ") + KRLAYOUT_VERSION_STRING);
    app.get_formatter()->column_width(30);

    std::string type = "diameter";
    std::string grid;
    std::string gridX;
    std::string gridY;
    std::string mode = "host";
    std::string scale = "fit";
    bool noRelations = false;
    bool noFillets = false;
    std::string timeLimit = "600";

    app.add_option("DOCUMENT", options.document,
                   "Route document (JSON). Without one the bundled engine-bay example is laid out")
        ->type_name("FILE");
    app.add_option("-o,--output", options.outputs,
                   "Write an output; the extension chooses the format: .json .svg .pdf .png .dxf .csv")
        ->allow_extra_args(false)
        ->type_name("FILE");
    app.add_option("-e,--example", options.example,
                   "Lay out the bundled example NAME instead of a document (see --list-examples)")
        ->type_name("NAME");
    app.add_flag("--list-examples", options.listExamples, "List the bundled examples and exit");
    app.add_option("-t,--type", type,
                   "Layout type: diameter (0), length (1) or formboard (2: every segment one "
                   "straight line at its true length)")
        ->type_name("TYPE")
        ->capture_default_str();
    std::string clearance;
    app.add_option("--clearance", clearance,
                   "Board layout only: least distance between segments that do not meet, in model "
                   "units (default: the larger grid spacing)")
        ->type_name("DISTANCE");
    app.add_option("-g,--grid", grid, "Grid spacing X[,Y] in model units (default 0.02 m)")
        ->type_name("X[,Y]");
    app.add_option("--grid-x", gridX, "Horizontal grid spacing in model units")->type_name("X");
    app.add_option("--grid-y", gridY, "Vertical grid spacing in model units")->type_name("Y");
    app.add_option("-m,--mode", mode,
                   "host: draw into the host sketch (relations, fillets); arrays: fill the output "
                   "arrays")
        ->type_name("MODE")
        ->capture_default_str();
    app.add_flag("--no-relations", noRelations, "Do not add axis and coincidence relations");
    app.add_flag("--no-fillets", noFillets, "Do not fillet the joints between lines");
    app.add_option("-f,--feature", options.feature,
                   "Run on the host feature NAME (coincident relations with it)")
        ->type_name("NAME");
    std::string units = options.units;
    app.add_option("-u,--units", units,
                   "Model units of the document: m, cm, mm, in or ft; overrides the document's "
                   "\"units\" (default m)")
        ->type_name("UNIT")
        ->capture_default_str();
    app.add_flag("-r,--report", options.report, "Print the quality report");
    app.add_option("-s,--scale", scale,
                   "PDF and SVG scale: fit, or PAPER:MODEL such as 1:1 (full size) or 1:10")
        ->type_name("SCALE")
        ->capture_default_str();
    app.add_option("--paper", options.paper,
                   "Tile a fixed-scale PDF onto sheets of this paper: A4, A3, A2, A1, A0, letter "
                   "or tabloid (default: one page up to 200 in, A3 beyond)")
        ->type_name("PAPER");
    app.add_flag("-q,--quiet", options.quiet, "Print nothing but errors");
    app.add_option("--time-limit", timeLimit,
                   "Give up when the run (reading, layout, writing) takes longer than SECONDS, "
                   "which may have decimals (0: no limit)")
        ->type_name("SECONDS")
        ->capture_default_str();

    try {
        app.parse(argc, argv);
    } catch (CLI::CallForHelp const&) {
        out << app.help();
        return 0;
    } catch (CLI::CallForAllHelp const&) {
        out << app.help("", CLI::AppFormatMode::All);
        return 0;
    } catch (CLI::CallForVersion const& e) {
        out << e.what() << "\n";
        return 0;
    } catch (CLI::ParseError const& e) {
        err << "krlayout: " << e.what() << "\nRun 'krlayout --help' for the options.\n";
        return 2;
    }

    auto fail = [&](std::string const& message) {
        err << "krlayout: " << message << "\n";
        return 2;
    };

    // The layout options are checked by the same functions as the Python module's, in the same
    // order, with --mode between the type and the grid.
    std::string problem = LayoutOptionChecks::layoutType(type, options);
    if (!problem.empty())
        return fail(problem);

    std::string const m = lower(mode);
    if (m == "host")
        options.arrays = false;
    else if (m == "arrays" || m == "array")
        options.arrays = true;
    else
        return fail("--mode: '" + mode + "' is not a mode (host or arrays)");

    auto given = [&](char const* name, std::string const& value) {
        return app.count(name) > 0 ? std::optional<std::string>(value) : std::nullopt;
    };
    // An empty --grid counts as not given.
    std::optional<std::string> const gridXY =
        grid.empty() ? std::nullopt : std::optional<std::string>(grid);
    problem = LayoutOptionChecks::grid(gridXY, given("--grid-x", gridX), given("--grid-y", gridY),
                                       options);
    if (problem.empty())
        problem = LayoutOptionChecks::clearance(given("--clearance", clearance), options);
    if (problem.empty())
        problem = LayoutOptionChecks::units(given("--units", units), options);
    if (!problem.empty())
        return fail(problem);

    if (!parseScale(scale, options.paperScale))
        return fail("--scale: '" + scale + "' is not a scale (fit, 1:1, 1:10, ...)");

    if (app.count("--paper") > 0) {
        PaperSize paper;
        if (!PaperSize::find(options.paper, paper))
            return fail("--paper: '" + options.paper + "' is not a paper size (" +
                        PaperSize::names() + ")");
        if (!(options.paperScale > 0.0))
            return fail("--paper needs a fixed --scale such as 1:1 or 1:10: a fitted drawing "
                        "(--scale fit) is one page and is not tiled");
        options.paper = paper.name;
    }

    if (!parseNumber(timeLimit, options.timeLimit) || !std::isfinite(options.timeLimit) ||
        options.timeLimit < 0.0 || options.timeLimit > 86400.0)
        return fail("--time-limit: '" + timeLimit +
                    "' is not a number of seconds from 0 (no limit) to 86400");

    options.relations = !noRelations;
    options.fillets = !noFillets;
    options.hasFeature = app.count("--feature") > 0;
    if (!options.document.empty() && !options.example.empty())
        return fail("give either a DOCUMENT or --example, not both");

    bool wantsPdf = false;
    for (std::string const& path : options.outputs) {
        std::string ext;
        if (path.empty())
            return fail("--output: empty file name");
        if (!knownExtension(path, ext))
            return fail("--output: '" + path +
                        "': unknown output format (use .json, .svg, .pdf, .png, .dxf or .csv)");
        if (ext == ".pdf")
            wantsPdf = true;
    }
    // A PDF carries SOURCE_DATE_EPOCH as its creation date, or no date, so that the same drawing
    // gives the same file. A value that is not a plain number of seconds is refused rather than
    // silently ignored.
    char const* const epoch = std::getenv("SOURCE_DATE_EPOCH");
    if (wantsPdf && epoch != nullptr) {
        std::string const text = epoch;
        // Up to the last second of the year 9999, which a PDF date can still hold.
        bool ok = !text.empty() && text.size() <= 12 &&
                  std::all_of(text.begin(), text.end(),
                              [](unsigned char c) { return std::isdigit(c) != 0; });
        if (ok) {
            options.pdfCreatedAt = std::stoll(text);
            ok = options.pdfCreatedAt <= 253402300799LL;
        }
        if (!ok)
            return fail("SOURCE_DATE_EPOCH: '" + text +
                        "' is not a time in seconds since 1970 (a whole number up to 253402300799)");
    }
    return kContinue;
}

}  // namespace krtool
