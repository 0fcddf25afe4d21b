// A feature of the document's feature list: its name, the next feature; selectable.
#pragma once

#include "JsonHostObject.h"

#include <krlayout/host/IHostFeature.h>
#include <krlayout/host/IHostSelectable.h>

#include <cstddef>

class JsonHostFeature final : public IHostFeature, public IHostSelectable, public JsonHostObject {
public:
    // index: position in the document's feature list.
    JsonHostFeature(std::shared_ptr<JsonHostState> state, std::size_t index, std::wstring name);

    long QueryInterface(int interfaceId, void** object) override;
    unsigned long AddRef() override { return clientAddRef(); }
    unsigned long Release() override { return clientRelease(); }

    long GetName(std::wstring* name) override;
    long GetNextFeature(IHostFeature** next) override;
    long Select(bool append) override;
    long SelectWithCallout(bool append, IHostCallout* callout) override;

    JsonHostRecorder::Target target() const;

    std::string describe() const override { return target().text(); }
    IHostUnknown* identity() override { return static_cast<IHostFeature*>(this); }
    bool hasInterface(void const* p) const override;

private:
    std::size_t index_;
    std::wstring name_;
};
