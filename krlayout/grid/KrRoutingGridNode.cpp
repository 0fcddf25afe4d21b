// A plain node record: zero-initialised, copied field by field.
#include <krlayout/grid/KrRoutingGridNode.h>

KrRoutingGridNode::KrRoutingGridNode()
    : x(0.0), y(0.0), z(0.0), used(false), position(), direction(), weight(0.0) {}

KrRoutingGridNode::~KrRoutingGridNode() = default;

KrRoutingGridNode::KrRoutingGridNode(KrRoutingGridNode const& other)
    : x(other.x),
      y(other.y),
      z(other.z),
      used(other.used),
      position(other.position),
      direction(other.direction),
      weight(other.weight) {}

KrRoutingGridNode& KrRoutingGridNode::operator=(KrRoutingGridNode const& other) {
    x = other.x;
    y = other.y;
    z = other.z;
    used = other.used;
    position = other.position;
    direction = other.direction;
    weight = other.weight;
    return *this;
}
