// Umbrella header: every exported class of the krlayout library.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/krlayout_version.h>

#include <krlayout/model/ALPoint.h>
#include <krlayout/model/ALLine.h>
#include <krlayout/model/KrGeoUtility.h>
#include <krlayout/model/e_AngleArea.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>

#include <krlayout/grid/KrRoutingGrid.h>
#include <krlayout/grid/KrRoutingGridNode.h>
