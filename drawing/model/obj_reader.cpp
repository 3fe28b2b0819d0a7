// OBJ: positions, normals, polygons, lines, points, and materials with their colours and images.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <map>
#include <optional>
#include <set>

#include "drawing/files/memory_allowance.h"
#include "drawing/files/path.h"
#include "drawing/model/corner_table.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/polygon.h"
#include "drawing/model/text_cursor.h"

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
        : file_(file), limits_(limits), memory_(limits, file_), cursor_(file, content) {}

    Mesh read() {
        for (; !cursor_.at_end(); cursor_.next_line()) {
            const std::string_view keyword = cursor_.word();
            if (keyword.starts_with('v')) {
                memory_.take(position_memory);
            }
            if (keyword == "v") {
                positions_.push_back(read_vector(cursor_, "a vertex coordinate"));
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
                use_material(std::string(cursor_.rest_of_line()));
            } else if (keyword == "s") {
                use_smoothing_group(cursor_.rest_of_line());
            } else if (keyword == "mtllib") {
                read_materials(std::string(cursor_.rest_of_line()));
            } else if (!foreign_ && is_foreign(keyword)) {
                foreign_ = cursor_.at(keyword.data());
            }
        }
        if (positions_.empty() && foreign_) {
            foreign_->fail("lines of an OBJ model, as v X Y Z");
        }
        return take_mesh();
    }

private:
    // Exporters have statements of their own, so that a line that nobody knows is an error only where no vertex is.
    static bool is_foreign(std::string_view keyword) {
        constexpr std::array<std::string_view, 4> known{"o", "g", "s", "vp"};
        return !keyword.empty() && keyword.front() != '#' && std::ranges::find(known, keyword) == known.end();
    }

    // One-based from the front, or negative from the back.
    std::uint32_t read_index(std::size_t count, const char* kind) {
        cursor_.skip_blanks();
        const char* const start = cursor_.place();
        const std::int64_t given = cursor_.integer(kind);
        const auto limit = static_cast<std::int64_t>(count);
        const std::int64_t index = given < 0 ? limit + given : given - 1;
        if (index < 0 || index >= limit || given == 0) {
            cursor_.at(start).fail(std::string(kind) + " from 1 to " + std::to_string(limit) + " or from -" +
                                   std::to_string(limit) + " to -1");
        }
        return static_cast<std::uint32_t>(index);
    }

    bool textured() const { return material_ != none && materials_[material_].material.image != no_image; }

    // Texture coordinates count only where there is an image, and do not part vertices elsewhere.
    std::uint32_t read_texture_index() {
        if (textured()) {
            return read_index(coordinates_.size(), "a texture index");
        }
        cursor_.integer("a texture index");
        return none;
    }

    // Both numbers behind slashes may be left out, the slashes too.
    std::uint32_t read_corner() {
        const std::uint32_t position = read_index(positions_.size(), "a vertex index");
        std::uint32_t normal = none, coordinate = none;
        if (cursor_.accept('/') && !cursor_.at_word_end()) {
            coordinate = cursor_.at('/') ? none : read_texture_index();
            if (cursor_.accept('/') && !cursor_.at_word_end()) {
                normal = read_index(normals_.size(), "a normal index");
            }
        }
        return corners_.index_of({position, normal, material_, coordinate});
    }

    void read_face() {
        const std::size_t vertices = corners_.corners().size();
        polygon_.clear();
        do {
            polygon_.push_back(read_corner());
        } while (polygon_.size() < 3 || !cursor_.at_line_end());
        places_.clear();
        for (std::size_t i = 0; polygon_.size() > 3 && i < polygon_.size(); ++i) {
            places_.push_back(positions_[corners_.corners()[polygon_[i]][0]]);
        }
        memory_.take(vertex_memory * (corners_.corners().size() - vertices) + triangle_memory * polygon_.size());
        append_polygon(mesh_, polygon_, places_, file_, limits_);
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
        } while (!cursor_.at_line_end());
    }

    void read_points() {
        do {
            mesh_.points.push_back(read_plain_corner());
        } while (!cursor_.at_line_end());
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
        coordinates_.push_back({u, cursor_.at_line_end() ? 0 : cursor_.number("a texture coordinate")});
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

    void use_material(const std::string& name) {
        note_material();
        const auto found = material_numbers_.find(name);
        material_ = found == material_numbers_.end() ? none : found->second;
    }

    // A library that is missing or broken costs only the materials.
    void read_materials(const std::string& name) {
        const std::string library = named_path(file_, file_, name, limits_);
        if (!libraries_.insert(library).second) {
            return; // a short file can name a long library as often as it likes
        }
        try {
            const std::string content = read_reference(file_, library, limits_);
            Text_Cursor cursor(library, content);
            Obj_Material* material = nullptr;
            for (; !cursor.at_end(); cursor.next_line()) {
                const std::string_view keyword = cursor.word();
                if (keyword == "newmtl") {
                    material_numbers_[std::string(cursor.rest_of_line())] = static_cast<std::uint32_t>(materials_.size());
                    material = &materials_.emplace_back();
                } else if (material) {
                    read_property(library, cursor, keyword, *material);
                }
            }
        } catch (const Model_Error& error) {
            mesh_.warnings.push_back(error.what());
        }
    }

    struct Obj_Material {
        Material material;
        VT_RGB32 color{0, 0, 0, 0};
        // Of coordinates: scale, then shift.
        std::array<float, 2> scale{1, 1}, shift{0, 0};
    };

    void read_property(const std::string& library, Text_Cursor& cursor, std::string_view keyword, Obj_Material& into) {
        if (keyword == "Kd") {
            const VT_Vector diffuse = read_vector(cursor, "a colour channel");
            into.color = {channel(diffuse.z), channel(diffuse.y), channel(diffuse.x), 255};
        } else if (keyword == "d") {
            into.material.opacity = cursor.number("an opacity");
        } else if (keyword == "Tr") {
            into.material.opacity = 1 - cursor.number("a transparency");
        } else if (keyword == "map_Kd") {
            read_map(library, cursor, into);
        }
    }

    // Options, then the image's name, which may hold blanks.
    void read_map(const std::string& library, Text_Cursor& cursor, Obj_Material& into) {
        for (;;) {
            cursor.skip_blanks();
            Text_Cursor ahead = cursor;
            const std::string_view option = ahead.word();
            if (option.size() < 2 || option[0] != '-') {
                break;
            }
            cursor = ahead;
            if (option == "-clamp") {
                if (cursor.word() == "on") {
                    into.material.wrap_u = into.material.wrap_v = Wrap::clamp;
                }
            } else if (option == "-s" || option == "-o" || option == "-t") {
                read_map_vector(cursor, option == "-s" ? &into.scale : option == "-o" ? &into.shift : nullptr);
            } else {
                cursor.word();
                if (option == "-mm") {
                    cursor.word();
                }
            }
        }
        if (const std::string name(cursor.rest_of_line()); !name.empty()) {
            limits_.take_work(file_, mesh_.images.size());
            into.material.image = image_number(mesh_, named_path(file_, library, name, limits_), file_);
        }
    }

    // One to three numbers.
    static void read_map_vector(Text_Cursor& cursor, std::array<float, 2>* into) {
        for (std::size_t i = 0; i < 3; ++i) {
            Text_Cursor ahead = cursor;
            const std::string_view word = ahead.word();
            float value = 0;
            const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), value);
            if (error != std::errc{} || stop != word.data() + word.size() || !std::isfinite(value)) {
                return;
            }
            cursor = ahead;
            if (into && i < 2) {
                (*into)[i] = value;
            }
        }
    }

    static std::uint8_t channel(float value) { return static_cast<std::uint8_t>(std::clamp(value, 0.0F, 1.0F) * 255.0F + 0.5F); }

    // Black under an image stands for nothing said: exporters write it, and the image would not show.
    VT_RGB32 color_of(std::uint32_t material) const {
        constexpr VT_RGB32 black{0, 0, 0, 255}, unknown{0, 0, 0, 0};
        if (material == none) {
            return unknown;
        }
        const Obj_Material& known = materials_[material];
        return known.material.image != no_image && known.color == black ? unknown : known.color;
    }

    Texture_Point coordinate_of(std::uint32_t coordinate, std::uint32_t material) const {
        if (coordinate == none) {
            return {};
        }
        const Obj_Material& known = materials_[material];
        const Texture_Point& given = coordinates_[coordinate];
        return {given.u * known.scale[0] + known.shift[0], given.v * known.scale[1] + known.shift[1]};
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
        if (!materials_.empty()) {
            mesh.colors.reserve(keys.size());
            for (const auto& key : keys) {
                mesh.colors.push_back(color_of(key[2]));
            }
            mesh.triangle_materials = std::move(triangle_materials_);
        }
        if (!mesh.images.empty()) {
            mesh.coordinates.reserve(keys.size());
            for (const auto& key : keys) {
                mesh.coordinates.push_back(coordinate_of(key[3], key[2]));
            }
        }
        for (const Obj_Material& known : materials_) {
            mesh.materials.push_back(known.material);
        }
        return std::move(mesh_);
    }

    const std::string& file_;
    Load_Limits& limits_;
    Memory_Allowance memory_;
    Text_Cursor cursor_;
    std::vector<VT_Vector> positions_, normals_;
    std::vector<Texture_Point> coordinates_;
    std::vector<std::uint32_t> polygon_; // being read
    std::vector<VT_Vector> places_;      // of its corners
    std::vector<std::uint32_t> triangle_materials_, smoothing_;
    Corner_Table corners_;
    std::map<std::string, std::uint32_t> material_numbers_;
    std::set<std::string> libraries_;
    std::vector<Obj_Material> materials_;
    Mesh mesh_;
    std::uint32_t material_ = none, smoothing_group_ = by_angle;
    std::optional<Text_Cursor> foreign_; // before the first line that nobody knows
};

} // namespace

Mesh read_obj(const std::string& file, std::string_view content, Load_Limits& limits) {
    return Obj_Reader(file, content, limits).read();
}

} // namespace vorna::drawing::model
