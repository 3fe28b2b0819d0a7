// What every function of the C interface does: turns exceptions into statuses, and checks arguments.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "vorna/c_types.h"

namespace vorna::c {

// An argument that the function does not accept.
struct Argument_Error : std::invalid_argument {
    using std::invalid_argument::invalid_argument;
};

// Keeps the message of the exception that is being handled and returns its status.
vorna_status note_exception() noexcept;

template <class Work> vorna_status guarded(Work work) noexcept {
    try {
        work();
        return VORNA_OK;
    } catch (...) {
        return note_exception();
    }
}

inline void require(bool is_right, const std::string& message) {
    if (!is_right) {
        throw Argument_Error(message);
    }
}

// The text is made only when it is needed.
template <class Make_Text>
requires requires(Make_Text make) {
    std::string(make());
}
void require(bool is_right, Make_Text make_text) {
    if (!is_right) {
        throw Argument_Error(make_text());
    }
}

template <class Type> Type& required(Type* pointer, const char* name) {
    require(pointer != nullptr, [&] { return std::string(name) + ": expected a pointer, found null"; });
    return *pointer;
}

// A list may be null when it is empty.
template <class Type> void require_list(const Type* list, std::size_t count, const char* name) {
    if (count > 0) {
        required(list, name);
    }
}

template <class Number> void require_range(const char* name, Number value, Number least, Number most) {
    require(value >= least && value <= most, [&] {
        return std::string(name) + ": expected " + std::to_string(least) + " to " + std::to_string(most) + ", found " +
               std::to_string(value);
    });
}

inline void require_finite(const char* name, double value) {
    require(std::isfinite(value), [&] { return std::string(name) + ": expected a finite number"; });
}

inline std::string text_of(const char* text) {
    return text ? text : "";
}

// Runs a function that makes a handle. The result is null unless it succeeds.
template <class Handle, class Make> vorna_status make_handle(Handle** result, const char* name, Make make) noexcept {
    return guarded([&] {
        required(result, name) = nullptr;
        std::unique_ptr<Handle> made = make();
        *result = made.release();
    });
}

// A function that fills settings with their defaults.
template <class Settings> vorna_status fill_defaults(Settings* settings, std::size_t size, const Settings& defaults) noexcept {
    return guarded([&] {
        required(settings, "settings");
        require(size == sizeof(Settings),
                [&] { return "size: expected " + std::to_string(sizeof(Settings)) + ", found " + std::to_string(size); });
        *settings = defaults;
        settings->struct_size = size;
    });
}

// The caller's settings; null stands for the defaults.
template <class Settings> Settings settings_or(const Settings* given, const Settings& defaults) {
    if (given) {
        require(given->struct_size == sizeof(Settings), [&] {
            return "struct_size: expected " + std::to_string(sizeof(Settings)) + ", found " + std::to_string(given->struct_size);
        });
        return *given;
    }
    return defaults;
}

// Bytes from a row to the next; 0 = no gaps.
inline std::size_t stride_or(std::size_t given, std::int32_t width, std::size_t pixel_bytes) {
    const std::size_t least = static_cast<std::size_t>(width) * pixel_bytes;
    require(given == 0 || (given >= least && given <= INT32_MAX && given % pixel_bytes == 0), [&] {
        return "stride: expected 0, or a multiple of " + std::to_string(pixel_bytes) + " from " + std::to_string(least) + " to " +
               std::to_string(INT32_MAX) + ", found " + std::to_string(given);
    });
    return given == 0 ? least : given;
}

} // namespace vorna::c
