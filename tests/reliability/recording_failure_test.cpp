// Recordings where memory ends and no more comes: what reads, writes or records then throws std::bad_alloc, although much is
// destroyed on the way.
#include <cstdint>
#include <fstream>
#include <iterator>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "drawing/recording/recorder.h"
#include "drawing/recording/recording_reader.h"
#include "drawing/recording/recording_writer.h"
#include "drawing/recording/replay.h"
#include "drawing/recording/session.h"
#include "tests/reliability/counted_heap.h"

namespace {

using namespace vorna::drawing;
using namespace vorna::drawing::recording;

// Renditions, textures and clip regions that calls share.
std::string document() {
    std::ifstream stream(RECORDINGS "/gallery.json", std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// Calls work() with all allocations failing from the n-th on, for n = 1, 2, 3, 5, …, until it succeeds.
template <class Work> void expect_failures(const Work& work, int least) {
    int failures = 0;
    bool has_failed = true;
    for (std::int64_t before = 0; has_failed; before += 1 + before / 8) {
        has_failed = false;
        try {
            const Failing_Allocations failing(before, INT64_MAX);
            work();
        } catch (const std::bad_alloc&) {
            has_failed = true;
            ++failures;
        }
    }
    EXPECT_GT(failures, least);
}

TEST(Recording_Failures, of_reading_and_writing) {
    const Recording recording = read_recording(document());
    const std::string text = json_of(recording), cbor = cbor_of(recording);
    expect_failures([&] { static_cast<void>(json_of(recording)); }, 10);
    expect_failures([&] { static_cast<void>(cbor_of(recording)); }, 10);
    expect_failures([&] { static_cast<void>(read_recording(text)); }, 30);
    expect_failures([&] { static_cast<void>(read_recording(cbor)); }, 30);
    EXPECT_EQ(json_of(read_recording(text)), text);
    EXPECT_EQ(json_of(read_recording(cbor)), text);
}

TEST(Recording_Failures, of_recording_what_is_drawn) {
    const Recording drawn = read_recording(document());
    const auto record = [&] {
        Session session({KRB_MODULE, ""});
        Recorder recorder(session);
        replay(drawn, session);
        return recorder.finish();
    };
    const std::string text = json_of(record());
    expect_failures([&] { static_cast<void>(record()); }, 30);
    EXPECT_EQ(json_of(record()), text);
}

} // namespace
