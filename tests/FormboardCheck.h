// Checks a board drawing against what it promises, from the laid-out sketch alone: every segment
// placed, drawn at its true length, in axis-parallel or 45-degree lines (finer fan directions only
// at points where more than eight segments meet), no two segments sharing anything but a common
// end point, and the clearance kept between segments that do not meet. Independent of the layout's
// own bookkeeping: the tree and the distances are worked out again from the drawn lines.
#pragma once

#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/sketch/KrSketch.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace board {

struct P {
    double x;
    double y;
};

inline double Cross(P o, P a, P b) { return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x); }

inline double PointSegment(P p, P a, P b) {
    double const dx = b.x - a.x;
    double const dy = b.y - a.y;
    double const len2 = dx * dx + dy * dy;
    double t = len2 > 0.0 ? ((p.x - a.x) * dx + (p.y - a.y) * dy) / len2 : 0.0;
    t = std::clamp(t, 0.0, 1.0);
    return std::hypot(p.x - (a.x + t * dx), p.y - (a.y + t * dy));
}

inline bool Crosses(P a, P b, P c, P d) {
    double const d1 = Cross(c, d, a);
    double const d2 = Cross(c, d, b);
    double const d3 = Cross(a, b, c);
    double const d4 = Cross(a, b, d);
    return ((d1 > 0 && d2 < 0) || (d1 < 0 && d2 > 0)) && ((d3 > 0 && d4 < 0) || (d3 < 0 && d4 > 0));
}

inline double SegmentDistance(P a, P b, P c, P d) {
    if (Crosses(a, b, c, d)) {
        return 0.0;
    }
    return std::min(std::min(PointSegment(a, c, d), PointSegment(b, c, d)),
                    std::min(PointSegment(c, a, b), PointSegment(d, a, b)));
}

// What a drawing broke; all empty / zero for a good one.
struct Report {
    long segments = 0;
    long missing = 0;            // segments without lines
    double worstLengthError = 0; // relative
    long badDirections = 0;      // lines neither axis-parallel nor 45 degrees (outside a fan)
    long sharedOverlaps = 0;     // segments meeting at a point that also share more than it
    long clearanceBreaks = 0;    // segments that do not meet, closer than the clearance rule allows
    double worstShortfall = 0;   // largest (wanted - distance) / wanted among those
    std::string first;           // the first problem found, for the failure message

    bool Clean() const {
        return missing == 0 && worstLengthError < 1e-9 && badDirections == 0 && sharedOverlaps == 0 &&
               clearanceBreaks == 0;
    }
};

// `lengths` and `diameters` by segment id (the input's); `clearance` the setting the layout used.
inline Report Check(KrSketch& sketch, std::map<long, double> const& lengths, std::map<long, double> const& diameters,
                    double clearance) {
    Report r;
    std::vector<KrRouteSegment*> segs;
    sketch.GetAllSegments(segs);
    r.segments = static_cast<long>(segs.size());
    struct S {
        long id;
        double length;
        double diameter;
        KrRoutingWayPoint* a;
        KrRoutingWayPoint* b;
        std::vector<P> pts;
        double x0, y0, x1, y1;
    };
    std::vector<S> all;
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
        S s{seg->GetId(), 0, 0, nullptr, nullptr, {}, 0, 0, 0, 0};
        auto len = lengths.find(s.id);
        s.length = len == lengths.end() ? 0.0 : len->second;
        auto dia = diameters.find(s.id);
        s.diameter = dia == diameters.end() ? 0.0 : dia->second;
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
        }
        for (KrRoutingWayPoint* w : wps) {
            double x = 0;
            double y = 0;
            w->GetGridCoord(x, y);
            s.pts.push_back({x, y});
        }
        s.a = wps.front();
        s.b = wps.back();
        ++degree[s.a];
        ++degree[s.b];
        all.push_back(s);
    }
    for (S& s : all) {
        double drawn = 0.0;
        s.x0 = s.x1 = s.pts.front().x;
        s.y0 = s.y1 = s.pts.front().y;
        for (std::size_t i = 1; i < s.pts.size(); ++i) {
            P const p = s.pts[i - 1];
            P const q = s.pts[i];
            drawn += std::hypot(q.x - p.x, q.y - p.y);
            s.x0 = std::min(s.x0, q.x);
            s.x1 = std::max(s.x1, q.x);
            s.y0 = std::min(s.y0, q.y);
            s.y1 = std::max(s.y1, q.y);
            double const dx = std::fabs(q.x - p.x);
            double const dy = std::fabs(q.y - p.y);
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
        double const err = s.length > 0 ? std::fabs(drawn - s.length) / s.length : std::fabs(drawn);
        if (err > r.worstLengthError) {
            r.worstLengthError = err;
            if (err >= 1e-9) {
                note("segment " + std::to_string(s.id) + " drawn at " + std::to_string(drawn) + " for " +
                     std::to_string(s.length));
            }
        }
    }

    // The tree of the drawing: points joined by segments, rooted at the first segment's start.
    std::map<KrRoutingWayPoint*, std::vector<int>> at;
    for (std::size_t i = 0; i < all.size(); ++i) {
        at[all[i].a].push_back(static_cast<int>(i));
        at[all[i].b].push_back(static_cast<int>(i));
    }
    std::map<KrRoutingWayPoint*, KrRoutingWayPoint*> up;      // parent point
    std::map<KrRoutingWayPoint*, double> upLength;            // length of the segment to it
    std::map<KrRoutingWayPoint*, int> depth;
    if (!all.empty()) {
        std::vector<KrRoutingWayPoint*> queue{all.front().a};
        up[all.front().a] = nullptr;
        depth[all.front().a] = 0;
        for (std::size_t h = 0; h < queue.size(); ++h) {
            KrRoutingWayPoint* p = queue[h];
            for (int i : at[p]) {
                KrRoutingWayPoint* q = all[static_cast<std::size_t>(i)].a == p ? all[static_cast<std::size_t>(i)].b
                                                                                : all[static_cast<std::size_t>(i)].a;
                if (up.count(q) == 0) {
                    up[q] = p;
                    upLength[q] = all[static_cast<std::size_t>(i)].length;
                    depth[q] = depth[p] + 1;
                    queue.push_back(q);
                }
            }
        }
    }
    // Hops and the shortest segment on the path between two points.
    auto path = [&](KrRoutingWayPoint* p, KrRoutingWayPoint* q, int& hops) {
        double shortest = std::numeric_limits<double>::infinity();
        hops = 0;
        while (p != q && p != nullptr && q != nullptr) {
            if (depth[p] < depth[q]) {
                std::swap(p, q);
            }
            shortest = std::min(shortest, upLength[p]);
            p = up[p];
            ++hops;
        }
        return shortest;
    };

    // Pairs whose boxes come within the largest clearance of each other: a sweep along x.
    double maxDiameter = 0.0;
    for (S const& s : all) {
        maxDiameter = std::max(maxDiameter, s.diameter);
    }
    double const reach = std::max(clearance, maxDiameter);
    std::vector<int> byX(all.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        byX[i] = static_cast<int>(i);
    }
    std::sort(byX.begin(), byX.end(), [&](int a, int b) { return all[static_cast<std::size_t>(a)].x0 < all[static_cast<std::size_t>(b)].x0; });
    for (std::size_t ii = 0; ii < byX.size(); ++ii) {
        S const& s = all[static_cast<std::size_t>(byX[ii])];
        for (std::size_t jj = ii + 1; jj < byX.size(); ++jj) {
            S const& t = all[static_cast<std::size_t>(byX[jj])];
            if (t.x0 > s.x1 + reach) {
                break;
            }
            if (t.y0 > s.y1 + reach || s.y0 > t.y1 + reach) {
                continue;
            }
            double dist = std::numeric_limits<double>::infinity();
            for (std::size_t i = 1; i < s.pts.size(); ++i) {
                for (std::size_t j = 1; j < t.pts.size(); ++j) {
                    dist = std::min(dist, SegmentDistance(s.pts[i - 1], s.pts[i], t.pts[j - 1], t.pts[j]));
                }
            }
            KrRoutingWayPoint* shared = nullptr;
            for (KrRoutingWayPoint* p : {s.a, s.b}) {
                if (p == t.a || p == t.b) {
                    shared = p;
                }
            }
            if (shared != nullptr) {
                // Meeting segments: the other ends stay off each other, and they leave the
                // shared point in different directions.
                KrRoutingWayPoint* so = shared == s.a ? s.b : s.a;
                KrRoutingWayPoint* to = shared == t.a ? t.b : t.a;
                double sx = 0, sy = 0, px = 0, py = 0, tx = 0, ty = 0;
                so->GetGridCoord(sx, sy);
                to->GetGridCoord(tx, ty);
                shared->GetGridCoord(px, py);
                double const su = std::hypot(sx - px, sy - py);
                double const tu = std::hypot(tx - px, ty - py);
                double const sin = std::fabs((sx - px) * (ty - py) - (sy - py) * (tx - px)) / (su * tu);
                double const cos = ((sx - px) * (tx - px) + (sy - py) * (ty - py)) / (su * tu);
                if (su > 0 && tu > 0 && sin < 1e-9 && cos > 0) {
                    ++r.sharedOverlaps;
                    note("segments " + std::to_string(s.id) + " and " + std::to_string(t.id) + " overlap");
                }
                continue;
            }
            int best = std::numeric_limits<int>::max();
            double shortest = 0.0;
            for (KrRoutingWayPoint* p : {s.a, s.b}) {
                for (KrRoutingWayPoint* q : {t.a, t.b}) {
                    int hops = 0;
                    double const m = path(p, q, hops);
                    if (hops < best) {
                        best = hops;
                        shortest = m;
                    }
                }
            }
            double const wanted = std::min(std::max(clearance, 0.5 * (s.diameter + t.diameter)), shortest);
            double const slack = 1e-9 * std::max({1.0, std::fabs(s.x0), std::fabs(s.x1), std::fabs(s.y0), std::fabs(s.y1)});
            if (dist + slack < wanted) {
                ++r.clearanceBreaks;
                r.worstShortfall = std::max(r.worstShortfall, (wanted - dist) / wanted);
                std::ostringstream os;
                os << "segments " << s.id << " and " << t.id << " " << dist << " apart, want " << wanted;
                note(os.str());
            }
        }
    }
    return r;
}

}  // namespace board
