// Recordings as JSON documents.
#include "drawing/recording/recording_writer.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>

#include "drawing/recording/call_kinds.h"

namespace vorna::drawing::recording {

namespace {

// Objects that several places refer to, in the order in which they are met.
template <class Type> class Numbered {
public:
    std::size_t number_of(const std::shared_ptr<const Type>& object) {
        const auto [place, is_new] = numbers_.try_emplace(object.get(), list_.size());
        if (is_new) {
            list_.push_back(object.get());
        }
        return place->second;
    }
    const std::vector<const Type*>& list() const noexcept { return list_; }

private:
    std::map<const Type*, std::size_t> numbers_;
    std::vector<const Type*> list_;
};

class Writer {
public:
    std::string text(const Recording& recording);

private:
    // An object that is being written; it ends with the variable.
    class Object {
    public:
        explicit Object(Writer& writer) : writer_(writer) { writer_.text_ += '{'; }
        Object(const Object&) = delete;
        Object& operator=(const Object&) = delete;
        ~Object() { writer_.text_ += '}'; }

        Object& name(std::string_view name) {
            writer_.text_.append(is_first_ ? "\"" : ", \"").append(name).append("\": ");
            is_first_ = false;
            return *this;
        }
        template <class Value> Object& key(std::string_view name, const Value& value) {
            this->name(name);
            writer_.put(value);
            return *this;
        }
        // Nothing when there is no value.
        template <class Value> Object& given(std::string_view name, const std::optional<Value>& value) {
            return value ? key(name, *value) : *this;
        }

    private:
        Writer& writer_;
        bool is_first_ = true;
    };

    template <class Number> void put_number(Number number) {
        std::array<char, 32> digits;
        const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        text_.append(std::string_view(digits.data(), end));
    }

    void put(bool value) { text_ += value ? "true" : "false"; }
    void put(std::uint8_t value) { put_number(int{value}); }
    void put(std::int32_t value) { put_number(value); }
    void put(std::uint32_t value) { put_number(value); }
    void put(std::size_t value) { put_number(value); }
    void put(double value);
    void put(float value);
    void put(const char* text) { put(std::string_view(text)); }
    void put(std::string_view text) { text_ += nlohmann::json(text).dump(); }
    void put(const std::string& text) { put(std::string_view(text)); }
    template <class Value> void put(const std::optional<Value>& value) {
        if (value) {
            put(*value);
        } else {
            text_ += "null";
        }
    }
    template <class... Choices> void put(const std::variant<Choices...>& value) {
        std::visit([this](const auto& choice) { this->put(choice); }, value);
    }

    // Values with a separator between them.
    template <class List, class Put> void put_list(const List& list, Put put_one, std::string_view separator = ", ") {
        text_ += '[';
        bool is_first = true;
        for (const auto& element : list) {
            if (!is_first) {
                text_ += separator;
            }
            is_first = false;
            put_one(element);
        }
        text_ += ']';
    }
    template <class Value> void put_numbers(std::initializer_list<Value> values) {
        put_list(values, [this](const Value& value) { this->put(value); });
    }

    void put_byte(std::uint8_t byte) {
        constexpr const char* digits = "0123456789abcdef";
        text_ += digits[byte >> 4];
        text_ += digits[byte & 15];
    }
    void put_pixel(std::uint8_t index) { put_byte(index); }
    void put_pixel(std::uint16_t depth) {
        put_byte(static_cast<std::uint8_t>(depth >> 8));
        put_byte(static_cast<std::uint8_t>(depth & 0xFF));
    }
    void put_pixel(VT_RGB32 color) {
        for (const std::uint8_t channel : {color.red, color.green, color.blue, color.alpha}) {
            put_byte(channel);
        }
    }
    template <class Pixel> void put_pixels(const Pixel* pixels, std::size_t count) {
        text_ += '"';
        for (std::size_t i = 0; i < count; ++i) {
            put_pixel(pixels[i]);
        }
        text_ += '"';
    }
    template <class Pixel> void put_rows(const Pixel* pixels, std::size_t row_pixels, std::size_t count) {
        std::vector<const Pixel*> rows;
        for (std::size_t i = 0; row_pixels > 0 && i + row_pixels <= count; i += row_pixels) {
            rows.push_back(pixels + i);
        }
        put_list(rows, [=, this](const Pixel* row) { this->put_pixels(row, row_pixels); });
    }
    template <class Pixel> void put(const Image_Rows<Pixel>& rows) {
        put_rows(rows.pixels.data(), static_cast<std::size_t>(rows.row_pixels), rows.pixels.size());
    }
    void put(const std::vector<VT_RGB32>& colors) { put_pixels(colors.data(), colors.size()); }

    void put(const VT_RGB32& color);
    void put(const VT_Int_RGB& color) { put_numbers({color.red, color.green, color.blue}); }
    void put(const VT_Int_Pair& pair) { put_numbers({pair.x, pair.y}); }
    void put(const VT_Int_Rectangle& area) { put_numbers({area.left, area.right, area.bottom, area.top}); }
    void put(const VT_DCI_Point& point) { put_numbers({point.x, point.y, point.z}); }
    template <class Point> void put_points(const std::vector<Point>& points);

    void put(const Window& window);
    void put(const Palette& palette);
    void put(const Cube& cube) { Object(*this).key("base", cube.base).key("levels", cube.levels); }
    void put_configuration(Object& object, const Configuration& configuration);

    void put(const Rendition& rendition);
    void put(const Face& face);
    void put(const Bitmap& bitmap);
    void put(const Texture& texture);
    void put(const Line& line);
    void put(const Line_Type_Set& set);
    void put(const Line_Type& type);
    void put(const Line_Element& element);
    void put(const Marker& marker);
    // A group without keys is left out.
    template <class Group> void put_group(Object& object, std::string_view name, const Group& group) {
        if (has_keys(group)) {
            object.key(name, group);
        }
    }
    template <class Value> static bool has_keys(const std::optional<Value>& key) { return key.has_value(); }
    template <class Group> static bool has_keys(const Group& group) {
        return std::apply([&](const auto... key) { return (has_keys(group.*key) || ...); }, Group::keys);
    }
    // Lists that renditions share stand at the top level.
    void put(const Shared_List<VT_RGB32>& texels) { put(texels_.number_of(texels)); }
    void put(const Shared_List<std::vector<VT_Point>>& clip) { put(clips_.number_of(clip)); }

    void put(const Image& image);
    void put(const Call& call);
    template <class Point> void put_arguments(Object& object, const Points<Point>& arguments) {
        object.name("points");
        put_points(arguments.points);
    }
    template <class Point> void put_arguments(Object& object, const Colorized<Point>& arguments) {
        object.name("points");
        put_points(arguments.points);
        object.key("colors", arguments.colors);
        if (arguments.single) {
            object.key("single", true);
        }
    }
    template <class Point> void put_arguments(Object& object, const Gouraud<Point>& arguments) {
        object.name("points");
        put_points(arguments.points);
        object.key("colors", arguments.colors);
    }
    template <class Point> void put_arguments(Object& object, const Textured<Point>& arguments) {
        object.name("points");
        put_points(arguments.points);
        object.key("colors", arguments.colors).name("parameters");
        put_list(
            arguments.parameters, [this](float value) { put(value); }, ",");
    }
    template <class Point> void put_arguments(Object& object, const Polygon<Point>& arguments) {
        object.name("points");
        put_points(arguments.points);
        object.given("color", arguments.color);
    }
    void put_arguments(Object& object, const Dot& arguments) {
        object.key("point", arguments.point).given("color", arguments.color);
    }
    void put_arguments(Object& object, const Ellipse& arguments) {
        object.key("center", arguments.center).key("radii", arguments.radii);
        object.key("start", arguments.start).key("end", arguments.end).key("rotation", arguments.rotation);
        object.given("color", arguments.color);
    }
    template <class Pixel> void put_arguments(Object& object, const Corner_Image<Pixel>& arguments) {
        object.key("start", arguments.start).key("end", arguments.end).key("pixels", arguments.pixels);
    }
    void put_arguments(Object& object, const Placed_Image& arguments) {
        object.key("start", arguments.start).key("image", arguments.image);
    }
    void put_arguments(Object& object, const Window_Fill& arguments) {
        object.key("rectangle", arguments.rectangle).given("fill", arguments.fill);
        object.given("color", arguments.color).given("index", arguments.index);
    }
    void put_arguments(Object& object, const Depth_Clear& arguments) { object.key("rectangle", arguments.rectangle); }
    void put_arguments(Object& object, const Depth_Write& arguments) {
        object.key("top_left", arguments.top_left).key("bottom_right", arguments.bottom_right).key("depths", arguments.depths);
    }
    void put_arguments(Object& object, const Image_Read& arguments) {
        object.key("top_left", arguments.top_left).key("bottom_right", arguments.bottom_right);
        object.key("format", static_cast<std::int32_t>(arguments.format));
    }
    void put_arguments(Object& object, const ZBuffer_Write& arguments) { object.key("value", arguments.value); }
    void put_arguments(Object& object, const ZBuffer_Test& arguments) { object.key("value", arguments.value); }
    void put_arguments(Object& object, const Establish& arguments) { put_configuration(object, arguments.configuration); }
    void put_arguments(Object& object, const Present& arguments) { object.key("rectangle", arguments.rectangle); }

    // A list at the top level with an element on each line, when there are any.
    template <class List, class Put> std::string top_level_list(const char* name, const List& list, Put put_one) {
        const std::string before = std::exchange(text_, {});
        put_list(list, put_one, ",\n");
        const std::string lines = std::exchange(text_, before);
        return list.empty() ? "" : ",\n\"" + std::string(name) + "\": " + lines;
    }

    std::string text_;
    Numbered<Rendition> renditions_;
    Numbered<std::vector<VT_RGB32>> texels_;
    Numbered<std::vector<std::vector<VT_Point>>> clips_;
};

void require_finite(double value) {
    if (!std::isfinite(value)) {
        throw std::runtime_error("a recording cannot hold numbers that are not finite");
    }
}

void Writer::put(double value) {
    require_finite(value);
    if (value == 0 && std::signbit(value)) {
        text_ += "-0.0"; // -0 would be read as a whole number
    } else {
        put_number(value);
    }
}

// The shortest digits that give the same number, also when they are read with double precision and rounded afterwards.
void Writer::put(float value) {
    require_finite(value);
    std::array<char, 32> digits;
    const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    double read = 0;
    std::from_chars(digits.data(), end, read);
    if (value == 0 || static_cast<float>(read) != value) {
        put(double{value});
    } else {
        text_.append(std::string_view(digits.data(), end));
    }
}

void Writer::put(const VT_RGB32& color) {
    if (color.alpha == 255) {
        put_numbers({color.red, color.green, color.blue});
    } else {
        put_numbers({color.red, color.green, color.blue, color.alpha});
    }
}

template <class Point> void Writer::put_points(const std::vector<Point>& points) {
    text_ += '[';
    bool is_first = true;
    for (const Point& point : points) {
        for (const auto value : {point.x, point.y, point.z}) {
            if (!is_first) {
                text_ += ',';
            }
            is_first = false;
            put(value);
        }
    }
    text_ += ']';
}

// Configuration.

void Writer::put(const Window& window) {
    Object object(*this);
    object.given("width", window.width).given("height", window.height).given("origin", window.origin);
    object.given("local_coordinates", window.local_coordinates);
}

void Writer::put(const Palette& palette) {
    Object object(*this);
    if (palette.colors) {
        object.name("colors");
        put_list(*palette.colors, [this](VT_RGB32 color) { put_numbers({color.red, color.green, color.blue}); });
    }
    object.given("cube", palette.cube);
}

void Writer::put_configuration(Object& object, const Configuration& configuration) {
    const Window& window = configuration.window;
    if (window.width || window.height || window.origin || window.local_coordinates) {
        object.key("window", window);
    }
    object.given("color_system", configuration.color_system).given("buffer_depth", configuration.buffer_depth);
    object.given("alpha_blending", configuration.alpha_blending).given("palette", configuration.palette);
    if (!configuration.options.empty()) {
        object.name("options");
        Object options(*this);
        for (const auto& [name, setting] : configuration.options) {
            options.key(name, setting);
        }
    }
}

// Renditions.

void Writer::put(const Rendition& rendition) {
    Object object(*this);
    object.given("hard_clip", rendition.hard_clip).given("depth_test", rendition.depth_test);
    object.given("drawing_mode", rendition.drawing_mode).given("flags", rendition.flags);
    object.given("complex_clip", rendition.complex_clip).given("window_offset", rendition.window_offset);
    put_group(object, "face", rendition.face);
    put_group(object, "line", rendition.line);
    put_group(object, "marker", rendition.marker);
}

void Writer::put(const Face& face) {
    Object object(*this);
    object.given("color", face.color).given("index", face.index).given("contrast_color", face.contrast_color);
    object.given("contrast_index", face.contrast_index).given("pattern", face.pattern).given("flags", face.flags);
    object.given("mode", face.mode).given("bitmap", face.bitmap).given("texture", face.texture);
}

void Writer::put(const Bitmap& bitmap) {
    Object object(*this);
    object.given("width", bitmap.width).given("height", bitmap.height);
    if (bitmap.rows) {
        object.name("rows");
        put_list(**bitmap.rows, [this](const std::string& row) { put(row); });
    }
}

void Writer::put(const Texture& texture) {
    Object object(*this);
    object.given("width", texture.width).given("height", texture.height).given("texels", texture.texels);
    object.given("color", texture.color);
    if (texture.matrix) {
        object.name("matrix");
        const double* elements = &texture.matrix->m[0][0];
        put_list(std::vector(elements, elements + 16), [this](double element) { put(element); });
    }
}

void Writer::put(const Line& line) {
    Object object(*this);
    object.given("color", line.color).given("index", line.index).given("weight", line.weight).given("style", line.style);
    object.given("flags", line.flags).given("mode", line.mode).given("line_types", line.line_types);
    object.given("cap", line.cap).given("join", line.join);
}

void Writer::put(const Line_Type_Set& set) {
    Object object(*this);
    object.given("per_segment", set.per_segment).given("scale", set.scale);
    if (set.types) {
        object.name("types");
        put_list(**set.types, [this](const auto& type) { put(type); });
    }
}

void Writer::put(const Line_Type& type) {
    Object object(*this);
    object.key("kind", type.kind).key("width", type.width).key("color", type.color).key("mode", type.mode);
    object.key("leading", type.leading).key("trailing", type.trailing).name("elements");
    put_list(type.elements, [this](const Line_Element& element) { put(element); });
}

void Writer::put(const Line_Element& element) {
    text_ += '[';
    put(element.length);
    text_ += ", ";
    put(element.kind);
    text_ += ']';
}

void Writer::put(const Marker& marker) {
    Object object(*this);
    object.given("color", marker.color).given("index", marker.index).given("symbol", marker.symbol);
    object.given("size", marker.size).given("mode", marker.mode);
}

// Calls.

void Writer::put(const Image& image) {
    Object object(*this);
    object.key("format", static_cast<std::int32_t>(image.format)).key("width", image.width).key("height", image.height);
    object.name("pixels");
    const auto put_as = [&]<class Pixel>(Pixel) {
        std::vector<Pixel> pixels(image.bytes.size() / sizeof(Pixel));
        std::memcpy(pixels.data(), image.bytes.data(), image.bytes.size());
        put_rows(pixels.data(), static_cast<std::size_t>(image.width), pixels.size());
    };
    switch (image.format) {
    case Buffer_Format::index8:
        return put_as(std::uint8_t{});
    case Buffer_Format::depth16:
        return put_as(std::uint16_t{});
    default:
        return put_as(VT_RGB32{});
    }
}

void Writer::put(const Call& call) {
    Object object(*this);
    object.key("call", call.kind->name);
    if (call.rendition) {
        object.key("rendition", renditions_.number_of(call.rendition));
    }
    if (call.standard) {
        object.key("standard", true);
    }
    std::visit([&](const auto& arguments) { put_arguments(object, arguments); }, call.arguments);
}

// Calls are written first, because they say which renditions there are, then renditions, which say which lists there are.
std::string Writer::text(const Recording& recording) {
    const std::string calls = top_level_list("calls", recording.calls, [this](const Call& call) { put(call); });
    {
        Object object(*this);
        object.key("picture", 1);
        put_configuration(object, recording.configuration);
        if (!recording.zbuffer_write) {
            object.key("zbuffer_write", false);
        }
        if (recording.zbuffer_test != Recording().zbuffer_test) {
            object.key("zbuffer_test", recording.zbuffer_test);
        }
        object.given("output", recording.output);
        put_group(object, "rendition", recording.rendition);
    }
    text_.pop_back(); // what follows belongs to the same object
    const std::string renditions =
        top_level_list("renditions", renditions_.list(), [this](const Rendition* rendition) { put(*rendition); });
    text_ += top_level_list("texels", texels_.list(), [this](const auto* texels) { put(*texels); });
    text_ += top_level_list("complex_clips", clips_.list(), [this](const auto* contours) {
        put_list(*contours, [this](const std::vector<VT_Point>& contour) {
            std::vector<float> numbers;
            for (const VT_Point& point : contour) {
                numbers.insert(numbers.end(), {point.x, point.y});
            }
            put_list(
                numbers, [this](float number) { put(number); }, ",");
        });
    });
    text_ += renditions + (calls.empty() ? ",\n\"calls\": []" : calls) + "}\n";
    return std::move(text_);
}

} // namespace

std::string json_of(const Recording& recording) {
    return Writer().text(recording);
}

} // namespace vorna::drawing::recording
