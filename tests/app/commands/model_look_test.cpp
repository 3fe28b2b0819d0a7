// vorna render: what of a model is drawn without options, and materials that show form.
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/images.h"
#include "tests/support/meshes.h"
#include "tests/support/rendering.h"

namespace vorna::drawing::model {
namespace {

class Model_Look_Of_Files : public Rendering {
protected:
    // A ball of a material with these lines.
    Picture ball_of(const std::string& material, std::vector<std::string> options = {}) {
        folder.file("ball.mtl", "newmtl m\n" + material);
        const std::string model = folder.file("ball.obj", "mtllib ball.mtl\nusemtl m\n" + obj_text(ball(48, 24)));
        options.insert(options.end(), {"--size", "160x120", "--background", "#00ff00", "--supersample", "1"});
        return render(model, options);
    }

    static bool is_background(const std::array<int, 3>& pixel) { return pixel == std::array{0, 255, 0}; }
};

// The least and largest sum of channels of what is drawn, and the number of colours.
struct Range {
    int least = 3 * 255, largest = 0;
    std::size_t colors = 0;
};

Range range_of(const Picture& picture) {
    Range range;
    std::set<std::array<int, 3>> colors;
    for (const auto& pixel : picture.pixels) {
        if (pixel != std::array{0, 255, 0}) {
            const int sum = pixel[0] + pixel[1] + pixel[2];
            range.least = std::min(range.least, sum);
            range.largest = std::max(range.largest, sum);
            colors.insert(pixel);
        }
    }
    range.colors = colors.size();
    return range;
}

TEST_F(Model_Look_Of_Files, black_and_metal_bodies_show_their_form) {
    const Range black = range_of(ball_of("Kd 0 0 0\nKs 0 0 0\n")), grey = range_of(ball_of("Kd 0.5 0.5 0.5\nKs 0 0 0\n")),
                metal = range_of(ball_of("Kd 0.05 0.05 0.05\nKs 0.9 0.9 0.9\nNs 200\n")),
                same_metal = range_of(ball_of("Kd 0.9 0.9 0.9\nPm 1\nPr 0.2\n")),
                rough_metal = range_of(ball_of("Kd 0.9 0.9 0.9\nPm 1\nPr 1\n")),
                chalk = range_of(ball_of("Kd 0.9 0.9 0.9\nPm 0\nPr 1\n"));
    EXPECT_GT(black.colors, 15U);
    EXPECT_GT(black.largest, 3 * 35);
    EXPECT_LT(black.largest, grey.least + (grey.largest - grey.least) / 2); // and is still darker
    EXPECT_GT(metal.largest, 3 * 150);
    // What is reflected changes faster over the form than light does.
    EXPECT_GT(same_metal.largest - same_metal.least, chalk.largest - chalk.least);
    EXPECT_EQ(rough_metal.largest, chalk.largest);
    EXPECT_EQ(rough_metal.least, chalk.least);
}

TEST_F(Model_Look_Of_Files, emission_adds_light_and_specular_scales_highlights) {
    const std::string plain = "Kd 0.2 0.2 0.2\nKs 0 0 0\n";
    EXPECT_GT(range_of(ball_of(plain + "Ke 0.6 0.6 0.6\n")).least, range_of(ball_of(plain)).least + 3 * 40);
    const std::string glossy = "Kd 0.2 0.2 0.2\nKs 0.2 0.2 0.2\nNs 40\n";
    const int none = range_of(ball_of(glossy, {"--specular", "0"})).largest, some = range_of(ball_of(glossy)).largest,
              more = range_of(ball_of(glossy, {"--specular", "3"})).largest;
    EXPECT_LT(none, some);
    EXPECT_LT(some, more);
    EXPECT_EQ(range_of(ball_of(plain, {"--specular", "3"})).largest, range_of(ball_of(plain)).largest);
    // A broken value of a property that is not needed costs nothing else.
    EXPECT_EQ(range_of(ball_of(plain + "Ns many\nKe spectral file.rfl\n")).largest, range_of(ball_of(plain)).largest);
}

const std::vector<std::string> straight{"--view",  "front", "--ortho",       "--size", "120x120",
                                        "--light", "0,0,1", "--supersample", "1"};

std::vector<std::string> with(std::vector<std::string> more) {
    more.insert(more.begin(), straight.begin(), straight.end());
    return more;
}

bool is_red(const std::array<int, 3>& pixel) {
    return pixel[0] > 150 && pixel[1] < 120 && pixel[2] < 120;
}

TEST_F(Model_Look_Of_Files, textures_and_opacity_are_drawn_unless_a_colour_or_plain_shading_is_asked_for) {
    folder.file("paint.png", png_file(painted(4, 4, [](int, int) { return VT_RGB32{0, 0, 255, 255}; })));
    folder.file("paint.mtl", "newmtl paint\nmap_Kd paint.png\nnewmtl glass\nKd 1 0 0\nd 0.5\n");
    const std::string square = "mtllib paint.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nvt 0 0\n";
    const std::string textured = folder.file("textured.obj", square + "usemtl paint\nf 1/1 2/1 3/1 4/1\n");
    EXPECT_TRUE(is_red(render(textured, straight).at(60, 60)));
    EXPECT_FALSE(is_red(render(textured, with({"--shading", "gouraud"})).at(60, 60)));
    const auto blue = render(textured, with({"--color", "#0000ff"})).at(60, 60);
    EXPECT_GT(blue[2], 150);
    EXPECT_LT(blue[0], 120);
    const std::string glass = folder.file("glass.obj", square + "usemtl glass\nf 1 2 3 4\n");
    const auto opaque = render(glass, with({"--shading", "flat"})).at(60, 60),
               translucent = render(glass, with({"--background", "white"})).at(60, 60);
    EXPECT_TRUE(is_red(opaque));
    EXPECT_NEAR(translucent[2], (opaque[2] + 255) / 2, 2);
    folder.file("paint.mtl", "newmtl glass\nKd 1 0 0\nTr 1\n"); // would show nothing
    EXPECT_TRUE(is_red(render(glass, straight).at(60, 60)));
}

TEST_F(Model_Look_Of_Files, colours_of_vertices_are_drawn) {
    for (const char* red : {" 1 0 0\n", " 255 0 0\n"}) {
        const std::string model = folder.file("colors.obj", std::string("v -1 -1 0") + red + "v 1 -1 0" + red + "v 1 1 0" + red +
                                                                "v -1 1 0" + red + "v 5 5 5\nf 1 2 3 4\n");
        EXPECT_TRUE(is_red(render(model, straight).at(60, 60))) << red;
        EXPECT_FALSE(is_red(render(model, with({"--color", "blue"})).at(60, 60)));
    }
    // A fourth coordinate and other words are no colour.
    const std::string plain = folder.file("plain.obj", "v -1 -1 0 1\nv 1 -1 0 1 0\nv 1 1 0 1 0 x\nf 1 2 3\n");
    EXPECT_FALSE(is_red(render(plain, straight).at(80, 70)));
    for (const char* prefix : {"", "diffuse_"}) {
        std::string ply = "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n";
        for (const char* channel : {"red", "green", "blue"}) {
            ply += std::string("property uchar ") + prefix + channel + "\n";
        }
        ply +=
            "element face 1\nproperty list uchar int vertex_indices\nend_header\n-1 -1 0 255 0 0\n1 -1 0 255 0 0\n1 1 0 255 0 0\n"
            "3 0 1 2\n";
        EXPECT_TRUE(is_red(render(folder.file("colors.ply", ply), straight).at(80, 70))) << prefix;
    }
}

// The left half of the image is red, the right one blue.
TEST_F(Model_Look_Of_Files, images_of_ply_lie_where_vertices_or_corners_say) {
    folder.file("halves.png", png_file(painted(8, 8, [](int c, int) {
                    return c < 4 ? VT_RGB32{0, 0, 255, 255} : VT_RGB32{255, 0, 0, 255};
                })));
    const std::string start = "ply\nformat ascii 1.0\ncomment TextureFile halves.png\nelement vertex 4\nproperty float x\n"
                              "property float y\nproperty float z\n",
                      list = "element face 2\nproperty list uchar int vertex_indices\n";
    const std::string of_vertices = start + "property float s\nproperty float t\n" + list +
                                    "end_header\n-1 -1 0 0 0\n1 -1 0 1 0\n1 1 0 1 1\n-1 1 0 0 1\n3 0 1 2\n3 0 2 3\n";
    const Picture straight_on = render(folder.file("vertices.ply", of_vertices), straight);
    EXPECT_TRUE(is_red(straight_on.at(30, 60)));
    EXPECT_FALSE(is_red(straight_on.at(90, 60)));
    // Both triangles show the left half, so that shared vertices have two places in the image.
    const std::string of_corners = start + list +
                                   "property list uchar float texcoord\nend_header\n-1 -1 0\n1 -1 0\n1 1 0\n-1 1 0\n"
                                   "3 0 1 2 6 0 0 0.4 0 0.4 1\n3 0 2 3 6 0.4 0 0 1 0.4 1\n";
    const Picture twice = render(folder.file("corners.ply", of_corners), straight);
    for (const auto& [x, y] : {std::pair(30U, 40U), {90U, 80U}, {20U, 90U}, {100U, 30U}}) {
        EXPECT_TRUE(is_red(twice.at(x, y))) << x << ' ' << y;
    }
}

// A triangle of a material, seen straight on.
std::string gltf_of(const std::string& material) {
    return R"({"asset":{"version":"2.0"},"extensionsUsed":["KHR_materials_unlit"],"scene":0,"scenes":[{"nodes":[0]}],)"
           R"("nodes":[{"mesh":0}],"meshes":[{"primitives":[{"attributes":{"POSITION":0},"material":0}]}],)"
           R"("buffers":[{"byteLength":36,"uri":"data:application/octet-stream;base64,)"
           "AACAvwAAgL8AAAAAAACAPwAAgL8AAAAAAAAAAAAAgD8AAAAA"
           R"("}],"bufferViews":[{"buffer":0,"byteLength":36}],"accessors":[{"bufferView":0,"componentType":5126,"count":3,)"
           R"("type":"VEC3","min":[-1,-1,0],"max":[1,1,0]}],"materials":[{)" +
           material + "}]}";
}

TEST_F(Model_Look_Of_Files, finishes_of_gltf_are_drawn) {
    const auto shown = [&](const std::string& more, const std::string& factors) {
        const std::string material = more + R"("pbrMetallicRoughness":{"baseColorFactor":[0.25,0.04,0.09,1],)" + factors + "}";
        return render(folder.file("one.gltf", gltf_of(material)), straight).at(60, 70);
    };
    const std::array<int, 3> chalk = shown("", R"("metallicFactor":0,"roughnessFactor":1)"),
                             rough = shown("", R"("metallicFactor":1,"roughnessFactor":1)"),
                             polished = shown("", R"("metallicFactor":1,"roughnessFactor":0.1)"),
                             glowing = shown(R"("emissiveFactor":[0,0.5,0],)", R"("metallicFactor":0,"roughnessFactor":1)");
    EXPECT_EQ(chalk, rough);
    EXPECT_NE(chalk, polished);
    EXPECT_EQ(glowing[0], chalk[0]);
    EXPECT_GT(glowing[1], chalk[1] + 60);
    // Pixels hold the square roots of light.
    EXPECT_EQ(shown(R"("extensions":{"KHR_materials_unlit":{}},)", R"("metallicFactor":0)"), (std::array{128, 51, 77}));
}

} // namespace
} // namespace vorna::drawing::model
