// A sketch arc: its end points.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>

class IHostPoint;
class KRLAYOUT_EXPORT IHostSketchArc : public IHostUnknown {
public:
    virtual long GetStartPoint(IHostPoint** point) = 0;
    virtual long GetEndPoint(IHostPoint** point) = 0;
protected:
    ~IHostSketchArc() = default;
};
