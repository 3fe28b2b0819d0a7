// Edges of a model, joined into chains.
#include "drawing/model/edges.h"

#include <algorithm>
#include <utility>

#include "drawing/model/places.h"

namespace vorna::drawing::model {
namespace {

constexpr std::uint32_t next_side(std::uint32_t side) noexcept {
    return side % 3 == 2 ? side - 2 : side + 1;
}

// Places are numbered in the order in which triangles use them, which is not that of the vertices.
void join_places(const Mesh& mesh, Edges& edges, unsigned threads) {
    constexpr std::uint32_t unknown = 0xFFFFFFFF;
    const Places places = find_places(mesh.positions, threads);
    std::vector<std::uint32_t> numbers(places.count(), unknown);
    edges.triangles.resize(mesh.triangles.size());
    for (std::size_t corner = 0; corner < mesh.triangles.size(); ++corner) {
        const std::uint32_t vertex = mesh.triangles[corner];
        std::uint32_t& number = numbers[places.numbers[vertex]];
        if (number == unknown) {
            number = static_cast<std::uint32_t>(edges.points.size());
            edges.points.push_back(mesh.positions[vertex]);
        }
        edges.triangles[corner] = number;
    }
}

using Ends = std::pair<std::uint32_t, std::uint32_t>; // the lower point first

// Lists the edges, numbered in order of their ends, and gives the triangles' sides those numbers. Sides are grouped by their
// lower point, and sorted within a group by their higher one, so that those between the same points lie side by side. Each part
// of the points lists its own edges.
std::vector<Ends> list_edges(const Mesh& mesh, Edges& edges, unsigned threads) {
    constexpr std::size_t least = 4096;
    const std::vector<std::uint32_t>& corners = edges.triangles;
    const auto count = static_cast<std::uint32_t>(corners.size());
    const auto is_diagonal = [&](std::uint32_t side) {
        return !mesh.diagonals.empty() && (mesh.diagonals[side / 3] >> side % 3 & 1) != 0;
    };
    // Sides without length are no edges.
    auto sides = grouped(
        count, static_cast<std::uint32_t>(edges.points.size()), threads,
        [&](std::uint32_t side) {
            const std::uint32_t from = corners[side], to = corners[next_side(side)];
            return from == to ? no_group : std::min(from, to);
        },
        [&](std::uint32_t side) { return std::uint64_t{std::max(corners[side], corners[next_side(side)])} << 32 | side; });
    struct Part {
        std::vector<Ends> list;
        bool closed = true;
    };
    edges.triangle_edges.assign(count, no_edge);
    const std::size_t part_number = part_count(sides.count(), threads, least);
    std::vector<Part> parts(part_number);
    const auto start_of = [&](std::size_t part) { return sides.count() * part / part_number; };
    share_tasks(part_number, threads, [&](std::size_t number, std::size_t) {
        Part& part = parts[number];
        for (std::size_t low = start_of(number); low < start_of(number + 1); ++low) {
            const std::span<std::uint64_t> sorted = sides[low];
            std::sort(sorted.begin(), sorted.end());
            for (std::size_t i = 0, end = 0; i < sorted.size(); i = end) {
                const auto high = static_cast<std::uint32_t>(sorted[i] >> 32);
                bool is_edge = false;
                for (; end < sorted.size() && sorted[end] >> 32 == high; ++end) {
                    const auto side = static_cast<std::uint32_t>(sorted[end]);
                    if (!is_diagonal(side)) {
                        edges.triangle_edges[side] = static_cast<std::uint32_t>(part.list.size());
                        is_edge = true;
                    }
                }
                part.closed = part.closed && end - i == 2;
                if (is_edge) {
                    part.list.emplace_back(static_cast<std::uint32_t>(low), high);
                }
            }
        }
    });
    // What each part has counted from 0 is counted through.
    std::vector<std::uint32_t> firsts;
    std::vector<Ends> list;
    for (const Part& part : parts) {
        firsts.push_back(static_cast<std::uint32_t>(list.size()));
        list.insert(list.end(), part.list.begin(), part.list.end());
    }
    edges.closed = std::ranges::all_of(parts, &Part::closed);
    share_tasks(part_number, threads, [&](std::size_t number, std::size_t) {
        for (std::size_t i = sides.starts[start_of(number)]; i < sides.starts[start_of(number + 1)]; ++i) {
            std::uint32_t& edge = edges.triangle_edges[static_cast<std::uint32_t>(sides.members[i])];
            edge += edge == no_edge ? 0 : firsts[number];
        }
    });
    return list;
}

// Walks along edges that are left until none leads on. Walks begin at points with an odd number of edges first: one must begin or
// end there anyhow. Then all points have an even number left, and a walk comes back to where it began and has used up its edges.
class Chain_Maker {
public:
    Chain_Maker(const std::vector<Ends>& list, std::size_t point_count) : list_(list), starts_(point_count + 1) {
        for (const auto& [low, high] : list) {
            ++starts_[low + 1];
            ++starts_[high + 1];
        }
        for (std::size_t p = 1; p < starts_.size(); ++p) {
            starts_[p] += starts_[p - 1];
        }
        next_.assign(starts_.begin(), starts_.end() - 1);
        around_.resize(2 * list.size());
        for (std::uint32_t e = 0; e < list.size(); ++e) {
            around_[next_[list[e].first]++] = e;
            around_[next_[list[e].second]++] = e;
        }
        next_.assign(starts_.begin(), starts_.end() - 1);
        walked_.resize(list.size());
    }

    // Gives by number in the list the edge's place in the chains.
    std::vector<std::uint32_t> make(Edges& edges) {
        std::vector<std::uint32_t> place_of(list_.size());
        edges.starts.push_back(0);
        const auto walk_from = [&](std::uint32_t point) {
            if (edge_from(point) != no_edge) {
                walk(point, edges, place_of);
            }
        };
        for (std::uint32_t p = 0; p < next_.size(); ++p) {
            if ((starts_[p + 1] - starts_[p]) % 2 == 1) {
                walk_from(p);
            }
        }
        for (std::uint32_t p = 0; p < next_.size(); ++p) {
            walk_from(p);
        }
        return place_of;
    }

private:
    // An edge left at a point.
    std::uint32_t edge_from(std::uint32_t point) {
        for (std::uint32_t& i = next_[point]; i < starts_[point + 1]; ++i) {
            if (!walked_[around_[i]]) {
                return around_[i];
            }
        }
        return no_edge;
    }

    void walk(std::uint32_t point, Edges& edges, std::vector<std::uint32_t>& place_of) {
        for (std::uint32_t e = edge_from(point); e != no_edge; e = edge_from(point)) {
            walked_[e] = true;
            place_of[e] = static_cast<std::uint32_t>(edges.chains.size());
            edges.chains.push_back(point);
            point = list_[e].first == point ? list_[e].second : list_[e].first;
        }
        edges.chains.push_back(point);
        edges.starts.push_back(static_cast<std::uint32_t>(edges.chains.size()));
    }

    const std::vector<Ends>& list_;
    std::vector<std::uint32_t> around_; // edges by point
    std::vector<std::uint32_t> starts_; // of each point in around_
    std::vector<std::uint32_t> next_;   // of each point: the first place in around_ that may be left
    std::vector<bool> walked_;
};

} // namespace

Edges make_edges(const Mesh& mesh, unsigned threads) {
    Edges edges;
    join_places(mesh, edges, threads);
    const std::vector<Ends> list = list_edges(mesh, edges, threads);
    edges.count = list.size();
    const std::vector<std::uint32_t> place_of = Chain_Maker(list, edges.points.size()).make(edges);
    share_range(edges.triangle_edges.size(), threads, [&](std::size_t first, std::size_t end) {
        for (std::size_t side = first; side < end; ++side) {
            std::uint32_t& edge = edges.triangle_edges[side];
            edge = edge == no_edge ? no_edge : place_of[edge];
        }
    });
    return edges;
}

} // namespace vorna::drawing::model
