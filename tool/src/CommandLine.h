// Reads the command line into ToolOptions and checks every value before anything is run. The
// layout options go through LayoutOptionChecks, which the Python module runs as well.
#pragma once

#include "ToolOptions.h"

#include <iosfwd>
#include <string>

namespace krtool {

class CommandLine {
public:
    static constexpr int kContinue = -1;

    // kContinue when the run should go on; otherwise the exit code: 0 after --help or --version,
    // 2 for a bad option (the message is written to err).
    static int parse(int argc, char const* const* argv, ToolOptions& options, std::ostream& out,
                     std::ostream& err);

    // Output formats by file extension (lower case, with the dot); false for anything else.
    static bool knownExtension(std::string const& path, std::string& extension);

private:
    // "1:1", "1:20", "2:1" or "fit" (0).
    static bool parseScale(std::string const& text, double& value);
};

}  // namespace krtool
