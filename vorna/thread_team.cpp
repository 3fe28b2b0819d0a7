// Threads that wait for work.
#include "vorna/thread_team.h"

#include <exception>

namespace vorna {

Thread_Team::~Thread_Team() {
    ends_ = true;
    {
        const std::lock_guard lock(mutex_);
        ++calls_to_wake_;
    }
    begun_.notify_all();
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

void Thread_Team::start() {
    is_started_ = true;
    try {
        threads_.reserve(size_);
        while (threads_.size() + 1 < size_) {
            threads_.emplace_back(&Thread_Team::serve, this, threads_.size() + 1);
        }
    } catch (const std::exception&) {
        // The others share the work.
    }
}

void Thread_Team::wake() {
    if (!is_started_) {
        start();
    } else if (sleeping_ > 0) {
        {
            const std::lock_guard lock(mutex_);
            ++calls_to_wake_;
        }
        begun_.notify_all();
    }
}

void Thread_Team::serve(std::size_t member) {
    const auto works = [&] {
        bool has_worked = false;
        while (!ends_ && work_(member)) {
            has_worked = true;
        }
        if (has_worked && waits_) {
            const std::lock_guard lock(mutex_);
            ended_.notify_one();
        }
        return has_worked;
    };
    while (!ends_) {
        for (int looks = 0; looks < looks_before_sleep && !ends_;) {
            if (works()) {
                looks = 0;
            } else {
                ++looks;
                std::this_thread::yield();
            }
        }
        std::unique_lock lock(mutex_);
        const std::size_t seen = calls_to_wake_;
        ++sleeping_;
        lock.unlock();
        // What was there before a waker could see this thread asleep.
        if (!works()) {
            lock.lock();
            begun_.wait(lock, [&] { return ends_ || calls_to_wake_ != seen; });
            lock.unlock();
        }
        --sleeping_;
    }
}

} // namespace vorna
