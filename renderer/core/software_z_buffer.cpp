// The renderer object: construction, options, buffers and merge-control colours.
#include "renderer/core/software_z_buffer.h"

#include "host/window.h"
#include "renderer/core/actions.h"
#include "renderer/core/fixed_point.h"
#include "renderer/core/pixel_combine.h"

namespace krb {

namespace {

void set_z_write(VT_Renderer_Data& renderer, bool value) {
    renderer_of(renderer).z_write = value ? 1 : 0;
}

constexpr std::int32_t greater_test = 5;

std::int32_t set_z_test(VT_Renderer_Data& renderer, const std::int32_t* value) {
    renderer_of(renderer).change_z_test(*value);
    return *value;
}

// rows: the first and the last one.
std::int32_t set_scissor_rows(VT_Renderer_Data& renderer, const std::int32_t* rows) {
    renderer_of(renderer).set_scissor_rows(rows[0], rows[1]);
    return 0;
}

// Registers the renderer's options in a table, in this order. A mask cache that the table already holds stays.
void build_option_table(VT_Option_Table& table, Option_Handles& handles) {
    const auto add = [&table](const char* name, VT_Option_Content initial, std::int32_t scope = 0) {
        return table.add(VT_Option(name, scope, std::move(initial)));
    };
    const auto keep = [&handles](Handle handle, VT_Option* option) { handles.option[static_cast<int>(handle)] = option; };
    const VT_Pointer none = nullptr;

    keep(Handle::hardcopy_mode, nullptr);
    keep(Handle::margin, add("Margin", 0));
    keep(Handle::color_buffer, add("Color Buffer", none));
    keep(Handle::depth_buffer, add("Depth Buffer", none));
    keep(Handle::use_mask, add("Use Mask", false));
    keep(Handle::clip_phase, add("Clip Phase", false));
    keep(Handle::enable_tiling, add("Enable Tiling", false));
    keep(Handle::merge_control_background_color, add("Merge Control Background Color", VT_Int_RGB{255, 255, 255}));
    keep(Handle::force_merge_control_on, add("Force Merge Control On", false));
    keep(Handle::zbuffer_write, add("ZBuffer Write", none));
    keep(Handle::zbuffer_test, add("ZBuffer Test", none));
    VT_Option* mask_cache = table.find("Mask Cache");
    keep(Handle::mask_cache, mask_cache ? mask_cache : add("Mask Cache", none, 1));
    add("Supports Advanced Planvex Rendering", true);
    add("Supports Antialiased Lines", false);
    add("Supports Gooch Shader", false);
    add("Supports Shadow Mapping Shader", false);
    add("Shadow Mapping Quality", 0);
    add("Max Active Lights", INT32_MAX);
    add("No KVX Image Support", true);
    keep(Handle::hardcopy_mode, add("Hardcopy Mode", false));
}

// A palette index that differs from the background's, found by walking away from its colour in steps of five; the background's
// own when every colour on the way matches it.
std::uint8_t find_alternate_index(const VT_Palette& palette, std::uint8_t background) {
    const VT_RGB32 start = palette.color(background);
    std::uint8_t channels[3] = {start.red, start.green, start.blue};
    int directions[3];
    for (int i = 0; i < 3; ++i) {
        directions[i] = channels[i] < 251 ? 5 : -5;
    }
    std::uint8_t alternate = background;
    for (int counter = 0; counter < 512 && alternate == background; counter += 5) {
        for (int i = 0; i < 3; ++i) {
            if (channels[i] >= 251) {
                directions[i] = -5;
            } else if (channels[i] < 5) {
                directions[i] = 5;
            }
            channels[i] = static_cast<std::uint8_t>(channels[i] + directions[i]);
        }
        alternate = static_cast<std::uint8_t>(palette.closest_match({channels[2], channels[1], channels[0], 255}, false));
    }
    return alternate;
}

} // namespace

Software_Z_Buffer::Software_Z_Buffer(const VT_Renderer_Data& prototype)
    : VT_Renderer_Data(prototype), dither(make_dither(color_cube)), kernels(&chosen_kernels()), chosen_kernels_(kernels) {
    build_option_table(requested_table, requested);
    build_option_table(current_table, current);
    // A cache that the application has put into the requested table is in force from the start.
    if (requested[Handle::mask_cache]->as_object<Mask_Cache_Data>() &&
        !current[Handle::mask_cache]->as_object<Mask_Cache_Data>()) {
        current[Handle::mask_cache]->set_value(requested[Handle::mask_cache]->value());
    }
    // Released at the end of construction: when there is no memory for a cache, construction fails before anything is drawn.
    mask_cache = new Mask_Cache_Data;
    declared_options.set_buffer_depth(16);
    declared_options.set_backing_store(true);
    declared_options.set_supports_complex_clip(true);
    // Every slot is installed by establish.
    set_standard_actions(false);
    mask_cache = nullptr;
    current_table.find("ZBuffer Write")->set(VT_Pointer(VT_Bool_Setter{set_z_write}));
    current_table.find("ZBuffer Test")->set(VT_Pointer(VT_Int_Setter{set_z_test}));
}

Software_Z_Buffer::~Software_Z_Buffer() {
    mask_cache = nullptr;
    depth_buffer = nullptr;
    color_buffer = nullptr;
}

// Releases the buffers unless establish() succeeds: buffers of the old window and of the new one must not be mixed. Without
// buffers the renderer draws nothing until it is established again.
class Software_Z_Buffer::All_Or_Nothing {
public:
    explicit All_Or_Nothing(Software_Z_Buffer& renderer) noexcept : renderer_(renderer) {}
    All_Or_Nothing(const All_Or_Nothing&) = delete;
    All_Or_Nothing& operator=(const All_Or_Nothing&) = delete;
    ~All_Or_Nothing() {
        if (!is_whole_) {
            renderer_.color_buffer = nullptr;
            renderer_.depth_buffer = nullptr;
            renderer_.depth_blocks.remove();
            renderer_.target = {};
        }
    }
    void keep() noexcept { is_whole_ = true; }

private:
    Software_Z_Buffer& renderer_;
    bool is_whole_ = false;
};

std::int32_t Software_Z_Buffer::establish() {
    All_Or_Nothing all(*this);
    install_actions(*this);
    establish_buffers();
    establish_mask_cache();
    establish_merge_colors();
    establish_target();
    // Only for hosts that ask for it.
    if (VT_Option* const scissor_rows = current_table.find("Scissor Rows")) {
        scissor_rows->set(VT_Pointer(VT_Int_Setter{krb::set_scissor_rows}));
    }
    establish_depth_blocks();
    force_merge_control = current[Handle::force_merge_control_on]->as_bool() ? 1 : 0;
    kernels = &kernels_for_window(*chosen_kernels_, window_size.x);
    all.keep();
    return 0;
}

void Software_Z_Buffer::establish_buffers() {
    const VT_Renderer_Options& options = current_options;
    const VT_Int_Pair size = options.window_size();
    window_origin = vorna::window_origin(options);
    if (palette().color_cube()) {
        color_cube = *palette().color_cube();
    }
    dither = make_dither(color_cube);
    for (int i = 0; i < 256; ++i) {
        palette_pixels[i] = palette().color(static_cast<std::uint8_t>(i));
    }

    if (!vorna::is_drawable_window(window_origin, size)) {
        color_buffer = nullptr;
        depth_buffer = nullptr;
        window_size = size;
        return;
    }
    VT_Option& color_option = *current[Handle::color_buffer];
    if (auto* adopted = color_option.as_object<Frame_Buffer>()) {
        color_buffer = adopted;
    }
    const auto fits = [size](const VT_Reference<Frame_Buffer>& buffer) {
        return buffer && buffer->width == size.x && buffer->height == size.y;
    };
    // Only colour systems 0 and 1 require a format; other ones keep any buffer of the right size.
    const std::int32_t system = options.color_system();
    const Buffer_Format wanted = system == 1 ? Buffer_Format::rgb32 : Buffer_Format::index8;
    if (!fits(color_buffer) || ((system == 0 || system == 1) && color_buffer->format != wanted)) {
        buffer_creation.function(buffer_creation.context, size.x, size.y, &wanted, color_buffer);
        color_option.set_value(
            VT_Reference<VT_Option_Value>(new VT_Option_Value(VT_Pointer(VT_Reference<VT_Counted>(color_buffer)))));
    }

    if (options.buffer_depth() < 1) {
        depth_buffer = nullptr;
    } else if (!fits(depth_buffer) || depth_buffer->format != Buffer_Format::depth16) {
        const Buffer_Format depth = Buffer_Format::depth16;
        buffer_creation.function(buffer_creation.context, size.x, size.y, &depth, depth_buffer);
    }
    window_size = size;
}

void Software_Z_Buffer::establish_mask_cache() {
    if (!current[Handle::use_mask]->as_bool()) {
        mask_cache = nullptr;
        return;
    }
    if (auto* shared = current[Handle::mask_cache]->as_object<Mask_Cache_Data>()) {
        mask_cache = shared;
    } else {
        mask_cache = new Mask_Cache_Data;
        requested[Handle::mask_cache]->set(VT_Pointer(VT_Reference<VT_Counted>(mask_cache)));
        update_current_options();
    }
    // Masks were made for a window that may have moved or changed its size.
    empty_mask_cache(*mask_cache);
}

void Software_Z_Buffer::establish_merge_colors() {
    const VT_Int_RGB wanted = current[Handle::merge_control_background_color]->as_rgb();
    background_color = {static_cast<std::uint8_t>(wanted.blue), static_cast<std::uint8_t>(wanted.green),
                        static_cast<std::uint8_t>(wanted.red), 255};
    alternate_background_color = background_color;
    alternate_background_color.blue = static_cast<std::uint8_t>(background_color.blue == 0 ? 1 : background_color.blue - 1);
    background_index = static_cast<std::uint8_t>(palette().closest_match(background_color, false));
    alternate_background_index = find_alternate_index(palette(), background_index);
}

void Software_Z_Buffer::establish_target() {
    target = {};
    scissor_.clear();
    if (!color_buffer) {
        return;
    }
    target.color_rows = color_buffer->rows;
    target.depth_rows = depth_buffer ? depth_buffer->rows : nullptr;
    target.color_row_bytes = -color_buffer->bytes_per_row;
    target.depth_row_bytes = depth_buffer ? -depth_buffer->bytes_per_row : 0;
    target.width = window_size.x;
    target.height = window_size.y;
    target.end_row = window_size.y;
    target.background = vorna::word_of(background_color);
    target.alternate_background = vorna::word_of(alternate_background_color);
    target.merged_index8 = [](const void* renderer, std::uint8_t stored, std::uint8_t index) {
        return krb::merged_index8(*static_cast<const Software_Z_Buffer*>(renderer), stored, index);
    };
    target.renderer = this;
    target.dither = &dither;
}

void Software_Z_Buffer::set_scissor_rows(std::int32_t first, std::int32_t last) {
    if (color_buffer) {
        scissor_.limit(target, *color_buffer, depth_buffer.get(), first, last);
    }
    depth_blocks.raise_all(); // blocks across the old borders know some of their rows only
    publish_depth_blocks();
}

// An option of the application's: only it knows whether anything but the renderer writes the depth buffer.
void Software_Z_Buffer::establish_depth_blocks() {
    const VT_Option* const option = current_table.find("Depth Blocks");
    if (depth_buffer && option && option->as_bool()) {
        depth_blocks.cover(window_size.x, window_size.y);
    } else {
        depth_blocks.remove();
    }
    publish_depth_blocks();
}

void Software_Z_Buffer::publish_depth_blocks() noexcept {
    target.block_depths = z_test == greater_test ? nullptr : depth_blocks.entries();
    target.blocks_in_row = depth_blocks.in_row();
    target.block_looks = depth_blocks.looks();
    target.block_looks->first_row = target.first_row;
    target.block_looks->end_row = target.end_row;
}

void Software_Z_Buffer::change_z_test(std::int32_t mode) noexcept {
    if (z_test == greater_test) {
        depth_blocks.raise_all();
    }
    z_test = mode;
    publish_depth_blocks();
}

std::int32_t Software_Z_Buffer::update(const VT_Int_Rectangle& rectangle) {
    const VT_DCI_Point top_left{rectangle.left, rectangle.top, 0};
    const VT_DCI_Point bottom_right{rectangle.right, rectangle.bottom, 0};
    const std::int32_t x = wrapping_add(window_origin.x, rectangle.left);
    const std::int32_t y = wrapping_subtract(wrapping_add(window_size.y, window_origin.y), wrapping_add(rectangle.top, 1));
    return presentation.function(presentation.context, top_left, bottom_right, color_buffer, x, y);
}

} // namespace krb
