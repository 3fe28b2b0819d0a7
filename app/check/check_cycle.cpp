// Checks of the picture cycle: painting, clearing, reading back, presenting.
#include <string>

#include "app/check/checks.h"
#include "app/check/scene.h"
#include "vorna/draw.h"

namespace vorna::app::check {

namespace {

// The contents with a rectangle filled with value(x, y).
template <class Value>
Contents filled(Contents contents, const Window& window, const VT_Int_Rectangle& rectangle, bool depths, Value value) {
    std::vector<std::uint32_t>& plane = depths ? contents.depths : contents.colors;
    for (std::size_t i = 0; i < plane.size(); ++i) {
        const std::int64_t x = window.origin.x + static_cast<std::int64_t>(i) % window.size.x;
        const std::int64_t y = window.origin.y + static_cast<std::int64_t>(i) / window.size.x;
        if (contains(rectangle, x, y)) {
            plane[i] = value(x, y);
        }
    }
    return contents;
}

void expect_contents(const Trial& trial, const Contents& expected, Tried_Renderer& renderer) {
    if (const std::string where = difference(expected, contents_of(renderer)); !where.empty()) {
        trial.fail(where);
    }
}

std::string text_of(const VT_Int_Rectangle& r) {
    return "rectangle " + std::to_string(r.left) + " " + std::to_string(r.right) + " " + std::to_string(r.bottom) + " " +
           std::to_string(r.top);
}

} // namespace

void check_window(Trial& trial) {
    const Window window;
    const VT_Int_Rectangle area = window.area();
    const VT_Int_Rectangle rectangles[] = {area,
                                           {area.left + 3, area.right - 5, area.bottom + 2, area.top - 7},
                                           {area.left, area.right, area.bottom + 4, area.bottom + 4},
                                           {area.right, area.right, area.top, area.top},
                                           {area.left - 30, area.left + 8, area.top - 8, area.top + 500},
                                           {area.left - 30, area.left - 1, area.bottom, area.top},
                                           {area.left, area.right, area.bottom - 9, area.bottom - 1}};
    for (const Configuration& configuration : configurations) {
        Tried_Renderer renderer(trial, configuration, window);
        for (const VT_Int_Rectangle& rectangle : rectangles) {
            trial.at(std::string(configuration.name) + ", " + text_of(rectangle));
            const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
            rendition->clip.hard_clip = area;
            rendition->window.rectangle = rectangle;
            rendition->window.color = {1, 2, 3, 4};
            rendition->window.index = 77;
            fill_with_noise(renderer, 3);
            const Contents expected = filled(contents_of(renderer), window, rectangle, false, [&](auto, auto) {
                return configuration.has_indices() ? 77U : vorna::word_of(rendition->window.color);
            });
            VD_Draw_Window(*renderer, *rendition);
            expect_contents(trial, expected, renderer);
        }
    }
}

void check_depth_blocks(Trial& trial) {
    const Window window;
    const VT_Int_Rectangle area = window.area();
    for (const Configuration& configuration : configurations) {
        if (!configuration.depth) {
            continue;
        }
        Tried_Renderer renderer(trial, configuration, window);
        for (const VT_Int_Rectangle& rectangle : {area,
                                                  {area.left + 3, area.right - 5, area.bottom + 2, area.top - 7},
                                                  {area.left, area.right, area.top, area.top}}) {
            const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
            rendition->clip.hard_clip = area;
            rendition->window.rectangle = rectangle;
            trial.at("clear_depth_rectangle, " + std::string(configuration.name) + ", " + text_of(rectangle));
            fill_with_noise(renderer, 4);
            Contents expected = filled(contents_of(renderer), window, rectangle, true, [](auto, auto) { return 0xFFFFU; });
            VD_Clear_Depth_Rectangle(*renderer, *rendition);
            expect_contents(trial, expected, renderer);

            trial.at("write_depth_rectangle, " + std::string(configuration.name) + ", " + text_of(rectangle));
            constexpr std::int32_t width = 100; // depths from one row of the source to the next
            std::vector<std::uint16_t> depths(static_cast<std::size_t>(width * window.size.y));
            for (std::size_t i = 0; i < depths.size(); ++i) {
                depths[i] = static_cast<std::uint16_t>(i * 97);
            }
            const VT_DCI_Point top_left{rectangle.left, rectangle.top, 0}, bottom_right{rectangle.right, rectangle.bottom, 0};
            expected = filled(expected, window, rectangle, true, [&](std::int64_t x, std::int64_t y) -> std::uint32_t {
                return depths[static_cast<std::size_t>((rectangle.top - y) * width + x - rectangle.left)];
            });
            VD_Write_Depth_Rectangle(*renderer, *rendition, &top_left, &bottom_right, 2 * width, depths.data());
            expect_contents(trial, expected, renderer);
        }
    }
}

namespace {

// The bytes of the image that reading back this rectangle returns.
std::vector<std::uint8_t> bytes_of(const std::vector<std::uint32_t>& plane, const Window& window, const VT_Int_Rectangle& area,
                                   int pixel_bytes) {
    std::vector<std::uint8_t> bytes;
    for (std::int32_t y = area.top; y >= area.bottom; --y) {
        for (std::int32_t x = area.left; x <= area.right; ++x) {
            const std::uint32_t pixel =
                plane[static_cast<std::size_t>((y - window.origin.y) * window.size.x + x - window.origin.x)];
            for (int i = 0; i < pixel_bytes; ++i) {
                bytes.push_back(static_cast<std::uint8_t>(pixel >> 8 * i));
            }
        }
    }
    return bytes;
}

} // namespace

void check_read_back(Trial& trial) {
    const Window window;
    const VT_Int_Rectangle area = window.area();
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    for (const Configuration& configuration : configurations) {
        Tried_Renderer renderer(trial, configuration, window);
        fill_with_noise(renderer, 5);
        const Contents contents = contents_of(renderer);
        const auto look = [&](const char* slot, const auto& read, const std::vector<std::uint32_t>& plane, Buffer_Format own,
                              int pixel_bytes) {
            VT_Reference<VT_Shared_Image> image; // reused where it fits
            for (const VT_Int_Rectangle& part : {area, {area.left + 3, area.right - 5, area.bottom + 2, area.top - 7}}) {
                for (const Buffer_Format format : {own, Buffer_Format::whatever_is_there}) {
                    trial.at(std::string(slot) + ", " + std::string(configuration.name) + ", " + text_of(part));
                    const VT_DCI_Point top_left{part.left, part.top, 0}, bottom_right{part.right, part.bottom, 0};
                    read(*renderer, *rendition, &top_left, &bottom_right, &format, image);
                    trial.expect(static_cast<bool>(image), "no image was returned");
                    const std::int32_t width = part.right - part.left + 1, height = part.top - part.bottom + 1;
                    trial.expect(image->width() == width && image->height() == height, "an image of another size");
                    trial.expect(image->format() == own, "an image of another format");
                    std::vector<std::uint8_t> found;
                    for (std::int32_t row = 0; row < height; ++row) {
                        const std::uint8_t* const start = image->row(image->bottom_up() ? height - 1 - row : row);
                        found.insert(found.end(), start, start + width * pixel_bytes);
                    }
                    trial.expect(found == bytes_of(plane, window, part, pixel_bytes),
                                 "the image's pixels differ from the buffer's");
                }
            }
            // A format that differs from the buffer's.
            const Buffer_Format other = own == Buffer_Format::depth16 ? Buffer_Format::rgb32 : Buffer_Format::depth16;
            const VT_DCI_Point corner{area.left, area.top, 0};
            read(*renderer, *rendition, &corner, &corner, &other, image);
            trial.expect(!image, "an image was returned although the buffer cannot be read in the format");
        };
        look("read_color_image", VD_Read_Color_Image, contents.colors, renderer.color().format,
             configuration.has_indices() ? 1 : 4);
        if (configuration.depth) {
            look("read_depth_image", VD_Read_Depth_Image, contents.depths, Buffer_Format::depth16, 2);
        }
    }
}

// With the origin at 0, device and window coordinates differ only in the direction of y.
void check_update(Trial& trial) {
    struct Presented {
        int calls = 0;
        VT_DCI_Point top_left, bottom_right;
        const Frame_Buffer* buffer = nullptr;
        std::int32_t x = 0, y = 0;
    };
    Window window;
    window.origin = {0, 0};
    for (const Configuration& configuration : configurations) {
        trial.at(std::string(configuration.name));
        Tried_Renderer renderer(trial, configuration, window);
        Presented presented;
        renderer->presentation.context = &presented;
        renderer->presentation.function = [](void* context, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                                             const VT_Reference<Frame_Buffer>& buffer, std::int32_t x, std::int32_t y) {
            auto& seen = *static_cast<Presented*>(context);
            seen = {seen.calls + 1, top_left, bottom_right, buffer.get(), x, y};
            return 42;
        };
        const VT_Int_Rectangle rectangle{5, 20, 7, 30};
        const std::int32_t result = renderer->update_all(rectangle);
        trial.expect(presented.calls == 1, "the presentation was not called once");
        trial.expect(result == 42, "the presentation's result is not returned");
        trial.expect(presented.buffer == &renderer.color(), "a buffer other than the colour buffer was presented");
        trial.expect(presented.top_left.x == 5 && presented.top_left.y == 30 && presented.bottom_right.x == 20 &&
                         presented.bottom_right.y == 7,
                     "the presented corners are not the rectangle's top left and bottom right");
        trial.expect(presented.x == 5 && presented.y == window.size.y - 30 - 1,
                     "the destination is not the rectangle's place in a window whose rows run downwards");
    }
}

void check_pictures(Trial& trial) {
    for (const Configuration& configuration : configurations) {
        trial.at(std::string(configuration.name));
        Tried_Renderer renderer(trial, configuration);
        fill_with_noise(renderer, 6);
        const Contents before = contents_of(renderer);
        renderer->end_picture_all();
        renderer->update_all(Window().area());
        renderer->begin_picture_all();
        expect_contents(trial, before, renderer);
    }
}

} // namespace vorna::app::check
