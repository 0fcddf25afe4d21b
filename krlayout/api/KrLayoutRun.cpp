#include <krlayout/api/KrLayoutRun.h>

#include <krlayout/api/KrAutoLayout.h>
#include <krlayout/check/KrRoutingCheck.h>
#include <krlayout/host/KrHostRouteReader.h>
#include <krlayout/host/KrHostRouteWriter.h>
#include <krlayout/host/KrHostSession.h>
#include <krlayout/layout/KrRoutingLayout.h>
#include <krlayout/layout/e_LayOutType.h>
#include <krlayout/sketch/KrSketch.h>

#include <utility>

namespace {

// Splits one half of a component text at its first "@": head before it (empty without one), tail
// after it (the whole half without one).
void SplitAtSign(std::wstring const& half, std::wstring& head, std::wstring& tail)
{
    std::size_t const j = half.find(L'@');
    if (j == std::wstring::npos) {
        head.clear();
        tail = half;
    } else {
        head = half.substr(0, j);
        tail = half.substr(j + 1);
    }
}

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
    for (auto const& [id, text] : componentMap) {
        std::size_t const i = text.find(L':');
        std::wstring const first = i == std::wstring::npos ? std::wstring() : text.substr(0, i);
        std::wstring const second = i == std::wstring::npos ? text : text.substr(i + 1);
        for (std::wstring const* half : {&first, &second}) {
            std::wstring head;
            std::wstring tail;
            SplitAtSign(*half, head, tail);
            std::size_t const at = tail.find(L'@');
            if (at != std::wstring::npos && at >= 1) {
                sketch->InsertConnector(id, tail, head);
            }
        }
    }
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
    KrRoutingLayout layout;
    return layout.LayOut(routingSketch, layoutType == 1 ? LayOutByLength : LayOutByDiameter);
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

    KrHostRouteReader reader(session.GetRouteContainer());
    std::vector<int> ids;
    if (reader.ReadRouteSegmentIds(ids) != 0 || ids.empty()) {
        return 1;
    }
    std::map<int, double> values;
    reader.ReadRouteValues(ids, values);
    reader.CreateRouteSegments(values, sketch, segmentRecords);
    reader.CreateWayPoints(segmentRecords, sketch);

    sketch->UniqueMultiPinSegment();

    KrRoutingCheck check;
    check.EliminateMultiLineBetweenTwoPoint(sketch);
    int status = CheckBends(check, sketch);
    if (status != 0) {
        return status;
    }
    std::vector<long> loopIds;
    status = check.CheckSketch(sketch, loopIds);
    if (status != 0) {
        session.ReportSegments(loopIds, KrAutoLayout::loopMessage);
        return status;
    }
    std::vector<long> disjointIds;
    status = check.CheckDisjoint(sketch, disjointIds);
    if (status != 0) {
        session.ReportSegments(disjointIds, KrAutoLayout::disjoinMessage);
        return status;
    }

    LayOut(sketch, layoutType);
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
