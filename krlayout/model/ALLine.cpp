#include <krlayout/model/ALLine.h>

ALLine::ALLine() : start(), end(), id(0) {}

ALLine::ALLine(double const* s, double const* e) : start(s), end(e), id(0) {}

// The id is not part of the line's value: a copy starts without one.
ALLine::ALLine(ALLine const& other) : start(other.start), end(other.end), id(0) {}

ALLine ALLine::operator=(ALLine const& other)
{
    start = other.start;
    end = other.end;
    // The copy constructor leaves the returned line's id unset.
    return ALLine(*this);
}

void ALLine::SetId(long newId)
{
    id = newId;
}

long ALLine::GetId() const
{
    return id;
}
