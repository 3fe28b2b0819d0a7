// Options of `replay`, and what they mean for a recording.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "app/cli/options.h"
#include "app/commands/replay_history.h"
#include "drawing/recording/replay.h"
#include "drawing/recording/timing.h"

namespace vorna::app {

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

std::vector<Option> replay_options(Replay_Arguments& arguments);

// Names of files to be written; empty ones stand for none.
std::vector<std::string> outputs_of(const Replay_Arguments& arguments);

// Whether standard output holds a file, costs or histories, so that lines about them go to standard error.
bool has_taken_output(const Replay_Arguments& arguments);

// All throw Usage_Error. calls: their number.

drawing::recording::Replay_Settings settings_of(const Replay_Arguments& arguments, std::size_t calls);

drawing::recording::Cost_Order cost_order_of(const Replay_Arguments& arguments);

// Many files are written only when --until or --only says so.
void refuse_many_files(const Replay_Arguments& arguments, std::size_t calls);

} // namespace vorna::app
