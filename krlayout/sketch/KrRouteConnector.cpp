#include <krlayout/sketch/KrRouteConnector.h>

KrRouteConnector::KrRouteConnector() : name(), entries(), sketch(nullptr) {}

// The sketch owns the record, not the other way round.
KrRouteConnector::~KrRouteConnector() = default;

int KrRouteConnector::SetName(std::wstring const& newName)
{
    name = newName;
    return 0;
}

int KrRouteConnector::GetName(std::wstring& out) const
{
    out = name;
    return 0;
}

int KrRouteConnector::AddEntry(std::wstring const& pin, long routeId)
{
    entries.emplace_back(pin, routeId);
    return 0;
}

// Appends the entries in the order they were added.
int KrRouteConnector::GetEntries(std::vector<std::pair<std::wstring, long>>& out) const
{
    out.insert(out.end(), entries.begin(), entries.end());
    return 0;
}

int KrRouteConnector::SetSketch(KrSketch* s)
{
    sketch = s;
    return 0;
}

int KrRouteConnector::GetSketch(KrSketch*& s) const
{
    s = sketch;
    return 0;
}
