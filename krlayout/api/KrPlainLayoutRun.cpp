#include <krlayout/api/KrPlainLayoutRun.h>

#include <krlayout/api/KrAutoLayout.h>
#include <krlayout/api/KrComponentText.h>
#include <krlayout/api/KrLayoutInput.h>
#include <krlayout/api/KrLayoutResult.h>
#include <krlayout/api/KrLayoutTypeRegistry.h>
#include <krlayout/check/KrRoutingCheck.h>
#include <krlayout/host/KrHostRouteWriter.h>
#include <krlayout/sketch/KrSketch.h>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

namespace {

// The input's segments by ascending id (the order the host run creates them in).
std::vector<KrLayoutInput::Segment const*> ById(KrLayoutInput const& input)
{
    std::vector<KrLayoutInput::Segment const*> out;
    out.reserve(input.segments.size());
    for (KrLayoutInput::Segment const& s : input.segments) {
        out.push_back(&s);
    }
    std::stable_sort(out.begin(), out.end(),
                     [](KrLayoutInput::Segment const* a, KrLayoutInput::Segment const* b) {
                         return a->id < b->id;
                     });
    return out;
}

}  // namespace

KrPlainLayoutRun::KrPlainLayoutRun() : sketch(nullptr) {}

KrPlainLayoutRun::~KrPlainLayoutRun()
{
    delete sketch;
}

IRoutingSketch* KrPlainLayoutRun::GetSketch() const
{
    return sketch;
}

int KrPlainLayoutRun::Run(KrLayoutInput const& input, KrLayoutResult& result)
{
    result = KrLayoutResult();
    std::string const problem = input.Problem();
    if (!problem.empty()) {
        result.status = InvalidInputStatus;
        result.message.assign(problem.begin(), problem.end());
        return result.status;
    }
    delete sketch;
    sketch = new KrSketch();
    // Creating the grid cannot fail for spacings the input check lets through.
    sketch->CreateGrid(input.gridSpacingX, input.gridSpacingY);

    std::map<int, std::wstring> components;
    for (auto const& [id, text] : input.componentMap) {
        components.emplace(static_cast<int>(id), text);
    }
    ApplyComponentMap(sketch, components);
    if (input.segments.empty()) {
        result.status = 1;
        return result.status;
    }
    result.status = BuildCheckAndLayOut(sketch, input, result);
    if (result.status == 0) {
        ReadResult(sketch, input, result);
    }
    return result.status;
}

void KrPlainLayoutRun::ApplyComponentMap(IRoutingSketch* target,
                                         std::map<int, std::wstring> const& map)
{
    if (target == nullptr) {
        return;
    }
    for (auto const& [id, text] : map) {
        std::vector<std::pair<std::wstring, std::wstring>> connectors;
        KrComponentText::Parse(text, connectors);
        for (auto const& [connector, pins] : connectors) {
            target->InsertConnector(id, connector, pins);
        }
    }
}

int KrPlainLayoutRun::BuildCheckAndLayOut(IRoutingSketch* target, KrLayoutInput const& input,
                                          KrLayoutResult& result)
{
    std::vector<KrLayoutInput::Segment const*> const segments = ById(input);
    for (KrLayoutInput::Segment const* s : segments) {
        // A host's summed length is taken as read, whatever its value.
        double const length = input.hostWayPoints ? s->length : KrLayoutInput::LengthOf(*s);
        target->CreateRouteSegment(static_cast<int>(s->id), length, s->diameter);
    }
    if (input.hostWayPoints) {
        target->CreateWayPoint(input.hostLineCounts, input.hostLineEnds);
    } else {
        std::map<long, long> counts;
        std::vector<ALPoint> ends;
        for (KrLayoutInput::Segment const* s : segments) {
            counts.emplace(s->id, static_cast<long>(s->lines.size()));
            for (ALLine const& line : s->lines) {
                ends.push_back(line.start);
                ends.push_back(line.end);
            }
        }
        target->CreateWayPoint(counts, ends);
    }

    target->UniqueMultiPinSegment();

    KrRoutingCheck check;
    check.EliminateMultiLineBetweenTwoPoint(target);
    int status = CheckBends(check, target);
    if (status != 0) {
        return status;
    }
    // The loop check, then the disjoint check: the first that fails names its segments.
    struct NamedCheck {
        int (KrRoutingCheck::*run)(IRoutingSketch*, std::vector<long>&);
        std::wstring const& message;
    };
    NamedCheck const checks[] = {{&KrRoutingCheck::CheckSketch, KrAutoLayout::loopMessage},
                                 {&KrRoutingCheck::CheckDisjoint, KrAutoLayout::disjoinMessage}};
    for (NamedCheck const& named : checks) {
        std::vector<long> ids;
        status = (check.*named.run)(target, ids);
        if (status != 0) {
            result.failedIds = ids;
            result.message = named.message;
            return status;
        }
    }
    LayOut(target, input, result);
    return 0;
}

void KrPlainLayoutRun::ReadResult(IRoutingSketch* target, KrLayoutInput const& input,
                                  KrLayoutResult& result)
{
    std::map<long, KrLayoutInput::Segment const*> byId;
    for (KrLayoutInput::Segment const& s : input.segments) {
        byId.emplace(s.id, &s);
    }
    std::vector<long> ids;
    target->GetAllRouteSegment(ids);
    std::set<long> present;
    for (long id : ids) {
        KrLayoutResult::Segment out;
        out.id = id;
        auto const in = byId.find(id);
        if (in != byId.end()) {
            out.length = KrLayoutInput::LengthOf(*in->second);
            out.diameter = in->second->diameter;
        }
        target->GetLinesByRouteId(id, out.lines);
        for (ALLine const& line : out.lines) {
            out.axes.push_back(KrHostRouteWriter::AxisCode(line));
        }
        auto const text = input.componentMap.find(id);
        if (text != input.componentMap.end()) {
            std::vector<std::pair<std::wstring, std::wstring>> named;
            KrComponentText::Parse(text->second, named);
            for (auto const& [connector, pins] : named) {
                out.connectors.push_back({connector, pins});
            }
        }
        present.insert(id);
        result.segments.push_back(std::move(out));
    }
    for (auto const& [id, segment] : byId) {
        if (present.count(id) == 0) {
            result.droppedIds.push_back(id);
        }
    }
}

int KrPlainLayoutRun::CheckBends(KrRoutingCheck& check, IRoutingSketch* target)
{
    return check.CheckBends(target);
}

int KrPlainLayoutRun::LayOut(IRoutingSketch* target, KrLayoutInput const& input,
                             KrLayoutResult& result)
{
    return KrLayoutTypeRegistry::LayOut(target, input.layoutType, input.clearance, result);
}
