// The workloads of lines, images and circles, and of what has no goal.
#include <algorithm>

#include "bench/workload_list.h"

namespace bench {

namespace {

constexpr std::int32_t sparse_pixels = static_cast<std::int32_t>(window_pixels / 16);

// Lines of one pixel a step; against a band one pixel wide, which in the mean over the directions has pi / (2 sqrt 2) times as
// many.
constexpr double step_edge = 0.02, band_edge = 0.15;
// Smoothed, three pixels a step however little the outer ones change, against those that such a band touches, two or more.
constexpr double smooth_edge = 0.4;

Peer pixman() {
    return {"pixman", make_pixman_canvas, 0};
}

} // namespace

void add_lines(Workload_List& list) {
    static constexpr std::int32_t count = 20000;
    struct Length {
        std::int32_t pixels;
        Goal goal, smoothed_goal;
    };
    using Of = Goal::Of;
    std::vector<Workload> siblings;
    for (const bool smoothed : {false, true}) {
        for (const Length& length : {Length{10, {Of::best_peer, 1.8, 1.5, 1.3}, {Of::rate, 4}},
                                     Length{50, {Of::best_peer, 2.2, 2, 1.7}, {Of::rate, 1.5}},
                                     Length{300, {Of::best_peer, 1.8, 1.8, 1.8}, {Of::rate, 0.4}}}) {
            const std::int32_t pixels = length.pixels;
            const std::string size = std::to_string(pixels);
            Workload row{smoothed ? "W8" : "W7",
                         (smoothed ? "smooth_lines_" : "lines_") + size,
                         (smoothed ? "smoothed lines, length " : "lines, length ") + size,
                         [pixels](const Variation& variation) -> Subject { return scattered_lines(pixels, count, variation); },
                         [pixels] { return scattered_lines(pixels, std::min(+count, sparse_pixels / pixels)); },
                         {.smoothed = smoothed},
                         Clears::none,
                         Counts::lines,
                         {},
                         smoothed ? length.smoothed_goal : length.goal};
            row.peers = smoothed ? std::vector{llvmpipe(smooth_edge), cairo(smooth_edge), agg(smooth_edge)}
                                 : std::vector{llvmpipe(step_edge), sdl(step_edge), cairo(band_edge), agg(step_edge)};
            list.add(row);
            siblings.push_back(row);
        }
    }
    for (const Workload& row : siblings) {
        if (!row.surface.smoothed) {
            list.add_palette(row, 0.5);
        }
    }
    for (const Workload& row : siblings) {
        list.add_masked(row);
    }
}

void add_images(Workload_List& list) {
    std::vector<Workload> siblings;
    for (const bool blended : {false, true}) {
        Workload row{"W9",
                     blended ? "image_blended" : "image_copied",
                     blended ? "image 1024 × 768, blended" : "image 1024 × 768, copied",
                     [blended](const Variation& variation) -> Subject {
                         return noise_image({1024, 768}, blended, variation);
                     },
                     {},
                     {.alpha = blended},
                     Clears::none,
                     Counts::pixels,
                     {sdl(0), cairo(0), pixman(), agg(0)},
                     blended ? Goal{Goal::Of::best_peer, 2.2, 1.8, 1.2} : Goal{Goal::Of::best_peer, 1, 1, 1}};
        if (!blended) {
            row.peers.push_back({"memcpy by rows", make_memcpy_canvas, 0});
        }
        list.add(row);
        siblings.push_back(row);
    }
    for (const Workload& row : siblings) {
        list.add_masked(row);
    }
}

void add_circles(Workload_List& list) {
    struct Radius {
        std::int32_t pixels, count;
        double filled_goal;
        Goal outline_goal;
    };
    using Of = Goal::Of;
    std::vector<Workload> siblings;
    for (const bool filled : {true, false}) {
        for (const Radius& radius :
             {Radius{5, 20000, 5500, {Of::best_peer, 2, 2, 2}}, Radius{50, 1000, 250, {Of::best_peer, 2, 2, 2}},
              Radius{300, 50, 16, {Of::best_peer, 1.5, 1.4, 1.3}}}) {
            const std::int32_t r = radius.pixels, count = radius.count;
            const std::int32_t pixels = filled ? 3 * r * r : 6 * r;
            // Filled, a quarter of a pixel along the edge; AGG's circles are a pixel lower and narrower.
            const double edge = 0.5 / r;
            const std::string size = std::to_string(r);
            Workload row{"W10",
                         (filled ? "circles_" : "outlines_") + size,
                         (filled ? "filled circles, radius " : "circle outlines, radius ") + size,
                         [=](const Variation& variation) -> Subject { return scattered_circles(r, filled, count, variation); },
                         [=] { return scattered_circles(r, filled, std::clamp(sparse_pixels / pixels, 1, count)); },
                         {},
                         Clears::none,
                         Counts::circles,
                         {},
                         filled ? Goal{Of::rate, radius.filled_goal} : radius.outline_goal};
            row.peers = filled ? std::vector{llvmpipe(edge), sdl(edge), cairo(edge), agg(2 * edge)}
                               : std::vector{llvmpipe(band_edge), sdl(band_edge), cairo(band_edge), agg(2 * band_edge)};
            list.add(row);
            siblings.push_back(row);
        }
    }
    for (const Workload& row : siblings) {
        list.add_masked(row);
    }
}

void add_others(Workload_List& list) {
    constexpr Shading flat = Shading::flat, gouraud = Shading::gouraud;
    const auto lines = [](const Variation& variation) -> Subject { return scattered_lines(50, 20000, variation); };
    const auto sparse = []() -> Subject { return scattered_lines(50, sparse_pixels / 50); };
    const auto polylines = [](const char* name, const char* title, auto make) -> Workload {
        return {"–",          name,           title, [make](const Variation&) -> Subject { return make(); }, {}, {},
                Clears::none, Counts::points, {}};
    };
    list.add({"–",
              "depth_lines_50",
              "lines, depth, length 50",
              lines,
              sparse,
              {flat, true},
              Clears::depth,
              Counts::lines,
              {llvmpipe(step_edge)}});
    list.add({"–",
              "gouraud_lines_50",
              "Gouraud lines, length 50",
              lines,
              sparse,
              {gouraud},
              Clears::none,
              Counts::lines,
              {llvmpipe(step_edge)}});
    list.add(polylines("dashed", "dashed polyline of 100,000 points", [] { return wandering_polyline(100000, true); }));
    list.add(polylines("dashes", "its dashes as plain lines", [] { return dashes_of(wandering_polyline(100000, true)); }));
    list.add({"–",
              "polygon",
              "polygon of 20,000 points, cut into triangles and filled",
              [](const Variation&) -> Subject { return jagged_star(20000); },
              {},
              {flat},
              Clears::none,
              Counts::triangles,
              {}});
}

} // namespace bench
