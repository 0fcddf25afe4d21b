// A sketch line: its end points and its host id pair.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>

class IHostPoint;
class KRLAYOUT_EXPORT IHostSketchLine : public IHostUnknown {
public:
    virtual long GetStartPoint(IHostPoint** point) = 0;
    virtual long GetEndPoint(IHostPoint** point) = 0;
    virtual long GetId(long* first, long* second) = 0;
protected:
    ~IHostSketchLine() = default;
};
