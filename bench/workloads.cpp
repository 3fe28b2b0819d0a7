#include "bench/workloads.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <type_traits>

namespace bench {

namespace {

constexpr double cache_line = 64;

constexpr Circle clip{800};

constexpr std::int32_t sparse_pixels = static_cast<std::int32_t>(window_pixels / 16);

// Triangles with the fill rules of others differ at their edges.
constexpr double triangle_edge = 0.01, small_triangle_edge = 0.02;
// Lines of one pixel a step; against a band one pixel wide, which in the mean over the directions has pi / (2 sqrt 2) times as
// many.
constexpr double step_edge = 0.02, band_edge = 0.15;
// Smoothed, three pixels a step however little the outer ones change, against those that such a band touches, two or more.
constexpr double smooth_edge = 0.4;

Peer llvmpipe(double edge_share) {
    return {"llvmpipe", make_llvmpipe_canvas, edge_share};
}
Peer sdl(double edge_share) {
    return {"SDL2", make_sdl_canvas, edge_share};
}
Peer cairo(double edge_share) {
    return {"cairo", make_cairo_canvas, edge_share};
}
Peer agg(double edge_share) {
    return {"AGG", make_agg_canvas, edge_share};
}
Peer pixman() {
    return {"pixman", make_pixman_canvas, 0};
}

// Every workload with an 8-bit or masked sibling adds it after itself.
class List {
public:
    std::vector<Workload> all;

    void add(Workload workload) { all.push_back(std::move(workload)); }
    void add_palette(const Workload& open, double share) { add_sibling(open, "palette_", "8-bit", share, {.palette = true}); }
    // Whatever is measured for the time of a frame: 1.3 times as long is 0.77 of the rate.
    void add_masked(const Workload& open) { add_sibling(open, "masked_", "masked", 1 / 1.3, {.clip = clip}); }
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

void add_triangles(List& list, const std::string& model) {
    const auto scattered = [](const Variation& variation) -> Subject { return scattered_triangles(512, 200, variation); };
    const auto tiled = [](std::int32_t legs) {
        return [legs](const Variation& variation) -> Subject { return tiled_triangles(legs, 4, variation); };
    };
    constexpr Shading flat = Shading::flat, gouraud = Shading::gouraud, textured = Shading::textured;
    const std::vector<Peer> every{llvmpipe(triangle_edge), sdl(triangle_edge), cairo(triangle_edge), agg(triangle_edge)};
    const std::vector<Peer> with_depth{llvmpipe(triangle_edge)}, small{llvmpipe(small_triangle_edge)};
    const auto with = Clears::depth;
    using Of = Goal::Of;
    const Workload rows[] = {
        {"W1",
         "fill_512",
         "solid, no depth, legs 512",
         scattered,
         {},
         {flat},
         Clears::none,
         Counts::pixels,
         every,
         {Of::memset, 0.9}},
        {"W2",
         "flat_512",
         "flat, depth, legs 512",
         scattered,
         {},
         {flat, true},
         with,
         Counts::pixels,
         with_depth,
         {Of::best_peer, 5.5, 5, 3.5}},
        {"W3",
         "gouraud_512",
         "Gouraud, depth, legs 512",
         scattered,
         {},
         {gouraud, true},
         with,
         Counts::pixels,
         with_depth,
         {Of::best_peer, 6, 4.5, 3}},
        {"W4",
         "blended_512",
         "Gouraud colour and alpha, blended, legs 512",
         scattered,
         {},
         {gouraud, false, true},
         Clears::none,
         Counts::pixels,
         {llvmpipe(triangle_edge), sdl(triangle_edge), agg(triangle_edge)},
         {Of::best_peer, 6.5, 5, 3}},
        {"W5",
         "textured_512",
         "texture × Gouraud, depth, legs 512",
         scattered,
         {},
         {textured, true},
         with,
         Counts::pixels,
         with_depth,
         {Of::best_peer, 4.5, 3, 2}},
        {"W6",
         "flat_8",
         "strips, flat, depth, legs 8",
         tiled(8),
         {},
         {flat, true},
         with,
         Counts::triangles,
         small,
         {Of::best_peer, 9, 5, 3.5}},
        {"W6",
         "gouraud_3",
         "strips, Gouraud, depth, legs 3",
         tiled(3),
         {},
         {gouraud, true},
         with,
         Counts::triangles,
         small,
         {Of::best_peer, 8, 5, 3.5}},
    };
    for (const Workload& row : rows) {
        list.add(row);
    }
    list.add({"W11",
              "bunny",
              "bunny.obj, whole frame",
              [model](const Variation& variation) -> Subject { return model_in_front(model, variation); },
              {},
              {gouraud, true},
              Clears::all,
              Counts::frames,
              small,
              {Of::best_peer, 6, 4, 3}});
    for (const int i : {0, 1, 2}) {
        list.add_palette(rows[i], i < 2 ? 0.8 : 0.5);
    }
    for (const Workload& row : rows) {
        list.add_masked(row);
    }
    for (const Workload& row : rows) {
        if (row.surface.depth) {
            list.add_blocks(row, 0.98);
        }
    }
}

void add_lines(List& list) {
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

void add_images(List& list) {
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

void add_circles(List& list) {
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

// What has no goal of its own, for comparison.
void add_others(List& list) {
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

// What a call costs through each form, beside the form DCI: one line or one triangle a call, all inside the window.
void add_forms(List& list) {
    const auto lines = [](const Variation& variation) -> Subject { return scattered_lines(10, 20000, variation); };
    const auto triangles = [](const Variation& variation) -> Subject { return scattered_triangles(8, 20000, variation); };
    struct Kind {
        const char *name, *title;
        Form form;
    };
    for (const Kind& kind : {Kind{"dc", "DC", Form::dc}, Kind{"2di", "2DI", Form::plane_di}, Kind{"2d", "2D", Form::plane},
                             Kind{"3d", "3D", Form::space}}) {
        const auto add = [&](const char* name, const char* title, const auto& make, Counts counts) {
            list.add({"forms",
                      std::string("form_") + kind.name + name,
                      std::string(title) + ", form " + kind.title,
                      make,
                      {},
                      {.form = kind.form},
                      Clears::none,
                      counts,
                      {},
                      {Goal::Of::reference, 1 / 1.3},
                      Surface{}});
        };
        add("_line", "line of 2 points, length 10", lines, Counts::lines);
        add("_strip", "strip of 3 points, legs 8", triangles, Counts::triangles);
    }
}

// Layers that hide one another: what a look at the depths of whole blocks saves.
void add_layers(List& list) {
    struct Order {
        const char *name, *title;
        Layer_Order order;
        double share; // with blocks
    };
    for (const Order& order : {Order{"layers_front_first", "16 layers, front to back", Layer_Order::front_first, 4},
                               Order{"layers_back_first", "16 layers, back to front", Layer_Order::back_first, 0.98},
                               Order{"layers_shuffled", "16 layers, shuffled", Layer_Order::shuffled, 2}}) {
        const Workload row{
            "layers",
            order.name,
            order.title,
            [order](const Variation& variation) -> Subject { return layered_triangles(64, 16, order.order, variation); },
            {},
            {Shading::gouraud, true},
            Clears::depth,
            Counts::pixels,
            {llvmpipe(triangle_edge)}};
        list.add(row);
        list.add_blocks(row, order.share);
    }
}

} // namespace

double Goal::value_for(std::string_view kernel_set) const noexcept {
    switch (of) {
    case Of::rate:
        return kernel_set == "avx512" ? value : 0;
    case Of::best_peer:
        return kernel_set == "avx512" ? value : kernel_set == "avx2" ? avx2 : kernel_set == "baseline" ? baseline : 0;
    default:
        return value;
    }
}

Unit unit_of(Counts counts) {
    switch (counts) {
    case Counts::pixels:
        return {"Mpix/s", 1e6};
    case Counts::triangles:
        return {"Mtri/s", 1e6};
    case Counts::lines:
        return {"Mlines/s", 1e6};
    case Counts::circles:
        return {"thousand/s", 1e3};
    case Counts::points:
        return {"Mpoints/s", 1e6};
    case Counts::frames:
        break;
    }
    return {"ms", 1e-3};
}

double amount_of(const Subject& subject, Counts counts) {
    if (counts == Counts::frames) {
        return 1;
    }
    return std::visit(
        [counts](const auto& drawn) -> double {
            using Drawn = std::decay_t<decltype(drawn)>;
            if constexpr (std::is_same_v<Drawn, Scene>) {
                return counts == Counts::pixels ? drawn.area() : static_cast<double>(drawn.triangle_count());
            } else if constexpr (std::is_same_v<Drawn, Lines>) {
                return static_cast<double>(drawn.points.size()) / 2;
            } else if constexpr (std::is_same_v<Drawn, Circles>) {
                return static_cast<double>(drawn.centers.size());
            } else if constexpr (std::is_same_v<Drawn, Image>) {
                return 1.0 * drawn.size.x * drawn.size.y;
            } else {
                return 100000;
            }
        },
        subject);
}

double bytes_touched(const Workload& workload, const Subject& subject) {
    const Surface& surface = workload.surface;
    const double pixel_bytes = surface.palette ? 1 : 4;
    double bytes = workload.clears == Clears::all ? pixel_bytes * window_pixels : 0;
    bytes += workload.clears != Clears::none ? 2.0 * window_pixels : 0;
    if (const auto* scene = std::get_if<Scene>(&subject)) {
        return bytes + scene->area() * (surface.depth ? 2 + pixel_bytes / 2 : pixel_bytes);
    }
    if (const auto* lines = std::get_if<Lines>(&subject)) {
        for (std::size_t i = 0; i < lines->points.size(); i += 2) {
            const VT_DCI_Point from = lines->points[i], to = lines->points[i + 1];
            const double columns = std::abs(to.x - from.x), rows = std::abs(to.y - from.y);
            bytes += (rows + 1) * cache_line + columns * pixel_bytes;
            bytes += surface.depth ? (rows + 1) * cache_line + columns * 2 : 0;
        }
        return bytes;
    }
    if (const auto* circles = std::get_if<Circles>(&subject)) {
        for (const double radius : circles->radii) {
            bytes += circles->filled ? std::numbers::pi * radius * radius * pixel_bytes + (2 * radius + 1) * cache_line
                                     : 2 * (2 * radius + 1) * cache_line;
        }
        return bytes;
    }
    if (std::holds_alternative<Image>(subject)) {
        return amount_of(subject, Counts::pixels) * pixel_bytes;
    }
    return 0;
}

std::vector<Workload> workloads(const std::string& model) {
    List list;
    add_triangles(list, model);
    add_lines(list);
    add_images(list);
    add_circles(list);
    add_others(list);
    add_forms(list);
    add_layers(list);
    return list.all;
}

} // namespace bench
