// Canvases as applications use them.
#include <array>
#include <functional>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/check/random.h"
#include "tests/support/test_renderer.h"
#include "vorna/canvas.h"

namespace {

using testing::ElementsAre;

template <class Call> std::string complaint_of(Call call) {
    try {
        call();
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "none";
}

// The lower left of 3 x 2 pixels is drawn, so that rows, columns and channels can be told apart.
void expect_read_back(bool indexed) {
    vorna::Canvas canvas(renderer_module(), {.size = {3, 2}, .indexed = indexed, .depth_buffer = true});
    const VT_RGB32 white = vorna::rgb(255, 255, 255), orange = vorna::rgb(255, 153, 51);
    canvas.begin_picture(white);
    canvas.set_color(orange);
    VD_Draw_DCI_Dot(canvas, {0, 0, 7});
    VD_Draw_2DI_Polymarker(canvas, std::vector<VT_DCI_Point>{{2, 1, 9}, {1, 500, 9}});
    canvas.end_picture();
    EXPECT_THAT(canvas.read_pixels(), ElementsAre(white, white, orange, orange, white, white)) << indexed;
    EXPECT_THAT(canvas.read_depths(), ElementsAre(65535, 65535, 9, 7, 65535, 65535)) << indexed;
}

TEST(Canvas, reads_back_what_was_drawn) {
    expect_read_back(false);
    expect_read_back(true);
}

TEST(Canvas, draws_in_its_own_colour_or_in_a_given_one) {
    vorna::Canvas canvas(renderer_module(), {.size = {5, 5}});
    const VT_RGB32 white = vorna::rgb(255, 255, 255), red = vorna::rgb(200, 0, 0), blue = vorna::rgb(0, 0, 200);
    canvas.begin_picture(white);
    canvas.set_color(red);
    VD_Draw_DCI_Ellipse(canvas, {2, 2}, {2, 2});
    VD_Draw_2D_Polygon(canvas, std::vector<VT_Point>{{3, 3}, {5, 3}, {5, 5}, {3, 5}}, blue);
    VD_Draw_2DI_Colorized_Polyline(canvas, std::vector<VT_DCI_Point>{{0, 0}, {4, 0}}, blue);
    const std::vector<VT_RGB32> pixels = canvas.read_pixels();
    EXPECT_THAT(std::vector(pixels.begin(), pixels.begin() + 5), ElementsAre(white, red, red, blue, blue));
    EXPECT_THAT(std::vector(pixels.begin() + 10, pixels.begin() + 15), ElementsAre(red, red, red, red, red));
    EXPECT_THAT(std::vector(pixels.begin() + 20, pixels.end()), ElementsAre(blue, blue, blue, blue, blue));
}

TEST(Canvas, steers_depth_and_presents_the_window_and_parts_of_it) {
    vorna::Canvas canvas(renderer_module(), {.size = {4, 4}, .depth_buffer = true});
    std::vector<std::array<std::int32_t, 6>> shown;
    canvas.on_present([&](const vorna::Presentation& p) {
        EXPECT_EQ(&p.buffer, &canvas.color_buffer());
        shown.push_back({p.area.left, p.area.right, p.area.bottom, p.area.top, p.destination.x, p.destination.y});
    });
    canvas.begin_picture(vorna::rgb(0, 0, 0));
    canvas.set_depth_test(vorna::Depth_Test::farther);
    VD_Draw_DCI_Dot(canvas, {0, 3, 5}, vorna::rgb(1, 2, 3)); // nothing is farther than empty
    canvas.set_depth_test(vorna::Depth_Test::nearer);
    canvas.set_depth_write(false);
    VD_Draw_DCI_Dot(canvas, {1, 3, 5}, vorna::rgb(4, 5, 6));
    canvas.end_picture();
    canvas.present({1, 2, 0, 1});
    EXPECT_THAT(shown, ElementsAre(std::array{0, 3, 0, 3, 0, 0}, std::array{1, 2, 0, 1, 1, 2}));
    const std::vector<VT_RGB32> pixels = canvas.read_pixels();
    EXPECT_EQ(pixels[0], vorna::rgb(0, 0, 0));
    EXPECT_EQ(pixels[1], vorna::rgb(4, 5, 6));
    EXPECT_EQ(canvas.read_depths()[1], 65535);
}

// Buffers of an application's own.
struct Own_Buffers {
    std::function<VT_Reference<Frame_Buffer>(VT_Int_Pair size, Buffer_Format format)> make;

    VT_Buffer_Creation callback() {
        return {[](void* context, std::int32_t width, std::int32_t height, const Buffer_Format* format,
                   VT_Reference<Frame_Buffer>& buffer) {
                    buffer = static_cast<Own_Buffers*>(context)->make({width, height}, *format);
                },
                this};
    }
};

TEST(Canvas, keeps_picture_and_window_when_it_cannot_be_established) {
    constexpr VT_Int_Pair larger{9, 7};
    vorna::Canvas canvas(renderer_module(), {.size = {8, 6}, .depth_buffer = true});
    canvas.set_option("Use Mask", true); // in force with the next establish that succeeds
    const auto use_mask = [&] { return canvas.renderer().current_table.find("Use Mask")->as_bool(); };
    const auto draw = [&](std::int32_t at) { VD_Draw_DCI_Dot(canvas, {at % 8, 5 - at / 8, 40}, vorna::rgb(1, 2, 3)); };
    canvas.begin_picture(vorna::rgb(9, 9, 9));
    draw(0);
    const Frame_Buffer* const buffer = &canvas.color_buffer();
    std::int32_t tries = 0;
    const auto expect_unchanged = [&](const char* why) {
        EXPECT_EQ(canvas.window(), (VT_Int_Rectangle{0, 7, 0, 5})) << why;
        EXPECT_EQ(&canvas.color_buffer(), buffer) << why;
        EXPECT_FALSE(use_mask()) << why;
        draw(++tries);
        EXPECT_EQ(canvas.read_pixels()[static_cast<std::size_t>(tries)], vorna::rgb(1, 2, 3)) << why;
        EXPECT_THAT(canvas.read_pixels(), testing::Contains(vorna::rgb(1, 2, 3)).Times(static_cast<std::size_t>(tries) + 1))
            << why;
        EXPECT_THAT(canvas.read_depths(), testing::Contains(40).Times(static_cast<std::size_t>(tries) + 1)) << why;
    };

    canvas.options().set_window_size({20000, 30});
    expect_unchanged("establish is missing");
    EXPECT_EQ(complaint_of([&] { canvas.establish(); }), "a window has 1 to 16384 columns and rows, not 20000 x 30");
    expect_unchanged("too wide");
    canvas.options().set_window_size(larger);
    canvas.options().set_window_origin({(1 << 30) - 8, -5});
    EXPECT_EQ(complaint_of([&] { canvas.establish(); }), "a window lies between -2^30 and 2^30, not at (1073741816, -5)");
    canvas.options().set_window_origin({3, -(1 << 30) - 1});
    EXPECT_EQ(complaint_of([&] { canvas.establish(); }), "a window lies between -2^30 and 2^30, not at (3, -1073741825)");
    canvas.options().set_window_origin({});
    expect_unchanged("too far");

    const VT_Buffer_Creation own = canvas.renderer().buffer_creation;
    const auto expect_failure = [&](const char* why, Buffer_Format of, std::function<void(VT_Reference<Frame_Buffer>&)> spoil) {
        Own_Buffers buffers{[&](VT_Int_Pair size, Buffer_Format format) {
            VT_Reference<Frame_Buffer> made = vorna::make_frame_buffer(size.x, size.y, format);
            if (format == of) {
                spoil(made);
            }
            return made;
        }};
        canvas.renderer().buffer_creation = buffers.callback();
        EXPECT_THROW(canvas.establish(), std::exception) << why;
        EXPECT_EQ(canvas.renderer().buffer_creation.context, &buffers) << why;
        expect_unchanged(why);
    };
    constexpr Buffer_Format depth = Buffer_Format::depth16;
    expect_failure("no memory for depths", depth, [](auto&) { throw std::bad_alloc(); });
    expect_failure("no depths", depth, [](auto& made) { made = nullptr; });
    expect_failure("other format", depth, [](auto& made) { made = vorna::make_frame_buffer(9, 7, Buffer_Format::rgb32); });
    expect_failure("rows overlap", Buffer_Format::rgb32, [](auto& made) { made->bytes_per_row = 35; });
    std::vector<std::uint8_t*> rows;
    expect_failure("rows upside down", Buffer_Format::rgb32, [&](auto& made) {
        rows.assign(made->rows, made->rows + made->height);
        std::reverse(rows.begin(), rows.end());
        made->rows = rows.data();
    });
    canvas.renderer().buffer_creation = own;
    canvas.establish();
    EXPECT_EQ(canvas.window(), (VT_Int_Rectangle{0, 8, 0, 6}));
    EXPECT_TRUE(use_mask());
    EXPECT_EQ(canvas.read_depths(), std::vector<std::uint16_t>(63));

    const VT_Reference<Frame_Buffer> upside_down = vorna::make_frame_buffer(9, 7, Buffer_Format::rgb32);
    rows.assign(upside_down->rows, upside_down->rows + 7);
    std::reverse(rows.begin(), rows.end());
    upside_down->rows = rows.data();
    canvas.set_option("Color Buffer", VT_Pointer(VT_Reference<VT_Counted>(upside_down)));
    EXPECT_EQ(complaint_of([&] { canvas.establish(); }),
              "a buffer of format 2 and 9 x 7 pixels was expected, with bytes_per_row of 36 or more and rows[r + 1] = rows[r] - "
              "bytes_per_row");
}

TEST(Canvas, moves_with_what_it_shows) {
    vorna::Module loaded(KRB_MODULE);
    vorna::Module module = std::move(loaded);
    std::vector<vorna::Canvas> canvases;
    std::vector<std::int32_t> widths;
    for (std::int32_t width = 1; width <= 3; ++width) {
        canvases.emplace_back(module, vorna::Canvas_Settings{.size = {width, 1}});
        canvases.back().on_present(
            [&widths, width](const vorna::Presentation& shown) { widths.push_back(10 * width + shown.buffer.width); });
    }
    canvases[0] = std::move(canvases[2]);
    canvases.pop_back();
    for (vorna::Canvas& canvas : canvases) {
        canvas.begin_picture(vorna::rgb(0, 0, 0));
        canvas.end_picture();
    }
    EXPECT_THAT(widths, ElementsAre(33, 22));
}

TEST(Canvas, draws_ellipses_around_device_coordinates_in_a_colour) {
    vorna::Canvas canvas(renderer_module());
    canvas.options().set_window_size({5, 3});
    canvas.options().set_window_origin({100, -7});
    canvas.establish();
    const VT_RGB32 white = vorna::rgb(255, 255, 255), red = vorna::rgb(200, 0, 0), blue = vorna::rgb(0, 0, 200);
    canvas.begin_picture(white);
    canvas.set_color(blue);
    VD_Draw_DCI_Ellipse(canvas, {103, -6}, {1, 1}, red);
    VD_Draw_DCI_Elliptical_Arc(canvas, {103, -6}, {1, 1}, 0, 0.1);
    EXPECT_THAT(canvas.read_pixels(),
                ElementsAre(white, white, red, red, red, white, white, red, red, blue, white, white, red, red, red));
}

TEST(Canvas, takes_rows_of_pixels_that_are_all_there) {
    vorna::Canvas canvas(renderer_module(), {.size = {3, 2}, .depth_buffer = true});
    const VT_RGB32 o = vorna::rgb(0, 0, 0);
    std::vector<VT_RGB32> image(10); // three columns and two rows, seven pixels apart
    for (std::size_t i = 0; i < image.size(); ++i) {
        image[i] = vorna::rgb(static_cast<std::uint8_t>(i), 0, 0);
    }
    canvas.begin_picture(o);
    VD_Draw_DCI_RGB32_Image(canvas, {1, 2, 8}, {image, {3, 2}, 7}); // its upper row and right column stay out
    EXPECT_THAT(canvas.read_pixels(), ElementsAre(o, image[7], image[8], o, o, o));
    EXPECT_THAT(canvas.read_depths(), ElementsAre(65535, 8, 8, 65535, 65535, 65535));
    const std::vector<std::uint16_t> depths{1, 2, 3};
    VD_Write_Depth_Rectangle(canvas, {0, 0}, {depths, {3, 1}});
    EXPECT_THAT(canvas.read_depths(), ElementsAre(65535, 8, 8, 1, 2, 3));
    const VT_Reference<VT_Shared_Image> read = VD_Read_Color_Image(canvas, {1, 2, 1, 1});
    EXPECT_EQ(read->row(0)[2], 7);

    const auto draw = [&](VT_Int_Pair size, std::int32_t stride) {
        return complaint_of([&] { VD_Draw_DCI_RGB32_Image(canvas, {}, {image, size, stride}); });
    };
    EXPECT_EQ(draw({4, 2}, 7), "11 pixels are needed, not 10");
    EXPECT_EQ(draw({3, 2}, 2), "a stride of 3 to 536870911 pixels was expected, not 2");
    EXPECT_EQ(draw({3, -1}, 0), "an image has 0 or more columns and rows, not 3 x -1");
    EXPECT_EQ(draw({INT32_MAX / 4, INT32_MAX}, 0), "1152921501922492417 pixels are needed, not 10");
    EXPECT_EQ(complaint_of([&] {
                  canvas.read_depth_image({0, 2, -1, 1});
              }),
              "an area inside the window, (0, 0) to (2, 1), was expected, not (0, -1) to (2, 1)");
    std::uint8_t pixel[4] = {};
    const VT_Reference<VT_Shared_Image> overlapping(
        new VT_Shared_Image(3, 2, Buffer_Format::presentation_rgb32, 0, pixel, false, false));
    EXPECT_EQ(complaint_of([&] { VD_Draw_DCI_Image(canvas, {}, *overlapping); }),
              "an image of 3 x 2 pixels needs rows of 12 bytes, not 0");
}

TEST(Canvas, never_leaves_its_buffers) {
    constexpr VT_Int_Rectangle window{-20, 11, 7, 30};
    constexpr std::int32_t places[] = {INT32_MIN, -1 << 30, -21, -20, -19, -1, 0, 6, 7, 8, 11, 12, 30, 31, 1 << 30, INT32_MAX};
    constexpr std::int32_t lengths[] = {0, 1, 2, 31, 32, 33, 40};
    vorna::app::check::Random random(1);
    const std::vector<VT_RGB32> colors(std::size_t{40} * 40);
    const std::vector<std::uint8_t> indices(colors.size());
    const std::vector<std::uint16_t> depths(colors.size());
    for (const bool indexed : {false, true}) {
        vorna::app::check::Buffer_Maker buffers(
            [](Buffer_Format) {
                return Buffer_Layout{8, 24};
            },
            vorna::app::check::Guard_Access::trapped);
        vorna::Canvas canvas(renderer_module());
        canvas.options().set_window_size({32, 24});
        canvas.options().set_window_origin({window.left, window.bottom});
        canvas.options().set_color_system(indexed ? 0 : 1);
        canvas.options().set_buffer_depth(16);
        canvas.renderer().buffer_creation = buffers.callback();
        canvas.establish();
        canvas.on_present([&](const vorna::Presentation& shown) {
            EXPECT_EQ(vorna::common_part(shown.area, window), shown.area);
            EXPECT_EQ(shown.destination, (VT_Int_Pair{shown.area.left + 20, 30 - shown.area.top}));
        });
        const auto place = [&] { return random.one_of(places); };
        const auto rectangle = [&]() -> VT_Int_Rectangle { return {place(), place(), place(), place()}; };
        for (int i = 0; i < scaled(2000); ++i) {
            const VT_DCI_Point at{place(), place(), place()};
            const VT_Int_Pair size{random.one_of(lengths), random.one_of(lengths)};
            canvas.rendition().clip.hard_clip = random.chance(50) ? window : rectangle();
            canvas.rendition().window.rectangle = rectangle();
            VD_Draw_DCI_Index8_Image(canvas, at, {indices, size});
            VD_Draw_DCI_RGB32_Image(canvas, at, {colors, size});
            VD_Write_Depth_Rectangle(canvas, at, {depths, size});
            VD_Draw_Window(canvas);
            VD_Clear_Depth_Rectangle(canvas);
            const VT_Int_Rectangle area = rectangle();
            canvas.present(area);
            try {
                EXPECT_TRUE(VD_Read_Color_Image(canvas, area));
                EXPECT_TRUE(canvas.read_depth_image(area));
            } catch (const std::invalid_argument&) {
                EXPECT_TRUE(vorna::is_empty(area) || vorna::common_part(area, window) != area);
            }
        }
        for (const auto& buffer : buffers.made()) {
            buffer->renew_padding();
            EXPECT_EQ(buffer->broken_guard(), "") << indexed;
        }
    }
}

// What docs/embedding.md says of depth and clip regions. W: writes depths although writing is off; L: the last point only. T:
// tests for nearer or equal whatever was asked for. R: ignores a region that excludes everything; G: with one that excludes
// nothing, writes depths although writing is off. By pixels: indices, colours, blended colours; the same with a depth buffer.
TEST(Canvas, heeds_depth_and_regions_where_the_page_says_so) {
    struct Row {
        const char* name;
        void (*draw)(vorna::Canvas&, VT_RGB32);
        std::array<const char*, 6> exceptions;
    };
    static const std::vector<VT_DCI_Point> points{{4, 4, 9}, {24, 6, 9}, {8, 24, 9}};
    static const std::vector<VT_Parameter> parameters{0, 0, 1, 0, 0, 1};
    static const std::vector<VT_RGB32> colors(100, vorna::rgb(200, 40, 40, 128));
    static const std::vector<std::uint8_t> indices(100, 30);
    static const std::vector<std::uint16_t> depths(100, 9);
    const Row rows[] = {
        {"2DI polyline", [](auto& c, auto) { VD_Draw_2DI_Polyline(c, points); }, {"", "", "", "WT", "LG", "LG"}},
        {"2DI colorized polyline",
         [](auto& c, auto color) { VD_Draw_2DI_Colorized_Polyline(c, points, color); },
         {"R", "", "", "WT", "LG", "LG"}},
        {"2DI Gouraud polyline",
         [](auto& c, auto) { VD_Draw_2DI_Gouraud_Polyline(c, points, colors); },
         {"", "", "", "WT", "WT", "WT"}},
        {"DCI colorized polyline",
         [](auto& c, auto color) { VD_Draw_DCI_Colorized_Polyline(c, points, color); },
         {"R", "", "", "WT", "LG", "LG"}},
        {"DCI Gouraud polyline",
         [](auto& c, auto) { VD_Draw_DCI_Gouraud_Polyline(c, points, colors); },
         {"", "", "", "WT", "WT", "WT"}},
        {"2DI polytriangle", [](auto& c, auto) { VD_Draw_2DI_Polytriangle(c, points); }, {"", "", "", "WT", "", "TR"}},
        {"2DI colorized polytriangle",
         [](auto& c, auto color) { VD_Draw_2DI_Colorized_Polytriangle(c, points, color); },
         {"", "", "", "WT", "", "TR"}},
        {"DCI colorized polytriangle",
         [](auto& c, auto color) { VD_Draw_DCI_Colorized_Polytriangle(c, points, color); },
         {"", "", "", "WT", "", "TR"}},
        {"DCI Gouraud polytriangle",
         [](auto& c, auto) { VD_Draw_DCI_Gouraud_Polytriangle(c, points, colors); },
         {"", "", "", "WT", "", "T"}},
        {"DCI textured polytriangle",
         [](auto& c, auto) { VD_Draw_DCI_Textured_Polytriangle(c, points, colors, parameters); },
         {"", "", "", "WT", "", ""}},
        {"DCI polygon", [](auto& c, auto color) { VD_Draw_DCI_Polygon(c, points, color); }, {"", "", "", "WT", "", "TR"}},
        {"2DI polymarker", [](auto& c, auto) { VD_Draw_2DI_Polymarker(c, points); }, {"", "", "", "WT", "R", "R"}},
        {"2DI colorized polymarker",
         [](auto& c, auto color) { VD_Draw_2DI_Colorized_Polymarker(c, points, color); },
         {"", "", "", "WT", "", ""}},
        {"dot",
         [](auto& c, auto color) { VD_Draw_DCI_Dot(c, points[0], color), VD_Draw_DCI_Dot(c, points[1], color); },
         {"", "", "", "WT", "", ""}},
        {"index image",
         [](auto& c, auto) {
             VD_Draw_DCI_Index8_Image(c, {9, 19, 9}, {indices, {10, 10}});
         },
         {"", "", "", "WT", "WT", "WT"}},
        {"colour image",
         [](auto& c, auto) {
             VD_Draw_DCI_RGB32_Image(c, {9, 19, 9}, {colors, {10, 10}});
         },
         {"", "", "", "WT", "WT", "WT"}},
        {"depths",
         [](auto& c, auto) {
             VD_Write_Depth_Rectangle(c, {9, 19, 9}, {depths, {10, 10}});
         },
         {"", "", "", "WR", "WR", "WR"}},
        {"window", [](auto& c, auto) { VD_Draw_Window(c); }, {"R", "R", "R", "TR", "TR", "TR"}},
    };
    constexpr VT_Int_Rectangle window{0, 31, 0, 31};
    const auto region = [](float left) {
        return VT_Reference<VT_Contour_Set>(
            new VT_Contour_Set(std::vector<VT_Contour_Set::Contour>{{{left, -1}, {left + 40, -1}, {left + 40, 40}, {left, 40}}}));
    };
    const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
    const VT_Reference<VT_Shared_Image> texture(new VT_Shared_Image(2, 2, Buffer_Format::rgb32, 8, nullptr, false, false));
    std::memset(texture->row(0), 255, 16);
    material->texture = texture;
    for (std::size_t i = 0; i < std::size(renderer_cases); ++i) {
        const bool indexed = renderer_cases[i].color_system == 0, depth = renderer_cases[i].depth;
        vorna::Canvas canvas(renderer_module(), {.size = {32, 32},
                                                 .indexed = indexed,
                                                 .depth_buffer = depth,
                                                 .alpha_blending = renderer_cases[i].alpha,
                                                 .clip_regions = true});
        canvas.set_color(colors[0]);
        canvas.rendition().face.material = material;
        canvas.rendition().window = {window, vorna::face_pattern::solid, vorna::rgb(1, 2, 3), 7};
        const Row* row = nullptr;
        // The pixels that the call changes, and the depths.
        const auto changes = [&](bool writes, vorna::Depth_Test test, const VT_Reference<VT_Contour_Set>& clip) {
            canvas.rendition().clip.complex_clip = nullptr;
            canvas.begin_picture(vorna::rgb(255, 255, 255));
            canvas.rendition().clip.complex_clip = clip;
            canvas.set_depth_write(writes);
            canvas.set_depth_test(test);
            row->draw(canvas, colors[0]);
            const std::vector<VT_RGB32> pixels = canvas.read_pixels();
            const std::vector<std::uint16_t> stored = depth ? canvas.read_depths() : std::vector<std::uint16_t>();
            return std::pair(
                std::count_if(pixels.begin(), pixels.end(), [](VT_RGB32 p) { return p != vorna::rgb(255, 255, 255); }),
                std::count_if(stored.begin(), stored.end(), [](std::uint16_t z) { return z != 0xFFFF; }));
        };
        for (const Row& each : rows) {
            row = &each;
            using enum vorna::Depth_Test;
            std::string found;
            const auto unwritten = changes(false, nearer_or_equal, nullptr).second;
            found += unwritten > 1 && changes(true, nearer_or_equal, nullptr).second > 1 ? "W" : unwritten == 1 ? "L" : "";
            found += depth && changes(true, farther, nullptr).first > 1 ? "T" : "";
            found += changes(true, nearer_or_equal, region(50)) != std::pair<std::ptrdiff_t, std::ptrdiff_t>() ? "R" : "";
            found += changes(false, nearer_or_equal, region(-1)).second > 1 && unwritten <= 1 ? "G" : "";
            EXPECT_EQ(found, row->exceptions[i]) << row->name << ", case " << i;
        }
    }
}

TEST(Canvas, refuses_what_cannot_be_and_stays_usable) {
    vorna::Canvas canvas(renderer_module(), {.size = {4, 4}});
    EXPECT_EQ(complaint_of([&] { canvas.set_option("Use Masks", true); }), "Use Masks: the renderer has no such option");
    EXPECT_EQ(complaint_of([&] { canvas.set_option("Use Mask", 1); }), "Use Mask: expected true or false");
    EXPECT_THROW(canvas.read_depths(), std::runtime_error);

    const std::vector<VT_Point> points(4);
    const std::vector<VT_RGB32> colors(2);
    VD_Draw_2D_Colorized_Polytriangle(canvas, points, colors); // just enough
    EXPECT_EQ(complaint_of([&] { VD_Draw_2D_Colorized_Polyline(canvas, points, colors); }), "3 colours are needed, not 2");
    EXPECT_EQ(complaint_of([&] { VD_Draw_2D_Colorized_Polymarker(canvas, points, colors); }), "4 colours are needed, not 2");
    EXPECT_EQ(complaint_of([&] { VD_Draw_2D_Gouraud_Polyline(canvas, points, colors); }), "4 colours are needed, not 2");
    const std::vector<VT_RGB32> enough(4);
    const std::vector<VT_Parameter> parameters(7);
    EXPECT_EQ(complaint_of([&] { VD_Draw_2D_Textured_Polytriangle(canvas, points, enough, parameters); }),
              "8 texture parameters are needed, not 7");
}

} // namespace
