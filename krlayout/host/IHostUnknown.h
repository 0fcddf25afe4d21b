// Base of every host automation interface: reference counting and interface queries.
#pragma once

#include <krlayout/krlayout_export.h>

class KRLAYOUT_EXPORT IHostUnknown {
public:
    // On success writes the object as the asked interface (one reference added) and returns
    // KR_HOST_OK; otherwise writes null and returns KR_HOST_NOINTERFACE.
    virtual long QueryInterface(int interfaceId, void** object) = 0;
    virtual unsigned long AddRef() = 0;
    // Drops one reference; the object is freed when the count reaches zero. Returns the new count.
    virtual unsigned long Release() = 0;

protected:
    ~IHostUnknown() = default;
};
