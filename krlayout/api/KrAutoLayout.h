// The facade a host add-in uses to lay out the active route sketch of its host.
#pragma once

#include <krlayout/krlayout_export.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

class KrLayoutRun;

class KRLAYOUT_EXPORT KrAutoLayout {
public:
    // Creates the run object; both grid spacings start at 0.02.
    KrAutoLayout();
    // Releases the library-wide host reference (if set), then tears the run object down.
    ~KrAutoLayout();
    // Member-wise: the copy shares the run object and either destructor frees it, so a host must
    // not copy a KrAutoLayout. Kept for interface compatibility; the library never uses it.
    KrAutoLayout& operator=(KrAutoLayout const& other);
    KrAutoLayout(KrAutoLayout const&) = delete;

    // Stored as given (no validation); 0.
    long setRouteGridSpacing(double x, double y);
    // Copies the entries into the run's component map; an id already present keeps its text.
    long setComponentMap(std::map<long, std::wstring> const& componentMap);

    // One layout run on the host's active document. host is the host's IHostApplication* passed
    // as an untyped pointer; the library adopts the one reference the caller hands over.
    long StartAutoLayout(void* host, int layoutType, bool filletCorners, bool addAxisRelations,
                         void** resultSketch, bool applyToHost, std::wstring& ignoredText);
    // As StartAutoLayout, on the host feature named featureName (coincident relations).
    long StartAutoLayout2(void* host, int layoutType, bool filletCorners, bool addAxisRelations,
                          std::wstring& featureName, void** resultSketch, bool applyToHost,
                          std::wstring& runText);

    // Copies of the run's output arrays (six doubles and one axis code per laid-out line).
    long getOutputPoints(std::vector<double>& points);
    long getOutputConstraints(std::vector<int>& constraints);
    // Queries on the latest run's sketch: 1 when there is none.
    long getRouteSegmentIDs(std::vector<long>& ids);
    long GetSketchLineIdByRouteSegmentId(long routeSegmentId,
                                         std::vector<std::pair<long, long>>& ids);
    long GetSketchPointIdByRouteSegmentId(long routeSegmentId,
                                          std::vector<std::pair<long, long>>& ids);

    // "Disjoint Segment" (the name keeps its historical spelling) and "Loop Segment".
    static std::wstring const disjoinMessage;
    static std::wstring const loopMessage;

private:
    KrLayoutRun* run;
    double gridSpacingX;
    double gridSpacingY;
};
