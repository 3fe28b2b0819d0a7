// vorna render --shading textured: where texels end up, what shines through, and what is said of textures that are missing.
#include <bit>
#include <cstring>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/images.h"
#include "tests/support/meshes.h"
#include "tests/support/rendering.h"
#include "tests/support/textured_square.h"

namespace vorna::drawing::model {
namespace {

using replay_tests::Outcome;
using testing::HasSubstr;

constexpr VT_RGB32 red{0, 0, 255, 255}, green{0, 255, 0, 255}, blue{255, 0, 0, 255}, yellow{0, 255, 255, 255};
constexpr std::array<int, 3> white_pixel{255, 255, 255};

// R, G, B or Y for what a lit texel of these colours gives, _ for the background, ? for mixtures.
char name_of(const std::array<int, 3>& pixel) {
    if (pixel == white_pixel) {
        return '_';
    }
    const auto strong = [&](std::size_t channel) { return pixel[channel] > 120; };
    const auto weak = [&](std::size_t channel) { return pixel[channel] < 90; };
    return strong(0) && weak(1) && weak(2)   ? 'R'
           : weak(0) && strong(1) && weak(2) ? 'G'
           : weak(0) && weak(1) && strong(2) ? 'B'
           : strong(0) && strong(1)          ? 'Y'
                                             : '?';
}

// The colours in the middles of count equal parts of the row in the picture's middle.
std::string names_across(const Picture& picture, std::uint32_t row, std::uint32_t count) {
    std::string names;
    // The model takes 0.94 of the picture.
    for (std::uint32_t i = 0; i < count; ++i) {
        names += name_of(picture.at(static_cast<std::uint32_t>(picture.width * (0.03 + 0.94 * (i + 0.5) / count)), row));
    }
    return names;
}

// Red and green above, blue and yellow below, in sides that are no powers of two.
Image quarters(std::int32_t width, std::int32_t height) {
    return painted(width, height, [=](int c, int r) {
        return r < height / 2 ? (c < width / 2 ? red : green) : (c < width / 2 ? blue : yellow);
    });
}

class Textured_Render : public Rendering {
protected:
    std::string paint(const Image& image, const std::string& options = "", const std::string& more = "") {
        folder.file("paint.png", png_file(image));
        return folder.file("paint.mtl", "newmtl paint\n" + more + "map_Kd " + options + " paint.png\n");
    }

    Picture textured(const std::string& model, std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"--shading", "textured", "--light", "0,0,1", "--specular", "0"});
        return render(model, options);
    }
};

TEST_F(Textured_Render, textures_are_neither_mirrored_nor_upside_down_and_reach_the_last_pixel) {
    for (const auto& [width, height] : {std::pair(30, 22), std::pair(64, 16), std::pair(2, 2)}) {
        paint(quarters(width, height));
        const std::string obj = folder.file("square.obj", square_obj(0, 1));
        const std::string glb = folder.file("square.glb", square_glb(0, 1, 10497, png_file(quarters(width, height))));
        const Picture plain = render(obj, with(straight, {"--color", "navy"}));
        for (const std::string& model : {obj, glb}) {
            for (const char* colors : {"32", "8"}) {
                const Picture picture = textured(model, with(straight, {"--colors", colors}));
                EXPECT_EQ(name_of(picture.at(20, 20)), 'R') << model;
                EXPECT_EQ(name_of(picture.at(100, 20)), 'G') << model;
                EXPECT_EQ(name_of(picture.at(20, 100)), 'B') << model;
                EXPECT_EQ(name_of(picture.at(100, 100)), 'Y') << model;
                if (width != 30) { // Growing softens borders.
                    EXPECT_EQ(name_of(picture.at(59, 20)), 'R') << model;
                    EXPECT_EQ(name_of(picture.at(60, 20)), 'G') << model;
                    EXPECT_EQ(name_of(picture.at(20, 59)), 'R') << model;
                    EXPECT_EQ(name_of(picture.at(20, 60)), 'B') << model;
                }
                // The very pixels that the square takes without a texture.
                EXPECT_EQ(picture.count(white_pixel), plain.count(white_pixel)) << model;
            }
        }
    }
}

TEST_F(Textured_Render, a_texture_goes_on_beyond_its_borders_as_its_sampler_says) {
    const Image halves = painted(32, 32, [](int c, int) { return c < 16 ? red : green; });
    constexpr int repeat = 10497, mirror = 33648, clamp = 33071;
    const struct {
        int wrap;
        std::string expected;
    } cases[] = {{repeat, "RGRGRGRG"}, {mirror, "GRRGGRRG"}, {clamp, "RRRGGGGG"}};
    for (const auto& [wrap, expected] : cases) {
        const std::string glb = folder.file("square.glb", square_glb(-1, 3, wrap, png_file(halves)));
        const Picture picture = textured(glb, straight);
        EXPECT_EQ(names_across(picture, 60, 8), expected);
        EXPECT_EQ(names_across(picture, 5, 8), expected);
    }
    paint(halves, "-clamp on");
    EXPECT_EQ(names_across(textured(folder.file("square.obj", square_obj(-1, 3)), straight), 60, 8), "RRRGGGGG");
    paint(halves, "-s 2 2 1 -o 0.5");
    EXPECT_EQ(names_across(textured(folder.file("square.obj", square_obj(0, 1)), straight), 60, 4), "GRGR");
    // Thousands of repetitions are more than pixels: all that is left is their mean light.
    paint(halves);
    const Picture mean = textured(folder.file("square.obj", square_obj(-5000, 5000)), straight);
    EXPECT_NEAR(mean.at(60, 60)[0], 180, 8);
    EXPECT_NEAR(mean.at(61, 60)[1], 180, 8);
}

// A long floor of parts by parts squares under a texture three times as long.
std::string floor_obj(int parts) {
    std::ostringstream text;
    text << "mtllib paint.mtl\nusemtl paint\n";
    for (int r = 0; r <= parts; ++r) {
        for (int c = 0; c <= parts; ++c) {
            const double u = static_cast<double>(c) / parts, v = static_cast<double>(r) / parts;
            text << "v " << 2 * u << " 0 " << -9 * v << "\nvt " << u << ' ' << 3 * v << '\n';
        }
    }
    for (int r = 0; r < parts; ++r) {
        for (int c = 1; c <= parts; ++c) {
            const int a = r * (parts + 1) + c, b = a + 1, d = a + parts + 1, e = d + 1;
            text << "f " << a << '/' << a << ' ' << b << '/' << b << ' ' << e << '/' << e << ' ' << d << '/' << d << '\n';
        }
    }
    return text.str();
}

// One large square and the same one cut into small ones show the same, although the renderer runs textures evenly over the
// screen.
TEST_F(Textured_Render, perspective_bends_nothing) {
    paint(painted(64, 64, [](int c, int r) { return (c / 8 + r / 8) % 2 ? red : green; }));
    const std::vector<std::string> options{"--size", "400x300"};
    const Picture whole = textured(folder.file("whole.obj", floor_obj(1)), options);
    const Picture cut = textured(folder.file("cut.obj", floor_obj(48)), options);
    int shown = 0, different = 0;
    for (std::size_t i = 0; i < whole.pixels.size(); ++i) {
        shown += whole.pixels[i] != white_pixel;
        different += name_of(whole.pixels[i]) != name_of(cut.pixels[i]);
    }
    EXPECT_GT(shown, 20000);
    // Squares are some ten pixels large; an error of half a pixel along their borders would be four times as much.
    EXPECT_LT(different, shown / 20);
}

TEST_F(Textured_Render, surfaces_have_no_cracks_at_seams_subdivisions_and_the_pictures_border) {
    paint(painted(100, 50, [](int c, int r) { return VT_RGB32{0, static_cast<std::uint8_t>(c + r), 90, 255}; }));
    // Meridians end where the texture begins anew, and opposite faces use other parts of it.
    const Mesh mesh = ball(9, 6);
    std::ostringstream text;
    text << "mtllib paint.mtl\nusemtl paint\n";
    for (const VT_Vector& p : mesh.positions) {
        text << "v " << p.x << ' ' << p.y << ' ' << p.z << '\n';
    }
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        const VT_Vector& p = mesh.positions[mesh.triangles[i]];
        text << "vt " << p.x * static_cast<float>(1 + i / 3 % 4) << ' ' << p.y + 0.3F * static_cast<float>(i / 3 % 3) << '\n';
    }
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        text << "f";
        for (std::size_t k = i; k < i + 3; ++k) {
            text << ' ' << mesh.triangles[k] + 1 << '/' << k + 1;
        }
        text << '\n';
    }
    const std::string model = folder.file("ball.obj", text.str());
    for (const char* zoom : {"2", "5.3", "40"}) {
        for (const char* colors : {"32", "8"}) {
            const Picture picture = textured(model, {"--zoom", zoom, "--size", "150x150", "--cull", "back", "--colors", colors});
            EXPECT_EQ(picture.count(white_pixel), 0) << zoom << ", " << colors;
        }
    }
}

TEST_F(Textured_Render, the_nearest_translucent_surface_is_drawn_last_whatever_the_files_order) {
    const std::string places = "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nv -1 -1 1\nv 1 -1 1\nv 1 1 1\nv -1 1 1\nv -1 -1 "
                               "-1\nv 1 -1 -1\nv 1 1 -1\nv -1 1 -1\n";
    const std::string far_paint = "newmtl far\nKd 0 0 1\nd 0.5\n", near_paint = "newmtl near\nKd 1 0 0\nTr 0.5\n";
    folder.file("paint.mtl", "newmtl back\nKd 1 1 1\n" + far_paint + near_paint);
    folder.file("other.mtl", near_paint + far_paint + "newmtl back\nKd 1 1 1\n");
    const std::string back = "usemtl back\nf 9 10 11 12\n", far = "usemtl far\nf 1 2 3 4\n", near = "usemtl near\nf 5 6 7 8\n";
    const auto alone = [&](const std::string& faces) {
        const std::string model = folder.file("alone.obj", "mtllib paint.mtl\n" + places + faces);
        return render(model, with(straight, {"--shading", "gouraud", "--specular", "0"})).at(60, 60);
    };
    const std::array<int, 3> of_back = alone(back), of_far = alone(far), of_near = alone(near);
    const std::pair<std::string, std::string> cases[] = {{"paint.mtl", near + back + far}, {"other.mtl", far + near + back}};
    for (const auto& [library, faces] : cases) {
        const std::string model = folder.file("glass.obj", "mtllib " + library + "\n" + places + faces);
        const std::array<int, 3> pixel = render(model, with(straight, {"--shading", "textured", "--specular", "0"})).at(60, 60);
        const Picture palette = render(model, with(straight, {"--shading", "textured", "--specular", "0", "--colors", "8"}));
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const int expected = of_near[channel] / 2 + of_far[channel] / 4 + of_back[channel] / 4;
            EXPECT_NEAR(pixel[channel], expected, 4) << faces;
            int sum = 0;
            for (std::uint32_t i = 0; i < 64; ++i) {
                sum += palette.at(56 + i % 8, 56 + i / 8)[channel];
            }
            // Blending with an index that was dithered before keeps the mean only about.
            EXPECT_NEAR(sum / 64, expected, 16) << faces;
        }
    }
}

TEST_F(Textured_Render, alpha_means_what_the_material_says) {
    const Image holed = painted(32, 32, [](int c, int) {
        return VT_RGB32{0, 0, 255, static_cast<std::uint8_t>(c < 16 ? 255 : 100)};
    });
    const auto right_half = [&](const std::string& material) {
        return textured(folder.file("square.glb", square_glb(0, 1, 10497, png_file(holed), material)), straight).at(90, 60);
    };
    EXPECT_EQ(name_of(right_half("")), 'R');
    EXPECT_EQ(right_half(R"("alphaMode":"MASK",)"), white_pixel);
    EXPECT_EQ(name_of(right_half(R"("alphaMode":"MASK","alphaCutoff":0.3,)")), 'R');
    // 100 of 255 parts red on white.
    EXPECT_NEAR(right_half(R"("alphaMode":"BLEND",)")[1], 155, 8);
    paint(holed);
    EXPECT_NEAR(textured(folder.file("square.obj", square_obj(0, 1)), straight).at(90, 60)[1], 155, 8);
}

TEST_F(Textured_Render, a_texture_that_cannot_be_had_is_named_and_the_rest_is_drawn) {
    const std::string model = folder.file("square.obj", square_obj(0, 1));
    folder.file("paint.mtl", "newmtl paint\nKd 0 1 0\nmap_Kd lost.png\n");
    const std::string lost = folder.file("lost.png");
    const std::vector<std::string> options = with(straight, {"--shading", "textured"});
    const std::string left_out = "1 of 1 texture is left out: ",
                      refusal = ": expected a PNG, JPEG, WebP, TGA, BMP or DDS image\n";
    EXPECT_EQ(
        name_of(render(model, options, "vorna: warning: " + left_out + lost + ": cannot be read: No such file or directory\n")
                    .at(60, 60)),
        'G');
    folder.file("lost.png", "no image");
    EXPECT_EQ(name_of(render(model, options, "vorna: warning: " + left_out + lost + refusal).at(60, 60)), 'G');
    folder.file("lost.png", png_file(quarters(4, 4)));
    folder.file("paint.mtl", "newmtl paint\nmap_Kd C:\\work\\LOST.png\n");
    EXPECT_EQ(name_of(textured(model, straight).at(20, 20)), 'R'); // found by its name

    folder.file("lost.png", "no image");
    const std::string output = folder.file("strict.png");
    Outcome outcome =
        replay_tests::run_vorna(with({"render", model, "-o", output, "--strict", "--shading", "textured"}, straight));
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors, "vorna: " + left_out + lost + refusal);
    EXPECT_THAT(folder.names(), testing::Not(testing::Contains("strict.png")));

    const std::string glb = folder.file("square.glb", square_glb(0, 1, 10497, "no image"));
    outcome = replay_tests::run_vorna({"render", glb, "-o", output, "--shading", "textured"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, HasSubstr("vorna: warning: " + left_out + glb + ": image *0" + refusal));

    // One line, however many there are and however many materials share them.
    folder.file("good.png", png_file(quarters(4, 4)));
    std::string materials, faces = "mtllib paint.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nvt 0 0\n";
    for (int m = 0; m < 6; ++m) {
        const std::string name = std::to_string(m);
        materials += "newmtl " + name + "\nmap_Kd " + (m == 5 ? "good.png" : "gone" + name + ".png") + "\nnewmtl again" + name +
                     "\nd 0.5\nmap_Kd gone0.png\n";
        faces += "usemtl " + name + "\nf 1/1 2/1 3/1\nusemtl again" + name + "\nf 1/1 2/1 3/1\n";
    }
    folder.file("paint.mtl", materials);
    outcome = replay_tests::run_vorna({"render", folder.file("many.obj", faces), "-o", output});
    EXPECT_THAT(outcome.errors, testing::StartsWith("vorna: warning: 5 of 6 textures are left out: "));
    EXPECT_THAT(outcome.errors, testing::EndsWith("gone2.png: cannot be read: No such file or directory; and 2 more\n"));
    EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1);
}

} // namespace
} // namespace vorna::drawing::model
