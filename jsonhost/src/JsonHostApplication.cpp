#include "JsonHostApplication.h"

#include "JsonHostCadDocument.h"
#include "JsonHostState.h"

#include <krlayout/host/KrHostInterfaceId.h>

JsonHostApplication::JsonHostApplication(std::shared_ptr<JsonHostState> state)
    : JsonHostObject(std::move(state)) {}

long JsonHostApplication::QueryInterface(int interfaceId, void** object) {
    void* iface = nullptr;
    if (interfaceId == KR_IID_UNKNOWN || interfaceId == KR_IID_APPLICATION) {
        iface = static_cast<IHostApplication*>(this);
    }
    return answerQuery(interfaceId, object, iface);
}

long JsonHostApplication::GetActiveDocument(IHostDocument** document) {
    if (document == nullptr) return record("GetActiveDocument", "", KR_HOST_INVALIDARG);
    *document = nullptr;
    if (!live() || !state_->model().activeDocument) return record("GetActiveDocument", "", KR_HOST_FAIL);
    JsonHostCadDocument* doc = state_->document();
    doc->clientAddRef();
    *document = doc;
    return record("GetActiveDocument", "", KR_HOST_OK);
}

bool JsonHostApplication::hasInterface(void const* p) const {
    return p == static_cast<IHostApplication const*>(this);
}
