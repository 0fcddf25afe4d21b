// The route container: route segment ids, their route items and their sketch entities.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>


class KRLAYOUT_EXPORT IHostRouteContainer : public IHostUnknown {
public:
    virtual long GetRouteSegmentCount(int* count) = 0;
    // Writes up to count ids, in the host's order.
    virtual long GetRouteSegmentIds(int count, int* ids) = 0;
    virtual long GetRouteItem(int segmentId, IHostUnknown** item) = 0;
    virtual long GetSketchEntityCount(int segmentId, int* count) = 0;
    // Writes up to count entities (each with one reference added), in the segment's order.
    virtual long GetSketchEntities(int segmentId, int count, IHostUnknown** entities) = 0;
protected:
    ~IHostRouteContainer() = default;
};
