// A plain copyable node record. The grid itself stores way points; no layout operation reads this.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/model/ALPoint.h>

class KRLAYOUT_EXPORT KrRoutingGridNode {
public:
    KrRoutingGridNode();
    ~KrRoutingGridNode();
    KrRoutingGridNode(KrRoutingGridNode const& other);
    KrRoutingGridNode& operator=(KrRoutingGridNode const& other);

    double x;
    double y;
    double z;
    bool used;
    ALPoint position;
    ALPoint direction;
    double weight;
};
