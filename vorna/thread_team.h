// Threads that wait for work. All of it is in the header, so that other libraries need no symbols of this one.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace vorna {

// The members 1 and up of a team are threads, member 0 is the one that uses it.
class Thread_Team {
public:
    // work(member): does a piece of what there is to do and returns true, or returns false; throws nothing. The threads call it
    // until there is nothing to do, then sleep until they are woken.
    Thread_Team(std::size_t size, std::function<bool(std::size_t member)> work) : size_(size), work_(std::move(work)) {}
    Thread_Team(const Thread_Team&) = delete;
    Thread_Team& operator=(const Thread_Team&) = delete;
    ~Thread_Team();

    std::size_t size() const noexcept { return size_; }
    // To be called when there is something to do. The first call starts the threads; where the system gives fewer, the others do
    // their work.
    void wake();
    // Works too, until there is nothing to do, then returns when is_done() is true, which a thread's work must make so.
    template <class Condition> void work_until(const Condition& is_done) {
        while (work_(0)) {
        }
        for (int i = 0; i < looks_before_sleep; ++i) {
            if (is_done()) {
                return;
            }
            std::this_thread::yield();
        }
        std::unique_lock lock(mutex_);
        waits_ = true;
        ended_.wait(lock, is_done);
        waits_ = false;
    }

private:
    // A thread that finds nothing to do looks again for about as long as waking takes.
    static constexpr int looks_before_sleep = 64;

    void start();
    void serve(std::size_t member);

    const std::size_t size_;
    const std::function<bool(std::size_t)> work_;
    std::mutex mutex_;
    std::condition_variable begun_, ended_;
    std::size_t calls_to_wake_ = 0; // under the mutex
    std::atomic<std::size_t> sleeping_{0};
    std::atomic<bool> waits_{false}; // the user, for the end of work
    bool is_started_ = false;
    std::atomic<bool> ends_{false};
    std::vector<std::thread> threads_;
};

inline Thread_Team::~Thread_Team() {
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

inline void Thread_Team::start() {
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

inline void Thread_Team::wake() {
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

inline void Thread_Team::serve(std::size_t member) {
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
