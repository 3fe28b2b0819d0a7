// The command vorna.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <new>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#if !defined(_WIN32)
#include <fcntl.h>
#endif

#include "app/command.h"
#include "app/command_line.h"
#include "app/interruption.h"
#include "app/memory.h"
#include "app/messages.h"
#include "app/usage.h"

namespace {

int complain(const std::string& message, int status) {
    app::print(stderr, "vorna: " + app::printable(message) + '\n');
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
    if (arrived || status != app::exit_status::done) {
        return status;
    }
    const std::string reason = errno != 0 ? ": " + std::generic_category().message(errno) : "";
    return complain("standard output: cannot be written" + reason, app::exit_status::failed);
}

int run(int count, char** arguments) {
    int status = app::exit_status::done;
    const std::unique_ptr<CLI::App> application = app::make_command_line(status);
    try {
        // The parser takes them from the end.
        std::vector<std::string> prepared =
            app::prepared_arguments(*application, {arguments + std::min(count, 1), arguments + count});
        std::ranges::reverse(prepared);
        application->parse(std::move(prepared));
    } catch (const CLI::Success& request) {
        return application->exit(request);
    } catch (const CLI::ParseError& error) {
        return complain(app::usage_message(*application, error), app::exit_status::wrong_usage);
    }
    return status;
}

} // namespace

int main(int count, char** arguments) {
    std::set_terminate(app::end_for_lack_of_memory);
    prepare_streams();
    try {
        return finish_output(run(count, arguments));
    } catch (const app::Usage_Error& error) {
        return complain(error.what(), app::exit_status::wrong_usage);
    } catch (const app::Interrupted& interrupted) {
        // As if nothing had been put in its way, now that what was unfinished is gone.
        std::signal(interrupted.signal, SIG_DFL);
        std::raise(interrupted.signal);
        return app::exit_status::failed;
    } catch (const std::bad_alloc&) {
        return complain("out of memory", app::exit_status::failed);
    } catch (const std::exception& error) {
        return complain(error.what(), app::exit_status::failed);
    }
}
