// The layout types, resolved in one place. A type has a number and a name:
//   0 "diameter"   the grid layout, segments ranked by diameter;
//   1 "length"     the grid layout, segments ranked by length;
//   2 "formboard"  the board drawing: every segment at its true length, clearance kept.
// The facade only knows the two grid layouts (1 stays 1, every other number is 0); the plain-data
// run, the board run and the tools reach every type through this registry.
#pragma once

#include <krlayout/krlayout_export.h>

#include <string>
#include <vector>

class IRoutingSketch;
class KrLayoutResult;

class KRLAYOUT_EXPORT KrLayoutTypeRegistry {
public:
    enum : int { DiameterType = 0, LengthType = 1, FormboardType = 2 };

    struct Type {
        int number;
        char const* name;
        char const* description;
    };

    // Every type, in number order.
    static std::vector<Type> const& Types();
    // The type a text names: its name (in any letter case) or its number written in decimal
    // ("0", "1", "2"). False, with `type` untouched, for anything else.
    static bool Find(std::string const& text, int& type);
    // The name of a type number; an empty string for a number that is no type.
    static std::string Name(int type);
    // Whether the number is a type.
    static bool IsType(int type);
    // "diameter, length or formboard" (for messages that list the choices).
    static std::string Choices();

    // The facade's mapping: 1 stays 1, every other number runs as 0.
    static int FacadeType(int requested);

    // Lays the sketch out with the type: 2 the board drawing with the clearance (a negative
    // clearance: the board layout's default), every other number the grid layout of
    // FacadeType(type). The board layout's figures (crowded points, placed segments, clearance
    // used) are written into `figures`. The layout's own status.
    static int LayOut(IRoutingSketch* sketch, int type, double clearance, KrLayoutResult& figures);
};
