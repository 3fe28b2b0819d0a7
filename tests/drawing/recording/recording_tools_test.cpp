// What people ask about pictures: parts of replays, what calls cost, what a picture is made of, and where images differ.
#include <algorithm>
#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/image/image_comparison.h"
#include "drawing/image/png_writer.h"
#include "drawing/image/sha256.h"
#include "tests/support/command_line.h"
#include "tests/support/png_pixels.h"

namespace replay_tests {

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

// The colours of calls 1, 2 and 4 overlap.
const std::string steps = R"({"picture": 1, "window": {"width": 8, "height": 4}, "calls": [
    {"call": "clear_depth_rectangle", "rectangle": [0, 7, 0, 3]},
    {"call": "draw_window", "rectangle": [0, 3, 0, 3], "color": [10, 20, 30]},
    {"call": "draw_dci_polytriangle", "points": [2, 0, 9, 6, 0, 9, 2, 4, 9, 6, 4, 9], "rendition": {"face": {"color": [200, 0, 0]}}},
    {"call": "set_zbuffer_write", "value": false},
    {"call": "draw_dci_dot", "point": [2, 2, 5], "color": [1, 1, 1]}]})";

class Recording_Tools : public testing::Test {
protected:
    Recording_Tools() : picture(folder.file("steps.json", steps)) {}

    std::string color_after(std::vector<std::string> options) {
        options.insert(options.begin(), {"replay", picture, "--color", folder.file("c.png"), "--unchecked"});
        const Outcome outcome = run_vorna(options);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return read_file(folder.file("c.png"));
    }
    static std::string error_of(const std::vector<std::string>& arguments, const std::string& input = "") {
        const Outcome outcome = run_vorna(arguments, input);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
        return outcome.errors;
    }

    Temporary_Folder folder;
    std::string picture;
};

TEST_F(Recording_Tools, parts_of_a_replay_are_those_of_the_whole) {
    ASSERT_EQ(run_vorna({"replay", picture, "--unchecked", "--every-call", folder.file("calls")}).status, 0);
    const auto after = [&](const std::string& call) { return read_file(folder.file("calls/" + call + ".png")); };
    EXPECT_EQ(color_after({"--until", "1"}), after("0001-draw_window"));
    EXPECT_EQ(color_after({"--until", "2"}), after("0002-draw_dci_polytriangle"));
    EXPECT_EQ(color_after({}), after("0004-draw_dci_dot"));
    EXPECT_NE(after("0002-draw_dci_polytriangle"), after("0004-draw_dci_dot"));
    EXPECT_EQ(color_after({"--only", "0..2"}), after("0002-draw_dci_polytriangle"));
    // Alone the dot is drawn all the same, but nothing under it.
    EXPECT_NE(color_after({"--only", "4"}), after("0004-draw_dci_dot"));
    EXPECT_THAT(error_of({"replay", picture, "--until", "5"}),
                HasSubstr("--until: expected numbers of calls from 0 to 4, found '5'"));
    EXPECT_THAT(error_of({"replay", picture, "--only", "3..x"}), HasSubstr("--only: expected numbers of calls"));
    EXPECT_THAT(error_of({"replay", picture, "--only", "3..2"}), HasSubstr("the lower number first"));
    EXPECT_EQ(run_vorna({"replay", picture, "--unchecked", "--only", "4"}).output,
              picture + ": drew 1 call into 8 x 4 pixels; --color FILE.png writes them\n");
}

TEST_F(Recording_Tools, the_digest_is_that_of_the_colours_in_the_order_of_files) {
    const std::string file = folder.file("c.png");
    const Outcome outcome = run_vorna({"replay", picture, "--unchecked", "--hash", "--color", file});
    const Png_Pixels colors = read_colors(file);
    vorna::drawing::Sha256 sum;
    sum.add(colors.bytes.data(), colors.bytes.size());
    EXPECT_EQ(outcome.output, sum.finish() + '\n');
    EXPECT_EQ(run_vorna({"replay", picture, "--unchecked", "--hash", "--report", "-"}).errors, outcome.output);
}

TEST_F(Recording_Tools, many_files_are_written_only_when_it_is_said_how_many) {
    std::string calls = R"({"call": "establish"})";
    for (int i = 0; i < 1000; ++i) {
        calls += R"(, {"call": "establish"})";
    }
    const std::string long_one = R"({"picture": 1, "window": {"width": 1, "height": 1}, "calls": [)" + calls + "]}";
    EXPECT_THAT(
        error_of({"replay", "-", "--every-call", folder.file("all")}, long_one),
        HasSubstr("--every-call: expected --until or --only beside it for more than 1000 files, found neither for 1001 calls"));
    EXPECT_EQ(run_vorna({"replay", "-", "--every-call", folder.file("two"), "--until", "1"}, long_one).status, 0);
    EXPECT_THAT(error_of({"replay", "-", "--every-call", "-"}, long_one), HasSubstr("--every-call: expected a folder, found -"));
}

TEST_F(Recording_Tools, timing_counts_the_pixels_that_calls_change) {
    const Outcome outcome = run_vorna({"replay", picture, "--unchecked", "--timing=json", "--repeat", "2"});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    std::vector<int> colors, depths;
    const json timing = json::parse(outcome.output);
    for (const json& call : timing["calls"]) {
        colors.push_back(call["colors_changed"]);
        depths.push_back(call["depths_changed"]);
        EXPECT_GE(call["microseconds"], 0);
    }
    EXPECT_THAT(colors, ElementsAre(0, 16, 16, 0, 1));
    EXPECT_THAT(depths, ElementsAre(32, 0, 16, 0, 0));
    const std::string table = run_vorna({"replay", picture, "--unchecked", "--timing", "--sort", "pixels"}).output;
    EXPECT_LT(table.find("clear_depth"), table.find("draw_dci_dot"));
    EXPECT_LT(table.find("draw_dci_polytriangle"), table.find("draw_window"));
    EXPECT_THAT(error_of({"replay", picture, "--timing", "--sort", "size"}), HasSubstr("--sort: expected call, time or pixels"));
}

TEST_F(Recording_Tools, info_counts_calls_points_and_pieces) {
    const Outcome outcome = run_vorna({"info", "--json", picture});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const json info = json::parse(outcome.output)[0];
    EXPECT_EQ(info["window"]["width"], 8);
    EXPECT_EQ(info["points"], 4);
    EXPECT_EQ(info["renditions"], 2);
    EXPECT_EQ(info["bounds"]["x"], json({2.0, 6.0}));
    EXPECT_EQ(info["calls"].size(), 5U);
    EXPECT_THAT(info["calls"].dump(), HasSubstr(R"({"call":"draw_dci_polytriangle","count":1,"points":4,"triangles":2})"));
    EXPECT_THAT(run_vorna({"info", picture}).output, HasSubstr("4 points, 2 triangles\n"));
    EXPECT_THAT(error_of({"info", picture, "-"}, "{}"), HasSubstr("standard input: the key 'picture' is missing"));
}

// Images of 5 x 4 pixels of which one sample of one pixel may be different.
class Compare : public Recording_Tools {
protected:
    std::string image(const std::string& name, vorna::drawing::Image_Form form, std::uint32_t changed_row = 9,
                      std::uint8_t by = 0) {
        form.width = 5;
        form.height = 4;
        return folder.file(name, vorna::drawing::png_file(form, [&](std::uint32_t row, std::uint8_t* samples) {
                               for (std::size_t i = 0; i < form.row_bytes(); ++i) {
                                   samples[i] = static_cast<std::uint8_t>(row * 20 + i);
                               }
                               if (row == changed_row) {
                                   samples[2 * form.pixel_bytes()] =
                                       static_cast<std::uint8_t>(samples[2 * form.pixel_bytes()] + by);
                               }
                           }));
    }
};

TEST_F(Compare, one_changed_pixel_is_caught_in_every_kind_of_image) {
    const std::string colors(3 * 256, 'x');
    const vorna::drawing::Image_Form forms[] = {{},
                                                {.colors = vorna::drawing::Image_Form::Colors::palette, .palette = colors},
                                                {.sample_bits = 16, .colors = vorna::drawing::Image_Form::Colors::grey}};
    for (const vorna::drawing::Image_Form& form : forms) {
        const std::string same = image("a.png", form), changed = image("b.png", form, 1, 1);
        EXPECT_EQ(run_vorna({"compare", same, image("c.png", form)}).status, 0);
        const Outcome outcome = run_vorna({"compare", same, changed, "--diff", folder.file("d.png")});
        EXPECT_EQ(outcome.status, 1) << outcome.errors;
        const std::string by = form.sample_bits == 16 ? "256" : "1";
        EXPECT_THAT(outcome.output,
                    testing::StartsWith("different: 1 of 20 pixels, by at most " + by +
                                        ", in columns 2 to 2, rows 1 to 1; first at column 2, row 1 from the top: "));
        const Png_Pixels difference = read_png(folder.file("d.png"));
        for (std::size_t i = 0; i < 20; ++i) {
            EXPECT_EQ(difference.bytes[4 * i] != difference.bytes[4 * i + 1], i == 7) << i; // red, not grey
        }
    }
}

TEST_F(Compare, fuzz_limits_are_exact) {
    const std::string a = image("a.png", {}), b = image("b.png", {}, 1, 7);
    EXPECT_EQ(run_vorna({"compare", a, b, "--fuzz", "7,1"}).status, 0);
    EXPECT_EQ(run_vorna({"compare", a, b, "--fuzz", "6,1"}).status, 1);
    EXPECT_EQ(run_vorna({"compare", a, b, "--fuzz", "7,0"}).status, 1);
    EXPECT_EQ(run_vorna({"compare", a, a, "--fuzz", "0,0"}).status, 0);
    EXPECT_EQ(run_vorna({"compare", a, b, "--tolerance", "7"}).status, 0);
    EXPECT_EQ(run_vorna({"compare", a, b, "--tolerance", "6"}).status, 1);
    for (const std::string fuzz : {"7", "7,", "-1,3", "1,2,3", "a,b"}) {
        EXPECT_THAT(error_of({"compare", a, b, "--fuzz", fuzz}), HasSubstr("--fuzz: expected MAXDIFF,COUNT"));
    }
}

TEST_F(Compare, sizes_kinds_and_palettes_count_and_wrong_input_is_said) {
    const vorna::drawing::Image_Form one{.colors = vorna::drawing::Image_Form::Colors::palette, .palette = std::string(768, 'x')};
    vorna::drawing::Image_Form other = one;
    other.palette[5] = 'y';
    const std::string a = image("a.png", one), b = image("b.png", other), rgba = image("c.png", {});
    const auto told = [](const Outcome& outcome) {
        EXPECT_EQ(outcome.status, 1) << outcome.errors;
        return outcome.output;
    };
    EXPECT_THAT(told(run_vorna({"compare", a, b})), HasSubstr("by at most 1,"));
    EXPECT_THAT(told(run_vorna({"compare", a, b, "--fuzz", "0,0"})), HasSubstr("by at most 1,")) << "compares colours";
    other = one;
    other.palette[767] = 'y'; // of an index that no pixel has
    EXPECT_EQ(told(run_vorna({"compare", a, image("e.png", other)})), "different palettes\n");
    EXPECT_EQ(run_vorna({"compare", a, folder.file("e.png"), "--by", "colors"}).status, 0);
    EXPECT_THAT(told(run_vorna({"compare", a, b, "--by", "colors"})), HasSubstr("by at most 1,"));
    const vorna::drawing::Image_Form grey{.sample_bits = 16, .colors = vorna::drawing::Image_Form::Colors::grey};
    EXPECT_EQ(told(run_vorna({"compare", image("f.png", grey), rgba})),
              "different kinds of pixels: 5 x 4 pixels, grey of 16 bits, and 5 x 4 pixels, RGBA of 8 bits\n");
    vorna::drawing::Image_Form few{.reducible = true}; // stored with a palette
    EXPECT_EQ(told(run_vorna({"compare", a, rgba})).substr(0, 24), "different: 20 of 20 pixe");
    EXPECT_EQ(run_vorna({"compare", image("g.png", few), rgba}).status, 0);
    EXPECT_THAT(told(run_vorna({"compare", image("h.png", few, 1, 1), rgba})), HasSubstr("1 of 20 pixels, by at most 1,"));
    EXPECT_THAT(told(run_vorna({"compare", rgba, std::string(VORNA_GOLDENS) + "/glass.color.png"})),
                HasSubstr("different sizes"));
    EXPECT_EQ(run_vorna({"compare", "-", a}, read_file(a)).status, 0);
    const std::string whole = read_file(a);
    EXPECT_THAT(error_of({"compare", a, "-"}, whole.substr(0, whole.size() / 2)),
                HasSubstr("standard input: expected a PNG file: "));
    EXPECT_THAT(error_of({"compare", a, picture}),
                HasSubstr("steps.json: expected two images or two recordings, found a recording beside an image"));
    EXPECT_THAT(error_of({"compare", a, folder.file("missing.png")}), HasSubstr("missing.png: cannot be read: "));
    EXPECT_THAT(error_of({"compare", a, b, "--diff", folder.file("no") + "/d.png"}), HasSubstr("cannot be written"));
}

} // namespace

} // namespace replay_tests
