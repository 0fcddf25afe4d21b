#include <krlayout/model/KrGeoUtility.h>

#include <algorithm>
#include <cmath>

KrGeoUtility::KrGeoUtility() = default;

KrGeoUtility::~KrGeoUtility() = default;

KrGeoUtility& KrGeoUtility::operator=(KrGeoUtility const&)
{
    return *this;
}

bool KrGeoUtility::IsEqual(double const& a, double const& b, double const& tol)
{
    return (a - b) < tol && (b - a) < tol;
}

bool KrGeoUtility::LessThan(double const& a, double const& b, double const& tol)
{
    if (b < a) {
        return false;
    }
    return !IsEqual(a, b, tol);
}

bool KrGeoUtility::LargerThan(double const& a, double const& b, double const& tol)
{
    if (b > a) {
        return false;
    }
    return !IsEqual(a, b, tol);
}

// Callers pass values that are not meant as tolerances here, so the inclusive comparisons
// always work at GEO_TOLERANCE.
bool KrGeoUtility::LessEqualThan(double const& a, double const& b, double const& /*tol*/)
{
    return LessThan(a, b, GEO_TOLERANCE) || IsEqual(a, b, GEO_TOLERANCE);
}

bool KrGeoUtility::LargerEqualThan(double const& a, double const& b, double const& /*tol*/)
{
    return LargerThan(a, b, GEO_TOLERANCE) || IsEqual(a, b, GEO_TOLERANCE);
}

bool KrGeoUtility::InsideLine2D(double x, double y, double x1, double y1, double x2, double y2)
{
    double const tol = GEO_TOLERANCE;
    if (!LessEqualThan(x, std::max(x1, x2), tol)) {
        return false;
    }
    if (!LargerEqualThan(x, std::min(x1, x2), tol)) {
        return false;
    }
    if (!LargerEqualThan(y, std::min(y1, y2), tol)) {
        return false;
    }
    return LessEqualThan(y, std::max(y1, y2), tol);
}

bool KrGeoUtility::UniteVector(double* v, int n)
{
    if (v == nullptr) {
        return false;
    }
    double sum = 0.0;
    for (int i = 0; i < n; ++i) {
        sum += v[i] * v[i];
    }
    double const len = std::sqrt(sum);
    if (IsEqual(len, 0.0, GEO_TOLERANCE)) {
        // Planar shortcut: only x and y are cleared, also for n = 3. A shorter vector (n < 2)
        // is cleared only as far as it reaches, so nothing beyond its n components is written.
        for (int i = 0; i < n && i < 2; ++i) {
            v[i] = 0.0;
        }
        return false;
    }
    double const inv = 1.0 / len;
    for (int i = 0; i < n; ++i) {
        v[i] *= inv;
    }
    return true;
}

double KrGeoUtility::GetLength(double const* a, double const* b, int n)
{
    // A missing operand has no distance to measure; it reads as 0 like an empty vector.
    if (a == nullptr || b == nullptr || n <= 0) {
        return 0.0;
    }
    double sum = 0.0;
    for (int i = 0; i < n; ++i) {
        double const d = a[i] - b[i];
        sum += d * d;
    }
    return std::sqrt(sum);
}

// Works with inverse slopes dx/dy, so horizontal lines are the special case. The tol argument is
// not used: every test is at GEO_TOLERANCE. A null px or py is simply not written.
int KrGeoUtility::Line2DIntersec(double* px, double* py, double x1, double y1, double x2, double y2,
                                 double x3, double y3, double x4, double y4, double /*tol*/)
{
    double const tol = GEO_TOLERANCE;
    bool const hor1 = IsEqual(y1, y2, tol);
    bool const hor2 = IsEqual(y3, y4, tol);
    if (!hor1 && !hor2) {
        double const k1 = (x2 - x1) / (y2 - y1);
        double const k2 = (x4 - x3) / (y4 - y3);
        if (IsEqual(k1, k2, tol)) {
            // Parallel: coincident when the second line passes through (x1, y1).
            double const xs = x3 + k2 * (y1 - y3);
            return IsEqual(x1, xs, tol) ? 2 : 1;
        }
        double const yy = (k1 * y1 - k2 * y3 - x1 + x3) / (k1 - k2);
        double const xx = x1 + k1 * (yy - y1);
        if (py != nullptr) {
            *py = yy;
        }
        if (px != nullptr) {
            *px = xx;
        }
        return 0;
    }
    if (hor1 && hor2) {
        // Both horizontal: the codes are the other way round from the sloped parallel case.
        return IsEqual(y1, y3, tol) ? 1 : 2;
    }
    double xx = 0.0;
    double yy = 0.0;
    if (hor1) {
        yy = y1;
        xx = x3 + (x4 - x3) / (y4 - y3) * (y1 - y3);
    } else {
        yy = y3;
        xx = x1 + (x2 - x1) / (y2 - y1) * (y3 - y1);
    }
    if (py != nullptr) {
        *py = yy;
    }
    if (px != nullptr) {
        *px = xx;
    }
    return 0;
}

int KrGeoUtility::LineSegment2DIntersection(double* px, double* py, double x1, double y1, double x2,
                                            double y2, double x3, double y3, double x4, double y4,
                                            double tol)
{
    double const minX1 = std::min(x1, x2);
    double const maxX1 = std::max(x1, x2);
    if ((x3 < minX1 - tol && x4 < minX1 - tol) || (x3 > maxX1 + tol && x4 > maxX1 + tol)) {
        return 3;
    }
    double const minY1 = std::min(y1, y2);
    double const maxY1 = std::max(y1, y2);
    if ((y3 < minY1 - tol && y4 < minY1 - tol) || (y3 > maxY1 + tol && y4 > maxY1 + tol)) {
        return 3;
    }
    double xx = 0.0;
    double yy = 0.0;
    int const r = Line2DIntersec(&xx, &yy, x1, y1, x2, y2, x3, y3, x4, y4, GEO_TOLERANCE);
    if (r != 0) {
        return r;
    }
    if (px != nullptr) {
        *px = xx;
    }
    if (py != nullptr) {
        *py = yy;
    }
    if (!InsideLine2D(xx, yy, x1, y1, x2, y2) || !InsideLine2D(xx, yy, x3, y3, x4, y4)) {
        return 4;
    }
    return 0;
}
