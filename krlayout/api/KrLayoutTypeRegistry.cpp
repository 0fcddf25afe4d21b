#include <krlayout/api/KrLayoutTypeRegistry.h>

#include <krlayout/api/KrLayoutResult.h>
#include <krlayout/layout/KrFormboardLayout.h>
#include <krlayout/layout/KrRoutingLayout.h>
#include <krlayout/layout/e_LayOutType.h>

#include <cctype>

std::vector<KrLayoutTypeRegistry::Type> const& KrLayoutTypeRegistry::Types()
{
    static std::vector<Type> const types = {
        {DiameterType, "diameter", "grid layout, segments ranked by diameter"},
        {LengthType, "length", "grid layout, segments ranked by length"},
        {FormboardType, "formboard", "board drawing: true lengths, clearance kept"},
    };
    return types;
}

bool KrLayoutTypeRegistry::Find(std::string const& text, int& type)
{
    std::string lower;
    lower.reserve(text.size());
    for (char c : text) {
        lower.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
    }
    for (Type const& t : Types()) {
        if (lower == t.name || lower == std::to_string(t.number)) {
            type = t.number;
            return true;
        }
    }
    return false;
}

std::string KrLayoutTypeRegistry::Name(int type)
{
    for (Type const& t : Types()) {
        if (t.number == type) {
            return t.name;
        }
    }
    return std::string();
}

bool KrLayoutTypeRegistry::IsType(int type)
{
    return !Name(type).empty();
}

std::string KrLayoutTypeRegistry::Choices()
{
    std::vector<Type> const& types = Types();
    std::string out;
    for (std::size_t i = 0; i < types.size(); ++i) {
        if (i > 0) {
            out += i + 1 == types.size() ? " or " : ", ";
        }
        out += types[i].name;
    }
    return out;
}

int KrLayoutTypeRegistry::FacadeType(int requested)
{
    return requested == LengthType ? LengthType : DiameterType;
}

int KrLayoutTypeRegistry::LayOut(IRoutingSketch* sketch, int type, double clearance,
                                 KrLayoutResult& figures)
{
    if (type == FormboardType) {
        KrFormboardLayout layout;
        layout.SetClearance(clearance);
        int const status = layout.LayOut(sketch);
        layout.GetCrowdedPointCount(figures.crowdedPoints);
        layout.GetPlacedSegmentCount(figures.placedSegments);
        layout.GetUsedClearance(figures.usedClearance);
        return status;
    }
    KrRoutingLayout layout;
    return layout.LayOut(sketch,
                         FacadeType(type) == LengthType ? LayOutByLength : LayOutByDiameter);
}
