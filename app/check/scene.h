// Calls of every slot that every renderer draws.
#pragma once

#include <string_view>
#include <vector>

#include "app/check/call_maker.h"
#include "app/check/trial.h"

namespace vorna::app::check {

// A call with arguments of its own. It may be drawn any number of times, by every renderer with such a window.
struct Call {
    std::string_view slot;
    VT_Reference<VT_Rendition> rendition;
    Draw draw;

    void draw_with(VT_Renderer_Data& renderer) const { draw(renderer, *rendition); }
};

// Whether the slot draws primitives, by all attributes of the rendition.
bool draws_primitives(std::string_view slot);

// A plain call that draws something bright in the middle of the window, or works on the whole window.
Call plain_call(std::string_view slot, const Window& window);
// A random call of the slot.
Call random_call(Random& random, std::string_view slot, const Window& window, Callee callee = Callee::slot);
// `rounds` random calls of every slot, each round in a random order.
std::vector<Call> random_scene(Random& random, const Window& window, int rounds, Callee callee = Callee::slot);

} // namespace vorna::app::check
