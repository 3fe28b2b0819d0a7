// Commands that users give, run by the shell.
#pragma once

#include <chrono>
#include <string>

namespace vorna::drawing {

struct Shell_Ending {
    enum class Kind { exited, signalled, out_of_time };

    Kind kind = Kind::exited;
    int number = 0; // the exit status or the signal
};

// "status 1" and the like.
std::string text_of(const Shell_Ending& ending);

// Whether run_shell works on this system.
bool has_shell() noexcept;

// Runs `/bin/sh -c command` with the argument as $1. The command gets no input and none of the files that this process has open;
// what it prints is dropped, except that its standard error goes to the file `errors` where that is not empty. Its processes are
// killed at the end, at the time limit, and when a signal asks this process to stop, which throws Interrupted; on Linux also
// those that have left the shell's group, elsewhere the group alone. One thread at a time may call it, and no other thread may
// start processes meanwhile. Throws std::runtime_error when no process can be started.
Shell_Ending run_shell(const std::string& command, const std::string& argument, std::chrono::milliseconds limit,
                       const std::string& errors = {});

} // namespace vorna::drawing
