// Tests the checks with faulty modules, each with one fault.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/check/runner.h"

namespace vorna::app::check {

// The folder of the faulty modules in a build, beside this command.
std::string default_fault_folder();

// Runs all checks on every faulty module of the folder. A module's outcome is passed when the check for its fault fails for the
// right reason and no other check fails. Throws Usage_Error when the folder does not exist.
std::vector<Outcome> run_selftest(const std::string& folder, const Run& settings,
                                  const std::function<void(const Outcome&)>& report);

} // namespace vorna::app::check
