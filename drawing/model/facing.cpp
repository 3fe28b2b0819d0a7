// Which way the faces of a mesh look.
#include "drawing/model/facing.h"

#include <algorithm>
#include <atomic>
#include <numeric>
#include <utility>

#include "drawing/files/hash_seed.h"
#include "drawing/model/places.h"
#include "drawing/model/tuple_table.h"
#include "drawing/model/vectors.h"

namespace vorna::drawing::model {
namespace {

std::uint64_t mixed(std::uint64_t word) {
    word = (word ^ word >> 32) * 0x9E3779B97F4A7C15;
    return word ^ word >> 29;
}

// Whether each side of a triangle lies at the same side of another one, in the opposite direction: the sum of a hash over all
// sides is then the one over all sides turned round. Another sum of hashes is the same by chance only, once in 2^64 cases.
bool is_closed(const Mesh& mesh, unsigned threads) {
    Long_List<std::uint64_t> hashes(mesh.positions.size());
    const std::uint64_t seed = hash_seed();
    share_range(hashes.size(), threads, [&](std::size_t first, std::size_t end) {
        for (std::size_t p = first; p < end; ++p) {
            const auto [x, y, z] = words_of(mesh.positions[p]);
            hashes[p] = mixed(mixed(seed ^ x) ^ (std::uint64_t{y} << 32 | z));
        }
    });
    std::atomic<std::uint64_t> all = 0;
    share_range(mesh.triangle_count(), threads, [&](std::size_t first, std::size_t end) {
        std::uint64_t sum = 0;
        for (std::size_t t = first; t < end; ++t) {
            for (std::size_t i = 0; i < 3; ++i) {
                const std::uint64_t from = hashes[mesh.triangles[3 * t + i]], to = hashes[mesh.triangles[3 * t + (i + 1) % 3]];
                sum += mixed(3 * from + to) - mixed(3 * to + from);
            }
        }
        all += sum;
    });
    return all == 0;
}

// The bodies of a closed mesh: triangles that are connected by vertices at the same places.
class Bodies {
public:
    Bodies(const Mesh& mesh, unsigned threads) : mesh_(mesh) {
        Places places = find_places(mesh.positions, threads);
        parents_.resize(places.count());
        places_ = std::move(places.numbers);
        std::iota(parents_.begin(), parents_.end(), 0U);
        for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
            join(i, i + 1);
            join(i, i + 2);
        }
    }

    // Whether each has a volume above 0.
    bool all_look_outwards() {
        Long_List<double> volumes(parents_.size(), 0.0);
        const std::vector<std::uint32_t>& corners = mesh_.triangles;
        for (std::size_t i = 0; i < corners.size(); i += 3) {
            const auto place = [&](std::size_t corner) { return widened(mesh_.positions[corners[i + corner]]); };
            volumes[root_of(places_[corners[i]])] += dot(cross(place(0), place(1)), place(2));
        }
        for (std::size_t i = 0; i < corners.size(); i += 3) {
            if (!(volumes[root_of(places_[corners[i]])] > 0)) {
                return false;
            }
        }
        return true;
    }

private:
    std::uint32_t root_of(std::uint32_t place) {
        while (parents_[place] != place) {
            place = parents_[place] = parents_[parents_[place]];
        }
        return place;
    }

    void join(std::size_t corner, std::size_t other) {
        const std::uint32_t a = root_of(places_[mesh_.triangles[corner]]), b = root_of(places_[mesh_.triangles[other]]);
        parents_[std::max(a, b)] = std::min(a, b);
    }

    const Mesh& mesh_;
    std::vector<std::uint32_t> places_; // by vertex
    Long_List<std::uint32_t> parents_;  // by place
};

} // namespace

Facing::Facing(const Mesh& mesh, unsigned threads, bool is_part) : mesh_(mesh), threads_(threads), is_part_(is_part) {
}

void Facing::find() const {
    hides_backs_ = !is_part_ && is_closed(mesh_, threads_) && Bodies(mesh_, threads_).all_look_outwards();
    normals_.resize(mesh_.triangle_count());
    share_range(normals_.size(), threads_, [this](std::size_t first, std::size_t end) {
        for (std::size_t t = first; t < end; ++t) {
            normals_[t] = hides_backs_ ? winding_normal(mesh_, t) : face_normal(mesh_, t);
        }
    });
}

} // namespace vorna::drawing::model
