// PLY: text, and binary of either byte order.
#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <optional>

#include "drawing/files/memory_allowance.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/ply_textures.h"
#include "drawing/model/ply_values.h"
#include "drawing/model/polygon.h"
#include "drawing/model/text_cursor.h"

namespace vorna::drawing::model {
namespace {

struct Scalar_Name {
    std::string_view name;
    Scalar scalar;
};

constexpr std::array scalar_names{
    Scalar_Name{"char", Scalar::int8},       Scalar_Name{"int8", Scalar::int8},       Scalar_Name{"uchar", Scalar::uint8},
    Scalar_Name{"uint8", Scalar::uint8},     Scalar_Name{"short", Scalar::int16},     Scalar_Name{"int16", Scalar::int16},
    Scalar_Name{"ushort", Scalar::uint16},   Scalar_Name{"uint16", Scalar::uint16},   Scalar_Name{"int", Scalar::int32},
    Scalar_Name{"int32", Scalar::int32},     Scalar_Name{"uint", Scalar::uint32},     Scalar_Name{"uint32", Scalar::uint32},
    Scalar_Name{"float", Scalar::float32},   Scalar_Name{"float32", Scalar::float32}, Scalar_Name{"double", Scalar::float64},
    Scalar_Name{"float64", Scalar::float64}, Scalar_Name{"int8_t", Scalar::int8},     Scalar_Name{"uint8_t", Scalar::uint8},
    Scalar_Name{"int16_t", Scalar::int16},   Scalar_Name{"uint16_t", Scalar::uint16}, Scalar_Name{"int32_t", Scalar::int32},
    Scalar_Name{"uint32_t", Scalar::uint32}};

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

struct Property {
    std::string name;
    Scalar scalar = Scalar::float32;
    std::optional<Scalar> count; // of a list
};

struct Element {
    std::string name;
    std::int64_t count = 0;
    std::vector<Property> properties;

    std::size_t find(std::string_view property) const {
        const auto found = std::ranges::find(properties, property, &Property::name);
        return static_cast<std::size_t>(found - properties.begin());
    }
    bool has(std::string_view property) const { return find(property) < properties.size(); }
};

enum class Encoding { text, little_endian, big_endian };

struct Header {
    Encoding encoding = Encoding::text;
    std::vector<std::string> textures; // names of images
    std::vector<Element> elements;
};

Scalar read_scalar_name(Text_Cursor& cursor) {
    cursor.skip_blanks();
    Text_Cursor before = cursor;
    const auto found = std::ranges::find(scalar_names, cursor.word(), &Scalar_Name::name);
    if (found == scalar_names.end()) {
        before.fail("a property type");
    }
    return found->scalar;
}

Property read_property(Text_Cursor& cursor) {
    Property property;
    Text_Cursor before = cursor;
    if (cursor.word() == "list") {
        property.count = read_scalar_name(cursor);
    } else {
        cursor = before;
    }
    property.scalar = read_scalar_name(cursor);
    property.name = cursor.word();
    return property;
}

// Lines that begin with another word are comments: old exporters write some without saying so.
Header read_header(Text_Cursor& cursor) {
    Header header;
    if (Text_Cursor before = cursor; cursor.word() != "ply") {
        before.fail("'ply'");
    }
    for (cursor.next_line(); !cursor.at_end(); cursor.next_line()) {
        cursor.skip_blanks();
        Text_Cursor before = cursor;
        const std::string_view keyword = cursor.word();
        if (keyword == "end_header") {
            cursor.next_line();
            return header;
        }
        if (keyword == "format") {
            Text_Cursor at_format = cursor;
            const std::string_view format = cursor.word();
            if (format == "ascii") {
                header.encoding = Encoding::text;
            } else if (format == "binary_little_endian") {
                header.encoding = Encoding::little_endian;
            } else if (format == "binary_big_endian") {
                header.encoding = Encoding::big_endian;
            } else {
                at_format.fail("'ascii', 'binary_little_endian' or 'binary_big_endian'");
            }
        } else if (keyword == "element") {
            Element element;
            element.name = cursor.word();
            Text_Cursor at_count = cursor;
            element.count = cursor.integer("a count");
            if (element.count < 0) {
                at_count.fail("a count");
            }
            if (element.name == "vertex" &&
                std::ranges::find(header.elements, element.name, &Element::name) != header.elements.end()) {
                before.fail("a single element 'vertex'"); // lists of attributes must be as long as that of positions
            }
            header.elements.push_back(std::move(element));
        } else if (keyword == "property") {
            if (header.elements.empty()) {
                before.fail("'element' before the first property");
            }
            header.elements.back().properties.push_back(read_property(cursor));
        } else if (Text_Cursor words = cursor; keyword == "comment" && words.word() == "TextureFile") {
            header.textures.emplace_back(words.rest_of_line());
        }
    }
    cursor.fail("'end_header'");
}

template <class Values> class Body_Reader {
public:
    Body_Reader(Values values, const std::string& file, const Header& header, Load_Limits& limits)
        : values_(values), file_(file), limits_(limits), memory_(limits, file), textures_(mesh_, file_, header.textures, limits) {
    }

    Mesh read(const Header& header) {
        for (const Element& element : header.elements) {
            if (element.properties.empty()) {
                continue;
            }
            if (element.name == "vertex") {
                read_vertices(element);
            } else if (element.name == "face") {
                read_faces(element);
            } else if (element.name == "edge" && element.has("vertex1") && element.has("vertex2")) {
                read_edges(element);
            } else {
                for (std::int64_t i = 0; i < element.count; ++i) {
                    skip_record(element);
                }
            }
        }
        if (mesh_.is_empty() && has_places_) { // a point cloud
            mesh_.points.resize(mesh_.positions.size());
            std::iota(mesh_.points.begin(), mesh_.points.end(), 0U);
        }
        return std::move(mesh_);
    }

private:
    // A declared count is believed only as far as the file could hold it.
    std::size_t credible(std::int64_t count) const { return std::min(static_cast<std::size_t>(count), values_.remaining()); }

    void read_vertices(const Element& element) {
        std::vector<std::size_t> attribute_of(element.properties.size());
        std::ranges::transform(element.properties, attribute_of.begin(), [](const Property& property) {
            const auto found = std::ranges::find(attribute_names, std::string_view(property.name), &Attribute_Name::name);
            return found == attribute_names.end() ? attribute_count : std::size_t{found->attribute};
        });
        const auto has = [&attribute_of](std::initializer_list<Attribute> attributes) {
            return std::ranges::all_of(attributes,
                                       [&](Attribute one) { return std::ranges::find(attribute_of, one) != attribute_of.end(); });
        };
        has_places_ = has({x, y, z});
        const bool has_normals = has({nx, ny, nz}), has_colors = has({red, green, blue}),
                   has_coordinates = has({u, v}) && !textures_.empty();
        const auto red_place = static_cast<std::size_t>(std::ranges::find(attribute_of, red) - attribute_of.begin());
        const bool unit_colors = has_colors && element.properties[red_place].scalar >= Scalar::float32;
        const double color_scale = unit_colors ? 255 : 1;
        mesh_.positions.reserve(credible(element.count) / element.properties.size());
        std::array<double, attribute_count + 1> record{}; // The last one takes what is not wanted.
        for (std::int64_t vertex = 0; vertex < element.count; ++vertex) {
            memory_.take(vertex_memory);
            for (std::size_t p = 0; p < element.properties.size(); ++p) {
                if (element.properties[p].count) {
                    skip_list(element.properties[p]);
                } else {
                    const Scalar scalar = element.properties[p].scalar;
                    record[attribute_of[p]] = attribute_of[p] <= z ? values_.number(scalar, "a vertex coordinate")
                                                                   : values_.any_number(scalar, "a vertex property");
                }
            }
            mesh_.positions.push_back(vector(record[x], record[y], record[z]));
            if (has_normals) {
                mesh_.normals.push_back(normal(record[nx], record[ny], record[nz]));
            }
            if (has_colors) {
                mesh_.colors.push_back({channel(record[blue] * color_scale), channel(record[green] * color_scale),
                                        channel(record[red] * color_scale), 255});
            }
            if (has_coordinates) {
                mesh_.coordinates.push_back({static_cast<float>(record[u]), static_cast<float>(record[v])});
            }
        }
        vertex_count_ = mesh_.positions.size();
    }

    void read_faces(const Element& element) {
        const std::size_t corners = element.has("vertex_indices") ? element.find("vertex_indices") : element.find("vertex_index");
        const std::size_t corner_coordinates = textures_.empty() ? element.properties.size() : element.find("texcoord");
        const std::size_t texture = element.find("texnumber");
        mesh_.triangles.reserve(credible(element.count) * 3 / 4);
        for (std::int64_t f = 0; f < element.count; ++f) {
            std::int64_t texture_number = 0;
            polygon_.clear();
            corner_places_.clear();
            for (std::size_t p = 0; p < element.properties.size(); ++p) {
                const Property& property = element.properties[p];
                if (p == corners && property.count) {
                    read_corners(property);
                } else if (p == corner_coordinates && property.count) {
                    read_corner_coordinates(property);
                } else if (property.count) {
                    skip_list(property);
                } else if (p == texture) {
                    texture_number = values_.integer(property.scalar, "the number of a texture");
                } else {
                    values_.number(property.scalar, "a face property");
                }
            }
            add_polygon();
            if (!textures_.empty()) {
                textures_.note_texture(texture_number);
            }
        }
    }

    void read_edges(const Element& element) {
        const std::size_t first = element.find("vertex1"), second = element.find("vertex2");
        for (std::int64_t e = 0; e < element.count; ++e) {
            limits_.take_memory(file_, 2 * sizeof(std::uint32_t));
            std::array<std::uint32_t, 2> ends{};
            for (std::size_t p = 0; p < element.properties.size(); ++p) {
                const Property& property = element.properties[p];
                if (property.count) {
                    skip_list(property);
                } else if (p == first || p == second) {
                    ends[p == second] = read_vertex_index(property.scalar);
                } else {
                    values_.number(property.scalar, "an edge property");
                }
            }
            mesh_.lines.insert(mesh_.lines.end(), ends.begin(), ends.end());
        }
    }

    void read_corners(const Property& property) {
        for (std::int64_t left = read_list_count(property); left > 0; --left) {
            polygon_.push_back(read_vertex_index(property.scalar));
        }
        memory_.take(triangle_memory * polygon_.size());
    }

    // u and v of each corner.
    void read_corner_coordinates(const Property& property) {
        const std::int64_t count = read_list_count(property);
        for (std::int64_t i = 0; i < count; ++i) {
            const auto value = static_cast<float>(values_.number(property.scalar, "a texture coordinate"));
            if (i % 2 == 0) {
                memory_.take(sizeof(Texture_Point));
                corner_places_.push_back({value, 0});
            } else {
                corner_places_.back().v = value;
            }
        }
    }

    void add_polygon() {
        places_.clear();
        for (std::size_t i = 0; i < polygon_.size(); ++i) {
            if (polygon_.size() > 3) {
                places_.push_back(mesh_.positions[polygon_[i]]);
            }
            if (corner_places_.size() == polygon_.size()) {
                polygon_[i] = textures_.vertex_at(polygon_[i], corner_places_[i]);
            }
        }
        append_polygon(mesh_, polygon_, places_, file_, limits_);
    }

    std::uint32_t read_vertex_index(Scalar scalar) {
        const std::int64_t index = values_.integer(scalar, "a vertex index");
        if (index < 0 || index >= static_cast<std::int64_t>(vertex_count_)) {
            values_.fail("a vertex index below " + std::to_string(vertex_count_));
        }
        return static_cast<std::uint32_t>(index);
    }

    std::int64_t read_list_count(const Property& property) {
        const std::int64_t count = values_.integer(*property.count, "the length of a list");
        if (count < 0) {
            values_.fail("the length of a list");
        }
        return count;
    }

    void skip_list(const Property& property) {
        for (std::int64_t left = read_list_count(property); left > 0; --left) {
            values_.number(property.scalar, "a list's value");
        }
    }

    void skip_record(const Element& element) {
        for (const Property& property : element.properties) {
            if (property.count) {
                skip_list(property);
            } else {
                values_.number(property.scalar, "a property");
            }
        }
    }

    VT_Vector vector(double a, double b, double c) {
        const VT_Vector result{static_cast<float>(a), static_cast<float>(b), static_cast<float>(c)};
        if (!std::isfinite(result.x) || !std::isfinite(result.y) || !std::isfinite(result.z)) {
            values_.fail("numbers in the range of a float");
        }
        return result;
    }

    // Computed later where the file has none: scanners write what is no number for it.
    static VT_Vector normal(double a, double b, double c) {
        const VT_Vector result{static_cast<float>(a), static_cast<float>(b), static_cast<float>(c)};
        return std::isfinite(result.x) && std::isfinite(result.y) && std::isfinite(result.z) ? result : VT_Vector{};
    }

    static std::uint8_t channel(double value) {
        return value > 0 ? static_cast<std::uint8_t>(std::min(value, 255.0) + 0.5) : std::uint8_t{0}; // for no number, too
    }

    Values values_;
    const std::string& file_;
    Load_Limits& limits_;
    Memory_Allowance memory_;
    Mesh mesh_;
    bool has_places_ = false;      // whether vertices have coordinates
    std::size_t vertex_count_ = 0; // in the file
    Ply_Textures textures_;
    std::vector<std::uint32_t> polygon_; // being read
    std::vector<VT_Vector> places_;      // of its corners
    std::vector<Texture_Point> corner_places_;
};

} // namespace

Mesh read_ply(const std::string& file, std::string_view content, Load_Limits& limits) {
    Text_Cursor cursor(file, content);
    const Header header = read_header(cursor);
    const auto start = static_cast<std::size_t>(cursor.place() - content.data());
    switch (header.encoding) {
    case Encoding::text:
        return Body_Reader(Text_Values(cursor), file, header, limits).read(header);
    case Encoding::little_endian:
        return Body_Reader(Binary_Values<std::endian::little>(file, content, start), file, header, limits).read(header);
    case Encoding::big_endian:
        break;
    }
    return Body_Reader(Binary_Values<std::endian::big>(file, content, start), file, header, limits).read(header);
}

} // namespace vorna::drawing::model
