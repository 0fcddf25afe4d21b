// Draws a layout as SVG, PDF or PNG: every segment with its id, true length and diameter,
// connector names at the ends, fillets as arcs, a grid and a scale bar. When a check failed it
// draws the input sketch instead, with the offending segments highlighted and labelled. PDF and
// PNG are drawn by cairo; the SVG is written element by element (DrawingCanvas) so that it keeps
// text as text and each segment in a group of its own. The same input gives the same bytes.
// A fixed-scale PDF can be tiled onto sheets of paper, at true scale, with an overview first.
#pragma once

#include "LayoutResult.h"
#include "PaperSize.h"
#include "QualityReport.h"

#include <iosfwd>
#include <string>

namespace krtool {

class DrawingRenderer {
public:
    enum class Format { Svg, Pdf, Png };

    struct Options {
        Format format = Format::Png;
        // Paper length per model length (1 for 1:1, 0.1 for 1:10); 0 fits the drawing to a sheet.
        // PNG is always fitted.
        double paperScale = 0.0;
        // A fixed-scale PDF is tiled onto sheets of `paper` when paperGiven, and onto A3 when it
        // would be larger than 200 in (14,400 pt, more than PDF viewers take) on one side.
        bool paperGiven = false;
        PaperSize paper;
        // PDF creation date in seconds since 1970 (UTC); negative: the PDF has none.
        long long createdAt = -1;
    };

    // Throws std::runtime_error when cairo cannot draw or the stream cannot be written.
    static void render(std::ostream& out, LayoutResult const& result, QualityReport const& report,
                       Options const& options);
};

}  // namespace krtool
