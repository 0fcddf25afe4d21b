#include <krlayout/model/KrLineChain.h>

#include <krlayout/model/KrPointIndex.h>

#include <cstddef>

int KrLineChain::FindEnds(std::vector<ALLine> const& lines, std::vector<ALPoint>& ends)
{
    if (lines.empty()) {
        return 1;
    }
    // The distinct points in the order they first appear, and how many line ends reach each.
    KrPointIndex index;
    std::vector<std::size_t> uses;
    for (ALLine const& l : lines) {
        for (ALPoint const* p : {&l.start, &l.end}) {
            std::size_t const n = index.NumberOf(*p);
            if (n == uses.size()) {
                uses.push_back(0);
            }
            ++uses[n];
        }
    }
    std::size_t const before = ends.size();
    for (std::size_t n = 0; n < uses.size(); ++n) {
        if (uses[n] % 2 == 1) {
            ends.push_back(index.PointOf(n));
        }
    }
    if (ends.size() == before) {
        ends.push_back(lines.front().start);
        ends.push_back(lines.back().end);
    }
    return 0;
}
