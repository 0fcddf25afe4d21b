// A host sketch point: coordinates and host id pair.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>


class KRLAYOUT_EXPORT IHostPoint : public IHostUnknown {
public:
    virtual long GetCoords(double* x, double* y, double* z) = 0;
    virtual long GetId(long* first, long* second) = 0;
protected:
    ~IHostPoint() = default;
};
