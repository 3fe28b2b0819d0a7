// Edges of a model, joined into chains.
#include "drawing/model/edges.h"

#include <algorithm>
#include <utility>

#include "drawing/model/tuple_table.h"

namespace vorna::drawing::model {
namespace {

constexpr std::uint32_t next_side(std::uint32_t side) noexcept {
    return side % 3 == 2 ? side - 2 : side + 1;
}

void join_places(const Mesh& mesh, Edges& edges) {
    constexpr std::uint32_t unknown = 0xFFFFFFFF;
    std::vector<std::uint32_t> places(mesh.positions.size(), unknown);
    Triple_Table table;
    edges.triangles.reserve(mesh.triangles.size());
    for (const std::uint32_t vertex : mesh.triangles) {
        if (places[vertex] == unknown) {
            places[vertex] = table.index_of(words_of(mesh.positions[vertex]));
            if (places[vertex] == edges.points.size()) {
                edges.points.push_back(mesh.positions[vertex]);
            }
        }
        edges.triangles.push_back(places[vertex]);
    }
}

using Ends = std::pair<std::uint32_t, std::uint32_t>; // the lower point first

// Lists the edges, numbered in order of their ends, and gives the triangles' sides those numbers. Sides are sorted into buckets
// by their lower point, and within a bucket by their higher one, so that those between the same points lie side by side.
std::vector<Ends> list_edges(const Mesh& mesh, Edges& edges) {
    const std::vector<std::uint32_t>& corners = edges.triangles;
    const auto count = static_cast<std::uint32_t>(corners.size());
    const auto ends = [&](std::uint32_t side) -> Ends { return std::minmax(corners[side], corners[next_side(side)]); };
    const auto has_length = [&](std::uint32_t side) { return corners[side] != corners[next_side(side)]; };
    const auto is_diagonal = [&](std::uint32_t side) {
        return !mesh.diagonals.empty() && (mesh.diagonals[side / 3] >> side % 3 & 1) != 0;
    };
    std::vector<std::uint32_t> bucket_ends(edges.points.size() + 1);
    for (std::uint32_t side = 0; side < count; ++side) {
        bucket_ends[ends(side).first + 1] += has_length(side);
    }
    for (std::size_t p = 1; p < bucket_ends.size(); ++p) {
        bucket_ends[p] += bucket_ends[p - 1];
    }
    std::vector<std::uint64_t> sorted(bucket_ends.back());
    for (std::uint32_t side = 0; side < count; ++side) {
        if (has_length(side)) {
            const auto [low, high] = ends(side);
            sorted[bucket_ends[low]++] = std::uint64_t{high} << 32 | side;
        }
    }
    std::vector<Ends> list;
    edges.closed = true;
    edges.triangle_edges.assign(count, no_edge);
    std::uint32_t start = 0;
    for (std::uint32_t low = 0; low < edges.points.size(); start = bucket_ends[low++]) {
        std::sort(sorted.begin() + start, sorted.begin() + bucket_ends[low]);
        for (std::uint32_t i = start, end = start; i < bucket_ends[low]; i = end) {
            const auto high = static_cast<std::uint32_t>(sorted[i] >> 32);
            bool is_edge = false;
            for (; end < bucket_ends[low] && sorted[end] >> 32 == high; ++end) {
                const auto side = static_cast<std::uint32_t>(sorted[end]);
                if (!is_diagonal(side)) {
                    edges.triangle_edges[side] = static_cast<std::uint32_t>(list.size());
                    is_edge = true;
                }
            }
            edges.closed = edges.closed && end - i == 2;
            if (is_edge) {
                list.emplace_back(low, high);
            }
        }
    }
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

Edges make_edges(const Mesh& mesh) {
    Edges edges;
    join_places(mesh, edges);
    const std::vector<Ends> list = list_edges(mesh, edges);
    edges.count = list.size();
    const std::vector<std::uint32_t> place_of = Chain_Maker(list, edges.points.size()).make(edges);
    for (std::uint32_t& edge : edges.triangle_edges) {
        edge = edge == no_edge ? no_edge : place_of[edge];
    }
    return edges;
}

} // namespace vorna::drawing::model
