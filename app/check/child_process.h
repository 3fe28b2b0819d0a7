// Runs this command again in another process.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace vorna::app::check {

struct Ending {
    enum class Kind { done, died, out_of_time } kind = Kind::done; // done: with status 0
    std::string how;                                               // how it died: the signal or status
};

// Runs the command with these arguments and waits. Its standard output and error go to this process's standard error. Kills the
// process at the time limit. Throws std::system_error when the process cannot be started.
Ending run_beside(const std::vector<std::string>& arguments, std::chrono::milliseconds limit);

// The id of this process.
int own_process_id();

// Ends this process when the process with this id ends. To be called first.
void end_with(int parent);

// For a process that may crash: prevents core files and dialogs, and with quiet also all output. To be called first.
void expect_to_crash(bool quiet);

} // namespace vorna::app::check
