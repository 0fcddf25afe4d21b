#include "LayoutType.h"

#include <algorithm>
#include <cctype>

namespace krtool {

bool LayoutType::parse(std::string const& text, int& type)
{
    std::string t = text;
    std::transform(t.begin(), t.end(), t.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (t == "diameter" || t == "0")
        type = kByDiameter;
    else if (t == "length" || t == "1")
        type = kByLength;
    else if (t == "formboard" || t == "2")
        type = kBoard;
    else
        return false;
    return true;
}

char const* LayoutType::name(int type)
{
    return type == kBoard ? "formboard" : type == kByLength ? "length" : "diameter";
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
