// Writes a layout as a plain ASCII DXF (R12) for other CAD programs: one layer per route segment
// (SEG_<id>) holding its LINE entities and the ARC entities of its fillets, and a LABELS layer with
// the segment ids and connector names as TEXT.
#pragma once

#include "LayoutResult.h"

#include <iosfwd>
#include <string>

namespace krtool {

class DxfWriter {
public:
    static std::string layerName(long segmentId);
    // Writes the laid-out lines, or the input sketch when the run stopped before the layout.
    static void write(std::ostream& out, LayoutResult const& result);

private:
    // DXF R12 text is 8-bit: non-ASCII characters become \U+XXXX escapes, controls are dropped.
    static std::string dxfText(std::string const& utf8);
};

}  // namespace krtool
