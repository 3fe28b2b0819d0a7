// Work whose faults must not take the command along: readers of foreign libraries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "drawing/files/load_limits.h"

namespace vorna::drawing::model {

// What a copy may take, of memory and of the processor's time, and send. It is waited for ten times as long, at the most.
struct Process_Limits {
    std::size_t bytes;
    unsigned seconds;
};

// For a library that reads files of so many bytes: the memory that is left, besides the addresses in use, and 60 seconds and one
// more for each megabyte.
Process_Limits limits_of_reader(const Load_Limits& limits, std::uintmax_t file_size);

// Bytes on their way from a copy of this process to it. Throws Broken_Off when the other side is gone or sends more than it may.
class Process_Pipe {
public:
    // A file that is open for reading, or -1 with errno.
    using Opener = std::function<int(const std::string&)>;

    // What is read has limits. open: serves what the other side asks for; empty = nothing.
    Process_Pipe(int socket, const Process_Limits& limits, Opener open)
        : socket_(socket), left_(limits.bytes), seconds_(limits.seconds), open_(std::move(open)) {}

    void write(const void* bytes, std::size_t count);
    void read(void* bytes, std::size_t count);
    // Asks the other side, before anything is written. A file of the caller's, or -1 with errno.
    int request_file(const std::string& name);

    template <class Value> void write_value(const Value& value) {
        static_assert(std::is_trivially_copyable_v<Value>);
        write(&value, sizeof value);
    }
    template <class Value> Value read_value() {
        Value value;
        read(&value, sizeof value);
        return value;
    }
    // Strings and vectors.
    template <class List> void write_list(const List& list) {
        write_value(list.size());
        write(list.data(), list.size() * sizeof(typename List::value_type));
    }
    // Memory grows with what arrives, whatever size was announced.
    template <class List> List read_list() {
        constexpr std::size_t part = (std::size_t{1} << 20) / sizeof(typename List::value_type);
        List list;
        for (auto left = read_value<std::size_t>(); left > 0;) {
            const std::size_t count = left < part ? left : part, start = list.size();
            list.resize(start + count);
            read(list.data() + start, count * sizeof(typename List::value_type));
            left -= count;
        }
        return list;
    }

private:
    void send(const void* bytes, std::size_t count);
    void receive(void* bytes, std::size_t count);
    void wait() const;
    void serve_requests();

    int socket_;
    std::size_t left_;
    unsigned seconds_;
    Opener open_;
    bool is_answering_ = false; // no more requests
};

struct Broken_Off : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Runs `work` in a copy of this process and `take` here with what it writes. The copy can do little but compute: it opens nothing
// but what `open` opens for it here, writes nowhere else, and reaches no other process and no network, as far as the system can
// see to that. Nothing is destroyed at its end that `work` has left. Throws what `take` throws; Broken_Off that says how the copy
// came to its end, when that was not by returning from `work`.
void run_apart(const Process_Limits& limits, const Process_Pipe::Opener& open, const std::function<void(Process_Pipe&)>& work,
               const std::function<void(Process_Pipe&)>& take);

} // namespace vorna::drawing::model
