#include <krlayout/model/KrSegmentGeometry.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Whether the ends of each of two segments lie strictly on opposite sides of the other's line,
// from the four orientations: d1, d2 of the first segment's ends against the second, d3, d4 of
// the second's against the first.
bool Opposite(double d1, double d2, double d3, double d4)
{
    return ((d1 > 0 && d2 < 0) || (d1 < 0 && d2 > 0)) && ((d3 > 0 && d4 < 0) || (d3 < 0 && d4 > 0));
}

}  // namespace

double KrSegmentGeometry::Cross(Point const& o, Point const& a, Point const& b)
{
    return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

double KrSegmentGeometry::Distance(Point const& a, Point const& b)
{
    return std::hypot(b.x - a.x, b.y - a.y);
}

bool KrSegmentGeometry::InSpan(Point const& p, Point const& a, Point const& b)
{
    return std::min(a.x, b.x) <= p.x && p.x <= std::max(a.x, b.x) && std::min(a.y, b.y) <= p.y &&
           p.y <= std::max(a.y, b.y);
}

double KrSegmentGeometry::PointSegmentDistance(Point const& p, Point const& a, Point const& b)
{
    double const dx = b.x - a.x;
    double const dy = b.y - a.y;
    double const lengthSquared = dx * dx + dy * dy;
    if (!(lengthSquared > 0.0)) {
        return Distance(p, a);
    }
    // The foot of the perpendicular from p, clamped to the segment.
    double const t = std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / lengthSquared, 0.0, 1.0);
    return Distance(p, Point{a.x + t * dx, a.y + t * dy});
}

bool KrSegmentGeometry::Intersect(Point const& a, Point const& b, Point const& c, Point const& d)
{
    double const d1 = Cross(c, d, a);
    double const d2 = Cross(c, d, b);
    double const d3 = Cross(a, b, c);
    double const d4 = Cross(a, b, d);
    if (Opposite(d1, d2, d3, d4)) {
        return true;
    }
    // An end on the other segment's line and within its span lies on it.
    return (d1 == 0 && InSpan(a, c, d)) || (d2 == 0 && InSpan(b, c, d)) || (d3 == 0 && InSpan(c, a, b)) ||
           (d4 == 0 && InSpan(d, a, b));
}

double KrSegmentGeometry::SegmentDistance(Point const& a, Point const& b, Point const& c, Point const& d)
{
    // Segments that cross are 0 apart; otherwise (also when they touch or are collinear) the
    // least distance is reached at one of the four ends.
    if (Opposite(Cross(c, d, a), Cross(c, d, b), Cross(a, b, c), Cross(a, b, d))) {
        return 0.0;
    }
    return std::min(std::min(PointSegmentDistance(a, c, d), PointSegmentDistance(b, c, d)),
                    std::min(PointSegmentDistance(c, a, b), PointSegmentDistance(d, a, b)));
}

bool KrSegmentGeometry::ProperCrossing(Point const& a, Point const& b, Point const& c, Point const& d,
                                       double margin, Point& at)
{
    double const lab = Distance(a, b);
    double const lcd = Distance(c, d);
    if (lab < margin || lcd < margin) {
        return false;
    }
    // Signed distances of each end from the other line; a proper crossing puts the two ends of
    // each segment on opposite sides of the other one, beyond the margin.
    double const c1 = Cross(a, b, c) / lab;
    double const c2 = Cross(a, b, d) / lab;
    double const c3 = Cross(c, d, a) / lcd;
    double const c4 = Cross(c, d, b) / lcd;
    auto opposite = [margin](double p, double q) { return (p > margin && q < -margin) || (p < -margin && q > margin); };
    if (!opposite(c1, c2) || !opposite(c3, c4)) {
        return false;
    }
    double const t = c3 / (c3 - c4);
    at.x = a.x + t * (b.x - a.x);
    at.y = a.y + t * (b.y - a.y);
    return true;
}

double KrSegmentGeometry::CollinearOverlap(Point const& a, Point const& b, Point const& c, Point const& d,
                                           double margin)
{
    double const lab = Distance(a, b);
    if (lab < margin || Distance(c, d) < margin || !(lab > 0.0)) {
        return 0.0;
    }
    if (std::fabs(Cross(a, b, c)) / lab > margin || std::fabs(Cross(a, b, d)) / lab > margin) {
        return 0.0;
    }
    // Project c and d on a -> b and intersect the parameter ranges.
    double const ux = (b.x - a.x) / lab;
    double const uy = (b.y - a.y) / lab;
    double const tc = (c.x - a.x) * ux + (c.y - a.y) * uy;
    double const td = (d.x - a.x) * ux + (d.y - a.y) * uy;
    double const lo = std::max(0.0, std::min(tc, td));
    double const hi = std::min(lab, std::max(tc, td));
    double const shared = hi - lo;
    return shared > margin ? shared : 0.0;
}

double KrSegmentGeometry::PointBoxDistance(Point const& p, Box const& box)
{
    double const dx = std::max({0.0, box.x0 - p.x, p.x - box.x1});
    double const dy = std::max({0.0, box.y0 - p.y, p.y - box.y1});
    return std::hypot(dx, dy);
}

double KrSegmentGeometry::SegmentBoxDistance(Point const& a, Point const& b, Box const& box)
{
    if (PointBoxDistance(a, box) == 0.0 || PointBoxDistance(b, box) == 0.0) {
        return 0.0;
    }
    Point const corner[4] = {{box.x0, box.y0}, {box.x1, box.y0}, {box.x1, box.y1}, {box.x0, box.y1}};
    double best = std::numeric_limits<double>::infinity();
    for (int i = 0; i < 4; ++i) {
        if (Intersect(a, b, corner[i], corner[(i + 1) % 4])) {
            return 0.0;
        }
        best = std::min(best, PointSegmentDistance(corner[i], a, b));
    }
    return std::min({best, PointBoxDistance(a, box), PointBoxDistance(b, box)});
}
