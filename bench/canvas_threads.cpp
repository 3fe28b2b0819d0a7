// Pictures that a canvas draws by one thread and by several: small calls and large ones, each a call of its own, or recordings.
//
// Times are those on the clock, of all sides in turn, the least and the median of the rounds. The pixels must be the same.
// "Apart" is what the machine allows: as many threads draw the picture on a canvas each, which have nothing in common.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
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
#include "drawing/image/image_file.h"
#include "drawing/recording/recording_file.h"
#include "drawing/recording/replay.h"
#include "vorna/canvas.h"

namespace bench {

namespace {

namespace recording = vorna::drawing::recording;

struct Picture {
    std::string name;
    void (*draw)(vorna::Canvas& canvas, std::span<const VT_DCI_Point> points);
    std::size_t points_of_call;
    std::vector<VT_DCI_Point> points;
};

// Draws the same picture again and again, on a canvas of its own.
class Drawer {
public:
    Drawer() = default;
    Drawer(const Drawer&) = delete;
    Drawer& operator=(const Drawer&) = delete;
    virtual ~Drawer() = default;

    virtual void draw() = 0;
    virtual vorna::Canvas& canvas() = 0;
};
using Drawer_Of_Threads = std::function<std::unique_ptr<Drawer>(unsigned threads)>;

class Picture_Drawer final : public Drawer {
public:
    Picture_Drawer(const Picture& picture, const vorna::Module& module, unsigned threads)
        : picture_(picture), canvas_(module, {.size = window_size, .depth_buffer = true, .threads = threads}) {}

    void draw() override {
        canvas_.begin_picture(vorna::rgb(0, 0, 0));
        canvas_.set_color(vorna::rgb(200, 100, 50));
        const std::vector<VT_DCI_Point>& points = picture_.points;
        for (std::size_t i = 0; i < points.size(); i += picture_.points_of_call) {
            picture_.draw(canvas_, {points.data() + i, picture_.points_of_call});
        }
        canvas_.end_picture();
    }
    vorna::Canvas& canvas() override { return canvas_; }

private:
    const Picture& picture_;
    vorna::Canvas canvas_;
};

class Recording_Drawer final : public Drawer {
public:
    Recording_Drawer(const recording::Recording& recording, const std::string& module, unsigned threads)
        : calls_(recording.calls.size()), session_({module, ""}, threads),
          replayer_(recording, session_, {.reports_standard = false}) {
        replayer_.begin();
    }

    void draw() override {
        for (std::size_t call = 0; call < calls_; ++call) {
            replayer_.make(call);
        }
        session_.canvas().flush();
    }
    vorna::Canvas& canvas() override { return session_.canvas(); }

private:
    const std::size_t calls_;
    vorna::drawing::Session session_;
    recording::Replayer replayer_;
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

void draw_wide_line(vorna::Canvas& canvas, std::span<const VT_DCI_Point> points) {
    canvas.rendition().line.weight = 5;
    VD_Draw_2DI_Polyline(canvas, points);
    canvas.rendition().line.weight = 1;
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
    all.push_back({"wide_polylines", draw_wide_line, 1500, wandering_polyline(12000, false).points});
    return all;
}

// A picture on a canvas of its own in each of so many threads at once.
void draw_apart(const std::vector<std::unique_ptr<Drawer>>& drawers) {
    std::vector<std::jthread> others;
    for (std::size_t i = 1; i < drawers.size(); ++i) {
        others.emplace_back([&drawer = *drawers[i]] { drawer.draw(); });
    }
    drawers[0]->draw();
}

bool have_same_rows(const vorna::drawing::Raster& a, const vorna::drawing::Raster& b) {
    const std::size_t row_bytes = static_cast<std::size_t>(a.width * vorna::bytes_per_pixel(a.format));
    for (std::int32_t row = 0; row < a.height; ++row) {
        if (std::memcmp(a.top + row * a.row_bytes, b.top + row * b.row_bytes, row_bytes) != 0) {
            return false;
        }
    }
    return true;
}

void check_pixels(const std::string& name, vorna::Canvas& canvas, vorna::Canvas& expected) {
    using vorna::drawing::raster_of;
    const bool has_depths = canvas.has_depth_buffer();
    if (!have_same_rows(raster_of(canvas.color_buffer()), raster_of(expected.color_buffer())) ||
        (has_depths && canvas.read_depths() != expected.read_depths())) {
        throw std::runtime_error(name + ": several threads have drawn other pixels than one");
    }
}

void print_head(unsigned threads) {
    std::printf("%-20s %9s %9s %12s %9s %7s %7s %17s\n", "canvas_threads", "1: least", "median",
                (std::to_string(threads) + ": least").c_str(), "median", "least x", "median x", "apart, least x");
}

void measure_threads(const std::string& name, const Drawer_Of_Threads& make, unsigned threads, std::int32_t rounds) {
    const std::unique_ptr<Drawer> one = make(1), several = make(threads);
    std::vector<std::unique_ptr<Drawer>> apart;
    for (unsigned i = 0; i < threads; ++i) {
        apart.push_back(make(1));
    }
    const std::vector<Time> times =
        measure({{"one", [&] { one->draw(); }}, {"several", [&] { several->draw(); }}, {"apart", [&] { draw_apart(apart); }}},
                rounds, Clock::wall);
    check_pixels(name, several->canvas(), one->canvas());
    std::printf("%-20s %6.2f ms %6.2f ms %9.2f ms %6.2f ms %7.2f %8.2f %17.2f\n", name.c_str(), 1e3 * times[0].least,
                1e3 * times[0].median, 1e3 * times[1].least, 1e3 * times[1].median, times[0].least / times[1].least,
                times[0].median / times[1].median, threads * times[0].least / times[2].least);
    std::fflush(stdout);
}

// The pictures whose names match.
void run(const std::string& module_file, const std::regex& only, unsigned threads, std::int32_t rounds) {
    const vorna::Module module(module_file);
    for (const Picture& picture : pictures()) {
        if (std::regex_search(picture.name, only)) {
            measure_threads(
                picture.name, [&](unsigned count) { return std::make_unique<Picture_Drawer>(picture, module, count); }, threads,
                rounds);
        }
    }
}

void run_recordings(const std::string& module, const std::vector<std::string>& files, unsigned threads, std::int32_t rounds) {
    for (const std::string& file : files) {
        vorna::drawing::Load_Limits limits;
        const recording::Recording recorded = recording::load(file, limits);
        measure_threads(
            std::filesystem::path(file).stem().string(),
            [&](unsigned count) { return std::make_unique<Recording_Drawer>(recorded, module, count); }, threads, rounds);
    }
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    std::string module, only = ".";
    unsigned threads = 2;
    std::int32_t rounds = 25;
    std::vector<std::string> recordings;
    CLI::App app("Measures pictures that a canvas draws by several threads.");
    app.add_option("MODULE", module, "The renderer, krb.vrd")->required();
    app.add_option("--recordings", recordings, "Recordings to draw instead, again and again");
    app.add_option("--only", only, "Regular expression of the pictures that are measured");
    app.add_option("--threads", threads, "Threads of the canvas that is compared with one of a single thread");
    app.add_option("--rounds", rounds, "How often each side is timed")->check(CLI::Range(1, 1000));
    CLI11_PARSE(app, argc, argv);
    try {
        bench::print_head(threads);
        if (recordings.empty()) {
            bench::run(module, std::regex(only), threads, rounds);
        } else {
            bench::run_recordings(module, recordings, threads, rounds);
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
}
