// After which call two recordings draw different pixels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "drawing/recording/document_comparison.h"
#include "drawing/recording/recording.h"
#include "drawing/recording/session.h"

namespace vorna::drawing::recording {

struct Pixel_Difference {
    enum class Kind {
        windows, // of other sizes, places or formats: pixels are not compared
        palettes,
        colors,
        depths,
    };

    std::optional<std::size_t> call; // the call; none = before the first one
    Kind kind = Kind::colors;
    std::int64_t count = 0; // pixels that differ then; of palettes entries
    VT_Int_Pair place;      // device coordinates of the first of them, from the left of the top row; x: of palettes the entry
    std::string first, second;
};

// As a line.
std::string text_of(const Pixel_Difference& difference);

// The replay of one of the two recordings failed.
class Replay_Failure : public std::runtime_error {
public:
    Replay_Failure(bool of_first, const std::string& text) : std::runtime_error(text), is_of_first(of_first) {}
    bool is_of_first;
};

// Replays both side by side. Colours and depths of the whole windows are compared after every call that differs in the documents:
// as long as all that is drawn is the same, equal calls draw the same. None: no pixel differs after any call. Throws
// Replay_Failure.
std::optional<Pixel_Difference> compare_pixels(const Recording& a, const Recording& b, const Document_Difference& documents,
                                               const Module_Choice& module);

} // namespace vorna::drawing::recording
