// Puts the connector names of the component map at the free ends of their segments.
#pragma once

#include "LayoutResult.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace krtool {

class ConnectorPlacer {
public:
    // The connectors a component map text names, read by the library's KrComponentText as the
    // layout run reads it (the UTF-8 text decoded, the names encoded again): up to two halves
    // split at the first ':', each "pin@connector" split at its first '@', kept only when the
    // connector part itself holds an '@' after its first character. Pairs of (connector, pin).
    static std::vector<std::pair<std::string, std::string>> parse(std::string const& text);

    // For every segment with a component map entry: its connector names, and their places at the
    // segment's free ends (chain ends, Geometry2D::chainEnds, that no other segment touches) of
    // the laid-out lines or of the input sketch when nothing was laid out.
    static void place(LayoutResult& result, std::map<long, std::string> const& componentMap);

    // Points within 10 times the library's tolerance share a key (close to a cell boundary they
    // may not). Segments whose line ends share a key meet there.
    using PointKey = std::pair<long long, long long>;
    static PointKey pointKey(Point2 const& p);

    // "X12@ECU (1-4)": the connector with its pins.
    static std::string displayName(std::string const& connector, std::string const& pin);
};

}  // namespace krtool
