// The curve of a sketch entity that is neither a line nor an arc.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>


class KRLAYOUT_EXPORT IHostCurve : public IHostUnknown {
public:
    // Start and end of the curve, three doubles each.
    virtual long GetEndPoints(double* start, double* end) = 0;
protected:
    ~IHostCurve() = default;
};
