// Threads that help the one that starts them.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "drawing/files/interruption.h"
#include "drawing/files/thread_pool.h"

namespace vorna::drawing {

// At least 1.
inline unsigned processor_count() noexcept {
    return std::max(1U, std::thread::hardware_concurrency());
}

// Nanoseconds to start a thread and wait for its end: the least of a few that are started when it is first asked for.
inline double thread_cost() {
    static const double cost = [] {
        using Clock = std::chrono::steady_clock;
        double least = 1e6;
        try {
            for (int i = 0; i < 4; ++i) {
                const auto start = Clock::now();
                std::jthread([] {}).join();
                least = std::min(least, std::chrono::duration<double, std::nano>(Clock::now() - start).count());
            }
        } catch (const std::system_error&) {
        }
        return least;
    }();
    return cost;
}

// How many of the threads pay for their start, where one thread takes so many nanoseconds. At least 1.
inline unsigned threads_worth(double nanoseconds, unsigned threads) {
    constexpr double least_gain = 4; // of the time that starting it takes
    if (threads <= 1 || nanoseconds < 1e4) {
        return 1;
    }
    return static_cast<unsigned>(std::clamp(nanoseconds / (least_gain * thread_cost()), 1.0, static_cast<double>(threads)));
}

// Calls work(i) for every i below count, 0 in this thread and the others in threads of the pool in use or, without one, of their
// own, and returns when all calls have returned. Calls are left out where the system gives no more threads, and where a thread
// of the pool comes when the call of this thread has returned: each call must do all that it finds to do. Only the call of this
// thread may throw.
template <class Work> void run_on_threads(std::size_t count, const Work& work) {
    if (Thread_Pool* const pool = count > 1 ? Thread_Pool::in_use() : nullptr) {
        pool->run(count, std::cref(work));
        return;
    }
    std::vector<std::jthread> others;
    try {
        for (std::size_t i = 1; i < count; ++i) {
            others.emplace_back([&work, i] { work(i); });
        }
    } catch (const std::system_error&) {
    }
    work(std::size_t{0});
}

// Calls work(task, thread) for every task below count; a thread takes one after the other. thread: below threads. Throws what a
// task throws, and Interrupted; the tasks that have not begun are left out then.
template <class Work> void share_tasks(std::size_t count, std::size_t threads, const Work& work) {
    std::atomic<std::size_t> next{0};
    std::mutex mutex;
    std::exception_ptr failure;
    run_on_threads(std::min(threads, count), [&](std::size_t thread) {
        try {
            for (std::size_t task = next++; task < count; task = next++) {
                Interruption::check();
                work(task, thread);
            }
        } catch (...) {
            const std::lock_guard lock(mutex);
            failure = std::current_exception();
            next = count;
        }
    });
    if (failure) {
        std::rethrow_exception(failure);
    }
}

// How many parts of at least so many elements are made of a list, so that threads which meet harder parts take fewer of them.
inline std::size_t part_count(std::size_t count, std::size_t threads, std::size_t least) {
    return threads <= 1 ? 1 : std::clamp<std::size_t>(count / least, 1, 8 * threads);
}

// Calls work(first, end) for parts of [0, count) that cover it. A thread costs as much time as some thousand elements do.
template <class Work> void share_range(std::size_t count, std::size_t threads, const Work& work) {
    constexpr std::size_t least = 4096;
    const std::size_t parts = part_count(count, threads, least);
    share_tasks(parts, threads, [&](std::size_t part, std::size_t) { work(count * part / parts, count * (part + 1) / parts); });
}

// Calls make(task, place) for every task below count on several threads, and join(task, place) in the order of the tasks, one at
// a time. Of two tasks that are under way at once the places differ; they are below places_in_order(threads). Ends early when
// join returns false. Throws as share_tasks does.
inline std::size_t places_in_order(std::size_t threads) {
    return threads <= 1 ? 1 : 2 * threads;
}

template <class Make, class Join>
void share_in_order(std::size_t count, std::size_t threads, const Make& make, const Join& join) {
    const std::size_t places = places_in_order(threads);
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<char> is_made(places);
    std::size_t next_made = 0, next_joined = 0;
    bool is_joining = false, ends = false;
    std::exception_ptr failure;
    run_on_threads(std::min(threads, count), [&](std::size_t) {
        std::unique_lock lock(mutex);
        try {
            while (!ends && next_joined < count) {
                if (!is_joining && is_made[next_joined % places]) {
                    is_joining = true;
                    lock.unlock();
                    const bool goes_on = join(next_joined, next_joined % places);
                    lock.lock();
                    is_joining = false;
                    is_made[next_joined++ % places] = false;
                    ends = ends || !goes_on;
                } else if (next_made < std::min(count, next_joined + places)) {
                    const std::size_t task = next_made++;
                    lock.unlock();
                    Interruption::check();
                    make(task, task % places);
                    lock.lock();
                    is_made[task % places] = true;
                } else {
                    changed.wait(lock);
                    continue;
                }
                changed.notify_all();
            }
        } catch (...) {
            if (!lock.owns_lock()) {
                lock.lock();
            }
            failure = std::current_exception();
            ends = true;
            changed.notify_all();
        }
    });
    if (failure) {
        std::rethrow_exception(failure);
    }
}

} // namespace vorna::drawing
