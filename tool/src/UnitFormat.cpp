#include "UnitFormat.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace krtool {

double UnitFormat::metresPerUnit(std::string const& units)
{
    if (units == "m" || units == "metre" || units == "metres" || units == "meter" || units == "meters")
        return 1.0;
    if (units == "cm")
        return 0.01;
    if (units == "mm" || units == "millimetre" || units == "millimetres" || units == "millimeter" ||
        units == "millimeters")
        return 0.001;
    if (units == "in" || units == "inch" || units == "inches")
        return 0.0254;
    if (units == "ft" || units == "foot" || units == "feet")
        return 0.3048;
    return 0.0;
}

std::string UnitFormat::length(double value, std::string const& units)
{
    double const m = metresPerUnit(units);
    int decimals = 3;
    if (m > 0.0) {
        // About a tenth of a millimetre of resolution, whatever the unit.
        double const step = 0.0001 / m;
        decimals = std::max(0, std::min(4, static_cast<int>(std::ceil(-std::log10(step * 10.0)))));
        if (std::fabs(value) >= 1000.0)
            decimals = std::min(decimals, 1);
    }
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.*f", decimals, value);
    return std::string(buf) + (units.empty() ? "" : " " + units);
}

std::string UnitFormat::diameter(double value, std::string const& units, double metresPerUnit)
{
    if (metresPerUnit > 0.0) {
        double const mm = value * metresPerUnit * 1000.0;
        char buf[64];
        if (std::fabs(mm) >= 10.0 || std::fabs(mm - std::round(mm)) < 0.05)
            std::snprintf(buf, sizeof buf, "%.0f mm", mm);
        else
            std::snprintf(buf, sizeof buf, "%.1f mm", mm);
        return buf;
    }
    return plain(value) + (units.empty() ? "" : " " + units);
}

std::string UnitFormat::plain(double value)
{
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.6f", value);
    std::string s = buf;
    while (!s.empty() && s.back() == '0')
        s.pop_back();
    if (!s.empty() && s.back() == '.')
        s.pop_back();
    return s;
}

}  // namespace krtool
