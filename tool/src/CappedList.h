// A list of findings that can run into the millions on a large, tangled drawing (crossings,
// overlaps, close pairs): every entry added is counted, but only the first few are kept, so
// that neither the report nor the documents written from it grow with the number of pairs.
#pragma once

#include <cstddef>
#include <vector>

namespace krtool {

template <class T>
class CappedList {
public:
    explicit CappedList(size_t cap) : cap_(cap) {}

    void add(T const& entry)
    {
        ++count_;
        if (kept_.size() < cap_)
            kept_.push_back(entry);
    }

    // Every entry added, kept or not.
    size_t count() const { return count_; }
    // The first entries added, at most cap() of them.
    std::vector<T> const& kept() const { return kept_; }
    size_t cap() const { return cap_; }
    // True when entries were added past the cap and not kept.
    bool truncated() const { return count_ > kept_.size(); }

private:
    size_t cap_;
    size_t count_ = 0;
    std::vector<T> kept_;
};

}  // namespace krtool
