// Measures triangles at 1920 x 1080 on one thread, beside memset, memcpy and llvmpipe.
//
// A frame is what one iteration draws: the clears that its scene needs, all strips, and a wait until they are in memory. Before
// it is timed, a drawing must paint as many pixels as the peer's, save for the edges, where the fill rules differ; a masked
// drawing as many as the open one does inside the clip.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/canvas.h"
#include "bench/ratio_table.h"

namespace bench {

namespace {

constexpr std::size_t pixels = static_cast<std::size_t>(window_size.x) * static_cast<std::size_t>(window_size.y);

enum class Clears { none, depth, all };

struct Drawing {
    std::string name, title;
    const Scene& scene;
    Surface surface;
    Clears clears;
    double edge_share;  // largest difference from the peer's number of painted pixels; 0 = the peer cannot draw this
    std::string open{}; // for a masked drawing: the name of the same one without a clip
};

void draw_frame(Canvas& canvas, Clears clears) {
    if (clears == Clears::all) {
        canvas.clear_color();
    }
    if (clears != Clears::none) {
        canvas.clear_depth();
    }
    canvas.draw();
    canvas.finish();
}

std::vector<bool> painted_by_one_frame(Canvas& canvas) {
    canvas.clear_color();
    draw_frame(canvas, Clears::depth);
    return canvas.painted_pixels();
}

void add_canvas(const Drawing& drawing, const char* who, Canvas& canvas) {
    benchmark::RegisterBenchmark((drawing.name + '/' + who).c_str(), [&canvas, &drawing](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) {
            draw_frame(canvas, drawing.clears);
        }
        state.SetItemsProcessed(state.iterations() * drawing.scene.triangle_count());
    })->MeasureProcessCPUTime();
}

std::int64_t number_of(const std::vector<bool>& painted) {
    return std::count(painted.begin(), painted.end(), true);
}

std::int64_t number_inside(const Circle& clip, const std::vector<bool>& painted) {
    std::int64_t number = 0;
    std::size_t i = 0;
    for (std::int32_t row = 0; row < window_size.y; ++row) {
        for (std::int32_t column = 0; column < window_size.x; ++column) {
            number += painted[i++] && clip.contains(column, row);
        }
    }
    return number;
}

// The pixels of one of a scene's scattered triangles, which are all alike.
std::int64_t pixels_of_one(const vorna::Module& module, const Scene& scene) {
    const Scene one{{scene.points.begin(), scene.points.begin() + 3}, {scene.colors.begin(), scene.colors.begin() + 3}, {3}};
    return number_of(painted_by_one_frame(*make_own_canvas(module, {}, one)));
}

void add_memory() {
    static std::vector<std::uint8_t> from(4 * pixels, 1), to(4 * pixels, 2);
    const auto add = [](const char* name, std::size_t bytes, auto work) {
        benchmark::RegisterBenchmark(name, [bytes, work](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                work(bytes);
                benchmark::ClobberMemory();
            }
            state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
        })->MeasureProcessCPUTime();
    };
    const auto set = [](std::size_t bytes) { std::memset(to.data(), 0x5A, bytes); };
    add("memset_color", 4 * pixels, set);
    add("memset_depth", 2 * pixels, set);
    add("memcpy_color", 4 * pixels, [](std::size_t bytes) { std::memcpy(to.data(), from.data(), bytes); });
}

std::string processor_name() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("model name", 0) == 0) {
            return line.substr(line.find(':') + 2);
        }
    }
    return "unknown";
}

// Goes into the JSON output and over the tables.
void add_context(Ratio_Table& ratios) {
    const char* kernels = std::getenv("KRB_KERNELS");
    for (const auto& [name, value] : {std::pair<const char*, std::string>{"processor", processor_name()},
                                      {"kernel set", kernels ? kernels : "automatic"},
                                      {"compiler", VORNA_COMPILER},
                                      {"build type", VORNA_BUILD_TYPE},
                                      {"peer", llvmpipe_description()}}) {
        benchmark::AddCustomContext(name, value);
        ratios.add_context(name, value);
    }
}

// Fails with one line when the two sides do not draw the same. other: who else draws it.
void check(const Drawing& drawing, std::int64_t ours, const std::string& other, std::int64_t theirs) {
    const double difference = std::abs(static_cast<double>(ours - theirs)) / static_cast<double>(theirs);
    std::printf("%s: %lld pixels painted, by %s %lld\n", drawing.name.c_str(), static_cast<long long>(ours), other.c_str(),
                static_cast<long long>(theirs));
    if (!(difference <= drawing.edge_share)) {
        throw std::runtime_error(drawing.name + ": paints " + std::to_string(ours) + " pixels, " + other + " " +
                                 std::to_string(theirs) + ", expected a difference of at most " +
                                 std::to_string(100 * drawing.edge_share) + " %");
    }
}

void run(const char* module_path, const char* model, const char* table) {
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
    Ratio_Table ratios;
    for (const Drawing& drawing : drawings) {
        std::vector<bool> ours = add(drawing, "vorna", make_own_canvas(module, drawing.surface, drawing.scene));
        const std::int64_t number = number_of(ours);
        if (drawing.surface.clip) {
            check(drawing, number, drawing.open + " inside the clip",
                  number_inside(*drawing.surface.clip, painted.at(drawing.open)));
            ratios.add_masked(drawing.name, drawing.title, drawing.open);
            continue;
        }
        if (drawing.edge_share > 0) {
            check(drawing, number, "the peer",
                  number_of(add(drawing, "llvmpipe", make_llvmpipe_canvas(drawing.surface, drawing.scene))));
        } else if (number == 0) {
            throw std::runtime_error(drawing.name + ": paints nothing");
        }
        painted[drawing.name] = std::move(ours);
        ratios.add_drawing(drawing.name, drawing.title, drawing.scene.triangle_count());
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

    ratios.add_fill("memset_color", "memset of the colour buffer", 4.0 * pixels, "memset_color");
    ratios.add_fill("memcpy_color", "memcpy of the colour buffer", 4.0 * pixels, "memset_color");
    ratios.add_fill("fill_window/vorna", "solid triangles over the window", 4.0 * (window_size.x - 1) * (window_size.y - 1),
                    "memset_color");
    ratios.add_fill("fill_512/vorna", "solid triangles, legs 512",
                    4.0 * static_cast<double>(pixels_of_one(module, big) * big.triangle_count()), "memset_color");
    ratios.add_fill("memset_depth", "memset of the depth buffer", 2.0 * pixels, "memset_depth");
    ratios.add_fill("clear_depth/vorna", "depth clear", 2.0 * pixels, "memset_depth");
    add_context(ratios);
    benchmark::RunSpecifiedBenchmarks(&ratios);
    std::ofstream(table) << ratios.markdown();
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s MODULE MODEL TABLE [--benchmark_...], expected 3 arguments, found %d\n", argv[0],
                     argc - 1);
        return 2;
    }
    try {
        bench::run(argv[1], argv[2], argv[3]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
    return 0;
}
