// Measures the readers of models and the making of strips, on one thread.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/job/formats.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/strips.h"

namespace {

using namespace vorna::drawing;

// Milliseconds of processor time, the least of the rounds.
template <class Work> double least_time(int rounds, const Work& work) {
    double least = 1e300;
    for (int round = 0; round < rounds; ++round) {
        const std::clock_t start = std::clock();
        work();
        least = std::min(least, 1e3 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    return least;
}

void measure(const std::string& file, int rounds) {
    Load_Limits of_file;
    const std::string content = model::read_file(file, of_file);
    const Format* const format = open_input(file, "", of_file).format;
    if (!format || !format->read_model) {
        throw std::runtime_error(file + ": expected a PLY, OBJ or STL file");
    }
    model::Mesh mesh;
    const double read = least_time(rounds, [&] {
        Load_Limits limits;
        limits.add_file(file, content.size());
        Input input{.name = file, .suffix = std::string(format->suffix), .format = format, .content = content};
        mesh = format->read_model(input, limits);
    });
    std::size_t strips = 0, vertices = 0;
    const double joined = least_time(rounds, [&] {
        const model::Strips made = model::make_strips(mesh.triangles, static_cast<std::uint32_t>(mesh.positions.size()));
        strips = made.count();
        vertices = made.vertices.size();
    });
    std::printf("%s: %.1f MB, read in %.1f ms, %.0f MB/s; %zu triangles in %zu strips of %zu vertices, %.1f ms\n", file.c_str(),
                static_cast<double>(content.size()) / 1e6, read, static_cast<double>(content.size()) / 1e3 / read,
                mesh.triangle_count(), strips, vertices, joined);
}

} // namespace

int main(int count, char** arguments) {
    CLI::App parser("Measures the readers of models and the making of strips: processor time, the least of some rounds");
    std::vector<std::string> files;
    int rounds = 7;
    parser.add_option("files", files, "PLY, OBJ and STL files")->required();
    parser.add_option("--rounds", rounds, "How often each is measured");
    CLI11_PARSE(parser, count, arguments);
    try {
        for (const std::string& file : files) {
            measure(file, rounds);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_readers: %s\n", error.what());
        return 1;
    }
    return 0;
}
