// The renditions of an application's calls, in the form of recordings.
#include "drawing/recording/rendition_recorder.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <type_traits>

#include "drawing/recording/argument_copies.h"
#include "drawing/recording/rendition_maker.h"

namespace vorna::drawing::recording {

namespace {

// Bytes of values without padding, and addresses of objects with their serial numbers.
class Bytes {
public:
    explicit Bytes(std::string& bytes) : bytes_(bytes) { bytes_.clear(); }

    template <class... Values> Bytes& add(const Values&... values) {
        (bytes_.append(reinterpret_cast<const char*>(&values), sizeof values), ...);
        return *this;
    }
    template <class Object> Bytes& object(const VT_Reference<const Object>& object) {
        const Object* address = object.get();
        return add(reinterpret_cast<std::uintptr_t>(address), address ? address->serial() : 0U);
    }

private:
    std::string& bytes_;
};

void add_bytes(Bytes& bytes, const VT_Reference<const VT_Basic_Material>& material) {
    bytes.object(material).object(material ? material->texture : nullptr);
}

template <class Object> void add_bytes(Bytes& bytes, const VT_Reference<const Object>& object) {
    bytes.object(object);
}

template <class Value> void add_bytes(Bytes& bytes, const Value& value) {
    static_assert(std::is_trivially_copyable_v<Value>);
    bytes.add(value);
}

// The attributes of the host that the group has keys for.
template <Keyed Group, class Host> void add_attributes(Bytes& bytes, const Host& host) {
    for_each_field<Group>([&](const auto& field) { add_bytes(bytes, host.*field.host.value); });
}

void put_bytes(std::string& text, const VT_Rendition& rendition) {
    Bytes bytes(text);
    add_attributes<Face>(bytes, rendition.face);
    add_attributes<Line>(bytes, rendition.line);
    add_attributes<Marker>(bytes, rendition.marker);
    const VT_Clip_Attributes& clip = rendition.clip;
    bytes.add(clip.hard_clip, clip.depth_test, clip.window_offset, rendition.drawing_flags).object(clip.complex_clip);
}

std::optional<Line_Type> described_type(const VT_Reference<const VT_Line_Type>& type) {
    if (!type || type == VT_Line_Type::None) {
        return {};
    }
    std::vector<Line_Element> elements;
    for (std::size_t i = 0; i < std::min(type->lengths.size(), type->kinds.size()); ++i) {
        const double kind = type->kinds[i];
        elements.push_back({type->lengths[i], kind > 0 ? 1 : kind < 0 ? -1 : 0});
    }
    return made_of<Line_Type>(type->kind, type->width, type->color, type->mode, type->leading[0], type->trailing[0],
                              std::move(elements));
}

std::optional<std::optional<Line_Type_Set>> described_types(const VT_Reference<const VT_Line_Type_Set>& set) {
    if (!set || set == VT_Line_Type_Set::None) {
        return {};
    }
    std::vector<std::optional<Line_Type>> types;
    std::transform(set->types.begin(), set->types.end(), std::back_inserter(types), described_type);
    return made_of<Line_Type_Set>(set->per_segment, set->scale,
                                  std::make_shared<const std::vector<std::optional<Line_Type>>>(std::move(types)));
}

} // namespace

void Rendition_Recorder::begin(const VT_Int_Rectangle& window) {
    window_ = window;
    renditions_.clear();
    last_ = nullptr;
}

// Most calls draw with the rendition of the call before, and many of the others with an earlier one.
std::shared_ptr<const Rendition> Rendition_Recorder::recorded(const VT_Rendition& rendition) {
    std::string bytes;
    put_bytes(bytes, rendition);
    if (last_ && bytes == last_bytes_) {
        return last_;
    }
    auto& known = renditions_[bytes];
    if (!known) {
        known = std::make_shared<const Rendition>(described(rendition));
        for (const VT_Counted* object : std::initializer_list<const VT_Counted*>{
                 rendition.face.bitmap.get(), rendition.face.material.get(), rendition.line.line_types.get()}) {
            if (object) {
                kept_.emplace_back(object);
            }
        }
    }
    last_bytes_ = std::move(bytes);
    last_ = known;
    return last_;
}

// The value of an attribute; empty where it is the default.
template <class Value> std::optional<Value> Rendition_Recorder::described_attribute(const Value& value, const Value& usual) {
    return unless(value, usual);
}

std::optional<std::optional<Line_Type_Set>>
Rendition_Recorder::described_attribute(const VT_Reference<const VT_Line_Type_Set>& set,
                                        const VT_Reference<const VT_Line_Type_Set>&) {
    return described_types(set);
}

std::optional<Bitmap> Rendition_Recorder::described_attribute(const VT_Reference<const VT_Pattern_Bitmap>& bitmap,
                                                              const VT_Reference<const VT_Pattern_Bitmap>&) {
    if (!bitmap) {
        return {};
    }
    std::vector<std::string> rows;
    for (std::int32_t r = 0; r < bitmap->height(); ++r) {
        std::string& row = rows.emplace_back();
        std::transform(bitmap->row(r), bitmap->row(r) + bitmap->width(), std::back_inserter(row),
                       [](std::uint8_t cell) { return cell ? '1' : '0'; });
    }
    return made_of<Bitmap>(bitmap->width(), bitmap->height(), std::make_shared<const std::vector<std::string>>(std::move(rows)));
}

std::optional<Texture> Rendition_Recorder::described_attribute(const VT_Reference<const VT_Basic_Material>& material,
                                                               const VT_Reference<const VT_Basic_Material>&) {
    return material ? std::optional(described_texture(*material)) : std::nullopt;
}

// mode: the default of the group's own mode.
template <Keyed Group, class Host> Group Rendition_Recorder::described_group(const Host& host, std::int32_t mode) {
    Host usual;
    usual.mode = mode;
    Group group;
    for_each_field<Group>([&](const auto& field) {
        if constexpr (requires { field.host.color; }) {
            group.*field.member = index_unless_closest(host.*field.host.value, host.*field.host.color);
        } else {
            group.*field.member = described_attribute(host.*field.host.value, usual.*field.host.value);
        }
    });
    return group;
}

Rendition Rendition_Recorder::described(const VT_Rendition& rendition) {
    const VT_Clip_Attributes& clip = rendition.clip;
    const std::int32_t mode = rendition.face.mode;
    std::optional<std::optional<Shared_List<std::vector<VT_Point>>>> complex_clip;
    if (const auto& set = clip.complex_clip) {
        auto& [kept, contours] = contours_[{set.get(), set->serial()}];
        if (!kept) {
            kept = set;
            contours = std::make_shared<const std::vector<std::vector<VT_Point>>>(set->contours());
        }
        complex_clip = contours;
    }
    return made_of<Rendition>(unless(clip.hard_clip, window_), unless(clip.depth_test, true), unless(mode, 0),
                              unless(rendition.drawing_flags, 0U), complex_clip, unless(clip.window_offset, VT_Int_Pair{}),
                              described_group<Face>(rendition.face, mode), described_group<Line>(rendition.line, mode),
                              described_group<Marker>(rendition.marker, mode));
}

Texture Rendition_Recorder::described_texture(const VT_Basic_Material& material) {
    std::optional<std::int32_t> width, height;
    std::optional<Shared_List<VT_RGB32>> texels;
    if (const auto& image = material.texture) {
        if (image->format() != Buffer_Format::rgb32) {
            problem_ = problem_.empty() ? "a texture of other than 32-bit colours" : problem_;
            return {};
        }
        auto& [kept, colors] = texels_[{image.get(), image->serial()}];
        if (!kept) {
            kept = image;
            std::vector<VT_RGB32> rows(static_cast<std::size_t>(image->width()) * static_cast<std::size_t>(image->height()));
            for (std::int32_t r = 0; r < image->height(); ++r) {
                std::memcpy(rows.data() + std::int64_t{r} * image->width(), image->row(r),
                            static_cast<std::size_t>(image->width()) * sizeof(VT_RGB32));
            }
            colors = std::make_shared<const std::vector<VT_RGB32>>(std::move(rows));
        }
        width = image->width();
        height = image->height();
        texels = colors;
    }
    return made_of<Texture>(width, height, texels, unless(material.color, VT_RGB32{255, 255, 255, 255}),
                            material.has_texture_matrix ? std::optional(material.texture_matrix) : std::nullopt);
}

// Pixels of 32 bits have no use for indices.
std::optional<std::uint8_t> Rendition_Recorder::index_unless_closest(std::uint8_t index, VT_RGB32 color) const {
    return options_.color_system() == 1 || index == index_of({}, color, options_.palette()) ? std::nullopt : std::optional(index);
}

} // namespace vorna::drawing::recording
