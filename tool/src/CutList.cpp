#include "CutList.h"

#include "ConnectorPlacer.h"
#include "Geometry2D.h"

#include <algorithm>
#include <map>

namespace krtool {

namespace {

using Key = ConnectorPlacer::PointKey;

struct Source {
    ResultSegment const* segment;
    std::string status;
};

std::string joined(std::vector<std::string> const& parts)
{
    std::string text;
    for (std::string const& p : parts)
        text += (text.empty() ? "" : "; ") + p;
    return text;
}

}  // namespace

std::string CutList::kindText(End::Kind kind)
{
    switch (kind) {
    case End::Kind::Connector:
        return "connector";
    case End::Kind::BranchPoint:
        return "branch point";
    case End::Kind::FreeEnd:
        return "free end";
    case End::Kind::None:
        break;
    }
    return std::string();
}

CutList CutList::build(LayoutResult const& result)
{
    std::vector<Source> sources;
    std::string const notLaidOut = "not laid out: " + result.statusText;
    for (ResultSegment const& s : result.segments)
        sources.push_back({&s, result.laidOut ? "laid out" : notLaidOut});
    for (size_t i = 0; i < result.missing.size() && i < result.dropped.size(); ++i) {
        bool const cleanUp = result.dropped[i].reason == DroppedSegment::Reason::MultiPinCleanUp;
        sources.push_back({&result.missing[i],
                           cleanUp ? "removed by the multi-pin clean-up" : "lost by the layout"});
    }
    std::stable_sort(sources.begin(), sources.end(), [](Source const& a, Source const& b) {
        return a.segment->id < b.segment->id;
    });

    // The segments whose sketch lines end at each point, each segment once.
    std::map<Key, std::vector<long>> touching;
    for (Source const& src : sources) {
        for (auto const& l : src.segment->inputLines) {
            for (Point2 const& p : {l.first, l.second}) {
                // The rows come by id with each segment's lines together, so a list holds each
                // segment once, ascending, when only its last entry is compared.
                std::vector<long>& ids = touching[ConnectorPlacer::pointKey(p)];
                if (ids.empty() || ids.back() != src.segment->id)
                    ids.push_back(src.segment->id);
            }
        }
    }

    CutList list;
    std::map<Key, int> branchPoints;
    std::map<std::string, size_t> connectorIndex;
    for (Source const& src : sources) {
        ResultSegment const& s = *src.segment;
        Row row;
        row.id = s.id;
        row.status = src.status;
        row.length = s.length;
        row.diameter = s.diameter;

        std::vector<Point2> const ends = Geometry2D::chainEnds(s.inputLines);
        Key keys[2];
        size_t const endCount = std::min<size_t>(ends.size(), 2);
        std::vector<size_t> freeEnds;
        for (size_t e = 0; e < endCount; ++e) {
            keys[e] = ConnectorPlacer::pointKey(ends[e]);
            for (long other : touching[keys[e]]) {
                if (other != s.id)
                    row.ends[e].meets.push_back(other);
            }
            if (row.ends[e].meets.empty())
                freeEnds.push_back(e);
        }

        // Connectors go where the drawings put them: two named connectors to two free ends, one
        // each; otherwise all of them to the first free end, or to end 1 when neither is free.
        std::vector<std::pair<std::string, std::string>> named;
        auto const text = result.componentTexts.find(s.id);
        if (text != result.componentTexts.end())
            named = ConnectorPlacer::parse(text->second);
        if (endCount > 0 && !named.empty()) {
            if (freeEnds.empty())
                freeEnds.push_back(0);
            std::vector<std::string> names[2];
            std::vector<std::string> pins[2];
            for (size_t k = 0; k < named.size(); ++k) {
                size_t const e = named.size() >= 2 && freeEnds.size() >= 2 && k < 2 ? freeEnds[k]
                                                                                    : freeEnds[0];
                names[e].push_back(named[k].first);
                pins[e].push_back(named[k].second);
            }
            for (size_t e = 0; e < endCount; ++e) {
                if (names[e].empty())
                    continue;
                row.ends[e].kind = End::Kind::Connector;
                row.ends[e].name = joined(names[e]);
                row.ends[e].pins = joined(pins[e]);
            }
        }
        for (size_t e = 0; e < endCount; ++e) {
            End& end = row.ends[e];
            if (end.kind == End::Kind::Connector)
                continue;
            if (end.meets.empty()) {
                end.kind = End::Kind::FreeEnd;
                continue;
            }
            end.kind = End::Kind::BranchPoint;
            auto const bp = branchPoints.emplace(keys[e], static_cast<int>(branchPoints.size()) + 1);
            end.name = "BP" + std::to_string(bp.first->second);
        }

        for (auto const& [connector, pin] : named) {
            auto const at = connectorIndex.emplace(connector, list.connectors.size());
            if (at.second)
                list.connectors.push_back({connector, {}});
            list.connectors[at.first->second].entries.push_back({s.id, pin});
        }
        list.rows.push_back(std::move(row));
    }
    return list;
}

}  // namespace krtool
