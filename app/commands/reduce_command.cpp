// The command `reduce`: the smallest recording that still shows a fault.
#include "app/commands/reduce_command.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <system_error>

#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "app/cli/progress.h"
#include "drawing/files/input_file.h"
#include "drawing/files/interruption.h"
#include "drawing/files/memory.h"
#include "drawing/files/output_file.h"
#include "drawing/files/output_files.h"
#include "drawing/files/path.h"
#include "drawing/files/shell_command.h"
#include "drawing/recording/document.h"
#include "drawing/recording/recording_file.h"
#include "drawing/recording/reduction.h"

namespace vorna::app {

namespace {

namespace fs = std::filesystem;
using drawing::Usage_Error;
using Clock = std::chrono::steady_clock;

struct Reduce_Arguments {
    std::string recording, keeps, output, max_memory;
    double timeout = 60, time_limit = 0; // seconds; 0 = none
};

// A folder that other users cannot read, removed with all that is in it.
class Candidate_Folder {
public:
    Candidate_Folder() {
#if !defined(_WIN32) // where nothing is reduced
        std::string name = (fs::temp_directory_path() / "vorna-reduce-XXXXXX").string();
        if (!mkdtemp(name.data())) {
            throw std::system_error(errno, std::generic_category(), "no folder for recordings could be made");
        }
        path_ = name;
#endif
    }
    Candidate_Folder(const Candidate_Folder&) = delete;
    Candidate_Folder& operator=(const Candidate_Folder&) = delete;
    ~Candidate_Folder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }

    std::string file(const std::string& name) const {
        return (path_ / name).string();
    }

private:
    fs::path path_;
};

// A name that has the output's form.
std::string candidate_name(const std::string& output) {
    const std::string name = drawing::path_of(output).filename().string();
    for (const char* ending : {".cbor.zst", ".cbor.gz", ".cbor", ".zst", ".gz"}) {
        if (name.ends_with(ending)) {
            return std::string("candidate") + (ending[1] == 'c' ? "" : ".json") + ending;
        }
    }
    return "candidate.json";
}

// Asks the user's command about candidates.
class Trials {
public:
    Trials(const Reduce_Arguments& arguments, const std::string& name)
        : arguments_(arguments), candidate_(folder_.file(name)), errors_(folder_.file("errors")) {}

    // Throws Usage_Error unless the command succeeds with the whole recording.
    void try_whole(const std::string& file) {
        const drawing::Shell_Ending ending = run(file, errors_, arguments_.timeout);
        if (!is_success(ending)) {
            std::string line;
            std::getline(std::ifstream(errors_), line);
            throw Usage_Error("--keeps: expected a command that ends with status 0 for the whole recording, found " +
                              text_of(ending) + (line.empty() ? "" : ": " + line));
        }
    }
    // Whether the command succeeds. Throws Reduction_Ended when the time is over.
    bool keeps(const std::string& file) {
        const double left = arguments_.time_limit > 0 ? arguments_.time_limit - seconds() : arguments_.timeout;
        const drawing::Shell_Ending ending =
            left > 0 ? run(file, {}, std::min(left, arguments_.timeout)) : drawing::Shell_Ending{Kind::out_of_time, 0};
        if (ending.kind == Kind::out_of_time && left < arguments_.timeout) {
            is_ended_ = true;
            throw drawing::recording::Reduction_Ended();
        }
        const bool is_kept = is_success(ending);
        progress_.show(std::to_string(runs_) + " runs, " + state_);
        return is_kept;
    }
    void set_state(const std::string& state) { state_ = state; }
    std::size_t runs() const noexcept { return runs_; }
    double seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }
    // Whether the time was over before the recording was minimal.
    bool is_ended() const noexcept { return is_ended_; }

private:
    using Kind = drawing::Shell_Ending::Kind;

    static bool is_success(const drawing::Shell_Ending& ending) {
        return ending.kind == drawing::Shell_Ending::Kind::exited && ending.number == 0;
    }

    // timeout: in seconds.
    drawing::Shell_Ending run(const std::string& file, const std::string& errors, double timeout) {
        std::FILE* candidate = std::fopen(candidate_.c_str(), "wb");
        bool is_written = candidate && std::fwrite(file.data(), 1, file.size(), candidate) == file.size();
        is_written = candidate && std::fclose(candidate) == 0 && is_written;
        if (!is_written) {
            throw std::runtime_error(candidate_ + ": cannot be written");
        }
        ++runs_;
        const auto limit = std::chrono::milliseconds(static_cast<std::int64_t>(timeout * 1000));
        return drawing::run_shell(arguments_.keeps, candidate_, limit, errors);
    }

    const Reduce_Arguments& arguments_;
    Candidate_Folder folder_;
    std::string candidate_, errors_, state_ = "none smaller yet";
    std::size_t runs_ = 0;
    bool is_ended_ = false;
    Clock::time_point start_ = Clock::now();
    Progress progress_;
};

std::string size_text(const drawing::recording::Recording& recording, std::size_t bytes) {
    const std::size_t points = drawing::recording::points_in(recording), calls = recording.calls.size();
    return std::to_string(calls) + (calls == 1 ? " call, " : " calls, ") + std::to_string(points) +
           (points == 1 ? " point, " : " points, ") + std::to_string(bytes) + " bytes";
}

void reduce(const Reduce_Arguments& arguments) {
    if (!drawing::has_shell()) {
        throw Usage_Error("reduce: expected a system with /bin/sh, found Windows");
    }
    drawing::refuse_same_files({arguments.recording}, {arguments.output});
    drawing::Output_File::check(arguments.output);
    drawing::Load_Limits limits(drawing::parsed_limit(arguments.max_memory));
    drawing::recording::Recording recording = drawing::recording::load(arguments.recording, limits);
    const drawing::Interruption interruption; // so that the candidate's folder is removed
    const std::string name = candidate_name(arguments.output);
    const std::string whole = drawing::recording::file_of(recording, name);
    const std::string size_before = size_text(recording, whole.size());
    std::string line;
    {
        Trials trials(arguments, name);
        trials.try_whole(whole);
        recording = drawing::recording::reduced(
            std::move(recording), {.keeps = [&](const std::string& file) { return trials.keeps(file); },
                                   .file_name = name,
                                   .progress = [&](const drawing::recording::Recording& smallest,
                                                   std::size_t bytes) { trials.set_state(size_text(smallest, bytes)); }});
        char time[40];
        std::snprintf(time, sizeof time, "%.1f s", trials.seconds());
        line = " in " + std::to_string(trials.runs()) + " runs of the command, " + time +
               (trials.is_ended() ? "; --time-limit ended it" : "");
    }
    const std::string file = drawing::recording::file_of(recording, arguments.output);
    drawing::write_file(arguments.output, file);
    print_line(arguments.output, drawing::printable(drawing::name_of_input(arguments.recording)) + ": from " + size_before +
                                     " to " + size_text(recording, file.size()) + line);
}

} // namespace

Command reduce_command() {
    const auto arguments = std::make_shared<Reduce_Arguments>();
    return {.name = "reduce",
            .summary = "Find the smallest recording that still shows a fault.",
            .arguments = {{.names = {"recording"},
                           .value = text_value("RECORDING"),
                           .text = "The recording, plain or compressed; - reads standard input",
                           .target = &arguments->recording,
                           .is_required = true}},
            .options = {{.names = {"--keeps"},
                         .value = text_value("COMMAND"),
                         .text = "Shell command that ends with status 0 when the recording in the file $1 shows the fault",
                         .target = &arguments->keeps,
                         .is_required = true},
                        {.names = {"-o", "--output"},
                         .value = output_value("RECORDING", {"json", "gz", "zst", "cbor"}),
                         .text = "The reduced recording; COMMAND gets recordings of the same form",
                         .target = &arguments->output,
                         .is_required = true},
                        {.names = {"--timeout"},
                         .value = number_value("N", 0.01, 86400),
                         .text = "Seconds for each run of COMMAND; a run that takes longer does not show the fault",
                         .target = &arguments->timeout,
                         .by_default = "60"},
                        {.names = {"--time-limit"},
                         .value = number_value("N", 0.01, 1e9),
                         .text = "Seconds after which the smallest recording so far is written; by default there is no limit",
                         .target = &arguments->time_limit},
                        memory_option(arguments->max_memory)},
            .examples = {{"vorna reduce bad.json -o small.json --keeps '! vorna replay \"$1\"'", "what replays refuse"},
                         {"vorna reduce map.json.gz -o small.json --keeps './shows-fault \"$1\"'",
                          "what a program of your own finds wrong"}},
            .sections = {{"The command",
                          {"/bin/sh runs COMMAND in the current folder, with the path of a recording as",
                           "$1. It may be run some hundred times. It gets no input, and what it prints",
                           "is dropped. The processes that it leaves behind are killed."}}},
            .run = [arguments](const Given&) {
                try {
                    reduce(*arguments);
                } catch (const drawing::recording::Recording_Error& error) {
                    throw Usage_Error(drawing::name_of_input(arguments->recording) + ": " + error.what());
                }
                return exit_status::done;
            }};
}

} // namespace vorna::app
