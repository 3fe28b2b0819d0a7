// The command vorna.
#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <memory>
#include <new>
#include <string>

#include "app/command.h"
#include "app/command_line.h"
#include "app/interruption.h"

namespace {

// One line, whatever names and texts have come into the message.
int complain(std::string message, int status) {
    std::replace_if(
        message.begin(), message.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
    std::cerr << "vorna: " << message << '\n';
    return status;
}

int run(int count, char** arguments) {
    int status = app::exit_status::done;
    const std::unique_ptr<CLI::App> application = app::make_command_line(status);
    try {
        application->parse(count, arguments);
    } catch (const CLI::Success& request) {
        return application->exit(request);
    } catch (const CLI::ParseError& error) {
        return complain(error.what(), app::exit_status::wrong_usage);
    }
    return status;
}

} // namespace

int main(int count, char** arguments) {
    try {
        return run(count, arguments);
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
