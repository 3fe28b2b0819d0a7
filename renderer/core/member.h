// The functions that families install in action slots, one a slot and case.
#pragma once

#include "host/actions.h"
#include "renderer/core/cases.h"

namespace krb {

// Each slot of the action table as a type: its signature, its place in the table, and the host's standard function.
namespace slots {
#define VT_ACTION(slot, name, ...)                                                                                               \
    struct name {                                                                                                                \
        using Function = __VA_ARGS__;                                                                                            \
        static constexpr Action_Slot<Function> VT_Action_Table::*place = &VT_Action_Table::slot;                                 \
        static Function* standard() noexcept { return &VD_Standard_##name; }                                                     \
    };
#include "host/action_list.inc"
#undef VT_ACTION
} // namespace slots

// The member of a slot in a case. Headers of the families declare the members, their sources define them with entry.h.
template <class Slot, Case c, class Function = typename Slot::Function> struct Member;

template <class Slot, Case c, class... Arguments>
struct Member<Slot, c, void(VT_Renderer_Data&, const VT_Rendition&, Arguments...)> {
    static void enter(VT_Renderer_Data& data, const VT_Rendition& rendition, Arguments... arguments);
};

// Draws through a slot as an application does: by the standard function when the slot is empty.
template <class Function, class... Arguments>
void draw_through(const Action_Slot<Function>& slot, Function* standard, VT_Renderer_Data& data, const VT_Rendition& rendition,
                  const Arguments&... arguments) {
    if (slot.enabled) {
        slot.function(*slot.owner, rendition, arguments...);
    } else {
        standard(data, rendition, arguments...);
    }
}

} // namespace krb

// Declares or, without extern, defines the members of a slot in all cases: KRB_MEMBERS(extern, slot).
#define KRB_MEMBERS(linkage, slot)                                                                                               \
    linkage template struct Member<slot, Case::index8>;                                                                          \
    linkage template struct Member<slot, Case::rgb32>;                                                                           \
    linkage template struct Member<slot, Case::rgb32_alpha>;                                                                     \
    linkage template struct Member<slot, Case::depth_index8>;                                                                    \
    linkage template struct Member<slot, Case::depth_rgb32>;                                                                     \
    linkage template struct Member<slot, Case::depth_rgb32_alpha>;
