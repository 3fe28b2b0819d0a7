// What a single call does to pixels, and which rules keep it from them.
//
// The call is drawn again, beside the replay, over other colours and with rules of its rendition lifted: a pixel that changes
// then lies in the shape, and a rule that keeps it as it was, while all others are lifted, refuses it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "drawing/recording/pixel_history.h"
#include "drawing/recording/row_replay.h"
#include "host/rendition.h"

namespace vorna::drawing::recording {

// A pixel that a call may change.
struct Probed_Pixel {
    VT_Int_Pair place; // column and row from the window's lower left
    Pixel_Value before, after;

    // What the probe finds.
    Outcome outcome = Outcome::outside;
    bool writes_color = false;
    Rules rules;
    std::uint16_t shape_depth = 0;
};

class Call_Probe {
public:
    // As Row_Replay.
    Call_Probe(const Recording& recording, const Module_Choice& module, const Replay_Settings& settings, std::int32_t first_row,
               std::int32_t last_row);

    void begin();
    // A call that sets the renderer up.
    void set_up(std::size_t call);
    // before and after: what the call does in the replay.
    void examine(std::size_t call, std::span<Probed_Pixel> pixels);

private:
    // A call with all rules lifted.
    struct Lifted_Call {
        std::size_t number;
        const Arguments& own_arguments;
        VT_Reference<const VT_Rendition> own;
        std::optional<Arguments> changed_arguments = {}; // none = the own ones hold no rule
        VT_Reference<VT_Rendition> rendition;
        bool has_alpha = false, writes_depths = false;

        const Arguments& arguments() const noexcept { return changed_arguments ? *changed_arguments : own_arguments; }
    };

    Lifted_Call lifted(std::size_t call);
    bool has_rule(const Lifted_Call& call, Rule rule) const;
    // The numbers of those pixels, of the given ones, that the call changes when it is drawn over one of two opposite colours.
    // keeps_alpha: the colours have the alpha that is there.
    std::vector<std::uint32_t> touched(const Lifted_Call& call, const Arguments& arguments,
                                       const VT_Reference<VT_Rendition>& rendition, std::span<const Probed_Pixel> pixels,
                                       const std::vector<std::uint32_t>& numbers, bool keeps_alpha = false);
    // The same with one rule in force.
    std::vector<std::uint32_t> touched_under(const Lifted_Call& call, Rule rule, std::span<const Probed_Pixel> pixels,
                                             const std::vector<std::uint32_t>& numbers);
    void find_shape_depths(const Lifted_Call& call, std::span<Probed_Pixel> pixels, const std::vector<std::uint32_t>& numbers);
    std::vector<std::uint32_t> find_drawn(std::size_t call, std::span<Probed_Pixel> pixels,
                                          const std::vector<std::uint32_t>& numbers);
    void find_refusals(const Lifted_Call& call, std::span<Probed_Pixel> pixels, const std::vector<std::uint32_t>& in_shape);
    // Null where the material is opaque, and for none.
    VT_Reference<const VT_Basic_Material> opaque_version(const VT_Reference<const VT_Basic_Material>& material);

    const Recording& recording_;
    Row_Replay scratch_;
    bool depth_write_;
    std::int32_t depth_test_;
    std::map<const VT_Basic_Material*, VT_Reference<const VT_Basic_Material>> opaque_materials_;
};

} // namespace vorna::drawing::recording
