// The action table: a slot for each primitive and coordinate form, and the standard function of each slot.
#pragma once

#include <cstdint>
#include <string_view>

#include "host/color.h"
#include "host/export.h"
#include "host/frame_buffer.h"
#include "host/geometry.h"

class VT_Renderer_Data;
class VT_Rendition;

// Coordinate forms, in device pixels. The slots of the forms 2D (floats), 2DI (integers) and 3D (doubles) take points anywhere
// and clip to the hard clip. Those of DC (floats) and DCI (integers) expect points in the window, or as near to
// it as docs/host.md says. z is a depth, which only counts when there is a depth buffer.

// points: count of them. A polyline, a strip of count - 2 triangles, or markers.
template <class Point>
using VT_Draw_Points = void(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const Point* points);

// colors: one for each segment, triangle or marker, or a single one for all with single_color.
template <class Point>
using VT_Draw_Colorized = void(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const Point* points,
                               const VT_RGB32* colors, bool single_color);

// colors: one for each point.
template <class Point>
using VT_Draw_Gouraud = void(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const Point* points,
                             const VT_RGB32* colors);

// colors: one for each point. parameters: parameter_width of them for each point, the first two are u and v. weights and normals:
// one for each point, or null; passed on unread.
template <class Point>
using VT_Draw_Textured = void(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const Point* points,
                              const VT_RGB32* colors, const VT_Parameter* parameters, std::int32_t parameter_width,
                              const float* weights, const VT_Vector* normals);

// color: null = that of the rendition.
template <class Point>
using VT_Draw_Polygon = void(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const Point* points,
                             const VT_RGB32* color);
using VT_Draw_Dot = void(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* point, const VT_RGB32* color);

// radii: in pixels, x along the columns and y along the rows before the rotation. start, end, rotation: in radians,
// counter-clockwise. color: null = the line colour of the rendition.
using VT_Draw_Ellipse = void(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* center, const VT_DCI_Point* radii,
                             double start, double end, double rotation, const VT_RGB32* color);

// Reserved: callers pass null and nothing reads it.
struct VT_Packing;

// Rows start.y down to end.y, columns start.x to end.x, all inclusive. stride: bytes from one source row to the next.
using VT_Draw_Index8_Image = void(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* start, const VT_DCI_Point* end,
                                  std::int32_t stride, const std::uint8_t* pixels);
using VT_Draw_RGB32_Image = void(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* start, const VT_DCI_Point* end,
                                 std::int32_t stride, const VT_RGB32* pixels, std::int32_t reserved, const VT_Packing* packing);
using VT_Draw_Image = void(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* start, const VT_Shared_Image* image);

// Reads the window attributes of the rendition.
using VT_Window_Action = void(VT_Renderer_Data&, const VT_Rendition&);

// Both corners inclusive. depths: rows from top_left downwards, null = zeros; stride: bytes from one source row to the next.
using VT_Write_Depth = void(VT_Renderer_Data&, const VT_Rendition&, const VT_DCI_Point* top_left,
                            const VT_DCI_Point* bottom_right, std::int32_t stride, const std::uint16_t* depths);
// Both corners inclusive. image: reused when size and format fit, else replaced; null when the buffer cannot be read in the
// format.
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

// The standard functions: how the host draws what a renderer hands over.
#define VT_ACTION(slot, name, ...) VORNA_API __VA_ARGS__ VD_Standard_##name;
#include "host/action_list.inc"
#undef VT_ACTION

// Fills a rectangle of device pixels, sides inclusive, with the window fill of the rendition.
VORNA_API void VD_Span_DC_Rectangle(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t x_min,
                                    std::int32_t x_max, std::int32_t y_min, std::int32_t y_max);

namespace vorna {

// Calls visit(name of the slot, pointer to the member of VT_Action_Table, standard function) for every slot in order.
template <class Visitor> void for_each_action(Visitor&& visit) {
#define VT_ACTION(slot, name, ...) visit(std::string_view(#slot), &VT_Action_Table::slot, &VD_Standard_##name);
#include "host/action_list.inc"
#undef VT_ACTION
}

} // namespace vorna
