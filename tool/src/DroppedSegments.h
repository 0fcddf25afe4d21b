// Segments of the document that a layout result does not hold: which ones, why, and how to say
// so. The library only tells which segment ids its result holds; the reason is worked out here
// from the document.
#pragma once

#include "LayoutResult.h"

#include <map>
#include <string>
#include <vector>

namespace krtool {

class DroppedSegments {
public:
    // The reason for each missing segment, in the order given. A missing segment that runs
    // between the same two points as a kept segment, both named by one connector of the
    // component map with two or more entries, was taken by the multi-pin clean-up (the only
    // step that removes segments with a twin between the same ends); any other was deleted by
    // the layout's final check.
    static std::vector<DroppedSegment> classify(std::vector<ResultSegment> const& missing,
                                                std::vector<ResultSegment> const& kept,
                                                std::map<long, std::string> const& componentMap);

    // Whether any segment is missing for a reason other than the deliberate multi-pin clean-up.
    static bool anyLost(LayoutResult const& result);
    static size_t count(LayoutResult const& result, DroppedSegment::Reason reason);

    // "final_check" or "multi_pin_clean_up".
    static std::string reasonCode(DroppedSegment::Reason reason);
    // What happened, in a few words, for messages about a group of segments.
    static std::string reasonText(DroppedSegment::Reason reason);
    // The whole story of one segment, for the result document.
    static std::string describe(DroppedSegment const& d);
    // "19, 23 (kept: 24)": the ids of one reason, at most `limit` of them (0: all), then "...".
    static std::string idList(LayoutResult const& result, DroppedSegment::Reason reason,
                              size_t limit = 0);
};

}  // namespace krtool
