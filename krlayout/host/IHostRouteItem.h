// The route item of one route segment.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>


class KRLAYOUT_EXPORT IHostRouteItem : public IHostUnknown {
public:
    // The segment's route value (the library uses it as the segment's diameter).
    virtual long GetValue(double* value) = 0;
protected:
    ~IHostRouteItem() = default;
};
