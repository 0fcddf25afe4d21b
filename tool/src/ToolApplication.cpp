#include "ToolApplication.h"

#include "AtomicOutputFile.h"
#include "CommandLine.h"
#include "DrawingRenderer.h"
#include "DroppedSegments.h"
#include "DxfWriter.h"
#include "ExampleLocator.h"
#include "LayoutSession.h"
#include "ResultDocument.h"
#include "UnitFormat.h"

#include <JsonHostError.h>

#include <exception>
#include <filesystem>
#include <new>
#include <ostream>
#include <stdexcept>

#include <csignal>
#include <signal.h>
#include <unistd.h>

namespace krtool {

namespace {

char const kTimeLimitMessage[] = "krlayout: the layout did not finish within --time-limit; stopped\n";

extern "C" void onTimeLimit(int)
{
    // Only async-signal-safe calls here.
    ssize_t const n = ::write(STDERR_FILENO, kTimeLimitMessage, sizeof kTimeLimitMessage - 1);
    (void)n;
    ::_exit(ToolApplication::kTimeLimit);
}

}  // namespace

void ToolApplication::armTimeLimit(unsigned seconds)
{
    if (seconds == 0) {
        ::alarm(0);
        return;
    }
    struct sigaction action {};
    action.sa_handler = onTimeLimit;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGALRM, &action, nullptr);
    ::alarm(seconds);
}

ToolApplication::ToolApplication(std::ostream& out, std::ostream& err) : out_(out), err_(err) {}

int ToolApplication::run(int argc, char const* const* argv)
{
    try {
        ToolOptions options;
        int const code = CommandLine::parse(argc, argv, options, out_, err_);
        if (code != CommandLine::kContinue)
            return code;
        return execute(options);
    } catch (std::bad_alloc const&) {
        err_ << "krlayout: out of memory\n";
    } catch (std::exception const& e) {
        err_ << "krlayout: internal error: " << e.what() << "\n";
    }
    return kInternalError;
}

bool ToolApplication::resolveDocument(ToolOptions const& options, std::string& path, int& exitCode)
{
    if (!options.document.empty()) {
        path = options.document;
        return true;
    }
    std::string const name = options.example.empty() ? ExampleLocator::kDefaultExample : options.example;
    path = ExampleLocator::find(name);
    if (!path.empty())
        return true;
    if (ExampleLocator::folder().empty()) {
        err_ << "krlayout: no document given and the bundled examples are not installed\n";
        exitCode = kBadDocument;
    } else {
        err_ << "krlayout: --example: there is no example '" << name
             << "' (see krlayout --list-examples)\n";
        exitCode = kBadOptions;
    }
    return false;
}

int ToolApplication::execute(ToolOptions& options)
{
    if (options.listExamples) {
        std::string const dir = ExampleLocator::folder();
        if (dir.empty()) {
            err_ << "krlayout: the bundled examples are not installed\n";
            return kBadDocument;
        }
        for (std::string const& name : ExampleLocator::names())
            out_ << name << (name == ExampleLocator::kDefaultExample ? "  (default)" : "") << "\n";
        out_ << "in " << dir << "\n";
        return 0;
    }

    std::string source;
    int exitCode = 0;
    if (!resolveDocument(options, source, exitCode))
        return exitCode;
    for (std::string const& path : options.outputs) {
        std::error_code ec;
        if (std::filesystem::equivalent(path, source, ec)) {
            err_ << "krlayout: --output: '" << path << "' is the input document; not overwriting it\n";
            return kBadOptions;
        }
    }

    LayoutResult result;
    try {
        LayoutSession session(source);
        std::string problem = session.gridProblem(options);
        if (problem.empty())
            problem = session.sizeProblem(options);
        if (!problem.empty()) {
            err_ << "krlayout: " << problem << "\n";
            return kBadDocument;
        }
        if (options.hasFeature && !session.hasFeature(options.feature))
            err_ << "krlayout: warning: " << source << " has no feature named '" << options.feature
                 << "'; laid out without coincident relations\n";
        // Nothing has been written yet, so a layout that runs too long can end the process.
        err_.flush();
        out_.flush();
        armTimeLimit(options.timeLimit);
        result = session.run(options, options.units, options.metresPerUnit);
        armTimeLimit(0);
    } catch (JsonHostError const& e) {
        err_ << "krlayout: " << e.what() << "\n";
        return kBadDocument;
    }
    QualityReport const report = QualityReport::measure(result);

    bool written = true;
    for (std::string const& path : options.outputs)
        written = writeOutput(path, result, report, options, source) && written;

    if (result.status != 0)
        printFailure(result, source);
    else if (!options.quiet)
        printSummary(result, report, source);
    printDropped(result, source, options.quiet);
    if (options.report)
        report.print(out_, result.units);

    if (result.status != 0)
        return result.status > 0 && result.status < 256 ? static_cast<int>(result.status) : 1;
    if (!written)
        return kWriteFailed;
    return DroppedSegments::anyLost(result) ? kSegmentsDropped : 0;
}

bool ToolApplication::writeOutput(std::string const& path, LayoutResult const& result,
                                  QualityReport const& report, ToolOptions const& options,
                                  std::string const& source)
{
    std::string ext;
    CommandLine::knownExtension(path, ext);
    try {
        AtomicOutputFile file(path);
        std::ostream& os = file.stream();
        if (ext == ".json") {
            ResultDocument::write(os, result, report, source);
        } else if (ext == ".dxf") {
            DxfWriter::write(os, result);
        } else {
            DrawingRenderer::Options drawing;
            drawing.format = ext == ".svg"   ? DrawingRenderer::Format::Svg
                             : ext == ".pdf" ? DrawingRenderer::Format::Pdf
                                             : DrawingRenderer::Format::Png;
            drawing.paperScale = options.paperScale;
            DrawingRenderer::render(os, result, report, drawing);
        }
        file.commit();
    } catch (std::runtime_error const& e) {
        err_ << "krlayout: " << e.what() << "\n";
        return false;
    }
    if (!options.quiet)
        out_ << "wrote " << path << "\n";
    return true;
}

void ToolApplication::printSummary(LayoutResult const& result, QualityReport const& report,
                                   std::string const& source) const
{
    size_t lines = 0;
    for (ResultSegment const& s : result.segments)
        lines += s.lines.size();
    out_ << source << ": laid out " << result.segments.size() << " segments (" << lines
         << " lines) by " << (result.layoutType == 1 ? "length" : "diameter") << ", grid "
         << UnitFormat::plain(result.gridX) << " x " << UnitFormat::plain(result.gridY) << ' '
         << result.units << ", " << (result.mode == "arrays" ? "output arrays" : "host sketch")
         << "; " << report.crossingPairs() << " crossing pairs, " << report.overlaps().size()
         << " overlapping pieces\n";
}

void ToolApplication::printDropped(LayoutResult const& result, std::string const& source,
                                   bool quiet) const
{
    using Reason = DroppedSegment::Reason;
    // Segments the layout lost are an error and always named; the multi-pin clean-up's removals
    // are deliberate and named unless the run is quiet.
    for (Reason reason : {Reason::FinalCheck, Reason::MultiPinCleanUp}) {
        size_t const n = DroppedSegments::count(result, reason);
        if (n == 0 || (quiet && reason == Reason::MultiPinCleanUp))
            continue;
        size_t const total = result.segments.size() + result.removedIds.size();
        err_ << "krlayout: " << (reason == Reason::FinalCheck ? "" : "note: ") << source << ": "
             << n << " of " << total << (total == 1 ? " segment " : " segments ")
             << (reason == Reason::FinalCheck ? "missing from the result, " : "")
             << DroppedSegments::reasonText(reason) << ": "
             << DroppedSegments::idList(result, reason) << "\n";
    }
}

void ToolApplication::printFailure(LayoutResult const& result, std::string const& source) const
{
    err_ << "krlayout: " << source << ": " << result.statusText << " (status " << result.status
         << ")\n";
    if (!result.failedIds.empty() || !result.checkMessage.empty()) {
        err_ << "  " << (result.checkMessage.empty() ? "segments" : result.checkMessage) << ":";
        for (long id : result.failedIds)
            err_ << ' ' << id;
        // The host shows segments through their sketch entities; some have none.
        if (result.failedIds.empty())
            err_ << " (segments without sketch entities, which the host cannot show)";
        err_ << "\n";
    }
}

}  // namespace krtool
