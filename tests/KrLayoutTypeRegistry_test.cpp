// The registry of layout types: numbers and names, the facade's mapping, and which layout each
// number runs.
#include <krlayout/api/KrLayoutResult.h>
#include <krlayout/api/KrLayoutTypeRegistry.h>
#include <krlayout/sketch/KrSketch.h>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

TEST(KrLayoutTypeRegistry, NamesAndNumbersFindTheSameType)
{
    int type = -1;
    EXPECT_TRUE(KrLayoutTypeRegistry::Find("diameter", type));
    EXPECT_EQ(type, 0);
    EXPECT_TRUE(KrLayoutTypeRegistry::Find("LENGTH", type));
    EXPECT_EQ(type, 1);
    EXPECT_TRUE(KrLayoutTypeRegistry::Find("Formboard", type));
    EXPECT_EQ(type, 2);
    EXPECT_TRUE(KrLayoutTypeRegistry::Find("2", type));
    EXPECT_EQ(type, 2);
    EXPECT_TRUE(KrLayoutTypeRegistry::Find("0", type));
    EXPECT_EQ(type, 0);
}

TEST(KrLayoutTypeRegistry, AnythingElseIsNoTypeAndLeavesTheOutputAlone)
{
    for (char const* text : {"", "3", "-1", "02", " 1", "diam", "board", "1.0"}) {
        int type = 42;
        EXPECT_FALSE(KrLayoutTypeRegistry::Find(text, type)) << text;
        EXPECT_EQ(type, 42) << text;
    }
    EXPECT_FALSE(KrLayoutTypeRegistry::IsType(3));
    EXPECT_FALSE(KrLayoutTypeRegistry::IsType(-1));
    EXPECT_EQ(KrLayoutTypeRegistry::Name(3), "");
}

TEST(KrLayoutTypeRegistry, ListsItsTypesInNumberOrder)
{
    std::vector<std::string> names;
    for (auto const& t : KrLayoutTypeRegistry::Types()) {
        EXPECT_EQ(t.number, static_cast<int>(names.size()));
        names.push_back(t.name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"diameter", "length", "formboard"}));
    EXPECT_EQ(KrLayoutTypeRegistry::Choices(), "diameter, length or formboard");
}

TEST(KrLayoutTypeRegistry, TheFacadeKeepsOneAndRunsEverythingElseAsZero)
{
    EXPECT_EQ(KrLayoutTypeRegistry::FacadeType(1), 1);
    for (int t : {0, 2, 3, -1, 1000}) {
        EXPECT_EQ(KrLayoutTypeRegistry::FacadeType(t), 0) << t;
    }
}

namespace {

// One segment of length 1 from (0,0) to (1,0), laid out by `type`.
std::vector<ALLine> LayOutOne(int type, KrLayoutResult& figures)
{
    KrSketch sketch;
    sketch.CreateGrid(0.02, 0.02);
    sketch.CreateRouteSegment(1, 1.0, 1.0);
    std::map<long, long> counts{{1, 1}};
    sketch.CreateWayPoint(counts, {ALPoint(0, 0, 0), ALPoint(1, 0, 0)});
    KrLayoutTypeRegistry::LayOut(&sketch, type, -1.0, figures);
    std::vector<ALLine> lines;
    sketch.GetLinesByRouteId(1, lines);
    return lines;
}

}  // namespace

TEST(KrLayoutTypeRegistry, TypeTwoRunsTheBoardLayoutAndReportsItsFigures)
{
    KrLayoutResult figures;
    std::vector<ALLine> const lines = LayOutOne(2, figures);
    ASSERT_EQ(lines.size(), 1u);
    // The board root runs from the origin toward -x at its true length.
    EXPECT_EQ(lines[0].start.x, 0.0);
    EXPECT_EQ(lines[0].end.x, -1.0);
    EXPECT_EQ(figures.placedSegments, 1);
    EXPECT_EQ(figures.usedClearance, 0.02);
}

TEST(KrLayoutTypeRegistry, OtherNumbersRunTheGridLayoutAndLeaveTheFiguresAtZero)
{
    for (int type : {0, 1, 5}) {
        KrLayoutResult figures;
        std::vector<ALLine> const lines = LayOutOne(type, figures);
        EXPECT_FALSE(lines.empty()) << type;
        EXPECT_EQ(figures.placedSegments, 0) << type;
        EXPECT_EQ(figures.usedClearance, 0.0) << type;
    }
}
