#include <krlayout/api/KrLayoutResult.h>

std::size_t KrLayoutResult::LineCount() const
{
    std::size_t n = 0;
    for (Segment const& s : segments) {
        n += s.lines.size();
    }
    return n;
}
