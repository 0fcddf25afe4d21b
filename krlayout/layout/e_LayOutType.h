// The two layout types: they choose the priority, angle and cross-line strategies.
#pragma once

enum e_LayOutType : int {
    LayOutByDiameter = 0,
    LayOutByLength = 1
};
