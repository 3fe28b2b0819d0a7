// Random scenes for the comparison with the naive model. Their calls are data, not functions as those of app/check/call_maker.h,
// because the model draws them too.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/check/random_values.h"
#include "host/rendition.h"
#include "tests/support/test_renderer.h"

using vorna::app::check::grown;
using vorna::app::check::Random;
using vorna::app::check::random_color;
using vorna::app::check::random_colors;
using vorna::app::check::random_face;
using vorna::app::check::random_rectangle;

enum class Call_Kind { dot, marker, flat, colorized, gouraud, draw_window, clear_depth };
enum class Shape { strip, device_line, plane_line }; // of calls that are flat, colorized or gouraud

// One call of a slot, and the depth switches that it runs under.
struct Call {
    Call_Kind kind = Call_Kind::dot;
    Shape shape = Shape::strip;
    VT_Reference<VT_Rendition> rendition;
    std::vector<VT_DCI_Point> points;
    std::vector<VT_Point> floating_points; // when not empty, the DC form is called with these
    std::vector<VT_RGB32> colors;
    bool single_color = false;
    bool z_write = true;
    std::int32_t z_test = 2;
};

std::string describe(const Call& call);

struct Scene {
    Renderer_Setup setup;
    std::vector<std::uint32_t> colors; // what the buffers hold at first, row after row
    std::vector<std::uint16_t> depths;
    std::vector<Call> calls;
};

VT_Reference<const VT_Contour_Set> random_region(Random& random, const Renderer_Setup& setup);
Renderer_Setup random_setup(Random& random, std::size_t renderer_case);
VT_Int_Rectangle window_of(const Renderer_Setup& setup);

// The same noise for every renderer with such buffers.
void fill_with_noise(Test_Renderer& renderer);

// A scene of one renderer case with random window, layouts, contents and calls.
Scene random_scene(std::size_t renderer_case, std::uint64_t seed);
