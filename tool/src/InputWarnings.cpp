#include "InputWarnings.h"

#include "ConnectorPlacer.h"

#include <algorithm>
#include <cstdio>

namespace krtool {

char const* const InputWarnings::kExpectedForm =
    "PINS@CONNECTOR@NAME such as \"1-4@X12@Injector 1\", or two of them joined by ':' for a "
    "connector at each end (after the first '@' there must be a second '@', not right after the "
    "first)";

namespace {

std::string quoted(std::string const& text)
{
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\')
            out += '\\';
        out += c;
    }
    return out + "\"";
}

}  // namespace

std::vector<RunWarning> InputWarnings::componentTexts(std::map<long, std::string> const& texts)
{
    std::vector<RunWarning> out;
    for (auto const& [id, text] : texts) {
        std::string const where = "component " + std::to_string(id) + " (on segment " +
                                  std::to_string(id) + "): text " + quoted(text);
        RunWarning w;
        w.component = id;
        w.text = text;
        if (!ConnectorPlacer::parse(text).empty())
            continue;
        w.message = where + " names no connector; expected " + kExpectedForm;
        out.push_back(w);
    }
    return out;
}

double InputWarnings::median(std::vector<double> lengths)
{
    lengths.erase(std::remove_if(lengths.begin(), lengths.end(), [](double l) { return !(l > 0.0); }),
                  lengths.end());
    if (lengths.empty())
        return 0.0;
    std::sort(lengths.begin(), lengths.end());
    size_t const n = lengths.size();
    return n % 2 == 1 ? lengths[n / 2] : lengths[n / 2 - 1] / 2.0 + lengths[n / 2] / 2.0;
}

std::vector<RunWarning> InputWarnings::segmentLengths(std::vector<double> const& lengths,
                                                      std::string const& units,
                                                      double metresPerUnit,
                                                      std::string const& unitsSource)
{
    std::vector<RunWarning> out;
    double const m = median(lengths);
    double const metres = m * metresPerUnit;
    if (!(m > 0.0) || (metres <= kLongestPlausibleMedian && metres >= kShortestPlausibleMedian))
        return out;
    char const* const from = unitsSource == "option"     ? "given by --units"
                             : unitsSource == "document" ? "the document's \"units\""
                                                         : "no unit given, metres assumed";
    char buf[512];
    if (units == "m")
        std::snprintf(buf, sizeof buf, "the median segment length is %.6g m (%s), %s for a harness",
                      m, from, metres > kLongestPlausibleMedian ? "over 50 m: implausibly long"
                                                               : "under 1 mm: implausibly short");
    else
        std::snprintf(buf, sizeof buf,
                      "the median segment length is %.6g %s (%.6g m; %s), %s for a harness", m,
                      units.c_str(), metres, from,
                      metres > kLongestPlausibleMedian ? "over 50 m: implausibly long"
                                                       : "under 1 mm: implausibly short");
    RunWarning w;
    w.kind = RunWarning::Kind::Units;
    w.medianLength = m;
    w.message = std::string(buf) +
                "; if the coordinates are in another unit, say which with --units or the "
                "document's \"units\" field (m, cm, mm, in, ft)";
    out.push_back(w);
    return out;
}

}  // namespace krtool
