// A layout run on plain data, without a host: builds the routing sketch from a KrLayoutInput
// (segments, then way points and lines, then the multi-pin clean-up), runs the checks, lays the
// sketch out with the input's layout type and reads the result off the sketch. The host run
// (KrLayoutRun) is a host reader, then the stages of this run, then a host writer.
#pragma once

#include <krlayout/krlayout_export.h>

#include <map>
#include <string>

class IRoutingSketch;
class KrLayoutInput;
class KrLayoutResult;
class KrRoutingCheck;

class KRLAYOUT_EXPORT KrPlainLayoutRun {
public:
    // Status of an input that is not valid (KrLayoutInput::Problem says why).
    static constexpr int InvalidInputStatus = 9;

    KrPlainLayoutRun();
    virtual ~KrPlainLayoutRun();
    KrPlainLayoutRun(KrPlainLayoutRun const&) = delete;
    KrPlainLayoutRun& operator=(KrPlainLayoutRun const&) = delete;

    // The whole run, into a result that is emptied first: 9 for an input that is not valid,
    // 1 for one without segments, a check's code when a check fails (with the ids it names),
    // else 0 with the laid-out segments. A new sketch is made for every run; the latest stays
    // readable through GetSketch until the next run or the run object's end.
    int Run(KrLayoutInput const& input, KrLayoutResult& result);
    IRoutingSketch* GetSketch() const;

    // The stages, for a caller that owns its sketch (the host run).
    // Records the connectors the texts name in the sketch, in ascending id order.
    static void ApplyComponentMap(IRoutingSketch* sketch, std::map<int, std::wstring> const& map);
    // Creates the segments (ascending id) and the way points and lines, runs the multi-pin
    // clean-up, the checks and the layout. 0, or the first failing check's code with the ids it
    // names and its message in `result`; the layout's own status is not the run's.
    int BuildCheckAndLayOut(IRoutingSketch* sketch, KrLayoutInput const& input,
                            KrLayoutResult& result);
    // The laid-out segments (in the sketch's order, with the input's length and diameter), the
    // connectors their texts name and the ids of the input the sketch no longer holds.
    static void ReadResult(IRoutingSketch* sketch, KrLayoutInput const& input,
                           KrLayoutResult& result);

protected:
    // The bend check of the check stage (the check object's CheckBends).
    virtual int CheckBends(KrRoutingCheck& check, IRoutingSketch* sketch);
    // The layout stage: the registry's layout of the input's type and clearance.
    virtual int LayOut(IRoutingSketch* sketch, KrLayoutInput const& input, KrLayoutResult& result);

private:
    IRoutingSketch* sketch;
};
