#include <krlayout/layout/KrRoutingAssignAngleAllPositiveByDiameter.h>

#include <krlayout/layout/KrRoutingPriorityByDiameter.h>
#include <krlayout/model/KrGeoUtility.h>

KrRoutingAssignAngleAllPositiveByDiameter::KrRoutingAssignAngleAllPositiveByDiameter() = default;

KrRoutingAssignAngleAllPositiveByDiameter::~KrRoutingAssignAngleAllPositiveByDiameter() = default;

int KrRoutingAssignAngleAllPositiveByDiameter::AssignAngles(KrRouteSegment* seg,
                                                            KrRoutingWayPoint* end)
{
    KrRoutingPriorityByDiameter priority;
    return AssignAnglesByPriority(*this, priority, seg, end);
}

// A half-plane is spread over its upper quarter only, so areas 2 and 3 share the tables of
// quarters 4 and 5. Areas outside 2..7 have no table: 1, nothing appended (callers must not pass
// one; the layout driver never does).
int KrRoutingAssignAngleAllPositiveByDiameter::GenerateAngles(int count, e_AngleArea area,
                                                              std::vector<double>& angles)
{
    switch (area) {
    case e_AngleAreaPositiveX:
    case e_AngleAreaQuarter1: {
        double const base[3] = {0.0, HALF_PI, KR_QUARTER_PI};
        AppendBisectionAngles(count, base, HALF_PI, 0.0, angles);
        return 0;
    }
    case e_AngleAreaNegativeX:
    case e_AngleAreaQuarter2: {
        double const base[3] = {KR_PI, HALF_PI, KR_THREE_QUARTER_PI};
        AppendBisectionAngles(count, base, HALF_PI, HALF_PI, angles);
        return 0;
    }
    case e_AngleAreaQuarter3: {
        double const base[3] = {KR_PI, KR_THREE_HALF_PI, KR_FIVE_QUARTER_PI};
        AppendBisectionAngles(count, base, HALF_PI, KR_PI, angles);
        return 0;
    }
    case e_AngleAreaQuarter4: {
        double const base[3] = {0.0, KR_THREE_HALF_PI, KR_SEVEN_QUARTER_PI};
        AppendBisectionAngles(count, base, HALF_PI, KR_THREE_HALF_PI, angles);
        return 0;
    }
    default:
        return 1;
    }
}
