#include <krlayout/api/KrAutoLayout.h>

#include <krlayout/api/KrLayoutRun.h>
#include <krlayout/api/KrLayoutTypeRegistry.h>
#include <krlayout/host/KrHostSession.h>
#include <krlayout/sketch/IRoutingSketch.h>

#include <new>

std::wstring const KrAutoLayout::disjoinMessage = L"Disjoint Segment";
std::wstring const KrAutoLayout::loopMessage = L"Loop Segment";

namespace {

// The one host application reference of the whole library, shared by every KrAutoLayout.
IHostApplication* libraryHost = nullptr;

// Drops the library's reference and adopts the one the caller hands over with `host`.
void AdoptHost(void* host)
{
    KrHostSession::ReleaseReference(libraryHost);
    libraryHost = static_cast<IHostApplication*>(host);
}

}  // namespace

KrAutoLayout::KrAutoLayout()
    : run(new (std::nothrow) KrLayoutRun()),
      gridSpacingX(0.02),
      gridSpacingY(0.02)
{
}

KrAutoLayout::~KrAutoLayout()
{
    KrHostSession::ReleaseReference(libraryHost);
    delete run;
    run = nullptr;
}

KrAutoLayout& KrAutoLayout::operator=(KrAutoLayout const& other)
{
    run = other.run;
    gridSpacingX = other.gridSpacingX;
    gridSpacingY = other.gridSpacingY;
    return *this;
}

long KrAutoLayout::setRouteGridSpacing(double x, double y)
{
    gridSpacingX = x;
    gridSpacingY = y;
    return 0;
}

// Without a run object (its allocation failed) there is nothing to fill: 1.
long KrAutoLayout::setComponentMap(std::map<long, std::wstring> const& componentMap)
{
    if (run == nullptr) {
        return 1;
    }
    return run->SetComponentMap(componentMap);
}

// A facade without a run object still adopts the caller's reference (so that it is released
// later), then reports 1.
long KrAutoLayout::StartAutoLayout(void* host, int layoutType, bool filletCorners,
                                   bool addAxisRelations, void** resultSketch, bool applyToHost,
                                   std::wstring& /*ignoredText*/)
{
    if (run != nullptr) {
        run->SetApplyToHost(applyToHost);
    }
    AdoptHost(host);
    if (run == nullptr) {
        return 1;
    }
    run->AttachHost(libraryHost);
    // This form selects no feature: a feature kept from an earlier StartAutoLayout2 is dropped,
    // so the run adds no coincident relation.
    run->ClearFeature();
    return run->Run(gridSpacingX, gridSpacingY, KrLayoutTypeRegistry::FacadeType(layoutType),
                    filletCorners, addAxisRelations, resultSketch);
}

long KrAutoLayout::StartAutoLayout2(void* host, int layoutType, bool filletCorners,
                                    bool addAxisRelations, std::wstring& featureName,
                                    void** resultSketch, bool applyToHost, std::wstring& runText)
{
    AdoptHost(host);
    if (run == nullptr) {
        return 1;
    }
    run->AttachHost(libraryHost);
    run->SelectFeature(featureName);
    run->SetApplyToHost(applyToHost);
    int const type = KrLayoutTypeRegistry::FacadeType(layoutType);
    run->SetRunText(runText);
    return run->Run(gridSpacingX, gridSpacingY, type, filletCorners, addAxisRelations,
                    resultSketch);
}

long KrAutoLayout::getOutputPoints(std::vector<double>& points)
{
    if (run == nullptr) {
        return 1;
    }
    points = run->GetOutputPoints();
    return 0;
}

long KrAutoLayout::getOutputConstraints(std::vector<int>& constraints)
{
    if (run == nullptr) {
        return 1;
    }
    constraints = run->GetOutputConstraints();
    return 0;
}

// The three queries need a run object and a sketch (none before the first run): 1 otherwise.
long KrAutoLayout::getRouteSegmentIDs(std::vector<long>& ids)
{
    if (run == nullptr || run->GetSketch() == nullptr) {
        return 1;
    }
    return run->GetSketch()->GetAllRouteSegment(ids);
}

long KrAutoLayout::GetSketchLineIdByRouteSegmentId(long routeSegmentId,
                                                   std::vector<std::pair<long, long>>& ids)
{
    if (run == nullptr || run->GetSketch() == nullptr) {
        return 1;
    }
    return run->GetSketch()->GetCADLineIdByRouteId(routeSegmentId, ids);
}

long KrAutoLayout::GetSketchPointIdByRouteSegmentId(long routeSegmentId,
                                                    std::vector<std::pair<long, long>>& ids)
{
    if (run == nullptr || run->GetSketch() == nullptr) {
        return 1;
    }
    return run->GetSketch()->GetSketchPointIdByRouteSegmentId(routeSegmentId, ids);
}
