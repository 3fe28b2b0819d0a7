// The example pictures, drawn by the built command, against golden pictures that somebody has looked at; and against the answers
// of a slow second program that knows nothing of this one, for corners of the rules.
//
// After an intended change: vorna replay recordings/NAME.json --color tests/golden/NAME.color.png --depth
// tests/golden/NAME.depth.png; of the gallery's other drawings: jq '.buffer_depth = 0' recordings/gallery.json | vorna replay - …
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <ostream>
#include <set>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/command_line.h"
#include "tests/support/png_pixels.h"

namespace replay_tests {

namespace {

using nlohmann::json;

std::string picture_path(const std::string& name) {
    return std::string(VORNA_PICTURES) + '/' + name + ".json";
}

std::string golden_path(const std::string& name) {
    return std::string(VORNA_GOLDENS) + '/' + name;
}

json picture(const std::string& name) {
    return json::parse(read_file(picture_path(name)));
}

// golden: the path of the golden pictures, but for what follows a point.
struct Drawing {
    std::string name;
    json picture;
    std::string golden = golden_path(name);

    friend std::ostream& operator<<(std::ostream& out, const Drawing& drawing) { return out << drawing.name; }
};

// What the host draws looks different in every configuration, and its gallery has a golden picture of each.
std::vector<Drawing> drawings_of_gallery() {
    std::vector<Drawing> drawings;
    for (const auto& [name, changes] : {std::pair("gallery", R"({})"),
                                        {"gallery-no-depth", R"({"buffer_depth": 0})"},
                                        {"gallery-palette", R"({"color_system": 0})"},
                                        {"gallery-palette-no-depth", R"({"color_system": 0, "buffer_depth": 0})"}}) {
        drawings.push_back({name, picture("gallery")});
        drawings.back().picture.merge_patch(json::parse(changes));
    }
    return drawings;
}

std::vector<Drawing> drawings() {
    std::vector<Drawing> drawings = drawings_of_gallery();
    for (const auto& entry : std::filesystem::directory_iterator(VORNA_PICTURES)) {
        const std::string name = entry.path().stem().string();
        if (entry.path().extension() == ".json" && name != "gallery") {
            drawings.push_back({name, picture(name)});
        }
    }
    for (const auto& entry : std::filesystem::directory_iterator(golden_path("answers"))) {
        if (entry.path().extension() == ".json") {
            const std::string path = entry.path().string();
            drawings.push_back({entry.path().stem().string(), json::parse(read_file(path)), path.substr(0, path.size() - 5)});
        }
    }
    return drawings;
}

class Golden : public testing::TestWithParam<Drawing> {};

TEST_P(Golden, is_drawn_to_the_last_bit_by_every_kernel_set) {
    const auto& [name, picture, golden] = GetParam();
    const bool has_depth = std::filesystem::exists(golden + ".depth.png");
    for (const std::string kernels : {"portable", "baseline", "avx2", "avx512", "neon"}) {
        const Temporary_Folder folder;
        std::vector<std::string> arguments{"replay", "-", "--kernels", kernels, "--color", folder.file("color.png")};
        if (has_depth) {
            arguments.insert(arguments.end(), {"--depth", folder.file("depth.png")});
        }
        const Outcome outcome = run_vorna(arguments, picture.dump());
        if (outcome.status == 2 && kernels != "portable") {
            EXPECT_THAT(outcome.errors, testing::HasSubstr("cannot run the kernel set")); // one of other processors
            continue;
        }
        ASSERT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(difference(read_png(folder.file("color.png")), read_png(golden + ".color.png")), "") << kernels;
        if (has_depth) {
            EXPECT_EQ(difference(read_png(folder.file("depth.png")), read_png(golden + ".depth.png")), "") << kernels;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(pictures, Golden, testing::ValuesIn(drawings()), [](const auto& drawing) {
    std::string name = drawing.param.name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

// But for images of the buffer's own pixel kind, which are nobody's but the renderer's.
TEST(Gallery, holds_everything_that_the_host_draws) {
    std::set<std::string> every_function;
#define VT_ACTION(slot, name, ...) every_function.insert("VD_Standard_" #name);
#include "host/action_list.inc"
#undef VT_ACTION
    for (const auto& [name, picture, golden] : drawings_of_gallery()) {
        const Temporary_Folder folder;
        ASSERT_EQ(run_vorna({"replay", "-", "--report", folder.file("report.json")}, picture.dump()).status, 0);
        std::set<std::string> left_out = every_function;
        const json report = json::parse(read_file(folder.file("report.json")));
        for (const json& standard : report["standard"]) {
            left_out.erase(standard[1].get<std::string>());
        }
        const bool is_indexed = picture.value("color_system", 1) != 1;
        EXPECT_THAT(left_out,
                    testing::ElementsAre(is_indexed ? "VD_Standard_Draw_DCI_Index8_Image" : "VD_Standard_Draw_DCI_RGB32_Image"))
            << name;
    }
}

// One more dot makes a picture differ from its golden one, in that pixel.
TEST(Golden_Comparison, finds_one_changed_pixel) {
    json changed = picture("glass");
    changed["calls"].push_back(
        {{"call", "draw_dci_dot"}, {"point", {5, changed["window"]["height"].get<int>() - 4, 0}}, {"color", {1, 2, 3}}});
    const Temporary_Folder folder;
    const Outcome outcome = run_vorna({"replay", "-", "--color", folder.file("color.png")}, changed.dump());
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_THAT(difference(read_png(folder.file("color.png")), read_png(golden_path("glass.color.png"))),
                testing::StartsWith("column 5, row 3 from the top: "));
}

#if defined(PAGE_PROGRAM)
TEST(Embedding_Page, shows_what_its_program_draws) {
    const Temporary_Folder folder;
    const std::string drawn = folder.file("plot.png");
    ASSERT_EQ(std::system(("'" PAGE_PROGRAM "' '" + drawn + "'").c_str()), 0);
    EXPECT_EQ(difference(read_png(drawn), read_png(PAGE_PICTURE)), "");
}
#endif

} // namespace

} // namespace replay_tests
