// The parts of the extension module.
#pragma once

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "python/src/arrays.h"
#include "python/src/stop_check.h"

namespace vorna::python {

void add_images(py::module_& module);
void add_models(py::module_& module);
void add_maps(py::module_& module);
void add_canvas(py::module_& module);

// A failure of the system with a file.
struct File_Error : std::runtime_error {
    File_Error(int wanted, const char* message) : std::runtime_error(message), number(wanted) {}

    int number; // ENOENT and the like
};

// A file that a call reads or writes.
struct Used_File {
    std::string name;
    bool is_written;

    // Implicit: lists of names become lists of files that are read.
    Used_File(std::string file, bool written = false) : name(std::move(file)), is_written(written) {}
};

// Throws a File_Error with the message if the system does not let the program read or write one of the files.
void throw_file_error(const std::vector<Used_File>& files, const char* message);

// Calls work() without the interpreter's lock. Throws what it throws, a File_Error for files that the system refuses, and what a
// signal handler raises meanwhile.
template <class Work> auto unlocked(const std::vector<Used_File>& files, const Work& work) {
    const py::gil_scoped_release released;
    const Signal_Check check;
    try {
        return work();
    } catch (const drawing::Interrupted&) {
        const py::gil_scoped_acquire acquired;
        throw py::error_already_set();
    } catch (const std::exception& error) {
        throw_file_error(files, error.what());
        throw;
    }
}

// Lets one thread at a time in. A signal handler runs within the call that it interrupts and is refused, where waiting would
// never end.
class Turn {
public:
    template <class Work> auto operator()(const Work& work) {
        if (user_ == std::this_thread::get_id()) {
            throw std::runtime_error("expected the end of the call that the signal has interrupted");
        }
        const std::lock_guard lock(mutex_);
        const User user(user_);
        return work();
    }

private:
    using Thread = std::atomic<std::thread::id>;

    struct User {
        explicit User(Thread& thread) : noted(thread) { noted = std::this_thread::get_id(); }
        User(const User&) = delete;
        User& operator=(const User&) = delete;
        ~User() { noted = std::thread::id(); }

        Thread& noted;
    };

    std::mutex mutex_;
    Thread user_;
};

} // namespace vorna::python
