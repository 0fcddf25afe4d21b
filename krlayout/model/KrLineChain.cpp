#include <krlayout/model/KrLineChain.h>

#include <krlayout/model/KrGeoUtility.h>

#include <cmath>
#include <cstddef>
#include <map>
#include <utility>

namespace {

bool IsFinite(ALPoint const& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

// Cells twice the tolerance wide: two points equal within the tolerance lie in the same or in
// neighbouring cells. + 0.0 folds -0.0 into 0.0.
std::pair<double, double> CellOf(ALPoint const& p)
{
    double const size = 2.0 * GEO_TOLERANCE;
    return {std::floor(p.x / size) + 0.0, std::floor(p.y / size) + 0.0};
}

}  // namespace

int KrLineChain::FindEnds(std::vector<ALLine> const& lines, std::vector<ALPoint>& ends)
{
    if (lines.empty()) {
        return 1;
    }
    // The distinct points in the order they first appear, and how many line ends reach each.
    std::vector<ALPoint> points;
    std::vector<std::size_t> uses;
    std::map<std::pair<double, double>, std::vector<std::size_t>> cells;
    auto use = [&](ALPoint const& p) {
        std::size_t found = points.size();
        if (IsFinite(p)) {
            std::pair<double, double> const cell = CellOf(p);
            for (double dx : {-1.0, 0.0, 1.0}) {
                for (double dy : {-1.0, 0.0, 1.0}) {
                    auto it = cells.find({cell.first + dx, cell.second + dy});
                    if (it == cells.end()) {
                        continue;
                    }
                    for (std::size_t i : it->second) {
                        if (i < found && points[i] == p) {
                            found = i;
                        }
                    }
                }
            }
            if (found == points.size()) {
                cells[cell].push_back(found);
            }
        }
        if (found == points.size()) {
            points.push_back(p);
            uses.push_back(0);
        }
        ++uses[found];
    };
    for (ALLine const& l : lines) {
        use(l.start);
        use(l.end);
    }
    std::size_t const before = ends.size();
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (uses[i] % 2 == 1) {
            ends.push_back(points[i]);
        }
    }
    if (ends.size() == before) {
        ends.push_back(lines.front().start);
        ends.push_back(lines.back().end);
    }
    return 0;
}
