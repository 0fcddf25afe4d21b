// Model units: their size in metres and how lengths and diameters are written on drawings.
#pragma once

#include <string>

namespace krtool {

class UnitFormat {
public:
    // Metres per model unit for "m", "cm", "mm", "in", "ft" (and their long names); 0 if unknown.
    static double metresPerUnit(std::string const& units);
    // "0.350 m", "350 mm": a length in model units with the unit name.
    static std::string length(double value, std::string const& units);
    // A diameter in millimetres when the unit is known ("8 mm", "4.5 mm"), else in model units.
    static std::string diameter(double value, std::string const& units, double metresPerUnit);
    // A number without trailing zeros ("1", "2.5").
    static std::string plain(double value);
};

}  // namespace krtool
