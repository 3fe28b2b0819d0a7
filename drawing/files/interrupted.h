// How work ends before it is done.
#pragma once

#include "drawing/export.h"

namespace vorna::drawing {

// Thrown where work stops because of a signal or a stop check, so that destructors remove unfinished files.
struct VORNA_DRAWING_API Interrupted {
    int signal; // 0 = the stop check
};

// Sets the stop check of the calling thread; null = none, as at first. Calls of the thread that take long call it often, but
// never from other threads that help them, and throw Interrupted once it returns true. It must not throw.
VORNA_DRAWING_API void set_stop_check(bool (*is_asked_to_stop)()) noexcept;

} // namespace vorna::drawing
