// Recordings for JavaScript, memory, and digests: all of the small module.
#include <algorithm>
#include <cstdlib>

#include "drawing/files/load_limits.h"
#include "drawing/image/sha256.h"
#include "drawing/recording_images.h"
#include "web/src/answer.h"
#include "web/src/kernels.h"
#include "web/src/options.h"

namespace vorna::web {
namespace {

constexpr const char* messages_name = "recording";

Handles<drawing::recording::Recording> recordings;

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
        auto recording = drawing::recording_of_text(messages_name, std::string(text_at(bytes, size)), limits);
        all.text = json{{"calls", recording.calls.size()}}.dump();
        all.answer.handle = recordings.add(std::move(recording));
    });
}

// Options: first and last, the calls that are made, and kernels. The text of the answer: in JSON what happened besides drawing.
VORNA_WEB_FUNCTION const Answer* vorna_replay(std::int32_t handle, const char* request, std::size_t size) {
    return answers.of([&](Answers& all) {
        Options options(json::parse(text_at(request, size)));
        drawing::Replay_Settings settings;
        options.number("first", settings.first);
        options.number("last", settings.last);
        choose_kernels(options);
        options.reject_unknown();
        drawing::Replay_Image image = drawing::image_of(messages_name, recordings[handle], settings);
        all.text = std::move(image.report);
        all.set_planes(std::move(image.colors), std::move(image.depths));
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
