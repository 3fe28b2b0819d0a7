// The checks checked: by modules that are wrong in one way each.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/check/runner.h"

namespace vorna::app::check {

// Where the build leaves the faulty modules: beside this command.
std::string default_fault_folder();

// Runs all checks on every faulty module of the folder. An outcome for each module: it has passed when the checks that should
// find its fault fail for the right reason and no other check fails. Throws Usage_Error when there is no such folder.
std::vector<Outcome> run_selftest(const std::string& folder, const Run& like, const std::function<void(const Outcome&)>& tell);

} // namespace vorna::app::check
