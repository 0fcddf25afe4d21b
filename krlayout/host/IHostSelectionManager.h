// The document's selection.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>

class IHostCallout;
class KRLAYOUT_EXPORT IHostSelectionManager : public IHostUnknown {
public:
    // Clears the selection; redraw asks the host to repaint the selection.
    virtual long ClearSelection(bool redraw) = 0;
    // A callout showing text beside an entity when the entity is selected with it.
    virtual long CreateCallout(std::wstring const& text, IHostCallout** callout) = 0;
protected:
    ~IHostSelectionManager() = default;
};
