// A replay that draws some rows of the window, and access to its pixels.
#include "drawing/recording/row_replay.h"

#include <cstring>

#include "drawing/recording/sparse_buffer.h"
#include "vorna/drawn_rows.h"

namespace vorna::drawing::recording {

namespace {

constexpr const char* scissor_rows = "Scissor Rows";

template <class Pixel> Pixel load(const Frame_Buffer& buffer, VT_Int_Pair place) noexcept {
    Pixel pixel;
    std::memcpy(&pixel, buffer.rows[place.y] + static_cast<std::size_t>(place.x) * sizeof pixel, sizeof pixel);
    return pixel;
}

template <class Pixel> void store(const Frame_Buffer& buffer, VT_Int_Pair place, Pixel pixel) noexcept {
    std::memcpy(buffer.rows[place.y] + static_cast<std::size_t>(place.x) * sizeof pixel, &pixel, sizeof pixel);
}

bool is_in(const Frame_Buffer& buffer, VT_Int_Pair place) noexcept {
    return place.x < buffer.width && place.y < buffer.height;
}

} // namespace

Row_Replay::Row_Replay(const Recording& recording, const Module_Choice& module, const Replay_Settings& settings,
                       std::int32_t first_row, std::int32_t last_row)
    : rows_{first_row, last_row}, session_(module), replayer_(recording, session_, settings), recording_(recording) {
    VT_Renderer_Data& renderer = session_.renderer();
    renderer.buffer_creation = sparse_buffer_creation();
    renderer.requested_table.add(VT_Option(scissor_rows, 0, VT_Pointer(nullptr)));
}

void Row_Replay::begin() {
    replayer_.begin();
    adopt_buffers();
}

void Row_Replay::make(std::size_t call) {
    replayer_.make(call);
    if (std::holds_alternative<Establish>(recording_.calls[call].arguments)) {
        adopt_buffers();
    }
}

void Row_Replay::adopt_buffers() {
    session_.forbid_depth_blocks(); // set() sets depths
    color_ = &session_.color_buffer();
    depth_ = session_.has_depth_buffer() ? &session_.canvas().depth_buffer() : nullptr;
    const VT_Option* const option = session_.renderer().current_table.find(scissor_rows);
    if (const auto set_rows = option ? option->as_setter<VT_Int_Setter>() : nullptr) {
        set_rows(session_.renderer(), rows_);
        note_drawn_rows(session_.renderer(), rows_[0], rows_[1]);
    }
}

bool Row_Replay::has_indices_in_colors() noexcept {
    return color_->format == Buffer_Format::rgb32 && session_.renderer().current_renderer_options().color_system() != 1;
}

Pixel_Value Row_Replay::value(VT_Int_Pair place) const noexcept {
    Pixel_Value value;
    if (!is_in(*color_, place)) {
        return value;
    }
    const bool is_indexed = color_->format == Buffer_Format::index8;
    value.kind = is_indexed ? Pixel_Value::Kind::index : Pixel_Value::Kind::color;
    value.color = is_indexed ? load<std::uint8_t>(*color_, place) : word_of(load<VT_RGB32>(*color_, place));
    value.has_depth = depth_ != nullptr;
    value.depth = depth_ ? load<std::uint16_t>(*depth_, place) : std::uint16_t{0};
    return value;
}

void Row_Replay::set(VT_Int_Pair place, const Pixel_Value& value) noexcept {
    if (!is_in(*color_, place)) {
        return;
    }
    if (color_->format == Buffer_Format::index8) {
        store(*color_, place, static_cast<std::uint8_t>(value.color));
    } else {
        store(*color_, place, color_of(value.color));
    }
    if (depth_) {
        store(*depth_, place, value.depth);
    }
}

} // namespace vorna::drawing::recording
