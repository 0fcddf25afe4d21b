// The cut list as CSV for spreadsheets: the segments, a blank line, then the bill of connectors.
#pragma once

#include "LayoutResult.h"

#include <iosfwd>
#include <string>

namespace krtool {

class CutListWriter {
public:
    // UTF-8 with a byte order mark (so that spreadsheets read names beyond ASCII right), records
    // ended by CR LF, fields quoted as RFC 4180 has it. Lengths in model units with the
    // decimals that resolve 0.1 mm, diameters in millimetres with one decimal.
    static void write(std::ostream& os, LayoutResult const& result);

    // The field as CSV: in double quotes, with its quotes doubled, when it holds a comma, a
    // quote, a CR or an LF; as it is otherwise.
    static std::string field(std::string const& text);

    // Decimals of a length in this unit that keep a tenth of a millimetre (4 for m, 1 for mm).
    static int lengthDecimals(double metresPerUnit);
};

}  // namespace krtool
