// An entity that can be selected: lines, points, sketch entities and features.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>

class IHostCallout;
class KRLAYOUT_EXPORT IHostSelectable : public IHostUnknown {
public:
    // Selects the entity, added to the selection (append) or replacing it.
    virtual long Select(bool append) = 0;
    virtual long SelectWithCallout(bool append, IHostCallout* callout) = 0;
protected:
    ~IHostSelectable() = default;
};
