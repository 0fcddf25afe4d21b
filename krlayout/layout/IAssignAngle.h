// Gives the segments waiting at one end of a placed segment their direction angles, areas and rows.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/model/e_AngleArea.h>

#include <vector>

class IPriority;
class KrRouteSegment;
class KrRoutingWayPoint;

class KRLAYOUT_EXPORT IAssignAngle {
public:
    virtual ~IAssignAngle();
    virtual int AssignAngles(KrRouteSegment* seg, KrRoutingWayPoint* end) = 0;
    virtual int GenerateAngles(int count, e_AngleArea area, std::vector<double>& angles) = 0;

private:
    // The three strategies share the assignment and the bisection spread; they differ only in
    // the priority and the area table they pass in.
    friend class KrRoutingAssignAngleByDiameter;
    friend class KrRoutingAssignAngleByLength;
    friend class KrRoutingAssignAngleAllPositiveByDiameter;

    // AssignAngles with the children taken in the order of `priority`; angles come from
    // self.GenerateAngles.
    static int AssignAnglesByPriority(IAssignAngle& self, IPriority& priority, KrRouteSegment* seg,
                                      KrRoutingWayPoint* end);
    // Appends the three base angles, then count - 3 bisection angles of width w from base b.
    static void AppendBisectionAngles(int count, double const (&base)[3], double w, double b,
                                      std::vector<double>& angles);
};
