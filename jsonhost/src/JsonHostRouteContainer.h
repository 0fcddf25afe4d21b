// The route container: segment ids in document order, route items and sketch entities by id.
// A segment id given twice is looked up as its first occurrence.
#pragma once

#include "JsonHostObject.h"

#include <krlayout/host/IHostRouteContainer.h>

class JsonHostRouteContainer final : public IHostRouteContainer, public JsonHostObject {
public:
    explicit JsonHostRouteContainer(std::shared_ptr<JsonHostState> state);

    long QueryInterface(int interfaceId, void** object) override;
    unsigned long AddRef() override { return clientAddRef(); }
    unsigned long Release() override { return clientRelease(); }

    long GetRouteSegmentCount(int* count) override;
    long GetRouteSegmentIds(int count, int* ids) override;
    long GetRouteItem(int segmentId, IHostUnknown** item) override;
    long GetSketchEntityCount(int segmentId, int* count) override;
    long GetSketchEntities(int segmentId, int count, IHostUnknown** entities) override;

    std::string describe() const override { return "routeContainer"; }
    IHostUnknown* identity() override { return static_cast<IHostRouteContainer*>(this); }
    bool hasInterface(void const* p) const override;
};
