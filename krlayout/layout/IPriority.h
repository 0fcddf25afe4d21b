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
};
