// The host objects of one layout run: the active document, its route objects and its selection.
// Everything obtained is released by Close() or by the destructor, whichever comes first.
#pragma once

#include <krlayout/krlayout_export.h>

#include <string>
#include <vector>

class IHostApplication;
class IHostDocument;
class IHostFeature;
class IHostRouteContainer;
class IHostRouteData;
class IHostRouteModel;
class IHostSelectionManager;
class IHostUnknown;

class KRLAYOUT_EXPORT KrHostSession {
public:
    // The application is not owned: the session neither adds nor drops a reference to it.
    explicit KrHostSession(IHostApplication* application);
    ~KrHostSession();
    KrHostSession(KrHostSession const&) = delete;
    KrHostSession& operator=(KrHostSession const&) = delete;

    // The steps of reaching the route container, in this order; each is false when its object is
    // unavailable (or when an earlier step has not succeeded).
    // The active document and its route model interface.
    bool OpenRouteModel();
    // The route model's route sketch object.
    bool OpenRouteSketch();
    // The route sketch object's route-data interface.
    bool OpenRouteData();
    // The route data's route container.
    bool OpenRouteContainer();

    // Clears the document's selection (asking the host to repaint it); 1 when the document or its
    // selection manager is unavailable.
    int ClearSelection();
    // Shows the route segments `ids` selected, each of their sketch entities with a callout
    // reading `message`; the selection is cleared first. 1 without a route container or a selection
    // manager.
    int ReportSegments(std::vector<long> const& ids, std::wstring const& message);

    IHostDocument* GetDocument() const;
    IHostRouteContainer* GetRouteContainer() const;

    // Releases everything obtained, in the reverse order of obtaining it.
    void Close();

    // Reference counting for holders outside the bridge (null pointers are ignored). The Release
    // forms clear the pointer.
    static void AddReference(IHostApplication* application);
    static void ReleaseReference(IHostApplication*& application);
    static void ReleaseReference(IHostFeature*& feature);

    // Walks the active document's features from the first and gives back the first whose name
    // equals `name` in the user's default locale, with one reference for the caller (null when
    // none matches, or without an application or document). The walk ends at the end of the list.
    static bool FindFeature(IHostApplication* application, std::wstring const& name,
                            IHostFeature*& feature);

private:
    bool GetSelectionManager();

    IHostApplication* application;
    IHostDocument* document;
    IHostRouteModel* routeModel;
    IHostUnknown* routeSketch;
    IHostRouteData* routeData;
    IHostRouteContainer* routeContainer;
    IHostSelectionManager* selectionManager;
};
