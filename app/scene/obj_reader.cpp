// OBJ: positions, normals, polygons and the diffuse colours of materials.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>

#include "app/scene/model_reader.h"
#include "app/scene/text_cursor.h"
#include "app/scene/triple_table.h"

namespace app::scene {
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
    Obj_Reader(const std::string& file, std::string_view content) : file_(file), cursor_(file, content) {}

    Mesh read() {
        for (; !cursor_.at_end(); cursor_.next_line()) {
            const std::string_view keyword = cursor_.word();
            if (keyword == "v") {
                positions_.push_back(read_vector(cursor_, "a vertex coordinate"));
            } else if (keyword == "vn") {
                normals_.push_back(read_vector(cursor_, "a normal's component"));
            } else if (keyword == "f") {
                read_face();
            } else if (keyword == "usemtl") {
                use_material(std::string(cursor_.rest_of_line()));
            } else if (keyword == "mtllib") {
                read_materials(std::string(cursor_.rest_of_line()));
            }
        }
        return take_mesh();
    }

private:
    // One-based from the front, or negative from the back.
    std::uint32_t read_index(std::size_t count, const char* kind) {
        const Text_Cursor before = cursor_;
        const std::int64_t given = cursor_.integer(kind);
        const auto limit = static_cast<std::int64_t>(count);
        const std::int64_t index = given < 0 ? limit + given : given - 1;
        if (index < 0 || index >= limit || given == 0) {
            Text_Cursor at(before);
            at.fail(std::string(kind) + " from 1 to " + std::to_string(limit) + " or from -" + std::to_string(limit) + " to -1");
        }
        return static_cast<std::uint32_t>(index);
    }

    std::uint32_t read_corner() {
        const std::uint32_t position = read_index(positions_.size(), "a vertex index");
        std::uint32_t normal = none;
        if (cursor_.accept('/')) {
            if (!cursor_.accept('/')) {
                cursor_.integer("a texture index");
                if (cursor_.accept('/')) {
                    normal = read_index(normals_.size(), "a normal index");
                }
            } else {
                normal = read_index(normals_.size(), "a normal index");
            }
        }
        return corners_.index_of({position, normal, material_});
    }

    // A polygon is drawn as a fan around its first corner.
    void read_face() {
        const std::uint32_t first = read_corner();
        std::uint32_t previous = read_corner();
        do {
            const std::uint32_t corner = read_corner();
            triangles_.insert(triangles_.end(), {first, previous, corner});
            previous = corner;
        } while (!cursor_.at_line_end());
    }

    void use_material(const std::string& name) {
        const auto found = material_numbers_.find(name);
        material_ = found == material_numbers_.end() ? none : found->second;
    }

    // A library that is missing or broken costs only the colours.
    void read_materials(const std::string& name) {
        const std::string library = (std::filesystem::path(file_).parent_path() / name).string();
        try {
            const std::string content = read_file(library);
            Text_Cursor cursor(library, content);
            std::string material;
            for (; !cursor.at_end(); cursor.next_line()) {
                const std::string_view keyword = cursor.word();
                if (keyword == "newmtl") {
                    material = cursor.rest_of_line();
                } else if (keyword == "Kd") {
                    const VT_Vector diffuse = read_vector(cursor, "a colour channel");
                    material_numbers_[material] = static_cast<std::uint32_t>(material_colors_.size());
                    material_colors_.push_back({channel(diffuse.z), channel(diffuse.y), channel(diffuse.x), 255});
                }
            }
        } catch (const Model_Error&) {
        }
    }

    static std::uint8_t channel(float value) { return static_cast<std::uint8_t>(std::clamp(value, 0.0F, 1.0F) * 255.0F + 0.5F); }

    Mesh take_mesh() {
        Mesh mesh;
        mesh.triangles = std::move(triangles_);
        const auto& keys = corners_.keys();
        mesh.positions.reserve(keys.size());
        for (const auto& [position, normal, material] : keys) {
            mesh.positions.push_back(positions_[position]);
        }
        if (!normals_.empty()) {
            mesh.normals.reserve(keys.size());
            for (const auto& [position, normal, material] : keys) {
                mesh.normals.push_back(normal == none ? VT_Vector{} : normals_[normal]);
            }
        }
        if (!material_colors_.empty()) {
            mesh.colors.reserve(keys.size());
            for (const auto& [position, normal, material] : keys) {
                mesh.colors.push_back(material == none ? VT_RGB32{0, 0, 0, 0} : material_colors_[material]);
            }
        }
        return mesh;
    }

    const std::string& file_;
    Text_Cursor cursor_;
    std::vector<VT_Vector> positions_, normals_;
    std::vector<std::uint32_t> triangles_;
    Triple_Table corners_; // position, normal, material
    std::map<std::string, std::uint32_t> material_numbers_;
    std::vector<VT_RGB32> material_colors_;
    std::uint32_t material_ = none;
};

} // namespace

Mesh read_obj(const std::string& file, std::string_view content) {
    return Obj_Reader(file, content).read();
}

} // namespace app::scene
