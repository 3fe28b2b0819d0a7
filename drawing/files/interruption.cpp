// Signals that ask the process to stop while a file is being written.
#include "drawing/files/interruption.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <iterator>

namespace vorna::drawing {

namespace {

std::atomic<int> received{0};
static_assert(std::atomic<int>::is_always_lock_free);

thread_local bool (*stop_check)() = nullptr;

extern "C" void note_signal(int signal) {
    received = signal;
}

} // namespace

#if defined(_WIN32)

Interruption::Interruption() {
    for (std::size_t i = 0; i < std::size(signals); ++i) {
        before_[i] = std::signal(signals[i], note_signal);
        if (before_[i] == SIG_IGN) { // who started the program wants it so
            std::signal(signals[i], SIG_IGN);
        }
    }
}

Interruption::~Interruption() {
    for (std::size_t i = 0; i < std::size(signals); ++i) {
        if (before_[i] != SIG_ERR) {
            std::signal(signals[i], before_[i]);
        }
    }
}

#else

// std::signal would have the system take up again what waits: a reader who never comes.
Interruption::Interruption() {
    struct sigaction noting = {};
    noting.sa_handler = note_signal;
    for (std::size_t i = 0; i < std::size(signals); ++i) {
        sigaction(signals[i], nullptr, &before_[i]);
        if (before_[i].sa_handler != SIG_IGN) { // who started the program may want it so
            sigaction(signals[i], &noting, nullptr);
        }
    }
}

Interruption::~Interruption() {
    for (std::size_t i = 0; i < std::size(signals); ++i) {
        sigaction(signals[i], &before_[i], nullptr);
    }
}

#endif

void Interruption::set_stop_check(bool (*is_asked_to_stop)()) noexcept {
    stop_check = is_asked_to_stop;
}

bool Interruption::is_asked() noexcept {
    return received != 0 || (stop_check && stop_check());
}

void Interruption::check() {
    if (is_asked()) {
        throw Interrupted{received};
    }
}

void Interruption::raise_again(const Interrupted& interrupted) {
    received = 0;
    if (interrupted.signal != 0) {
        std::raise(interrupted.signal);
    }
}

void end_by_signal(int signal) noexcept {
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    std::_Exit(1); // a signal that is blocked has no effect yet
}

} // namespace vorna::drawing
