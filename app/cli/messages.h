// Messages of the command. All text is printed here, because names of files and texts in them may hold control characters.
#pragma once

#include <cstdio>
#include <exception>
#include <string>

#include "drawing/files/printable.h"
#include "drawing/files/setting_names.h"

namespace vorna::app {

// Prints lines of text with their control characters replaced.
void print(std::FILE* stream, const std::string& text);

// Prints a warning: the command continues.
void warn(const std::string& text);

// Prints a line about a file that was written: on standard output unless the file itself went there.
void print_line(const std::string& output, const std::string& line);

// Throws Usage_Error when an image would go to a terminal. option: its name.
void refuse_terminal(const char* option, const std::string& name);

// Throws Usage_Error for "-" as the name of a folder. option: its name.
void refuse_standard_output(const char* option, const std::string& folder);

// The options by which users of the command know the library's settings.
const drawing::Setting_Names& setting_options() noexcept;

// How a command ends that has thrown: a line, and its exit status.
struct Ending {
    int status;
    std::string message;
};
// A Usage_Error after a failed allocation is a lack of memory: streams and libraries take the failure for wrong input.
Ending ending_of(const std::exception& error);

// The status of failures, 1 at first. A command whose status 1 says something else, as that images differ, fails with another.
void fail_with(int status) noexcept;
int failure_status() noexcept;

// Notes failed allocations for ending_of. Where a library allocates in a function that must not throw, a failed allocation ends
// the process with a message and the status of a failure; other exceptions abort as before.
void report_lack_of_memory();

// Whether an allocation has failed since report_lack_of_memory was called.
bool has_lacked_memory() noexcept;

} // namespace vorna::app
