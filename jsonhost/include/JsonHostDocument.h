// A route document held in memory by an in-process host CAD application: loaded from JSON, driven
// by the library through the host interfaces, and saved back as JSON with what the library did.
#pragma once

#include "JsonHostModel.h"
#include "JsonHostRecorder.h"

#include <krlayout/api/KrLayoutInput.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class IHostApplication;
class IHostUnknown;
class JsonHostState;

class JsonHostDocument {
public:
    // Reference counts of one object the host handed out.
    struct ObjectCount {
        std::string object;         // e.g. "document", "line(1,3)", "callout(2)"
        unsigned long count = 0;    // current reference count
        unsigned long baseline = 0; // references the host holds itself
    };

    // Both throw JsonHostError with a message that says what is wrong and where.
    static std::unique_ptr<JsonHostDocument> LoadFile(std::string const& path);
    // source names the text in error messages.
    static std::unique_ptr<JsonHostDocument> LoadString(std::string const& text,
                                                        std::string const& source = "<string>");
    // Path of an example document of the source tree, e.g. ExamplePath("tree.json").
    static std::string ExamplePath(std::string const& fileName);

    // Drops the host's own references. Objects that clients still hold stay alive until they
    // are released; requests that would reach other objects fail from then on.
    ~JsonHostDocument();
    JsonHostDocument(JsonHostDocument const&) = delete;
    JsonHostDocument& operator=(JsonHostDocument const&) = delete;

    // The host application object, borrowed: a client that keeps it (KrAutoLayout adopts the
    // reference it is given) calls AddRef first.
    IHostApplication* application() const;

    // The document as loaded.
    JsonHostModel const& model() const;
    // The component map, for KrAutoLayout::setComponentMap.
    std::map<long, std::wstring> componentMap() const;
    // The document as plain layout input, read the way the library reads it from this host: per
    // segment id (the first segment of an id) its route value as the diameter, the summed length
    // of its entities and, as its lines, the end points of every entity that has a curve; the
    // component map. Grid, layout type and clearance keep the input's defaults.
    KrLayoutInput layoutInput() const;

    // Lines, relations, fillets, selection, settings, counters and the request log.
    JsonHostRecorder const& results() const;

    // The document as loaded plus a "result" object.
    std::string SaveString() const;
    // Writes SaveString() to a temporary file and renames it to path; throws JsonHostError.
    void SaveFile(std::string const& path) const;

    // Every live object the host handed out or keeps, in creation order.
    std::vector<ObjectCount> referenceCounts() const;
    // The counts of the object behind any of its interface pointers; nothing for a pointer the
    // host does not know (or an object already freed).
    std::optional<ObjectCount> referenceCount(IHostUnknown const* object) const;
    // References held by clients, over all objects: 0 when every client released what it got.
    unsigned long clientReferences() const;

private:
    explicit JsonHostDocument(std::shared_ptr<JsonHostState> state);

    std::shared_ptr<JsonHostState> state_;
    IHostApplication* application_;
};
