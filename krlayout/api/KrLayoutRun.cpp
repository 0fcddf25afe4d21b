#include <krlayout/api/KrLayoutRun.h>

#include <krlayout/api/KrAutoLayout.h>
#include <krlayout/api/KrLayoutInput.h>
#include <krlayout/api/KrLayoutResult.h>
#include <krlayout/api/KrLayoutTypeRegistry.h>
#include <krlayout/api/KrPlainLayoutRun.h>
#include <krlayout/check/KrRoutingCheck.h>
#include <krlayout/host/KrHostRouteReader.h>
#include <krlayout/host/KrHostRouteWriter.h>
#include <krlayout/host/KrHostSession.h>
#include <krlayout/sketch/KrSketch.h>

#include <utility>

namespace {

// The plain-data run's stages with the host run's own bend check and layout stage, so that a
// class deriving from the host run still replaces them.
class HostStages : public KrPlainLayoutRun {
public:
    using CheckHook = int (*)(KrLayoutRun&, KrRoutingCheck&, IRoutingSketch*);
    using LayOutHook = int (*)(KrLayoutRun&, IRoutingSketch*, int);
    HostStages(KrLayoutRun& r, CheckHook c, LayOutHook l) : run(r), checkHook(c), layOutHook(l) {}

protected:
    int CheckBends(KrRoutingCheck& check, IRoutingSketch* sketch) override
    {
        return checkHook(run, check, sketch);
    }
    int LayOut(IRoutingSketch* sketch, KrLayoutInput const& input, KrLayoutResult&) override
    {
        return layOutHook(run, sketch, input.layoutType);
    }

private:
    KrLayoutRun& run;
    CheckHook checkHook;
    LayOutHook layOutHook;
};

}  // namespace

KrLayoutRun::KrLayoutRun()
    : sketch(nullptr),
      host(nullptr),
      applyToHost(true),
      routeFeature(nullptr)
{
}

KrLayoutRun::~KrLayoutRun()
{
    Teardown();
}

void KrLayoutRun::Teardown()
{
    delete sketch;
    sketch = nullptr;
    KrHostSession::ReleaseReference(host);
    componentMap.clear();
    KrHostSession::ReleaseReference(routeFeature);
    featureName.clear();
    runText.clear();
    segmentRecords.clear();
    outputConstraints.clear();
    outputPoints.clear();
}

// When the library-wide pointer is set, the run's own reference is dropped first; then, if the
// run holds another pointer than the library's, it takes a reference to the library's and drops
// the old one.
int KrLayoutRun::AttachHost(IHostApplication*& libraryHost)
{
    if (libraryHost != nullptr && host != nullptr) {
        KrHostSession::ReleaseReference(host);
    }
    if (host != libraryHost) {
        KrHostSession::AddReference(libraryHost);
        KrHostSession::ReleaseReference(host);
        host = libraryHost;
    }
    return 0;
}

// A name that matches no feature leaves the run without one: the walk stops at the end of the
// list and the feature of an earlier selection is dropped, so no coincident relation is added.
bool KrLayoutRun::SelectFeature(std::wstring const& name)
{
    featureName = name;
    IHostFeature* found = nullptr;
    bool const ok = KrHostSession::FindFeature(host, name, found);
    KrHostSession::ReleaseReference(routeFeature);
    routeFeature = found;
    return ok;
}

void KrLayoutRun::ClearFeature()
{
    KrHostSession::ReleaseReference(routeFeature);
}

int KrLayoutRun::SetComponentMap(std::map<long, std::wstring> const& map)
{
    for (auto const& [id, text] : map) {
        componentMap.emplace(static_cast<int>(id), text);
    }
    return 0;
}

// Texts of the form head1 "@" tail1 ":" head2 "@" tail2: each half whose tail holds its first
// "@" at position 1 or more names a connector (the tail) and a pin (the head).
void KrLayoutRun::ApplyComponentMap()
{
    KrPlainLayoutRun::ApplyComponentMap(sketch, componentMap);
}

IRoutingSketch* KrLayoutRun::CreateSketch()
{
    return new KrSketch();
}

int KrLayoutRun::CheckBends(KrRoutingCheck& check, IRoutingSketch* routingSketch)
{
    return check.CheckBends(routingSketch);
}

int KrLayoutRun::LayOut(IRoutingSketch* routingSketch, int layoutType)
{
    KrLayoutResult figures;
    return KrLayoutTypeRegistry::LayOut(routingSketch, layoutType, -1.0, figures);
}

int KrLayoutRun::Run(double gridSpacingX, double gridSpacingY, int layoutType, bool filletCorners,
                     bool addAxisRelations, void** resultSketch)
{
    // The previous run's sketch is freed once the new one exists; the id queries read the latest.
    IRoutingSketch* const fresh = CreateSketch();
    if (fresh == nullptr) {
        return 1;
    }
    delete sketch;
    sketch = fresh;

    int status = sketch->CreateGrid(gridSpacingX, gridSpacingY);
    if (status != 0) {
        return status;
    }

    {
        // The session releases every host object it obtained on leaving this scope.
        KrHostSession session(host);
        status = BuildCheckAndLayOut(session, layoutType);
    }
    if (status != 0) {
        return status;
    }

    if (!applyToHost) {
        KrHostRouteWriter::WriteArrays(sketch, outputPoints, outputConstraints);
        return 0;
    }
    return KrHostRouteWriter::WriteToHost(host, sketch, routeFeature, filletCorners,
                                          addAxisRelations, resultSketch);
}

int KrLayoutRun::BuildCheckAndLayOut(KrHostSession& session, int layoutType)
{
    if (host == nullptr) {
        return 6;
    }
    if (!session.OpenRouteModel()) {
        return 2;
    }
    bool const haveRouteSketch = session.OpenRouteSketch();
    ApplyComponentMap();
    if (!haveRouteSketch) {
        return 3;
    }
    if (!session.OpenRouteData()) {
        return 4;
    }
    if (!session.OpenRouteContainer()) {
        return 5;
    }
    session.ClearSelection();

    // The host reader gathers everything first (the host's requests keep their order: the ids,
    // the route values, the entity lengths segment by segment, then the way points of every id
    // in segmentRecords); the plain-data stages build, check and lay out from that.
    KrHostRouteReader reader(session.GetRouteContainer());
    std::vector<int> ids;
    if (reader.ReadRouteSegmentIds(ids) != 0 || ids.empty()) {
        return 1;
    }
    std::map<int, double> values;
    reader.ReadRouteValues(ids, values);
    KrLayoutInput input;
    input.layoutType = layoutType;
    for (auto const& [id, value] : values) {
        segmentRecords.push_back(id);
        KrLayoutInput::Segment segment;
        segment.id = id;
        // A segment without entities keeps the length 0; it is created all the same.
        segment.length = 0.0;
        reader.ReadSegmentLength(id, segment.length);
        segment.diameter = value;
        input.segments.push_back(std::move(segment));
    }
    input.hostWayPoints = true;
    reader.ReadWayPoints(segmentRecords, input.hostLineCounts, input.hostLineEnds);

    HostStages stages(
        *this,
        [](KrLayoutRun& run, KrRoutingCheck& check, IRoutingSketch* s) {
            return run.CheckBends(check, s);
        },
        [](KrLayoutRun& run, IRoutingSketch* s, int type) { return run.LayOut(s, type); });
    KrLayoutResult result;
    int const status = stages.BuildCheckAndLayOut(sketch, input, result);
    if (status != 0) {
        if (!result.message.empty()) {
            session.ReportSegments(result.failedIds, result.message);
        }
        return status;
    }
    session.Close();
    return 0;
}

void KrLayoutRun::SetApplyToHost(bool apply)
{
    applyToHost = apply;
}

bool KrLayoutRun::GetApplyToHost() const
{
    return applyToHost;
}

void KrLayoutRun::SetRunText(std::wstring const& text)
{
    runText = text;
}

std::wstring const& KrLayoutRun::GetRunText() const
{
    return runText;
}

std::wstring const& KrLayoutRun::GetFeatureName() const
{
    return featureName;
}

bool KrLayoutRun::HasFeature() const
{
    return routeFeature != nullptr;
}

IRoutingSketch* KrLayoutRun::GetSketch() const
{
    return sketch;
}

std::vector<double> const& KrLayoutRun::GetOutputPoints() const
{
    return outputPoints;
}

std::vector<int> const& KrLayoutRun::GetOutputConstraints() const
{
    return outputConstraints;
}

std::vector<int> const& KrLayoutRun::GetSegmentRecords() const
{
    return segmentRecords;
}

std::map<int, std::wstring> const& KrLayoutRun::GetComponentMap() const
{
    return componentMap;
}
