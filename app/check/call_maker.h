// Calls of every slot: the choice of their arguments, and the calls by the signatures of the slots.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "app/check/random_values.h"
#include "host/renderer_data.h"

namespace vorna::app::check {

// Whether the slot's points may lie anywhere, because the renderer clips them to the hard clip: the 2D, 2DI and 3D forms. Points
// of all other slots lie in the window.
bool clips_to_hard_clip(std::string_view slot);

// The type of a point's coordinates.
enum class Coordinates { int32, float32, float64 };

struct Ellipse {
    VT_DCI_Point center, radii;
    double start, end, rotation; // in radians
};

// A rectangle of pixels and its place. No bytes: a null pointer is passed.
struct Block {
    VT_DCI_Point start, end; // the top left and the bottom right pixel
    std::int32_t stride = 0;
    std::vector<std::uint8_t> bytes;

    template <class Pixel> const Pixel* pixels() const {
        return bytes.empty() ? nullptr : reinterpret_cast<const Pixel*>(bytes.data());
    }
};

struct Placed_Image {
    VT_DCI_Point start;
    VT_Reference<VT_Shared_Image> image;
};

// Chooses the arguments of one call; derived classes choose others. These are plain: bright, in the middle of the window or all
// of it.
class Call_Arguments {
public:
    explicit Call_Arguments(const VT_Int_Rectangle& window) : window_(window) {}
    Call_Arguments(const Call_Arguments&) = delete;
    Call_Arguments& operator=(const Call_Arguments&) = delete;
    virtual ~Call_Arguments() = default;

    // True in about so many calls of a hundred; plain calls never take the alternative.
    virtual bool chance(std::int32_t /*percent*/) { return false; }

    // The number of points that is passed. The list has at least one, because hosts pass no empty lists.
    virtual std::int32_t point_count() { return 3; }
    // The next point of a list, or the only one. The coordinates are numbers of the type.
    virtual VT_Point_D next_point(Coordinates type, const std::vector<VT_Point_D>& earlier);
    virtual std::vector<VT_RGB32> colors(std::size_t count);
    virtual std::int32_t parameter_width() { return 2; }
    virtual VT_Parameter parameter(std::size_t i) { return static_cast<float>(i % 3) / 3; }
    virtual Ellipse ellipse();
    virtual Block block(std::int32_t pixel_bytes);
    virtual Placed_Image image();

protected:
    const VT_Int_Rectangle& window() const noexcept { return window_; }
    VT_Int_Pair window_size() const noexcept;

private:
    const VT_Int_Rectangle window_;
};

// Random arguments that the slot of every renderer takes.
class Random_Arguments : public Call_Arguments {
public:
    Random_Arguments(Random& random, std::string_view slot, const VT_Int_Rectangle& window)
        : Call_Arguments(window), random_(random), slot_(slot) {}

    Random& random() const noexcept { return random_; }
    bool chance(std::int32_t percent) override { return random_.chance(percent); }
    std::int32_t point_count() override { return random_.number(1, 9); }
    VT_Point_D next_point(Coordinates type, const std::vector<VT_Point_D>& earlier) override;
    std::vector<VT_RGB32> colors(std::size_t count) override { return random_colors(random_, count); }
    VT_Parameter parameter(std::size_t) override { return static_cast<float>(random_.number(-50, 150)) / 100; }
    Ellipse ellipse() override;
    Block block(std::int32_t pixel_bytes) override;
    Placed_Image image() override;

private:
    Random& random_;
    std::string_view slot_;
    std::optional<Point_Cloud> cloud_; // of the current list
};

// The function that a call goes to.
enum class Callee {
    slot,             // the slot's own, the standard function when the slot is empty
    drawing_function, // the host's, which passes on to the slot what the slot accepts
    standard_function
};

using Draw = std::function<void(VT_Renderer_Data&, const VT_Rendition&)>;

// A call with arguments that it owns: it may be drawn any number of times. Throws std::out_of_range for a name that is no slot's.
Draw make_draw(std::string_view slot, Call_Arguments& arguments, Callee callee);

// The names of all slots, in the order of the action table.
const std::vector<std::string_view>& slot_names();
// The names of those that take a list of points.
const std::vector<std::string_view>& point_slot_names();

} // namespace vorna::app::check
