// The command vorna.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <system_error>
#include <vector>

#if !defined(_WIN32)
#include <fcntl.h>
#endif

#include "app/cli/command.h"
#include "app/cli/command_line.h"
#include "app/cli/messages.h"
#include "app/cli/parser.h"
#include "drawing/files/interruption.h"
#include "drawing/files/memory.h"

namespace {

int complain(const std::string& message, int status) {
    vorna::app::print(stderr, "vorna: " + vorna::drawing::printable(message) + '\n');
    return status;
}

// A file that grows beyond a limit is an error like any other. And no file takes the place of a standard stream that is closed:
// what is opened there can only be used the other way round.
void prepare_streams() {
#if !defined(_WIN32)
    for (const int stream : {0, 1, 2}) {
        if (fcntl(stream, F_GETFD) == -1) {
            open("/dev/null", stream == 0 ? O_WRONLY : O_RDONLY); // takes the lowest number
        }
    }
    std::signal(SIGXFSZ, SIG_IGN);
#endif
}

// What was printed has arrived, or there is a complaint.
int finish_output(int status) {
    errno = 0;
    const bool arrived = std::cout.flush().good() && std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    if (arrived || status != vorna::app::exit_status::done) {
        return status;
    }
    const std::string reason = errno != 0 ? ": " + std::generic_category().message(errno) : "";
    return complain("standard output: cannot be written" + reason, vorna::app::exit_status::failed);
}

// To be called where the program would end without a word: libraries that lack memory in functions that must not throw end with a
// message and the status of what fails, everything else as ever.
[[noreturn]] void end_for_lack_of_memory() noexcept {
    try {
        if (const std::exception_ptr current = std::current_exception()) {
            std::rethrow_exception(current);
        }
    } catch (const std::bad_alloc&) {
        std::fputs("vorna: out of memory\n", stderr);
        std::_Exit(vorna::app::exit_status::failed);
    } catch (...) {
    }
    std::abort();
}

} // namespace

int main(int count, char** arguments) {
    std::set_terminate(end_for_lack_of_memory);
    prepare_streams();
    try {
        const vorna::app::Program program = vorna::app::make_program();
        return finish_output(vorna::app::run_command_line(program, {arguments + std::min(count, 1), arguments + count}));
    } catch (const vorna::drawing::Usage_Error& error) {
        return complain(error.what(), vorna::app::exit_status::wrong_usage);
    } catch (const vorna::drawing::Interrupted& interrupted) {
        // As if nothing had been put in its way, now that what was unfinished is gone.
        std::signal(interrupted.signal, SIG_DFL);
        std::raise(interrupted.signal);
        return vorna::app::exit_status::failed;
    } catch (const std::bad_alloc&) {
        return complain("out of memory", vorna::app::exit_status::failed);
    } catch (const std::exception& error) {
        return complain(error.what(), vorna::app::exit_status::failed);
    }
}
