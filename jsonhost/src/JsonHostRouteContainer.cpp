#include "JsonHostRouteContainer.h"

#include "JsonHostRouteItem.h"
#include "JsonHostSketchEntity.h"
#include "JsonHostState.h"

#include <krlayout/host/KrHostInterfaceId.h>

#include <algorithm>

JsonHostRouteContainer::JsonHostRouteContainer(std::shared_ptr<JsonHostState> state)
    : JsonHostObject(std::move(state)) {}

long JsonHostRouteContainer::QueryInterface(int interfaceId, void** object) {
    void* iface = nullptr;
    if (interfaceId == KR_IID_UNKNOWN || interfaceId == KR_IID_ROUTE_CONTAINER) {
        iface = static_cast<IHostRouteContainer*>(this);
    }
    return answerQuery(interfaceId, object, iface);
}

long JsonHostRouteContainer::GetRouteSegmentCount(int* count) {
    if (count == nullptr) return record("GetRouteSegmentCount", "", KR_HOST_INVALIDARG);
    *count = static_cast<int>(state_->model().segments.size());
    return record("GetRouteSegmentCount", "", KR_HOST_OK);
}

long JsonHostRouteContainer::GetRouteSegmentIds(int count, int* ids) {
    std::string const arguments = std::to_string(count);
    if (count < 0 || (ids == nullptr && count > 0)) return record("GetRouteSegmentIds", arguments, KR_HOST_INVALIDARG);
    auto const& segments = state_->model().segments;
    std::size_t const n = std::min(segments.size(), static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < n; ++i) ids[i] = segments[i].id;
    return record("GetRouteSegmentIds", arguments, KR_HOST_OK);
}

long JsonHostRouteContainer::GetRouteItem(int segmentId, IHostUnknown** item) {
    std::string const arguments = std::to_string(segmentId);
    if (item == nullptr) return record("GetRouteItem", arguments, KR_HOST_INVALIDARG);
    *item = nullptr;
    int const index = state_->model().segmentIndex(segmentId);
    if (!live() || index < 0) return record("GetRouteItem", arguments, KR_HOST_FAIL);
    JsonHostRouteItem* routeItem = state_->routeItem(static_cast<std::size_t>(index));
    routeItem->clientAddRef();
    *item = routeItem->identity();
    return record("GetRouteItem", arguments, KR_HOST_OK);
}

long JsonHostRouteContainer::GetSketchEntityCount(int segmentId, int* count) {
    std::string const arguments = std::to_string(segmentId);
    if (count == nullptr) return record("GetSketchEntityCount", arguments, KR_HOST_INVALIDARG);
    *count = 0;
    int const index = state_->model().segmentIndex(segmentId);
    if (index < 0) return record("GetSketchEntityCount", arguments, KR_HOST_FAIL);
    *count = static_cast<int>(state_->model().segments[static_cast<std::size_t>(index)].entities.size());
    return record("GetSketchEntityCount", arguments, KR_HOST_OK);
}

long JsonHostRouteContainer::GetSketchEntities(int segmentId, int count, IHostUnknown** entities) {
    std::string const arguments = std::to_string(segmentId) + ", " + std::to_string(count);
    if (count < 0 || (entities == nullptr && count > 0)) {
        return record("GetSketchEntities", arguments, KR_HOST_INVALIDARG);
    }
    std::fill(entities, entities + count, nullptr);
    int const index = state_->model().segmentIndex(segmentId);
    if (!live() || index < 0) return record("GetSketchEntities", arguments, KR_HOST_FAIL);
    auto const& objects = state_->entities(static_cast<std::size_t>(index));
    std::size_t const n = std::min(objects.size(), static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < n; ++i) {
        objects[i]->clientAddRef();
        entities[i] = objects[i]->identity();
    }
    return record("GetSketchEntities", arguments, KR_HOST_OK);
}

bool JsonHostRouteContainer::hasInterface(void const* p) const {
    return p == static_cast<IHostRouteContainer const*>(this);
}
