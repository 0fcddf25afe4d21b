#include "DxfWriter.h"

#include "Geometry2D.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <sstream>
#include <vector>

namespace krtool {

namespace {

// Group code and value on two lines each, numbers in the C locale.
class Dxf {
public:
    explicit Dxf(std::ostream& out) : out_(out) {}
    void tag(int code, std::string const& value) { out_ << code << "\n" << value << "\n"; }
    void num(int code, double value)
    {
        char buf[64];
        std::snprintf(buf, sizeof buf, "%.12g", std::isfinite(value) ? value : 0.0);
        out_ << code << "\n" << buf << "\n";
    }
    void integer(int code, long value) { out_ << code << "\n" << value << "\n"; }

private:
    std::ostream& out_;
};

double degrees(double radians)
{
    double d = radians * 180.0 / Geometry2D::kPi;
    while (d < 0.0)
        d += 360.0;
    while (d >= 360.0)
        d -= 360.0;
    return d;
}

}  // namespace

std::string DxfWriter::layerName(long segmentId)
{
    return "SEG_" + std::to_string(segmentId);
}

std::string DxfWriter::dxfText(std::string const& utf8)
{
    std::string out;
    for (size_t i = 0; i < utf8.size();) {
        unsigned char const c = static_cast<unsigned char>(utf8[i]);
        if (c < 0x80) {
            if (c >= 0x20 && c != 0x7f)
                out += static_cast<char>(c);
            ++i;
            continue;
        }
        // Decode one UTF-8 sequence; a broken one becomes '?'.
        int extra = (c >= 0xf0) ? 3 : (c >= 0xe0) ? 2 : (c >= 0xc0) ? 1 : -1;
        unsigned long cp = (extra == 3) ? (c & 0x07u) : (extra == 2) ? (c & 0x0fu) : (c & 0x1fu);
        bool ok = extra > 0;
        for (int k = 1; ok && k <= extra; ++k) {
            if (i + static_cast<size_t>(k) >= utf8.size()) {
                ok = false;
                break;
            }
            unsigned char const n = static_cast<unsigned char>(utf8[i + static_cast<size_t>(k)]);
            if ((n & 0xc0u) != 0x80u)
                ok = false;
            cp = (cp << 6) | (n & 0x3fu);
        }
        if (!ok) {
            out += '?';
            ++i;
            continue;
        }
        char buf[16];
        std::snprintf(buf, sizeof buf, "\\U+%04lX", cp);
        out += buf;
        i += static_cast<size_t>(extra) + 1;
    }
    return out;
}

void DxfWriter::write(std::ostream& out, LayoutResult const& result)
{
    Dxf d(out);
    bool const laidOut = result.laidOut;
    Extent const ext = Geometry2D::extentOf(result, laidOut);

    d.tag(999, "krlayout " + std::string(laidOut ? "layout" : "input sketch") +
                   ", model units: " + dxfText(result.units));
    d.tag(0, "SECTION");
    d.tag(2, "HEADER");
    d.tag(9, "$ACADVER");
    d.tag(1, "AC1009");
    d.tag(9, "$EXTMIN");
    d.num(10, ext.minX);
    d.num(20, ext.minY);
    d.num(30, 0.0);
    d.tag(9, "$EXTMAX");
    d.num(10, ext.maxX);
    d.num(20, ext.maxY);
    d.num(30, 0.0);
    d.tag(0, "ENDSEC");

    d.tag(0, "SECTION");
    d.tag(2, "TABLES");
    d.tag(0, "TABLE");
    d.tag(2, "LTYPE");
    d.integer(70, 1);
    d.tag(0, "LTYPE");
    d.tag(2, "CONTINUOUS");
    d.integer(70, 0);
    d.tag(3, "Solid line");
    d.integer(72, 65);
    d.integer(73, 0);
    d.num(40, 0.0);
    d.tag(0, "ENDTAB");
    d.tag(0, "TABLE");
    d.tag(2, "LAYER");
    d.integer(70, static_cast<long>(result.segments.size()) + 2);
    auto layer = [&](std::string const& name, int color) {
        d.tag(0, "LAYER");
        d.tag(2, name);
        d.integer(70, 0);
        d.integer(62, color);
        d.tag(6, "CONTINUOUS");
    };
    layer("0", 7);
    layer("LABELS", 8);
    bool const failedRun = !result.failedIds.empty();
    // Sorted, to look each segment up in logarithmic time.
    std::vector<long> failedIds = result.failedIds;
    std::sort(failedIds.begin(), failedIds.end());
    for (size_t i = 0; i < result.segments.size(); ++i) {
        long const id = result.segments[i].id;
        bool const failed = std::binary_search(failedIds.begin(), failedIds.end(), id);
        // Failed segments are red on a grey sketch; otherwise the ACI colours 1..6 in turn.
        int color = failedRun ? (failed ? 1 : 8) : static_cast<int>(1 + i % 6);
        layer(layerName(id), color);
    }
    d.tag(0, "ENDTAB");
    d.tag(0, "ENDSEC");

    double const textHeight = std::max(0.2 * result.gridY, 1e-3);
    d.tag(0, "SECTION");
    d.tag(2, "ENTITIES");
    auto line = [&](std::string const& layerName, Point2 const& a, Point2 const& b) {
        d.tag(0, "LINE");
        d.tag(8, layerName);
        d.num(10, a.x);
        d.num(20, a.y);
        d.num(30, 0.0);
        d.num(11, b.x);
        d.num(21, b.y);
        d.num(31, 0.0);
    };
    auto text = [&](Point2 const& at, std::string const& value) {
        d.tag(0, "TEXT");
        d.tag(8, "LABELS");
        d.num(10, at.x);
        d.num(20, at.y);
        d.num(30, 0.0);
        d.num(40, textHeight);
        d.tag(1, dxfText(value));
    };
    for (ResultSegment const& s : result.segments) {
        std::string const name = layerName(s.id);
        if (laidOut) {
            for (ResultLine const& l : s.lines)
                line(name, l.drawnStart, l.drawnEnd);
            for (ResultFillet const& f : s.fillets) {
                d.tag(0, "ARC");
                d.tag(8, name);
                d.num(10, f.center.x);
                d.num(20, f.center.y);
                d.num(30, 0.0);
                d.num(40, f.radius);
                d.num(50, degrees(f.startAngle));
                d.num(51, degrees(f.endAngle));
            }
            if (!s.lines.empty()) {
                ResultLine const& mid = s.lines[s.lines.size() / 2];
                text({(mid.start.x + mid.end.x) / 2, (mid.start.y + mid.end.y) / 2},
                     std::to_string(s.id));
            }
        } else {
            for (auto const& l : s.inputLines)
                line(name, l.first, l.second);
            if (!s.inputLines.empty()) {
                auto const& mid = s.inputLines[s.inputLines.size() / 2];
                text({(mid.first.x + mid.second.x) / 2, (mid.first.y + mid.second.y) / 2},
                     std::to_string(s.id));
            }
        }
        for (ConnectorEnd const& c : s.connectors)
            text(c.at, c.name);
    }
    d.tag(0, "ENDSEC");
    d.tag(0, "EOF");
}

}  // namespace krtool
