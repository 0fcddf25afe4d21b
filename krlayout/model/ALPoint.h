// A point of three doubles; the layout is planar and carries z along unchanged.
#pragma once

#include <krlayout/krlayout_export.h>

class KRLAYOUT_EXPORT ALPoint {
public:
    double x;
    double y;
    double z;

    ALPoint();
    // Copies x, y and z from a pointer to three doubles (a null pointer gives the origin).
    explicit ALPoint(double const* xyz);
    ALPoint(ALPoint const& other);
    ALPoint(double x, double y, double z);

    // Copies the three coordinates; returns the point by value.
    ALPoint operator=(ALPoint const& other);

    // True when x, y and z are each equal within GEO_TOLERANCE (tested x, y, z, early exit).
    bool operator==(ALPoint const& other) const;
};
