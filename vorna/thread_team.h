// Threads that wait for work between two uses.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace vorna {

// One thread at a time uses a team.
class Thread_Team {
public:
    // Starts its threads when they are first needed.
    explicit Thread_Team(std::size_t size) : size_(size) {}
    Thread_Team(const Thread_Team&) = delete;
    Thread_Team& operator=(const Thread_Team&) = delete;
    ~Thread_Team();

    // Calls work(i) once for every i below the size, work(0) in this thread, and returns when all have returned. Where the system
    // gives fewer threads, the last numbers are left out: work must be shared as it comes. work throws nothing.
    void run(const std::function<void(std::size_t)>& work);

private:
    void start();
    void serve(std::size_t member);

    const std::size_t size_;
    std::mutex mutex_;
    std::condition_variable begun_, ended_;
    const std::function<void(std::size_t)>* work_ = nullptr;
    std::size_t round_ = 0;   // of the work
    std::size_t working_ = 0; // threads that have not ended the round
    bool ends_ = false;
    std::vector<std::thread> threads_;
};

} // namespace vorna
