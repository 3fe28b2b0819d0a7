// Drawing as an application does it: through the renderer's slot when it is enabled, else through the standard function.
#pragma once

#include <utility>

#include "renderer/host/actions.h"
#include "renderer/host/renderer_data.h"
#include "renderer/host/rendition.h"

// A drawing function, called as VD_Draw_DCI_Polyline(renderer, rendition, count, points): see actions.h for the arguments.
template <auto Slot, auto Standard> struct VT_Dispatch {
    template <class... Arguments>
    void operator()(VT_Renderer_Data& renderer, const VT_Rendition& rendition, Arguments&&... arguments) const {
        const auto& slot = renderer.actions.*Slot;
        if (slot.enabled) {
            slot.function(*slot.owner, rendition, std::forward<Arguments>(arguments)...);
        } else {
            Standard(renderer, rendition, std::forward<Arguments>(arguments)...);
        }
    }
};

#define VT_ACTION(slot, name, ...) inline constexpr VT_Dispatch<&Action_Table::slot, &VD_Standard_##name> VD_##name{};
#include "renderer/host/action_list.inc"
#undef VT_ACTION
