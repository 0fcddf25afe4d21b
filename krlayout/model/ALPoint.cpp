#include <krlayout/model/ALPoint.h>

#include <krlayout/model/KrGeoUtility.h>

ALPoint::ALPoint() : x(0.0), y(0.0), z(0.0) {}

ALPoint::ALPoint(double const* xyz) : x(0.0), y(0.0), z(0.0)
{
    if (xyz != nullptr) {
        x = xyz[0];
        y = xyz[1];
        z = xyz[2];
    }
}

ALPoint::ALPoint(ALPoint const& other) : x(other.x), y(other.y), z(other.z) {}

ALPoint::ALPoint(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}

ALPoint ALPoint::operator=(ALPoint const& other)
{
    x = other.x;
    y = other.y;
    z = other.z;
    return *this;
}

bool ALPoint::operator==(ALPoint const& other) const
{
    if (!KrGeoUtility::IsEqual(x, other.x, GEO_TOLERANCE)) {
        return false;
    }
    if (!KrGeoUtility::IsEqual(y, other.y, GEO_TOLERANCE)) {
        return false;
    }
    return KrGeoUtility::IsEqual(z, other.z, GEO_TOLERANCE);
}
