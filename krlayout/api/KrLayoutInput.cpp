#include <krlayout/api/KrLayoutInput.h>

#include <krlayout/api/KrLayoutTypeRegistry.h>

#include <climits>
#include <cmath>
#include <set>
#include <sstream>

namespace {

bool Finite(ALPoint const& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

}  // namespace

double KrLayoutInput::LengthOf(Segment const& segment)
{
    if (segment.length >= 0.0) {
        return segment.length;
    }
    double sum = 0.0;
    for (ALLine const& line : segment.lines) {
        double const dx = line.end.x - line.start.x;
        double const dy = line.end.y - line.start.y;
        double const dz = line.end.z - line.start.z;
        sum += std::sqrt(dx * dx + dy * dy + dz * dz);
    }
    return sum;
}

std::string KrLayoutInput::Problem() const
{
    std::ostringstream why;
    if (!std::isfinite(gridSpacingX) || !std::isfinite(gridSpacingY) || !(gridSpacingX > 0.0) ||
        !(gridSpacingY > 0.0)) {
        why << "the grid spacing must be a number above 0 (got " << gridSpacingX << " x "
            << gridSpacingY << ")";
        return why.str();
    }
    if (!KrLayoutTypeRegistry::IsType(layoutType)) {
        why << "layout type " << layoutType << " is not a layout type ("
            << KrLayoutTypeRegistry::Choices() << ")";
        return why.str();
    }
    if (std::isnan(clearance) || std::isinf(clearance)) {
        why << "the clearance must be a number (negative for the default)";
        return why.str();
    }
    std::set<long> ids;
    for (Segment const& s : segments) {
        if (s.id < INT_MIN || s.id > INT_MAX) {
            why << "segment id " << s.id << " is outside the range of ids (" << INT_MIN << " to "
                << INT_MAX << ")";
            return why.str();
        }
        if (!ids.insert(s.id).second) {
            why << "segment id " << s.id << " is given twice";
            return why.str();
        }
        if (std::isnan(s.length) || std::isinf(s.length)) {
            why << "segment " << s.id << ": the length must be a number";
            return why.str();
        }
        if (!std::isfinite(s.diameter) || s.diameter < 0.0) {
            why << "segment " << s.id << ": the diameter must be a number of 0 or more";
            return why.str();
        }
        for (ALLine const& line : s.lines) {
            if (!Finite(line.start) || !Finite(line.end)) {
                why << "segment " << s.id << ": every coordinate must be a finite number";
                return why.str();
            }
        }
        if (!std::isfinite(LengthOf(s))) {
            why << "segment " << s.id << ": the sum of its line lengths is not a finite number";
            return why.str();
        }
    }
    return std::string();
}
