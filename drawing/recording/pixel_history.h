// What happened at single pixels of a replay: the calls that drew there, and those that were refused, with the rules that refused
// them.
//
// Only calls whose area holds a watched pixel are made, and the option "Scissor Rows" keeps them to the rows of these pixels.
// That changes no pixel there: what a call does to a pixel depends on the pixel's own colour and depth alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/recording/call_areas.h"
#include "drawing/recording/recording.h"
#include "drawing/recording/replay.h"
#include "drawing/recording/session.h"

namespace vorna::drawing::recording {

// What the buffers hold of a pixel.
struct Pixel_Value {
    enum class Kind : std::uint8_t { none, index, color }; // none: the pixel is not in the window

    std::uint32_t color = 0; // an index, or a pixel as one word
    std::uint16_t depth = 0;
    Kind kind = Kind::none;
    bool has_depth = false;

    friend bool operator==(const Pixel_Value&, const Pixel_Value&) = default;
};

enum class Outcome : std::uint8_t {
    drawn,   // stored, whatever was there
    blended, // the new colour depends on the one that was there
    refused, // inside the shape, but a rule kept the pixel as it was
    outside, // beside the shape, though in the area of the call
    renewed, // the buffers were made anew
};

// What keeps a pixel of a shape from being drawn.
enum class Rule : std::uint8_t {
    clip,    // the hard clip
    mask,    // the complex clip
    pattern, // a gap of the face pattern
    depth,   // something nearer, or farther, as the test goes
    alpha,   // too little of it to change the pixel
    mode,    // the drawing mode: merging changes nothing
};
inline constexpr int rule_count = 6;
inline constexpr std::string_view rule_names[rule_count] = {"clip", "mask", "pattern", "depth", "alpha", "mode"};

// A set of rules.
class Rules {
public:
    constexpr void add(Rule rule) noexcept { bits_ |= bit(rule); }
    constexpr bool has(Rule rule) const noexcept { return (bits_ & bit(rule)) != 0; }

    friend bool operator==(const Rules&, const Rules&) = default;

private:
    static constexpr std::uint8_t bit(Rule rule) noexcept { return static_cast<std::uint8_t>(1U << static_cast<unsigned>(rule)); }

    std::uint8_t bits_ = 0;
};

inline constexpr std::size_t no_call = std::numeric_limits<std::size_t>::max();

struct Pixel_Event {
    std::size_t call = 0;
    Outcome outcome = Outcome::outside;
    bool writes_color = false;
    Rules rules;                   // that refused the pixel, each of them alone
    std::uint16_t shape_depth = 0; // of what the depth rule refused
    Pixel_Value before, after;
    std::size_t drawn_over = no_call; // the next call that stores a colour, of events that write one
};

struct Pixel_History {
    VT_Int_Pair pixel;       // column and row of the image, from its top left
    VT_Int_Pair device;      // the same in device coordinates, at the end
    Pixel_Value first, last; // before all calls and after them
    std::vector<Pixel_Event> events;
    std::size_t outside = 0; // calls whose area holds the pixel, but not their shapes
};

// Columns and rows of the image.
struct Image_Area {
    VT_Int_Pair corner, size; // the top left pixel
};

// An area that is larger is not answered for.
inline constexpr std::int64_t most_area_pixels = std::int64_t{1} << 22;

// What a call did in an area: numbers of pixels.
struct Area_Event {
    std::size_t call = 0;
    std::int64_t drawn = 0, blended = 0, refused = 0, outside = 0;
    std::int64_t refused_by[rule_count] = {}; // a pixel may count for several rules
};

struct History_Settings {
    Replay_Settings replay;        // the calls that are made, and whether they are checked
    bool has_outside = false;      // events of calls whose shapes lie beside the pixel too
    std::string name;              // of the recording, in messages
    Load_Limits* limits = nullptr; // memory of events; null = any
};

// Whether buffers of colours may hold indices of a byte, as colour systems other than 0 and 1 store them in buffers that they
// keep. A pixel there depends on other columns of its row.
bool may_have_indices_in_colors(const Recording& recording);

// Answers about one recording, which must outlive it. Pixels are columns and rows of the image that the replay leaves, from the
// top left. All functions but `has` throw as `replay` does, and std::invalid_argument for what the image does not
// have.
class Replay_Histories {
public:
    Replay_Histories(const Recording& recording, Module_Choice module, History_Settings settings);

    // A history for each pixel, in the order given; pixels that are given twice have one.
    std::vector<Pixel_History> of_pixels(std::span<const VT_Int_Pair> pixels) const;
    // The calls that drew or were refused in the area, and with has_outside those that came near.
    std::vector<Area_Event> of_area(const Image_Area& area) const;

    // Device pixels of the window after the calls.
    const VT_Int_Rectangle& window() const noexcept { return window_; }
    // The size of the image, and whether it has the pixel or the whole area.
    VT_Int_Pair image_size() const noexcept;
    bool has(VT_Int_Pair pixel) const noexcept;
    bool has(const Image_Area& area) const noexcept;

private:
    VT_Int_Pair position_of(VT_Int_Pair pixel) const;
    Load_Limits::Loan memory_for(std::size_t pixels) const;

    const Recording& recording_;
    const Module_Choice module_;
    const History_Settings settings_;
    const Call_Areas areas_;
    VT_Int_Rectangle window_; // at the end
    VT_Int_Rectangle image_;  // device pixels that are shown
};

} // namespace vorna::drawing::recording
