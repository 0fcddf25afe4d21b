#include "JsonHostCallout.h"

#include <krlayout/host/KrHostInterfaceId.h>

JsonHostCallout::JsonHostCallout(std::shared_ptr<JsonHostState> state, int number, std::wstring text)
    : JsonHostObject(std::move(state)), number_(number), text_(std::move(text)) {}

long JsonHostCallout::QueryInterface(int interfaceId, void** object) {
    void* iface = nullptr;
    if (interfaceId == KR_IID_UNKNOWN || interfaceId == KR_IID_CALLOUT) {
        iface = static_cast<IHostCallout*>(this);
    }
    return answerQuery(interfaceId, object, iface);
}

long JsonHostCallout::GetText(std::wstring* text) {
    if (text == nullptr) return record("GetText", "", KR_HOST_INVALIDARG);
    *text = text_;
    return record("GetText", "", KR_HOST_OK);
}

std::string JsonHostCallout::describe() const {
    return "callout(" + std::to_string(number_) + ")";
}

bool JsonHostCallout::hasInterface(void const* p) const {
    return p == static_cast<IHostCallout const*>(this);
}
