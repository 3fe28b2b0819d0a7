// Shapes as bytes, on their way between two processes.
#pragma once

#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

class Shape_Packer {
public:
    template <class Number> void add(Number number) {
        static_assert(std::is_trivially_copyable_v<Number>);
        bytes_.append(reinterpret_cast<const char*>(&number), sizeof number);
    }
    void add(const std::string& text);
    void add(const Path& path);
    void add(const Value& value);
    void add(const Shape& shape);
    void add(const Layer_Facts& layer);

    const std::string& bytes() const noexcept { return bytes_; }

private:
    std::string bytes_;
};

// Every method throws Map_Error when the bytes end too early or are not what a packer writes.
class Shape_Unpacker {
public:
    // file: for messages.
    Shape_Unpacker(const std::string& file, std::string_view bytes) : file_(file), bytes_(bytes) {}

    bool at_end() const noexcept { return bytes_.empty(); }
    Shape shape();
    Layer_Facts layer();
    template <class Number> Number number() {
        static_assert(std::is_trivially_copyable_v<Number>);
        Number number;
        std::memcpy(&number, take(sizeof number).data(), sizeof number);
        return number;
    }

private:
    std::string_view take(std::size_t count);
    // A number of elements of which each takes `size` bytes at least.
    std::size_t count(std::size_t size);
    std::string text();
    Path path();
    Value value();

    const std::string& file_;
    std::string_view bytes_;
};

} // namespace vorna::drawing::map
