// Records what an application draws.
#include "drawing/recording/recorder.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "drawing/image/image_file.h"
#include "drawing/recording/call_kinds.h"
#include "drawing/recording/emptied_slot.h"
#include "drawing/recording/rendition_maker.h"
#include "vorna/draw.h"

namespace vorna::drawing::recording {

namespace {

constexpr const char* zbuffer_write = "ZBuffer Write";
constexpr const char* zbuffer_test = "ZBuffer Test";

// Empty when the value is the default of recordings.
template <class Value> std::optional<Value> unless(const Value& value, const Value& usual) {
    return value == usual ? std::nullopt : std::optional(value);
}

// The rows of an image without the bytes between them, in the order given.
template <class Pixel>
Image_Rows<Pixel> copied_rows(const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right, std::int32_t stride,
                              const Pixel* pixels) {
    const auto [columns, rows] = corner_size(top_left, bottom_right);
    Image_Rows<Pixel> copy;
    if (columns < 1 || rows < 1) {
        return copy;
    }
    copy.row_pixels = static_cast<std::int32_t>(columns);
    copy.pixels.resize(static_cast<std::size_t>(columns * rows));
    for (std::int64_t r = 0; r < rows; ++r) {
        const auto* row = reinterpret_cast<const std::uint8_t*>(pixels) + r * stride;
        std::memcpy(copy.pixels.data() + r * columns, row, static_cast<std::size_t>(columns) * sizeof(Pixel));
    }
    return copy;
}

template <class Element> std::vector<Element> copied(const Element* list, std::size_t count) {
    return count > 0 ? std::vector<Element>(list, list + count) : std::vector<Element>();
}

std::optional<std::vector<VT_RGB32>> copied_or_none(const VT_RGB32* colors, std::size_t count) {
    return colors || count == 0 ? std::optional(copied(colors, count)) : std::nullopt;
}

std::size_t size_of(std::int32_t count) {
    return static_cast<std::size_t>(std::max(count, 0));
}

std::optional<VT_RGB32> value_at(const VT_RGB32* color) {
    return color ? std::optional(*color) : std::nullopt;
}

// One overload for each kind of arguments, with the parameters of its slots.

template <class Point>
Points<Point> copy(std::type_identity<Points<Point>>, const Call_Kind&, const VT_Rendition&, std::int32_t count,
                   const Point* points) {
    return made_of<Points<Point>>(copied(points, size_of(count)));
}

template <class Point>
Colorized<Point> copy(std::type_identity<Colorized<Point>>, const Call_Kind& kind, const VT_Rendition&, std::int32_t count,
                      const Point* points, const VT_RGB32* colors, bool single) {
    return made_of<Colorized<Point>>(copied(points, size_of(count)),
                                     copied_or_none(colors, colors_of(kind, size_of(count), single)), single);
}

template <class Point>
Gouraud<Point> copy(std::type_identity<Gouraud<Point>>, const Call_Kind&, const VT_Rendition&, std::int32_t count,
                    const Point* points, const VT_RGB32* colors) {
    return made_of<Gouraud<Point>>(copied(points, size_of(count)), copied(colors, colors ? size_of(count) : 0));
}

// Renderers use the first two parameters of a point; missing ones are 0.
template <class Point>
Textured<Point> copy(std::type_identity<Textured<Point>>, const Call_Kind&, const VT_Rendition&, std::int32_t count,
                     const Point* points, const VT_RGB32* colors, const VT_Parameter* parameters, std::int32_t width,
                     const float*, const VT_Vector*) {
    std::vector<VT_Parameter> pairs;
    for (std::size_t i = 0; i < size_of(count); ++i) {
        const VT_Parameter* of_point = parameters + i * size_of(width);
        pairs.push_back(width > 0 ? of_point[0] : 0);
        pairs.push_back(width > 1 ? of_point[1] : 0);
    }
    return made_of<Textured<Point>>(copied(points, size_of(count)), copied(colors, size_of(count)), std::move(pairs));
}

template <class Point>
Polygon<Point> copy(std::type_identity<Polygon<Point>>, const Call_Kind&, const VT_Rendition&, std::int32_t count,
                    const Point* points, const VT_RGB32* color) {
    return made_of<Polygon<Point>>(copied(points, size_of(count)), value_at(color));
}

Dot copy(std::type_identity<Dot>, const Call_Kind&, const VT_Rendition&, const VT_DCI_Point* point, const VT_RGB32* color) {
    return made_of<Dot>(*point, value_at(color));
}

Ellipse copy(std::type_identity<Ellipse>, const Call_Kind&, const VT_Rendition&, const VT_DCI_Point* center,
             const VT_DCI_Point* radii, double start, double end, double rotation, const VT_RGB32* color) {
    return made_of<Ellipse>(*center, *radii, start, end, rotation, value_at(color));
}

Index8_Image copy(std::type_identity<Index8_Image>, const Call_Kind&, const VT_Rendition&, const VT_DCI_Point* start,
                  const VT_DCI_Point* end, std::int32_t stride, const std::uint8_t* pixels) {
    return made_of<Index8_Image>(*start, *end, copied_rows(*start, *end, stride, pixels));
}

RGB32_Image copy(std::type_identity<RGB32_Image>, const Call_Kind&, const VT_Rendition&, const VT_DCI_Point* start,
                 const VT_DCI_Point* end, std::int32_t stride, const VT_RGB32* pixels, std::int32_t, const VT_Packing*) {
    return made_of<RGB32_Image>(*start, *end, copied_rows(*start, *end, stride, pixels));
}

Placed_Image copy(std::type_identity<Placed_Image>, const Call_Kind&, const VT_Rendition&, const VT_DCI_Point* start,
                  const VT_Shared_Image* image) {
    std::optional<Image> copy;
    if (image) {
        std::vector<std::uint8_t> bytes;
        const std::int32_t row_bytes = image->width() * vorna::bytes_per_pixel(image->format());
        for (std::int32_t r = 0; r < image->height(); ++r) {
            const std::uint8_t* row = image->row(image->bottom_up() ? r : image->height() - 1 - r);
            bytes.insert(bytes.end(), row, row + row_bytes);
        }
        copy = made_of<Image>(image->format(), image->width(), image->height(), std::move(bytes));
    }
    return made_of<Placed_Image>(*start, std::move(copy));
}

Window_Fill copy(std::type_identity<Window_Fill>, const Call_Kind&, const VT_Rendition& rendition) {
    const VT_Window_Attributes& window = rendition.window;
    return made_of<Window_Fill>(window.rectangle, unless(window.fill, vorna::face_pattern::solid),
                                unless(window.color, VT_RGB32{}), window.index);
}

Depth_Clear copy(std::type_identity<Depth_Clear>, const Call_Kind&, const VT_Rendition& rendition) {
    return made_of<Depth_Clear>(rendition.window.rectangle);
}

Depth_Write copy(std::type_identity<Depth_Write>, const Call_Kind&, const VT_Rendition&, const VT_DCI_Point* top_left,
                 const VT_DCI_Point* bottom_right, std::int32_t stride, const std::uint16_t* depths) {
    std::optional<Image_Rows<std::uint16_t>> rows;
    if (depths) {
        rows = copied_rows(*top_left, *bottom_right, stride, depths);
    }
    return made_of<Depth_Write>(*top_left, *bottom_right, std::move(rows));
}

Image_Read copy(std::type_identity<Image_Read>, const Call_Kind&, const VT_Rendition&, const VT_DCI_Point* top_left,
                const VT_DCI_Point* bottom_right, const Buffer_Format* format, VT_Reference<VT_Shared_Image>&) {
    return made_of<Image_Read>(*top_left, *bottom_right, *format);
}

// The reason for which recordings cannot hold the arguments; empty when they can.
template <class Type> std::string problem_of(const Type&) {
    return {};
}

template <class Point> std::string problem_of(const Gouraud<Point>& gouraud) {
    return gouraud.colors.size() < gouraud.points.size() ? "a Gouraud primitive without colours" : "";
}

std::string problem_of(const Placed_Image& placed) {
    const Buffer_Format format = placed.image ? placed.image->format : Buffer_Format::index8;
    const bool is_known = format == Buffer_Format::index8 || format == Buffer_Format::rgb32 || format == Buffer_Format::depth16 ||
                          format == Buffer_Format::presentation_rgb32;
    return is_known ? "" : "an image of format " + std::to_string(static_cast<std::int32_t>(format));
}

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

std::vector<VT_RGB32> colors_of(const VT_Palette& palette) {
    std::vector<VT_RGB32> colors;
    colors.reserve(static_cast<std::size_t>(palette.size()));
    for (std::int32_t i = 0; i < palette.size(); ++i) {
        colors.push_back(palette.color(static_cast<std::uint8_t>(i)));
    }
    return colors;
}

Palette described_palette(const VT_Palette& palette) {
    Palette described{colors_of(palette), {}};
    if (const auto& cube = palette.color_cube()) {
        described.cube = Cube{cube->base, cube->levels()};
    }
    return described;
}

bool are_alike(const VT_Palette& a, const VT_Palette& b) {
    const auto cube_of = [](const VT_Palette& palette) {
        const auto& cube = palette.color_cube();
        return cube ? std::pair(int{cube->base}, cube->levels()) : std::pair(-1, VT_Int_RGB{});
    };
    return &a == &b || (colors_of(a) == colors_of(b) && cube_of(a) == cube_of(b));
}

} // namespace

class Recorder::Slots final : public VT_Renderer_Data {
public:
    explicit Slots(Recorder& of) : recorder(of) {}
    // The recorder that has replaced the slots of the renderer.
    static Recorder& recorder_of(VT_Renderer_Data& renderer) {
        return static_cast<Slots*>(renderer.actions.draw_window.owner)->recorder;
    }

    Recorder& recorder;
};

class Recorder::Pause {
public:
    explicit Pause(Recorder& recorder) : recorder_(recorder) { recorder_.renderer_.actions = recorder_.own_actions_; }
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
    ~Pause() {
        if (recorder_.is_recording_) {
            recorder_.install_slots();
        }
    }

private:
    Recorder& recorder_;
};

// The functions of the replaced slots.
struct Recorder::Made_Slots {
    template <auto Slot, auto& Draw, std::size_t position, class... Arguments>
    static void draw(VT_Renderer_Data& slots, const VT_Rendition& rendition, Arguments... arguments) {
        Recorder& recorder = static_cast<Slots&>(slots).recorder;
        const Call_Kind& kind = call_kinds[position];
        auto copied = copy(std::type_identity<typename Slot_Arguments<Slot>::Type>(), kind, rendition, arguments...);
        if (const std::string problem = problem_of(copied); !problem.empty() && recorder.problem_.empty()) {
            recorder.problem_ = problem;
        }
        recorder.add(kind, &rendition, std::move(copied));
        const Pause pause(recorder);
        recorder.recording_.calls.back().standard = recorder.is_standard_;
        const Emptied_Slot emptied((recorder.renderer_.actions.*Slot).enabled, recorder.is_standard_);
        Draw(recorder.renderer_, rendition, arguments...);
    }

    template <auto Slot, auto& Draw, std::size_t position, class... Arguments>
    static void replace(Action_Slot<void(VT_Renderer_Data&, const VT_Rendition&, Arguments...)>& slot, Slots& owner) {
        slot = {&owner, &draw<Slot, Draw, position, Arguments...>, 0, 1};
    }

    static constexpr std::size_t position_of_slot(std::string_view name) { return position_of(*find_call_kind(name)); }

    static void install(VT_Action_Table& table, Slots& owner) {
#define VT_ACTION(slot, name, ...) replace<&VT_Action_Table::slot, VD_##name, position_of_slot(#slot)>(table.slot, owner);
#include "host/action_list.inc"
#undef VT_ACTION
    }
};

Recorder::Recorder(Session& session) : session_(session), renderer_(session.renderer()), slots_(std::make_unique<Slots>(*this)) {
    options_.set_window_size({64, 64});
    options_.set_buffer_depth(16);
    const VT_Option_Table& table = renderer_.requested_table;
    for (std::size_t i = 0; i < table.size(); ++i) {
        settings_[table[i].name()] = table[i].value()->content;
    }
    session_.set_recorder(this);
}

Recorder::~Recorder() {
    restore();
    session_.set_recorder(nullptr);
}

Recording Recorder::finish(const std::optional<VT_Int_Rectangle>& output) {
    restore();
    session_.set_recorder(nullptr);
    if (!problem_.empty()) {
        throw std::runtime_error("a recording cannot hold " + problem_ + ", which was drawn");
    }
    recording_.output = output;
    // The only rendition is the recording's own.
    const auto& calls = recording_.calls;
    const auto first = std::ranges::find_if(calls, [](const Call& call) { return call.rendition != nullptr; });
    if (first != calls.end() && std::all_of(first, calls.end(), [&](const Call& call) {
            return !call.rendition || call.rendition == first->rendition;
        })) {
        recording_.rendition = *first->rendition;
        for (Call& call : recording_.calls) {
            call.rendition = nullptr;
        }
    }
    return std::move(recording_);
}

void Recorder::before_establish() {
    restore();
}

void Recorder::after_establish() {
    Configuration changed = changed_configuration();
    if (is_established_) {
        add(*find_call_kind("establish"), nullptr, Establish{std::move(changed)});
    } else {
        recording_.configuration = std::move(changed);
    }
    is_established_ = true;
    is_recording_ = true;
    renditions_.clear();
    last_ = nullptr;
    install_slots();
    replace_setter<VT_Bool_Setter>(
        zbuffer_write, [](VT_Renderer_Data& renderer, bool value) { Slots::recorder_of(renderer).set_zbuffer_write(value); },
        own_set_zbuffer_write_);
    replace_setter<VT_Int_Setter>(
        zbuffer_test,
        [](VT_Renderer_Data& renderer, const std::int32_t* value) {
            return Slots::recorder_of(renderer).set_zbuffer_test(value);
        },
        own_set_zbuffer_test_);
    own_presentation_ = renderer_.presentation;
    renderer_.presentation = {note_presentation, this};
}

void Recorder::install_slots() {
    own_actions_ = renderer_.actions;
    Made_Slots::install(renderer_.actions, *slots_);
}

void Recorder::restore() {
    if (!is_recording_) {
        return;
    }
    is_recording_ = false;
    renderer_.actions = own_actions_;
    VT_Bool_Setter ignored_write = nullptr;
    VT_Int_Setter ignored_test = nullptr;
    replace_setter(zbuffer_write, own_set_zbuffer_write_, ignored_write);
    replace_setter(zbuffer_test, own_set_zbuffer_test_, ignored_test);
    if (renderer_.presentation.context == this) {
        renderer_.presentation = own_presentation_;
    }
}

template <class Setter> void Recorder::replace_setter(const char* name, Setter by, Setter& own) {
    VT_Option* option = renderer_.current_table.find(name);
    own = option ? option->as_setter<Setter>() : nullptr;
    if (own) {
        option->set(VT_Pointer(by));
    }
}

void Recorder::add(const Call_Kind& kind, const VT_Rendition* rendition, Arguments&& arguments) {
    recording_.calls.push_back({&kind, std::move(arguments), rendition ? noted(*rendition) : nullptr});
}

// Before the first call the setting belongs to the configuration.
void Recorder::set_zbuffer_write(bool value) {
    if (recording_.calls.empty()) {
        recording_.zbuffer_write = value;
    } else {
        add(*find_call_kind("set_zbuffer_write"), nullptr, ZBuffer_Write{value});
    }
    own_set_zbuffer_write_(renderer_, value);
}

std::int32_t Recorder::set_zbuffer_test(const std::int32_t* value) {
    if (recording_.calls.empty()) {
        recording_.zbuffer_test = *value;
    } else {
        add(*find_call_kind("set_zbuffer_test"), nullptr, ZBuffer_Test{*value});
    }
    return own_set_zbuffer_test_(renderer_, value);
}

std::int32_t Recorder::note_presentation(void* recorder, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                                         const VT_Reference<Frame_Buffer>& buffer, std::int32_t x, std::int32_t y) {
    auto& self = *static_cast<Recorder*>(recorder);
    self.add(*find_call_kind("present"), nullptr, Present{{top_left.x, bottom_right.x, bottom_right.y, top_left.y}});
    return self.own_presentation_.function(self.own_presentation_.context, top_left, bottom_right, buffer, x, y);
}

// Configuration: the differences from the previous options.
Configuration Recorder::changed_configuration() {
    const VT_Renderer_Options& now = renderer_.current_options;
    Configuration changed;
    if (now.window_size() != options_.window_size()) {
        changed.window.width = now.window_size().x;
        changed.window.height = now.window_size().y;
    }
    changed.window.origin = unless(now.window_origin(), options_.window_origin());
    changed.window.local_coordinates = unless(now.local_coordinates(), options_.local_coordinates());
    changed.color_system = unless(now.color_system(), options_.color_system());
    changed.buffer_depth = unless(now.buffer_depth(), options_.buffer_depth());
    changed.alpha_blending = unless(now.alpha_blending(), options_.alpha_blending());
    if (!are_alike(now.palette(), options_.palette())) {
        changed.palette = described_palette(now.palette());
    }
    options_ = now;
    const VT_Option_Table& table = renderer_.requested_table;
    for (std::size_t i = 0; i < table.size(); ++i) {
        const VT_Option_Content& content = table[i].value()->content;
        VT_Option_Content& before = settings_[table[i].name()];
        if (content != before && !std::holds_alternative<VT_Pointer>(content)) {
            const auto add = [&](const auto& value) {
                if constexpr (std::is_constructible_v<Option_Setting, decltype(value)>) {
                    changed.options.emplace_back(table[i].name(), value);
                }
            };
            std::visit(add, content);
        }
        before = content;
    }
    return changed;
}

// Renditions.

// Most calls draw with the rendition of the call before, and many of the others with an earlier one.
std::shared_ptr<const Rendition> Recorder::noted(const VT_Rendition& rendition) {
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
template <class Value> std::optional<Value> Recorder::described_attribute(const Value& value, const Value& usual) {
    return unless(value, usual);
}

std::optional<std::optional<Line_Type_Set>> Recorder::described_attribute(const VT_Reference<const VT_Line_Type_Set>& set,
                                                                          const VT_Reference<const VT_Line_Type_Set>&) {
    return described_types(set);
}

std::optional<Bitmap> Recorder::described_attribute(const VT_Reference<const VT_Pattern_Bitmap>& bitmap,
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

std::optional<Texture> Recorder::described_attribute(const VT_Reference<const VT_Basic_Material>& material,
                                                     const VT_Reference<const VT_Basic_Material>&) {
    return material ? std::optional(described_texture(*material)) : std::nullopt;
}

// mode: what the group draws with when its own mode is left out.
template <Keyed Group, class Host> Group Recorder::described_group(const Host& host, std::int32_t mode) {
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

Rendition Recorder::described(const VT_Rendition& rendition) {
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
    return made_of<Rendition>(unless(clip.hard_clip, session_.window()), unless(clip.depth_test, true), unless(mode, 0),
                              unless(rendition.drawing_flags, 0U), complex_clip, unless(clip.window_offset, VT_Int_Pair{}),
                              described_group<Face>(rendition.face, mode), described_group<Line>(rendition.line, mode),
                              described_group<Marker>(rendition.marker, mode));
}

Texture Recorder::described_texture(const VT_Basic_Material& material) {
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
std::optional<std::uint8_t> Recorder::index_unless_closest(std::uint8_t index, VT_RGB32 color) const {
    return options_.color_system() == 1 || index == index_of({}, color, options_.palette()) ? std::nullopt : std::optional(index);
}

} // namespace vorna::drawing::recording
