// The plain grid node record: zeroed on construction, copied field by field.
#include <krlayout/grid/KrRoutingGridNode.h>

#include <gtest/gtest.h>

namespace {

KrRoutingGridNode Filled() {
    KrRoutingGridNode n;
    n.x = 1.5;
    n.y = -2.5;
    n.z = 3.25;
    n.used = true;
    n.position = ALPoint(4.0, 5.0, 6.0);
    n.direction = ALPoint(0.0, 1.0, 0.0);
    n.weight = 7.75;
    return n;
}

void ExpectSame(KrRoutingGridNode const& a, KrRoutingGridNode const& b) {
    EXPECT_EQ(a.x, b.x);
    EXPECT_EQ(a.y, b.y);
    EXPECT_EQ(a.z, b.z);
    EXPECT_EQ(a.used, b.used);
    EXPECT_EQ(a.position.x, b.position.x);
    EXPECT_EQ(a.position.y, b.position.y);
    EXPECT_EQ(a.position.z, b.position.z);
    EXPECT_EQ(a.direction.x, b.direction.x);
    EXPECT_EQ(a.direction.y, b.direction.y);
    EXPECT_EQ(a.direction.z, b.direction.z);
    EXPECT_EQ(a.weight, b.weight);
}

}  // namespace

TEST(KrRoutingGridNode, DefaultNodeIsAllZero) {
    KrRoutingGridNode n;
    EXPECT_EQ(n.x, 0.0);
    EXPECT_EQ(n.y, 0.0);
    EXPECT_EQ(n.z, 0.0);
    EXPECT_FALSE(n.used);
    EXPECT_EQ(n.position.x, 0.0);
    EXPECT_EQ(n.position.y, 0.0);
    EXPECT_EQ(n.position.z, 0.0);
    EXPECT_EQ(n.direction.x, 0.0);
    EXPECT_EQ(n.direction.y, 0.0);
    EXPECT_EQ(n.direction.z, 0.0);
    EXPECT_EQ(n.weight, 0.0);
}

TEST(KrRoutingGridNode, CopyCopiesEveryField) {
    KrRoutingGridNode const source = Filled();
    KrRoutingGridNode copy(source);
    ExpectSame(copy, source);
}

TEST(KrRoutingGridNode, AssignmentCopiesEveryFieldAndReturnsTheTarget) {
    KrRoutingGridNode const source = Filled();
    KrRoutingGridNode target;
    KrRoutingGridNode& result = (target = source);
    EXPECT_EQ(&result, &target);
    ExpectSame(target, source);
}

TEST(KrRoutingGridNode, SelfAssignmentKeepsTheValues) {
    KrRoutingGridNode n = Filled();
    KrRoutingGridNode& alias = n;
    n = alias;
    ExpectSame(n, Filled());
}
