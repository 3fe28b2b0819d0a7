// Which call of two recordings differs first, and after which one their pixels do.
#include <functional>
#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/recording/document_comparison.h"
#include "drawing/recording/recording_file.h"
#include "tests/support/command_line.h"

namespace replay_tests {

namespace {

using namespace vorna::drawing::recording;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

const char* const base_text = R"({"picture": 1, "window": {"width": 16, "height": 8, "origin": [4, 0]},
    "options": {"Use Mask": true}, "calls": [
    {"call": "clear_depth_rectangle", "rectangle": [4, 19, 0, 7]},
    {"call": "draw_window", "rectangle": [4, 19, 0, 7], "color": [10, 20, 30]},
    {"call": "draw_dci_polytriangle", "points": [[6, 0, 9], [14, 0, 9], [6, 7, 9], [14, 7, 9]],
     "rendition": {"face": {"color": [200, 0, 0]}, "line": {"weight": 2}}},
    {"call": "draw_dci_rgb32_image", "start": [8, 4], "end": [9, 3], "pixels": ["0102030405060708", "090a0b0c0d0e0f10"]},
    {"call": "draw_dci_dot", "point": [12, 2, 5], "color": [1, 1, 1]},
    {"call": "draw_dci_dot", "point": [13, 2, 6], "color": [1, 1, 1]}]})";

Recording read(const std::string& text) {
    vorna::drawing::Load_Limits limits;
    limits.add_file("a", text.size());
    return read_document("a", text, limits);
}

// The path and both values of what changes when the document is changed so.
std::vector<std::string> changed_by(const std::function<void(json&)>& change) {
    json document = json::parse(base_text);
    change(document);
    const Document_Difference found = compare_documents(read(base_text), read(document.dump()));
    std::vector<std::string> result;
    for (const Value_Difference& value : found.setup) {
        result.insert(result.end(), {value.path, value.first, value.second});
    }
    if (found.call) {
        const auto& [call, value] = *found.call;
        result.insert(result.end(), {std::to_string(call) + ' ' + value.path, value.first, value.second});
    }
    return result;
}

TEST(Document_Comparison, names_what_differs) {
    const auto call = [](json& document, std::size_t number) -> json& { return document["calls"][number]; };
    EXPECT_THAT(changed_by([](json&) {}), ElementsAre());
    EXPECT_THAT(changed_by([](json& d) { d["window"]["width"] = 17; }), ElementsAre("window.width", "16", "17"));
    EXPECT_THAT(changed_by([](json& d) { d["alpha_blending"] = true; }), ElementsAre("alpha_blending", "none", "true"));
    EXPECT_THAT(changed_by([](json& d) {
                    d["options"] = {{"Other", 3}};
                }),
                ElementsAre("options.Other", "none", "3", "options.Use Mask", "true", "none"));
    EXPECT_THAT(changed_by([&](json& d) { call(d, 2)["points"][3][1] = 6; }),
                ElementsAre("2 points[3]", "[14, 7, 9]", "[14, 6, 9]"));
    EXPECT_THAT(changed_by([&](json& d) {
                    call(d, 2)["points"].push_back({0, 0});
                }),
                ElementsAre("2 points", "a list of 4", "a list of 5"));
    EXPECT_THAT(changed_by([&](json& d) {
                    call(d, 2)["rendition"]["face"]["color"] = {200, 0, 0, 4};
                }),
                ElementsAre("2 rendition.face.color", "[200, 0, 0]", "[200, 0, 0, 4]"));
    EXPECT_THAT(changed_by([&](json& d) { call(d, 2).erase("rendition"); }),
                ElementsAre("2 rendition.face.color", "[200, 0, 0]", "none"));
    EXPECT_THAT(changed_by([&](json& d) { call(d, 3)["pixels"][1] = "090a0b0c0d0e0f11"; }),
                ElementsAre("3 pixels[1][1]", "[13, 14, 15, 16]", "[13, 14, 15, 17]"));
    EXPECT_THAT(changed_by([&](json& d) {
                    call(d, 4)["call"] = "draw_window";
                    call(d, 4).erase("point");
                    call(d, 4)["rectangle"] = {4, 4, 0, 0};
                }),
                ElementsAre("4 call", "draw_dci_dot", "draw_window"));
    EXPECT_THAT(changed_by([&](json& d) { d["calls"].erase(5); }), ElementsAre("5 call", "draw_dci_dot", "none"));
    // Forms that mean the same.
    EXPECT_THAT(changed_by([&](json& d) {
                    call(d, 2)["points"] = {6, 0, 9, 14, 0, 9, 6, 7, 9, 14, 7, 9};
                    d["renditions"] = json::array({call(d, 2)["rendition"]});
                    call(d, 2)["rendition"] = 0;
                }),
                ElementsAre());
}

class Recording_Comparison : public testing::Test {
protected:
    Outcome compared(const std::function<void(json&)>& change, std::vector<std::string> options = {}) {
        json document = json::parse(base_text);
        change(document);
        options.insert(options.begin(), {"compare", first, folder.file("b.json", document.dump())});
        return run_vorna(options);
    }

    Temporary_Folder folder;
    std::string first = folder.file("a.json", base_text);
};

TEST_F(Recording_Comparison, tells_the_first_call_after_which_pixels_differ) {
    const auto told = [&](const std::function<void(json&)>& change) {
        const Outcome outcome = compared(change);
        EXPECT_EQ(outcome.status, 1) << outcome.errors;
        return outcome.output;
    };
    EXPECT_EQ(compared([](json&) {}).output, "same: 6 calls\n");
    EXPECT_EQ(compared([](json&) {}).status, 0);
    EXPECT_EQ(told([](json& d) { d["calls"][2]["rendition"]["line"]["weight"] = 3; }),
              "first call that differs, calls[2].rendition.line.weight: 2 and 3\npixels: the same after every call\n");
    EXPECT_EQ(told([](json& d) {
                  d["calls"][4]["point"] = {12, 3, 5};
              }),
              "first call that differs, calls[4].point: [12, 2, 5] and [12, 3, 5]\n"
              "pixels: after call 4 the colours of 2 pixels differ, first at [12, 3]: (200,0,0,255) and (1,1,1,255)\n");
    EXPECT_THAT(told([](json& d) {
                    d["calls"][5]["point"] = {13, 2, 5};
                }),
                HasSubstr("after call 5 the depths of 1 pixel differ, first at [13, 2]: 6 and 5\n"));
    // What is drawn over later differs all the same, and what shows later is told for the later call.
    EXPECT_THAT(told([](json& d) {
                    d["calls"][1]["color"] = {10, 20, 31};
                }),
                HasSubstr("after call 1 the colours of 128 pixels"));
    EXPECT_THAT(told([](json& d) {
                    d["calls"][1]["rectangle"] = {4, 5, 0, 7};
                    d["calls"].insert(d["calls"].begin() + 2, d["calls"][1]);
                    d["calls"][2]["rectangle"] = {6, 19, 0, 7};
                }),
                HasSubstr("after call 1 the colours of 112 pixels"));
    EXPECT_THAT(told([](json& d) { d["window"]["height"] = 9; }),
                HasSubstr("before the first call the windows differ: 16 x 8 at [4, 0], 32-bit colours and depths and 16 x 9"));
    EXPECT_THAT(told([](json& d) { d["zbuffer_write"] = false; }), HasSubstr("after call 2 the depths of"));
    EXPECT_THAT(told([](json& d) { d["calls"].erase(5); }), HasSubstr("after call 5 the colours of 1 pixel differ"));
}

TEST_F(Recording_Comparison, palettes_count_in_images_of_indices) {
    const auto with_palette = [](json& d, int level) {
        d["color_system"] = 0;
        d["palette"] = {{"colors", {{0, 0, 0}, {level, 0, 0}}}};
    };
    json document = json::parse(base_text);
    with_palette(document, 7);
    first = folder.file("a.json", document.dump());
    EXPECT_THAT(compared([&](json& d) { with_palette(d, 8); }).output,
                HasSubstr("before the first call colours of the palettes differ: 1, first 1: (7,0,0,255) and (8,0,0,255)"));
}

TEST_F(Recording_Comparison, reports_and_errors) {
    const std::string json_file = folder.file("r.json"), xml_file = folder.file("r.xml");
    const Outcome outcome = compared(
        [](json& d) {
            d["calls"][4]["point"] = {12, 3, 5};
            d["output"] = {4, 5, 0, 7};
        },
        {"--json", json_file, "--junit", xml_file});
    EXPECT_EQ(outcome.status, 1);
    const json report = json::parse(read_file(json_file));
    EXPECT_EQ(report["same"], false);
    EXPECT_EQ(report["calls"], (json{6, 6}));
    EXPECT_EQ(report["setup"], json::parse(R"([{"key": "output", "values": ["none", "[4, 5, 0, 7]"]}])"));
    EXPECT_EQ(report["call"], json::parse(R"({"call": 4, "key": "point", "values": ["[12, 2, 5]", "[12, 3, 5]"]})"));
    EXPECT_EQ(report["pixels"]["call"], 4);
    EXPECT_EQ(report["pixels"]["kind"], "colors");
    EXPECT_EQ(report["pixels"]["first"], (json{12, 3}));
    EXPECT_THAT(read_file(xml_file), HasSubstr("failures=\"1\""));
    const Outcome refused = compared([](json& d) { d["calls"][4]["point"] = {99, 3, 5}; });
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.errors, HasSubstr("b.json: calls[4].point: expected a point inside the window"));
    EXPECT_THAT(compared([](json& d) { d["calls"] = 3; }).errors, HasSubstr("b.json: calls: expected a list"));
    EXPECT_THAT(compared([](json&) {}, {"--mask", first}).errors, HasSubstr("--mask: expected images, found recordings"));
    // Forms of files make no difference.
    ASSERT_EQ(run_vorna({"replay", first, "--record", folder.file("a.cbor.gz"), "--unchecked"}).status, 0);
    ASSERT_EQ(run_vorna({"replay", first, "--record", folder.file("c.json"), "--unchecked"}).status, 0);
    EXPECT_EQ(run_vorna({"compare", folder.file("c.json"), folder.file("a.cbor.gz")}).status, 0);
}

} // namespace

} // namespace replay_tests
