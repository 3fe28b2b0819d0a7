// Members of the polygon slots.
#include "renderer/primitives/polygons.h"

#include "host/contour.h"
#include "host/scratch.h"
#include "host/strip.h"
#include "renderer/core/member.h"
#include "renderer/core/software_z_buffer.h"

namespace krb {

namespace {

constexpr std::int32_t longest_fan = 64;
constexpr VT_Vector view_direction{0, 0, 1};

// The slots that a kind of polygon draws through, as they are installed when it is drawn.
template <class Point> struct Triangle_Slots {
    Action_Slot<VT_Draw_Points<Point>> VT_Action_Table::*plain;
    Action_Slot<VT_Draw_Colorized<Point>> VT_Action_Table::*colorized;
};

constexpr Triangle_Slots<VT_Point> slots_2d{&VT_Action_Table::draw_2d_polytriangle,
                                            &VT_Action_Table::draw_2d_colorized_polytriangle};
constexpr Triangle_Slots<VT_Point> slots_dc{&VT_Action_Table::draw_dc_polytriangle,
                                            &VT_Action_Table::draw_dc_colorized_polytriangle};
constexpr Triangle_Slots<VT_DCI_Point> slots_2di{&VT_Action_Table::draw_2di_polytriangle,
                                                 &VT_Action_Table::draw_2di_colorized_polytriangle};
constexpr Triangle_Slots<VT_DCI_Point> slots_dci{&VT_Action_Table::draw_dci_polytriangle,
                                                 &VT_Action_Table::draw_dci_colorized_polytriangle};

struct Polygon_Call {
    VT_Renderer_Data& renderer;
    const VT_Rendition& rendition;
    const VT_RGB32* color; // null = the rendition's
};

template <class Point>
void draw_strip(const Polygon_Call& call, const Triangle_Slots<Point>& slots, std::int32_t count, const Point* points) {
    if (call.color) {
        const auto& slot = call.renderer.actions.*slots.colorized;
        slot.function(*slot.owner, call.rendition, count, points, call.color, true);
    } else {
        const auto& slot = call.renderer.actions.*slots.plain;
        slot.function(*slot.owner, call.rendition, count, points);
    }
}

void draw_fan(const Polygon_Call& call, const Triangle_Slots<VT_Point>& slots, std::int32_t count, const VT_Point* points) {
    VT_Point strip[static_cast<std::size_t>(longest_fan)];
    for (std::int32_t i = 0; i < count; ++i) {
        strip[i] = points[vorna::strip_order(i, count)];
    }
    draw_strip(call, slots, count, strip);
}

void draw_triangulated(const Polygon_Call& call, const Triangle_Slots<VT_Point>& slots, std::int32_t count,
                       const VT_Point* points) {
    struct Context {
        const Polygon_Call& call;
        const Triangle_Slots<VT_Point>& slots;
    } context{call, slots};
    VT_Reference<VT_Contour_Set> contours(new VT_Contour_Set(count, points, false));
    vorna::make_unique(contours).force_projection(view_direction);
    contours->triangulate(
        [](void* of, const VT_Point* corners) {
            const auto& to = *static_cast<const Context*>(of);
            draw_strip(to.call, to.slots, 3, corners);
        },
        &context);
}

// While another operation overrides the face pattern, the rendition that polygons are drawn with has that pattern. Null = the
// caller's own, which is never held: the caller may keep it on the stack, where nothing counts references.
VT_Reference<const VT_Rendition> overridden(const Software_Z_Buffer& renderer, const VT_Rendition& rendition) {
    if (renderer.face_override == 0 || renderer.face_override == rendition.face.pattern) {
        return nullptr;
    }
    VT_Reference<VT_Rendition> changed(static_cast<VT_Rendition*>(rendition.clone()));
    changed->face.pattern = renderer.face_override;
    return changed;
}

void draw_float_polygon(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_Point* points,
                        const VT_RGB32* color, const Triangle_Slots<VT_Point>& slots) {
    if (count < 3) {
        return;
    }
    const VT_Reference<const VT_Rendition> changed = overridden(renderer_of(data), rendition);
    const Polygon_Call call{data, changed ? *changed : rendition, color};
    if (count == 3) {
        draw_strip(call, slots, 3, points);
    } else if (count <= longest_fan && VD_Rank_Polygon(count, points).kind == 0) {
        draw_fan(call, slots, count, points);
    } else {
        draw_triangulated(call, slots, count, points);
    }
}

void draw_integer_polygon(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                          const VT_RGB32* color, const Triangle_Slots<VT_DCI_Point>& slots,
                          const Triangle_Slots<VT_Point>& float_slots) {
    if (count < 3) {
        return;
    }
    const Polygon_Call call{data, rendition, color};
    if (count == 3) {
        draw_strip(call, slots, 3, points);
        return;
    }
    vorna::Scratch<VT_Point> floats(count);
    for (std::int32_t i = 0; i < count; ++i) {
        floats[i] = {static_cast<float>(points[i].x), static_cast<float>(points[i].y), static_cast<float>(points[i].z)};
    }
    draw_triangulated(call, float_slots, count, floats.data());
}

template <class Slot, class... Arguments>
bool handed_to_host(VT_Renderer_Data& data, const VT_Rendition& rendition, const Arguments&... arguments) {
    if (rendition.face.pattern <= vorna::face_pattern::last_drawn_by_renderers) {
        return false;
    }
    Slot::standard()(data, rendition, arguments...);
    return true;
}

} // namespace

void draw_2d_polygon(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_Point* points,
                     const VT_RGB32* color) {
    if (!handed_to_host<slots::Draw_2D_Polygon>(data, rendition, count, points, color)) {
        draw_float_polygon(data, rendition, count, points, color, slots_2d);
    }
}

void draw_dc_polygon(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_Point* points,
                     const VT_RGB32* color) {
    if (!handed_to_host<slots::Draw_DC_Polygon>(data, rendition, count, points, color)) {
        draw_float_polygon(data, rendition, count, points, color, slots_dc);
    }
}

void draw_2di_polygon(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                      const VT_RGB32* color) {
    if (!handed_to_host<slots::Draw_2DI_Polygon>(data, rendition, count, points, color)) {
        draw_integer_polygon(data, rendition, count, points, color, slots_2di, slots_2d);
    }
}

void draw_dci_polygon(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                      const VT_RGB32* color) {
    if (!handed_to_host<slots::Draw_DCI_Polygon>(data, rendition, count, points, color)) {
        draw_integer_polygon(data, rendition, count, points, color, slots_dci, slots_dc);
    }
}

} // namespace krb
