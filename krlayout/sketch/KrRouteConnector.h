// A connector seen in the component map: its name and the (pin, route segment id) entries at it.
#pragma once

#include <krlayout/krlayout_export.h>

#include <string>
#include <utility>
#include <vector>

class KrSketch;

class KRLAYOUT_EXPORT KrRouteConnector {
public:
    KrRouteConnector();
    ~KrRouteConnector();

    int SetName(std::wstring const& name);
    int GetName(std::wstring& name) const;
    // Appends (pin, routeId); the same pair may be recorded more than once.
    int AddEntry(std::wstring const& pin, long routeId);
    int GetEntries(std::vector<std::pair<std::wstring, long>>& out) const;
    int SetSketch(KrSketch* sketch);
    int GetSketch(KrSketch*& sketch) const;

private:
    std::wstring name;
    std::vector<std::pair<std::wstring, long>> entries;
    KrSketch* sketch;
};
