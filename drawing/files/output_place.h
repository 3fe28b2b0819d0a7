// What the names of files to write lead to.
#pragma once

#include <filesystem>
#include <system_error>

namespace vorna::drawing {

struct Output_Place {
    std::filesystem::path target; // whether it exists or not; links are followed
    int number = -1;              // of what this process has open, when it is that
    bool is_open = false;         // a device, a pipe or what a process has open: it is written where it stands and not replaced
    bool is_by_stranger = false;  // another user may have made one of the links, in a folder where every user may
};

// Throws std::runtime_error when links lead to themselves.
Output_Place output_place_of(const std::filesystem::path& path);

// The same, and throws std::runtime_error for what cannot be written.
Output_Place checked_output_place_of(const std::filesystem::path& path);

// Asks the system, whose rules go beyond permissions. Nothing is changed.
bool is_writable(const std::filesystem::path& path);

[[noreturn]] void fail_to_write(const std::filesystem::path& path, const std::error_code& reason);

} // namespace vorna::drawing
