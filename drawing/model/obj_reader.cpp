// OBJ: positions, normals, polygons, lines, points, and materials with their colours and images.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <span>

#include "drawing/files/helpers.h"
#include "drawing/files/memory_allowance.h"
#include "drawing/model/corner_table.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/obj_lines.h"
#include "drawing/model/obj_materials.h"
#include "drawing/model/polygon.h"
#include "drawing/model/text_cursor.h"
#include "drawing/model/text_pieces.h"

namespace vorna::drawing::model {
namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;

VT_Vector read_vector(Text_Cursor& cursor, const char* expected) {
    const float x = cursor.number(expected);
    const float y = cursor.number(expected);
    const float z = cursor.number(expected);
    return {x, y, z};
}

class Obj_Reader {
public:
    Obj_Reader(const std::string& file, std::string_view content, Load_Limits& limits)
        : file_(file), content_(content), limits_(limits), memory_(limits, file_), cursor_(file, content),
          materials_(file_, mesh_, limits) {}

    // Threads read the plain lines of pieces side by side. What their faces name is known when all before them has been joined.
    Mesh read() {
        const Text_Pieces pieces(content_);
        const std::uint64_t place_bytes = std::min(2 * Text_Pieces::usual_size, content_.size()) * Obj_Lines::memory_ratio;
        const std::size_t threads = threads_for_pieces(limits_, place_bytes), places = places_in_order(threads);
        const std::uint64_t memory = places * place_bytes;
        if (memory > limits_.memory_left()) {
            read_statements(content_.data() + content_.size());
        } else {
            const Load_Limits::Loan loan(limits_, file_, memory);
            std::vector<Obj_Lines> lines(places);
            share_in_order(
                pieces.count(), threads, [&](std::size_t piece, std::size_t place) { lines[place].read(pieces[piece]); },
                [&](std::size_t piece, std::size_t place) {
                    join(lines[place], pieces[piece]);
                    return true;
                });
        }
        if (positions_.empty() && foreign_) {
            foreign_->fail("lines of an OBJ model, as v X Y Z");
        }
        return take_mesh();
    }

private:
    void read_statements(const char* end) {
        for (; cursor_.place() < end; cursor_.next_line()) {
            read_statement();
        }
    }

    void read_statement() {
        const std::string_view keyword = cursor_.word();
        if (keyword.starts_with('v')) {
            memory_.take(position_memory);
        }
        if (keyword == "v") {
            read_position();
        } else if (keyword == "vn") {
            normals_.push_back(read_vector(cursor_, "a normal's component"));
        } else if (keyword == "vt") {
            read_coordinate();
        } else if (keyword == "f") {
            read_face();
        } else if (keyword == "l") {
            read_line();
        } else if (keyword == "p") {
            read_points();
        } else if (keyword == "usemtl") {
            use_material(cursor_.rest_of_line());
        } else if (keyword == "s") {
            use_smoothing_group(cursor_.word());
        } else if (keyword == "mtllib") {
            materials_.read_libraries(cursor_.rest_of_line());
        } else if (!foreign_ && is_foreign(keyword)) {
            foreign_ = cursor_.at(keyword.data());
        }
    }

    // The cursor is at the beginning of the piece, and behind it afterwards. Pieces that are not plain, or whose faces name what
    // is not there, are read by statements, which tell what is wrong.
    void join(const Obj_Lines& lines, std::string_view piece) {
        const auto are_enough = [](const auto& list, std::int64_t needed) {
            return needed <= static_cast<std::int64_t>(list.size());
        };
        if (!lines.is_plain || !are_enough(positions_, lines.needed_positions) || !are_enough(normals_, lines.needed_normals) ||
            !are_enough(coordinates_, lines.needed_coordinates)) {
            read_statements(piece.data() + piece.size());
            return;
        }
        const std::int64_t first_line = cursor_.line();
        Obj_Counts done;
        for (const Obj_Lines::Other& other : lines.others) {
            append(lines, done, other.before);
            done = other.before;
            cursor_ = cursor_.at(other.start, first_line + other.line);
            read_statement();
        }
        append(lines, done, lines.counts());
        cursor_ = cursor_.at(piece.data() + piece.size(), first_line + lines.lines);
    }

    // Vertices and faces from one place in a piece to another.
    void append(const Obj_Lines& lines, const Obj_Counts& from, const Obj_Counts& to) {
        memory_.take(position_memory * (std::uint64_t{to.positions} - from.positions + to.normals - from.normals +
                                        to.coordinates - from.coordinates));
        const auto add = [](auto& list, const auto& more, std::uint32_t first, std::uint32_t end) {
            list.insert(list.end(), more.begin() + first, more.begin() + end);
        };
        add(positions_, lines.positions, from.positions, to.positions);
        add(normals_, lines.normals, from.normals, to.normals);
        add(coordinates_, lines.coordinates, from.coordinates, to.coordinates);
        const Obj_Corner* next = lines.corners.data() + from.corners;
        for (std::uint32_t face = from.faces; face < to.faces; ++face) {
            add_face({next, lines.face_sizes[face]});
            next += lines.face_sizes[face];
        }
    }

    void add_face(std::span<const Obj_Corner> corners) {
        const bool has_image = materials_.has_image(material_);
        const std::size_t vertices = corners_.corners().size();
        polygon_.clear();
        for (const Obj_Corner& corner : corners) {
            polygon_.push_back(
                corners_.index_of({corner.position, corner.normal, material_, has_image ? corner.coordinate : none}));
        }
        places_.clear();
        for (std::size_t i = 0; polygon_.size() > 3 && i < polygon_.size(); ++i) {
            places_.push_back(positions_[corners[i].position]);
        }
        memory_.take(vertex_memory * (corners_.corners().size() - vertices) + triangle_memory * polygon_.size());
        append_polygon(mesh_, polygon_, places_, file_, limits_);
    }

    // Exporters have statements of their own, so that a line that nobody knows is an error only where no vertex is.
    static bool is_foreign(std::string_view keyword) {
        constexpr std::array<std::string_view, 4> known{"o", "g", "s", "vp"};
        return !keyword.empty() && keyword.front() != '#' && std::ranges::find(known, keyword) == known.end();
    }

    // Three numbers behind the coordinates are the vertex's colour.
    void read_position() {
        positions_.push_back(read_vector(cursor_, "a vertex coordinate"));
        if (cursor_.at_statement_end()) {
            return;
        }
        std::array<float, 3> color{};
        for (float& channel : color) {
            const std::string_view word = cursor_.word();
            const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), channel);
            if (error != std::errc{} || stop != word.data() + word.size() || !(channel >= 0 && channel <= 255)) {
                return;
            }
        }
        limits_.take_memory(file_, sizeof(VT_Vector));
        colors_.resize(positions_.size() - 1, {-1, 0, 0});
        colors_.push_back({color[0], color[1], color[2]});
        largest_channel_ = std::max({largest_channel_, color[0], color[1], color[2]});
    }

    // Channels run to 1, or to 255 where one of the file is larger than 1.
    VT_RGB32 own_color(std::uint32_t position) const {
        const float scale = largest_channel_ > 1 ? 1.0F : 255.0F;
        const auto channel = [scale](float value) { return static_cast<std::uint8_t>(value * scale + 0.5F); };
        const VT_Vector& color = colors_[position];
        return {channel(color.z), channel(color.y), channel(color.x), 255};
    }

    // One-based from the front, or negative from the back.
    std::uint32_t read_index(std::size_t count, const char* kind) {
        cursor_.skip_blanks();
        const char* const start = cursor_.place();
        const std::int64_t given = cursor_.integer(kind);
        const auto limit = static_cast<std::int64_t>(count);
        const std::int64_t index = given < 0 ? limit + given : given - 1;
        if (limit == 0) {
            cursor_.at(start).fail("no " + std::string(kind + 2) + ", since nothing comes before that it could name");
        }
        if (index < 0 || index >= limit || given == 0) {
            cursor_.at(start).fail(std::string(kind) + " from 1 to " + std::to_string(limit) + " or from -" +
                                   std::to_string(limit) + " to -1");
        }
        return static_cast<std::uint32_t>(index);
    }

    // Texture coordinates count only where there is an image, and do not part vertices elsewhere.
    std::uint32_t read_texture_index() {
        if (materials_.has_image(material_)) {
            return read_index(coordinates_.size(), "a texture index");
        }
        cursor_.integer("a texture index");
        return none;
    }

    // Both numbers behind slashes may be left out, the slashes too.
    Obj_Corner read_corner() {
        const std::uint32_t position = read_index(positions_.size(), "a vertex index");
        std::uint32_t normal = none, coordinate = none;
        if (cursor_.accept('/') && !cursor_.at_word_end()) {
            coordinate = cursor_.at('/') ? none : read_texture_index();
            if (cursor_.accept('/') && !cursor_.at_word_end()) {
                normal = read_index(normals_.size(), "a normal index");
            }
        }
        return {position, coordinate, normal};
    }

    void read_face() {
        face_.clear();
        do {
            face_.push_back(read_corner());
        } while (face_.size() < 3 || !cursor_.at_statement_end());
        add_face(face_);
    }

    // A vertex of a line or point: normals and texture coordinates mean nothing there.
    std::uint32_t read_plain_corner() {
        const std::uint32_t position = read_index(positions_.size(), "a vertex index");
        cursor_.finish_word();
        const std::size_t vertices = corners_.corners().size();
        const std::uint32_t corner = corners_.index_of({position, none, material_, none});
        memory_.take(vertex_memory * (corners_.corners().size() - vertices) + 2 * sizeof corner);
        return corner;
    }

    void read_line() {
        std::uint32_t from = read_plain_corner();
        do {
            const std::uint32_t to = read_plain_corner();
            mesh_.lines.insert(mesh_.lines.end(), {from, to});
            from = to;
        } while (!cursor_.at_statement_end());
    }

    void read_points() {
        do {
            mesh_.points.push_back(read_plain_corner());
        } while (!cursor_.at_statement_end());
    }

    // Vertices without any element are a cloud, in which the normals are those of the vertices when there are as many.
    void make_cloud() {
        const bool has_normals = normals_.size() == positions_.size();
        limits_.take_memory(file_, vertex_memory * positions_.size());
        for (std::uint32_t v = 0; v < positions_.size(); ++v) {
            mesh_.points.push_back(corners_.index_of({v, has_normals ? v : none, material_, none}));
        }
    }

    void read_coordinate() {
        const float u = cursor_.number("a texture coordinate");
        coordinates_.push_back({u, cursor_.at_statement_end() ? 0 : cursor_.number("a texture coordinate")});
    }

    // The triangles since the last change are of the group in use.
    void note_smoothing_group() {
        if (!smoothing_.empty() || smoothing_group_ != by_angle) {
            smoothing_.resize(mesh_.triangle_count(), smoothing_group_);
        }
    }

    // A number, or `off`, which 0 stands for as well. Others say nothing of edges.
    void use_smoothing_group(std::string_view name) {
        note_smoothing_group();
        std::uint32_t group = by_angle;
        if (std::from_chars(name.data(), name.data() + name.size(), group).ec != std::errc{} && name != "off") {
            smoothing_group_ = by_angle;
        } else {
            smoothing_group_ = group == 0 ? not_smooth : group;
        }
    }

    // The triangles since the last change are of the material in use.
    void note_material() { triangle_materials_.resize(mesh_.triangle_count(), material_); }

    void use_material(std::string_view name) {
        note_material();
        material_ = materials_.find(name);
    }

    Mesh take_mesh() {
        if (mesh_.is_empty()) {
            make_cloud();
        }
        note_material();
        note_smoothing_group();
        Mesh& mesh = mesh_;
        mesh.smoothing = std::move(smoothing_);
        const auto& keys = corners_.corners();
        mesh.positions.reserve(keys.size());
        for (const auto& key : keys) {
            mesh.positions.push_back(positions_[key[0]]);
        }
        if (!normals_.empty()) {
            mesh.normals.reserve(keys.size());
            for (const auto& key : keys) {
                mesh.normals.push_back(key[1] == none ? VT_Vector{} : normals_[key[1]]);
            }
        }
        if (!materials_.empty() || !colors_.empty()) {
            colors_.resize(colors_.empty() ? 0 : positions_.size(), {-1, 0, 0});
            mesh.colors.reserve(keys.size());
            for (const auto& key : keys) {
                const bool has_own = !colors_.empty() && colors_[key[0]].x >= 0;
                mesh.colors.push_back(has_own ? own_color(key[0]) : materials_.color_of(key[2]));
            }
        }
        if (!materials_.empty()) {
            mesh.triangle_materials = std::move(triangle_materials_);
        }
        if (!mesh.images.empty()) {
            mesh.coordinates.reserve(keys.size());
            for (const auto& key : keys) {
                mesh.coordinates.push_back(key[3] == none ? Texture_Point{} : materials_.mapped(coordinates_[key[3]], key[2]));
            }
        }
        materials_.finish();
        return std::move(mesh_);
    }

    const std::string& file_;
    std::string_view content_;
    Load_Limits& limits_;
    Memory_Allowance memory_;
    Text_Cursor cursor_;
    std::vector<VT_Vector> positions_, normals_;
    std::vector<VT_Vector>
        colors_; // by position: red, green, blue, or -1 where the file has none; shorter when the last have none
    float largest_channel_ = 0;
    std::vector<Texture_Point> coordinates_;
    std::vector<Obj_Corner> face_;       // being read
    std::vector<std::uint32_t> polygon_; // vertices of a face
    std::vector<VT_Vector> places_;      // of its corners
    std::vector<std::uint32_t> triangle_materials_, smoothing_;
    Corner_Table corners_;
    Mesh mesh_;
    Obj_Materials materials_;
    std::uint32_t material_ = none, smoothing_group_ = by_angle;
    std::optional<Text_Cursor> foreign_; // before the first line that nobody knows
};

} // namespace

Mesh read_obj(const std::string& file, std::string_view content, Load_Limits& limits) {
    return Obj_Reader(file, content, limits).read();
}

} // namespace vorna::drawing::model
