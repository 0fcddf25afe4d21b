// A sketch entity of a route segment: a line, an arc or another curve.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>

class IHostCurve;
class KRLAYOUT_EXPORT IHostSketchEntity : public IHostUnknown {
public:
    virtual long GetLength(double* length) = 0;
    // KR_ENTITY_LINE, KR_ENTITY_ARC, or any other value for another curve.
    virtual long GetKind(int* kind) = 0;
    // The entity's curve; null and KR_HOST_FAIL when it has none.
    virtual long GetCurve(IHostCurve** curve) = 0;
protected:
    ~IHostSketchEntity() = default;
};
