#include "DrawingRenderer.h"

#include "DrawingCanvas.h"
#include "DroppedSegments.h"
#include "Geometry2D.h"
#include "LabelPlacer.h"
#include "LayoutType.h"
#include "UnitFormat.h"

#include <cairo-pdf.h>
#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <map>
#include <memory>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace krtool {

namespace {

constexpr double kPointsPerMetre = 72.0 / 0.0254;
constexpr double kMarginX = 36.0;
constexpr double kHeaderHeight = 72.0;
constexpr double kFooterHeight = 64.0;
constexpr double kLabelRoom = 56.0;     // room around the drawing for labels and connector names
constexpr double kMaxPngPixels = 12000.0;

// Tiling a fixed-scale PDF onto sheets of paper.
constexpr double kPointsPerMm = 72.0 / 25.4;
constexpr double kMaxPdfSide = 14400.0;                 // 200 in: the largest page viewers take
constexpr double kSheetMargin = 15.0 * kPointsPerMm;    // round each sheet's picture: labels, marks
constexpr double kSheetOverlap = 10.0 * kPointsPerMm;   // shown on both of two neighbouring sheets
constexpr double kMaxSheets = 999.0;

struct Colour {
    double r, g, b;
};

// Distinct colours that stay readable on white.
Colour const kPalette[] = {
    {0.12, 0.47, 0.71}, {0.85, 0.37, 0.01}, {0.17, 0.63, 0.17}, {0.58, 0.40, 0.74},
    {0.55, 0.34, 0.29}, {0.89, 0.10, 0.55}, {0.30, 0.30, 0.30}, {0.60, 0.60, 0.00},
    {0.09, 0.65, 0.75}, {0.40, 0.20, 0.60}, {0.75, 0.25, 0.25}, {0.10, 0.40, 0.30},
};
Colour const kFailed{0.86, 0.08, 0.08};
Colour const kSketch{0.62, 0.62, 0.62};
Colour const kInk{0.10, 0.10, 0.10};

cairo_status_t writeToStream(void* closure, unsigned char const* data, unsigned int length)
{
    auto* out = static_cast<std::ostream*>(closure);
    out->write(reinterpret_cast<char const*>(data), static_cast<std::streamsize>(length));
    return out->good() ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR;
}

bool finite(Point2 const& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y);
}

// Model coordinates (y up) to paper points (y down).
struct Frame {
    double scale = 1.0;
    double originX = 0.0;
    double originY = 0.0;
    double minX = 0.0;
    double maxY = 0.0;

    Point2 map(Point2 const& p) const
    {
        // Scaled before subtracting, so that far-apart coordinates cannot overflow.
        return {originX + (p.x * scale - minX * scale), originY + (maxY * scale - p.y * scale)};
    }
};

// How a drawing is cut into sheets: pictures of imageWidth x imageHeight points, one every stepX
// and stepY, so that neighbours share kSheetOverlap.
struct SheetPlan {
    double pageWidth = 0.0;
    double pageHeight = 0.0;
    double imageWidth = 0.0;
    double imageHeight = 0.0;
    double stepX = 0.0;
    double stepY = 0.0;
    long columns = 1;
    long rows = 1;
    bool landscape = true;
    // Where the drawing lies in the sheets' pictures put together: centred, so that the room
    // left over is shared by the first and the last column, and row.
    double offsetX = 0.0;
    double offsetY = 0.0;
};

// Sheets needed along one side: one when the length fits a picture, otherwise enough pictures,
// each overlapping the last, to cover it. A double, so that it is checked before it is counted.
double sheetsAlong(double length, double image)
{
    if (length <= image)
        return 1.0;
    return std::ceil((length - kSheetOverlap) / (image - kSheetOverlap));
}

// Column names as in a spreadsheet: A ... Z, AA, AB, ...
std::string columnName(long column)
{
    std::string name;
    for (long c = column + 1; c > 0; c = (c - 1) / 26)
        name.insert(name.begin(), static_cast<char>('A' + (c - 1) % 26));
    return name;
}

std::string sheetName(long column, long row)
{
    return columnName(column) + std::to_string(row + 1);
}

struct SurfaceDeleter {
    void operator()(cairo_surface_t* s) const { cairo_surface_destroy(s); }
};
struct ContextDeleter {
    void operator()(cairo_t* c) const { cairo_destroy(c); }
};
using SurfacePtr = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;
using ContextPtr = std::unique_ptr<cairo_t, ContextDeleter>;

class Painter {
public:
    Painter(LayoutResult const& result, QualityReport const& report,
            DrawingRenderer::Options const& options)
        : result_(result), report_(report), options_(options), laidOut_(result.laidOut)
    {
        // Sorted, to look segments up in logarithmic time.
        failedIds_ = result.failedIds;
        std::sort(failedIds_.begin(), failedIds_.end());
    }

    void render(std::ostream& out);

private:
    void planPage();
    void drawAll(DrawingCanvas& cr);
    // A new PDF surface writing to `out`, its first page width x height, dated as asked.
    SurfacePtr createPdf(std::ostream& out, double width, double height) const;
    // A fixed-scale PDF cut into sheets of `paper`, an overview of them first.
    void renderSheets(std::ostream& out, PaperSize const& paper);
    SheetPlan planSheets(PaperSize const& paper) const;
    void drawOverview(cairo_t* cr, cairo_surface_t* drawing, SheetPlan const& plan,
                      PaperSize const& paper, double width, double height, long pages);
    void drawSheet(cairo_t* cr, cairo_surface_t* drawing, SheetPlan const& plan,
                   PaperSize const& paper, long column, long row, long page, long pages);
    std::string scaleText() const;
    void drawBackground(DrawingCanvas& cr);
    void drawGrid(DrawingCanvas& cr);
    void drawSegments(DrawingCanvas& cr);
    void drawEnds(DrawingCanvas& cr);
    void placeAndDrawLabels(DrawingCanvas& cr);
    void drawHeader(DrawingCanvas& cr);
    // The status line under the title; banner is set when it must stand out as a red banner
    // (the layout lost segments).
    std::string statusLine(bool& banner) const;
    void drawScaleBar(DrawingCanvas& cr);

    bool failedSegment(long id) const
    {
        return std::binary_search(failedIds_.begin(), failedIds_.end(), id);
    }
    Colour colourOf(size_t index, long id) const
    {
        if (!failedIds_.empty())
            return failedSegment(id) ? kFailed : kSketch;
        return kPalette[index % (sizeof kPalette / sizeof kPalette[0])];
    }
    // Paper polylines of a segment: laid-out lines, or the input entities.
    std::vector<std::vector<Point2>> paperPaths(ResultSegment const& s) const;
    std::string segmentLabel(ResultSegment const& s) const;

    LayoutResult const& result_;
    QualityReport const& report_;
    DrawingRenderer::Options options_;
    bool laidOut_;
    std::vector<long> failedIds_;   // sorted

    Extent extent_;
    Frame frame_;
    double pageWidth_ = 0.0;
    double pageHeight_ = 0.0;
    double labelFont_ = 7.5;
    double connectorFont_ = 7.0;
};

void setColour(DrawingCanvas& cr, Colour const& c, double alpha = 1.0)
{
    cr.setSourceRgba(c.r, c.g, c.b, alpha);
}

void Painter::planPage()
{
    extent_ = Geometry2D::extentOf(result_, laidOut_);
    if (extent_.empty)
        extent_.add({0.0, 0.0});
    // Halves first: the difference of two huge coordinates must not overflow.
    double const halfWidth = extent_.maxX / 2.0 - extent_.minX / 2.0;
    double const halfHeight = extent_.maxY / 2.0 - extent_.minY / 2.0;
    double const metresPerUnit = result_.metresPerUnit > 0.0 ? result_.metresPerUnit : 1.0;

    double scale = 0.0;
    bool const fixed = options_.paperScale > 0.0 && options_.format != DrawingRenderer::Format::Png;
    if (fixed) {
        scale = options_.paperScale * metresPerUnit * kPointsPerMetre;
        labelFont_ = 9.0;
        connectorFont_ = 8.5;
    } else {
        // Larger harnesses get a larger sheet so that labels keep their room.
        double const n = static_cast<double>(std::max<size_t>(result_.segments.size(), 1));
        double const target = std::clamp(260.0 * std::sqrt(n), 900.0, 3600.0);
        double const halfLong = std::max(halfWidth, halfHeight * 1.25);
        scale = halfLong > 1e-12 ? (target / 2.0) / halfLong : 1000.0;
        // Keep at least a few points per grid cell so that neighbouring rows stay apart.
        double const cell = std::min(result_.gridX, result_.gridY);
        if (cell > 0.0 && std::isfinite(cell) && scale * cell < 14.0) {
            double const wanted = 14.0 / cell;
            double const maxSide = 6000.0;
            scale = std::min(wanted, halfLong > 1e-12 ? (maxSide / 2.0) / halfLong : wanted);
        }
    }
    if (!std::isfinite(scale) || scale <= 0.0)
        scale = 1.0;
    double const drawingWidth = 2.0 * (halfWidth * scale);
    double const drawingHeight = 2.0 * (halfHeight * scale);
    // About 350 m of paper: more than any printer or viewer takes.
    if (!(drawingWidth < 1e6) || !(drawingHeight < 1e6))
        throw std::runtime_error("the drawing would be too large at this scale (" +
                                 UnitFormat::plain(drawingWidth / kPointsPerMetre) + " m wide); "
                                 "choose a smaller --scale");
    frame_.scale = scale;
    frame_.minX = extent_.minX;
    frame_.maxY = extent_.maxY;
    frame_.originX = kMarginX + kLabelRoom;
    frame_.originY = kHeaderHeight + kLabelRoom;
    pageWidth_ = std::max(drawingWidth + 2.0 * (kMarginX + kLabelRoom), 680.0);
    pageHeight_ = std::max(drawingHeight + kHeaderHeight + kFooterHeight + 2.0 * kLabelRoom, 320.0);
    // A narrow drawing is centred on the sheet.
    frame_.originX += (pageWidth_ - (drawingWidth + 2.0 * (kMarginX + kLabelRoom))) / 2.0;
}

void Painter::drawBackground(DrawingCanvas& cr)
{
    cr.setSourceRgb(1.0, 1.0, 1.0);
    cr.paint();
}

void Painter::drawGrid(DrawingCanvas& cr)
{
    double const gx = result_.gridX;
    double const gy = result_.gridY;
    if (!(gx > 0.0) || !(gy > 0.0) || !std::isfinite(gx) || !std::isfinite(gy))
        return;
    double const s = frame_.scale;
    // Step through grid multiples wide enough to be seen; every fifth line is darker. Counts are
    // checked as doubles before any conversion to integers.
    double const stepsX = std::ceil(8.0 / (gx * s));
    double const stepsY = std::ceil(8.0 / (gy * s));
    if (!(stepsX < 1e6) || !(stepsY < 1e6))
        return;
    long const kx = std::max(1L, static_cast<long>(stepsX));
    long const ky = std::max(1L, static_cast<long>(stepsY));
    double const pad = kLabelRoom * 0.6 / s;
    double const x0 = extent_.minX - pad;
    double const x1 = extent_.maxX + pad;
    double const y0 = extent_.minY - pad;
    double const y1 = extent_.maxY + pad;
    double const fx0 = std::floor(x0 / (gx * kx));
    double const fx1 = std::ceil(x1 / (gx * kx));
    double const fy0 = std::floor(y0 / (gy * ky));
    double const fy1 = std::ceil(y1 / (gy * ky));
    if (!(std::fabs(fx0) < 1e12 && std::fabs(fx1) < 1e12 && std::fabs(fy0) < 1e12 &&
          std::fabs(fy1) < 1e12) ||
        fx1 - fx0 > 4000 || fy1 - fy0 > 4000)
        return;
    long const ix0 = static_cast<long>(fx0);
    long const ix1 = static_cast<long>(fx1);
    long const iy0 = static_cast<long>(fy0);
    long const iy1 = static_cast<long>(fy1);
    cr.setLineWidth(0.4);
    for (int pass = 0; pass < 2; ++pass) {
        bool const major = pass == 1;
        cr.setSourceRgb(major ? 0.80 : 0.92, major ? 0.84 : 0.94, major ? 0.90 : 0.97);
        for (long i = ix0; i <= ix1; ++i) {
            if ((i % 5 == 0) != major)
                continue;
            Point2 const a = frame_.map({static_cast<double>(i) * gx * kx, y0});
            Point2 const b = frame_.map({static_cast<double>(i) * gx * kx, y1});
            cr.moveTo(a.x, a.y);
            cr.lineTo(b.x, b.y);
        }
        for (long i = iy0; i <= iy1; ++i) {
            if ((i % 5 == 0) != major)
                continue;
            Point2 const a = frame_.map({x0, static_cast<double>(i) * gy * ky});
            Point2 const b = frame_.map({x1, static_cast<double>(i) * gy * ky});
            cr.moveTo(a.x, a.y);
            cr.lineTo(b.x, b.y);
        }
        cr.stroke();
    }
    // The origin, where the root segment starts.
    Point2 const o = frame_.map({0.0, 0.0});
    cr.setSourceRgb(0.55, 0.60, 0.70);
    cr.setLineWidth(0.8);
    cr.moveTo(o.x - 6, o.y);
    cr.lineTo(o.x + 6, o.y);
    cr.moveTo(o.x, o.y - 6);
    cr.lineTo(o.x, o.y + 6);
    cr.stroke();
}

std::vector<std::vector<Point2>> Painter::paperPaths(ResultSegment const& s) const
{
    std::vector<std::vector<Point2>> paths;
    if (laidOut_) {
        for (ResultLine const& l : s.lines) {
            if (finite(l.drawnStart) && finite(l.drawnEnd))
                paths.push_back({frame_.map(l.drawnStart), frame_.map(l.drawnEnd)});
        }
    } else {
        for (auto const& shape : s.inputShapes) {
            std::vector<Point2> path;
            for (Point2 const& p : shape) {
                if (finite(p))
                    path.push_back(frame_.map(p));
            }
            if (path.size() >= 2)
                paths.push_back(path);
        }
    }
    return paths;
}

void Painter::drawSegments(DrawingCanvas& cr)
{
    double const s = frame_.scale;
    double const metresPerUnit = result_.metresPerUnit > 0.0 ? result_.metresPerUnit : 1.0;
    cr.setRoundLines();
    auto strokeSegment = [&](ResultSegment const& seg) {
        for (auto const& path : paperPaths(seg)) {
            cr.moveTo(path[0].x, path[0].y);
            for (size_t i = 1; i < path.size(); ++i)
                cr.lineTo(path[i].x, path[i].y);
        }
        if (laidOut_) {
            for (ResultFillet const& f : seg.fillets) {
                if (!finite(f.center) || !std::isfinite(f.radius))
                    continue;
                Point2 const c = frame_.map(f.center);
                cr.newSubPath();
                // y points down on paper: a counter-clockwise model arc runs the other way.
                cr.arcNegative(c.x, c.y, f.radius * s, -f.startAngle, -f.endAngle);
            }
        }
    };
    // Each segment in its own group: a translucent band as wide as the bundle, where that is
    // visible at this scale, under its centre line. Failed segments come last, on top.
    for (int pass = 0; pass < 2; ++pass) {
        for (size_t i = 0; i < result_.segments.size(); ++i) {
            ResultSegment const& seg = result_.segments[i];
            bool const failed = failedSegment(seg.id);
            if ((pass == 1) != failed)
                continue;
            cr.beginGroup("id=\"segment-" + std::to_string(seg.id) + "\" class=\"segment\"");
            double const band = seg.diameter * s;
            if (band >= 1.5 && std::isfinite(band) && band <= 400.0) {
                setColour(cr, colourOf(i, seg.id), 0.18);
                cr.setLineWidth(band);
                strokeSegment(seg);
                cr.stroke();
            }
            setColour(cr, colourOf(i, seg.id));
            double width = failed ? 2.6 : 1.4;
            if (laidOut_ && options_.paperScale <= 0.0)
                width = std::clamp(0.8 + 60.0 * seg.diameter * metresPerUnit, 1.0, 3.0);
            cr.setLineWidth(width);
            strokeSegment(seg);
            cr.stroke();
            cr.endGroup();
        }
    }
}

// Segment ends: a dot where segments meet, an open square at a free end.
void Painter::drawEnds(DrawingCanvas& cr)
{
    std::map<std::pair<long long, long long>, std::pair<int, Point2>> ends;
    auto key = [](Point2 const& p) {
        return std::make_pair(std::llround(p.x / Geometry2D::kTolerance),
                              std::llround(p.y / Geometry2D::kTolerance));
    };
    // A segment's ends are those of the chain its lines form. Only ends within +-1e12 get here,
    // so the keys fit.
    std::vector<std::pair<Point2, Point2>> chain;
    for (ResultSegment const& s : result_.segments) {
        if (laidOut_) {
            chain.clear();
            for (ResultLine const& l : s.lines)
                chain.push_back({l.start, l.end});
        } else {
            chain = s.inputLines;
        }
        std::vector<Point2> const segmentEnds = Geometry2D::chainEnds(chain);
        bool const drawable = std::all_of(segmentEnds.begin(), segmentEnds.end(), [](Point2 const& p) {
            return finite(p) && std::fabs(p.x) <= 1e12 && std::fabs(p.y) <= 1e12;
        });
        if (!drawable)
            continue;
        for (Point2 const& p : segmentEnds) {
            auto& e = ends[key(p)];
            e.first += 1;
            e.second = p;
        }
    }
    for (auto const& [k, e] : ends) {
        (void)k;
        Point2 const p = frame_.map(e.second);
        if (e.first >= 2) {
            cr.setSourceRgb(0.15, 0.15, 0.15);
            cr.arc(p.x, p.y, 2.2, 0.0, 2.0 * Geometry2D::kPi);
            cr.fill();
        } else {
            cr.setSourceRgb(1.0, 1.0, 1.0);
            cr.rectangle(p.x - 2.5, p.y - 2.5, 5.0, 5.0);
            cr.fillPreserve();
            cr.setSourceRgb(0.15, 0.15, 0.15);
            cr.setLineWidth(0.9);
            cr.stroke();
        }
    }
}

std::string Painter::segmentLabel(ResultSegment const& s) const
{
    std::string text = std::to_string(s.id);
    if (!failedIds_.empty()) {
        if (failedSegment(s.id))
            text += "  " + result_.checkMessage;
        return text;
    }
    text += "  " + UnitFormat::length(s.length, result_.units);
    text += "  \u00d8" + UnitFormat::diameter(s.diameter, result_.units, result_.metresPerUnit);
    return text;
}

void Painter::placeAndDrawLabels(DrawingCanvas& cr)
{
    LabelPlacer placer;
    placer.setBounds({kMarginX, kHeaderHeight, pageWidth_ - kMarginX, pageHeight_ - kFooterHeight});
    struct SegPaths {
        size_t index;
        std::vector<std::vector<Point2>> paths;
        double longest;
    };
    std::vector<SegPaths> all;
    for (size_t i = 0; i < result_.segments.size(); ++i) {
        SegPaths sp{i, paperPaths(result_.segments[i]), 0.0};
        for (auto const& path : sp.paths) {
            for (size_t k = 1; k < path.size(); ++k) {
                placer.addLine(path[k - 1], path[k]);
                sp.longest = std::max(sp.longest, Geometry2D::distance(path[k - 1], path[k]));
            }
        }
        all.push_back(std::move(sp));
    }

    struct Placed {
        std::string text;
        Rect box;
        Colour colour;
        double font;
        bool bold;
        bool leader;
        Point2 anchor;
        std::string group;    // attributes of the label's SVG group
    };
    std::vector<Placed> placed;
    cairo_font_extents_t fe;

    auto measure = [&](std::string const& text, double font, bool bold, double& w, double& h) {
        cr.selectFont(bold);
        cr.setFontSize(font);
        cairo_text_extents_t te;
        cr.textExtents(text.c_str(), &te);
        cr.fontExtents(&fe);
        w = te.x_advance + 3.0;
        h = fe.ascent + fe.descent + 1.0;
    };

    // Connector names first: they are tied to one point and have the fewest good spots.
    for (size_t i = 0; i < result_.segments.size(); ++i) {
        ResultSegment const& seg = result_.segments[i];
        for (ConnectorEnd const& c : seg.connectors) {
            if (!finite(c.at) || c.name.empty())
                continue;
            Point2 const p = frame_.map(c.at);
            placer.addBox({p.x - 3, p.y - 3, p.x + 3, p.y + 3});
        }
    }
    for (size_t i = 0; i < result_.segments.size(); ++i) {
        ResultSegment const& seg = result_.segments[i];
        // The direction in which the segment leaves its end, to put the name beyond it.
        for (ConnectorEnd const& c : seg.connectors) {
            if (!finite(c.at) || c.name.empty())
                continue;
            Point2 const p = frame_.map(c.at);
            Point2 dir{0.0, 0.0};
            for (auto const& path : all[i].paths) {
                for (size_t k = 0; k < path.size(); ++k) {
                    if (Geometry2D::distance(path[k], p) < 0.5) {
                        Point2 const q = (k == 0) ? path[1] : path[k - 1];
                        double const l = Geometry2D::distance(p, q);
                        if (l > 0.0)
                            dir = {(p.x - q.x) / l, (p.y - q.y) / l};
                    }
                }
            }
            double w, h;
            measure(c.name, connectorFont_, true, w, h);
            std::vector<LabelPlacer::Candidate> cands;
            double const gap = 5.0;
            // Beyond the end first, then around it.
            Point2 const centres[] = {
                {p.x + dir.x * (gap + w / 2), p.y + dir.y * (gap + h / 2)},
                {p.x + gap + w / 2, p.y - h / 2 - 2},
                {p.x - gap - w / 2, p.y - h / 2 - 2},
                {p.x + gap + w / 2, p.y + h / 2 + 2},
                {p.x - gap - w / 2, p.y + h / 2 + 2},
                {p.x, p.y - gap - h / 2},
                {p.x, p.y + gap + h / 2},
                {p.x + dir.x * (3 * gap + w / 2), p.y + dir.y * (3 * gap + h / 2)},
            };
            double pref = 0.0;
            for (Point2 const& cc : centres) {
                cands.push_back({{cc.x - w / 2, cc.y - h / 2, cc.x + w / 2, cc.y + h / 2}, pref});
                pref += 0.5;
            }
            double cost = 0.0;
            int const k = placer.place(cands, cost);
            if (k >= 0)
                placed.push_back({c.name, cands[static_cast<size_t>(k)].box, {0.05, 0.05, 0.05},
                                  connectorFont_, true, false, p, "class=\"connector\""});
        }
    }

    // Segment labels, the segments with the least room first.
    std::vector<size_t> order;
    for (size_t i = 0; i < all.size(); ++i)
        order.push_back(i);
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return all[a].longest < all[b].longest; });
    for (size_t oi : order) {
        SegPaths const& sp = all[oi];
        ResultSegment const& seg = result_.segments[sp.index];
        if (sp.paths.empty())
            continue;
        bool const failed = failedSegment(seg.id);
        std::string const text = segmentLabel(seg);
        double font = failed ? labelFont_ + 1.5 : labelFont_;
        std::vector<LabelPlacer::Candidate> cands;
        std::vector<Point2> anchors;
        std::vector<int> farness;
        double w, h;
        measure(text, font, failed, w, h);
        // The lines of the segment, longest first.
        std::vector<std::pair<Point2, Point2>> pieces;
        for (auto const& path : sp.paths)
            for (size_t k = 1; k < path.size(); ++k)
                pieces.push_back({path[k - 1], path[k]});
        std::stable_sort(pieces.begin(), pieces.end(), [](auto const& a, auto const& b) {
            return Geometry2D::distance(a.first, a.second) > Geometry2D::distance(b.first, b.second);
        });
        if (pieces.size() > 6)
            pieces.resize(6);
        double rank = 0.0;
        for (auto const& [a, b] : pieces) {
            double const len = Geometry2D::distance(a, b);
            double ux = 1.0, uy = 0.0;
            if (len > 0.0) {
                ux = (b.x - a.x) / len;
                uy = (b.y - a.y) / len;
            }
            // Unit normal of the line; the label box is pushed out along it.
            double const nx = -uy;
            double const ny = ux;
            for (double t : {0.5, 0.3, 0.7, 0.15, 0.85}) {
                Point2 const m{a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t};
                for (int side : {-1, 1}) {
                    for (int far = 0; far < 3; ++far) {
                        double const gap = 2.5 + far * (h + 2.0);
                        double const sx = side * nx;
                        double const sy = side * ny;
                        // Distance from the box centre to its edge along the normal.
                        double const reach = std::fabs(sx) * w / 2 + std::fabs(sy) * h / 2;
                        Point2 const c{m.x + sx * (gap + reach), m.y + sy * (gap + reach)};
                        double pref = rank * 0.6 + std::fabs(t - 0.5) * 2.0 + far * 2.5 +
                                      (side > 0 ? 0.2 : 0.0);
                        cands.push_back({{c.x - w / 2, c.y - h / 2, c.x + w / 2, c.y + h / 2}, pref});
                        anchors.push_back(m);
                        farness.push_back(far);
                    }
                }
            }
            rank += 1.0;
        }
        double cost = 0.0;
        int k = placer.place(cands, cost);
        if (k < 0)
            continue;
        Rect const box = cands[static_cast<size_t>(k)].box;
        Point2 const anchor = anchors[static_cast<size_t>(k)];
        // A label pushed away from its line gets a leader line back to it.
        bool const leader = farness[static_cast<size_t>(k)] > 0;
        Colour colour = colourOf(sp.index, seg.id);
        if (failedIds_.empty()) {
            colour = {colour.r * 0.7, colour.g * 0.7, colour.b * 0.7};
        } else if (!failed) {
            colour = {0.35, 0.35, 0.35};
        }
        placed.push_back({text, box, colour, font, failed, leader, anchor,
                          "class=\"label\" data-segment=\"" + std::to_string(seg.id) + "\""});
    }

    for (Placed const& p : placed) {
        cr.beginGroup(p.group);
        if (p.leader) {
            cr.setSourceRgba(p.colour.r, p.colour.g, p.colour.b, 0.7);
            cr.setLineWidth(0.5);
            double const cx = std::clamp(p.anchor.x, p.box.x0, p.box.x1);
            double const cy = std::clamp(p.anchor.y, p.box.y0, p.box.y1);
            cr.moveTo(p.anchor.x, p.anchor.y);
            cr.lineTo(cx, cy);
            cr.stroke();
        }
        // A white halo keeps the text readable where it crosses a line.
        cr.setSourceRgba(1.0, 1.0, 1.0, 0.82);
        cr.rectangle(p.box.x0, p.box.y0, p.box.x1 - p.box.x0, p.box.y1 - p.box.y0);
        cr.fill();
        cr.selectFont(p.bold);
        cr.setFontSize(p.font);
        cr.fontExtents(&fe);
        setColour(cr, p.colour);
        cr.moveTo(p.box.x0 + 1.5, p.box.y0 + 0.5 + fe.ascent);
        cr.showText(p.text.c_str());
        cr.endGroup();
    }
}

void Painter::drawHeader(DrawingCanvas& cr)
{
    auto text = [&](double x, double y, double size, bool bold, std::string const& s) {
        cr.selectFont(bold);
        cr.setFontSize(size);
        cr.moveTo(x, y);
        cr.showText(s.c_str());
    };
    setColour(cr, kInk);
    std::string title = result_.documentName.empty() ? "Route layout" : result_.documentName;
    text(kMarginX, 28, 15, true, title);

    std::ostringstream line;
    line << LayoutType::title(result_.layoutType) << "  \u00b7  "
         << (result_.mode == "arrays" ? "output arrays" : "drawn into the host sketch")
         << "  \u00b7  grid " << UnitFormat::length(result_.gridX, result_.units) << " \u00d7 "
         << UnitFormat::length(result_.gridY, result_.units);
    if (result_.layoutType == LayoutType::kBoard)
        line << "  \u00b7  clearance " << UnitFormat::length(result_.clearance, result_.units);
    line << "  \u00b7  model units: " << result_.units;
    if (result_.mode != "arrays")
        line << "  \u00b7  fillets " << (result_.fillets ? "on" : "off") << ", relations "
             << (result_.relations ? "on" : "off");
    text(kMarginX, 46, 9, false, line.str());

    bool banner = false;
    std::string const status = statusLine(banner);
    if (banner) {
        // A red banner across the sheet, the text shrunk until it fits.
        double const left = kMarginX - 4.0;
        double const width = pageWidth_ - 2.0 * left;
        double font = 9.5;
        cr.selectFont(true);
        for (;;) {
            cr.setFontSize(font);
            cairo_text_extents_t te;
            cr.textExtents(status.c_str(), &te);
            if (te.x_advance <= width - 8.0 || font <= 5.0)
                break;
            font *= 0.92;
        }
        setColour(cr, kFailed);
        cr.rectangle(left, 50.0, width, 17.0);
        cr.fill();
        cr.setSourceRgb(1.0, 1.0, 1.0);
        text(kMarginX, 62, font, true, status);
        return;
    }
    if (result_.status == 0 && result_.laidOut)
        setColour(cr, {0.10, 0.45, 0.15});
    else
        setColour(cr, kFailed);
    text(kMarginX, 62, 9.5, true, status);
}

std::string Painter::statusLine(bool& banner) const
{
    using Reason = DroppedSegment::Reason;
    std::ostringstream status;
    size_t const lost = DroppedSegments::count(result_, Reason::FinalCheck);
    size_t const cleaned = DroppedSegments::count(result_, Reason::MultiPinCleanUp);
    size_t const total = result_.segments.size() + result_.removedIds.size();
    banner = false;
    if (result_.status == 0 && result_.laidOut && lost > 0) {
        banner = true;
        status << "INCOMPLETE: " << lost << " of " << total << " segments missing, "
               << DroppedSegments::reasonText(Reason::FinalCheck) << ": "
               << DroppedSegments::idList(result_, Reason::FinalCheck, 24);
        if (cleaned > 0)
            status << "  \u00b7  " << cleaned << " removed by the multi-pin clean-up: "
                   << DroppedSegments::idList(result_, Reason::MultiPinCleanUp, 12);
    } else if (result_.status == 0 && result_.laidOut) {
        Extent const e = extent_;
        status << "OK  \u00b7  " << result_.segments.size() << " segments  \u00b7  "
               << report_.crossingPairs() << " crossing pairs  \u00b7  "
               << report_.overlaps().count() << " overlapping pieces  \u00b7  extent "
               << UnitFormat::length(e.width(), result_.units) << " \u00d7 "
               << UnitFormat::length(e.height(), result_.units);
        if (cleaned > 0)
            status << "  \u00b7  " << cleaned << " removed by the multi-pin clean-up: "
                   << DroppedSegments::idList(result_, Reason::MultiPinCleanUp, 12);
    } else {
        status << "Failed (status " << result_.status << "): " << result_.statusText;
        if (!result_.failedIds.empty()) {
            status << "  \u00b7  " << result_.checkMessage << ":";
            size_t n = 0;
            for (long id : result_.failedIds) {
                if (n++ == 24) {
                    status << " ...";
                    break;
                }
                status << ' ' << id;
            }
        }
        if (!result_.laidOut)
            status << "  \u00b7  input sketch shown";
    }
    return status.str();
}

void Painter::drawScaleBar(DrawingCanvas& cr)
{
    double const s = frame_.scale;
    // A round length (1, 2 or 5 times a power of ten) about 120 points long.
    double const want = 120.0 / s;
    double const p10 = std::pow(10.0, std::floor(std::log10(want)));
    double len = p10;
    for (double m : {1.0, 2.0, 5.0, 10.0}) {
        if (m * p10 * s <= 200.0)
            len = m * p10;
    }
    double const barW = len * s;
    double const x = kMarginX;
    double const y = pageHeight_ - kFooterHeight + 26.0;
    cr.setLineWidth(0.8);
    for (int i = 0; i < 4; ++i) {
        cr.rectangle(x + i * barW / 4, y, barW / 4, 5.0);
        if (i % 2 == 0) {
            setColour(cr, kInk);
            cr.fillPreserve();
        } else {
            cr.setSourceRgb(1.0, 1.0, 1.0);
            cr.fillPreserve();
        }
        setColour(cr, kInk);
        cr.stroke();
    }
    cr.selectFont(false);
    cr.setFontSize(8.0);
    setColour(cr, kInk);
    cr.moveTo(x, y - 4.0);
    cr.showText("0");
    std::string const lenText = UnitFormat::length(len, result_.units);
    cairo_text_extents_t te;
    cr.textExtents(lenText.c_str(), &te);
    cr.moveTo(x + barW - te.x_advance / 2, y - 4.0);
    cr.showText(lenText.c_str());

    std::ostringstream note;
    bool const fixed = options_.paperScale > 0.0 && options_.format != DrawingRenderer::Format::Png;
    if (fixed) {
        note << "Scale " << scaleText() << " (print at 100 %, no page scaling)";
    } else {
        note << "Not to scale: fitted to the sheet";
    }
    if (!result_.failedIds.empty())
        note << "   \u00b7   red: " << result_.checkMessage;
    else
        note << "   \u00b7   label: id, true length, diameter   \u00b7   \u25a1 free end   \u00b7   "
                "\u25cf branch point";
    cr.moveTo(x + barW + 24.0, y + 5.0);
    cr.showText(note.str().c_str());
}

void Painter::drawAll(DrawingCanvas& canvas)
{
    bool banner = false;
    canvas.describe(result_.documentName.empty() ? "Route layout" : result_.documentName,
                    statusLine(banner));
    drawBackground(canvas);
    drawGrid(canvas);
    drawSegments(canvas);
    drawEnds(canvas);
    placeAndDrawLabels(canvas);
    drawHeader(canvas);
    drawScaleBar(canvas);
    canvas.finishSvg();
}

SurfacePtr Painter::createPdf(std::ostream& out, double width, double height) const
{
    SurfacePtr surface(cairo_pdf_surface_create_for_stream(writeToStream, &out, width, height));
    // cairo stamps a PDF with the time it was made; the same drawing must give the same
    // bytes, so the date is SOURCE_DATE_EPOCH's or none.
    std::string created;
    if (options_.createdAt >= 0) {
        std::time_t const t = static_cast<std::time_t>(options_.createdAt);
        std::tm tm{};
        char buf[64];
        if (gmtime_r(&t, &tm) && std::strftime(buf, sizeof buf, "%Y-%m-%dT%H:%M:%SZ", &tm) > 0)
            created = buf;
    }
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_CREATE_DATE, created.c_str());
    return surface;
}

void Painter::render(std::ostream& out)
{
    planPage();
    bool const fixed = options_.paperScale > 0.0;
    if (options_.format == DrawingRenderer::Format::Pdf && fixed &&
        (options_.paperGiven || pageWidth_ > kMaxPdfSide || pageHeight_ > kMaxPdfSide)) {
        PaperSize paper = options_.paper;
        if (!options_.paperGiven)
            PaperSize::find("A3", paper);
        renderSheets(out, paper);
        return;
    }
    SurfacePtr surface;
    double zoom = 1.0;
    bool const svg = options_.format == DrawingRenderer::Format::Svg;
    switch (options_.format) {
    case DrawingRenderer::Format::Svg:
        // The SVG is written element by element; cairo only measures text, on a vector surface
        // that keeps no pixels, so that labels are placed as in the PDF.
        surface.reset(cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, nullptr));
        break;
    case DrawingRenderer::Format::Pdf:
        surface = createPdf(out, pageWidth_, pageHeight_);
        break;
    case DrawingRenderer::Format::Png: {
        zoom = std::min(1.5, kMaxPngPixels / std::max(pageWidth_, pageHeight_));
        int const w = static_cast<int>(std::ceil(pageWidth_ * zoom));
        int const h = static_cast<int>(std::ceil(pageHeight_ * zoom));
        surface.reset(cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h));
        break;
    }
    }
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error(std::string("cannot create the drawing: ") +
                                 cairo_status_to_string(cairo_surface_status(surface.get())));
    {
        ContextPtr context(cairo_create(surface.get()));
        cairo_t* cr = context.get();
        cairo_scale(cr, zoom, zoom);
        if (svg) {
            // Unhinted metrics, as on any vector surface: text measures as it does in the PDF.
            cairo_font_options_t* fo = cairo_font_options_create();
            cairo_font_options_set_hint_metrics(fo, CAIRO_HINT_METRICS_OFF);
            cairo_font_options_set_hint_style(fo, CAIRO_HINT_STYLE_NONE);
            cairo_set_font_options(cr, fo);
            cairo_font_options_destroy(fo);
        }
        std::unique_ptr<DrawingCanvas> canvas =
            svg ? std::make_unique<DrawingCanvas>(out, cr, pageWidth_, pageHeight_)
                : std::make_unique<DrawingCanvas>(cr);
        drawAll(*canvas);
        if (!svg)
            cairo_show_page(cr);
        if (cairo_status(cr) != CAIRO_STATUS_SUCCESS)
            throw std::runtime_error(std::string("cannot draw: ") +
                                     cairo_status_to_string(cairo_status(cr)));
    }
    if (options_.format == DrawingRenderer::Format::Png) {
        cairo_status_t const st = cairo_surface_write_to_png_stream(surface.get(), writeToStream, &out);
        if (st != CAIRO_STATUS_SUCCESS)
            throw std::runtime_error(std::string("cannot write the PNG image: ") +
                                     cairo_status_to_string(st));
    }
    cairo_surface_finish(surface.get());
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error(std::string("cannot write the drawing: ") +
                                 cairo_status_to_string(cairo_surface_status(surface.get())));
    if (!out.good())
        throw std::runtime_error("cannot write the drawing");
}

std::string Painter::scaleText() const
{
    if (options_.paperScale > 1.0)
        return UnitFormat::plain(options_.paperScale) + ":1";
    return "1:" + UnitFormat::plain(1.0 / options_.paperScale);
}

SheetPlan Painter::planSheets(PaperSize const& paper) const
{
    // Landscape or portrait, whichever needs fewer sheets; landscape when they need as many.
    SheetPlan best;
    double bestCount = 0.0;
    for (bool landscape : {true, false}) {
        SheetPlan plan;
        plan.landscape = landscape;
        plan.pageWidth = landscape ? paper.height : paper.width;
        plan.pageHeight = landscape ? paper.width : paper.height;
        plan.imageWidth = plan.pageWidth - 2.0 * kSheetMargin;
        plan.imageHeight = plan.pageHeight - 2.0 * kSheetMargin;
        plan.stepX = plan.imageWidth - kSheetOverlap;
        plan.stepY = plan.imageHeight - kSheetOverlap;
        double const columns = sheetsAlong(pageWidth_, plan.imageWidth);
        double const rows = sheetsAlong(pageHeight_, plan.imageHeight);
        double const count = columns * rows;
        if (!(count <= kMaxSheets)) {
            if (bestCount == 0.0 && !landscape)
                throw std::runtime_error(
                    "the drawing would need " + UnitFormat::plain(count) + " sheets of " +
                    paper.name + " at " + scaleText() + " (at most " +
                    UnitFormat::plain(kMaxSheets) + "); choose a larger --paper or a smaller "
                    "--scale");
            continue;
        }
        plan.columns = static_cast<long>(columns);
        plan.rows = static_cast<long>(rows);
        plan.offsetX = ((columns - 1.0) * plan.stepX + plan.imageWidth - pageWidth_) / 2.0;
        plan.offsetY = ((rows - 1.0) * plan.stepY + plan.imageHeight - pageHeight_) / 2.0;
        if (bestCount == 0.0 || count < bestCount) {
            best = plan;
            bestCount = count;
        }
    }
    return best;
}

void Painter::renderSheets(std::ostream& out, PaperSize const& paper)
{
    SheetPlan const plan = planSheets(paper);
    long const sheets = plan.columns * plan.rows;
    // One sheet needs no overview.
    bool const overview = sheets > 1;
    long const pages = sheets + (overview ? 1 : 0);

    // The whole drawing once, kept as drawing operations: every sheet shows a part of it, the
    // overview all of it, all from the same labels and lines.
    cairo_rectangle_t const bounds{0.0, 0.0, pageWidth_, pageHeight_};
    SurfacePtr drawing(cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, &bounds));
    {
        ContextPtr context(cairo_create(drawing.get()));
        cairo_t* cr = context.get();
        cairo_font_options_t* fo = cairo_font_options_create();
        cairo_font_options_set_hint_metrics(fo, CAIRO_HINT_METRICS_OFF);
        cairo_font_options_set_hint_style(fo, CAIRO_HINT_STYLE_NONE);
        cairo_set_font_options(cr, fo);
        cairo_font_options_destroy(fo);
        DrawingCanvas canvas(cr);
        drawAll(canvas);
        if (cairo_status(cr) != CAIRO_STATUS_SUCCESS)
            throw std::runtime_error(std::string("cannot draw: ") +
                                     cairo_status_to_string(cairo_status(cr)));
    }

    // The overview lies the way the drawing does.
    bool const overviewLandscape = pageWidth_ >= pageHeight_;
    double const overviewWidth = overviewLandscape ? paper.height : paper.width;
    double const overviewHeight = overviewLandscape ? paper.width : paper.height;
    SurfacePtr surface = overview ? createPdf(out, overviewWidth, overviewHeight)
                                  : createPdf(out, plan.pageWidth, plan.pageHeight);
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error(std::string("cannot create the drawing: ") +
                                 cairo_status_to_string(cairo_surface_status(surface.get())));
    {
        ContextPtr context(cairo_create(surface.get()));
        cairo_t* cr = context.get();
        long page = 1;
        if (overview) {
            drawOverview(cr, drawing.get(), plan, paper, overviewWidth, overviewHeight, pages);
            cairo_show_page(cr);
            ++page;
        }
        for (long row = 0; row < plan.rows; ++row) {
            for (long column = 0; column < plan.columns; ++column) {
                cairo_pdf_surface_set_size(surface.get(), plan.pageWidth, plan.pageHeight);
                drawSheet(cr, drawing.get(), plan, paper, column, row, page++, pages);
                cairo_show_page(cr);
            }
        }
        if (cairo_status(cr) != CAIRO_STATUS_SUCCESS)
            throw std::runtime_error(std::string("cannot draw: ") +
                                     cairo_status_to_string(cairo_status(cr)));
    }
    cairo_surface_finish(surface.get());
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error(std::string("cannot write the drawing: ") +
                                 cairo_status_to_string(cairo_surface_status(surface.get())));
    if (!out.good())
        throw std::runtime_error("cannot write the drawing");
}

Colour const kSheetInk{0.80, 0.16, 0.08};

void sheetText(DrawingCanvas& canvas, double x, double y, double size, bool bold,
               std::string const& text, double align = 0.0)
{
    canvas.selectFont(bold);
    canvas.setFontSize(size);
    cairo_text_extents_t te;
    canvas.textExtents(text.c_str(), &te);
    canvas.moveTo(x - te.x_advance * align, y);
    canvas.showText(text.c_str());
}

void Painter::drawOverview(cairo_t* cr, cairo_surface_t* drawing, SheetPlan const& plan,
                           PaperSize const& paper, double width, double height, long pages)
{
    DrawingCanvas canvas(cr);
    double const m = kSheetMargin;
    double const imageWidth = width - 2.0 * m;
    double const imageHeight = height - 2.0 * m;
    // The sheets reach past the drawing's right and bottom edges: fit all of them.
    double const gridWidth = (plan.columns - 1) * plan.stepX + plan.imageWidth;
    double const gridHeight = (plan.rows - 1) * plan.stepY + plan.imageHeight;
    double const f = std::min(imageWidth / gridWidth, imageHeight / gridHeight);
    double const ox = m + (imageWidth - gridWidth * f) / 2.0;
    double const oy = m + (imageHeight - gridHeight * f) / 2.0;
    double const dx = ox + plan.offsetX * f;   // the drawing's corner
    double const dy = oy + plan.offsetY * f;

    cairo_save(cr);
    cairo_translate(cr, dx, dy);
    cairo_scale(cr, f, f);
    cairo_rectangle(cr, 0.0, 0.0, pageWidth_, pageHeight_);
    cairo_clip(cr);
    cairo_set_source_surface(cr, drawing, 0.0, 0.0);
    cairo_paint(cr);
    cairo_restore(cr);

    // The drawing's edge, then every sheet's picture: where two overlap, both edges show.
    canvas.setSourceRgb(0.55, 0.55, 0.55);
    canvas.setLineWidth(0.5);
    canvas.rectangle(dx, dy, pageWidth_ * f, pageHeight_ * f);
    canvas.stroke();
    setColour(canvas, kSheetInk, 0.85);
    canvas.setLineWidth(0.7);
    for (long row = 0; row < plan.rows; ++row)
        for (long column = 0; column < plan.columns; ++column)
            canvas.rectangle(ox + column * plan.stepX * f, oy + row * plan.stepY * f,
                             plan.imageWidth * f, plan.imageHeight * f);
    canvas.stroke();
    // Each sheet's name and page in the top left corner of its picture, on a white ground.
    double const font = std::clamp(std::min(plan.stepX, plan.stepY) * f * 0.16, 5.0, 28.0);
    double const small = std::max(font * 0.5, 4.0);
    long page = 2;
    for (long row = 0; row < plan.rows; ++row) {
        for (long column = 0; column < plan.columns; ++column) {
            double const x = ox + column * plan.stepX * f + font * 0.25;
            double const y = oy + row * plan.stepY * f + font * 0.25;
            std::string const name = sheetName(column, row);
            std::string const number = "p. " + std::to_string(page++);
            canvas.selectFont(true);
            canvas.setFontSize(font);
            cairo_text_extents_t te;
            canvas.textExtents(name.c_str(), &te);
            double const boxWidth = std::max(te.x_advance, small * 0.6 * number.size()) + 3.0;
            canvas.setSourceRgba(1.0, 1.0, 1.0, 0.85);
            canvas.rectangle(x, y, boxWidth, font + small * 1.3);
            canvas.fill();
            setColour(canvas, kSheetInk);
            sheetText(canvas, x + 1.5, y + font * 0.85, font, true, name);
            sheetText(canvas, x + 1.5, y + font + small, small, false, number);
        }
    }

    std::string const title = result_.documentName.empty() ? "Route layout" : result_.documentName;
    setColour(canvas, kInk);
    sheetText(canvas, m, m - 17.0, 12.0, true, "Overview \u00b7 " + title);
    sheetText(canvas, width - m, m - 17.0, 10.0, true, "page 1 of " + std::to_string(pages), 1.0);
    std::ostringstream line;
    line << "At " << scaleText() << " on " << (pages - 1) << " sheets of " << paper.name << ' '
         << (plan.landscape ? "landscape" : "portrait") << ": " << plan.columns
         << (plan.columns == 1 ? " column" : " columns") << " (A" << (plan.columns > 1 ? " to " + columnName(plan.columns - 1) : "")
         << ") \u00d7 " << plan.rows << (plan.rows == 1 ? " row" : " rows") << " (1"
         << (plan.rows > 1 ? " to " + std::to_string(plan.rows) : "") << "), 10 mm overlap";
    sheetText(canvas, m, m - 5.0, 8.0, false, line.str());
    sheetText(canvas, m, height - m + 14.0, 7.5, false,
              "Print at 100 % (no page scaling). Cut each sheet along its crop marks on the left "
              "and top, and lay it over its neighbours up to their red overlap marks.");
}

void Painter::drawSheet(cairo_t* cr, cairo_surface_t* drawing, SheetPlan const& plan,
                        PaperSize const& paper, long column, long row, long page, long pages)
{
    DrawingCanvas canvas(cr);
    double const m = kSheetMargin;
    double const w = plan.imageWidth;
    double const h = plan.imageHeight;

    // This sheet's part of the drawing, at full size.
    cairo_save(cr);
    cairo_rectangle(cr, m, m, w, h);
    cairo_clip(cr);
    cairo_translate(cr, m - column * plan.stepX + plan.offsetX, m - row * plan.stepY + plan.offsetY);
    cairo_set_source_surface(cr, drawing, 0.0, 0.0);
    cairo_paint(cr);
    cairo_restore(cr);

    // Crop marks at the picture's corners, pointing away from it.
    canvas.setSourceRgb(0.0, 0.0, 0.0);
    canvas.setLineWidth(0.5);
    for (double x : {m, m + w}) {
        for (double y : {m, m + h}) {
            double const sx = x == m ? -1.0 : 1.0;
            double const sy = y == m ? -1.0 : 1.0;
            canvas.moveTo(x + sx * 3.0, y);
            canvas.lineTo(x + sx * 15.0, y);
            canvas.moveTo(x, y + sy * 3.0);
            canvas.lineTo(x, y + sy * 15.0);
        }
    }
    canvas.stroke();
    // Overlap marks: where the next sheet's picture begins, right and below.
    bool const left = column > 0;
    bool const right = column + 1 < plan.columns;
    bool const above = row > 0;
    bool const below = row + 1 < plan.rows;
    setColour(canvas, kSheetInk);
    canvas.setLineWidth(0.7);
    if (right) {
        double const x = m + w - kSheetOverlap;
        canvas.moveTo(x, m - 3.0);
        canvas.lineTo(x, m - 13.0);
        canvas.moveTo(x, m + h + 3.0);
        canvas.lineTo(x, m + h + 13.0);
    }
    if (below) {
        double const y = m + h - kSheetOverlap;
        canvas.moveTo(m - 3.0, y);
        canvas.lineTo(m - 13.0, y);
        canvas.moveTo(m + w + 3.0, y);
        canvas.lineTo(m + w + 13.0, y);
    }
    canvas.stroke();

    // The sheet's name, page and neighbours.
    std::string const name = sheetName(column, row);
    std::string const title = result_.documentName.empty() ? "Route layout" : result_.documentName;
    setColour(canvas, kInk);
    sheetText(canvas, m + 6.0, m - 17.0, 13.0, true, name);
    cairo_text_extents_t te;
    canvas.textExtents(name.c_str(), &te);
    double const after = m + 6.0 + te.x_advance + 10.0;
    std::ostringstream head;
    head << title << "  \u00b7  " << scaleText() << "  \u00b7  " << paper.name << ' '
         << (plan.landscape ? "landscape" : "portrait") << "  \u00b7  column "
         << columnName(column) << " of " << plan.columns << ", row " << (row + 1) << " of "
         << plan.rows;
    sheetText(canvas, after, m - 17.0, 8.0, false, head.str());
    double const rightEdge = m + w - (right ? kSheetOverlap + 6.0 : 0.0);
    sheetText(canvas, rightEdge, m - 17.0, 10.0, true,
              "page " + std::to_string(page) + " of " + std::to_string(pages), 1.0);

    setColour(canvas, kSheetInk);
    if (left)
        sheetText(canvas, m - 4.0, m + h / 2.0, 8.0, true, "\u25c0 " + sheetName(column - 1, row), 1.0);
    if (right)
        sheetText(canvas, m + w + 4.0, m + h / 2.0, 8.0, true, sheetName(column + 1, row) + " \u25b6");
    if (above)
        sheetText(canvas, m + w / 2.0, m - 4.0, 8.0, true, "\u25b2 " + sheetName(column, row - 1), 0.5);
    if (below)
        sheetText(canvas, m + w / 2.0, m + h + 11.0, 8.0, true, "\u25bc " + sheetName(column, row + 1), 0.5);

    std::ostringstream adjoins;
    auto side = [&](char const* where, bool has, long c, long r) {
        adjoins << where << (has ? sheetName(c, r) : std::string("\u2013"));
    };
    adjoins << "Adjoins: ";
    side("left ", left, column - 1, row);
    side("  \u00b7  right ", right, column + 1, row);
    side("  \u00b7  above ", above, column, row - 1);
    side("  \u00b7  below ", below, column, row + 1);
    adjoins << "   |   print at 100 %, no page scaling; 10 mm overlap";
    setColour(canvas, kInk);
    sheetText(canvas, m + 6.0, m + h + 23.0, 7.5, false, adjoins.str());
}

}  // namespace

void DrawingRenderer::render(std::ostream& out, LayoutResult const& result,
                             QualityReport const& report, Options const& options)
{
    Painter painter(result, report, options);
    painter.render(out);
}

}  // namespace krtool
