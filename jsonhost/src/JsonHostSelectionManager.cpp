#include "JsonHostSelectionManager.h"

#include "JsonHostCallout.h"
#include "JsonHostState.h"
#include "JsonHostText.h"

#include <krlayout/host/KrHostInterfaceId.h>

JsonHostSelectionManager::JsonHostSelectionManager(std::shared_ptr<JsonHostState> state)
    : JsonHostObject(std::move(state)) {}

long JsonHostSelectionManager::QueryInterface(int interfaceId, void** object) {
    void* iface = nullptr;
    if (interfaceId == KR_IID_UNKNOWN || interfaceId == KR_IID_SELECTION_MANAGER) {
        iface = static_cast<IHostSelectionManager*>(this);
    }
    return answerQuery(interfaceId, object, iface);
}

long JsonHostSelectionManager::ClearSelection(bool redraw) {
    std::string const arguments = JsonHostText::Bool(redraw);
    if (!live()) return record("ClearSelection", arguments, KR_HOST_FAIL);
    state_->recorder().clearSelection();
    return record("ClearSelection", arguments, KR_HOST_OK);
}

long JsonHostSelectionManager::CreateCallout(std::wstring const& text, IHostCallout** callout) {
    std::string const arguments = JsonHostText::Quoted(text);
    if (callout == nullptr) return record("CreateCallout", arguments, KR_HOST_INVALIDARG);
    *callout = nullptr;
    if (!live()) return record("CreateCallout", arguments, KR_HOST_FAIL);
    auto* made = new JsonHostCallout(state_, state_->newCalloutNumber(), text);
    made->clientAddRef();
    *callout = made;
    return record("CreateCallout", arguments, KR_HOST_OK);
}

bool JsonHostSelectionManager::hasInterface(void const* p) const {
    return p == static_cast<IHostSelectionManager const*>(this);
}
