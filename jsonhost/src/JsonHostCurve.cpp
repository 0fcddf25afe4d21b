#include "JsonHostCurve.h"

#include <krlayout/host/KrHostInterfaceId.h>

#include <algorithm>

JsonHostCurve::JsonHostCurve(std::shared_ptr<JsonHostState> state, std::string owner,
                             JsonHostRecorder::Vec3 start, JsonHostRecorder::Vec3 end)
    : JsonHostObject(std::move(state)), owner_(std::move(owner)), start_(start), end_(end) {}

long JsonHostCurve::QueryInterface(int interfaceId, void** object) {
    void* iface = nullptr;
    if (interfaceId == KR_IID_UNKNOWN || interfaceId == KR_IID_CURVE) {
        iface = static_cast<IHostCurve*>(this);
    }
    return answerQuery(interfaceId, object, iface);
}

long JsonHostCurve::GetEndPoints(double* start, double* end) {
    if (start == nullptr || end == nullptr) return record("GetEndPoints", "", KR_HOST_INVALIDARG);
    std::copy(start_.begin(), start_.end(), start);
    std::copy(end_.begin(), end_.end(), end);
    return record("GetEndPoints", "", KR_HOST_OK);
}

bool JsonHostCurve::hasInterface(void const* p) const {
    return p == static_cast<IHostCurve const*>(this);
}
