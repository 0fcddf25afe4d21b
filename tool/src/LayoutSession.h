// One run of the library on a route document: loads the document into the in-process host, runs
// the layout on it (the grid layouts through the KrAutoLayout facade, the board layout through a
// KrFormboardLayoutRun driven the way the facade drives its run) and gathers what came back (from
// the facade or the run, and from the host's record) into a LayoutResult.
#pragma once

#include "Geometry2D.h"
#include "LayoutResult.h"
#include "ToolOptions.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

class JsonHostDocument;

namespace krtool {

class LayoutSession {
public:
    // Loads the document; throws JsonHostError saying what is wrong and where.
    explicit LayoutSession(std::string const& path);
    // The same from a document held as text; `source` names it in messages. Throws
    // JsonHostError as the constructor does.
    static std::unique_ptr<LayoutSession> fromText(std::string const& text,
                                                   std::string const& source);
    ~LayoutSession();
    LayoutSession(LayoutSession const&) = delete;
    LayoutSession& operator=(LayoutSession const&) = delete;

    // What bounds the size of a run is memory: the layout puts a lattice node at every grid step
    // along every placed segment, each a heap object of roughly 100-200 bytes together with its
    // share of the indexes that find it. A run may need at most kMaxLatticeNodes of them: the
    // nodes that fit into a budget of kLatticeMemoryBudget bytes (2 GiB) at an estimated
    // kBytesPerLatticeNode (160) bytes each, 13,421,772 nodes. A 100,000-segment harness of
    // 0.01-1.5 m segments on the default 0.02 m grid needs at most 7.6 million.
    static constexpr long long kLatticeMemoryBudget = 2LL * 1024 * 1024 * 1024;
    static constexpr long long kBytesPerLatticeNode = 160;
    static constexpr long long kMaxLatticeNodes = kLatticeMemoryBudget / kBytesPerLatticeNode;

    // Lattice nodes a run on this grid would create: the sum over the segments of
    // (length / finer spacing + 1). May be infinite or NaN for absurd documents or grids.
    double latticeNodeEstimate(ToolOptions const& options) const;
    // Why the document cannot be laid out on this grid within the memory budget; empty when it
    // can, and always for the board layout, which creates no lattice nodes.
    std::string sizeProblem(ToolOptions const& options) const;

    // A grid spacing must not exceed the whole extent of the route: the longer side of the
    // bounding box of the input sketch (the ends of its entities). The layout lays every
    // segment out in whole grid steps, so on a coarser grid one step reaches past the whole
    // route, the laid-out coordinates grow with the spacing until they lose their precision, and
    // the layout's final check deletes segments (one in 42 of the engine-bay harness on a grid
    // of 1e300, 33 with --grid-x 1e308 --grid-y 1e-3). A spacing equal to the extent still runs;
    // the bundled examples span 0.78 m and more against their default grid of 0.02 m.
    // Why the grid cannot hold the document; empty when it can, or when the sketch has no
    // extent to measure against (a single point or no entities). The board layout does not lay
    // its segments out in grid steps: empty for it too.
    std::string gridProblem(ToolOptions const& options) const;

    // The document's "units" ("m" when it gives none) and whether it gives them.
    std::string documentUnits() const;
    bool documentGivesUnits() const;
    // The true length of every segment of the document (the sum of its entities), in order.
    std::vector<double> segmentLengths() const;
    // The component map as UTF-8 texts by id.
    std::map<long, std::string> componentTexts() const;

    // Whether the document has a feature of that name (compared exactly).
    bool hasFeature(std::string const& name) const;

    // Lays the document out with the options' layout type, grid, mode and drawing options.
    LayoutResult run(ToolOptions const& options, std::string const& units, double metresPerUnit);

    // Host status codes of a run and what they mean.
    static std::string statusText(long status);

private:
    LayoutSession(std::string source, std::unique_ptr<JsonHostDocument> document);

    // What a finished run hands back besides its status: the segment ids in the library's order,
    // each segment's line and point ids, and the output arrays.
    struct RunOutput;

    Extent inputExtent() const;
    void readInput(LayoutResult& result) const;
    // The grid layouts through the facade; the run's status.
    long runFacade(ToolOptions const& options, RunOutput& output);
    // Arrays mode: the document's segments through the plain-data run, without the host; the
    // run's status. Sets the board layout's clearance and crowded points as runBoard does, and
    // the failed check's ids and message.
    long runPlain(ToolOptions const& options, RunOutput& output, LayoutResult& result);
    // The board layout through its own run; the run's status. Sets the result's clearance and
    // crowded points once the layout has run.
    long runBoard(ToolOptions const& options, RunOutput& output, LayoutResult& result);
    // Builds the result's segments, missing segments, relations and fillets from a successful
    // run's output and the host's record.
    void readLayout(ToolOptions const& options, RunOutput& output, LayoutResult& result) const;

    std::string path_;
    std::unique_ptr<JsonHostDocument> document_;
};

}  // namespace krtool
