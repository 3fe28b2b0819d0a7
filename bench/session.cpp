#include "bench/session.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "host/renderer_data.h"

namespace bench {

namespace {

constexpr const char* variable = "KRB_KERNELS";

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

void check_share_passing(const vorna::Module& module, const Surface& surface, const Scene& scene) {
    constexpr double least = 0.45, most = 0.55;
    const double share = share_passing(module, surface, scene);
    if (!(share >= least && share <= most)) {
        throw std::runtime_error("a share of " + std::to_string(share) + " of the pixels passes the depth test, expected half");
    }
}

} // namespace

Kernel_Choice::Kernel_Choice(const std::string& kernel_set) {
    setenv(variable, kernel_set.c_str(), 1);
}

Kernel_Choice::~Kernel_Choice() {
    unsetenv(variable);
}

std::vector<std::string> runnable(const vorna::Module& module, const std::vector<std::string>& kernel_sets) {
    std::vector<std::string> found;
    const VT_Reference<VT_Renderer_Data> prototype(new VT_Renderer_Data);
    for (const std::string& kernel_set : kernel_sets) {
        const Kernel_Choice choice(kernel_set);
        try {
            module.create_renderer(*prototype);
            found.push_back(kernel_set);
        } catch (const std::exception&) {
            // One of another kind of processor.
        }
    }
    return found;
}

Session::Session(const Session_Settings& settings) : settings_(settings), module_(settings.module) {
    if (!settings.beside.empty()) {
        beside_ = std::make_unique<vorna::Module>(settings.beside);
    }
}

std::vector<Result> Session::run(const Workload& workload) {
    const Subject subject = workload.make({});
    std::vector<Result> results;
    for (const std::string& kernel_set : settings_.kernel_sets) {
        const Kernel_Choice choice(kernel_set);
        Result& result = results.emplace_back();
        result.workload = &workload;
        result.kernel_set = kernel_set;
        try {
            check(workload, workload.make_sparse ? workload.make_sparse() : subject);
            if (workload.name == "flat_512") {
                check_share_passing(module_, workload.surface, std::get<Scene>(subject));
            }
        } catch (const std::runtime_error& error) {
            result.failure = error.what();
        }
    }
    time(workload, subject, results);
    return results;
}

void Session::check(const Workload& workload, const Subject& subject) const {
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
    if (settings_.with_peers) {
        for (const Peer& peer : workload.peers) {
            check_places("it", ours, peer.who, painted_by_one_frame(*peer.make(workload.surface, subject)), peer.edge_share);
        }
    }
}

void Session::time(const Workload& workload, const Subject& subject, std::vector<Result>& results) {
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
    Subject varied;
    if (settings_.vary != 0) {
        constexpr double spread = 0.3;
        varied = workload.make({settings_.vary, spread});
    }
    // What all kernel sets share is measured once.
    Result shared;
    for (Result& result : results) {
        if (!result.failure.empty()) {
            continue;
        }
        const Kernel_Choice choice(result.kernel_set);
        add("krb.vrd", result.ours, make_own_canvas(module_, workload.surface, subject));
        if (workload.reference) {
            add("reference", result.reference.emplace(), make_own_canvas(module_, *workload.reference, subject));
        }
        if (beside_) {
            add("other build", result.beside.emplace(), make_own_canvas(*beside_, workload.surface, subject));
        }
        if (settings_.vary != 0) {
            result.varied_amount = amount_of(varied, workload.counts);
            add("varied", result.varied.emplace(), make_own_canvas(module_, workload.surface, varied));
        }
    }
    if (sides.empty()) {
        return;
    }
    if (settings_.with_portable) {
        const Kernel_Choice choice("portable");
        add("portable", shared.portable.emplace(), make_own_canvas(module_, workload.surface, subject));
    }
    if (settings_.with_peers) {
        shared.peers.reserve(workload.peers.size());
        for (const Peer& peer : workload.peers) {
            add(peer.who, shared.peers.emplace_back(Timed_Side{peer.who, {}}).time, peer.make(workload.surface, subject));
        }
    }
    const auto to = vorna::make_frame_buffer(window_size.x, window_size.y, Buffer_Format::rgb32);
    const auto from = vorna::make_frame_buffer(window_size.x, window_size.y, Buffer_Format::rgb32);
    const auto bytes = static_cast<std::size_t>(to->bytes_per_row) * window_size.y;
    std::uint8_t* const first = to->rows[window_size.y - 1];
    const std::uint8_t* const source = from->rows[window_size.y - 1];
    add_side("memset", shared.memset, [=] { std::memset(first, 0x5A, bytes); });
    add_side("memcpy", shared.memcpy, [=] { std::memcpy(first, source, bytes); });
    const std::vector<Time> measured = measure(sides, settings_.rounds);
    for (std::size_t i = 0; i < times.size(); ++i) {
        *times[i] = measured[i];
    }
    for (Result& result : results) {
        result.amount = amount_of(subject, workload.counts);
        result.bytes = bytes_touched(workload, subject);
        result.image_bytes = std::holds_alternative<Image>(subject) ? result.bytes : 0;
        result.block_bytes = static_cast<double>(bytes);
        result.memset = shared.memset;
        result.memcpy = shared.memcpy;
        result.peers = shared.peers;
        result.portable = shared.portable;
    }
}

} // namespace bench
