// The objects behind the handles of canvases, images and recordings, and conversions of their types.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "drawing/image/image_file.h"
#include "drawing/recording/recorder.h"
#include "drawing/recording/recording.h"
#include "drawing/recording/session.h"
#include "vorna/c_canvas.h"

struct vorna_image {
    VT_Reference<VT_Shared_Image> pixels; // rows from the top down
    VT_Reference<const VT_Palette> palette;
    std::uint32_t pixels_per_metre = 0; // on paper, for files to state; 0 = not stated
};

struct vorna_recording {
    vorna::drawing::recording::Recording content;
};

struct vorna_canvas {
    vorna_canvas(const vorna::drawing::Module_Choice& module, unsigned threads) : session(module, threads) {}

    vorna::Canvas& canvas() noexcept { return session.canvas(); }

    vorna::drawing::Session session;
    std::optional<vorna::drawing::recording::Recorder> recorder;
    bool is_in_picture = false;
    bool has_clip_regions = false;
    bool has_caller_pixels = false;
    bool has_depth_writing = true; // as last set
    vorna::Depth_Test depth_test = vorna::Depth_Test::nearer_or_equal;
    vorna_present_function* show = nullptr;
    void* show_context = nullptr;
};

namespace vorna::c {

// The types of both sides have the same bytes.
inline VT_RGB32 host_color(const vorna_color& color) noexcept {
    return {color.blue, color.green, color.red, color.alpha};
}

inline vorna_color c_color(const VT_RGB32& color) noexcept {
    return {color.blue, color.green, color.red, color.alpha};
}

inline const VT_RGB32* host_colors(const vorna_color* colors) noexcept {
    static_assert(sizeof(vorna_color) == sizeof(VT_RGB32) && offsetof(vorna_color, alpha) == offsetof(VT_RGB32, alpha) &&
                  offsetof(vorna_color, red) == offsetof(VT_RGB32, red));
    return reinterpret_cast<const VT_RGB32*>(colors);
}

inline VT_DCI_Point host_point(const vorna_point_i& point) noexcept {
    return {point.x, point.y, point.z};
}

inline VT_Int_Rectangle host_rectangle(const vorna_rectangle& area) noexcept {
    return {area.left, area.right, area.bottom, area.top};
}

inline vorna_rectangle c_rectangle(const VT_Int_Rectangle& area) noexcept {
    return {area.left, area.right, area.bottom, area.top};
}

// A copy of pixels without gaps between rows.
std::unique_ptr<vorna_image> image_of(const drawing::Raster& raster, VT_Reference<const VT_Palette> palette);

// The canvas between or in pictures.
vorna_canvas& drawn_canvas(vorna_canvas* canvas);
vorna_canvas& idle_canvas(vorna_canvas* canvas);

} // namespace vorna::c
