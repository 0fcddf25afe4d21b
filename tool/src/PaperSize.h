// Paper sizes a fixed-scale PDF can be tiled onto, by name.
#pragma once

#include <string>

namespace krtool {

struct PaperSize {
    std::string name;       // as printed on the sheets: A4, A3, ..., letter, tabloid
    double width = 0.0;     // points, portrait (the shorter side)
    double height = 0.0;    // points, portrait (the longer side)

    // The size called `name` (any case); false when there is none.
    static bool find(std::string const& name, PaperSize& paper);
    // The names find() knows, for messages and help: "A4, A3, A2, A1, A0, letter or tabloid".
    static std::string names();
};

}  // namespace krtool
