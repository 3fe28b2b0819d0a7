// How fast a recording of many calls is gone through, forwards and backwards.
#include "drawing/recording/steps.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <exception>
#include <random>
#include <vector>

#include "drawing/recording/call_kinds.h"
#include "vorna/module.h"

namespace {

using namespace vorna::drawing;
using namespace vorna::drawing::recording;

struct Settings {
    int calls = 60000, side = 28, rounds = 1000;
    std::uint64_t mebibytes = 256;
    bool has_heat = false;
};

constexpr int width = 1280, height = 960;

// Triangles of random depths, each half of a square with that side.
Recording triangles(const Settings& settings) {
    std::mt19937 random(1);
    const auto below = [&random](int limit) { return static_cast<std::int32_t>(random() % static_cast<unsigned>(limit)); };
    Recording recording;
    recording.configuration.window = {width, height, VT_Int_Pair{}, false};
    recording.calls.push_back({find_call_kind("clear_depth_rectangle"), Depth_Clear{{0, width - 1, 0, height - 1}}});
    while (static_cast<int>(recording.calls.size()) < settings.calls) {
        const std::int32_t x = below(width - settings.side), y = below(height - settings.side), z = below(65535);
        const VT_RGB32 color{static_cast<std::uint8_t>(below(256)), static_cast<std::uint8_t>(below(256)), 128, 255};
        recording.calls.push_back({find_call_kind("draw_dci_colorized_polytriangle"),
                                   Colorized<VT_DCI_Point>{{{x, y, z}, {x + settings.side, y, z}, {x, y + settings.side, z}},
                                                           std::vector{color},
                                                           true}});
    }
    return recording;
}

// Of processor time.
double milliseconds_to(Recording_Steps& steps, std::size_t position) {
    const std::clock_t start = std::clock();
    steps.go_to(position);
    return 1e3 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

void print(const char* what, std::vector<double> times) {
    std::ranges::sort(times);
    const std::size_t count = times.size();
    std::printf("%s: median %.2f ms, 99 of 100 within %.2f ms, at most %.2f ms\n", what, times[count / 2],
                times[count - 1 - count / 100], times.back());
}

void measure(const Settings& settings) {
    const Recording recording = triangles(settings);
    Recording_Steps steps(recording, {vorna::Module::installed_path(), {}},
                          {.memory = settings.mebibytes << 20, .has_heat = settings.has_heat});
    const double first = milliseconds_to(steps, steps.calls());
    std::printf("%zu calls once: %.1f ms; %.1f MiB of states\n", steps.calls(), first,
                static_cast<double>(steps.memory_used()) / (1 << 20));
    std::mt19937 random(2);
    std::vector<double> jumps, back, on;
    for (int i = 0; i < settings.rounds; ++i) {
        const std::size_t position = 2 + random() % (steps.calls() - 3);
        jumps.push_back(milliseconds_to(steps, position));
        back.push_back(milliseconds_to(steps, position - 1));
        on.push_back(milliseconds_to(steps, position));
    }
    print("to any call", jumps);
    print("one call back", back);
    print("one call on", on);
}

} // namespace

int main(int argc, char** argv) {
    Settings settings;
    CLI::App app("Times of going through a recording of random triangles.");
    app.add_option("--calls", settings.calls, "Calls of the recording")->check(CLI::Range(10, 10000000))->capture_default_str();
    app.add_option("--side", settings.side, "Side of the triangles in pixels")->check(CLI::Range(1, 900))->capture_default_str();
    app.add_option("--rounds", settings.rounds, "Random places that are gone to")
        ->check(CLI::Range(1, 100000))
        ->capture_default_str();
    app.add_option("--memory", settings.mebibytes, "MiB of kept states")->capture_default_str();
    app.add_flag("--heat", settings.has_heat, "With counts and costs of pixels");
    CLI11_PARSE(app, argc, argv);
    try {
        measure(settings);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_steps: %s\n", error.what());
        return 1;
    }
    return 0;
}
