// The checks of the options that choose how a document is laid out (layout type, grid spacings,
// board clearance, units), and of the document against them (its units, the warnings about it,
// whether the grid can hold it). The command line and the Python module both run them, so that
// they take the same values and refuse the others with the same words.
//
// Every check returns the message of the first problem it finds, as the command prints it after
// "krlayout: ", or an empty string when the values are taken into the options.
#pragma once

#include "LayoutResult.h"
#include "ToolOptions.h"

#include <optional>
#include <string>
#include <vector>

namespace krtool {

class LayoutSession;

class LayoutOptionChecks {
public:
    // The options as given, in their command-line spelling; an empty optional is an option that
    // was not given.
    struct Given {
        std::string type = "diameter";        // --type: a name or a number
        std::optional<std::string> grid;       // --grid: "X" or "X,Y"
        std::optional<std::string> gridX;      // --grid-x
        std::optional<std::string> gridY;      // --grid-y
        std::optional<std::string> clearance;  // --clearance
        std::optional<std::string> units;      // --units
    };

    // --type: sets options.layoutType.
    static std::string layoutType(std::string const& text, ToolOptions& options);
    // --grid, --grid-x and --grid-y together: sets the spacings and gridGiven. A single spacing
    // given alone (--grid X, --grid-x or --grid-y) applies to both directions.
    static std::string grid(std::optional<std::string> const& grid,
                            std::optional<std::string> const& gridX,
                            std::optional<std::string> const& gridY, ToolOptions& options);
    // --clearance: needs the layout type already set, since only the board layout keeps one.
    static std::string clearance(std::optional<std::string> const& text, ToolOptions& options);
    // --units: sets units, metresPerUnit and unitsGiven, and the default grid (0.02 m in those
    // units) when no spacing was given.
    static std::string units(std::optional<std::string> const& text, ToolOptions& options);

    // All of the above, in the order the command line checks them.
    static std::string apply(Given const& given, ToolOptions& options);

    // A number as the options take it: the whole text, no leading space, within double range.
    static bool parseNumber(std::string const& text, double& value);
    // A grid spacing: a finite number greater than zero, else a message in why.
    static bool parseSpacing(std::string const& text, double& value, std::string& why);
    // A board clearance: a finite number of 0 or more, else a message in why.
    static bool parseClearance(std::string const& text, double& value, std::string& why);

    // What a run settles about its document before it lays it out.
    struct DocumentCheck {
        std::string unitsSource;               // "option", "document" or "default"
        std::vector<RunWarning> warnings;      // about the input, in the order they are printed
        std::string problem;                   // why the grid cannot hold the document; empty: it can
    };
    // Without --units the document's units apply (metres when it gives none) and the default
    // grid follows them; then the warnings about the input (implausible lengths for the unit,
    // component texts that name no connector), then the grid and size checks. A document in the
    // wrong unit is also what makes a grid too coarse or too fine for it, so its warning comes
    // first.
    static DocumentCheck document(LayoutSession const& session, ToolOptions& options);
};

}  // namespace krtool
