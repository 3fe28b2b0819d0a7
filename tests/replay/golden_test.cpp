// The example pictures, drawn by the built command, against golden pictures that somebody has looked at.
//
// After an intended change: vorna replay pictures/NAME.json --color tests/golden/NAME.color.png --depth
// tests/golden/NAME.depth.png
#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/replay/command_line.h"
#include "tests/replay/png_pixels.h"

namespace replay_tests {

namespace {

std::vector<std::string> picture_names() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(VORNA_PICTURES)) {
        if (entry.path().extension() == ".json") {
            names.push_back(entry.path().stem().string());
        }
    }
    return names;
}

std::string picture_path(const std::string& name) {
    return std::string(VORNA_PICTURES) + '/' + name + ".json";
}

std::string golden_path(const std::string& name) {
    return std::string(VORNA_GOLDENS) + '/' + name + ".png";
}

class Golden : public testing::TestWithParam<std::string> {};

TEST_P(Golden, is_drawn_to_the_last_bit_by_every_kernel_set) {
    const bool has_depth = nlohmann::json::parse(read_file(picture_path(GetParam()))).value("buffer_depth", 16) > 0;
    for (const std::string kernels : {"portable", "baseline", "avx2", "avx512"}) {
        const Temporary_Folder folder;
        std::vector<std::string> arguments{"replay",  picture_path(GetParam()), "--kernels", kernels,
                                           "--color", folder.file("color.png")};
        if (has_depth) {
            arguments.insert(arguments.end(), {"--depth", folder.file("depth.png")});
        }
        const Outcome outcome = run_vorna(arguments);
        if (outcome.status == 2 && kernels != "portable") {
            EXPECT_THAT(outcome.errors, testing::HasSubstr("KRB_KERNELS")); // this processor lacks the set
            continue;
        }
        ASSERT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(difference(read_png(folder.file("color.png")), read_png(golden_path(GetParam() + ".color"))), "") << kernels;
        if (has_depth) {
            EXPECT_EQ(difference(read_png(folder.file("depth.png")), read_png(golden_path(GetParam() + ".depth"))), "")
                << kernels;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(pictures, Golden, testing::ValuesIn(picture_names()), [](const auto& picture) {
    std::string name = picture.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

// One more dot makes a picture differ from its golden one, in that pixel.
TEST(Golden_Comparison, finds_one_changed_pixel) {
    auto picture = nlohmann::json::parse(read_file(picture_path("glass")));
    picture["calls"].push_back(
        {{"call", "draw_dci_dot"}, {"point", {5, picture["window"]["height"].get<int>() - 4, 0}}, {"color", {1, 2, 3}}});
    const Temporary_Folder folder;
    const Outcome outcome = run_vorna({"replay", "-", "--color", folder.file("color.png")}, picture.dump());
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_THAT(difference(read_png(folder.file("color.png")), read_png(golden_path("glass.color"))),
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
