// Depths, faces and the ground as a camera sees them.
#include "drawing/model/studio_view.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "drawing/model/facing.h"
#include "drawing/model/patches.h"
#include "drawing/model/tiles.h"
#include "drawing/model/vectors.h"
#include "drawing/model/viewport.h"

namespace vorna::drawing::model {
namespace {

VT_Vector_D direction_of(const double (&row)[4]) {
    return {row[0], row[1], row[2]};
}

double product(const double (&row)[4], const VT_Vector_D& place) {
    return row[0] * place.x + row[1] * place.y + row[2] * place.z + row[3];
}

// Depth and size of things at a distance w, which is 1 everywhere in parallel projection.
struct Depth_View {
    double scale_x, scale_y;   // of the picture's half width and height
    double pixels_x, pixels_y; // to a unit at w = 1
    double depth_scale, near;  // depth / 65535 = depth_scale * (1 - near / w) in perspective
    bool is_perspective;

    Depth_View(const Camera& camera, const VT_Int_Rectangle& frame) : is_perspective(camera.eye_is_place) {
        const auto& m = camera.clip_from_model.m;
        const Viewport viewport(frame);
        scale_x = length(direction_of(m[0]));
        scale_y = length(direction_of(m[1]));
        pixels_x = scale_x * static_cast<double>(viewport.half_width);
        pixels_y = scale_y * static_cast<double>(viewport.half_height);
        depth_scale = length(direction_of(m[2]));
        near = is_perspective ? m[3][3] - m[2][3] / depth_scale : 0;
    }

    double pixels_per_step(double w) const {
        const double at_one = pixels_x / (depth_scale * static_cast<double>(farthest_depth));
        return is_perspective ? at_one * w / near : at_one;
    }
};

} // namespace

std::vector<float> pixels_per_step(const Camera& camera, const VT_Int_Rectangle& frame) {
    const Depth_View view(camera, frame);
    std::vector<float> sizes(65536);
    for (std::size_t depth = 0; depth < sizes.size(); ++depth) {
        const double part = static_cast<double>(depth) / static_cast<double>(farthest_depth);
        sizes[depth] = static_cast<float>(view.pixels_per_step(view.near / (1 - part / view.depth_scale)));
    }
    return sizes;
}

Studio_Faces::Studio_Faces(const Mesh& mesh, const Facing& facing) : faces_(mesh.triangle_count()) {
    const std::vector<std::uint32_t> patches = patches_of(mesh);
    for (std::size_t t = 0; t < faces_.size(); ++t) {
        const std::uint32_t* corners = &mesh.triangles[3 * t];
        const VT_Vector &a = mesh.positions[corners[0]], &b = mesh.positions[corners[1]], &c = mesh.positions[corners[2]];
        const VT_Vector normal = facing.normals()[t];
        const VT_Vector around = mesh.normals[corners[0]] + mesh.normals[corners[1]] + mesh.normals[corners[2]];
        faces_[t] = {a, normal, unit(around).value_or(normal), std::max({length(b - a), length(c - b), length(a - c)}),
                     patches[t]};
    }
}

// Depth in pixels grows along the picture by n.x / (n . direction towards the viewer) for a plane with the normal n.
std::vector<Studio_Face> Studio_Faces::seen(const Camera& camera, const VT_Int_Rectangle& frame, double flat_size) const {
    constexpr double steepest = 0.05; // seen at an angle with this sine, about
    const Depth_View view(camera, frame);
    const auto& m = camera.clip_from_model.m;
    std::vector<Studio_Face> seen(faces_.size() + 1);
    for (std::size_t t = 0; t < faces_.size(); ++t) {
        const Face& face = faces_[t];
        const VT_Vector_D place = widened(face.place);
        const double w = view.is_perspective ? std::max(product(m[3], place), view.near) : 1;
        const double flat = std::min(static_cast<double>(face.size) * view.pixels_x / (w * flat_size), 1.0);
        const VT_Vector_D smooth = widened(face.smooth_normal);
        const VT_Vector_D mixed = smooth + (widened(face.normal) - smooth) * flat;
        VT_Vector_D n{dot(camera.right, mixed), dot(camera.up, mixed), dot(camera.toward, mixed)};
        double facing = n.z;
        if (view.is_perspective) {
            facing -= n.x * product(m[0], place) / (view.scale_x * w) + n.y * product(m[1], place) / (view.scale_y * w);
        }
        if (facing < 0) {
            n = n * -1.0;
            facing = -facing;
        }
        const double per_pixel = 1 / (std::max(facing, steepest) * view.pixels_per_step(w));
        seen[t + 1] = {static_cast<float>(n.x * per_pixel), static_cast<float>(n.y * per_pixel * view.pixels_x / view.pixels_y),
                       face.patch};
    }
    return seen;
}

// The light stands higher than the one that shades the model: shadows stay near what casts them.
Ground_View::Ground_View(std::span<const VT_Vector> points, const VT_Vector_D& up, const Camera& camera, const VT_Vector_D& light)
    : up_(up) {
    constexpr double leaning = 0.35, filled = 0.72; // the part of the map that the model's shadow takes before it is blurred
    VT_Vector_D key = camera.right * light.x + camera.up * light.y + camera.toward * light.z;
    key.normalize();
    const VT_Vector_D slope = (key - up * dot(key, up)) * leaning;
    across_ = std::abs(up.x) > 0.5 ? VT_Vector_D{0, 0, 1} : VT_Vector_D{1, 0, 0};
    along_ = cross(up, across_);
    double top = -HUGE_VAL, low[2] = {HUGE_VAL, HUGE_VAL}, high[2] = {-HUGE_VAL, -HUGE_VAL};
    ground_ = HUGE_VAL;
    for (const VT_Vector& point : points) {
        const double height = dot(up, widened(point));
        ground_ = std::min(ground_, height);
        top = std::max(top, height);
    }
    const VT_Vector_D rows[2] = {across_ - up * dot(slope, across_), along_ - up * dot(slope, along_)};
    for (const VT_Vector& point : points) {
        for (int axis = 0; axis < 2; ++axis) {
            const double place = dot(rows[axis], widened(point));
            low[axis] = std::min(low[axis], place);
            high[axis] = std::max(high[axis], place);
        }
    }
    const double middle[2] = {(low[0] + high[0]) / 2, (low[1] + high[1]) / 2};
    half_side_ = std::max({high[0] - low[0], high[1] - low[1], 1e-3}) / (2 * filled);
    middle_across_ = middle[0] + dot(slope, across_) * ground_;
    middle_along_ = middle[1] + dot(slope, along_) * ground_;
    const auto set_row = [](double(&row)[4], const VT_Vector_D& v, double last) {
        row[0] = v.x;
        row[1] = v.y;
        row[2] = v.z;
        row[3] = last;
    };
    for (int axis = 0; axis < 2; ++axis) {
        set_row(height_camera_.clip_from_model.m[axis], rows[axis] * (1 / half_side_), -middle[axis] / half_side_);
    }
    const double height_scale = 0.9999 / std::max(top - ground_, 1e-3); // 65535 is the empty ground's
    set_row(height_camera_.clip_from_model.m[2], up * height_scale, -ground_ * height_scale);
    set_row(height_camera_.clip_from_model.m[3], {}, 1);
    height_camera_.right = across_;
    height_camera_.up = along_;
    height_camera_.toward = height_camera_.eye = up * -1.0; // from below: what is nearest to the ground is seen
    height_camera_.eye_is_place = false;
}

std::optional<Studio_Ground> Ground_View::seen(const Camera& camera, const VT_Int_Rectangle& frame,
                                               const std::vector<std::uint16_t>& heights) const {
    constexpr double lowest = 0.05;
    if (dot(up_, camera.eye) < (camera.eye_is_place ? ground_ : 0) + lowest) {
        return std::nullopt;
    }
    const Viewport viewport(frame);
    const auto& m = camera.clip_from_model.m;
    const double half = (Studio_Ground::side - 1) / 2.0, unit_size = half_side_ / half; // of the map's pixels
    const VT_Vector_D corner = up_ * ground_ + across_ * (middle_across_ - half_side_) + along_ * (middle_along_ - half_side_);
    Studio_Ground::Homography image; // from the map
    for (std::size_t column = 0; column < 3; ++column) {
        const VT_Vector_D v = column == 0 ? across_ * unit_size : column == 1 ? along_ * unit_size : corner;
        const auto along_row = [&](int row) { return dot(direction_of(m[row]), v) + (column == 2 ? m[row][3] : 0); };
        const double w = along_row(3);
        image[0][column] = (along_row(0) + w) * static_cast<double>(viewport.half_width) + viewport.left * w;
        image[1][column] = (along_row(1) + w) * static_cast<double>(viewport.half_height) + viewport.bottom * w;
        image[2][column] = w;
    }
    // The inverse by cofactors.
    Studio_Ground::Homography map;
    const auto cofactor = [&](std::size_t r, std::size_t c) {
        const std::size_t r1 = (r + 1) % 3, r2 = (r + 2) % 3, c1 = (c + 1) % 3, c2 = (c + 2) % 3;
        return image[r1][c1] * image[r2][c2] - image[r1][c2] * image[r2][c1];
    };
    const double determinant = image[0][0] * cofactor(0, 0) + image[0][1] * cofactor(0, 1) + image[0][2] * cofactor(0, 2);
    if (!(std::abs(determinant) > 0)) {
        return std::nullopt;
    }
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) {
            map[r][c] = cofactor(c, r) / determinant;
        }
    }
    // All of the map is seen where its corners are before the viewer.
    Extent extent;
    for (const double u : {0.0, 2 * half}) {
        for (const double v : {0.0, 2 * half}) {
            const auto value = [&](std::size_t row) { return image[row][0] * u + image[row][1] * v + image[row][2]; };
            const double w = value(2);
            const auto place = [&](std::size_t row) {
                return static_cast<std::int32_t>(std::clamp(std::floor(value(row) / w), -1e9, 1e9));
            };
            if (!(w > 1e-6)) {
                return Studio_Ground(heights, map, frame, frame);
            }
            extent.include({place(0), place(1), 0});
        }
    }
    const VT_Int_Rectangle visible =
        common_part(frame, {extent.box.left - 1, extent.box.right + 1, extent.box.bottom - 1, extent.box.top + 1});
    return Studio_Ground(heights, map, visible, frame);
}

} // namespace vorna::drawing::model
