// The result document (.json output): the run's options and status, the checks' messages, per
// segment its laid-out lines, ids, relations, fillets and connectors, and the quality report.
#pragma once

#include "LayoutResult.h"
#include "QualityReport.h"

#include <nlohmann/json.hpp>

#include <iosfwd>
#include <string>

namespace krtool {

class ResultDocument {
public:
    static nlohmann::ordered_json build(LayoutResult const& result, QualityReport const& report,
                                        std::string const& source);
    static void write(std::ostream& out, LayoutResult const& result, QualityReport const& report,
                      std::string const& source);
};

}  // namespace krtool
