// Angle assignment: Bisection spread over the whole half-plane; children ordered by diameter.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/layout/IAssignAngle.h>

class KRLAYOUT_EXPORT KrRoutingAssignAngleByDiameter : public IAssignAngle {
public:
    KrRoutingAssignAngleByDiameter();
    ~KrRoutingAssignAngleByDiameter() override;
    int AssignAngles(KrRouteSegment* seg, KrRoutingWayPoint* end) override;
    int GenerateAngles(int count, e_AngleArea area, std::vector<double>& angles) override;
};
