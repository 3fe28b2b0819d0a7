// Recordings and maps where memory ends and no more comes: what reads, writes or records then throws std::bad_alloc, although
// much is destroyed on the way.
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "drawing/comparison/reports.h"
#include "drawing/files/json_document.h"
#include "drawing/files/json_text.h"
#include "drawing/job/formats.h"
#include "drawing/map/map_facts.h"
#include "drawing/map/map_reader.h"
#include "drawing/map/style_file.h"
#include "drawing/recording/history_report.h"
#include "drawing/recording/recorder.h"
#include "drawing/recording/recording_comparison.h"
#include "drawing/recording/recording_reader.h"
#include "drawing/recording/recording_writer.h"
#include "drawing/recording/replay.h"
#include "drawing/recording/session.h"
#include "drawing/recording/summary.h"
#include "drawing/recording/timing.h"
#include "tests/reliability/counted_heap.h"

namespace {

using namespace vorna::drawing;
using namespace vorna::drawing::recording;

// Renditions, textures and clip regions that calls share.
std::string document(const std::string& file = RECORDINGS "/gallery.json") {
    std::ifstream stream(file, std::ios::binary);
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
        } catch (const std::runtime_error& error) {
            has_failed = true;
            EXPECT_NE(std::string(error.what()).find("not enough memory"), std::string::npos) << error.what();
        }
        failures += has_failed;
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

TEST(Recording_Failures, of_reports) {
    const Recording recording = read_recording(document());
    Report report;
    std::vector<Call_Cost> costs;
    for (std::size_t call = 0; call < recording.calls.size(); ++call) {
        report.standard.push_back({call, "VD_Standard_Draw_2D_Polygon"});
        report.presented.push_back({});
        costs.push_back({call, 3, 4, 5, 1.5});
    }
    report.reads.push_back({});
    expect_failures([&] { static_cast<void>(json_of(report)); }, 10);
    expect_failures([&] { static_cast<void>(json_of(recording, costs)); }, 10);
}

// The text is what the library makes of the document that the text says.
void expect_document(const std::string& text, int indentation) {
    const std::string end = indentation < 0 ? "" : "\n";
    EXPECT_EQ(nlohmann::ordered_json::parse(text).dump(indentation, ' ', true) + end, text);
}

TEST(Document_Failures, of_comparisons) {
    comparison::Report report;
    report.first = "a\x80\xc3\xa9\"";
    report.accepted.fuzz = Fuzz{2, 10};
    comparison::Pair_Result pair{"b.png", {}, comparison::Verdict::different, "text", 3, 4, Image_Difference{}, {}};
    pair.difference->count = 1;
    report.pairs = {pair, {"c.png", {}, comparison::Verdict::missing, "only in the first", 0, 0, {}, {}}};
    expect_failures([&] { static_cast<void>(json_of(report)); }, 20);
    expect_document(json_of(report), 1);

    const Recording a = read_recording(document()), b = read_recording(document(RECORDINGS "/crystals.json"));
    const Recording_Difference difference{{1, 2}, compare_documents(a, b), Pixel_Difference{}};
    expect_failures([&] { static_cast<void>(json_of(difference, "a", "b")); }, 20);
    expect_document(json_of(difference, "a", "b"), 1);
}

TEST(Document_Failures, of_histories) {
    const Recording recording = read_recording(document());
    Pixel_Value color, index;
    color.kind = Pixel_Value::Kind::color;
    index.kind = Pixel_Value::Kind::index;
    index.has_depth = true;
    Pixel_Event drawn{0, Outcome::drawn, true, {}, 0, color, index, 1}, refused{1, Outcome::refused, false, {}, 5, {}, {}};
    refused.rules.add(Rule::depth);
    const std::vector<Pixel_History> histories{{{1, 2}, {3, 4}, color, index, {drawn, refused}, 2}, {}};
    const std::vector<Area_Event> events{{0, 1, 2, 3, 4, {1, 0, 2}}, {}};
    std::string text, of_area;
    text.reserve(1 << 16);
    of_area.reserve(1 << 16);
    expect_failures(
        [&] {
            text.clear();
            write_json(recording, histories, [&](std::string_view piece) { text += piece; });
        },
        10);
    expect_failures(
        [&] {
            of_area.clear();
            write_json(recording, Image_Area{{1, 2}, {3, 4}}, events, [&](std::string_view piece) { of_area += piece; });
        },
        10);
    for (std::string* const found : {&text, &of_area}) {
        found->pop_back(); // the end of the line
        expect_document(*found, -1);
    }
}

TEST(Document_Failures, of_what_files_consist_of) {
    const Recording recording = read_recording(document());
    const std::string content = document(MAPS "/all-kinds.json");
    const Input input{"map.json", "json", find_format("json"), content};
    Load_Limits limits;
    const std::vector<map::Layer_Summary> layers = map::layer_summaries_of(input, limits);
    const auto text = [&] {
        Json_Text json(true);
        json.start_object();
        add_summary(json, recording);
        json.name("layers");
        map::add_layers(json, layers);
        json.end_object();
        return json.take() + '\n';
    };
    expect_failures([&] { static_cast<void>(text()); }, 20);
    expect_document(text(), 1);
}

TEST(Map_Failures, of_reading) {
    const std::string text = document(MAPS "/all-kinds.json"), topology = document(MAPS "/topology.json");
    const std::string style = R"({"layers": [{"filter": "a = 1", "fill-by": "a", "breaks": [1, 2]}, {"fill": "red"}]})";
    for (const std::string& content : {text, topology, "[" + text + "]", std::string(200, '[') + std::string(200, ']')}) {
        expect_failures(
            [&] {
                Released_Json<nlohmann::ordered_json> read;
                read_json(content, read);
            },
            content == text ? 20 : 5);
    }
    for (const std::string& content : {text, topology}) {
        const Input input{"map.json", "json", find_format("json"), content};
        const auto read = [&] {
            Load_Limits limits;
            return map::load_map(input, {}, limits).shapes.size();
        };
        const std::size_t count = read();
        expect_failures([&] { static_cast<void>(read()); }, 20);
        EXPECT_EQ(read(), count);
    }
    const std::string file = testing::TempDir() + "failing-style.json";
    std::ofstream(file) << style;
    expect_failures(
        [&] {
            Load_Limits limits;
            static_cast<void>(map::read_style(file, {}, limits));
        },
        20);
    std::remove(file.c_str());
}

} // namespace
