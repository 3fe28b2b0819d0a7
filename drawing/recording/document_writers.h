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
#include <nlohmann/json.hpp>
#include <numeric>
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
    void put_between(const char* first, const char* end) { put({first, static_cast<std::size_t>(end - first)}); }
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
        put_between(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
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
            put_between(digits.data(), end);
        }
    }

    std::string text_;
    std::vector<Level> levels_;
};

// Encodes values as they come. A document of the library could not be destroyed without memory: its destructor asks for some.
class Cbor_Builder {
public:
    std::string take() { return std::move(document_); }

    void start_object() { open_.emplace_back().is_object = true; }
    void end_object() { close(); }
    void start_list() { open_.emplace_back(); }
    void start_lines() { start_list(); }
    void end_list() { close(); }
    void name(std::string_view name) { open_.back().members.push_back({std::string(name), 0}); }

    // A number, a text, true, false or null.
    template <class Value> void value(const Value& value) { put(encoded(value)); }
    // Whole numbers from those of the element before, which are small and often the same: they compress better.
    template <class Number> void numbers(std::vector<Number> numbers, std::size_t width) {
        if constexpr (std::is_integral_v<Number>) {
            for (std::size_t i = numbers.size(); i-- > width;) {
                using Unsigned = std::make_unsigned_t<Number>;
                numbers[i] = static_cast<Number>(static_cast<Unsigned>(numbers[i]) - static_cast<Unsigned>(numbers[i - width]));
            }
        }
        std::string bytes(reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(Number));
        if constexpr (std::endian::native == std::endian::big) {
            for (auto number = bytes.begin(); number != bytes.end(); number += sizeof(Number)) {
                std::reverse(number, number + sizeof(Number));
            }
        }
        digits(bytes);
    }
    void digits(std::string_view bytes) { put(head(Type::bytes, bytes.size()).append(bytes)); }

    void add_lines(std::string_view member, const Cbor_Builder& list) {
        name(member);
        put(list.document_);
    }

private:
    struct Member {
        std::string name;
        std::size_t end; // of its value in the bytes of the object
    };

    // A list or an object that is being written.
    struct Level {
        bool is_object = false;
        std::vector<Member> members;
        std::size_t count = 0;
        std::string bytes; // of the elements, or of the members' values
    };

    static std::string encoded(const nlohmann::json& value) {
        std::string bytes;
        nlohmann::json::to_cbor(value, bytes);
        return bytes;
    }

    enum class Type : unsigned { bytes = 2, list = 4, object = 5 };

    // What the value begins with: its type and its number of bytes or elements, in five bits or in the 1, 2, 4 or 8 bytes that
    // follow.
    static std::string head(Type type, std::uint64_t count) {
        constexpr unsigned least_in_bytes = 24;
        const unsigned type_bits = static_cast<unsigned>(type) << 5;
        if (count < least_in_bytes) {
            return {static_cast<char>(type_bits | count)};
        }
        const unsigned log2_size = count < 1U << 8 ? 0 : count < 1U << 16 ? 1 : count < std::uint64_t{1} << 32 ? 2 : 3;
        std::string bytes{static_cast<char>(type_bits | (least_in_bytes + log2_size))};
        for (unsigned left = 1U << log2_size; left-- > 0;) {
            bytes += static_cast<char>(count >> 8 * left);
        }
        return bytes;
    }

    void put(std::string bytes) {
        if (open_.empty()) {
            document_ = std::move(bytes);
            return;
        }
        Level& level = open_.back();
        level.bytes += bytes;
        ++level.count;
        if (level.is_object) {
            level.members.back().end = level.bytes.size();
        }
    }

    void close() {
        const Level level = std::move(open_.back());
        open_.pop_back();
        std::string bytes = head(level.is_object ? Type::object : Type::list, level.count);
        if (level.is_object) {
            std::vector<std::size_t> order(level.members.size());
            std::iota(order.begin(), order.end(), std::size_t{0});
            std::ranges::sort(order, {}, [&](std::size_t member) -> const std::string& { return level.members[member].name; });
            for (const std::size_t member : order) {
                const std::size_t start = member == 0 ? 0 : level.members[member - 1].end;
                bytes += encoded(level.members[member].name);
                bytes.append(level.bytes, start, level.members[member].end - start);
            }
        } else {
            bytes += level.bytes;
        }
        put(std::move(bytes));
    }

    std::string document_;
    std::vector<Level> open_;
};

} // namespace vorna::drawing::recording
