// The lines of a piece of an OBJ file.
#include "drawing/model/obj_lines.h"

#include <algorithm>
#include <cstring>

#include "drawing/model/plain_line.h"

namespace vorna::drawing::model {

Obj_Counts Obj_Lines::counts() const noexcept {
    const auto size = [](const auto& list) { return static_cast<std::uint32_t>(list.size()); };
    return {size(positions), size(normals), size(coordinates), size(face_sizes), size(corners)};
}

// A vertex with a colour is another line.
bool Obj_Lines::read_vertex(const char* place, const char* end, const char*& stop) {
    const char kind = place != end ? *place : '\n';
    Plain_Line line(kind == 'n' || kind == 't' ? place + 1 : place, end);
    VT_Vector vector;
    if (!line.ends_word() || !line.number(vector.x) || !line.number(vector.y)) {
        return false;
    }
    const bool has_two = kind == 't' && line.finish();
    if (!has_two && !(line.number(vector.z) && line.finish())) {
        return false;
    }
    if (kind == 't') {
        coordinates.push_back({vector.x, vector.y});
    } else {
        (kind == 'n' ? normals : positions).push_back(vector);
    }
    stop = line.place();
    return true;
}

// Indices that count from the back are in other lines.
bool Obj_Lines::read_face(const char* place, const char* end, const char*& stop) {
    constexpr std::size_t most_corners = std::size_t{1} << 16; // lines may be longer than a piece
    const std::size_t first = corners.size();
    Plain_Line line(place, end);
    std::uint32_t positions_end = 0, normals_end = 0, coordinates_end = 0;
    const auto refuse = [&] {
        corners.resize(first);
        return false;
    };
    // Gives the place and keeps the largest number.
    const auto read_index = [&line](std::uint32_t& index, std::uint32_t& largest) {
        const bool is_read = line.digits(index) && index > 0;
        largest = std::max(largest, index);
        --index;
        return is_read;
    };
    for (;;) {
        line.skip_blanks();
        Obj_Corner corner{none, none, none};
        if (!line.at_digit()) {
            break;
        }
        if (corners.size() - first == most_corners || !read_index(corner.position, positions_end)) {
            return refuse();
        }
        if (line.accept('/')) {
            if (!line.accept('/')) {
                if (!read_index(corner.coordinate, coordinates_end)) {
                    return refuse();
                }
                if (line.accept('/') && !read_index(corner.normal, normals_end)) {
                    return refuse();
                }
            } else if (!read_index(corner.normal, normals_end)) {
                return refuse();
            }
        }
        if (!line.ends_word()) {
            return refuse();
        }
        corners.push_back(corner);
    }
    const std::size_t size = corners.size() - first;
    if (size < 3 || !line.finish()) {
        return refuse();
    }
    const auto need = [](std::int64_t& needed, std::uint32_t largest, std::size_t here) {
        needed = std::max(needed, static_cast<std::int64_t>(largest) - static_cast<std::int64_t>(here));
    };
    need(needed_positions, positions_end, positions.size());
    need(needed_normals, normals_end, normals.size());
    need(needed_coordinates, coordinates_end, coordinates.size());
    face_sizes.push_back(static_cast<std::uint32_t>(size));
    stop = line.place();
    return true;
}

void Obj_Lines::read(std::string_view piece) {
    constexpr std::size_t least_bytes_per_other = 16;
    positions.clear();
    normals.clear();
    coordinates.clear();
    corners.clear();
    face_sizes.clear();
    others.clear();
    lines = 0;
    needed_positions = needed_normals = needed_coordinates = 0;
    is_plain = piece.find('\\') == piece.npos;
    const char* place = piece.data();
    const char* const end = place + piece.size();
    const std::size_t most_others = piece.size() / least_bytes_per_other + 1;
    for (; place != end && is_plain; ++lines) {
        const char* const rest = place + 1;
        bool is_read = false;
        if (*place == 'v') {
            is_read = read_vertex(rest, end, place);
        } else if (*place == 'f') {
            is_read = Plain_Line(rest, end).ends_word() && read_face(rest, end, place);
        }
        if (is_read) {
            continue;
        }
        const bool is_group = (*place == 'g' || *place == 'o') && Plain_Line(rest, end).ends_word();
        if (!is_group && *place != '#' && *place != '\n') {
            others.push_back({place, lines, counts()});
            is_plain = others.size() <= most_others;
        }
        const void* const found = std::memchr(place, '\n', static_cast<std::size_t>(end - place));
        place = found ? static_cast<const char*>(found) + 1 : end;
    }
}

} // namespace vorna::drawing::model
