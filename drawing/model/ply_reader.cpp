// PLY: text, and binary of either byte order.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "drawing/files/helpers.h"
#include "drawing/files/memory_allowance.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/ply_header.h"
#include "drawing/model/ply_pieces.h"
#include "drawing/model/ply_textures.h"
#include "drawing/model/ply_vertices.h"
#include "drawing/model/polygon.h"
#include "drawing/model/text_cursor.h"

namespace vorna::drawing::model {
namespace {

template <class Values> class Body_Reader {
public:
    Body_Reader(Values values, const std::string& file, const Ply_Header& header, Load_Limits& limits)
        : values_(values), file_(file), limits_(limits), memory_(limits, file), textures_(mesh_, file_, header.textures, limits) {
    }

    Mesh read(const Ply_Header& header) {
        for (const Ply_Element& element : header.elements) {
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

    struct Polygons {
        std::vector<std::uint32_t> corners, sizes;

        void clear() {
            corners.clear();
            sizes.clear();
        }
    };

    // Threads read pieces side by side, as far as records have the usual form. read_record(reader, list) appends a record, or is
    // false; append(list, records) takes so many of them. Gives how many have been read.
    template <class List, class Read_Record, class Append>
    std::int64_t read_pieces(const Ply_Element& element, std::uint32_t list_length, const Read_Record& read_record,
                             const Append& append) {
        constexpr std::uint64_t memory_ratio = 16; // of lists for bytes of the file, with the room that growing lists have
        const std::uint64_t place_bytes =
            std::min<std::uint64_t>(Ply_Pieces<Values>::piece_bytes, values_.remaining()) * memory_ratio;
        const std::size_t threads = threads_for_pieces(limits_, place_bytes), places = places_in_order(threads);
        const std::uint64_t memory = places * place_bytes;
        if (memory > limits_.memory_left()) {
            return 0;
        }
        const Load_Limits::Loan loan(limits_, file_, memory);
        const Ply_Pieces<Values> pieces(values_, element, list_length);
        struct Piece {
            List list;
            std::int64_t records = 0;
            bool is_whole = false;
        };
        std::vector<Piece> read(places);
        std::int64_t done = 0;
        share_in_order(
            pieces.count(), threads,
            [&](std::size_t number, std::size_t place) {
                Piece& piece = read[place];
                auto reader = pieces.reader(number);
                piece.list.clear();
                piece.records = 0;
                while (!reader.at_end() && read_record(reader, piece.list)) {
                    ++piece.records;
                }
                piece.is_whole = reader.at_end();
            },
            [&](std::size_t number, std::size_t place) {
                const Piece& piece = read[place];
                const std::int64_t records = std::min(piece.records, element.count - done);
                append(piece.list, static_cast<std::size_t>(records));
                pieces.move(values_, number, static_cast<std::size_t>(records));
                done += records;
                return piece.is_whole && records == piece.records;
            });
        return done;
    }

    void read_vertices(const Ply_Element& element) {
        const ply::Vertex_Form form = ply::vertex_form(element, !textures_.empty());
        has_places_ = form.has_places;
        mesh_.positions.reserve(credible(element.count) / element.properties.size());
        std::int64_t vertex = std::ranges::any_of(element.properties, &has_list) ? 0 : read_plain_vertices(element, form);
        ply::Record record{};
        for (; vertex < element.count; ++vertex) {
            memory_.take(vertex_memory);
            for (std::size_t p = 0; p < element.properties.size(); ++p) {
                if (element.properties[p].count) {
                    skip_list(element.properties[p]);
                } else {
                    const Scalar scalar = element.properties[p].scalar;
                    record[form.attribute_of[p]] = form.attribute_of[p] <= ply::z
                                                       ? values_.number(scalar, "a vertex coordinate")
                                                       : values_.any_number(scalar, "a vertex property");
                }
            }
            if (!ply::append_vertex(form, record, mesh_)) {
                values_.fail("numbers in the range of a float");
            }
        }
        vertex_count_ = mesh_.positions.size();
    }

    std::int64_t read_plain_vertices(const Ply_Element& element, const ply::Vertex_Form& form) {
        return read_pieces<ply::Vertices>(
            element, 0,
            [&](auto& reader, ply::Vertices& list) {
                ply::Record record{};
                for (std::size_t p = 0; p < element.properties.size(); ++p) {
                    if (!reader.number(element.properties[p].scalar, record[form.attribute_of[p]])) {
                        return false;
                    }
                }
                return reader.finish_record() && ply::append_vertex(form, record, list);
            },
            [&](const ply::Vertices& list, std::size_t count) {
                memory_.take(vertex_memory * count);
                const auto add = [count](auto& all, const auto& more) {
                    all.insert(all.end(), more.begin(), more.begin() + static_cast<std::ptrdiff_t>(std::min(more.size(), count)));
                };
                add(mesh_.positions, list.positions);
                add(mesh_.normals, list.normals);
                add(mesh_.colors, list.colors);
                add(mesh_.coordinates, list.coordinates);
            });
    }

    // Faces that consist of a list of corners and of numbers. Binary ones are as long as the first one.
    std::int64_t read_plain_faces(const Ply_Element& element, std::size_t corners) {
        if (!textures_.empty() || element.count == 0 || corners == element.properties.size() ||
            !element.properties[corners].count || std::ranges::count_if(element.properties, &has_list) != 1) {
            return 0;
        }
        Values first = values_;
        for (std::size_t p = 0; p < corners; ++p) {
            first.number(element.properties[p].scalar, "a face property");
        }
        const std::int64_t length = first.integer(*element.properties[corners].count, "the length of a list");
        constexpr std::int64_t longest = 1000;
        if (length < 3 || length > longest) {
            return 0;
        }
        return read_pieces<Polygons>(
            element, static_cast<std::uint32_t>(length),
            [&](auto& reader, Polygons& list) {
                const std::size_t before = list.corners.size();
                std::uint32_t size = 0;
                for (std::size_t p = 0; p < element.properties.size(); ++p) {
                    const Ply_Property& property = element.properties[p];
                    double value = 0;
                    const bool is_read = p == corners ? reader.count(*property.count, size) &&
                                                            reader.indices(property.scalar, size, vertex_count_, list.corners)
                                                      : reader.number(property.scalar, value) && std::isfinite(value);
                    if (!is_read) {
                        list.corners.resize(before);
                        return false;
                    }
                }
                if (!reader.finish_record()) {
                    list.corners.resize(before);
                    return false;
                }
                list.sizes.push_back(size);
                return true;
            },
            [&](const Polygons& list, std::size_t count) { append_polygons(list, count); });
    }

    void append_polygons(const Polygons& list, std::size_t count) {
        auto next = list.corners.begin();
        if (list.corners.size() == 3 * list.sizes.size() &&
            std::ranges::all_of(list.sizes, [](auto size) { return size == 3; })) {
            memory_.take(triangle_memory * 3 * count);
            mesh_.triangles.insert(mesh_.triangles.end(), next, next + static_cast<std::ptrdiff_t>(3 * count));
            return;
        }
        corner_places_.clear();
        for (std::size_t i = 0; i < count; ++i) {
            polygon_.assign(next, next + list.sizes[i]);
            next += list.sizes[i];
            memory_.take(triangle_memory * polygon_.size());
            add_polygon();
        }
    }

    void read_faces(const Ply_Element& element) {
        const std::size_t corners = element.has("vertex_indices") ? element.find("vertex_indices") : element.find("vertex_index");
        const std::size_t corner_coordinates = textures_.empty() ? element.properties.size() : element.find("texcoord");
        const std::size_t texture = element.find("texnumber");
        mesh_.triangles.reserve(credible(element.count) * 3 / 4);
        for (std::int64_t f = read_plain_faces(element, corners); f < element.count; ++f) {
            std::int64_t texture_number = 0;
            polygon_.clear();
            corner_places_.clear();
            for (std::size_t p = 0; p < element.properties.size(); ++p) {
                const Ply_Property& property = element.properties[p];
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

    void read_edges(const Ply_Element& element) {
        const std::size_t first = element.find("vertex1"), second = element.find("vertex2");
        for (std::int64_t e = 0; e < element.count; ++e) {
            limits_.take_memory(file_, 2 * sizeof(std::uint32_t));
            std::array<std::uint32_t, 2> ends{};
            for (std::size_t p = 0; p < element.properties.size(); ++p) {
                const Ply_Property& property = element.properties[p];
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

    void read_corners(const Ply_Property& property) {
        for (std::int64_t left = read_list_count(property); left > 0; --left) {
            polygon_.push_back(read_vertex_index(property.scalar));
        }
        memory_.take(triangle_memory * polygon_.size());
    }

    // u and v of each corner.
    void read_corner_coordinates(const Ply_Property& property) {
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

    std::int64_t read_list_count(const Ply_Property& property) {
        const std::int64_t count = values_.integer(*property.count, "the length of a list");
        if (count < 0) {
            values_.fail("the length of a list");
        }
        return count;
    }

    void skip_list(const Ply_Property& property) {
        for (std::int64_t left = read_list_count(property); left > 0; --left) {
            values_.number(property.scalar, "a list's value");
        }
    }

    void skip_record(const Ply_Element& element) {
        for (const Ply_Property& property : element.properties) {
            if (property.count) {
                skip_list(property);
            } else {
                values_.number(property.scalar, "a property");
            }
        }
    }

    static bool has_list(const Ply_Property& property) { return property.count.has_value(); }

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
    const Ply_Header header = read_ply_header(cursor);
    const auto start = static_cast<std::size_t>(cursor.place() - content.data());
    switch (header.encoding) {
    case Ply_Encoding::text:
        return Body_Reader(Text_Values(cursor), file, header, limits).read(header);
    case Ply_Encoding::little_endian:
        return Body_Reader(Binary_Values<std::endian::little>(file, content, start), file, header, limits).read(header);
    case Ply_Encoding::big_endian:
        break;
    }
    return Body_Reader(Binary_Values<std::endian::big>(file, content, start), file, header, limits).read(header);
}

} // namespace vorna::drawing::model
