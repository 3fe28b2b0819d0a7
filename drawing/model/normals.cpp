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
#include <span>
#include <utility>

#include "drawing/files/helpers.h"
#include "drawing/files/long_list.h"
#include "drawing/model/places.h"
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

class Normal_Maker {
public:
    Normal_Maker(Mesh& mesh, std::optional<double> crease, unsigned threads) : mesh_(mesh), threads_(threads) {
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
        if (keep_given()) {
            return;
        }
        faces_.resize(mesh_.triangle_count());
        share_range(faces_.size(), threads_, [this](std::size_t first, std::size_t end) {
            for (std::size_t t = first; t < end; ++t) {
                const std::uint32_t* corners = &mesh_.triangles[3 * t];
                faces_[t] = face_of(mesh_.positions[corners[0]], mesh_.positions[corners[1]], mesh_.positions[corners[2]]);
            }
        });
        next_split_.assign(mesh_.positions.size(), unused);
        const Places places = find_places(mesh_.positions, threads_);
        auto corners = grouped(
            static_cast<std::uint32_t>(mesh_.triangles.size()), static_cast<std::uint32_t>(places.count()), threads_,
            [&](std::uint32_t corner) { return places.numbers[mesh_.triangles[corner]]; },
            [](std::uint32_t corner) { return corner; });
        // A vertex belongs to one place, so that parts of the places share no vertices but those that they add in the end.
        constexpr std::size_t least = 4096;
        const std::size_t parts = part_count(places.count(), threads_, least);
        std::vector<Part> added(parts);
        share_tasks(parts, threads_, [&](std::size_t part, std::size_t) {
            const std::size_t end = places.count() * (part + 1) / parts;
            for (std::size_t p = places.count() * part / parts; p < end; ++p) {
                shade_place(corners[p], added[part]);
            }
        });
        std::ranges::for_each(added, [this](const Part& part) { add_splits(part); });
    }

private:
    // Vertices that are split off from others at the places of a part, and the corners that get them instead of theirs.
    struct Split {
        std::uint32_t vertex; // that it is like, but for the normal
        std::uint32_t next;   // the next one of this vertex
        VT_Vector normal;
    };
    struct Corner_Split {
        std::uint32_t corner, split;
    };
    // Faces around a place that are looked at as one: one face, or several of about the same direction.
    struct Side {
        VT_Vector normal, share;
    };
    struct Part {
        std::vector<Split> splits;
        std::vector<Corner_Split> moved;
        std::vector<Side> sides; // of a place
    };

    // Ends of the chains of splits.
    static constexpr std::uint32_t unused = 0xFFFFFFFF, last = 0xFFFFFFFE;

    // Gives normals that the mesh has the length 1. True when no triangle needs another one.
    bool keep_given() {
        const bool has_any = !mesh_.normals.empty();
        if (!has_any) {
            is_given_.assign(mesh_.positions.size(), std::uint8_t{0});
            reserve_in_large_pages(mesh_.normals, mesh_.positions.size());
            mesh_.normals.resize(mesh_.positions.size(), {0, 0, 1});
            return mesh_.triangles.empty();
        }
        is_given_.resize(mesh_.positions.size());
        share_range(mesh_.normals.size(), threads_, [this](std::size_t first, std::size_t end) {
            for (std::size_t v = first; v < end; ++v) {
                const std::optional<VT_Vector> given = unit(mesh_.normals[v]);
                mesh_.normals[v] = given.value_or(VT_Vector{0, 0, 1});
                is_given_[v] = given.has_value();
            }
        });
        return std::ranges::all_of(mesh_.triangles, [this](std::uint32_t vertex) { return is_given_[vertex] != 0; });
    }

    static float cosine_of(double degrees) { return static_cast<float>(std::cos(degrees * (std::numbers::pi / 180))); }

    const Face& face(std::uint32_t corner) const { return faces_[corner / 3]; }
    VT_Vector share(std::uint32_t corner) const { return face(corner).normal * face(corner).weights[corner % 3]; }
    std::uint32_t group(std::uint32_t corner) const { return mesh_.smoothing.empty() ? by_angle : mesh_.smoothing[corner / 3]; }

    // Corners of one place, in the order of their triangles. Reorders them by groups.
    void shade_place(std::span<std::uint32_t> corners, Part& part) {
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
                shade_by_angle(same, part);
            } else if (of_group == not_smooth) {
                std::ranges::for_each(same, [&](std::uint32_t corner) { set(corner, normal_of(corner, {}), part); });
            } else {
                shade_as_one(same, sum(same), part);
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

    void shade_as_one(std::span<const std::uint32_t> corners, const VT_Vector& sum, Part& part) {
        const std::optional<VT_Vector> normal = unit(sum);
        std::uint32_t done = unused; // the vertex before, when it has this normal itself
        for (const std::uint32_t corner : corners) {
            const std::uint32_t vertex = mesh_.triangles[corner];
            if (vertex != done) {
                const bool keeps_vertex = set(corner, normal ? *normal : normal_of(corner, {}), part);
                done = normal && keeps_vertex ? vertex : unused;
            }
        }
    }

    // The direction of a sum of faces, else that of the corner's own.
    VT_Vector normal_of(std::uint32_t corner, const VT_Vector& sum) const {
        const VT_Vector& own = face(corner).normal;
        return unit(sum).value_or(dot(own, own) > 0 ? own : VT_Vector{0, 0, 1});
    }

    void shade_by_angle(std::span<const std::uint32_t> corners, Part& part) {
        constexpr std::size_t most_pairs_of = 512;
        const VT_Vector all = sum(corners);
        // Normals within half the angle of one direction are within the angle of each other.
        const float all_size = length(all);
        if (std::ranges::all_of(corners, [&](std::uint32_t c) {
                return !face(c).has_direction || dot(face(c).normal, all) > surely_all_ * all_size;
            })) {
            shade_as_one(corners, all, part);
            return;
        }
        std::vector<Side>& sides = part.sides;
        sides.clear();
        if (corners.size() <= most_pairs_of) {
            for (const std::uint32_t corner : corners) {
                sides.push_back({face(corner).normal, share(corner)});
            }
        } else {
            gather(corners, sides);
        }
        for (const std::uint32_t corner : corners) {
            const Face& own = face(corner);
            VT_Vector total;
            for (const Side& side : sides) {
                if (dot(own.normal, side.normal) >= least_cosine_) {
                    total = total + side.share;
                }
            }
            set(corner, normal_of(corner, own.has_direction ? total : all), part);
        }
    }

    // Where very many faces meet, those of about the same direction are taken together, which keeps the work in proportion to
    // their number.
    void gather(std::span<const std::uint32_t> corners, std::vector<Side>& sides) const {
        constexpr float cells = 8; // in each unit of an axis
        const auto cell = [](float coordinate) { return static_cast<std::uint32_t>((coordinate + 1.5F) * cells); };
        Triple_Table table;
        for (const std::uint32_t corner : corners) {
            const VT_Vector& normal = face(corner).normal;
            const std::uint32_t number = table.index_of({cell(normal.x), cell(normal.y), cell(normal.z)});
            if (number == sides.size()) {
                sides.emplace_back();
            }
            sides[number].normal = sides[number].normal + normal;
            sides[number].share = sides[number].share + share(corner);
        }
        for (Side& side : sides) {
            side.normal = unit(side.normal).value_or(VT_Vector{});
        }
    }

    // False when the corner gets a split of its vertex.
    bool set(std::uint32_t corner, const VT_Vector& wanted, Part& part) {
        constexpr int most_steps = 510; // after which vertices may have equals
        const std::uint32_t vertex = mesh_.triangles[corner];
        if (is_given_[vertex]) {
            return true;
        }
        if (next_split_[vertex] == unused) {
            next_split_[vertex] = last;
            mesh_.normals[vertex] = wanted;
            return true;
        }
        const auto is_wanted = [&](const VT_Vector& known) {
            return known.x == wanted.x && known.y == wanted.y && known.z == wanted.z;
        };
        if (is_wanted(mesh_.normals[vertex])) {
            return true;
        }
        std::uint32_t split = next_split_[vertex];
        for (int step = 0; split != last && step < most_steps && !is_wanted(part.splits[split].normal); ++step) {
            split = part.splits[split].next;
        }
        if (split == last || !is_wanted(part.splits[split].normal)) {
            split = static_cast<std::uint32_t>(part.splits.size());
            part.splits.push_back({vertex, std::exchange(next_split_[vertex], split), wanted});
        }
        part.moved.push_back({corner, split});
        return false;
    }

    void add_splits(const Part& part) {
        const auto first = static_cast<std::uint32_t>(mesh_.positions.size());
        const auto repeat = [&part](auto& list) {
            if (!list.empty()) {
                for (const Split& split : part.splits) {
                    const auto element = list[split.vertex];
                    list.push_back(element);
                }
            }
        };
        repeat(mesh_.positions);
        repeat(mesh_.colors);
        repeat(mesh_.coordinates);
        for (const Split& split : part.splits) {
            mesh_.normals.push_back(split.normal);
        }
        for (const Corner_Split& moved : part.moved) {
            mesh_.triangles[moved.corner] = first + moved.split;
        }
    }

    Mesh& mesh_;
    unsigned threads_;
    float least_cosine_, surely_all_;
    Long_List<Face> faces_;
    Long_List<std::uint8_t> is_given_;    // by vertex
    Long_List<std::uint32_t> next_split_; // by vertex: the split of it that was made last, unused or last
};

} // namespace

void complete_normals(Mesh& mesh, std::optional<double> crease, unsigned threads) {
    Normal_Maker(mesh, crease, threads).make();
    mesh.smoothing = {};
}

} // namespace vorna::drawing::model
