// The base class of renderers: default callbacks and the steps around the functions of a renderer.
#include "host/renderer_data.h"

#include <algorithm>

namespace {

// The default callback. Makes no buffer for sizes outside 1 to 16384; renderers then draw nothing.
void create_buffer(void*, std::int32_t width, std::int32_t height, const Buffer_Format* format,
                   VT_Reference<Frame_Buffer>& buffer) {
    buffer = nullptr;
    const auto is_possible = [](std::int32_t size) { return size >= 1 && size <= vorna::largest_buffer_side; };
    if (is_possible(width) && is_possible(height)) {
        buffer = vorna::make_frame_buffer(width, height, *format);
    }
}

std::int32_t present_nothing(void*, const VT_DCI_Point&, const VT_DCI_Point&, const VT_Reference<Frame_Buffer>&, std::int32_t,
                             std::int32_t) {
    return 0;
}

template <class Function> Action_Slot<Function> action(VT_Renderer_Data* owner, Function* function) {
    return {owner, function, 0, 1};
}

} // namespace

VT_Renderer_Data::VT_Renderer_Data() : buffer_creation{create_buffer, nullptr}, presentation{present_nothing, nullptr} {
}

VT_Renderer_Data::VT_Renderer_Data(const VT_Renderer_Data& prototype)
    : VT_Counted(prototype), declared_options(prototype.declared_options), current_options(prototype.current_options),
      requested_table(prototype.requested_table), current_table(prototype.current_table),
      buffer_creation(prototype.buffer_creation), presentation(prototype.presentation),
      standard_observer(prototype.standard_observer) {
}

VT_Renderer_Data::~VT_Renderer_Data() = default;

void VT_Renderer_Data::optimize_current_options() {
    optimize_current_renderer_options();
}

void VT_Renderer_Data::optimize_current_renderer_options() {
    VT_Renderer_Options& options = current_renderer_options_for_update();
    options.set_buffer_depth(std::min(options.buffer_depth(), declared_options.buffer_depth()));
}

std::int32_t VT_Renderer_Data::establish_all() {
    update_current_options();
    optimize_current_options();
    return establish();
}

void VT_Renderer_Data::begin_picture_all() {
    begin_picture();
}

void VT_Renderer_Data::end_picture_all() {
    end_picture();
}

std::int32_t VT_Renderer_Data::update_all(const VT_Int_Rectangle& rectangle) {
    return update(rectangle);
}

void VT_Renderer_Data::set_standard_actions(bool on) {
    actions = VT_Action_Table{};
    if (on) {
        vorna::for_each_action([this](std::string_view, auto slot, auto* standard) { actions.*slot = action(this, standard); });
    }
}

void VT_Renderer_Data::update_current_options() {
    VT_Option_Table& table = current_option_table();
    for (std::size_t i = 0; i < requested_table.size(); ++i) {
        VT_Option& requested = requested_table[i];
        const bool changed = requested.take_change();
        if (VT_Option* current = table.find(requested.name()); !current) {
            table.add(requested);
        } else if (changed) {
            current->set_value(requested.value());
        }
    }
}
