// A line between two ALPoints with an id that is not part of its value.
#pragma once

#include <krlayout/krlayout_export.h>
#include <krlayout/model/ALPoint.h>

class KRLAYOUT_EXPORT ALLine {
public:
    ALPoint start;
    ALPoint end;

    // Both points at the origin. The id is not set (it reads 0).
    ALLine();
    // start from the first three doubles, end from the second three. The id is not set (it reads 0).
    ALLine(double const* start, double const* end);
    // Copies the six coordinates only; the id is not carried (the copy's id reads 0).
    ALLine(ALLine const& other);

    // Copies the six coordinates into this line, which keeps its own id; returns a line by value
    // whose id is likewise not set.
    ALLine operator=(ALLine const& other);

    void SetId(long id);
    long GetId() const;

private:
    long id;
};
