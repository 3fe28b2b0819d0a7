// Checks of single calls.
#include <string>

#include "app/check/checks.h"
#include "app/check/scene.h"
#include "vorna/draw.h"

namespace vorna::app::check {

void check_slot_calls(Trial& trial) {
    const Window window;
    for (const Configuration& configuration : configurations) {
        Tried_Renderer renderer(trial, configuration, window);
        clear(renderer);
        for (const std::string_view slot : slot_names()) {
            trial.at(place_of(slot, configuration));
            plain_call(slot, window).draw_with(*renderer);
        }
        const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
        rendition->clip.hard_clip = window.area();
        const VT_DCI_Point point{window.origin.x, window.origin.y, 0};
        const VT_RGB32 color;
        trial.at(std::string(configuration.name) + ", calls without points or with one");
        for (const std::int32_t count : {0, 1}) {
            VD_Draw_DCI_Polyline(*renderer, *rendition, count, &point);
            VD_Draw_2DI_Colorized_Polyline(*renderer, *rendition, count, &point, &color, true);
            VD_Draw_DCI_Polytriangle(*renderer, *rendition, count, &point);
            VD_Draw_DCI_Gouraud_Polytriangle(*renderer, *rendition, count, &point, &color);
            VD_Draw_DCI_Polygon(*renderer, *rendition, count, &point, &color);
            VD_Draw_2DI_Polymarker(*renderer, *rendition, count, &point);
        }
        VD_Draw_DCI_Image(*renderer, *rendition, &point, nullptr);
    }
}

// The callback returns no buffers, as it does for a window without pixels.
void check_calls_without_buffers(Trial& trial) {
    const Window window;
    for (const Configuration& configuration : configurations) {
        VT_Renderer_Data prototype;
        prototype.buffer_creation.function = [](void*, std::int32_t, std::int32_t, const Buffer_Format*,
                                                VT_Reference<Frame_Buffer>& buffer) { buffer = nullptr; };
        configure(prototype.current_options, configuration, window.size, window.origin);
        const auto renderer = trial.module().create_renderer(prototype);
        renderer->establish_all();
        for (const std::string_view slot : slot_names()) {
            trial.at(place_of(slot, configuration));
            plain_call(slot, window).draw_with(*renderer);
        }
    }
}

void check_depth_setters(Trial& trial) {
    const Window window;
    const VT_DCI_Point place{window.origin.x + 5, window.origin.y + 6, 0};
    for (const Configuration& configuration : configurations) {
        if (!configuration.depth || configuration.has_indices()) {
            continue;
        }
        Tried_Renderer renderer(trial, configuration, window);
        if (renderer->declared_options.buffer_depth() < 1) {
            continue;
        }
        trial.at(std::string(configuration.name));
        const auto set_write = renderer->current_table.find("ZBuffer Write")->as_setter<VT_Bool_Setter>();
        const auto set_test = renderer->current_table.find("ZBuffer Test")->as_setter<VT_Int_Setter>();
        trial.expect(set_write && set_test, "establish_all removed the setters");
        // The stored depth after a dot is drawn on a depth of 1000.
        const auto depth_after = [&](std::int32_t z, bool write, std::int32_t test) {
            set_write(*renderer, write);
            trial.expect(set_test(*renderer, &test) == test,
                         "the setter of \"ZBuffer Test\" does not return the value that was passed to it");
            renderer.depth()->set_pixel(5, 6, 1000);
            const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
            rendition->clip.hard_clip = window.area();
            const VT_DCI_Point point{place.x, place.y, z};
            VD_Draw_DCI_Dot(*renderer, *rendition, &point, nullptr);
            return renderer.depth()->pixel(5, 6);
        };
        constexpr std::int32_t less = 1, less_or_equal = 2, greater = 5;
        trial.expect(depth_after(999, true, less_or_equal) == 999, "a nearer dot does not pass the usual test");
        trial.expect(depth_after(1001, true, less_or_equal) == 1000, "a farther dot passes the usual test");
        trial.expect(depth_after(999, false, less_or_equal) == 1000, "depths are written although \"ZBuffer Write\" is off");
        trial.expect(depth_after(999, true, less) == 999, "a nearer dot does not pass test 1");
        trial.expect(depth_after(1001, true, greater) == 1001, "a farther dot does not pass test 5");
        trial.expect(depth_after(999, true, greater) == 1000, "a nearer dot passes test 5");
    }
}

} // namespace vorna::app::check
