// A recording that is drawn call by call, forwards and backwards.
//
// States of the buffers are kept at intervals, so that a position is reached from the nearest one before it. How far apart they
// lie follows from the time that the calls between them take and from the memory for them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/image/image_file.h"
#include "drawing/recording/recording.h"
#include "drawing/recording/replay.h"
#include "drawing/recording/session.h"

namespace vorna::drawing::recording {

struct Steps_Settings {
    Replay_Settings replay;                          // those that hold for single calls
    std::uint64_t memory = std::uint64_t{256} << 20; // bytes of kept states; 0 = every way back begins at the first call
    double interval = 8000;                          // microseconds of drawing between kept states; more where memory is short
    bool has_heat = false;                           // counts and costs for each pixel; calls that draw are made twice
    std::string name;                                // of the recording, in messages
    Load_Limits* limits = nullptr;                   // memory of copies and counts, besides the states; null = any
};

// The pixels that the last call has changed.
struct Step_Change {
    enum Bit : std::uint8_t { color = 1, depth = 2 };

    VT_Int_Rectangle bounds{0, -1, 0, -1}; // device pixels; empty = none has changed
    std::vector<std::uint8_t> pixels;      // bits for each pixel of the bounds, the top row first
    std::int64_t colors = 0, depths = 0;   // numbers of pixels
};

// What all calls so far did at the pixels of the window, the top row first.
struct Step_Heat {
    std::vector<std::uint16_t> draws; // calls that stored a colour, the same one as before included; 65535 = so many or more
    std::vector<float> costs;         // microseconds: the time of a call is shared by the pixels that it drew
};

class Recording_Steps {
public:
    // Sets the renderer up; no call is made yet. The recording must outlive it. Throws as `replay` does, and Load_Error.
    Recording_Steps(const Recording& recording, const Module_Choice& module, const Steps_Settings& settings = {});
    Recording_Steps(const Recording_Steps&) = delete;
    Recording_Steps& operator=(const Recording_Steps&) = delete;
    ~Recording_Steps();

    // The number of calls, and of those that have been made: position p shows what calls 0 to p - 1 have drawn.
    std::size_t calls() const noexcept;
    std::size_t position() const noexcept;
    // Throws likewise for a call that cannot be drawn; then the position is the one before that call.
    void go_to(std::size_t position);

    // At the current position. Rasters are those of the window and hold until the next go_to; the depths have no top without a
    // depth buffer.
    Raster colors() const;
    Raster depths() const;
    const VT_Palette& palette() const;
    VT_Int_Rectangle window() const; // device pixels
    // Of call position() - 1; without any pixel at position 0.
    const Step_Change& change() const noexcept;
    // 1 for each pixel of the window that the hard clip and the complex clip of that call let it draw, else 0; the top row first.
    std::vector<std::uint8_t> clip() const;
    // Null unless the settings ask for it.
    const Step_Heat* heat() const noexcept;

    // The fastest time, in microseconds, in which the call has been made here; none = not yet.
    std::optional<double> microseconds(std::size_t call) const noexcept;
    std::uint64_t memory_used() const noexcept; // by kept states

private:
    class Implementation;

    std::unique_ptr<Implementation> steps_;
};

} // namespace vorna::drawing::recording
