// Strips that reach beyond the window: what is visible of them is what a larger window would show there, and a picture in tiles
// is the same as one in one piece.
#include <algorithm>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "renderer/core/software_z_buffer.h"
#include "tests/support/scene.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

enum class Family { flat, colorized, gouraud, textured };
constexpr Family families[] = {Family::flat, Family::colorized, Family::gouraud, Family::textured};

struct Strip {
    std::vector<VT_DCI_Point> points;
    std::vector<VT_RGB32> colors;
    std::vector<VT_Parameter> parameters;

    std::int32_t count() const { return static_cast<std::int32_t>(points.size()); }
    std::vector<VT_Point_D> transformed() const {
        std::vector<VT_Point_D> moved;
        for (const VT_DCI_Point& point : points) {
            moved.push_back({point.x + 0.25, point.y - 0.25, point.z + 0.125});
        }
        return moved;
    }
};

template <class Coordinate> Strip random_strip(Random& random, Coordinate coordinate) {
    Strip strip;
    for (std::int32_t count = random.number(3, 12); count > 0; --count) {
        strip.points.push_back({coordinate(), coordinate(), random.number(0, 65535)});
        strip.colors.push_back(random_color(random));
        for (int k = 0; k < 2; ++k) {
            strip.parameters.push_back(static_cast<float>(random.number(0, 1000)) / 1000);
        }
    }
    return strip;
}

VT_Reference<VT_Rendition> random_rendition(Random& random) {
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->face = random_face(random);
    return rendition;
}

void draw(VT_Renderer_Data& renderer, Family family, const VT_Rendition& rendition, const Strip& strip) {
    const VT_DCI_Point* points = strip.points.data();
    const VT_RGB32* colors = strip.colors.data();
    switch (family) {
    case Family::flat:
        return VD_Draw_DCI_Polytriangle(renderer, rendition, strip.count(), points);
    case Family::colorized:
        return VD_Draw_DCI_Colorized_Polytriangle(renderer, rendition, strip.count(), points, colors, false);
    case Family::gouraud:
        return VD_Draw_DCI_Gouraud_Polytriangle(renderer, rendition, strip.count(), points, colors);
    case Family::textured:
        return VD_Draw_DCI_Textured_Polytriangle(renderer, rendition, strip.count(), points, colors, strip.parameters.data(), 2,
                                                 nullptr, nullptr);
    }
}

void draw_transformed(VT_Renderer_Data& renderer, Family family, const VT_Rendition& rendition, const Strip& strip,
                      const std::vector<VT_Point_D>& points) {
    const VT_RGB32* colors = strip.colors.data();
    switch (family) {
    case Family::flat:
        return VD_Draw_3D_Polytriangle(renderer, rendition, strip.count(), points.data());
    case Family::colorized:
        return VD_Draw_3D_Colorized_Polytriangle(renderer, rendition, strip.count(), points.data(), colors, false);
    case Family::gouraud:
        return VD_Draw_3D_Gouraud_Polytriangle(renderer, rendition, strip.count(), points.data(), colors);
    case Family::textured:
        return VD_Draw_3D_Textured_Polytriangle(renderer, rendition, strip.count(), points.data(), colors,
                                                strip.parameters.data(), 2, nullptr, nullptr);
    }
}

// A renderer of a case, for the window from the origin on, with its depths cleared. Dither and patterns go by the window, so
// origins are multiples of 8 from each other.
class Window {
public:
    Window(std::size_t index, VT_Int_Pair origin, VT_Int_Pair size, const std::string& kernels)
        : setup_(setup_of_case(index, size, origin)), renderer_(setup_, kernels) {
        renderer_->current_table.find("Enable Tiling")->set(true);
        renderer_->establish();
        const VT_Reference<VT_Rendition> whole(new VT_Rendition);
        whole->window.rectangle = window_of(setup_);
        VD_Clear_Depth_Rectangle(*renderer_, *whole);
    }

    VT_Renderer_Data& operator*() { return *renderer_; }
    VT_Int_Pair origin() { return krb::renderer_of(*renderer_).window_origin; }
    // Colour and depth of a pixel by its device coordinates.
    std::uint64_t pixel(std::int32_t x, std::int32_t y) {
        const std::int32_t column = x - setup_.origin.x;
        const std::int32_t row = y - setup_.origin.y;
        const std::uint64_t depth = setup_.depth ? renderer_.depth()->pixel(column, row) : 0;
        return depth << 32 | renderer_.color().pixel(column, row);
    }

private:
    Renderer_Setup setup_;
    Test_Renderer renderer_;
};

bool exists(Family family, std::size_t index) {
    return family != Family::textured || renderer_cases[index].depth;
}

template <class Try> void for_each_member(Try&& attempt) {
    for (const std::string& kernels : available_kernel_sets()) {
        for (std::size_t index = 0; index < std::size(renderer_cases); ++index) {
            for (const Family family : families) {
                if (exists(family, index)) {
                    SCOPED_TRACE("kernel set " + kernels + ", case " + std::to_string(index) + ", family " +
                                 std::to_string(static_cast<int>(family)));
                    attempt(kernels, index, family);
                }
            }
        }
    }
}

} // namespace

TEST(Strips_anywhere, Show_in_a_window_what_a_larger_one_shows_there) {
    for_each_member([](const std::string& kernels, std::size_t index, Family family) {
        Random random(index * 10 + static_cast<std::size_t>(family));
        for (int i = 0; i < scaled(6); ++i) {
            Window small(index, {8, 16}, {40, 24}, kernels);
            Window large(index, {-152, -152}, {320, 320}, kernels);
            const auto rendition = random_rendition(random);
            const Strip strip = random_strip(random, [&] { return random.number(-152, 168); });
            draw(*small, family, *rendition, strip);
            draw(*large, family, *rendition, strip);
            for (std::int32_t y = 16; y < 40; ++y) {
                for (std::int32_t x = 8; x < 48; ++x) {
                    ASSERT_EQ(small.pixel(x, y), large.pixel(x, y)) << "strip " << i << " at " << x << ", " << y;
                }
            }
        }
    });
}

TEST(Strips_anywhere, Look_in_tiles_as_in_one_piece_and_keep_to_the_hard_clip) {
    for_each_member([](const std::string& kernels, std::size_t index, Family family) {
        Random random(index * 10 + static_cast<std::size_t>(family));
        for (int i = 0; i < scaled(3); ++i) {
            const auto rendition = random_rendition(random);
            const Strip strip = random_strip(random, [&] { return random.number(-64, 63); });
            Window whole(index, {-64, -64}, {128, 128}, kernels);
            draw(*whole, family, *rendition, strip);
            const VT_Int_Rectangle clip{random.number(-64, 0), random.number(0, 63), random.number(-64, 0), random.number(0, 63)};
            rendition->clip.hard_clip = clip;
            for (std::int32_t k = 0; k < 6; ++k) {
                const VT_Int_Pair origin{-64 + k % 3 * 48, -64 + k / 3 * 64};
                // A clip beside the tile would leave its outermost pixels.
                if (clip.left >= origin.x + 48 || clip.right < origin.x || clip.bottom >= origin.y + 64 || clip.top < origin.y) {
                    continue;
                }
                Window tile(index, origin, {48, 64}, kernels);
                const std::uint64_t untouched = renderer_cases[index].depth ? std::uint64_t{0xFFFF} << 32 : 0;
                draw_transformed(*tile, family, *rendition, strip, strip.transformed());
                EXPECT_EQ(tile.origin(), origin);
                for (std::int32_t y = origin.y; y < std::min(origin.y + 64, 64); ++y) {
                    for (std::int32_t x = origin.x; x < std::min(origin.x + 48, 64); ++x) {
                        ASSERT_EQ(tile.pixel(x, y), vorna::contains(clip, x, y) ? whole.pixel(x, y) : untouched)
                            << "strip " << i << " at " << x << ", " << y;
                    }
                }
            }
        }
    });
}

// Also of triangles that kernels cannot hold whole. Corners close to the window make their edges cross many tiles.
TEST(Strips_anywhere, Look_in_tiles_as_in_one_piece_however_large_they_are) {
    for_each_member([](const std::string& kernels, std::size_t index, Family family) {
        Random random(index * 10 + static_cast<std::size_t>(family));
        for (int i = 0; i < scaled(12); ++i) {
            const auto rendition = random_rendition(random);
            const std::int32_t far = random.one_of(std::vector<std::int32_t>{20000, 33000, 100000, 500000000});
            const bool is_wide = random.chance(60);
            Strip strip = random_strip(random, [&] { return random.number(-32, 160); });
            for (VT_DCI_Point& point : strip.points) {
                (is_wide ? point.x : point.y) += random.number(-1, 1) * random.number(0, far);
                (is_wide ? point.y : point.x) += random.chance(20) ? random.number(-far, far) : 0;
            }
            const VT_Int_Pair corner{random.one_of(std::vector<std::int32_t>{-64, 0, 16320}), random.number(-8, 0) * 8};
            for (VT_DCI_Point& point : strip.points) {
                point.x += corner.x;
            }
            rendition->clip.hard_clip = {corner.x, corner.x + 127, corner.y, corner.y + 127};
            Window whole(index, corner, {128, 128}, kernels);
            draw_transformed(*whole, family, *rendition, strip, strip.transformed());
            for (std::int32_t k = 0; k < 4; ++k) {
                const VT_Int_Pair origin{corner.x + k % 2 * 64, corner.y + k / 2 * 64};
                Window tile(index, origin, {64, 64}, kernels);
                draw_transformed(*tile, family, *rendition, strip, strip.transformed());
                for (std::int32_t p = 0; p < 64 * 64; ++p) {
                    const VT_Int_Pair at{origin.x + p % 64, origin.y + p / 64};
                    ASSERT_EQ(tile.pixel(at.x, at.y), whole.pixel(at.x, at.y)) << "strip " << i << " at " << at.x << ", " << at.y;
                }
            }
        }
    });
}

// The far edges of the last pixels of the largest windows there are.
TEST(Strips_anywhere, Fill_the_last_column_and_row_of_the_largest_windows) {
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    for (const bool is_wide : {true, false}) {
        Renderer_Setup setup;
        setup.depth = false;
        setup.size = is_wide ? VT_Int_Pair{16384, 4} : VT_Int_Pair{4, 16384};
        Test_Renderer renderer(setup);
        VT_DCI_Point points[] = {{16380, -10, 0}, {16384, -10, 0}, {16380, 20, 0}, {16384, 20, 0}};
        for (VT_DCI_Point& point : points) {
            point = is_wide ? point : VT_DCI_Point{point.y, point.x, 0};
        }
        const VT_RGB32 color{1, 2, 3, 255};
        VD_Draw_DCI_Colorized_Polytriangle(*renderer, *rendition, 4, points, &color, true);
        for (std::int32_t i = 0; i < 16; ++i) {
            const VT_Int_Pair at = is_wide ? VT_Int_Pair{16380 + i % 4, i / 4} : VT_Int_Pair{i % 4, 16380 + i / 4};
            ASSERT_EQ(renderer.color().pixel(at.x, at.y), vorna::word_of(color)) << at.x << ", " << at.y;
        }
    }
}

// Guard bytes around the buffers and the sanitizers tell whether anything goes astray.
TEST(Strips_anywhere, May_have_any_coordinates) {
    const std::int32_t coordinates[] = {INT32_MIN, -0x40000001, -40000, -16385, -16384, -1,         0,        7,
                                        39,        40,          16383,  16384,  32768,  0x40000001, INT32_MAX};
    const double far[] = {-1e300,
                          -1100585369600.5,
                          -0x40000001,
                          -20000.5,
                          -1,
                          0,
                          20,
                          39.5,
                          20000,
                          0x40000001,
                          1e12,
                          std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::quiet_NaN()};
    for_each_member([&](const std::string& kernels, std::size_t index, Family family) {
        Random random(index * 10 + static_cast<std::size_t>(family));
        for (const VT_Int_Pair origin :
             {VT_Int_Pair{0, 0}, VT_Int_Pair{INT32_MAX - 40, INT32_MIN}, VT_Int_Pair{INT32_MIN, INT32_MAX - 24}}) {
            Window window(index, origin, {40, 24}, kernels);
            const auto rendition = random_rendition(random);
            rendition->clip.hard_clip = {origin.x, origin.x + 39, origin.y, origin.y + 23};
            for (int i = 0; i < scaled(40); ++i) {
                const Strip strip = random_strip(random, [&] { return random.one_of(coordinates); });
                draw(*window, family, *rendition, strip);
                std::vector<VT_Point_D> points;
                for (std::int32_t k = 0; k < strip.count(); ++k) {
                    points.push_back({random.one_of(far), random.one_of(far), random.one_of(far)});
                }
                draw_transformed(*window, family, *rendition, strip, points);
            }
        }
        // A triangle around everything covers everything.
        Window window(index, {0, 0}, {40, 24}, kernels);
        const auto rendition = random_rendition(random);
        rendition->face.pattern = vorna::face_pattern::solid;
        rendition->face.color = {255, 255, 255, 255};
        const Strip strip{{{-2000000000, -2000000000, 9}, {2000000000, -2000000000, 9}, {0, 2000000000, 9}},
                          std::vector<VT_RGB32>(3, {255, 255, 255, 255}),
                          std::vector<VT_Parameter>(6)};
        if (family != Family::textured) {
            const std::uint64_t before = window.pixel(0, 0);
            draw(*window, family, *rendition, strip);
            for (std::int32_t x = 0; x < 40 * 24; ++x) {
                ASSERT_NE(window.pixel(x % 40, x / 40), before) << x;
            }
        }
    });
}

TEST(Strips_anywhere, Leave_the_window_where_it_was_when_drawing_fails) {
    Window window(4, {16, 24}, {40, 24}, {});
    (*window).actions.draw_dci_polytriangle.function = [](VT_Renderer_Data&, const VT_Rendition&, std::int32_t,
                                                          const VT_DCI_Point*) { throw std::runtime_error("no"); };
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    const VT_Point_D points[] = {{0, 0, 0}, {40, 0, 0}, {40, 40, 0}};
    EXPECT_THROW(VD_Draw_3D_Polytriangle(*window, *rendition, 3, points), std::runtime_error);
    EXPECT_EQ(window.origin(), (VT_Int_Pair{16, 24}));
    EXPECT_FALSE(krb::renderer_of(*window).keeps_to_hard_clip);
    EXPECT_EQ(rendition->reference_count(), 1U);
}
