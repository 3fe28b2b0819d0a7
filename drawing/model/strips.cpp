// Greedy strips: from each triangle left over, the longest of its three ways, grown at both ends.
#include "drawing/model/strips.h"

#include <algorithm>

#include "drawing/model/places.h"

namespace vorna::drawing::model {
namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;

// Half-edge 3t + k leads from corner k of triangle t to the next one.
constexpr std::uint32_t next_in_triangle(std::uint32_t half_edge) noexcept {
    return half_edge % 3 == 2 ? half_edge - 2 : half_edge + 1;
}

constexpr std::uint32_t previous_in_triangle(std::uint32_t half_edge) noexcept {
    return half_edge % 3 == 0 ? half_edge + 2 : half_edge - 1;
}

// The half-edge on the other side of each one, or none. Half-edges are grouped by their lower vertex, and sorted within a group
// by their higher one, so that the two sides of an edge lie side by side. Where more than two triangles share an edge, they are
// paired as they come.
Long_List<std::uint32_t> pair_half_edges(std::span<const std::uint32_t> triangles, std::uint32_t vertex_count, unsigned threads) {
    const auto count = static_cast<std::uint32_t>(triangles.size());
    auto groups = grouped(
        count, vertex_count, threads, [&](std::uint32_t h) { return std::min(triangles[h], triangles[next_in_triangle(h)]); },
        [&](std::uint32_t h) { return std::uint64_t{std::max(triangles[h], triangles[next_in_triangle(h)])} << 32 | h; });
    Long_List<std::uint32_t> across(count);
    share_range(count, threads,
                [&](std::size_t first, std::size_t end) { std::fill(across.data() + first, across.data() + end, none); });
    share_range(groups.count(), threads, [&](std::size_t first, std::size_t end) {
        for (std::size_t group = first; group < end; ++group) {
            const std::span<std::uint64_t> sorted = groups[group];
            std::sort(sorted.begin(), sorted.end());
            for (std::size_t i = 0; i + 1 < sorted.size(); ++i) {
                if (sorted[i] >> 32 == sorted[i + 1] >> 32) {
                    const auto a = static_cast<std::uint32_t>(sorted[i]), b = static_cast<std::uint32_t>(sorted[i + 1]);
                    across[a] = b;
                    across[b] = a;
                    ++i;
                }
            }
        }
    });
    return across;
}

class Strip_Maker {
public:
    Strip_Maker(std::span<const std::uint32_t> triangles, std::uint32_t vertex_count, unsigned threads)
        : triangles_(triangles), across_(pair_half_edges(triangles, vertex_count, threads)), visit_(triangles.size() / 3, 0U) {}

    Strips make() {
        strips_.starts.push_back(0);
        strips_.vertices.reserve(triangles_.size() / 2);
        strips_.triangle_order.reserve(triangles_.size() / 2);
        const auto count = static_cast<std::uint32_t>(visit_.size());
        for (std::uint32_t seed = 0; seed < count; ++seed) {
            if (visit_[seed] == used) {
                continue;
            }
            // The next strip begins beside the last one where it can: neighbours stay close in memory.
            for (std::uint32_t t = seed; t != none; t = unused_neighbor()) {
                append_best_strip(t);
            }
        }
        return std::move(strips_);
    }

private:
    static constexpr std::uint32_t used = 0xFFFFFFFF;

    // One way through the mesh; forth and back hold the half-edges by which triangles were entered.
    struct Way {
        std::uint32_t first_corner = 0;
        std::vector<std::uint32_t> forth, back;
        std::size_t length() const { return forth.size() + back.size(); }
    };

    std::uint32_t vertex_opposite(std::uint32_t half_edge) const { return triangles_[previous_in_triangle(half_edge)]; }

    // Leaves by exit, with last the strip's last vertex so far, which lies on exit.
    void walk(std::uint32_t exit, std::uint32_t last, std::vector<std::uint32_t>& entered) {
        entered.clear();
        for (;;) {
            const std::uint32_t entry = across_[exit];
            if (entry == none || visit_[entry / 3] == used || visit_[entry / 3] == attempt_) {
                return;
            }
            visit_[entry / 3] = attempt_;
            entered.push_back(entry);
            exit = triangles_[entry] == last ? previous_in_triangle(entry) : next_in_triangle(entry);
            last = vertex_opposite(entry);
        }
    }

    void append_best_strip(std::uint32_t seed) {
        for (std::uint32_t k = 0; k < 3; ++k) {
            const std::uint32_t first = 3 * seed + k, second = next_in_triangle(first);
            candidate_.first_corner = first;
            ++attempt_;
            visit_[seed] = attempt_;
            walk(second, triangles_[next_in_triangle(second)], candidate_.forth);
            walk(first, triangles_[first], candidate_.back);
            if (k == 0 || candidate_.length() > best_.length()) {
                std::swap(best_, candidate_);
            }
        }
        append(best_);
    }

    void append(const Way& way) {
        for (std::size_t i = way.back.size(); i-- > 0;) {
            add(vertex_opposite(way.back[i]), way.back[i] / 3);
        }
        const std::uint32_t second = next_in_triangle(way.first_corner);
        add(triangles_[way.first_corner], way.first_corner / 3);
        // From here on a vertex completes the triangle after the one it begins.
        std::size_t forth = 0;
        const auto next_triangle = [&] { return forth < way.forth.size() ? way.forth[forth++] / 3 : no_triangle; };
        add(triangles_[second], next_triangle());
        add(triangles_[next_in_triangle(second)], next_triangle());
        for (const std::uint32_t entry : way.forth) {
            add(vertex_opposite(entry), next_triangle());
        }
        strips_.starts.push_back(static_cast<std::uint32_t>(strips_.vertices.size()));
    }

    void add(std::uint32_t vertex, std::uint32_t triangle) {
        strips_.vertices.push_back(vertex);
        strips_.triangle_order.push_back(triangle);
        if (triangle != no_triangle) {
            visit_[triangle] = used;
        }
    }

    bool is_free(std::uint32_t half_edge) const { return across_[half_edge] != none && visit_[across_[half_edge] / 3] != used; }

    // The triangle beside the strip appended last that has the fewest ways on: left behind, it would become a strip of its own.
    std::uint32_t unused_neighbor() const {
        std::uint32_t best = none;
        int fewest = 4;
        for (std::size_t place = strips_.starts[strips_.starts.size() - 2]; place + 2 < strips_.starts.back(); ++place) {
            const std::uint32_t first = 3 * strips_.triangle_order[place];
            for (std::uint32_t h = first; h < first + 3; ++h) {
                if (is_free(h)) {
                    const std::uint32_t neighbor = across_[h] / 3;
                    const int ways = is_free(3 * neighbor) + is_free(3 * neighbor + 1) + is_free(3 * neighbor + 2);
                    if (ways < fewest) {
                        fewest = ways;
                        best = neighbor;
                    }
                }
            }
        }
        return best;
    }

    std::span<const std::uint32_t> triangles_;
    Long_List<std::uint32_t> across_;
    Long_List<std::uint32_t> visit_; // by triangle: the attempt that saw it last, or used
    std::uint32_t attempt_ = 0;
    Way best_, candidate_;
    Strips strips_;
};

} // namespace

Strips make_strips(std::span<const std::uint32_t> triangles, std::uint32_t vertex_count, unsigned threads,
                   const std::function<void()>& beside) {
    Strip_Maker maker(triangles, vertex_count, threads);
    Strips strips;
    share_tasks(beside ? 2 : 1, threads, [&](std::size_t task, std::size_t) {
        if (task == 0) {
            strips = maker.make();
        } else {
            beside();
        }
    });
    return strips;
}

Strips single_strips(std::span<const std::uint32_t> triangles) {
    Strips strips;
    strips.vertices.assign(triangles.begin(), triangles.end());
    strips.triangle_order.resize(triangles.size());
    strips.starts.resize(triangles.size() / 3 + 1);
    for (std::uint32_t place = 0; place < triangles.size(); ++place) {
        strips.triangle_order[place] = place % 3 == 0 ? place / 3 : no_triangle;
        strips.starts[place / 3] = place / 3 * 3;
    }
    strips.starts.back() = static_cast<std::uint32_t>(triangles.size());
    return strips;
}

} // namespace vorna::drawing::model
