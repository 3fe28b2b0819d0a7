// What an application draws on: a renderer with its buffers, and the attributes to draw with.
//
//     const vorna::Module module(vorna::Module::installed_path());
//     vorna::Canvas canvas(module, {.size = {640, 480}});
//     canvas.begin_picture(vorna::rgb(255, 255, 255));
//     canvas.set_color(vorna::rgb(200, 30, 30));
//     VD_Draw_2D_Polyline(canvas, points);
//     canvas.end_picture();
//
// Nothing here hides the host's own interface: renderer(), rendition() and options() are what the drawing functions of draw.h and
// the renderer's hooks work on.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/frame_buffer.h"
#include "host/renderer_data.h"
#include "host/rendition.h"
#include "vorna/draw.h"
#include "vorna/module.h"
#include "vorna/version.h"

namespace vorna {

// A colour by its channels, 0 to 255, in the order in which they are spoken; VT_RGB32 has them in the order of memory.
constexpr VT_RGB32 rgb(std::uint8_t red, std::uint8_t green, std::uint8_t blue, std::uint8_t alpha = 255) noexcept {
    return {.blue = blue, .green = green, .red = red, .alpha = alpha};
}

struct Canvas_Settings {
    VT_Int_Pair size;                            // columns and rows, 1 to 16384 of each
    bool indexed = false;                        // 8-bit palette indices instead of 32-bit colours
    bool depth_buffer = false;                   // 16 bits a pixel
    bool alpha_blending = false;                 // of translucent 32-bit colours
    bool clip_regions = false;                   // whether rendition().clip.complex_clip counts
    VT_Reference<const VT_Palette> palette = {}; // null = the host's, a 6 x 6 x 6 cube and forty greys
};

// Which of two depths stays. Smaller ones are nearer.
enum class Depth_Test : std::int32_t { nearer = 1, nearer_or_equal = 2, farther = 5 };

// What a presentation callback is to show.
struct Presentation {
    VT_Int_Rectangle area;      // device pixels, all of them in the window
    VT_Int_Pair destination;    // of the area's top left pixel, from the window's top left one rightwards and downwards
    const Frame_Buffer& buffer; // the whole colour buffer
};

// Owns its renderer and, through it, the buffers. The module must outlive it. One thread at a time draws on a canvas; canvases of
// the same module may be drawn on by several threads at once, each by its own. A canvas that was moved from can only be given
// another one, or go.
class Canvas {
public:
    // A renderer without pixels: set options(), then establish().
    explicit Canvas(const Module& module)
        : renderer_(module.create_renderer()), rendition_(new VT_Rendition), requested_(renderer_->current_options) {}

    // Ready to draw. Throws as establish does.
    Canvas(const Module& module, const Canvas_Settings& settings) : Canvas(module) {
        options().set_window_size(settings.size);
        options().set_color_system(settings.indexed ? 0 : 1);
        options().set_buffer_depth(settings.depth_buffer ? 16 : 0);
        options().set_alpha_blending(settings.alpha_blending);
        if (settings.palette) {
            options().set_palette(settings.palette);
        }
        if (settings.clip_regions) {
            set_option("Use Mask", true);
        }
        establish();
    }

    Canvas(Canvas&&) noexcept = default;
    Canvas& operator=(Canvas&&) noexcept = default;

    VT_Renderer_Data& renderer() noexcept { return *renderer_; }
    const VT_Renderer_Data& renderer() const noexcept { return *renderer_; }
    // The attributes of everything that is drawn on the canvas from now on. The hard clip is the window at first.
    VT_Rendition& rendition() noexcept { return *rendition_; }

    // Window, pixel kind, palette and so on, as they are asked for; what is in force changes with the next establish().
    VT_Renderer_Options& options() noexcept { return requested_; }
    // An option of the renderer's own; in force after the next establish(). Throws std::invalid_argument when the renderer has
    // none of that name, or one of another kind.
    void set_option(const std::string& name, VT_Option_Content value) {
        VT_Option* const option = renderer_->requested_table.find(name);
        if (!option) {
            throw std::invalid_argument(name + ": the renderer has no such option");
        }
        const std::size_t kind = option->value()->content.index();
        if (value.index() != kind) {
            constexpr const char* kinds[] = {"true or false", "a whole number", "a colour [r, g, b]",
                                             "an object or a function, which only a program can give"};
            throw std::invalid_argument(name + ": expected " + kinds[kind]);
        }
        option->set(std::move(value));
    }
    // Fits buffers and slots to the options, and the hard clip to the window. Buffers whose size and format stay keep their
    // pixels; new ones are zero. Throws std::invalid_argument for a window of other than 1 to 16384 columns and rows, for one
    // that does not lie between -2^30 and 2^30, and for buffers of the application's own that do not fit; std::bad_alloc; and
    // std::runtime_error when the renderer shows no colour buffer. Then everything that was in force stays, pixels and depths
    // included, and options() and set_option() keep what was asked for.
    VORNA_API void establish();

    void set_depth_write(bool on) { setter<VT_Bool_Setter>("ZBuffer Write")(*renderer_, on); }
    void set_depth_test(Depth_Test test) {
        const auto mode = static_cast<std::int32_t>(test);
        setter<VT_Int_Setter>("ZBuffer Test")(*renderer_, &mode);
    }

    // Device pixels that can be drawn to.
    VT_Int_Rectangle window() const noexcept { return window_rectangle(renderer_->current_options); }
    const VT_Palette& palette() const noexcept { return renderer_->current_options.palette(); }
    bool has_depth_buffer() const noexcept { return renderer_->current_options.buffer_depth() >= 1; }

    // The palette entry nearest to a colour.
    std::uint8_t index_of(VT_RGB32 color) const noexcept {
        return static_cast<std::uint8_t>(palette().closest_match(color, false));
    }
    // The colour of faces, lines and markers from now on, and its nearest palette entry.
    void set_color(VT_RGB32 color) noexcept {
        rendition_->set_color(color);
        rendition_->face.index = rendition_->line.index = rendition_->marker.index = index_of(color);
    }

    // Drawing happens between the beginning and the end of a picture.
    void begin_picture() { renderer_->begin_picture_all(); }
    // Begins with an empty window: one colour, farthest depth.
    void begin_picture(VT_RGB32 background) {
        begin_picture();
        const VT_Reference<VT_Rendition> empty(new VT_Rendition);
        empty->clip.hard_clip = empty->window.rectangle = window();
        empty->window.color = background;
        empty->window.index = index_of(background);
        VD_Draw_Window(*renderer_, *empty);
        if (has_depth_buffer()) {
            VD_Clear_Depth_Rectangle(*renderer_, *empty);
        }
    }
    // Ends the picture and presents the window.
    void end_picture() {
        renderer_->end_picture_all();
        present(window());
    }

    // Called whenever a part of the window is presented, and must not throw; empty = nothing is shown, as at first.
    void on_present(std::function<void(const Presentation&)> show) {
        auto presenter = std::make_unique<Presenter>(Presenter{std::move(show), renderer_.get()});
        renderer_->presentation = {Presenter::show_area, presenter.get()};
        presenter_ = std::move(presenter);
    }
    // Presents device pixels, as far as they lie in the window; nothing when none of them does.
    void present(const VT_Int_Rectangle& area) {
        const VT_Int_Rectangle shown = common_part(area, window());
        if (!is_empty(shown)) {
            renderer_->update_all(shown);
        }
    }

    // The colour buffer itself: row r, counted upwards from the lowest, begins at rows[r]. It is replaced when establish()
    // changes size or format. Throws std::runtime_error when there is none.
    const Frame_Buffer& color_buffer() const {
        const Frame_Buffer* const buffer = find_color_buffer();
        if (!buffer) {
            throw std::runtime_error("the renderer has no colour buffer");
        }
        return *buffer;
    }
    // A copy of the whole depth buffer, or of some device pixels. Throws std::runtime_error when there is none, and
    // std::invalid_argument for an area that is not inside the window.
    VT_Reference<VT_Shared_Image> read_depth_image() { return read_depth_image(window()); }
    VT_Reference<VT_Shared_Image> read_depth_image(const VT_Int_Rectangle& area) {
        VT_Reference<VT_Shared_Image> image =
            has_depth_buffer() ? VD_Read_Depth_Image(*this, area) : VT_Reference<VT_Shared_Image>();
        if (!image) {
            throw std::runtime_error("the renderer has no depth buffer to read");
        }
        return image;
    }

    // The window's colours without gaps, the top row first; indices are looked up in the palette.
    std::vector<VT_RGB32> read_pixels() const {
        const Frame_Buffer& buffer = color_buffer();
        std::vector<VT_RGB32> pixels(static_cast<std::size_t>(buffer.width) * static_cast<std::size_t>(buffer.height));
        auto next = pixels.begin();
        for (std::int32_t r = buffer.height - 1; r >= 0; --r) {
            const std::uint8_t* const row = buffer.rows[r];
            for (std::int32_t column = 0; column < buffer.width; ++column, ++next) {
                if (buffer.format == Buffer_Format::index8) {
                    *next = palette().color(row[column]);
                } else {
                    std::memcpy(&*next, row + std::ptrdiff_t{column} * 4, sizeof *next);
                }
            }
        }
        return pixels;
    }
    // The window's depths without gaps, the top row first; 0 is nearest. Throws as read_depth_image does.
    std::vector<std::uint16_t> read_depths() {
        const VT_Reference<VT_Shared_Image> image = read_depth_image();
        const auto width = static_cast<std::size_t>(image->width());
        const std::int32_t height = image->height();
        std::vector<std::uint16_t> depths(width * static_cast<std::size_t>(height));
        for (std::int32_t r = 0; r < height; ++r) {
            std::memcpy(depths.data() + width * static_cast<std::size_t>(r), image->row(image->bottom_up() ? height - 1 - r : r),
                        width * sizeof depths[0]);
        }
        return depths;
    }

private:
    const Frame_Buffer* find_color_buffer() const noexcept {
        const VT_Option* const option = renderer_->current_table.find("Color Buffer");
        return option ? option->as_object<Frame_Buffer>() : nullptr;
    }

    // Stays where it is when the canvas moves.
    struct Presenter {
        std::function<void(const Presentation&)> show;
        const VT_Renderer_Data* renderer;

        static std::int32_t show_area(void* context, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                                      const VT_Reference<Frame_Buffer>& buffer, std::int32_t, std::int32_t) {
            const auto& [show, renderer] = *static_cast<const Presenter*>(context);
            if (show && buffer) {
                const VT_Int_Rectangle window = window_rectangle(renderer->current_options);
                show({{top_left.x, bottom_right.x, bottom_right.y, top_left.y},
                      {top_left.x - window.left, window.top - top_left.y},
                      *buffer});
            }
            return 0;
        }
    };

    // Renderers publish how to steer their depth buffer as values of options.
    template <class Setter> Setter setter(const char* name) const {
        const VT_Option* const option = renderer_->current_table.find(name);
        const Setter found = option ? option->as_setter<Setter>() : nullptr;
        if (!found) {
            throw std::runtime_error(std::string("the renderer's option \"") + name + "\" holds no setter");
        }
        return found;
    }

    Module::Renderer renderer_;
    VT_Reference<VT_Rendition> rendition_;
    VT_Renderer_Options requested_;
    VT_Reference<Frame_Buffer> depth_buffer_; // the renderer's, which it may drop when it cannot be established
    std::unique_ptr<Presenter> presenter_;
};

} // namespace vorna
