#include <krlayout/host/KrHostRouteWriter.h>

#include <krlayout/host/IHostApplication.h>
#include <krlayout/host/IHostDocument.h>
#include <krlayout/host/IHostFeature.h>
#include <krlayout/host/IHostPoint.h>
#include <krlayout/host/IHostSelectable.h>
#include <krlayout/host/IHostSelectionManager.h>
#include <krlayout/host/IHostSketch.h>
#include <krlayout/host/IHostSketchLine.h>
#include <krlayout/host/KrHostInterfaceId.h>
#include <krlayout/host/KrHostRef.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/sketch/IRoutingSketch.h>

#include <array>
#include <utility>

std::wstring const KrHostRouteWriter::AlongXRelation = L"sgALONGX3D";
std::wstring const KrHostRouteWriter::AlongYRelation = L"sgALONGY3D";
std::wstring const KrHostRouteWriter::CoincidentRelation = L"sgCOINCIDENT";

namespace {

// Host id pair of a line end; false when the host gives none.
bool ReadPointId(KrHostRef<IHostPoint> const& point, std::array<long, 2>& id)
{
    long first = -1;
    long second = -1;
    if (!point || point->GetId(&first, &second) != KR_HOST_OK) {
        return false;
    }
    id = {first, second};
    return true;
}

// Selects `entity` alone; false when it is not selectable.
bool SelectAlone(IHostUnknown* entity)
{
    KrHostRef<IHostSelectable> s = KrHostQuery<IHostSelectable>(entity, KR_IID_SELECTABLE);
    return s && s->Select(false) == KR_HOST_OK;
}

void ClearSelection(IHostSelectionManager* selection)
{
    if (selection != nullptr) {
        selection->ClearSelection(true);
    }
}

}  // namespace

int KrHostRouteWriter::AxisCode(ALLine const& line)
{
    if (KrGeoUtility::IsEqual(line.start.x, line.end.x, GEO_TOLERANCE)) {
        return 2;
    }
    if (KrGeoUtility::IsEqual(line.start.y, line.end.y, GEO_TOLERANCE)) {
        return 1;
    }
    return 0;
}

int KrHostRouteWriter::WriteArrays(IRoutingSketch* sketch, std::vector<double>& points,
                                   std::vector<int>& constraints)
{
    if (sketch == nullptr) {
        return 1;
    }
    std::vector<long> ids;
    sketch->GetAllRouteSegment(ids);
    long k = 0;
    for (long id : ids) {
        std::vector<ALLine> lines;
        sketch->GetLinesByRouteId(id, lines);
        std::vector<std::pair<long, long>> pairs(lines.size(), std::make_pair(-1L, -1L));
        for (std::size_t i = 0; i < lines.size(); ++i) {
            ALLine const& l = lines[i];
            points.insert(points.end(), {l.start.x, l.start.y, l.start.z, l.end.x, l.end.y, l.end.z});
            constraints.push_back(AxisCode(l));
            pairs[i] = std::make_pair(k, k);
            ++k;
        }
        sketch->SetCADLineIdByRouteId(id, pairs);
        std::vector<long*> noPoints;
        sketch->SetCADPointIdByRouteId(id, noPoints);
    }
    return 0;
}

int KrHostRouteWriter::AddRelation(IHostDocument* document, IHostSelectionManager* selection,
                                   IHostUnknown* entity, std::wstring const& name)
{
    if (document == nullptr) {
        return 1;
    }
    KrHostRef<IHostSketchLine> line = KrHostQuery<IHostSketchLine>(entity, KR_IID_SKETCH_LINE);
    if (!line) {
        return 1;
    }
    if (SelectAlone(entity)) {
        document->AddRelation(name);
    }
    ClearSelection(selection);
    return 0;
}

int KrHostRouteWriter::AddCoincidence(IHostDocument* document, IHostSelectionManager* selection,
                                      IHostUnknown* entity, IHostFeature* feature)
{
    if (document == nullptr || entity == nullptr || feature == nullptr) {
        return 1;
    }
    KrHostRef<IHostSelectable> f = KrHostQuery<IHostSelectable>(feature, KR_IID_SELECTABLE);
    // Without both in the selection the relation would join the wrong entities: add none then.
    if (SelectAlone(entity) && f && f->Select(true) == KR_HOST_OK) {
        document->AddRelation(CoincidentRelation);
    }
    ClearSelection(selection);
    return 0;
}

int KrHostRouteWriter::WriteToHost(IHostApplication* application, IRoutingSketch* sketch,
                                   IHostFeature* routeFeature, bool filletCorners,
                                   bool addAxisRelations, void** resultSketch)
{
    if (application == nullptr || sketch == nullptr) {
        return 1;
    }
    // Without a document or a sketch to draw into nothing is written, and the caller receives no
    // sketch (null).
    KrHostRef<IHostDocument> doc;
    application->GetActiveDocument(doc.Out());
    KrHostRef<IHostSketch> hostSketch;
    if (doc) {
        doc->GetActiveSketch(hostSketch.Out());
        if (!hostSketch) {
            doc->ToggleSketchEdit();
            doc->GetActiveSketch(hostSketch.Out());
        }
    }
    if (!hostSketch) {
        if (resultSketch != nullptr) {
            *resultSketch = nullptr;
        }
        return 0;
    }
    if (resultSketch != nullptr) {
        hostSketch->AddRef();
        *resultSketch = hostSketch.Get();
    }

    KrHostRef<IHostSelectionManager> selection;
    doc->GetSelectionManager(selection.Out());
    sketch->ModifySketchByBends();

    // Bulk insertion without inferred relations. A setting that cannot be read is left alone, so
    // that it is never changed without being restored.
    bool oldBulk = false;
    bool oldAuto = false;
    bool const haveBulk = doc->GetDrawingSetting(KR_SETTING_BULK_INSERT, &oldBulk) == KR_HOST_OK;
    bool const haveAuto = doc->GetDrawingSetting(KR_SETTING_AUTO_RELATIONS, &oldAuto) == KR_HOST_OK;
    if (haveBulk) {
        doc->SetDrawingSetting(KR_SETTING_BULK_INSERT, true);
    }
    if (haveAuto) {
        doc->SetDrawingSetting(KR_SETTING_AUTO_RELATIONS, false);
    }

    double gridX = 0.0;
    if (filletCorners) {
        sketch->GetGridXSpacing(gridX);
    }
    double const radius = 0.5 * gridX;

    std::vector<long> ids;
    sketch->GetAllRouteSegment(ids);
    for (long id : ids) {
        std::vector<ALLine> lines;
        sketch->GetLinesByRouteId(id, lines);
        std::vector<std::pair<long, long>> pairs(lines.size(), std::make_pair(-1L, -1L));
        std::vector<std::array<long, 2>> pointIds;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            ALLine const& l = lines[i];
            KrHostRef<IHostSketchLine> line;
            hostSketch->CreateLine(l.start.x, l.start.y, l.start.z, l.end.x, l.end.y, l.end.z,
                                   line.Out());
            if (!line) {
                continue;  // nothing drawn: no relation, id or fillet for this line
            }
            if (addAxisRelations) {
                if (KrGeoUtility::IsEqual(l.start.x, l.end.x, GEO_TOLERANCE)) {
                    AddRelation(doc.Get(), selection.Get(), line.Get(), AlongYRelation);
                } else if (KrGeoUtility::IsEqual(l.start.y, l.end.y, GEO_TOLERANCE)) {
                    AddRelation(doc.Get(), selection.Get(), line.Get(), AlongXRelation);
                }
                // A run started without a feature has nothing to be coincident with.
                if (routeFeature != nullptr) {
                    AddCoincidence(doc.Get(), selection.Get(), line.Get(), routeFeature);
                }
            }

            long first = -1;
            long second = -1;
            if (line->GetId(&first, &second) == KR_HOST_OK) {
                pairs[i] = std::make_pair(first, second);
            }
            KrHostRef<IHostPoint> start;
            line->GetStartPoint(start.Out());
            std::array<long, 2> pid = {-1, -1};
            if (i == 0 && ReadPointId(start, pid)) {
                pointIds.push_back(pid);
            }
            {
                KrHostRef<IHostPoint> end;
                line->GetEndPoint(end.Out());
                if (ReadPointId(end, pid)) {
                    pointIds.push_back(pid);
                }
            }

            if (filletCorners && lines.size() > 1 && i >= 1 && SelectAlone(start.Get())) {
                doc->FilletSelectedCorner(radius);
            }
        }
        sketch->SetCADLineIdByRouteId(id, pairs);
        std::vector<long*> pointIdRefs;
        pointIdRefs.reserve(pointIds.size());
        for (std::array<long, 2>& p : pointIds) {
            pointIdRefs.push_back(p.data());
        }
        sketch->SetCADPointIdByRouteId(id, pointIdRefs);
    }

    if (haveBulk) {
        doc->SetDrawingSetting(KR_SETTING_BULK_INSERT, oldBulk);
    }
    if (haveAuto) {
        doc->SetDrawingSetting(KR_SETTING_AUTO_RELATIONS, oldAuto);
    }
    doc->Redraw();
    doc->ToggleSketchEdit();
    return 0;
}
