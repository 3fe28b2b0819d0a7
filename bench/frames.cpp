// Draws one workload of the benchmark, without peers, checks or times: for counting what a frame takes, in instructions or cache
// misses, by whatever tool the program runs under.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "bench/workloads.h"

namespace bench {

namespace {

struct Settings {
    std::string module, workload;
    Model_Files models;
    int frames = 1;
};

void draw_frames(const Settings& settings) {
    const std::vector<Workload> all = workloads(settings.models);
    if (settings.workload.empty()) {
        for (const Workload& workload : all) {
            std::printf("%s\n", workload.name.c_str());
        }
        return;
    }
    const auto found = std::find_if(all.begin(), all.end(), [&](const Workload& each) { return each.name == settings.workload; });
    if (found == all.end()) {
        throw std::runtime_error("there is no workload '" + settings.workload + "'; without a name all are listed");
    }
    const Subject subject = found->make({});
    const vorna::Module module(settings.module);
    const std::unique_ptr<Canvas> canvas = make_own_canvas(module, found->surface, subject);
    canvas->clear_color();
    canvas->clear_depth();
    for (int frame = 0; frame < settings.frames; ++frame) {
        draw_frame(*canvas, found->clears);
    }
    std::printf("{\"group\": \"%s\", \"title\": \"%s\", \"unit\": \"%s\", \"amount\": %.0f}\n", found->group.c_str(),
                found->title.c_str(), unit_of(found->counts).title, amount_of(subject, found->counts));
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    bench::Settings settings;
    CLI::App app("Draws frames of one workload of the benchmark.");
    app.add_option("MODULE", settings.module, "The renderer, krb.vrd")->required();
    app.add_option("MODEL", settings.models.bunny, "The model of the frame that is drawn whole, bunny.obj")->required();
    app.add_option("WORKLOAD", settings.workload, "The name of the workload; without it all names are listed");
    app.add_option("--dragon", settings.models.dragon, "The file of the dragon, for its workloads");
    app.add_option("--frames", settings.frames, "How many frames are drawn")->check(CLI::Range(0, 1000));
    CLI11_PARSE(app, argc, argv);
    try {
        bench::draw_frames(settings);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
}
