#include "LayoutSession.h"

#include "ConnectorPlacer.h"
#include "DroppedSegments.h"
#include "FilletGeometry.h"
#include "Geometry2D.h"
#include "LayoutType.h"

#include <JsonHostDocument.h>
#include <krlayout/api/KrAutoLayout.h>
#include <krlayout/api/KrFormboardLayoutRun.h>
#include <krlayout/api/KrLayoutInput.h>
#include <krlayout/api/KrLayoutResult.h>
#include <krlayout/api/KrPlainLayoutRun.h>
#include <krlayout/api/KrUtf8Codec.h>
#include <krlayout/host/IHostApplication.h>
#include <krlayout/host/IHostSketch.h>
#include <krlayout/host/KrHostInterfaceId.h>
#include <krlayout/sketch/IRoutingSketch.h>

#include <algorithm>
#include <utility>
#include <cmath>
#include <cstdio>
#include <set>

namespace krtool {

namespace {

Point2 flat(JsonHostModel::Vec3 const& v)
{
    return {v[0], v[1]};
}

// The entity as a polyline for drawing: arcs are sampled along their sweep.
std::vector<Point2> shapeOf(JsonHostModel::Entity const& e)
{
    std::vector<Point2> pts;
    if (!e.hasCurve())
        return pts;
    if (e.kindCode == KR_ENTITY_ARC) {
        double const r = std::hypot(e.start[0] - e.center[0], e.start[1] - e.center[1]);
        double const a0 = std::atan2(e.start[1] - e.center[1], e.start[0] - e.center[0]);
        double const a1 = std::atan2(e.end[1] - e.center[1], e.end[0] - e.center[0]);
        double sweep = e.clockwise ? a0 - a1 : a1 - a0;
        double const twoPi = 2.0 * Geometry2D::kPi;
        while (sweep < 0.0)
            sweep += twoPi;
        while (sweep >= twoPi)
            sweep -= twoPi;
        if (sweep == 0.0)
            sweep = twoPi;
        int const n = std::max(4, static_cast<int>(std::ceil(sweep / (twoPi / 48.0))));
        for (int i = 0; i <= n; ++i) {
            double const a = a0 + (e.clockwise ? -1.0 : 1.0) * sweep * i / n;
            pts.push_back({e.center[0] + r * std::cos(a), e.center[1] + r * std::sin(a)});
        }
        return pts;
    }
    if (e.kindCode == KR_ENTITY_LINE) {
        pts.push_back(flat(e.start));
        pts.push_back(flat(e.end));
        return pts;
    }
    for (JsonHostModel::Vec3 const& p : e.points)
        pts.push_back(flat(p));
    return pts;
}

// The library's axis code of a line: 2 along y (x tested first), 1 along x, 0 neither.
int axisCode(Point2 const& a, Point2 const& b)
{
    auto same = [](double p, double q) {
        return (p - q) < Geometry2D::kTolerance && (q - p) < Geometry2D::kTolerance;
    };
    if (same(a.x, b.x))
        return 2;
    if (same(a.y, b.y))
        return 1;
    return 0;
}

}  // namespace

struct LayoutSession::RunOutput {
    std::vector<long> ids;
    std::map<long, std::vector<std::pair<long, long>>> lineIds;
    std::map<long, std::vector<std::pair<long, long>>> pointIds;
    std::vector<double> points;
    std::vector<int> constraints;
};

LayoutSession::LayoutSession(std::string const& path)
    : path_(path), document_(JsonHostDocument::LoadFile(path))
{
}

LayoutSession::LayoutSession(std::string source, std::unique_ptr<JsonHostDocument> document)
    : path_(std::move(source)), document_(std::move(document))
{
}

std::unique_ptr<LayoutSession> LayoutSession::fromText(std::string const& text,
                                                       std::string const& source)
{
    return std::unique_ptr<LayoutSession>(
        new LayoutSession(source, JsonHostDocument::LoadString(text, source)));
}

LayoutSession::~LayoutSession() = default;

std::string LayoutSession::statusText(long status)
{
    switch (status) {
    case 0:
        return "laid out";
    case 1:
        return "the host has no route segments (or the grid could not be created)";
    case 2:
        return "the host has no active document or no route model";
    case 3:
        return "the host document has no route sketch";
    case 4:
        return "the route sketch has no route data";
    case 5:
        return "the route data has no route container";
    case 6:
        return "no host application";
    case 7:
        return "the sketch has a closed loop";
    case 8:
        return "the sketch is in disjoint pieces";
    default:
        return "the layout failed";
    }
}

double LayoutSession::latticeNodeEstimate(ToolOptions const& options) const
{
    double const spacing = std::min(options.gridX, options.gridY);
    double nodes = 0.0;
    for (JsonHostModel::Segment const& s : document_->model().segments) {
        double length = 0.0;
        for (JsonHostModel::Entity const& e : s.entities)
            length += e.length;
        nodes += length / spacing + 1.0;
    }
    return nodes;
}

std::string LayoutSession::sizeProblem(ToolOptions const& options) const
{
    if (options.layoutType == LayoutType::kBoard)
        return std::string();
    double const limit = static_cast<double>(kMaxLatticeNodes);
    double const nodes = latticeNodeEstimate(options);
    // Written so that a NaN estimate is refused too.
    if (nodes <= limit)
        return std::string();

    std::vector<JsonHostModel::Segment> const& segments = document_->model().segments;
    double total = 0.0;
    for (JsonHostModel::Segment const& s : segments) {
        for (JsonHostModel::Entity const& e : s.entities)
            total += e.length;
    }
    double const count = static_cast<double>(segments.size());
    double const spacing = std::min(options.gridX, options.gridY);
    char const* units = options.units.c_str();

    char length[96];
    if (std::isfinite(total))
        std::snprintf(length, sizeof length, "the segments add up to %.6g %s", total, units);
    else
        std::snprintf(length, sizeof length, "the segments add up to more than can be counted");
    char grid[96];
    std::snprintf(grid, sizeof grid, "%.6g %s%s", spacing, units,
                  options.gridX != options.gridY ? " (the finer spacing)" : "");
    char estimate[96];
    if (std::isfinite(nodes))
        std::snprintf(estimate, sizeof estimate, "about %.4g lattice nodes", nodes);
    else
        std::snprintf(estimate, sizeof estimate, "an unbounded number of lattice nodes");

    // The finest spacing whose estimate fits (total / spacing + count <= limit), rounded up to
    // three significant digits.
    char advice[128];
    double const finest = total / (limit - count);
    if (count < limit && std::isfinite(finest) && finest > 0.0) {
        double const digit = std::pow(10.0, std::floor(std::log10(finest)) - 2.0);
        double suggested = std::ceil(finest / digit) * digit;
        if (!(suggested >= finest))
            suggested = finest * 1.01;
        std::snprintf(advice, sizeof advice, "give a larger grid spacing: --grid %g or more",
                      suggested);
    } else if (count >= limit) {
        std::snprintf(advice, sizeof advice,
                      "the document has more segments than that, so no grid spacing helps");
    } else {
        std::snprintf(advice, sizeof advice, "no grid spacing makes it fit: shorten the segments");
    }

    char buf[640];
    std::snprintf(buf, sizeof buf,
                  "%s; on a grid of %s the layout would create %s (one per grid step along every "
                  "segment), but at most %lld fit in its memory budget of %g GiB at about %lld "
                  "bytes a node: %s",
                  length, grid, estimate, kMaxLatticeNodes,
                  static_cast<double>(kLatticeMemoryBudget) / (1024.0 * 1024.0 * 1024.0),
                  kBytesPerLatticeNode, advice);
    return path_ + ": " + buf;
}

Extent LayoutSession::inputExtent() const
{
    Extent extent;
    for (JsonHostModel::Segment const& s : document_->model().segments) {
        for (JsonHostModel::Entity const& e : s.entities) {
            if (!e.hasCurve())
                continue;
            extent.add(flat(e.curveStart()));
            extent.add(flat(e.curveEnd()));
        }
    }
    return extent;
}

std::string LayoutSession::gridProblem(ToolOptions const& options) const
{
    if (options.layoutType == LayoutType::kBoard)
        return std::string();
    Extent const extent = inputExtent();
    if (extent.empty)
        return std::string();
    // Halves first: the difference of two huge coordinates must not overflow.
    double const span = 2.0 * std::max(extent.maxX / 2.0 - extent.minX / 2.0,
                                       extent.maxY / 2.0 - extent.minY / 2.0);
    // A sketch that is a single point has nothing a spacing could be measured against.
    if (!(span > 0.0))
        return std::string();
    char const* which = nullptr;
    double spacing = 0.0;
    if (options.gridX > span) {
        which = options.gridX == options.gridY ? "the grid spacing" : "the grid spacing along x";
        spacing = options.gridX;
    } else if (options.gridY > span) {
        which = "the grid spacing along y";
        spacing = options.gridY;
    } else {
        return std::string();
    }
    char const* units = options.units.c_str();
    char buf[640];
    std::snprintf(buf, sizeof buf,
                  "%s, %.6g %s, is larger than the whole extent of the "
                  "route, %.6g %s (the longer side of its bounding box, %.6g x %.6g %s): a single "
                  "grid step reaches past the whole route, so the layout cannot lay the "
                  "segments out at their lengths and may lose some; give a spacing of at most %.6g %s (--grid, --grid-x, "
                  "--grid-y)",
                  which, spacing, units, span, units, extent.width(), extent.height(), units, span,
                  units);
    return path_ + ": " + buf;
}

bool LayoutSession::hasFeature(std::string const& name) const
{
    std::wstring const wide = KrUtf8Codec::Decode(name);
    for (std::wstring const& f : document_->model().features) {
        if (f == wide)
            return true;
    }
    return false;
}

std::string LayoutSession::documentUnits() const
{
    return document_->model().units;
}

bool LayoutSession::documentGivesUnits() const
{
    return document_->model().unitsGiven;
}

std::vector<double> LayoutSession::segmentLengths() const
{
    std::vector<double> out;
    for (JsonHostModel::Segment const& s : document_->model().segments) {
        double length = 0.0;
        for (JsonHostModel::Entity const& e : s.entities)
            length += e.length;
        out.push_back(length);
    }
    return out;
}

std::map<long, std::string> LayoutSession::componentTexts() const
{
    std::map<long, std::string> out;
    for (auto const& [id, text] : document_->componentMap())
        out.emplace(id, KrUtf8Codec::Encode(text));
    return out;
}

void LayoutSession::readInput(LayoutResult& result) const
{
    JsonHostModel const& model = document_->model();
    std::set<long> seen;
    result.segments.clear();
    for (JsonHostModel::Segment const& s : model.segments) {
        // The library keeps the first segment of an id.
        if (!seen.insert(s.id).second)
            continue;
        ResultSegment seg;
        seg.id = s.id;
        seg.diameter = s.value;
        for (JsonHostModel::Entity const& e : s.entities) {
            seg.length += e.length;
            if (!e.hasCurve())
                continue;
            seg.inputLines.push_back({flat(e.curveStart()), flat(e.curveEnd())});
            seg.inputShapes.push_back(shapeOf(e));
        }
        result.segments.push_back(std::move(seg));
    }
}

long LayoutSession::runFacade(ToolOptions const& options, RunOutput& output)
{
    KrAutoLayout layout;
    layout.setRouteGridSpacing(options.gridX, options.gridY);
    layout.setComponentMap(document_->componentMap());
    IHostApplication* host = document_->application();
    // The library adopts the reference it is handed and releases it when it is done.
    if (host != nullptr)
        host->AddRef();
    void* resultSketch = nullptr;
    long status = 0;
    if (options.hasFeature) {
        std::wstring feature = KrUtf8Codec::Decode(options.feature);
        std::wstring runText;
        status = layout.StartAutoLayout2(host, options.layoutType, options.fillets,
                                         options.relations, feature, &resultSketch,
                                         !options.arrays, runText);
    } else {
        std::wstring ignored;
        status = layout.StartAutoLayout(host, options.layoutType, options.fillets,
                                        options.relations, &resultSketch, !options.arrays,
                                        ignored);
    }
    // The host sketch comes back with one reference for the caller.
    if (resultSketch != nullptr)
        static_cast<IHostSketch*>(resultSketch)->Release();

    if (status == 0) {
        layout.getRouteSegmentIDs(output.ids);
        for (long id : output.ids) {
            layout.GetSketchLineIdByRouteSegmentId(id, output.lineIds[id]);
            layout.GetSketchPointIdByRouteSegmentId(id, output.pointIds[id]);
        }
        layout.getOutputPoints(output.points);
        layout.getOutputConstraints(output.constraints);
    }
    return status;
}

long LayoutSession::runPlain(ToolOptions const& options, RunOutput& output, LayoutResult& result)
{
    // Arrays need no host: the document's segments go to the plain-data run as they are, and its
    // result numbers the lines from 0 in the order of the output arrays, as the array write-back
    // does.
    KrLayoutInput input = document_->layoutInput();
    input.gridSpacingX = options.gridX;
    input.gridSpacingY = options.gridY;
    input.layoutType = options.layoutType;
    if (options.clearanceGiven)
        input.clearance = options.clearance;
    KrPlainLayoutRun run;
    KrLayoutResult plain;
    long const status = run.Run(input, plain);
    if (status == 0) {
        long k = 0;
        for (KrLayoutResult::Segment const& s : plain.segments) {
            output.ids.push_back(s.id);
            std::vector<std::pair<long, long>>& ids = output.lineIds[s.id];
            output.pointIds[s.id];
            for (std::size_t i = 0; i < s.lines.size(); ++i, ++k) {
                ALLine const& l = s.lines[i];
                output.points.insert(output.points.end(), {l.start.x, l.start.y, l.start.z,
                                                           l.end.x, l.end.y, l.end.z});
                output.constraints.push_back(s.axes[i]);
                ids.emplace_back(k, k);
            }
        }
        if (options.layoutType == LayoutType::kBoard) {
            result.crowdedPoints = plain.crowdedPoints;
            result.clearance = plain.usedClearance;
        }
    } else {
        // A failed check names its segments in the result instead of through host callouts.
        std::string const text = KrUtf8Codec::Encode(plain.message);
        std::set<long> known;
        for (long id : plain.failedIds) {
            if (!known.insert(id).second)
                continue;
            result.messages.push_back({id, text});
            result.failedIds.push_back(id);
        }
        if (!plain.failedIds.empty())
            result.checkMessage = text;
    }
    return status;
}

long LayoutSession::runBoard(ToolOptions const& options, RunOutput& output, LayoutResult& result)
{
    // The same steps as the facade's, on a run whose layout stage is the board drawing.
    KrFormboardLayoutRun run;
    // The document lends its pointer; the run takes a reference of its own and drops it when it
    // is destroyed, so the tool neither adds nor releases one here.
    IHostApplication* host = document_->application();
    run.AttachHost(host);
    if (options.hasFeature)
        run.SelectFeature(KrUtf8Codec::Decode(options.feature));
    run.SetApplyToHost(!options.arrays);
    run.SetComponentMap(document_->componentMap());
    if (options.clearanceGiven)
        run.SetClearance(options.clearance);
    void* resultSketch = nullptr;
    // The layout type is not used by this run.
    long const status = run.Run(options.gridX, options.gridY, 0, options.fillets,
                                options.relations, &resultSketch);
    // The host sketch comes back with one reference for the caller.
    if (resultSketch != nullptr)
        static_cast<IHostSketch*>(resultSketch)->Release();

    IRoutingSketch* const sketch = run.GetSketch();
    if (status == 0 && sketch != nullptr) {
        sketch->GetAllRouteSegment(output.ids);
        for (long id : output.ids) {
            sketch->GetCADLineIdByRouteId(id, output.lineIds[id]);
            sketch->GetSketchPointIdByRouteSegmentId(id, output.pointIds[id]);
        }
        output.points = run.GetOutputPoints();
        output.constraints = run.GetOutputConstraints();
        result.crowdedPoints = run.GetCrowdedPointCount();
        result.clearance = run.GetUsedClearance();
    }
    return status;
}

LayoutResult LayoutSession::run(ToolOptions const& options, std::string const& units,
                                double metresPerUnit)
{
    LayoutResult result;
    result.documentName = KrUtf8Codec::Encode(document_->model().name);
    result.units = units;
    result.metresPerUnit = metresPerUnit;
    result.layoutType = options.layoutType;
    result.mode = options.arrays ? "arrays" : "host";
    result.gridX = options.gridX;
    result.gridY = options.gridY;
    result.relations = options.relations;
    result.fillets = options.fillets;
    result.feature = options.hasFeature ? options.feature : std::string();
    result.clearanceGiven = options.clearanceGiven;
    result.clearance =
        options.clearanceGiven ? options.clearance : std::max(options.gridX, options.gridY);
    readInput(result);
    result.componentTexts = componentTexts();

    RunOutput output;
    if (options.arrays)
        result.status = runPlain(options, output, result);
    else if (options.layoutType == LayoutType::kBoard)
        result.status = runBoard(options, output, result);
    else
        result.status = runFacade(options, output);

    JsonHostRecorder const& rec = document_->results();
    result.statusText = statusText(result.status);

    // The checks name their segments through callouts on the host's selection. Each message and
    // each segment is kept once, in the order of the first callout; the sets find repeats.
    std::set<std::pair<long, std::string>> knownMessages;
    std::set<long> knownFailed;
    for (JsonHostRecorder::Selected const& sel : rec.callouts()) {
        if (!sel.hasCallout || sel.target.kind != "entity")
            continue;
        std::string const text = KrUtf8Codec::Encode(sel.callout);
        long const id = sel.target.segment;
        if (knownMessages.insert({id, text}).second)
            result.messages.push_back({id, text});
        if (knownFailed.insert(id).second)
            result.failedIds.push_back(id);
        if (result.checkMessage.empty())
            result.checkMessage = text;
    }
    if (result.checkMessage.empty() && result.status == 7)
        result.checkMessage = KrUtf8Codec::Encode(KrAutoLayout::loopMessage);
    if (result.checkMessage.empty() && result.status == 8)
        result.checkMessage = KrUtf8Codec::Encode(KrAutoLayout::disjoinMessage);

    if (result.status == 0) {
        readLayout(options, output, result);
        result.outputPoints = std::move(output.points);
        result.outputAxes = std::move(output.constraints);
    }

    ConnectorPlacer::place(result, result.componentTexts);

    result.hostCounters = {
        {"requests", static_cast<long>(rec.requests().size())},
        {"lines_drawn", static_cast<long>(rec.lines().size())},
        {"points_drawn", static_cast<long>(rec.points().size())},
        {"relations", static_cast<long>(rec.relations().size())},
        {"fillets", static_cast<long>(rec.fillets().size())},
        {"callouts", static_cast<long>(rec.callouts().size())},
        {"sketches_opened", static_cast<long>(rec.sketchesOpened())},
        {"redraws", static_cast<long>(rec.redraws())},
        {"references_left", static_cast<long>(document_->clientReferences())},
    };
    return result;
}

void LayoutSession::readLayout(ToolOptions const& options, RunOutput& output,
                               LayoutResult& result) const
{
    JsonHostRecorder const& rec = document_->results();
    std::vector<double> const& points = output.points;
    std::vector<int> const& constraints = output.constraints;

    // The laid-out segments in the library's order, with the input's length and diameter.
    std::map<long, ResultSegment> input;
    for (ResultSegment& s : result.segments)
        input.emplace(s.id, std::move(s));
    result.segments.clear();
    std::map<std::pair<long, long>, JsonHostRecorder::Line const*> drawn;
    for (JsonHostRecorder::Line const& l : rec.lines())
        drawn.emplace(l.id, &l);
    for (long id : output.ids) {
        ResultSegment seg;
        auto in = input.find(id);
        if (in != input.end()) {
            seg = std::move(in->second);
            input.erase(in);
        } else {
            seg.id = id;
        }
        seg.pointIds = output.pointIds[id];
        for (auto const& lid : output.lineIds[id]) {
            ResultLine line;
            line.lineId = lid;
            if (options.arrays) {
                // Array runs number their lines from 0: the index into both output arrays.
                if (lid.first < 0 || static_cast<size_t>(lid.first) * 6 + 5 >= points.size())
                    continue;
                size_t const k = static_cast<size_t>(lid.first);
                line.start = {points[6 * k], points[6 * k + 1]};
                line.end = {points[6 * k + 3], points[6 * k + 4]};
                line.axis = k < constraints.size() ? constraints[k] : axisCode(line.start, line.end);
            } else {
                auto d = drawn.find(lid);
                if (d == drawn.end())
                    continue;
                line.start = flat(d->second->start);
                line.end = flat(d->second->end);
                line.axis = axisCode(line.start, line.end);
            }
            line.drawnStart = line.start;
            line.drawnEnd = line.end;
            seg.lines.push_back(line);
        }
        result.segments.push_back(std::move(seg));
    }
    // What is left of the input is missing from the result; the kept segments still carry
    // their input lines, which tell the multi-pin clean-up's removals from the others.
    for (auto& [id, s] : input) {
        result.removedIds.push_back(id);
        result.missing.push_back(std::move(s));
    }
    result.dropped = DroppedSegments::classify(result.missing, result.segments,
                                               result.componentTexts);

    // Relations by line, and fillets by the joint of two consecutive lines.
    std::map<std::pair<long, long>, std::pair<size_t, size_t>> where;
    for (size_t si = 0; si < result.segments.size(); ++si) {
        for (size_t li = 0; li < result.segments[si].lines.size(); ++li)
            where[result.segments[si].lines[li].lineId] = {si, li};
    }
    if (!options.arrays) {
        for (JsonHostRecorder::Relation const& r : rec.relations()) {
            for (JsonHostRecorder::Target const& t : r.entities) {
                if (t.kind != "line")
                    continue;
                auto w = where.find(t.id);
                if (w != where.end())
                    result.segments[w->second.first].lines[w->second.second].relations.push_back(
                        KrUtf8Codec::Encode(r.name));
            }
        }
        std::map<size_t, std::vector<std::pair<int, double>>> joints;
        for (JsonHostRecorder::Fillet const& f : rec.fillets()) {
            auto w = where.find(f.secondLine);
            if (w == where.end() || w->second.second == 0)
                continue;
            ResultSegment const& seg = result.segments[w->second.first];
            if (seg.lines[w->second.second - 1].lineId != f.firstLine)
                continue;
            joints[w->second.first].push_back({static_cast<int>(w->second.second), f.radius});
        }
        for (auto& [si, list] : joints)
            FilletGeometry::apply(result.segments[si], list);
    }
    result.laidOut = true;
}

}  // namespace krtool
