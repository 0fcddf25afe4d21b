// The disjoint check: CheckDisjoint, TraversalSegmentByPoint, GetMiniDisjoint,
// GetOneSegmentNotGrouped and GetTotalLength.
#include <krlayout/check/KrRoutingCheck.h>
#include <krlayout/model/ALPoint.h>
#include <krlayout/model/KrRouteCADLine.h>
#include <krlayout/model/KrRouteSegment.h>
#include <krlayout/model/KrRoutingWayPoint.h>
#include <krlayout/sketch/IRoutingSketch.h>
#include <krlayout/sketch/KrSketch.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "CheckTestSupport.h"

namespace {

// ---- CheckDisjoint through the real input path -----------------------------------------------

TEST(KrRoutingCheckDisjoint, NullSketchReturnsOne) {
    KrRoutingCheck check;
    std::vector<long> ids{42};
    EXPECT_EQ(1, check.CheckDisjoint(nullptr, ids));
    EXPECT_EQ(std::vector<long>{42}, ids);
}

TEST(KrRoutingCheckDisjoint, EmptySketchReturnsZero) {
    KrSketch sketch;
    ASSERT_EQ(0, sketch.CreateGrid(1.0, 1.0));
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(0, check.CheckDisjoint(&sketch, ids));
    EXPECT_TRUE(ids.empty());
}

TEST(KrRoutingCheckDisjoint, OneConnectedTreeReturnsZeroAndAppendsNothing) {
    // A star at (0,0) with three arms, one continued by segment 4; segment 2 has two lines.
    KrSketch sketch;
    BuildSketch(sketch, {{1, 10.0}, {2, 10.0}, {3, 10.0}, {4, 10.0}},
                {{1, At(0, 0), At(10, 0)},
                 {2, At(0, 0), At(0, 5)},
                 {2, At(0, 5), At(0, 10)},
                 {3, At(0, 0), At(-10, 0)},
                 {4, At(10, 0), At(20, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(0, check.CheckDisjoint(&sketch, ids));
    EXPECT_TRUE(ids.empty());
}

TEST(KrRoutingCheckDisjoint, ShorterSecondPieceIsReported) {
    // Piece of the first segment: 1 (6) + 2 (4) = 10.
    // Other piece: 3 = C(100,0)-(110,0) (1), 4 = (110,0)-(120,0) (2), 5 = C-(100,10) (1): 4.
    // It starts at 3, from its start C: C lists [3,5], so 5 comes next; then from (110,0): 4.
    // Piece order 3, 5, 4; 4 < 10.
    KrSketch sketch;
    BuildSketch(sketch, {{1, 6.0}, {2, 4.0}, {3, 1.0}, {4, 2.0}, {5, 1.0}},
                {{1, At(0, 0), At(10, 0)},
                 {2, At(10, 0), At(20, 0)},
                 {3, At(100, 0), At(110, 0)},
                 {4, At(110, 0), At(120, 0)},
                 {5, At(100, 0), At(100, 10)}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(8, check.CheckDisjoint(&sketch, ids));
    EXPECT_EQ((std::vector<long>{3, 5, 4}), ids);
}

TEST(KrRoutingCheckDisjoint, ShorterFirstPieceIsReported) {
    // Piece of the first segment: 1 = C(0,0)-(10,0) (1), 2 = (10,0)-(20,0) (2), 3 = C-(0,10) (1):
    // total 4, order 1, 3 (from C, which lists [1,3]), 2 (from (10,0)).
    // Other piece: 4 (6) + 5 (4) = 10; 10 < 4 is false, so the first piece stays the shortest.
    KrSketch sketch;
    BuildSketch(sketch, {{1, 1.0}, {2, 2.0}, {3, 1.0}, {4, 6.0}, {5, 4.0}},
                {{1, At(0, 0), At(10, 0)},
                 {2, At(10, 0), At(20, 0)},
                 {3, At(0, 0), At(0, 10)},
                 {4, At(100, 0), At(110, 0)},
                 {5, At(110, 0), At(120, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(8, check.CheckDisjoint(&sketch, ids));
    EXPECT_EQ((std::vector<long>{1, 3, 2}), ids);
}

TEST(KrRoutingCheckDisjoint, EqualLengthsReportThePieceOfTheFirstSegment) {
    // Piece of 1: 5. Piece of 2 and 3: 2 + 3 = 5. 5 < 5 is false: the first piece wins.
    KrSketch sketch;
    BuildSketch(sketch, {{1, 5.0}, {2, 2.0}, {3, 3.0}},
                {{1, At(0, 0), At(10, 0)},
                 {2, At(100, 0), At(110, 0)},
                 {3, At(110, 0), At(120, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(8, check.CheckDisjoint(&sketch, ids));
    EXPECT_EQ(std::vector<long>{1}, ids);
}

TEST(KrRoutingCheckDisjoint, SingleSegmentPieceIsReportedWithJustItsId) {
    // Piece of 1 and 2: 3 + 3 = 6; segment 3 alone: 2.
    KrSketch sketch;
    BuildSketch(sketch, {{1, 3.0}, {2, 3.0}, {3, 2.0}},
                {{1, At(0, 0), At(10, 0)},
                 {2, At(10, 0), At(20, 0)},
                 {3, At(100, 0), At(110, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids{-1};
    EXPECT_EQ(8, check.CheckDisjoint(&sketch, ids));
    EXPECT_EQ((std::vector<long>{-1, 3}), ids);
}

TEST(KrRoutingCheckDisjoint, StoreOrderDecidesWhichSegmentIsFirst) {
    // Segment 7 (alone, 2) is created first, so it is the first segment even though the lines
    // are read in ascending id order; the piece of 3 and 5 (1 + 1 = 2) ties and loses to it.
    KrSketch sketch;
    BuildSketch(sketch, {{7, 2.0}, {3, 1.0}, {5, 1.0}},
                {{3, At(0, 0), At(10, 0)},
                 {5, At(10, 0), At(20, 0)},
                 {7, At(100, 0), At(110, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(8, check.CheckDisjoint(&sketch, ids));
    EXPECT_EQ(std::vector<long>{7}, ids);
}

TEST(KrRoutingCheckDisjoint, LoopInAPieceWithoutTheFirstSegmentIsFoundAsAPiece) {
    // 1 = A(100,0)-B(110,0) alone (10). Triangle 2 = P(0,0)-Q(10,0) (1), 3 = Q-R(5,5) (2),
    // 4 = R-P (3). P lists [2,4], Q [2,3], R [3,4].
    // Piece of 2 from its start P: 4 -> R, 3 -> Q, then 2 again at Q (no duplicate test), P is
    // visited: piece 2, 4, 3, 2 with total 1 + 3 + 2 + 1 = 7 < 10.
    KrSketch sketch;
    BuildSketch(sketch, {{1, 10.0}, {2, 1.0}, {3, 2.0}, {4, 3.0}},
                {{1, At(100, 0), At(110, 0)},
                 {2, At(0, 0), At(10, 0)},
                 {3, At(10, 0), At(5, 5)},
                 {4, At(5, 5), At(0, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(8, check.CheckDisjoint(&sketch, ids));
    EXPECT_EQ((std::vector<long>{2, 4, 3, 2}), ids);
}

TEST(KrRoutingCheckDisjoint, ConnectedLoopCountsEntriesNotSegments) {
    // Triangle 1 = P-Q, 2 = Q-R, 3 = R-P, one piece. From the root P: 3 -> R, 2 -> Q, 1 again at
    // Q: 4 entries for 3 segments, so the sketch is reported disjoint, with the one piece
    // 1, 3, 2, 1 (its start P is also ends[0] of 1).
    KrSketch sketch;
    BuildSketch(sketch, {{1, 10.0}, {2, 7.0}, {3, 7.0}},
                {{1, At(0, 0), At(10, 0)}, {2, At(10, 0), At(5, 5)}, {3, At(5, 5), At(0, 0)}});
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(8, check.CheckDisjoint(&sketch, ids));
    EXPECT_EQ((std::vector<long>{1, 3, 2, 1}), ids);
}

// ---- The parts, on topology built from the model ---------------------------------------------

TEST(KrRoutingCheckDisjoint, TraversalAppendsSegmentsBeforeEnteringThem) {
    // Star C(0,0): 1 = C-A(10,0), 2 = C-B(0,10), 3 = C-D(-10,0); 4 = A-E(20,0).
    // From C without 1: [2,3] appended, then B and D entered (nothing more there).
    // Then from A (marked by the caller) without 1: 4 appended, E entered.
    ModelSketch sketch;
    KrRoutingWayPoint* c = sketch.Point(0, 0);
    KrRoutingWayPoint* a = sketch.Point(10, 0);
    KrRoutingWayPoint* b = sketch.Point(0, 10);
    KrRoutingWayPoint* d = sketch.Point(-10, 0);
    KrRoutingWayPoint* e = sketch.Point(20, 0);
    KrRouteSegment* s1 = sketch.Segment(1, 10, c, a);
    KrRouteSegment* s2 = sketch.Segment(2, 10, c, b);
    KrRouteSegment* s3 = sketch.Segment(3, 10, c, d);
    KrRouteSegment* s4 = sketch.Segment(4, 10, a, e);
    KrRoutingCheck check;
    std::vector<KrRoutingWayPoint*> visited{c};
    std::vector<KrRouteSegment*> piece{s1};
    EXPECT_EQ(0, check.TraversalSegmentByPoint(c, s1, visited, piece));
    EXPECT_EQ((std::vector<KrRouteSegment*>{s1, s2, s3}), piece);
    EXPECT_EQ((std::vector<KrRoutingWayPoint*>{c, b, d}), visited);
    visited.push_back(a);
    EXPECT_EQ(0, check.TraversalSegmentByPoint(a, s1, visited, piece));
    EXPECT_EQ((std::vector<KrRouteSegment*>{s1, s2, s3, s4}), piece);
    EXPECT_EQ((std::vector<KrRoutingWayPoint*>{c, b, d, a, e}), visited);
}

TEST(KrRoutingCheckDisjoint, TraversalNeverEntersAVisitedPoint) {
    // Square P0 P1 P2 P3: 1 = P0-P1, 2 = P1-P2, 3 = P2-P3, 4 = P3-P0.
    // From P0 without 1: 4 -> P3, 3 -> P2, 2 -> P1, where 1 is appended again but P0 is visited.
    ModelSketch sketch;
    KrRoutingWayPoint* p0 = sketch.Point(0, 0);
    KrRoutingWayPoint* p1 = sketch.Point(10, 0);
    KrRoutingWayPoint* p2 = sketch.Point(10, 10);
    KrRoutingWayPoint* p3 = sketch.Point(0, 10);
    KrRouteSegment* s1 = sketch.Segment(1, 10, p0, p1);
    KrRouteSegment* s2 = sketch.Segment(2, 10, p1, p2);
    KrRouteSegment* s3 = sketch.Segment(3, 10, p2, p3);
    KrRouteSegment* s4 = sketch.Segment(4, 10, p3, p0);
    KrRoutingCheck check;
    std::vector<KrRoutingWayPoint*> visited{p0};
    std::vector<KrRouteSegment*> piece{s1};
    EXPECT_EQ(0, check.TraversalSegmentByPoint(p0, s1, visited, piece));
    EXPECT_EQ((std::vector<KrRouteSegment*>{s1, s4, s3, s2, s1}), piece);
    EXPECT_EQ((std::vector<KrRoutingWayPoint*>{p0, p3, p2, p1}), visited);
}

TEST(KrRoutingCheckDisjoint, TraversalWithNullPointReturnsOne) {
    KrRoutingCheck check;
    std::vector<KrRoutingWayPoint*> visited;
    std::vector<KrRouteSegment*> piece;
    EXPECT_EQ(1, check.TraversalSegmentByPoint(nullptr, nullptr, visited, piece));
    EXPECT_TRUE(visited.empty());
    EXPECT_TRUE(piece.empty());
}

TEST(KrRoutingCheckDisjoint, MiniDisjointStartsEachPieceAtTheStartEnd) {
    // A(0,0) B(10,0) C(20,0) D(30,0): 2 = C-B drawn from C (ends [C,B]), 1 = A-B, 3 = C-D;
    // far away 4 = (100,0)-(110,0). Lengths 1, 1, 1 and 4.
    // Piece of 2 from its start C: C lists [2,3], so 3; then from B ([2,1]): 1. Piece 2, 3, 1
    // (3 < 4). Starting at the root point B instead would give 2, 1, 3.
    ModelSketch sketch;
    KrRoutingWayPoint* a = sketch.Point(0, 0);
    KrRoutingWayPoint* b = sketch.Point(10, 0);
    KrRoutingWayPoint* c = sketch.Point(20, 0);
    KrRoutingWayPoint* d = sketch.Point(30, 0);
    KrRouteSegment* s2 = sketch.Segment(2, 1, c, b);
    KrRouteSegment* s1 = sketch.Segment(1, 1, a, b);
    KrRouteSegment* s3 = sketch.Segment(3, 1, c, d);
    KrRouteSegment* s4 = sketch.Segment(4, 4, sketch.Point(100, 0), sketch.Point(110, 0));
    KrRoutingCheck check;
    std::vector<KrRouteSegment*> segs{s2, s1, s3, s4};
    std::vector<long> ids;
    EXPECT_EQ(0, check.GetMiniDisjoint(segs, ids));
    EXPECT_EQ((std::vector<long>{2, 3, 1}), ids);
}

TEST(KrRoutingCheckDisjoint, MiniDisjointFirstOfEqualLaterPiecesWins) {
    // Three lone segments of lengths 9, 3, 3: the first 3 wins (3 < 3 is false for the second).
    ModelSketch sketch;
    KrRouteSegment* s1 = sketch.Segment(1, 9, sketch.Point(0, 0), sketch.Point(10, 0));
    KrRouteSegment* s2 = sketch.Segment(2, 3, sketch.Point(0, 20), sketch.Point(10, 20));
    KrRouteSegment* s3 = sketch.Segment(3, 3, sketch.Point(0, 40), sketch.Point(10, 40));
    KrRoutingCheck check;
    std::vector<KrRouteSegment*> segs{s1, s2, s3};
    std::vector<long> ids;
    EXPECT_EQ(0, check.GetMiniDisjoint(segs, ids));
    EXPECT_EQ(std::vector<long>{2}, ids);
}

TEST(KrRoutingCheckDisjoint, MiniDisjointOfNoSegmentsReturnsOne) {
    KrRoutingCheck check;
    std::vector<KrRouteSegment*> segs;
    std::vector<long> ids;
    EXPECT_EQ(1, check.GetMiniDisjoint(segs, ids));
    std::vector<KrRouteSegment*> nulls{nullptr, nullptr};
    EXPECT_EQ(1, check.GetMiniDisjoint(nulls, ids));
    EXPECT_TRUE(ids.empty());
}

TEST(KrRoutingCheckDisjoint, MiniDisjointSkipsNullEntries) {
    ModelSketch sketch;
    KrRouteSegment* s1 = sketch.Segment(1, 5, sketch.Point(0, 0), sketch.Point(10, 0));
    KrRouteSegment* s2 = sketch.Segment(2, 2, sketch.Point(0, 20), sketch.Point(10, 20));
    KrRoutingCheck check;
    std::vector<KrRouteSegment*> segs{nullptr, s1, nullptr, s2};
    std::vector<long> ids;
    EXPECT_EQ(0, check.GetMiniDisjoint(segs, ids));
    EXPECT_EQ(std::vector<long>{2}, ids);
}

TEST(KrRoutingCheckDisjoint, MiniDisjointKeepsASegmentListedTwiceInOnePiece) {
    // s1 listed twice: the second entry is grouped with the first, so there is one piece.
    ModelSketch sketch;
    KrRouteSegment* s1 = sketch.Segment(1, 5, sketch.Point(0, 0), sketch.Point(10, 0));
    KrRoutingCheck check;
    std::vector<KrRouteSegment*> segs{s1, s1};
    std::vector<long> ids;
    EXPECT_EQ(0, check.GetMiniDisjoint(segs, ids));
    EXPECT_EQ(std::vector<long>{1}, ids);
}

TEST(KrRoutingCheckDisjoint, OneSegmentNotGroupedIsTheFirstInNoPiece) {
    ModelSketch sketch;
    KrRouteSegment* s1 = sketch.Segment(1, 1, sketch.Point(0, 0), sketch.Point(1, 0));
    KrRouteSegment* s2 = sketch.Segment(2, 1, sketch.Point(0, 2), sketch.Point(1, 2));
    KrRouteSegment* s3 = sketch.Segment(3, 1, sketch.Point(0, 4), sketch.Point(1, 4));
    KrRouteSegment* s4 = sketch.Segment(4, 1, sketch.Point(0, 6), sketch.Point(1, 6));
    KrRoutingCheck check;
    std::vector<KrRouteSegment*> segs{s1, s2, s3, s4};
    std::vector<std::vector<KrRouteSegment*>> pieces{{s1}, {s4, s2}};
    KrRouteSegment* seg = nullptr;
    EXPECT_EQ(0, check.GetOneSegmentNotGrouped(segs, pieces, seg));
    EXPECT_EQ(s3, seg);
}

TEST(KrRoutingCheckDisjoint, OneSegmentNotGroupedIsNullWhenAllAreGrouped) {
    ModelSketch sketch;
    KrRouteSegment* s1 = sketch.Segment(1, 1, sketch.Point(0, 0), sketch.Point(1, 0));
    KrRouteSegment* s2 = sketch.Segment(2, 1, sketch.Point(0, 2), sketch.Point(1, 2));
    KrRoutingCheck check;
    std::vector<KrRouteSegment*> segs{s1, s2};
    std::vector<std::vector<KrRouteSegment*>> pieces{{s2, s1}};
    KrRouteSegment* seg = s1;
    EXPECT_EQ(0, check.GetOneSegmentNotGrouped(segs, pieces, seg));
    EXPECT_EQ(nullptr, seg);
    std::vector<KrRouteSegment*> none;
    seg = s1;
    EXPECT_EQ(0, check.GetOneSegmentNotGrouped(none, pieces, seg));
    EXPECT_EQ(nullptr, seg);
}

TEST(KrRoutingCheckDisjoint, TotalLengthStartsAtZeroAndSumsInOrder) {
    // 1.5 + 2.25 = 3.75, exact in binary; the earlier value of total is dropped.
    ModelSketch sketch;
    KrRouteSegment* s1 = sketch.Segment(1, 1.5, sketch.Point(0, 0), sketch.Point(1, 0));
    KrRouteSegment* s2 = sketch.Segment(2, 2.25, sketch.Point(0, 2), sketch.Point(1, 2));
    KrRoutingCheck check;
    std::vector<KrRouteSegment*> segs{s1, s2, nullptr};
    double total = 100.0;
    EXPECT_EQ(0, check.GetTotalLength(segs, total));
    EXPECT_EQ(3.75, total);
    std::vector<KrRouteSegment*> none;
    EXPECT_EQ(0, check.GetTotalLength(none, total));
    EXPECT_EQ(0.0, total);
}

TEST(KrRoutingCheckDisjoint, FirstSegmentWithOneEndIsAPieceOfItsOwn) {
    // Segment 1 has the single end A, so no root point: its piece is [1] alone, one entry for two
    // segments. Its GetMiniDisjoint piece is [1] too (no start end); 2 (from A) then picks up 1
    // again through A: 2, 1 with total 2 + 3 = 5, more than 3.
    ModelSketch sketch;
    KrRoutingWayPoint* a = sketch.Point(0, 0);
    KrRoutingWayPoint* b = sketch.Point(10, 0);
    sketch.Segment(1, 3, a, a);
    sketch.Segment(2, 2, a, b);
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(8, check.CheckDisjoint(&sketch, ids));
    EXPECT_EQ(std::vector<long>{1}, ids);
}

// ---- Large sketches ----------------------------------------------------------------------------

// n segments of length 1 along y = row, ids first .. first+n-1, each the line (i,row)-(i+1,row).
void AddChain(std::vector<std::pair<int, double>>& segments, std::vector<InputLine>& lines,
              int first, int n, double row) {
    for (int i = 0; i < n; ++i) {
        segments.emplace_back(first + i, 1.0);
        lines.push_back({first + i, At(i, row), At(i + 1, row)});
    }
}

TEST(KrRoutingCheckDisjoint, ChainOfOneHundredThousandSegmentsIsOnePiece) {
    // The root (0,0) is a dead end; the traversal then runs 100,000 way points deep from (1,0).
    std::vector<std::pair<int, double>> segments;
    std::vector<InputLine> lines;
    AddChain(segments, lines, 1, 100000, 0.0);
    KrSketch sketch;
    BuildSketch(sketch, segments, lines);
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(0, check.CheckDisjoint(&sketch, ids));
    EXPECT_TRUE(ids.empty());
}

TEST(KrRoutingCheckDisjoint, TwoLongChainsReportTheShorterInChainOrder) {
    // 60,000 segments (total 60000) and 40,000 segments (total 40000). The second piece starts at
    // segment 60001 from its start (0,100), a dead end, then runs along the chain from (1,100).
    std::vector<std::pair<int, double>> segments;
    std::vector<InputLine> lines;
    AddChain(segments, lines, 1, 60000, 0.0);
    AddChain(segments, lines, 60001, 40000, 100.0);
    KrSketch sketch;
    BuildSketch(sketch, segments, lines);
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(8, check.CheckDisjoint(&sketch, ids));
    ASSERT_EQ(40000u, ids.size());
    for (std::size_t i = 0; i < ids.size(); ++i) {
        ASSERT_EQ(static_cast<long>(60001 + i), ids[i]);
    }
}

TEST(KrRoutingCheckDisjoint, OneHundredThousandLoneSegmentsReportTheShortest) {
    // Every segment is its own piece; all have length 2 but segment 77777, of length 1.
    ModelSketch sketch;
    for (int i = 1; i <= 100000; ++i) {
        sketch.Segment(i, i == 77777 ? 1.0 : 2.0, sketch.Point(0, 2.0 * i),
                       sketch.Point(1, 2.0 * i));
    }
    KrRoutingCheck check;
    std::vector<long> ids;
    EXPECT_EQ(8, check.CheckDisjoint(&sketch, ids));
    EXPECT_EQ(std::vector<long>{77777}, ids);
}

}  // namespace
