// How much memory there is to use.
#include "drawing/files/memory.h"

#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>
#include <utility>

#include "drawing/files/setting_names.h"
#include "drawing/files/usage_error.h"

#if defined(_WIN32)
// The second one needs the first.
// clang-format off
#include <windows.h>
#include <psapi.h>
// clang-format on
#else
#include <unistd.h>
#endif

namespace vorna::drawing {

#if defined(_WIN32)
std::uint64_t resident_memory() {
    PROCESS_MEMORY_COUNTERS counters = {};
    return GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters) ? counters.WorkingSetSize : 0;
}

std::uint64_t address_space() {
    return 0;
}
#else
namespace {

// Pages in all, and those in memory.
std::pair<std::uint64_t, std::uint64_t> pages() {
    unsigned long long whole = 0, resident = 0;
    if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%llu %llu", &whole, &resident) != 2) {
            whole = resident = 0;
        }
        std::fclose(file);
    }
    return {whole, resident};
}

} // namespace

std::uint64_t resident_memory() {
    return pages().second * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

std::uint64_t address_space() {
    return pages().first * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}
#endif

std::uint64_t parsed_memory(const std::string& option, const std::string& text) {
    std::uint64_t number = 0;
    const char* end = text.data() + text.size();
    const auto [unit, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc{} && number > 0 && end - unit <= 1) {
        constexpr std::string_view units = "KMGT";
        const auto letter = static_cast<char>(std::toupper(static_cast<unsigned char>(unit == end ? 0 : *unit)));
        const std::size_t power = unit == end ? 0 : units.find(letter) + 1; // 0 for what is none
        const int shift = static_cast<int>(10 * power);
        if ((unit == end || power > 0) && number <= UINT64_MAX >> shift) {
            return number << shift;
        }
    }
    throw Usage_Error(option + ": expected a number of bytes, or one with K, M, G or T as 512M or 2G, found '" + text + "'");
}

std::optional<std::uint64_t> parsed_limit(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional(parsed_memory(name_of(Setting::max_memory), text));
}

std::string memory_text(std::uint64_t bytes) {
    if (bytes < 1U << 20) {
        return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    }
    const std::uint64_t mega = (bytes + (1U << 20) - 1) >> 20;
    return mega < 10240 ? std::to_string(mega) + "M" : std::to_string((mega + 1023) >> 10) + "G";
}

} // namespace vorna::drawing
