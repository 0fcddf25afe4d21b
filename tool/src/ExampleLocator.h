// Finds the bundled example documents: installed next to the executable
// (<prefix>/share/krlayout/examples), else in the source tree the tool was built from.
#pragma once

#include <string>
#include <vector>

namespace krtool {

class ExampleLocator {
public:
    // The example laid out when no document is given.
    static constexpr char const* kDefaultExample = "engine-bay";

    // The folder holding the examples; empty when none is found.
    static std::string folder();
    // Path of the example NAME (with or without ".json"); empty when there is no such example.
    static std::string find(std::string const& name);
    // Example names (file names without ".json"), sorted.
    static std::vector<std::string> names();
};

}  // namespace krtool
