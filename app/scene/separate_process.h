// Work whose faults must not take the command along: readers of foreign libraries.
#pragma once

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace app::scene {

// Bytes on their way from one process to another. Throws Broken_Off when the other side is gone.
class Process_Pipe {
public:
    explicit Process_Pipe(int file) noexcept : file_(file) {}

    void write(const void* bytes, std::size_t count);
    void read(void* bytes, std::size_t count);

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
    int file_;
};

struct Broken_Off : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Runs `work` in a copy of this process, which may take so many bytes of memory, and `take` here with what it writes. Throws what
// `take` throws; Broken_Off that says how the copy came to its end, when that was not by returning from `work`.
void run_apart(std::size_t memory, const std::function<void(Process_Pipe&)>& work,
               const std::function<void(Process_Pipe&)>& take);

} // namespace app::scene
