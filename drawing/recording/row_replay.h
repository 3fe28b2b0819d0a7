// A replay that draws some rows of the window, and access to its pixels.
#pragma once

#include <cstddef>
#include <cstdint>

#include "drawing/recording/pixel_history.h"
#include "drawing/recording/recording.h"
#include "drawing/recording/replay.h"
#include "drawing/recording/session.h"

namespace vorna::drawing::recording {

// Modules without the option "Scissor Rows" draw all rows.
class Row_Replay {
public:
    // rows: those that are drawn, from the window's lowest, inclusive.
    Row_Replay(const Recording& recording, const Module_Choice& module, const Replay_Settings& settings, std::int32_t first_row,
               std::int32_t last_row);

    void begin();
    void make(std::size_t call);

    Session& session() noexcept { return session_; }
    Replayer& replayer() noexcept { return replayer_; }
    bool has_depth() const noexcept { return depth_ != nullptr; }
    // Whether calls store indices of a byte in a buffer of colours, so that column c changes the pixel of column c / 4. Colour
    // systems other than 0 and 1 keep such a buffer when `establish` finds it.
    bool has_indices_in_colors() noexcept;

    // By column and row from the window's lower left. Nothing is set outside the window, and no depth without a depth buffer.
    Pixel_Value value(VT_Int_Pair place) const noexcept;
    void set(VT_Int_Pair place, const Pixel_Value& value) noexcept;

private:
    void adopt_buffers();

    const std::int32_t rows_[2];
    Session session_;
    Replayer replayer_;
    const Recording& recording_;
    const Frame_Buffer* color_ = nullptr;
    const Frame_Buffer* depth_ = nullptr; // null = none
};

} // namespace vorna::drawing::recording
