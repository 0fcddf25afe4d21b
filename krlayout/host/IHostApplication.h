// The host application.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>

class IHostDocument;
class KRLAYOUT_EXPORT IHostApplication : public IHostUnknown {
public:
    // The document being edited; null and KR_HOST_FAIL when none is open.
    virtual long GetActiveDocument(IHostDocument** document) = 0;
protected:
    ~IHostApplication() = default;
};
