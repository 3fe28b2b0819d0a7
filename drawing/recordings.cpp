// Recordings for applications.
#include "drawing/recordings.h"

#include <cstring>
#include <stdexcept>

#include "drawing/files/input_file.h"
#include "drawing/files/load_limits.h"
#include "drawing/files/usage_error.h"
#include "drawing/image/image_file.h"
#include "drawing/recording/document.h"
#include "drawing/recording/recorder.h"
#include "drawing/recording/recording_file.h"
#include "drawing/recording/recording_writer.h"
#include "drawing/recording/replay.h"
#include "drawing/recording/session.h"
#include "drawing/recording/shown_part.h"
#include "vorna/module.h"

namespace vorna::drawing {
namespace {

Module_Choice module_choice(const std::string& module) {
    return {module.empty() ? Module::installed_path() : module, {}};
}

Image_Samples samples_of(const Raster& whole, const Session& session, const recording::Recording& recording) {
    const Raster raster = recording::shown(whole, session, recording);
    using Kind = Image_Samples::Kind;
    const Kind kind = raster.format == Buffer_Format::index8    ? Kind::indices
                      : raster.format == Buffer_Format::depth16 ? Kind::depths
                                                                : Kind::colors;
    Image_Samples image = make_samples(kind, raster.width, raster.height);
    const std::size_t row_bytes = static_cast<std::size_t>(image.width) * image.pixel_bytes();
    for (std::int32_t row = 0; row < raster.height; ++row) {
        const std::uint8_t* from = raster.top + row * raster.row_bytes;
        std::uint8_t* to = image.bytes.get() + static_cast<std::size_t>(row) * row_bytes;
        if (kind == Kind::colors) {
            store_samples(from, raster.width, raster.format, to);
        } else {
            std::memcpy(to, from, row_bytes);
        }
    }
    if (kind == Kind::indices) {
        for (std::size_t i = 0; i < 256; ++i) {
            image.palette.push_back(session.palette().color(static_cast<std::uint8_t>(i)));
        }
    }
    return image;
}

// Errors of the document name it.
template <class Read> Replay_Image replayed(const std::string& name, const Replay_Settings& settings, const Read& read) {
    try {
        const recording::Recording recording = read();
        Session session(module_choice(settings.module));
        const recording::Report report = recording::replay(recording, session);
        Replay_Image image;
        image.colors = samples_of(raster_of(session.color_buffer()), session, recording);
        if (session.has_depth_buffer()) {
            image.depths = samples_of(raster_of(*session.read_depth()), session, recording);
        }
        image.report = recording::json_of(report);
        return image;
    } catch (const recording::Recording_Error& error) {
        throw Usage_Error(name + ": " + error.what());
    } catch (const recording::Not_Drawn& error) {
        throw std::runtime_error(name + ": " + error.what());
    }
}

} // namespace

Replay_Image replay_file(const std::string& file, const Replay_Settings& settings) {
    Load_Limits limits(settings.max_memory > 0 ? std::optional(settings.max_memory) : std::nullopt);
    return replayed(name_of_input(file), settings, [&] { return recording::load(file, limits); });
}

Replay_Image replay_text(const std::string& name, const std::string& text, const Replay_Settings& settings) {
    Load_Limits limits(settings.max_memory > 0 ? std::optional(settings.max_memory) : std::nullopt);
    limits.add_file(name, text.size());
    return replayed(name, settings, [&] { return recording::read_document(name, text, limits); });
}

struct Recorded_Canvas::Content {
    explicit Content(const std::string& module) : session(module_choice(module)), recorder(session) {}

    Session session;
    std::optional<recording::Recorder> recorder;
};

Recorded_Canvas::Recorded_Canvas(const Canvas_Settings& settings, const std::string& module) : content_(new Content(module)) {
    Session& session = content_->session;
    session.canvas().request(settings);
    session.canvas().set_option("Depth Blocks", false); // who has the canvas may write its depths
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

} // namespace vorna::drawing
