// The materials of an OBJ model, from the libraries that it names.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/model/mesh.h"
#include "drawing/model/named_files.h"
#include "drawing/model/text_cursor.h"

namespace vorna::drawing::model {

class Obj_Materials {
public:
    // Images and warnings go into the mesh. All of them must outlive the object.
    Obj_Materials(const std::string& model, Mesh& mesh, Load_Limits& limits)
        : model_(model), mesh_(mesh), limits_(limits), files_(model, limits) {}

    // The names of one or more libraries, parted by blanks, which names may hold too. A library that is missing costs only its
    // materials, and a line that cannot be read only what it says: a warning tells of either.
    void read_libraries(std::string_view names);

    bool empty() const noexcept { return materials_.empty(); }
    // no_material when no library has it. A comment may follow the name.
    std::uint32_t find(std::string_view name) const;
    bool has_image(std::uint32_t material) const { return material != no_material && materials_[material].material.has_image(); }
    // Alpha 0 when the material says nothing of it.
    VT_RGB32 color_of(std::uint32_t material) const;
    // A texture coordinate as the material's map scales and shifts it.
    Texture_Point mapped(const Texture_Point& given, std::uint32_t material) const;
    // Puts the materials into the mesh.
    void finish() const;

private:
    struct Entry {
        Material material;
        Phong phong;
        bool has_color = false;
        std::optional<float> metal, roughness;
        int illumination = 2;
        std::array<float, 2> scale{1, 1}, shift{0, 0}; // of coordinates: scale, then shift

        // What is drawn: with it, the colour of a metal becomes that of its reflection.
        Finish finish();
    };

    void read_library(const std::string& library);
    void read_materials(const std::string& library, std::string_view content);
    void add(std::string_view name);
    void read_property(const std::string& library, Text_Cursor& cursor, std::string_view keyword, Entry& into);
    // image: of the material, to be set. Only the map of the colour moves texture coordinates.
    void read_map(const std::string& library, Text_Cursor& cursor, Entry& into, std::uint32_t& image);

    const std::string& model_;
    Mesh& mesh_;
    Load_Limits& limits_;
    Named_Files files_;
    std::set<std::string, std::less<>> lists_; // of names that are read
    std::set<std::string> libraries_;          // their paths
    std::map<std::string, std::uint32_t, std::less<>> numbers_;
    std::vector<Entry> materials_;
};

} // namespace vorna::drawing::model
