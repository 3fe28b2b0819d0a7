// The buffer-level actions: painting the window, clearing, writing and reading back.
#include "renderer/core/picture_cycle.h"

#include <algorithm>
#include <cstring>

#include "renderer/core/software_z_buffer.h"

namespace krb {

namespace {

// Columns and rows of a buffer, inclusive. Wide enough for any rectangle less any origin.
struct Cells {
    std::int64_t first_column, last_column, first_row, last_row;
};

Cells cells_of(const Software_Z_Buffer& renderer, const VT_Int_Rectangle& rectangle) noexcept {
    const std::int64_t x = renderer.window_origin.x;
    const std::int64_t y = renderer.window_origin.y;
    return {rectangle.left - x, rectangle.right - x, rectangle.bottom - y, rectangle.top - y};
}

template <class Value> bool has_equal_bytes(const Value& value) noexcept {
    std::uint8_t bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    return std::all_of(bytes, bytes + sizeof value, [&](std::uint8_t byte) { return byte == bytes[0]; });
}

// Fills the cells in drawable rows with one value. Whole rows are one block that starts at the highest row, with what lies
// between the rows. Where a value's bytes differ, the first row is written value by value and copied from there.
template <class Value> void fill_cells(const Software_Z_Buffer& renderer, const Frame_Buffer& buffer, Cells cells, Value value) {
    cells.first_row = std::max<std::int64_t>(cells.first_row, renderer.target.first_row);
    cells.last_row = std::min<std::int64_t>(cells.last_row, renderer.target.end_row - 1);
    if (cells.first_column > cells.last_column || cells.first_row > cells.last_row) {
        return;
    }
    const bool whole_rows = cells.first_column == 0 && cells.last_column == renderer.window_size.x - 1;
    if (whole_rows && has_equal_bytes(value)) {
        std::uint8_t byte;
        std::memcpy(&byte, &value, 1);
        std::memset(buffer.rows[cells.last_row], byte,
                    static_cast<std::size_t>((cells.last_row - cells.first_row + 1) * buffer.bytes_per_row));
        return;
    }
    const auto offset = static_cast<std::size_t>(cells.first_column) * sizeof value;
    // An application's own buffer may have rows whose length is no multiple of the value's size.
    const bool whole_block = whole_rows && buffer.bytes_per_row % std::int32_t{sizeof value} == 0;
    const auto bytes = whole_block ? static_cast<std::size_t>(buffer.bytes_per_row)
                                   : static_cast<std::size_t>(cells.last_column - cells.first_column + 1) * sizeof value;
    std::uint8_t* const first = buffer.rows[cells.first_row] + offset;
    for (std::size_t i = 0; i < bytes; i += sizeof value) {
        std::memcpy(first + i, &value, sizeof value);
    }
    for (std::int64_t row = cells.first_row + 1; row <= cells.last_row; ++row) {
        std::memcpy(buffer.rows[row] + offset, first, bytes);
    }
}

template <class Value> void draw_window(VT_Renderer_Data& data, const VT_Rendition& rendition, Value value) {
    const Software_Z_Buffer& renderer = renderer_of(data);
    if (!renderer.color_buffer) {
        return;
    }
    const VT_Window_Attributes& window = rendition.window;
    if (window.fill != vorna::face_pattern::solid) {
        VD_Span_DC_Rectangle(data, rendition, window.rectangle.left, window.rectangle.right, window.rectangle.bottom,
                             window.rectangle.top);
        return;
    }
    Cells cells = cells_of(renderer, window.rectangle);
    cells.first_column = std::max<std::int64_t>(cells.first_column, 0);
    cells.last_column = std::min<std::int64_t>(cells.last_column, renderer.window_size.x - 1);
    fill_cells(renderer, *renderer.color_buffer, cells, value);
}

// Copies a rectangle of a buffer's rows into an image of the given format. Sets the image to null when another format is
// requested.
void read_image(const Software_Z_Buffer& renderer, std::uint8_t* const* rows, Buffer_Format format, bool requested,
                const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right, VT_Reference<VT_Shared_Image>& image) {
    const std::int32_t pixel_bytes = format == Buffer_Format::rgb32 ? 4 : format == Buffer_Format::depth16 ? 2 : 1;
    if (!requested || !rows || bottom_right.x < top_left.x || top_left.y < bottom_right.y) {
        image = nullptr;
        return;
    }
    const std::int32_t width = bottom_right.x - top_left.x + 1;
    const std::int32_t height = top_left.y - bottom_right.y + 1;
    if (!image || image->width() != width || image->height() != height || image->format() != format) {
        image = nullptr;
        image = new VT_Shared_Image(width, height, format, pixel_bytes * width, nullptr, false, false);
    }
    image->stamp();
    const std::int64_t column = std::int64_t{top_left.x} - renderer.window_origin.x;
    const std::int32_t top_row = top_left.y - renderer.window_origin.y;
    for (std::int32_t i = 0; i < height; ++i) {
        std::memcpy(image->row(i), rows[top_row - i] + column * pixel_bytes,
                    static_cast<std::size_t>(pixel_bytes) * static_cast<std::size_t>(width));
    }
}

} // namespace

void draw_window_index8(VT_Renderer_Data& data, const VT_Rendition& rendition) {
    draw_window(data, rendition, rendition.window.index);
}

void draw_window_rgb32(VT_Renderer_Data& data, const VT_Rendition& rendition) {
    draw_window(data, rendition, rendition.window.color);
}

void clear_depth_rectangle(VT_Renderer_Data& data, const VT_Rendition& rendition) {
    Software_Z_Buffer& renderer = renderer_of(data);
    if (renderer.depth_buffer) {
        const Cells cells = cells_of(renderer, rendition.window.rectangle);
        fill_cells(renderer, *renderer.depth_buffer, cells, farthest_depth);
        renderer.depth_blocks.raise(cells.first_column, cells.last_column, cells.first_row, cells.last_row);
    }
}

void clear_no_depth(VT_Renderer_Data&, const VT_Rendition&) {
}

void write_depth_rectangle(VT_Renderer_Data& data, const VT_Rendition&, const VT_DCI_Point* top_left,
                           const VT_DCI_Point* bottom_right, std::int32_t stride, const std::uint16_t* depths) {
    Software_Z_Buffer& renderer = renderer_of(data);
    const std::int64_t left = top_left->x;
    const std::int64_t right =
        std::min<std::int64_t>(bottom_right->x, std::int64_t{renderer.window_origin.x} + renderer.window_size.x - 1);
    const std::int64_t bytes = 2 * (right - left) + 2;
    if (!renderer.depth_buffer || bytes < 1) {
        return;
    }
    const std::int64_t column = left - renderer.window_origin.x;
    const auto* source = reinterpret_cast<const std::uint8_t*>(depths);
    for (std::int32_t y = top_left->y; y >= bottom_right->y; --y) {
        std::uint8_t* row = renderer.target.depth_rows[y - renderer.window_origin.y] + 2 * column;
        if (source) {
            std::memcpy(row, source, static_cast<std::size_t>(bytes));
            source += stride;
        } else {
            std::memset(row, 0, static_cast<std::size_t>(bytes));
        }
    }
    const std::int64_t bottom = renderer.window_origin.y;
    renderer.depth_blocks.raise(column, column + (right - left), bottom_right->y - bottom, top_left->y - bottom);
}

void read_depth_image(VT_Renderer_Data& data, const VT_Rendition&, const VT_DCI_Point* top_left, const VT_DCI_Point* bottom_right,
                      const Buffer_Format* format, VT_Reference<VT_Shared_Image>& image) {
    const Software_Z_Buffer& renderer = renderer_of(data);
    const bool fits = *format == Buffer_Format::depth16 || *format == Buffer_Format::whatever_is_there;
    read_image(renderer, renderer.target.depth_rows, Buffer_Format::depth16, fits, *top_left, *bottom_right, image);
}

void read_color_image_index8(VT_Renderer_Data& data, const VT_Rendition&, const VT_DCI_Point* top_left,
                             const VT_DCI_Point* bottom_right, const Buffer_Format* format,
                             VT_Reference<VT_Shared_Image>& image) {
    const Software_Z_Buffer& renderer = renderer_of(data);
    const bool fits = *format == Buffer_Format::index8 || *format == Buffer_Format::whatever_is_there;
    read_image(renderer, renderer.target.color_rows, Buffer_Format::index8, fits, *top_left, *bottom_right, image);
}

void read_color_image_rgb32(VT_Renderer_Data& data, const VT_Rendition&, const VT_DCI_Point* top_left,
                            const VT_DCI_Point* bottom_right, const Buffer_Format* format, VT_Reference<VT_Shared_Image>& image) {
    const Software_Z_Buffer& renderer = renderer_of(data);
    const bool fits = *format == Buffer_Format::rgb32 || *format == Buffer_Format::whatever_is_there ||
                      *format == Buffer_Format::presentation_rgb32;
    read_image(renderer, renderer.target.color_rows, Buffer_Format::rgb32, fits, *top_left, *bottom_right, image);
}

} // namespace krb
