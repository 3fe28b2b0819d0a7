// Being asked to stop while a file is being written.
#pragma once

#include <csignal>

namespace vorna::drawing {

// Thrown where work stops because a signal has asked for it, so that what is unfinished is removed. Then the signal has its way.
struct Interrupted {
    int signal;
};

// While it lives, an interrupt from the keyboard, a request to end, the terminal's closing or a pipe that nobody reads is noted
// and does not end the program. System calls that wait end early. One at a time.
class Interruption {
public:
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    // Throws Interrupted when the program has been asked to stop. For any thread.
    static void check();
    static bool is_asked() noexcept; // where nothing may be thrown

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

} // namespace vorna::drawing
