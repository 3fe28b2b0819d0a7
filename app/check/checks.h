// The checks of a renderer module: named functions in a table.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/check/trial.h"

namespace vorna::app::check {

struct Check {
    std::string_view name;               // area.subject
    std::string_view what;               // what a correct module does
    std::vector<std::string_view> needs; // this check runs only when these have passed
    void (*run)(Trial& trial);           // throws Check_Failed; any other exception is a failure too
};

// In the order in which they run. A check needs only earlier ones.
const std::vector<Check>& all_checks();

std::string_view area_of(std::string_view check);

// The first check: all others need it.
inline constexpr std::string_view loads = "exports.loads";

// Runs the named checks in this process. A check that needs a failed one is skipped.
void run_checks(const Task& task, const std::vector<std::string>& names, Journal& journal);

// exports
void check_loads(Trial& trial);
void check_entry_points(Trial& trial);
void check_unload_null(Trial& trial);
void check_renderer(Trial& trial);
// options
void check_known_options(Trial& trial);
void check_defaults(Trial& trial);
void check_setting(Trial& trial);
// slots
void check_slot_fields(Trial& trial);
void check_needed_slots(Trial& trial);
// buffers
void check_buffers_made(Trial& trial);
void check_buffers_kept(Trial& trial);
void check_buffers_recreated(Trial& trial);
void check_buffers_adopted(Trial& trial);
void check_buffers_released(Trial& trial);
void check_buffer_failure(Trial& trial);
// drawing
void check_slot_calls(Trial& trial);
void check_calls_without_buffers(Trial& trial);
void check_depth_setters(Trial& trial);
void check_visible(Trial& trial);
void check_sentinels(Trial& trial);
void check_repeatable(Trial& trial);
void check_recorded(Trial& trial);
void check_side_by_side(Trial& trial);
void check_reconfigured(Trial& trial);
void check_hard_clip(Trial& trial);
void check_clip_region(Trial& trial);
void check_fall_backs(Trial& trial);
// cycle
void check_window(Trial& trial);
void check_depth_blocks(Trial& trial);
void check_read_back(Trial& trial);
void check_update(Trial& trial);
void check_pictures(Trial& trial);
// life
void check_references(Trial& trial);
void check_heap(Trial& trial);
void check_growth(Trial& trial);

} // namespace vorna::app::check
