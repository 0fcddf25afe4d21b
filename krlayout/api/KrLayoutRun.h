// One layout run from the host's route sketch to the result: creates the routing sketch and its
// grid, reads and checks the host data, lays it out and writes the result back. The run object
// lives across any number of runs; the output arrays and the segment records only grow.
#pragma once

#include <krlayout/krlayout_export.h>

#include <map>
#include <string>
#include <vector>

class IHostApplication;
class IHostFeature;
class IRoutingSketch;
class KrHostSession;
class KrRoutingCheck;

class KRLAYOUT_EXPORT KrLayoutRun {
public:
    KrLayoutRun();
    // Teardown().
    virtual ~KrLayoutRun();
    KrLayoutRun(KrLayoutRun const&) = delete;
    KrLayoutRun& operator=(KrLayoutRun const&) = delete;

    // Takes the run's own counted reference to the library-wide host application: when the
    // library pointer is set, the run's reference is dropped first; then, if the run holds a
    // different pointer, it adds a reference to the library's (when set), drops its old one and
    // keeps the library's. 0.
    int AttachHost(IHostApplication*& libraryHost);
    // Remembers `name` and selects the first feature of the active document with that name (in
    // the user's default locale) as the feature of coincident relations; false when none has it.
    bool SelectFeature(std::wstring const& name);
    // Drops the selected feature (the name is kept).
    void ClearFeature();
    // Insert-if-absent into the component map, keys narrowed to int; 0.
    int SetComponentMap(std::map<long, std::wstring> const& map);

    // The driver: status 0, or the first non-zero status of a stage (1 to 6, a check's code,
    // CreateGrid's code, the direct write-back's code).
    int Run(double gridSpacingX, double gridSpacingY, int layoutType, bool filletCorners,
            bool addAxisRelations, void** resultSketch);

    // Frees the sketch, releases the host references and empties every member.
    void Teardown();

    void SetApplyToHost(bool apply);
    bool GetApplyToHost() const;
    void SetRunText(std::wstring const& text);
    std::wstring const& GetRunText() const;
    std::wstring const& GetFeatureName() const;
    bool HasFeature() const;

    // The latest run's sketch (null before the first run).
    IRoutingSketch* GetSketch() const;
    std::vector<double> const& GetOutputPoints() const;
    std::vector<int> const& GetOutputConstraints() const;
    std::vector<int> const& GetSegmentRecords() const;
    std::map<int, std::wstring> const& GetComponentMap() const;

protected:
    // The sketch of a new run (a KrSketch).
    virtual IRoutingSketch* CreateSketch();
    // The bend check of the check stage (the check object's CheckBends).
    virtual int CheckBends(KrRoutingCheck& check, IRoutingSketch* routingSketch);
    // The layout stage (a KrRoutingLayout's LayOut); its result is not used by the driver.
    virtual int LayOut(IRoutingSketch* routingSketch, int layoutType);

private:
    // Driver step 3: reach the host, read, check and lay out.
    int BuildCheckAndLayOut(KrHostSession& session, int layoutType);
    // Records the connectors named in the component map in the sketch.
    void ApplyComponentMap();

    IRoutingSketch* sketch;
    IHostApplication* host;
    bool applyToHost;
    std::vector<double> outputPoints;
    std::vector<int> outputConstraints;
    std::vector<int> segmentRecords;
    std::wstring runText;
    std::wstring featureName;
    IHostFeature* routeFeature;
    std::map<int, std::wstring> componentMap;
};
