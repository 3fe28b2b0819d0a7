// Options of a call, a JSON object, as members of settings.
#pragma once

#include <cstddef>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "drawing/files/usage_error.h"

namespace vorna::web {

using nlohmann::json;

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
    void text(const char* name, std::string& member) {
        if (const json* const value = find(name)) {
            expect(value->is_string(), name, "a text", *value);
            member = value->get<std::string>();
        }
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
