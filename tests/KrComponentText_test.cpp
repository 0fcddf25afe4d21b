// The component text: up to two "PINS@CONNECTOR" halves split at the first ':'; a half names a
// connector only when the part after its first '@' holds another '@' after its first character.
#include <krlayout/api/KrComponentText.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using Pairs = std::vector<std::pair<std::wstring, std::wstring>>;

Pairs Parse(std::wstring const& text)
{
    Pairs out;
    EXPECT_EQ(KrComponentText::Parse(text, out), 0);
    return out;
}

}  // namespace

TEST(KrComponentText, OneHalfNamesItsConnectorAndPins)
{
    EXPECT_EQ(Parse(L"1-4@X12@Injector 1"), (Pairs{{L"X12@Injector 1", L"1-4"}}));
}

TEST(KrComponentText, TwoHalvesNameOneConnectorEachInTextOrder)
{
    EXPECT_EQ(Parse(L"1@X1@A:2@X2@B"), (Pairs{{L"X1@A", L"1"}, {L"X2@B", L"2"}}));
}

TEST(KrComponentText, AHalfWithoutPinsHasAnEmptyHeadAndItsWholeTextAsConnector)
{
    // No '@' at all: the tail is the whole half, which holds no '@': nothing.
    EXPECT_TRUE(Parse(L"X12").empty());
    // "X12@A": head "X12", tail "A" without '@': nothing.
    EXPECT_TRUE(Parse(L"X12@A").empty());
}

TEST(KrComponentText, ATailWhoseSecondAtSignComesFirstNamesNothing)
{
    // Tail "@A" holds its '@' at position 0.
    EXPECT_TRUE(Parse(L"1@@A").empty());
}

TEST(KrComponentText, TheSplitIsAtTheFirstColonOnly)
{
    // First half "1@X1@A", second half "2@X2@B:3" whose tail "X2@B:3" names a connector.
    EXPECT_EQ(Parse(L"1@X1@A:2@X2@B:3"), (Pairs{{L"X1@A", L"1"}, {L"X2@B:3", L"2"}}));
}

TEST(KrComponentText, AnEmptyFirstHalfIsSkipped)
{
    EXPECT_EQ(Parse(L":1@X1@A"), (Pairs{{L"X1@A", L"1"}}));
}

TEST(KrComponentText, ParseHalfLeavesItsOutputsAloneWhenNothingIsNamed)
{
    std::wstring connector = L"keep";
    std::wstring pins = L"keep";
    EXPECT_FALSE(KrComponentText::ParseHalf(L"no@connector", connector, pins));
    EXPECT_EQ(connector, L"keep");
    EXPECT_EQ(pins, L"keep");
    EXPECT_TRUE(KrComponentText::ParseHalf(L"@X@Y", connector, pins));
    EXPECT_EQ(connector, L"X@Y");
    EXPECT_EQ(pins, L"");
}
