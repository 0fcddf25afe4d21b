#include <krlayout/sketch/IRoutingSketch.h>

IRoutingSketch::~IRoutingSketch() = default;
