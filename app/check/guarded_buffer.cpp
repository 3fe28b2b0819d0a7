// Frame buffers at any alignment, between guard bytes.
#include "app/check/guarded_buffer.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "drawing/files/address_sanitizer.h"
#include "host/color.h"

#if defined(HAS_ADDRESS_SANITIZER)
#include <sanitizer/asan_interface.h>
#endif

namespace vorna::app::check {

namespace {

// Wider than two vectors of any processor, so that a stray store hits a guard and no other object.
constexpr std::size_t guard_size = 256;
constexpr std::size_t alignment = 64;

// Differs from byte to byte, so that a guard byte copied over another one is found.
std::uint8_t guard_byte(std::size_t position) {
    return static_cast<std::uint8_t>(0xA5 ^ (position * 29));
}

} // namespace

Guarded_Buffer::Guarded_Buffer(std::int32_t buffer_width, std::int32_t buffer_height, Buffer_Format buffer_format,
                               const Buffer_Layout& layout, Guard_Access access)
    : access_(access) {
    width = buffer_width;
    height = buffer_height;
    format = buffer_format;
    bytes_per_row = width * vorna::bytes_per_pixel(format) + layout.padding;

    const std::size_t rows_size = static_cast<std::size_t>(bytes_per_row) * static_cast<std::size_t>(height);
    memory_.resize(guard_size + alignment + static_cast<std::size_t>(layout.offset) + rows_size + guard_size);
    const std::size_t past_boundary = (reinterpret_cast<std::uintptr_t>(memory_.data()) + guard_size) % alignment;
    first_pixel_ = guard_size + (alignment - past_boundary) + static_cast<std::size_t>(layout.offset);

    for (std::size_t i = 0; i < memory_.size(); ++i) {
        memory_[i] = guard_byte(i);
    }
    for (std::int32_t row = 0; row < height; ++row) {
        row_starts_.push_back(memory_.data() + start_of_row(row));
        std::memset(row_starts_.back(), 0,
                    static_cast<std::size_t>(width) * static_cast<std::size_t>(vorna::bytes_per_pixel(format)));
    }
    rows = row_starts_.data();
    close_guards();
}

std::uint32_t Guarded_Buffer::pixel(std::int32_t column, std::int32_t row) const noexcept {
    const std::uint8_t* const at = rows[row] + column * vorna::bytes_per_pixel(format);
    if (format == Buffer_Format::index8) {
        return *at;
    }
    if (format == Buffer_Format::depth16) {
        std::uint16_t depth = 0;
        std::memcpy(&depth, at, sizeof depth);
        return depth;
    }
    return vorna::word_of({at[0], at[1], at[2], at[3]});
}

void Guarded_Buffer::set_pixel(std::int32_t column, std::int32_t row, std::uint32_t value) noexcept {
    std::uint8_t* const at = rows[row] + column * vorna::bytes_per_pixel(format);
    if (format == Buffer_Format::index8) {
        *at = static_cast<std::uint8_t>(value);
    } else if (format == Buffer_Format::depth16) {
        const auto depth = static_cast<std::uint16_t>(value);
        std::memcpy(at, &depth, sizeof depth);
    } else {
        const VT_RGB32 color = vorna::color_of(value);
        std::memcpy(at, &color, sizeof color);
    }
}

std::string Guarded_Buffer::broken_guard() const {
    open_guards();
    std::string broken = find_broken_guard();
    close_guards();
    return broken;
}

std::string Guarded_Buffer::find_broken_guard() const {
    const auto pixel_bytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(vorna::bytes_per_pixel(format));
    std::size_t position = 0;
    const auto first_broken = [&](std::size_t end) {
        while (position < end && memory_[position] == guard_byte(position)) {
            ++position;
        }
        return position < end;
    };
    const auto message = [](std::size_t distance, const std::string& place) {
        return "guard byte " + std::to_string(distance) + " " + place + " was overwritten";
    };
    if (first_broken(first_pixel_)) {
        return message(first_pixel_ - position, "before the buffer");
    }
    for (std::int32_t row = height - 1; row >= 0; --row) {
        const std::size_t end_of_pixels = start_of_row(row) + pixel_bytes;
        position = end_of_pixels;
        if (first_broken(start_of_row(row) + static_cast<std::size_t>(bytes_per_row))) {
            return message(position - end_of_pixels, "after row " + std::to_string(row));
        }
    }
    const std::size_t end_of_rows = position;
    if (first_broken(memory_.size())) {
        return message(position - end_of_rows, "after the buffer");
    }
    return {};
}

std::size_t Guarded_Buffer::start_of_row(std::int32_t row) const noexcept {
    return first_pixel_ + static_cast<std::size_t>(height - 1 - row) * static_cast<std::size_t>(bytes_per_row);
}

void Guarded_Buffer::renew_padding() noexcept {
    for (std::int32_t row = 0; row < height; ++row) {
        for (std::size_t i =
                 start_of_row(row) + static_cast<std::size_t>(width) * static_cast<std::size_t>(vorna::bytes_per_pixel(format));
             i < start_of_row(row - 1); ++i) {
            memory_[i] = guard_byte(i);
        }
    }
}

void Guarded_Buffer::close_guards() const noexcept {
#if defined(HAS_ADDRESS_SANITIZER)
    if (access_ == Guard_Access::trapped) {
        ASAN_POISON_MEMORY_REGION(memory_.data(), memory_.size());
        ASAN_UNPOISON_MEMORY_REGION(rows[height - 1], start_of_row(-1) - first_pixel_);
    }
#endif
}

void Guarded_Buffer::open_guards() const noexcept {
#if defined(HAS_ADDRESS_SANITIZER)
    ASAN_UNPOISON_MEMORY_REGION(memory_.data(), memory_.size());
#endif
}

Guarded_Buffer* Buffer_Maker::latest(bool depths) const noexcept {
    const auto found = std::find_if(made_.rbegin(), made_.rend(), [depths](const auto& buffer) {
        return (buffer->format == Buffer_Format::depth16) == depths;
    });
    return found == made_.rend() ? nullptr : found->get();
}

void Buffer_Maker::create(void* context, std::int32_t width, std::int32_t height, const Buffer_Format* format,
                          VT_Reference<Frame_Buffer>& buffer) {
    auto& maker = *static_cast<Buffer_Maker*>(context);
    buffer = nullptr;
    if (maker.requests_++ == maker.failing_) {
        throw std::bad_alloc();
    }
    maker.made_.emplace_back(new Guarded_Buffer(width, height, *format, maker.layout_of_(*format), maker.access_));
    buffer = maker.made_.back();
}

} // namespace vorna::app::check
