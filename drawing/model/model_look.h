// How a model is drawn.
#pragma once

#include <cstdint>
#include <optional>

#include "host/color.h"
#include "host/geometry.h"

namespace vorna::drawing::model {

enum class Shading {
    flat,
    gouraud,
    textured,    // with materials and images
    wireframe,   // edges alone
    hidden_line, // edges, and faces in any colour: what counts is that they hide what lies behind them
    automatic,   // textured where the model has materials and no other colour is given, else gouraud
};
enum class Culling { none, back };
// The colours of faces.
enum class Tint {
    lit,
    own,     // without light
    normals, // of the surface, in view space
    numbers, // each triangle has a colour of its own, see Scene_Renderer::draw_numbers
};

struct Model_Look {
    Shading shading = Shading::automatic;
    Culling culling = Culling::none;
    VT_Vector_D light{-0.5, 0.65, 0.7}; // towards it, in view space
    double specular = 1;                // strength of highlights: a factor
    Tint tint = Tint::lit;
};

enum class Edge_Choice {
    all,
    features, // where the surface ends or bends sharply, and its outline as seen by the viewer
};

// Sides of points and widths of lines, in pixels of an image that is not enlarged.
inline constexpr std::int32_t largest_point = 64;

// What of a model is drawn, and how.
struct Model_Style {
    Model_Look look;
    std::optional<Edge_Choice> edges;   // over faces; wireframes and hidden lines have all unless it says features
    std::optional<VT_RGB32> edge_color; // none: one that stands out
    std::optional<VT_RGB32> color;      // none: the model's own
    std::int32_t line_width = 1;        // pixels, of the model's own lines
    std::int32_t point_size = 0;        // pixels, 0 = by the number of points
    bool axes = false;                  // whether their directions are drawn
    bool scale_bar = false;             // whether a round length is drawn, without perspective

    bool has_faces() const noexcept { return look.shading != Shading::wireframe; }
    bool has_edges() const noexcept { return edges || !has_faces() || look.shading == Shading::hidden_line; }
};

struct Edge_Settings {
    Edge_Choice choice = Edge_Choice::all;
    Culling culling = Culling::none; // edges of which all faces are left out are left out too
    bool over_faces = false;         // hidden behind the faces that are in the depth buffer
    bool smoothed = false;           // for 32-bit colours and lines of one pixel
    std::int32_t width = 1;          // pixels, across the longer of a line's two axes
    std::optional<VT_RGB32> color;   // instead of the model's
};

} // namespace vorna::drawing::model
