// The krlayout command: reads the options, lays the document out, writes every output and
// reports; returns the process exit code.
#pragma once

#include "LayoutResult.h"
#include "QualityReport.h"
#include "ToolOptions.h"

#include <iosfwd>
#include <memory>
#include <string>

namespace krtool {

class AtomicOutputFile;

class ToolApplication {
public:
    // Exit codes of the tool besides the run's own status (1 to 8).
    static constexpr int kBadOptions = 2;
    static constexpr int kBadDocument = 3;
    static constexpr int kWriteFailed = 9;
    static constexpr int kInternalError = 10;
    static constexpr int kTimeLimit = 11;
    // Laid out and written, but the layout lost segments of the document (its final check
    // deleted them). The multi-pin clean-up's removals alone do not count.
    static constexpr int kSegmentsDropped = 12;

    ToolApplication(std::ostream& out, std::ostream& err);

    int run(int argc, char const* const* argv);

private:
    int execute(ToolOptions& options);
    // The document to lay out: the one given, a named example or the default example.
    bool resolveDocument(ToolOptions const& options, std::string& path, int& exitCode);
    // Writes one output to its temporary file, complete and closed but not yet in place; null
    // (with a message) when it failed.
    std::unique_ptr<AtomicOutputFile> writeOutput(std::string const& path,
                                                  LayoutResult const& result,
                                                  QualityReport const& report,
                                                  ToolOptions const& options,
                                                  std::string const& source);
    void printSummary(LayoutResult const& result, QualityReport const& report,
                      std::string const& source) const;
    // Names every segment missing from the result on the error stream, grouped by reason.
    void printDropped(LayoutResult const& result, std::string const& source, bool quiet) const;
    void printFailure(LayoutResult const& result, std::string const& source) const;

    std::ostream& out_;
    std::ostream& err_;
};

}  // namespace krtool
