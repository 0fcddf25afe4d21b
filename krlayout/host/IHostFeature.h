// A feature of the document's feature list.
#pragma once

#include <krlayout/host/IHostUnknown.h>

#include <string>


class KRLAYOUT_EXPORT IHostFeature : public IHostUnknown {
public:
    virtual long GetName(std::wstring* name) = 0;
    // The next feature; null and KR_HOST_FAIL after the last.
    virtual long GetNextFeature(IHostFeature** next) = 0;
protected:
    ~IHostFeature() = default;
};
