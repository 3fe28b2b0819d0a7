// Recordings for JavaScript, memory, and digests: all of the small module.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "drawing/files/load_limits.h"
#include "drawing/image/image_file.h"
#include "drawing/image/sha256.h"
#include "drawing/recording/document.h"
#include "drawing/recording/recording_file.h"
#include "drawing/recording/replay.h"
#include "drawing/recording/shown_part.h"
#include "vorna/module.h"
#include "web/src/answer.h"
#include "web/src/kernels.h"

namespace vorna::web {
namespace {

using drawing::Image_Samples;
using drawing::recording::Recording;

constexpr const char* messages_name = "recording";

Handles<Recording> recordings;

// Errors of the document name it.
template <class Work> void named(const Work& work) {
    try {
        work();
    } catch (const drawing::recording::Recording_Error& error) {
        throw drawing::Usage_Error(std::string(messages_name) + ": " + error.what());
    } catch (const drawing::recording::Not_Drawn& error) {
        throw std::runtime_error(std::string(messages_name) + ": " + error.what());
    }
}

Image_Samples::Kind kind_of(Buffer_Format format) {
    return format == Buffer_Format::depth16 ? Image_Samples::Kind::depths
           : format == Buffer_Format::rgb32 ? Image_Samples::Kind::colors
                                            : Image_Samples::Kind::indices;
}

Image_Samples copy_of(const drawing::Raster& raster, const VT_Palette& palette) {
    Image_Samples samples{.kind = kind_of(raster.format), .width = raster.width, .height = raster.height};
    samples.bytes.reset(new std::uint8_t[samples.size()]);
    const std::size_t row_bytes = static_cast<std::size_t>(raster.width) * samples.pixel_bytes();
    for (std::int32_t row = 0; row < raster.height; ++row) {
        const std::uint8_t* const from = raster.top + row * raster.row_bytes;
        std::uint8_t* const to = samples.bytes.get() + static_cast<std::size_t>(row) * row_bytes;
        if (samples.kind == Image_Samples::Kind::colors) {
            drawing::store_samples(from, raster.width, raster.format, to);
        } else {
            std::memcpy(to, from, row_bytes);
        }
    }
    if (samples.kind == Image_Samples::Kind::indices) {
        for (int i = 0; i < 256; ++i) {
            samples.palette.push_back(palette.color(static_cast<std::uint8_t>(i)));
        }
    }
    return samples;
}

} // namespace

VORNA_WEB_FUNCTION void* vorna_allocate(std::size_t size) {
    return std::malloc(std::max<std::size_t>(size, 1));
}

VORNA_WEB_FUNCTION void vorna_free(void* memory) {
    std::free(memory);
}

// The text of the answer: in JSON the number of calls.
VORNA_WEB_FUNCTION const Answer* vorna_open_recording(const char* bytes, std::size_t size) {
    return answers.of([&](Answers& all) {
        drawing::Load_Limits limits;
        limits.add_file(messages_name, size);
        named([&] {
            Recording recording = drawing::recording::read_document(messages_name, std::string(text_at(bytes, size)), limits);
            all.text = json{{"calls", recording.calls.size()}}.dump();
            all.answer.handle = recordings.add(std::move(recording));
        });
    });
}

// Options: first and last, the calls that are made, and kernels. The text of the answer: in JSON what happened besides drawing.
VORNA_WEB_FUNCTION const Answer* vorna_replay(std::int32_t handle, const char* request, std::size_t size) {
    return answers.of([&](Answers& all) {
        Options options(json::parse(text_at(request, size)));
        drawing::recording::Replay_Settings settings;
        options.number("first", settings.first);
        options.number("last", settings.last);
        choose_kernels(options);
        options.reject_unknown();
        const Recording& recording = recordings[handle];
        named([&] {
            drawing::Session session({Module::installed_path(), {}});
            all.text = json_of(drawing::recording::replay(recording, session, settings));
            const auto shown = [&](const drawing::Raster& drawn) {
                return copy_of(drawing::recording::shown(drawn, session, recording), session.palette());
            };
            Image_Samples depths;
            if (session.has_depth_buffer()) {
                depths = shown(drawing::raster_of(*session.read_depth()));
            }
            all.set_planes(shown(drawing::raster_of(session.color_buffer())), std::move(depths));
        });
    });
}

VORNA_WEB_FUNCTION const Answer* vorna_close_recording(std::int32_t handle) {
    return answers.of([&](Answers&) { recordings.close(handle); });
}

// The text of the answer: the SHA-256 of the bytes.
VORNA_WEB_FUNCTION const Answer* vorna_hash(const std::uint8_t* bytes, std::size_t size) {
    return answers.of([&](Answers& all) {
        drawing::Sha256 digest;
        digest.add(bytes, size);
        all.text = digest.finish();
    });
}

} // namespace vorna::web
