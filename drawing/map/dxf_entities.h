// A DXF file as groups and entities.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map::dxf {

// A code for the meaning of the value, and the value, a view of the file's text.
struct Group {
    int code;
    std::string_view value;
    std::int64_t line; // of the value
};

// An object with the groups that follow its name; a polyline's vertices are its parts.
struct Entity {
    std::string_view type;
    std::int64_t line = 0;
    std::vector<Group> groups;
    std::vector<Entity> parts;
    std::vector<std::uint32_t> by_code; // the first group of each code, in the order of codes

    const Group* find(int code) const;
};

struct Block {
    Position base;
    std::vector<Entity> entities;
};

struct Layer {
    std::int64_t color = 7;       // number in the colour table; below 0 = the layer is off
    std::int64_t true_color = -1; // 0xRRGGBB; below 0 = none
    bool frozen = false;
};

struct Drawing {
    std::map<std::string, Layer, std::less<>> layers;
    std::map<std::string, Block, std::less<>> blocks;
    std::vector<Entity> entities;
};

// Reads groups' values; messages name the file and the line.
class Values {
public:
    explicit Values(const std::string& file) : file_(&file) {}

    double number(const Group& group) const;
    std::int64_t integer(const Group& group) const;
    // The value of the first group with the code, or the default.
    double number(const Entity& entity, int code, double otherwise) const;
    std::int64_t integer(const Entity& entity, int code, std::int64_t otherwise) const;
    std::string_view text(const Entity& entity, int code) const; // empty = none
    // Groups code and code + 10, which the entity must have.
    Position position(const Entity& entity, int code) const;
    const Group& required(const Entity& entity, int code) const;

    [[noreturn]] void fail(std::int64_t line, const std::string& expected) const;

private:
    const std::string* file_;
};

// Throws Map_Error and Load_Error.
Drawing read_drawing(const std::string& file, std::string_view content, Load_Limits& limits);

} // namespace vorna::drawing::map::dxf
