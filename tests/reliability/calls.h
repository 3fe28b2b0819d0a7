// Calls of every slot with numbers around a window or at the limits of their types.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "app/check/call_maker.h"

using vorna::app::check::Block;
using vorna::app::check::Callee;
using vorna::app::check::Coordinates;
using vorna::app::check::Draw;
using vorna::app::check::Ellipse;
using vorna::app::check::Placed_Image;
using vorna::app::check::point_slot_names;
using vorna::app::check::Random;

// Random numbers around a window, or hostile ones: at the limits of what their types hold.
class Numbers {
public:
    Numbers(Random& random, const VT_Int_Rectangle& window, bool are_hostile)
        : random_(random), window_(window), are_hostile_(are_hostile) {}

    Random& random() const noexcept { return random_; }
    bool are_hostile() const noexcept { return are_hostile_; }
    const VT_Int_Rectangle& window() const noexcept { return window_; }

    std::int32_t column() { return coordinate(window_.left, window_.right); }
    std::int32_t row() { return coordinate(window_.bottom, window_.top); }
    // Line types measure depth too, so that ordinary depths stay below a few hundred.
    std::int32_t depth() { return coordinate(0, are_hostile_ ? 65535 : 300); }
    // The same numbers with fractions, and hostile ones that only the type has: infinities, NaN, the smallest and the largest.
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
    Draw draw;
};

// A call as an application makes it, or of the standard function. count: the number of points that is passed to slots that take
// lists of them.
Slot_Call make_call(std::string_view slot, Numbers& numbers, std::int32_t count, Callee callee = Callee::drawing_function);

// A random rendition, many of whose attributes are any number.
VT_Reference<VT_Rendition> hostile_rendition(Numbers& numbers);

// A triangular region that covers a part of the window.
VT_Reference<const VT_Contour_Set> region_in(const VT_Int_Rectangle& window, std::int32_t inset);
