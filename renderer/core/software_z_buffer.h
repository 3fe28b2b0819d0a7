// The renderer: options, buffers, and the state that members read.
#pragma once

#include <cstdint>

#include "host/frame_buffer.h"
#include "host/renderer_data.h"
#include "host/rendition.h"
#include "host/window.h"
#include "renderer/core/cases.h"
#include "renderer/core/depth_blocks.h"
#include "renderer/core/dither.h"
#include "renderer/core/mask_cache_data.h"
#include "renderer/core/pixel_target.h"
#include "renderer/core/row_scissor.h"

namespace krb {

struct Kernel_Set;

// Options that the renderer keeps handles of, in both tables.
enum class Handle {
    margin,
    color_buffer,
    depth_buffer,
    mask_cache,
    use_mask,
    clip_phase,
    enable_tiling,
    merge_control_background_color,
    force_merge_control_on,
    zbuffer_write,
    zbuffer_test,
    hardcopy_mode,
};

inline constexpr int handle_count = 12;

struct Option_Handles {
    VT_Option* option[handle_count] = {};

    VT_Option* operator[](Handle handle) const noexcept { return option[static_cast<int>(handle)]; }
};

class Software_Z_Buffer : public VT_Renderer_Data {
public:
    // Registers the options in both tables and declares what the renderer can do. Throws what chosen_kernels throws.
    explicit Software_Z_Buffer(const VT_Renderer_Data& prototype);
    ~Software_Z_Buffer() override;

    // Installs every slot that the current options ask for, then keeps, adopts or creates the buffers. Returns 0. When it throws
    // the renderer has no buffers.
    std::int32_t establish() override;
    void begin_picture() override {}
    void end_picture() override {}
    std::int32_t update(const VT_Int_Rectangle& rectangle) override;

    // True when pixels of this drawing mode combine by merge control.
    bool merges(std::int32_t drawing_mode) const noexcept {
        return force_merge_control || drawing_mode == vorna::merge_drawing_mode;
    }

    // Slots that the current options do not name keep their members. Such a member draws without depth when there is no depth
    // buffer or the rendition does not test depth.
    bool draws_with_depth(const VT_Rendition& rendition) const noexcept { return rendition.clip.depth_test && depth_buffer; }

    // The window in device coordinates, as far as these can hold it.
    VT_Int_Rectangle window_rectangle() const noexcept { return vorna::rectangle_of(window_origin, window_size); }
    // The hard clip, as far as it lies in the window, in device coordinates; may be empty.
    VT_Int_Rectangle visible_rectangle(const VT_Rendition& rendition) const noexcept {
        return vorna::common_part(rendition.clip.hard_clip, window_rectangle());
    }
    // Whether all points lie in the visible rectangle.
    bool shows_all(const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points) const noexcept {
        const VT_Int_Rectangle visible = visible_rectangle(rendition);
        for (std::int32_t i = 0; i < count; ++i) {
            const std::int32_t x = points[i].x, y = points[i].y;
            if (x < visible.left || x > visible.right || y < visible.bottom || y > visible.top) {
                return false;
            }
        }
        return true;
    }

    // Draws in rows first to last of the buffers only, until the next establish. Throws std::bad_alloc; the rows stay as they
    // were then.
    void set_scissor_rows(std::int32_t first, std::int32_t last);

    const VT_Palette& palette() const noexcept { return current_options.palette(); }

    // The test greater makes depths farther: kernels neither use nor lower the entries of blocks while it is in force.
    void change_z_test(std::int32_t mode) noexcept;

    // State that members read. Only establish() and the setters that the options publish write it.
    Option_Handles requested;
    Option_Handles current;
    VT_Reference<Frame_Buffer> color_buffer;
    VT_Reference<Frame_Buffer> depth_buffer;
    VT_Reference<Mask_Cache_Data> mask_cache;
    VT_Int_Pair window_origin; // device coordinates of column 0, row 0
    VT_Int_Pair window_size;   // width, height
    VT_Color_Cube color_cube{{2, 2, 2}, 1.0F, 0};
    std::uint8_t z_write = 1;
    std::int32_t z_test = 2; // 1 less, 5 greater, any other value less or equal
    // Of the depth buffer, when the application asks for them by a "Depth Blocks" option that is true.
    Depth_Blocks depth_blocks;
    std::uint8_t background_index = 255;
    std::uint8_t alternate_background_index = 255;
    VT_RGB32 background_color{0, 0, 0, 253};
    VT_RGB32 alternate_background_color{1, 0, 0, 253};
    std::uint8_t force_merge_control = 0;

    Dither dither;                   // of color_cube
    VT_RGB32 palette_pixels[256]{};  // the palette's colours as pixels
    bool keeps_to_hard_clip = false; // device strips keep to the hard clip, else only to the window; see Tile
    VT_Int_Pair tile_origin{};       // what device coordinates count from; only a Tile moves it
    std::int32_t face_override = 0;  // a face pattern that polygons take instead of their own; 0 = none
    Case installed_case = Case::index8;
    const Kernel_Set* kernels;
    // The part of the kernels' target that does not depend on the call; set by establish() once there are buffers.
    Pixel_Target target{};

private:
    class All_Or_Nothing;

    void establish_buffers();
    void establish_mask_cache();
    void establish_merge_colors();
    void establish_target();
    void establish_depth_blocks();
    void publish_depth_blocks() noexcept;

    const Kernel_Set* chosen_kernels_;
    Row_Scissor scissor_;
};

// The renderer behind a slot.
inline Software_Z_Buffer& renderer_of(VT_Renderer_Data& data) noexcept {
    return static_cast<Software_Z_Buffer&>(data);
}

} // namespace krb
