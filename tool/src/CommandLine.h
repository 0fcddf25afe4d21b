// Reads the command line into ToolOptions and checks every value before anything is run.
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
    // A grid spacing: a finite number greater than zero, else a message in why.
    static bool parseSpacing(std::string const& text, double& value, std::string& why);
    // A board clearance: a finite number of 0 or more, else a message in why.
    static bool parseClearance(std::string const& text, double& value, std::string& why);
    // "1:1", "1:20", "2:1" or "fit" (0).
    static bool parseScale(std::string const& text, double& value);
};

}  // namespace krtool
