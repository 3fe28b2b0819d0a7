// Tests the checks with faulty modules.
#include "app/check/selftest.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "app/check/checks.h"
#include "app/cli/command.h"
#include "drawing/files/path.h"

namespace vorna::app::check {

namespace {

// A module with one fault, the check that finds it, and a part of the reason. An empty check: the module has no fault.
struct Fault {
    std::string_view module;
    std::string_view check, reason;
};

constexpr std::string_view died = "the process ended";

constexpr Fault faults[] = {
    {"nothing", "", ""},
    {"missing_export", "exports.entry_points", "no entry point VD_Unload_KRB_Renderer"},
    {"crashes_when_unloading_null", "exports.unload_null", died},
    {"makes_no_renderer", "exports.renderer", "VD_Renderer returned no renderer"},
    {"throws_when_established", "exports.renderer", "the module threw an exception: spoiled"},
    {"wrong_option_type", "options.known", "\"Max Active Lights\" is a bool instead of a whole number"},
    {"wrong_option_scope", "options.known", "\"Margin\" has scope 5"},
    {"wrong_option_default", "options.defaults", "\"Max Active Lights\" starts with another value"},
    {"no_depth_setter", "options.defaults", "\"ZBuffer Write\" of the current table holds no setter"},
    {"ignores_option", "options.setting", "\"Clip Phase\""},
    {"slot_without_owner", "slots.fields", "draw_dci_dot, 8-bit: enabled without an owner"},
    {"slot_of_another", "slots.fields", "the owner is not the renderer"},
    {"slot_without_function", "slots.fields", "draw_2d_polygon, 8-bit: enabled without a function"},
    {"reserved_filled", "slots.fields", "the reserved word is not 0"},
    {"enabled_twice", "slots.fields", "enabled is neither 0 nor 1"},
    {"missing_slot", "slots.needed", "draw_dci_dot, 32-bit with depth"},
    {"makes_own_buffers", "buffers.made", "no colour buffer was requested"},
    {"makes_buffers_always", "buffers.kept", "a buffer of the right size and format was made again"},
    {"keeps_small_buffers", "buffers.recreated", "does not have the window's size"},
    {"adopts_nothing", "buffers.adopted", "\"Color Buffer\" does not keep the application's buffer"},
    {"holds_buffers", "buffers.released", "a buffer of the former size is still held"},
    {"dies_without_memory", "buffers.failure", died},
    {"crashes", "drawing.calls", "draw_dci_ellipse, 32-bit: the process ended"},
    {"exits", "drawing.calls", "draw_dci_ellipse, 32-bit: the process ended: status 0"},
    {"hangs", "drawing.calls", "draw_dci_ellipse, 32-bit: still running"},
    {"throws", "drawing.calls", "draw_dci_ellipse, 32-bit: the module threw an exception: spoiled"},
    {"needs_buffers", "drawing.without_buffers", died},
    {"dead_setter", "drawing.depth_setters", "depths are written although \"ZBuffer Write\" is off"},
    {"draws_nothing", "drawing.visible", ", 8-bit: a plain call draws nothing"},
    {"writes_past_rows", "drawing.sentinels", "after row"},
    {"writes_before_buffer", "drawing.sentinels", "before the buffer"},
    {"restless", "drawing.repeatable", ", drawn again, call"},
    {"remembers_addresses", "drawing.recorded", "of the colour buffer is"},
    {"shares_state", "drawing.side_by_side", "beside"},
    {"keeps_old_slots", "drawing.reconfigured", "after"},
    {"ignores_hard_clip", "drawing.hard_clip", "outside the hard clip"},
    {"ignores_clip_region", "drawing.clip_region", "outside the clip region"},
    {"drops_wide_lines", "drawing.fall_backs", "a wide line: nothing is drawn"},
    {"paints_short", "cycle.window", "column"},
    {"clears_short", "cycle.depth_blocks", "clear_depth_rectangle"},
    {"reads_wrong", "cycle.read_back", "the image's pixels differ from the buffer's"},
    {"presents_elsewhere", "cycle.update", "the destination is not the rectangle's place"},
    {"clears_at_begin", "cycle.pictures", "of the colour buffer is"},
    {"leaks_renderers", "life.references", "a renderer still holds a buffer"},
    {"leaks_memory", "life.heap", "for each renderer"},
    {"grows", "life.growth", "the renderer has grown"},
};

// Enough for every check of a correct module, also with sanitizers.
constexpr std::chrono::seconds limit(60);
constexpr std::chrono::seconds limit_of_hanging_module(5);

// Percent. Little effort finds these faults, and there are many modules.
constexpr int effort = 30;

Outcome outcome_of(const Fault& fault, const std::vector<Outcome>& outcomes) {
    Outcome result{"selftest." + std::string(fault.module), Outcome::Kind::passed, ""};
    const auto add_failure = [&result](const std::string& reason) {
        result.kind = Outcome::Kind::failed;
        result.reason += (result.reason.empty() ? "" : "; ") + reason;
    };
    bool is_found = fault.check.empty();
    for (const Outcome& outcome : outcomes) {
        if (outcome.kind == Outcome::Kind::failed && outcome.check != fault.check) {
            add_failure(outcome.check + " fails, too: " + outcome.reason);
        } else if (outcome.kind == Outcome::Kind::failed) {
            is_found = true;
            if (outcome.reason.find(fault.reason) == std::string::npos) {
                add_failure(outcome.check + " fails for another reason: " + outcome.reason);
            }
        } else if (outcome.kind == Outcome::Kind::not_run && fault.check.empty()) {
            add_failure(outcome.check + " is not run");
        }
    }
    if (!is_found) {
        add_failure("not found by " + std::string(fault.check));
    }
    return result;
}

} // namespace

std::string default_fault_folder() {
    return (executable_path().parent_path() / "faulty").string();
}

std::vector<Outcome> run_selftest(const std::string& folder, const Run& settings,
                                  const std::function<void(const Outcome&)>& report) {
    if (!std::filesystem::is_directory(drawing::path_of(folder))) {
        throw drawing::Usage_Error(folder + ": expected a folder of faulty modules, which are built with the tests");
    }
    std::vector<Outcome> outcomes;
    for (const Fault& fault : faults) {
        Run run = settings;
        run.task.module = folder + "/" + std::string(fault.module) + ".vrd";
        run.task.profile = Profile::krb;
        run.task.effort = effort;
        run.limit = fault.module == "hangs" ? limit_of_hanging_module : limit;
        if (std::filesystem::exists(drawing::path_of(run.task.module))) {
            outcomes.push_back(outcome_of(fault, run_in_processes(run, [](const Outcome&) {})));
        } else {
            outcomes.push_back({"selftest." + std::string(fault.module), Outcome::Kind::failed, "no such module in the folder"});
        }
        report(outcomes.back());
    }
    return outcomes;
}

} // namespace vorna::app::check
