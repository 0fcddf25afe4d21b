// The drawing calls the renderer makes, carried out by cairo (PDF, PNG) or written as SVG
// elements: paths become <path>, text becomes <text> in the DejaVu Sans font, and groups become
// <g> with the attributes given, so that an SVG keeps its text as text and its segments as
// addressable groups. Text is always measured by cairo, so that every format places it alike.
#pragma once

#include <cairo.h>

#include <iosfwd>
#include <string>

namespace krtool {

class DrawingCanvas {
public:
    // Draws with cairo on `cr`.
    explicit DrawingCanvas(cairo_t* cr);
    // Writes an SVG of the given size in points to `svg`; `measure` is the cairo context that
    // measures text. finishSvg() closes the document.
    DrawingCanvas(std::ostream& svg, cairo_t* measure, double width, double height);

    void setSourceRgb(double r, double g, double b) { setSourceRgba(r, g, b, 1.0); }
    void setSourceRgba(double r, double g, double b, double a);
    void setLineWidth(double width);
    void setRoundLines();

    void moveTo(double x, double y);
    void lineTo(double x, double y);
    void newSubPath();
    // Arcs as cairo draws them: around (xc, yc) from angle a1 to a2, increasing (arc) or
    // decreasing (arcNegative), with a line from the current point to the start.
    void arc(double xc, double yc, double radius, double a1, double a2);
    void arcNegative(double xc, double yc, double radius, double a1, double a2);
    void rectangle(double x, double y, double width, double height);
    void stroke();
    void fill();
    void fillPreserve();
    void paint();

    void selectFont(bool bold);
    void setFontSize(double size);
    void fontExtents(cairo_font_extents_t* extents);
    void textExtents(char const* utf8, cairo_text_extents_t* extents);
    // Text with its baseline starting at the current point.
    void showText(char const* utf8);

    // A group of what is drawn until endGroup(); `attributes` go into the SVG <g> as they are.
    void beginGroup(std::string const& attributes);
    void endGroup();
    // The drawing's title and description (SVG only; call before drawing): the status line goes
    // there as plain text too, for readers and searches.
    void describe(std::string const& title, std::string const& description);

    void finishSvg();

private:
    void svgArc(double xc, double yc, double radius, double a1, double a2, bool negative);
    void svgPoint(char command, double x, double y);
    std::string colourAttributes(char const* what) const;

    cairo_t* cr_;
    std::ostream* svg_ = nullptr;
    double width_ = 0.0;
    double height_ = 0.0;
    double r_ = 0.0, g_ = 0.0, b_ = 0.0, a_ = 1.0;
    double lineWidth_ = 2.0;
    bool round_ = false;
    bool bold_ = false;
    double fontSize_ = 10.0;
    std::string path_;            // SVG path data of the current path
    bool hasPoint_ = false;       // the current path has a current point
    double x_ = 0.0, y_ = 0.0;   // the current point
    double startX_ = 0.0, startY_ = 0.0;  // start of the current sub-path
};

}  // namespace krtool
