#include <krlayout/host/KrHostSession.h>

#include <krlayout/host/IHostApplication.h>
#include <krlayout/host/IHostCallout.h>
#include <krlayout/host/IHostDocument.h>
#include <krlayout/host/IHostFeature.h>
#include <krlayout/host/IHostRouteContainer.h>
#include <krlayout/host/IHostRouteData.h>
#include <krlayout/host/IHostRouteModel.h>
#include <krlayout/host/IHostSelectable.h>
#include <krlayout/host/IHostSelectionManager.h>
#include <krlayout/host/KrHostInterfaceId.h>
#include <krlayout/host/KrHostLocale.h>
#include <krlayout/host/KrHostRef.h>
#include <krlayout/host/KrHostRouteReader.h>

namespace {

// Bound of the feature walk: a host whose list runs in a circle must not hang the library.
constexpr long kMaxFeatures = 1L << 20;

template <class T>
void ReleaseAndClear(T*& p)
{
    if (p != nullptr) {
        T* q = p;
        p = nullptr;
        q->Release();
    }
}

}  // namespace

KrHostSession::KrHostSession(IHostApplication* app)
    : application(app),
      document(nullptr),
      routeModel(nullptr),
      routeSketch(nullptr),
      routeData(nullptr),
      routeContainer(nullptr),
      selectionManager(nullptr)
{
}

KrHostSession::~KrHostSession()
{
    Close();
}

bool KrHostSession::OpenRouteModel()
{
    if (routeModel != nullptr) {
        return true;
    }
    if (application == nullptr) {
        return false;
    }
    // The document is kept even without a route model, so that everything is released in the
    // reverse order of obtaining it.
    if (document == nullptr) {
        KrHostRef<IHostDocument> doc;
        application->GetActiveDocument(doc.Out());
        document = doc.Detach();
        if (document == nullptr) {
            return false;
        }
    }
    routeModel = KrHostQuery<IHostRouteModel>(document, KR_IID_ROUTE_MODEL).Detach();
    return routeModel != nullptr;
}

bool KrHostSession::OpenRouteSketch()
{
    if (routeModel == nullptr || routeSketch != nullptr) {
        return routeSketch != nullptr;
    }
    KrHostRef<IHostUnknown> object;
    routeModel->GetRouteSketch(object.Out());
    routeSketch = object.Detach();
    return routeSketch != nullptr;
}

bool KrHostSession::OpenRouteData()
{
    if (routeSketch == nullptr || routeData != nullptr) {
        return routeData != nullptr;
    }
    routeData = KrHostQuery<IHostRouteData>(routeSketch, KR_IID_ROUTE_DATA).Detach();
    return routeData != nullptr;
}

bool KrHostSession::OpenRouteContainer()
{
    if (routeData == nullptr || routeContainer != nullptr) {
        return routeContainer != nullptr;
    }
    KrHostRef<IHostRouteContainer> container;
    routeData->GetRouteContainer(container.Out());
    routeContainer = container.Detach();
    return routeContainer != nullptr;
}

bool KrHostSession::GetSelectionManager()
{
    if (selectionManager == nullptr && document != nullptr) {
        KrHostRef<IHostSelectionManager> manager;
        document->GetSelectionManager(manager.Out());
        selectionManager = manager.Detach();
    }
    return selectionManager != nullptr;
}

int KrHostSession::ClearSelection()
{
    if (!GetSelectionManager()) {
        return 1;
    }
    selectionManager->ClearSelection(true);
    return 0;
}

int KrHostSession::ReportSegments(std::vector<long> const& ids, std::wstring const& message)
{
    if (routeContainer == nullptr || !GetSelectionManager()) {
        return 1;
    }
    selectionManager->ClearSelection(true);

    std::vector<KrHostRef<IHostSelectable>> selectables;
    for (long id : ids) {
        std::vector<KrHostRef<IHostUnknown>> entities;
        KrHostRouteReader::FetchEntities(routeContainer, static_cast<int>(id), entities);
        for (KrHostRef<IHostUnknown> const& entity : entities) {
            KrHostRef<IHostSelectable> s = KrHostQuery<IHostSelectable>(entity.Get(), KR_IID_SELECTABLE);
            if (s) {
                selectables.push_back(std::move(s));
            }
        }
        // The fetched objects are released here; the selectable interfaces stay.
    }

    for (KrHostRef<IHostSelectable> const& s : selectables) {
        KrHostRef<IHostCallout> callout;
        selectionManager->CreateCallout(message, callout.Out());
        s->SelectWithCallout(true, callout.Get());
    }
    return 0;
}

IHostDocument* KrHostSession::GetDocument() const
{
    return document;
}

IHostRouteContainer* KrHostSession::GetRouteContainer() const
{
    return routeContainer;
}

void KrHostSession::Close()
{
    ReleaseAndClear(selectionManager);
    ReleaseAndClear(routeContainer);
    ReleaseAndClear(routeData);
    ReleaseAndClear(routeSketch);
    ReleaseAndClear(routeModel);
    ReleaseAndClear(document);
}

void KrHostSession::AddReference(IHostApplication* app)
{
    if (app != nullptr) {
        app->AddRef();
    }
}

void KrHostSession::ReleaseReference(IHostApplication*& app)
{
    ReleaseAndClear(app);
}

void KrHostSession::ReleaseReference(IHostFeature*& feature)
{
    ReleaseAndClear(feature);
}

bool KrHostSession::FindFeature(IHostApplication* app, std::wstring const& name,
                                IHostFeature*& feature)
{
    feature = nullptr;
    if (app == nullptr) {
        return false;
    }
    KrHostRef<IHostDocument> doc;
    app->GetActiveDocument(doc.Out());
    if (!doc) {
        return false;
    }
    KrHostRef<IHostFeature> current;
    doc->GetFirstFeature(current.Out());
    for (long visited = 0; current && visited < kMaxFeatures; ++visited) {
        std::wstring featureName;
        if (current->GetName(&featureName) == KR_HOST_OK && KrHostLocale::Equal(featureName, name)) {
            feature = current.Detach();
            return true;
        }
        KrHostRef<IHostFeature> next;
        current->GetNextFeature(next.Out());
        current = std::move(next);
    }
    return false;
}
