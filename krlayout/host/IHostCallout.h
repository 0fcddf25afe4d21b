// A callout text shown beside selected entities.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>


class KRLAYOUT_EXPORT IHostCallout : public IHostUnknown {
public:
    virtual long GetText(std::wstring* text) = 0;
protected:
    ~IHostCallout() = default;
};
