// Recordings: documents, and their replay.
#include "c/call.h"
#include "c/handles.h"
#include "c/reading.h"
#include "drawing/files/output_file.h"
#include "drawing/recording/document.h"
#include "drawing/recording/recording_file.h"
#include "drawing/recording/recording_writer.h"
#include "drawing/recording/replay.h"
#include "drawing/recording/shown_part.h"
#include "vorna/c_recording.h"

namespace vorna::c {

using namespace drawing::recording;

namespace {

constexpr const char* unnamed = "recording";

// Errors in a recording name it.
template <class Read> std::unique_ptr<vorna_recording> read(const std::string& name, Read read_content) {
    try {
        auto recording = std::make_unique<vorna_recording>();
        recording->content = read_content();
        return recording;
    } catch (const Recording_Error& error) {
        throw drawing::Usage_Error(name + ": " + error.what());
    }
}

const vorna_replay_settings& default_settings() noexcept {
    static const vorna_replay_settings settings{sizeof settings, nullptr, 0, SIZE_MAX};
    return settings;
}

void replay(const Recording& recording, const vorna_replay_settings& given, std::unique_ptr<vorna_image>* color,
            std::unique_ptr<vorna_image>* depth) {
    drawing::Session session({given.module ? given.module : Module::installed_path(), {}});
    Replay_Settings settings;
    settings.first = given.first;
    settings.last = given.last;
    drawing::recording::replay(recording, session, settings);
    if (color) {
        *color =
            image_of(shown(drawing::raster_of(session.color_buffer()), session, recording), new VT_Palette(session.palette()));
    }
    if (depth) {
        if (!session.has_depth_buffer()) {
            throw Recording_Error("expected a depth buffer");
        }
        const VT_Reference<VT_Shared_Image> depths = session.read_depth();
        *depth = image_of(shown(drawing::raster_of(*depths), session, recording), new VT_Palette);
    }
}

} // namespace
} // namespace vorna::c

using namespace vorna::c;

vorna_status vorna_recording_read(const char* file, const vorna_reading* reading, vorna_recording** recording) {
    return make_handle(recording, "recording", [&] {
        const std::string path = &required(file, "file");
        auto limits = limits_of(reading);
        return read(path, [&] { return load(path, limits); });
    });
}

vorna_status vorna_recording_parse(const char* text, size_t size, const vorna_reading* reading, vorna_recording** recording) {
    return make_handle(recording, "recording", [&] {
        require_list(text, size, "text");
        auto limits = limits_of(reading);
        return read(unnamed, [&] {
            limits.add_file(unnamed, size);
            return read_document(unnamed, std::string(text ? text : "", size), limits);
        });
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
        std::unique_ptr<vorna_image> made_color, made_depth;
        try {
            replay(drawn.content, settings_or(settings, default_settings()), color ? &made_color : nullptr,
                   depth ? &made_depth : nullptr);
        } catch (const Recording_Error& error) {
            throw vorna::drawing::Usage_Error(std::string(unnamed) + ": " + error.what());
        } catch (const Not_Drawn& error) {
            throw std::runtime_error(std::string(unnamed) + ": " + error.what());
        }
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
