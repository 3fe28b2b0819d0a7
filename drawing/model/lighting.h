// Light on surfaces: a key light that wraps a little around the form, a fill light from the other side, sky and ground, light
// from the viewer, a highlight, and a rim that shows the outline of dark forms.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "drawing/files/long_list.h"
#include "drawing/model/camera.h"
#include "drawing/model/material.h"
#include "host/color.h"

namespace vorna::drawing::model {

// Vectors or points of a model, coordinate by coordinate. Those that are not set have no value.
struct Vector_Columns {
    Long_List<float> x, y, z;

    explicit Vector_Columns(std::size_t count = 0) : x(count), y(count), z(count) {}
    std::size_t size() const noexcept { return x.size(); }
    void set(std::size_t i, const VT_Vector& v) noexcept {
        x[i] = v.x;
        y[i] = v.y;
        z[i] = v.z;
    }
    VT_Vector operator[](std::size_t i) const noexcept { return {x[i], y[i], z[i]}; }
};

// Surfaces to be lit: vertices or faces. Colours are light of intensity 0 to 1. Pixels hold the square root of intensities, near
// enough to what displays do and, unlike a power, the same on every machine.
struct Surfaces {
    Vector_Columns normals;
    Long_List<float> distances;          // normal . place
    std::vector<float> red, green, blue; // one for all, or one each
    // What finishes say, none or one each, when there is one colour each: 1 for what is lit, else 0, and so on.
    std::vector<float> lit, mirror, highlight, sharpness, red_emission, green_emission, blue_emission;
    // Lightness of the texture that is multiplied with a surface's colour, 0 to 1; less than 0 where there is none. With one,
    // highlights are not in the colour: its alpha is that of white which is to be drawn over the texture.
    std::vector<float> texture_lightness;

    std::size_t size() const noexcept { return normals.size(); }
    void resize(std::size_t count);
    void set(std::size_t i, const VT_Vector& normal, const VT_Vector& place) noexcept;
    // Black gets a little lighter, so that its form shows.
    void add_color(VT_RGB32 color);
    // The finish of the colour that was added last.
    void add_finish(const Finish& finish, VT_RGB32 color, float lightness_of_texture = -1);
    bool has_one_color() const noexcept { return red.size() == 1; }
    // Whether a face is seen from the side that its normal points to.
    bool face_viewer(std::size_t i, const Camera& camera) const noexcept;
    // The same for the faces [first, first + count).
    void face_viewer(std::size_t first, std::size_t count, const Camera& camera, std::uint8_t* facing) const noexcept;
};

class Lighting {
public:
    // direction: towards the key light, in view space. specular: a factor for highlights.
    Lighting(const Camera& camera, VT_Vector_D direction, double specular);

    // The colours of the surfaces [first, end), seen from the side that their normals point to. colors: of all surfaces.
    void shade_fronts(const Surfaces& surfaces, std::size_t first, std::size_t end, std::span<VT_RGB32> colors) const;
    // Seen from behind. Right at the horizon of a form the light of its front is kept, mirrored: faces there are behind by a
    // hair, and the light of the other side would show as a dark fringe.
    void shade_backs(const Surfaces& surfaces, std::size_t first, std::size_t end, std::span<VT_RGB32> colors) const;

private:
    // Some of the surfaces.
    struct Stretch {
        std::size_t first, end;
    };
    template <class Seen_Normal>
    void shade(const Surfaces& surfaces, Stretch stretch, const Seen_Normal& seen, std::span<VT_RGB32> colors) const;
    template <class Seen_Normal, class Base, class Finishes>
    void shade_with(const Surfaces& surfaces, Stretch stretch, const Seen_Normal& seen, const Base& base,
                    const Finishes& finishes, std::span<VT_RGB32> colors) const;

    // In model space, so that normals need no turning.
    VT_Vector key_, fill_, half_way_, sky_, viewer_;
    float key_toward_viewer_ = 0, fill_toward_viewer_ = 0, half_way_toward_viewer_ = 0;
    float highlight_ = 0;
    VT_Vector eye_; // scaled so that eye_ . n - eye_weight_ * distance is about the cosine between normal and view
    float eye_weight_ = 0;
};

} // namespace vorna::drawing::model
