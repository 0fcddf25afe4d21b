// Angle assignment: Bisection spread kept in the upper quarter of a half-plane; children ordered by diameter.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/layout/IAssignAngle.h>

class KRLAYOUT_EXPORT KrRoutingAssignAngleAllPositiveByDiameter : public IAssignAngle {
public:
    KrRoutingAssignAngleAllPositiveByDiameter();
    ~KrRoutingAssignAngleAllPositiveByDiameter() override;
    int AssignAngles(KrRouteSegment* seg, KrRoutingWayPoint* end) override;
    int GenerateAngles(int count, e_AngleArea area, std::vector<double>& angles) override;
};
