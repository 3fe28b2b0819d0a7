// What the fuzzers share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "app/cli/command.h"
#include "vorna/module.h"

namespace fuzzing {

inline std::string_view text_of(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// Ends the process the way that fuzzers notice.
[[noreturn]] inline void fail(const std::string& reason) {
    std::fprintf(stderr, "%s\n", reason.c_str());
    std::abort();
}

// Runs work on an untrusted input. It may refuse the input by an error that users are told, and by no other exception.
template <class Error = vorna::drawing::Usage_Error, class Work> void try_out(Work work) {
    try {
        work();
    } catch (const Error& error) {
        if (*error.what() == '\0') {
            fail("an input was refused without a word");
        }
    }
}

// It stays loaded: fuzzers look at its counters after every input.
inline const vorna::Module& loaded_module() {
    static const vorna::Module module(KRB_MODULE);
    return module;
}

inline vorna::drawing::Module_Choice renderer_module() {
    loaded_module();
    return {KRB_MODULE, ""};
}

// Reads an input as small numbers, zeros when it has come to its end.
class Bytes {
public:
    explicit Bytes(std::string_view rest) : rest_(rest) {}

    bool at_end() const noexcept { return rest_.empty(); }
    std::uint8_t byte() noexcept {
        if (rest_.empty()) {
            return 0;
        }
        const auto value = static_cast<std::uint8_t>(rest_.front());
        rest_.remove_prefix(1);
        return value;
    }
    std::uint32_t word() noexcept {
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            value = value << 8 | byte();
        }
        return value;
    }
    // 0 to count - 1.
    std::size_t choice(std::size_t count) noexcept { return byte() % count; }
    bool flag() noexcept { return (byte() & 1) != 0; }
    std::string_view rest() const noexcept { return rest_; }

private:
    std::string_view rest_;
};

} // namespace fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
