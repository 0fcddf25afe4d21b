// Reads the host's route data into a routing sketch: segment ids, route values, entity lengths
// and the end points of every sketch entity.
#pragma once

#include <krlayout/host/KrHostRef.h>
#include <krlayout/krlayout_export.h>
#include <krlayout/model/ALPoint.h>

#include <map>
#include <vector>

class IHostRouteContainer;
class IHostUnknown;
class IRoutingSketch;

class KRLAYOUT_EXPORT KrHostRouteReader {
public:
    // The container is not owned and must outlive the reader.
    explicit KrHostRouteReader(IHostRouteContainer* container);

    // Appends the route segment ids in the host's order; 1 when there are none (or no container).
    // A count above 2^24 is taken as a broken answer: no ids.
    int ReadRouteSegmentIds(std::vector<int>& ids);
    // Inserts (id, route value) for every id, in a map ordered by id; an id met twice keeps its
    // first value. 1 without a container.
    int ReadRouteValues(std::vector<int> const& ids, std::map<int, double>& values);
    // Sets `length` to the summed length of the segment's sketch entities; 1, with `length`
    // untouched, when the segment has no entity (or without a container).
    int ReadSegmentLength(int segmentId, double& length);
    // For every entry in ascending id order: appends the id to `records` and creates the segment
    // in the sketch with its summed length and its route value (the diameter). 1 for a null
    // sketch or a missing container.
    int CreateRouteSegments(std::map<int, double> const& values, IRoutingSketch* sketch,
                            std::vector<int>& records);
    // For every id in order: the start and end point of each of its entities appended to
    // `points`, and (id, entity count) inserted into `linesPerSegment` if absent. 1 without a
    // container.
    int ReadWayPoints(std::vector<int> const& ids, std::map<long, long>& linesPerSegment,
                      std::vector<ALPoint>& points);
    // ReadWayPoints, then the sketch's CreateWayPoint with the map. 1 for a null sketch.
    int CreateWayPoints(std::vector<int> const& ids, IRoutingSketch* sketch);

    // The sketch entities of one segment, in the segment's order, each with its own reference
    // (objects the host leaves null are dropped). The count is the host's entity count (negative
    // counts, and counts above 2^24, as 0); 1 for a null container.
    static int FetchEntities(IHostRouteContainer* container, int segmentId,
                             std::vector<KrHostRef<IHostUnknown>>& entities, int* count = nullptr);
    // Appends the start and end point of one entity, read by its kind: a line or an arc gives its
    // own end points, another entity those of its curve. Nothing is appended (and 1 returned) for
    // an entity without the sketch-entity interface, without a curve, or with an end point the
    // host does not give.
    static int ReadEntityEndPoints(IHostUnknown* entity, std::vector<ALPoint>& points);

private:
    IHostRouteContainer* container;
};
