// What replays record: the same picture again, in another form.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/files/gzip.h"
#include "drawing/files/input_file.h"
#include "drawing/files/zstd.h"
#include "drawing/recording/call_kinds.h"
#include "drawing/recording/document.h"
#include "drawing/recording/recording_reader.h"
#include "drawing/recording/recording_writer.h"
#include "tests/support/command_line.h"

namespace replay_tests {

namespace {

using testing::HasSubstr;

#if defined(VORNA_WITH_ZSTD)
constexpr bool has_zstd = true;
#else
constexpr bool has_zstd = false;
#endif

class Record : public testing::Test {
protected:
    struct Drawn {
        std::string color, depth, report;
        friend bool operator==(const Drawn&, const Drawn&) = default;
    };

    Drawn replay(const std::string& picture, std::vector<std::string> options = {}, bool has_depth = true) {
        const std::string color = folder.file("color"), depth = folder.file("depth"), report = folder.file("report");
        options.insert(options.begin(), {"replay", picture, "--color", color, "--report", report});
        if (has_depth) {
            options.insert(options.end(), {"--depth", depth});
        }
        const Outcome outcome = run_vorna(options);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return {read_file(color), has_depth ? read_file(depth) : "", read_file(report)};
    }

    Temporary_Folder folder;
};

TEST_F(Record, every_example_replays_to_the_same_bytes) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(VORNA_PICTURES)) {
        const std::string picture = entry.path().string();
        if (entry.path().extension() != ".json") {
            continue;
        }
        const bool has_depth = read_file(picture).find("\"buffer_depth\": 0") == std::string::npos;
        const std::string name = folder.file(++count % 2 ? "record.json" : "record.json.gz");
        const Drawn drawn = replay(picture, {"--record", name}, has_depth);
        EXPECT_TRUE(drawn == replay(name, {}, has_depth)) << picture;
        EXPECT_EQ(vorna::drawing::is_gzip(read_file(name)), count % 2 == 0);
    }
    EXPECT_GT(count, 10);
}

// What no example has: values that the host knows and few applications use, and everything that can be shared.
TEST_F(Record, keeps_what_is_rarely_used) {
    const std::string picture = folder.file("picture.json", R"({"picture": 1, "window": {"width": 40, "height": 30},
        "options": {"Use Mask": true}, "output": [1, 38, 2, 28],
        "texels": ["ff0000ff00ff00800000ffff808080ff0a141eff28323cff"], "complex_clips": [[[0, 0, 39.5, 0, 20.25, 29]]],
        "renditions": [
            {"complex_clip": 0, "face": {"color": [9, 8, 7],
             "texture": {"width": 3, "height": 2, "texels": 0, "matrix": [0, 1, 0, 0.125, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1]}}},
            {"face": {"texture": {"width": 3, "height": 2, "texels": 0}}},
            {"face": {"texture": {"color": [128, 255, 64]}}},
            {"drawing_mode": 20, "face": {"mode": 0}, "line": {"color": [200, 0, 100], "mode": 0}, "marker": {"symbol": 8, "size": 9}}],
        "calls": [
        {"call": "clear_depth_rectangle", "rectangle": [0, 39, 0, 29]},
        {"call": "set_zbuffer_test", "value": 1},
        {"call": "draw_dc_textured_polytriangle", "rendition": 0, "points": [0.5, -0.0, 500.25, 39, 0.1, 40, 3, 29, 7],
         "colors": "ffffffffffffffffff0000ff", "parameters": [0, 0.1, 1.7, 1e-9, 0.3333333, 1]},
        {"call": "draw_dci_textured_polytriangle", "rendition": 1, "points": [5, 5, 5, 20, 5, 5, 5, 20, 5],
         "colors": [[255, 255, 255], [255, 255, 255], [255, 255, 255]], "parameters": [[0, 0], [1, 0], [0, 1]]},
        {"call": "draw_dci_textured_polytriangle", "rendition": 2, "points": [25, 5, 5, 35, 5, 5, 35, 20, 5],
         "colors": "ffffffffffffffffffffffff", "parameters": [0, 0, 0, 0, 0, 0]},
        {"call": "draw_2di_colorized_polyline", "rendition": 3, "points": [1, 1, 1, 38, 28, 1], "colors": null},
        {"call": "draw_2di_colorized_polymarker", "rendition": 3, "points": [20, 20, 0, 10, 10, 0], "colors": null},
        {"call": "draw_3d_polyline", "points": [-1e12, 0.1, 3, 1e12, 28, 3]},
        {"call": "write_depth_rectangle", "top_left": [1, 3, 0], "bottom_right": [2, 2, 0], "depths": ["0001ffff", [7, 8]]},
        {"call": "set_zbuffer_write", "value": false},
        {"call": "present", "rectangle": [1, 20, 2, 20]},
        {"call": "establish", "color_system": 0, "palette": {"colors": [[0, 0, 0], [250, 250, 250]]}, "options": {"Use Mask": false}},
        {"call": "draw_dci_polytriangle", "points": [1, 2, 3, 38, 2, 3, 1, 28, 3], "rendition": {"face": {"index": 1}}},
        {"call": "draw_dci_index8_image", "start": [2, 9], "end": [3, 8], "pixels": ["0100", [0, 1]]}]})");
    const Drawn drawn = replay(picture, {"--record", folder.file("first.json")});
    EXPECT_TRUE(drawn == replay(folder.file("first.json"), {"--record", folder.file("second.json")}));
    const std::string recorded = read_file(folder.file("first.json"));
    EXPECT_EQ(recorded, read_file(folder.file("second.json")));
    EXPECT_THAT(recorded, HasSubstr("\"texels\": [\"ff0000ff00ff00800000ffff808080ff0a141eff28323cff\"],")) << "shared";
    EXPECT_THAT(recorded, HasSubstr("\"options\": {\"Use Mask\": false}"));

    // Other forms hold the same.
    std::vector<std::string> forms{"p.cbor", "p.cbor.gz", "p.gz"};
    if (has_zstd) {
        forms.insert(forms.end(), {"p.cbor.zst", "p.json.zst"});
    } else {
        EXPECT_THAT(run_vorna({"replay", picture, "--record", folder.file("p.cbor.zst")}).errors, HasSubstr("does not compress"));
    }
    for (const std::string& form : forms) {
        EXPECT_TRUE(drawn == replay(folder.file("first.json"), {"--record", folder.file(form)})) << form;
        EXPECT_TRUE(drawn == replay(folder.file(form), {"--record", folder.file("back.json")})) << form;
        EXPECT_EQ(recorded, read_file(folder.file("back.json"))) << form;
    }
}

TEST_F(Record, floats_come_back_to_the_last_bit) {
    using namespace vorna::drawing::recording;
    Points<VT_Point> floats;
    Points<VT_Point_D> doubles;
    std::uint32_t bits = 1;
    for (int i = 0; i < 3000; ++i) {
        bits = bits * 1664525U + 1013904223U;
        const auto value = std::bit_cast<float>(bits);
        if (std::isfinite(value)) {
            floats.points.push_back({value, -value, std::nextafter(value, 0.0F)});
            doubles.points.push_back({value * 1.1, -0.0, 1.0 / value});
        }
    }
    Recording recording;
    recording.calls.push_back({find_call_kind("draw_2d_polyline"), floats, nullptr});
    recording.calls.push_back({find_call_kind("draw_3d_polyline"), doubles, nullptr});
    const auto same = [](const auto& a, const auto& b) {
        return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0;
    };
    for (const std::string& document : {json_of(recording), cbor_of(recording)}) {
        const Recording read = read_recording(document);
        EXPECT_TRUE(same(std::get<Points<VT_Point>>(read.calls[0].arguments).points, floats.points));
        EXPECT_TRUE(same(std::get<Points<VT_Point_D>>(read.calls[1].arguments).points, doubles.points));
    }

    doubles.points[7].y = std::numeric_limits<double>::infinity();
    recording.calls[1].arguments = doubles;
    EXPECT_THROW(json_of(recording), std::runtime_error);
    EXPECT_THROW(cbor_of(recording), std::runtime_error);
}

// Device points are stored as differences that wrap. Damaged documents give one error and no crash, whatever byte is wrong.
TEST_F(Record, cbor_is_exact_and_refuses_damage) {
    using namespace vorna::drawing::recording;
    Recording recording;
    const Points<VT_DCI_Point> points{{{INT32_MIN, INT32_MAX, 0}, {INT32_MAX, INT32_MIN, -1}, {5, -5, INT32_MIN}}};
    recording.calls.push_back({find_call_kind("draw_dci_polyline"), points, nullptr});
    const std::string document = cbor_of(recording);
    const Recording read = read_recording(document);
    const auto& same = std::get<Points<VT_DCI_Point>>(read.calls[0].arguments).points;
    ASSERT_EQ(same.size(), points.points.size());
    EXPECT_EQ(std::memcmp(same.data(), points.points.data(), same.size() * sizeof same[0]), 0);
    for (std::size_t place = 0; place < document.size(); ++place) {
        std::string damaged = document;
        for (int value = 0; value < 256; ++value) {
            damaged[place] = static_cast<char>(value);
            try {
                read_recording(damaged);
            } catch (const Recording_Error&) {
            }
        }
        EXPECT_THROW(read_recording(document.substr(0, place)), Recording_Error) << place;
    }
    EXPECT_THROW(read_recording(std::string(1000000, '\xA1')), Recording_Error) << "nested";
    EXPECT_THROW(read_recording("\xA3gpicture\1ecalls\x80goptions\xA1\x61\xFF\xF5"), Recording_Error)
        << "a name that is not UTF-8";
    EXPECT_NO_THROW(read_recording("\xA3gpicture\1ecalls\x80goptions\xA1\x61\x41\xF5"));
    EXPECT_THROW(read_recording('\xA1' + std::string(1000000, '\x7F')), Recording_Error) << "strings in strings";
    EXPECT_THROW(read_recording("\xA1\x61"
                                "a" +
                                std::string(1000000, '\x5F')),
                 Recording_Error)
        << "bytes in bytes";

    // An empty rendition takes one byte here and hundreds where it is read.
    std::string small = "\xA1\x6A"
                        "renditions"
                        "\x9A";
    small += std::string("\x00\x04\x00\x00", 4) + std::string(1 << 18, '\xA0');
    std::size_t taken = 0;
    EXPECT_THROW(read_recording(small, [&](std::size_t bytes) { taken += bytes; }), Recording_Error);
    EXPECT_GT(taken, (std::size_t{1} << 18) * sizeof(Rendition));
}

// A few bytes may ask for a window of 128 MiB.
TEST(Unpacked_Input, counts_the_window_of_zstd) {
    using namespace vorna::drawing;
    if (!has_zstd) {
        GTEST_SKIP() << "this build is without zstd";
    }
    const std::string empty_block("\x01\0\0", 3), magic = "\x28\xB5\x2F\xFD";
    const std::string large_window = magic + std::string("\0\x88", 2) + empty_block;
    const std::string known_content = magic + "\x80\x88" + std::string(4, '\0') + empty_block;
    constexpr std::size_t most = std::size_t{1} << 20;
    Load_Limits few(std::uint64_t{64} << 20), many(std::uint64_t{256} << 20);
    EXPECT_THROW(unpacked_input("a.zst", large_window, few, most), Load_Error);
    EXPECT_EQ(unpacked_input("a.zst", large_window, many, most), "");
    EXPECT_EQ(unpacked_input("a.zst", known_content, few, most), "");
}

TEST_F(Record, goes_through_standard_streams) {
    const std::string picture = std::string(VORNA_PICTURES) + "/glass.json";
    const Outcome recorded = run_vorna({"replay", picture, "--record", "-"});
    ASSERT_EQ(recorded.status, 0) << recorded.errors;
    const Outcome replayed = run_vorna({"replay", "-", "--color", folder.file("c")}, vorna::drawing::gzip(recorded.output));
    EXPECT_EQ(replayed.status, 0) << replayed.errors;
    EXPECT_EQ(read_file(folder.file("c")), replay(picture).color);
}

TEST_F(Record, damaged_files_are_refused_in_one_line) {
    const std::string content = read_file(std::string(VORNA_PICTURES) + "/glass.json");
    const auto message_of = [&](const std::string& bytes) {
        const Outcome outcome = run_vorna({"replay", "-", "--color", folder.file("c")}, bytes);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1);
        EXPECT_EQ(outcome.errors.rfind("vorna: standard input: ", 0), 0U) << outcome.errors;
        return outcome.errors;
    };
    for (const auto& compress : {vorna::drawing::gzip, vorna::drawing::zstd}) {
        if (!has_zstd && compress == vorna::drawing::zstd) {
            continue;
        }
        const std::string whole = compress(content);
        EXPECT_THAT(message_of(whole.substr(0, whole.size() - 1)), HasSubstr("compressed data that ends too early"));
        EXPECT_THAT(message_of(whole.substr(0, 5)), HasSubstr("compressed data that ends too early"));
        for (std::size_t place = 16; place < whole.size(); place += 150) {
            std::string garbled = whole;
            garbled[place] = static_cast<char>(garbled[place] ^ 0x10);
            EXPECT_THAT(message_of(garbled), HasSubstr("compressed data is damaged")) << place;
        }
        EXPECT_THAT(message_of(whole + "x"), HasSubstr("more behind the end"));
        EXPECT_THAT(message_of(compress(std::string(300 << 20, ' '))), HasSubstr("expected what can be read in"));
    }
    // A frame that asks for a window of 2^41 bytes.
    EXPECT_THAT(message_of(std::string("\x28\xB5\x2F\xFD\0\xF8\1\0\0", 9)),
                HasSubstr(has_zstd ? "compressed data is damaged" : "this build does not read"));
    EXPECT_THAT(folder.names(), testing::IsEmpty());
}

} // namespace

} // namespace replay_tests
