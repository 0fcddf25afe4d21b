// The document's selection manager: clears the selection and makes callouts.
#pragma once

#include "JsonHostObject.h"

#include <krlayout/host/IHostSelectionManager.h>

class JsonHostSelectionManager final : public IHostSelectionManager, public JsonHostObject {
public:
    explicit JsonHostSelectionManager(std::shared_ptr<JsonHostState> state);

    long QueryInterface(int interfaceId, void** object) override;
    unsigned long AddRef() override { return clientAddRef(); }
    unsigned long Release() override { return clientRelease(); }
    long ClearSelection(bool redraw) override;
    // The callout belongs to the caller alone (the host keeps no reference to it).
    long CreateCallout(std::wstring const& text, IHostCallout** callout) override;

    std::string describe() const override { return "selectionManager"; }
    IHostUnknown* identity() override { return static_cast<IHostSelectionManager*>(this); }
    bool hasInterface(void const* p) const override;
};
