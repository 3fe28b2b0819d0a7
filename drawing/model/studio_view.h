// Depths, faces and the ground as a camera sees them, for the studio look.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "drawing/image/studio_ground.h"
#include "drawing/image/studio_planes.h"
#include "drawing/model/camera.h"
#include "drawing/model/facing.h"
#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

// The triangles of a mesh, as far as slopes and outlines need them.
class Studio_Faces {
public:
    Studio_Faces(const Mesh& mesh, const Facing& facing);

    // By number of the triangle + 1. frame: see Tile_Grid. flat_size: triangles of so many pixels have the slope of their own
    // plane, which is what their pixels' depths have. Much smaller ones have that of their vertices' normals: a surface that is
    // made of small triangles is meant to be smooth.
    std::vector<Studio_Face> seen(const Camera& camera, const VT_Int_Rectangle& frame, double flat_size) const;

private:
    struct Face {
        VT_Vector place, normal, smooth_normal;
        float size; // of the longest side
        std::uint32_t patch;
    };

    std::vector<Face> faces_;
};

// By depth in the buffer, how many pixels wide one step of depth is there.
std::vector<float> pixels_per_step(const Camera& camera, const VT_Int_Rectangle& frame);

// The ground below a model, and the picture of the heights above it along the light.
class Ground_View {
public:
    // up: of length 1. light: towards it, in the camera's view space.
    Ground_View(std::span<const VT_Vector> points, const VT_Vector_D& up, const Camera& camera, const VT_Vector_D& light);

    // Draws the heights as depths into a frame of Studio_Ground::side columns and rows.
    const Camera& height_camera() const noexcept { return height_camera_; }
    // None for a camera that is not above the ground.
    std::optional<Studio_Ground> seen(const Camera& camera, const VT_Int_Rectangle& frame,
                                      const std::vector<std::uint16_t>& heights) const;

private:
    VT_Vector_D up_, across_, along_;                          // axes of the ground's space
    double ground_ = 0, middle_across_ = 0, middle_along_ = 0; // in it
    double half_side_ = 1;                                     // of the map
    Camera height_camera_;
};

} // namespace vorna::drawing::model
