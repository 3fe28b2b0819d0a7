// Bytes on their way into an open file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace vorna::drawing {

// A file that is open for writing. Whatever waits - for a pipe's reader, or until one has read - throws Interrupted when the
// program is asked to stop.
class Output_Channel {
public:
    Output_Channel() = default;
    Output_Channel(Output_Channel&& other) noexcept;
    Output_Channel& operator=(Output_Channel&& other) noexcept;
    ~Output_Channel() { close(); }

    // A new file, which must not exist. mode: permissions, of which the user's mask takes some away.
    static Output_Channel created(const std::filesystem::path& path, unsigned mode, std::error_code& error);
    // What is there already, and keeps what has been written: a device, a pipe, or what another process has open.
    static Output_Channel opened(const std::filesystem::path& path, std::error_code& error);
    // What this process has open under a number. It stays open, and is written from where it stands.
    static Output_Channel borrowed(int number);

    bool is_open() const noexcept { return number_ >= 0; }
    std::error_code write(std::string_view bytes);
    // Replaces bytes of a file that was created.
    std::error_code rewrite(std::uint64_t place, std::string_view bytes);
    // Brings a file that stays onto the disk.
    std::error_code sync();
    std::error_code close();

private:
    Output_Channel(int number, bool is_owned);

    int number_ = -1;
    bool is_owned_ = false, is_file_ = false;
};

// Brings what is new or gone in a folder onto the disk, as far as the system lets us.
void sync_folder(const std::filesystem::path& folder);

} // namespace vorna::drawing
