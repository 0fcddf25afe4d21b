#include "FilletGeometry.h"

#include "Geometry2D.h"

#include <algorithm>
#include <cmath>

namespace krtool {

bool FilletGeometry::compute(Point2 const& prevStart, Point2 const& corner, Point2 const& nextEnd,
                             double radius, ResultFillet& out)
{
    double const l1 = Geometry2D::distance(corner, prevStart);
    double const l2 = Geometry2D::distance(corner, nextEnd);
    if (!(radius > 0.0) || l1 < Geometry2D::kTolerance || l2 < Geometry2D::kTolerance)
        return false;
    double const u1x = (prevStart.x - corner.x) / l1;
    double const u1y = (prevStart.y - corner.y) / l1;
    double const u2x = (nextEnd.x - corner.x) / l2;
    double const u2y = (nextEnd.y - corner.y) / l2;
    double const cosPhi = std::clamp(u1x * u2x + u1y * u2y, -1.0, 1.0);
    double const phi = std::acos(cosPhi);          // angle between the two lines at the corner
    if (phi > Geometry2D::kPi - 1e-6 || phi < 1e-6)
        return false;
    double const half = phi / 2.0;
    double r = radius;
    double t = r / std::tan(half);                 // distance from the corner to a tangent point
    double const maxT = 0.5 * std::min(l1, l2);
    if (t > maxT) {
        t = maxT;
        r = t * std::tan(half);
    }
    if (r < Geometry2D::kTolerance)
        return false;
    double bx = u1x + u2x;
    double by = u1y + u2y;
    double const bl = std::hypot(bx, by);
    bx /= bl;
    by /= bl;
    double const toCenter = r / std::sin(half);

    out.corner = corner;
    out.requestedRadius = radius;
    out.radius = r;
    out.tangentPrev = {corner.x + u1x * t, corner.y + u1y * t};
    out.tangentNext = {corner.x + u2x * t, corner.y + u2y * t};
    out.center = {corner.x + bx * toCenter, corner.y + by * toCenter};
    double const a1 = std::atan2(out.tangentPrev.y - out.center.y, out.tangentPrev.x - out.center.x);
    double const a2 = std::atan2(out.tangentNext.y - out.center.y, out.tangentNext.x - out.center.x);
    // Keep the sweep counter-clockwise from start to end (the minor arc).
    if (Geometry2D::cross(out.center, out.tangentPrev, out.tangentNext) > 0.0) {
        out.startAngle = a1;
        out.endAngle = a2;
    } else {
        out.startAngle = a2;
        out.endAngle = a1;
    }
    return true;
}

void FilletGeometry::apply(ResultSegment& segment, std::vector<std::pair<int, double>> const& joints)
{
    for (auto const& [i, radius] : joints) {
        if (i < 1 || i >= static_cast<int>(segment.lines.size()))
            continue;
        ResultLine& prev = segment.lines[static_cast<size_t>(i - 1)];
        ResultLine& next = segment.lines[static_cast<size_t>(i)];
        // The host fillets the corner where the two lines meet; skip joints that do not meet.
        if (!Geometry2D::samePoint(prev.end, next.start))
            continue;
        ResultFillet f;
        if (!compute(prev.start, next.start, next.end, radius, f))
            continue;
        f.line = i;
        prev.drawnEnd = f.tangentPrev;
        next.drawnStart = f.tangentNext;
        segment.fillets.push_back(f);
    }
}

}  // namespace krtool
