#include "LayoutOptionChecks.h"

#include "InputWarnings.h"
#include "LayoutSession.h"
#include "LayoutType.h"
#include "UnitFormat.h"

#include <krlayout/api/KrLayoutTypeRegistry.h>

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace krtool {

bool LayoutOptionChecks::parseNumber(std::string const& text, double& value)
{
    if (text.empty() || std::isspace(static_cast<unsigned char>(text.front())))
        return false;
    char* end = nullptr;
    errno = 0;
    value = std::strtod(text.c_str(), &end);
    return end != nullptr && *end == '\0' && errno == 0;
}

bool LayoutOptionChecks::parseSpacing(std::string const& text, double& value, std::string& why)
{
    if (!parseNumber(text, value)) {
        why = "'" + text + "' is not a number";
        return false;
    }
    if (!std::isfinite(value)) {
        why = "'" + text + "' is not finite";
        return false;
    }
    if (value <= 0.0) {
        why = "'" + text + "' is not greater than zero";
        return false;
    }
    return true;
}

bool LayoutOptionChecks::parseClearance(std::string const& text, double& value, std::string& why)
{
    if (!parseNumber(text, value) || std::isnan(value)) {
        why = "'" + text + "' is not a number";
        return false;
    }
    if (value < 0.0) {
        why = "'" + text + "' is negative";
        return false;
    }
    if (!std::isfinite(value)) {
        why = "'" + text + "' is not finite";
        return false;
    }
    return true;
}

std::string LayoutOptionChecks::layoutType(std::string const& text, ToolOptions& options)
{
    if (!LayoutType::parse(text, options.layoutType))
        return "--type: '" + text + "' is not a layout type (" + KrLayoutTypeRegistry::Choices() +
               ")";
    return std::string();
}

std::string LayoutOptionChecks::grid(std::optional<std::string> const& grid,
                                     std::optional<std::string> const& gridX,
                                     std::optional<std::string> const& gridY, ToolOptions& options)
{
    std::string why;
    if (grid) {
        std::string::size_type const comma = grid->find(',');
        std::string const xs = grid->substr(0, comma);
        std::string const ys = comma == std::string::npos ? xs : grid->substr(comma + 1);
        if (!parseSpacing(xs, options.gridX, why) || !parseSpacing(ys, options.gridY, why))
            return "--grid: bad grid spacing: " + why +
                   " (give a finite number greater than zero, or X,Y)";
        options.gridGiven = true;
    }
    if (gridX) {
        if (!parseSpacing(*gridX, options.gridX, why))
            return "--grid-x: bad grid spacing: " + why + " (give a finite number greater than zero)";
        if (!grid && !gridY)
            options.gridY = options.gridX;
        options.gridGiven = true;
    }
    if (gridY) {
        if (!parseSpacing(*gridY, options.gridY, why))
            return "--grid-y: bad grid spacing: " + why + " (give a finite number greater than zero)";
        if (!grid && !gridX)
            options.gridX = options.gridY;
        options.gridGiven = true;
    }
    return std::string();
}

std::string LayoutOptionChecks::clearance(std::optional<std::string> const& text,
                                          ToolOptions& options)
{
    if (!text)
        return std::string();
    // The grid layouts keep no clearance of their own: a value for them would be silently
    // ignored, so it is refused.
    if (options.layoutType != LayoutType::kBoard)
        return "--clearance applies to the board layout only (--type formboard)";
    std::string why;
    if (!parseClearance(*text, options.clearance, why))
        return "--clearance: bad clearance: " + why +
               " (give a finite distance of 0 or more in model units)";
    options.clearanceGiven = true;
    return std::string();
}

std::string LayoutOptionChecks::units(std::optional<std::string> const& text, ToolOptions& options)
{
    options.unitsGiven = text.has_value();
    if (text)
        options.units = *text;
    options.metresPerUnit = UnitFormat::metresPerUnit(options.units);
    if (!(options.metresPerUnit > 0.0))
        return "--units: '" + options.units + "' is not a unit (m, cm, mm, in or ft)";
    // Without --units the document's own units apply once it is read (document() sets them and
    // the default grid again); m until then.
    if (!options.gridGiven) {
        // 0.02 m, the library's default spacing, in the document's units.
        options.gridX = options.gridY = 0.02 / options.metresPerUnit;
    }
    return std::string();
}

std::string LayoutOptionChecks::apply(Given const& given, ToolOptions& options)
{
    std::string problem = layoutType(given.type, options);
    if (problem.empty())
        problem = grid(given.grid, given.gridX, given.gridY, options);
    if (problem.empty())
        problem = clearance(given.clearance, options);
    if (problem.empty())
        problem = units(given.units, options);
    return problem;
}

LayoutOptionChecks::DocumentCheck LayoutOptionChecks::document(LayoutSession const& session,
                                                               ToolOptions& options)
{
    DocumentCheck check;
    // Without --units the document says what its numbers are in (metres when it is silent); the
    // default grid follows the unit.
    if (!options.unitsGiven) {
        options.units = session.documentUnits();
        options.metresPerUnit = UnitFormat::metresPerUnit(options.units);
        if (!options.gridGiven)
            options.gridX = options.gridY = 0.02 / options.metresPerUnit;
    }
    check.unitsSource = options.unitsGiven              ? "option"
                        : session.documentGivesUnits() ? "document"
                                                       : "default";
    check.warnings = InputWarnings::segmentLengths(session.segmentLengths(), options.units,
                                                   options.metresPerUnit, check.unitsSource);
    for (RunWarning& w : InputWarnings::componentTexts(session.componentTexts()))
        check.warnings.push_back(std::move(w));
    check.problem = session.gridProblem(options);
    if (check.problem.empty())
        check.problem = session.sizeProblem(options);
    return check;
}

}  // namespace krtool
