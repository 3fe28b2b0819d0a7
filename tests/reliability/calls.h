// Calls of every slot, made of numbers that somebody else chooses.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "app/check/random.h"
#include "host/renderer_data.h"
#include "host/rendition.h"

using vorna::app::check::Random;

// Where coordinates come from: anywhere around a window, or from the ends of what their types hold.
class Numbers {
public:
    Numbers(Random& random, const VT_Int_Rectangle& window, bool are_hostile)
        : random_(random), window_(window), are_hostile_(are_hostile) {}

    Random& random() const noexcept { return random_; }
    bool are_hostile() const noexcept { return are_hostile_; }
    const VT_Int_Rectangle& window() const noexcept { return window_; }

    std::int32_t column() { return coordinate(window_.left, window_.right); }
    std::int32_t row() { return coordinate(window_.bottom, window_.top); }
    // Line types measure depth too, so that ordinary depths keep to a few hundred.
    std::int32_t depth() { return coordinate(0, are_hostile_ ? 65535 : 300); }
    // The same numbers as floats or doubles, among them infinite ones, none at all, and the smallest and the largest there are.
    template <class Real> Real real(std::int32_t (Numbers::*whole)());
    // Any 32 bits, mostly those near powers of two.
    std::int32_t any();

private:
    std::int32_t coordinate(std::int32_t low, std::int32_t high);

    Random& random_;
    const VT_Int_Rectangle window_;
    const bool are_hostile_;
};

struct Slot_Call {
    std::string_view slot;
    std::string description; // of the points
    std::function<void(VT_Renderer_Data&, const VT_Rendition&)> draw;
};

// The names of the slots that lists of points are drawn through, in the order of the action table.
const std::vector<std::string_view>& point_slots();

// The names of all slots.
const std::vector<std::string_view>& all_slots();

// A call as an application makes it, or of the standard function, with count points where it takes as many as it is told.
Slot_Call make_call(std::string_view slot, Numbers& numbers, std::int32_t count, bool is_standard = false);

// Attributes at the ends of what their types hold.
VT_Reference<VT_Rendition> hostile_rendition(Numbers& numbers, const VT_Int_Rectangle& window);
std::string describe(const VT_Rendition& rendition);

// A region that leaves out some of the window.
VT_Reference<const VT_Contour_Set> region_in(const VT_Int_Rectangle& window, std::int32_t inset);
