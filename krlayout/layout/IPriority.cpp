#include <krlayout/layout/IPriority.h>

IPriority::~IPriority() = default;
