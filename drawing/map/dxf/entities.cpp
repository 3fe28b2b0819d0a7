// A DXF file as groups and entities.
#include "drawing/map/dxf/entities.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>

namespace vorna::drawing::map::dxf {
namespace {

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    return first == std::string_view::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
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

void Groups::advance() {
    if (rest_.empty()) {
        group_.reset();
        return;
    }
    const std::string_view code = trimmed(next_line());
    Group group{0, code, line_};
    group.code = static_cast<int>(values_.integer(group));
    if (rest_.empty()) {
        values_.fail(line_, "a value after its code, found the end of the file");
    }
    // Blanks at the ends belong to texts.
    const bool is_text = group.code == 1 || group.code == 3;
    group.value = is_text ? next_line() : trimmed(next_line());
    group.line = line_;
    group_ = group;
}

std::string_view Groups::next_line() {
    const std::size_t end = std::min(rest_.find('\n'), rest_.size());
    std::string_view line = rest_.substr(0, end);
    line.remove_suffix(line.ends_with('\r') ? 1 : 0);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    ++line_;
    return line;
}

Entity Groups::entity() {
    // Data of applications in braces, extended data, and objects embedded at the end have codes of their own meaning.
    constexpr int braces = 102, embedded = 101, extended = 1000;
    Entity entity{group_->value, group_->line, {}, {}, {}};
    const bool has_overrides = entity.type == "DIMENSION" || entity.type == "LEADER"; // of their style, in extended data
    bool in_braces = false, at_end = false;
    for (advance(); group_ && group_->code != 0; advance()) {
        if (group_->code == braces) {
            in_braces = group_->value.starts_with('{');
        } else if (group_->code == embedded) {
            at_end = true;
        } else if (!in_braces && !at_end && (group_->code < extended || has_overrides)) {
            entity.groups.push_back(*group_);
        }
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
        const std::string_view part = entity.type == "POLYLINE" ? "VERTEX" : entity.type == "INSERT" ? "ATTRIB" : "";
        if (!part.empty()) {
            while (groups.at(0, part)) {
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

Position Values::position(const Entity& entity, int code, Position otherwise) const {
    return {number(entity, code, otherwise.x), number(entity, code + 10, otherwise.y)};
}

} // namespace vorna::drawing::map::dxf
