// Reading typed data out of a JSON document, with errors that name the place.
//
// A form is a function from a Reader to a value; it fails when the JSON value has another shape. Forms are combined:
// list_of(form), or_null(form), and objects through keys, each of which pairs a name with a variable and a form.
#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "drawing/recording/document.h"

namespace vorna::drawing::recording {

// A key of an object, and what to do with its value.
template <class Read> struct Key {
    std::string_view name;
    bool is_required;
    Read read;
};

struct Shared_Values;

// A value of the document and its path. Readers of inner values refer to the readers of outer values, which outlive them.
class Reader {
public:
    // shared: the lists that values of the document refer to by number.
    Reader(const nlohmann::json& value, const Shared_Values& shared) noexcept : value_(&value), shared_(&shared) {}

    const nlohmann::json& value() const noexcept { return *value_; }
    const Shared_Values& shared() const noexcept { return *shared_; }
    std::string path() const;

    Reader element(std::size_t index) const { return Reader((*value_)[index], this, {}, index); }
    Reader member(std::string_view key, const nlohmann::json& value) const { return Reader(value, this, key, 0); }

    // Throws "path: expected <what>".
    [[noreturn]] void expected(const std::string& what) const;
    // The same for a value inside this one.
    [[noreturn]] void expected_in(const std::string& inner_path, const std::string& what) const;
    // Throws "path: <what>".
    [[noreturn]] void fail(const std::string& what) const;

    // Reads an object that has no other keys than these, and all that are required.
    template <class... Reads> void object(const Key<Reads>&... keys) const {
        if (!value_->is_object()) {
            expected("an object");
        }
        for (const auto& [name, value] : value_->items()) {
            const Reader inner = member(name, value);
            if (!(read_if_named(keys, name, inner) || ...)) {
                inner.unknown_key({keys.name...});
            }
        }
        (require(keys.name, keys.is_required), ...);
    }

private:
    Reader(const nlohmann::json& value, const Reader* outer, std::string_view key, std::size_t index) noexcept
        : value_(&value), shared_(outer->shared_), outer_(outer), key_(key), index_(index) {}

    template <class Read> static bool read_if_named(const Key<Read>& key, std::string_view name, const Reader& value) {
        if (key.name != name) {
            return false;
        }
        key.read(value);
        return true;
    }
    void require(std::string_view name, bool is_required) const;
    [[noreturn]] void unknown_key(std::initializer_list<std::string_view> known) const;

    const nlohmann::json* value_;
    const Shared_Values* shared_;
    const Reader* outer_ = nullptr;
    std::string_view key_; // without data: an element of an array
    std::size_t index_ = 0;
};

template <class Form> using Value_Of = std::decay_t<std::invoke_result_t<const Form&, const Reader&>>;

template <class Variable, class Form> auto key(std::string_view name, Variable& variable, Form form) {
    const auto read = [&variable, form](const Reader& reader) { variable = form(reader); };
    return Key<decltype(read)>{name, false, read};
}

template <class Variable, class Form> auto required_key(std::string_view name, Variable& variable, Form form) {
    auto result = key(name, variable, form);
    result.is_required = true;
    return result;
}

// A key whose value is read by other means.
inline auto read_elsewhere(std::string_view name, bool is_required = true) {
    const auto read = [](const Reader&) {};
    return Key<decltype(read)>{name, is_required, read};
}

// Scalars.

bool boolean(const Reader& reader);

template <std::integral Integer>
std::optional<Integer> whole_or_none(const nlohmann::json& value, Integer least = std::numeric_limits<Integer>::min(),
                                     Integer most = std::numeric_limits<Integer>::max()) {
    static_assert(sizeof(Integer) <= 4);
    if (!value.is_number_integer() || (value.is_number_unsigned() && value.get<std::uint64_t>() > std::uint64_t{UINT32_MAX})) {
        return {};
    }
    const auto number = value.get<std::int64_t>();
    return number >= std::int64_t{least} && number <= std::int64_t{most} ? std::optional(static_cast<Integer>(number))
                                                                         : std::nullopt;
}

template <std::integral Integer>
auto whole(Integer least = std::numeric_limits<Integer>::min(), Integer most = std::numeric_limits<Integer>::max()) {
    return [least, most](const Reader& reader) {
        const auto number = whole_or_none(reader.value(), least, most);
        if (!number) {
            reader.expected("a whole number from " + std::to_string(least) + " to " + std::to_string(most));
        }
        return *number;
    };
}

double number(const Reader& reader);

// Coordinates: the number as the type holds it, none for another type of value and for one outside its range.
template <class Number> std::optional<Number> coordinate_or_none(const nlohmann::json& value) {
    if constexpr (std::is_integral_v<Number>) {
        return whole_or_none<Number>(value);
    } else {
        if (!value.is_number()) {
            return {};
        }
        const auto wide = value.get<double>();
        const bool fits = wide >= std::numeric_limits<Number>::lowest() && wide <= std::numeric_limits<Number>::max();
        return fits ? std::optional(static_cast<Number>(wide)) : std::nullopt;
    }
}

// Combinations.

template <class Form> auto list_of(Form form, std::size_t least = 0, std::size_t most = std::numeric_limits<std::size_t>::max()) {
    return [=](const Reader& reader) {
        const std::size_t size = reader.value().size();
        if (!reader.value().is_array() || size < least || size > most) {
            const bool counted = most < std::numeric_limits<std::size_t>::max();
            reader.expected(counted ? "a list of " + std::to_string(least) + " to " + std::to_string(most) : "a list");
        }
        std::vector<Value_Of<Form>> list;
        list.reserve(size);
        for (std::size_t i = 0; i < size; ++i) {
            list.push_back(form(reader.element(i)));
        }
        return list;
    };
}

// The same list behind a shared pointer, so that copies of its owner share it.
template <class Form> auto shared_list_of(Form form) {
    return [form](const Reader& reader) {
        auto list = list_of(form)(reader);
        return std::make_shared<const decltype(list)>(std::move(list));
    };
}

template <class Form> auto or_null(Form form) {
    return [form](const Reader& reader) {
        return reader.value().is_null() ? std::optional<Value_Of<Form>>() : std::optional<Value_Of<Form>>(form(reader));
    };
}

} // namespace vorna::drawing::recording
