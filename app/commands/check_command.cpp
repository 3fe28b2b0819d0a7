// The command `check`: tests whether a renderer module does what its host relies on.
#include "app/commands/check_command.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <random>
#include <stdexcept>

#include "app/check/checks.h"
#include "app/check/child_process.h"
#include "app/check/report.h"
#include "app/check/runner.h"
#include "app/check/selftest.h"
#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "drawing/files/output_file.h"
#include "drawing/files/output_files.h"

namespace vorna::app {

namespace {

using check::Outcome;

struct Check_Arguments {
    std::string module, junit, journal;
    std::string profile = "host";
    std::vector<std::string> only;
    std::uint64_t seed = 0;
    int effort = 100, parent = 0;
    double timeout = 60;
    bool list = false, selftest = false, quiet = false;
};

// Names of checks, where arguments may also name whole areas; all of them without arguments.
std::vector<std::string> chosen_checks(const std::vector<std::string>& only) {
    std::vector<std::string> names;
    const auto is_meant = [](const std::string& argument, const check::Check& each) {
        return argument == each.name || argument == check::area_of(each.name);
    };
    const auto& checks = check::all_checks();
    for (const std::string& argument : only) {
        if (std::none_of(checks.begin(), checks.end(), [&](const auto& each) { return is_meant(argument, each); })) {
            throw drawing::Usage_Error("--only " + argument + ": no check and no area of that name; --list shows them");
        }
    }
    for (const check::Check& each : checks) {
        if (only.empty() ||
            std::any_of(only.begin(), only.end(), [&](const auto& argument) { return is_meant(argument, each); })) {
            names.emplace_back(each.name);
        }
    }
    return names;
}

void list_checks() {
    for (const check::Check& each : check::all_checks()) {
        std::cout << each.name << ": " << each.what << '\n';
    }
}

// Flushes, because the next check may take long.
void say(const std::string& line) {
    print(stdout, drawing::printable(line) + '\n');
    std::fflush(stdout);
}

int finish(const Check_Arguments& arguments, const std::string& name, const std::vector<Outcome>& outcomes) {
    say(check::total_of(outcomes));
    if (!arguments.junit.empty()) {
        drawing::write_file(arguments.junit, check::junit_of(name, outcomes));
    }
    const bool all_passed = std::all_of(outcomes.begin(), outcomes.end(),
                                        [](const Outcome& outcome) { return outcome.kind == Outcome::Kind::passed; });
    return all_passed ? exit_status::done : exit_status::failed;
}

int run(const Check_Arguments& arguments, const drawing::Module_Choice& module) {
    if (arguments.list) {
        list_checks();
        return exit_status::done;
    }
    drawing::refuse_same_files({module.path}, {arguments.junit});
    check::Run run;
    run.task = {module.path, arguments.profile == "krb" ? check::Profile::krb : check::Profile::host, arguments.seed,
                arguments.effort};
    run.checks = chosen_checks(arguments.only);
    run.limit = std::chrono::milliseconds(static_cast<std::int64_t>(arguments.timeout * 1000));
    run.quiet = arguments.quiet;
    drawing::force_kernels(module);
    if (!arguments.journal.empty()) {
        check::end_with(arguments.parent);
        check::expect_to_crash(run.quiet);
        {
            check::Journal journal(arguments.journal);
            check::run_checks(run.task, run.checks, journal);
        }
        // Without destructors: what the module does at the end of a process is not checked.
        std::_Exit(exit_status::done);
    }
    if (arguments.selftest) {
        run.quiet = true;
        const std::string folder = arguments.module.empty() ? check::default_fault_folder() : arguments.module;
        say(folder + ": seed " + std::to_string(arguments.seed));
        return finish(arguments, folder,
                      check::run_selftest(folder, run, [](const Outcome& outcome) { say(check::line_of(outcome)); }));
    }
    if (std::find(run.checks.begin(), run.checks.end(), check::loads) == run.checks.end()) {
        run.checks.insert(run.checks.begin(), std::string(check::loads));
    }
    // A file that is not a module is wrong input and gets no report.
    const std::vector<Outcome> outcomes = check::run_in_processes(run, [&](const Outcome& outcome) {
        if (outcome.check == check::loads) {
            if (outcome.kind != Outcome::Kind::passed) {
                throw drawing::Usage_Error(module.path + ": not loadable as a renderer module: " + outcome.reason);
            }
            say(module.path + ": profile " + arguments.profile + ", seed " + std::to_string(arguments.seed));
        }
        say(check::line_of(outcome));
    });
    return finish(arguments, module.path, outcomes);
}

} // namespace

Command check_command() {
    const auto arguments = std::make_shared<Check_Arguments>();
    Command command{.name = "check",
                    .summary = "Check whether a renderer module does what its host relies on.",
                    .arguments = {{.names = {"path"},
                                   .value = text_value("MODULE"),
                                   .text = "The module; with --selftest the folder of the faulty ones",
                                   .target = &arguments->module}},
                    .options = {{.names = {"--profile"},
                                 .value = choice_value("NAME", {"host", "krb"}),
                                 .text = "What to check: what every renderer owes its host, or the whole interface of krb.vrd",
                                 .target = &arguments->profile,
                                 .by_default = arguments->profile},
                                {.names = {"--only"},
                                 .value = text_value("NAME"),
                                 .text = "Only this check, or the checks of this area; may be repeated",
                                 .target = &arguments->only},
                                {.names = {"--seed"},
                                 .value = whole_value("N", 0, UINT32_MAX),
                                 .text = "Draw what this number leads to; by default another one each time",
                                 .target = &arguments->seed},
                                {.names = {"--timeout"},
                                 .value = number_value("N", 0.1, 86400),
                                 .text = "Seconds for each area",
                                 .target = &arguments->timeout,
                                 .by_default = "60"},
                                {.names = {"--junit"},
                                 .value = text_value("FILE.xml"),
                                 .text = "Write the outcomes as JUnit XML",
                                 .target = &arguments->junit},
                                {.names = {"--list"}, .text = "List the checks and exit", .target = &arguments->list},
                                {.names = {"--selftest"},
                                 .text = "Check the checks with modules that are wrong in one way each",
                                 .target = &arguments->selftest},
                                // For the processes that the command starts.
                                {.names = {"--journal"}, .value = text_value("FILE"), .target = &arguments->journal, .group = ""},
                                {.names = {"--parent"}, .value = text_value("N"), .target = &arguments->parent, .group = ""},
                                {.names = {"--effort"}, .value = text_value("N"), .target = &arguments->effort, .group = ""},
                                {.names = {"--quiet"}, .target = &arguments->quiet, .group = ""}},
                    .examples = {{"vorna check mine.vrd", "what every renderer owes its host"},
                                 {"vorna check --profile krb --only drawing --seed 7",
                                  "one area of the installed module, as in an earlier run"}},
                    .statuses = "0 passed, 1 a check failed, 2 wrong usage, or no module."};
    command.run = [arguments](const Given& given) {
        if (!given.has("--seed")) {
            arguments->seed = std::random_device()();
        }
        drawing::Module_Choice module;
        if (!arguments->module.empty() && !arguments->selftest) {
            if (given.has("--module")) {
                throw drawing::Usage_Error("--module: expected one module to check, found " + arguments->module + " too");
            }
            module = {arguments->module, given.module.kernels};
        } else if (!arguments->list) {
            module = chosen_module(given);
        }
        return run(*arguments, module);
    };
    return command;
}

} // namespace vorna::app
