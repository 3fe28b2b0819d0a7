// VT_Shared_Image.
#include <algorithm>
#include <cstring>

#include "host/frame_buffer.h"

namespace {

std::size_t size_of(const VT_Shared_Image& image) {
    return static_cast<std::size_t>(std::max(image.height(), 0)) * static_cast<std::size_t>(std::max(image.row_bytes(), 0));
}

} // namespace

VT_Shared_Image::VT_Shared_Image(std::int32_t width, std::int32_t height, Buffer_Format format, std::int32_t row_bytes,
                                 std::uint8_t* data, bool copy, bool bottom_up)
    : width_(width), height_(height), format_(format), row_bytes_(row_bytes), bottom_up_(bottom_up), data_(data) {
    if (!data || copy) {
        owned_ = std::make_unique<std::uint8_t[]>(size_of(*this));
        data_ = owned_.get();
    }
    if (data && copy) {
        std::memcpy(data_, data, size_of(*this));
    }
}

// A copy owns its pixels: the memory that the original refers to may be freed before the copy.
VT_Shared_Image::VT_Shared_Image(const VT_Shared_Image& other)
    : VT_Counted(other), width_(other.width_), height_(other.height_), format_(other.format_), row_bytes_(other.row_bytes_),
      bottom_up_(other.bottom_up_), owned_(std::make_unique<std::uint8_t[]>(size_of(other))), data_(owned_.get()) {
    std::memcpy(data_, other.data_, size_of(other));
}

VT_Shared_Image::~VT_Shared_Image() = default;
