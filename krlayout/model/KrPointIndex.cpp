#include <krlayout/model/KrPointIndex.h>

#include <krlayout/model/KrGeoUtility.h>

#include <cmath>
#include <functional>

namespace {

bool IsFinite(ALPoint const& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

// + 0.0 folds -0.0 into 0.0. Far out, neighbouring cells may coincide, which is harmless: points
// that far out are equal only when identical.
std::pair<double, double> CellOf(ALPoint const& p)
{
    double const size = 2.0 * GEO_TOLERANCE;
    return {std::floor(p.x / size) + 0.0, std::floor(p.y / size) + 0.0};
}

}  // namespace

std::size_t KrPointIndex::CellHash::operator()(std::pair<double, double> const& cell) const
{
    return std::hash<double>()(cell.first) * 0x9E3779B97F4A7C15ULL ^ std::hash<double>()(cell.second);
}

KrPointIndex::KrPointIndex() = default;

KrPointIndex::~KrPointIndex() = default;

std::size_t KrPointIndex::NumberOf(ALPoint const& p)
{
    std::size_t const fresh = points.size();
    if (!IsFinite(p)) {
        points.push_back(p);
        return fresh;
    }
    std::pair<double, double> const cell = CellOf(p);
    std::size_t found = fresh;
    for (double dx : {-1.0, 0.0, 1.0}) {
        for (double dy : {-1.0, 0.0, 1.0}) {
            auto it = cells.find({cell.first + dx, cell.second + dy});
            if (it == cells.end()) {
                continue;
            }
            for (std::size_t n : it->second) {
                if (n < found && points[n] == p) {
                    found = n;
                }
            }
        }
    }
    if (found == fresh) {
        points.push_back(p);
        cells[cell].push_back(fresh);
    }
    return found;
}

ALPoint const& KrPointIndex::PointOf(std::size_t number) const
{
    return points[number];
}

std::size_t KrPointIndex::Count() const
{
    return points.size();
}
