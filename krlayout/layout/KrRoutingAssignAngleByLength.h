// Angle assignment: Even-step spread; children ordered by length.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/layout/IAssignAngle.h>

class KRLAYOUT_EXPORT KrRoutingAssignAngleByLength : public IAssignAngle {
public:
    KrRoutingAssignAngleByLength();
    ~KrRoutingAssignAngleByLength() override;
    int AssignAngles(KrRouteSegment* seg, KrRoutingWayPoint* end) override;
    int GenerateAngles(int count, e_AngleArea area, std::vector<double>& angles) override;
};
