#include "PaperSize.h"

#include <algorithm>
#include <cctype>

namespace krtool {

namespace {

constexpr double kPointsPerMm = 72.0 / 25.4;

struct Entry {
    char const* name;
    double width;    // points
    double height;
};

// ISO sizes in millimetres, the North American ones in inches.
Entry const kSizes[] = {
    {"A4", 210 * kPointsPerMm, 297 * kPointsPerMm},
    {"A3", 297 * kPointsPerMm, 420 * kPointsPerMm},
    {"A2", 420 * kPointsPerMm, 594 * kPointsPerMm},
    {"A1", 594 * kPointsPerMm, 841 * kPointsPerMm},
    {"A0", 841 * kPointsPerMm, 1189 * kPointsPerMm},
    {"letter", 8.5 * 72.0, 11.0 * 72.0},
    {"tabloid", 11.0 * 72.0, 17.0 * 72.0},
};

std::string lower(std::string s)
{
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

}  // namespace

bool PaperSize::find(std::string const& name, PaperSize& paper)
{
    for (Entry const& e : kSizes) {
        if (lower(e.name) == lower(name)) {
            paper = {e.name, e.width, e.height};
            return true;
        }
    }
    return false;
}

std::string PaperSize::names()
{
    return "A4, A3, A2, A1, A0, letter or tabloid";
}

}  // namespace krtool
