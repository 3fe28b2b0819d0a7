// What every member does before it draws: it gives the call to the member of another case, draws nothing, cuts the call into
// several, hands it over to the host, or gives it to the member without depth, in this order. Families state the rules of a slot,
// and what is drawn.
#pragma once

#include "renderer/core/member.h"
#include "renderer/core/software_z_buffer.h"

namespace krb {

// Entry<Slot, c> has the rules of a slot in a case. It derives from Entry_Rules, which has those of a slot without any, and
// declares as static functions what differs:
//
//   bool goes_to_other_case(rendition, arguments...)            for slots whose other_case is not c
//   bool draw_in_parts(renderer, rendition, arguments...)       draws several calls of the same slot; false where it does not
//   bool is_hosts(renderer, rendition, arguments...)            whether the host's standard function draws the call
//   void draw(renderer, rendition, arguments...)                in a renderer with a colour buffer
template <class Slot, Case c> struct Entry;

// The same configuration without alpha blending.
constexpr Case without_alpha(Case c) noexcept {
    return is_alpha(c) ? static_cast<Case>(static_cast<int>(c) - 1) : c;
}

template <Case c> struct Entry_Rules {
    static constexpr Case other_case = c;
    // Calls with fewer points draw nothing. 0 for slots without a count.
    static constexpr std::int32_t least_points = 0;
    // What the host draws goes to it also when the call would draw nothing.
    static constexpr bool host_goes_first = false;
    // Calls without depth test are drawn by the member without depth.
    static constexpr bool has_sibling = has_depth(c);

    template <class... Arguments> static constexpr bool draw_in_parts(const Arguments&...) noexcept { return false; }
    template <class... Arguments> static constexpr bool is_hosts(const Arguments&...) noexcept { return false; }
};

template <class Rules, class... Arguments> bool draws_nothing(const Software_Z_Buffer& renderer, const Arguments&... arguments) {
    if constexpr (Rules::least_points > 0) {
        const auto count_of = [](std::int32_t count, const auto&...) { return count; };
        return !renderer.color_buffer || count_of(arguments...) < Rules::least_points;
    } else {
        return !renderer.color_buffer;
    }
}

template <class Slot, Case c, class... Arguments>
void Member<Slot, c, void(VT_Renderer_Data&, const VT_Rendition&, Arguments...)>::enter(VT_Renderer_Data& data,
                                                                                        const VT_Rendition& rendition,
                                                                                        Arguments... arguments) {
    using Rules = Entry<Slot, c>;
    if constexpr (Rules::other_case != c) {
        if (Rules::goes_to_other_case(rendition, arguments...)) {
            Member<Slot, Rules::other_case>::enter(data, rendition, arguments...);
            return;
        }
    }
    Software_Z_Buffer& renderer = renderer_of(data);
    if (!Rules::host_goes_first && draws_nothing<Rules>(renderer, arguments...)) {
        return;
    }
    if (Rules::draw_in_parts(renderer, rendition, arguments...)) {
        return;
    }
    if (Rules::is_hosts(renderer, rendition, arguments...)) {
        Slot::standard()(data, rendition, arguments...);
        return;
    }
    if (Rules::host_goes_first && draws_nothing<Rules>(renderer, arguments...)) {
        return;
    }
    if constexpr (Rules::has_sibling) {
        if (!renderer.draws_with_depth(rendition)) {
            Member<Slot, without_depth(c)>::enter(data, rendition, arguments...);
            return;
        }
    }
    Rules::draw(renderer, rendition, arguments...);
}

} // namespace krb
