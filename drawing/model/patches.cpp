// The smooth patches of a model's surface: the sets of vertices that triangles and equal corners connect.
#include "drawing/model/patches.h"

#include <algorithm>
#include <numeric>
#include <span>

#include "drawing/model/tuple_table.h"
#include "drawing/model/vectors.h"

namespace vorna::drawing::model {
namespace {

constexpr float least_cosine = 0.94F;
// Vertices of one place with which another one is compared: bounds the work where very many meet.
constexpr std::size_t most_compared = 64;

// Sets of numbers that are joined pair by pair; the least number names a set.
class Joined_Sets {
public:
    explicit Joined_Sets(std::size_t count) : parents_(count) { std::iota(parents_.begin(), parents_.end(), 0U); }

    std::uint32_t name(std::uint32_t number) {
        while (parents_[number] != number) {
            parents_[number] = parents_[parents_[number]];
            number = parents_[number];
        }
        return number;
    }
    void join(std::uint32_t a, std::uint32_t b) {
        const auto [low, high] = std::minmax({name(a), name(b)});
        parents_[high] = low;
    }

private:
    std::vector<std::uint32_t> parents_;
};

// The vertices of one place, in the order of their numbers.
void join_equal_corners(const Mesh& mesh, std::span<const std::uint32_t> vertices, Joined_Sets& sets) {
    for (std::size_t i = 1; i < vertices.size(); ++i) {
        for (std::size_t k = i - std::min(i, most_compared); k < i; ++k) {
            if (dot(mesh.normals[vertices[i]], mesh.normals[vertices[k]]) >= least_cosine) {
                sets.join(vertices[i], vertices[k]);
            }
        }
    }
}

} // namespace

std::vector<std::uint32_t> patches_of(const Mesh& mesh) {
    const std::size_t count = mesh.positions.size();
    std::vector<std::uint32_t> places(count);
    Triple_Table table;
    std::ranges::transform(mesh.positions, places.begin(), [&](const VT_Vector& p) { return table.index_of(words_of(p)); });
    std::vector<std::uint32_t> starts(table.keys().size() + 1), by_place(count);
    std::ranges::for_each(places, [&](std::uint32_t place) { ++starts[place + 1]; });
    std::partial_sum(starts.begin(), starts.end(), starts.begin());
    std::vector<std::uint32_t> next(starts.begin(), starts.end() - 1);
    for (std::uint32_t vertex = 0; vertex < count; ++vertex) {
        by_place[next[places[vertex]]++] = vertex;
    }
    Joined_Sets sets(count);
    for (std::size_t place = 0; place + 1 < starts.size(); ++place) {
        join_equal_corners(mesh, std::span(by_place).subspan(starts[place], starts[place + 1] - starts[place]), sets);
    }
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        sets.join(mesh.triangles[i], mesh.triangles[i + 1]);
        sets.join(mesh.triangles[i], mesh.triangles[i + 2]);
    }
    std::vector<std::uint32_t> patches(mesh.triangle_count());
    for (std::size_t t = 0; t < patches.size(); ++t) {
        patches[t] = sets.name(mesh.triangles[3 * t]);
    }
    return patches;
}

} // namespace vorna::drawing::model
