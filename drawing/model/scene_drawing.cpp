// Draws the runs of a prepared scene.
#include <algorithm>
#include <array>

#include "drawing/model/scene_renderer.h"
#include "host/strip.h"
#include "vorna/draw.h"

namespace vorna::drawing::model {

// Gathers the points and colours of runs and draws them.
class Scene_Renderer::Drawing {
public:
    Drawing(const Scene_Renderer& scene, const Painting& painting, VT_Renderer_Data& renderer, const VT_Rendition& rendition,
            std::size_t tile)
        : scene_(scene), painting_(painting), renderer_(renderer), rendition_(rendition) {
        if (scene.grid_) {
            window_ = scene.grid_->window(tile);
            needed_ = scene.grid_->needed(tile);
        }
    }

    // Those of a tile. Runs of different blocks lie apart in memory: they are looked up before the first one is drawn, so that
    // the processor waits for many at once, and what the next ones read is asked for while one is drawn.
    void draw_groups(const Layer& layer, std::size_t tile) {
        constexpr std::size_t vertices_ahead = 8, points_ahead = 4;
        found_.clear();
        layer.bins.for_each(tile, layer.groups.size() - 1, [&](std::size_t group) {
            const Layer::Group &first = layer.groups[group], &end = layer.groups[group + 1];
            for (std::size_t run = first.first; run < end.first; ++run) {
                found_.push_back({layer.runs[run], first.lies_in_one_tile});
            }
        });
        for (std::size_t i = 0; i < found_.size(); ++i) {
            if (i + vertices_ahead < found_.size()) {
                __builtin_prefetch(&scene_.strip_vertices_[found_[i + vertices_ahead].run.first]);
            }
            if (i + points_ahead < found_.size()) {
                ask_for_points(found_[i + points_ahead].run);
            }
            draw(found_[i].run, found_[i].is_inside);
        }
    }

    // is_inside: the window.
    void draw(const Run& run, bool is_inside) {
        if (is_clipped(run.manner)) {
            for (std::size_t place = run.first; place < run.first + run.triangles; ++place) {
                draw_clipped(place);
            }
        } else {
            draw_whole(run, is_inside);
        }
    }

private:
    // The sides of a rectangle that a point lies beyond. Points on the far edges of the last pixels lie inside.
    static std::uint16_t outcode(const VT_Int_Rectangle& area, const VT_DCI_Point& p) noexcept {
        return static_cast<std::uint16_t>((p.x < area.left) | (p.x > area.right + 1) << 1 | (p.y < area.bottom) << 2 |
                                          (p.y > area.top + 1) << 3);
    }

    // Vertices have numbers in the order in which strips first use them, so that those of one side of a strip lie together.
    void ask_for_points(const Run& run) const {
        const std::uint32_t* vertices = &scene_.strip_vertices_[run.first];
        for (const std::size_t place :
             {std::size_t{0}, std::size_t{1}, std::size_t{run.triangles}, run.triangles + std::size_t{1}}) {
            __builtin_prefetch(&scene_.projection_.device_points[vertices[place]]);
        }
    }

    void draw_whole(const Run& run, bool is_inside) {
        const std::size_t count = std::size_t{run.triangles} + 2;
        if (points_.size() < count) {
            points_.resize(count);
            outcodes_.resize(count);
            colors_.resize(count);
        }
        const std::uint32_t* vertices = &scene_.strip_vertices_[run.first];
        std::uint16_t outside = 0;
        for (std::size_t i = 0; i < count; ++i) {
            points_[i] = scene_.projection_.device_points[vertices[i]];
        }
        for (std::size_t i = 0; !is_inside && i < count; ++i) {
            outcodes_[i] = outcode(needed_, points_[i]);
            outside |= outcodes_[i];
        }
        if (!painting_.unlit && !painting_.flat) {
            const std::vector<VT_RGB32>& colors = run.manner == Manner::front ? painting_.front : painting_.back;
            for (std::size_t i = 0; i < count; ++i) {
                colors_[i] = colors[vertices[i]];
            }
        }
        if (outside == 0) {
            draw_strip(run, 0, run.triangles);
        } else {
            draw_seen(run);
        }
    }

    // The triangles that touch the needed pixels. Those that cross the border of the window are drawn apart: of a strip that
    // does, the renderer draws all triangles one by one.
    void draw_seen(const Run& run) {
        using vorna::Placement;
        const auto placement_of = [&](std::size_t k) {
            const Placement placement = vorna::placement_of(&outcodes_[k]);
            if (placement != Placement::across) {
                return placement;
            }
            const std::uint16_t crossed =
                outcode(window_, points_[k]) | outcode(window_, points_[k + 1]) | outcode(window_, points_[k + 2]);
            return crossed != 0 ? Placement::across : Placement::inside;
        };
        std::size_t first = 0;
        Placement placement = placement_of(0);
        for (std::size_t k = 1; k <= run.triangles; ++k) {
            const Placement next = k < run.triangles ? placement_of(k) : Placement::outside;
            if (next != placement || k == run.triangles) {
                if (placement != Placement::outside) {
                    draw_strip(run, first, k - first);
                }
                first = k;
                placement = next;
            }
        }
    }

    void draw_strip(const Run& run, std::size_t first, std::size_t triangles) {
        const auto count = static_cast<std::int32_t>(triangles + 2);
        const VT_DCI_Point* points = &points_[first];
        if (painting_.unlit) {
            VD_Draw_DCI_Polytriangle(renderer_, rendition_, count, points);
        } else if (painting_.flat) {
            const std::vector<VT_RGB32>& colors = run.manner == Manner::front ? painting_.front : painting_.back;
            VD_Draw_DCI_Colorized_Polytriangle(renderer_, rendition_, count, points, &colors[run.first + first], false);
        } else {
            VD_Draw_DCI_Gouraud_Polytriangle(renderer_, rendition_, count, points, &colors_[first]);
        }
    }

    void draw_clipped(std::size_t place) {
        const Clip_Polygon polygon = scene_.clipped(place, painting_);
        if (polygon.count < 3) {
            return;
        }
        std::array<VT_DCI_Point, 9> points;
        std::array<VT_RGB32, 9> colors;
        const auto count = static_cast<std::int32_t>(polygon.count);
        for (std::int32_t i = 0; i < count; ++i) {
            const Clip_Vertex& vertex = polygon.vertices[static_cast<std::size_t>(strip_order(i, count))];
            points[static_cast<std::size_t>(i)] = scene_.device_point(vertex, place);
            colors[static_cast<std::size_t>(i)] = vertex.color;
        }
        if (painting_.unlit) {
            VD_Draw_DCI_Polytriangle(renderer_, rendition_, count, points.data());
        } else if (painting_.flat) {
            VD_Draw_DCI_Colorized_Polytriangle(renderer_, rendition_, count, points.data(), colors.data(), true);
        } else {
            VD_Draw_DCI_Gouraud_Polytriangle(renderer_, rendition_, count, points.data(), colors.data());
        }
    }

    const Scene_Renderer& scene_;
    const Painting painting_;
    VT_Renderer_Data& renderer_;
    const VT_Rendition& rendition_;
    VT_Int_Rectangle window_, needed_; // of a tile; see Tile_Grid
    struct Found {
        Run run;
        bool is_inside;
    };
    std::vector<Found> found_; // of a tile
    std::vector<VT_DCI_Point> points_;
    std::vector<std::uint16_t> outcodes_;
    std::vector<VT_RGB32> colors_;
};

// Faces seen from behind come first: at the outline of a body they have depths like those of the faces that hide them, and of
// equal depths the one drawn last is seen.
void Scene_Renderer::draw_as(const Painting& painting, VT_Renderer_Data& renderer, const VT_Rendition& rendition,
                             std::size_t tile) const {
    Drawing drawing(*this, painting, renderer, rendition, tile);
    for (Layer Part::*side : {&Part::backs, &Part::fronts}) {
        for (const Part& part : parts_) {
            const Layer& layer = part.*side;
            if (!grid_) {
                std::ranges::for_each(layer.runs, [&](const Run& run) { drawing.draw(run, true); });
            } else {
                drawing.draw_groups(layer, tile);
            }
        }
    }
}

void Scene_Renderer::draw(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::size_t tile) const {
    draw_as(painting(), renderer, rendition, tile);
}

void Scene_Renderer::draw_numbers(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::size_t tile) const {
    draw_as(number_painting(), renderer, rendition, tile);
}

} // namespace vorna::drawing::model
