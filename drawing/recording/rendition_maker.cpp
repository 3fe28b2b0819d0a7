// The host's renditions from the renditions of recordings.
#include "drawing/recording/rendition_maker.h"

#include "drawing/recording/session.h"

namespace vorna::drawing::recording {

namespace {

// The object that was made from the list earlier, or the result of `make`.
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

} // namespace

template <class Value> void Rendition_Maker::set(Value& attribute, const std::optional<Value>& value) {
    attribute = value.value_or(attribute);
}

void Rendition_Maker::set(VT_Reference<const VT_Line_Type_Set>& attribute,
                          const std::optional<std::optional<Line_Type_Set>>& set) {
    if (set && *set) {
        attribute = make_line_types(**set);
    }
}

void Rendition_Maker::set(VT_Reference<const VT_Pattern_Bitmap>& attribute, const std::optional<Bitmap>& bitmap) {
    if (bitmap) {
        attribute = once(bitmaps_, *bitmap->rows, *bitmap->width, [&] { return make_bitmap(*bitmap); });
    }
}

void Rendition_Maker::set(VT_Reference<const VT_Basic_Material>& attribute, const std::optional<Texture>& texture) {
    if (texture) {
        VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
        if (texture->texels) {
            material->texture = once(textures_, *texture->texels, *texture->width, [&] { return make_image(*texture); });
        }
        material->color = texture->color.value_or(material->color);
        material->has_texture_matrix = texture->matrix.has_value();
        material->texture_matrix = texture->matrix.value_or(VT_Matrix{});
        attribute = material;
    }
}

// Attributes that the group does not give stay as they are.
template <Keyed Group, class Host> void Rendition_Maker::set_group(Host& host, const Group& group, const VT_Palette& palette) {
    for_each_field<Group>([&](const auto& field) {
        auto& attribute = host.*field.host.value;
        if constexpr (requires { field.host.color; }) {
            attribute = index_of(group.*field.member, host.*field.host.color, palette);
        } else {
            set(attribute, group.*field.member);
        }
    });
}

VT_Reference<VT_Rendition> Rendition_Maker::make(const Rendition& rendition, const VT_Renderer_Options& options) {
    const auto& [hard_clip, depth_test, drawing_mode, flags, complex_clip, window_offset, face, line, marker] = rendition;
    VT_Reference<VT_Rendition> made(new VT_Rendition);
    made->face.mode = made->line.mode = made->marker.mode = drawing_mode.value_or(0);
    set_group(made->face, face, options.palette());
    set_group(made->line, line, options.palette());
    set_group(made->marker, marker, options.palette());
    made->drawing_flags = flags.value_or(0);
    made->clip.hard_clip = hard_clip.value_or(window_rectangle(options));
    made->clip.depth_test = depth_test.value_or(true);
    made->clip.window_offset = window_offset.value_or(VT_Int_Pair{});
    if (complex_clip && *complex_clip) {
        const auto& contours = **complex_clip;
        made->clip.complex_clip = once(contours_, contours, 0, [&contours] { return new VT_Contour_Set(*contours); });
    }
    return made;
}

std::uint8_t index_of(const std::optional<std::uint8_t>& given, VT_RGB32 color, const VT_Palette& palette) {
    return given ? *given : static_cast<std::uint8_t>(palette.closest_match(color, false));
}

} // namespace vorna::drawing::recording
