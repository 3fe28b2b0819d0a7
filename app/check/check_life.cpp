// Checks that renderers release what they use.
#include <string>

#include "app/check/checks.h"
#include "app/check/heap.h"
#include "app/check/scene.h"
#include "vorna/draw.h"

namespace vorna::app::check {

namespace {

constexpr int renderer_count = 1000;

// Bytes by which the heap in use varies without leaks. A leak of one allocation for each renderer is far more.
constexpr std::size_t heap_noise = 8000;

// Creates, configures, draws with, presents and destroys one renderer. The clip region makes it keep masks.
void use_renderer(Trial& trial, int number, const VT_Reference<const VT_Palette>& palette,
                  const VT_Reference<VT_Rendition>& rendition, std::vector<VT_Reference<Guarded_Buffer>>* buffers) {
    const Configuration& configuration = configurations[static_cast<std::size_t>(number) % std::size(configurations)];
    const Window window{{20, 9}, {3, 4}, 0};
    Tried_Renderer renderer(trial, configuration, window);
    renderer->current_renderer_options_for_update().set_palette(palette);
    renderer.set_option("Use Mask", true);
    rendition->clip.hard_clip = window.area();
    const VT_DCI_Point points[] = {{4, 5, 100}, {20, 6, 200}, {9, 11, 300}};
    const VT_RGB32 colors[] = {{255, 0, 0, 255}, {0, 255, 0, 100}, {0, 0, 255, 255}};
    VD_Draw_Window(*renderer, *rendition);
    VD_Clear_Depth_Rectangle(*renderer, *rendition);
    VD_Draw_DCI_Gouraud_Polytriangle(*renderer, *rendition, 3, points, colors);
    VD_Draw_2DI_Polyline(*renderer, *rendition, 3, points);
    VD_Draw_DCI_Dot(*renderer, *rendition, points, nullptr);
    const Buffer_Format format = Buffer_Format::whatever_is_there;
    VT_Reference<VT_Shared_Image> image;
    VD_Read_Color_Image(*renderer, *rendition, &points[0], &points[0], &format, image);
    renderer->update_all(window.area());
    if (buffers) {
        *buffers = renderer.buffers().made();
    }
}

VT_Reference<VT_Rendition> rendition_with_region() {
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->clip.complex_clip = new VT_Contour_Set(std::vector<VT_Contour_Set::Contour>{{{3, 4, 0}, {20, 4, 0}, {15, 12, 0}}});
    rendition->window.rectangle = {3, 22, 4, 12};
    return rendition;
}

} // namespace

void check_references(Trial& trial) {
    const VT_Reference<const VT_Palette> palette(new VT_Palette);
    const VT_Reference<VT_Rendition> rendition = rendition_with_region();
    for (int i = 0; i < trial.scaled(renderer_count); ++i) {
        trial.at("renderer " + std::to_string(i + 1));
        std::vector<VT_Reference<Guarded_Buffer>> buffers;
        use_renderer(trial, i, palette, rendition, &buffers);
        for (const auto& buffer : buffers) {
            trial.expect(buffer->reference_count() == 1, "a renderer still holds a buffer");
        }
        trial.expect(palette->reference_count() == 1, "a renderer still holds the palette");
        trial.expect(rendition->reference_count() == 1, "a renderer still holds the rendition");
        trial.expect(rendition->clip.complex_clip->reference_count() == 1, "a renderer still holds the clip region");
    }
}

void check_heap(Trial& trial) {
    const VT_Reference<const VT_Palette> palette(new VT_Palette);
    const VT_Reference<VT_Rendition> rendition = rendition_with_region();
    const int count = trial.scaled(renderer_count);
    trial.at("before");
    for (int i = 0; i < 100; ++i) {
        use_renderer(trial, i, palette, rendition, nullptr);
    }
    trial.at(std::to_string(count) + " renderers");
    const std::size_t before = heap_in_use();
    for (int i = 0; i < count; ++i) {
        use_renderer(trial, i, palette, rendition, nullptr);
    }
    const std::size_t after = heap_in_use();
    if (after > before + heap_noise) {
        trial.fail(std::to_string(after - before) + " bytes are not freed, " +
                   std::to_string((after - before) / static_cast<std::size_t>(count)) + " for each renderer");
    }
}

// Draws many pictures, each with a new clip region and window, as a long-running application does.
void check_growth(Trial& trial) {
    const int pictures = trial.scaled(600);
    for (const Configuration& configuration : configurations) {
        trial.at(std::string(configuration.name) + ", " + std::to_string(pictures) + " pictures");
        const VT_Renderer_Data prototype;
        const auto renderer = trial.module().create_renderer(prototype);
        if (VT_Option* use_mask = renderer->requested_table.find("Use Mask")) {
            use_mask->set(true);
        }
        const auto draw_picture = [&](int number) {
            Window window{{20, 9}, {3, 4}, 0};
            window.size.x += number % 2;
            configure(renderer->current_renderer_options_for_update(), configuration, window.size, window.origin);
            renderer->establish_all();
            renderer->begin_picture_all();
            const VT_Reference<VT_Rendition> rendition = rendition_with_region();
            rendition->clip.hard_clip = window.area();
            for (const std::string_view slot :
                 {"draw_dci_polytriangle", "draw_2d_polygon", "draw_2di_polyline", "draw_dci_dot"}) {
                plain_call(slot, window).draw(*renderer, *rendition);
            }
            renderer->end_picture_all();
        };
        for (int i = 0; i < 50; ++i) {
            draw_picture(i);
        }
        const std::size_t before = heap_in_use();
        for (int i = 50; i < 50 + pictures; ++i) {
            draw_picture(i);
        }
        const std::size_t after = heap_in_use();
        if (after > before + heap_noise) {
            trial.fail("the renderer has grown by " + std::to_string(after - before) + " bytes");
        }
    }
}

} // namespace vorna::app::check
