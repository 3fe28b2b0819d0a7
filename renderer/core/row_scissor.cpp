// Rows of the buffers that may be drawn, of a renderer that shares its buffers with others.
#include "renderer/core/row_scissor.h"

#include <algorithm>

namespace krb {

namespace {

// As rows of the host's buffers are aligned.
constexpr std::size_t row_alignment = 64;

} // namespace

void Scissored_Rows::set(const Frame_Buffer& buffer, std::int32_t first, std::int32_t end) {
    if (own_rows_ != buffer.rows) {
        // Only pixels are drawn there, not what lies between the rows.
        const std::size_t row_bytes =
            static_cast<std::size_t>(buffer.width) * static_cast<std::size_t>(vorna::bytes_per_pixel(buffer.format));
        auto apart = std::make_unique<std::uint8_t[]>(row_bytes + 2 * row_alignment);
        const auto misaligned = reinterpret_cast<std::uintptr_t>(apart.get()) % row_alignment;
        std::uint8_t* const apart_row = apart.get() + (row_alignment - misaligned) % row_alignment;
        rows_ = std::vector<std::uint8_t*>(static_cast<std::size_t>(buffer.height), apart_row);
        apart_row_ = apart_row;
        apart_ = std::move(apart);
        own_rows_ = buffer.rows;
    } else {
        std::fill(rows_.begin() + first_, rows_.begin() + end_, apart_row_);
    }
    std::copy(own_rows_ + first, own_rows_ + end, rows_.begin() + first);
    first_ = first;
    end_ = end;
}

void Scissored_Rows::clear() noexcept {
    own_rows_ = nullptr;
    first_ = end_ = 0;
}

void Row_Scissor::limit(Pixel_Target& target, const Frame_Buffer& color, const Frame_Buffer* depth, std::int32_t first,
                        std::int32_t last) {
    const std::int32_t from = std::clamp(first, 0, target.height);
    const std::int32_t to = last >= target.height ? target.height : std::max(last + 1, from);
    const bool is_whole = from == 0 && to == target.height;
    if (!is_whole) {
        color_.set(color, from, to);
        if (depth) {
            depth_.set(*depth, from, to);
        }
    }
    target.color_rows = is_whole ? color.rows : color_.data();
    target.depth_rows = !depth ? nullptr : is_whole ? depth->rows : depth_.data();
    target.first_row = from;
    target.end_row = to;
}

void Row_Scissor::clear() noexcept {
    color_.clear();
    depth_.clear();
}

} // namespace krb
