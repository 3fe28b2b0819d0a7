// The host's renditions from the renditions of recordings.
#include "drawing/recording/rendition_maker.h"

#include "drawing/recording/session.h"

namespace vorna::drawing::recording {

namespace {

// What was made of the list before, or what `make` makes of it now.
template <class Made, class Element, class Make>
auto once(Made& made, const Shared_List<Element>& list, std::int32_t width, Make make) {
    auto& place = made[{list.get(), width}];
    if (!place) {
        place = make();
    }
    return place;
}

VT_Reference<const VT_Pattern_Bitmap> make_bitmap(const Bitmap& bitmap) {
    std::vector<std::uint8_t> cells;
    for (const std::string& row : **bitmap.rows) {
        for (const char cell : row) {
            cells.push_back(cell == '1');
        }
    }
    return new VT_Pattern_Bitmap(*bitmap.width, *bitmap.height, std::move(cells));
}

VT_Reference<const VT_Shared_Image> make_image(const Texture& texture) {
    std::vector<VT_RGB32> texels = **texture.texels;
    return new VT_Shared_Image(*texture.width, *texture.height, Buffer_Format::rgb32, *texture.width * 4,
                               reinterpret_cast<std::uint8_t*>(texels.data()), true, true);
}

VT_Reference<const VT_Line_Type> make_line_type(const Line_Type& type) {
    VT_Reference<VT_Line_Type> made(new VT_Line_Type);
    made->kind = type.kind;
    made->width = type.width;
    made->color = type.color;
    made->mode = type.mode;
    made->leading[0] = made->leading[1] = type.leading;
    made->trailing[0] = made->trailing[1] = type.trailing;
    for (const Line_Element& element : type.elements) {
        made->lengths.push_back(element.length);
        made->kinds.push_back(element.kind);
    }
    return made;
}

VT_Reference<const VT_Line_Type_Set> make_line_types(const Line_Type_Set& set) {
    VT_Reference<VT_Line_Type_Set> made(new VT_Line_Type_Set);
    made->per_segment = set.per_segment.value_or(false);
    made->scale = set.scale.value_or(1);
    if (set.types) {
        for (const auto& type : **set.types) {
            made->types.push_back(type ? make_line_type(*type) : VT_Line_Type::None);
        }
    }
    return made;
}

void set_line(VT_Line_Attributes& attributes, const Line& line, const VT_Palette& palette) {
    attributes.color = line.color.value_or(VT_RGB32{});
    attributes.index = index_of(line.index, attributes.color, palette);
    attributes.weight = line.weight.value_or(1);
    attributes.style = line.style.value_or(0);
    attributes.flags = line.flags.value_or(0);
    attributes.mode = line.mode.value_or(attributes.mode);
    attributes.cap = line.cap.value_or(vorna::line_cap::butt);
    attributes.join = line.join.value_or(vorna::line_join::round);
    if (line.line_types && *line.line_types) {
        attributes.line_types = make_line_types(**line.line_types);
    }
}

void set_marker(VT_Marker_Attributes& attributes, const Marker& marker, const VT_Palette& palette) {
    attributes.color = marker.color.value_or(VT_RGB32{});
    attributes.index = index_of(marker.index, attributes.color, palette);
    attributes.symbol = marker.symbol.value_or(0);
    attributes.size = marker.size.value_or(1);
    attributes.mode = marker.mode.value_or(attributes.mode);
}

} // namespace

VT_Reference<VT_Rendition> Rendition_Maker::make(const Rendition& rendition, const VT_Renderer_Options& options) {
    VT_Reference<VT_Rendition> made(new VT_Rendition);
    made->face.mode = made->line.mode = made->marker.mode = rendition.drawing_mode.value_or(0);
    set_face(made->face, rendition.face, options.palette());
    set_line(made->line, rendition.line, options.palette());
    set_marker(made->marker, rendition.marker, options.palette());
    made->drawing_flags = rendition.flags.value_or(0);
    made->clip.hard_clip = rendition.hard_clip.value_or(window_rectangle(options));
    made->clip.depth_test = rendition.depth_test.value_or(true);
    made->clip.window_offset = rendition.window_offset.value_or(VT_Int_Pair{});
    if (const auto& clip = rendition.complex_clip; clip && *clip) {
        made->clip.complex_clip = once(contours_, **clip, 0, [&] { return new VT_Contour_Set(***clip); });
    }
    return made;
}

void Rendition_Maker::set_face(VT_Face_Attributes& attributes, const Face& face, const VT_Palette& palette) {
    attributes.color = face.color.value_or(VT_RGB32{});
    attributes.index = index_of(face.index, attributes.color, palette);
    attributes.contrast_color = face.contrast_color.value_or(VT_RGB32{});
    attributes.contrast_index = index_of(face.contrast_index, attributes.contrast_color, palette);
    attributes.pattern = face.pattern.value_or(vorna::face_pattern::solid);
    attributes.flags = face.flags.value_or(0);
    attributes.mode = face.mode.value_or(attributes.mode);
    if (const auto& bitmap = face.bitmap) {
        attributes.bitmap = once(bitmaps_, *bitmap->rows, *bitmap->width, [&] { return make_bitmap(*bitmap); });
    }
    if (const auto& texture = face.texture) {
        VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
        if (texture->texels) {
            material->texture = once(textures_, *texture->texels, *texture->width, [&] { return make_image(*texture); });
        }
        material->color = texture->color.value_or(material->color);
        material->has_texture_matrix = texture->matrix.has_value();
        material->texture_matrix = texture->matrix.value_or(VT_Matrix{});
        attributes.material = material;
    }
}

std::uint8_t index_of(const std::optional<std::uint8_t>& given, VT_RGB32 color, const VT_Palette& palette) {
    return given ? *given : static_cast<std::uint8_t>(palette.closest_match(color, false));
}

} // namespace vorna::drawing::recording
