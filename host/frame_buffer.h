// Rasters shared between host, application and renderer.
#pragma once

#include <cstdint>
#include <memory>

#include "host/export.h"
#include "host/geometry.h"
#include "host/object.h"

class VT_Contour_Set;

enum class Buffer_Format : std::int32_t {
    index8 = 1,             // one palette index a pixel
    rgb32 = 2,              // one VT_RGB32 a pixel
    depth16 = 3,            // unsigned 16-bit depth, smaller is nearer
    whatever_is_there = 8,  // in requests: the format that the buffer has
    presentation_rgb32 = 9, // an image made for presentation, VT_RGB32 pixels
};

namespace vorna {

// 0 = not known.
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

// A raster whose rows form one block with the highest row first: rows[r + 1] = rows[r] - bytes_per_row.
class VORNA_API Frame_Buffer : public VT_Counted {
public:
    VT_Counted* clone() const override { return nullptr; }

    std::uint8_t* const* rows = nullptr; // start of row r, r counted upwards
    std::int32_t width = 0;              // pixels
    std::int32_t height = 0;             // rows
    std::int32_t bytes_per_row = 0;      // distance of adjacent rows, at least width * bytes a pixel
    Buffer_Format format = Buffer_Format::rgb32;

protected:
    Frame_Buffer() = default;
};

namespace vorna {

// The most columns and the most rows of a buffer that the host makes.
inline constexpr std::int32_t largest_buffer_side = 16384;

// A zero-filled buffer of the host's own: one block, rows aligned to 64 bytes and an odd multiple of 64 bytes apart.
// Throws std::bad_alloc, and std::invalid_argument for a width or height outside 1 to 16384 or a format without pixels.
VORNA_API VT_Reference<Frame_Buffer> make_frame_buffer(std::int32_t width, std::int32_t height, Buffer_Format format);

} // namespace vorna

// A window-sized mask of one bit a pixel, set where a clip region excludes the pixel. The most significant bit of a byte
// is its leftmost pixel. Masks hang in a list that their owner links.
class VORNA_API Frame_Buffer_Mask {
public:
    Frame_Buffer_Mask();
    Frame_Buffer_Mask(const Frame_Buffer_Mask&) = delete;
    Frame_Buffer_Mask& operator=(const Frame_Buffer_Mask&) = delete;
    virtual ~Frame_Buffer_Mask();

    // Sizes the mask for a window.
    void establish_configuration(std::int32_t width, std::int32_t height, std::int32_t origin_x, std::int32_t origin_y);
    // Clears the mask, sets the bits of the pixels outside the contours, and keeps their stamp as the key.
    void clear_and_rasterize_mask(const VT_Contour_Set& contours);

    // Start of mask row r, r counted upwards.
    const std::uint8_t* row(std::int32_t r) const noexcept;
    // The starts of all rows. From any pixel's byte on, four bytes can be read; bits beyond the window mean nothing.
    const std::uint8_t* const* rows() const noexcept { return raster_->rows; }
    // Stamp of the contours that the mask was made of.
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

// An image that host and renderer pass to each other. Rows follow each other in memory, row_bytes apart.
class VORNA_API VT_Shared_Image final : public VT_Counted {
public:
    // data: null = the image owns zero-filled memory of its own; copy: the image copies what data points to instead of
    // borrowing it; bottom_up: the first row in memory is the lowest.
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
