// Layouts of thousands of random and harness-like trees (10 to 2,000 segments, both layout types)
// compared with fingerprints recorded before the layout was made to scale. A recorded "hang" is a
// layout that did not end within its time limit then; it must end now.
//
// The records are tests/data/layout-fingerprints.txt (made by tests/tools/record_fingerprints.cpp).
#include "HarnessTree.h"
#include "Watchdog.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#ifndef KRLAYOUT_TEST_DATA_DIR
#error "KRLAYOUT_TEST_DATA_DIR must name tests/data"
#endif

namespace {

struct Record {
    harness::TreeKind kind;
    int size;
    unsigned seed;
    e_LayOutType type;
    bool hang;
    unsigned long long fingerprint;
};

std::vector<Record> LoadRecords() {
    std::ifstream in(std::string(KRLAYOUT_TEST_DATA_DIR) + "/layout-fingerprints.txt");
    std::vector<Record> out;
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') {
            continue;
        }
        std::istringstream fields(line);
        std::string kind;
        std::string value;
        int type = 0;
        Record r{};
        fields >> kind >> r.size >> r.seed >> type >> value;
        r.kind = kind == "random" ? harness::TreeKind::Random : harness::TreeKind::Harness;
        r.type = static_cast<e_LayOutType>(type);
        r.hang = value == "hang";
        r.fingerprint = r.hang ? 0 : std::stoull(value, nullptr, 16);
        out.push_back(r);
    }
    return out;
}

std::string Describe(Record const& r) {
    char text[128];
    std::snprintf(text, sizeof text, "%s tree of %d segments, seed %u, type %d", harness::KindName(r.kind),
                  r.size, r.seed, static_cast<int>(r.type));
    return text;
}

TEST(LayoutFingerprint, RecordsCoverEveryTreeOfTheCorpusForBothTypes) {
    std::size_t expected = 0;
    for (harness::CorpusGroup const& g : harness::FingerprintCorpus()) {
        expected += 2 * static_cast<std::size_t>(g.count);
    }
    EXPECT_EQ(expected, LoadRecords().size());
}

TEST(LayoutFingerprint, EveryRecordedLayoutIsUnchangedBitForBit) {
    std::vector<Record> const records = LoadRecords();
    ASSERT_FALSE(records.empty());
    layout_test::Watchdog watchdog(std::chrono::seconds(120));
    std::size_t compared = 0;
    std::size_t differing = 0;
    for (Record const& r : records) {
        if (r.hang) {
            continue;
        }
        watchdog.Arm(Describe(r));
        unsigned long long const got = harness::RunTree(r.kind, r.seed, r.size, r.type);
        watchdog.Disarm();
        ++compared;
        if (got != r.fingerprint) {
            ++differing;
            ADD_FAILURE() << Describe(r) << ": fingerprint " << std::hex << got << ", recorded " << r.fingerprint;
        }
    }
    std::printf("[fingerprint] compared %zu layouts, %zu differ\n", compared, differing);
}

TEST(LayoutFingerprint, EveryLayoutThatDidNotEndBeforeNowEndsWithEverySegmentPlaced) {
    std::vector<Record> const records = LoadRecords();
    layout_test::Watchdog watchdog(std::chrono::seconds(120));
    std::size_t finished = 0;
    for (Record const& r : records) {
        if (!r.hang) {
            continue;
        }
        watchdog.Arm(Describe(r));
        std::size_t kept = 0;
        harness::RunTree(r.kind, r.seed, r.size, r.type, &kept);
        watchdog.Disarm();
        ++finished;
        EXPECT_GT(kept, 0u) << Describe(r);
        EXPECT_LE(kept, static_cast<std::size_t>(r.size)) << Describe(r);
    }
    std::printf("[fingerprint] %zu layouts that did not end before all ended\n", finished);
    EXPECT_GT(finished, 0u);
}

}  // namespace
