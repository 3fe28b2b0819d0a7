// vorna render --look studio and --pass, as a user runs them.
#include <algorithm>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/command_line.h"
#include "tests/support/meshes.h"
#include "tests/support/rendering.h"

namespace vorna::drawing::model {
namespace {

using Options = std::vector<std::string>;

constexpr std::array<int, 3> white{255, 255, 255};

// Boxes as an OBJ file, each side with normals of its own.
class Boxes {
public:
    Boxes& add(const std::array<int, 3>& low, const std::array<int, 3>& high) {
        for (int corner = 0; corner < 8; ++corner) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                text_ << (axis == 0 ? "v " : " ") << (corner >> axis & 1 ? high : low)[axis];
            }
            text_ << '\n';
        }
        for (const char* side : {"3 7 5 1/1", "4 2 6 8/2", "1 5 6 2/3", "3 4 8 7/4", "1 2 4 3/5", "5 7 8 6/6"}) {
            std::istringstream numbers(side);
            std::array<int, 4> corners;
            char slash;
            int normal;
            numbers >> corners[0] >> corners[1] >> corners[2] >> corners[3] >> slash >> normal;
            text_ << 'f';
            for (const int corner : corners) {
                text_ << ' ' << count_ + corner << "//" << normal;
            }
            text_ << '\n';
        }
        count_ += 8;
        return *this;
    }
    std::string text() const { return "vn -1 0 0\nvn 1 0 0\nvn 0 -1 0\nvn 0 1 0\nvn 0 0 -1\nvn 0 0 1\n" + text_.str(); }

private:
    std::ostringstream text_;
    int count_ = 0;
};

class Studio : public Rendering {
protected:
    std::string hash(const std::string& model, Options options) {
        options.insert(options.begin(), {"render", model, "-o", folder.file("out.png"), "--look", "studio", "--hash"});
        const replay_tests::Outcome outcome = replay_tests::run_vorna(options);
        if (outcome.errors.find("cannot run the kernel set") != std::string::npos) {
            return "";
        }
        EXPECT_EQ(outcome.errors, "");
        return outcome.output.substr(0, 64);
    }
    Picture studio(const std::string& model, Options options) {
        options.insert(options.end(), {"--look", "studio", "--supersample", "1", "--background", "white"});
        return render(model, options);
    }
};

int lightness(const std::array<int, 3>& color) {
    return color[0] + color[1] + color[2];
}

TEST_F(Studio, bytes_depend_neither_on_tiles_nor_on_threads_nor_on_kernels) {
    const std::string boxes = folder.file(
        "boxes.obj", Boxes().add({0, 0, 0}, {40, 2, 40}).add({4, 2, 4}, {12, 20, 12}).add({13, 2, 20}, {30, 9, 24}).text());
    const std::string ball_file = folder.file("ball.obj", obj_text(ball(40, 30)));
    for (const Options& view : {Options{"--supersample", "1", "--size", "333x217"},
                                {"--supersample", "2", "--ortho", "--size", "333x217"},
                                {"--supersample", "3", "--zoom", "3", "--size", "333x217"},
                                {"--size", "700x90"}}) { // with tiles beside the shadow
        Options options = view;
        options.insert(options.end(), {"--edges=feature", "--view", "iso", boxes});
        const std::string whole = hash(ball_file, options);
        EXPECT_EQ(whole.size(), 64U);
        for (const Options& more : {Options{"--tile-size", "64", "--threads", "3"},
                                    {"--tile-size", "256", "--threads", "2"},
                                    {"--tile-size", "104", "--threads", "1"},
                                    {"--kernels", "portable"},
                                    {"--kernels", "baseline"},
                                    {"--kernels", "avx2", "--tile-size", "64"},
                                    {"--kernels", "avx512"},
                                    {"--kernels", "neon"}}) {
            Options other = options;
            other.insert(other.end(), more.begin(), more.end());
            const std::string found = hash(ball_file, other);
            EXPECT_TRUE(found == whole || (found.empty() && more[0] == "--kernels")) << more[1];
        }
    }
}

TEST_F(Studio, planes_are_even_and_inner_corners_dark) {
    // A floor, seen from above at a slant, with a wall at its far end or without.
    const std::string plane = Boxes().add({0, 0, 0}, {40, 1, 40}).text();
    const std::string corner = Boxes().add({0, 0, 0}, {40, 1, 40}).add({0, 1, 0}, {40, 20, 2}).text();
    const Options view{"--camera", "20,60,90,20,1,20", "--size", "200x200", "--color", "silver"};
    const Picture even = studio(folder.file("plane.obj", plane), view), bent = studio(folder.file("corner.obj", corner), view);
    for (std::uint32_t y = 85; y < 115; ++y) {
        for (std::uint32_t x = 80; x < 120; ++x) {
            EXPECT_EQ(even.at(x, y), even.at(100, 100));
        }
    }
    EXPECT_EQ(bent.at(100, 110), even.at(100, 110)); // far from the wall
    // Upwards to the line where the wall begins.
    int last = lightness(even.at(100, 100)), darkest = last;
    for (std::uint32_t y = 90; y > 50 && lightness(bent.at(100, y)) <= last; --y) {
        last = darkest = lightness(bent.at(100, y));
    }
    EXPECT_LT(darkest, lightness(even.at(100, 100)) * 3 / 4);
}

TEST_F(Studio, outlines_are_where_patches_meet_and_not_within_them) {
    const Options view{"--size", "200x200", "--color", "silver"};
    const Picture box = studio(folder.file("box.obj", Boxes().add({0, 0, 0}, {1, 1, 1}).text()), view);
    const Picture round = studio(folder.file("ball.obj", obj_text(ball(80, 60))), view);
    // Steps from pixel to pixel in the middle of the image, away from where it ends.
    const auto largest_step = [](const Picture& picture) {
        int largest = 0;
        for (std::uint32_t y = 60; y < 140; ++y) {
            for (std::uint32_t x = 60; x < 140; ++x) {
                largest = std::max(largest, std::abs(lightness(picture.at(x, y)) - lightness(picture.at(x + 1, y))));
            }
        }
        return largest;
    };
    EXPECT_LT(largest_step(round), 24);
    EXPECT_GT(largest_step(box), 100);
}

TEST_F(Studio, objects_cast_a_shadow_on_the_ground_for_who_stands_above_it) {
    const std::string box = folder.file("box.obj", Boxes().add({0, 0, 0}, {2, 2, 2}).text());
    const Picture above = studio(box, {"--camera", "4,6,8,1,1,1", "--size", "160x160"}),
                  below = studio(box, {"--camera", "4,-6,8,1,1,1", "--size", "160x160"}),
                  plain = render(
                      box, {"--camera", "4,-6,8,1,1,1", "--size", "160x160", "--supersample", "1", "--background", "white"});
    EXPECT_EQ(below.count(white), plain.count(white));
    EXPECT_LT(above.count(white), 160 * 160 - 6000); // the box has some 5000 pixels
    // Shadows darken what lies behind them, and add nothing to a transparent image but their darkness.
    const replay_tests::Png_Pixels shadow = [&] {
        render(box, {"--camera", "4,6,8,1,1,1", "--size", "160x160", "--look", "studio", "--background", "none"});
        return replay_tests::read_colors(folder.file("out.png"));
    }();
    int shaded = 0;
    for (std::size_t i = 0; i < shadow.bytes.size(); i += 4) {
        if (shadow.bytes[i + 3] > 0 && shadow.bytes[i + 3] < 255) {
            EXPECT_LE(shadow.bytes[i], 2);
            ++shaded;
        }
    }
    EXPECT_GT(shaded, 1000);
}

TEST_F(Studio, passes_are_depths_normals_and_numbers_of_faces) {
    const std::string box = folder.file("box.obj", Boxes().add({0, 0, 0}, {2, 2, 2}).add({0, 0, 3}, {1, 2, 4}).text());
    const Options view{"--view", "front", "--ortho", "--size", "64x64", "--threads", "1"};
    const auto pass = [&](const char* name) {
        Options options = view;
        options.insert(options.end(), {"--pass", name});
        render(box, options);
        return replay_tests::read_png(folder.file("out.png"));
    };
    const replay_tests::Png_Pixels depth = pass("depth");
    EXPECT_EQ(depth.color_type, 0);
    EXPECT_EQ(depth.bit_depth, 16);
    const auto depth_at = [&](std::size_t x) { return depth.bytes[2 * (32 * 64 + x)] << 8 | depth.bytes[2 * (32 * 64 + x) + 1]; };
    EXPECT_EQ(depth_at(0), 65535);
    EXPECT_LT(depth_at(20), 100);
    EXPECT_NEAR(depth_at(44), 65535 / 2, 100); // behind the box in front by half of the depth of all
    Options assemble{"assemble", "-o", folder.file("assembled.png")};
    for (const char* part : {"0", "1"}) {
        assemble.push_back(folder.file(std::string(part) + ".png"));
        Options options = view;
        options.insert(options.begin(), {"render", box, "-o", assemble.back(), "--pass", "depth"});
        options.insert(options.end(), {"--tiles-of", "2x1", "--tile", part});
        EXPECT_EQ(replay_tests::run_vorna(options).errors, "");
    }
    EXPECT_EQ(replay_tests::run_vorna(assemble).errors, "");
    EXPECT_EQ(replay_tests::read_png(folder.file("assembled.png")).bytes, depth.bytes);
    const Picture normals(pass("normals"));
    EXPECT_EQ(normals.at(20, 32), (std::array{128, 128, 255}));
    EXPECT_EQ(normals.at(0, 32), (std::array{0, 0, 0}));
    const Picture faces(pass("faces"));
    // The sixth side of each box, two triangles each.
    EXPECT_EQ(faces.count({0, 0, 11}) + faces.count({0, 0, 12}) + faces.count({0, 0, 23}) + faces.count({0, 0, 24}) +
                  faces.count({0, 0, 0}),
              64 * 64);
    EXPECT_GT(faces.count({0, 0, 11}) * faces.count({0, 0, 23}), 0);
}

TEST_F(Studio, what_does_not_go_with_it_is_said_in_one_line) {
    const std::string box = folder.file("box.obj", Boxes().add({0, 0, 0}, {2, 2, 2}).text());
    const struct {
        Options options;
        std::string message;
    } cases[] = {
        {{"--look", "studio", "--record", folder.file("r.json")},
         "--record: expected pixels as the renderer draws them, found --look studio"},
        {{"--look", "studio", "--colors", "8"},
         "--look studio: expected 32 bits a pixel or a palette from a file, found --colors 8"},
        {{"--look", "studio", "--shading", "wireframe"},
         "--look studio: expected shaded faces, found --shading wireframe or hidden-line"},
        {{"--pass", "depth", "--background", "none"}, "--background: expected no --pass beside it, found both"},
        {{"--pass", "depth", "--point-size", "3"}, "--point-size: expected no --pass beside it, found both"},
        {{"--pass", "faces", "--supersample", "2"},
         "--pass faces: expected pixels as the renderer draws them, found --supersample 2"},
        {{"--pass", "faces", "--output-format", "jpg"},
         "--pass faces: expected a file that keeps every pixel, found --output-format jpg"},
        {{"--pass", "normals", "--axes"}, "--pass normals: expected shaded faces alone, found --axes"},
        {{"--pass", "normals", "--background", "red"}, "--background: expected no --pass beside it, found both"},
        {{"--record", folder.file("r.json"), "--tiles-of", "2x1", "--tile", "0"},
         "--record: expected a whole image, found --tiles-of 2x1"},
    };
    const bool writes_jpeg = replay_tests::run_vorna({"render", box, "-o", folder.file("out.jpg")}).status == 0;
    for (const auto& [options, message] : cases) {
        if (!writes_jpeg && std::ranges::count(options, "jpg") > 0) {
            continue; // a build without the library
        }
        Options arguments{"render", box, "-o", folder.file("out.png")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const replay_tests::Outcome outcome = replay_tests::run_vorna(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.errors, "vorna: " + message + "\n");
    }
    const std::string cloud = folder.file("cloud.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\n");
    EXPECT_EQ(replay_tests::run_vorna({"render", cloud, "-o", folder.file("out.png"), "--pass", "depth"}).errors,
              "vorna: " + cloud + ": expected faces for --pass depth, found points only\n");
}

} // namespace
} // namespace vorna::drawing::model
