#include "DroppedSegments.h"

#include "ConnectorPlacer.h"
#include "Geometry2D.h"

#include <cmath>
#include <set>

namespace krtool {

namespace {

using Reason = DroppedSegment::Reason;

bool near(Point2 const& a, Point2 const& b)
{
    // The way points the layout builds from the input merge within its tolerance.
    return std::fabs(a.x - b.x) <= Geometry2D::kTolerance &&
           std::fabs(a.y - b.y) <= Geometry2D::kTolerance;
}

bool sameEnds(std::vector<Point2> const& a, std::vector<Point2> const& b)
{
    if (a.size() != 2 || b.size() != 2)
        return false;
    return (near(a[0], b[0]) && near(a[1], b[1])) || (near(a[0], b[1]) && near(a[1], b[0]));
}

}  // namespace

std::vector<DroppedSegment> DroppedSegments::classify(std::vector<ResultSegment> const& missing,
                                                      std::vector<ResultSegment> const& kept,
                                                      std::map<long, std::string> const& componentMap)
{
    // Connector name -> the segment ids of its entries, one per entry as the run records them.
    std::map<std::string, std::vector<long>> entries;
    std::map<long, std::set<std::string>> connectorsOf;
    for (auto const& [id, text] : componentMap) {
        for (auto const& [connector, pin] : ConnectorPlacer::parse(text)) {
            (void)pin;
            entries[connector].push_back(id);
            connectorsOf[id].insert(connector);
        }
    }
    std::map<long, ResultSegment const*> keptById;
    for (ResultSegment const& s : kept)
        keptById.emplace(s.id, &s);

    std::vector<DroppedSegment> out;
    for (ResultSegment const& m : missing) {
        DroppedSegment d;
        d.id = m.id;
        d.reason = Reason::FinalCheck;
        auto own = connectorsOf.find(m.id);
        std::vector<Point2> const ends = Geometry2D::chainEnds(m.inputLines);
        if (own != connectorsOf.end() && ends.size() == 2) {
            for (std::string const& connector : own->second) {
                std::vector<long> const& ids = entries[connector];
                if (ids.size() < 2)
                    continue;
                for (long other : ids) {
                    auto k = keptById.find(other);
                    if (other == m.id || k == keptById.end())
                        continue;
                    if (sameEnds(ends, Geometry2D::chainEnds(k->second->inputLines))) {
                        d.reason = Reason::MultiPinCleanUp;
                        d.keptId = other;
                        d.connector = connector;
                        break;
                    }
                }
                if (d.reason == Reason::MultiPinCleanUp)
                    break;
            }
        }
        out.push_back(d);
    }
    return out;
}

bool DroppedSegments::anyLost(LayoutResult const& result)
{
    return count(result, Reason::FinalCheck) > 0;
}

size_t DroppedSegments::count(LayoutResult const& result, DroppedSegment::Reason reason)
{
    size_t n = 0;
    for (DroppedSegment const& d : result.dropped) {
        if (d.reason == reason)
            ++n;
    }
    return n;
}

std::string DroppedSegments::reasonCode(DroppedSegment::Reason reason)
{
    return reason == Reason::MultiPinCleanUp ? "multi_pin_clean_up" : "final_check";
}

std::string DroppedSegments::reasonText(DroppedSegment::Reason reason)
{
    if (reason == Reason::MultiPinCleanUp)
        return "removed by the multi-pin clean-up (each ran between the same two points as a "
               "kept segment to the same connector)";
    return "dropped by the layout's final check (a laid-out line ended on the grid node it "
           "started from)";
}

std::string DroppedSegments::describe(DroppedSegment const& d)
{
    if (d.reason == Reason::MultiPinCleanUp)
        return "removed by the multi-pin clean-up: it runs between the same two points as "
               "segment " + std::to_string(d.keptId) + " to connector " + d.connector +
               ", and only the longest of such segments is kept";
    return "dropped by the layout's final check: a laid-out line of the segment ended on the "
           "grid node it started from, so the result lacks the segment";
}

std::string DroppedSegments::idList(LayoutResult const& result, DroppedSegment::Reason reason,
                                    size_t limit)
{
    std::string text;
    size_t n = 0;
    for (DroppedSegment const& d : result.dropped) {
        if (d.reason != reason)
            continue;
        if (limit != 0 && n == limit) {
            text += ", ...";
            break;
        }
        if (n++ > 0)
            text += ", ";
        text += std::to_string(d.id);
        if (d.reason == Reason::MultiPinCleanUp)
            text += " (kept: " + std::to_string(d.keptId) + ")";
    }
    return text;
}

}  // namespace krtool
