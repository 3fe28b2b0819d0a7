// Textures of PLY files: images that comments name, and texture coordinates of the corners of faces.
#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

#include "drawing/model/mesh.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/named_files.h"
#include "drawing/model/tuple_table.h"

namespace vorna::drawing::model {

class Ply_Textures {
public:
    // names: of the images, relative to the file. mesh: being read; it must outlive the object.
    Ply_Textures(Mesh& mesh, const std::string& file, const std::vector<std::string>& names, Load_Limits& limits)
        : mesh_(mesh), file_(file), limits_(limits) {
        Named_Files files(file, limits);
        for (const std::string& name : names) {
            limits.take_work(file, mesh.images.size());
            mesh.materials.emplace_back().image = image_number(mesh, files.path(file, name), file);
        }
    }

    bool empty() const noexcept { return mesh_.materials.empty(); }

    // The vertex that stands for one at a corner of a face: corners of other texture coordinates get copies of it.
    std::uint32_t vertex_at(std::uint32_t vertex, const Texture_Point& place) {
        is_placed_.resize(mesh_.positions.size());
        mesh_.coordinates.resize(mesh_.positions.size());
        const std::uint32_t number =
            table_.index_of({vertex, std::bit_cast<std::uint32_t>(place.u), std::bit_cast<std::uint32_t>(place.v)});
        if (number < vertices_.size()) {
            return vertices_[number];
        }
        limits_.take_memory(file_, 4 * sizeof number);
        vertices_.push_back(is_placed_[vertex] ? add_copy(vertex) : vertex);
        is_placed_[vertex] = true;
        mesh_.coordinates[vertices_.back()] = place;
        return vertices_.back();
    }

    // The triangles since the last call have the texture of this number.
    void note_texture(std::int64_t number) {
        const bool known = number >= 0 && static_cast<std::uint64_t>(number) < mesh_.materials.size();
        mesh_.triangle_materials.resize(mesh_.triangle_count(), known ? static_cast<std::uint32_t>(number) : no_material);
    }

private:
    std::uint32_t add_copy(std::uint32_t vertex) {
        limits_.take_memory(file_, vertex_memory);
        const auto copy_in = [vertex](auto& list) {
            if (!list.empty()) {
                const auto element = list[vertex];
                list.push_back(element);
            }
        };
        copy_in(mesh_.positions);
        copy_in(mesh_.normals);
        copy_in(mesh_.colors);
        mesh_.coordinates.emplace_back();
        is_placed_.push_back(true);
        return static_cast<std::uint32_t>(mesh_.positions.size() - 1);
    }

    Mesh& mesh_;
    const std::string& file_;
    Load_Limits& limits_;
    Triple_Table table_;                  // of vertices with their texture coordinates
    std::vector<std::uint32_t> vertices_; // by number in the table
    std::vector<bool> is_placed_;         // vertices that have texture coordinates
};

} // namespace vorna::drawing::model
