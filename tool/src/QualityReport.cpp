#include "QualityReport.h"

#include "LayoutType.h"

#include <krlayout/api/KrLayoutQuality.h>

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>
#include <ostream>

namespace krtool {

QualityReport QualityReport::measure(LayoutResult const& result, size_t listed)
{
    QualityReport r;
    r.crossings_ = CappedList<Crossing>(listed);
    r.overlaps_ = CappedList<Overlap>(listed);
    r.closePairs_ = CappedList<ClosePair>(listed);
    r.laidOut_ = result.laidOut;
    r.segments_ = result.segments.size();
    r.extent_ = Geometry2D::extentOf(result, result.laidOut);

    r.clearance_ = result.clearance;
    r.board_ = result.layoutType == LayoutType::kBoard;
    r.crowdedPoints_ = result.crowdedPoints;

    // The library measures the drawn lines (the laid-out ones, or the input sketch when nothing
    // was laid out) with the sketch telling where each segment's ends are; the report keeps the
    // first entries of each list and the counts.
    std::vector<KrLayoutQuality::Segment> measured(result.segments.size());
    for (size_t si = 0; si < result.segments.size(); ++si) {
        ResultSegment const& s = result.segments[si];
        KrLayoutQuality::Segment& m = measured[si];
        m.length = s.length;
        m.diameter = s.diameter;
        m.sketch.reserve(s.inputLines.size());
        for (auto const& l : s.inputLines)
            m.sketch.push_back(Geometry2D::toLibrary(l));
        if (result.laidOut) {
            m.lines.reserve(s.lines.size());
            for (ResultLine const& l : s.lines)
                m.lines.push_back(Geometry2D::toLibrary({l.start, l.end}));
        } else {
            m.lines = m.sketch;
        }
    }
    auto id = [&result](size_t index) { return result.segments[index].id; };
    KrLayoutQuality::Findings found;
    found.crossing = [&](KrLayoutQuality::Crossing const& c) {
        r.crossings_.add({id(c.a), id(c.b), Point2{c.x, c.y}});
    };
    found.overlap = [&](KrLayoutQuality::Overlap const& o) {
        r.overlaps_.add({id(o.a), id(o.b), o.length});
    };
    found.closePair = [&](KrLayoutQuality::ClosePair const& c) {
        r.closePairs_.add({id(c.a), id(c.b), c.distance, c.required});
    };
    KrLayoutQuality quality;
    quality.Measure(measured, result.clearance, found);
    measured = {};

    r.lines_ = quality.lines;
    r.crossingPairs_ = quality.crossingPairs;
    r.overlapLength_ = quality.overlapLength;
    for (size_t si = 0; si < result.segments.size(); ++si) {
        ResultSegment const& s = result.segments[si];
        r.lengths_.push_back({s.id, s.length, quality.drawnLengths[si]});
    }
    r.largestDeviation_ = quality.largestLengthDeviation;
    if (quality.largestLengthDeviation > 0.0)
        r.largestDeviationId_ = id(quality.largestLengthDeviationSegment);
    return r;
}

nlohmann::ordered_json QualityReport::toJson() const
{
    using json = nlohmann::ordered_json;
    json j;
    j["measured"] = laidOut_ ? "layout" : "input sketch";
    j["segments"] = segments_;
    j["lines"] = lines_;
    // Each list holds at most list_limit entries, the first found. Its count stands beside it
    // (crossing_points, overlapping_pieces, clearance_violations), and <list>_truncated is true
    // when the count is larger than the entries listed.
    j["list_limit"] = crossings_.cap();
    j["crossing_pairs"] = crossingPairs_;
    j["crossing_points"] = crossings_.count();
    json crossings = json::array();
    for (Crossing const& c : crossings_.kept())
        crossings.push_back({{"segments", {c.segmentA, c.segmentB}}, {"at", {c.at.x, c.at.y}}});
    j["crossings"] = crossings;
    j["crossings_truncated"] = crossings_.truncated();
    j["overlapping_pieces"] = overlaps_.count();
    json overlaps = json::array();
    for (Overlap const& o : overlaps_.kept())
        overlaps.push_back({{"segments", {o.segmentA, o.segmentB}}, {"length", o.length}});
    j["overlaps"] = overlaps;
    j["overlaps_truncated"] = overlaps_.truncated();
    j["overlap_length"] = overlapLength_;
    j["clearance"] = clearance_;
    j["clearance_violations"] = closePairs_.count();
    json close = json::array();
    for (ClosePair const& c : closePairs_.kept()) {
        close.push_back({{"segments", {c.segmentA, c.segmentB}},
                         {"distance", c.distance},
                         {"required", c.required}});
    }
    j["close_pairs"] = close;
    j["close_pairs_truncated"] = closePairs_.truncated();
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
    out << "  crossing pairs:      " << crossingPairs_ << " (" << crossings_.count()
        << " crossing points)\n";
    out << "  overlapping pieces:  " << overlaps_.count() << " (total " << overlapLength_ << ' '
        << units << ")\n";
    out << "  clearance:           " << clearance_ << ' ' << units << "; "
        << closePairs_.count() << (closePairs_.count() == 1 ? " pair" : " pairs")
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
    // The first 20 of each list (the lists keep no more than their first entries in any case).
    auto listLimited = [&](char const* title, auto const& list, auto const& item) {
        size_t const count = list.count();
        if (count == 0)
            return;
        out << "  " << title << ":\n";
        size_t const shown = std::min<size_t>(list.kept().size(), 20);
        for (size_t i = 0; i < shown; ++i)
            out << "    " << item(list.kept()[i]) << "\n";
        if (count > shown)
            out << "    ... and " << (count - shown) << " more\n";
    };
    listLimited("crossings", crossings_, [&](Crossing const& c) {
        std::ostringstream s;
        s << std::fixed << std::setprecision(3) << "segments " << c.segmentA << " and "
          << c.segmentB << " at (" << c.at.x << ", " << c.at.y << ")";
        return s.str();
    });
    listLimited("overlaps", overlaps_, [&](Overlap const& o) {
        std::ostringstream s;
        s << std::fixed << std::setprecision(3) << "segments " << o.segmentA << " and "
          << o.segmentB << ": " << o.length << ' ' << units;
        return s.str();
    });
    listLimited("closer than the clearance rule allows", closePairs_, [&](ClosePair const& c) {
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
