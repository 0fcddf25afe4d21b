// Everything the command line asks of one run of the tool.
#pragma once

#include <string>
#include <vector>

namespace krtool {

struct ToolOptions {
    std::string document;                 // empty: a bundled example
    std::string example;                  // name of a bundled example (--example)
    bool listExamples = false;
    std::vector<std::string> outputs;

    int layoutType = 0;                   // LayoutType: 0 by diameter, 1 by length, 2 board
    bool gridGiven = false;               // false: 0.02 m in the document's units
    double gridX = 0.02;
    double gridY = 0.02;
    bool arrays = false;                  // fill the output arrays instead of drawing into the host
    bool relations = true;
    bool fillets = true;
    bool hasFeature = false;
    std::string feature;
    // Board layout only: the least distance kept between segments that do not meet, in model
    // units; without --clearance the larger grid spacing.
    bool clearanceGiven = false;
    double clearance = 0.0;

    std::string units = "m";              // model units of the document
    double metresPerUnit = 1.0;
    bool unitsGiven = false;              // --units given; false: the document's units, else m

    bool report = false;
    double paperScale = 0.0;              // PDF/SVG paper length per model length; 0 = fit
    std::string paper;                    // --paper as given; empty: not given
    long long pdfCreatedAt = -1;          // PDF creation date from SOURCE_DATE_EPOCH; -1 = none
    bool quiet = false;
    double timeLimit = 600.0;             // seconds the whole run may take; 0 = no limit
};

}  // namespace krtool
