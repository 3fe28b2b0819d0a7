// Threads that wait for work between two uses.
#include "vorna/thread_team.h"

#include <system_error>

namespace vorna {

Thread_Team::~Thread_Team() {
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
    }
    begun_.notify_all();
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

void Thread_Team::start() {
    try {
        threads_.reserve(size_);
        while (threads_.size() + 1 < size_) {
            threads_.emplace_back(&Thread_Team::serve, this, threads_.size() + 1);
        }
    } catch (const std::system_error&) {
        // The others share the work.
    }
}

void Thread_Team::run(const std::function<void(std::size_t)>& work) {
    if (threads_.empty() && size_ > 1) {
        start();
    }
    {
        const std::lock_guard lock(mutex_);
        work_ = &work;
        working_ = threads_.size();
        ++round_;
    }
    begun_.notify_all();
    work(0);
    std::unique_lock lock(mutex_);
    ended_.wait(lock, [this] { return working_ == 0; });
}

void Thread_Team::serve(std::size_t member) {
    std::unique_lock lock(mutex_);
    for (std::size_t served = 0;;) {
        begun_.wait(lock, [&] { return ends_ || round_ != served; });
        if (ends_) {
            return;
        }
        served = round_;
        const auto& work = *work_;
        lock.unlock();
        work(member);
        lock.lock();
        if (--working_ == 0) {
            ended_.notify_one();
        }
    }
}

} // namespace vorna
