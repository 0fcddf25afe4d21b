// The route-data interface of the route sketch object.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>

class IHostRouteContainer;
class KRLAYOUT_EXPORT IHostRouteData : public IHostUnknown {
public:
    virtual long GetRouteContainer(IHostRouteContainer** container) = 0;
protected:
    ~IHostRouteData() = default;
};
