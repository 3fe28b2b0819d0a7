// A renderer, its buffers and the current attributes, for applications to draw on.
//
//     const vorna::Module module(vorna::Module::installed_path());
//     vorna::Canvas canvas(module, {.size = {640, 480}});
//     canvas.begin_picture(vorna::rgb(255, 255, 255));
//     canvas.set_color(vorna::rgb(200, 30, 30));
//     VD_Draw_2D_Polyline(canvas, points);
//     canvas.end_picture();
//
// renderer(), rendition() and options() give access to the objects that the drawing functions of draw.h take.
#pragma once

#include <algorithm>
#include <chrono>
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

// A colour by its channels, 0 to 255, red first; VT_RGB32 has them in the order of memory, blue first.
constexpr VT_RGB32 rgb(std::uint8_t red, std::uint8_t green, std::uint8_t blue, std::uint8_t alpha = 255) noexcept {
    return {.blue = blue, .green = green, .red = red, .alpha = alpha};
}

struct Canvas_Settings {
    VT_Int_Pair size;                            // width and height in pixels, 1 to 16384
    bool indexed = false;                        // 8-bit palette indices instead of 32-bit colours
    bool depth_buffer = false;                   // with 16 bits for each pixel
    bool alpha_blending = false;                 // of translucent 32-bit colours
    bool clip_regions = false;                   // rendition().clip.complex_clip is in force
    VT_Reference<const VT_Palette> palette = {}; // null = the default: a 6 x 6 x 6 cube and forty greys
    unsigned threads = 1;                        // that draw; 0 = as many as processors. See flush()
};

// Which pixels pass the depth test. Smaller depths are nearer.
enum class Depth_Test : std::int32_t { nearer = 1, nearer_or_equal = 2, farther = 5 };

// The arguments of a presentation callback.
struct Presentation {
    VT_Int_Rectangle area;      // device pixels inside the window
    VT_Int_Pair destination;    // of the area's top left pixel, counted from the top left of the window rightwards and downwards
    const Frame_Buffer& buffer; // the whole colour buffer
};

// What one of several threads has drawn of a call: all of it, or the part in some rows.
struct Thread_Work {
    std::size_t thread = 0; // 0 = the thread that draws on the canvas
    std::uint64_t mark = 0; // of the call
    std::chrono::steady_clock::time_point begin, end;
};

struct Thread_Watch {
    std::function<std::uint64_t()> mark;          // of the call that a drawing function keeps; called by that function
    std::function<void(const Thread_Work&)> note; // called by the threads, at the same time; must not throw
};

class Canvas_Threads;

// Owns a renderer and its buffers. The module must outlive it. One thread at a time may use a canvas; different canvases of one
// module may be used by several threads at once. A canvas that was moved from may only be assigned to or destroyed.
class Canvas {
public:
    // Has no buffers yet: set options(), then call establish(). threads: as in Canvas_Settings. Throws as Module::create_renderer
    // does.
    explicit Canvas(const Module& module, unsigned threads = 1)
        : renderer_(module.create_renderer()), rendition_(new VT_Rendition), requested_(renderer_->current_options) {
        if (threads != 1) {
            draw_with(module, threads);
        }
    }

    // Has buffers. Throws as Module::create_renderer and establish() do.
    Canvas(const Module& module, const Canvas_Settings& settings) : Canvas(module, settings.threads) {
        request(settings);
        establish();
    }

    Canvas(Canvas&&) noexcept = default;
    Canvas& operator=(Canvas&&) noexcept = default;

    VT_Renderer_Data& renderer() noexcept { return *renderer_; }
    const VT_Renderer_Data& renderer() const noexcept { return *renderer_; }
    // The attributes of what is drawn from now on. establish() sets the hard clip to the window.
    VT_Rendition& rendition() noexcept { return *rendition_; }

    // The requested options: window, pixel format, palette and so on. They take effect with the next establish().
    VT_Renderer_Options& options() noexcept { return requested_; }
    // Requests a value of one of the renderer's named options. It takes effect with the next establish(). Throws
    // std::invalid_argument when the renderer has no option of that name and kind.
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
    // Requests all that the settings say. Throws as set_option does.
    void request(const Canvas_Settings& settings) {
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
    }
    // Puts the requested options into force: makes buffers, installs slots, sets the hard clip to the window. Buffers keep their
    // pixels when size and format stay the same; new ones are zero. Throws std::invalid_argument for a window outside 1 to 16384
    // columns and rows or outside [-2^30, 2^30], and for buffers of the application that do not fit; std::bad_alloc;
    // std::runtime_error when the renderer has made no colour buffer. After an exception all that was in force is in force again,
    // pixels and depths included; the requested options stay requested.
    VORNA_API void establish();

    // Both throw std::runtime_error when the renderer lacks the setter.
    void set_depth_write(bool on) { setter<VT_Bool_Setter>("ZBuffer Write")(*renderer_, on); }
    void set_depth_test(Depth_Test test) {
        const auto mode = static_cast<std::int32_t>(test);
        setter<VT_Int_Setter>("ZBuffer Test")(*renderer_, &mode);
    }

    // The window in device coordinates.
    VT_Int_Rectangle window() const noexcept { return window_rectangle(renderer_->current_options); }
    const VT_Palette& palette() const noexcept { return renderer_->current_options.palette(); }
    bool has_depth_buffer() const noexcept { return renderer_->current_options.buffer_depth() >= 1; }

    // The index of the palette entry nearest to a colour.
    std::uint8_t index_of(VT_RGB32 color) const noexcept {
        return static_cast<std::uint8_t>(palette().closest_match(color, false));
    }
    // Sets the colour of faces, lines and markers, and their palette index to the nearest one.
    void set_color(VT_RGB32 color) noexcept {
        rendition_->set_color(color);
        rendition_->face.index = rendition_->line.index = rendition_->marker.index = index_of(color);
    }

    // Drawing functions are called between begin_picture and end_picture.
    void begin_picture() { renderer_->begin_picture_all(); }
    // Also fills the window with the background and its depths with the farthest one.
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
        flush();
        renderer_->end_picture_all();
        present(window());
    }

    // With several threads, drawing functions keep copies of what they are given. The threads draw it meanwhile, each in rows of
    // the window of its own; all of it is drawn when the picture ends, is presented, is read or is flushed. The pixels are those
    // of one thread. Objects that the rendition refers to are not copied: change none in place before then. Who looks at the
    // buffers without a function of the canvas calls flush() first. Drawing functions may throw what earlier ones would have
    // thrown, and so may flush(). Only modules that let several renderers draw one buffer draw with several threads.
    void flush() const {
        if (threads_) {
            draw_kept_calls();
        }
    }

    // Has the threads tell what they draw, from now on; not what the canvas's renderer draws by itself. Without functions, as at
    // first, nothing is told. Calls that are kept take some 50 ns longer in each band of rows.
    void watch_threads(Thread_Watch watch) {
        if (threads_) {
            watch_drawing(std::move(watch));
        }
    }

    // The slots that the renderer has installed; those of renderer() keep calls when several threads draw. What they draw or read
    // does not wait for what was kept.
    const VT_Action_Table& own_actions() const noexcept { return threads_ ? actions_of_kept_calls() : renderer_->actions; }

    // Sets the function that shows a presented area; it must not throw. Empty, as at first: nothing is shown.
    void on_present(std::function<void(const Presentation&)> show) {
        auto presenter = std::make_unique<Presenter>(Presenter{std::move(show), renderer_.get()});
        renderer_->presentation = {Presenter::show_area, presenter.get()};
        presenter_ = std::move(presenter);
    }
    // Presents the part of the area, in device pixels, that lies in the window.
    void present(const VT_Int_Rectangle& area) {
        const VT_Int_Rectangle shown = common_part(area, window());
        if (!is_empty(shown)) {
            flush();
            renderer_->update_all(shown);
        }
    }

    // The colour buffer: row r, counted upwards from the lowest, begins at rows[r]. establish() replaces it when size or format
    // change. Throws std::runtime_error when there is none.
    const Frame_Buffer& color_buffer() const {
        flush();
        const Frame_Buffer* const buffer = find_color_buffer();
        if (!buffer) {
            throw std::runtime_error("the renderer has no colour buffer");
        }
        return *buffer;
    }
    // The depth buffer, in the same order. establish() replaces it likewise. Throws std::runtime_error when there is none.
    const Frame_Buffer& depth_buffer() const {
        flush();
        if (!depth_buffer_) {
            throw std::runtime_error("the renderer has no depth buffer");
        }
        return *depth_buffer_;
    }
    // A copy of the depth buffer, or of an area of it in device pixels. Throws std::runtime_error when there is none, and
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

    // The colours of the window, width * height of them, the top row first; palette indices are looked up.
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
    // The depths of the window, width * height of them, the top row first; 0 is nearest. Throws as read_depth_image does.
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
    VORNA_API void draw_with(const Module& module, unsigned threads);
    VORNA_API void draw_kept_calls() const;
    VORNA_API void watch_drawing(Thread_Watch watch);
    VORNA_API const VT_Action_Table& actions_of_kept_calls() const noexcept;

    Frame_Buffer* find_color_buffer() const noexcept {
        const VT_Option* const option = renderer_->current_table.find("Color Buffer");
        return option ? option->as_object<Frame_Buffer>() : nullptr;
    }

    // On the heap: the renderer keeps its address when the canvas moves.
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

    // Renderers publish the setters of depth test and depth writing as option values.
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
    VT_Reference<Frame_Buffer> depth_buffer_; // the renderer's; kept here because a failed establish may make it drop its own
    std::unique_ptr<Presenter> presenter_;
    std::shared_ptr<Canvas_Threads> threads_; // null = the renderer draws by itself
};

} // namespace vorna
