#include <krlayout/model/ALLine.h>

#include <gtest/gtest.h>

TEST(ALLine, DefaultHasBothPointsAtOriginAndIdZero)
{
    ALLine l;
    EXPECT_TRUE(l.start == ALPoint(0.0, 0.0, 0.0));
    EXPECT_TRUE(l.end == ALPoint(0.0, 0.0, 0.0));
    EXPECT_EQ(l.GetId(), 0);
}

TEST(ALLine, PointerConstructorTakesStartThenEnd)
{
    double const s[3] = {1.0, 2.0, 3.0};
    double const e[3] = {4.0, 5.0, 6.0};
    ALLine l(s, e);
    EXPECT_EQ(l.start.x, 1.0);
    EXPECT_EQ(l.start.y, 2.0);
    EXPECT_EQ(l.start.z, 3.0);
    EXPECT_EQ(l.end.x, 4.0);
    EXPECT_EQ(l.end.y, 5.0);
    EXPECT_EQ(l.end.z, 6.0);
    EXPECT_EQ(l.GetId(), 0);
}

TEST(ALLine, NullPointersGiveOriginPoints)
{
    double const e[3] = {4.0, 5.0, 6.0};
    ALLine l(nullptr, e);
    EXPECT_EQ(l.start.x, 0.0);
    EXPECT_EQ(l.start.y, 0.0);
    EXPECT_EQ(l.start.z, 0.0);
    EXPECT_EQ(l.end.x, 4.0);
    ALLine m(e, nullptr);
    EXPECT_EQ(m.end.x, 0.0);
    EXPECT_EQ(m.end.z, 0.0);
}

TEST(ALLine, SetIdThenGetId)
{
    ALLine l;
    l.SetId(-42);
    EXPECT_EQ(l.GetId(), -42);
    l.SetId(7);
    EXPECT_EQ(l.GetId(), 7);
}

TEST(ALLine, CopyDoesNotCarryTheId)
{
    double const s[3] = {1.0, 2.0, 3.0};
    double const e[3] = {4.0, 5.0, 6.0};
    ALLine src(s, e);
    src.SetId(7);
    ALLine copy(src);
    EXPECT_EQ(copy.GetId(), 0);
    EXPECT_EQ(copy.start.x, 1.0);
    EXPECT_EQ(copy.end.z, 6.0);
    EXPECT_EQ(src.GetId(), 7);
}

TEST(ALLine, AssignmentCopiesCoordinatesAndTargetKeepsItsId)
{
    double const s[3] = {1.0, 2.0, 3.0};
    double const e[3] = {4.0, 5.0, 6.0};
    ALLine src(s, e);
    src.SetId(7);
    ALLine target;
    target.SetId(5);
    ALLine result = (target = src);
    EXPECT_EQ(target.GetId(), 5);
    EXPECT_EQ(target.start.x, 1.0);
    EXPECT_EQ(target.start.y, 2.0);
    EXPECT_EQ(target.start.z, 3.0);
    EXPECT_EQ(target.end.x, 4.0);
    EXPECT_EQ(target.end.y, 5.0);
    EXPECT_EQ(target.end.z, 6.0);
    // The returned line has the coordinates but no id.
    EXPECT_EQ(result.GetId(), 0);
    EXPECT_EQ(result.end.y, 5.0);
}
