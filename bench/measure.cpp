#include "bench/measure.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include <benchmark/benchmark.h>

namespace bench {

namespace {

std::string processor_name() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("model name", 0) == 0) {
            return line.substr(line.find(':') + 2);
        }
    }
    return "unknown";
}

} // namespace

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

void check_number(const std::string& name, std::int64_t ours, const std::string& other, std::int64_t theirs, double edge_share) {
    const double difference = std::abs(static_cast<double>(ours - theirs)) / static_cast<double>(theirs);
    std::printf("%s: %lld pixels painted, by %s %lld\n", name.c_str(), static_cast<long long>(ours), other.c_str(),
                static_cast<long long>(theirs));
    if (!(difference <= edge_share)) {
        throw std::runtime_error(name + ": paints " + std::to_string(ours) + " pixels, " + other + " " + std::to_string(theirs) +
                                 ", expected a difference of at most " + std::to_string(100 * edge_share) + " %");
    }
}

void add_memory() {
    static std::vector<std::uint8_t> from(4 * window_pixels, 1), to(4 * window_pixels, 2);
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
    add("memset_color", 4 * window_pixels, set);
    add("memset_depth", 2 * window_pixels, set);
    add("memcpy_color", 4 * window_pixels, [](std::size_t bytes) { std::memcpy(to.data(), from.data(), bytes); });
}

void add_context(Ratio_Table& ratios, const std::string& peer) {
    const char* kernels = std::getenv("KRB_KERNELS");
    for (const auto& [name, value] : {std::pair<const char*, std::string>{"processor", processor_name()},
                                      {"kernel set", kernels ? kernels : "automatic"},
                                      {"compiler", VORNA_COMPILER},
                                      {"build type", VORNA_BUILD_TYPE},
                                      {"peer", peer}}) {
        benchmark::AddCustomContext(name, value);
        ratios.add_context(name, value);
    }
}

int run_main(int argc, char** argv, const char* usage, int count, bool (*work)(char** arguments)) {
    benchmark::Initialize(&argc, argv);
    if (argc - 1 != count) {
        std::fprintf(stderr, "usage: %s %s [--benchmark_...], expected %d arguments, found %d\n", argv[0], usage, count,
                     argc - 1);
        return 2;
    }
    try {
        return work(argv + 1) ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
}

} // namespace bench
