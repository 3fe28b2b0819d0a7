// Being asked to stop while a file is being written.
#include "app/interruption.h"

#include <atomic>
#include <csignal>

namespace app {

namespace {

constexpr int signals[] = {SIGINT, SIGTERM};
std::atomic<int> received{0};
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void note_signal(int signal) {
    received = signal;
}

} // namespace

Interruption::Interruption() {
    for (int i = 0; i < 2; ++i) {
        before_[i] = std::signal(signals[i], note_signal);
        if (before_[i] == SIG_IGN) { // who started the program wants it so
            std::signal(signals[i], SIG_IGN);
        }
    }
}

Interruption::~Interruption() {
    for (int i = 0; i < 2; ++i) {
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
