// What a board builder cuts and fits: one row per segment of the document with its true length,
// its diameter and what sits at each of its two ends, and the bill of connectors.
#pragma once

#include "LayoutResult.h"

#include <string>
#include <utility>
#include <vector>

namespace krtool {

class CutList {
public:
    struct End {
        enum class Kind {
            None,          // the segment has no sketch entities to find its ends from
            Connector,     // one or more connectors of the component map
            BranchPoint,   // other segments meet there
            FreeEnd,       // nothing meets there and no connector is named for it
        };
        Kind kind = Kind::None;
        std::string name;           // the connectors ("; " between two), or "BP<n>"
        std::string pins;           // the connectors' pins, in the same order
        std::vector<long> meets;    // the other segments meeting there, ascending
    };

    struct Row {
        long id = 0;
        std::string status;         // laid out, lost by the layout, ...
        double length = 0.0;        // true length in model units
        double diameter = 0.0;      // in model units
        End ends[2];
    };

    struct Connector {
        std::string name;
        std::vector<std::pair<long, std::string>> entries;  // (segment, pins)
    };

    // Every segment of the document, laid out or not, ordered by id. Ends and branch points come
    // from the document's sketch, so that a segment the layout lost or a run whose check failed
    // reads like any other. Branch points are numbered BP1, BP2, ... in the order they first
    // appear reading the rows from the top, end 1 before end 2.
    static CutList build(LayoutResult const& result);

    static std::string kindText(End::Kind kind);

    std::vector<Row> rows;
    // In the order they first appear in the rows.
    std::vector<Connector> connectors;
};

}  // namespace krtool
