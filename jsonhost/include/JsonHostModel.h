// The content of a loaded route document, as plain values.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

class JsonHostModel {
public:
    using Vec3 = std::array<double, 3>;

    // Kind code answered by IHostSketchEntity::GetKind for every curve that is neither a line nor
    // an arc.
    static constexpr int kOtherCurveKind = 2;

    struct Entity {
        std::string kind;            // "line", "arc" or the name of another curve ("spline", ...)
        int kindCode = 0;            // KR_ENTITY_LINE, KR_ENTITY_ARC or kOtherCurveKind
        double length = 0.0;         // as given, or computed from the geometry
        bool lengthGiven = false;
        Vec3 start{};                // lines and arcs
        Vec3 end{};
        Vec3 center{};               // arcs
        bool clockwise = false;      // arcs: sweep direction seen from +z
        std::vector<Vec3> points;    // other curves; empty = the entity has no curve

        bool hasCurve() const;
        // End points of the entity's curve (lines and arcs: start and end; other curves: first and
        // last point). Only meaningful when hasCurve().
        Vec3 curveStart() const;
        Vec3 curveEnd() const;
    };

    struct Segment {
        int id = 0;
        double value = 0.0;          // the route value (the library's diameter)
        std::vector<Entity> entities;
    };

    struct Component {
        long id = 0;
        std::wstring text;
    };

    std::wstring name;

    // The unit of every coordinate, length and route value of the document: "m", "cm", "mm",
    // "in" or "ft". The host passes numbers through unscaled; the unit tells its readers what
    // they mean.
    std::string units = "m";
    bool unitsGiven = false;         // the document names its unit (otherwise "m" is assumed)

    // The values units may take, and metres per unit of one of them (0 for any other text).
    static std::vector<std::string> const& UnitNames();
    static double MetresPerUnit(std::string const& units);

    // Which parts of the document the host hands out; a false flag makes that request fail.
    bool activeDocument = true;
    bool routeModel = true;
    bool routeSketch = true;
    bool routeData = true;
    bool routeContainer = true;

    bool sketchOpen = false;         // a sketch is open for editing when the document is loaded
    bool bulkInsert = false;         // KR_SETTING_BULK_INSERT
    bool autoRelations = true;       // KR_SETTING_AUTO_RELATIONS

    std::vector<std::wstring> features;   // in document order
    std::vector<Component> components;    // in document order, ids unique
    std::vector<Segment> segments;        // in document order, duplicate ids kept

    // The component map in the form KrAutoLayout::setComponentMap takes.
    std::map<long, std::wstring> componentMap() const;
    // Index of the first segment with the id, -1 when there is none.
    int segmentIndex(int id) const;

    // Geometry used for lengths that are not given.
    static double Distance(Vec3 const& a, Vec3 const& b);
    // Length of the arc from start to end around center, swept counter-clockwise seen from +z
    // (clockwise when asked); the radius is the distance from the center to the start. Start and
    // end in the same place make a full circle.
    static double ArcLength(Vec3 const& start, Vec3 const& end, Vec3 const& center, bool clockwise);
    static double PolylineLength(std::vector<Vec3> const& points);
};
