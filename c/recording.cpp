// Recordings: documents, and their replay.
#include "c/call.h"
#include "c/handles.h"
#include "c/reading.h"
#include "c/rendering.h"
#include "drawing/files/output_file.h"
#include "drawing/recording/document.h"
#include "drawing/recording/recording_file.h"
#include "drawing/recording/recording_writer.h"
#include "drawing/recording_images.h"
#include "vorna/c_recording.h"

namespace vorna::c {

using namespace drawing::recording;

namespace {

constexpr const char* unnamed = "recording";

const vorna_replay_settings& default_settings() noexcept {
    static const vorna_replay_settings settings{sizeof settings, nullptr, 0, SIZE_MAX};
    return settings;
}

VORNA_SETTINGS_END(vorna_replay_settings, last);

std::unique_ptr<vorna_recording> handle_of(Recording content) {
    return std::make_unique<vorna_recording>(vorna_recording{std::move(content)});
}

} // namespace
} // namespace vorna::c

using namespace vorna::c;

vorna_status vorna_recording_read(const char* file, const vorna_reading* reading, vorna_recording** recording) {
    return make_handle(recording, "recording", [&] {
        const std::string path = &required(file, "file");
        auto limits = limits_of(reading);
        return handle_of(vorna::drawing::recording_of_file(path, limits));
    });
}

vorna_status vorna_recording_parse(const char* text, size_t size, const vorna_reading* reading, vorna_recording** recording) {
    return make_handle(recording, "recording", [&] {
        require_list(text, size, "text");
        auto limits = limits_of(reading);
        return handle_of(vorna::drawing::recording_of_text(unnamed, std::string(text ? text : "", size), limits));
    });
}

vorna_status vorna_recording_write(const vorna_recording* recording, const char* file) {
    return guarded([&] {
        const std::string path = &required(file, "file");
        const vorna_recording& written = required(recording, "recording");
        vorna::drawing::Output_File::check(path);
        vorna::drawing::write_file(path, file_of(written.content, path));
    });
}

vorna_status vorna_recording_text(const vorna_recording* recording, char** text, size_t* size) {
    return guarded([&] {
        required(text, "text") = nullptr;
        required(size, "size") = 0;
        const std::string document = json_of(required(recording, "recording").content);
        *text = copied(document.data(), document.size());
        *size = document.size();
    });
}

vorna_status vorna_recording_calls(const vorna_recording* recording, size_t* calls) {
    return guarded([&] { required(calls, "calls") = required(recording, "recording").content.calls.size(); });
}

vorna_status vorna_replay_settings_init(vorna_replay_settings* settings, size_t size) {
    return fill_defaults(settings, size, default_settings());
}

vorna_status vorna_recording_replay(const vorna_recording* recording, const vorna_replay_settings* settings, vorna_image** color,
                                    vorna_image** depth) {
    return guarded([&] {
        for (vorna_image** const result : {color, depth}) {
            if (result) {
                *result = nullptr;
            }
        }
        const vorna_recording& drawn = required(recording, "recording");
        const vorna_replay_settings given = settings_or(settings, default_settings());
        const vorna::drawing::Replay_Image image =
            vorna::drawing::image_of(unnamed, drawn.content, {0, text_of(given.module), given.first, given.last});
        if (depth && !image.depths.bytes) {
            throw vorna::drawing::Usage_Error(std::string(unnamed) + ": expected a depth buffer");
        }
        std::unique_ptr<vorna_image> made_color = color ? image_of(image.colors) : nullptr;
        std::unique_ptr<vorna_image> made_depth = depth ? image_of(image.depths) : nullptr;
        if (color) {
            *color = made_color.release();
        }
        if (depth) {
            *depth = made_depth.release();
        }
    });
}

void vorna_recording_free(vorna_recording* recording) {
    delete recording;
}
