// The command `serve`: draws images that another program asks for, a line of JSON each.
#include "app/commands/serve_command.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "app/cli/command.h"
#include "app/cli/heap.h"
#include "app/cli/messages.h"
#include "app/cli/parser.h"
#include "app/commands/job_limits.h"
#include "app/commands/option_choices.h"
#include "app/commands/render_command.h"
#include "drawing/files/helpers.h"
#include "drawing/files/interruption.h"
#include "drawing/files/json_document.h"
#include "drawing/files/json_memory.h"
#include "drawing/files/output_files.h"
#include "drawing/files/output_place.h"
#include "drawing/files/path.h"
#include "drawing/files/standard_streams.h"

namespace vorna::app {
namespace {

using nlohmann::ordered_json;

struct Serve_Options {
    unsigned threads = 0;
    double time_limit = 0; // seconds of a job; 0 = none
};

constexpr std::size_t longest_line = std::size_t{1} << 20;

// The words of a job. Throws Usage_Error.
std::vector<std::string> words_of(const ordered_json& job) {
    const auto found = job.is_object() ? job.find("render") : job.end();
    if (found == job.end() || !found->is_array()) {
        throw drawing::Usage_Error(R"(job: expected {"id": …, "render": [words of vorna render]}, found none)");
    }
    std::vector<std::string> words{"render"};
    for (const ordered_json& word : *found) {
        if (!word.is_string()) {
            throw drawing::Usage_Error("job: expected texts as words of vorna render, found " + word.dump());
        }
        words.push_back(word.get<std::string>());
    }
    return words;
}

// Under one of the names that the system gives it.
bool is_standard_input(const std::string& name) {
    return drawing::output_place_of(drawing::path_of(name)).number == drawing::number_of(stdin);
}

// Standard output has the answers, and standard input the jobs.
void refuse_standard_streams(const Given& given) {
    for (const char* const name : {"--hash", "--dry-run", "--plan", "--output-folder", "--stats"}) {
        if (given.has(name)) {
            throw drawing::Usage_Error(std::string(name) + ": expected no such option in a job, found it");
        }
    }
    for (std::size_t i = 0; i < given.names.size(); ++i) {
        for (const std::string& value : given.values[i]) {
            if (value == "-" || drawing::is_standard_output(value) || is_standard_input(value)) {
                throw drawing::Usage_Error("job: expected files with names, found " + value);
            }
        }
    }
}

class Service {
public:
    Service(const Serve_Options& options, drawing::Module_Choice module) : options_(options), module_(std::move(module)) {}

    // The answer to a line. Throws Interrupted for signals.
    ordered_json answer(const std::string& line) const {
        const Time_Limit limit(options_.time_limit);
        ordered_json id, answer;
        std::string message;
        try {
            if (line.size() > longest_line) {
                throw drawing::Usage_Error("job: expected a line of up to 1 MiB, found a longer one");
            }
            drawing::Released_Json<ordered_json> owned;
            if (drawing::json_nesting(line) > drawing::deepest_json || !drawing::read_json(line, owned, false)) {
                throw drawing::Usage_Error("job: expected a line of JSON, found another text");
            }
            const ordered_json& job = *owned;
            const auto found = job.is_object() ? job.find("id") : job.end();
            if (job.is_object() && found != job.end()) {
                if (found->is_structured()) {
                    throw drawing::Usage_Error("job: expected a number or a text as id, found a list or an object");
                }
                id = *found;
            }
            draw(words_of(job));
        } catch (const drawing::Interrupted& interrupted) {
            if (interrupted.signal != 0) {
                throw;
            }
            message =
                "job: expected an image within " + text_of(options_.time_limit) + " s, found none; --time-limit sets how long";
        } catch (const std::exception& error) {
            message = ending_of(error).message;
        }
        answer["id"] = id;
        answer["status"] = message.empty() ? "drawn" : "failed";
        if (!message.empty()) {
            answer["message"] = message;
        }
        answer["seconds"] = std::round(limit.seconds() * 1e4) / 1e4;
        return answer;
    }

private:
    void draw(std::vector<std::string> words) const {
        Program program;
        program.itself = {.name = "vorna", .summary = ""};
        *program.module = module_;
        program.commands = {render_command()};
        if (std::ranges::none_of(words, [](const std::string& word) { return word.starts_with("--threads"); })) {
            words.insert(words.begin() + 1, "--threads=1");
        }
        const Request request = parsed(program, std::move(words));
        if (!request.given.command) {
            throw drawing::Usage_Error("job: expected an image to draw, found a question for help");
        }
        refuse_standard_streams(request.given);
        request.given.command->run(request.given);
    }

    const Serve_Options& options_;
    drawing::Module_Choice module_;
};

void write(const ordered_json& answer) {
    static std::mutex writing;
    const std::lock_guard lock(writing);
    std::cout << answer.dump(-1, ' ', false, ordered_json::error_handler_t::replace) << std::endl;
}

// Of a line that is too long only a little more than may be.
bool read_line(std::string& line) {
    line.clear();
    std::streambuf& input = *std::cin.rdbuf();
    for (int next = input.sbumpc(); next != EOF; next = input.sbumpc()) {
        if (next == '\n') {
            return true;
        }
        if (line.size() <= longest_line) {
            line.push_back(static_cast<char>(next));
        }
    }
    return !line.empty();
}

void serve(const Serve_Options& options, const drawing::Module_Choice& module) {
    const unsigned threads = options.threads > 0 ? options.threads : drawing::processor_count();
    const Service service(options, module);
    const drawing::Interruption interruption;
    allow_several_heaps();
    const Signal_Watch watch;
    std::mutex reading;
    drawing::run_on_threads(threads, [&](std::size_t) {
        const auto next = [&reading](std::string& line) {
            const std::lock_guard lock(reading);
            return read_line(line);
        };
        try {
            for (std::string line; next(line);) {
                write(service.answer(line));
            }
        } catch (const drawing::Interrupted&) { // the watch ends the process
        }
    });
}

} // namespace

Command serve_command() {
    const auto options = std::make_shared<Serve_Options>();
    return {.name = "serve",
            .summary = "Draw images that lines of JSON on standard input ask for, in one process.",
            .options = {{.names = {"--threads"},
                         .value = whole_value("N", 1, 1024),
                         .text = "How many images are drawn at a time; as many as there are processors if not given",
                         .target = &options->threads},
                        {.names = {"--time-limit"},
                         .value = number_value("SECONDS", 0.001, 1e6),
                         .text = "Give up an image after so long",
                         .target = &options->time_limit}},
            .examples = {{"vorna serve --threads 2", "two images at a time"}},
            .sections = {{"Jobs",
                          {R"(A job is a line {"id": ID, "render": [WORDS]} with the words of vorna render:)",
                           R"({"id": 1, "render": ["part.stl", "-o", "part.png"]}.)",
                           R"(The answer is a line {"id": ID, "status": "drawn", "seconds": S}, in the)",
                           R"(order in which images are finished; a failure has "failed" and a "message".)"}}},
            .run = [options](const Given& given) {
                serve(*options, chosen_module(given));
                return exit_status::done;
            }};
}

} // namespace vorna::app
