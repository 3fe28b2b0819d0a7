// vorna render with images for emission, metal, roughness, occlusion and opacity, and highlights on textures.
#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "drawing/model/area_means.h"
#include "tests/support/images.h"
#include "tests/support/rendering.h"
#include "tests/support/textured_square.h"

namespace vorna::drawing::model {
namespace {

using Options = std::vector<std::string>;
using Color = std::array<int, 3>;

constexpr VT_RGB32 black{0, 0, 0, 255}, white{255, 255, 255, 255}, half{128, 128, 128, 255};

class Surface_Images : public Rendering {
protected:
    // The pixel at x of 120 in the middle row of a square with this material.
    Color pixel(const std::string& material, std::uint32_t x = 60, const Options& more = {}) {
        folder.file("paint.mtl", "newmtl paint\n" + material);
        return shown(folder.file("square.obj", square_obj(0, 1)), x, more);
    }
    Color shown(const std::string& model, std::uint32_t x, const Options& more = {}) {
        const bool is_lit = std::ranges::find(more, "--light") != more.end();
        return render(model, with(with(straight, is_lit ? Options() : Options{"--light", "0,0,1"}), more)).at(x, 60);
    }
    void file(const std::string& name, const Image& image) { folder.file(name, png_file(image)); }
};

Image even(VT_RGB32 color) {
    return painted(4, 4, [&](int, int) { return color; });
}

Image halves(VT_RGB32 left, VT_RGB32 right) {
    return painted(8, 8, [&](int c, int) { return c < 4 ? left : right; });
}

TEST_F(Surface_Images, emission_is_added_to_what_is_dark_and_is_not_lit) {
    file("black.png", even(black));
    file("red.png", halves({0, 0, 255, 255}, black));
    const std::string maps = "map_Kd black.png\nmap_Ke red.png\n";
    const Options dull{"--specular", "0"};
    for (const char* light : {"0,0,1", "0,1,-5"}) {
        const Options lit{"--specular", "0", "--light", light};
        const Color red = pixel(maps, 30, lit);
        EXPECT_NEAR(red[0], 255, 2) << light;
        EXPECT_EQ(red[1] + red[2], 0) << light;
        EXPECT_EQ(pixel(maps, 90, lit)[0], pixel("map_Kd black.png\n", 90, lit)[0]) << light;
    }
    EXPECT_NEAR(pixel(maps + "Ke 0.5 0.5 0.5\n", 30, dull)[0], 128, 1);
    // Half red over white; where the image is black, as without it.
    file("dim.png", halves({0, 0, 128, 255}, black));
    const Color plain = pixel("Kd 1 1 1\n", 30, dull), over = pixel("Kd 1 1 1\nmap_Ke dim.png\n", 30, dull);
    EXPECT_NEAR(over[1], plain[1] * 127 / 255, 2);
    EXPECT_NEAR(pixel("Kd 1 1 1\nmap_Ke dim.png\n", 90, dull)[1], plain[1], 1);
}

TEST_F(Surface_Images, emission_keeps_to_holes_and_opacity) {
    file("holes.png", halves({255, 255, 255, 0}, black));
    file("green.png", even({0, 255, 0, 255}));
    const Options dull{"--specular", "0"};
    for (const char* cover : {"map_Kd holes.png\n", "map_Kd green.png\nmap_d holes.png\n"}) {
        const std::string material = cover + std::string("Ke 1 1 1\nmap_Ke green.png\n");
        EXPECT_EQ(pixel(material, 30, dull), pixel(cover, 30, dull)) << cover;
        EXPECT_GT(pixel(material, 90, dull)[1], 200) << cover;
    }
    const Color faint = pixel("Kd 0 0 0\nd 0.2\nKe 1 1 1\nmap_Ke green.png\n", 60, dull);
    EXPECT_LT(faint[1] - faint[0], 80);
}

TEST_F(Surface_Images, of_materials_that_no_face_has_are_not_missed) {
    const std::string other = "newmtl other\nmap_Kd missing.png\nmap_Ke missing.png\n";
    file("red.png", even({0, 0, 255, 255}));
    EXPECT_GT(pixel("map_Kd red.png\n" + other, 60, {"--strict"})[0], 100);
}

TEST_F(Surface_Images, highlights_lie_over_textures_and_not_in_their_holes) {
    file("black.png", even(black));
    const Color dull = pixel("map_Kd black.png\n", 60, {"--specular", "0"}), glossy = pixel("map_Kd black.png\n");
    EXPECT_LT(dull[1], 10);
    EXPECT_NEAR(glossy[1], 255 * std::sqrt(0.16), 3); // the light of a highlight, see lighting.cpp
    // On a surface without a texture it is as light.
    EXPECT_NEAR(pixel("Kd 0.001 0.001 0.001\n")[1], glossy[1], 30);
    file("holes.png", halves(black, {0, 0, 0, 0}));
    EXPECT_EQ(pixel("map_Kd holes.png\n", 90), (Color{255, 255, 255}));
    EXPECT_EQ(pixel("map_Kd holes.png\nd 0.5\n", 90), (Color{255, 255, 255}));
    // Of glass, the highlight is as strong as it is on wood.
    const Color glass = pixel("Kd 0 0 0\nd 0.5\n"), dull_glass = pixel("Kd 0 0 0\nd 0.5\n", 60, {"--specular", "0"});
    EXPECT_GT(glass[1], dull_glass[1] + 30);
}

TEST_F(Surface_Images, metal_and_roughness_are_those_of_numbers_with_the_mean_of_what_is_seen) {
    file("grey.png", even(half));
    file("white.png", even(white));
    file("metal.png", halves(white, black));
    const std::string base = "map_Kd grey.png\n";
    const Color metal = pixel(base + "Pm 1\nPr 0.2\n"), stone = pixel(base + "Pm 0\nPr 0.2\n");
    EXPECT_NE(metal, stone);
    EXPECT_EQ(pixel(base + "Pr 0.2\nmap_Pm white.png\n"), metal);
    EXPECT_EQ(pixel(base + "Pr 0.2\nPm 0\nmap_Pm white.png\n"), stone);
    EXPECT_EQ(pixel(base + "Pr 0.2\nmap_Pm metal.png\n"), pixel(base + "Pr 0.2\nPm 0.5\n"));
    EXPECT_EQ(pixel(base + "Pm 1\nPr 0.4\nmap_Pr metal.png\n"), pixel(base + "Pm 1\nPr 0.2\n"));
    EXPECT_NE(pixel(base + "Pm 1\nPr 0.4\n"), metal);
}

TEST_F(Surface_Images, occlusion_takes_light_of_the_surroundings_as_far_as_its_strength_says) {
    // Red is the occlusion: nothing is open.
    const std::string image = png_file(even({0, 200, 0, 255}));
    const auto green = [&](const std::string& occlusion) {
        return shown(folder.file("square.glb", square_glb(0, 1, 10497, image, occlusion)), 60, {"--specular", "0"})[1];
    };
    const int open = green("");
    EXPECT_NEAR(green(R"("occlusionTexture":{"index":0},)"), open * std::sqrt(0.5), 2);
    EXPECT_NEAR(green(R"("occlusionTexture":{"index":0,"strength":0.5},)"), open * std::sqrt(0.75), 2);
    EXPECT_EQ(green(R"("occlusionTexture":{"index":0,"strength":0},)"), open);
}

TEST_F(Surface_Images, opacity_is_the_alpha_of_its_image_or_its_lightness) {
    file("black.png", even(black));
    file("mask.png", halves(half, white));
    file("clear.png", halves({255, 255, 255, 128}, white));
    for (const char* mask : {"mask.png", "clear.png"}) {
        const std::string material = std::string("map_Kd black.png\nmap_d ") + mask + "\n";
        EXPECT_NEAR(pixel(material, 30, {"--specular", "0"})[1], 127, 3) << mask;
        EXPECT_LT(pixel(material, 90, {"--specular", "0"})[1], 10) << mask;
    }
}

TEST(Area_Means, are_those_of_the_cells_that_an_area_touches) {
    // Greens are 51 times the column, blues 51 times the row from below.
    const Image image = painted(4, 4, [](int c, int r) {
        return VT_RGB32{static_cast<std::uint8_t>(51 * (3 - r)), static_cast<std::uint8_t>(51 * c), 0, 255};
    });
    const auto mean = [&](float low, float high, Area_Means::Channel channel, Wrap wrap = Wrap::repeat) {
        return Area_Means(image, channel, wrap, wrap).of({{low, low}, {high, high}}) * 5;
    };
    for (const Area_Means::Channel channel : {Area_Means::Channel::green, Area_Means::Channel::blue}) {
        EXPECT_FLOAT_EQ(mean(0, 1, channel), 1.5F);
        EXPECT_FLOAT_EQ(mean(0, 0.25F, channel), 0);
        EXPECT_FLOAT_EQ(mean(0.5F, 1, channel), 2.5F);
        EXPECT_FLOAT_EQ(mean(0.6F, 0.6F, channel), 2);
        EXPECT_FLOAT_EQ(mean(1, 1.25F, channel), 0);
        EXPECT_FLOAT_EQ(mean(-0.25F, 0, channel), 3);
        EXPECT_FLOAT_EQ(mean(0.9F, 1.1F, channel), 1.5F); // over the border
        EXPECT_FLOAT_EQ(mean(0.9F, 1.1F, channel, Wrap::clamp), 3);
        EXPECT_FLOAT_EQ(mean(7, 9, channel, Wrap::clamp), 3);
        EXPECT_FLOAT_EQ(mean(1, 1.25F, channel, Wrap::mirror), 3);
        EXPECT_FLOAT_EQ(mean(-0.25F, 0, channel, Wrap::mirror), 0);
        EXPECT_FLOAT_EQ(mean(NAN, NAN, channel), 1.5F);
        EXPECT_FLOAT_EQ(mean(-1e30F, 1e30F, channel), 1.5F);
    }
    EXPECT_FLOAT_EQ(mean(0, 1, Area_Means::Channel::lightest), (3 * 7 + 2 * 5 + 3) / 16.0F);
    // Images larger than the cells: each pixel counts once.
    const Image large = painted(100, 70, [](int c, int r) { return c == 99 && r == 69 ? white : black; });
    EXPECT_FLOAT_EQ(Area_Means(large, Area_Means::Channel::green, Wrap::repeat, Wrap::repeat).of({{0, 0}, {1, 1}}), 1 / 7000.0F);
}

} // namespace
} // namespace vorna::drawing::model
