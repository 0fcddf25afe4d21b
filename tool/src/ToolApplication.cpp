#include "ToolApplication.h"

#include "AtomicOutputFile.h"
#include "CommandLine.h"
#include "CutListWriter.h"
#include "DrawingRenderer.h"
#include "PaperSize.h"
#include "DroppedSegments.h"
#include "DxfWriter.h"
#include "ExampleLocator.h"
#include "LayoutOptionChecks.h"
#include "LayoutType.h"
#include "LayoutSession.h"
#include "ResultDocument.h"
#include "RunGuard.h"
#include "UnitFormat.h"

#include <JsonHostError.h>

#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <ostream>
#include <stdexcept>
#include <vector>

namespace krtool {

ToolApplication::ToolApplication(std::ostream& out, std::ostream& err) : out_(out), err_(err) {}

int ToolApplication::run(int argc, char const* const* argv)
{
    try {
        ToolOptions options;
        int const code = CommandLine::parse(argc, argv, options, out_, err_);
        if (code != CommandLine::kContinue)
            return code;
        // The limit bounds everything from reading the document to the last output renamed into
        // place; the timer stops once the outputs are in place, or on the way out otherwise.
        struct TimerStop {
            ~TimerStop() { RunGuard::stopTimer(); }
        } timerStop;
        RunGuard::start(options.timeLimit);
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
    std::vector<RunWarning> warnings;
    try {
        RunGuard::setStep(RunGuard::Step::Loading);
        LayoutSession session(source);
        // The document's units, the warnings about it and the grid checks, as the Python module
        // settles them too.
        LayoutOptionChecks::DocumentCheck check = LayoutOptionChecks::document(session, options);
        warnings = std::move(check.warnings);
        for (RunWarning const& w : warnings)
            err_ << "krlayout: warning: " << source << ": " << w.message << "\n";
        if (!check.problem.empty()) {
            err_ << "krlayout: " << check.problem << "\n";
            return kBadDocument;
        }
        if (options.hasFeature && !session.hasFeature(options.feature))
            err_ << "krlayout: warning: " << source << " has no feature named '" << options.feature
                 << "'; laid out without coincident relations\n";
        // The time limit ends the process without flushing the streams.
        err_.flush();
        RunGuard::setStep(RunGuard::Step::LayingOut);
        result = session.run(options, options.units, options.metresPerUnit);
        result.unitsSource = check.unitsSource;
        result.warnings = warnings;
    } catch (JsonHostError const& e) {
        err_ << "krlayout: " << e.what() << "\n";
        return kBadDocument;
    }
    RunGuard::setStep(RunGuard::Step::Measuring);
    QualityReport const report = QualityReport::measure(result);

    // Every output is written to its temporary file first and the files are renamed into place
    // together at the end, so that a run stopped by the time limit replaces none of them.
    bool written = true;
    std::vector<std::unique_ptr<AtomicOutputFile>> finished;
    for (std::string const& path : options.outputs) {
        RunGuard::setStep(RunGuard::Step::Writing, path);
        std::unique_ptr<AtomicOutputFile> file = writeOutput(path, result, report, options, source);
        if (file)
            finished.push_back(std::move(file));
        else
            written = false;
    }
    RunGuard::setStep(RunGuard::Step::Replacing);
    std::vector<std::string> replaced;
    {
        RunGuard::SignalBlock block;
        RunGuard::expireIfDue();
        for (std::unique_ptr<AtomicOutputFile>& file : finished) {
            try {
                file->commit();
                replaced.push_back(file->path());
            } catch (std::runtime_error const& e) {
                err_ << "krlayout: " << e.what() << "\n";
                written = false;
            }
        }
        RunGuard::stopTimer();
    }
    if (!options.quiet) {
        for (std::string const& path : replaced)
            out_ << "wrote " << path << "\n";
    }

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

std::unique_ptr<AtomicOutputFile> ToolApplication::writeOutput(std::string const& path,
                                                              LayoutResult const& result,
                                                              QualityReport const& report,
                                                              ToolOptions const& options,
                                                              std::string const& source)
{
    std::string ext;
    CommandLine::knownExtension(path, ext);
    try {
        auto file = std::make_unique<AtomicOutputFile>(path);
        std::ostream& os = file->stream();
        if (ext == ".json") {
            ResultDocument::write(os, result, report, source);
        } else if (ext == ".dxf") {
            DxfWriter::write(os, result);
        } else if (ext == ".csv") {
            CutListWriter::write(os, result);
        } else {
            DrawingRenderer::Options drawing;
            drawing.format = ext == ".svg"   ? DrawingRenderer::Format::Svg
                             : ext == ".pdf" ? DrawingRenderer::Format::Pdf
                                             : DrawingRenderer::Format::Png;
            drawing.paperScale = options.paperScale;
            drawing.paperGiven = PaperSize::find(options.paper, drawing.paper);
            drawing.createdAt = options.pdfCreatedAt;
            DrawingRenderer::render(os, result, report, drawing);
        }
        file->close();
        return file;
    } catch (std::runtime_error const& e) {
        err_ << "krlayout: " << e.what() << "\n";
        return nullptr;
    }
}

void ToolApplication::printSummary(LayoutResult const& result, QualityReport const& report,
                                   std::string const& source) const
{
    size_t lines = 0;
    for (ResultSegment const& s : result.segments)
        lines += s.lines.size();
    out_ << source << ": laid out " << result.segments.size() << " segments (" << lines
         << " lines) " << LayoutType::phrase(result.layoutType) << ", grid "
         << UnitFormat::plain(result.gridX) << " x " << UnitFormat::plain(result.gridY) << ' '
         << result.units;
    if (result.layoutType == LayoutType::kBoard)
        out_ << ", clearance " << UnitFormat::plain(result.clearance) << ' ' << result.units;
    out_ << ", " << (result.mode == "arrays" ? "output arrays" : "host sketch") << "; "
         << report.crossingPairs() << " crossing pairs, " << report.overlaps().count()
         << " overlapping pieces, " << report.clearanceViolations().count()
         << " pairs closer than the clearance";
    if (result.layoutType == LayoutType::kBoard)
        out_ << ", " << result.crowdedPoints << " crowded points";
    out_ << "\n";
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
