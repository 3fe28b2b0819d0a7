// Measures triangles at 1920 x 1080 on one thread, beside memset, memcpy and llvmpipe.
//
// A frame is what one iteration draws: the clears that its scene needs, all strips, and a wait until they are in memory. Before
// it is timed, a drawing must paint as many pixels as the peer's, save for the edges, where the fill rules differ; a masked
// drawing as many as the open one does inside the clip.
#include <array>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/measure.h"

namespace bench {

namespace {

const Unit million_triangles{"million triangles/s", 1e6};

struct Drawing {
    std::string name, title;
    const Scene& scene;
    Surface surface;
    Clears clears;
    double edge_share;  // largest difference from the peer's number of painted pixels; 0 = the peer cannot draw this
    std::string open{}; // for a masked drawing: the name of the same one without a clip
};

void add_canvas(const Drawing& drawing, const char* who, Canvas& canvas) {
    benchmark::RegisterBenchmark((drawing.name + '/' + who).c_str(), [&canvas, &drawing](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) {
            draw_frame(canvas, drawing.clears);
        }
        state.SetItemsProcessed(state.iterations() * drawing.scene.triangle_count());
    })->MeasureProcessCPUTime();
}

// The pixels of one of a scene's scattered triangles, which are all alike.
std::int64_t pixels_of_one(const vorna::Module& module, const Scene& scene) {
    const Scene one{{scene.points.begin(), scene.points.begin() + 3}, {scene.colors.begin(), scene.colors.begin() + 3}, {3}};
    return number_of(painted_by_one_frame(*make_own_canvas(module, {}, one)));
}

bool run(char** arguments) {
    const auto [module_path, model, table] = std::array{arguments[0], arguments[1], arguments[2]};
    constexpr Shading flat = Shading::flat, gouraud = Shading::gouraud, textured = Shading::textured;
    constexpr Circle clip{800};
    // So many that half of the pixels pass the depth test: of k triangles over a place, 1 + 1/2 + ... + 1/k do on average.
    const Scene big = scattered_triangles(512, 40), tiles_8 = tiled_triangles(8, 4), tiles_3 = tiled_triangles(3, 4);
    const Scene window = covering_strip(), bunny = model_in_front(model), star = jagged_star(20000);
    const std::vector<Drawing> drawings{
        {"fill_window", "flat, no depth, two triangles over the window", window, {flat}, Clears::none, 0.01},
        {"fill_512", "flat, no depth, legs 512", big, {flat}, Clears::none, 0.01},
        {"flat_512", "flat, depth, legs 512", big, {flat, true}, Clears::depth, 0.01},
        {"gouraud_512", "Gouraud, depth, legs 512", big, {gouraud, true}, Clears::depth, 0.01},
        {"alpha_512", "Gouraud, depth, alpha, legs 512", big, {gouraud, true, true}, Clears::depth, 0.01},
        {"textured_512", "textured × Gouraud, depth, legs 512", big, {textured, true}, Clears::depth, 0.01},
        {"flat_8", "flat, depth, strips, legs 8", tiles_8, {flat, true}, Clears::depth, 0.01},
        {"gouraud_8", "Gouraud, depth, strips, legs 8", tiles_8, {gouraud, true}, Clears::depth, 0.01},
        {"flat_3", "flat, depth, strips, legs 3", tiles_3, {flat, true}, Clears::depth, 0.01},
        {"gouraud_3", "Gouraud, depth, strips, legs 3", tiles_3, {gouraud, true}, Clears::depth, 0.01},
        {"bunny", "bunny, 69,666 triangles, Gouraud, depth, whole frame", bunny, {gouraud, true}, Clears::all, 0.02},
        {"polygon", "polygon of 20,000 points, flat, no depth, triangulation and fill", star, {flat}, Clears::none, 0},
        {"palette_flat_512", "8-bit flat, depth, legs 512", big, {flat, true, false, true}, Clears::depth, 0},
        {"palette_gouraud_512", "8-bit Gouraud, depth, legs 512", big, {gouraud, true, false, true}, Clears::depth, 0},
        {"palette_gouraud_8", "8-bit Gouraud, depth, strips, legs 8", tiles_8, {gouraud, true, false, true}, Clears::depth, 0},
        {"masked_fill_512", "flat, no depth, legs 512", big, {flat, false, false, false, clip}, Clears::none, 0.01, "fill_512"},
        {"masked_flat_512", "flat, depth, legs 512", big, {flat, true, false, false, clip}, Clears::depth, 0.01, "flat_512"},
    };

    const vorna::Module module(module_path);
    std::vector<std::unique_ptr<Canvas>> canvases;
    const auto add = [&canvases](const Drawing& drawing, const char* who, std::unique_ptr<Canvas> canvas) {
        std::vector<bool> painted = painted_by_one_frame(*canvas);
        add_canvas(drawing, who, *canvas);
        canvases.push_back(std::move(canvas));
        return painted;
    };
    std::map<std::string, std::vector<bool>> painted; // by the drawings without a clip
    Ratio_Table ratios({"llvmpipe"});
    for (const Drawing& drawing : drawings) {
        std::vector<bool> ours = add(drawing, "vorna", make_own_canvas(module, drawing.surface, drawing.scene));
        const std::int64_t number = number_of(ours);
        if (drawing.surface.clip) {
            check_number(drawing.name, number, drawing.open + " inside the clip",
                         number_inside(*drawing.surface.clip, painted.at(drawing.open)), drawing.edge_share);
            ratios.add_masked(drawing.name, drawing.title, drawing.open);
            continue;
        }
        if (drawing.edge_share > 0) {
            check_number(drawing.name, number, "the peer",
                         number_of(add(drawing, "llvmpipe", make_llvmpipe_canvas(drawing.surface, drawing.scene))),
                         drawing.edge_share);
        } else if (number == 0) {
            throw std::runtime_error(drawing.name + ": paints nothing");
        }
        painted[drawing.name] = std::move(ours);
        ratios.add_drawing(drawing.name, drawing.title, static_cast<double>(drawing.scene.triangle_count()), million_triangles);
    }
    add_memory();
    const Drawing clear{"clear_depth", "depth clear", big, {flat, true}, Clears::depth, 0};
    canvases.push_back(make_own_canvas(module, clear.surface, clear.scene));
    benchmark::RegisterBenchmark("clear_depth/vorna", [&canvas = *canvases.back()](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) {
            canvas.clear_depth();
            benchmark::ClobberMemory();
        }
    })->MeasureProcessCPUTime();

    ratios.add_fill("memset_color", "memset of the colour buffer", 4.0 * window_pixels, "memset_color");
    ratios.add_fill("memcpy_color", "memcpy of the colour buffer", 4.0 * window_pixels, "memset_color");
    ratios.add_fill("fill_window/vorna", "solid triangles over the window", 4.0 * (window_size.x - 1) * (window_size.y - 1),
                    "memset_color");
    ratios.add_fill("fill_512/vorna", "solid triangles, legs 512",
                    4.0 * static_cast<double>(pixels_of_one(module, big) * big.triangle_count()), "memset_color");
    ratios.add_fill("memset_depth", "memset of the depth buffer", 2.0 * window_pixels, "memset_depth");
    ratios.add_fill("clear_depth/vorna", "depth clear", 2.0 * window_pixels, "memset_depth");
    add_context(ratios, llvmpipe_description());
    benchmark::RunSpecifiedBenchmarks(&ratios);
    std::ofstream(table) << ratios.markdown();
    return true;
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    return bench::run_main(argc, argv, "MODULE MODEL TABLE", 3, bench::run);
}
