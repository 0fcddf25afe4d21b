// The route model interface of a document that holds routes.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>


class KRLAYOUT_EXPORT IHostRouteModel : public IHostUnknown {
public:
    // The route sketch object; null and KR_HOST_FAIL when the document has none.
    virtual long GetRouteSketch(IHostUnknown** routeSketch) = 0;
protected:
    ~IHostRouteModel() = default;
};
