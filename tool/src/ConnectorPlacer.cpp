#include "ConnectorPlacer.h"

#include "Geometry2D.h"

#include <krlayout/api/KrComponentText.h>
#include <krlayout/api/KrUtf8Codec.h>

#include <cmath>

namespace krtool {

namespace {

using Key = ConnectorPlacer::PointKey;

Key keyOf(Point2 const& p)
{
    return ConnectorPlacer::pointKey(p);
}

}  // namespace

ConnectorPlacer::PointKey ConnectorPlacer::pointKey(Point2 const& p)
{
    // A missed match close to a cell boundary only moves a name to the other end.
    double const step = 10.0 * Geometry2D::kTolerance;
    auto cell = [step](double v) {
        double const c = std::round(v / step);
        // Far-out or non-finite coordinates share the outermost cells.
        if (!(c > -4e18))
            return -4000000000000000000LL;
        if (!(c < 4e18))
            return 4000000000000000000LL;
        return static_cast<long long>(c);
    };
    return {cell(p.x), cell(p.y)};
}

std::vector<std::pair<std::string, std::string>> ConnectorPlacer::parse(std::string const& text)
{
    std::vector<std::pair<std::wstring, std::wstring>> named;
    KrComponentText::Parse(KrUtf8Codec::Decode(text), named);
    std::vector<std::pair<std::string, std::string>> out;
    out.reserve(named.size());
    for (auto const& [connector, pins] : named)
        out.emplace_back(KrUtf8Codec::Encode(connector), KrUtf8Codec::Encode(pins));
    return out;
}

std::string ConnectorPlacer::displayName(std::string const& connector, std::string const& pin)
{
    return pin.empty() ? connector : connector + " (" + pin + ")";
}

void ConnectorPlacer::place(LayoutResult& result, std::map<long, std::string> const& componentMap)
{
    // Line ends of every segment, to tell free ends from branch points.
    std::vector<std::vector<std::pair<Point2, Point2>>> lines(result.segments.size());
    std::map<Key, std::vector<size_t>> touching;
    for (size_t i = 0; i < result.segments.size(); ++i) {
        ResultSegment const& s = result.segments[i];
        if (result.laidOut) {
            for (ResultLine const& l : s.lines)
                lines[i].push_back({l.start, l.end});
        } else {
            lines[i] = s.inputLines;
        }
        for (auto const& l : lines[i]) {
            for (Point2 const& p : {l.first, l.second}) {
                auto& v = touching[keyOf(p)];
                if (v.empty() || v.back() != i)
                    v.push_back(i);
            }
        }
    }
    for (size_t i = 0; i < result.segments.size(); ++i) {
        ResultSegment& s = result.segments[i];
        s.connectors.clear();
        s.connectorNames.clear();
        auto it = componentMap.find(s.id);
        if (it == componentMap.end())
            continue;
        auto const named = parse(it->second);
        for (auto const& [connector, pin] : named)
            s.connectorNames.push_back(displayName(connector, pin));
        std::vector<Point2> const ends = Geometry2D::chainEnds(lines[i]);
        if (ends.empty() || named.empty())
            continue;
        std::vector<Point2> freeEnds;
        for (Point2 const& e : ends) {
            auto const t = touching.find(keyOf(e));
            // The lists hold each segment once, in ascending order, so an end is free when its
            // list holds this segment only: a test in constant time, also at a hub where
            // thousands of segments meet.
            bool alone = true;
            if (t != touching.end())
                alone = t->second.size() == 1 && t->second.front() == i;
            if (alone)
                freeEnds.push_back(e);
        }
        if (freeEnds.empty())
            freeEnds.push_back(ends.front());
        if (named.size() >= 2 && freeEnds.size() >= 2) {
            s.connectors.push_back({s.connectorNames[0], freeEnds[0]});
            s.connectors.push_back({s.connectorNames[1], freeEnds[1]});
        } else {
            std::string joined;
            for (std::string const& n : s.connectorNames)
                joined += (joined.empty() ? "" : ", ") + n;
            s.connectors.push_back({joined, freeEnds.front()});
        }
    }
}

}  // namespace krtool
