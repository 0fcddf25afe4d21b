// Numbers points the way the routing sketch merges them into way points: a point equal as an
// ALPoint (within GEO_TOLERANCE in each coordinate) to a point numbered before gets that point's
// number, the first such when several are; any other point gets the next number. Equality is not
// chained: a point that took an earlier one's number is not compared again. A point with a
// coordinate that is not finite equals nothing.
//
// KrSketch::CreateWayPoint applies the same rule to all points of a call at once, in a form made
// for that batch; this index takes points one at a time, for callers that find chain ends or which
// segments meet.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/model/ALPoint.h>

#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

class KRLAYOUT_EXPORT KrPointIndex {
public:
    KrPointIndex();
    ~KrPointIndex();

    // The number of p, numbering it when no point numbered before equals it. Numbers count from 0.
    std::size_t NumberOf(ALPoint const& p);
    // The point a number was first given to.
    ALPoint const& PointOf(std::size_t number) const;
    // How many numbers were given.
    std::size_t Count() const;

private:
    struct CellHash {
        std::size_t operator()(std::pair<double, double> const& cell) const;
    };
    std::vector<ALPoint> points;
    // The numbered points by cells twice as wide as the tolerance: a point finds its equals in its
    // own cell and the eight around it.
    std::unordered_map<std::pair<double, double>, std::vector<std::size_t>, CellHash> cells;
};
