// Runs checks in child processes.
#include "app/check/runner.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <system_error>

#include "app/check/checks.h"
#include "app/check/child_process.h"

namespace vorna::app::check {

namespace {

using Clock = std::chrono::steady_clock;

#if defined(_WIN32)

class Temporary_File {
public:
    Temporary_File() {
        std::random_device random;
        path_ = std::filesystem::temp_directory_path() /
                ("vorna-check-" + std::to_string(random()) + std::to_string(random()) + ".txt");
    }
    Temporary_File(const Temporary_File&) = delete;
    Temporary_File& operator=(const Temporary_File&) = delete;
    ~Temporary_File() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }

    std::string name() const {
        const std::u8string text = path_.u8string();
        return {text.begin(), text.end()};
    }

private:
    std::filesystem::path path_;
};

#else

// Has no name in any folder, so that nothing remains when this process is killed. Child processes inherit the open file under the
// same number.
class Temporary_File {
public:
    Temporary_File() : file_(std::tmpfile()) {
        if (!file_) {
            throw std::system_error(errno, std::generic_category(), "no temporary file could be created");
        }
    }

    std::string name() const { return "/dev/fd/" + std::to_string(fileno(file_.get())); }

private:
    struct Close {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Close> file_;
};

#endif

class Runner {
public:
    explicit Runner(const Run& run) : run_(run) {}

    // Runs all checks of one area.
    void run_area(const std::vector<const Check*>& area) {
        const Clock::time_point end = Clock::now() + run_.limit;
        for (std::vector<std::string> pending = pending_of(area); !pending.empty(); pending = pending_of(area)) {
            run_process(pending, end);
        }
    }

    const Outcome& outcome_of(std::string_view check) const { return outcomes_.at(check); }

private:
    // The checks without an outcome that can run. Notes the others as not run.
    std::vector<std::string> pending_of(const std::vector<const Check*>& area) {
        std::vector<std::string> pending;
        for (const Check* check : area) {
            if (outcomes_.count(check->name) != 0) {
                continue;
            }
            if (const std::string_view blocker = blocker_of(*check); !blocker.empty()) {
                note(check->name, Outcome::Kind::not_run, "it needs " + std::string(blocker));
            } else {
                pending.emplace_back(check->name);
            }
        }
        return pending;
    }

    // A needed check that has not passed; empty when all have.
    std::string_view blocker_of(const Check& check) const {
        for (const std::string_view need : check.needs) {
            if (const auto found = outcomes_.find(need);
                found != outcomes_.end() && found->second.kind != Outcome::Kind::passed) {
                return need;
            }
        }
        return {};
    }

    void note(std::string_view check, Outcome::Kind kind, const std::string& reason) {
        outcomes_[check] = {std::string(check), kind, reason};
    }

    void run_process(const std::vector<std::string>& pending, Clock::time_point end) {
        const Temporary_File file;
        const auto remaining = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        const Ending ending = run_beside(arguments_for(pending, file.name()), std::max(remaining, std::chrono::milliseconds(1)));
        const Journal::Contents journal = Journal::read(file.name());
        for (const Journal::Entry& entry : journal.ended) {
            note(name_of(entry.check), entry.reason.empty() ? Outcome::Kind::passed : Outcome::Kind::failed, entry.reason);
        }
        if (ending.kind == Ending::Kind::done && !journal.running) {
            return; // the remaining checks need one that has failed
        }
        // When a process ends between two checks, the next one fails.
        const bool is_over = ending.kind == Ending::Kind::out_of_time;
        const Journal::Entry running = journal.running.value_or(Journal::Entry{first_without_outcome(pending), ""});
        if (!running.check.empty()) {
            note(name_of(running.check), Outcome::Kind::failed,
                 (running.reason.empty() ? "" : running.reason + ": ") +
                     (is_over ? "still running when the time limit for the area was reached"
                              : "the process ended: " + (ending.how.empty() ? "status 0" : ending.how)));
        }
        for (const std::string& check : pending) {
            if (is_over && outcomes_.count(check) == 0) {
                note(name_of(check), Outcome::Kind::not_run, "the time limit for the area was reached");
            }
        }
    }

    std::string first_without_outcome(const std::vector<std::string>& pending) const {
        const auto found = std::find_if(pending.begin(), pending.end(),
                                        [this](const std::string& check) { return outcomes_.count(check) == 0; });
        return found == pending.end() ? std::string() : *found;
    }

    // The same name in the table, which has static lifetime.
    static std::string_view name_of(const std::string& check) {
        const auto& checks = all_checks();
        return std::find_if(checks.begin(), checks.end(), [&check](const Check& each) { return each.name == check; })->name;
    }

    std::vector<std::string> arguments_for(const std::vector<std::string>& checks, const std::string& journal) const {
        const Task& task = run_.task;
        std::vector<std::string> arguments{"check",     task.module,
                                           "--journal", journal,
                                           "--parent",  std::to_string(own_process_id()),
                                           "--seed",    std::to_string(task.seed),
                                           "--effort",  std::to_string(task.effort),
                                           "--profile", task.profile == Profile::krb ? "krb" : "host"};
        if (run_.quiet) {
            arguments.emplace_back("--quiet");
        }
        for (const std::string& check : checks) {
            arguments.insert(arguments.end(), {"--only", check});
        }
        return arguments;
    }

    const Run& run_;
    std::map<std::string_view, Outcome> outcomes_;
};

} // namespace

std::vector<Outcome> run_in_processes(const Run& run, const std::function<void(const Outcome&)>& report) {
    Runner runner(run);
    std::vector<Outcome> outcomes;
    const auto& checks = all_checks();
    for (std::size_t first = 0; first < checks.size();) {
        std::vector<const Check*> area;
        const std::string_view name = area_of(checks[first].name);
        for (; first < checks.size() && area_of(checks[first].name) == name; ++first) {
            if (std::find(run.checks.begin(), run.checks.end(), checks[first].name) != run.checks.end()) {
                area.push_back(&checks[first]);
            }
        }
        runner.run_area(area);
        for (const Check* check : area) {
            outcomes.push_back(runner.outcome_of(check->name));
            report(outcomes.back());
        }
    }
    return outcomes;
}

} // namespace vorna::app::check
