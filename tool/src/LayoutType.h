// The layouts the tool runs and how it names them on the command line, in the outputs and on the
// drawings.
#pragma once

#include <krlayout/api/KrLayoutTypeRegistry.h>

#include <string>

namespace krtool {

class LayoutType {
public:
    // The library's two grid layouts, run through the KrAutoLayout facade, and the board drawing,
    // which the tool runs itself: the facade knows only the first two. The numbers and names are
    // the library's layout type registry's.
    static constexpr int kByDiameter = KrLayoutTypeRegistry::DiameterType;
    static constexpr int kByLength = KrLayoutTypeRegistry::LengthType;
    static constexpr int kBoard = KrLayoutTypeRegistry::FormboardType;

    // The value of --type: a name ("diameter", "length", "formboard", any case) or its number;
    // false for anything else (the registry's Find).
    static bool parse(std::string const& text, int& type);
    // "diameter", "length" or "formboard": the name --type takes and the JSON gives.
    static std::string name(int type);
    // How the summary line says the segments were laid out: "by diameter", "by length" or
    // "as a board drawing at true lengths".
    static char const* phrase(int type);
    // The title of the drawings' header line.
    static char const* title(int type);
};

}  // namespace krtool
