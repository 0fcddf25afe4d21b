#include "LayoutType.h"

#include <krlayout/api/KrLayoutTypeRegistry.h>

namespace krtool {

bool LayoutType::parse(std::string const& text, int& type)
{
    return KrLayoutTypeRegistry::Find(text, type);
}

std::string LayoutType::name(int type)
{
    return KrLayoutTypeRegistry::Name(type);
}

char const* LayoutType::phrase(int type)
{
    return type == kBoard      ? "as a board drawing at true lengths"
           : type == kByLength ? "by length"
                               : "by diameter";
}

char const* LayoutType::title(int type)
{
    return type == kBoard      ? "Board layout (true lengths)"
           : type == kByLength ? "Layout by length"
                               : "Layout by diameter";
}

}  // namespace krtool
