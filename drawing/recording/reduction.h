// The smallest recording that still shows a fault.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

// Thrown by Reduction_Settings::keeps: the smallest recording so far is the result.
struct Reduction_Ended {};

struct Reduction_Settings {
    // Whether the recording, as a file holds it, still shows the fault. It is called for each recording that has not been tried
    // before; what it throws besides Reduction_Ended ends the reduction.
    std::function<bool(const std::string& file)> keeps;
    std::string file_name; // tells the form that `keeps` gets, as for file_of
    // Called with each smaller recording that keeps the fault. May be empty.
    std::function<void(const Recording& smallest, std::size_t bytes)> progress;
};

// Leaves out, in this order and until nothing more can be left out: calls, points with what belongs to them, keys of renditions
// and of the set-up, and columns and rows of the window. The same answers lead to the same result. The recording itself must show
// the fault, which is not tried.
Recording reduced(Recording recording, const Reduction_Settings& settings);

// Points that calls have; of those without points none.
std::size_t points_in(const Recording& recording);

} // namespace vorna::drawing::recording
