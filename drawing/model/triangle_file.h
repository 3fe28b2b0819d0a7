// Triangles of a file in its order, read some at a time, so that the file may be larger than memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "drawing/files/helpers.h"
#include "drawing/files/load_limits.h"
#include "drawing/model/bounds.h"
#include "drawing/model/camera.h"
#include "drawing/model/mesh.h"
#include "drawing/model/ply_header.h"
#include "drawing/model/ply_vertices.h"

namespace vorna::drawing::model {

// A binary STL, or a binary PLY whose vertices come before its faces, all of them triangles. Everything throws Model_Error that
// names the file and the place.
class Triangle_File {
public:
    // Triangles that are read at a time, and bytes that reading and drawing them takes, roughly.
    static constexpr std::uint64_t batch_size = std::uint64_t{1} << 16, batch_memory = batch_size * 640;

    // suffix: of its format in lower case.
    Triangle_File(const std::string& name, const std::string& suffix);

    const std::string& name() const noexcept { return name_; }
    std::uint64_t triangle_count() const noexcept { return count_; }
    bool has_normals() const noexcept { return vertex_form_.has_normals; }

    // Triangles [first, end), three vertices each, in the file's coordinates. Those with two corners in common are left out.
    // Normals are those of the file, or the faces' where it has none. Several threads may read at once.
    Mesh read(std::uint64_t first, std::uint64_t end) const;

private:
    void open_stl();
    void open_ply();
    void read_bytes(std::uint64_t place, std::size_t count, char* bytes) const;
    void check_size(std::uint64_t needed) const;
    [[noreturn]] void fail(std::uint64_t place, const std::string& expected) const;
    Mesh read_stl(std::uint64_t first, std::uint64_t end) const;
    Mesh read_ply(std::uint64_t first, std::uint64_t end) const;
    ply::Vertices read_vertices(const std::vector<std::uint32_t>& numbers) const;
    double number_at(const char* bytes, Scalar scalar) const;

    std::string name_;
    mutable std::mutex reading_;
    mutable std::ifstream stream_;
    std::uint64_t size_ = 0;                                // bytes
    std::uint64_t count_ = 0, start_ = 0, record_size_ = 0; // of the triangles
    // Of PLY.
    bool is_big_endian_ = false;
    Ply_Element vertices_, faces_;
    ply::Vertex_Form vertex_form_;
    std::uint64_t vertex_start_ = 0, vertex_size_ = 0;
};

// Threads that read and prepare batches at a time: their batches take a quarter of the memory at most.
inline std::size_t threads_for_batches(const Load_Limits& limits) {
    constexpr std::uint64_t part = 4, places = 2; // of a thread, see places_in_order
    const std::uint64_t most = limits.memory() / part / (places * Triangle_File::batch_memory);
    return static_cast<std::size_t>(std::clamp<std::uint64_t>(most, 1, limits.threads()));
}
// Batches that are in memory at a time.
inline std::size_t places_of_batches(const Load_Limits& limits) {
    return places_in_order(threads_for_batches(limits));
}

// Calls make(first, end, place) for the batches of the triangles [first, end) on several threads and take(place) in their order,
// one at a time; place is below places_of_batches(limits).
void for_each_batch(std::uint64_t first, std::uint64_t end, Load_Limits& limits,
                    const std::function<void(std::uint64_t first, std::uint64_t end, std::size_t place)>& make,
                    const std::function<void(std::size_t place)>& take);

// Where the triangles of a file lie, and those of their corners that decide how a camera is fitted. Each reads the whole file.
// Throw Model_Error for a file without a triangle that has an extent.
Bounds bounds_of(const Triangle_File& file, Load_Limits& limits);
std::vector<VT_Vector> outermost_corners(const Triangle_File& file, const Bounds& bounds, const Camera_Settings& camera,
                                         Load_Limits& limits);

} // namespace vorna::drawing::model
