// The action table: one slot a primitive and coordinate form, and the host's standard function behind each.
#pragma once

#include <cstdint>
#include <string_view>

#include "host/color.h"
#include "host/export.h"
#include "host/frame_buffer.h"
#include "host/geometry.h"

class VT_Renderer_Data;
class VT_Rendition;

// Coordinate forms, all with a depth that counts where there is a depth buffer: 2D = floats and 2DI = integers, which are cut to
// the hard clip; DC = floats and DCI = integers inside the window, which their caller has clipped; 3D = doubles that the host has
// transformed and that may lie far outside the window, cut to the hard clip as well.

// count points: a polyline, a strip of count - 2 triangles, or markers.
template <class Point>
using VT_Draw_Points = void(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const Point* points);

// One colour a segment, triangle or marker; with single_color the first one for all.
template <class Point>
using VT_Draw_Colorized = void(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const Point* points,
                               const VT_RGB32* colors, bool single_color);

// One colour a point.
template <class Point>
using VT_Draw_Gouraud = void(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const Point* points,
                             const VT_RGB32* colors);

// One colour and parameter_width texture parameters a point; parameter weights and normals may be null.
template <class Point>
using VT_Draw_Textured = void(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const Point* points,
                              const VT_RGB32* colors, const VT_Parameter* parameters, std::int32_t parameter_width,
                              const float* weights, const VT_Vector* normals);

// color: null = the rendition's own.
template <class Point>
using VT_Draw_Polygon = void(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const Point* points,
                             const VT_RGB32* color);
using VT_Draw_Dot = void(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* point, const VT_RGB32* color);

// radii: x = along the columns, y = along the rows. Angles in radians; color: null = the rendition's line colour.
using VT_Draw_Ellipse = void(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* center, const VT_DCI_Point* radii,
                             double start, double end, double rotation, const VT_RGB32* color);

// Nothing is known of what it tells; callers give null and nobody reads it.
struct VT_Packing;

// From row start.y down to end.y, columns start.x to end.x; stride: bytes from one source row to the next.
using VT_Draw_Index8_Image = void(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* start, const VT_DCI_Point* end,
                                  std::int32_t stride, const std::uint8_t* pixels);
using VT_Draw_RGB32_Image = void(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* start, const VT_DCI_Point* end,
                                 std::int32_t stride, const VT_RGB32* pixels, std::int32_t reserved, const VT_Packing* packing);
using VT_Draw_Image = void(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* start, const VT_Shared_Image* image);

// Works on the rendition's window attributes.
using VT_Window_Action = void(VT_Renderer_Data&, const VT_Rendition&);

// Rows from top_left downwards; stride: bytes from one source row to the next; depths: null = zeros.
using VT_Write_Depth = void(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* top_left,
                            const VT_DCI_Point* bottom_right, std::int32_t stride, const std::uint16_t* depths);
// image: reused when it fits, else replaced; null when the format cannot be given.
using VT_Read_Image = void(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* top_left, const VT_DCI_Point* bottom_right,
                           const Buffer_Format* format, VT_Reference<VT_Shared_Image>& image);

template <class Function> struct Action_Slot {
    VT_Renderer_Data* owner = nullptr;
    Function* function = nullptr;
    std::uint64_t reserved = 0;
    std::int32_t enabled = 0; // 1 = a function is installed
};

struct VT_Action_Table {
#define VT_ACTION(slot, name, ...) Action_Slot<__VA_ARGS__> slot;
#include "host/action_list.inc"
#undef VT_ACTION
};

// The host's own drawing of every slot; what a renderer does not draw goes there. None of them is null in this host.
#define VT_ACTION(slot, name, ...) VORNA_API __VA_ARGS__ VD_Standard_##name;
#include "host/action_list.inc"
#undef VT_ACTION

// Fills a rectangle of device pixels with the rendition's window fill.
VORNA_API void VD_Span_DC_Rectangle(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t x_min,
                                    std::int32_t x_max, std::int32_t y_min, std::int32_t y_max);

namespace vorna {

// Calls visit(slot name, pointer to the table's member, standard function) for every slot in order.
template <class Visitor> void for_each_action(Visitor&& visit) {
#define VT_ACTION(slot, name, ...) visit(std::string_view(#slot), &VT_Action_Table::slot, &VD_Standard_##name);
#include "host/action_list.inc"
#undef VT_ACTION
}

} // namespace vorna
