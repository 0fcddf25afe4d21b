#include "CutListWriter.h"

#include "CutList.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <vector>

namespace krtool {

namespace {

char const* const kRecordEnd = "\r\n";

std::string fixed(double value, int decimals)
{
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.*f", decimals, value);
    std::string text = buf;
    // A value that rounds to zero from below is written as zero.
    if (text.front() == '-' && text.find_first_not_of("-0.") == std::string::npos)
        text.erase(0, 1);
    return text;
}

std::string idList(std::vector<long> const& ids)
{
    std::string text;
    for (long id : ids)
        text += (text.empty() ? "" : " ") + std::to_string(id);
    return text;
}

void record(std::ostream& os, std::vector<std::string> const& fields)
{
    for (size_t i = 0; i < fields.size(); ++i)
        os << (i == 0 ? "" : ",") << CutListWriter::field(fields[i]);
    os << kRecordEnd;
}

}  // namespace

std::string CutListWriter::field(std::string const& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (char c : text) {
        if (c == '"')
            quoted += '"';
        quoted += c;
    }
    return quoted + "\"";
}

int CutListWriter::lengthDecimals(double metresPerUnit)
{
    if (!(metresPerUnit > 0.0))
        return 4;
    // The fewest decimals whose last digit is at most 0.1 mm.
    double const step = 0.0001 / metresPerUnit;
    int const decimals = static_cast<int>(std::ceil(-std::log10(step) - 1e-9));
    return std::max(0, std::min(9, decimals));
}

void CutListWriter::write(std::ostream& os, LayoutResult const& result)
{
    CutList const list = CutList::build(result);
    int const decimals = lengthDecimals(result.metresPerUnit);
    bool const millimetres = result.metresPerUnit > 0.0;

    os << "\xEF\xBB\xBF";
    record(os, {"segment", "status", "length_" + result.units,
                millimetres ? std::string("diameter_mm") : "diameter_" + result.units,
                "end1", "end1_name", "end1_pins", "end1_meets",
                "end2", "end2_name", "end2_pins", "end2_meets"});
    for (CutList::Row const& row : list.rows) {
        std::vector<std::string> fields = {
            std::to_string(row.id), row.status, fixed(row.length, decimals),
            millimetres ? fixed(row.diameter * result.metresPerUnit * 1000.0, 1)
                        : fixed(row.diameter, decimals)};
        for (CutList::End const& end : row.ends) {
            fields.push_back(CutList::kindText(end.kind));
            fields.push_back(end.name);
            fields.push_back(end.pins);
            fields.push_back(idList(end.meets));
        }
        record(os, fields);
    }

    os << kRecordEnd;
    record(os, {"connector", "segments", "pins", "segment_count"});
    for (CutList::Connector const& c : list.connectors) {
        std::vector<long> ids;
        std::string pins;
        for (auto const& [id, pin] : c.entries) {
            ids.push_back(id);
            pins += (pins.empty() && ids.size() == 1 ? "" : "; ") + pin;
        }
        record(os, {c.name, idList(ids), pins, std::to_string(c.entries.size())});
    }
}

}  // namespace krtool
