// The command `replay`: draws recordings.
#include "app/commands/replay_command.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <iterator>
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
#include "app/commands/replay_history.h"
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

struct Replay_Arguments {
    std::string recording;
    std::string color, depth, color_raw, depth_raw, report, record, every_call, trace; // empty = not asked for
    std::string until, only;
    std::string timing; // empty, table or json
    std::string sort = "call";
    int repeat = 3;
    unsigned threads = 1;
    bool unchecked = false, hash = false;
    History_Arguments history;
    std::string max_memory;

    bool writes_nothing() const {
        return color.empty() && depth.empty() && color_raw.empty() && depth_raw.empty() && report.empty() && record.empty() &&
               every_call.empty() && timing.empty() && trace.empty() && !hash;
    }
};

constexpr std::size_t most_files_unasked = 1000;

std::vector<std::string> outputs_of(const Replay_Arguments& arguments) {
    return {arguments.color,  arguments.depth,  arguments.color_raw, arguments.depth_raw,
            arguments.report, arguments.record, arguments.trace};
}

// Whether standard output holds a file, costs or histories, so that lines about them go to standard error.
bool has_taken_output(const Replay_Arguments& arguments) {
    return !arguments.timing.empty() || arguments.history.is_given() ||
           std::ranges::any_of(outputs_of(arguments), drawing::is_standard_output);
}

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

// The number of a call that exists.
std::size_t parsed_call(const char* option, const std::string& whole, std::string_view text, std::size_t calls) {
    std::size_t call = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), call);
    if (error != std::errc{} || end != text.data() + text.size() || call >= calls) {
        throw drawing::Usage_Error(
            std::string(option) + ": expected " +
            (calls == 0 ? "nothing, because there are no calls" : "numbers of calls from 0 to " + std::to_string(calls - 1)) +
            ", found '" + whole + "'");
    }
    return call;
}

drawing::recording::Replay_Settings settings_of(const Replay_Arguments& arguments, std::size_t calls) {
    drawing::recording::Replay_Settings settings;
    settings.unchecked = arguments.unchecked;
    settings.reports_standard = !arguments.report.empty();
    if (!arguments.until.empty()) {
        settings.last = parsed_call("--until", arguments.until, arguments.until, calls);
    }
    if (!arguments.only.empty()) {
        const std::string_view text = arguments.only;
        const std::size_t dots = text.find("..");
        settings.first = parsed_call("--only", arguments.only, text.substr(0, dots), calls);
        settings.last = dots == text.npos ? settings.first : parsed_call("--only", arguments.only, text.substr(dots + 2), calls);
        if (settings.last < settings.first) {
            throw drawing::Usage_Error("--only: expected the lower number first, found '" + arguments.only + "'");
        }
    }
    return settings;
}

// Many files are written only with --until or --only.
void refuse_many_files(const Replay_Arguments& arguments, std::size_t calls) {
    if (!arguments.every_call.empty() && arguments.until.empty() && arguments.only.empty() && calls > most_files_unasked) {
        throw drawing::Usage_Error("--every-call: expected --until or --only beside it for more than " +
                                   std::to_string(most_files_unasked) + " files, found neither for " + std::to_string(calls) +
                                   " calls");
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

drawing::recording::Cost_Order cost_order_of(const Replay_Arguments& arguments) {
    using drawing::recording::Cost_Order;
    if (!arguments.timing.empty() && arguments.timing != "table" && arguments.timing != "json") {
        throw drawing::Usage_Error("--timing: expected table or json, found '" + arguments.timing + "'");
    }
    for (const auto& [name, order] :
         {std::pair("call", Cost_Order::calls), {"time", Cost_Order::time}, {"pixels", Cost_Order::pixels}}) {
        if (arguments.sort == name) {
            return order;
        }
    }
    throw drawing::Usage_Error("--sort: expected call, time or pixels, found '" + arguments.sort + "'");
}

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
          const drawing::recording::Replay_Settings& settings, drawing::Output_Files& files) {
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
        trace.emplace(recording);
    }
    if (!arguments.every_call.empty()) {
        every_call.emplace(arguments.every_call, recording, settings, session);
    }
    watched.before_call = [&](std::size_t call) {
        if (counter) {
            counter->before_call(call);
        }
        if (trace) {
            trace->before_call();
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
    const std::string digest =
        arguments.hash
            ? drawing::digest_of(drawing::recording::shown(drawing::raster_of(session.color_buffer()), session, recording))
            : "";
    files.commit();
    if (arguments.hash) {
        print(has_taken_output(arguments) ? stderr : stdout, digest + '\n');
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
    draw(arguments, module, recording, settings, files);
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
    constexpr const char *output = "Output", *calls = "Which calls", *measuring = "Measuring";
    Command command{
        .name = "replay",
        .summary = "Draw a recording, a document of renderer calls.",
        .arguments = {{.names = {"recording"},
                       .value = text_value("RECORDING"),
                       .text = "The recording, plain or compressed; - reads standard input",
                       .target = &arguments->recording,
                       .is_required = true}},
        .options = {{.names = {"--color"},
                     .value = output_value("FILE.png", {"png"}),
                     .text = "Write the colour buffer as PNG, RGBA or palette",
                     .target = &arguments->color,
                     .group = output},
                    {.names = {"--depth"},
                     .value = output_value("FILE.png", {"png"}),
                     .text = "Write the depth buffer as PNG, 16-bit greyscale",
                     .target = &arguments->depth,
                     .group = output},
                    {.names = {"--color-raw"},
                     .value = text_value("FILE"),
                     .text = "Write the colour buffer as plain rows, top row first",
                     .target = &arguments->color_raw,
                     .group = output},
                    {.names = {"--depth-raw"},
                     .value = text_value("FILE"),
                     .text = "Write the depth buffer as plain rows, top row first",
                     .target = &arguments->depth_raw,
                     .group = output},
                    {.names = {"--report"},
                     .value = output_value("FILE.json", {"json"}),
                     .text = "Write what happened besides drawing, as JSON",
                     .target = &arguments->report,
                     .group = output},
                    {.names = {"--record"},
                     .value = output_value("RECORDING", {"json", "gz", "zst", "cbor"}),
                     .text = "Write what was drawn as a recording, smaller as .cbor.zst, .json.zst or .gz",
                     .target = &arguments->record,
                     .group = output},
                    {.names = {"--hash"},
                     .text = "Print the SHA-256 of the colour buffer's pixels",
                     .target = &arguments->hash,
                     .group = output},
                    memory_option(arguments->max_memory),
                    {.names = {"--unchecked"},
                     .text = "Send coordinates that renderers trust without looking at them",
                     .target = &arguments->unchecked,
                     .group = calls},
                    {.names = {"--until"},
                     .value = text_value("N"),
                     .text = "Stop after call N; the first call is 0",
                     .target = &arguments->until,
                     .group = calls},
                    {.names = {"--only"},
                     .value = text_value("A..B"),
                     .text = "Draw with the calls A to B alone; earlier ones only set the renderer up",
                     .target = &arguments->only,
                     .group = calls,
                     .excludes = {"--until"}},
                    {.names = {"--every-call"},
                     .value = text_value("FOLDER"),
                     .text = "Write the colour buffer after every call, numbered, into FOLDER; more than " +
                             std::to_string(most_files_unasked) + " files only with --until or --only",
                     .target = &arguments->every_call,
                     .group = calls},
                    {.names = {"--trace"},
                     .value = output_value("FILE.json", {"json"}),
                     .text = "Write the time of each call as trace events, which browsers and Perfetto show on a timeline",
                     .target = &arguments->trace,
                     .group = measuring},
                    {.names = {"--threads"},
                     .value = whole_value("N", 1, 1024),
                     .text = "Threads that draw, each in rows of its own, with the same result; one does for --report",
                     .target = &arguments->threads,
                     .group = measuring,
                     .by_default = std::to_string(arguments->threads),
                     .excludes = {"--timing", "--trace"}},
                    {.names = {"--timing"},
                     .value = optional_value("table", suggested_value("FORM", {"table", "json"})),
                     .text = "Print for each call the pixels that it changed and its time, or the same for programs",
                     .target = &arguments->timing,
                     .group = measuring},
                    {.names = {"--sort"},
                     .value = suggested_value("NAME", {"call", "time", "pixels"}),
                     .text = "Order of --timing",
                     .target = &arguments->sort,
                     .group = measuring,
                     .needs = {"--timing"}},
                    {.names = {"--repeat"},
                     .value = whole_value("N", 1, 100000),
                     .text = "Times of --timing are the best of so many replays",
                     .target = &arguments->repeat,
                     .group = measuring,
                     .by_default = std::to_string(arguments->repeat),
                     .needs = {"--timing"}}},
        .examples = {{"vorna replay crystals.json --color crystals.png --depth depth.png", "both buffers of a recording"},
                     {"vorna replay bunny.json.gz --timing --sort time", "what each call changed and cost, the dearest first"},
                     {"vorna replay bunny.json.gz --until 12 --color part.png", "what the first thirteen calls draw"},
                     {"vorna replay crystals.json --pixel 40,31", "which calls drew this pixel, and which were refused"}},
        .run = [arguments](const Given& given) {
            run(*arguments, chosen_module(given));
            return exit_status::done;
        }};
    std::vector<Option> history = history_options(arguments->history);
    command.options.insert(command.options.end(), std::make_move_iterator(history.begin()),
                           std::make_move_iterator(history.end()));
    return command;
}

} // namespace vorna::app
