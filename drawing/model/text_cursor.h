// Reads words and numbers from a text in memory and knows the line it is in.
#pragma once

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "drawing/model/decimal_number.h"
#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

// Whether a word is this keyword of small letters, whatever its capitals.
inline bool is_keyword(std::string_view word, std::string_view keyword) noexcept {
    return std::ranges::equal(word, keyword, [](char a, char b) { return a == b || (a >= 'A' && a <= 'Z' && a + 0x20 == b); });
}

class Text_Cursor {
public:
    // Both outlive the cursor.
    Text_Cursor(const std::string& file, std::string_view text, std::int64_t first_line = 1)
        : file_(&file), place_(text.data()), end_(text.data() + text.size()), line_(first_line) {}

    bool at_end() const noexcept { return place_ == end_; }
    const char* place() const noexcept { return place_; }
    std::int64_t line() const noexcept { return line_; }
    std::size_t remaining() const noexcept { return static_cast<std::size_t>(end_ - place_); }

    // To the next character of the line that is not blank; a backslash continues a line.
    void skip_blanks() noexcept {
        while (place_ != end_) {
            const char c = *place_;
            if (c == '\\' && continues_line()) {
                ++line_;
            } else if (c != ' ' && c != '\t' && c != '\r') {
                return;
            }
            ++place_;
        }
    }

    // True when only blanks are left in the line.
    bool at_line_end() noexcept {
        skip_blanks();
        return place_ == end_ || *place_ == '\n';
    }

    // True when only blanks or a comment are left in the line.
    bool at_statement_end() noexcept { return at_line_end() || *place_ == '#'; }

    void next_line() noexcept {
        if (place_ != end_ && *place_ != '\n') {
            const void* const found = std::memchr(place_, '\n', remaining());
            place_ = found ? static_cast<const char*>(found) : end_;
        }
        if (place_ != end_) {
            ++place_;
            ++line_;
        }
    }

    // Over blanks and line ends.
    void skip_space() noexcept {
        for (skip_blanks(); place_ != end_ && *place_ == '\n'; skip_blanks()) {
            ++place_;
            ++line_;
        }
    }

    // The cursor at a place of its line before this one.
    Text_Cursor at(const char* place) const noexcept {
        Text_Cursor cursor = *this;
        cursor.place_ = place;
        return cursor;
    }

    // The cursor at a place of another line.
    Text_Cursor at(const char* place, std::int64_t line) const noexcept {
        Text_Cursor cursor = at(place);
        cursor.line_ = line;
        return cursor;
    }

    // The next word of the line, empty at its end.
    std::string_view word() noexcept {
        skip_blanks();
        const char* start = place_;
        while (place_ != end_ && !is_space(*place_)) {
            ++place_;
        }
        return {start, static_cast<std::size_t>(place_ - start)};
    }

    // Past what is left of a word that has been begun.
    void finish_word() noexcept {
        while (place_ != end_ && !is_space(*place_)) {
            ++place_;
        }
    }

    // What is left of the line without blanks around it: a name that may hold blanks.
    std::string_view rest_of_line() noexcept {
        skip_blanks();
        const char* start = place_;
        while (place_ != end_ && *place_ != '\n') {
            ++place_;
        }
        const char* stop = place_;
        while (stop != start && is_space(stop[-1])) {
            --stop;
        }
        return {start, static_cast<std::size_t>(stop - start)};
    }

    bool at(char c) const noexcept { return place_ != end_ && *place_ == c; }
    bool at_word_end() const noexcept { return place_ == end_ || is_space(*place_); }

    // True and past it when the next character is this one.
    bool accept(char c) noexcept {
        if (place_ == end_ || *place_ != c) {
            return false;
        }
        ++place_;
        return true;
    }

    // A finite number of the line. expected: what it is, for the message.
    float number(const char* expected) {
        skip_blanks();
        const char* const start = place_;
        const float value = any_number(expected);
        if (!std::isfinite(value)) {
            at(start).fail(expected);
        }
        return value;
    }

    // Infinities too, and what is no number.
    float any_number(const char* expected) {
        skip_blanks();
        const char* start = place_ != end_ && *place_ == '+' ? place_ + 1 : place_;
        float value = 0;
        if (read_plain_number(start, end_, place_, value)) {
            return value;
        }
        auto [stop, error] = std::from_chars(start, end_, value);
        if (error == std::errc::result_out_of_range) {
            // Too small for a float is zero, too large is infinite.
            double wide = HUGE_VAL;
            std::from_chars(start, end_, wide);
            value = std::abs(wide) < 1 ? 0.0F : HUGE_VALF;
        } else if (error != std::errc{}) {
            fail(expected);
        }
        place_ = stop;
        return value;
    }

    std::int64_t integer(const char* expected) {
        skip_blanks();
        constexpr std::ptrdiff_t most_digits = 18;
        const char* place = place_;
        std::uint64_t digits = 0; // of one digit more than is taken here
        for (; place != end_ && *place >= '0' && *place <= '9' && place - place_ <= most_digits; ++place) {
            digits = digits * 10 + static_cast<std::uint64_t>(*place - '0');
        }
        if (place != place_ && place - place_ <= most_digits) {
            place_ = place;
            return static_cast<std::int64_t>(digits);
        }
        const char* start = place_ != end_ && *place_ == '+' ? place_ + 1 : place_;
        std::int64_t value = 0;
        const auto [stop, error] = std::from_chars(start, end_, value);
        if (error != std::errc{}) {
            fail(expected);
        }
        place_ = stop;
        return value;
    }

    [[noreturn]] void fail(const std::string& expected) {
        const std::string_view found = word().substr(0, 40);
        std::string shown;
        for (const char c : found) {
            shown += c >= ' ' && c <= '~' ? c : '?';
        }
        const std::string start = *file_ + ":" + std::to_string(line_) + ": expected " + expected + ", found ";
        if (place_ == end_) { // also a word that is cut off
            throw Cut_Off_Error(start + (found.empty() ? "the end of the file" : "'" + shown + "'"));
        }
        throw Model_Error(start + (found.empty() ? "the end of the line" : "'" + shown + "'"));
    }

private:
    static bool is_space(char c) noexcept { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

    bool continues_line() noexcept {
        const char* next = place_ + 1;
        if (next != end_ && *next == '\r') {
            ++next;
        }
        if (next == end_ || *next != '\n') {
            return false;
        }
        place_ = next;
        return true;
    }

    const std::string* file_;
    const char* place_;
    const char* end_;
    std::int64_t line_;
};

} // namespace vorna::drawing::model
