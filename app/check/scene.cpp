// Calls of every slot that every renderer draws.
#include "app/check/scene.h"

#include <algorithm>
#include <utility>

namespace vorna::app::check {

namespace {

VT_Reference<VT_Rendition> plain_rendition(const VT_Int_Rectangle& window) {
    constexpr VT_RGB32 color{40, 120, 250, 255};
    constexpr std::uint8_t index = 180;
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->set_color(color);
    rendition->face.index = rendition->line.index = rendition->marker.index = index;
    rendition->clip.hard_clip = window;
    rendition->window = {window, face_pattern::solid, color, index};
    const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
    const VT_Reference<VT_Shared_Image> texture(new VT_Shared_Image(8, 8, Buffer_Format::rgb32, 32, nullptr, false, true));
    for (std::int32_t row = 0; row < 8; ++row) {
        std::fill(texture->row(row), texture->row(row) + 32, std::uint8_t{255});
    }
    material->texture = texture;
    rendition->face.material = material;
    return rendition;
}

} // namespace

bool draws_primitives(std::string_view slot) {
    return slot.starts_with("draw_") && slot != "draw_window" && slot.find("image") == std::string_view::npos;
}

Call plain_call(std::string_view slot, const Window& window) {
    Call_Arguments arguments(window.area());
    return {slot, plain_rendition(window.area()), make_draw(slot, arguments, Callee::slot)};
}

Call random_call(Random& random, std::string_view slot, const Window& window, Callee callee) {
    const VT_Reference<VT_Rendition> rendition = random_rendition(random, window.area());
    // Painting is cut to the window, clearing is not.
    if (slot == "draw_window") {
        rendition->window = random_window_attributes(random, grown(window.area(), 20));
    }
    Random_Arguments arguments(random, slot, window.area());
    return {slot, rendition, make_draw(slot, arguments, callee)};
}

std::vector<Call> random_scene(Random& random, const Window& window, int rounds, Callee callee) {
    std::vector<Call> calls;
    std::vector<std::string_view> order = slot_names();
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t remaining = order.size(); remaining > 0; --remaining) {
            const std::int32_t chosen = random.number(0, static_cast<std::int32_t>(remaining) - 1);
            std::swap(order[static_cast<std::size_t>(chosen)], order[remaining - 1]);
            calls.push_back(random_call(random, order[remaining - 1], window, callee));
        }
    }
    return calls;
}

} // namespace vorna::app::check
