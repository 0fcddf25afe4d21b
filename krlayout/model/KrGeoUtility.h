// Tolerant comparison of doubles and the 2-D helpers the whole library uses.
#pragma once

#include <krlayout/krlayout_export.h>

// The library's one tolerance, for every comparison of coordinates, lengths, vector components
// and angles.
constexpr double GEO_TOLERANCE = 1e-05;

// The library's angle literals. Directions are compared with these exact values within
// GEO_TOLERANCE, so they are the decimal literals below, not full-precision constants.
constexpr double KR_PI = 3.1415926536;
constexpr double HALF_PI = 1.5707963268;
constexpr double KR_QUARTER_PI = 0.7853981634;
constexpr double KR_THREE_QUARTER_PI = 2.3561944902;
constexpr double KR_FIVE_QUARTER_PI = 3.926990817;
constexpr double KR_THREE_HALF_PI = 4.7123889804;
constexpr double KR_SEVEN_QUARTER_PI = 5.4977871438;
constexpr double KR_TWO_PI = 6.2831853072;

class KRLAYOUT_EXPORT KrGeoUtility {
public:
    KrGeoUtility();
    ~KrGeoUtility();
    KrGeoUtility& operator=(KrGeoUtility const&);

    // a == b within tol: (a - b) < tol and (b - a) < tol, both strict.
    static bool IsEqual(double const& a, double const& b, double const& tol);
    // false when b < a, else !IsEqual(a, b, tol).
    static bool LessThan(double const& a, double const& b, double const& tol);
    // false when b > a, else !IsEqual(a, b, tol).
    static bool LargerThan(double const& a, double const& b, double const& tol);
    // LessThan or IsEqual, both at GEO_TOLERANCE: tol is ignored on purpose.
    static bool LessEqualThan(double const& a, double const& b, double const& tol);
    // LargerThan or IsEqual, both at GEO_TOLERANCE: tol is ignored on purpose.
    static bool LargerEqualThan(double const& a, double const& b, double const& tol);

    // (x, y) inside the closed box spanned by (x1, y1) and (x2, y2), widened by GEO_TOLERANCE.
    static bool InsideLine2D(double x, double y, double x1, double y1, double x2, double y2);
    // Normalises v[0..n-1] in place; false for null v or a zero vector.
    static bool UniteVector(double* v, int n);
    // Euclidean distance over the first n components (0 for n <= 0).
    static double GetLength(double const* a, double const* b, int n);
    // Intersection of two infinite lines: 0 crossing (point written), 1 or 2 parallel cases.
    static int Line2DIntersec(double* px, double* py, double x1, double y1, double x2, double y2,
                              double x3, double y3, double x4, double y4, double tol);
    // Intersection of two segments: codes 0 to 4.
    static int LineSegment2DIntersection(double* px, double* py, double x1, double y1, double x2,
                                         double y2, double x3, double y3, double x4, double y4,
                                         double tol);
};
