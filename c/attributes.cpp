// Attributes of a canvas: whole numbers and colours by name, and the objects of a rendition.
#include <algorithm>
#include <vector>

#include "c/call.h"
#include "c/handles.h"
#include "host/texture.h"

namespace vorna::c {
namespace {

// A whole number of the rendition, and the values that it has.
struct Number_Attribute {
    std::int32_t name;
    std::int32_t least, most;
    std::int32_t (*get)(const VT_Rendition&);
    void (*set)(VT_Rendition&, std::int32_t);
};

template <auto Group, auto Member> constexpr Number_Attribute number(std::int32_t name, std::int32_t least, std::int32_t most) {
    return {name, least, most, [](const VT_Rendition& rendition) { return static_cast<std::int32_t>(rendition.*Group.*Member); },
            [](VT_Rendition& rendition, std::int32_t value) {
                auto& member = rendition.*Group.*Member;
                member = static_cast<std::remove_reference_t<decltype(member)>>(value);
            }};
}

constexpr auto face = &VT_Rendition::face;
constexpr auto line = &VT_Rendition::line;
constexpr auto marker = &VT_Rendition::marker;

constexpr Number_Attribute numbers[] = {
    number<face, &VT_Face_Attributes::pattern>(VORNA_FACE_PATTERN, 0, INT32_MAX),
    number<face, &VT_Face_Attributes::flags>(VORNA_FACE_FLAGS, 0, INT32_MAX),
    number<face, &VT_Face_Attributes::mode>(VORNA_FACE_MODE, INT32_MIN, INT32_MAX),
    number<face, &VT_Face_Attributes::index>(VORNA_FACE_INDEX, 0, 255),
    number<face, &VT_Face_Attributes::contrast_index>(VORNA_FACE_CONTRAST_INDEX, 0, 255),
    number<line, &VT_Line_Attributes::weight>(VORNA_LINE_WIDTH, 0, INT32_MAX),
    number<line, &VT_Line_Attributes::style>(VORNA_LINE_STYLE, 0, INT32_MAX),
    number<line, &VT_Line_Attributes::flags>(VORNA_LINE_FLAGS, 0, INT32_MAX),
    number<line, &VT_Line_Attributes::mode>(VORNA_LINE_MODE, INT32_MIN, INT32_MAX),
    number<line, &VT_Line_Attributes::index>(VORNA_LINE_INDEX, 0, 255),
    number<line, &VT_Line_Attributes::cap>(VORNA_LINE_CAP, line_cap::butt, line_cap::square),
    number<line, &VT_Line_Attributes::join>(VORNA_LINE_JOIN, line_join::round, line_join::bevel),
    number<marker, &VT_Marker_Attributes::symbol>(VORNA_MARKER_SYMBOL, 0, INT32_MAX),
    number<marker, &VT_Marker_Attributes::size>(VORNA_MARKER_SIZE, 0, INT32_MAX),
    number<marker, &VT_Marker_Attributes::mode>(VORNA_MARKER_MODE, INT32_MIN, INT32_MAX),
    number<marker, &VT_Marker_Attributes::index>(VORNA_MARKER_INDEX, 0, 255),
    {VORNA_DRAWING_FLAGS, 0, INT32_MAX,
     [](const VT_Rendition& rendition) { return static_cast<std::int32_t>(rendition.drawing_flags); },
     [](VT_Rendition& rendition, std::int32_t value) { rendition.drawing_flags = static_cast<std::uint32_t>(value); }},
    {VORNA_DEPTH_USE, INT32_MIN, INT32_MAX, [](const VT_Rendition& rendition) { return std::int32_t{rendition.clip.depth_test}; },
     [](VT_Rendition& rendition, std::int32_t value) { rendition.clip.depth_test = value != 0; }},
};

// The attribute of that name in a table.
template <class Attribute, std::size_t count> const Attribute& attribute_of(const Attribute (&table)[count], std::int32_t name) {
    const auto* const found = std::ranges::find(table, name, &Attribute::name);
    require(found != std::end(table), [&] { return "attribute: expected one of this type, found " + std::to_string(name); });
    return *found;
}

// A colour of the rendition, and where its palette index is; null = it has none.
struct Color_Attribute {
    std::int32_t name;
    VT_RGB32& (*color)(VT_Rendition&);
    std::uint8_t* (*index)(VT_Rendition&);
};

constexpr Color_Attribute colors[] = {
    {VORNA_FACE_COLOR, [](VT_Rendition& r) -> VT_RGB32& { return r.face.color; }, [](VT_Rendition& r) { return &r.face.index; }},
    {VORNA_FACE_CONTRAST_COLOR, [](VT_Rendition& r) -> VT_RGB32& { return r.face.contrast_color; },
     [](VT_Rendition& r) { return &r.face.contrast_index; }},
    {VORNA_LINE_COLOR, [](VT_Rendition& r) -> VT_RGB32& { return r.line.color; }, [](VT_Rendition& r) { return &r.line.index; }},
    {VORNA_LINE_CONTRAST_COLOR, [](VT_Rendition& r) -> VT_RGB32& { return r.line.contrast_color; },
     [](VT_Rendition&) -> std::uint8_t* { return nullptr; }},
    {VORNA_MARKER_COLOR, [](VT_Rendition& r) -> VT_RGB32& { return r.marker.color; },
     [](VT_Rendition& r) { return &r.marker.index; }},
};

void set(Canvas& canvas, const Color_Attribute& attribute, VT_RGB32 color) {
    attribute.color(canvas.rendition()) = color;
    if (std::uint8_t* const index = attribute.index(canvas.rendition())) {
        *index = canvas.index_of(color);
    }
}

// One of the caller's line types.
VT_Reference<const VT_Line_Type> line_type_of(const vorna_line_type& given) {
    require_list(given.lengths, given.elements, "lengths");
    require_list(given.kinds, given.elements, "kinds");
    const auto require_length = [](const char* name, double length) {
        require(std::isfinite(length) && length >= 0,
                [&] { return std::string(name) + ": expected a finite number of 0 or more"; });
    };
    require_length("width", given.width);
    require_length("leading", given.leading);
    require_length("trailing", given.trailing);
    const VT_Reference<VT_Line_Type> type(new VT_Line_Type);
    type->kind = given.kind;
    type->mode = given.mode;
    type->width = given.width;
    type->color = host_color(given.color);
    type->leading[0] = given.leading;
    type->trailing[0] = given.trailing;
    for (std::size_t i = 0; i < given.elements; ++i) {
        require_length("lengths", given.lengths[i]);
        type->lengths.push_back(given.lengths[i]);
        type->kinds.push_back(given.kinds[i]);
    }
    return type;
}

VT_Reference<const VT_Basic_Material> material_of(const vorna_image* image, const double* matrix, const vorna_color* color) {
    if (!image) {
        return {};
    }
    const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
    if (color) {
        material->color = host_color(*color);
    }
    material->texture = image->pixels;
    if (matrix) {
        for (std::size_t i = 0; i < 16; ++i) {
            require_finite("matrix", matrix[i]);
            material->texture_matrix.m[i / 4][i % 4] = matrix[i];
        }
        material->has_texture_matrix = true;
    }
    VT_Face_Attributes drawn;
    drawn.material = material;
    require(drawable_texture(drawn) != nullptr,
            "image: expected VORNA_RGB32 without gaps between rows, its sides powers of two up to 16384");
    return material;
}

} // namespace
} // namespace vorna::c

using namespace vorna::c;

vorna_status vorna_set_attribute(vorna_canvas* canvas, int32_t attribute, int32_t value) {
    return guarded([&] {
        vorna_canvas& changed = required(canvas, "canvas");
        if (attribute == VORNA_DEPTH_WRITE) {
            changed.canvas().set_depth_write(value != 0);
            changed.has_depth_writing = value != 0;
        } else if (attribute == VORNA_DEPTH_TEST) {
            const auto test = static_cast<vorna::Depth_Test>(value);
            require(test == vorna::Depth_Test::nearer || test == vorna::Depth_Test::nearer_or_equal ||
                        test == vorna::Depth_Test::farther,
                    [&] { return "value: expected 1, 2 or 5, found " + std::to_string(value); });
            changed.canvas().set_depth_test(test);
            changed.depth_test = test;
        } else {
            const Number_Attribute& found = attribute_of(numbers, attribute);
            require_range("value", value, found.least, found.most);
            found.set(changed.canvas().rendition(), value);
        }
    });
}

vorna_status vorna_get_attribute(vorna_canvas* canvas, int32_t attribute, int32_t* value) {
    return guarded([&] {
        vorna_canvas& asked = required(canvas, "canvas");
        required(value, "value") = 0;
        *value = attribute == VORNA_DEPTH_WRITE  ? std::int32_t{asked.has_depth_writing}
                 : attribute == VORNA_DEPTH_TEST ? static_cast<std::int32_t>(asked.depth_test)
                                                 : attribute_of(numbers, attribute).get(asked.canvas().rendition());
    });
}

vorna_status vorna_set_color(vorna_canvas* canvas, int32_t attribute, vorna_color color) {
    return guarded([&] {
        vorna::Canvas& changed = required(canvas, "canvas").canvas();
        const VT_RGB32 given = host_color(color);
        if (attribute == VORNA_COLOR) {
            changed.set_color(given);
        } else if (attribute == VORNA_CONTRAST_COLOR) {
            set(changed, attribute_of(colors, VORNA_FACE_CONTRAST_COLOR), given);
            set(changed, attribute_of(colors, VORNA_LINE_CONTRAST_COLOR), given);
        } else {
            set(changed, attribute_of(colors, attribute), given);
        }
    });
}

vorna_status vorna_get_color(vorna_canvas* canvas, int32_t attribute, vorna_color* color) {
    return guarded([&] {
        vorna::Canvas& asked = required(canvas, "canvas").canvas();
        required(color, "color") = {};
        *color = c_color(attribute_of(colors, attribute).color(asked.rendition()));
    });
}

vorna_status vorna_set_clip(vorna_canvas* canvas, const vorna_rectangle* clip) {
    return guarded([&] {
        vorna::Canvas& changed = required(canvas, "canvas").canvas();
        changed.rendition().clip.hard_clip = clip ? host_rectangle(*clip) : changed.window();
    });
}

vorna_status vorna_set_clip_region(vorna_canvas* canvas, size_t contours, const size_t* point_counts, const vorna_point* points,
                                   int32_t x, int32_t y) {
    return guarded([&] {
        vorna_canvas& changed = required(canvas, "canvas");
        require_list(point_counts, contours, "point_counts");
        VT_Reference<const VT_Contour_Set> region;
        if (contours > 0) {
            require(changed.has_clip_regions, "canvas: expected settings with clip_regions");
            std::vector<VT_Contour_Set::Contour> lists;
            for (std::size_t i = 0; i < contours; ++i) {
                require_list(points, point_counts[i], "points");
                VT_Contour_Set::Contour& contour = lists.emplace_back();
                for (std::size_t k = 0; k < point_counts[i]; ++k, ++points) {
                    require_finite("points", points->x);
                    require_finite("points", points->y);
                    contour.push_back({points->x, points->y, 0});
                }
            }
            region = new VT_Contour_Set(std::move(lists));
        }
        VT_Clip_Attributes& clip = changed.canvas().rendition().clip;
        clip.complex_clip = std::move(region);
        clip.window_offset = {x, y};
    });
}

vorna_status vorna_set_face_bitmap(vorna_canvas* canvas, int32_t width, int32_t height, const uint8_t* cells) {
    return guarded([&] {
        VT_Face_Attributes& changed = required(canvas, "canvas").canvas().rendition().face;
        VT_Reference<const VT_Pattern_Bitmap> bitmap;
        if (cells) {
            require_range("width", width, 1, vorna::largest_buffer_side);
            require_range("height", height, 1, vorna::largest_buffer_side);
            const std::ptrdiff_t count = std::ptrdiff_t{width} * height;
            bitmap = new VT_Pattern_Bitmap(width, height, std::vector<std::uint8_t>(cells, cells + count));
        }
        changed.bitmap = std::move(bitmap);
    });
}

vorna_status vorna_set_texture(vorna_canvas* canvas, const vorna_image* image, const double* matrix, const vorna_color* color) {
    return guarded([&] { required(canvas, "canvas").canvas().rendition().face.material = material_of(image, matrix, color); });
}

vorna_status vorna_set_line_types(vorna_canvas* canvas, size_t count, const vorna_line_type* const* types, int32_t per_segment,
                                  double scale) {
    return guarded([&] {
        VT_Line_Attributes& changed = required(canvas, "canvas").canvas().rendition().line;
        require_list(types, count, "types");
        if (count == 0) {
            changed.line_types = VT_Line_Type_Set::None;
            return;
        }
        require(std::isfinite(scale) && scale > 0, "scale: expected a finite number above 0");
        const VT_Reference<VT_Line_Type_Set> set(new VT_Line_Type_Set);
        set->per_segment = per_segment != 0;
        set->scale = scale;
        for (std::size_t i = 0; i < count; ++i) {
            set->types.push_back(types[i] ? line_type_of(*types[i]) : VT_Line_Type::None);
        }
        changed.line_types = set;
    });
}
