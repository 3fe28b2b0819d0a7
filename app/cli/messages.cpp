// Messages of the command.
#include "app/cli/messages.h"

#include <atomic>
#include <cstdlib>
#include <exception>
#include <new>

#include "app/cli/command.h"
#include "drawing/files/output_files.h"
#include "drawing/files/standard_streams.h"
#include "drawing/files/usage_error.h"

namespace vorna::app {
namespace {

std::atomic<bool> has_failed_allocation = false;
std::atomic<int> status_of_failures = exit_status::failed;

void note_failed_allocation() {
    has_failed_allocation = true;
    throw std::bad_alloc();
}

[[noreturn]] void end_for_lack_of_memory() noexcept {
    bool lacks_memory = false;
    try {
        if (const std::exception_ptr current = std::current_exception()) {
            std::rethrow_exception(current);
        }
        // GCC before 14 has not caught the exception that leaves an inlined noexcept function.
        lacks_memory = has_failed_allocation && std::uncaught_exceptions() > 0;
    } catch (const std::bad_alloc&) {
        lacks_memory = true;
    } catch (...) {
    }
    if (!lacks_memory) {
        std::abort();
    }
    std::fputs("vorna: out of memory\n", stderr);
    std::_Exit(status_of_failures);
}

} // namespace

void print(std::FILE* stream, const std::string& text) {
    const std::string shown = drawing::printable_lines(text);
    std::fwrite(shown.data(), 1, shown.size(), stream);
}

void warn(const std::string& text) {
    print(stderr, "vorna: warning: " + drawing::printable(text) + '\n');
}

void print_line(const std::string& output, const std::string& line) {
    print(drawing::is_standard_output(output) ? stderr : stdout, line + '\n');
}

void refuse_terminal(const char* option, const std::string& name) {
    if (drawing::is_standard_output(name) && drawing::is_terminal(stdout)) {
        throw drawing::Usage_Error(std::string(option) + ' ' + name +
                                   ": expected a file or a pipe for an image, found a terminal");
    }
}

void refuse_standard_output(const char* option, const std::string& folder) {
    if (folder == "-") {
        throw drawing::Usage_Error(std::string(option) + ": expected a folder, found - for standard output; ./- is a folder");
    }
}

const drawing::Setting_Names& setting_options() noexcept {
    static constexpr drawing::Setting_Names names{
        "--allow-empty", "--bbox",         "--center",        "--clip-to", "--dpi",   "--flip-y",
        "--font",        "--input-format", "--graticule",     "--kernels", "--layer", "--layout",
        "--map-scale",   "--max-memory",   "--allow-outside", "--overlay", "--paper", "--tiles-of",
        "--projection",  "--record",       "--scale",         "--size",    "--unit",  "--water"};
    return names;
}

Ending ending_of(const std::exception& error) {
    if (dynamic_cast<const std::bad_alloc*>(&error)) {
        return {status_of_failures, "out of memory"};
    }
    if (!dynamic_cast<const drawing::Usage_Error*>(&error)) {
        return {status_of_failures, error.what()};
    }
    return has_failed_allocation ? Ending{status_of_failures, std::string("out of memory: ") + error.what()}
                                 : Ending{exit_status::wrong_usage, error.what()};
}

void report_lack_of_memory() {
    std::set_new_handler(note_failed_allocation);
    std::set_terminate(end_for_lack_of_memory);
}

void fail_with(int status) noexcept {
    status_of_failures = status;
}

int failure_status() noexcept {
    return status_of_failures;
}

bool has_lacked_memory() noexcept {
    return has_failed_allocation;
}

} // namespace vorna::app
