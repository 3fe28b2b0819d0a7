// Threads that stay for all pieces of work of a job.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <optional>

#include "vorna/thread_team.h"

namespace vorna::drawing {

// Starting a thread takes about as long as preparing a small model on it. The threads of a pool start when they are first needed
// and sleep between the pieces of work. A pool serves one thread at a time.
class Thread_Pool {
public:
    using Work = std::function<void(std::size_t)>;

    Thread_Pool() = default;
    Thread_Pool(const Thread_Pool&) = delete;
    Thread_Pool& operator=(const Thread_Pool&) = delete;

    // While it exists, run_on_threads takes the threads of the pool for calls of this thread; null = of none.
    class Use {
    public:
        explicit Use(Thread_Pool* pool) noexcept;
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        ~Use();

    private:
        Thread_Pool* const before_;
    };
    // That of this thread; null = none.
    static Thread_Pool* in_use() noexcept;

    // As run_on_threads.
    void run(std::size_t count, const Work& work);

private:
    bool run_next();

    const Work* work_ = nullptr;
    std::atomic<std::size_t> not_begun_{0};  // calls that wait for a thread
    std::atomic<std::size_t> not_ended_{0};  // these and those that run
    std::optional<vorna::Thread_Team> team_; // the last member: its threads end before what they use
};

} // namespace vorna::drawing
