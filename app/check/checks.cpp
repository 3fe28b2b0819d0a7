// The table of checks.
#include "app/check/checks.h"

#include <algorithm>
#include <exception>
#include <new>
#include <set>

namespace vorna::app::check {

const std::vector<Check>& all_checks() {
    static const std::vector<Check> checks{
        {loads, "the module can be loaded", {}, check_loads},
        {"exports.entry_points", "the module exports the entry points", {loads}, check_entry_points},
        {"exports.unload_null", "VD_Unload_KRB_Renderer accepts a null pointer", {"exports.entry_points"}, check_unload_null},
        {"exports.renderer",
         "a renderer can be created, established and destroyed in every configuration",
         {"exports.entry_points"},
         check_renderer},

        {"options.known", "options that hosts use exist and have the right type", {"exports.renderer"}, check_known_options},
        {"options.defaults", "options start with the right values", {"options.known"}, check_defaults},
        {"options.setting", "an option that is set takes effect in establish_all", {"options.known"}, check_setting},

        {"slots.fields",
         "every slot is empty, or enabled with its owner, a function and a reserved word of 0",
         {"exports.renderer"},
         check_slot_fields},
        {"slots.needed", "the slots that hosts need are filled in every configuration", {"slots.fields"}, check_needed_slots},

        {"buffers.made",
         "buffers come from the host's callback in the right size and format, and the colour buffer is published",
         {"exports.renderer"},
         check_buffers_made},
        {"buffers.kept", "buffers keep their pixels while size and format stay the same", {"buffers.made"}, check_buffers_kept},
        {"buffers.recreated", "buffers are recreated when size or format change", {"buffers.made"}, check_buffers_recreated},
        {"buffers.adopted",
         "a renderer draws into the application's own buffer",
         {"buffers.made", "slots.needed"},
         check_buffers_adopted},
        {"buffers.released", "buffers of another size or format are released", {"buffers.recreated"}, check_buffers_released},
        {"buffers.failure",
         "after a failed allocation of a buffer the renderer can be used and destroyed",
         {"buffers.made", "slots.needed"},
         check_buffer_failure},

        {"drawing.calls",
         "every slot returns from calls with and without points in every configuration",
         {"slots.needed", "buffers.made"},
         check_slot_calls},
        {"drawing.without_buffers", "without buffers every slot draws nothing", {"drawing.calls"}, check_calls_without_buffers},
        {"drawing.depth_setters",
         "the setters in \"ZBuffer Write\" and \"ZBuffer Test\" control dots of 32-bit colour",
         {"options.defaults", "drawing.calls"},
         check_depth_setters},
        {"drawing.visible", "every drawing slot draws something", {"drawing.calls"}, check_visible},
        {"drawing.sentinels", "random calls change no byte beside the pixels", {"drawing.calls"}, check_sentinels},
        {"drawing.repeatable", "the same calls draw the same pixels", {"drawing.calls"}, check_repeatable},
        {"drawing.recorded", "calls draw the same pixels directly and from a list", {"drawing.repeatable"}, check_recorded},
        {"drawing.side_by_side", "renderers do not affect each other", {"drawing.repeatable"}, check_side_by_side},
        {"drawing.reconfigured",
         "after a change of configuration a renderer draws as a new one does",
         {"drawing.repeatable", "buffers.recreated"},
         check_reconfigured},
        {"drawing.hard_clip", "2D, 2DI and 3D forms draw only inside the hard clip", {"drawing.calls"}, check_hard_clip},
        {"drawing.clip_region", "without depth, calls draw only inside clip regions", {"drawing.calls"}, check_clip_region},
        {"drawing.fall_backs", "calls that renderers hand over to the host are drawn", {"drawing.visible"}, check_fall_backs},

        {"cycle.window", "draw_window fills its rectangle and nothing else", {"drawing.calls"}, check_window},
        {"cycle.depth_blocks", "depths are cleared and written in the given rectangle", {"drawing.calls"}, check_depth_blocks},
        {"cycle.read_back", "reading back returns the stored pixels and depths", {"drawing.calls"}, check_read_back},
        {"cycle.update", "update presents a rectangle of the colour buffer", {"drawing.calls"}, check_update},
        {"cycle.pictures", "pixels persist from one picture to the next", {"drawing.calls"}, check_pictures},

        {"life.references",
         "destroyed renderers hold no objects of the host",
         {"drawing.calls", "buffers.released"},
         check_references},
        {"life.heap", "1,000 renderers created, used and destroyed leak no memory", {"life.references"}, check_heap},
        {"life.growth", "a renderer's memory does not grow from picture to picture", {"life.references"}, check_growth},
    };
    return checks;
}

std::string_view area_of(std::string_view check) {
    return check.substr(0, check.find('.'));
}

namespace {

// Why the check fails; empty when it passes.
std::string reason_of(const Check& check, Trial& trial) {
    try {
        check.run(trial);
        return {};
    } catch (const Check_Failed& failure) {
        return failure.what();
    } catch (const std::bad_alloc&) {
        return trial.placed("out of memory");
    } catch (const std::exception& error) {
        return trial.placed(std::string("the module threw an exception: ") + error.what());
    } catch (...) {
        return trial.placed("the module threw an exception that is not a std::exception");
    }
}

} // namespace

void run_checks(const Task& task, const std::vector<std::string>& names, Journal& journal) {
    std::set<std::string_view> failed;
    for (const Check& check : all_checks()) {
        const bool is_asked_for = std::find(names.begin(), names.end(), check.name) != names.end();
        const bool is_blocked =
            std::any_of(check.needs.begin(), check.needs.end(), [&](std::string_view need) { return failed.count(need) != 0; });
        if (is_blocked) {
            failed.insert(check.name);
        } else if (is_asked_for) {
            journal.begin(check.name);
            Trial trial(task, journal);
            const std::string reason = reason_of(check, trial);
            journal.end(reason);
            if (!reason.empty()) {
                failed.insert(check.name);
            }
        }
    }
}

} // namespace vorna::app::check
