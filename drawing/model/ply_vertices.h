// Vertices of a PLY file: which property is which attribute, and what becomes of them.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

#include "drawing/model/mesh.h"
#include "drawing/model/ply_header.h"

namespace vorna::drawing::model::ply {

// Where a vertex property goes.
enum Attribute : std::size_t { x, y, z, nx, ny, nz, red, green, blue, u, v, attribute_count };

// The names that programs give to a property.
struct Attribute_Name {
    std::string_view name;
    Attribute attribute;
};

constexpr std::array attribute_names{Attribute_Name{"x", x},
                                     Attribute_Name{"y", y},
                                     Attribute_Name{"z", z},
                                     Attribute_Name{"nx", nx},
                                     Attribute_Name{"ny", ny},
                                     Attribute_Name{"nz", nz},
                                     Attribute_Name{"red", red},
                                     Attribute_Name{"green", green},
                                     Attribute_Name{"blue", blue},
                                     Attribute_Name{"r", red},
                                     Attribute_Name{"g", green},
                                     Attribute_Name{"b", blue},
                                     Attribute_Name{"diffuse_red", red},
                                     Attribute_Name{"diffuse_green", green},
                                     Attribute_Name{"diffuse_blue", blue},
                                     Attribute_Name{"u", u},
                                     Attribute_Name{"v", v},
                                     Attribute_Name{"s", u},
                                     Attribute_Name{"t", v},
                                     Attribute_Name{"texture_u", u},
                                     Attribute_Name{"texture_v", v}};

// Where the properties of vertices go.
struct Vertex_Form {
    std::vector<std::size_t> attribute_of; // by property
    bool has_places = false, has_normals = false, has_colors = false, has_coordinates = false;
    double color_scale = 1;
};

// Attributes of a vertex; the last one takes what is not wanted.
using Record = std::array<double, attribute_count + 1>;

struct Vertices {
    std::vector<VT_Vector> positions, normals;
    std::vector<VT_RGB32> colors;
    std::vector<Texture_Point> coordinates;

    void clear() {
        positions.clear();
        normals.clear();
        colors.clear();
        coordinates.clear();
    }
};

// with_coordinates: whether places in textures are wanted.
inline Vertex_Form vertex_form(const Ply_Element& element, bool with_coordinates) {
    Vertex_Form form;
    form.attribute_of.resize(element.properties.size());
    std::ranges::transform(element.properties, form.attribute_of.begin(), [](const Ply_Property& property) {
        const auto found = std::ranges::find(attribute_names, std::string_view(property.name), &Attribute_Name::name);
        return found == attribute_names.end() ? attribute_count : std::size_t{found->attribute};
    });
    const auto has = [&form](std::initializer_list<Attribute> attributes) {
        return std::ranges::all_of(
            attributes, [&](Attribute one) { return std::ranges::find(form.attribute_of, one) != form.attribute_of.end(); });
    };
    form.has_places = has({x, y, z});
    form.has_normals = has({nx, ny, nz});
    form.has_colors = has({red, green, blue});
    form.has_coordinates = with_coordinates && has({u, v});
    if (form.has_colors) {
        const auto red_place = std::ranges::find(form.attribute_of, red) - form.attribute_of.begin();
        const bool is_unit = element.properties[static_cast<std::size_t>(red_place)].scalar >= Scalar::float32;
        form.color_scale = is_unit ? 255 : 1;
    }
    return form;
}

inline VT_Vector vector_of(double a, double b, double c) {
    return {static_cast<float>(a), static_cast<float>(b), static_cast<float>(c)};
}

inline bool is_finite(const VT_Vector& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

inline std::uint8_t channel_of(double value) {
    return value > 0 ? static_cast<std::uint8_t>(std::min(value, 255.0) + 0.5) : std::uint8_t{0}; // of NaN, too
}

// False when the place is not within the range of a float.
template <class Lists> bool append_vertex(const Vertex_Form& form, const Record& record, Lists& lists) {
    const VT_Vector place = vector_of(record[x], record[y], record[z]);
    if (!is_finite(place)) {
        return false;
    }
    lists.positions.push_back(place);
    if (form.has_normals) {
        const VT_Vector normal = vector_of(record[nx], record[ny], record[nz]);
        // Computed later where the file has none: scanners write NaN for it.
        lists.normals.push_back(is_finite(normal) ? normal : VT_Vector{});
    }
    if (form.has_colors) {
        lists.colors.push_back({channel_of(record[blue] * form.color_scale), channel_of(record[green] * form.color_scale),
                                channel_of(record[red] * form.color_scale), 255});
    }
    if (form.has_coordinates) {
        lists.coordinates.push_back({static_cast<float>(record[u]), static_cast<float>(record[v])});
    }
    return true;
}

} // namespace vorna::drawing::model::ply
