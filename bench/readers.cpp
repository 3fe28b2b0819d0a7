// Measures the readers of models, and what is made of a mesh before it is drawn.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/image/sha256.h"
#include "drawing/job/formats.h"
#include "drawing/model/edges.h"
#include "drawing/model/facing.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/strips.h"

namespace {

using namespace vorna::drawing;

// The least milliseconds of the rounds, of processor time and on the clock.
struct Times {
    double processor = 1e300, clock = 1e300;
};

// prepare: called before each round, and not measured.
template <class Prepare, class Work> Times least_times(int rounds, const Prepare& prepare, const Work& work) {
    Times least;
    for (int round = 0; round < rounds; ++round) {
        prepare();
        const auto start = std::chrono::steady_clock::now();
        const std::clock_t processor_start = std::clock();
        work();
        least.processor = std::min(least.processor, 1e3 * static_cast<double>(std::clock() - processor_start) / CLOCKS_PER_SEC);
        least.clock =
            std::min(least.clock, std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    return least;
}

// Of all lists, so that two versions of the readers can be compared.
template <class... Lists> std::string digest_of(const Lists&... lists) {
    Sha256 sum;
    const auto add = [&sum](const auto& list) {
        const std::uint64_t size = list.size();
        sum.add(reinterpret_cast<const std::uint8_t*>(&size), sizeof size);
        sum.add(reinterpret_cast<const std::uint8_t*>(list.data()), list.size() * sizeof list[0]);
    };
    (add(lists), ...);
    return sum.finish().substr(0, 16);
}

std::string digest_of(const model::Mesh& mesh) {
    return digest_of(mesh.positions, mesh.normals, mesh.colors, mesh.triangles, mesh.lines, mesh.points, mesh.diagonals,
                     mesh.smoothing, mesh.coordinates, mesh.triangle_materials, mesh.point_normals);
}

void print_step(const char* step, const Times& times, const std::string& digest) {
    std::printf("    %-8s %8.1f ms, %8.1f ms of processor time; %s\n", step, times.clock, times.processor, digest.c_str());
}

void measure(const std::string& file, int rounds, unsigned threads) {
    Load_Limits of_file;
    const std::string content = model::read_file(file, of_file);
    const Format* const format = open_input(file, "", of_file).format;
    if (!format || !format->read_model) {
        throw std::runtime_error(file + ": expected a PLY, OBJ or STL file");
    }
    model::Mesh mesh;
    Input input{.name = file, .suffix = std::string(format->suffix), .format = format, .content = content};
    const Times read = least_times(
        rounds,
        [&] {
            mesh = {};
            input.content = content;
        },
        [&] {
            Load_Limits limits(std::nullopt, false, threads);
            limits.add_file(file, content.size());
            mesh = format->read_model(input, limits);
        });
    const auto size = static_cast<double>(content.size());
    std::printf("%s: %.1f MB, %.0f MB/s, %zu triangles\n", file.c_str(), size / 1e6, size / 1e3 / read.clock,
                mesh.triangle_count());
    print_step("read", read, digest_of(mesh));
    model::Mesh finished;
    const auto nothing = [] {};
    const Times finish = least_times(
        rounds, [&] { finished = mesh; }, [&] { model::finish_mesh(finished, file, {}, threads); });
    print_step("finish", finish, digest_of(finished));
    if (finished.triangles.empty()) {
        return;
    }
    model::Strips strips;
    const Times joined = least_times(rounds, nothing, [&] {
        strips = model::make_strips(finished.triangles, static_cast<std::uint32_t>(finished.positions.size()), threads);
    });
    print_step("strips", joined,
               digest_of(strips.vertices, strips.starts, strips.triangle_order) + ", " + std::to_string(strips.count()) + " of " +
                   std::to_string(strips.vertices.size()) + " vertices");
    std::optional<model::Facing> found;
    const Times facing = least_times(rounds, nothing, [&] {
        found.emplace(finished, threads);
        found->normals();
    });
    print_step("facing", facing, digest_of(found->normals()) + (found->hides_backs() ? ", closed" : ", open"));
    model::Edges edges;
    const Times listed = least_times(rounds, nothing, [&] { edges = model::make_edges(finished, threads); });
    print_step("edges", listed,
               digest_of(edges.points, edges.triangles, edges.chains, edges.starts, edges.triangle_edges) + ", " +
                   std::to_string(edges.count));
}

} // namespace

int main(int count, char** arguments) {
    CLI::App parser(
        "Measures the readers of models and what is made of meshes, the least of some rounds, with digests of the lists");
    std::vector<std::string> files;
    int rounds = 7;
    unsigned threads = 1;
    parser.add_option("files", files, "PLY, OBJ and STL files")->required();
    parser.add_option("--rounds", rounds, "How often each is measured");
    parser.add_option("--threads", threads, "How many threads share the work");
    CLI11_PARSE(parser, count, arguments);
    try {
        for (const std::string& file : files) {
            measure(file, rounds, threads);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_readers: %s\n", error.what());
        return 1;
    }
    return 0;
}
