#include "DrawingCanvas.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>

namespace krtool {

namespace {

constexpr double kTwoPi = 6.28318530717958647692;
char const* const kFontFamily = "DejaVu Sans";

// A coordinate with a thousandth of a point of precision and no trailing zeros.
std::string num(double value)
{
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.3f", std::isfinite(value) ? value : 0.0);
    std::string s = buf;
    if (s.find('.') != std::string::npos) {
        while (s.back() == '0')
            s.pop_back();
        if (s.back() == '.')
            s.pop_back();
    }
    return s == "-0" ? "0" : s;
}

std::string xmlText(char const* utf8)
{
    std::string out;
    for (char const* p = utf8; *p; ++p) {
        switch (*p) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default:
            // XML 1.0 has no control characters but tab and line breaks.
            if (static_cast<unsigned char>(*p) >= 0x20 || *p == '\t' || *p == '\n' || *p == '\r')
                out += *p;
            break;
        }
    }
    return out;
}

}  // namespace

DrawingCanvas::DrawingCanvas(cairo_t* cr) : cr_(cr) {}

DrawingCanvas::DrawingCanvas(std::ostream& svg, cairo_t* measure, double width, double height)
    : cr_(measure), svg_(&svg), width_(width), height_(height)
{
    // xml:space keeps the double spaces between the parts of a label.
    svg << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << num(width) << "pt\" height=\""
        << num(height) << "pt\" viewBox=\"0 0 " << num(width) << ' ' << num(height)
        << "\" xml:space=\"preserve\">\n";
}

void DrawingCanvas::setSourceRgba(double r, double g, double b, double a)
{
    r_ = r;
    g_ = g;
    b_ = b;
    a_ = a;
    if (!svg_)
        cairo_set_source_rgba(cr_, r, g, b, a);
}

void DrawingCanvas::setLineWidth(double width)
{
    lineWidth_ = width;
    if (!svg_)
        cairo_set_line_width(cr_, width);
}

void DrawingCanvas::setRoundLines()
{
    round_ = true;
    if (!svg_) {
        cairo_set_line_cap(cr_, CAIRO_LINE_CAP_ROUND);
        cairo_set_line_join(cr_, CAIRO_LINE_JOIN_ROUND);
    }
}

void DrawingCanvas::svgPoint(char command, double x, double y)
{
    path_ += command;
    path_ += num(x) + ' ' + num(y);
    x_ = x;
    y_ = y;
    if (command == 'M') {
        startX_ = x;
        startY_ = y;
    }
    hasPoint_ = true;
}

void DrawingCanvas::moveTo(double x, double y)
{
    if (!svg_)
        cairo_move_to(cr_, x, y);
    else
        svgPoint('M', x, y);
}

void DrawingCanvas::lineTo(double x, double y)
{
    if (!svg_)
        cairo_line_to(cr_, x, y);
    else
        svgPoint(hasPoint_ ? 'L' : 'M', x, y);
}

void DrawingCanvas::newSubPath()
{
    if (!svg_)
        cairo_new_sub_path(cr_);
    else
        hasPoint_ = false;
}

void DrawingCanvas::svgArc(double xc, double yc, double radius, double a1, double a2, bool negative)
{
    // The sweep as cairo takes it: a2 moved by whole turns to the side the arc runs to.
    if (!negative) {
        if (a2 < a1)
            a2 += std::ceil((a1 - a2) / kTwoPi) * kTwoPi;
    } else if (a2 > a1) {
        a2 -= std::ceil((a2 - a1) / kTwoPi) * kTwoPi;
    }
    double const sweep = a2 - a1;
    svgPoint(hasPoint_ ? 'L' : 'M', xc + radius * std::cos(a1), yc + radius * std::sin(a1));
    // SVG arcs are given by their end point: pieces of at most a half turn keep them unambiguous.
    int const pieces = std::max(1, static_cast<int>(std::ceil(std::fabs(sweep) / (kTwoPi / 2) - 1e-9)));
    for (int i = 1; i <= pieces; ++i) {
        double const a = a1 + sweep * i / pieces;
        path_ += "A" + num(radius) + ' ' + num(radius) + " 0 0 " + (negative ? "0 " : "1 ");
        path_ += num(xc + radius * std::cos(a)) + ' ' + num(yc + radius * std::sin(a));
        x_ = xc + radius * std::cos(a);
        y_ = yc + radius * std::sin(a);
    }
}

void DrawingCanvas::arc(double xc, double yc, double radius, double a1, double a2)
{
    if (!svg_)
        cairo_arc(cr_, xc, yc, radius, a1, a2);
    else
        svgArc(xc, yc, radius, a1, a2, false);
}

void DrawingCanvas::arcNegative(double xc, double yc, double radius, double a1, double a2)
{
    if (!svg_)
        cairo_arc_negative(cr_, xc, yc, radius, a1, a2);
    else
        svgArc(xc, yc, radius, a1, a2, true);
}

void DrawingCanvas::rectangle(double x, double y, double width, double height)
{
    if (!svg_) {
        cairo_rectangle(cr_, x, y, width, height);
        return;
    }
    svgPoint('M', x, y);
    path_ += "h" + num(width) + "v" + num(height) + "h" + num(-width) + "Z";
}

std::string DrawingCanvas::colourAttributes(char const* what) const
{
    auto channel = [](double v) {
        return std::to_string(static_cast<int>(std::lround(std::fmin(std::fmax(v, 0.0), 1.0) * 255.0)));
    };
    std::string s = std::string(what) + "=\"rgb(" + channel(r_) + "," + channel(g_) + "," +
                    channel(b_) + ")\"";
    if (a_ < 1.0)
        s += ' ' + std::string(what) + "-opacity=\"" + num(a_) + "\"";
    return s;
}

void DrawingCanvas::stroke()
{
    if (!svg_) {
        cairo_stroke(cr_);
        return;
    }
    if (!path_.empty()) {
        *svg_ << "<path d=\"" << path_ << "\" fill=\"none\" " << colourAttributes("stroke")
              << " stroke-width=\"" << num(lineWidth_) << "\"";
        if (round_)
            *svg_ << " stroke-linecap=\"round\" stroke-linejoin=\"round\"";
        *svg_ << "/>\n";
    }
    path_.clear();
    hasPoint_ = false;
}

void DrawingCanvas::fillPreserve()
{
    if (!svg_) {
        cairo_fill_preserve(cr_);
        return;
    }
    if (!path_.empty())
        *svg_ << "<path d=\"" << path_ << "\" " << colourAttributes("fill") << "/>\n";
}

void DrawingCanvas::fill()
{
    if (!svg_) {
        cairo_fill(cr_);
        return;
    }
    fillPreserve();
    path_.clear();
    hasPoint_ = false;
}

void DrawingCanvas::paint()
{
    if (!svg_) {
        cairo_paint(cr_);
        return;
    }
    *svg_ << "<rect x=\"0\" y=\"0\" width=\"" << num(width_) << "\" height=\"" << num(height_)
          << "\" " << colourAttributes("fill") << "/>\n";
}

void DrawingCanvas::selectFont(bool bold)
{
    bold_ = bold;
    cairo_select_font_face(cr_, kFontFamily, CAIRO_FONT_SLANT_NORMAL,
                           bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
}

void DrawingCanvas::setFontSize(double size)
{
    fontSize_ = size;
    cairo_set_font_size(cr_, size);
}

void DrawingCanvas::fontExtents(cairo_font_extents_t* extents)
{
    cairo_font_extents(cr_, extents);
}

void DrawingCanvas::textExtents(char const* utf8, cairo_text_extents_t* extents)
{
    cairo_text_extents(cr_, utf8, extents);
}

void DrawingCanvas::showText(char const* utf8)
{
    if (!svg_) {
        cairo_show_text(cr_, utf8);
        return;
    }
    *svg_ << "<text x=\"" << num(x_) << "\" y=\"" << num(y_) << "\" font-family=\"" << kFontFamily
          << "\" font-size=\"" << num(fontSize_) << "\"" << (bold_ ? " font-weight=\"bold\"" : "")
          << ' ' << colourAttributes("fill") << '>' << xmlText(utf8) << "</text>\n";
    // Like cairo, text leaves no path behind.
    path_.clear();
    hasPoint_ = false;
}

void DrawingCanvas::beginGroup(std::string const& attributes)
{
    if (svg_)
        *svg_ << "<g " << attributes << ">\n";
}

void DrawingCanvas::endGroup()
{
    if (svg_)
        *svg_ << "</g>\n";
}

void DrawingCanvas::describe(std::string const& title, std::string const& description)
{
    if (svg_)
        *svg_ << "<title>" << xmlText(title.c_str()) << "</title>\n<desc>"
              << xmlText(description.c_str()) << "</desc>\n";
}

void DrawingCanvas::finishSvg()
{
    if (svg_)
        *svg_ << "</svg>\n";
}

}  // namespace krtool
