// The command vorna.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <new>
#include <string>

#include "app/assemble_command.h"
#include "app/check/check_command.h"
#include "app/command.h"
#include "app/compare_command.h"
#include "app/info_command.h"
#include "app/interruption.h"
#include "app/render_command.h"
#include "app/replay_command.h"
#include "app/view/view_command.h"

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
    CLI::App application("Exact software rendering", "vorna");
    application.set_version_flag("--version", std::string("vorna ") + VORNA_VERSION, "Print the version and exit");
    application.allow_windows_style_options(false); // a path may begin with a slash there too
    application.require_subcommand(1);
    app::add_module_options(application);
    app::add_replay_command(application, status);
    app::add_render_command(application, status);
    app::add_check_command(application, status);
    app::add_assemble_command(application, status);
    app::add_info_command(application, status);
    app::add_compare_command(application, status);
    app::add_view_command(application, status);
    try {
        application.parse(count, arguments);
    } catch (const CLI::Success& request) {
        return application.exit(request);
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
