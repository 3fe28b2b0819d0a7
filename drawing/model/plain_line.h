// Reads lines of a text as most programs write them: words and numbers between blanks. Where a line has anything else, every
// operation but skip is false and the place may be anywhere in it: a Text_Cursor has to read the line.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "drawing/model/decimal_number.h"

namespace vorna::drawing::model {

class Plain_Line {
public:
    // From the beginning of a line or within it. end: of the text.
    Plain_Line(const char* place, const char* end) noexcept : place_(place), end_(end) {}

    const char* place() const noexcept { return place_; }

    void skip_blanks() noexcept {
        while (place_ != end_ && (*place_ == ' ' || *place_ == '\t')) {
            ++place_;
        }
    }
    bool at_digit() const noexcept { return place_ != end_ && *place_ >= '0' && *place_ <= '9'; }
    bool accept(char c) noexcept {
        const bool is_there = place_ != end_ && *place_ == c;
        place_ += is_there;
        return is_there;
    }
    // Whether a word comes next, after blanks.
    bool starts_with(std::string_view word) const noexcept {
        Plain_Line after = *this;
        return after.accept(word);
    }
    // The same, and past it.
    bool accept(std::string_view word) noexcept {
        skip_blanks();
        if (!std::string_view(place_, static_cast<std::size_t>(end_ - place_)).starts_with(word)) {
            return false;
        }
        place_ += word.size();
        return ends_word();
    }
    // A finite one, after blanks.
    bool number(float& value) noexcept {
        skip_blanks();
        return read_plain_number(place_, end_, place_, value) && std::isfinite(value) && ends_word();
    }
    // Of up to nine digits, without blanks before it.
    bool digits(std::uint32_t& value) noexcept {
        constexpr std::ptrdiff_t most_digits = 9;
        const char* const start = place_;
        std::uint32_t read = 0;
        for (; at_digit(); ++place_) {
            read = read * 10 + static_cast<std::uint32_t>(*place_ - '0');
        }
        value = read;
        return place_ != start && place_ - start <= most_digits;
    }
    // The same after blanks.
    bool integer(std::uint32_t& value) noexcept {
        skip_blanks();
        return digits(value) && ends_word();
    }
    // To the next line.
    void skip() noexcept {
        const void* const found = place_ == end_ ? nullptr : std::memchr(place_, '\n', static_cast<std::size_t>(end_ - place_));
        place_ = found ? static_cast<const char*>(found) + 1 : end_;
    }
    bool ends_word() const noexcept {
        return place_ == end_ || *place_ == ' ' || *place_ == '\t' || *place_ == '\n' || *place_ == '\r';
    }
    // Past the line end. True when nothing but blanks is before it.
    bool finish() noexcept {
        skip_blanks();
        accept('\r');
        return place_ == end_ || accept('\n');
    }

private:
    const char* place_;
    const char* end_;
};

} // namespace vorna::drawing::model
