// Measures the renderer beside its peers at 1920 x 1080, on one thread, or on as many as BENCH_PEER_THREADS says.
//
// Before a workload is timed, what it paints must agree with what each peer paints, save for what the ways of drawing differ in:
// with the open member inside the clip when it is masked, with the 32-bit member when it is 8-bit.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <stdexcept>

#include "bench/guard.h"
#include "bench/report.h"
#include "bench/session.h"
#include "bench/sizes.h"

namespace bench {

namespace {

struct Settings {
    Session_Settings session;
    Model_Files models;
    std::string only = ".", table, json, sizes, store, check;
};

std::string processor_name() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("model name", 0) == 0) {
            return line.substr(line.find(':') + 2);
        }
    }
    return "unknown";
}

Context context_of(const Settings& settings) {
    return {{"processor", processor_name()},
            {"compiler", VORNA_COMPILER},
            {"build type", VORNA_BUILD_TYPE},
            {"commit", VORNA_COMMIT},
            {"peers", std::string(llvmpipe_description()) + ", " + raster_peers_description()},
            {"rounds", std::to_string(settings.session.rounds)}};
}

void write(const std::string& file, const std::string& text) {
    if (file.empty()) {
        return;
    }
    std::ofstream out(file);
    out << text;
    if (!out.flush()) {
        throw std::runtime_error("cannot write " + file);
    }
}

// Those that KRB_KERNELS or --kernels names, else all that this processor runs but for plain C++.
std::vector<std::string> chosen_kernel_sets(const Session_Settings& settings) {
    const vorna::Module module(settings.module);
    if (!settings.kernel_sets.empty()) {
        const std::vector<std::string> found = runnable(module, settings.kernel_sets);
        if (found.size() < settings.kernel_sets.size()) {
            throw std::runtime_error("--kernels: expected kernel sets that this processor runs");
        }
        return found;
    }
    const char* const forced = std::getenv("KRB_KERNELS");
    return runnable(module,
                    forced ? std::vector<std::string>{forced} : std::vector<std::string>{"avx512", "avx2", "baseline", "neon"});
}

// False when a workload did not paint what it should, or fell behind its stored figures.
bool run(Settings settings) {
    const std::regex only(settings.only);
    settings.session.kernel_sets = chosen_kernel_sets(settings.session);
    const bool guards = !settings.store.empty() || !settings.check.empty();
    settings.session.with_peers = !guards;
    settings.session.with_portable = guards;
    Session session(settings.session);
    if (!settings.sizes.empty()) {
        measure_sizes(session.module(), only, settings.sizes);
        return true;
    }
    const std::vector<Workload> all = workloads(settings.models);
    std::vector<Result> results;
    for (const Workload& workload : all) {
        if (std::regex_search(workload.name, only)) {
            for (Result& result : session.run(workload)) {
                std::printf("%s\n", summary(result).c_str());
                results.push_back(std::move(result));
            }
            std::fflush(stdout);
        }
    }
    if (!settings.check.empty()) {
        const std::vector<std::string> fallen = rows_fallen(settings.check, results, session);
        for (const std::string& row : fallen) {
            std::printf("%s\n", row.c_str());
        }
        return fallen.empty();
    }
    write(settings.store, stored_ratios(results));
    const Context context = context_of(settings);
    write(settings.table, markdown(context, results));
    write(settings.json, json(context, results));
    return std::all_of(results.begin(), results.end(), [](const Result& result) { return result.failure.empty(); });
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    bench::Settings settings;
    CLI::App app("Measures the renderer beside memory and its peers.");
    app.add_option("MODULE", settings.session.module, "The renderer, krb.vrd")->required();
    app.add_option("MODEL", settings.models.bunny, "The model of the frame that is drawn whole, bunny.obj")->required();
    app.add_option("--dragon", settings.models.dragon, "The file of the dragon, for its rows");
    app.add_option("--only", settings.only, "Regular expression of the workloads, or of the plots of sizes, that are measured");
    app.add_option("--rounds", settings.session.rounds, "How often each side is timed")->check(CLI::Range(1, 1000))->take_last();
    app.add_option("--vary", settings.session.vary,
                   "Draw with other places, colours and sizes, up to 30 % off, too: their random seed")
        ->take_last();
    app.add_option("--beside", settings.session.beside, "Another build of the renderer to measure");
    app.add_option("--table", settings.table, "Markdown file to write")->take_last();
    app.add_option("--json", settings.json, "JSON file to write")->take_last();
    app.add_option("--kernels", settings.session.kernel_sets, "Kernel sets to measure, with commas between")->delimiter(',');
    app.add_option("--store", settings.store, "Write the ratios to memset and to the kernel set portable into this JSON file");
    app.add_option("--check", settings.check, "Compare them with such a file and name what fell by more than 15 %");
    app.add_option("--sizes", settings.sizes, "Measure cost against size instead, into this JSON file");
    CLI11_PARSE(app, argc, argv);
    try {
        return bench::run(settings) ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
}
