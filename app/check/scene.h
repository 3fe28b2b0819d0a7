// Calls of every slot with coordinates that the slot allows.
#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "app/check/trial.h"

namespace vorna::app::check {

// One call with arguments of its own. It may be drawn any number of times, by any renderer with such a window.
struct Call {
    std::string_view slot;
    VT_Reference<VT_Rendition> rendition;
    std::function<void(VT_Renderer_Data&, const VT_Rendition&)> draw;

    void draw_with(VT_Renderer_Data& renderer) const { draw(renderer, *rendition); }
};

// The names of all slots, in the order of the action table.
const std::vector<std::string_view>& slot_names();

// Whether the slot's points may lie anywhere, because the renderer keeps to the hard clip: the 2D, 2DI and 3D forms. Points of
// all other slots lie in the window.
bool cuts_to_hard_clip(std::string_view slot);
// Whether the slot draws primitives, and so looks at the rendition.
bool draws_primitives(std::string_view slot);

// A plain call that draws something bright in the middle of the window, or works on the whole window.
Call plain_call(std::string_view slot, const Window& window);
// Any call of the slot.
Call random_call(Random& random, std::string_view slot, const Window& window);
// So many random calls of every slot, mixed. Each of them keeps what it needs.
std::vector<Call> random_scene(Random& random, const Window& window, int rounds);

} // namespace vorna::app::check
