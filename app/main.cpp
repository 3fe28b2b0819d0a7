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
#include "app/cli/heap.h"
#include "app/cli/messages.h"
#include "app/cli/parser.h"
#include "drawing/files/interruption.h"
#include "drawing/files/memory.h"

namespace {

int complain(const vorna::app::Ending& ending) {
    vorna::app::print(stderr, "vorna: " + vorna::drawing::printable(ending.message) + '\n');
    return ending.status;
}

// A file that grows beyond a limit is an error like any other. A standard stream that is closed is opened in the wrong direction,
// so that no other file gets its number and using it fails.
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

// Flushes standard output. A command that has succeeded fails when its output has not arrived.
int finish_output(int status) {
    errno = 0;
    const bool arrived = std::cout.flush().good() && std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    if (arrived || status != vorna::app::exit_status::done) {
        return status;
    }
    const std::string reason = errno != 0 ? ": " + std::generic_category().message(errno) : "";
    return complain({vorna::app::failure_status(), "standard output: cannot be written" + reason});
}

} // namespace

int main(int count, char** arguments) {
    vorna::app::keep_one_heap();
    vorna::app::report_lack_of_memory();
    prepare_streams();
    vorna::drawing::call_settings(vorna::app::setting_options());
    try {
        const vorna::app::Program program = vorna::app::make_program();
        return finish_output(vorna::app::run_command_line(program, {arguments + std::min(count, 1), arguments + count}));
    } catch (const vorna::drawing::Interrupted& interrupted) {
        vorna::drawing::end_by_signal(interrupted.signal);
    } catch (const std::exception& error) {
        return complain(vorna::app::ending_of(error));
    }
}
