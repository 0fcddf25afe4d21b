// A callout text; selecting an entity with it shows the text beside the entity.
#pragma once

#include "JsonHostObject.h"

#include <krlayout/host/IHostCallout.h>

class JsonHostCallout final : public IHostCallout, public JsonHostObject {
public:
    JsonHostCallout(std::shared_ptr<JsonHostState> state, int number, std::wstring text);

    long QueryInterface(int interfaceId, void** object) override;
    unsigned long AddRef() override { return clientAddRef(); }
    unsigned long Release() override { return clientRelease(); }
    long GetText(std::wstring* text) override;

    std::wstring const& text() const { return text_; }

    std::string describe() const override;
    IHostUnknown* identity() override { return static_cast<IHostCallout*>(this); }
    bool hasInterface(void const* p) const override;

private:
    int number_;
    std::wstring text_;
};
