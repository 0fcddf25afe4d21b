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
    return KrSegmentGeometry::Distance(toPlane(a), toPlane(b));
}

double Geometry2D::cross(Point2 const& a, Point2 const& b, Point2 const& c)
{
    return KrSegmentGeometry::Cross(toPlane(a), toPlane(b), toPlane(c));
}

bool Geometry2D::samePoint(Point2 const& a, Point2 const& b)
{
    return std::fabs(a.x - b.x) < kTolerance && std::fabs(a.y - b.y) < kTolerance;
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

KrSegmentGeometry::Point Geometry2D::toPlane(Point2 const& p)
{
    return {p.x, p.y};
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
