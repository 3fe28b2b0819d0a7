// The forms in which documents are written: JSON for people, CBOR for programs. Both take the values of a document one after the
// other. `numbers` and `digits` are compact lists; width: numbers of an element.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace vorna::drawing::recording {

class Json_Printer {
public:
    std::string take() { return std::move(text_ += '\n'); }

    void start_object() { open('{', ", "); }
    void end_object() { close('}'); }
    void start_list() { open('[', ", "); }
    // With an element on each line.
    void start_lines() { open('[', ",\n"); }
    void end_list() { close(']'); }
    void name(std::string_view name) {
        separate();
        text_.append("\"").append(name).append("\": ");
        levels_.back().has_name = true;
    }

    void value(std::nullptr_t) { put("null"); }
    void value(bool value) { put(value ? "true" : "false"); }
    void value(std::int64_t value) { put_number(value); }
    void value(double value) { put_real(value); }
    void value(float value) { put_real(value); }
    void value(std::string_view text) { put(nlohmann::json(text).dump()); }
    template <class Number> void numbers(const std::vector<Number>& numbers, std::size_t) {
        open('[', ",");
        for (const Number number : numbers) {
            if constexpr (std::is_integral_v<Number>) {
                put_number(number);
            } else {
                put_real(number);
            }
        }
        close(']');
    }
    void digits(std::string_view bytes) {
        constexpr const char* digits = "0123456789abcdef";
        put("\"");
        for (const char byte : bytes) {
            text_ += digits[static_cast<std::uint8_t>(byte) >> 4];
            text_ += digits[static_cast<std::uint8_t>(byte) & 15];
        }
        text_ += '"';
    }

    // The list as a member of the object at the top level, on lines of its own.
    void add_lines(std::string_view name, Json_Printer list) {
        text_.append(",\n\"").append(name).append("\": ").append(list.text_);
    }

private:
    struct Level {
        std::string_view separator;
        bool is_first = true, has_name = false;
    };

    void separate() {
        if (!levels_.empty() && !std::exchange(levels_.back().has_name, false) &&
            !std::exchange(levels_.back().is_first, false)) {
            text_ += levels_.back().separator;
        }
    }
    void put(std::string_view text) {
        separate();
        text_ += text;
    }
    void open(char bracket, std::string_view separator) {
        separate();
        text_ += bracket;
        levels_.push_back({separator});
    }
    void close(char bracket) {
        levels_.pop_back();
        text_ += bracket;
    }

    template <class Number> void put_number(Number number) {
        std::array<char, 32> digits;
        put({digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr});
    }
    void put_real(double value) {
        if (value == 0 && std::signbit(value)) {
            put("-0.0"); // -0 would be read as a whole number
        } else {
            put_number(value);
        }
    }
    // The shortest digits that give the same number, also when they are read with double precision and rounded afterwards.
    void put_real(float value) {
        std::array<char, 32> digits;
        const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
        double read = 0;
        std::from_chars(digits.data(), end, read);
        if (value == 0 || static_cast<float>(read) != value) {
            put_real(double{value});
        } else {
            put({digits.data(), end});
        }
    }

    std::string text_;
    std::vector<Level> levels_;
};

class Cbor_Builder {
public:
    // Document and objects in the order of their keys' names.
    std::string take() {
        std::string bytes;
        nlohmann::json::to_cbor(document_, bytes);
        return bytes;
    }

    void start_object() { open_.push_back(place(nlohmann::json::object())); }
    void end_object() { open_.pop_back(); }
    void start_list() { open_.push_back(place(nlohmann::json::array())); }
    void start_lines() { start_list(); }
    void end_list() { open_.pop_back(); }
    void name(std::string_view name) { name_ = name; }

    template <class Value> void value(const Value& value) { place(value); }
    // Whole numbers from those of the element before, which are small and often the same: they compress better.
    template <class Number> void numbers(std::vector<Number> numbers, std::size_t width) {
        if constexpr (std::is_integral_v<Number>) {
            for (std::size_t i = numbers.size(); i-- > width;) {
                using Unsigned = std::make_unsigned_t<Number>;
                numbers[i] = static_cast<Number>(static_cast<Unsigned>(numbers[i]) - static_cast<Unsigned>(numbers[i - width]));
            }
        }
        std::vector<std::uint8_t> bytes(numbers.size() * sizeof(Number));
        std::memcpy(bytes.data(), numbers.data(), bytes.size());
        if constexpr (std::endian::native == std::endian::big) {
            for (auto number = bytes.begin(); number != bytes.end(); number += sizeof(Number)) {
                std::reverse(number, number + sizeof(Number));
            }
        }
        place(nlohmann::json::binary(std::move(bytes)));
    }
    void digits(std::string_view bytes) { place(nlohmann::json::binary({bytes.begin(), bytes.end()})); }

    void add_lines(std::string_view name, Cbor_Builder list) { (*open_.back())[std::string(name)] = std::move(list.document_); }

private:
    nlohmann::json* place(nlohmann::json value) {
        if (open_.empty()) {
            document_ = std::move(value);
            return &document_;
        }
        nlohmann::json& parent = *open_.back();
        if (parent.is_object()) {
            return &(parent[name_] = std::move(value));
        }
        parent.push_back(std::move(value));
        return &parent.back();
    }

    nlohmann::json document_;
    std::vector<nlohmann::json*> open_;
    std::string name_;
};

} // namespace vorna::drawing::recording
