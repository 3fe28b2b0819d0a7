// Triangles of a file, read some at a time.
#include "drawing/model/triangle_file.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <numeric>
#include <string_view>
#include <system_error>

#include "drawing/files/helpers.h"
#include "drawing/files/path.h"
#include "drawing/model/bytes.h"
#include "drawing/model/text_cursor.h"

namespace vorna::drawing::model {
namespace {

constexpr std::uint64_t stl_header = 84, stl_facet = 50;
constexpr std::uint64_t largest_record = 256;                  // bytes of a face of a PLY file
constexpr std::size_t most_of_a_header = std::size_t{1} << 16; // bytes of a PLY file
constexpr const char* readable = "a binary STL or a binary PLY of triangles, which can be read in parts";

VT_Vector float_vector(const char* bytes) {
    return {load<float, std::endian::little>(bytes), load<float, std::endian::little>(bytes + 4),
            load<float, std::endian::little>(bytes + 8)};
}

bool has_list(const Ply_Element& element) {
    return std::ranges::any_of(element.properties, [](const Ply_Property& p) { return p.count.has_value(); });
}

// Of records whose list, if there is one, has three values.
std::uint64_t record_size_of(const Ply_Element& element) {
    std::uint64_t size = 0;
    for (const Ply_Property& property : element.properties) {
        size += property.count ? size_of(*property.count) + 3 * size_of(property.scalar) : size_of(property.scalar);
    }
    return size;
}

// Adds a triangle unless two of its corners are the same one. normals: of the corners, zero where the file has none.
void add_triangle(Mesh& mesh, const VT_Vector (&corners)[3], const VT_Vector (&normals)[3]) {
    const auto first = static_cast<std::uint32_t>(mesh.positions.size());
    mesh.positions.insert(mesh.positions.end(), std::begin(corners), std::end(corners));
    mesh.triangles.insert(mesh.triangles.end(), {first, first + 1, first + 2});
    const VT_Vector own = winding_normal(mesh, mesh.triangle_count() - 1);
    for (const VT_Vector& normal : normals) {
        mesh.normals.push_back(unit(normal).value_or(own));
    }
}

} // namespace

Triangle_File::Triangle_File(const std::string& name, const std::string& suffix) : name_(name) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path_of(name), error)) {
        throw Model_Error(name + (error ? ": cannot be read: " + error.message()
                                        : ": expected a plain file, whose parts can be read in any order, found none"));
    }
    errno = 0;
    size_ = std::filesystem::file_size(path_of(name), error);
    stream_.open(path_of(name), std::ios::binary);
    if (error || !stream_) {
        throw Model_Error(name + ": cannot be read: " + std::generic_category().message(errno));
    }
    if (suffix == "stl") {
        open_stl();
    } else if (suffix == "ply") {
        open_ply();
    } else {
        throw Model_Error(name + ": expected " + readable + ", found another format");
    }
    if (count_ == 0) {
        throw Model_Error(name + ": empty scene: expected triangles, found none");
    }
}

void Triangle_File::fail(std::uint64_t place, const std::string& expected) const {
    throw Model_Error(name_ + ": byte " + std::to_string(place) + ": expected " + expected);
}

void Triangle_File::check_size(std::uint64_t needed) const {
    if (size_ < needed) {
        throw Cut_Off_Error(name_ + ": byte " + std::to_string(size_) + ": expected " + std::to_string(count_) +
                            " triangles, found the end of the file");
    }
}

void Triangle_File::read_bytes(std::uint64_t place, std::size_t count, char* bytes) const {
    const std::lock_guard lock(reading_);
    errno = 0;
    stream_.clear();
    stream_.seekg(static_cast<std::streamoff>(place));
    if (!stream_.read(bytes, static_cast<std::streamsize>(count))) {
        throw Model_Error(name_ + ": byte " + std::to_string(place) + ": cannot be read" +
                          (errno != 0 ? ": " + std::generic_category().message(errno) : ", the file has become shorter"));
    }
}

void Triangle_File::open_stl() {
    char header[stl_header] = {};
    read_bytes(0, std::min(size_, stl_header), header);
    count_ = load<std::uint32_t, std::endian::little>(header + stl_header - 4);
    start_ = stl_header;
    record_size_ = stl_facet;
    // Binary files may begin with "solid" too, so the size decides first.
    if (size_ != start_ + count_ * record_size_ && std::string_view(header, 5) == "solid") {
        throw Model_Error(name_ + ": expected " + readable + ", found a text");
    }
    check_size(start_ + count_ * record_size_);
}

void Triangle_File::open_ply() {
    std::string content(std::min<std::uint64_t>(size_, most_of_a_header), '\0');
    read_bytes(0, content.size(), content.data());
    Text_Cursor cursor(name_, content);
    const Ply_Header header = read_ply_header(cursor);
    const auto refuse_unless = [this](bool is_right, const std::string& found) {
        if (!is_right) {
            throw Model_Error(name_ + ": expected " + readable + ", found " + found);
        }
    };
    refuse_unless(header.encoding != Ply_Encoding::text, "a text");
    is_big_endian_ = header.encoding == Ply_Encoding::big_endian;
    auto place = static_cast<std::uint64_t>(cursor.place() - content.data());
    for (const Ply_Element& element : header.elements) {
        if (element.name == "face") {
            refuse_unless(!vertices_.properties.empty(), "faces before their vertices");
            faces_ = element;
            break;
        }
        refuse_unless(!has_list(element), "lists before the faces");
        if (element.name == "vertex") {
            vertices_ = element;
            vertex_start_ = place;
            vertex_size_ = record_size_of(element);
        }
        const std::uint64_t size = record_size_of(element), left = size_ - std::min(size_, place);
        if (size > 0 && static_cast<std::uint64_t>(element.count) > left / size) {
            throw Cut_Off_Error(name_ + ": byte " + std::to_string(size_) + ": expected " + std::to_string(element.count) +
                                " elements '" + element.name + "', found the end of the file");
        }
        place += size * static_cast<std::uint64_t>(element.count);
    }
    vertex_form_ = ply::vertex_form(vertices_, false);
    const auto is_corners = [](const Ply_Property& p) { return p.name == "vertex_indices" || p.name == "vertex_index"; };
    refuse_unless(vertex_form_.has_places && vertices_.count < std::int64_t{0xFFFFFFFF}, "no vertices with coordinates");
    const auto lists = std::ranges::count_if(faces_.properties, [](const Ply_Property& p) { return p.count.has_value(); });
    const auto corners = std::ranges::find_if(faces_.properties, is_corners);
    refuse_unless(lists == 1 && corners != faces_.properties.end() && corners->count && corners->scalar < Scalar::float32 &&
                          *corners->count<Scalar::float32, lists> 1
                      ? "faces with several lists"
                      : "no faces with lists of vertices");
    count_ = static_cast<std::uint64_t>(faces_.count);
    start_ = place;
    record_size_ = record_size_of(faces_);
    refuse_unless(record_size_ <= largest_record, "faces of more than 256 bytes"); // a batch of them is read at once
    if (count_ > (size_ - std::min(size_, start_)) / record_size_) {
        check_size(UINT64_MAX);
    }
}

Mesh Triangle_File::read(std::uint64_t first, std::uint64_t end) const {
    return vertices_.properties.empty() ? read_stl(first, end) : read_ply(first, end);
}

// Corners are the same where their places are: the format has no vertices.
Mesh Triangle_File::read_stl(std::uint64_t first, std::uint64_t end) const {
    std::string bytes((end - first) * stl_facet, '\0');
    read_bytes(start_ + first * stl_facet, bytes.size(), bytes.data());
    Mesh mesh;
    mesh.positions.reserve(3 * (end - first));
    for (std::size_t facet = 0; facet < bytes.size(); facet += stl_facet) {
        VT_Vector corners[3];
        for (std::size_t k = 0; k < 3; ++k) {
            const std::size_t place = facet + 12 + 12 * k;
            corners[k] = float_vector(bytes.data() + place) + VT_Vector{0, 0, 0}; // turns -0 into 0
            if (!ply::is_finite(corners[k])) {
                fail(start_ + first * stl_facet + place, "three finite coordinates");
            }
        }
        const auto are_same = [](const VT_Vector& a, const VT_Vector& b) { return a.x == b.x && a.y == b.y && a.z == b.z; };
        if (!are_same(corners[0], corners[1]) && !are_same(corners[1], corners[2]) && !are_same(corners[2], corners[0])) {
            add_triangle(mesh, corners, {});
        }
    }
    return mesh;
}

double Triangle_File::number_at(const char* bytes, Scalar scalar) const {
    return with_type(scalar, [&](auto type) {
        using Number = decltype(type);
        return static_cast<double>(is_big_endian_ ? load<Number, std::endian::big>(bytes)
                                                  : load<Number, std::endian::little>(bytes));
    });
}

Mesh Triangle_File::read_ply(std::uint64_t first, std::uint64_t end) const {
    std::string bytes((end - first) * record_size_, '\0');
    const std::uint64_t start = start_ + first * record_size_;
    read_bytes(start, bytes.size(), bytes.data());
    std::vector<std::uint32_t> corners;
    corners.reserve(3 * (end - first));
    std::size_t place = 0;
    while (place < bytes.size()) {
        for (const Ply_Property& property : faces_.properties) {
            if (!property.count) {
                place += size_of(property.scalar);
                continue;
            }
            if (number_at(&bytes[place], *property.count) != 3) {
                fail(start + place, "a face of three corners, since faces are read in parts");
            }
            place += size_of(*property.count);
            for (int k = 0; k < 3; ++k) {
                const double number = number_at(&bytes[place], property.scalar);
                if (!(number >= 0 && number < static_cast<double>(vertices_.count))) {
                    fail(start + place, "a vertex index below " + std::to_string(vertices_.count));
                }
                corners.push_back(static_cast<std::uint32_t>(number));
                place += size_of(property.scalar);
            }
        }
    }
    std::vector<std::uint32_t> numbers = corners;
    std::ranges::sort(numbers);
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    const ply::Vertices vertices = read_vertices(numbers);
    Mesh mesh;
    mesh.positions.reserve(corners.size());
    for (std::size_t i = 0; i < corners.size(); i += 3) {
        if (corners[i] == corners[i + 1] || corners[i + 1] == corners[i + 2] || corners[i + 2] == corners[i]) {
            continue;
        }
        VT_Vector places[3], normals[3] = {};
        for (std::size_t k = 0; k < 3; ++k) {
            const auto vertex = static_cast<std::size_t>(std::ranges::lower_bound(numbers, corners[i + k]) - numbers.begin());
            places[k] = vertices.positions[vertex];
            if (!vertices.normals.empty()) {
                normals[k] = vertices.normals[vertex];
            }
            if (!vertices.colors.empty()) {
                mesh.colors.push_back(vertices.colors[vertex]);
            }
        }
        add_triangle(mesh, places, normals);
    }
    return mesh;
}

// Vertices that lie near each other in the file are read at once.
ply::Vertices Triangle_File::read_vertices(const std::vector<std::uint32_t>& numbers) const {
    constexpr std::uint64_t most_bytes = std::uint64_t{1} << 20, widest_gap = 4096;
    ply::Vertices vertices;
    std::string bytes;
    ply::Record record{};
    for (std::size_t i = 0, next = 0; i < numbers.size(); i = next) {
        const std::uint64_t first = numbers[i];
        while (next < numbers.size() && (next == i || ((numbers[next] - first) * vertex_size_ < most_bytes &&
                                                       (numbers[next] - numbers[next - 1]) * vertex_size_ < widest_gap))) {
            ++next;
        }
        bytes.resize((numbers[next - 1] - first + 1) * vertex_size_);
        read_bytes(vertex_start_ + first * vertex_size_, bytes.size(), bytes.data());
        for (std::size_t k = i; k < next; ++k) {
            std::size_t place = (numbers[k] - first) * vertex_size_;
            for (std::size_t p = 0; p < vertices_.properties.size(); ++p) {
                record[vertex_form_.attribute_of[p]] = number_at(&bytes[place], vertices_.properties[p].scalar);
                place += size_of(vertices_.properties[p].scalar);
            }
            if (!ply::append_vertex(vertex_form_, record, vertices)) {
                fail(vertex_start_ + numbers[k] * vertex_size_, "numbers in the range of a float");
            }
        }
    }
    return vertices;
}

void for_each_batch(std::uint64_t first, std::uint64_t end, Load_Limits& limits,
                    const std::function<void(std::uint64_t first, std::uint64_t end, std::size_t place)>& make,
                    const std::function<void(std::size_t place)>& take) {
    constexpr std::uint64_t size = Triangle_File::batch_size;
    share_in_order((end - first + size - 1) / size, threads_for_batches(limits),
                   [&](std::size_t batch, std::size_t place) {
                       const std::uint64_t start = first + batch * size;
                       make(start, std::min(start + size, end), place);
                   },
                   [&](std::size_t, std::size_t place) {
                       take(place);
                       return true;
                   });
}

Bounds bounds_of(const Triangle_File& file, Load_Limits& limits) {
    Bounds all;
    std::vector<Bounds> bounds(places_of_batches(limits));
    for_each_batch(
        0, file.triangle_count(), limits,
        [&](std::uint64_t first, std::uint64_t end, std::size_t place) {
            bounds[place] = {};
            for (const VT_Vector& corner : file.read(first, end).positions) {
                bounds[place].add(widened(corner));
            }
        },
        [&](std::size_t place) { all.add(bounds[place]); });
    if (all.is_empty() || !(all.radius() > 0)) {
        throw Model_Error(file.name() + ": empty scene: expected triangles with an extent, found none");
    }
    return all;
}

std::vector<VT_Vector> outermost_corners(const Triangle_File& file, const Bounds& bounds, const Camera_Settings& camera,
                                         Load_Limits& limits) {
    std::vector<VT_Vector> all;
    std::vector<std::vector<VT_Vector>> found(places_of_batches(limits));
    const VT_Vector_D center = bounds.center();
    const double radius = bounds.radius();
    for_each_batch(
        0, file.triangle_count(), limits,
        [&](std::uint64_t first, std::uint64_t end, std::size_t place) {
            Mesh mesh = file.read(first, end);
            for (VT_Vector& corner : mesh.positions) {
                corner = place_in_unit_sphere(corner, center, radius);
            }
            found[place] = outermost_points(camera, mesh.positions);
        },
        [&](std::size_t place) {
            all.insert(all.end(), found[place].begin(), found[place].end());
            all = outermost_points(camera, all);
        });
    return all;
}

} // namespace vorna::drawing::model
