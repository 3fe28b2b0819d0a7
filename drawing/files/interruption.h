// Signals that ask the process to stop while a file is being written.
#pragma once

#include <csignal>
#include <stdexcept>

#include "drawing/files/interrupted.h"

namespace vorna::drawing {

// Thrown to applications after the signal was raised again and has not ended the process.
struct Interruption_Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// While an object exists, an interrupt from the keyboard, a request to end, the terminal's closing or a pipe that nobody reads is
// noted and does not end the process. System calls that wait return early. One at a time, or any number within the life of one.
class Interruption {
public:
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    // See drawing.h.
    static void set_stop_check(bool (*is_asked_to_stop)()) noexcept;
    // Throws Interrupted after a signal and for the calling thread's stop check. For any thread.
    static void check();
    static bool is_asked() noexcept; // for functions that must not throw
    // Forgets the signal that has interrupted the work of a library and raises it for the program. A program of its own calls
    // end_by_signal instead.
    static void raise_again(const Interrupted& interrupted);

private:
#if defined(_WIN32)
    using Handler = void (*)(int);
#else
    using Handler = struct sigaction;
#endif
    static constexpr int signals[] = {
        SIGINT,
        SIGTERM,
#if !defined(_WIN32)
        SIGHUP,
        SIGPIPE,
#endif
    };
    Handler before_[sizeof signals / sizeof *signals];
};

// Ends the process as the signal does by default, at once and without destructors.
[[noreturn]] void end_by_signal(int signal) noexcept;

} // namespace vorna::drawing
