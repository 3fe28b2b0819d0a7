// What a DXF file consists of: tables, blocks, entities and layouts.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/map/dxf/entities.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map::dxf {

// Names of a file's objects do not depend on the case of ASCII letters.
struct Name_Less {
    using is_transparent = void;
    static char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
    bool operator()(std::string_view a, std::string_view b) const {
        return std::ranges::lexicographical_compare(a, b, {}, lowered, lowered);
    }
};
inline bool same_name(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, Name_Less::lowered, Name_Less::lowered);
}
template <class Value> using By_Name = std::map<std::string, Value, Name_Less>;

template <class Value> const Value* find(const By_Name<Value>& table, std::string_view name) {
    const auto found = table.find(name);
    return found == table.end() ? nullptr : &found->second;
}

// Widths of lines in hundredths of a millimetre.
inline constexpr std::int64_t weight_by_layer = -1, weight_by_block = -2;

struct Layer {
    std::int64_t color = 7;       // number in the colour table; below 0 = the layer is off
    std::int64_t true_color = -1; // 0xRRGGBB; below 0 = none
    bool frozen = false, plotted = true;
    std::string_view line_type;
    std::int64_t weight = -3; // below 0 = the usual one
    std::string_view handle;

    bool is_shown() const { return color >= 0 && !frozen && plotted; }
};

struct Block {
    Position base;
    std::vector<Entity> entities;
};

struct Text_Style {
    double height = 0; // 0 = the texts' own
    double width = 1;
    double oblique = 0; // degrees
};

// Sizes of dimensions and leaders.
struct Dimension_Style {
    double scale = 1, arrow = 0.18, text_height = 0.18, gap = 0.09;
};

// A sheet of paper in the drawing's units.
struct Layout {
    std::string name, block;
    Extent extent{};
    double unit = 1; // millimetres
    int order = 0;
};

struct Drawing {
    By_Name<Layer> layers;
    By_Name<std::vector<double>> line_types; // dashes and gaps by turns; empty = solid
    By_Name<Text_Style> text_styles;
    By_Name<Dimension_Style> dimension_styles;
    By_Name<Block> blocks;
    std::map<std::string, Group, std::less<>> header; // the first value of each variable
    std::vector<Layout> layouts;                      // without model space, in the order of their tabs
    std::vector<Entity> entities;
};

// Throws Map_Error and Load_Error.
Drawing read_drawing(const std::string& file, std::string_view content, Load_Limits& limits);

} // namespace vorna::drawing::map::dxf
