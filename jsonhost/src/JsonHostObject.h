// Reference counting and request logging shared by every object the host hands out.
#pragma once

#include "JsonHostRecorder.h"

#include <cstdint>
#include <memory>
#include <string>

class IHostCallout;
class IHostUnknown;
class JsonHostState;

// The count of an object includes the references the host holds itself (hostHeld); the rest are
// held by clients. An object is freed when its count reaches zero. Every object keeps the shared
// state alive, so objects a client still holds outlive the document that made them.
class JsonHostObject {
public:
    JsonHostObject(JsonHostObject const&) = delete;
    JsonHostObject& operator=(JsonHostObject const&) = delete;

    unsigned long count() const { return count_; }
    unsigned long hostHeld() const { return hostHeld_; }

    // A short name for logs and reference reports, e.g. "line(1,4)".
    virtual std::string describe() const = 0;
    // The pointer the object answers for KR_IID_UNKNOWN.
    virtual IHostUnknown* identity() = 0;
    // Whether p is one of the interface pointers of this object.
    virtual bool hasInterface(void const* p) const = 0;

    // A reference held by the host itself.
    void hostAddRef();
    // Drops a host reference; may free the object.
    void hostRelease();
    // A reference handed to a client.
    unsigned long clientAddRef();
    // Drops a client reference; may free the object. A Release with no client reference left is
    // refused and counted, so a client's extra Release cannot free what the host still uses.
    unsigned long clientRelease();

    // Name of an interface id for the request log, e.g. "KR_IID_SKETCH_LINE".
    static std::string InterfaceName(int interfaceId);

protected:
    explicit JsonHostObject(std::shared_ptr<JsonHostState> state);
    virtual ~JsonHostObject();

    // Logs a request made of this object and returns its status.
    long record(char const* method, std::string arguments, long status) const;
    // Ends a QueryInterface: iface is the asked interface of this object or null.
    long answerQuery(int interfaceId, void** object, void* iface);
    // Whether requests that reach other objects can still be served (false once the document
    // that made this object is gone).
    bool live() const;
    // IHostSelectable for the entity named by target.
    long selectAs(JsonHostRecorder::Target const& target, bool append);
    long selectWithCalloutAs(JsonHostRecorder::Target const& target, bool append, IHostCallout* callout);

    std::shared_ptr<JsonHostState> const state_;

private:
    std::uint64_t key_ = 0;
    unsigned long count_ = 0;
    unsigned long hostHeld_ = 0;
};
