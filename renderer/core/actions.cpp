// Installation of the action slots: one constant table, slot by case. The only file of core that includes the folders above it.
#include "renderer/core/actions.h"

#include <array>
#include <tuple>
#include <type_traits>

#include "renderer/core/member.h"
#include "renderer/core/picture_cycle.h"
#include "renderer/core/software_z_buffer.h"
#include "renderer/depth_lines/polylines_dci.h"
#include "renderer/kernels/kernel_sets.h"
#include "renderer/lines/polylines_2d.h"
#include "renderer/lines/polylines_3d.h"
#include "renderer/primitives/dots.h"
#include "renderer/primitives/ellipses.h"
#include "renderer/primitives/images.h"
#include "renderer/primitives/polygons.h"
#include "renderer/primitives/polymarkers.h"
#include "renderer/triangles/polytriangles.h"
#include "renderer/triangles/polytriangles_3d.h"

namespace krb {

namespace {

// What a case puts into a slot.
template <class Function> struct Cell {
    Function* function = nullptr;
    enum class Kind { untouched, own, host } kind = Kind::untouched;
};

template <class Function> struct Row {
    Action_Slot<Function> VT_Action_Table::*slot;
    std::array<Cell<Function>, case_count> cells;
};

// Values of cells besides cases and functions: the slot stays as it is; it gets the host's standard function, or is switched off
// where that does not exist.
struct Untouched {};
struct Standard {};
inline constexpr Untouched keep;
inline constexpr Standard host;

// A case stands for the slot's member of that case, which need not be the case that the cell is for.
template <class Slot, auto value> Cell<typename Slot::Function> cell() {
    using Function = typename Slot::Function;
    using Kind = typename Cell<Function>::Kind;
    using Value = std::remove_const_t<decltype(value)>;
    if constexpr (std::is_same_v<Value, Untouched>) {
        return {};
    } else if constexpr (std::is_same_v<Value, Standard>) {
        return {Slot::standard(), Kind::host};
    } else if constexpr (std::is_same_v<Value, Case>) {
        return {&Member<Slot, value>::enter, Kind::own};
    } else {
        return {value, Kind::own};
    }
}

template <class Slot, auto... values> Row<typename Slot::Function> row() {
    static_assert(sizeof...(values) == case_count);
    return {Slot::place, {cell<Slot, values>()...}};
}

inline constexpr Case n8 = Case::index8, n32 = Case::rgb32, n32a = Case::rgb32_alpha;
inline constexpr Case d8 = Case::depth_index8, d32 = Case::depth_rgb32, d32a = Case::depth_rgb32_alpha;

template <class Slot> auto members() {
    return row<Slot, n8, n32, n32a, d8, d32, d32a>();
}

template <class Slot> auto members_with_depth() {
    return row<Slot, keep, keep, keep, d8, d32, d32a>();
}

// The same in all six cases.
template <class Slot, auto value> auto every_case() {
    return row<Slot, value, value, value, value, value, value>();
}

// Columns: no depth buffer with 8-bit, 32-bit and blended 32-bit colour, then the same three with a depth buffer. Tables are made
// when they are asked for: on Windows a constant would hold the address of a jump to the host's function, and the host compares
// addresses.
// clang-format off
auto slot_table() {
    using namespace slots;
    return std::tuple{
        members<Draw_2D_Polytriangle>(),
        members<Draw_DC_Polytriangle>(),
        members<Draw_2DI_Polytriangle>(),
        members<Draw_DCI_Polytriangle>(),
        members<Draw_2D_Colorized_Polytriangle>(),
        members<Draw_DC_Colorized_Polytriangle>(),
        members<Draw_2DI_Colorized_Polytriangle>(),
        members<Draw_DCI_Colorized_Polytriangle>(),
        members<Draw_2D_Gouraud_Polytriangle>(),
        members<Draw_DC_Gouraud_Polytriangle>(),
        members<Draw_2DI_Gouraud_Polytriangle>(),
        members<Draw_DCI_Gouraud_Polytriangle>(),
        // The textured members of 32-bit pixels read alpha from texels and colours, whether alpha blending is asked for or not.
        members_with_depth<Blended_Texels<Draw_2D_Textured_Polytriangle>>(),
        members_with_depth<Blended_Texels<Draw_DC_Textured_Polytriangle>>(),
        members_with_depth<Blended_Texels<Draw_2DI_Textured_Polytriangle>>(),
        members_with_depth<Blended_Texels<Draw_DCI_Textured_Polytriangle>>(),
        members<Draw_2DI_Polyline>(),
        members<Draw_2DI_Colorized_Polyline>(),
        members<Draw_2DI_Gouraud_Polyline>(),
        members<Draw_DCI_Polyline>(),
        members<Draw_DCI_Colorized_Polyline>(),
        members<Draw_DCI_Gouraud_Polyline>(),
        members<Draw_DCI_Dot>(),
        row<Draw_2DI_Polymarker,           n8,   n32,  n32a, keep, d32,  d32a>(),
        row<Draw_2DI_Colorized_Polymarker, keep, keep, n32a, keep, keep, keep>(),
        row<Draw_DCI_Ellipse,              keep, n32,  n32,  keep, keep, keep>(),
        row<Draw_DCI_Elliptical_Arc,       keep, n32,  n32,  keep, keep, keep>(),
        // A buffer draws images of its own format itself.
        row<Draw_DCI_RGB32_Image,          host, n32,  n32,  host, d32,  d32>(),
        row<Draw_DCI_Index8_Image,         n8,   host, host, d8,   host, host>(),
        row<Write_Depth_Rectangle, keep, keep, keep, write_depth_rectangle, write_depth_rectangle, write_depth_rectangle>(),
        row<Read_Depth_Image, keep, keep, keep, read_depth_image, read_depth_image, read_depth_image>(),
        row<Clear_Depth_Rectangle, clear_no_depth, clear_no_depth, clear_no_depth, clear_depth_rectangle, clear_depth_rectangle, clear_depth_rectangle>(),
        row<Draw_Window, draw_window_index8, draw_window_rgb32, draw_window_rgb32, draw_window_index8, draw_window_rgb32, draw_window_rgb32>(),
        row<Read_Color_Image, read_color_image_index8, read_color_image_rgb32, read_color_image_rgb32, read_color_image_index8, read_color_image_rgb32, read_color_image_rgb32>(),
        every_case<Draw_2D_Polygon, draw_2d_polygon>(),
        every_case<Draw_DC_Polygon, draw_dc_polygon>(),
        every_case<Draw_2DI_Polygon, draw_2di_polygon>(),
        every_case<Draw_DCI_Polygon, draw_dci_polygon>(),
        every_case<Draw_DCI_Image, draw_dci_image>(),
        every_case<Draw_3D_Polytriangle, draw_3d_polytriangle>(),
    };
}

// Without alpha blending, 8-bit textures store what is not transparent.
auto opaque_texture_table() {
    using namespace slots;
    return std::tuple{
        row<Stored_Texels<Draw_2D_Textured_Polytriangle>,  keep, keep, keep, d8, keep, keep>(),
        row<Stored_Texels<Draw_DC_Textured_Polytriangle>,  keep, keep, keep, d8, keep, keep>(),
        row<Stored_Texels<Draw_2DI_Textured_Polytriangle>, keep, keep, keep, d8, keep, keep>(),
        row<Stored_Texels<Draw_DCI_Textured_Polytriangle>, keep, keep, keep, d8, keep, keep>(),
    };
}

// With tiling the renderer cuts 3D strips and polylines to the tile itself.
auto tiling_table() {
    using namespace slots;
    return std::tuple{
        every_case<Draw_3D_Colorized_Polytriangle, draw_3d_colorized_polytriangle>(),
        every_case<Draw_3D_Gouraud_Polytriangle, draw_3d_gouraud_polytriangle>(),
        every_case<Draw_3D_Textured_Polytriangle, draw_3d_textured_polytriangle>(),
        every_case<Draw_3D_Polyline, draw_3d_polyline>(),
        every_case<Draw_3D_Colorized_Polyline, draw_3d_colorized_polyline>(),
        every_case<Draw_3D_Gouraud_Polyline, draw_3d_gouraud_polyline>(),
    };
}

// Midpoint ellipses are too coarse for a printed page.
auto hardcopy_table() {
    using namespace slots;
    return std::tuple{
        row<Draw_DCI_Ellipse,        keep, host, host, keep, keep, keep>(),
        row<Draw_DCI_Elliptical_Arc, keep, host, host, keep, keep, keep>(),
    };
}
// clang-format on

template <class Function> void install(Software_Z_Buffer& renderer, const Row<Function>& row, Case c) {
    const Cell<Function>& cell = row.cells[static_cast<std::size_t>(c)];
    Action_Slot<Function>& slot = renderer.actions.*row.slot;
    if (cell.kind == Cell<Function>::Kind::untouched) {
        return;
    }
    if (!cell.function) {
        slot.enabled = 0;
        return;
    }
    slot = {&renderer, cell.function, 0, 1};
}

template <class Table> void install_all(Software_Z_Buffer& renderer, const Table& table, Case c) {
    std::apply([&](const auto&... rows) { (install(renderer, rows, c), ...); }, table);
}

bool is_on(const VT_Option* option) {
    return option && option->as_bool();
}

} // namespace

void install_actions(Software_Z_Buffer& renderer) {
    const VT_Renderer_Options& options = renderer.current_options;
    const Case c = case_of(options.buffer_depth() >= 1, options.color_system() == 1, options.alpha_blending());
    renderer.installed_case = c;
    install_all(renderer, slot_table(), c);
    if (!options.alpha_blending()) {
        install_all(renderer, opaque_texture_table(), c);
    }
    if (is_on(renderer.current[Handle::enable_tiling])) {
        install_all(renderer, tiling_table(), c);
    }
    if (is_on(renderer.current[Handle::hardcopy_mode]) && is_on(renderer.requested[Handle::hardcopy_mode])) {
        install_all(renderer, hardcopy_table(), c);
    }
}

const Kernel_Set& chosen_kernels() {
    return chosen_kernel_set();
}

const Kernel_Set& kernels_for_window(const Kernel_Set& chosen, std::int32_t width) noexcept {
    return width < chosen.least_width ? portable_kernel_set() : chosen;
}

} // namespace krb
