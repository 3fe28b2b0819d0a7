// The command `replay`: draws recordings.
#include "app/commands/replay_command.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "app/cli/progress.h"
#include "app/commands/replay_options.h"
#include "drawing/files/input_file.h"
#include "drawing/files/memory.h"
#include "drawing/files/output_file.h"
#include "drawing/files/output_files.h"
#include "drawing/files/path.h"
#include "drawing/image/image_file.h"
#include "drawing/recording/call_kinds.h"
#include "drawing/recording/document.h"
#include "drawing/recording/recorder.h"
#include "drawing/recording/recording_file.h"
#include "drawing/recording/replay.h"
#include "drawing/recording/session.h"
#include "drawing/recording/shown_part.h"
#include "drawing/recording/timing.h"
#include "drawing/recording/trace.h"

namespace vorna::app {

namespace {

void add_outputs(const Replay_Arguments& arguments, drawing::Session& session, const drawing::recording::Recording& recording,
                 const drawing::recording::Report& report, drawing::Output_Files& files) {
    const auto write = [&](const std::string& png, const std::string& raw, const drawing::Raster& raster) {
        if (!png.empty()) {
            files.add(png, drawing::png_of(drawing::recording::shown(raster, session, recording), session.palette()));
        }
        if (!raw.empty()) {
            files.add(raw, drawing::raw_bytes_of(drawing::recording::shown(raster, session, recording)));
        }
    };
    write(arguments.color, arguments.color_raw, drawing::raster_of(session.color_buffer()));
    if (!arguments.depth.empty() || !arguments.depth_raw.empty()) {
        const VT_Reference<VT_Shared_Image> depth = session.read_depth();
        write(arguments.depth, arguments.depth_raw, drawing::raster_of(*depth));
    }
    if (!arguments.report.empty()) {
        files.add(arguments.report, drawing::recording::json_of(report));
    }
}

// A numbered PNG for every call. The folder is made when it is not there.
class Every_Call {
public:
    Every_Call(const std::string& folder, const drawing::recording::Recording& recording,
               const drawing::recording::Replay_Settings& settings, drawing::Session& session)
        : folder_(folder), recording_(recording), settings_(settings), session_(session) {
        std::error_code error;
        std::filesystem::create_directories(drawing::path_of(folder), error);
        if (error) {
            throw std::runtime_error(folder + ": cannot be made: " + error.message());
        }
    }

    void after_call(std::size_t call) {
        const std::size_t digits = std::max<std::size_t>(4, std::to_string(recording_.calls.size()).size());
        std::string number = std::to_string(call);
        number.insert(0, digits - number.size(), '0');
        const std::string name = folder_ + '/' + number + '-' + std::string(recording_.calls[call].kind->name) + ".png";
        drawing::write_file(
            name, drawing::png_of(drawing::recording::shown(drawing::raster_of(session_.color_buffer()), session_, recording_),
                                  session_.palette()));
        const std::size_t end = std::min(settings_.last, recording_.calls.size() - 1) + 1;
        progress_.show(static_cast<double>(call + 1) / static_cast<double>(end));
    }

private:
    std::string folder_;
    const drawing::recording::Recording& recording_;
    const drawing::recording::Replay_Settings& settings_;
    drawing::Session& session_;
    Progress progress_;
};

void add_timing(const Replay_Arguments& arguments, const drawing::Module_Choice& module,
                const drawing::recording::Recording& recording, const drawing::recording::Replay_Settings& settings,
                std::vector<drawing::recording::Call_Cost> costs, drawing::Output_Files& files) {
    drawing::recording::measure(recording, module, settings, arguments.repeat, costs);
    drawing::recording::sort(costs, cost_order_of(arguments));
    files.add("-", arguments.timing == "json" ? drawing::recording::json_of(recording, costs)
                                              : drawing::recording::table_of(recording, costs));
}

// Without output files one line tells what was drawn.
void print_drawn(const Replay_Arguments& arguments, const drawing::recording::Replay_Settings& settings, std::size_t calls,
                 const drawing::Session& session) {
    const std::size_t drawn = calls == 0 ? 0 : std::min(settings.last, calls - 1) + 1 - settings.first;
    const VT_Int_Rectangle window = session.window();
    print(stdout, drawing::printable(drawing::name_of_input(arguments.recording)) + ": drew " + std::to_string(drawn) + " call" +
                      (drawn == 1 ? "" : "s") + " into " + std::to_string(window.right - window.left + 1) + " x " +
                      std::to_string(window.top - window.bottom + 1) + " pixels; --color FILE.png writes them\n");
}

// Draws the recording and writes all files.
void draw(const Replay_Arguments& arguments, const drawing::Module_Choice& module, const drawing::recording::Recording& recording,
          const drawing::recording::Replay_Settings& settings, drawing::Load_Limits& limits, drawing::Output_Files& files) {
    drawing::Session session(module, arguments.threads);
    std::optional<drawing::recording::Recorder> recorder;
    std::optional<drawing::recording::Change_Counter> counter;
    std::optional<Every_Call> every_call;
    std::optional<drawing::recording::Call_Trace> trace;
    drawing::recording::Replay_Settings watched = settings;
    if (!arguments.record.empty()) {
        recorder.emplace(session);
    }
    if (!arguments.timing.empty()) {
        counter.emplace(recording, session);
    }
    if (!arguments.trace.empty()) {
        trace.emplace(recording, session.canvas(), arguments.threads, limits, drawing::name_of_input(arguments.recording));
    }
    if (!arguments.every_call.empty()) {
        every_call.emplace(arguments.every_call, recording, settings, session);
    }
    watched.before_call = [&](std::size_t call) {
        if (counter) {
            counter->before_call(call);
        }
        if (trace) {
            trace->before_call(call);
        }
    };
    watched.after_call = [&](std::size_t call) {
        if (trace) {
            trace->after_call(call);
        }
        if (counter) {
            counter->after_call(call);
        }
        if (every_call) {
            every_call->after_call(call);
        }
    };
    const drawing::recording::Report report = drawing::recording::replay(recording, session, watched);
    if (recorder) {
        files.add(arguments.record, drawing::recording::file_of(recorder->finish(recording.output), arguments.record));
    }
    if (!session.has_depth_buffer() && !(arguments.depth.empty() && arguments.depth_raw.empty())) {
        throw drawing::recording::Recording_Error("there is no depth buffer for --depth or --depth-raw");
    }
    add_outputs(arguments, session, recording, report, files);
    if (trace) {
        files.add(arguments.trace, trace->json());
    }
    if (counter) {
        add_timing(arguments, module, recording, settings, counter->costs(), files);
    }
    std::string digest;
    if (arguments.hash) {
        digest =
            drawing::digest_of(drawing::recording::shown(drawing::raster_of(session.color_buffer()), session, recording)) + '\n';
    }
    const bool prints_digest = !digest.empty() && !has_taken_output(arguments);
    if (prints_digest) {
        files.add("-", digest); // like a file: where standard output fails, no file appears
    }
    files.commit();
    if (!prints_digest) {
        print(stderr, digest);
    }
    if (arguments.writes_nothing()) {
        print_drawn(arguments, settings, recording.calls.size(), session);
    }
}

void replay(const Replay_Arguments& arguments, const drawing::Module_Choice& module) {
    cost_order_of(arguments); // throws for wrong options before anything is read
    check_history(arguments.history, arguments.recording);
    refuse_standard_output("--every-call", arguments.every_call);
    const std::vector<std::string> outputs = outputs_of(arguments);
    drawing::refuse_same_files({arguments.recording, arguments.history.pixel_file}, outputs);
    drawing::Load_Limits limits(drawing::parsed_limit(arguments.max_memory));
    const drawing::recording::Recording recording = drawing::recording::load(arguments.recording, limits);
    const drawing::recording::Replay_Settings settings = settings_of(arguments, recording.calls.size());
    refuse_many_files(arguments, recording.calls.size());
    for (const std::string& output : outputs) {
        if (!output.empty()) {
            drawing::Output_File::check(output);
        }
    }
    drawing::Output_Files files;
    if (arguments.history.is_given()) {
        files.add("-", [&](drawing::Output_File& file) {
            write_history(arguments.history, recording, drawing::name_of_input(arguments.recording), module, settings, limits,
                          [&file](std::string_view piece) { file.write(piece); });
        });
        if (arguments.writes_nothing()) {
            files.commit();
            return;
        }
    }
    draw(arguments, module, recording, settings, limits, files);
}

void run(const Replay_Arguments& arguments, const drawing::Module_Choice& module) {
    const std::string name = drawing::name_of_input(arguments.recording);
    try {
        replay(arguments, module);
    } catch (const drawing::recording::Recording_Error& error) {
        throw drawing::Usage_Error(name + ": " + error.what());
    } catch (const drawing::recording::Not_Drawn& error) {
        throw std::runtime_error(name + ": " + error.what());
    }
}

} // namespace

Command replay_command() {
    const auto arguments = std::make_shared<Replay_Arguments>();
    return {
        .name = "replay",
        .summary = "Draw a recording, a document of renderer calls.",
        .arguments = {{.names = {"recording"},
                       .value = text_value("RECORDING"),
                       .text = "The recording, plain or compressed; - reads standard input",
                       .target = &arguments->recording,
                       .is_required = true}},
        .options = replay_options(*arguments),
        .examples = {{"vorna replay crystals.json --color crystals.png --depth depth.png", "both buffers of a recording"},
                     {"vorna replay bunny.json.gz --timing --sort time", "what each call changed and cost, the dearest first"},
                     {"vorna replay bunny.json.gz --until 12 --color part.png", "what the first thirteen calls draw"},
                     {"vorna replay crystals.json --pixel 40,31", "which calls drew this pixel, and which were refused"}},
        .run = [arguments](const Given& given) {
            run(*arguments, chosen_module(given));
            return exit_status::done;
        }};
}

} // namespace vorna::app
