#include "Geometry2D.h"

#include <krlayout/model/KrLineChain.h>

#include <algorithm>
#include <cmath>

namespace krtool {

void Extent::add(Point2 const& p)
{
    if (empty) {
        minX = maxX = p.x;
        minY = maxY = p.y;
        empty = false;
        return;
    }
    minX = std::min(minX, p.x);
    minY = std::min(minY, p.y);
    maxX = std::max(maxX, p.x);
    maxY = std::max(maxY, p.y);
}

double Geometry2D::distance(Point2 const& a, Point2 const& b)
{
    return std::hypot(b.x - a.x, b.y - a.y);
}

bool Geometry2D::samePoint(Point2 const& a, Point2 const& b)
{
    return std::fabs(a.x - b.x) < kTolerance && std::fabs(a.y - b.y) < kTolerance;
}

double Geometry2D::cross(Point2 const& a, Point2 const& b, Point2 const& c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

bool Geometry2D::properCrossing(Point2 const& a, Point2 const& b, Point2 const& c, Point2 const& d,
                                Point2& at)
{
    double const lab = distance(a, b);
    double const lcd = distance(c, d);
    if (lab < kTolerance || lcd < kTolerance)
        return false;
    // Distances of each end from the other line, signed; a proper crossing puts the two ends of
    // each line strictly on opposite sides of the other one.
    double const c1 = cross(a, b, c) / lab;
    double const c2 = cross(a, b, d) / lab;
    double const c3 = cross(c, d, a) / lcd;
    double const c4 = cross(c, d, b) / lcd;
    auto opposite = [](double p, double q) {
        return (p > kTolerance && q < -kTolerance) || (p < -kTolerance && q > kTolerance);
    };
    if (!opposite(c1, c2) || !opposite(c3, c4))
        return false;
    double const t = c3 / (c3 - c4);
    at.x = a.x + t * (b.x - a.x);
    at.y = a.y + t * (b.y - a.y);
    return true;
}

double Geometry2D::collinearOverlap(Point2 const& a, Point2 const& b, Point2 const& c,
                                    Point2 const& d)
{
    double const lab = distance(a, b);
    if (lab < kTolerance || distance(c, d) < kTolerance)
        return 0.0;
    if (std::fabs(cross(a, b, c)) / lab > kTolerance || std::fabs(cross(a, b, d)) / lab > kTolerance)
        return 0.0;
    // Project c and d on a->b and intersect the parameter ranges.
    double const ux = (b.x - a.x) / lab;
    double const uy = (b.y - a.y) / lab;
    double const tc = (c.x - a.x) * ux + (c.y - a.y) * uy;
    double const td = (d.x - a.x) * ux + (d.y - a.y) * uy;
    double const lo = std::max(0.0, std::min(tc, td));
    double const hi = std::min(lab, std::max(tc, td));
    double const shared = hi - lo;
    return shared > kTolerance ? shared : 0.0;
}

double Geometry2D::pointToLine(Point2 const& p, Point2 const& a, Point2 const& b)
{
    double const dx = b.x - a.x;
    double const dy = b.y - a.y;
    double const lengthSquared = dx * dx + dy * dy;
    if (!(lengthSquared > 0.0))
        return distance(p, a);
    double const t = std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / lengthSquared, 0.0, 1.0);
    return distance(p, {a.x + t * dx, a.y + t * dy});
}

double Geometry2D::lineDistance(Point2 const& a, Point2 const& b, Point2 const& c, Point2 const& d)
{
    // Lines whose ends lie strictly on opposite sides of each other cross; otherwise the least
    // distance is reached at one of the four ends (also when they touch or are collinear).
    double const c1 = cross(a, b, c);
    double const c2 = cross(a, b, d);
    double const c3 = cross(c, d, a);
    double const c4 = cross(c, d, b);
    if (((c1 > 0.0 && c2 < 0.0) || (c1 < 0.0 && c2 > 0.0)) &&
        ((c3 > 0.0 && c4 < 0.0) || (c3 < 0.0 && c4 > 0.0)))
        return 0.0;
    return std::min(std::min(pointToLine(a, c, d), pointToLine(b, c, d)),
                    std::min(pointToLine(c, a, b), pointToLine(d, a, b)));
}

Extent Geometry2D::extentOf(LayoutResult const& result, bool laidOut)
{
    Extent e;
    for (ResultSegment const& s : result.segments) {
        if (laidOut) {
            for (ResultLine const& l : s.lines) {
                e.add(l.start);
                e.add(l.end);
            }
        } else {
            for (auto const& l : s.inputLines) {
                e.add(l.first);
                e.add(l.second);
            }
            // Arcs and curves reach beyond their end points.
            for (auto const& shape : s.inputShapes) {
                for (Point2 const& p : shape)
                    e.add(p);
            }
        }
    }
    return e;
}

ALPoint Geometry2D::toLibrary(Point2 const& p)
{
    return ALPoint(p.x, p.y, 0.0);
}

ALLine Geometry2D::toLibrary(std::pair<Point2, Point2> const& line)
{
    ALLine out;
    out.start = toLibrary(line.first);
    out.end = toLibrary(line.second);
    return out;
}

Point2 Geometry2D::fromLibrary(ALPoint const& p)
{
    return {p.x, p.y};
}

std::vector<Point2> Geometry2D::chainEnds(std::vector<std::pair<Point2, Point2>> const& lines)
{
    std::vector<ALLine> chain;
    chain.reserve(lines.size());
    for (auto const& l : lines)
        chain.push_back(toLibrary(l));
    std::vector<ALPoint> ends;
    KrLineChain::FindEnds(chain, ends);
    std::vector<Point2> out;
    out.reserve(ends.size());
    for (ALPoint const& p : ends)
        out.push_back(fromLibrary(p));
    return out;
}

}  // namespace krtool
