// Strategy that picks the most important route segment of a list.
#pragma once

#include <krlayout/krlayout_export.h>

#include <vector>

class KrRouteSegment;

class KRLAYOUT_EXPORT IPriority {
public:
    virtual ~IPriority();

    // result = the highest-ranked segment of segments (null for an empty list); returns 0.
    virtual int GetPriorestSegment(std::vector<KrRouteSegment*>& segments, KrRouteSegment*& result) = 0;

protected:
    // The one-pass selection both strategies share: the first non-null segment is the best; a
    // later one replaces it when its primary key is larger (LessThan at 1e-5), or when the
    // primary keys are equal (IsEqual at 1e-5) and its secondary key is larger. Comparing only
    // against the current best, with strict tests, keeps the earlier segment on a tie.
    // byDiameter: diameter first, then length; otherwise length first, then diameter.
    static KrRouteSegment* SelectBest(std::vector<KrRouteSegment*> const& segments, bool byDiameter);
};
