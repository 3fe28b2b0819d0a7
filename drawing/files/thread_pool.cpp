// Threads that stay for all pieces of work of a job.
#include "drawing/files/thread_pool.h"

#include <utility>

namespace vorna::drawing {
namespace {

thread_local Thread_Pool* pool_of_thread = nullptr;

} // namespace

Thread_Pool::Use::Use(Thread_Pool* pool) noexcept : before_(std::exchange(pool_of_thread, pool)) {
}

Thread_Pool::Use::~Use() {
    pool_of_thread = before_;
}

Thread_Pool* Thread_Pool::in_use() noexcept {
    return pool_of_thread;
}

void Thread_Pool::run(std::size_t count, const Work& work) {
    if (!team_ || team_->size() < count) {
        team_.emplace(count, [this](std::size_t member) { return member > 0 && run_next(); });
    }
    work_ = &work;
    not_ended_ = count - 1;
    not_begun_ = count - 1;
    // Also when the call in this thread throws.
    struct End {
        Thread_Pool& pool;
        ~End() {
            pool.not_ended_ -= pool.not_begun_.exchange(0);
            pool.team_->work_until([this] { return pool.not_ended_ == 0; });
        }
    } const end{*this};
    team_->wake();
    const Use none(nullptr); // the threads are taken
    work(0);
}

// Whether a call was waiting.
bool Thread_Pool::run_next() {
    std::size_t number = not_begun_;
    while (number > 0 && !not_begun_.compare_exchange_weak(number, number - 1)) {
    }
    if (number == 0) {
        return false;
    }
    (*work_)(number);
    --not_ended_;
    return true;
}

} // namespace vorna::drawing
