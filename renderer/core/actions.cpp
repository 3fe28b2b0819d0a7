// Installation of the action slots: one constant table, slot by case. The only file of core that includes the folders above it.
#include "renderer/core/actions.h"

#include <array>
#include <tuple>

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

template <class Function> constexpr Cell<Function> own(Function* function) {
    return {function, Cell<Function>::Kind::own};
}

// The host's standard function; where that does not exist the slot is switched off.
template <class Function> constexpr Cell<Function> host(Function* function) {
    return {function, Cell<Function>::Kind::host};
}

template <class Function>
constexpr Row<Function> row(Action_Slot<Function> VT_Action_Table::*slot, std::array<Cell<Function>, case_count> cells) {
    return {slot, cells};
}

// The same in all six cases.
template <class Function> constexpr Row<Function> every_case(Action_Slot<Function> VT_Action_Table::*slot, Cell<Function> cell) {
    return {slot, {cell, cell, cell, cell, cell, cell}};
}

inline constexpr Case N8 = Case::index8, N32 = Case::rgb32, N32A = Case::rgb32_alpha;
inline constexpr Case D8 = Case::depth_index8, D32 = Case::depth_rgb32, D32A = Case::depth_rgb32_alpha;

using T = VT_Action_Table;

// The members of a family, one a case.
#define KRB_OWN(member)                                                                                                          \
    { own(member<N8>), own(member<N32>), own(member<N32A>), own(member<D8>), own(member<D32>), own(member<D32A>) }

// Columns: no depth buffer with 8-bit, 32-bit and blended 32-bit colour, then the same three with a depth buffer. {} leaves the
// slot as it is. Tables are made when they are asked for: on Windows a constant would hold the address of a jump to the host's
// function, and the host compares addresses.
// clang-format off
auto slot_table() { return std::tuple{
    row(&T::draw_2d_polytriangle, KRB_OWN(draw_2d_polytriangle)),
    row(&T::draw_dc_polytriangle, KRB_OWN(draw_dc_polytriangle)),
    row(&T::draw_2di_polytriangle, KRB_OWN(draw_2di_polytriangle)),
    row(&T::draw_dci_polytriangle, KRB_OWN(draw_dci_polytriangle)),
    row(&T::draw_2d_colorized_polytriangle, KRB_OWN(draw_2d_colorized_polytriangle)),
    row(&T::draw_dc_colorized_polytriangle, KRB_OWN(draw_dc_colorized_polytriangle)),
    row(&T::draw_2di_colorized_polytriangle, KRB_OWN(draw_2di_colorized_polytriangle)),
    row(&T::draw_dci_colorized_polytriangle, KRB_OWN(draw_dci_colorized_polytriangle)),
    row(&T::draw_2d_gouraud_polytriangle, KRB_OWN(draw_2d_gouraud_polytriangle)),
    row(&T::draw_dc_gouraud_polytriangle, KRB_OWN(draw_dc_gouraud_polytriangle)),
    row(&T::draw_2di_gouraud_polytriangle, KRB_OWN(draw_2di_gouraud_polytriangle)),
    row(&T::draw_dci_gouraud_polytriangle, KRB_OWN(draw_dci_gouraud_polytriangle)),
    // The textured members of 32-bit pixels read alpha from texels and colours, whether alpha blending is asked for or not.
    row(&T::draw_2d_textured_polytriangle, {{{}, {}, {}, own(draw_2d_textured_polytriangle<D8>), own(draw_2d_textured_polytriangle<D32>), own(draw_2d_textured_polytriangle<D32A>)}}),
    row(&T::draw_dc_textured_polytriangle, {{{}, {}, {}, own(draw_dc_textured_polytriangle<D8>), own(draw_dc_textured_polytriangle<D32>), own(draw_dc_textured_polytriangle<D32A>)}}),
    row(&T::draw_2di_textured_polytriangle, {{{}, {}, {}, own(draw_2di_textured_polytriangle<D8>), own(draw_2di_textured_polytriangle<D32>), own(draw_2di_textured_polytriangle<D32A>)}}),
    row(&T::draw_dci_textured_polytriangle, {{{}, {}, {}, own(draw_dci_textured_polytriangle<D8>), own(draw_dci_textured_polytriangle<D32>), own(draw_dci_textured_polytriangle<D32A>)}}),
    row(&T::draw_2di_polyline, KRB_OWN(draw_2di_polyline)),
    row(&T::draw_2di_colorized_polyline, KRB_OWN(draw_2di_colorized_polyline)),
    row(&T::draw_2di_gouraud_polyline, KRB_OWN(draw_2di_gouraud_polyline)),
    row(&T::draw_dci_polyline, KRB_OWN(draw_dci_polyline)),
    row(&T::draw_dci_colorized_polyline, KRB_OWN(draw_dci_colorized_polyline)),
    row(&T::draw_dci_gouraud_polyline, KRB_OWN(draw_dci_gouraud_polyline)),
    row(&T::draw_dci_dot, KRB_OWN(draw_dci_dot)),
    row(&T::draw_2di_polymarker, {{own(draw_2di_polymarker<N8>), own(draw_2di_polymarker<N32>), own(draw_2di_polymarker<N32A>), {}, own(draw_2di_polymarker<D32>), own(draw_2di_polymarker<D32A>)}}),
    row(&T::draw_2di_colorized_polymarker, {{{}, {}, own(draw_2di_colorized_polymarker), {}, {}, {}}}),
    row(&T::draw_dci_ellipse, {{{}, own(draw_dci_ellipse), own(draw_dci_ellipse), {}, {}, {}}}),
    row(&T::draw_dci_elliptical_arc, {{{}, own(draw_dci_elliptical_arc), own(draw_dci_elliptical_arc), {}, {}, {}}}),
    // A buffer draws images of its own format itself.
    row(&T::draw_dci_rgb32_image, {{host(VD_Standard_Draw_DCI_RGB32_Image), own(draw_dci_rgb32_image<N32>), own(draw_dci_rgb32_image<N32>),
                                    host(VD_Standard_Draw_DCI_RGB32_Image), own(draw_dci_rgb32_image<D32>), own(draw_dci_rgb32_image<D32>)}}),
    row(&T::draw_dci_index8_image, {{own(draw_dci_index8_image<N8>), host(VD_Standard_Draw_DCI_Index8_Image), host(VD_Standard_Draw_DCI_Index8_Image),
                                     own(draw_dci_index8_image<D8>), host(VD_Standard_Draw_DCI_Index8_Image), host(VD_Standard_Draw_DCI_Index8_Image)}}),
    row(&T::write_depth_rectangle, {{{}, {}, {}, own(write_depth_rectangle), own(write_depth_rectangle), own(write_depth_rectangle)}}),
    row(&T::read_depth_image, {{{}, {}, {}, own(read_depth_image), own(read_depth_image), own(read_depth_image)}}),
    row(&T::clear_depth_rectangle, {{own(clear_no_depth), own(clear_no_depth), own(clear_no_depth), own(clear_depth_rectangle), own(clear_depth_rectangle), own(clear_depth_rectangle)}}),
    row(&T::draw_window, {{own(draw_window_index8), own(draw_window_rgb32), own(draw_window_rgb32), own(draw_window_index8), own(draw_window_rgb32), own(draw_window_rgb32)}}),
    row(&T::read_color_image, {{own(read_color_image_index8), own(read_color_image_rgb32), own(read_color_image_rgb32), own(read_color_image_index8), own(read_color_image_rgb32), own(read_color_image_rgb32)}}),
    every_case(&T::draw_2d_polygon, own(draw_2d_polygon)),
    every_case(&T::draw_dc_polygon, own(draw_dc_polygon)),
    every_case(&T::draw_2di_polygon, own(draw_2di_polygon)),
    every_case(&T::draw_dci_polygon, own(draw_dci_polygon)),
    every_case(&T::draw_dci_image, own(draw_dci_image)),
    every_case(&T::draw_3d_polytriangle, own(draw_3d_polytriangle)),
}; }
#undef KRB_OWN

// Without alpha blending, 8-bit textures store what is not transparent.
auto opaque_texture_table() { return std::tuple{
    row(&T::draw_2d_textured_polytriangle, {{{}, {}, {}, own(draw_2d_textured_polytriangle<D8, Pixel_Rule::store>), {}, {}}}),
    row(&T::draw_dc_textured_polytriangle, {{{}, {}, {}, own(draw_dc_textured_polytriangle<D8, Pixel_Rule::store>), {}, {}}}),
    row(&T::draw_2di_textured_polytriangle, {{{}, {}, {}, own(draw_2di_textured_polytriangle<D8, Pixel_Rule::store>), {}, {}}}),
    row(&T::draw_dci_textured_polytriangle, {{{}, {}, {}, own(draw_dci_textured_polytriangle<D8, Pixel_Rule::store>), {}, {}}}),
}; }

// With tiling the renderer cuts 3D strips and polylines to the tile itself.
auto tiling_table() { return std::tuple{
    every_case(&T::draw_3d_colorized_polytriangle, own(draw_3d_colorized_polytriangle)),
    every_case(&T::draw_3d_gouraud_polytriangle, own(draw_3d_gouraud_polytriangle)),
    every_case(&T::draw_3d_textured_polytriangle, own(draw_3d_textured_polytriangle)),
    every_case(&T::draw_3d_polyline, own(draw_3d_polyline)),
    every_case(&T::draw_3d_colorized_polyline, own(draw_3d_colorized_polyline)),
    every_case(&T::draw_3d_gouraud_polyline, own(draw_3d_gouraud_polyline)),
}; }

// Midpoint ellipses are too coarse for a printed page.
auto hardcopy_table() { return std::tuple{
    row(&T::draw_dci_ellipse, {{{}, host(VD_Standard_Draw_DCI_Ellipse), host(VD_Standard_Draw_DCI_Ellipse), {}, {}, {}}}),
    row(&T::draw_dci_elliptical_arc,
        {{{}, host(VD_Standard_Draw_DCI_Elliptical_Arc), host(VD_Standard_Draw_DCI_Elliptical_Arc), {}, {}, {}}}),
}; }
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
