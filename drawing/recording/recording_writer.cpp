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

// Objects that several places refer to, numbered in the order of their first use.
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
    // A JSON object that is being written; the destructor closes it.
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
    template <class List> void put_elements(const List& list, std::string_view separator = ", ") {
        put_list(
            list, [this](const auto& element) { this->put(element); }, separator);
    }
    template <class Value> void put_numbers(std::initializer_list<Value> values) { put_elements(values); }

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
    void put(const VT_Matrix& matrix) {
        const double* elements = &matrix.m[0][0];
        put_elements(std::vector(elements, elements + 16));
    }
    void put(Buffer_Format format) { put(static_cast<std::int32_t>(format)); }
    void put(const std::vector<VT_Point>& points) { put_points(points); }
    void put(const std::vector<VT_DCI_Point>& points) { put_points(points); }
    void put(const std::vector<VT_Point_D>& points) { put_points(points); }
    template <class Point> void put_points(const std::vector<Point>& points);
    void put(const std::vector<VT_Parameter>& parameters) { put_elements(parameters, ","); }
    void put(const std::vector<Line_Element>& elements) { put_elements(elements); }
    void put(const Line_Element& element);
    void put(const Option_Settings& settings);
    void put_opaque(const std::optional<std::vector<VT_RGB32>>& colors) {
        put_list(*colors, [this](VT_RGB32 color) { put_numbers({color.red, color.green, color.blue}); });
    }

    template <class Element> void put(const Shared_List<Element>& list) { put_elements(*list); }
    // Lists that renditions share stand at the top level.
    void put(const Shared_List<VT_RGB32>& texels) { put(texels_.number_of(texels)); }
    void put(const Shared_List<std::vector<VT_Point>>& clip) { put(clips_.number_of(clip)); }
    void put(const std::shared_ptr<const Rendition>& rendition) { put(renditions_.number_of(rendition)); }

    // Rows of pixels, whose size other members tell.
    template <class Group, class Rows> void put_sized(const Group&, const Rows& rows) { put(rows); }
    void put_sized(const Image& image, const std::vector<std::uint8_t>& bytes);

    template <Keyed Group> void put(const Group& group) {
        Object object(*this);
        put_keys(object, group);
    }
    template <Keyed Group> void put_keys(Object& object, const Group& group) {
        for_each_field<Group>([&]<class Field>(const Field& field) {
            using Form = std::remove_cvref_t<decltype(field.form)>;
            const auto& value = group.*field.member;
            if constexpr (std::is_same_v<Form, form::Inlined>) {
                put_keys(object, value);
            } else {
                if constexpr (Field::presence == Presence::given) {
                    if (!is_given(value)) {
                        return;
                    }
                }
                object.name(field.name);
                if constexpr (std::is_same_v<Form, form::Sized>) {
                    put_sized(group, value);
                } else if constexpr (std::is_same_v<Form, form::Opaque_Colors>) {
                    put_opaque(value);
                } else {
                    put(value);
                }
            }
        });
    }
    // Whether the value differs from its default. Groups without keys are left out.
    template <class Value> static bool is_given(const std::optional<Value>& value) { return value.has_value(); }
    static bool is_given(bool value) { return value; }
    static bool is_given(const Option_Settings& settings) { return !settings.empty(); }
    template <Keyed Group> static bool is_given(const Group& group) {
        bool any = false;
        for_each_field<Group>([&](const auto& field) { any = any || is_given(group.*field.member); });
        return any;
    }

    void put(const Call& call);

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

void Writer::put(const Option_Settings& settings) {
    Object object(*this);
    for (const auto& [name, setting] : settings) {
        object.key(name, setting);
    }
}

void Writer::put(const Line_Element& element) {
    text_ += '[';
    put(element.length);
    text_ += ", ";
    put(element.kind);
    text_ += ']';
}

void Writer::put_sized(const Image& image, const std::vector<std::uint8_t>& bytes) {
    const auto put_as = [&]<class Pixel>(Pixel) {
        std::vector<Pixel> pixels(bytes.size() / sizeof(Pixel));
        std::memcpy(pixels.data(), bytes.data(), bytes.size());
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
    const auto& [kind, arguments, rendition, standard] = call;
    Object object(*this);
    object.key("call", kind->name);
    if (rendition) {
        object.key("rendition", rendition);
    }
    if (standard) {
        object.key("standard", true);
    }
    std::visit([&](const auto& typed) { put_keys(object, typed); }, arguments);
}

// Calls are written first, because they determine the list of renditions; then renditions, which determine the shared lists.
std::string Writer::text(const Recording& recording) {
    const auto& [configuration, zbuffer_write, zbuffer_test, output, rendition, list] = recording;
    const std::string calls = top_level_list("calls", list, [this](const Call& call) { put(call); });
    {
        Object object(*this);
        object.key("picture", 1);
        put_keys(object, configuration);
        if (zbuffer_write != Recording().zbuffer_write) {
            object.key("zbuffer_write", zbuffer_write);
        }
        if (zbuffer_test != Recording().zbuffer_test) {
            object.key("zbuffer_test", zbuffer_test);
        }
        if (output) {
            object.key("output", *output);
        }
        if (is_given(rendition)) {
            object.key("rendition", rendition);
        }
    }
    text_.pop_back(); // what follows belongs to the same object
    const std::string renditions =
        top_level_list("renditions", renditions_.list(), [this](const Rendition* shared) { put(*shared); });
    text_ += top_level_list("texels", texels_.list(), [this](const auto* texels) { put(*texels); });
    text_ += top_level_list("complex_clips", clips_.list(), [this](const auto* contours) {
        put_list(*contours, [this](const std::vector<VT_Point>& contour) {
            std::vector<float> numbers;
            for (const VT_Point& point : contour) {
                numbers.insert(numbers.end(), {point.x, point.y});
            }
            put_elements(numbers, ",");
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
