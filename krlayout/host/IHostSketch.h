// The sketch open for editing.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>

class IHostSketchLine;
class KRLAYOUT_EXPORT IHostSketch : public IHostUnknown {
public:
    // Draws a line from (x1, y1, z1) to (x2, y2, z2).
    virtual long CreateLine(double x1, double y1, double z1, double x2, double y2, double z2,
                            IHostSketchLine** line) = 0;
protected:
    ~IHostSketch() = default;
};
