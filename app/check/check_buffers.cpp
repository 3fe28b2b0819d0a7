// Checks of the buffers: created, kept, adopted, recreated, released.
#include <new>
#include <string>

#include "app/check/checks.h"
#include "vorna/draw.h"

namespace vorna::app::check {

namespace {

Frame_Buffer* published_buffer(VT_Renderer_Data& renderer) {
    const VT_Option* option = renderer.current_table.find("Color Buffer");
    return option ? option->as_object<Frame_Buffer>() : nullptr;
}

void expect_fitting_buffers(const Trial& trial, Tried_Renderer& renderer, const Configuration& configuration,
                            const Window& window) {
    const Buffer_Format format = configuration.has_indices() ? Buffer_Format::index8 : Buffer_Format::rgb32;
    const auto fits = [&](const Guarded_Buffer* buffer) {
        return buffer && buffer->width == window.size.x && buffer->height == window.size.y;
    };
    const Guarded_Buffer* const color = renderer.buffers().latest(false);
    trial.expect(color, "no colour buffer was requested from the host's callback");
    trial.expect(fits(color), "the colour buffer does not have the window's size");
    trial.expect(color->format == format, "the colour buffer has the wrong format");
    trial.expect(published_buffer(*renderer) == color, "\"Color Buffer\" of the current table does not hold the colour buffer");
    if (configuration.depth) {
        trial.expect(renderer.depth(), "no depth buffer was requested from the host's callback");
        trial.expect(fits(renderer.depth()), "the depth buffer does not have the window's size");
    }
}

VT_Reference<VT_Rendition> rendition_for(const Window& window) {
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->clip.hard_clip = window.area();
    return rendition;
}

} // namespace

void check_buffers_made(Trial& trial) {
    for (const Configuration& configuration : configurations) {
        trial.at(std::string(configuration.name));
        const Window window;
        Tried_Renderer renderer(trial, configuration, window);
        expect_fitting_buffers(trial, renderer, configuration, window);
        trial.expect(configuration.depth || !renderer.buffers().latest(true),
                     "a depth buffer was made in a configuration without depth");
    }
}

// A new origin needs no new buffers.
void check_buffers_kept(Trial& trial) {
    for (const Configuration& configuration : configurations) {
        trial.at(std::string(configuration.name));
        const Window window;
        Tried_Renderer renderer(trial, configuration, window);
        fill_with_noise(renderer, 1);
        const Contents before = contents_of(renderer);
        const std::size_t made = renderer.buffers().made().size();
        for (const std::int32_t shift : {0, 37}) {
            renderer->current_renderer_options_for_update().set_window_origin({window.origin.x + shift, window.origin.y});
            renderer->establish_all();
            trial.expect(renderer.buffers().made().size() == made, "a buffer of the right size and format was made again");
            trial.expect(contents_of(renderer) == before, "establish changed pixels of a buffer that was kept");
        }
    }
}

void check_buffers_recreated(Trial& trial) {
    for (const Configuration& from : configurations) {
        for (const Configuration& to : configurations) {
            trial.at("from " + std::string(from.name) + " to " + std::string(to.name));
            Window window;
            Tried_Renderer renderer(trial, from, window);
            renderer.establish(to, window);
            expect_fitting_buffers(trial, renderer, to, window);
            for (const VT_Int_Pair size : {VT_Int_Pair{62, 43}, {62, 12}}) {
                window.size = size;
                renderer.establish(to, window);
                expect_fitting_buffers(trial, renderer, to, window);
            }
        }
    }
}

void check_buffers_adopted(Trial& trial) {
    const Window window;
    for (const Configuration& configuration : configurations) {
        trial.at(std::string(configuration.name));
        Tried_Renderer renderer(trial, configuration, window);
        const Buffer_Format format = renderer.color().format;
        const VT_Reference<Guarded_Buffer> own(new Guarded_Buffer(window.size.x, window.size.y, format, {}, Guard_Access::open));
        renderer.set_option("Color Buffer", VT_Pointer(VT_Reference<VT_Counted>(own)));
        trial.expect(published_buffer(*renderer) == own.get(), "\"Color Buffer\" does not keep the application's buffer");
        const VT_DCI_Point corner{window.origin.x, window.origin.y, 0};
        const VT_RGB32 color{255, 255, 255, 255};
        VD_Draw_DCI_Dot(*renderer, *rendition_for(window), &corner, &color);
        trial.expect(own->pixel(0, 0) != 0, "drawing does not reach the application's buffer");

        const Buffer_Format other = configuration.has_indices() ? Buffer_Format::rgb32 : Buffer_Format::index8;
        const VT_Reference<Guarded_Buffer> wrong(new Guarded_Buffer(window.size.x, window.size.y, other, {}, Guard_Access::open));
        renderer.set_option("Color Buffer", VT_Pointer(VT_Reference<VT_Counted>(wrong)));
        trial.expect(published_buffer(*renderer) != wrong.get(), "a buffer of the wrong format was adopted");
    }
}

void check_buffers_released(Trial& trial) {
    for (const Configuration& configuration : configurations) {
        trial.at(std::string(configuration.name));
        Window window;
        Tried_Renderer renderer(trial, configuration, window);
        const auto made = renderer.buffers().made(); // a second reference beside that of the maker
        window.size.x += 1;
        renderer.establish(configuration, window);
        for (const auto& buffer : made) {
            trial.expect(buffer->reference_count() == 2, "a buffer of the former size is still held");
        }
        if (configuration.depth) {
            Configuration without = configuration;
            without.depth = false;
            const VT_Reference<Guarded_Buffer> depth(renderer.depth());
            renderer.establish(without, window);
            trial.expect(depth->reference_count() == 2,
                         "the depth buffer is still held after a change to a configuration without depth");
        }
    }
}

void check_buffer_failure(Trial& trial) {
    const Window window;
    for (const Configuration& configuration : configurations) {
        for (std::ptrdiff_t request = 0; request < (configuration.depth ? 2 : 1); ++request) {
            trial.at(std::string(configuration.name) + (request == 0 ? ", colour buffer" : ", depth buffer"));
            std::vector<VT_Reference<Guarded_Buffer>> made;
            for (const bool is_established_again : {false, true}) {
                Buffer_Maker maker([](Buffer_Format) { return Buffer_Layout{}; }, Guard_Access::open);
                maker.fail_at(request);
                VT_Renderer_Data prototype;
                prototype.buffer_creation = maker.callback();
                configure(prototype.current_options, configuration, window.size, window.origin);
                const auto renderer = trial.module().create_renderer(prototype);
                try {
                    renderer->establish_all();
                } catch (const std::bad_alloc&) {
                }
                if (is_established_again) {
                    renderer->establish_all();
                    trial.expect(published_buffer(*renderer), "there is no colour buffer after a second establish_all");
                    const VT_DCI_Point corner{window.origin.x, window.origin.y, 0};
                    VD_Draw_DCI_Dot(*renderer, *rendition_for(window), &corner, nullptr);
                }
                made.insert(made.end(), maker.made().begin(), maker.made().end());
            }
            for (const auto& buffer : made) {
                trial.expect(buffer->reference_count() == 1, "a destroyed renderer still holds a buffer");
            }
        }
    }
}

} // namespace vorna::app::check
