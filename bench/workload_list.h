// How the lists of workloads are made: peers, and workloads with their siblings.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "bench/workloads.h"

namespace bench {

// Triangles with the fill rules of others differ at their edges.
inline constexpr double triangle_edge = 0.01, small_triangle_edge = 0.02;

inline Peer llvmpipe(double edge_share) {
    return {"llvmpipe", make_llvmpipe_canvas, edge_share};
}
inline Peer sdl(double edge_share) {
    return {"SDL2", make_sdl_canvas, edge_share};
}
inline Peer cairo(double edge_share) {
    return {"cairo", make_cairo_canvas, edge_share};
}
inline Peer agg(double edge_share) {
    return {"AGG", make_agg_canvas, edge_share};
}

// Every workload with an 8-bit or masked sibling adds it after itself.
class Workload_List {
public:
    std::vector<Workload> all;

    void add(Workload workload) { all.push_back(std::move(workload)); }
    void add_palette(const Workload& open, double share) { add_sibling(open, "palette_", "8-bit", share, {.palette = true}); }
    // Whatever is measured for the time of a frame: 1.3 times as long is 0.77 of the rate.
    void add_masked(const Workload& open) { add_sibling(open, "masked_", "masked", 1 / 1.3, {.clip = Circle{800}}); }
    // share: of the rate without them.
    void add_blocks(const Workload& open, double share) { add_sibling(open, "blocks_", "blocks", share, {.depth_blocks = true}); }

private:
    void add_sibling(const Workload& open, const char* prefix, const char* kind, double share, const Surface& change) {
        Workload sibling = open;
        sibling.group = kind;
        sibling.name = prefix + open.name;
        sibling.title = open.group + ", " + open.title;
        sibling.peers.clear();
        sibling.reference = open.surface;
        sibling.goal = {Goal::Of::reference, share};
        sibling.surface.palette = change.palette;
        sibling.surface.clip = change.clip;
        sibling.surface.depth_blocks = change.depth_blocks;
        all.push_back(std::move(sibling));
    }
};

// The groups of the table.
void add_triangles(Workload_List& list, const std::string& model);
void add_lines(Workload_List& list);
void add_images(Workload_List& list);
void add_circles(Workload_List& list);
// What has no goal of its own, for comparison.
void add_others(Workload_List& list);
// What a call costs through each form, beside the form DCI: one line or one triangle a call, all inside the window.
void add_forms(Workload_List& list);
// Layers that hide one another: what a look at the depths of whole blocks saves.
void add_layers(Workload_List& list);
// Models much of which is hidden: a building, and the dragon when its file is given.
void add_models(Workload_List& list, const std::string& dragon);

} // namespace bench
