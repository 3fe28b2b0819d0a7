// Files that appear whole or not at all.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

#include "drawing/files/output_channel.h"

namespace vorna::drawing {

// A file that is written in pieces beside its place and moves there at the end. The destructor removes what has not been
// committed. A file that is replaced must be writable and keeps its permissions. What this process has open - "-" is standard
// output, and so are the names that the system gives it, as /dev/stdout - gets everything at the end, at its current position.
// All members throw std::runtime_error that names the file.
class Output_File {
public:
    explicit Output_File(const std::string& name);
    Output_File(const Output_File&) = delete;
    Output_File& operator=(const Output_File&) = delete;
    ~Output_File();

    void write(std::string_view bytes);
    // Replaces bytes that have been written, which devices and pipes do not allow.
    void rewrite(std::uint64_t place, std::string_view bytes);
    // No more is written; the file is complete beside its place, and on the disk.
    void close();
    // Closes it when that has not been done.
    void commit();

    // Whether the process has it open, so that it gets everything at the end.
    bool is_held() const noexcept { return is_held_; }
    // Whether both would be moved to the same place. Devices take any number of files.
    bool replaces_same_as(const Output_File& other) const { return !target_.empty() && target_ == other.target_; }

    // Throws what the constructor would throw, as far as that can be known without writing anything.
    static void check(const std::string& name);
    // Whether bytes that have been written can be replaced: false for devices and named pipes.
    static bool can_rewrite(const std::string& name);

    // Removes the unfinished files of all threads. Later ones wait forever where they would create a file or move it to its
    // place, so the process must end.
    static void remove_unfinished();

private:
    void create(unsigned permissions, std::error_code& error);
    void hold(std::string_view bytes);
    void copy_held();

    struct Close {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };

    std::filesystem::path path_, target_;
    std::filesystem::path temporary_; // empty when there is none, or no longer
    Output_Channel channel_;
    bool is_held_ = false; // until the end, first in memory and then in a file without a name
    std::string held_;
    std::unique_ptr<std::FILE, Close> held_file_;
};

// One file by itself. Throws Interrupted too.
void write_file(const std::string& path, std::string_view bytes);

} // namespace vorna::drawing
