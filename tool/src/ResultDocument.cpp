#include "ResultDocument.h"

#include "DroppedSegments.h"
#include "Geometry2D.h"
#include "LayoutType.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <vector>

namespace krtool {

namespace {

using Json = nlohmann::ordered_json;

Json point(Point2 const& p)
{
    return Json::array({p.x, p.y});
}

Json point3(Point2 const& p)
{
    // The layout is planar: z is 0 in every result.
    return Json::array({p.x, p.y, 0.0});
}

Json idPair(std::pair<long, long> const& id)
{
    return Json::array({id.first, id.second});
}

char const* axisName(int axis)
{
    return axis == 2 ? "y" : axis == 1 ? "x" : "none";
}

}  // namespace

Json ResultDocument::build(LayoutResult const& result, QualityReport const& report,
                           std::string const& source)
{
    Json j;
    j["format"] = "krlayout-result";
    j["version"] = 1;
    j["document"] = result.documentName;
    j["source"] = source;
    j["units"] = result.units;
    j["units_source"] = result.unitsSource;

    Json options;
    options["layout_type"] = result.layoutType;
    options["layout_type_name"] = LayoutType::name(result.layoutType);
    options["mode"] = result.mode;
    options["grid"] = Json::array({result.gridX, result.gridY});
    options["relations"] = result.relations;
    options["fillets"] = result.fillets;
    options["feature"] = result.feature.empty() ? Json() : Json(result.feature);
    // As given with --clearance; null when the default applies (the quality report gives the
    // clearance measured against either way).
    options["clearance"] = result.clearanceGiven ? Json(result.clearance) : Json();
    j["options"] = options;

    j["status"] = result.status;
    j["status_text"] = result.statusText;
    j["laid_out"] = result.laidOut;
    if (!result.failedIds.empty() || result.status == 7 || result.status == 8) {
        j["check"] = {{"message", result.checkMessage}, {"segments", result.failedIds}};
    } else {
        j["check"] = Json();
    }
    Json messages = Json::array();
    for (auto const& [id, text] : result.messages)
        messages.push_back({{"segment", id}, {"text", text}});
    j["messages"] = messages;
    j["removed_segments"] = result.removedIds;
    Json dropped = Json::array();
    for (DroppedSegment const& d : result.dropped) {
        Json entry;
        entry["id"] = d.id;
        entry["reason"] = DroppedSegments::reasonCode(d.reason);
        // The multi-pin clean-up removes on purpose; anything else is a loss.
        entry["lost"] = d.reason != DroppedSegment::Reason::MultiPinCleanUp;
        entry["text"] = DroppedSegments::describe(d);
        if (d.reason == DroppedSegment::Reason::MultiPinCleanUp) {
            entry["kept_segment"] = d.keptId;
            entry["connector"] = d.connector;
        }
        dropped.push_back(entry);
    }
    j["dropped_segments"] = dropped;
    j["complete"] = result.laidOut && !DroppedSegments::anyLost(result);
    Json warnings = Json::array();
    for (RunWarning const& w : result.warnings) {
        Json entry;
        switch (w.kind) {
        case RunWarning::Kind::ComponentText:
            entry["kind"] = "component_text";
            // A component id is the id of the segment the component sits on.
            entry["component"] = w.component;
            entry["segment"] = w.component;
            entry["text"] = w.text;
            break;
        case RunWarning::Kind::Units:
            entry["kind"] = "units";
            entry["median_segment_length"] = w.medianLength;
            entry["units"] = result.units;
            break;
        }
        entry["message"] = w.message;
        warnings.push_back(entry);
    }
    j["warnings"] = warnings;

    // Sorted, to mark the failed segments in logarithmic time each.
    std::vector<long> failed = result.failedIds;
    std::sort(failed.begin(), failed.end());
    Json segments = Json::array();
    for (ResultSegment const& s : result.segments) {
        Json seg;
        seg["id"] = s.id;
        seg["length"] = s.length;
        seg["diameter"] = s.diameter;
        seg["failed"] = std::binary_search(failed.begin(), failed.end(), s.id);
        Json lines = Json::array();
        for (size_t i = 0; i < s.lines.size(); ++i) {
            ResultLine const& l = s.lines[i];
            Json line;
            line["index"] = i;
            line["start"] = point3(l.start);
            line["end"] = point3(l.end);
            line["length"] = Geometry2D::distance(l.start, l.end);
            line["axis"] = l.axis;
            line["axis_name"] = axisName(l.axis);
            line["line_id"] = idPair(l.lineId);
            line["relations"] = l.relations;
            line["drawn"] = {{"start", point(l.drawnStart)}, {"end", point(l.drawnEnd)}};
            lines.push_back(line);
        }
        seg["lines"] = lines;
        Json pids = Json::array();
        for (auto const& p : s.pointIds)
            pids.push_back(idPair(p));
        seg["point_ids"] = pids;
        Json fillets = Json::array();
        for (ResultFillet const& f : s.fillets) {
            fillets.push_back({{"line", f.line},
                               {"corner", point(f.corner)},
                               {"requested_radius", f.requestedRadius},
                               {"radius", f.radius},
                               {"center", point(f.center)},
                               {"tangent_points", Json::array({point(f.tangentPrev), point(f.tangentNext)})},
                               {"start_angle", f.startAngle},
                               {"end_angle", f.endAngle}});
        }
        seg["fillets"] = fillets;
        Json connectors = Json::array();
        for (ConnectorEnd const& c : s.connectors)
            connectors.push_back({{"name", c.name}, {"at", point(c.at)}});
        seg["connectors"] = connectors;
        Json input = Json::array();
        for (auto const& l : s.inputLines)
            input.push_back({{"start", point(l.first)}, {"end", point(l.second)}});
        seg["input_lines"] = input;
        segments.push_back(seg);
    }
    j["segments"] = segments;

    Json host;
    for (auto const& [name, count] : result.hostCounters)
        host[name] = count;
    j["host"] = host;
    j["quality"] = report.toJson();
    return j;
}

void ResultDocument::write(std::ostream& out, LayoutResult const& result, QualityReport const& report,
                           std::string const& source)
{
    // Non-finite numbers cannot appear in JSON; nlohmann writes them as null.
    out << build(result, report, source).dump(1) << "\n";
}

}  // namespace krtool
