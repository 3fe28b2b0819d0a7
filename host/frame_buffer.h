// Buffers, masks and images that host, application and renderer share.
#pragma once

#include <cstdint>
#include <memory>

#include "host/export.h"
#include "host/geometry.h"
#include "host/object.h"

class VT_Contour_Set;

enum class Buffer_Format : std::int32_t {
    index8 = 1,             // palette indices, 1 byte
    rgb32 = 2,              // VT_RGB32, 4 bytes
    depth16 = 3,            // unsigned 16-bit depths, smaller ones are nearer
    whatever_is_there = 8,  // in requests: the format of the buffer
    presentation_rgb32 = 9, // VT_RGB32, of an image that is to cover the window
};

namespace vorna {

// 0 for formats without pixels.
constexpr std::int32_t bytes_per_pixel(Buffer_Format format) noexcept {
    switch (format) {
    case Buffer_Format::index8:
        return 1;
    case Buffer_Format::depth16:
        return 2;
    case Buffer_Format::rgb32:
    case Buffer_Format::presentation_rgb32:
        return 4;
    default:
        return 0;
    }
}

} // namespace vorna

// A buffer whose rows form one block of memory with the highest row first: rows[r + 1] = rows[r] - bytes_per_row.
class VORNA_API Frame_Buffer : public VT_Counted {
public:
    VT_Counted* clone() const override { return nullptr; }

    std::uint8_t* const* rows = nullptr; // start of row r, r counted upwards
    std::int32_t width = 0;              // pixels
    std::int32_t height = 0;             // rows
    std::int32_t bytes_per_row = 0;      // distance between adjacent rows, at least width * bytes_per_pixel(format)
    Buffer_Format format = Buffer_Format::rgb32;

protected:
    Frame_Buffer() = default;
};

namespace vorna {

// The largest width and height of buffers that the host makes, in pixels.
inline constexpr std::int32_t largest_buffer_side = 16384;

// Makes a zero-filled buffer whose rows are aligned to 64 bytes and an odd multiple of 64 bytes apart.
// Throws std::bad_alloc, and std::invalid_argument for a width or height outside [1, 16384] or a format without pixels.
VORNA_API VT_Reference<Frame_Buffer> make_frame_buffer(std::int32_t width, std::int32_t height, Buffer_Format format);

} // namespace vorna

// A mask of the window with one bit for each pixel, set where a clip region excludes the pixel. The most significant bit of a
// byte is its leftmost pixel. The owner links masks to a list by `older` and `newer`.
class VORNA_API Frame_Buffer_Mask {
public:
    Frame_Buffer_Mask();
    Frame_Buffer_Mask(const Frame_Buffer_Mask&) = delete;
    Frame_Buffer_Mask& operator=(const Frame_Buffer_Mask&) = delete;
    virtual ~Frame_Buffer_Mask();

    // Sizes the mask for a window. Throws std::bad_alloc.
    void establish_configuration(std::int32_t width, std::int32_t height, std::int32_t origin_x, std::int32_t origin_y);
    // Sets the bits of the pixels whose centres lie outside the contours, clears the others, and keeps the serial number of the
    // contours as the key.
    void clear_and_rasterize_mask(const VT_Contour_Set& contours);

    // Row r of the mask, counted upwards.
    const std::uint8_t* row(std::int32_t r) const noexcept;
    // All rows, or null for a window without pixels. Four bytes can be read from the byte of any pixel on; bits beyond the window
    // are unspecified.
    const std::uint8_t* const* rows() const noexcept { return raster_ ? raster_->rows : nullptr; }
    // The serial number of the contours that the mask was made from.
    std::uint32_t key() const noexcept { return key_; }
    // Whether the mask was made for this window.
    bool is_for(VT_Int_Pair size, VT_Int_Pair origin) const noexcept { return size_ == size && origin_ == origin; }

    Frame_Buffer_Mask* older = nullptr;
    Frame_Buffer_Mask* newer = nullptr;

private:
    VT_Reference<Frame_Buffer> raster_;
    VT_Int_Pair size_;
    VT_Int_Pair origin_;
    std::uint32_t key_ = 0;
};

// An image that host and renderer pass to each other. Its rows lie in memory row_bytes apart.
class VORNA_API VT_Shared_Image final : public VT_Counted {
public:
    // data: the pixels, or null for zeros. The image owns a copy of them when copy is set or data is null; otherwise data must
    // outlive it. bottom_up: the first row in memory is the lowest. Throws std::bad_alloc.
    VT_Shared_Image(std::int32_t width, std::int32_t height, Buffer_Format format, std::int32_t row_bytes, std::uint8_t* data,
                    bool copy, bool bottom_up);
    VT_Shared_Image(const VT_Shared_Image& other);
    VT_Shared_Image& operator=(const VT_Shared_Image&) = delete;
    ~VT_Shared_Image() override;
    VT_Counted* clone() const override { return new VT_Shared_Image(*this); }

    std::int32_t width() const noexcept { return width_; }
    std::int32_t height() const noexcept { return height_; }
    Buffer_Format format() const noexcept { return format_; }
    std::int32_t row_bytes() const noexcept { return row_bytes_; }
    bool bottom_up() const noexcept { return bottom_up_; }
    // Row r in the order of memory.
    std::uint8_t* row(std::int32_t r) noexcept { return data_ + std::int64_t{r} * row_bytes_; }
    const std::uint8_t* row(std::int32_t r) const noexcept { return data_ + std::int64_t{r} * row_bytes_; }

private:
    std::int32_t width_, height_;
    Buffer_Format format_;
    std::int32_t row_bytes_;
    bool bottom_up_;
    std::unique_ptr<std::uint8_t[]> owned_;
    std::uint8_t* data_;
};
