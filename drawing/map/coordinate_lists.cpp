// The coordinates of a GeoJSON text.
#include "drawing/map/coordinate_lists.h"

#include <utility>

#include "drawing/files/interruption.h"

namespace vorna::drawing::map {
namespace {

constexpr int deepest = 4;

} // namespace

std::optional<Coordinate_Lists> Coordinate_Lists::split(const std::string& file, std::string_view text, Load_Limits& limits) {
    Coordinate_Lists lists;
    lists.memory_ = Load_Limits::Loan(limits, file, coordinate_memory(text));
    lists.rest_.reserve(text.size());
    Json_Scanner scanner(text);
    const char* copied = text.data();
    while (!scanner.at_end()) {
        if (!scanner.is_at('"')) {
            scanner.skip_sign();
            continue;
        }
        Json_Scanner::String found;
        if (!scanner.read_string(found)) {
            return std::nullopt;
        }
        scanner.skip_space();
        if (!scanner.skip(':')) {
            continue; // a string and no key
        }
        if (found.has_escape) {
            return std::nullopt;
        }
        scanner.skip_space();
        if (found.text != "coordinates" || !scanner.is_at('[')) {
            continue;
        }
        lists.rest_.append(copied, scanner.place()).append(1, '[').append(std::to_string(lists.values_.size())).append(1, ']');
        if (!lists.read(scanner)) {
            return std::nullopt;
        }
        copied = scanner.place();
    }
    lists.rest_.append(copied, scanner.place());
    return lists;
}

// Two numbers or more, of which two count.
bool Coordinate_Lists::read_position(Json_Scanner& scanner) {
    constexpr std::size_t positions_between_looks = 4096;
    if (positions_.size() % positions_between_looks == positions_between_looks - 1) {
        Interruption::check();
    }
    double place[2] = {}, more = 0;
    std::size_t count = 0;
    const bool is_sound = scanner.read_array([&] {
        double& number = count < 2 ? place[count] : more;
        ++count;
        return scanner.read_number(number);
    });
    positions_.push_back({place[0], place[1]});
    return is_sound && count >= 2;
}

// The first position tells how deep all lists must be.
bool Coordinate_Lists::read(Json_Scanner& scanner) {
    const int depth = scanner.list_depth();
    if (depth < 1 || depth > deepest) {
        return false;
    }
    Value value{depth, {count_at(depth), 0}};
    const std::size_t first = positions_.size();
    const bool is_sound = read_lists(scanner, depth);
    value.parts.end = count_at(depth);
    value.position_count = depth > 1 ? positions_.size() - first : 0;
    values_.push_back(value);
    return is_sound;
}

void Coordinate_Lists::clear() noexcept {
    values_.clear();
    positions_.clear();
    paths_.clear();
    polygons_.clear();
}

// How many parts values of this depth have so far.
std::size_t Coordinate_Lists::count_at(int depth) const {
    return depth <= 1 ? positions_.size() : depth <= 3 ? paths_.size() : polygons_.size();
}

bool Coordinate_Lists::read_lists(Json_Scanner& scanner, int depth) {
    if (depth == 1) {
        return read_position(scanner);
    }
    const std::size_t first = depth == 2 ? positions_.size() : paths_.size();
    bool is_empty = true;
    const bool is_sound = scanner.read_array([&] {
        is_empty = false;
        return read_lists(scanner, depth - 1);
    });
    if (depth == 2) {
        paths_.push_back({first, positions_.size()});
    } else if (depth == 3) {
        polygons_.push_back({first, paths_.size()});
    }
    return is_sound && !is_empty;
}

bool Coordinate_Lists::add_to(Shape& shape, std::string_view type, std::size_t number) const {
    const Value& value = values_[number];
    const auto& [first, end] = value.parts;
    const auto is = [&](std::string_view kind, int depth) { return type == kind && value.depth == depth; };
    if (is("Point", 1)) {
        shape.points.push_back(positions_[first]);
    } else if (is("MultiPoint", 2)) {
        const Path points = path(first);
        shape.points.insert(shape.points.end(), points.begin(), points.end());
    } else if (is("LineString", 2)) {
        shape.lines.push_back(path(first));
    } else if (is("MultiLineString", 3)) {
        for (std::size_t line = first; line < end; ++line) {
            shape.lines.push_back(path(line));
        }
    } else if (is("Polygon", 3)) {
        add_rings(value.parts, shape.faces.emplace_back());
    } else if (is("MultiPolygon", 4)) {
        Face& face = shape.faces.emplace_back();
        for (std::size_t polygon = first; polygon < end; ++polygon) {
            add_rings(polygons_[polygon], face);
        }
    } else {
        return false;
    }
    return true;
}

Path Coordinate_Lists::path(std::size_t number) const {
    const auto place = [this](std::size_t position) { return positions_.begin() + static_cast<std::ptrdiff_t>(position); };
    return {place(paths_[number].first), place(paths_[number].end)};
}

void Coordinate_Lists::add_rings(const Range& paths, Face& face) const {
    for (std::size_t ring = paths.first; ring < paths.end; ++ring) {
        face.push_back(without_closing_point(path(ring)));
    }
}

} // namespace vorna::drawing::map
