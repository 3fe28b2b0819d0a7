// Measures lines, images, circles and dashed polylines at 1920 x 1080 on one thread, beside llvmpipe, SDL2, cairo, pixman and
// memcpy.
//
// Before a drawing is timed, a sparse one of the same kind must cover the same places as the peers' do: nearly every painted
// pixel has a painted one of the other's on it or beside it, and the numbers of pixels agree, save for what the ways of drawing
// differ in.
#include <algorithm>
#include <array>
#include <cstdio>
#include <deque>
#include <fstream>
#include <functional>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/measure.h"

namespace bench {

namespace {

const Unit million_lines{"million lines/s", 1e6}, million_pixels{"million pixels/s", 1e6},
    thousand_circles{"thousand circles/s", 1e3}, million_points{"million points/s", 1e6};

struct Peer {
    const char* who;
    std::unique_ptr<Canvas> (*make)(const Surface&, const Primitives&);
    double edge_share; // largest difference in the number of painted pixels
};

// What is timed, and a part of it for the check: so little that its pixels lie apart.
struct Pair {
    Primitives timed, sparse;
    double amount; // of what is timed, as the unit counts
};

struct Drawing {
    std::string name, title;
    const Pair& scene;
    const Unit& unit;
    Surface surface;
    std::vector<Peer> peers{};
    std::string open{}; // for a masked drawing: the name of the same one without a clip
};

using Painted = std::vector<bool>;
using Maker = std::function<std::unique_ptr<Canvas>(const Primitives&)>;

constexpr std::int32_t sparse_pixels = static_cast<std::int32_t>(window_pixels / 16);

Pair line_pair(std::int32_t length) {
    constexpr std::int32_t count = 20000;
    return {scattered_lines(length, count), scattered_lines(length, std::min(count, sparse_pixels / length)), count};
}

Pair circle_pair(std::int32_t radius, bool filled, std::int32_t count) {
    const std::int32_t pixels = filled ? 3 * radius * radius : 6 * radius;
    return {scattered_circles(radius, filled, count),
            scattered_circles(radius, filled, std::clamp(sparse_pixels / pixels, 1, count)), static_cast<double>(count)};
}

Pair image_pair(bool translucent) {
    constexpr VT_Int_Pair size{1024, 768};
    const Image image = noise_image(size, translucent);
    return {image, image, 1.0 * size.x * size.y};
}

// Pixels that have none of the other's on or beside them.
std::int64_t number_astray(const Painted& painted, const Painted& others) {
    std::int64_t astray = 0;
    for (std::int32_t y = 1; y < window_size.y - 1; ++y) {
        for (std::int32_t x = 1; x < window_size.x - 1; ++x) {
            const std::ptrdiff_t place = std::ptrdiff_t{y} * window_size.x + x;
            const auto found = [&](std::ptrdiff_t row) {
                const auto pixel = others.begin() + place + row * window_size.x;
                return pixel[-1] || pixel[0] || pixel[1];
            };
            astray += painted[static_cast<std::size_t>(place)] && !found(-1) && !found(0) && !found(1);
        }
    }
    return astray;
}

void check_places(const std::string& name, const Painted& ours, const std::string& other, const Painted& theirs,
                  double edge_share) {
    constexpr double largest_share_astray = 0.01;
    check_number(name, number_of(ours), other, number_of(theirs), edge_share);
    const auto check_astray = [&](const Painted& painted, const Painted& others, const std::string& who) {
        const std::int64_t astray = number_astray(painted, others);
        if (static_cast<double>(astray) > largest_share_astray * static_cast<double>(number_of(painted))) {
            throw std::runtime_error(name + ": " + std::to_string(astray) + " of " + who +
                                     " pixels are nowhere near the other side's, expected at most " +
                                     std::to_string(100 * largest_share_astray) + " %");
        }
    };
    check_astray(ours, theirs, "its");
    check_astray(theirs, ours, other + "'s");
}

// Canvases are large: each lives only as long as it is measured.
void add_canvas(const std::string& name, const Primitives& primitives, const Maker& make) {
    benchmark::RegisterBenchmark(name.c_str(), [&primitives, make](benchmark::State& state) {
        const std::unique_ptr<Canvas> canvas = make(primitives);
        canvas->clear_color();
        draw_frame(*canvas, Clears::depth);
        for ([[maybe_unused]] auto _ : state) {
            draw_frame(*canvas, Clears::none);
        }
    })->MeasureProcessCPUTime();
}

Painted painted_by(const Maker& make, const Primitives& primitives) {
    return painted_by_one_frame(*make(primitives));
}

class Bench {
public:
    explicit Bench(const char* module_path) : module_(module_path) {}

    // Checks and registers all sides of a drawing that the filter of the command line asks for. A side that paints nothing is
    // said so and not timed; nor is the first one when another side paints something else.
    void add(const Drawing& drawing) {
        std::vector<Side> sides{{"vorna", own_maker(drawing.surface), 0}};
        for (const Peer& peer : drawing.peers) {
            const auto make = [peer, surface = drawing.surface](const Primitives& primitives) {
                return peer.make(surface, primitives);
            };
            sides.push_back({peer.who, make, peer.edge_share});
        }
        std::erase_if(sides, [&](const Side& side) { return !std::regex_search(drawing.name + '/' + side.who, filter_); });
        const Side* first = nullptr;
        Painted painted_by_first;
        bool agreed = true;
        std::vector<const Side*> painting;
        for (const Side& side : sides) {
            const std::string name = drawing.name + '/' + side.who;
            const Painted painted = painted_by(side.make, drawing.scene.sparse);
            if (number_of(painted) == 0) {
                leave_out(name, "not drawn", name + ": paints nothing");
                continue;
            }
            painting.push_back(&side);
            agreed &= attempt([&] {
                if (!drawing.open.empty()) {
                    check_masked(name, drawing, painted);
                }
                if (first) {
                    check_places(name, painted, first->who, painted_by_first, side.edge_share + first->edge_share);
                }
            });
            if (!first) {
                first = &side;
                painted_by_first = painted;
            }
        }
        for (const Side* side : painting) {
            const std::string name = drawing.name + '/' + side->who;
            if (side == first && !agreed) {
                leave_out(name, "differs", name + ": not timed, since sides differ");
            } else {
                add_canvas(name, drawing.scene.timed, side->make);
            }
        }
        if (drawing.open.empty()) {
            ratios_.add_drawing(drawing.name, drawing.title, drawing.scene.amount, drawing.unit);
        } else {
            ratios_.add_masked(drawing.name, drawing.title, drawing.open);
        }
    }

    // The painting of the window, which filled circles are measured by, and memory.
    void add_yardsticks() {
        add_memory();
        benchmark::RegisterBenchmark("paint_window/vorna", [this](benchmark::State& state) {
            const Primitives nothing = Lines{};
            const std::unique_ptr<Canvas> canvas = make_own_canvas(module_, {}, nothing);
            for ([[maybe_unused]] auto _ : state) {
                canvas->clear_color();
                benchmark::ClobberMemory();
            }
        })->MeasureProcessCPUTime();
        ratios_.add_fill("memset_color", "memset of the colour buffer", 4.0 * window_pixels, "memset_color");
        ratios_.add_fill("memcpy_color", "memcpy of the colour buffer", 4.0 * window_pixels, "memset_color");
        ratios_.add_fill("paint_window/vorna", "painting of the window", 4.0 * window_pixels, "memset_color");
    }

    // A drawing of filled circles as a fill.
    void add_circle_fill(const Drawing& drawing) {
        const auto& circles = std::get<Circles>(drawing.scene.timed);
        const Primitives one = Circles{circles.radius, true, {circles.centers.front()}, {circles.colors.front()}};
        const auto pixels = static_cast<double>(number_of(painted_by(own_maker({}), one)));
        ratios_.add_fill(drawing.name + "/vorna", drawing.title, 4 * pixels * static_cast<double>(circles.centers.size()),
                         "paint_window/vorna");
    }

    // False when a drawing was not as it should be.
    bool run(const char* table) {
        add_context(ratios_, std::string(llvmpipe_description()) + ", " + raster_peers_description());
        benchmark::RunSpecifiedBenchmarks(&ratios_);
        std::ofstream(table) << ratios_.markdown();
        if (failures_ > 0) {
            std::fprintf(stderr, "%d sides of drawings were not timed: see the reasons above\n", failures_);
        }
        return failures_ == 0;
    }

private:
    struct Side {
        std::string who;
        Maker make;
        double edge_share;
    };

    Maker own_maker(const Surface& surface) {
        return [this, surface](const Primitives& primitives) { return make_own_canvas(module_, surface, primitives); };
    }

    void leave_out(const std::string& name, const std::string& remark, const std::string& why) {
        std::fprintf(stderr, "%s\n", why.c_str());
        ratios_.add_remark(name, remark);
        ++failures_;
    }

    // Whether the check throws nothing.
    static bool attempt(const std::function<void()>& check) {
        try {
            check();
            return true;
        } catch (const std::runtime_error& error) {
            std::fprintf(stderr, "%s\n", error.what());
            return false;
        }
    }

    void check_masked(const std::string& name, const Drawing& drawing, const Painted& painted) {
        constexpr double edge_share = 0.01;
        Surface open = drawing.surface;
        open.clip.reset();
        check_number(name, number_of(painted), drawing.open + " inside the clip",
                     number_inside(*drawing.surface.clip, painted_by(own_maker(open), drawing.scene.sparse)), edge_share);
    }

    vorna::Module module_;
    std::regex filter_{benchmark::GetBenchmarkFilter().empty() || benchmark::GetBenchmarkFilter() == "all"
                           ? "."
                           : benchmark::GetBenchmarkFilter()};
    Ratio_Table ratios_{{"llvmpipe", "SDL2", "cairo", "pixman", "memcpy"}};
    int failures_ = 0;
};

bool run(char** arguments) {
    const auto [module_path, table] = std::array{arguments[0], arguments[1]};
    constexpr Circle clip{800};
    constexpr Shading gouraud = Shading::gouraud;
    // Lines of one pixel a step against a band one pixel wide, which in the mean over the directions has pi / (2 sqrt 2) times as
    // many pixels.
    constexpr double step_edge = 0.02, band_edge = 0.15;
    // Smoothed, three pixels a step however little the outer ones change, against those that such a band touches, two or more.
    constexpr double smooth_edge = 0.4;
    const Peer llvmpipe{"llvmpipe", make_llvmpipe_canvas, step_edge}, sdl{"SDL2", make_sdl_canvas, step_edge};
    const Peer cairo{"cairo", make_cairo_canvas, band_edge};
    const auto within = [](Peer peer, double edge_share) {
        peer.edge_share = edge_share;
        return peer;
    };

    std::deque<Pair> scenes; // its elements stay where they are
    Bench bench(module_path);
    for (const std::int32_t length : {10, 50, 300}) {
        const Pair& scene = scenes.emplace_back(line_pair(length));
        const std::string size = '_' + std::to_string(length), pixels = ", length " + std::to_string(length);
        bench.add({"lines" + size, "flat, no depth" + pixels, scene, million_lines, {}, {llvmpipe, sdl, cairo}});
        bench.add({"smooth_lines" + size,
                   "smoothed" + pixels,
                   scene,
                   million_lines,
                   {.smoothed = true},
                   {within(llvmpipe, smooth_edge), within(cairo, smooth_edge)}});
        bench.add({"plane_lines" + size, "flat, 2D form" + pixels, scene, million_lines, {.plane = true}});
        bench.add({"depth_lines" + size, "flat, depth" + pixels, scene, million_lines, {.depth = true}, {llvmpipe}});
        bench.add({"gouraud_lines" + size, "Gouraud, no depth" + pixels, scene, million_lines, {gouraud}, {llvmpipe}});
        bench.add({"gouraud_depth_lines" + size, "Gouraud, depth" + pixels, scene, million_lines, {gouraud, true}, {llvmpipe}});
        bench.add({"palette_lines" + size, "8-bit flat, no depth" + pixels, scene, million_lines, {.palette = true}});
        bench.add({"palette_gouraud_lines" + size,
                   "8-bit Gouraud, no depth" + pixels,
                   scene,
                   million_lines,
                   {gouraud, false, false, true}});
        bench.add(
            {"masked_lines" + size, "flat lines, no depth" + pixels, scene, million_lines, {.clip = clip}, {}, "lines" + size});
        bench.add({"masked_depth_lines" + size,
                   "flat lines, depth" + pixels,
                   scene,
                   million_lines,
                   {.depth = true, .clip = clip},
                   {},
                   "depth_lines" + size});
        bench.add({"masked_smooth_lines" + size,
                   "smoothed lines" + pixels,
                   scene,
                   million_lines,
                   {.clip = clip, .smoothed = true},
                   {},
                   "smooth_lines" + size});
    }

    for (const bool translucent : {false, true}) {
        const Pair& scene = scenes.emplace_back(image_pair(translucent));
        const std::string name = translucent ? "image_blended" : "image_copied";
        const std::string title = translucent ? "image 1024 × 768 blended" : "image 1024 × 768 copied";
        constexpr double edge = 0;
        std::vector<Peer> peers{within(sdl, edge), within(cairo, edge), {"pixman", make_pixman_canvas, edge}};
        if (!translucent) {
            peers.push_back({"memcpy", make_memcpy_canvas, edge});
        }
        bench.add({name, title, scene, million_pixels, {.alpha = translucent}, peers});
        bench.add({"masked_" + name, title, scene, million_pixels, {.alpha = translucent, .clip = clip}, {}, name});
    }

    std::vector<Drawing> filled;
    for (const bool fill : {true, false}) {
        for (const auto& [radius, count] : {std::pair{5, 20000}, std::pair{50, 1000}, std::pair{300, 50}}) {
            const Pair& scene = scenes.emplace_back(circle_pair(radius, fill, count));
            const std::string name = (fill ? "circles_" : "circle_outlines_") + std::to_string(radius);
            const std::string title = (fill ? "filled circles, radius " : "circle outlines, radius ") + std::to_string(radius);
            // Filled, a quarter of a pixel along the edge.
            const double edge = 0.5 / radius;
            const Drawing drawing{name,
                                  title,
                                  scene,
                                  thousand_circles,
                                  {},
                                  fill ? std::vector{within(llvmpipe, edge), within(sdl, edge), within(cairo, edge)}
                                       : std::vector{within(llvmpipe, band_edge), within(sdl, band_edge), cairo}};
            bench.add(drawing);
            bench.add({"masked_" + name, title, scene, thousand_circles, {.clip = clip}, {}, name});
            if (fill) {
                filled.push_back(drawing);
            }
        }
    }

    const Polylines dashed = wandering_polyline(100000, true), dashes = dashes_of(dashed);
    const Polylines sparse = wandering_polyline(2000, true), sparse_dashes = dashes_of(sparse);
    const Pair dashed_pair{dashed, sparse, static_cast<double>(dashed.points.size())};
    const Pair dashes_pair{dashes, sparse_dashes, static_cast<double>(dashed.points.size())};
    bench.add({"dashed", "dashed polyline", dashed_pair, million_points, {}});
    bench.add({"dashes", "its dashes as plain lines", dashes_pair, million_points, {}});

    bench.add_yardsticks();
    for (const Drawing& drawing : filled) {
        bench.add_circle_fill(drawing);
    }
    return bench.run(table);
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    return bench::run_main(argc, argv, "MODULE TABLE", 2, bench::run);
}
