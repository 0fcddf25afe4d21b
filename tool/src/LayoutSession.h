// One run of the library on a route document: loads the document into the in-process host, runs
// KrAutoLayout on it and gathers what came back (from the facade and from the host's record)
// into a LayoutResult.
#pragma once

#include "LayoutResult.h"
#include "ToolOptions.h"

#include <map>
#include <memory>
#include <string>

class JsonHostDocument;

namespace krtool {

class LayoutSession {
public:
    // Loads the document; throws JsonHostError saying what is wrong and where.
    explicit LayoutSession(std::string const& path);
    ~LayoutSession();
    LayoutSession(LayoutSession const&) = delete;
    LayoutSession& operator=(LayoutSession const&) = delete;

    // Most grid steps a run may walk (total segment length over the finer spacing): the layout's
    // time grows with the square of it.
    static constexpr double kMaxGridSteps = 100000.0;
    // Why the document cannot be laid out on this grid in reasonable time; empty when it can.
    std::string sizeProblem(ToolOptions const& options) const;

    // Whether the document has a feature of that name (compared exactly).
    bool hasFeature(std::string const& name) const;

    // Lays the document out with the options' layout type, grid, mode and drawing options.
    LayoutResult run(ToolOptions const& options, std::string const& units, double metresPerUnit);

    // Host status codes of a run and what they mean.
    static std::string statusText(long status);

private:
    void readInput(LayoutResult& result) const;
    std::map<long, std::string> componentTexts() const;

    std::string path_;
    std::unique_ptr<JsonHostDocument> document_;
};

}  // namespace krtool
