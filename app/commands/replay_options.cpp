// Options of `replay`, and what they mean for a recording.
#include "app/commands/replay_options.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>

#include "drawing/files/output_files.h"
#include "drawing/files/usage_error.h"

namespace vorna::app {

namespace {

constexpr std::size_t most_files_unasked = 1000;

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

} // namespace

std::vector<std::string> outputs_of(const Replay_Arguments& arguments) {
    return {arguments.color,  arguments.depth,  arguments.color_raw, arguments.depth_raw,
            arguments.report, arguments.record, arguments.trace};
}

bool has_taken_output(const Replay_Arguments& arguments) {
    return !arguments.timing.empty() || arguments.history.is_given() ||
           std::ranges::any_of(outputs_of(arguments), drawing::is_standard_output);
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

void refuse_many_files(const Replay_Arguments& arguments, std::size_t calls) {
    if (!arguments.every_call.empty() && arguments.until.empty() && arguments.only.empty() && calls > most_files_unasked) {
        throw drawing::Usage_Error("--every-call: expected --until or --only beside it for more than " +
                                   std::to_string(most_files_unasked) + " files, found neither for " + std::to_string(calls) +
                                   " calls");
    }
}

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

std::vector<Option> replay_options(Replay_Arguments& arguments) {
    constexpr const char *output = "Output", *calls = "Which calls", *measuring = "Measuring";
    std::vector<Option> options{
        {.names = {"--color"},
         .value = output_value("FILE.png", {"png"}),
         .text = "Write the colour buffer as PNG, RGBA or palette",
         .target = &arguments.color,
         .group = output},
        {.names = {"--depth"},
         .value = output_value("FILE.png", {"png"}),
         .text = "Write the depth buffer as PNG, 16-bit greyscale",
         .target = &arguments.depth,
         .group = output},
        {.names = {"--color-raw"},
         .value = text_value("FILE"),
         .text = "Write the colour buffer as plain rows, top row first",
         .target = &arguments.color_raw,
         .group = output},
        {.names = {"--depth-raw"},
         .value = text_value("FILE"),
         .text = "Write the depth buffer as plain rows, top row first",
         .target = &arguments.depth_raw,
         .group = output},
        {.names = {"--report"},
         .value = output_value("FILE.json", {"json"}),
         .text = "Write what happened besides drawing, as JSON",
         .target = &arguments.report,
         .group = output},
        {.names = {"--record"},
         .value = output_value("RECORDING", {"json", "gz", "zst", "cbor"}),
         .text = "Write what was drawn as a recording, smaller as .cbor.zst, .json.zst or .gz",
         .target = &arguments.record,
         .group = output},
        {.names = {"--hash"},
         .text = "Print the SHA-256 of the colour buffer's pixels",
         .target = &arguments.hash,
         .group = output},
        memory_option(arguments.max_memory),
        {.names = {"--unchecked"},
         .text = "Send coordinates that renderers trust without looking at them",
         .target = &arguments.unchecked,
         .group = calls},
        {.names = {"--until"},
         .value = text_value("N"),
         .text = "Stop after call N; the first call is 0",
         .target = &arguments.until,
         .group = calls},
        {.names = {"--only"},
         .value = text_value("A..B"),
         .text = "Draw with the calls A to B alone; earlier ones only set the renderer up",
         .target = &arguments.only,
         .group = calls,
         .excludes = {"--until"}},
        {.names = {"--every-call"},
         .value = text_value("FOLDER"),
         .text = "Write the colour buffer after every call, numbered, into FOLDER; more than " +
                 std::to_string(most_files_unasked) + " files only with --until or --only",
         .target = &arguments.every_call,
         .group = calls},
        {.names = {"--trace"},
         .value = output_value("FILE.json", {"json"}),
         .text =
             "Write the time of each call, and of each thread, as trace events, which browsers and Perfetto show on a timeline",
         .target = &arguments.trace,
         .group = measuring},
        {.names = {"--threads"},
         .value = whole_value("N", 1, 1024),
         .text = "Threads that draw, each in rows of its own, with the same result; one does for --report",
         .target = &arguments.threads,
         .group = measuring,
         .by_default = std::to_string(arguments.threads),
         .excludes = {"--timing"}},
        {.names = {"--timing"},
         .value = optional_value("table", suggested_value("FORM", {"table", "json"})),
         .text = "Print for each call the pixels that it changed and its time, or the same for programs",
         .target = &arguments.timing,
         .group = measuring},
        {.names = {"--sort"},
         .value = suggested_value("NAME", {"call", "time", "pixels"}),
         .text = "Order of --timing",
         .target = &arguments.sort,
         .group = measuring,
         .needs = {"--timing"}},
        {.names = {"--repeat"},
         .value = whole_value("N", 1, 100000),
         .text = "Times of --timing are the best of so many replays",
         .target = &arguments.repeat,
         .group = measuring,
         .by_default = std::to_string(arguments.repeat),
         .needs = {"--timing"}}};
    std::vector<Option> history = history_options(arguments.history);
    options.insert(options.end(), std::make_move_iterator(history.begin()), std::make_move_iterator(history.end()));
    return options;
}

} // namespace vorna::app
