// Signals while the library works.
#pragma once

#include <chrono>

#include "drawing/drawing.h"
#include "python/src/arrays.h"

namespace vorna::python {

// While it exists, signal handlers of Python run in this thread's long calls of the library. When one raises, KeyboardInterrupt
// for instance, the call throws drawing::Interrupted, and the interpreter has the exception.
class Signal_Check {
public:
    Signal_Check() : outer_(current()) {
        current() = this;
        drawing::set_stop_check([] { return current()->is_raised(); });
    }
    Signal_Check(const Signal_Check&) = delete;
    Signal_Check& operator=(const Signal_Check&) = delete;
    ~Signal_Check() {
        current() = outer_;
        if (!outer_) {
            drawing::set_stop_check(nullptr);
        }
    }

private:
    using Clock = std::chrono::steady_clock;

    // Of this thread; calls of signal handlers have checks of their own.
    static Signal_Check*& current() {
        thread_local Signal_Check* check = nullptr;
        return check;
    }

    bool is_raised() {
        constexpr std::chrono::milliseconds pause(50); // the interpreter's lock may be another thread's for milliseconds
        if (const auto now = Clock::now(); !is_raised_ && now - last_ >= pause) {
            last_ = now;
            const py::gil_scoped_acquire acquired;
            is_raised_ = PyErr_CheckSignals() != 0;
        }
        return is_raised_;
    }

    Signal_Check* const outer_;
    Clock::time_point last_ = Clock::now();
    bool is_raised_ = false;
};

} // namespace vorna::python
