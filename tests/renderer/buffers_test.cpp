// The renderer's buffers: kept, adopted or made anew; painted, cleared, written, read back and presented.
#include <cstring>

#include <gtest/gtest.h>

#include "tests/support/model/model.h"
#include "tests/support/scene.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

Renderer_Setup setup_of(std::int32_t color_system, bool depth) {
    Renderer_Setup setup;
    setup.color_system = color_system;
    setup.depth = depth;
    setup.size = {20, 12};
    setup.origin = {-7, 30};
    return setup;
}

Frame_Buffer* published_buffer(VT_Renderer_Data& renderer) {
    return renderer.current_table.find("Color Buffer")->as_object<Frame_Buffer>();
}

void fill_with_noise(Test_Renderer& renderer, model::Model& model, std::uint64_t seed) {
    Random random(seed);
    for (std::int32_t row = 0; row < model.setup.size.y; ++row) {
        for (std::int32_t column = 0; column < model.setup.size.x; ++column) {
            model.color.at(column, row) = model.setup.has_indices()
                                              ? random.byte()
                                              : vorna::word_of({random.byte(), random.byte(), random.byte(), random.byte()});
            renderer.color().set_pixel(column, row, model.color.at(column, row));
            if (renderer.depth()) {
                model.depth.at(column, row) = static_cast<std::uint32_t>(random.number(0, 65535));
                renderer.depth()->set_pixel(column, row, model.depth.at(column, row));
            }
        }
    }
}

std::vector<std::uint32_t> pixels_of(const VT_Shared_Image& image) {
    std::vector<std::uint32_t> pixels;
    for (std::int32_t row = 0; row < image.height(); ++row) {
        for (std::int32_t column = 0; column < image.width(); ++column) {
            const std::uint8_t* const at = image.row(row);
            switch (image.format()) {
            case Buffer_Format::index8:
                pixels.push_back(at[column]);
                break;
            case Buffer_Format::depth16: {
                std::uint16_t depth;
                std::memcpy(&depth, at + 2 * column, sizeof depth);
                pixels.push_back(depth);
                break;
            }
            default:
                pixels.push_back(vorna::word_of({at[4 * column], at[4 * column + 1], at[4 * column + 2], at[4 * column + 3]}));
            }
        }
    }
    return pixels;
}

void expect_equal(const Guarded_Buffer& buffer, const model::Plane& plane) {
    for (std::int32_t row = 0; row < buffer.height; ++row) {
        for (std::int32_t column = 0; column < buffer.width; ++column) {
            ASSERT_EQ(buffer.pixel(column, row), plane.at(column, row)) << "column " << column << ", row " << row;
        }
    }
}

} // namespace

TEST(Buffers, Are_kept_while_they_fit) {
    Test_Renderer renderer(setup_of(1, true));
    const auto made = [&] { return renderer.buffers().made().size(); };
    ASSERT_EQ(made(), 2U);
    EXPECT_EQ(renderer.color().format, Buffer_Format::rgb32);
    EXPECT_EQ(published_buffer(*renderer), &renderer.color());
    renderer.color().set_pixel(3, 4, 0x12345678);
    renderer.depth()->set_pixel(3, 4, 77);

    renderer->current_options.set_window_origin({100, 100}); // an origin is not a size
    renderer->establish_all();
    EXPECT_EQ(made(), 2U);
    EXPECT_EQ(renderer.color().pixel(3, 4), 0x12345678U);
    EXPECT_EQ(renderer.depth()->pixel(3, 4), 77U);

    const VT_Reference<Guarded_Buffer> old_depth(renderer.depth());
    renderer->current_options.set_window_size({21, 12});
    renderer->current_options.set_local_coordinates(true);
    renderer->establish_all();
    ASSERT_EQ(made(), 4U);
    EXPECT_EQ(renderer.color().width, 21);
    EXPECT_EQ(renderer.depth()->width, 21);
    EXPECT_EQ(published_buffer(*renderer), &renderer.color());
    EXPECT_EQ(old_depth->reference_count(), 2U); // the maker and this test
    const VT_DCI_Point corner{0, 0, 0};
    const VT_RGB32 color{1, 2, 3, 4};
    VD_Draw_DCI_Dot(*renderer, *VT_Reference<VT_Rendition>(new VT_Rendition), &corner, &color);
    EXPECT_EQ(renderer.color().pixel(0, 0), vorna::word_of(color)); // local coordinates start at the lower left pixel
    // Systems besides 0 and 1 look at the size alone, and make buffers of indices.
    renderer->current_options.set_color_system(3);
    renderer->establish_all();
    EXPECT_EQ(made(), 4U);
    renderer->current_options.set_window_size({9, 9});
    renderer->establish_all();
    EXPECT_EQ(made(), 6U);
    EXPECT_EQ(renderer.color().format, Buffer_Format::index8);
}

TEST(Buffers, Of_the_application_are_adopted_when_they_fit) {
    Test_Renderer renderer(setup_of(1, false));
    const VT_Reference<Guarded_Buffer> own(new Guarded_Buffer(20, 12, Buffer_Format::rgb32, {8, 4}));
    renderer->requested_table.find("Color Buffer")->set(VT_Pointer(VT_Reference<VT_Counted>(own)));
    renderer->establish_all();
    EXPECT_EQ(renderer.buffers().made().size(), 1U);
    EXPECT_EQ(published_buffer(*renderer), own.get());
    // The renderer let go of its own.
    EXPECT_EQ(renderer.buffers().made()[0]->reference_count(), 1U);

    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    const VT_DCI_Point corner{-7, 30, 0};
    const VT_RGB32 color{1, 2, 3, 4};
    VD_Draw_DCI_Dot(*renderer, *rendition, &corner, &color);
    EXPECT_EQ(own->pixel(0, 0), vorna::word_of(color));
    EXPECT_EQ(own->broken_guard(), "");

    const VT_Reference<Guarded_Buffer> wrong(new Guarded_Buffer(20, 12, Buffer_Format::index8, {}));
    renderer->requested_table.find("Color Buffer")->set(VT_Pointer(VT_Reference<VT_Counted>(wrong)));
    renderer->establish_all();
    EXPECT_EQ(renderer.buffers().made().size(), 2U);
    EXPECT_EQ(published_buffer(*renderer), &renderer.color());
}

// What lies between the rows belongs to the block, whether or not the colour's bytes are equal.
TEST(Buffers, Are_one_block_for_a_window_of_their_width) {
    Test_Renderer renderer(setup_of(1, false));
    const VT_Reference<Frame_Buffer> own = vorna::make_frame_buffer(20, 12, Buffer_Format::rgb32);
    renderer->requested_table.find("Color Buffer")->set(VT_Pointer(VT_Reference<VT_Counted>(own)));
    renderer->establish_all();
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->window.rectangle = {-7, 12, 30, 41};
    for (const VT_RGB32 color : {VT_RGB32{1, 2, 3, 4}, VT_RGB32{5, 5, 5, 5}}) {
        rendition->window.color = color;
        VD_Draw_Window(*renderer, *rendition);
        for (std::int32_t i = 0; i < 12 * own->bytes_per_row; i += 4) {
            ASSERT_EQ(std::memcmp(own->rows[11] + i, &color, 4), 0) << i;
        }
    }
}

// A window presents its pixels at the place that its height tells.
TEST(Buffers, Are_made_while_the_old_window_is_in_force) {
    struct Calls {
        VT_Renderer_Data* renderer = nullptr;
        std::vector<std::int32_t> presented; // rows below the window's top
    } calls;
    VT_Renderer_Data prototype;
    prototype.buffer_creation = {[](void* context, std::int32_t width, std::int32_t height, const Buffer_Format* format,
                                    VT_Reference<Frame_Buffer>& buffer) {
                                     if (VT_Renderer_Data* const renderer = static_cast<Calls*>(context)->renderer) {
                                         renderer->update_all({0, 0, 0, 0});
                                     }
                                     buffer = vorna::make_frame_buffer(width, height, *format);
                                 },
                                 &calls};
    prototype.presentation = {[](void* context, const VT_DCI_Point&, const VT_DCI_Point&, const VT_Reference<Frame_Buffer>&,
                                 std::int32_t, std::int32_t y) {
                                  static_cast<Calls*>(context)->presented.push_back(y);
                                  return 0;
                              },
                              &calls};
    prototype.current_options.set_buffer_depth(16);
    prototype.current_options.set_window_size({20, 12});
    const auto renderer = renderer_module().create_renderer(prototype);
    renderer->establish_all();
    calls.renderer = renderer.get();
    renderer->current_options.set_window_size({20, 30});
    renderer->establish_all();
    renderer->update_all({0, 0, 0, 0});
    EXPECT_EQ(calls.presented, (std::vector{11, 11, 29})); // for the colours, for the depths, and afterwards
}

TEST(Buffers, That_could_not_be_made_leave_nothing_to_draw_into) {
    for (const auto& is : renderer_cases) {
        VT_Renderer_Data prototype;
        prototype.buffer_creation.function = [](void*, std::int32_t, std::int32_t, const Buffer_Format*,
                                                VT_Reference<Frame_Buffer>& buffer) { buffer = nullptr; };
        prototype.current_options.set_color_system(is.color_system);
        prototype.current_options.set_buffer_depth(is.depth ? 16 : 0);
        prototype.current_options.set_alpha_blending(is.alpha);
        prototype.current_options.set_window_size({20, 12});
        const auto renderer = renderer_module().create_renderer(prototype);
        renderer->establish_all();
        const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
        const VT_DCI_Point points[]{{0, 0, 0}, {9, 0, 0}, {0, 9, 0}};
        const VT_RGB32 colors[]{{}, {255, 0, 0, 255}, {0, 255, 0, 255}};
        VD_Draw_DCI_Dot(*renderer, *rendition, points, nullptr);
        VD_Draw_DCI_Polytriangle(*renderer, *rendition, 3, points);
        VD_Draw_DCI_Colorized_Polytriangle(*renderer, *rendition, 3, points, colors, true);
        VD_Draw_DCI_Gouraud_Polytriangle(*renderer, *rendition, 3, points, colors);
        rendition->window.fill = 3;
        renderer->standard_observer = {[](void*, const char* name) { ADD_FAILURE() << name; }, nullptr};
        renderer->actions.draw_window.function(*renderer, *rendition);
    }
}

TEST(Buffers, Depths_are_written_from_a_source_or_with_zeros) {
    for (const std::int32_t color_system : {0, 1}) {
        const Renderer_Setup setup = setup_of(color_system, true);
        Test_Renderer renderer(setup);
        model::Model model(setup);
        fill_with_noise(renderer, model, 5);
        const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
        const auto write = [&](VT_DCI_Point top_left, VT_DCI_Point bottom_right, bool with_source) {
            const std::int32_t width = bottom_right.x - top_left.x + 1, height = top_left.y - bottom_right.y + 1;
            std::vector<std::uint16_t> depths;
            for (std::int32_t i = 0; i < width * height; ++i) {
                depths.push_back(static_cast<std::uint16_t>(i * 97));
            }
            VD_Write_Depth_Rectangle(*renderer, *rendition, &top_left, &bottom_right, width * 2,
                                     with_source ? depths.data() : nullptr);
            model.write_depth_rectangle(top_left, bottom_right, with_source ? depths : std::vector<std::uint16_t>{});
            expect_equal(*renderer.depth(), model.depth);
        };
        write({-5, 38, 0}, {3, 33, 0}, true);
        write({8, 41, 0}, {30, 30, 0}, true); // cut at the right edge of the window
        write({-7, 35, 0}, {12, 34, 0}, false);
        write({13, 35, 0}, {14, 34, 0}, true); // wholly right of the window
    }
}

TEST(Buffers, Pixels_and_depths_are_read_back_in_the_formats_that_they_have) {
    for (const std::int32_t color_system : {0, 1}) {
        const Renderer_Setup setup = setup_of(color_system, true);
        Test_Renderer renderer(setup);
        model::Model model(setup);
        fill_with_noise(renderer, model, 6);
        const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
        const VT_DCI_Point top_left{-4, 39, 0}, bottom_right{6, 32, 0};
        VT_Reference<VT_Shared_Image> image;

        const auto check = [&](const auto& read, const model::Plane& plane, std::vector<std::int32_t> accepted,
                               Buffer_Format given) {
            for (std::int32_t format = 1; format <= 9; ++format) {
                const auto asked = static_cast<Buffer_Format>(format);
                read(*renderer, *rendition, &top_left, &bottom_right, &asked, image);
                const bool is_accepted = std::find(accepted.begin(), accepted.end(), format) != accepted.end();
                ASSERT_EQ(static_cast<bool>(image), is_accepted) << "format " << format;
                if (image) {
                    EXPECT_EQ(image->format(), given);
                    EXPECT_EQ(pixels_of(*image), model.read(plane, top_left, bottom_right));
                }
            }
        };
        check(VD_Read_Depth_Image, model.depth, {3, 8}, Buffer_Format::depth16);
        if (setup.has_indices()) {
            check(VD_Read_Color_Image, model.color, {1, 8}, Buffer_Format::index8);
        } else {
            check(VD_Read_Color_Image, model.color, {2, 8, 9}, Buffer_Format::rgb32);
        }

        // An image that fits is filled again; another one is replaced.
        const Buffer_Format any = Buffer_Format::whatever_is_there;
        VD_Read_Depth_Image(*renderer, *rendition, &top_left, &bottom_right, &any, image);
        const VT_Reference<VT_Shared_Image> first = image;
        VD_Read_Depth_Image(*renderer, *rendition, &top_left, &bottom_right, &any, image);
        EXPECT_EQ(image, first);
        VD_Read_Color_Image(*renderer, *rendition, &top_left, &bottom_right, &any, image);
        EXPECT_NE(image, first);
    }
}
