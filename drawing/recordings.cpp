// Recordings for applications.
#include <stdexcept>

#include "drawing/files/gzip.h"
#include "drawing/files/input_file.h"
#include "drawing/files/interruption.h"
#include "drawing/files/load_limits.h"
#include "drawing/files/output_file.h"
#include "drawing/files/usage_error.h"
#include "drawing/image/image_file.h"
#include "drawing/raster_samples.h"
#include "drawing/recording/document.h"
#include "drawing/recording/recorder.h"
#include "drawing/recording/recording_file.h"
#include "drawing/recording/recording_writer.h"
#include "drawing/recording/replay.h"
#include "drawing/recording/session.h"
#include "drawing/recording/shown_part.h"
#include "drawing/recording_images.h"
#include "vorna/module.h"

namespace vorna::drawing {
namespace {

Module_Choice module_choice(const std::string& module) {
    return {module.empty() ? Module::installed_path() : module, {}};
}

// Errors of the document name it.
template <class Work> auto named(const std::string& name, const Work& work) {
    try {
        return work();
    } catch (const recording::Recording_Error& error) {
        throw Usage_Error(name + ": " + error.what());
    } catch (const recording::Not_Drawn& error) {
        throw std::runtime_error(name + ": " + error.what());
    }
}

Load_Limits limits_of(const Replay_Settings& settings) {
    return Load_Limits(settings.max_memory > 0 ? std::optional(settings.max_memory) : std::nullopt);
}

} // namespace

recording::Recording recording_of_file(const std::string& file, Load_Limits& limits) {
    return named(name_of_input(file), [&] { return recording::load(file, limits); });
}

recording::Recording recording_of_text(const std::string& name, const std::string& text, Load_Limits& limits) {
    limits.add_file(name, text.size());
    return named(name, [&] { return recording::read_document(name, text, limits); });
}

Replay_Image image_of(const std::string& name, const recording::Recording& recording, const Replay_Settings& settings) {
    return named(name, [&] {
        Session session(module_choice(settings.module));
        recording::Replay_Settings calls;
        calls.first = settings.first;
        calls.last = settings.last;
        calls.before_call = [](std::size_t) { Interruption::check(); };
        const recording::Report report = recording::replay(recording, session, calls);
        const auto samples = [&](const Raster& drawn) {
            return samples_of(recording::shown(drawn, session, recording), session.palette());
        };
        Replay_Image image;
        image.colors = samples(raster_of(session.color_buffer()));
        if (session.has_depth_buffer()) {
            image.depths = samples(raster_of(*session.read_depth()));
        }
        image.report = recording::json_of(report);
        return image;
    });
}

Replay_Image replay_file(const std::string& file, const Replay_Settings& settings) {
    Load_Limits limits = limits_of(settings);
    return image_of(name_of_input(file), recording_of_file(file, limits), settings);
}

Replay_Image replay_text(const std::string& name, const std::string& text, const Replay_Settings& settings) {
    Load_Limits limits = limits_of(settings);
    return image_of(name, recording_of_text(name, text, limits), settings);
}

struct Recorded_Canvas::Content {
    Content(const std::string& module, unsigned threads) : session(module_choice(module), threads), recorder(session) {}

    Session session;
    std::optional<recording::Recorder> recorder;
};

Recorded_Canvas::Recorded_Canvas(const Canvas_Settings& settings, const std::string& module)
    : content_(new Content(module, settings.threads)) {
    Session& session = content_->session;
    session.canvas().request(settings);
    if (VT_Option* const blocks = session.renderer().requested_table.find("Depth Blocks")) {
        blocks->set(false); // who has the canvas may write its depths
    }
    session.establish();
}

Recorded_Canvas::~Recorded_Canvas() = default;

Canvas& Recorded_Canvas::canvas() noexcept {
    return content_->session.canvas();
}

std::string Recorded_Canvas::finish() {
    if (!content_->recorder) {
        throw std::logic_error("the recording has ended");
    }
    const recording::Recording recording = content_->recorder->finish();
    content_->recorder.reset();
    return recording::json_of(recording);
}

void write_document(const std::string& file, const std::string& text) {
    Output_File output(file);
    output.write(file.ends_with(".gz") ? gzip(text) : text);
    output.commit();
}

} // namespace vorna::drawing
