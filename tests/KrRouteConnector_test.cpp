// The connector record: a name, its (pin, route segment id) entries and the sketch it belongs to.
#include <krlayout/sketch/KrRouteConnector.h>
#include <krlayout/sketch/KrSketch.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using Entries = std::vector<std::pair<std::wstring, long>>;

TEST(KrRouteConnector, NewRecordIsEmptyWithoutSketch)
{
    KrRouteConnector c;
    std::wstring name = L"x";
    EXPECT_EQ(0, c.GetName(name));
    EXPECT_TRUE(name.empty());
    Entries e;
    EXPECT_EQ(0, c.GetEntries(e));
    EXPECT_TRUE(e.empty());
    KrSketch sk;
    KrSketch* back = &sk;
    EXPECT_EQ(0, c.GetSketch(back));
    EXPECT_EQ(nullptr, back);
}

TEST(KrRouteConnector, NameIsStoredAndReplaced)
{
    KrRouteConnector c;
    EXPECT_EQ(0, c.SetName(L"J1"));
    EXPECT_EQ(0, c.SetName(L"J2"));
    std::wstring name;
    c.GetName(name);
    EXPECT_EQ(L"J2", name);
}

TEST(KrRouteConnector, EntriesKeepTheirOrderAndRepeats)
{
    KrRouteConnector c;
    EXPECT_EQ(0, c.AddEntry(L"2", 20));
    EXPECT_EQ(0, c.AddEntry(L"1", 10));
    EXPECT_EQ(0, c.AddEntry(L"2", 20));
    Entries e;
    c.GetEntries(e);
    EXPECT_EQ((Entries{{L"2", 20}, {L"1", 10}, {L"2", 20}}), e);
}

TEST(KrRouteConnector, GetEntriesAppends)
{
    KrRouteConnector c;
    c.AddEntry(L"A", 1);
    Entries e{{L"old", -1}};
    c.GetEntries(e);
    EXPECT_EQ((Entries{{L"old", -1}, {L"A", 1}}), e);
}

TEST(KrRouteConnector, SketchBackPointerIsStoredWithoutOwnership)
{
    KrSketch sk;
    {
        KrRouteConnector c;
        EXPECT_EQ(0, c.SetSketch(&sk));
        KrSketch* back = nullptr;
        c.GetSketch(back);
        EXPECT_EQ(&sk, back);
    }
    // The record is gone; the sketch is untouched and still usable.
    EXPECT_EQ(0, sk.CreateRouteSegment(1, 1, 1));
}

TEST(KrRouteConnector, EmptyPinAndNegativeIdAreKeptAsGiven)
{
    KrRouteConnector c;
    c.AddEntry(L"", -5);
    Entries e;
    c.GetEntries(e);
    EXPECT_EQ((Entries{{L"", -5}}), e);
}
