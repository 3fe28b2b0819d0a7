// What every function of the C interface does: turns exceptions into statuses, and checks arguments.
#pragma once

#include <algorithm>
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

// Structs of settings end with their last member: in padding behind it, older programs would have arbitrary values of members
// that are added later.
#define VORNA_SETTINGS_END(Settings, member)                                                                                     \
    static_assert(offsetof(Settings, member) + sizeof(Settings::member) == sizeof(Settings), "expected no padding at the end")

// Settings of other versions are shorter or longer. The size of a pointer is that of a mistaken operand of sizeof.
template <class Settings> void require_settings_size(const char* name, std::size_t size) {
    constexpr std::size_t least = sizeof(std::size_t) + alignof(Settings), most = 4096;
    require(size >= least && size <= most && size % alignof(Settings) == 0, [&] {
        return std::string(name) + ": expected " + std::to_string(sizeof(Settings)) + ", or the size in another version, found " +
               std::to_string(size);
    });
}

// A function that fills settings with their defaults. Members that the library does not know become 0.
template <class Settings> vorna_status fill_defaults(Settings* settings, std::size_t size, const Settings& defaults) noexcept {
    return guarded([&] {
        auto* const bytes = reinterpret_cast<std::uint8_t*>(&required(settings, "settings"));
        require_settings_size<Settings>("size", size);
        const std::size_t known = std::min(size, sizeof(Settings));
        std::memcpy(bytes, &defaults, known);
        std::memset(bytes + known, 0, size - known);
        settings->struct_size = size;
    });
}

// The caller's settings; null stands for the defaults, as do the members that a shorter struct lacks. Members that the library
// does not know must be 0, so that nothing that the caller asks for is ignored.
template <class Settings> Settings settings_or(const Settings* given, const Settings& defaults) {
    Settings settings = defaults;
    if (given) {
        const std::size_t size = given->struct_size, known = std::min(size, sizeof(Settings));
        require_settings_size<Settings>("struct_size", size);
        std::memcpy(&settings, given, known);
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(given);
        require(std::all_of(bytes + known, bytes + size, [](std::uint8_t byte) { return byte == 0; }), [&] {
            return "struct_size: expected zeros behind the first " + std::to_string(sizeof(Settings)) +
                   " bytes, since the members there belong to a later version";
        });
    }
    return settings;
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
