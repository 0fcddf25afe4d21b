#include "DxfWriter.h"

#include "Geometry2D.h"
#include "UnitFormat.h"

#include <krlayout/api/KrUtf8Codec.h>

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

// Handles are upper-case hexadecimal numbers.
std::string hex(unsigned long value)
{
    char buf[32];
    std::snprintf(buf, sizeof buf, "%lX", value);
    return buf;
}

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

char const* const DxfWriter::kConnectorLayer = "CONNECTORS";

std::string DxfWriter::layerName(long segmentId)
{
    return "SEG_" + std::to_string(segmentId);
}

std::string DxfWriter::dxfText(std::string const& utf8)
{
    std::string out;
    for (size_t i = 0; i < utf8.size();) {
        char32_t cp = 0;
        if (!KrUtf8Codec::DecodeNext(utf8, i, cp)) {
            out += '?';
        } else if (cp < 0x80) {
            if (cp >= 0x20 && cp != 0x7f)
                out += static_cast<char>(cp);
        } else {
            char buf[16];
            std::snprintf(buf, sizeof buf, "\\U+%04lX", static_cast<unsigned long>(cp));
            out += buf;
        }
    }
    return out;
}

int DxfWriter::insUnits(double metresPerUnit)
{
    // The DXF drawing-unit codes of the units the tool knows; 0 is "unitless".
    struct Code {
        double metres;
        int code;
    };
    static Code const codes[] = {{0.0254, 1}, {0.3048, 2}, {0.001, 4}, {0.01, 5}, {1.0, 6}};
    for (Code const& c : codes) {
        if (std::fabs(metresPerUnit - c.metres) <= 1e-9 * c.metres)
            return c.code;
    }
    return 0;
}

void DxfWriter::write(std::ostream& out, LayoutResult const& result)
{
    bool const laidOut = result.laidOut;
    Extent ext = Geometry2D::extentOf(result, laidOut);
    if (ext.empty)
        ext.add({0.0, 0.0});

    // Every table record, block, entity and object carries a handle and the handle of its owner.
    // The sections after the header are written first, so that the header can give the next free
    // handle ($HANDSEED).
    std::ostringstream bodyStream;
    Dxf d(bodyStream);
    unsigned long nextHandle = 1;
    auto newHandle = [&]() { return hex(nextHandle++); };

    // Handles fixed before writing, since records point at each other.
    std::string const rootDict = newHandle();
    std::string const groupDict = newHandle();
    std::string const layoutDict = newHandle();
    std::string const modelLayout = newHandle();
    std::string const paperLayout = newHandle();
    std::string const modelRecord = newHandle();
    std::string const paperRecord = newHandle();

    d.tag(0, "SECTION");
    d.tag(2, "CLASSES");
    d.tag(0, "ENDSEC");

    d.tag(0, "SECTION");
    d.tag(2, "TABLES");
    // A table: its head, then records made by `records`, which gets the table's handle.
    auto table = [&](std::string const& name, long count, auto records,
                     bool dimStyle = false) {
        std::string const h = newHandle();
        d.tag(0, "TABLE");
        d.tag(2, name);
        d.tag(5, h);
        d.tag(330, "0");
        d.tag(100, "AcDbSymbolTable");
        d.integer(70, count);
        if (dimStyle)
            d.tag(100, "AcDbDimStyleTable");
        records(h);
        d.tag(0, "ENDTAB");
    };
    auto record = [&](std::string const& type, std::string const& owner, std::string const& subclass,
                      std::string const& handle, int handleCode = 5) {
        d.tag(0, type);
        d.tag(handleCode, handle);
        d.tag(330, owner);
        d.tag(100, "AcDbSymbolTableRecord");
        d.tag(100, subclass);
    };

    // The active viewport shows the whole drawing.
    table("VPORT", 1, [&](std::string const& t) {
        record("VPORT", t, "AcDbViewportTableRecord", newHandle());
        d.tag(2, "*ACTIVE");
        d.integer(70, 0);
        d.num(10, 0.0);
        d.num(20, 0.0);
        d.num(11, 1.0);
        d.num(21, 1.0);
        d.num(12, ext.minX / 2.0 + ext.maxX / 2.0);
        d.num(22, ext.minY / 2.0 + ext.maxY / 2.0);
        d.num(13, 0.0);
        d.num(23, 0.0);
        d.num(14, result.gridX);
        d.num(24, result.gridY);
        d.num(15, result.gridX);
        d.num(25, result.gridY);
        d.num(16, 0.0);
        d.num(26, 0.0);
        d.num(36, 1.0);
        d.num(17, 0.0);
        d.num(27, 0.0);
        d.num(37, 0.0);
        double const height = std::max({ext.height(), ext.width() / 1.6, 1e-3}) * 1.1;
        d.num(40, height);
        d.num(41, 1.6);
        d.num(42, 50.0);
        d.num(43, 0.0);
        d.num(44, 0.0);
        d.num(50, 0.0);
        d.num(51, 0.0);
        d.integer(71, 0);
        d.integer(72, 1000);
        d.integer(73, 1);
        d.integer(74, 3);
        d.integer(75, 0);
        d.integer(76, 0);
        d.integer(77, 0);
        d.integer(78, 0);
    });
    table("LTYPE", 3, [&](std::string const& t) {
        for (char const* name : {"ByBlock", "ByLayer", "Continuous"}) {
            record("LTYPE", t, "AcDbLinetypeTableRecord", newHandle());
            d.tag(2, name);
            d.integer(70, 0);
            d.tag(3, std::string(name) == "Continuous" ? "Solid line" : "");
            d.integer(72, 65);
            d.integer(73, 0);
            d.num(40, 0.0);
        }
    });

    bool const failedRun = !result.failedIds.empty();
    // Sorted, to look each segment up in logarithmic time.
    std::vector<long> failedIds = result.failedIds;
    std::sort(failedIds.begin(), failedIds.end());
    table("LAYER", static_cast<long>(result.segments.size()) + 2, [&](std::string const& t) {
        auto layer = [&](std::string const& name, int color) {
            record("LAYER", t, "AcDbLayerTableRecord", newHandle());
            d.tag(2, name);
            d.integer(70, 0);
            d.integer(62, color);
            d.tag(6, "Continuous");
        };
        layer("0", 7);
        layer(kConnectorLayer, 7);
        for (size_t i = 0; i < result.segments.size(); ++i) {
            long const id = result.segments[i].id;
            bool const failed = std::binary_search(failedIds.begin(), failedIds.end(), id);
            // Failed segments are red on a grey sketch; otherwise the ACI colours 1..6 in turn.
            int const color = failedRun ? (failed ? 1 : 8) : static_cast<int>(1 + i % 6);
            layer(layerName(id), color);
        }
    });
    table("STYLE", 1, [&](std::string const& t) {
        record("STYLE", t, "AcDbTextStyleTableRecord", newHandle());
        d.tag(2, "Standard");
        d.integer(70, 0);
        d.num(40, 0.0);
        d.num(41, 1.0);
        d.num(50, 0.0);
        d.integer(71, 0);
        d.num(42, 1.0);
        d.tag(3, "txt");
        d.tag(4, "");
    });
    table("VIEW", 0, [](std::string const&) {});
    table("UCS", 0, [](std::string const&) {});
    table("APPID", 1, [&](std::string const& t) {
        record("APPID", t, "AcDbRegAppTableRecord", newHandle());
        d.tag(2, "ACAD");
        d.integer(70, 0);
    });
    table(
        "DIMSTYLE", 1,
        [&](std::string const& t) {
            record("DIMSTYLE", t, "AcDbDimStyleTableRecord", newHandle(), 105);
            d.tag(2, "Standard");
            d.integer(70, 0);
        },
        true);
    table("BLOCK_RECORD", 2, [&](std::string const& t) {
        record("BLOCK_RECORD", t, "AcDbBlockTableRecord", modelRecord);
        d.tag(2, "*Model_Space");
        d.tag(340, modelLayout);
        record("BLOCK_RECORD", t, "AcDbBlockTableRecord", paperRecord);
        d.tag(2, "*Paper_Space");
        d.tag(340, paperLayout);
    });
    d.tag(0, "ENDSEC");

    d.tag(0, "SECTION");
    d.tag(2, "BLOCKS");
    auto block = [&](std::string const& name, std::string const& owner, bool paper) {
        d.tag(0, "BLOCK");
        d.tag(5, newHandle());
        d.tag(330, owner);
        d.tag(100, "AcDbEntity");
        if (paper)
            d.integer(67, 1);
        d.tag(8, "0");
        d.tag(100, "AcDbBlockBegin");
        d.tag(2, name);
        d.integer(70, 0);
        d.num(10, 0.0);
        d.num(20, 0.0);
        d.num(30, 0.0);
        d.tag(3, name);
        d.tag(1, "");
        d.tag(0, "ENDBLK");
        d.tag(5, newHandle());
        d.tag(330, owner);
        d.tag(100, "AcDbEntity");
        if (paper)
            d.integer(67, 1);
        d.tag(8, "0");
        d.tag(100, "AcDbBlockEnd");
    };
    block("*Model_Space", modelRecord, false);
    block("*Paper_Space", paperRecord, true);
    d.tag(0, "ENDSEC");

    // Text as high as a fifth of a grid row, so that labels of neighbouring rows stay apart.
    double const textHeight = std::max(0.2 * std::min(result.gridX, result.gridY), 1e-3);
    d.tag(0, "SECTION");
    d.tag(2, "ENTITIES");
    auto entity = [&](char const* type, std::string const& layer, char const* subclass) {
        d.tag(0, type);
        d.tag(5, newHandle());
        d.tag(330, modelRecord);
        d.tag(100, "AcDbEntity");
        d.tag(8, layer);
        d.tag(100, subclass);
    };
    auto line = [&](std::string const& layer, Point2 const& a, Point2 const& b) {
        entity("LINE", layer, "AcDbLine");
        d.num(10, a.x);
        d.num(20, a.y);
        d.num(30, 0.0);
        d.num(11, b.x);
        d.num(21, b.y);
        d.num(31, 0.0);
    };
    // A TEXT aligned at `at`: horizontal 0 left, 1 centre, 2 right; vertical 1 bottom, 2 middle,
    // 3 top; the angle in degrees.
    auto text = [&](std::string const& layer, Point2 const& at, double angle, int horizontal,
                    int vertical, std::string const& value) {
        entity("TEXT", layer, "AcDbText");
        d.num(10, at.x);
        d.num(20, at.y);
        d.num(30, 0.0);
        d.num(40, textHeight);
        d.tag(1, value);
        d.num(50, angle);
        d.tag(7, "Standard");
        d.integer(72, horizontal);
        d.num(11, at.x);
        d.num(21, at.y);
        d.num(31, 0.0);
        d.tag(100, "AcDbText");
        d.integer(73, vertical);
    };
    for (ResultSegment const& s : result.segments) {
        std::string const name = layerName(s.id);
        // The lines as drawn: the laid-out stretches, or the input entities.
        std::vector<std::pair<Point2, Point2>> lines;
        if (laidOut) {
            for (ResultLine const& l : s.lines)
                lines.push_back({l.drawnStart, l.drawnEnd});
        } else {
            lines = s.inputLines;
        }
        for (auto const& [a, b] : lines)
            line(name, a, b);
        if (laidOut) {
            for (ResultFillet const& f : s.fillets) {
                entity("ARC", name, "AcDbCircle");
                d.num(10, f.center.x);
                d.num(20, f.center.y);
                d.num(30, 0.0);
                d.num(40, f.radius);
                d.tag(100, "AcDbArc");
                d.num(50, degrees(f.startAngle));
                d.num(51, degrees(f.endAngle));
            }
        }
        // The label sits just above the middle of the longest line, along it and never upside
        // down, so that it reads from the bottom or the right of the sheet.
        auto longest = std::max_element(lines.begin(), lines.end(), [](auto const& p, auto const& q) {
            return Geometry2D::distance(p.first, p.second) < Geometry2D::distance(q.first, q.second);
        });
        if (longest != lines.end()) {
            Point2 a = longest->first;
            Point2 b = longest->second;
            if (b.x < a.x - Geometry2D::kTolerance ||
                (std::fabs(b.x - a.x) <= Geometry2D::kTolerance && b.y < a.y))
                std::swap(a, b);
            double const len = Geometry2D::distance(a, b);
            double ux = 1.0, uy = 0.0;
            if (len > 0.0 && std::isfinite(len)) {
                ux = (b.x - a.x) / len;
                uy = (b.y - a.y) / len;
            }
            double const gap = 0.3 * textHeight;
            Point2 const at{(a.x + b.x) / 2 - uy * gap, (a.y + b.y) / 2 + ux * gap};
            text(name, at, degrees(std::atan2(uy, ux)), 1, 1, segmentText(s, result));
        }
        // Connector names beyond the free end they sit at, in the direction the segment leaves it.
        for (ConnectorEnd const& c : s.connectors) {
            if (c.name.empty())
                continue;
            Point2 dir{0.0, 0.0};
            for (auto const& [a, b] : lines) {
                for (auto const& [end, other] : {std::make_pair(a, b), std::make_pair(b, a)}) {
                    double const l = Geometry2D::distance(end, other);
                    if (Geometry2D::distance(end, c.at) <= Geometry2D::kTolerance && l > 0.0)
                        dir = {(end.x - other.x) / l, (end.y - other.y) / l};
                }
            }
            double const gap = 0.5 * textHeight;
            Point2 const at{c.at.x + dir.x * gap, c.at.y + dir.y * gap};
            int horizontal = dir.x < 0.0 ? 2 : 0;
            int vertical = 2;
            if (std::fabs(dir.y) > std::fabs(dir.x)) {
                horizontal = 1;
                vertical = dir.y > 0.0 ? 1 : 3;
            }
            text(kConnectorLayer, at, 0.0, horizontal, vertical, dxfText(c.name));
        }
    }
    d.tag(0, "ENDSEC");

    // The root dictionary with the group and layout dictionaries, and the two layouts.
    d.tag(0, "SECTION");
    d.tag(2, "OBJECTS");
    auto dictionary = [&](std::string const& handle, std::string const& owner,
                          std::vector<std::pair<std::string, std::string>> const& entries) {
        d.tag(0, "DICTIONARY");
        d.tag(5, handle);
        d.tag(330, owner);
        d.tag(100, "AcDbDictionary");
        d.integer(281, 1);
        for (auto const& [key, value] : entries) {
            d.tag(3, key);
            d.tag(350, value);
        }
    };
    dictionary(rootDict, "0", {{"ACAD_GROUP", groupDict}, {"ACAD_LAYOUT", layoutDict}});
    dictionary(groupDict, rootDict, {});
    dictionary(layoutDict, rootDict, {{"Layout1", paperLayout}, {"Model", modelLayout}});
    auto layout = [&](std::string const& handle, std::string const& name, int tab,
                      std::string const& blockRecord, bool model) {
        d.tag(0, "LAYOUT");
        d.tag(5, handle);
        d.tag(330, layoutDict);
        d.tag(100, "AcDbPlotSettings");
        d.tag(1, "");
        d.tag(2, "none_device");
        d.tag(4, "");
        d.tag(6, "");
        for (int code : {40, 41, 42, 43, 44, 45, 46, 47, 48, 49})
            d.num(code, 0.0);
        d.num(140, 0.0);
        d.num(141, 0.0);
        d.num(142, 1.0);
        d.num(143, 1.0);
        d.integer(70, model ? 1712 : 688);
        d.integer(72, 1);
        d.integer(73, 0);
        d.integer(74, 5);
        d.tag(7, "");
        d.integer(75, 16);
        d.num(147, 1.0);
        d.num(148, 0.0);
        d.num(149, 0.0);
        d.tag(100, "AcDbLayout");
        d.tag(1, name);
        d.integer(70, 1);
        d.integer(71, tab);
        d.num(10, 0.0);
        d.num(20, 0.0);
        d.num(11, 12.0);
        d.num(21, 9.0);
        d.num(12, 0.0);
        d.num(22, 0.0);
        d.num(32, 0.0);
        d.num(14, ext.minX);
        d.num(24, ext.minY);
        d.num(34, 0.0);
        d.num(15, ext.maxX);
        d.num(25, ext.maxY);
        d.num(35, 0.0);
        d.num(146, 0.0);
        d.num(13, 0.0);
        d.num(23, 0.0);
        d.num(33, 0.0);
        d.num(16, 1.0);
        d.num(26, 0.0);
        d.num(36, 0.0);
        d.num(17, 0.0);
        d.num(27, 1.0);
        d.num(37, 0.0);
        d.integer(76, 0);
        d.tag(330, blockRecord);
    };
    layout(modelLayout, "Model", 0, modelRecord, true);
    layout(paperLayout, "Layout1", 1, paperRecord, false);
    d.tag(0, "ENDSEC");
    d.tag(0, "EOF");

    Dxf h(out);
    h.tag(999, "krlayout " + std::string(laidOut ? "layout" : "input sketch") +
                   ", model units: " + dxfText(result.units));
    h.tag(0, "SECTION");
    h.tag(2, "HEADER");
    h.tag(9, "$ACADVER");
    h.tag(1, "AC1015");
    h.tag(9, "$DWGCODEPAGE");
    h.tag(3, "ANSI_1252");
    h.tag(9, "$HANDSEED");
    h.tag(5, hex(nextHandle));
    h.tag(9, "$INSBASE");
    h.num(10, 0.0);
    h.num(20, 0.0);
    h.num(30, 0.0);
    h.tag(9, "$EXTMIN");
    h.num(10, ext.minX);
    h.num(20, ext.minY);
    h.num(30, 0.0);
    h.tag(9, "$EXTMAX");
    h.num(10, ext.maxX);
    h.num(20, ext.maxY);
    h.num(30, 0.0);
    // Drawing units: what one model unit is, and metric or imperial defaults for new content.
    int const units = insUnits(result.metresPerUnit);
    h.tag(9, "$INSUNITS");
    h.integer(70, units);
    h.tag(9, "$MEASUREMENT");
    h.integer(70, units == 1 || units == 2 ? 0 : 1);
    h.tag(9, "$LUNITS");
    h.integer(70, 2);
    h.tag(0, "ENDSEC");
    out << bodyStream.str();
}

std::string DxfWriter::segmentText(ResultSegment const& s, LayoutResult const& result)
{
    // %%c is the diameter sign in DXF text.
    return std::to_string(s.id) + "  " + dxfText(UnitFormat::length(s.length, result.units)) +
           "  %%c" + dxfText(UnitFormat::diameter(s.diameter, result.units, result.metresPerUnit));
}

}  // namespace krtool
