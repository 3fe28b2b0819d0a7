// Maps in tiles and parts, by any number of threads: the bytes of the whole.
#include <cmath>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/command_line.h"
#include "tests/support/png_pixels.h"

namespace vorna::app {
namespace {

using replay_tests::Outcome;
using replay_tests::read_file;
using testing::HasSubstr;
using Options = std::vector<std::string>;

std::string place(double x, double y) {
    return '[' + std::to_string(x) + ',' + std::to_string(y) + ']';
}

std::string feature(const std::string& type, const std::string& coordinates, const std::string& name = "") {
    return R"({"type":"Feature","properties":{"name":")" + name + R"("},"geometry":{"type":")" + type + R"(","coordinates":)" +
           coordinates + "}}";
}

// Crooked cells with gaps between some, lines in all directions, a flower of many short sides, and named points.
std::string crooked_map() {
    constexpr int columns = 8, rows = 6;
    std::mt19937 random(11); // NOLINT(bugprone-random-generator-seed): the same map each time
    const auto within = [&](double least, double most) {
        return least + (most - least) * static_cast<double>(random() % 100000) / 1e5;
    };
    std::vector<std::string> corners, features;
    for (int i = 0; i < (columns + 1) * (rows + 1); ++i) {
        corners.push_back(place(-160 + i % (columns + 1) * 40.0 + within(-9, 9), -75 + i / (columns + 1) * 25.0 + within(-6, 6)));
    }
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            const auto at = static_cast<std::size_t>(y * (columns + 1) + x);
            if (random() % 4 > 0) {
                features.push_back(feature("Polygon",
                                           "[[" + corners[at] + ',' + corners[at + 1] + ',' + corners[at + columns + 2] + ',' +
                                               corners[at + columns + 1] + ',' + corners[at] + "]]",
                                           "Cell " + std::to_string(at)));
            }
        }
    }
    for (int i = 0; i < 30; ++i) {
        std::string line = place(within(-170, 170), within(-80, 80));
        for (std::size_t more = 1 + random() % 4; more > 0; --more) {
            line += ',' + place(within(-170, 170), within(-80, 80));
        }
        features.push_back(feature("LineString", '[' + line + ']'));
        features.push_back(feature("Point", place(within(-170, 170), within(-80, 80)), "Town " + std::to_string(i)));
    }
    std::string ring;
    for (int i = 0; i <= 600; ++i) {
        const double angle = i % 600 * 3.14159265358979 / 300, radius = 25 + 3 * std::sin(angle * 17);
        ring += (i > 0 ? "," : "") + place(5 + radius * std::cos(angle), radius * std::sin(angle));
    }
    features.push_back(feature("Polygon", "[[" + ring + "]]", "Flower"));
    std::string text;
    for (const std::string& each : features) {
        text += (text.empty() ? "" : ",") + each;
    }
    return R"({"type":"FeatureCollection","features":[)" + text + "]}";
}

class Map_Tiles : public testing::Test {
protected:
    Map_Tiles() {
        folder.file("map.json", crooked_map());
        folder.file("over.json", R"({"type":"FeatureCollection","features":[)" +
                                     feature("Polygon", "[[[-60,-50],[80,-40],[60,60],[-90,50],[-60,-50]]]") + ',' +
                                     feature("LineString", "[[-170,-70],[170,80]]") + "]}");
    }

    Outcome run(Options arguments, const Options& more = {}, const std::string& output = "out.png") {
        arguments.insert(arguments.begin(), {"render", folder.file("map.json"), "-o", folder.file(output)});
        arguments.insert(arguments.end(), more.begin(), more.end());
        return replay_tests::run_vorna(arguments);
    }

    std::string file_of(const Options& arguments, const Options& more = {}) {
        const Outcome outcome = run(arguments, more);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return read_file(folder.file("out.png"));
    }

    std::string assembled(const Options& options, int columns, int rows) {
        Options assemble{"assemble", "-o", folder.file("joined.png")};
        for (int number = 0; number < columns * rows; ++number) {
            const std::string name = "part" + std::to_string(number) + ".png";
            const Options which{"--tile", std::to_string(number), "--tiles-of",
                                std::to_string(columns) + 'x' + std::to_string(rows)};
            const Outcome part = run(options, which, name);
            assemble.push_back(folder.file(name));
            EXPECT_EQ(part.status, 0) << part.errors;
        }
        const Outcome outcome = replay_tests::run_vorna(assemble);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return read_file(folder.file("joined.png"));
    }

    replay_tests::Temporary_Folder folder;
};

TEST_F(Map_Tiles, bytes_do_not_depend_on_tiles_threads_and_parts) {
    const std::string over = folder.file("over.json");
    std::vector<Options> styles{
        {},
        {"--antialias"},
        {"--border", "dashed"},
        {"--border", "dotted", "--antialias", "--outline", "14,5"},
        {"--border", "dash-dot", "--border-width", "3", "--antialias"},
        {"--casing", "#0000ff", "--border-width", "2", "--marker", "star", "--marker-size", "15"},
        {"--colors", "8", "--casing", "red"},
        {"--colors", "8", "--border", "8,3,0,3", "--marker", "circle", "--marker-size", "11"},
        {"--opacity", "0.5", "--antialias", "--water", "#d8e8f0", "--graticule", "15"},
        {"--overlay", over, "--merge", "and"},
        {"--overlay", over, "--antialias", "--border-width", "4"},
        {"--supersample", "3", "--border", "dashed", "--antialias"},
        {"--supersample", "2", "--background", "none"},
        {"--clip-to", "Flower", "--antialias"},
    };
    if (WITH_FREETYPE) {
        styles.push_back({"--labels", "--colors", "8", "--label-size", "20"});
        styles.push_back({"--labels", "--supersample", "2", "--background", "none"});
        styles.push_back({"--labels", "--halo", "5.5", "--halo-color", "#80ff00", "--map-scale", "km", "--title", "Tiles"});
    }
    // The second one cuts lines and faces at all four sides.
    for (const Options& part : {Options{}, {"--bbox", "-60,-40,50,45"}}) {
        for (Options options : styles) {
            // More than one block of rows.
            options.insert(options.end(), {"--size", "421x303"});
            options.insert(options.end(), part.begin(), part.end());
            const std::string whole = file_of(options, {"--threads", "1"});
            for (const Options& cut :
                 {Options{"--tile-size", "24", "--threads", "3"}, {"--tile-size", "152", "--threads", "1"}}) {
                EXPECT_EQ(file_of(options, cut), whole) << testing::PrintToString(options) << testing::PrintToString(cut);
            }
            if (!part.empty()) {
                EXPECT_EQ(assembled(options, 2, 2), whole) << testing::PrintToString(options);
            }
        }
    }
}

// Beyond the sides of the largest buffer there is no whole.
TEST_F(Map_Tiles, large_images_do_not_depend_on_tiles) {
    for (const Options& style :
         {Options{"--antialias", "--border", "6,4"}, {"--colors", "8"}, {"--border-width", "3", "--casing", "red"}}) {
        for (const char* size : {"34000x120", "100x30000"}) {
            Options options{"--size", size, "--bbox", "-100,-50,110,60"};
            options.insert(options.end(), style.begin(), style.end());
            const std::string file = file_of(options, {"--threads", "1"});
            EXPECT_EQ(file_of(options, {"--tile-size", "488", "--threads", "3"}), file) << testing::PrintToString(options);
            EXPECT_EQ(assembled(options, 1, 2), file) << testing::PrintToString(options);
        }
    }
}

TEST_F(Map_Tiles, a_mean_of_smaller_pixels_keeps_places_and_widths) {
    const Options options{"--size", "200x120", "--fill", "red", "--border", "none", "--marker", "block"};
    file_of(options);
    const replay_tests::Png_Pixels plain = replay_tests::read_colors(folder.file("out.png"));
    file_of(options, {"--supersample", "4"});
    const replay_tests::Png_Pixels fine = replay_tests::read_colors(folder.file("out.png"));
    ASSERT_EQ(plain.bytes.size(), fine.bytes.size());
    std::size_t mixed = 0, others = 0;
    for (std::size_t i = 0; i < plain.bytes.size(); i += 4) {
        const int difference = plain.bytes[i + 1] - fine.bytes[i + 1]; // green: what is white and not red
        mixed += difference != 0;
        others += std::abs(difference) > 192; // a pixel whose centre is covered is covered by a quarter or more
    }
    EXPECT_GT(mixed, 200U);
    EXPECT_LT(others, mixed / 20);
}

TEST_F(Map_Tiles, what_cannot_be_cut_or_held_is_refused_in_one_line) {
    const struct {
        Options options;
        std::string message;
    } cases[] = {
        {{"--border", "300,10", "--size", "20000x1000"},
         "--size: expected an image of 16384 pixels each way at most, drawn in one piece"},
        {{"--border", "300,10", "--tile-size", "64"},
         "--size: expected an image of 16384 pixels each way at most, drawn in one piece"},
        {{"--size", "200000x3000", "--max-memory", "16M"}, "M or more for this image, found 16M"},
        {{"--supersample", "2", "--colors", "8"}, "--supersample: expected 32 bits a pixel"},
        {{"--supersample", "2", "--record", folder.file("r.json")}, "--record: expected pixels as the renderer draws them"},
        {{"--tiles-of", "2x2", "--tile", "4"}, "--tile: expected a number from 0 to 3"},
    };
    const std::vector<std::string> before = folder.names();
    for (const auto& [options, message] : cases) {
        const Outcome outcome = run(options);
        EXPECT_EQ(outcome.status, 2) << message;
        EXPECT_THAT(outcome.errors, HasSubstr(message));
        EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
        EXPECT_EQ(folder.names(), before) << message;
    }
    // Such dashes are drawn in one piece.
    file_of({"--border", "300,10", "--size", "400x300"});
}

} // namespace
} // namespace vorna::app
