// A DXF file as groups and entities.
#include "drawing/map/dxf_entities.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <optional>

namespace vorna::drawing::map::dxf {
namespace {

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    return first == std::string_view::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// Reads pairs of lines: a code and its value.
class Groups {
public:
    Groups(const std::string& file, std::string_view content) : values_(file), rest_(content) { advance(); }

    const std::optional<Group>& current() const noexcept { return group_; }
    bool at(int code, std::string_view value) const { return group_ && group_->code == code && group_->value == value; }

    void advance() {
        if (rest_.empty()) {
            group_.reset();
            return;
        }
        const std::string_view code = next_line();
        Group group{0, code, line_};
        group.code = static_cast<int>(values_.integer(group));
        if (rest_.empty()) {
            values_.fail(line_, "a value after its code, found the end of the file");
        }
        group.value = next_line();
        group.line = line_;
        group_ = group;
    }

    // Skips the name of an object and its groups.
    Entity entity() {
        Entity entity{group_->value, group_->line, {}, {}, {}};
        for (advance(); group_ && group_->code != 0; advance()) {
            entity.groups.push_back(*group_);
        }
        const auto code_of = [&](std::uint32_t i) { return entity.groups[i].code; };
        entity.by_code.resize(entity.groups.size());
        std::iota(entity.by_code.begin(), entity.by_code.end(), 0U);
        std::ranges::stable_sort(entity.by_code, {}, code_of);
        const auto same_code = [&](std::uint32_t a, std::uint32_t b) { return code_of(a) == code_of(b); };
        entity.by_code.erase(std::unique(entity.by_code.begin(), entity.by_code.end(), same_code), entity.by_code.end());
        entity.by_code.shrink_to_fit();
        return entity;
    }

    [[noreturn]] void fail_at_end(const std::string& expected) const {
        values_.fail(line_, expected + ", found the end of the file");
    }

    const Values& values() const noexcept { return values_; }

private:
    std::string_view next_line() {
        const std::size_t end = std::min(rest_.find('\n'), rest_.size());
        const std::string_view line = trimmed(rest_.substr(0, end));
        rest_.remove_prefix(std::min(end + 1, rest_.size()));
        ++line_;
        return line;
    }

    Values values_;
    std::string_view rest_;
    std::int64_t line_ = 0;
    std::optional<Group> group_;
};

// Reads up to the object of this name, and skips it.
std::vector<Entity> read_entities(Groups& groups, std::string_view end) {
    std::vector<Entity> entities;
    while (!groups.at(0, end)) {
        if (!groups.current()) {
            groups.fail_at_end("0 " + std::string(end));
        }
        if (groups.current()->code != 0) {
            groups.advance();
            continue;
        }
        Entity entity = groups.entity();
        if (entity.type == "POLYLINE") {
            while (groups.at(0, "VERTEX")) {
                entity.parts.push_back(groups.entity());
            }
            if (groups.at(0, "SEQEND")) {
                groups.entity();
            }
        }
        entities.push_back(std::move(entity));
    }
    groups.advance();
    return entities;
}

void read_layers(Groups& groups, Drawing& drawing) {
    const Values& values = groups.values();
    for (const Entity& entry : read_entities(groups, "ENDSEC")) {
        if (entry.type == "LAYER" && !values.text(entry, 2).empty()) {
            drawing.layers[std::string(values.text(entry, 2))] = {values.integer(entry, 62, 7), values.integer(entry, 420, -1),
                                                                  (values.integer(entry, 70, 0) & 1) != 0};
        }
    }
}

void read_blocks(Groups& groups, Drawing& drawing) {
    const Values& values = groups.values();
    while (!groups.at(0, "ENDSEC")) {
        if (!groups.current()) {
            groups.fail_at_end("0 ENDSEC");
        }
        if (!groups.at(0, "BLOCK")) {
            groups.advance();
            continue;
        }
        const Entity head = groups.entity();
        drawing.blocks[std::string(values.text(head, 2))] = {{values.number(head, 10, 0), values.number(head, 20, 0)},
                                                             read_entities(groups, "ENDBLK")};
    }
    groups.advance();
}

template <class Value> std::optional<Value> parsed(std::string_view text) {
    Value value{};
    const char* start = text.data() + (text.starts_with('+') ? 1 : 0);
    const auto [stop, error] = std::from_chars(start, text.data() + text.size(), value);
    return error == std::errc{} && stop == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

std::string shown(std::string_view value) {
    std::string text(value.substr(0, 40));
    std::ranges::replace_if(
        text, [](char c) { return c < ' ' || c > '~'; }, '?');
    return "'" + text + "'";
}

} // namespace

void Values::fail(std::int64_t line, const std::string& expected) const {
    throw Map_Error(*file_ + ":" + std::to_string(line) + ": expected " + expected);
}

double Values::number(const Group& group) const {
    const auto value = parsed<double>(group.value);
    if (!value || !std::isfinite(*value)) {
        fail(group.line, "a number, found " + shown(group.value));
    }
    return *value;
}

std::int64_t Values::integer(const Group& group) const {
    const auto value = parsed<std::int64_t>(group.value);
    if (!value) {
        fail(group.line, "a whole number, found " + shown(group.value));
    }
    return *value;
}

// Blocks may be inserted a million times, with a dozen look-ups for each entity.
const Group* Entity::find(int code) const {
    const auto found = std::ranges::lower_bound(by_code, code, {}, [&](std::uint32_t i) { return groups[i].code; });
    return found == by_code.end() || groups[*found].code != code ? nullptr : &groups[*found];
}

double Values::number(const Entity& entity, int code, double otherwise) const {
    const Group* group = entity.find(code);
    return group ? number(*group) : otherwise;
}

std::int64_t Values::integer(const Entity& entity, int code, std::int64_t otherwise) const {
    const Group* group = entity.find(code);
    return group ? integer(*group) : otherwise;
}

std::string_view Values::text(const Entity& entity, int code) const {
    const Group* group = entity.find(code);
    return group ? group->value : std::string_view();
}

const Group& Values::required(const Entity& entity, int code) const {
    const Group* group = entity.find(code);
    if (!group) {
        fail(entity.line, "a group " + std::to_string(code) + " in this " + std::string(entity.type) + ", found none");
    }
    return *group;
}

Position Values::position(const Entity& entity, int code) const {
    return {number(required(entity, code)), number(required(entity, code + 10))};
}

Drawing read_drawing(const std::string& file, std::string_view content, Load_Limits& limits) {
    if (content.find('\0') != std::string_view::npos) {
        throw Map_Error(file + ": expected DXF as text, found a binary file");
    }
    constexpr std::uint64_t group_memory = 2 * sizeof(Group) + sizeof(std::uint32_t); // lists grow by doubling
    limits.take_memory(file, static_cast<std::uint64_t>(std::ranges::count(content, '\n')) / 2 * group_memory);
    Drawing drawing;
    Groups groups(file, content);
    bool any_section = false;
    while (groups.current() && !groups.at(0, "EOF")) {
        if (!groups.at(0, "SECTION")) {
            groups.advance();
            continue;
        }
        groups.advance();
        any_section = true;
        const std::string_view name = groups.current() ? groups.current()->value : std::string_view();
        if (name == "TABLES") {
            read_layers(groups, drawing);
        } else if (name == "BLOCKS") {
            read_blocks(groups, drawing);
        } else if (name == "ENTITIES") {
            drawing.entities = read_entities(groups, "ENDSEC");
        }
    }
    if (!any_section) {
        throw Map_Error(file + ":1: expected DXF with sections, found none");
    }
    return drawing;
}

} // namespace vorna::drawing::map::dxf
