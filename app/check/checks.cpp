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
        {"exports.unload_null", "VD_Unload_KRB_Renderer takes a null pointer", {"exports.entry_points"}, check_unload_null},
        {"exports.renderer",
         "a renderer can be made, established and destroyed in every configuration",
         {"exports.entry_points"},
         check_renderer},

        {"options.known", "options that hosts know are there and have the right type", {"exports.renderer"}, check_known_options},
        {"options.defaults", "options start with the right values", {"options.known"}, check_defaults},
        {"options.setting", "an option that is set is in force after establish_all", {"options.known"}, check_setting},

        {"slots.fields",
         "every slot is empty, or enabled with its owner, a function and a reserved word of 0",
         {"exports.renderer"},
         check_slot_fields},
        {"slots.needed", "the slots that hosts cannot do without are filled in every case", {"slots.fields"}, check_needed_slots},

        {"buffers.made",
         "buffers come from the host's callback in the right size and format, and the colour buffer is published",
         {"exports.renderer"},
         check_buffers_made},
        {"buffers.kept", "buffers are kept with their pixels while they fit", {"buffers.made"}, check_buffers_kept},
        {"buffers.recreated", "buffers are made anew when size or format change", {"buffers.made"}, check_buffers_recreated},
        {"buffers.adopted",
         "a buffer of the application's is drawn into",
         {"buffers.made", "slots.needed"},
         check_buffers_adopted},
        {"buffers.released", "buffers that no longer fit are let go of", {"buffers.recreated"}, check_buffers_released},
        {"buffers.failure",
         "an allocation that fails while buffers are made leaves a renderer that can be used or destroyed",
         {"buffers.made", "slots.needed"},
         check_buffer_failure},

        {"drawing.calls",
         "every slot returns from a plain and from an empty call in every case",
         {"slots.needed", "buffers.made"},
         check_slot_calls},
        {"drawing.without_buffers", "without buffers every slot draws nothing", {"drawing.calls"}, check_calls_without_buffers},
        {"drawing.depth_setters",
         "the setters in \"ZBuffer Write\" and \"ZBuffer Test\" steer dots of 32-bit colour",
         {"options.defaults", "drawing.calls"},
         check_depth_setters},
        {"drawing.visible", "every drawing slot draws something", {"drawing.calls"}, check_visible},
        {"drawing.sentinels", "no byte around the pixels changes under random drawing", {"drawing.calls"}, check_sentinels},
        {"drawing.repeatable", "the same calls give the same pixels", {"drawing.calls"}, check_repeatable},
        {"drawing.recorded", "calls give the same pixels at once and recorded", {"drawing.repeatable"}, check_recorded},
        {"drawing.side_by_side", "renderers do not disturb each other", {"drawing.repeatable"}, check_side_by_side},
        {"drawing.reconfigured",
         "a renderer whose configuration has changed draws as a new one",
         {"drawing.repeatable", "buffers.recreated"},
         check_reconfigured},
        {"drawing.hard_clip", "2D, 2DI and 3D forms stay inside the hard clip", {"drawing.calls"}, check_hard_clip},
        {"drawing.clip_region", "without depth, clip regions are respected", {"drawing.calls"}, check_clip_region},
        {"drawing.fall_backs", "what renderers hand back to the host is drawn", {"drawing.visible"}, check_fall_backs},

        {"cycle.window", "draw_window fills its rectangle and nothing else", {"drawing.calls"}, check_window},
        {"cycle.depth_blocks", "depths are cleared and written where they should be", {"drawing.calls"}, check_depth_blocks},
        {"cycle.read_back", "pixels and depths are read back as they are", {"drawing.calls"}, check_read_back},
        {"cycle.update", "update hands a rectangle of the colour buffer to the presentation", {"drawing.calls"}, check_update},
        {"cycle.pictures", "pixels stay from one picture to the next", {"drawing.calls"}, check_pictures},

        {"life.references",
         "renderers that are gone hold nothing of the host's",
         {"drawing.calls", "buffers.released"},
         check_references},
        {"life.heap", "1,000 renderers made, used and destroyed leave no memory behind", {"life.references"}, check_heap},
        {"life.growth", "a renderer does not grow from picture to picture", {"life.references"}, check_growth},
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
        return trial.placed(std::string("an exception came through: ") + error.what());
    } catch (...) {
        return trial.placed("an exception came through that is no std::exception");
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
