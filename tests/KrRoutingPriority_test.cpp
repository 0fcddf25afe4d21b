#include <krlayout/layout/IPriority.h>
#include <krlayout/layout/KrRoutingPriorityByDiameter.h>
#include <krlayout/layout/KrRoutingPriorityByLength.h>

#include <krlayout/model/KrRouteSegment.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

KrRouteSegment* Pick(IPriority& strategy, std::vector<KrRouteSegment*> segs)
{
    KrRouteSegment* result = nullptr;
    EXPECT_EQ(strategy.GetPriorestSegment(segs, result), 0);
    return result;
}

}  // namespace

TEST(KrRoutingPriority, EmptyListGivesNullWithStatusZero)
{
    KrRouteSegment dummy(9, 1.0, 1.0);
    std::vector<KrRouteSegment*> none;
    KrRoutingPriorityByDiameter byDiameter;
    KrRoutingPriorityByLength byLength;
    KrRouteSegment* result = &dummy;
    EXPECT_EQ(byDiameter.GetPriorestSegment(none, result), 0);
    EXPECT_EQ(result, nullptr);
    result = &dummy;
    EXPECT_EQ(byLength.GetPriorestSegment(none, result), 0);
    EXPECT_EQ(result, nullptr);
}

TEST(KrRoutingPriority, SingleSegmentIsChosen)
{
    KrRouteSegment a(1, 3.0, 2.0);
    KrRoutingPriorityByDiameter byDiameter;
    KrRoutingPriorityByLength byLength;
    EXPECT_EQ(Pick(byDiameter, {&a}), &a);
    EXPECT_EQ(Pick(byLength, {&a}), &a);
}

TEST(KrRoutingPriority, DiameterThenLengthVersusLengthThenDiameter)
{
    // (diameter 2, length 5), (diameter 2, length 7), (diameter 1, length 100).
    KrRouteSegment a(1, 5.0, 2.0), b(2, 7.0, 2.0), c(3, 100.0, 1.0);
    KrRoutingPriorityByDiameter byDiameter;
    KrRoutingPriorityByLength byLength;
    // By diameter: a and b tie on 2, b is longer; c is thinner.
    EXPECT_EQ(Pick(byDiameter, {&a, &b, &c}), &b);
    // By length: c is the longest.
    EXPECT_EQ(Pick(byLength, {&a, &b, &c}), &c);
}

TEST(KrRoutingPriority, ALaterLargerPrimaryKeyWins)
{
    KrRouteSegment a(1, 100.0, 1.0), b(2, 1.0, 3.0);
    KrRoutingPriorityByDiameter byDiameter;
    KrRoutingPriorityByLength byLength;
    EXPECT_EQ(Pick(byDiameter, {&a, &b}), &b);
    EXPECT_EQ(Pick(byLength, {&a, &b}), &a);
    EXPECT_EQ(Pick(byDiameter, {&b, &a}), &b);
    EXPECT_EQ(Pick(byLength, {&b, &a}), &a);
}

TEST(KrRoutingPriority, SegmentsAgreeingWithinToleranceInBothKeysGiveTheFirstListed)
{
    KrRouteSegment a(1, 5.0, 1.0), b(2, 5.000005, 1.000005);
    KrRoutingPriorityByDiameter byDiameter;
    KrRoutingPriorityByLength byLength;
    EXPECT_EQ(Pick(byDiameter, {&a, &b}), &a);
    EXPECT_EQ(Pick(byLength, {&a, &b}), &a);
    EXPECT_EQ(Pick(byDiameter, {&b, &a}), &b);
    EXPECT_EQ(Pick(byLength, {&b, &a}), &b);
}

TEST(KrRoutingPriority, DiametersWithinToleranceCountAsEqualAndLengthsDecide)
{
    // 1.000000 and 1.000009 differ by 9e-06 < 1e-05.
    KrRouteSegment thinLong(1, 4.0, 1.0), thickShort(2, 3.0, 1.000009);
    KrRoutingPriorityByDiameter byDiameter;
    EXPECT_EQ(Pick(byDiameter, {&thinLong, &thickShort}), &thinLong);
    EXPECT_EQ(Pick(byDiameter, {&thickShort, &thinLong}), &thinLong);
    KrRouteSegment thinShort(3, 3.0, 1.0), thickLong(4, 4.0, 1.000009);
    EXPECT_EQ(Pick(byDiameter, {&thinShort, &thickLong}), &thickLong);
}

TEST(KrRoutingPriority, LengthsWithinToleranceCountAsEqualAndDiametersDecide)
{
    KrRouteSegment a(1, 10.0, 3.0), b(2, 10.000009, 2.0);
    KrRoutingPriorityByLength byLength;
    EXPECT_EQ(Pick(byLength, {&a, &b}), &a);
    EXPECT_EQ(Pick(byLength, {&b, &a}), &a);
}

TEST(KrRoutingPriority, ComparisonIsAgainstTheCurrentBestOnly)
{
    // Diameters 1.0, 1.000008, 1.000016. The second ties with the first and wins on length (2 > 1).
    // The third ties with the second (8e-06 apart) and loses on length, although it is 1.6e-05
    // thicker than the first.
    KrRouteSegment a(1, 1.0, 1.0), b(2, 2.0, 1.000008), c(3, 0.0, 1.000016);
    KrRoutingPriorityByDiameter byDiameter;
    EXPECT_EQ(Pick(byDiameter, {&a, &b, &c}), &b);
    // With equal lengths the second stays behind the first, and the third is compared with the
    // first: 1.6e-05 apart, so it wins.
    KrRouteSegment d(4, 1.0, 1.0), e(5, 1.0, 1.000008), f(6, 1.0, 1.000016);
    EXPECT_EQ(Pick(byDiameter, {&d, &e, &f}), &f);
}

TEST(KrRoutingPriority, NullEntriesAreSkipped)
{
    KrRouteSegment a(1, 1.0, 1.0);
    KrRoutingPriorityByDiameter byDiameter;
    KrRoutingPriorityByLength byLength;
    EXPECT_EQ(Pick(byDiameter, {nullptr, &a, nullptr}), &a);
    EXPECT_EQ(Pick(byLength, {nullptr, &a, nullptr}), &a);
    EXPECT_EQ(Pick(byDiameter, {nullptr}), nullptr);
    EXPECT_EQ(Pick(byLength, {nullptr, nullptr}), nullptr);
}

TEST(KrRoutingPriority, PlaceholderPredicatesAlwaysAnswerTrue)
{
    KrRouteSegment a(1, 1.0, 1.0), b(2, 100.0, 100.0);
    KrRoutingPriorityByDiameter byDiameter;
    EXPECT_TRUE(byDiameter.IsPriorerThan(&a, &b));
    EXPECT_TRUE(byDiameter.IsPriorerThan(&b, &a));
    EXPECT_TRUE(byDiameter.IsPriorerThan(nullptr, nullptr));
    EXPECT_TRUE(byDiameter.IsCloserThan(&a, &b));
    EXPECT_TRUE(byDiameter.IsCloserThan(nullptr, &a));
}

TEST(KrRoutingPriority, StrategiesWorkThroughTheInterfaceAndCopy)
{
    KrRouteSegment a(1, 5.0, 2.0), b(2, 7.0, 1.0);
    std::unique_ptr<IPriority> d = std::make_unique<KrRoutingPriorityByDiameter>();
    std::unique_ptr<IPriority> l = std::make_unique<KrRoutingPriorityByLength>();
    EXPECT_EQ(Pick(*d, {&a, &b}), &a);
    EXPECT_EQ(Pick(*l, {&a, &b}), &b);
    KrRoutingPriorityByDiameter d1;
    KrRoutingPriorityByDiameter d2(d1);
    d1 = d2;
    KrRoutingPriorityByLength l1;
    KrRoutingPriorityByLength l2(l1);
    l1 = l2;
    EXPECT_EQ(Pick(d2, {&a, &b}), &a);
    EXPECT_EQ(Pick(l2, {&a, &b}), &b);
}
