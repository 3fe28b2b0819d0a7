#include "bench/sizes.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "bench/canvas.h"
#include "bench/measure.h"
#include "bench/timing.h"

namespace bench {

namespace {

using Json = nlohmann::ordered_json;

struct Series {
    const char* title;
    Surface surface;
    // What a size is drawn as; what is timed counts as so many.
    std::function<Subject(std::int32_t size)> subject;
    std::function<double(const Subject&)> amount;
};

struct Plot {
    const char* name;
    const char* title;
    const char* x;
    const char* y;
    std::vector<std::int32_t> sizes;
    bool sized_window; // the size is that of the window
    std::vector<Series> series;
};

// About three a doubling.
std::vector<std::int32_t> sizes_between(std::int32_t first, std::int32_t last) {
    std::vector<std::int32_t> sizes;
    for (double size = first; size < last; size *= 1.26) {
        const auto whole = static_cast<std::int32_t>(size + 0.5);
        if (sizes.empty() || sizes.back() != whole) {
            sizes.push_back(whole);
        }
    }
    sizes.push_back(last);
    return sizes;
}

double triangles_in(const Subject& subject) {
    return static_cast<double>(std::get<Scene>(subject).triangle_count());
}
double pixels_in(const Subject& subject) {
    return std::get<Scene>(subject).area();
}
double lines_in(const Subject& subject) {
    return static_cast<double>(std::get<Lines>(subject).points.size()) / 2;
}

Subject some_triangles(std::int32_t legs) {
    return scattered_triangles(legs, std::clamp(4000000 / (legs * legs), 40, 20000));
}

// In a window that lines of 2000 pixels fit into.
constexpr VT_Int_Pair line_window{2560, 2560};

Subject some_lines(std::int32_t length) {
    return scattered_lines(length, std::clamp(1000000 / length, 500, 20000), {}, line_window);
}

Json measured(const vorna::Module& module, const Plot& plot) {
    constexpr std::int32_t rounds = 9;
    Json series = Json::array();
    for (const Series& one : plot.series) {
        series.push_back({{"title", one.title}, {"points", Json::array()}});
    }
    for (const std::int32_t size : plot.sizes) {
        std::vector<Subject> subjects;
        std::vector<std::unique_ptr<Canvas>> canvases;
        std::vector<Side> sides;
        subjects.reserve(plot.series.size());
        for (const Series& one : plot.series) {
            Surface surface = one.surface;
            if (plot.sized_window) {
                surface.size = {size, size};
            }
            canvases.push_back(make_own_canvas(module, surface, subjects.emplace_back(one.subject(size))));
            sides.push_back({one.title, [canvas = canvases.back().get()] { draw_frame(*canvas, Clears::none); }});
        }
        const std::vector<Time> times = measure(sides, rounds);
        for (std::size_t i = 0; i < sides.size(); ++i) {
            series[i]["points"].push_back({size, 1e9 * times[i].median / plot.series[i].amount(subjects[i])});
        }
        std::printf("%s %d\n", plot.name, size);
        std::fflush(stdout);
    }
    return {{"title", plot.title}, {"x", plot.x}, {"y", plot.y}, {"series", series}};
}

} // namespace

void measure_sizes(const vorna::Module& module, const std::regex& only, const std::string& file) {
    constexpr Shading flat = Shading::flat, gouraud = Shading::gouraud, textured = Shading::textured;
    const auto triangles = [](std::function<double(const Subject&)> amount) {
        return std::vector<Series>{{"flat, no depth", {flat}, some_triangles, amount},
                                   {"flat, depth", {flat, true}, some_triangles, amount},
                                   {"Gouraud, depth", {gouraud, true}, some_triangles, amount},
                                   {"Gouraud, blended", {gouraud, false, true}, some_triangles, amount},
                                   {"textured, depth", {textured, true}, some_triangles, amount}};
    };
    const auto strip = [](std::int32_t points) -> Subject { return long_strip(points); };
    const auto in_window = [](auto make) {
        return [make](std::int32_t side) -> Subject { return make(VT_Int_Pair{side, side}); };
    };
    const auto window_triangles = in_window([](VT_Int_Pair window) { return scattered_triangles(64, 2000, {}, window); });
    const auto window_lines = in_window([](VT_Int_Pair window) { return scattered_lines(100, 5000, {}, window); });
    const auto window_short_lines = in_window([](VT_Int_Pair window) { return scattered_lines(10, 20000, {}, window); });
    const auto window_circles = in_window([](VT_Int_Pair window) { return scattered_circles(20, true, 5000, {}, window); });
    const std::vector<std::int32_t> windows{192, 256, 512, 768, 1024, 1536, 2048, 3072, 4096, 6144, 8192, 12288, 16384};
    const Plot plots[] = {
        {"triangles", "Time per triangle", "legs, pixels", "ns a triangle", sizes_between(1, 512), false,
         triangles(triangles_in)},
        {"triangle-pixels", "Time per pixel of a triangle", "legs, pixels", "ns a pixel", sizes_between(1, 512), false,
         triangles(pixels_in)},
        {"lines",
         "Time per line",
         "length, pixels",
         "ns a line",
         sizes_between(1, 2000),
         false,
         {{"plain", {.size = line_window}, some_lines, lines_in},
          {"with depth", {.depth = true, .size = line_window}, some_lines, lines_in},
          {"Gouraud", {.shading = gouraud, .size = line_window}, some_lines, lines_in},
          {"smoothed", {.smoothed = true, .size = line_window}, some_lines, lines_in}}},
        {"strips",
         "Time per triangle of a strip",
         "points of the strip",
         "ns a triangle",
         sizes_between(3, 100000),
         false,
         {{"flat, no depth", {flat}, strip, triangles_in},
          {"flat, depth", {flat, true}, strip, triangles_in},
          {"Gouraud, depth", {gouraud, true}, strip, triangles_in}}},
        {"windows",
         "Time per shape at random places of a square window",
         "side of the window, pixels",
         "ns a shape",
         windows,
         true,
         {{"flat triangle with depth, legs 64", {flat, true}, window_triangles, triangles_in},
          {"Gouraud triangle with depth, legs 64", {gouraud, true}, window_triangles, triangles_in},
          {"line of 100 pixels", {}, window_lines, lines_in},
          {"line of 10 pixels", {}, window_short_lines, lines_in},
          {"filled circle, radius 20", {}, window_circles, [](const Subject&) { return 5000.0; }}}},
    };
    Json document;
    for (const Plot& plot : plots) {
        if (std::regex_search(plot.name, only)) {
            document[plot.name] = measured(module, plot);
        }
    }
    std::ofstream out(file);
    out << document.dump(1) << '\n';
    if (!out.flush()) {
        throw std::runtime_error("cannot write " + file);
    }
}

} // namespace bench
