// Pictures that a canvas draws by one thread and by several: small calls and large ones, each a call of its own.
//
// Times are those on the clock, of all sides in turn, the least and the median of the rounds. The pixels must be the same.
// "Apart" is what the machine allows: as many threads draw the picture on a canvas each, which have nothing in common.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <regex>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/measure.h"
#include "bench/primitives.h"
#include "bench/scene.h"
#include "bench/timing.h"
#include "vorna/canvas.h"

namespace bench {

namespace {

struct Picture {
    std::string name;
    void (*draw)(vorna::Canvas& canvas, std::span<const VT_DCI_Point> points);
    std::size_t points_of_call;
    std::vector<VT_DCI_Point> points;

    void draw_on(vorna::Canvas& canvas) const {
        canvas.begin_picture(vorna::rgb(0, 0, 0));
        canvas.set_color(vorna::rgb(200, 100, 50));
        for (std::size_t i = 0; i < points.size(); i += points_of_call) {
            draw(canvas, {points.data() + i, points_of_call});
        }
        canvas.end_picture();
    }
};

void draw_strip(vorna::Canvas& canvas, std::span<const VT_DCI_Point> points) {
    VD_Draw_DCI_Polytriangle(canvas, points);
}

void draw_line(vorna::Canvas& canvas, std::span<const VT_DCI_Point> points) {
    VD_Draw_DCI_Polyline(canvas, points);
}

void draw_clipped_line(vorna::Canvas& canvas, std::span<const VT_DCI_Point> points) {
    VD_Draw_2DI_Polyline(canvas, points);
}

// Calls that cover the window six times, but not more than 40,000.
std::vector<Picture> pictures() {
    constexpr std::int32_t most_calls = 40000;
    std::vector<Picture> all;
    for (const std::int32_t legs : {512, 128, 32, 8}) {
        const auto count = std::min<std::int32_t>(most_calls, static_cast<std::int32_t>(12 * window_pixels) / (legs * legs));
        all.push_back({"triangles_" + std::to_string(legs), draw_strip, 3, scattered_triangles(legs, count).points});
    }
    for (const std::int32_t length : {300, 50, 10}) {
        all.push_back({"lines_" + std::to_string(length), draw_line, 2, scattered_lines(length, most_calls).points});
    }
    constexpr std::int32_t vertices = 100000;
    all.push_back({"polyline", draw_clipped_line, vertices, wandering_polyline(vertices, false).points});
    return all;
}

// A picture on a canvas of its own in each of so many threads at once.
void draw_apart(std::vector<vorna::Canvas>& canvases, const Picture& picture) {
    std::vector<std::jthread> others;
    for (std::size_t i = 1; i < canvases.size(); ++i) {
        others.emplace_back([&canvas = canvases[i], &picture] { picture.draw_on(canvas); });
    }
    picture.draw_on(canvases[0]);
}

void check_pixels(const Picture& picture, vorna::Canvas& canvas, vorna::Canvas& expected) {
    if (canvas.read_pixels() != expected.read_pixels() || canvas.read_depths() != expected.read_depths()) {
        throw std::runtime_error(picture.name + ": several threads have drawn other pixels than one");
    }
}

// Draws the pictures whose names match.
void run(const std::string& module_file, const std::regex& only, unsigned threads, std::int32_t rounds) {
    const vorna::Module module(module_file);
    const auto canvas_of = [&](unsigned count) {
        return vorna::Canvas(module, {.size = window_size, .depth_buffer = true, .threads = count});
    };
    std::printf("%-14s %9s %9s %12s %9s %7s %7s %17s\n", "canvas_threads", "1: least", "median",
                (std::to_string(threads) + ": least").c_str(), "median", "least x", "median x", "apart, least x");
    for (const Picture& picture : pictures()) {
        if (!std::regex_search(picture.name, only)) {
            continue;
        }
        vorna::Canvas one = canvas_of(1), several = canvas_of(threads);
        std::vector<vorna::Canvas> apart;
        for (unsigned i = 0; i < threads; ++i) {
            apart.push_back(canvas_of(1));
        }
        const std::vector<Time> times = measure({{"one", [&] { picture.draw_on(one); }},
                                                 {"several", [&] { picture.draw_on(several); }},
                                                 {"apart", [&] { draw_apart(apart, picture); }}},
                                                rounds, Clock::wall);
        check_pixels(picture, several, one);
        std::printf("%-14s %6.2f ms %6.2f ms %9.2f ms %6.2f ms %7.2f %8.2f %17.2f\n", picture.name.c_str(), 1e3 * times[0].least,
                    1e3 * times[0].median, 1e3 * times[1].least, 1e3 * times[1].median, times[0].least / times[1].least,
                    times[0].median / times[1].median, threads * times[0].least / times[2].least);
        std::fflush(stdout);
    }
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    std::string module, only = ".";
    unsigned threads = 2;
    std::int32_t rounds = 25;
    CLI::App app("Measures pictures that a canvas draws by several threads.");
    app.add_option("MODULE", module, "The renderer, krb.vrd")->required();
    app.add_option("--only", only, "Regular expression of the pictures that are measured");
    app.add_option("--threads", threads, "Threads of the canvas that is compared with one of a single thread");
    app.add_option("--rounds", rounds, "How often each side is timed")->check(CLI::Range(1, 1000));
    CLI11_PARSE(app, argc, argv);
    try {
        bench::run(module, std::regex(only), threads, rounds);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
}
