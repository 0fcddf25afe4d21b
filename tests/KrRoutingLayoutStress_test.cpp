// Thousands of random and harness-like trees of 40 and 150 segments laid out with both types, each
// under a watchdog that fails the run only when one layout does not end within a minute (a hang),
// never because of its speed. Before the walks over placed segments were bounded, about one tree
// in a hundred of 40 segments and one in twenty of 150 never finished by length.
#include "HarnessTree.h"
#include "Watchdog.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

void Stress(harness::TreeKind kind, int size, int trees, unsigned seedBase) {
    layout_test::Watchdog watchdog(std::chrono::seconds(60));
    std::size_t segments = 0;
    for (int i = 0; i < trees; ++i) {
        unsigned const seed = seedBase + static_cast<unsigned>(i);
        for (e_LayOutType type : {LayOutByDiameter, LayOutByLength}) {
            watchdog.Arm(std::string(harness::KindName(kind)) + " tree of " + std::to_string(size) +
                         " segments, seed " + std::to_string(seed) + ", type " + std::to_string(type));
            std::size_t kept = 0;
            harness::RunTree(kind, seed, size, type, &kept);
            watchdog.Disarm();
            ASSERT_GT(kept, 0u) << "seed " << seed << " type " << type;
            ASSERT_LE(kept, static_cast<std::size_t>(size)) << "seed " << seed << " type " << type;
            segments += kept;
        }
    }
    std::printf("[stress] %d %s trees of %d segments, both types: %zu segments kept\n", trees,
                harness::KindName(kind), size, segments);
}

TEST(KrRoutingLayoutStress, RandomTreesOf40SegmentsAlwaysFinish) { Stress(harness::TreeKind::Random, 40, 1000, 50000000u); }

TEST(KrRoutingLayoutStress, RandomTreesOf150SegmentsAlwaysFinish) { Stress(harness::TreeKind::Random, 150, 500, 51000000u); }

TEST(KrRoutingLayoutStress, HarnessTreesOf40SegmentsAlwaysFinish) { Stress(harness::TreeKind::Harness, 40, 1000, 52000000u); }

TEST(KrRoutingLayoutStress, HarnessTreesOf150SegmentsAlwaysFinish) { Stress(harness::TreeKind::Harness, 150, 500, 53000000u); }

}  // namespace
