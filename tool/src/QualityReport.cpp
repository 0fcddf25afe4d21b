#include "QualityReport.h"

#include "ClearanceCheck.h"
#include "LayoutType.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>
#include <ostream>
#include <set>
#include <utility>

namespace krtool {

namespace {

struct FlatLine {
    size_t segment;
    Point2 a;
    Point2 b;
    double minX, minY, maxX, maxY;
};

}  // namespace

QualityReport QualityReport::measure(LayoutResult const& result)
{
    QualityReport r;
    r.laidOut_ = result.laidOut;
    r.segments_ = result.segments.size();
    r.extent_ = Geometry2D::extentOf(result, result.laidOut);

    r.clearance_ = result.clearance;
    r.board_ = result.layoutType == LayoutType::kBoard;
    r.crowdedPoints_ = result.crowdedPoints;

    std::vector<FlatLine> flat;
    std::vector<ClearanceCheck::Segment> spaced(result.segments.size());
    for (size_t si = 0; si < result.segments.size(); ++si) {
        ResultSegment const& s = result.segments[si];
        SegmentLength row;
        row.id = s.id;
        row.trueLength = s.length;
        ClearanceCheck::Segment& c = spaced[si];
        c.length = s.length;
        c.diameter = s.diameter;
        c.sketch = s.inputLines;
        auto addLine = [&](Point2 const& a, Point2 const& b) {
            flat.push_back({si, a, b, std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x),
                            std::max(a.y, b.y)});
            row.drawnLength += Geometry2D::distance(a, b);
            c.lines.push_back({a, b});
        };
        if (result.laidOut) {
            for (ResultLine const& l : s.lines)
                addLine(l.start, l.end);
        } else {
            for (auto const& l : s.inputLines)
                addLine(l.first, l.second);
        }
        if (s.length > 0.0) {
            double const deviation = std::fabs(row.drawnLength - s.length) / s.length;
            if (deviation > r.largestDeviation_) {
                r.largestDeviation_ = deviation;
                r.largestDeviationId_ = s.id;
            }
        }
        r.lengths_.push_back(row);
    }
    r.lines_ = flat.size();

    for (ClearanceCheck::Violation const& v : ClearanceCheck::find(spaced, r.clearance_)) {
        r.closePairs_.push_back(
            {result.segments[v.a].id, result.segments[v.b].id, v.distance, v.required});
    }

    // Sweep over x so that only lines whose boxes overlap are compared.
    std::vector<size_t> order(flat.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::sort(order.begin(), order.end(),
              [&](size_t p, size_t q) { return flat[p].minX < flat[q].minX; });
    double const tol = Geometry2D::kTolerance;
    for (size_t oi = 0; oi < order.size(); ++oi) {
        FlatLine const& p = flat[order[oi]];
        for (size_t oj = oi + 1; oj < order.size(); ++oj) {
            FlatLine const& q = flat[order[oj]];
            if (q.minX > p.maxX + tol)
                break;
            if (p.segment == q.segment || q.minY > p.maxY + tol || q.maxY < p.minY - tol)
                continue;
            long const ida = result.segments[std::min(p.segment, q.segment)].id;
            long const idb = result.segments[std::max(p.segment, q.segment)].id;
            Point2 at;
            if (Geometry2D::properCrossing(p.a, p.b, q.a, q.b, at)) {
                r.crossings_.push_back({ida, idb, at});
                continue;
            }
            double const shared = Geometry2D::collinearOverlap(p.a, p.b, q.a, q.b);
            if (shared > 0.0)
                r.overlaps_.push_back({ida, idb, shared});
        }
    }
    return r;
}

size_t QualityReport::crossingPairs() const
{
    std::set<std::pair<long, long>> pairs;
    for (Crossing const& c : crossings_)
        pairs.insert({c.segmentA, c.segmentB});
    return pairs.size();
}

nlohmann::ordered_json QualityReport::toJson() const
{
    using json = nlohmann::ordered_json;
    json j;
    j["measured"] = laidOut_ ? "layout" : "input sketch";
    j["segments"] = segments_;
    j["lines"] = lines_;
    j["crossing_pairs"] = crossingPairs();
    json crossings = json::array();
    for (Crossing const& c : crossings_)
        crossings.push_back({{"segments", {c.segmentA, c.segmentB}}, {"at", {c.at.x, c.at.y}}});
    j["crossings"] = crossings;
    j["overlapping_pieces"] = overlaps_.size();
    double overlapTotal = 0.0;
    json overlaps = json::array();
    for (Overlap const& o : overlaps_) {
        overlaps.push_back({{"segments", {o.segmentA, o.segmentB}}, {"length", o.length}});
        overlapTotal += o.length;
    }
    j["overlaps"] = overlaps;
    j["overlap_length"] = overlapTotal;
    j["clearance"] = clearance_;
    j["clearance_violations"] = closePairs_.size();
    json close = json::array();
    for (ClosePair const& c : closePairs_) {
        close.push_back({{"segments", {c.segmentA, c.segmentB}},
                         {"distance", c.distance},
                         {"required", c.required}});
    }
    j["close_pairs"] = close;
    if (board_)
        j["crowded_points"] = crowdedPoints_ >= 0 ? json(crowdedPoints_) : json();
    json lengths = json::array();
    double worst = 0.0;
    for (SegmentLength const& s : lengths_) {
        double const diff = s.drawnLength - s.trueLength;
        worst = std::max(worst, std::fabs(diff));
        json row = {{"id", s.id}, {"true_length", s.trueLength}, {"drawn_length", s.drawnLength},
                    {"difference", diff}};
        if (s.trueLength > 0.0)
            row["ratio"] = s.drawnLength / s.trueLength;
        lengths.push_back(row);
    }
    j["segment_lengths"] = lengths;
    j["largest_length_difference"] = worst;
    j["largest_length_deviation"] = largestDeviation_;
    json ext;
    if (!extent_.empty) {
        ext = {{"min", {extent_.minX, extent_.minY}},
               {"max", {extent_.maxX, extent_.maxY}},
               {"width", extent_.width()},
               {"height", extent_.height()}};
    }
    j["extent"] = ext;
    return j;
}

void QualityReport::print(std::ostream& out, std::string const& units) const
{
    std::ios::fmtflags const flags = out.flags();
    std::streamsize const precision = out.precision();
    out << std::fixed << std::setprecision(3);
    out << "Quality report (" << (laidOut_ ? "layout" : "input sketch, not laid out") << ")\n";
    out << "  segments:            " << segments_ << "\n";
    out << "  lines:               " << lines_ << "\n";
    out << "  crossing pairs:      " << crossingPairs() << " (" << crossings_.size()
        << " crossing points)\n";
    double overlapTotal = 0.0;
    for (Overlap const& o : overlaps_)
        overlapTotal += o.length;
    out << "  overlapping pieces:  " << overlaps_.size() << " (total " << overlapTotal << ' '
        << units << ")\n";
    out << "  clearance:           " << clearance_ << ' ' << units << "; "
        << closePairs_.size() << (closePairs_.size() == 1 ? " pair" : " pairs")
        << " of segments closer than the rule allows\n";
    if (board_) {
        out << "  crowded points:      ";
        if (crowdedPoints_ >= 0)
            out << crowdedPoints_ << "\n";
        else
            out << "not laid out\n";
    }
    if (extent_.empty) {
        out << "  extent:              empty\n";
    } else {
        out << "  extent:              " << extent_.width() << " x " << extent_.height() << ' '
            << units << " (x " << extent_.minX << " .. " << extent_.maxX << ", y " << extent_.minY
            << " .. " << extent_.maxY << ")\n";
    }
    double worst = 0.0;
    long worstId = 0;
    for (SegmentLength const& s : lengths_) {
        double const d = std::fabs(s.drawnLength - s.trueLength);
        if (d > worst) {
            worst = d;
            worstId = s.id;
        }
    }
    out << "  largest length difference: " << worst << ' ' << units;
    if (worst > 0.0)
        out << " (segment " << worstId << ")";
    out << "\n";
    {
        // A relative figure: shown in significant digits, 1e-16 as well as 0.35.
        std::ostringstream deviation;
        deviation << std::setprecision(3) << largestDeviation_;
        out << "  largest length deviation: " << deviation.str() << " of the true length";
        if (largestDeviation_ > 0.0)
            out << " (segment " << largestDeviationId_ << ")";
        out << "\n";
    }
    auto listLimited = [&](char const* title, size_t count, auto const& item) {
        if (count == 0)
            return;
        out << "  " << title << ":\n";
        size_t const shown = std::min<size_t>(count, 20);
        for (size_t i = 0; i < shown; ++i)
            out << "    " << item(i) << "\n";
        if (count > shown)
            out << "    ... and " << (count - shown) << " more\n";
    };
    listLimited("crossings", crossings_.size(), [&](size_t i) {
        Crossing const& c = crossings_[i];
        std::ostringstream s;
        s << std::fixed << std::setprecision(3) << "segments " << c.segmentA << " and "
          << c.segmentB << " at (" << c.at.x << ", " << c.at.y << ")";
        return s.str();
    });
    listLimited("overlaps", overlaps_.size(), [&](size_t i) {
        Overlap const& o = overlaps_[i];
        std::ostringstream s;
        s << std::fixed << std::setprecision(3) << "segments " << o.segmentA << " and "
          << o.segmentB << ": " << o.length << ' ' << units;
        return s.str();
    });
    listLimited("closer than the clearance rule allows", closePairs_.size(), [&](size_t i) {
        ClosePair const& c = closePairs_[i];
        std::ostringstream s;
        s << std::fixed << std::setprecision(4) << "segments " << c.segmentA << " and "
          << c.segmentB << ": " << c.distance << ' ' << units << " apart, " << c.required << ' '
          << units << " required";
        return s.str();
    });
    out << "  per segment (id: drawn / true length, " << units << "):\n";
    for (SegmentLength const& s : lengths_) {
        out << "    " << std::setw(6) << s.id << ": " << std::setw(9) << s.drawnLength << " / "
            << std::setw(9) << s.trueLength;
        if (s.trueLength > 0.0)
            out << "  (" << std::setprecision(1) << 100.0 * s.drawnLength / s.trueLength << " %)"
                << std::setprecision(3);
        out << "\n";
    }
    out.flags(flags);
    out.precision(precision);
}

}  // namespace krtool
