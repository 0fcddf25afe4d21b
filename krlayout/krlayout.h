// Umbrella header: every exported class of the krlayout library.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/krlayout_version.h>

#include <krlayout/model/ALLine.h>
#include <krlayout/model/ALPoint.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/KrLineChain.h>
#include <krlayout/model/KrPointIndex.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/model/KrSegmentGeometry.h>
#include <krlayout/model/e_AngleArea.h>

#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/grid/KrRoutingGridNode.h>

#include <krlayout/sketch/IRoutingSketch.h>
#include <krlayout/sketch/KrRouteBends.h>
#include <krlayout/sketch/KrRouteConnector.h>
#include <krlayout/sketch/KrRoutingSketchLineEnd.h>
#include <krlayout/sketch/KrSketch.h>

#include <krlayout/layout/IAssignAngle.h>
#include <krlayout/layout/ICrossLineUpdate.h>
#include <krlayout/layout/IPriority.h>
#include <krlayout/layout/KrCrossLineUpdate.h>
#include <krlayout/layout/KrCrossLineUpdateByLength.h>
#include <krlayout/layout/KrFormboardLayout.h>
#include <krlayout/layout/KrRoutingAssignAngleAllPositiveByDiameter.h>
#include <krlayout/layout/KrRoutingAssignAngleByDiameter.h>
#include <krlayout/layout/KrRoutingAssignAngleByLength.h>
#include <krlayout/layout/KrRoutingLayout.h>
#include <krlayout/layout/KrRoutingPriorityByDiameter.h>
#include <krlayout/layout/KrRoutingPriorityByLength.h>
#include <krlayout/layout/e_LayOutType.h>

#include <krlayout/check/KrRoutingCheck.h>

#include <krlayout/host/IHostApplication.h>
#include <krlayout/host/IHostCallout.h>
#include <krlayout/host/IHostCurve.h>
#include <krlayout/host/IHostDocument.h>
#include <krlayout/host/IHostFeature.h>
#include <krlayout/host/IHostPoint.h>
#include <krlayout/host/IHostRouteContainer.h>
#include <krlayout/host/IHostRouteData.h>
#include <krlayout/host/IHostRouteItem.h>
#include <krlayout/host/IHostRouteModel.h>
#include <krlayout/host/IHostSelectable.h>
#include <krlayout/host/IHostSelectionManager.h>
#include <krlayout/host/IHostSketch.h>
#include <krlayout/host/IHostSketchArc.h>
#include <krlayout/host/IHostSketchEntity.h>
#include <krlayout/host/IHostSketchLine.h>
#include <krlayout/host/IHostUnknown.h>
#include <krlayout/host/KrHostInterfaceId.h>
#include <krlayout/host/KrHostLocale.h>
#include <krlayout/host/KrHostRef.h>
#include <krlayout/host/KrHostRouteReader.h>
#include <krlayout/host/KrHostRouteWriter.h>
#include <krlayout/host/KrHostSession.h>

#include <krlayout/api/KrAutoLayout.h>
#include <krlayout/api/KrComponentText.h>
#include <krlayout/api/KrFormboardLayoutRun.h>
#include <krlayout/api/KrLayoutInput.h>
#include <krlayout/api/KrLayoutQuality.h>
#include <krlayout/api/KrLayoutResult.h>
#include <krlayout/api/KrLayoutRun.h>
#include <krlayout/api/KrLayoutTypeRegistry.h>
#include <krlayout/api/KrPlainLayoutRun.h>
#include <krlayout/api/KrUtf8Codec.h>
