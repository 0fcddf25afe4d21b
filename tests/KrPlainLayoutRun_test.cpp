// The plain-data layout run: a route given as plain segments lays out exactly as the same route
// read from a host, for every layout type; bad input, an empty route and failing checks come back
// as statuses with the ids the check names; segments the clean-up removes are listed as dropped.
#include <krlayout/api/KrAutoLayout.h>
#include <krlayout/api/KrFormboardLayoutRun.h>
#include <krlayout/api/KrLayoutInput.h>
#include <krlayout/api/KrLayoutResult.h>
#include <krlayout/api/KrLayoutTypeRegistry.h>
#include <krlayout/api/KrPlainLayoutRun.h>
#include <krlayout/host/IHostApplication.h>
#include <krlayout/sketch/IRoutingSketch.h>

#include <JsonHostDocument.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

std::string ToolExample(std::string const& name)
{
    return std::string(KRLAYOUT_TEST_DATA_DIR) + "/../../tool/examples/" + name;
}

ALLine Line(double x1, double y1, double x2, double y2)
{
    ALLine l;
    l.start = ALPoint(x1, y1, 0.0);
    l.end = ALPoint(x2, y2, 0.0);
    return l;
}

KrLayoutInput::Segment Seg(long id, double diameter, std::vector<ALLine> lines)
{
    KrLayoutInput::Segment s;
    s.id = id;
    s.diameter = diameter;
    s.lines = std::move(lines);
    return s;
}

// A Y: a trunk 0 from (0,0) to (1,0), branches 1 and 2 from (1,0).
KrLayoutInput Y()
{
    KrLayoutInput in;
    in.segments.push_back(Seg(0, 10.0, {Line(0, 0, 1, 0)}));
    in.segments.push_back(Seg(1, 5.0, {Line(1, 0, 1.5, 0.5)}));
    in.segments.push_back(Seg(2, 4.0, {Line(1, 0, 1.5, -0.5), Line(1.5, -0.5, 2.0, -0.5)}));
    return in;
}

// The output arrays of a host run of the document (the facade for types 0 and 1, the board run
// for type 2) as six doubles and one axis code per line.
struct Arrays {
    long status = -1;
    std::vector<double> points;
    std::vector<int> axes;
    std::vector<long> ids;
};

Arrays HostArrays(std::string const& path, int type)
{
    Arrays out;
    auto doc = JsonHostDocument::LoadFile(path);
    IHostApplication* host = doc->application();
    host->AddRef();
    if (type == KrLayoutTypeRegistry::FormboardType) {
        KrFormboardLayoutRun run;
        IHostApplication* libraryHost = host;
        run.AttachHost(libraryHost);
        host->Release();
        std::map<long, std::wstring> map = doc->componentMap();
        run.SetComponentMap(map);
        run.SetApplyToHost(false);
        out.status = run.Run(0.02, 0.02, type, true, true, nullptr);
        out.points = run.GetOutputPoints();
        out.axes = run.GetOutputConstraints();
        run.GetSketch()->GetAllRouteSegment(out.ids);
        return out;
    }
    KrAutoLayout layout;
    layout.setComponentMap(doc->componentMap());
    std::wstring text;
    out.status = layout.StartAutoLayout(host, type, true, true, nullptr, false, text);
    layout.getOutputPoints(out.points);
    std::vector<int> axes;
    layout.getOutputConstraints(out.axes);
    layout.getRouteSegmentIDs(out.ids);
    return out;
}

void ExpectSameAsHost(std::string const& example, int type)
{
    SCOPED_TRACE(example + " type " + std::to_string(type));
    Arrays const host = HostArrays(ToolExample(example), type);
    ASSERT_EQ(host.status, 0);

    KrLayoutInput input = JsonHostDocument::LoadFile(ToolExample(example))->layoutInput();
    input.layoutType = type;
    KrPlainLayoutRun run;
    KrLayoutResult result;
    ASSERT_EQ(run.Run(input, result), 0);
    ASSERT_EQ(result.LineCount() * 6, host.points.size());
    std::vector<long> ids;
    std::size_t k = 0;
    for (KrLayoutResult::Segment const& s : result.segments) {
        ids.push_back(s.id);
        ASSERT_EQ(s.lines.size(), s.axes.size());
        for (std::size_t i = 0; i < s.lines.size(); ++i, ++k) {
            ALLine const& l = s.lines[i];
            // Bit for bit: the same sketch, built from the same numbers.
            EXPECT_EQ(l.start.x, host.points[6 * k + 0]);
            EXPECT_EQ(l.start.y, host.points[6 * k + 1]);
            EXPECT_EQ(l.start.z, host.points[6 * k + 2]);
            EXPECT_EQ(l.end.x, host.points[6 * k + 3]);
            EXPECT_EQ(l.end.y, host.points[6 * k + 4]);
            EXPECT_EQ(l.end.z, host.points[6 * k + 5]);
            EXPECT_EQ(s.axes[i], host.axes[k]);
        }
    }
    EXPECT_EQ(ids, host.ids);
}

}  // namespace

TEST(KrPlainLayoutRun, EveryExampleLaysOutAsTheHostRunForEveryType)
{
    for (char const* example : {"engine-bay.json", "dashboard.json", "machine-cabinet.json"}) {
        for (int type : {0, 1, 2}) {
            ExpectSameAsHost(example, type);
        }
    }
}

TEST(KrPlainLayoutRun, ALaidOutYKeepsItsSegmentsLengthsAndDiameters)
{
    KrPlainLayoutRun run;
    KrLayoutResult result;
    KrLayoutInput in = Y();
    in.layoutType = KrLayoutTypeRegistry::FormboardType;
    ASSERT_EQ(run.Run(in, result), 0);
    ASSERT_EQ(result.segments.size(), 3u);
    EXPECT_TRUE(result.droppedIds.empty());
    for (KrLayoutResult::Segment const& s : result.segments) {
        double drawn = 0.0;
        for (ALLine const& l : s.lines) {
            drawn += std::hypot(l.end.x - l.start.x, l.end.y - l.start.y);
        }
        // Lengths are the sums of the input lines: 1, sqrt(0.5), sqrt(0.5) + 0.5.
        double const expected = s.id == 0 ? 1.0 : s.id == 1 ? std::sqrt(0.5) : std::sqrt(0.5) + 0.5;
        EXPECT_NEAR(s.length, expected, 1e-15) << s.id;
        EXPECT_NEAR(drawn, expected, 1e-12) << s.id;
        EXPECT_EQ(s.diameter, s.id == 0 ? 10.0 : s.id == 1 ? 5.0 : 4.0);
    }
    // The root (the thickest) runs from the origin toward -x: axis code 1.
    ASSERT_EQ(result.segments[0].id, 0);
    EXPECT_EQ(result.segments[0].axes, std::vector<int>{1});
    EXPECT_EQ(result.placedSegments, 3);
    EXPECT_EQ(result.crowdedPoints, 0);
}

TEST(KrPlainLayoutRun, TheOrderOfTheInputSegmentsDoesNotChangeTheResult)
{
    KrLayoutInput forward = Y();
    KrLayoutInput backward = Y();
    std::reverse(backward.segments.begin(), backward.segments.end());
    for (int type : {0, 1, 2}) {
        forward.layoutType = backward.layoutType = type;
        KrPlainLayoutRun a;
        KrPlainLayoutRun b;
        KrLayoutResult ra;
        KrLayoutResult rb;
        ASSERT_EQ(a.Run(forward, ra), 0);
        ASSERT_EQ(b.Run(backward, rb), 0);
        ASSERT_EQ(ra.segments.size(), rb.segments.size());
        for (std::size_t i = 0; i < ra.segments.size(); ++i) {
            EXPECT_EQ(ra.segments[i].id, rb.segments[i].id);
            ASSERT_EQ(ra.segments[i].lines.size(), rb.segments[i].lines.size());
            for (std::size_t j = 0; j < ra.segments[i].lines.size(); ++j) {
                EXPECT_TRUE(ra.segments[i].lines[j].start == rb.segments[i].lines[j].start);
                EXPECT_TRUE(ra.segments[i].lines[j].end == rb.segments[i].lines[j].end);
            }
        }
    }
}

TEST(KrPlainLayoutRun, ANegativeLengthStandsForTheSumOfTheLinesAndAGivenOneIsKept)
{
    KrLayoutInput::Segment s = Seg(1, 1.0, {Line(0, 0, 3, 4), Line(3, 4, 3, 5)});
    EXPECT_EQ(KrLayoutInput::LengthOf(s), 6.0);
    s.length = 2.5;
    EXPECT_EQ(KrLayoutInput::LengthOf(s), 2.5);
    s.length = 0.0;
    EXPECT_EQ(KrLayoutInput::LengthOf(s), 0.0);
}

TEST(KrPlainLayoutRun, AnEmptyRouteEndsWithStatusOne)
{
    KrPlainLayoutRun run;
    KrLayoutResult result;
    EXPECT_EQ(run.Run(KrLayoutInput(), result), 1);
    EXPECT_TRUE(result.segments.empty());
}

TEST(KrPlainLayoutRun, BadInputEndsWithStatusNineAndSaysWhy)
{
    struct Case {
        char const* what;
        KrLayoutInput input;
        char const* words;
    };
    std::vector<Case> cases;
    {
        KrLayoutInput in = Y();
        in.segments[2].id = 1;
        cases.push_back({"duplicate id", in, "segment id 1 is given twice"});
    }
    {
        KrLayoutInput in = Y();
        in.segments[1].lines[0].end.x = std::numeric_limits<double>::quiet_NaN();
        cases.push_back({"NaN coordinate", in, "segment 1: every coordinate must be a finite number"});
    }
    {
        KrLayoutInput in = Y();
        in.segments[0].diameter = -1.0;
        cases.push_back({"negative diameter", in, "segment 0: the diameter must be a number of 0 or more"});
    }
    {
        KrLayoutInput in = Y();
        in.segments[0].length = std::numeric_limits<double>::infinity();
        cases.push_back({"infinite length", in, "segment 0: the length must be a number"});
    }
    {
        KrLayoutInput in = Y();
        in.gridSpacingX = 0.0;
        cases.push_back({"zero grid", in, "the grid spacing must be a number above 0"});
    }
    {
        KrLayoutInput in = Y();
        in.layoutType = 3;
        cases.push_back({"unknown type", in, "layout type 3 is not a layout type (diameter, length or formboard)"});
    }
    {
        KrLayoutInput in = Y();
        in.segments[0].id = 1L << 40;
        cases.push_back({"id beyond int", in, "is outside the range of ids"});
    }
    {
        KrLayoutInput in = Y();
        in.clearance = std::numeric_limits<double>::quiet_NaN();
        cases.push_back({"NaN clearance", in, "the clearance must be a number"});
    }
    for (Case const& c : cases) {
        SCOPED_TRACE(c.what);
        KrPlainLayoutRun run;
        KrLayoutResult result;
        EXPECT_EQ(run.Run(c.input, result), KrPlainLayoutRun::InvalidInputStatus);
        std::string const message(result.message.begin(), result.message.end());
        EXPECT_NE(message.find(c.words), std::string::npos) << message;
        EXPECT_EQ(run.GetSketch(), nullptr);
    }
}

TEST(KrPlainLayoutRun, ALoopReturnsTheLoopCheckCodeAndItsSegments)
{
    KrLayoutInput in;
    in.segments.push_back(Seg(1, 1.0, {Line(0, 0, 1, 0)}));
    in.segments.push_back(Seg(2, 1.0, {Line(1, 0, 1, 1)}));
    in.segments.push_back(Seg(3, 1.0, {Line(1, 1, 0, 0)}));
    KrPlainLayoutRun run;
    KrLayoutResult result;
    int const status = run.Run(in, result);
    EXPECT_NE(status, 0);
    EXPECT_EQ(result.message, KrAutoLayout::loopMessage);
    std::vector<long> ids = result.failedIds;
    std::sort(ids.begin(), ids.end());
    EXPECT_EQ(ids, (std::vector<long>{1, 2, 3}));
    EXPECT_TRUE(result.segments.empty());
}

TEST(KrPlainLayoutRun, TwoPiecesReturnTheDisjointCheckCodeAndNameThem)
{
    KrLayoutInput in;
    in.segments.push_back(Seg(1, 1.0, {Line(0, 0, 1, 0)}));
    in.segments.push_back(Seg(2, 1.0, {Line(5, 5, 6, 5)}));
    KrPlainLayoutRun run;
    KrLayoutResult result;
    EXPECT_NE(run.Run(in, result), 0);
    EXPECT_EQ(result.message, KrAutoLayout::disjoinMessage);
    EXPECT_FALSE(result.failedIds.empty());
}

TEST(KrPlainLayoutRun, TheSameRouteFromTheHostAndFromPlainDataFailsAlike)
{
    for (char const* example : {"door-loop.json", "rear-disjoint.json"}) {
        SCOPED_TRACE(example);
        KrLayoutInput input = JsonHostDocument::LoadFile(ToolExample(example))->layoutInput();
        KrPlainLayoutRun run;
        KrLayoutResult result;
        int const status = run.Run(input, result);
        Arrays const host = HostArrays(ToolExample(example), 0);
        EXPECT_NE(status, 0);
        EXPECT_EQ(status, host.status);
        EXPECT_FALSE(result.failedIds.empty());
    }
}

TEST(KrPlainLayoutRun, ConnectorsOfTheComponentTextsAreListedPerSegment)
{
    KrLayoutInput in = Y();
    in.componentMap[1] = L"1-4@X12@ECU:5@X3@Lamp";
    in.componentMap[2] = L"no connector";
    KrPlainLayoutRun run;
    KrLayoutResult result;
    ASSERT_EQ(run.Run(in, result), 0);
    for (KrLayoutResult::Segment const& s : result.segments) {
        if (s.id == 1) {
            ASSERT_EQ(s.connectors.size(), 2u);
            EXPECT_EQ(s.connectors[0].connector, L"X12@ECU");
            EXPECT_EQ(s.connectors[0].pins, L"1-4");
            EXPECT_EQ(s.connectors[1].connector, L"X3@Lamp");
            EXPECT_EQ(s.connectors[1].pins, L"5");
        } else {
            EXPECT_TRUE(s.connectors.empty()) << s.id;
        }
    }
}

TEST(KrPlainLayoutRun, ASegmentTheCleanUpRemovesIsListedAsDropped)
{
    // Two segments between the same two points, both to connector X1@A: the clean-up keeps the
    // longer one (2, drawn with a bend) and drops 3.
    KrLayoutInput in;
    in.segments.push_back(Seg(1, 1.0, {Line(0, 0, 1, 0)}));
    in.segments.push_back(Seg(2, 1.0, {Line(1, 0, 1.5, 0.5), Line(1.5, 0.5, 2, 0)}));
    in.segments.push_back(Seg(3, 1.0, {Line(1, 0, 2, 0)}));
    in.componentMap[2] = L"1@X1@A";
    in.componentMap[3] = L"2@X1@A";
    KrPlainLayoutRun run;
    KrLayoutResult result;
    ASSERT_EQ(run.Run(in, result), 0);
    std::vector<long> kept;
    for (KrLayoutResult::Segment const& s : result.segments) {
        kept.push_back(s.id);
    }
    std::sort(kept.begin(), kept.end());
    EXPECT_EQ(kept, (std::vector<long>{1, 2}));
    EXPECT_EQ(result.droppedIds, std::vector<long>{3});
}

TEST(KrPlainLayoutRun, ASecondRunStartsFromAFreshResultAndSketch)
{
    KrPlainLayoutRun run;
    KrLayoutResult result;
    ASSERT_EQ(run.Run(Y(), result), 0);
    IRoutingSketch* first = run.GetSketch();
    ASSERT_NE(first, nullptr);
    KrLayoutInput one;
    one.segments.push_back(Seg(7, 1.0, {Line(0, 0, 1, 0)}));
    ASSERT_EQ(run.Run(one, result), 0);
    ASSERT_EQ(result.segments.size(), 1u);
    EXPECT_EQ(result.segments[0].id, 7);
}
