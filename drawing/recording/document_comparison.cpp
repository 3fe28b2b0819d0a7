// How the documents of two recordings differ.
#include "drawing/recording/document_comparison.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <map>
#include <memory>
#include <string_view>
#include <type_traits>
#include <variant>

#include "drawing/recording/call_kinds.h"

namespace vorna::drawing::recording {

namespace {

using Differences = std::vector<Value_Difference>;

template <class Value> Differences differences(const Value& a, const Value& b);

// Values as messages show them. Long ones are cut.

template <class Number>
requires std::is_arithmetic_v<Number> std::string text_of(Number value) {
    if constexpr (std::is_same_v<Number, bool>) {
        return value ? "true" : "false";
    } else {
        std::array<char, 32> digits;
        return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr};
    }
}

template <class... Numbers> std::string list_of(const Numbers&... numbers) {
    std::string text;
    ((text += (text.empty() ? "[" : ", ") + text_of(numbers)), ...);
    return text + ']';
}

std::string text_of(const std::string& text) {
    constexpr std::size_t most = 40;
    return '"' + (text.size() > most ? text.substr(0, most) + "..." : text) + '"';
}
std::string text_of(VT_RGB32 color) {
    return color.alpha == 255 ? list_of(color.red, color.green, color.blue)
                              : list_of(color.red, color.green, color.blue, color.alpha);
}
std::string text_of(const VT_Int_RGB& color) {
    return list_of(color.red, color.green, color.blue);
}
std::string text_of(const VT_Int_Pair& pair) {
    return list_of(pair.x, pair.y);
}
std::string text_of(const VT_Int_Rectangle& area) {
    return list_of(area.left, area.right, area.bottom, area.top);
}
std::string text_of(Buffer_Format format) {
    return text_of(static_cast<std::int32_t>(format));
}
std::string text_of(const Line_Element& element) {
    return list_of(element.length, element.kind);
}
std::string text_of(const VT_Matrix&) {
    return "a matrix";
}
template <class Point>
requires requires(const Point& point) {
    point.z;
}
std::string text_of(const Point& point) {
    return list_of(point.x, point.y, point.z);
}
template <class Element> std::string text_of(const std::vector<Element>& list) {
    return "a list of " + std::to_string(list.size());
}
template <class Element> std::string text_of(const Shared_List<Element>& list) {
    return text_of(*list);
}
template <class Pixel> std::string text_of(const Image_Rows<Pixel>& rows) {
    return "rows of " + std::to_string(rows.row_pixels) + " pixels";
}
template <class... Choices> std::string text_of(const std::variant<Choices...>& value) {
    return std::visit([](const auto& choice) { return text_of(choice); }, value);
}
template <Keyed Group> std::string text_of(const Group&) {
    return "an object";
}

template <class Value> struct Is_Optional : std::false_type {};
template <class Value> struct Is_Optional<std::optional<Value>> : std::true_type {};

template <class Value> std::string text_of(const std::optional<Value>& value) {
    return value ? text_of(*value) : "none";
}

// Whether single values are the same to the bit.

template <class Number>
requires std::is_arithmetic_v<Number>
bool are_same(Number a, Number b) {
    if constexpr (std::is_same_v<Number, float>) {
        return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
    } else if constexpr (std::is_same_v<Number, double>) {
        return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
    } else {
        return a == b;
    }
}
template <class Value>
requires std::equality_comparable<Value> &&(!std::is_arithmetic_v<Value>)bool are_same(const Value& a, const Value& b) {
    return a == b;
}
bool are_same(const Line_Element& a, const Line_Element& b) {
    return are_same(a.length, b.length) && a.kind == b.kind;
}
bool are_same(const VT_Matrix& a, const VT_Matrix& b) {
    return std::equal(&a.m[0][0], &a.m[0][0] + 16, &b.m[0][0], [](double x, double y) { return are_same(x, y); });
}
template <class Point>
requires requires(const Point& point) {
    point.z;
}
bool are_same(const Point& a, const Point& b) {
    return are_same(a.x, b.x) && are_same(a.y, b.y) && are_same(a.z, b.z);
}

void add(Differences& all, const std::string& prefix, Differences inner) {
    for (Value_Difference& each : inner) {
        all.push_back({prefix + each.path, std::move(each.first), std::move(each.second)});
    }
}

// The first element that differs; of lists of different lengths the lengths, where no element before differs.
template <class Element> Differences of_lists(const std::vector<Element>& a, const std::vector<Element>& b) {
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        if (Differences inner = differences(static_cast<const Element&>(a[i]), static_cast<const Element&>(b[i]));
            !inner.empty()) {
            Differences all;
            add(all, '[' + std::to_string(i) + ']', std::move(inner));
            return all;
        }
    }
    return a.size() == b.size() ? Differences() : Differences{{"", text_of(a), text_of(b)}};
}

Differences of_options(const Option_Settings& a, const Option_Settings& b) {
    std::map<std::string_view, std::pair<const Option_Setting*, const Option_Setting*>> both;
    for (const auto& [name, setting] : a) {
        both[name].first = &setting;
    }
    for (const auto& [name, setting] : b) {
        both[name].second = &setting;
    }
    const auto text = [](const Option_Setting* setting) { return setting ? text_of(*setting) : "none"; };
    Differences all;
    for (const auto& [name, settings] : both) {
        const auto& [in_a, in_b] = settings;
        if (!in_a || !in_b || *in_a != *in_b) {
            all.push_back({'.' + std::string(name), text(in_a), text(in_b)});
        }
    }
    return all;
}

template <Keyed Group> Differences of_keys(const Group& a, const Group& b) {
    Differences all;
    for_each_field<Group>([&](const auto& field) {
        const std::string prefix = field.name.empty() ? "" : '.' + std::string(field.name);
        add(all, prefix, differences(a.*field.member, b.*field.member));
    });
    return all;
}

template <class Pixel> Differences of_rows(const Image_Rows<Pixel>& a, const Image_Rows<Pixel>& b) {
    if (a.row_pixels != b.row_pixels || a.row_pixels < 1) {
        return a.row_pixels == b.row_pixels ? Differences() : Differences{{"", text_of(a), text_of(b)}};
    }
    Differences inner = of_lists(a.pixels, b.pixels);
    if (!inner.empty() && inner.front().path.starts_with('[')) {
        const std::size_t width = static_cast<std::size_t>(a.row_pixels), place = std::stoul(inner.front().path.substr(1));
        inner.front().path = '[' + std::to_string(place / width) + "][" + std::to_string(place % width) + ']';
    }
    return inner;
}

template <class Value> Differences one_of(const Value& a, const Value& b) {
    return are_same(a, b) ? Differences() : Differences{{"", text_of(a), text_of(b)}};
}

template <class Value> struct Comparer {
    static Differences compare(const Value& a, const Value& b) {
        if constexpr (Keyed<Value>) {
            return of_keys(a, b);
        } else {
            return one_of(a, b);
        }
    }
};
template <class Value> struct Comparer<std::optional<Value>> {
    static Differences compare(const std::optional<Value>& a, const std::optional<Value>& b) {
        if (a && b) {
            return differences(*a, *b);
        }
        return a.has_value() == b.has_value() ? Differences() : Differences{{"", text_of(a), text_of(b)}};
    }
};
template <class Element> struct Comparer<std::vector<Element>> {
    static Differences compare(const std::vector<Element>& a, const std::vector<Element>& b) { return of_lists(a, b); }
};
template <> struct Comparer<Option_Settings> {
    static Differences compare(const Option_Settings& a, const Option_Settings& b) { return of_options(a, b); }
};
template <class Element> struct Comparer<Shared_List<Element>> {
    static Differences compare(const Shared_List<Element>& a, const Shared_List<Element>& b) {
        return a == b ? Differences() : differences(*a, *b);
    }
};
template <class Pixel> struct Comparer<Image_Rows<Pixel>> {
    static Differences compare(const Image_Rows<Pixel>& a, const Image_Rows<Pixel>& b) { return of_rows(a, b); }
};

template <class Value> Differences differences(const Value& a, const Value& b) {
    return Comparer<Value>::compare(a, b);
}

Differences of_calls(const Call& a, const Call& b) {
    if (a.kind != b.kind) {
        return {{"call", std::string(a.kind->name), std::string(b.kind->name)}};
    }
    Differences all;
    std::visit(
        [&](const auto& arguments) {
            all = differences(arguments, std::get<std::remove_cvref_t<decltype(arguments)>>(b.arguments));
        },
        a.arguments);
    add(all, ".standard", differences(a.standard, b.standard));
    if (a.rendition != b.rendition) {
        const Rendition none;
        add(all, ".rendition", differences(a.rendition ? *a.rendition : none, b.rendition ? *b.rendition : none));
    }
    for (Value_Difference& each : all) {
        each.path.erase(0, 1); // the dot
    }
    return all;
}

} // namespace

Document_Difference compare_documents(const Recording& a, const Recording& b) {
    Document_Difference result;
    result.setup = differences(a.configuration, b.configuration);
    add(result.setup, ".zbuffer_write", differences(a.zbuffer_write, b.zbuffer_write));
    add(result.setup, ".zbuffer_test", differences(a.zbuffer_test, b.zbuffer_test));
    add(result.setup, ".output", differences(a.output, b.output));
    add(result.setup, ".rendition", differences(a.rendition, b.rendition));
    for (Value_Difference& each : result.setup) {
        each.path.erase(0, 1); // the dot
    }
    const std::size_t shorter = std::min(a.calls.size(), b.calls.size()), longer = std::max(a.calls.size(), b.calls.size());
    result.differing.resize(longer, true);
    for (std::size_t i = 0; i < shorter; ++i) {
        const Differences found = of_calls(a.calls[i], b.calls[i]);
        result.differing[i] = !found.empty();
        if (!result.call && !found.empty()) {
            result.call = {i, found.front()};
        }
    }
    if (!result.call && shorter < longer) {
        const auto name = [shorter](const Recording& recording) {
            return shorter < recording.calls.size() ? std::string(recording.calls[shorter].kind->name) : "none";
        };
        result.call = {shorter, {"call", name(a), name(b)}};
    }
    return result;
}

} // namespace vorna::drawing::recording
