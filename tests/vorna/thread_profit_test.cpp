// Whether threads pay, by measured times.
#include <gtest/gtest.h>

#include "vorna/thread_profit.h"

namespace {

struct Pictures {
    double with_threads, alone; // seconds of each
    std::size_t calls;
};

// Draws so many pictures; returns how many of the later half were drawn with threads.
int drawn_with_threads(vorna::Thread_Profit& profit, const Pictures& pictures, int count) {
    int with_threads = 0;
    for (int i = 0; i < count; ++i) {
        with_threads += i >= count / 2 && profit.uses_threads();
        profit.note(profit.uses_threads() ? pictures.with_threads : pictures.alone, profit.uses_threads() ? pictures.calls : 0);
    }
    return with_threads;
}

TEST(Thread_Profit, draws_the_faster_way_and_tries_the_other_one_rarely) {
    constexpr int count = 4000;
    vorna::Thread_Profit profit;
    EXPECT_GE(drawn_with_threads(profit, {2e-3, 3e-3, 20000}, count), count / 2 * 98 / 100);
    EXPECT_LE(drawn_with_threads(profit, {3e-3, 2e-3, 20000}, count), count / 2 * 2 / 100);
    EXPECT_GE(drawn_with_threads(profit, {2e-3, 3e-3, 20000}, count), count / 2 * 98 / 100);
    // A little faster is no reason to change.
    EXPECT_GE(drawn_with_threads(profit, {2e-3, 1.95e-3, 20000}, count), count / 2 * 98 / 100);
    // Short pictures count together.
    EXPECT_LE(drawn_with_threads(profit, {3e-5, 2e-5, 300}, 100 * count), 100 * count / 2 * 2 / 100);
}

TEST(Thread_Profit, tries_nothing_where_calls_are_large) {
    constexpr int count = 4000;
    vorna::Thread_Profit profit;
    EXPECT_EQ(drawn_with_threads(profit, {2e-3, 3e-3, 100}, count), count / 2);
}

} // namespace
