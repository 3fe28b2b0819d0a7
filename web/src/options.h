// Options of a call, a JSON object, as members of settings.
#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "drawing/files/usage_error.h"
#include "drawing/image_samples.h"

namespace vorna::web {

using nlohmann::json;

// Texts of files may be invalid UTF-8.
inline std::string text_of(const json& value) {
    return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

template <class Value> struct Choice {
    const char* name;
    Value value;
};

// Options that are absent or null leave the member as it is. All throw Usage_Error that names the option.
class Options {
public:
    explicit Options(json values) : values_(std::move(values)) {
        if (!values_.is_object()) {
            throw drawing::Usage_Error("options: expected an object, found " + values_.dump());
        }
    }

    // Null when there is none.
    const json* find(const char* name) {
        known_.insert(name);
        const auto found = values_.find(name);
        return found == values_.end() || found->is_null() ? nullptr : &*found;
    }

    template <class Number> void number(const char* name, Number& member) {
        if (const json* const value = find(name)) {
            member = number_of<Number>(name, *value);
        }
    }
    void flag(const char* name, bool& member) {
        if (const json* const value = find(name)) {
            expect(value->is_boolean(), name, "true or false", *value);
            member = value->get<bool>();
        }
    }
    void text(const char* name, std::string& member) {
        if (const json* const value = find(name)) {
            expect(value->is_string(), name, "a text", *value);
            member = value->get<std::string>();
        }
    }
    // A text as the command has it, or channels from 0 to 255.
    template <class Color> void color(const char* name, Color& member) {
        if (const json* const value = find(name)) {
            member = color_of(name, *value);
        }
    }
    template <class Value, std::size_t count>
    void choice(const char* name, Value& member, const Choice<Value> (&choices)[count]) {
        if (const json* const value = find(name)) {
            member = chosen(name, *value, choices);
        }
    }
    template <std::size_t count> std::optional<std::array<double, count>> numbers(const char* name) {
        const json* const value = find(name);
        if (!value) {
            return {};
        }
        expect(value->is_array() && value->size() == count, name, std::to_string(count) + " numbers", *value);
        std::array<double, count> found;
        for (std::size_t i = 0; i < count; ++i) {
            found[i] = number_of<double>(name, (*value)[i]);
        }
        return found;
    }

    template <class Number> static Number number_of(const char* name, const json& value) {
        if constexpr (std::is_floating_point_v<Number>) {
            expect(value.is_number(), name, "a number", value);
            return value.get<Number>();
        } else {
            const double number = value.is_number() ? value.get<double>() : 0.5;
            const bool fits = number == static_cast<double>(static_cast<std::int64_t>(number)) &&
                              number >= static_cast<double>(std::numeric_limits<Number>::min()) &&
                              number <= static_cast<double>(std::numeric_limits<Number>::max());
            expect(fits, name, "a whole number that fits", value);
            return static_cast<Number>(number);
        }
    }
    template <class Value, std::size_t count>
    static Value chosen(const char* name, const json& value, const Choice<Value> (&choices)[count]) {
        std::string names;
        for (const Choice<Value>& choice : choices) {
            if (value.is_string() && value.get<std::string>() == choice.name) {
                return choice.value;
            }
            names += (names.empty() ? "" : ", ") + std::string(choice.name);
        }
        refuse(name, "one of " + names, value);
    }
    static VT_RGB32 color_of(const char* name, const json& value) {
        if (value.is_string()) {
            return drawing::parsed_color(value.get<std::string>());
        }
        expect(value.is_array() && (value.size() == 3 || value.size() == 4), name, "a colour", value);
        std::array<std::uint8_t, 4> channels{0, 0, 0, 255};
        for (std::size_t i = 0; i < value.size(); ++i) {
            channels[i] = number_of<std::uint8_t>(name, value[i]);
        }
        return {channels[2], channels[1], channels[0], channels[3]};
    }

    // Call it when all options were asked for.
    void reject_unknown() const {
        for (const auto& [name, value] : values_.items()) {
            if (!known_.contains(name)) {
                std::string names;
                for (const std::string& known : known_) {
                    names += (names.empty() ? "" : ", ") + known;
                }
                throw drawing::Usage_Error("options: found '" + name + "', expected some of " + names);
            }
        }
    }

    [[noreturn]] static void refuse(const char* name, const std::string& expected, const json& found) {
        throw drawing::Usage_Error(std::string(name) + ": expected " + expected + ", found " + found.dump());
    }
    static void expect(bool holds, const char* name, const std::string& expected, const json& found) {
        if (!holds) {
            refuse(name, expected, found);
        }
    }

private:
    json values_;
    std::set<std::string> known_;
};

} // namespace vorna::web
