// Measures the renderer beside its peers at 1920 x 1080 on one thread.
//
// Before a workload is timed, what it paints must agree with what each peer paints, save for what the ways of drawing differ in:
// with the open member inside the clip when it is masked, with the 32-bit member when it is 8-bit.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <regex>
#include <stdexcept>

#include "bench/report.h"
#include "bench/sizes.h"
#include "bench/timing.h"

namespace bench {

namespace {

struct Settings {
    std::string module, model, only = ".", table, json, sizes, beside;
    std::int32_t rounds = 9;
    std::uint32_t vary = 0;
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
    const char* kernels = std::getenv("KRB_KERNELS");
    return {{"processor", processor_name()},
            {"kernel set", kernels ? kernels : "automatic"},
            {"compiler", VORNA_COMPILER},
            {"build type", VORNA_BUILD_TYPE},
            {"commit", VORNA_COMMIT},
            {"peers", std::string(llvmpipe_description()) + ", " + raster_peers_description()},
            {"rounds", std::to_string(settings.rounds)}};
}

// How many of the pixels that scattered triangles cover pass the depth test, as a share.
double share_passing(const vorna::Module& module, const Surface& surface, const Scene& scene) {
    Subject one;
    const std::unique_ptr<Canvas> canvas = make_own_canvas(module, surface, one);
    canvas->clear_depth();
    double passed = 0;
    for (std::ptrdiff_t i = 0; i < std::ssize(scene.points); i += 3) {
        const auto part = [i](const auto& all) { return std::vector(all.begin() + i, all.begin() + i + 3); };
        one = Scene{part(scene.points), part(scene.colors), {3}};
        canvas->clear_color();
        canvas->draw();
        passed += static_cast<double>(number_of(canvas->painted_pixels()));
    }
    return passed / scene.area();
}

class Bench {
public:
    explicit Bench(const Settings& settings) : settings_(settings), module_(settings.module) {
        if (!settings.beside.empty()) {
            beside_ = std::make_unique<vorna::Module>(settings.beside);
        }
    }

    Result run(const Workload& workload) {
        const Subject subject = workload.make({});
        Result result{};
        result.workload = &workload;
        try {
            check(workload, workload.make_sparse ? workload.make_sparse() : subject);
            if (workload.name == "flat_512") {
                check_share_passing(workload.surface, std::get<Scene>(subject));
            }
        } catch (const std::runtime_error& error) {
            result.failure = error.what();
            return result;
        }
        time(workload, subject, result);
        return result;
    }

    const vorna::Module& module() const { return module_; }

private:
    void check(const Workload& workload, const Subject& subject) const {
        const auto painted_by = [&](const Surface& surface) {
            return painted_by_one_frame(*make_own_canvas(module_, surface, subject));
        };
        const Painted ours = painted_by(workload.surface);
        if (number_of(ours) == 0) {
            throw std::runtime_error("paints nothing");
        }
        if (workload.reference) {
            constexpr double edge_share = 0.01;
            const Painted reference = painted_by(*workload.reference);
            const std::optional<Circle>& clip = workload.surface.clip;
            check_places("it", ours, "the member beside it", clip ? part_inside(*clip, reference) : reference, edge_share);
        }
        for (const Peer& peer : workload.peers) {
            check_places("it", ours, peer.who, painted_by_one_frame(*peer.make(workload.surface, subject)), peer.edge_share);
        }
    }

    void check_share_passing(const Surface& surface, const Scene& scene) const {
        constexpr double least = 0.45, most = 0.55;
        const double share = share_passing(module_, surface, scene);
        if (!(share >= least && share <= most)) {
            throw std::runtime_error("a share of " + std::to_string(share) +
                                     " of the pixels passes the depth test, expected half");
        }
    }

    void time(const Workload& workload, const Subject& subject, Result& result) {
        std::vector<std::unique_ptr<Canvas>> canvases;
        std::vector<Side> sides;
        std::vector<Time*> times;
        const auto add_side = [&](const std::string& who, Time& time, std::function<void()> frame) {
            sides.push_back({who, std::move(frame)});
            times.push_back(&time);
        };
        const auto add = [&](const std::string& who, Time& time, std::unique_ptr<Canvas> canvas) {
            canvas->clear_color();
            canvas->clear_depth();
            add_side(who, time, [drawn = canvas.get(), clears = workload.clears] { draw_frame(*drawn, clears); });
            canvases.push_back(std::move(canvas));
        };
        add("krb.vrd", result.ours, make_own_canvas(module_, workload.surface, subject));
        result.peers.reserve(workload.peers.size());
        for (const Peer& peer : workload.peers) {
            add(peer.who, result.peers.emplace_back(Timed_Side{peer.who, {}}).time, peer.make(workload.surface, subject));
        }
        if (workload.reference) {
            add("reference", result.reference.emplace(), make_own_canvas(module_, *workload.reference, subject));
        }
        if (beside_) {
            add("other build", result.beside.emplace(), make_own_canvas(*beside_, workload.surface, subject));
        }
        Subject varied;
        if (settings_.vary != 0) {
            constexpr double spread = 0.3;
            varied = workload.make({settings_.vary, spread});
            result.varied_amount = amount_of(varied, workload.counts);
            add("varied", result.varied.emplace(), make_own_canvas(module_, workload.surface, varied));
        }
        const auto to = vorna::make_frame_buffer(window_size.x, window_size.y, Buffer_Format::rgb32);
        const auto from = vorna::make_frame_buffer(window_size.x, window_size.y, Buffer_Format::rgb32);
        const auto bytes = static_cast<std::size_t>(to->bytes_per_row) * window_size.y;
        std::uint8_t* const first = to->rows[window_size.y - 1];
        const std::uint8_t* const source = from->rows[window_size.y - 1];
        add_side("memset", result.memset, [=] { std::memset(first, 0x5A, bytes); });
        add_side("memcpy", result.memcpy, [=] { std::memcpy(first, source, bytes); });
        result.amount = amount_of(subject, workload.counts);
        result.bytes = bytes_touched(workload, subject);
        result.image_bytes = std::holds_alternative<Image>(subject) ? result.bytes : 0;
        result.block_bytes = static_cast<double>(bytes);
        const std::vector<Time> measured = measure(sides, settings_.rounds);
        for (std::size_t i = 0; i < times.size(); ++i) {
            *times[i] = measured[i];
        }
    }

    Settings settings_;
    vorna::Module module_;
    std::unique_ptr<vorna::Module> beside_;
};

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

// False when a workload did not paint what it should.
bool run(const Settings& settings) {
    Bench bench(settings);
    const std::regex only(settings.only);
    if (!settings.sizes.empty()) {
        measure_sizes(bench.module(), only, settings.sizes);
        return true;
    }
    const std::vector<Workload> all = workloads(settings.model);
    std::vector<Result> results;
    for (const Workload& workload : all) {
        if (std::regex_search(workload.name, only)) {
            results.push_back(bench.run(workload));
            std::printf("%s\n", summary(results.back()).c_str());
            std::fflush(stdout);
        }
    }
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
    app.add_option("MODULE", settings.module, "The renderer, krb.vrd")->required();
    app.add_option("MODEL", settings.model, "The model of the frame that is drawn whole, bunny.obj")->required();
    app.add_option("--only", settings.only, "Regular expression of the workloads, or of the plots of sizes, that are measured");
    app.add_option("--rounds", settings.rounds, "How often each side is timed")->check(CLI::Range(1, 1000));
    app.add_option("--vary", settings.vary, "Draw with other places, colours and sizes, up to 30 % off, too: their random seed");
    app.add_option("--beside", settings.beside, "Another build of the renderer to measure");
    app.add_option("--table", settings.table, "Markdown file to write");
    app.add_option("--json", settings.json, "JSON file to write");
    app.add_option("--sizes", settings.sizes, "Measure cost against size instead, into this JSON file");
    CLI11_PARSE(app, argc, argv);
    try {
        return bench::run(settings) ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
}
