#include <krlayout/layout/IAssignAngle.h>

#include <krlayout/layout/IPriority.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrRouteSegment.h>

#include <algorithm>
#include <climits>
#include <iterator>

IAssignAngle::~IAssignAngle() = default;

namespace {

// The finer area of a child laid at angle x in the parent area: a half-plane splits into its
// quarters; exactly 0 in area 2 and exactly pi in area 3 keep the half-plane, and children of a
// quarter keep the quarter.
e_AngleArea AreaOfAngle(double x, e_AngleArea area)
{
    double const zero = 0.0;
    double const tol = GEO_TOLERANCE;
    if (area == e_AngleAreaPositiveX) {
        if (KrGeoUtility::LargerThan(x, zero, tol) && KrGeoUtility::LessEqualThan(x, HALF_PI, tol)) {
            return e_AngleAreaQuarter1;
        }
        if (KrGeoUtility::LargerEqualThan(x, KR_THREE_HALF_PI, tol) &&
            KrGeoUtility::LessThan(x, KR_TWO_PI, tol)) {
            return e_AngleAreaQuarter4;
        }
    } else if (area == e_AngleAreaNegativeX) {
        if (KrGeoUtility::LargerEqualThan(x, HALF_PI, tol) && KrGeoUtility::LessThan(x, KR_PI, tol)) {
            return e_AngleAreaQuarter2;
        }
        if (KrGeoUtility::LargerThan(x, KR_PI, tol) &&
            KrGeoUtility::LessEqualThan(x, KR_THREE_HALF_PI, tol)) {
            return e_AngleAreaQuarter3;
        }
    }
    return area;
}

}  // namespace

int IAssignAngle::AssignAnglesByPriority(IAssignAngle& self, IPriority& priority,
                                         KrRouteSegment* seg, KrRoutingWayPoint* end)
{
    if (seg == nullptr || end == nullptr) {
        return 1;
    }
    std::vector<KrRouteSegment*> children;
    seg->GetConnectSegmentByPoint(end, false, children);
    std::vector<KrRouteSegment*> const initial = children;

    bool isStart = false;
    seg->IsStartPoint(end, isStart);
    double angle = 0.0;
    seg->GetDirectAngle(angle);
    e_AngleArea type = e_AngleAreaNone;
    seg->GetType(type);
    bool const atPi = KrGeoUtility::IsEqual(angle, KR_PI, GEO_TOLERANCE);

    // The free side at this end: the parent's own area at its far end (the root's far end faces
    // the way it was laid); at the start only the root has children, on the opposite side.
    e_AngleArea area = type;
    if (!isStart) {
        if (type == e_AngleAreaRoot) {
            area = atPi ? e_AngleAreaNegativeX : e_AngleAreaPositiveX;
        }
    } else {
        if (type != e_AngleAreaRoot) {
            return 1;
        }
        area = atPi ? e_AngleAreaPositiveX : e_AngleAreaNegativeX;
    }

    // A parent whose area yields no angles (untyped, or outside 2..7) cannot spread its children:
    // return 1 and leave them as they are rather than hand out angles that do not exist.
    std::vector<double> angles;
    int const count = children.size() > static_cast<std::size_t>(INT_MAX)
                          ? INT_MAX
                          : static_cast<int>(children.size());
    if (self.GenerateAngles(count, area, angles) != 0) {
        return 1;
    }

    // Children beyond the generated angles (impossible for areas 2..7) keep angle and type.
    std::size_t const n = std::min(children.size(), angles.size());
    for (std::size_t i = 0; i < n; ++i) {
        KrRouteSegment* child = nullptr;
        priority.GetPriorestSegment(children, child);
        auto const it = std::find(children.begin(), children.end(), child);
        if (child == nullptr || it == children.end()) {
            break;
        }
        child->SetDirectAngle(angles[i]);
        child->SetType(AreaOfAngle(angles[i], area));
        children.erase(it);
    }

    std::vector<KrRouteSegment*> rows = initial;
    seg->AssignRowToSegment(rows);
    return 0;
}

void IAssignAngle::AppendBisectionAngles(int count, double const (&base)[3], double w, double b,
                                         std::vector<double>& angles)
{
    angles.insert(angles.end(), std::begin(base), std::end(base));
    // 2^p and 2^q are kept as doubles: they stay exact powers of two and cannot overflow for any
    // int count. With k = 3 angles so far, p = floor(log2(k - 1)) = 1 and q = p + 1.
    double pow2p = 2.0;
    double pow2q = 4.0;
    double step = w / pow2q;
    double const zero = 0.0;
    for (int k = 3; k < count; ++k) {
        double angle = 0.0;
        if (pow2q < k) {
            // This level is full: bisect once more and start again from b.
            pow2p = pow2q;
            pow2q *= 2.0;
            step = w / pow2q;
            angle = b + step;
        } else {
            angle = b + step + (k - pow2p - 1.0) * w / pow2p;
        }
        if (KrGeoUtility::LessThan(angle, zero, GEO_TOLERANCE)) {
            angle += KR_TWO_PI;
        }
        angles.push_back(angle);
    }
}
