// Attributes of what a canvas draws.
#include "python/src/attributes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "python/src/options.h"

namespace vorna::python {
namespace {

constexpr Choice<std::int32_t> styles[] = {{"solid", line_style::solid},
                                           {"dashed", line_style::dashed},
                                           {"dotted", line_style::dotted},
                                           {"dash-dot", line_style::dash_dot},
                                           {"dash-dot-dot", line_style::dash_dot_dot},
                                           {"long-dashed", line_style::long_dashed}};
constexpr Choice<std::int32_t> caps[] = {{"butt", line_cap::butt}, {"round", line_cap::round}, {"square", line_cap::square}};
constexpr Choice<std::int32_t> joins[] = {{"round", line_join::round}, {"miter", line_join::miter}, {"bevel", line_join::bevel}};
constexpr Choice<std::int32_t> symbols[] = {{"dot", marker_symbol::dot},
                                            {"plus", marker_symbol::plus},
                                            {"cross", marker_symbol::cross},
                                            {"circle", marker_symbol::circle},
                                            {"disc", marker_symbol::filled_circle},
                                            {"square", marker_symbol::square},
                                            {"block", marker_symbol::filled_square},
                                            {"triangle", marker_symbol::triangle},
                                            {"star", marker_symbol::star}};

struct Change {
    VT_Rendition& rendition;
    const Canvas& canvas;
    const char* name;
    py::object value;

    std::int32_t number(std::int32_t least, std::int32_t most) const {
        const auto found = Options::number_of<std::int32_t>(name, value);
        if (found < least || found > most) {
            refuse(name, std::to_string(least) + " to " + std::to_string(most), std::to_string(found));
        }
        return found;
    }
    bool flag() const { return truth_of(value); }
};

constexpr std::int32_t widest = 16384;

void set_color(const Change& change) {
    const VT_RGB32 color = color_of(change.name, change.value);
    const std::uint8_t index = change.canvas.index_of(color);
    change.rendition.set_color(color);
    change.rendition.face.index = change.rendition.line.index = change.rendition.marker.index = index;
}

void set_contrast(const Change& change) {
    const VT_RGB32 color = color_of(change.name, change.value);
    change.rendition.set_contrast_color(color);
    change.rendition.face.contrast_index = change.canvas.index_of(color);
}

void set_clip(const Change& change) {
    VT_Int_Rectangle clip = change.canvas.window();
    if (!change.value.is_none()) {
        py::dict values;
        values[change.name] = change.value;
        const auto sides = *Options(values).numbers<4>(change.name);
        if (std::ranges::any_of(sides, [](double side) { return std::isnan(side); })) {
            refuse(change.name, "left, bottom, right and top", py::repr(change.value).cast<std::string>());
        }
        const auto at = [&](std::size_t i) { return static_cast<std::int32_t>(std::clamp(sides[i], -1e9, 1e9)); };
        clip = common_part(clip, {at(0), at(2), at(1), at(3)});
    }
    change.rendition.clip.hard_clip = clip;
}

void set_texture(const Change& change) {
    if (change.value.is_none()) {
        change.rendition.face.material = {};
    } else if (py::isinstance<Texture>(change.value)) {
        change.rendition.face.material = change.value.cast<const Texture&>().material;
    } else if (const py::array image = py::array::ensure(change.value)) {
        change.rendition.face.material = Texture(image).material;
    } else {
        PyErr_Clear();
        refuse(change.name, "a Texture or an image", py::repr(change.value).cast<std::string>());
    }
}

struct Attribute {
    const char* name;
    void (*set)(const Change& change);
};

constexpr Attribute attributes_by_name[] = {
    {"color", set_color},
    {"contrast", set_contrast},
    {"width", [](const Change& c) { c.rendition.line.weight = c.number(1, widest); }},
    {"style", [](const Change& c) { c.rendition.line.style = Options::chosen(c.name, c.value, styles); }},
    {"cap", [](const Change& c) { c.rendition.line.cap = Options::chosen(c.name, c.value, caps); }},
    {"join", [](const Change& c) { c.rendition.line.join = Options::chosen(c.name, c.value, joins); }},
    {"smooth", [](const Change& c) { c.rendition.line.flags = c.flag() ? line_flag::smoothed : 0; }},
    {"symbol", [](const Change& c) { c.rendition.marker.symbol = symbol_named(c.name, c.value); }},
    {"marker_size", [](const Change& c) { c.rendition.marker.size = c.number(1, widest); }},
    {"pattern", [](const Change& c) { c.rendition.face.pattern = c.number(0, 73); }},
    {"opaque_pattern",
     [](const Change& c) {
         const std::uint32_t others = c.rendition.face.flags & ~face_flag::opaque_pattern;
         c.rendition.face.flags = others | (c.flag() ? face_flag::opaque_pattern : 0);
     }},
    {"depth_test", [](const Change& c) { c.rendition.clip.depth_test = c.flag(); }},
    {"clip", set_clip},
    {"texture", set_texture},
};

// Of a keyword argument, which keeps the text.
std::string_view name_of(const py::handle& key) {
    try {
        return key.cast<std::string_view>();
    } catch (const py::cast_error&) { // surrogates
        throw py::type_error("no attribute has the name " + py::repr(key).cast<std::string>());
    }
}

} // namespace

Texture::Texture(const py::array& image) : material(new VT_Basic_Material) {
    const drawing::Image_Samples samples = texture_samples_of(image);
    std::vector<VT_RGB32> pixels(static_cast<std::size_t>(samples.width) * static_cast<std::size_t>(samples.height));
    drawing::exchange_red_and_blue(samples.bytes.get(), pixels.size(), reinterpret_cast<std::uint8_t*>(pixels.data()));
    material->texture = VT_Reference<const VT_Shared_Image>(
        new VT_Shared_Image(samples.width, samples.height, Buffer_Format::rgb32, 4 * samples.width,
                            reinterpret_cast<std::uint8_t*>(pixels.data()), true, false));
}

std::int32_t symbol_named(const char* argument, const py::object& value) {
    return Options::chosen(argument, value, symbols);
}

void set_attributes(VT_Rendition& rendition, const Canvas& canvas, const py::dict& attributes) {
    for (const auto& [key, value] : attributes) {
        const std::string_view name = name_of(key);
        const Attribute* found = nullptr;
        for (const Attribute& attribute : attributes_by_name) {
            found = attribute.name == name ? &attribute : found;
        }
        if (!found) {
            throw py::type_error("no attribute has the name '" + std::string(name) + "'");
        }
        found->set({rendition, canvas, found->name, py::reinterpret_borrow<py::object>(value)});
    }
}

} // namespace vorna::python
