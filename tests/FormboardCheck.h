// Checks a board drawing against what it promises, from the laid-out sketch and the input tree:
// every segment placed, drawn at its true length, in axis-parallel or 45-degree lines (finer fan
// directions only at points where more than eight segments meet), no two segments leaving a point
// in the same direction, and the clearance kept between segments that do not meet. The lengths
// and the clearance are measured by the library's quality measure (KrLayoutQuality), the one the
// tool reports, with the input tree telling which segments meet: independent of the layout's own
// bookkeeping.
#pragma once

#include "HarnessTree.h"

#include <krlayout/api/KrLayoutQuality.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/sketch/KrSketch.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace board {

// What a drawing broke; all empty / zero for a good one.
struct Report {
    long segments = 0;
    long missing = 0;            // segments without lines
    double worstLengthError = 0; // relative
    long badDirections = 0;      // lines neither axis-parallel nor 45 degrees (outside a fan)
    long sharedOverlaps = 0;     // segments meeting at a point that leave it in the same direction
    long clearanceBreaks = 0;    // segments that do not meet, closer than the clearance rule allows
    double worstShortfall = 0;   // largest (required - distance) / required among those
    std::string first;           // the first problem found, for the failure message

    bool Clean() const {
        return missing == 0 && worstLengthError < 1e-9 && badDirections == 0 && sharedOverlaps == 0 &&
               clearanceBreaks == 0;
    }
};

// `tree` the input the sketch was built from; `clearance` the setting the layout used.
inline Report Check(KrSketch& sketch, std::vector<harness::TreeSegment> const& tree, double clearance) {
    Report r;
    std::vector<KrRouteSegment*> segs;
    sketch.GetAllSegments(segs);
    r.segments = static_cast<long>(segs.size());
    std::map<long, harness::TreeSegment const*> input;
    for (harness::TreeSegment const& t : tree) {
        input.emplace(t.id, &t);
    }
    struct S {
        long id;
        double length;
        KrRoutingWayPoint* a;
        KrRoutingWayPoint* b;
        std::vector<ALPoint> pts;
    };
    std::vector<S> all;
    std::vector<KrLayoutQuality::Segment> measured;
    std::map<KrRoutingWayPoint*, int> degree;
    auto note = [&](std::string const& what) {
        if (r.first.empty()) {
            r.first = what;
        }
    };
    for (KrRouteSegment* seg : segs) {
        std::vector<KrRouteCADLine*> lines;
        seg->GetAllCADLine(lines);
        bool redefined = false;
        seg->IsRedefine(redefined);
        if (lines.empty() || !redefined) {
            ++r.missing;
            note("segment " + std::to_string(seg->GetId()) + " not laid out");
            continue;
        }
        S s{seg->GetId(), 0.0, nullptr, nullptr, {}};
        KrLayoutQuality::Segment m;
        auto in = input.find(s.id);
        if (in != input.end()) {
            s.length = in->second->length;
            m.length = in->second->length;
            m.diameter = in->second->diameter;
            ALLine sketched;
            sketched.start = in->second->a;
            sketched.end = in->second->b;
            m.sketch.push_back(sketched);
        }
        std::vector<KrRoutingWayPoint*> wps;
        for (KrRouteCADLine* line : lines) {
            std::vector<KrRoutingWayPoint*> lp;
            line->GetWayPoint(lp);
            if (lp.size() < 2) {
                continue;
            }
            if (wps.empty()) {
                wps.push_back(lp.front());
            }
            wps.push_back(lp.back());
            ALLine drawn;
            line->GetLine(&drawn);
            m.lines.push_back(drawn);
        }
        for (KrRoutingWayPoint* w : wps) {
            double x = 0;
            double y = 0;
            w->GetGridCoord(x, y);
            s.pts.push_back(ALPoint(x, y, 0.0));
        }
        s.a = wps.front();
        s.b = wps.back();
        ++degree[s.a];
        ++degree[s.b];
        all.push_back(s);
        measured.push_back(m);
    }

    // Lengths and clearances as the quality measure finds them.
    KrLayoutQuality::Findings found;
    found.closePair = [&](KrLayoutQuality::ClosePair const& c) {
        ++r.clearanceBreaks;
        r.worstShortfall = std::max(r.worstShortfall, (c.required - c.distance) / c.required);
        std::ostringstream os;
        os << "segments " << all[c.a].id << " and " << all[c.b].id << " " << c.distance << " apart, want "
           << c.required;
        note(os.str());
    };
    KrLayoutQuality quality;
    quality.Measure(measured, clearance, found);
    for (std::size_t i = 0; i < all.size(); ++i) {
        S const& s = all[i];
        double const drawn = quality.drawnLengths[i];
        double const err = s.length > 0 ? std::fabs(drawn - s.length) / s.length : std::fabs(drawn);
        if (err > r.worstLengthError) {
            r.worstLengthError = err;
            if (err >= 1e-9) {
                note("segment " + std::to_string(s.id) + " drawn at " + std::to_string(drawn) + " for " +
                     std::to_string(s.length));
            }
        }
    }

    // Directions: axis-parallel or 45 degrees, except the first line of a segment at a fan.
    for (S const& s : all) {
        for (std::size_t i = 1; i < s.pts.size(); ++i) {
            double const dx = std::fabs(s.pts[i].x - s.pts[i - 1].x);
            double const dy = std::fabs(s.pts[i].y - s.pts[i - 1].y);
            double const l = std::hypot(dx, dy);
            bool const axis = dx <= 1e-12 * l || dy <= 1e-12 * l;
            bool const diagonal = std::fabs(dx - dy) <= 1e-12 * l;
            // A fan: the line leaves a point where more than eight segments meet.
            bool const fan = i == 1 && (degree[s.a] > 8 || degree[s.b] > 8);
            if (!axis && !diagonal && !fan) {
                ++r.badDirections;
                note("segment " + std::to_string(s.id) + " has a slanted line");
            }
        }
    }

    // Segments meeting at a point leave it in different directions.
    std::map<KrRoutingWayPoint*, std::vector<std::size_t>> at;
    for (std::size_t i = 0; i < all.size(); ++i) {
        at[all[i].a].push_back(i);
        at[all[i].b].push_back(i);
    }
    for (auto const& [shared, meeting] : at) {
        double px = 0, py = 0;
        shared->GetGridCoord(px, py);
        for (std::size_t u = 0; u < meeting.size(); ++u) {
            for (std::size_t v = u + 1; v < meeting.size(); ++v) {
                S const& s = all[meeting[u]];
                S const& t = all[meeting[v]];
                KrRoutingWayPoint* so = shared == s.a ? s.b : s.a;
                KrRoutingWayPoint* to = shared == t.a ? t.b : t.a;
                double sx = 0, sy = 0, tx = 0, ty = 0;
                so->GetGridCoord(sx, sy);
                to->GetGridCoord(tx, ty);
                double const su = std::hypot(sx - px, sy - py);
                double const tu = std::hypot(tx - px, ty - py);
                double const sin = std::fabs((sx - px) * (ty - py) - (sy - py) * (tx - px)) / (su * tu);
                double const cos = ((sx - px) * (tx - px) + (sy - py) * (ty - py)) / (su * tu);
                if (su > 0 && tu > 0 && sin < 1e-9 && cos > 0) {
                    ++r.sharedOverlaps;
                    note("segments " + std::to_string(s.id) + " and " + std::to_string(t.id) + " overlap");
                }
            }
        }
    }
    return r;
}

}  // namespace board
