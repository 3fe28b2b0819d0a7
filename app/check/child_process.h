// This command, run once more beside itself.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace vorna::app::check {

struct Ending {
    enum class Kind { done, died, out_of_time } kind = Kind::done; // done: with status 0
    std::string how;                                               // it died, in words
};

// Runs the command with these arguments, on this process's standard error and without its standard output, and waits. What is not
// done by then is killed. Throws std::system_error when there can be no such process.
Ending run_beside(const std::vector<std::string>& arguments, std::chrono::milliseconds limit);

// The number of this process.
int own_number();

// What a process does first that must not outlive the one of this number.
void end_with(int parent);

// What a process that may crash does first: no core file, no dialog, and with quiet nothing on standard error either.
void expect_to_crash(bool quiet);

} // namespace vorna::app::check
