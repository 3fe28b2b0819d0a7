// Frame buffers at any alignment, between guard bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "host/frame_buffer.h"
#include "host/renderer_data.h"

namespace vorna::app::check {

// Where the rows of a buffer lie in memory.
struct Buffer_Layout {
    std::int32_t offset = 0;  // bytes from a 64-byte boundary to the first pixel of the highest row
    std::int32_t padding = 0; // bytes after the last pixel of each row
};

// Whether the address sanitizer reports accesses to the guards (trapped) or not (open).
enum class Guard_Access { trapped, open };

// Every byte that is not part of a pixel is a guard: before, after and between the rows. Pixels start as zeros.
class Guarded_Buffer final : public Frame_Buffer {
public:
    Guarded_Buffer(std::int32_t buffer_width, std::int32_t buffer_height, Buffer_Format buffer_format,
                   const Buffer_Layout& layout, Guard_Access access = Guard_Access::trapped);
    ~Guarded_Buffer() override { open_guards(); }

    // A pixel as one number: palette index, colour word or depth.
    std::uint32_t pixel(std::int32_t column, std::int32_t row) const noexcept;
    void set_pixel(std::int32_t column, std::int32_t row, std::uint32_t value) noexcept;

    // Names a guard byte that has changed; empty when all are intact.
    std::string broken_guard() const;
    // Restores the guards between rows, for calls that may fill rows of full width as one block, padding included.
    void renew_padding() noexcept;

private:
    std::size_t start_of_row(std::int32_t row) const noexcept;
    void close_guards() const noexcept;
    void open_guards() const noexcept;
    std::string find_broken_guard() const;

    [[maybe_unused]] Guard_Access access_; // read under the address sanitizer only
    std::vector<std::uint8_t> memory_;
    std::size_t first_pixel_;
    std::vector<std::uint8_t*> row_starts_;
};

// Creates guarded buffers for a renderer and holds them. layout_of returns the layout for a format.
class Buffer_Maker {
public:
    using Layout_Of = std::function<Buffer_Layout(Buffer_Format)>;
    Buffer_Maker(Layout_Of layout_of, Guard_Access access) : layout_of_(std::move(layout_of)), access_(access) {}
    Buffer_Maker(const Buffer_Maker&) = delete;
    Buffer_Maker& operator=(const Buffer_Maker&) = delete;

    VT_Buffer_Creation callback() noexcept { return {create, this}; }
    const std::vector<VT_Reference<Guarded_Buffer>>& made() const noexcept { return made_; }
    // The latest colour or depth buffer; null when none was made.
    Guarded_Buffer* latest(bool depths) const noexcept;
    // The number of the request that throws std::bad_alloc; -1 = none.
    void fail_at(std::ptrdiff_t request) noexcept { failing_ = request; }

private:
    static void create(void* context, std::int32_t width, std::int32_t height, const Buffer_Format* format,
                       VT_Reference<Frame_Buffer>& buffer);

    Layout_Of layout_of_;
    Guard_Access access_;
    std::ptrdiff_t requests_ = 0, failing_ = -1;
    std::vector<VT_Reference<Guarded_Buffer>> made_;
};

} // namespace vorna::app::check
