// A map or drawing of a file as something to draw.
#include "drawing/job/map_drawing.h"

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "drawing/job/print_size.h"
#include "host/frame_buffer.h"

namespace vorna::drawing {
namespace {

using map::Face;
using map::Face_Item;
using map::Form_Item;
using map::Line_Item;
using map::Map_Item;
using map::Map_Items;
using map::Map_Painter;
using map::Mark_Item;
using map::Path;
using map::Position;
using map::Text_Item;
using map::View;

// Dashes that need a larger margin are not drawn in tiles.
constexpr std::int32_t largest_margin = 256;

Position enlarged(Position p, std::int32_t supersample) {
    return {p.x * supersample, p.y * supersample};
}

// Gathers where an item lies. Places that are no numbers may be anywhere.
class Item_Extent {
public:
    void add(Position p) {
        if (!std::isfinite(p.x) || !std::isfinite(p.y)) {
            extent_.include({-farthest, -farthest, 0});
            extent_.include({farthest, farthest, 0});
            return;
        }
        const auto whole = [](double v) {
            return static_cast<std::int32_t>(std::floor(std::clamp<double>(v, -farthest, farthest)));
        };
        extent_.include({whole(p.x), whole(p.y), 0});
    }
    // beside: how far pixels lie beside the places.
    model::Extent with(std::int32_t beside) const {
        model::Extent extent = extent_;
        if (!extent.is_empty()) {
            extent.box = {extent.box.left - beside, extent.box.right + beside, extent.box.bottom - beside,
                          extent.box.top + beside};
        }
        return extent;
    }

private:
    static constexpr std::int32_t farthest = 1 << 30;

    model::Extent extent_;
};

model::Extent extent_of(const Map_Item& item, const View& view, std::int32_t supersample) {
    Item_Extent extent;
    return std::visit(
        [&](const auto& found) {
            using Item = std::decay_t<decltype(found)>;
            if constexpr (std::is_same_v<Item, Face_Item>) {
                for (const Path& ring : *found.face) {
                    std::ranges::for_each(ring, [&](Position p) { extent.add(view.device_place(p)); });
                }
                return extent.with(0);
            } else if constexpr (std::is_same_v<Item, Line_Item>) {
                std::ranges::for_each(*found.path, [&](Position p) { extent.add(view.device_place(p)); });
                return extent.with(found.paint.width + 2);
            } else if constexpr (std::is_same_v<Item, Mark_Item>) {
                extent.add(view.device_place(found.place));
                return extent.with(found.paint.size + 2);
            } else if constexpr (std::is_same_v<Item, Form_Item>) {
                for (const Path& ring : *found.outline) {
                    std::ranges::for_each(ring, [&](Position p) { extent.add(enlarged(p, supersample)); });
                }
                return extent.with(0);
            } else {
                const VT_Int_Rectangle& box = found.lettering->box;
                extent.add(enlarged({double(box.left), double(box.bottom)}, supersample));
                extent.add(enlarged({box.right + 1.0, box.top + 1.0}, supersample));
                return extent.with(0);
            }
        },
        item);
}

void sort(const Map_Items& items, const map::Map_Scene& scene, const Tile_Grid& grid, model::Tile_Bins& bins) {
    bins.start(grid);
    if (bins.sorts()) {
        for (std::size_t i = 0; i < items.size(); ++i) {
            bins.add(static_cast<std::uint32_t>(i), extent_of(items[i], scene.view(), scene.supersample()));
        }
        bins.finish();
    }
}

// Equal markers that follow one another, drawn in one call.
class Mark_Run {
public:
    explicit Mark_Run(Map_Painter& painter) : painter_(painter) {}

    void add(const Mark_Item& item) {
        constexpr std::size_t most = 4096;
        if (places_.size() == most || (!places_.empty() && item.paint != paint_)) {
            finish();
        }
        paint_ = item.paint;
        places_.push_back(item.place);
    }
    void finish() {
        if (!places_.empty()) {
            painter_.mark(places_, paint_);
            places_.clear();
        }
    }

private:
    Map_Painter& painter_;
    map::Marker_Paint paint_;
    std::vector<Position> places_;
};

void draw_items(const Map_Items& items, const model::Tile_Bins& bins, std::size_t tile, std::int32_t supersample,
                Map_Painter& painter) {
    Mark_Run marks(painter);
    const auto draw_item = [&](const auto& item) {
        using Item = std::decay_t<decltype(item)>;
        if constexpr (std::is_same_v<Item, Face_Item>) {
            painter.fill(*item.face, item.color);
        } else if constexpr (std::is_same_v<Item, Line_Item>) {
            painter.draw(*item.path, item.paint);
        } else if constexpr (std::is_same_v<Item, Mark_Item>) {
            marks.add(item);
        } else if constexpr (std::is_same_v<Item, Form_Item>) {
            Face face = *item.outline;
            for (Path& ring : face) {
                std::ranges::transform(ring, ring.begin(), [&](Position p) { return enlarged(p, supersample); });
            }
            painter.fill_pixels(face, item.color);
        } else {
            painter.write(*item.lettering, supersample);
        }
    };
    bins.for_each(tile, items.size(), [&](std::size_t i) {
        if (!std::holds_alternative<Mark_Item>(items[i])) {
            marks.finish();
        }
        std::visit(draw_item, items[i]);
    });
    marks.finish();
}

} // namespace

void Map_Drawing::set_view(const View& view) {
    view_ = view;
    supersample_ = 0;
}

VT_Int_Pair Map_Drawing::set_scale(VT_Int_Pair size, const Print_Settings& print) {
    const std::optional<double> unit = unit_metres(print);
    const bool is_usual = !unit && scene_->is_drawing();
    set_view(scene_->scaled(size, scaled_pixels_per_metre(print).value(), is_usual ? millimetre : unit));
    return view_->size;
}

Drawing_Needs Map_Drawing::needs(VT_Int_Pair size, std::int32_t supersample) const {
    constexpr double item_work = 1000, pixel_work = 0.5; // nanoseconds, roughly
    constexpr std::uint64_t position_memory = 2 * sizeof(Position), item_memory = sizeof(Map_Item) + 32;
    const View own = view_of(size), view = own.enlarged(supersample);
    const std::size_t item_count = scene_->item_count(own);
    Drawing_Needs needs{.beyond = 0,
                        .margin = 0,
                        .one_piece = {},
                        .pixel_memory = look_.indexed ? 1U : 4U,
                        .thread_memory = position_memory * scene_->most_positions(),
                        .prepared_memory = item_memory * item_count,
                        .work = item_work * static_cast<double>(item_count) + pixel_work * size.x * size.y};
    const double longest = scene_->longest_segment() * view.scale;
    for (const map::Line_Paint& paint : scene_->line_paints(view, supersample)) {
        needs.margin = std::max(needs.margin, Map_Painter::tile_margin(paint));
        const bool is_walked_whole = !paint.is_dashed() || longest <= Map_Painter::longest_dashed_segment(paint);
        if (needs.margin > largest_margin || !is_walked_whole) {
            needs.one_piece = "its dashes are longer than " + std::to_string(largest_margin) + " pixels or very many";
        }
    }
    return needs;
}

void Map_Drawing::prepare(const Tile_Grid& grid, std::int32_t supersample, std::int32_t /*frame*/) {
    const VT_Int_Pair size{(grid.frame.right - grid.frame.left + 1) / supersample,
                           (grid.frame.top - grid.frame.bottom + 1) / supersample};
    if (supersample_ != supersample || laid_out_size_ != size) {
        scene_->lay_out(view_of(size), supersample);
        supersample_ = supersample;
        laid_out_size_ = size;
    }
    // Dashes of large images must not cross the clip's edge, see draw_line_in_tile: it lies beside the image.
    clip_ = grid.frame;
    if (std::max(clip_.right - clip_.left, clip_.top - clip_.bottom) >= largest_buffer_side) {
        clip_ = {clip_.left - grid.margin, clip_.right + grid.margin, clip_.bottom - grid.margin, clip_.top + grid.margin};
    }
    sort(scene_->items(), *scene_, grid, items_);
    sort(scene_->overlay(), *scene_, grid, overlay_items_);
    sort(scene_->labels(), *scene_, grid, label_items_);
}

void Map_Drawing::set_options(Session& session) const {
    session.options().set_color_system(look_.indexed ? 0 : 1);
    session.options().set_buffer_depth(0);
    if (look_.indexed) {
        session.options().set_palette(scene_->palette());
    }
    if (scene_->is_clipped()) {
        session.renderer().requested_table.find("Use Mask")->set(true);
    }
    if (scene_->merges()) {
        const VT_RGB32 b = look_.background;
        session.renderer().requested_table.find("Merge Control Background Color")->set(VT_Int_RGB{b.red, b.green, b.blue});
    }
}

void Map_Drawing::set_attributes(VT_Rendition& rendition) const {
    rendition.clip.hard_clip = clip_;
    rendition.line.flags = look_.smoothed && supersample_ == 1 ? vorna::line_flag::smoothed : 0;
    rendition.line.cap = vorna::line_cap::butt;
    if (scene_->is_clipped()) {
        std::vector<VT_Contour_Set::Contour> contours;
        for (const Path& ring : scene_->clip()) {
            VT_Contour_Set::Contour& contour = contours.emplace_back();
            for (const Position& place : ring) {
                contour.push_back({static_cast<float>(place.x), static_cast<float>(place.y), 0});
            }
        }
        rendition.clip.complex_clip = new VT_Contour_Set(std::move(contours));
    }
}

void Map_Drawing::draw(Session& session, const VT_Rendition& rendition, std::size_t tile, const Background&) const {
    VT_Renderer_Data& renderer = session.renderer();
    const View& view = scene_->view();
    Map_Painter painter(renderer, rendition, view);
    draw_items(scene_->items(), items_, tile, supersample_, painter);
    if (!scene_->overlay().empty()) {
        const VT_Reference<VT_Rendition> over(new VT_Rendition(rendition));
        if (scene_->merges()) {
            over->face.mode = over->line.mode = over->marker.mode = vorna::merge_drawing_mode;
        }
        Map_Painter overlay_painter(renderer, *over, view);
        draw_items(scene_->overlay(), overlay_items_, tile, supersample_, overlay_painter);
    }
    draw_items(scene_->labels(), label_items_, tile, supersample_, painter);
}

} // namespace vorna::drawing
