// Rates of triangles by one kernel set after the other, without peers, models and options: a program that also runs where nothing
// but the renderer was built, such as Node.js. usage: bench_rates KRB.vrd [KERNELS...], by default the renderer's own choice
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <vector>

#include "bench/measure.h"
#include "bench/timing.h"

namespace bench {

namespace {

struct Row {
    const char* title;
    Scene scene;
    Surface surface;
    bool counts_pixels;
};

std::vector<Row> rows() {
    const Scene scattered = scattered_triangles(512, 200), tiled = tiled_triangles(8, 4);
    return {{"solid, no depth, legs 512", scattered, {Shading::flat}, true},
            {"flat, depth, legs 512", scattered, {Shading::flat, true}, true},
            {"Gouraud, depth, legs 512", scattered, {Shading::gouraud, true}, true},
            {"Gouraud colour and alpha, blended, legs 512", scattered, {Shading::gouraud, false, true}, true},
            {"texture x Gouraud, depth, legs 512", scattered, {Shading::textured, true}, true},
            {"strips, flat, depth, legs 8", tiled, {Shading::flat, true}, false},
            {"strips, Gouraud, depth, legs 8", tiled, {Shading::gouraud, true}, false}};
}

void print_rates(const vorna::Module& module, const std::vector<const char*>& kernels) {
    constexpr std::int32_t rounds = 25;
    for (const Row& row : rows()) {
        const Subject subject = row.scene;
        const Clears clears = row.surface.depth ? Clears::depth : Clears::none;
        std::vector<std::unique_ptr<Canvas>> canvases;
        std::vector<Side> sides;
        for (const char* const name : kernels) {
            if (name) {
                setenv("KRB_KERNELS", name, 1);
            }
            canvases.push_back(make_own_canvas(module, row.surface, subject));
            Canvas* const canvas = canvases.back().get();
            canvas->clear_color();
            canvas->clear_depth();
            sides.push_back({name ? name : "chosen", [canvas, clears] { draw_frame(*canvas, clears); }});
        }
        // The clock on the wall, since WebAssembly has no other: the least time is what counts on a busy machine.
        const std::vector<Time> times = measure(sides, rounds, Clock::wall);
        const double amount = row.counts_pixels ? row.scene.area() : static_cast<double>(row.scene.triangle_count());
        for (std::size_t i = 0; i < sides.size(); ++i) {
            std::printf("%-45s %-9s %8.2f %s, median %8.2f\n", row.title, sides[i].who.c_str(), 1e-6 * amount / times[i].least,
                        row.counts_pixels ? "Mpix/s" : "Mtri/s", 1e-6 * amount / times[i].median);
        }
    }
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_rates KRB.vrd [KERNELS...]\n");
        return 1;
    }
    try {
        std::vector<const char*> kernels(argv + 2, argv + argc);
        if (kernels.empty()) {
            kernels.push_back(nullptr);
        }
        bench::print_rates(vorna::Module(argv[1]), kernels);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_rates: %s\n", error.what());
        return 1;
    }
}
