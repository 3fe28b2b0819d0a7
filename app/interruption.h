// Being asked to stop while a file is being written.
#pragma once

namespace app {

// Thrown where work stops because a signal has asked for it, so that what is unfinished is removed. Then the signal has its way.
struct Interrupted {
    int signal;
};

// While it lives, an interrupt from the keyboard, a request to end or the terminal's closing is noted and does not end the
// program. One at a time.
class Interruption {
public:
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    // Throws Interrupted when the program has been asked to stop. For any thread.
    static void check();

private:
    using Handler = void (*)(int);
    Handler before_[3];
};

} // namespace app
