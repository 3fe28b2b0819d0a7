// What libc++ 13, the library of Emscripten 3.1.6, lacks of C++20: algorithms of ranges, bit_cast, numbers from and to text,
// memory that is not set to zeros, and threads that join. Compiled before every source of such a build. Only the forms that are used here.
#pragma once

#if __cplusplus >= 202002L
#include <version>
#endif

#if defined(_LIBCPP_VERSION) && _LIBCPP_VERSION < 14000

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <system_error>
#include <thread>
#include <type_traits>
#include <utility>

namespace std {

template <class Array>
requires(is_unbounded_array_v<Array>) unique_ptr<Array> make_unique_for_overwrite(size_t count) {
    return unique_ptr<Array>(new remove_extent_t<Array>[count]);
}

template <class Value>
requires(!is_array_v<Value>) unique_ptr<Value> make_unique_for_overwrite() {
    return unique_ptr<Value>(new Value);
}

template <class Array>
requires(is_unbounded_array_v<Array>) shared_ptr<Array> make_shared_for_overwrite(size_t count) {
    return shared_ptr<Array>(new remove_extent_t<Array>[count]);
}

template <class To, class From>
requires(sizeof(To) == sizeof(From)) constexpr To bit_cast(const From& from) noexcept {
    return __builtin_bit_cast(To, from);
}

class jthread {
public:
    jthread() = default;
    template <class Function, class... Arguments>
    explicit jthread(Function&& function, Arguments&&... arguments)
        : thread_(std::forward<Function>(function), std::forward<Arguments>(arguments)...) {}
    jthread(jthread&&) noexcept = default;
    jthread& operator=(jthread&&) noexcept = default;
    ~jthread() {
        if (thread_.joinable()) {
            thread_.join();
        }
    }
    bool joinable() const noexcept { return thread_.joinable(); }
    void join() { thread_.join(); }

private:
    thread thread_;
};

// ---- numbers and text

// The longest beginning that is a decimal number, as strtod rounds it, which is to the nearest.
template <class Number>
requires(is_floating_point_v<Number>) from_chars_result from_chars(const char* first, const char* last, Number& value,
                                                                   chars_format = chars_format::general) {
    const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
    const auto after_digits = [&](const char* at) {
        while (at != last && is_digit(*at)) {
            ++at;
        }
        return at;
    };
    const char* at = first != last && *first == '-' ? first + 1 : first;
    const auto begins_with = [&](const char* word) {
        const auto size = static_cast<ptrdiff_t>(strlen(word));
        return last - at >= size && equal(word, word + size, at, [](char a, char b) { return a == (b | 0x20); });
    };
    for (const char* const word : {"infinity", "inf", "nan"}) {
        if (begins_with(word)) {
            const Number found =
                word[0] == 'n' ? numeric_limits<Number>::quiet_NaN() : numeric_limits<Number>::infinity();
            value = at == first ? found : -found;
            return {at + strlen(word), errc{}};
        }
    }
    const char* const whole_end = after_digits(at);
    const char* end = whole_end;
    if (end != last && *end == '.') {
        end = after_digits(end + 1);
        if (whole_end == at && end == whole_end + 1) {
            return {first, errc::invalid_argument};
        }
    } else if (whole_end == at) {
        return {first, errc::invalid_argument};
    }
    if (end != last && (*end == 'e' || *end == 'E')) {
        const char* const sign = end + 1;
        const char* const digits = sign != last && (*sign == '-' || *sign == '+') ? sign + 1 : sign;
        const char* const exponent_end = after_digits(digits);
        end = exponent_end != digits ? exponent_end : end;
    }
    char short_text[64];
    unique_ptr<char[]> long_text;
    const auto size = static_cast<size_t>(end - first);
    char* text = short_text;
    if (size >= sizeof short_text) {
        long_text = make_unique_for_overwrite<char[]>(size + 1);
        text = long_text.get();
    }
    memcpy(text, first, size);
    text[size] = 0;
    Number found;
    errno = 0;
    if constexpr (is_same_v<Number, float>) {
        found = strtof(text, nullptr);
    } else {
        found = strtod(text, nullptr);
    }
    // Numbers below the least normal one set the error too.
    if (errno == ERANGE && (found == 0 || found == numeric_limits<Number>::infinity() || found == -numeric_limits<Number>::infinity())) {
        return {end, errc::result_out_of_range};
    }
    value = found;
    return {end, errc{}};
}

// What printf writes; its last digits are right however many there are.
template <class Number>
requires(is_floating_point_v<Number>) to_chars_result to_chars(char* first, char* last, Number value, chars_format format,
                                                               int precision) {
    char text[512];
    const int size = snprintf(text, sizeof text, format == chars_format::fixed ? "%.*f" : format == chars_format::scientific ? "%.*e" : "%.*g",
                              precision, static_cast<double>(value));
    if (size < 0 || size >= static_cast<int>(sizeof text) || size > last - first) {
        return {last, errc::value_too_large};
    }
    memcpy(first, text, static_cast<size_t>(size));
    return {first + size, errc{}};
}

// The fewest digits that read back as the same number, in the shorter of both notations, fixed where they are as long.
template <class Number>
requires(is_floating_point_v<Number>) to_chars_result to_chars(char* first, char* last, Number value) {
    char digits[64], scientific[64], fixed[512];
    for (int precision = 0; precision <= numeric_limits<Number>::max_digits10; ++precision) {
        snprintf(digits, sizeof digits, "%.*e", precision, static_cast<double>(value));
        const bool is_same = is_same_v<Number, float> ? strtof(digits, nullptr) == static_cast<float>(value)
                                                      : strtod(digits, nullptr) == static_cast<double>(value);
        if (is_same || value != value) {
            memcpy(scientific, digits, sizeof digits);
            const char* const exponent = strchr(digits, 'e');
            const int power = exponent ? atoi(exponent + 1) : 0;
            const int decimals = precision > power ? precision - power : 0;
            const int size = snprintf(fixed, sizeof fixed, "%.*f", decimals, static_cast<double>(value));
            const char* const text = exponent && size > static_cast<int>(strlen(scientific)) ? scientific : fixed;
            const auto length = static_cast<ptrdiff_t>(strlen(text));
            if (length > last - first) {
                break;
            }
            memcpy(first, text, static_cast<size_t>(length));
            return {first + length, errc{}};
        }
    }
    return {last, errc::value_too_large};
}

// ---- algorithms of ranges

namespace ranges {

template <class In, class Out> struct in_out_result {
    In in;
    Out out;
};
template <class Value> struct min_max_result {
    Value min, max;
};
template <class In, class Function> struct in_fun_result {
    In in;
    Function fun;
};
template <class Iterator> struct iterator_pair : pair<Iterator, Iterator> {
    using pair<Iterator, Iterator>::pair;
    Iterator begin() const { return this->first; }
    Iterator end() const { return this->second; }
};

namespace missing {

template <class Type> concept Is_Range = requires(Type& range) {
    std::begin(range);
    std::end(range);
};

// A predicate of projected values.
template <class Predicate, class Projection> auto projected(Predicate& predicate, Projection& projection) {
    return [&predicate, &projection](auto&&... values) -> decltype(auto) {
        return std::invoke(predicate, std::invoke(projection, std::forward<decltype(values)>(values))...);
    };
}

template <class Value, class Projection> auto equals(const Value& value, Projection& projection) {
    return [&value, &projection](auto&& found) {
        return std::invoke(projection, std::forward<decltype(found)>(found)) == value;
    };
}

// An algorithm of two iterators, and the same of a range.
template <class Algorithm> struct Of_Range {
    template <class Iterator, class... Rest>
    requires(!Is_Range<Iterator>) constexpr auto operator()(Iterator first, Iterator last, Rest&&... rest) const {
        return Algorithm::run(first, last, std::forward<Rest>(rest)...);
    }
    template <Is_Range Range, class... Rest> constexpr auto operator()(Range&& range, Rest&&... rest) const {
        return Algorithm::run(std::begin(range), std::end(range), std::forward<Rest>(rest)...);
    }
};

// usage: MISSING_TEST(any_of), of a predicate and a projection
#define MISSING_TEST(name)                                                                                                       \
    struct name##_algorithm {                                                                                                    \
        template <class Iterator, class Predicate, class Projection = identity>                                                  \
        static constexpr auto run(Iterator first, Iterator last, Predicate predicate, Projection projection = {}) {              \
            return std::name(first, last, projected(predicate, projection));                                                     \
        }                                                                                                                        \
    };
MISSING_TEST(all_of)
MISSING_TEST(any_of)
MISSING_TEST(none_of)
MISSING_TEST(find_if)
MISSING_TEST(find_if_not)
MISSING_TEST(count_if)
#undef MISSING_TEST

struct for_each_algorithm {
    template <class Iterator, class Function, class Projection = identity>
    static constexpr in_fun_result<Iterator, Function> run(Iterator first, Iterator last, Function function, Projection projection = {}) {
        for (; first != last; ++first) {
            std::invoke(function, std::invoke(projection, *first));
        }
        return {first, std::move(function)};
    }
};

struct find_algorithm {
    template <class Iterator, class Value, class Projection = identity>
    static constexpr auto run(Iterator first, Iterator last, const Value& value, Projection projection = {}) {
        return std::find_if(first, last, equals(value, projection));
    }
};

struct count_algorithm {
    template <class Iterator, class Value, class Projection = identity>
    static constexpr auto run(Iterator first, Iterator last, const Value& value, Projection projection = {}) {
        return std::count_if(first, last, equals(value, projection));
    }
};

struct fill_algorithm {
    template <class Iterator, class Value> static constexpr auto run(Iterator first, Iterator last, const Value& value) {
        std::fill(first, last, value);
        return last;
    }
};

struct generate_algorithm {
    template <class Iterator, class Function> static constexpr auto run(Iterator first, Iterator last, Function function) {
        std::generate(first, last, std::move(function));
        return last;
    }
};

struct reverse_algorithm {
    template <class Iterator> static constexpr auto run(Iterator first, Iterator last) {
        std::reverse(first, last);
        return last;
    }
};

struct replace_algorithm {
    template <class Iterator, class Value>
    static constexpr auto run(Iterator first, Iterator last, const Value& from, const Value& to) {
        std::replace(first, last, from, to);
        return last;
    }
};

struct replace_if_algorithm {
    template <class Iterator, class Predicate, class Value>
    static constexpr auto run(Iterator first, Iterator last, Predicate predicate, const Value& to) {
        std::replace_if(first, last, std::ref(predicate), to);
        return last;
    }
};

struct copy_algorithm {
    template <class Iterator, class Out>
    static constexpr in_out_result<Iterator, Out> run(Iterator first, Iterator last, Out out) {
        return {last, std::copy(first, last, out)};
    }
};

struct move_algorithm {
    template <class Iterator, class Out>
    static constexpr in_out_result<Iterator, Out> run(Iterator first, Iterator last, Out out) {
        return {last, std::move(first, last, out)};
    }
};

struct copy_if_algorithm {
    template <class Iterator, class Out, class Predicate, class Projection = identity>
    static constexpr in_out_result<Iterator, Out> run(Iterator first, Iterator last, Out out, Predicate predicate,
                                                      Projection projection = {}) {
        return {last, std::copy_if(first, last, out, projected(predicate, projection))};
    }
};

struct nth_element_algorithm {
    template <class Iterator, class Order = less>
    static constexpr auto run(Iterator first, Iterator last, Iterator middle, Order order = {}) {
        std::nth_element(first, middle, last, order);
        return last;
    }
};

} // namespace missing

#define MISSING_OF_RANGE(name) inline constexpr missing::Of_Range<missing::name##_algorithm> name{};
MISSING_OF_RANGE(all_of)
MISSING_OF_RANGE(any_of)
MISSING_OF_RANGE(none_of)
MISSING_OF_RANGE(find)
MISSING_OF_RANGE(find_if)
MISSING_OF_RANGE(find_if_not)
MISSING_OF_RANGE(count)
MISSING_OF_RANGE(count_if)
MISSING_OF_RANGE(for_each)
MISSING_OF_RANGE(fill)
MISSING_OF_RANGE(generate)
MISSING_OF_RANGE(reverse)
MISSING_OF_RANGE(replace)
MISSING_OF_RANGE(replace_if)
MISSING_OF_RANGE(copy)
MISSING_OF_RANGE(copy_if)
MISSING_OF_RANGE(move)
#undef MISSING_OF_RANGE

// Algorithms whose order and projection have defaults, which calls may leave out or give as {}.
// usage: MISSING_ORDER(sort, less)
#define MISSING_ORDER(name, default_order)                                                                                       \
    struct name##_of_ranges {                                                                                                    \
        template <class Iterator, class Order = default_order, class Projection = identity>                                      \
        requires(!missing::Is_Range<Iterator>)                                                                                   \
        constexpr auto operator()(Iterator first, Iterator last, Order order = {}, Projection projection = {}) const {           \
            return std::name(first, last, missing::projected(order, projection));                                                \
        }                                                                                                                        \
        template <missing::Is_Range Range, class Order = default_order, class Projection = identity>                             \
        constexpr auto operator()(Range&& range, Order order = {}, Projection projection = {}) const {                           \
            return std::name(std::begin(range), std::end(range), missing::projected(order, projection));                         \
        }                                                                                                                        \
    };                                                                                                                           \
    inline constexpr name##_of_ranges name{};
MISSING_ORDER(sort, less)
MISSING_ORDER(stable_sort, less)
MISSING_ORDER(is_sorted, less)
MISSING_ORDER(max_element, less)
MISSING_ORDER(min_element, less)
MISSING_ORDER(adjacent_find, equal_to)
#undef MISSING_ORDER

// usage: MISSING_SEARCH(lower_bound, left, right): what the order compares, of the standard's arguments a and b
#define MISSING_SEARCH(name, left, right)                                                                                        \
    struct name##_of_ranges {                                                                                                    \
        template <class Iterator, class Value, class Order = less, class Projection = identity>                                  \
        requires(!missing::Is_Range<Iterator>)                                                                                   \
        constexpr auto operator()(Iterator first, Iterator last, const Value& value, Order order = {},                           \
                                  Projection projection = {}) const {                                                            \
            return std::name(first, last, value, [&](const auto& a, const auto& b) { return std::invoke(order, left, right); }); \
        }                                                                                                                        \
        template <missing::Is_Range Range, class Value, class Order = less, class Projection = identity>                         \
        constexpr auto operator()(Range&& range, const Value& value, Order order = {}, Projection projection = {}) const {       \
            return (*this)(std::begin(range), std::end(range), value, order, projection);                                        \
        }                                                                                                                        \
    };                                                                                                                           \
    inline constexpr name##_of_ranges name{};
MISSING_SEARCH(lower_bound, std::invoke(projection, a), b)
MISSING_SEARCH(upper_bound, a, std::invoke(projection, b))
#undef MISSING_SEARCH

struct binary_search_of_ranges {
    template <missing::Is_Range Range, class Value, class Order = less, class Projection = identity>
    constexpr bool operator()(Range&& range, const Value& value, Order order = {}, Projection projection = {}) const {
        const auto found = ranges::lower_bound(range, value, order, projection);
        return found != std::end(range) && !std::invoke(order, value, std::invoke(projection, *found));
    }
};
inline constexpr binary_search_of_ranges binary_search{};

struct transform_of_ranges {
    template <class Iterator, class Out, class Function, class Projection = identity>
    requires(!missing::Is_Range<Iterator>)
    constexpr in_out_result<Iterator, Out> operator()(Iterator first, Iterator last, Out out, Function function,
                                                      Projection projection = {}) const {
        return {last, std::transform(first, last, out, missing::projected(function, projection))};
    }
    template <missing::Is_Range Range, class Out, class Function, class Projection = identity>
    requires(!missing::Is_Range<Out>)
    constexpr auto operator()(Range&& range, Out out, Function function, Projection projection = {}) const {
        return (*this)(std::begin(range), std::end(range), out, std::move(function), std::move(projection));
    }
    template <missing::Is_Range Range, missing::Is_Range Other, class Out, class Function>
    constexpr auto operator()(Range&& range, Other&& other, Out out, Function function) const {
        // The shorter one ends both.
        auto second = std::begin(other);
        auto first = std::begin(range);
        for (; first != std::end(range) && second != std::end(other); ++first, ++second, ++out) {
            *out = std::invoke(function, *first, *second);
        }
        return in_out_result<decltype(first), Out>{first, out};
    }
};
inline constexpr transform_of_ranges transform{};

inline constexpr auto equal = []<class First, class Second, class Predicate = equal_to>(const First& first, const Second& second,
                                                                                        Predicate predicate = {}) {
    return std::equal(std::begin(first), std::end(first), std::begin(second), std::end(second), predicate);
};
inline constexpr auto lexicographical_compare = []<class First, class Second, class Order = less>(
                                                    const First& first, const Second& second, Order order = {}) {
    return std::lexicographical_compare(std::begin(first), std::end(first), std::begin(second), std::end(second), order);
};
inline constexpr auto find_first_of = []<class First, class Second, class Predicate = equal_to>(First&& first, const Second& second,
                                                                                                Predicate predicate = {}) {
    return std::find_first_of(std::begin(first), std::end(first), std::begin(second), std::end(second), predicate);
};
inline constexpr auto set_union = [](const auto& first, const auto& second, auto out) {
    return std::set_union(std::begin(first), std::end(first), std::begin(second), std::end(second), out);
};
inline constexpr auto set_difference = [](const auto& first, const auto& second, auto out) {
    return std::set_difference(std::begin(first), std::end(first), std::begin(second), std::end(second), out);
};
inline constexpr auto rotate = []<class Range, class Iterator>(Range&& range, Iterator middle) {
    return iterator_pair<Iterator>(std::rotate(std::begin(range), middle, std::end(range)), std::end(range));
};
inline constexpr auto nth_element = []<class Range, class Iterator, class Order = less>(Range&& range, Iterator middle, Order order = {}) {
    std::nth_element(std::begin(range), middle, std::end(range), order);
    return std::end(range);
};
struct max_of_range {
    template <missing::Is_Range Range, class Order = less, class Projection = identity>
    constexpr auto operator()(Range&& range, Order order = {}, Projection projection = {}) const {
        return *std::max_element(std::begin(range), std::end(range), missing::projected(order, projection));
    }
    template <class Value> constexpr Value operator()(initializer_list<Value> values) const { return std::max(values); }
};
inline constexpr max_of_range max{};
struct minmax_of_range {
    template <class Iterator, class Order, class Projection>
    static constexpr auto found(Iterator first, Iterator last, Order& order, Projection& projection) {
        const auto places = std::minmax_element(first, last, missing::projected(order, projection));
        return min_max_result<typename iterator_traits<Iterator>::value_type>{*places.first, *places.second};
    }
    template <missing::Is_Range Range, class Order = less, class Projection = identity>
    constexpr auto operator()(Range&& range, Order order = {}, Projection projection = {}) const {
        return found(std::begin(range), std::end(range), order, projection);
    }
    template <class Value, class Order = less, class Projection = identity>
    constexpr auto operator()(initializer_list<Value> values, Order order = {}, Projection projection = {}) const {
        return found(values.begin(), values.end(), order, projection);
    }
};
inline constexpr minmax_of_range minmax{};

} // namespace ranges
} // namespace std

#endif
