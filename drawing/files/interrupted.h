// How work ends before it is done.
#pragma once

namespace vorna::drawing {

// Thrown where work stops because of a signal or a stop check, so that destructors remove unfinished files.
struct Interrupted {
    int signal; // 0 = the stop check
};

} // namespace vorna::drawing
