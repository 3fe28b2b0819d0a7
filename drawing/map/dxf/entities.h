// A DXF file as groups and entities.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/map/shapes.h"

namespace vorna::drawing::map::dxf {

// A code for the meaning of the value, and the value, a view of the file's text.
struct Group {
    int code;
    std::string_view value;
    std::int64_t line; // of the value
};

// An object with the groups that follow its name; a polyline's vertices and an insertion's attributes are its parts.
struct Entity {
    std::string_view type;
    std::int64_t line = 0;
    std::vector<Group> groups;
    std::vector<Entity> parts;
    std::vector<std::uint32_t> by_code; // the first group of each code, in the order of codes

    const Group* find(int code) const;
};

// Reads groups' values; messages name the file and the line.
class Values {
public:
    explicit Values(const std::string& file) : file_(&file) {}

    double number(const Group& group) const; // finite
    std::int64_t integer(const Group& group) const;
    // The value of the first group with the code, or the default.
    double number(const Entity& entity, int code, double otherwise) const;
    std::int64_t integer(const Entity& entity, int code, std::int64_t otherwise) const;
    bool has_flag(const Entity& entity, int code, std::int64_t flag) const { return (integer(entity, code, 0) & flag) != 0; }
    std::string_view text(const Entity& entity, int code) const; // empty = none
    // Groups code and code + 10, which the entity must have.
    Position position(const Entity& entity, int code) const;
    Position position(const Entity& entity, int code, Position otherwise) const;
    const Group& required(const Entity& entity, int code) const;

    [[noreturn]] void fail(std::int64_t line, const std::string& expected) const;

private:
    const std::string* file_;
};

// Reads pairs of lines: a code and its value.
class Groups {
public:
    Groups(const std::string& file, std::string_view content) : values_(file), rest_(content) { advance(); }

    const std::optional<Group>& current() const noexcept { return group_; }
    bool at(int code, std::string_view value) const { return group_ && group_->code == code && group_->value == value; }
    void advance();
    // Skips the name of an object and its groups.
    Entity entity();

    [[noreturn]] void fail_at_end(const std::string& expected) const {
        values_.fail(line_, expected + ", found the end of the file");
    }
    const Values& values() const noexcept { return values_; }

private:
    std::string_view next_line();

    Values values_;
    std::string_view rest_;
    std::int64_t line_ = 0;
    std::optional<Group> group_;
};

// Reads up to the object of this name, and skips it.
std::vector<Entity> read_entities(Groups& groups, std::string_view end);

} // namespace vorna::drawing::map::dxf
