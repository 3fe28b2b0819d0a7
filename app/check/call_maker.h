// Calls of every slot, made by the signatures of the slots.
#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "app/check/call_arguments.h"
#include "host/renderer_data.h"

namespace vorna::app::check {

// The function that a call goes to.
enum class Callee {
    slot,             // the slot's own, the standard function when the slot is empty
    drawing_function, // the host's, which passes on to the slot what the slot accepts
    standard_function
};

using Draw = std::function<void(VT_Renderer_Data&, const VT_Rendition&)>;

// A call with arguments that it owns: it may be drawn any number of times. Throws std::out_of_range for a name that is no slot's.
Draw make_draw(std::string_view slot, Call_Arguments& arguments, Callee callee);

// The names of all slots, in the order of the action table.
const std::vector<std::string_view>& slot_names();
// The names of those that take a list of points.
const std::vector<std::string_view>& point_slot_names();

} // namespace vorna::app::check
