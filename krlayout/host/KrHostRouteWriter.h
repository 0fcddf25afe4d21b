// Hands the laid-out lines back: as output arrays for the caller, or drawn straight into the
// host's active sketch with axis, coincidence relations and corner fillets.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/model/ALLine.h>

#include <string>
#include <vector>

class IHostApplication;
class IHostDocument;
class IHostFeature;
class IHostSelectionManager;
class IHostUnknown;
class IRoutingSketch;

class KRLAYOUT_EXPORT KrHostRouteWriter {
public:
    // Relation names given to the host.
    static std::wstring const AlongXRelation;      // "sgALONGX3D"
    static std::wstring const AlongYRelation;      // "sgALONGY3D"
    static std::wstring const CoincidentRelation;  // "sgCOINCIDENT"

    // 2 when the line's start and end x are equal within 1e-5 (tested first), else 1 when its
    // start and end y are, else 0.
    static int AxisCode(ALLine const& line);

    // Array variant: for every segment of the sketch and every laid-out line of it, appends six
    // doubles (start x, y, z, end x, y, z) to `points` and the line's axis code to `constraints`,
    // and records the running line index k (from 0 in this call) as the line's id pair (k, k);
    // the segments get no point ids. 0; 1 for a null sketch.
    static int WriteArrays(IRoutingSketch* sketch, std::vector<double>& points,
                           std::vector<int>& constraints);

    // Direct variant: draws every laid-out line into the active sketch of the application's
    // active document (opening a new sketch when none is open) and records the host ids of the
    // new lines and points in the sketch. With addAxisRelations a line parallel to an axis gets
    // the along-axis relation and, when routeFeature is set, a coincident relation with that
    // feature; with filletCorners every joint between consecutive lines of a segment is filleted
    // with radius 0.5 x the grid X spacing. The host sketch is stored in *resultSketch (when
    // resultSketch is not null) with one reference for the caller. 0; 1 for a null application or
    // sketch.
    static int WriteToHost(IHostApplication* application, IRoutingSketch* sketch,
                           IHostFeature* routeFeature, bool filletCorners, bool addAxisRelations,
                           void** resultSketch);

    // Selects `entity` alone, asks the document to add the relation `name` to the selection and
    // clears the selection. 1, with nothing done, when the entity is not a sketch line or the
    // document is null.
    static int AddRelation(IHostDocument* document, IHostSelectionManager* selection,
                           IHostUnknown* entity, std::wstring const& name);
    // Selects `entity` alone, adds the feature to the selection, adds "sgCOINCIDENT" and clears
    // the selection. 1, with nothing done, for a null document, entity or feature.
    static int AddCoincidence(IHostDocument* document, IHostSelectionManager* selection,
                              IHostUnknown* entity, IHostFeature* feature);
};
