// Recordings as documents.
#include "drawing/recording/recording_writer.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>
#include <string_view>

#include "drawing/recording/call_kinds.h"
#include "drawing/recording/document_writers.h"

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

template <class Number> Number finite(Number value) {
    if (!std::isfinite(value)) {
        throw std::runtime_error("a recording cannot hold numbers that are not finite");
    }
    return value;
}

template <> std::int32_t finite(std::int32_t value) {
    return value;
}

// The bytes of a pixel as its digits show them.
void append_digits(std::string& bytes, std::uint8_t index) {
    bytes += static_cast<char>(index);
}

void append_digits(std::string& bytes, std::uint16_t depth) {
    bytes.append({static_cast<char>(depth >> 8), static_cast<char>(depth & 0xFF)});
}

void append_digits(std::string& bytes, VT_RGB32 color) {
    for (const std::uint8_t channel : {color.red, color.green, color.blue, color.alpha}) {
        bytes += static_cast<char>(channel);
    }
}

// Whether the value differs from its default. Groups without keys are left out.
template <class Value> bool is_given(const std::optional<Value>& value) {
    return value.has_value();
}
bool is_given(bool value) {
    return value;
}
bool is_given(const Option_Settings& settings) {
    return !settings.empty();
}
template <Keyed Group> bool is_given(const Group& group) {
    bool any = false;
    for_each_field<Group>([&](const auto& field) { any = any || is_given(group.*field.member); });
    return any;
}

// The order of what a document says, whatever its form. Out takes the values one after the other: Json_Printer or Cbor_Builder.
template <class Out> class Writer {
public:
    Out write(const Recording& recording);

private:
    // The members of an object that is being written.
    class Object {
    public:
        explicit Object(Writer& writer) : writer_(writer) {}

        Object& name(std::string_view name) {
            writer_.out_.name(name);
            return *this;
        }
        template <class Value> Object& key(std::string_view name, const Value& value) {
            this->name(name);
            writer_.put(value);
            return *this;
        }

    private:
        Writer& writer_;
    };

    // put_members(Object) writes the members. Not closed by a destructor: closing may throw std::bad_alloc.
    template <class Put> void put_object(Put put_members) {
        out_.start_object();
        put_members(Object(*this));
        out_.end_object();
    }

    void put(bool value) { out_.value(value); }
    void put(std::uint8_t value) { out_.value(std::int64_t{value}); }
    void put(std::int32_t value) { out_.value(std::int64_t{value}); }
    void put(std::uint32_t value) { out_.value(std::int64_t{value}); }
    void put(std::uint64_t value) { out_.value(static_cast<std::int64_t>(value)); }
    void put(double value) { out_.value(finite(value)); }
    void put(float value) { out_.value(finite(value)); }
    void put(const char*) = delete; // would be a bool
    void put(std::string_view text) { out_.value(text); }
    void put(const std::string& text) { out_.value(std::string_view(text)); }
    template <class Value> void put(const std::optional<Value>& value) {
        if (value) {
            put(*value);
        } else {
            out_.value(nullptr);
        }
    }
    template <class... Choices> void put(const std::variant<Choices...>& value) {
        std::visit([this](const auto& choice) { this->put(choice); }, value);
    }

    template <class List, class Put> void put_list(const List& list, Put put_one) {
        out_.start_list();
        for (const auto& element : list) {
            put_one(element);
        }
        out_.end_list();
    }
    template <class List> void put_elements(const List& list) {
        put_list(list, [this](const auto& element) { this->put(element); });
    }
    template <class Value> void put_numbers(std::initializer_list<Value> values) { put_elements(values); }

    template <class Pixel> void put_pixels(const Pixel* pixels, std::size_t count) {
        std::string bytes;
        bytes.reserve(count * sizeof(Pixel));
        for (std::size_t i = 0; i < count; ++i) {
            append_digits(bytes, pixels[i]);
        }
        out_.digits(bytes);
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

    void put(const VT_RGB32& color) {
        if (color.alpha == 255) {
            put_numbers({color.red, color.green, color.blue});
        } else {
            put_numbers({color.red, color.green, color.blue, color.alpha});
        }
    }
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
    template <class Point> void put_points(const std::vector<Point>& points) {
        std::vector<decltype(Point::x)> coordinates;
        coordinates.reserve(3 * points.size());
        for (const Point& point : points) {
            coordinates.insert(coordinates.end(), {finite(point.x), finite(point.y), finite(point.z)});
        }
        out_.numbers(coordinates, 3);
    }
    void put(const std::vector<VT_Parameter>& parameters) {
        std::ranges::for_each(parameters, finite<VT_Parameter>);
        out_.numbers(parameters, parameter_width);
    }
    void put(const std::vector<Line_Element>& elements) { put_elements(elements); }
    void put(const Line_Element& element) {
        out_.start_list();
        put(element.length);
        put(element.kind);
        out_.end_list();
    }
    void put(const Option_Settings& settings) {
        put_object([&](Object object) {
            for (const auto& [name, setting] : settings) {
                object.key(name, setting);
            }
        });
    }
    void put_opaque(const std::optional<std::vector<VT_RGB32>>& colors) {
        put_list(*colors, [this](VT_RGB32 color) { put_numbers({color.red, color.green, color.blue}); });
    }
    void put_contour(const std::vector<VT_Point>& contour) {
        std::vector<float> numbers;
        for (const VT_Point& point : contour) {
            numbers.insert(numbers.end(), {finite(point.x), finite(point.y)});
        }
        out_.numbers(numbers, 2);
    }

    template <class Element> void put(const Shared_List<Element>& list) { put_elements(*list); }
    // Lists that renditions share stand at the top level.
    void put(const Shared_List<VT_RGB32>& texels) { put(texels_.number_of(texels)); }
    void put(const Shared_List<std::vector<VT_Point>>& clip) { put(clips_.number_of(clip)); }
    void put(const std::shared_ptr<const Rendition>& rendition) { put(renditions_.number_of(rendition)); }

    // Rows of pixels, whose size other members tell.
    template <class Group, class Rows> void put_sized(const Group&, const Rows& rows) { put(rows); }
    void put_sized(const Image& image, const std::vector<std::uint8_t>& bytes) {
        const auto put_as = [&]<class Pixel>(Pixel) {
            std::vector<Pixel> pixels(bytes.size() / sizeof(Pixel));
            std::ranges::copy(bytes, reinterpret_cast<std::uint8_t*>(pixels.data()));
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

    template <Keyed Group> void put(const Group& group) {
        put_object([&](Object object) { this->put_keys(object, group); });
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

    void put(const Call& call) {
        put_object([&](Object object) {
            object.key("call", call.kind->name);
            if (call.rendition) {
                object.key("rendition", call.rendition);
            }
            if (call.standard) {
                object.key("standard", true);
            }
            std::visit([&](const auto& typed) { this->put_keys(object, typed); }, call.arguments);
        });
    }

    // A list that is kept for the top level.
    template <class List, class Put> Out kept_list(const List& list, Put put_one) {
        Out before = std::exchange(out_, Out());
        out_.start_lines();
        for (const auto& element : list) {
            put_one(element);
        }
        out_.end_list();
        return std::exchange(out_, std::move(before));
    }
    template <class List, class Put> void put_kept(const char* name, const List& list, Put put_one) {
        if (!list.empty()) {
            out_.add_lines(name, kept_list(list, put_one));
        }
    }

    Out out_;
    Numbered<Rendition> renditions_;
    Numbered<std::vector<VT_RGB32>> texels_;
    Numbered<std::vector<std::vector<VT_Point>>> clips_;
};

// Calls are written first, because they determine the list of renditions; then renditions, which determine the shared lists.
template <class Out> Out Writer<Out>::write(const Recording& recording) {
    Out calls = kept_list(recording.calls, [this](const Call& call) { put(call); });
    put_object([&](Object object) {
        object.key("picture", 1);
        this->put_keys(object, recording.configuration);
        if (recording.zbuffer_write != Recording().zbuffer_write) {
            object.key("zbuffer_write", recording.zbuffer_write);
        }
        if (recording.zbuffer_test != Recording().zbuffer_test) {
            object.key("zbuffer_test", recording.zbuffer_test);
        }
        if (recording.output) {
            object.key("output", *recording.output);
        }
        if (is_given(recording.rendition)) {
            object.key("rendition", recording.rendition);
        }
        // A later list refers to those before it in the document.
        Out renditions = this->kept_list(renditions_.list(), [this](const Rendition* shared) { this->put(*shared); });
        this->put_kept("texels", texels_.list(), [this](const auto* texels) { this->put(*texels); });
        this->put_kept("complex_clips", clips_.list(), [this](const auto* contours) {
            this->put_list(*contours, [this](const std::vector<VT_Point>& contour) { this->put_contour(contour); });
        });
        if (!renditions_.list().empty()) {
            out_.add_lines("renditions", std::move(renditions));
        }
        out_.add_lines("calls", std::move(calls));
    });
    return std::move(out_);
}

} // namespace

std::string json_of(const Recording& recording) {
    return Writer<Json_Printer>().write(recording).take();
}

std::string cbor_of(const Recording& recording) {
    return Writer<Cbor_Builder>().write(recording).take();
}

} // namespace vorna::drawing::recording
