// Draws a model's edges.
#include "drawing/model/edge_renderer.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "drawing/files/helpers.h"
#include "drawing/model/clipper.h"
#include "drawing/model/edge_pen.h"
#include "drawing/model/vectors.h"
#include "drawing/model/window_depths.h"

namespace vorna::drawing::model {
namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;
// Of the angle between two faces' normals from which on their edge is a feature, 30 degrees.
constexpr float crease_cosine = 0.8660254F;
// Depth units by which lines and faces may differ where both should be the same, for both round.
constexpr std::int32_t least_lift = 2;
// Edges of a run in pictures of several tiles: a tile draws whole runs.
constexpr std::size_t longest_run = 32;

std::uint8_t mean(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>((a + b + 1) / 2);
}

VT_DCI_Point device_point(const Viewport& viewport, const Clip_Point& p) {
    return viewport.device_point(static_cast<float>(p.x / p.w), static_cast<float>(p.y / p.w), static_cast<float>(p.z / p.w));
}

} // namespace

Edge_Renderer::Edge_Renderer(const Mesh& mesh, const Facing& facing, VT_RGB32 base_color, bool own_colors, unsigned threads)
    : edges_(make_edges(mesh, threads)), positions_(edges_.points.size()), base_color_(base_color) {
    for (std::size_t p = 0; p < edges_.points.size(); ++p) {
        positions_.set(p, edges_.points[p]);
    }
    hides_backs_ = facing.hides_backs();
    faces_.resize(mesh.triangle_count());
    const std::vector<VT_Vector>& normals = facing.normals();
    share_range(normals.size(), threads, [&](std::size_t first, std::size_t end) {
        for (std::size_t t = first; t < end; ++t) {
            faces_.set(t, normals[t], mesh.positions[mesh.triangles[3 * t]]);
        }
    });
    set_features(mesh);
    if (own_colors && !mesh.colors.empty()) {
        set_colors(mesh, base_color);
    }
}

Edge_Renderer::Edge_Renderer(Edges lines, std::vector<VT_RGB32> colors, VT_RGB32 base_color)
    : edges_(std::move(lines)), positions_(edges_.points.size()), base_color_(base_color), colors_(std::move(colors)) {
    for (std::size_t p = 0; p < edges_.points.size(); ++p) {
        positions_.set(p, edges_.points[p]);
    }
}

std::string Edge_Renderer::summary() const {
    return std::to_string(edges_.count) + " edges in " + std::to_string(edges_.starts.size() - 1) + " polylines";
}

// Edges with one face, or more than two, and those where two faces meet at an angle.
void Edge_Renderer::set_features(const Mesh& mesh) {
    std::vector<std::uint32_t> first_face(edges_.chains.size(), none);
    std::vector<std::uint8_t> face_counts(edges_.chains.size());
    features_.resize(edges_.chains.size());
    for (std::size_t side = 0; side < mesh.triangles.size(); ++side) {
        const std::uint32_t edge = edges_.triangle_edges[side];
        if (edge == no_edge) {
            continue;
        }
        const auto face = static_cast<std::uint32_t>(side / 3);
        if (face_counts[edge] == 0) {
            first_face[edge] = face;
        }
        face_counts[edge] = static_cast<std::uint8_t>(std::min(face_counts[edge] + 1, 3));
        const bool bends = dot(faces_.normals[first_face[edge]], faces_.normals[face]) < crease_cosine;
        features_[edge] = bends || face_counts[edge] != 2;
    }
}

// The mean of an edge's ends, as its first triangle has them.
void Edge_Renderer::set_colors(const Mesh& mesh, VT_RGB32 base_color) {
    colors_.resize(edges_.chains.size());
    for (std::size_t side = mesh.triangles.size(); side-- > 0;) {
        const auto color_of = [&](std::size_t corner) {
            const VT_RGB32 own = mesh.colors[mesh.triangles[corner]];
            return own.alpha == 0 ? base_color : own;
        };
        if (const std::uint32_t edge = edges_.triangle_edges[side]; edge != no_edge) {
            const VT_RGB32 a = color_of(side), b = color_of(side % 3 == 2 ? side - 2 : side + 1);
            colors_[edge] = {mean(a.blue, b.blue), mean(a.green, b.green), mean(a.red, b.red), 255};
        }
    }
}

void Edge_Renderer::prepare(const Tile_Grid& grid, const Camera& camera, const Edge_Settings& settings) {
    camera_ = camera;
    viewport_ = Viewport(grid.frame);
    frame_ = grid.frame;
    settings_ = settings;
    projection_.project(positions_, camera, grid.frame);
    choose_edges();
    if (settings.over_faces) {
        lift_points();
    }
    bins_.start(grid, Edge_Pen::pixels_beside(settings));
    gather_runs();
    if (bins_.sorts()) {
        for (std::size_t r = 0; r < runs_.size(); ++r) {
            Extent extent;
            for (std::size_t edge = runs_[r].first; edge < runs_[r].end; ++edge) {
                if (const std::optional<Segment> segment = segment_of(edge)) {
                    extent.include(segment->from);
                    extent.include(segment->to);
                }
            }
            bins_.add(static_cast<std::uint32_t>(r), extent);
        }
        bins_.finish();
    }
}

void Edge_Renderer::gather_runs() {
    runs_.clear();
    // No edge begins at the last point of a chain, so none of the places is one beyond the last edge.
    for (std::uint32_t edge = 0; edge < drawn_.size(); ++edge) {
        if (!drawn_[edge]) {
            continue;
        }
        if (runs_.empty() || runs_.back().end != edge || (bins_.sorts() && edge - runs_.back().first >= longest_run)) {
            runs_.push_back({edge, edge});
        }
        runs_.back().end = edge + 1;
    }
}

// The frame's last column and row lie beyond the image and are empty.
void recede_faces(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_Int_Rectangle& frame, std::int32_t reach) {
    const VT_Int_Rectangle area = common_part(rendition.window.rectangle, {frame.left, std::max(frame.right - 1, frame.left),
                                                                           frame.bottom, std::max(frame.top - 1, frame.bottom)});
    if (area.left <= area.right && area.bottom <= area.top) {
        Window_Depths depths(renderer, rendition, area);
        depths.recede(reach);
        depths.write(renderer, rendition);
    }
}

void Edge_Renderer::draw(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::size_t tile) const {
    Edge_Pen pen(renderer, rendition, common_part(rendition.window.rectangle, frame_), !bins_.sorts(), settings_,
                 settings_.color.value_or(base_color_));
    const bool colored = !settings_.color && !colors_.empty();
    std::size_t next = 0; // to the edge drawn last
    bins_.for_each(tile, runs_.size(), [&](std::size_t run) {
        for (std::size_t edge = runs_[run].first; edge < runs_[run].end; ++edge) {
            const std::optional<Segment> segment = segment_of(edge);
            if (edge != next || !segment) {
                pen.end_polyline();
            }
            next = edge + 1;
            if (segment) {
                pen.draw(segment->from, segment->to, colored ? &colors_[edge] : nullptr);
            }
        }
    });
}

void Edge_Renderer::choose_edges() {
    // What a closed body hides need not be tested against depths.
    const bool hides = settings_.over_faces && hides_backs_ && !projection_.any_before;
    const bool culls = settings_.culling == Culling::back || hides, only_features = settings_.choice == Edge_Choice::features;
    drawn_.assign(edges_.chains.size(), !culls && !only_features);
    if (culls || only_features) {
        constexpr std::uint8_t front = 1, back = 2;
        for (std::size_t side = 0; side < edges_.triangle_edges.size(); ++side) {
            if (const std::uint32_t edge = edges_.triangle_edges[side]; edge != no_edge) {
                drawn_[edge] |= faces_.face_viewer(side / 3, camera_) ? front : back;
            }
        }
        for (std::size_t edge = 0; edge < drawn_.size(); ++edge) {
            const std::uint8_t sides = drawn_[edge];
            const bool feature = features_[edge] || sides == (front | back);
            drawn_[edge] = (!culls || (sides & front)) && (!only_features || feature);
        }
    }
    for (std::size_t chain = 1; chain < edges_.starts.size(); ++chain) {
        drawn_[edges_.starts[chain] - 1] = false;
    }
}

// Edges must be drawn in front of the faces that they bound, though a line's pixels lie up to half a pixel beside the line and a
// face's spans run between ends that are cut to whole columns. An edge's pixels are tested against the farthest depths around
// them, which is enough wherever the surface falls away from the viewer on one side of the edge: at outlines and ridges, and on
// slopes. Where it rises on both sides, the edge is moved towards the viewer by as much as the flatter one rises over the pixels
// that the test reaches. Points have one lift for all edges that meet there, the largest, so that polylines stay joined.
void Edge_Renderer::lift_points() {
    std::vector<double> rises(edges_.chains.size());
    std::vector<std::uint8_t> sides(edges_.chains.size());
    const bool sees_backs = settings_.culling == Culling::none && (!hides_backs_ || projection_.any_before);
    for (std::size_t t = 0; t < faces_.size(); ++t) {
        if (!sees_backs && !faces_.face_viewer(t, camera_)) {
            continue;
        }
        const Plane plane = plane_of(t);
        for (std::size_t corner = 3 * t; corner < 3 * t + 3; ++corner) {
            if (const std::uint32_t edge = edges_.triangle_edges[corner]; edge != no_edge) {
                const double rise = rise_beside(corner, plane);
                rises[edge] = sides[edge]++ == 0 ? rise : std::min(rises[edge], rise);
            }
        }
    }
    lifts_.assign(edges_.points.size(), least_lift);
    for (std::size_t edge = 0; edge < rises.size(); ++edge) {
        if (sides[edge] > 1) {
            const auto lift = least_lift + static_cast<std::int32_t>(rises[edge]);
            for (const std::uint32_t point : {edges_.chains[edge], edges_.chains[edge + 1]}) {
                lifts_[point] = std::max(lifts_[point], lift);
            }
        }
    }
}

// A triangle's depth over the window, from 0 to 65535.
Edge_Renderer::Plane Edge_Renderer::plane_of(std::size_t triangle) const {
    const std::uint32_t* corners = &edges_.triangles[3 * triangle];
    double x[3], y[3], z[3], w[3];
    if ((projection_.planes[corners[0]] | projection_.planes[corners[1]] | projection_.planes[corners[2]]) == 0) {
        for (int i = 0; i < 3; ++i) {
            const VT_DCI_Point& p = projection_.device_points[corners[i]];
            x[i] = p.x;
            y[i] = p.y;
            z[i] = p.z;
            w[i] = 1;
        }
    } else {
        for (int i = 0; i < 3; ++i) {
            const Clip_Point p = transformed(camera_.clip_from_model, edges_.points[corners[i]]);
            x[i] = p.x * viewport_.half_width;
            y[i] = p.y * viewport_.half_height;
            z[i] = p.z * farthest_depth;
            w[i] = p.w;
        }
    }
    // z = a x + b y + c w for all three: the same a and b as for z / w over x / w and y / w.
    const auto determinant = [](const double(&p)[3], const double(&q)[3], const double(&r)[3]) {
        return p[0] * (q[1] * r[2] - q[2] * r[1]) + p[1] * (q[2] * r[0] - q[0] * r[2]) + p[2] * (q[0] * r[1] - q[1] * r[0]);
    };
    const double area = determinant(x, y, w);
    if (area == 0) {
        return {};
    }
    Plane plane{determinant(z, y, w) / area, determinant(x, z, w) / area, farthest_depth};
    if (w[0] > 0 && w[1] > 0 && w[2] > 0) {
        const auto [nearest, farthest] = std::minmax({z[0] / w[0], z[1] / w[1], z[2] / w[2]});
        plane.range = farthest - nearest;
    }
    return plane;
}

// How far a triangle rises towards the viewer from the side that begins at a corner, over the pixels that may lie between an edge
// and the depths that it is tested against, but not beyond the triangle: edges of narrow faces close behind others would be seen.
double Edge_Renderer::rise_beside(std::size_t corner, const Plane& plane) const {
    const std::size_t first = corner - corner % 3;
    const auto point = [&](std::size_t i) { return projection_.device_points[edges_.triangles[first + (corner + i) % 3]]; };
    const VT_DCI_Point from = point(0), to = point(1), opposite = point(2);
    const double dx = to.x - from.x, dy = to.y - from.y, length = std::sqrt(dx * dx + dy * dy);
    if (length == 0) {
        return 0;
    }
    const double twice_area = dx * (opposite.y - from.y) - dy * (opposite.x - from.x);
    const double nearer = (plane.along_x * dy - plane.along_y * dx) * (twice_area < 0 ? -1 : 1) / length;
    // Corners outside of the view volume are not where the plane has them.
    const std::uint32_t* corners = &edges_.triangles[first];
    const bool is_inside =
        (projection_.planes[corners[0]] | projection_.planes[corners[1]] | projection_.planes[corners[2]]) == 0;
    const int half_width = settings_.width / 2;
    const double reached = 2 + half_width, height = is_inside ? std::abs(twice_area) / length : reached;
    return std::clamp(nearer * std::min(reached, height), 0.0, plane.range);
}

// Where an edge is drawn, if it is seen.
std::optional<Edge_Renderer::Segment> Edge_Renderer::segment_of(std::size_t edge) const {
    const std::uint32_t ends[2] = {edges_.chains[edge], edges_.chains[edge + 1]};
    const std::uint8_t planes[2] = {projection_.planes[ends[0]], projection_.planes[ends[1]]};
    if ((planes[0] & planes[1]) != 0) {
        return std::nullopt;
    }
    VT_DCI_Point points[2] = {projection_.device_points[ends[0]], projection_.device_points[ends[1]]};
    if ((planes[0] | planes[1]) != 0) {
        const Clip_Segment segment =
            clip_segment(transformed(camera_.clip_from_model, edges_.points[ends[0]]),
                         transformed(camera_.clip_from_model, edges_.points[ends[1]]), planes[0] | planes[1]);
        if (!segment.visible) {
            return std::nullopt;
        }
        // Ends that are kept must be where the faces have them.
        points[0] = planes[0] ? device_point(viewport_, segment.from) : points[0];
        points[1] = planes[1] ? device_point(viewport_, segment.to) : points[1];
    }
    for (int i = 0; i < 2 && settings_.over_faces; ++i) {
        points[i].z = std::max(points[i].z - lifts_[ends[i]], 0);
    }
    return Segment{points[0], points[1]};
}

} // namespace vorna::drawing::model
