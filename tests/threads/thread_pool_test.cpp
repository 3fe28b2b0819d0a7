// Threads that stay for all pieces of work of a job.
#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "drawing/files/helpers.h"

namespace {

using namespace vorna::drawing;

// Every thread takes part, since no call returns before all have begun.
void meet(std::size_t count, std::set<std::thread::id>& threads) {
    std::mutex mutex;
    std::atomic<std::size_t> begun{0};
    run_on_threads(count, [&](std::size_t number) {
        EXPECT_LT(number, count);
        {
            const std::lock_guard lock(mutex);
            threads.insert(std::this_thread::get_id());
        }
        ++begun;
        while (begun < count) {
            std::this_thread::yield();
        }
    });
    EXPECT_EQ(begun, count);
}

TEST(Thread_Pool, keeps_its_threads) {
    Thread_Pool pool;
    const Thread_Pool::Use use(&pool);
    std::set<std::thread::id> threads;
    for (int i = 0; i < 50; ++i) {
        meet(3, threads);
    }
    EXPECT_EQ(threads.size(), 3U);
    threads.clear();
    meet(5, threads);
    meet(2, threads);
    EXPECT_EQ(threads.size(), 5U) << "more threads when they are asked for";
}

TEST(Thread_Pool, does_all_work_that_is_shared) {
    Thread_Pool pool;
    const Thread_Pool::Use use(&pool);
    for (std::size_t count = 0; count < 2000; ++count) {
        std::atomic<std::size_t> sum{0};
        share_tasks(count % 40, 1 + count % 4, [&](std::size_t task, std::size_t thread) {
            EXPECT_LT(thread, 1 + count % 4);
            sum += task + 1;
        });
        ASSERT_EQ(sum, count % 40 * (count % 40 + 1) / 2);
    }
}

// Threads of the pool that work do not wait for others of it.
TEST(Thread_Pool, leaves_work_within_work_to_other_threads) {
    Thread_Pool pool;
    const Thread_Pool::Use use(&pool);
    std::atomic<std::size_t> sum{0};
    share_tasks(20, 2, [&](std::size_t, std::size_t) {
        EXPECT_EQ(Thread_Pool::in_use(), nullptr);
        share_tasks(10, 2, [&](std::size_t task, std::size_t) { sum += task; });
    });
    EXPECT_EQ(sum, 20U * 45);
    EXPECT_EQ(Thread_Pool::in_use(), &pool);
}

TEST(Thread_Pool, ends_the_work_before_it_passes_on_what_a_call_throws) {
    Thread_Pool pool;
    const Thread_Pool::Use use(&pool);
    for (int i = 0; i < 200; ++i) {
        std::atomic<int> running{0};
        const auto fail = [&](std::size_t number) {
            ++running;
            std::this_thread::yield();
            --running;
            if (number == 0) {
                throw std::runtime_error("the first call");
            }
        };
        EXPECT_THROW(run_on_threads(3, fail), std::runtime_error);
        ASSERT_EQ(running, 0);
    }
    std::set<std::thread::id> threads;
    meet(3, threads);
    EXPECT_EQ(threads.size(), 3U);
}

} // namespace
