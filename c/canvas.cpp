// Canvases: settings, pictures, presentation and buffers.
#include <cstring>

#include "c/call.h"
#include "c/handles.h"
#include "drawing/files/usage_error.h"
#include "vorna/c_canvas.h"

namespace vorna::c {
namespace {

constexpr std::uint32_t most_threads = 1024;

// The colour buffer in the caller's memory.
class Caller_Buffer final : public Frame_Buffer {
public:
    Caller_Buffer(std::uint8_t* top, std::size_t stride, VT_Int_Pair size, Buffer_Format pixel_format)
        : starts_(static_cast<std::size_t>(size.y)) {
        for (std::size_t r = 0; r < starts_.size(); ++r) {
            starts_[r] = top + (starts_.size() - 1 - r) * stride;
        }
        rows = starts_.data();
        width = size.x;
        height = size.y;
        bytes_per_row = static_cast<std::int32_t>(stride);
        format = pixel_format;
    }

private:
    std::vector<std::uint8_t*> starts_; // by row, counted upwards
};

const vorna_canvas_settings& default_settings() noexcept {
    static const vorna_canvas_settings settings{.struct_size = sizeof settings, .threads = 1};
    return settings;
}
VORNA_SETTINGS_END(vorna_canvas_settings, threads);

VT_Reference<const VT_Palette> palette_of(const vorna_canvas_settings& settings) {
    if (!settings.palette) {
        require(settings.palette_size == 0 && settings.cube_red == 0, "palette: expected a pointer, found null");
        return new VT_Palette;
    }
    require_range<std::size_t>("palette_size", settings.palette_size, 1, 256);
    const VT_RGB32* const colors = host_colors(settings.palette);
    std::optional<VT_Color_Cube> cube;
    if (settings.cube_red != 0 || settings.cube_green != 0 || settings.cube_blue != 0) {
        require_range("cube_red", settings.cube_red, 1, 256);
        require_range("cube_green", settings.cube_green, 1, 256);
        require_range("cube_blue", settings.cube_blue, 1, 256);
        require_range("cube_first", settings.cube_first, 0, 255);
        const std::int64_t entries = std::int64_t{settings.cube_red} * settings.cube_green * settings.cube_blue;
        require(settings.cube_first + entries <= static_cast<std::int64_t>(settings.palette_size),
                "cube_red, cube_green, cube_blue: expected a cube inside the palette");
        cube = VT_Color_Cube({settings.cube_red, settings.cube_green, settings.cube_blue}, 1.0F, settings.cube_first);
    }
    return new VT_Palette({colors, colors + settings.palette_size}, cube);
}

// The buffer that the renderer is given; none = it keeps its own, or makes one when that does not fit.
VT_Reference<Frame_Buffer> buffer_of(const vorna_canvas& canvas, const vorna_canvas_settings& settings) {
    const auto format = settings.indexed ? Buffer_Format::index8 : Buffer_Format::rgb32;
    if (!settings.pixels) {
        return canvas.has_caller_pixels ? make_frame_buffer(settings.width, settings.height, format)
                                        : VT_Reference<Frame_Buffer>();
    }
    const auto pixel_bytes = static_cast<std::size_t>(bytes_per_pixel(format));
    const std::size_t stride = stride_or(settings.stride, settings.width, pixel_bytes);
    return new Caller_Buffer(static_cast<std::uint8_t*>(settings.pixels), stride, {settings.width, settings.height}, format);
}

void apply(vorna_canvas& canvas, const vorna_canvas_settings& settings) {
    require_range("width", settings.width, 1, largest_buffer_side);
    require_range("height", settings.height, 1, largest_buffer_side);
    VT_Reference<const VT_Palette> palette = palette_of(settings);
    const VT_Reference<Frame_Buffer> buffer = buffer_of(canvas, settings);
    VT_Renderer_Options& options = canvas.canvas().options();
    options.set_window_size({settings.width, settings.height});
    options.set_window_origin({settings.origin_x, settings.origin_y});
    options.set_color_system(settings.indexed ? 0 : 1);
    options.set_buffer_depth(settings.depth_buffer ? 16 : 0);
    options.set_alpha_blending(settings.alpha_blending != 0);
    options.set_palette(std::move(palette));
    if (buffer) {
        canvas.canvas().set_option("Color Buffer", VT_Pointer(VT_Reference<VT_Counted>(buffer)));
    }
    canvas.canvas().set_option("Use Mask", settings.clip_regions != 0);
    canvas.session.establish();
    canvas.has_clip_regions = settings.clip_regions != 0;
    canvas.has_caller_pixels = settings.pixels != nullptr;
}

// Unless it is told to keep what has changed: requests the options that are in force again, after an establish that failed. A
// recording goes on: a recorder that was stopped for the establish is started by another one.
class Restored_Options {
public:
    explicit Restored_Options(vorna_canvas& canvas) : canvas_(canvas), options_(canvas.canvas().options()) {
        const VT_Option_Table& table = canvas_.canvas().renderer().requested_table;
        for (std::size_t i = 0; i < table.size(); ++i) {
            values_.push_back(table[i].value());
        }
    }
    Restored_Options(const Restored_Options&) = delete;
    Restored_Options& operator=(const Restored_Options&) = delete;
    ~Restored_Options() {
        if (!is_kept_) {
            VT_Option_Table& table = canvas_.canvas().renderer().requested_table;
            for (std::size_t i = 0; i < values_.size(); ++i) {
                table[i].set_value(values_[i]);
            }
            canvas_.canvas().options() = options_;
            resume_recording();
        }
    }

    void keep() noexcept { is_kept_ = true; }

private:
    void resume_recording() noexcept {
        if (canvas_.recorder) {
            VT_Int_Rectangle& clip = canvas_.canvas().rendition().clip.hard_clip;
            const VT_Int_Rectangle clip_before = clip;
            // Without memory even for that, the recording ends here.
            guarded([&] { canvas_.session.establish(); });
            clip = clip_before;
        }
    }

    vorna_canvas& canvas_;
    VT_Renderer_Options options_;
    std::vector<VT_Reference<VT_Option_Value>> values_;
    bool is_kept_ = false;
};

template <class Change> vorna_status change_idle(vorna_canvas* given, Change change) noexcept {
    return guarded([&] {
        vorna_canvas& canvas = idle_canvas(given);
        Restored_Options options(canvas);
        change(canvas);
        options.keep();
    });
}

VT_Int_Rectangle area_or_window(vorna_canvas& canvas, const vorna_rectangle* area) {
    return area ? host_rectangle(*area) : canvas.canvas().window();
}

vorna_buffer c_buffer(const drawing::Raster& raster) {
    // Rows of canvases lie from the top down in memory; what the buffer may be used for is the caller's.
    return {const_cast<std::uint8_t*>(raster.top), static_cast<std::size_t>(raster.row_bytes), raster.width, raster.height,
            static_cast<std::int32_t>(raster.format)};
}

void show(vorna_canvas& canvas, const Presentation& presentation) {
    if (canvas.show) {
        const drawing::Raster raster =
            drawing::cut(drawing::raster_of(presentation.buffer), canvas.canvas().window(), presentation.area);
        const vorna_presentation shown{c_rectangle(presentation.area), presentation.destination.x, presentation.destination.y,
                                       c_buffer(raster)};
        canvas.show(canvas.show_context, &shown);
    }
}

} // namespace

vorna_canvas& drawn_canvas(vorna_canvas* given) {
    vorna_canvas& canvas = required(given, "canvas");
    require(canvas.is_in_picture, "canvas: expected a picture that vorna_begin_picture has begun");
    return canvas;
}

vorna_canvas& idle_canvas(vorna_canvas* given) {
    vorna_canvas& canvas = required(given, "canvas");
    require(!canvas.is_in_picture, "canvas: expected no picture, found one that vorna_end_picture has not ended");
    return canvas;
}

} // namespace vorna::c

using namespace vorna::c;

vorna_status vorna_canvas_settings_init(vorna_canvas_settings* settings, size_t size) {
    return fill_defaults(settings, size, default_settings());
}

vorna_status vorna_canvas_create(const vorna_canvas_settings* settings, vorna_canvas** canvas) {
    return make_handle(canvas, "canvas", [&] {
        const vorna_canvas_settings given = settings_or(&required(settings, "settings"), default_settings());
        const std::string module = given.module ? given.module : vorna::Module::installed_path();
        require_range("threads", given.threads, 0U, most_threads);
        auto made = std::make_unique<vorna_canvas>(vorna::drawing::Module_Choice{module, {}}, given.threads);
        made->canvas().on_present([made = made.get()](const vorna::Presentation& presentation) { show(*made, presentation); });
        if (given.records) {
            made->recorder.emplace(made->session);
        }
        apply(*made, given);
        return made;
    });
}

vorna_status vorna_canvas_configure(vorna_canvas* canvas, const vorna_canvas_settings* settings) {
    return change_idle(
        canvas, [&](vorna_canvas& changed) { apply(changed, settings_or(&required(settings, "settings"), default_settings())); });
}

vorna_status vorna_canvas_set_option(vorna_canvas* canvas, const char* name, int32_t value) {
    return change_idle(canvas, [&](vorna_canvas& changed) {
        const std::string option = &required(name, "name");
        const VT_Option* const found = changed.canvas().renderer().requested_table.find(option);
        const bool is_switch = found && std::holds_alternative<bool>(found->value()->content);
        changed.canvas().set_option(option, is_switch ? VT_Option_Content(value != 0) : VT_Option_Content(value));
        changed.session.establish();
    });
}

vorna_status vorna_canvas_set_color_option(vorna_canvas* canvas, const char* name, int32_t red, int32_t green, int32_t blue) {
    return change_idle(canvas, [&](vorna_canvas& changed) {
        changed.canvas().set_option(&required(name, "name"), VT_Int_RGB{red, green, blue});
        changed.session.establish();
    });
}

vorna_status vorna_canvas_window(vorna_canvas* canvas, vorna_rectangle* window) {
    return guarded([&] { required(window, "window") = c_rectangle(required(canvas, "canvas").canvas().window()); });
}

vorna_status vorna_begin_picture(vorna_canvas* canvas, const vorna_color* background) {
    return guarded([&] {
        vorna_canvas& begun = idle_canvas(canvas);
        if (background) {
            begun.canvas().begin_picture(host_color(*background));
        } else {
            begun.canvas().begin_picture();
        }
        begun.is_in_picture = true;
    });
}

vorna_status vorna_end_picture(vorna_canvas* canvas) {
    return guarded([&] {
        vorna_canvas& ended = drawn_canvas(canvas);
        ended.is_in_picture = false;
        ended.canvas().end_picture();
    });
}

vorna_status vorna_flush(vorna_canvas* canvas) {
    return guarded([&] { required(canvas, "canvas").canvas().flush(); });
}

vorna_status vorna_canvas_on_present(vorna_canvas* canvas, vorna_present_function* function, void* context) {
    return guarded([&] {
        vorna_canvas& shown = required(canvas, "canvas");
        shown.show = function;
        shown.show_context = context;
    });
}

vorna_status vorna_present(vorna_canvas* canvas, const vorna_rectangle* area) {
    return guarded([&] {
        vorna_canvas& shown = required(canvas, "canvas");
        shown.canvas().present(area_or_window(shown, area));
    });
}

vorna_status vorna_canvas_buffer(vorna_canvas* canvas, vorna_buffer* buffer) {
    return guarded([&] {
        required(buffer, "buffer") = {};
        *buffer = c_buffer(vorna::drawing::raster_of(required(canvas, "canvas").canvas().color_buffer()));
    });
}

vorna_status vorna_canvas_read_pixels(vorna_canvas* canvas, vorna_color* pixels, size_t stride) {
    return guarded([&] {
        const vorna::Canvas& read = required(canvas, "canvas").canvas();
        auto* const copy = reinterpret_cast<std::uint8_t*>(&required(pixels, "pixels"));
        const Frame_Buffer& buffer = read.color_buffer();
        const std::size_t row_bytes = stride_or(stride, buffer.width, sizeof *pixels);
        const std::vector<VT_RGB32> colors = read.read_pixels();
        const std::size_t width = static_cast<std::size_t>(buffer.width);
        for (std::size_t r = 0; r < static_cast<std::size_t>(buffer.height); ++r) {
            std::memcpy(copy + r * row_bytes, colors.data() + r * width, width * sizeof(VT_RGB32));
        }
    });
}

vorna_status vorna_canvas_read_depths(vorna_canvas* canvas, uint16_t* depths, size_t stride) {
    return guarded([&] {
        vorna_canvas& read = required(canvas, "canvas");
        auto* const copy = reinterpret_cast<std::uint8_t*>(&required(depths, "depths"));
        require(read.canvas().has_depth_buffer(), "canvas: expected a depth buffer");
        const VT_Reference<VT_Shared_Image> image = read.session.read_depth();
        const vorna::drawing::Raster raster = vorna::drawing::raster_of(*image);
        const std::size_t row_bytes = stride_or(stride, raster.width, sizeof *depths);
        for (std::int32_t r = 0; r < raster.height; ++r) {
            std::memcpy(copy + static_cast<std::size_t>(r) * row_bytes, raster.top + r * raster.row_bytes,
                        static_cast<std::size_t>(raster.width) * sizeof *depths);
        }
    });
}

vorna_status vorna_canvas_finish_recording(vorna_canvas* canvas, vorna_recording** recording) {
    return make_handle(recording, "recording", [&] {
        vorna_canvas& recorded = idle_canvas(canvas);
        require(recorded.recorder.has_value(), "canvas: expected settings with `records`, and a recording that is not finished");
        auto made = std::make_unique<vorna_recording>();
        made->content = recorded.recorder->finish();
        recorded.recorder.reset();
        return made;
    });
}

void vorna_canvas_free(vorna_canvas* canvas) {
    delete canvas;
}
