// The values of a PLY file, in text or binary.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

#include "drawing/model/bytes.h"
#include "drawing/model/mesh.h"
#include "drawing/model/text_cursor.h"

namespace vorna::drawing::model {

enum class Scalar { int8, uint8, int16, uint16, int32, uint32, float32, float64 };

// Calls visit with a value of the type.
template <class Visit> auto with_type(Scalar scalar, const Visit& visit) {
    switch (scalar) {
    case Scalar::int8:
        return visit(std::int8_t{});
    case Scalar::uint8:
        return visit(std::uint8_t{});
    case Scalar::int16:
        return visit(std::int16_t{});
    case Scalar::uint16:
        return visit(std::uint16_t{});
    case Scalar::int32:
        return visit(std::int32_t{});
    case Scalar::uint32:
        return visit(std::uint32_t{});
    case Scalar::float32:
        return visit(float{});
    case Scalar::float64:
        break;
    }
    return visit(double{});
}

// In bytes.
inline std::size_t size_of(Scalar scalar) {
    return with_type(scalar, [](auto type) { return sizeof type; });
}

// Values one after the other, for either encoding. A value of another form fails at the place it was read from.
class Text_Values {
public:
    explicit Text_Values(Text_Cursor cursor) : cursor_(cursor), start_(cursor.place()) {}

    double number(Scalar, const char* expected) {
        advance();
        return static_cast<double>(cursor_.number(expected));
    }
    double any_number(Scalar, const char* expected) {
        advance();
        return static_cast<double>(cursor_.any_number(expected));
    }
    std::int64_t integer(Scalar, const char* expected) {
        advance();
        return cursor_.integer(expected);
    }
    std::size_t remaining() const { return cursor_.remaining(); }
    // From the next value on.
    std::string_view rest() {
        cursor_.skip_space();
        return {cursor_.place(), cursor_.remaining()};
    }
    // To the beginning of a line, so many lines farther.
    void move(const char* place, std::int64_t lines) { cursor_ = cursor_.at(place, cursor_.line() + lines); }
    [[noreturn]] void fail(const std::string& expected) { cursor_.at(start_).fail(expected); }

private:
    void advance() {
        cursor_.skip_space();
        start_ = cursor_.place();
    }

    Text_Cursor cursor_;
    const char* start_; // of the last value
};

template <std::endian Order> class Binary_Values {
public:
    Binary_Values(const std::string& file, std::string_view content, std::size_t start)
        : file_(file), content_(content), next_(start) {}

    double number(Scalar scalar, const char* expected) {
        const double value = any_number(scalar, expected);
        if (!std::isfinite(value)) {
            fail(expected);
        }
        return value;
    }
    // Also infinite and NaN.
    double any_number(Scalar scalar, const char* expected) { return take<double>(scalar, expected); }
    std::int64_t integer(Scalar scalar, const char* expected) {
        if (scalar == Scalar::float32 || scalar == Scalar::float64) {
            const double value = take<double>(scalar, expected);
            if (!(std::abs(value) < 1e15)) {
                fail(expected);
            }
            return static_cast<std::int64_t>(value);
        }
        return take<std::int64_t>(scalar, expected);
    }
    std::size_t remaining() const { return content_.size() - next_; }
    std::string_view rest() const { return content_.substr(next_); }
    void skip(std::size_t bytes) { next_ += bytes; }
    [[noreturn]] void fail(const std::string& expected) {
        const std::string message = file_ + ": byte " + std::to_string(place_) + ": expected " + expected;
        if (place_ == content_.size()) {
            throw Cut_Off_Error(message + ", found the end of the file");
        }
        throw Model_Error(message);
    }

private:
    template <class Result> Result take(Scalar scalar, const char* expected) {
        return with_type(scalar, [&](auto type) { return static_cast<Result>(bytes_as<decltype(type)>(expected)); });
    }

    template <class Number> Number bytes_as(const char* expected) {
        place_ = next_;
        if (remaining() < sizeof(Number)) {
            place_ = content_.size();
            fail(expected);
        }
        next_ += sizeof(Number);
        return load<Number, Order>(content_.data() + place_);
    }

    const std::string& file_;
    std::string_view content_;
    std::size_t next_;
    std::size_t place_ = 0;
};

} // namespace vorna::drawing::model
