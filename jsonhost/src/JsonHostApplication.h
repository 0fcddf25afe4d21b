// The host application: hands out the active document.
#pragma once

#include "JsonHostObject.h"

#include <krlayout/host/IHostApplication.h>

class JsonHostApplication final : public IHostApplication, public JsonHostObject {
public:
    explicit JsonHostApplication(std::shared_ptr<JsonHostState> state);

    long QueryInterface(int interfaceId, void** object) override;
    unsigned long AddRef() override { return clientAddRef(); }
    unsigned long Release() override { return clientRelease(); }
    long GetActiveDocument(IHostDocument** document) override;

    std::string describe() const override { return "application"; }
    IHostUnknown* identity() override { return static_cast<IHostApplication*>(this); }
    bool hasInterface(void const* p) const override;
};
