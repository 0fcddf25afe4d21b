#include <krlayout/layout/KrRoutingAssignAngleByDiameter.h>

#include <krlayout/layout/KrRoutingAssignAngleAllPositiveByDiameter.h>
#include <krlayout/layout/KrRoutingPriorityByDiameter.h>
#include <krlayout/model/KrGeoUtility.h>

KrRoutingAssignAngleByDiameter::KrRoutingAssignAngleByDiameter() = default;

KrRoutingAssignAngleByDiameter::~KrRoutingAssignAngleByDiameter() = default;

int KrRoutingAssignAngleByDiameter::AssignAngles(KrRouteSegment* seg, KrRoutingWayPoint* end)
{
    KrRoutingPriorityByDiameter priority;
    return AssignAnglesByPriority(*this, priority, seg, end);
}

// A half-plane is spread over its whole width pi: area 2 from -pi/2 (angles below 0 wrap by 2pi),
// area 3 from pi/2. The quarters spread as in the all-positive strategy. Areas outside 2..7: 1,
// nothing appended (callers must not pass one; the layout driver never does).
int KrRoutingAssignAngleByDiameter::GenerateAngles(int count, e_AngleArea area,
                                                   std::vector<double>& angles)
{
    if (area == e_AngleAreaPositiveX) {
        double const base[3] = {0.0, HALF_PI, KR_THREE_HALF_PI};
        AppendBisectionAngles(count, base, KR_PI, -HALF_PI, angles);
        return 0;
    }
    if (area == e_AngleAreaNegativeX) {
        double const base[3] = {KR_PI, HALF_PI, KR_THREE_HALF_PI};
        AppendBisectionAngles(count, base, KR_PI, HALF_PI, angles);
        return 0;
    }
    KrRoutingAssignAngleAllPositiveByDiameter quarters;
    return quarters.GenerateAngles(count, area, angles);
}
