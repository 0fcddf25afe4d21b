// What the library asked of the host and what came of it: drawn lines and points, relations,
// fillets, the selection and its callouts, drawing settings, counters and the request log.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

class JsonHostRecorder {
public:
    using Vec3 = std::array<double, 3>;
    using IdPair = std::pair<long, long>;

    // An entity named by a selection, a relation or a fillet.
    struct Target {
        std::string kind;           // "entity" (of a route segment), "line", "point" or "feature"
        IdPair id{-1, -1};          // host id pair of entities, lines and points
        int segment = 0;            // route segment of an "entity"
        std::wstring name;          // name of a "feature"

        // "entity(3,2)", "line(1,4)", "point(2,7)", "feature(Route1)".
        std::string text() const;
        bool operator==(Target const& other) const;
        bool operator!=(Target const& other) const { return !(*this == other); }
    };

    struct Line {
        int sketch = 0;             // number of the sketch it was drawn in (from 1)
        IdPair id;
        Vec3 start{};
        Vec3 end{};
        IdPair startPoint;
        IdPair endPoint;
    };

    struct Point {
        int sketch = 0;
        IdPair id;
        Vec3 at{};
    };

    struct Relation {
        std::wstring name;
        std::vector<Target> entities;   // the selection the relation was added to, in order
    };

    struct Fillet {
        IdPair point;
        Vec3 at{};
        double radius = 0.0;
        IdPair firstLine;           // the two lines meeting at the point, in drawing order
        IdPair secondLine;
    };

    struct Selected {
        Target target;
        bool hasCallout = false;
        std::wstring callout;
    };

    struct SettingChange {
        int setting = 0;            // KR_SETTING_BULK_INSERT or KR_SETTING_AUTO_RELATIONS
        bool value = false;
    };

    struct Request {
        std::string object;         // e.g. "document", "sketch(1)", "entity(3,2)"
        std::string method;         // the interface method, e.g. "CreateLine"
        std::string arguments;      // the arguments, comma separated; strings quoted
        long status = 0;            // the KrHostStatus returned
    };

    JsonHostRecorder(bool bulkInsert, bool autoRelations);

    std::vector<Line> const& lines() const { return lines_; }
    std::vector<Point> const& points() const { return points_; }
    std::vector<Relation> const& relations() const { return relations_; }
    std::vector<Fillet> const& fillets() const { return fillets_; }
    // The current selection, in selection order.
    std::vector<Selected> const& selection() const { return selection_; }
    // Every selection made with a callout, in order (kept when the selection is cleared).
    std::vector<Selected> const& callouts() const { return callouts_; }
    std::vector<SettingChange> const& settingChanges() const { return settingChanges_; }
    // Current value of a drawing setting (false for an unknown one).
    bool setting(int setting) const;
    static bool IsSetting(int setting);
    std::vector<Request> const& requests() const { return requests_; }
    // Number of logged requests with the method name.
    std::size_t countRequests(std::string const& method) const;

    std::size_t redraws() const { return redraws_; }
    std::size_t sketchesOpened() const { return sketchesOpened_; }
    std::size_t sketchesClosed() const { return sketchesClosed_; }
    std::size_t selectionClears() const { return selectionClears_; }
    // Release calls refused because the caller held no reference any more.
    std::size_t overReleases() const { return overReleases_; }

    // Recording, used by the host objects.
    void logRequest(std::string object, std::string method, std::string arguments, long status);
    void addLine(Line line) { lines_.push_back(std::move(line)); }
    void addPoint(Point point) { points_.push_back(std::move(point)); }
    void addRelation(Relation relation) { relations_.push_back(std::move(relation)); }
    void addFillet(Fillet fillet) { fillets_.push_back(fillet); }
    // Selects target, replacing the selection unless append; an entity already selected stays in
    // its place and takes the new callout, if one is given.
    void select(Target const& target, bool append, bool withCallout, std::wstring const& callout);
    void clearSelection();
    void changeSetting(int setting, bool value);
    void countRedraw() { ++redraws_; }
    void countSketchOpened() { ++sketchesOpened_; }
    void countSketchClosed() { ++sketchesClosed_; }
    void countOverRelease() { ++overReleases_; }

private:
    std::vector<Line> lines_;
    std::vector<Point> points_;
    std::vector<Relation> relations_;
    std::vector<Fillet> fillets_;
    std::vector<Selected> selection_;
    std::vector<Selected> callouts_;
    std::vector<SettingChange> settingChanges_;
    std::vector<Request> requests_;
    bool bulkInsert_;
    bool autoRelations_;
    std::size_t redraws_ = 0;
    std::size_t sketchesOpened_ = 0;
    std::size_t sketchesClosed_ = 0;
    std::size_t selectionClears_ = 0;
    std::size_t overReleases_ = 0;
};
