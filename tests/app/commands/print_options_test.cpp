// Sizes on paper: pixels per inch in files, paper, and scales of maps, drawings and models.
#include <algorithm>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/geometry.h"
#include "tests/support/command_line.h"
#include "tests/support/png_pixels.h"

namespace vorna::app {
namespace {

using replay_tests::Outcome;
using replay_tests::Png_Pixels;
using replay_tests::read_file;
using replay_tests::run_vorna;
using testing::HasSubstr;
using Options = std::vector<std::string>;

class Print : public testing::Test {
protected:
    // Returns the place of the image.
    std::string draw(const std::string& input, const Options& more, const std::string& output = "out.png") {
        Options arguments{"render", input, "-o", folder.file(output)};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = run_vorna(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return folder.file(output);
    }
    std::string error_of(const std::string& input, const Options& more) {
        Options arguments{"render", input, "-o", folder.file("none.png")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = run_vorna(arguments);
        EXPECT_EQ(outcome.status, 2) << outcome.errors;
        return outcome.errors;
    }
    VT_Int_Pair size_of(const std::string& input, const Options& more) {
        const Png_Pixels image = replay_tests::read_colors(draw(input, more));
        return {static_cast<std::int32_t>(image.width), static_cast<std::int32_t>(image.height)};
    }
    // Columns and rows from the first to the last pixel that differs from the upper left one.
    static VT_Int_Pair drawn_size(const std::string& file) {
        const Png_Pixels image = replay_tests::read_colors(file);
        VT_Int_Rectangle box{INT32_MAX, INT32_MIN, INT32_MAX, INT32_MIN};
        for (std::uint32_t i = 0; i < image.width * image.height; ++i) {
            if (!std::equal(image.bytes.begin(), image.bytes.begin() + 4, image.bytes.begin() + 4 * std::ptrdiff_t{i})) {
                const auto x = static_cast<std::int32_t>(i % image.width), y = static_cast<std::int32_t>(i / image.width);
                box = {std::min(box.left, x), std::max(box.right, x), std::min(box.bottom, y), std::max(box.top, y)};
            }
        }
        return {box.right - box.left + 1, box.top - box.bottom + 1};
    }

    replay_tests::Temporary_Folder folder;
    const std::string map = folder.file("map.json", R"({"type":"Polygon","coordinates":[[[0,0],[2,0],[2,1],[0,1],[0,0]]]})");
    // Corners of a box of 40 by 20 by 10, as a face in front and one to the side.
    const std::string model = folder.file("a.obj", "v -20 -10 5\nv 20 -10 5\nv 20 10 5\nv -20 10 5\nv 20 -10 -5\nv 20 10 -5\n"
                                                   "f 1 2 3 4\nf 2 5 6 3\n");
    const std::string plan =
        folder.file("a.dxf", "0\nSECTION\n2\nENTITIES\n0\nLINE\n10\n0\n20\n0\n11\n50\n21\n0\n0\nLINE\n10\n0\n20\n"
                             "0\n11\n0\n21\n30\n0\nENDSEC\n0\nEOF\n");
};

TEST_F(Print, files_tell_pixels_per_metre_and_parts_do_too) {
    const Options dpi{"--dpi", "254", "--size", "400x300"};
    const std::string density("pHYs\0\0\x27\x10\0\0\x27\x10\x01", 13);
    for (const std::string& input : {map, model}) {
        const std::string whole = read_file(draw(input, dpi));
        EXPECT_THAT(whole, HasSubstr(density));
        EXPECT_THAT(read_file(draw(input, {"--size", "400x300"})), testing::Not(HasSubstr("pHYs")));
        Options parts{"assemble"};
        for (const std::string number : {"0", "1", "2", "3"}) {
            Options own = dpi;
            own.insert(own.end(), {"--tiles-of", "2x2", "--tile", number, "--supersample", "1"});
            parts.push_back(draw(input, own, number + ".png"));
        }
        parts.insert(parts.end(), {"-o", folder.file("joined.png")});
        EXPECT_EQ(run_vorna(parts).status, 0);
        Options single = dpi;
        single.insert(single.end(), {"--supersample", "1"});
        EXPECT_TRUE(read_file(folder.file("joined.png")) == read_file(draw(input, single)));
    }
    EXPECT_THAT(read_file(draw(map, {"--paper", "A4", "--dpi", "72"}, "a.pdf")), HasSubstr("/MediaBox [0 0 594.926 841.895]"));
    const std::string other = draw(map, {"--size", "400x300", "--dpi", "300", "--tiles-of", "2x2", "--tile", "0"}, "0.png");
    const Outcome outcome = run_vorna(
        {"assemble", other, folder.file("1.png"), folder.file("2.png"), folder.file("3.png"), "-o", folder.file("joined.png")});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, HasSubstr("expected a part of the same inputs, drawn with the same options"));
}

TEST_F(Print, paper_has_its_size_at_any_density) {
    EXPECT_EQ(size_of(map, {"--paper", "A4", "--dpi", "25.4"}), (VT_Int_Pair{210, 297}));
    EXPECT_EQ(size_of(map, {"--paper", "A6-landscape"}), (VT_Int_Pair{1748, 1240}));
    EXPECT_EQ(size_of(model, {"--paper", "50.8x25.4mm", "--dpi", "100"}), (VT_Int_Pair{200, 100}));
}

TEST_F(Print, lengths_are_in_scale) {
    const Options fine{"--dpi", "254", "--background", "white"}; // ten pixels a millimetre
    const auto with = [&](Options more) {
        more.insert(more.end(), fine.begin(), fine.end());
        return more;
    };
    // The globe's circumference is 40030.23 km.
    const VT_Int_Pair degrees = drawn_size(draw(map, with({"--scale", "1:1000000", "--border", "none", "--fill", "red"})));
    EXPECT_EQ(degrees, (VT_Int_Pair{2223, 1111}));
    const Options plain{"--border", "none", "--fill", "red", "--scale", "1:5000000"};
    Options in_metres = with(plain), in_feet = with(plain);
    in_metres.insert(in_metres.end(), {"--projection", "+proj=eqc +R=6371008.8"});
    in_feet.insert(in_feet.end(), {"--projection", "+proj=eqc +R=6371008.8 +units=us-ft"});
    if (WITH_PROJ) {
        EXPECT_EQ(drawn_size(draw(map, in_metres)), (VT_Int_Pair{444, 222}));
        EXPECT_EQ(drawn_size(draw(map, in_feet)), (VT_Int_Pair{444, 222}));
    }
    // With a size the map's middle stays in the image's.
    EXPECT_EQ(size_of(map, with({"--scale", "1:1000000", "--size", "300x200"})), (VT_Int_Pair{300, 200}));

    EXPECT_EQ(drawn_size(draw(plan, with({"--scale", "2:1"}))), (VT_Int_Pair{1001, 601})); // both ends of lines
    EXPECT_EQ(drawn_size(draw(plan, with({"--scale", "1:10", "--unit", "cm"}))), (VT_Int_Pair{501, 301}));

    for (const char* size : {"800x600", "500x778"}) {
        Options front = with({"--ortho", "--view", "front", "--scale", "1:1", "--size", size, "--supersample", "1"});
        EXPECT_EQ(drawn_size(draw(model, front)), (VT_Int_Pair{400, 200})) << size;
    }
    EXPECT_EQ(drawn_size(draw(model, with({"--ortho", "--view", "right", "--scale", "1:20", "--unit", "in", "--size", "400x400",
                                           "--supersample", "1"}))),
              (VT_Int_Pair{127, 254}));
}

TEST_F(Print, refuses_what_has_no_scale_or_size) {
    const std::string pixels = folder.file("pixels.json", R"({"type":"LineString","coordinates":[[500,500],[900,700]]})");
    const std::vector<std::tuple<std::string, Options, std::string>> cases{
        {map, {"--paper", "A99"}, "--paper: expected A0, "},
        {map, {"--paper", "0x3mm"}, "--paper: expected"},
        {map, {"--paper", "900x900mm", "--dpi", "9999"}, "pixels, found '900x900mm'"},
        {map, {"--scale", "50000"}, "--scale: expected two numbers as 1:50000, found '50000'"},
        {map, {"--scale", "1:0"}, "found '1:0'"},
        {map, {"--scale", "1:1"}, "--scale: expected an image of up to 262144 pixels each way"},
        {map, {"--scale", "1:1000000", "--unit", "mm"}, "--unit: expected coordinates of a plane, found degrees"},
        {pixels, {"--scale", "1:2"}, "--scale: expected a unit for the coordinates of a plane"},
        {model, {"--scale", "1:2"}, "--scale: expected --ortho beside it"}};
    for (const auto& [input, options, message] : cases) {
        EXPECT_THAT(error_of(input, options), HasSubstr(message));
    }
}

} // namespace
} // namespace vorna::app
