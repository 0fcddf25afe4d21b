#include "ExampleLocator.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#ifndef KRLAYOUT_TOOL_SOURCE_EXAMPLES
#define KRLAYOUT_TOOL_SOURCE_EXAMPLES ""
#endif

namespace krtool {

namespace fs = std::filesystem;

std::string ExampleLocator::folder()
{
    std::error_code ec;
    std::vector<fs::path> candidates;
    fs::path const exe = fs::read_symlink("/proc/self/exe", ec);
    if (!ec && !exe.empty())
        candidates.push_back(exe.parent_path().parent_path() / "share" / "krlayout" / "examples");
    candidates.emplace_back(KRLAYOUT_TOOL_SOURCE_EXAMPLES);
    for (fs::path const& c : candidates) {
        if (c.empty())
            continue;
        std::error_code e2;
        if (fs::is_directory(c, e2) && fs::exists(c / (std::string(kDefaultExample) + ".json"), e2))
            return c.lexically_normal().string();
    }
    return std::string();
}

std::string ExampleLocator::find(std::string const& name)
{
    std::string const dir = folder();
    if (dir.empty() || name.empty() || name.find('/') != std::string::npos)
        return std::string();
    std::string file = name;
    if (file.size() < 5 || file.compare(file.size() - 5, 5, ".json") != 0)
        file += ".json";
    std::error_code ec;
    fs::path const p = fs::path(dir) / file;
    return fs::is_regular_file(p, ec) ? p.string() : std::string();
}

std::vector<std::string> ExampleLocator::names()
{
    std::vector<std::string> out;
    std::string const dir = folder();
    if (dir.empty())
        return out;
    std::error_code ec;
    for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
        if (it->path().extension() == ".json")
            out.push_back(it->path().stem().string());
    }
    std::sort(out.begin(), out.end());
    return out;
}

}  // namespace krtool
