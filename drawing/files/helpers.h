// Threads that help the one that starts them.
#pragma once

#include <cstddef>
#include <system_error>
#include <thread>
#include <vector>

namespace vorna::drawing {

// Calls work(i) for every i below count, 0 in this thread and the others in threads of their own, and returns when all have
// returned. Where the system gives no more threads those of the first ones do without the rest: work must be shared as it comes.
template <class Work> void run_on_threads(std::size_t count, const Work& work) {
    std::vector<std::jthread> others;
    try {
        for (std::size_t i = 1; i < count; ++i) {
            others.emplace_back([&work, i] { work(i); });
        }
    } catch (const std::system_error&) {
    }
    work(std::size_t{0});
}

} // namespace vorna::drawing
