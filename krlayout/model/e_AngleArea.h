// The angular area a route segment is laid in.
#pragma once

enum e_AngleArea : int {
    e_AngleAreaNone = 0,       // not assigned yet
    e_AngleAreaRoot = 1,       // the root segment, laid first by the layout
    e_AngleAreaPositiveX = 2,  // half-plane towards +x
    e_AngleAreaNegativeX = 3,  // half-plane towards -x
    e_AngleAreaQuarter1 = 4,   // 0 to pi/2
    e_AngleAreaQuarter2 = 5,   // pi/2 to pi
    e_AngleAreaQuarter3 = 6,   // pi to 3pi/2
    e_AngleAreaQuarter4 = 7    // 3pi/2 to 2pi
};
