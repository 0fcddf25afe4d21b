// A host document: its active sketch, selection, relations, fillets, settings and features.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>

class IHostFeature;
class IHostSelectionManager;
class IHostSketch;
class KRLAYOUT_EXPORT IHostDocument : public IHostUnknown {
public:
    // The sketch open for editing; null and KR_HOST_FAIL when none is.
    virtual long GetActiveSketch(IHostSketch** sketch) = 0;
    // Opens a new sketch for editing when none is open, closes the open one otherwise.
    virtual long ToggleSketchEdit() = 0;
    virtual long GetSelectionManager(IHostSelectionManager** manager) = 0;
    // Adds the named relation ("sgALONGX3D", "sgALONGY3D", "sgCOINCIDENT") to the selected entities.
    virtual long AddRelation(std::wstring const& name) = 0;
    // Fillets the selected corner (a sketch point joining two lines) with the given radius.
    virtual long FilletSelectedCorner(double radius) = 0;
    virtual long GetDrawingSetting(int setting, bool* value) = 0;
    virtual long SetDrawingSetting(int setting, bool value) = 0;
    // Refreshes the graphics.
    virtual long Redraw() = 0;
    // The first feature of the document's feature list; null and KR_HOST_FAIL when there is none.
    virtual long GetFirstFeature(IHostFeature** feature) = 0;
protected:
    ~IHostDocument() = default;
};
