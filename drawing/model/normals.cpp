// Normals of vertices, where a model file gives none.
//
// Faces count by their area times the angle at the vertex. The area keeps large faces flat beside the small ones of a fillet;
// with the angle, the diagonal by which a quad is cut makes no difference. Results are the same on every machine: sums run in the
// order of the triangles, the arithmetic is that of +, *, / and square roots, and the cosine of the crease angle is rounded.
#include "drawing/model/normals.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <numeric>
#include <span>
#include <utility>

#include "drawing/model/tuple_table.h"
#include "drawing/model/vectors.h"

namespace vorna::drawing::model {
namespace {

// Of a triangle.
struct Face {
    VT_Vector normal; // of length 1, or 0 for a triangle without area
    std::array<float, 3> weights;
    bool has_direction; // false where rounded coordinates may turn the normal
};

// Within 7e-5 radians. The library's acos may differ in the last bit between machines.
float angle_of(float cosine) {
    const float x = std::min(std::abs(cosine), 1.0F);
    const float angle = std::sqrt(1.0F - x) * (1.5707288F + x * (-0.2121144F + x * (0.0742610F + x * -0.0187293F)));
    return cosine < 0.0F ? std::numbers::pi_v<float> - angle : angle;
}

Face face_of(const VT_Vector& a, const VT_Vector& b, const VT_Vector& c) {
    // Files hold coordinates to about this part of the model's size; needles that are not wider point anywhere.
    constexpr double rounding = 1.0 / 65536, needle = 1.0 / 256;
    const VT_Vector_D ab = widened(b) - widened(a), bc = widened(c) - widened(b), ca = widened(a) - widened(c);
    const VT_Vector_D twice_area = cross(ab, bc);
    const double area = length(twice_area);
    if (!(area > 0)) {
        return {{0, 0, 0}, {0, 0, 0}, false};
    }
    const double ab_size = length(ab), bc_size = length(bc), ca_size = length(ca),
                 longest = std::max({ab_size, bc_size, ca_size});
    const auto weight = [area](const VT_Vector_D& in, double in_size, const VT_Vector_D& out, double out_size) {
        return static_cast<float>(area) * angle_of(static_cast<float>(-dot(in, out) / (in_size * out_size)));
    };
    return {narrowed(twice_area * (1 / area)),
            {weight(ca, ca_size, ab, ab_size), weight(ab, ab_size, bc, bc_size), weight(bc, bc_size, ca, ca_size)},
            area > longest * std::min(rounding, longest * needle)};
}

// The corners of triangles by their places: corner 3 t + k is that of triangle t at its vertex k.
struct Corners_By_Place {
    std::vector<std::uint32_t> starts, corners;

    explicit Corners_By_Place(const Mesh& mesh) {
        Triple_Table table;
        std::vector<std::uint32_t> places(mesh.positions.size());
        table.reserve(places.size());
        std::ranges::transform(mesh.positions, places.begin(), [&](const VT_Vector& p) { return table.index_of(words_of(p)); });
        starts.resize(table.keys().size() + 1);
        for (const std::uint32_t vertex : mesh.triangles) {
            ++starts[places[vertex] + 1];
        }
        std::partial_sum(starts.begin(), starts.end(), starts.begin());
        corners.resize(mesh.triangles.size());
        std::vector<std::uint32_t> next(starts.begin(), starts.end() - 1);
        for (std::uint32_t corner = 0; corner < corners.size(); ++corner) {
            corners[next[places[mesh.triangles[corner]]]++] = corner;
        }
    }
};

class Normal_Maker {
public:
    Normal_Maker(Mesh& mesh, std::optional<double> crease) : mesh_(mesh) {
        // A bend of exactly the crease angle counts as smooth, however it is rounded.
        constexpr double tolerance = 0.05;
        const double degrees = crease.value_or(default_crease) + tolerance;
        least_cosine_ = degrees >= 180 ? -2 : cosine_of(degrees);
        surely_all_ = degrees >= 180 ? -2 : cosine_of(std::max(degrees / 2 - tolerance, 0.0));
        if (crease || std::ranges::adjacent_find(mesh.smoothing, std::not_equal_to{}) == mesh.smoothing.end()) {
            // A number that all faces have is the exporter's constant and tells no edges apart.
            mesh.smoothing.clear();
        }
    }

    void make() {
        is_given_.resize(mesh_.positions.size());
        mesh_.normals.resize(mesh_.positions.size());
        for (std::size_t v = 0; v < mesh_.normals.size(); ++v) {
            const std::optional<VT_Vector> given = unit(mesh_.normals[v]);
            mesh_.normals[v] = given.value_or(VT_Vector{0, 0, 1});
            is_given_[v] = given.has_value();
        }
        if (std::ranges::all_of(mesh_.triangles, [this](std::uint32_t vertex) { return is_given_[vertex]; })) {
            return;
        }
        faces_.reserve(mesh_.triangle_count());
        for (std::size_t i = 0; i < mesh_.triangles.size(); i += 3) {
            faces_.push_back(face_of(mesh_.positions[mesh_.triangles[i]], mesh_.positions[mesh_.triangles[i + 1]],
                                     mesh_.positions[mesh_.triangles[i + 2]]));
        }
        next_split_.assign(mesh_.positions.size(), unused);
        Corners_By_Place places(mesh_);
        for (std::size_t p = 0; p + 1 < places.starts.size(); ++p) {
            shade_place({places.corners.begin() + places.starts[p], places.corners.begin() + places.starts[p + 1]});
        }
    }

private:
    // Chains of the vertices that a vertex is split into.
    static constexpr std::uint32_t unused = 0xFFFFFFFF, last = 0xFFFFFFFE;

    static float cosine_of(double degrees) { return static_cast<float>(std::cos(degrees * (std::numbers::pi / 180))); }

    const Face& face(std::uint32_t corner) const { return faces_[corner / 3]; }
    VT_Vector share(std::uint32_t corner) const { return face(corner).normal * face(corner).weights[corner % 3]; }
    std::uint32_t group(std::uint32_t corner) const { return mesh_.smoothing.empty() ? by_angle : mesh_.smoothing[corner / 3]; }

    // Corners of one place, in the order of their triangles. Reorders them by groups.
    void shade_place(std::span<std::uint32_t> corners) {
        if (!mesh_.smoothing.empty()) {
            std::ranges::stable_sort(corners, {}, [this](std::uint32_t corner) { return group(corner); });
        }
        for (std::size_t start = 0, end = 0; start < corners.size(); start = end) {
            const std::uint32_t of_group = group(corners[start]);
            while (end < corners.size() && group(corners[end]) == of_group) {
                ++end;
            }
            const auto same = corners.subspan(start, end - start);
            if (of_group == by_angle) {
                shade_by_angle(same);
            } else if (of_group == not_smooth) {
                std::ranges::for_each(same, [this](std::uint32_t corner) { set(corner, normal_of(corner, {})); });
            } else {
                shade_as_one(same, sum(same));
            }
        }
    }

    VT_Vector sum(std::span<const std::uint32_t> corners) const {
        VT_Vector total;
        for (const std::uint32_t corner : corners) {
            total = total + share(corner);
        }
        return total;
    }

    void shade_as_one(std::span<const std::uint32_t> corners, const VT_Vector& sum) {
        const std::optional<VT_Vector> normal = unit(sum);
        std::uint32_t done = unused; // the vertex before, when it has this normal itself
        for (const std::uint32_t corner : corners) {
            const std::uint32_t vertex = mesh_.triangles[corner];
            if (vertex != done) {
                set(corner, normal ? *normal : normal_of(corner, {}));
                done = normal && mesh_.triangles[corner] == vertex ? vertex : unused;
            }
        }
    }

    // The direction of a sum of faces, else that of the corner's own.
    VT_Vector normal_of(std::uint32_t corner, const VT_Vector& sum) const {
        const VT_Vector& own = face(corner).normal;
        return unit(sum).value_or(dot(own, own) > 0 ? own : VT_Vector{0, 0, 1});
    }

    void shade_by_angle(std::span<const std::uint32_t> corners) {
        constexpr std::size_t most_pairs_of = 512;
        const VT_Vector all = sum(corners);
        // Normals within half the angle of one direction are within the angle of each other.
        const float all_size = length(all);
        if (std::ranges::all_of(corners, [&](std::uint32_t c) {
                return !face(c).has_direction || dot(face(c).normal, all) > surely_all_ * all_size;
            })) {
            shade_as_one(corners, all);
            return;
        }
        sides_.clear();
        if (corners.size() <= most_pairs_of) {
            for (const std::uint32_t corner : corners) {
                sides_.push_back({face(corner).normal, share(corner)});
            }
        } else {
            gather(corners);
        }
        for (const std::uint32_t corner : corners) {
            const Face& own = face(corner);
            VT_Vector total;
            for (const Side& side : sides_) {
                if (dot(own.normal, side.normal) >= least_cosine_) {
                    total = total + side.share;
                }
            }
            set(corner, normal_of(corner, own.has_direction ? total : all));
        }
    }

    // Where very many faces meet, those of about the same direction are taken together, which keeps the work in proportion to
    // their number.
    void gather(std::span<const std::uint32_t> corners) {
        constexpr float cells = 8; // in each unit of an axis
        const auto cell = [](float coordinate) { return static_cast<std::uint32_t>((coordinate + 1.5F) * cells); };
        Triple_Table table;
        for (const std::uint32_t corner : corners) {
            const VT_Vector& normal = face(corner).normal;
            const std::uint32_t number = table.index_of({cell(normal.x), cell(normal.y), cell(normal.z)});
            if (number == sides_.size()) {
                sides_.emplace_back();
            }
            sides_[number].normal = sides_[number].normal + normal;
            sides_[number].share = sides_[number].share + share(corner);
        }
        for (Side& side : sides_) {
            side.normal = unit(side.normal).value_or(VT_Vector{});
        }
    }

    void set(std::uint32_t corner, const VT_Vector& wanted) {
        constexpr int most_steps = 512; // after which vertices may have equals
        const std::uint32_t vertex = mesh_.triangles[corner];
        if (is_given_[vertex]) {
            return;
        }
        if (next_split_[vertex] == unused) {
            next_split_[vertex] = last;
            mesh_.normals[vertex] = wanted;
            return;
        }
        std::uint32_t split = vertex;
        for (int step = 0; split != last && step < most_steps; ++step, split = next_split_[split]) {
            const VT_Vector& known = mesh_.normals[split];
            if (known.x == wanted.x && known.y == wanted.y && known.z == wanted.z) {
                mesh_.triangles[corner] = split;
                return;
            }
        }
        mesh_.triangles[corner] = add_split(vertex, wanted);
    }

    std::uint32_t add_split(std::uint32_t vertex, const VT_Vector& normal) {
        const auto added = static_cast<std::uint32_t>(mesh_.positions.size());
        const auto repeat = [vertex](auto& list) {
            if (!list.empty()) {
                const auto element = list[vertex];
                list.push_back(element);
            }
        };
        repeat(mesh_.positions);
        repeat(mesh_.colors);
        repeat(mesh_.coordinates);
        mesh_.normals.push_back(normal);
        is_given_.push_back(false);
        next_split_.push_back(std::exchange(next_split_[vertex], added));
        return added;
    }

    // Faces around a place that are looked at as one: one face, or several of about the same direction.
    struct Side {
        VT_Vector normal, share;
    };

    Mesh& mesh_;
    float least_cosine_, surely_all_;
    std::vector<Face> faces_;
    std::vector<bool> is_given_;
    std::vector<std::uint32_t> next_split_;
    std::vector<Side> sides_;
};

} // namespace

void complete_normals(Mesh& mesh, std::optional<double> crease) {
    Normal_Maker(mesh, crease).make();
    mesh.smoothing = {};
}

} // namespace vorna::drawing::model
