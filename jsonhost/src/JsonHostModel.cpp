#include "JsonHostModel.h"

#include <cmath>

bool JsonHostModel::Entity::hasCurve() const {
    return kind == "line" || kind == "arc" || !points.empty();
}

JsonHostModel::Vec3 JsonHostModel::Entity::curveStart() const {
    if (kind == "line" || kind == "arc") return start;
    return points.empty() ? Vec3{} : points.front();
}

JsonHostModel::Vec3 JsonHostModel::Entity::curveEnd() const {
    if (kind == "line" || kind == "arc") return end;
    return points.empty() ? Vec3{} : points.back();
}

std::vector<std::string> const& JsonHostModel::UnitNames() {
    static std::vector<std::string> const names = {"m", "cm", "mm", "in", "ft"};
    return names;
}

double JsonHostModel::MetresPerUnit(std::string const& units) {
    if (units == "m") return 1.0;
    if (units == "cm") return 0.01;
    if (units == "mm") return 0.001;
    if (units == "in") return 0.0254;
    if (units == "ft") return 0.3048;
    return 0.0;
}

std::map<long, std::wstring> JsonHostModel::componentMap() const {
    std::map<long, std::wstring> map;
    for (Component const& component : components) map.emplace(component.id, component.text);
    return map;
}

int JsonHostModel::segmentIndex(int id) const {
    for (std::size_t i = 0; i < segments.size(); ++i) {
        if (segments[i].id == id) return static_cast<int>(i);
    }
    return -1;
}

double JsonHostModel::Distance(Vec3 const& a, Vec3 const& b) {
    // Scaled so that large coordinates do not overflow in the squares.
    double const dx = b[0] - a[0];
    double const dy = b[1] - a[1];
    double const dz = b[2] - a[2];
    return std::hypot(std::hypot(dx, dy), dz);
}

double JsonHostModel::ArcLength(Vec3 const& start, Vec3 const& end, Vec3 const& center, bool clockwise) {
    double const twoPi = 2.0 * std::acos(-1.0);
    double const radius = Distance(center, start);
    double const a0 = std::atan2(start[1] - center[1], start[0] - center[0]);
    double const a1 = std::atan2(end[1] - center[1], end[0] - center[0]);
    double sweep = clockwise ? a0 - a1 : a1 - a0;
    while (sweep < 0.0) sweep += twoPi;
    while (sweep >= twoPi) sweep -= twoPi;
    if (sweep == 0.0) sweep = twoPi;
    return radius * sweep;
}

double JsonHostModel::PolylineLength(std::vector<Vec3> const& points) {
    double length = 0.0;
    for (std::size_t i = 1; i < points.size(); ++i) length += Distance(points[i - 1], points[i]);
    return length;
}
