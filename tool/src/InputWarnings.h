// Warnings about a document that the run goes on with: component texts that name no connector,
// and segment lengths that do not fit the unit they are read in.
#pragma once

#include "LayoutResult.h"

#include <map>
#include <string>
#include <vector>

namespace krtool {

class InputWarnings {
public:
    // The form a component text must have to name a connector, in words, with an example.
    static char const* const kExpectedForm;

    // Lengths whose median lies outside these bounds (in metres) are implausible for a harness.
    static constexpr double kLongestPlausibleMedian = 50.0;
    static constexpr double kShortestPlausibleMedian = 0.001;

    // One warning for every text that yields no connector under the same reading the layout run
    // uses (ConnectorPlacer::parse), in ascending id order. A text with ':' one half of which
    // names a connector yields that one and is not warned about.
    static std::vector<RunWarning> componentTexts(std::map<long, std::string> const& texts);

    // The median of the positive lengths; 0 when there are none.
    static double median(std::vector<double> lengths);

    // A warning when the median segment length, in metres, is over 50 m or under 1 mm; none
    // otherwise (also when no segment has a length). unitsSource is "option", "document" or
    // "default", as in LayoutResult.
    static std::vector<RunWarning> segmentLengths(std::vector<double> const& lengths,
                                                  std::string const& units, double metresPerUnit,
                                                  std::string const& unitsSource);
};

}  // namespace krtool
