// Writes a layout as an ASCII DXF R2000 file for other CAD programs: one layer per route segment
// (SEG_<id>) holding its LINE entities, the ARC entities of its fillets and a TEXT with its id,
// true length and diameter, and a CONNECTORS layer with the connector names as TEXT. The header
// gives the drawing units ($INSUNITS, $MEASUREMENT) from the model units.
#pragma once

#include "LayoutResult.h"

#include <iosfwd>
#include <string>

namespace krtool {

class DxfWriter {
public:
    static char const* const kConnectorLayer;

    static std::string layerName(long segmentId);
    // Writes the laid-out lines, or the input sketch when the run stopped before the layout.
    static void write(std::ostream& out, LayoutResult const& result);
    // The DXF unit code ($INSUNITS) of a model unit given in metres: 6 m, 5 cm, 4 mm, 1 in, 2 ft;
    // 0 (unitless) for any other size.
    static int insUnits(double metresPerUnit);

private:
    // The text on a segment: "19  0.350 m  %%c8 mm".
    static std::string segmentText(ResultSegment const& s, LayoutResult const& result);
    // DXF text is 8-bit: non-ASCII characters become \U+XXXX escapes, controls are dropped, and
    // each ill-formed part of the UTF-8 (as KrUtf8Codec decodes it) becomes '?'.
    static std::string dxfText(std::string const& utf8);
};

}  // namespace krtool
