// Being asked to stop while a file is being written.
#include "app/interruption.h"

#include <atomic>
#include <csignal>
#include <cstddef>
#include <iterator>

namespace app {

namespace {

#if defined(_WIN32)
constexpr int signals[] = {SIGINT, SIGTERM};
#else
constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP};
#endif
std::atomic<int> received{0};
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void note_signal(int signal) {
    received = signal;
}

} // namespace

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

void Interruption::check() {
    if (const int signal = received) {
        throw Interrupted{signal};
    }
}

} // namespace app
