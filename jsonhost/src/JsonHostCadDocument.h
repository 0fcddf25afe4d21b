// The active document: its route model, sketches, selection, relations, fillets, drawing settings
// and features.
#pragma once

#include "JsonHostObject.h"

#include <krlayout/host/IHostDocument.h>
#include <krlayout/host/IHostRouteModel.h>

class JsonHostCadDocument final : public IHostDocument, public IHostRouteModel, public JsonHostObject {
public:
    explicit JsonHostCadDocument(std::shared_ptr<JsonHostState> state);

    long QueryInterface(int interfaceId, void** object) override;
    unsigned long AddRef() override { return clientAddRef(); }
    unsigned long Release() override { return clientRelease(); }

    long GetActiveSketch(IHostSketch** sketch) override;
    long ToggleSketchEdit() override;
    long GetSelectionManager(IHostSelectionManager** manager) override;
    long AddRelation(std::wstring const& name) override;
    long FilletSelectedCorner(double radius) override;
    long GetDrawingSetting(int setting, bool* value) override;
    long SetDrawingSetting(int setting, bool value) override;
    long Redraw() override;
    long GetFirstFeature(IHostFeature** feature) override;

    long GetRouteSketch(IHostUnknown** routeSketch) override;

    std::string describe() const override { return "document"; }
    IHostUnknown* identity() override { return static_cast<IHostDocument*>(this); }
    bool hasInterface(void const* p) const override;
};
