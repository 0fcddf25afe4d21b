#include <krlayout/layout/KrRoutingAssignAngleByLength.h>

#include <krlayout/layout/KrRoutingPriorityByLength.h>
#include <krlayout/model/KrGeoUtility.h>

#include <algorithm>

KrRoutingAssignAngleByLength::KrRoutingAssignAngleByLength() = default;

KrRoutingAssignAngleByLength::~KrRoutingAssignAngleByLength() = default;

int KrRoutingAssignAngleByLength::AssignAngles(KrRouteSegment* seg, KrRoutingWayPoint* end)
{
    KrRoutingPriorityByLength priority;
    return AssignAnglesByPriority(*this, priority, seg, end);
}

// Even steps between the area's limits. Quarters: two base angles, then count - 2 angles stepping
// from hi down (areas 4, 6) or from lo up (areas 5, 7). Half-planes: three base angles, then the
// extras split between a run down from hi and a run up from lo; both runs start at j = 0, so the
// first extra pair repeats hi and lo themselves (kept on purpose), and area 2's lo is -pi/2,
// which is not wrapped. Areas outside 2..7: 1, nothing appended.
int KrRoutingAssignAngleByLength::GenerateAngles(int count, e_AngleArea area,
                                                 std::vector<double>& angles)
{
    double hi = 0.0;
    double lo = 0.0;
    switch (area) {
    case e_AngleAreaPositiveX:
        angles.insert(angles.end(), {0.0, HALF_PI, KR_THREE_HALF_PI});
        hi = HALF_PI;
        lo = -HALF_PI;
        break;
    case e_AngleAreaNegativeX:
        angles.insert(angles.end(), {KR_PI, HALF_PI, KR_THREE_HALF_PI});
        hi = KR_THREE_HALF_PI;
        lo = HALF_PI;
        break;
    case e_AngleAreaQuarter1:
        angles.insert(angles.end(), {0.0, HALF_PI});
        hi = HALF_PI;
        lo = 0.0;
        break;
    case e_AngleAreaQuarter2:
        angles.insert(angles.end(), {KR_PI, HALF_PI});
        hi = KR_PI;
        lo = HALF_PI;
        break;
    case e_AngleAreaQuarter3:
        angles.insert(angles.end(), {KR_PI, KR_THREE_HALF_PI});
        hi = KR_THREE_HALF_PI;
        lo = KR_PI;
        break;
    case e_AngleAreaQuarter4:
        angles.insert(angles.end(), {0.0, KR_THREE_HALF_PI});
        hi = KR_TWO_PI;
        lo = KR_THREE_HALF_PI;
        break;
    default:
        return 1;
    }

    if (area == e_AngleAreaPositiveX || area == e_AngleAreaNegativeX) {
        if (count > 3) {
            int const u = (count - 3) / 2;
            int const v = (count - 3) - u;
            int const runs = std::max(u, v);
            for (int j = 0; j < runs; ++j) {
                if (j < u) {
                    angles.push_back(hi - (HALF_PI / (u + 1.0)) * j);
                }
                if (j < v) {
                    angles.push_back(lo + (HALF_PI / (v + 1.0)) * j);
                }
            }
        }
        return 0;
    }

    if (count > 2) {
        double const step = HALF_PI / (count - 1.0);
        bool const downFromHi = (area == e_AngleAreaQuarter1 || area == e_AngleAreaQuarter3);
        for (int i = 1; i <= count - 2; ++i) {
            angles.push_back(downFromHi ? hi - i * step : lo + i * step);
        }
    }
    return 0;
}
