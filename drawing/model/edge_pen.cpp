// Draws segments of edges in a window.
#include "drawing/model/edge_pen.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "drawing/model/tiles.h"
#include "vorna/draw.h"

namespace vorna::drawing::model {
namespace {

// Steps of a line: columns of more would not fit the renderer's 16 bits, counted from a tile.
constexpr std::int32_t longest_line = 16384;
// Steps of smoothed edges over faces of which a tile that they touch sees all.
constexpr std::int32_t longest_seen_whole = 64;
// Rounding hides a pixel here and there of an edge that can be seen: gaps as short as that are closed.
constexpr std::int32_t longest_gap = 2;

bool same(const VT_DCI_Point& a, const VT_DCI_Point& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

// Calls piece(from, to) for the parts of a segment that are drawn one by one, so many steps long at most: where they end does not
// depend on the tile. Parts end where the segment passes nearest to a pixel's middle.
template <class Piece> void cut_in_pieces(const VT_DCI_Point& from, const VT_DCI_Point& to, std::int32_t longest, Piece piece) {
    const std::int64_t dx = to.x - from.x, dy = to.y - from.y, dz = to.z - from.z;
    const std::int64_t steps = std::max(std::abs(dx), std::abs(dy)), movement = std::min(std::abs(dx), std::abs(dy));
    const auto point_at = [&](std::int64_t i) {
        const auto moved = [=](std::int32_t start, std::int64_t change) {
            return start +
                   static_cast<std::int32_t>(std::floor(static_cast<double>(change * i) / static_cast<double>(steps) + 0.5));
        };
        return VT_DCI_Point{moved(from.x, dx), moved(from.y, dy), moved(from.z, dz)};
    };
    VT_DCI_Point start = from;
    for (std::int64_t first = 0; steps - first > longest;) {
        std::int64_t best = first + longest, least = steps;
        for (std::int64_t i = best; i >= first + longest / 2; --i) {
            const std::int64_t beside = movement * i % steps, distance = std::min(beside, steps - beside);
            if (distance < least) {
                least = distance;
                best = i;
            }
        }
        const VT_DCI_Point end = point_at(best);
        piece(start, end);
        start = end;
        first = best;
    }
    piece(start, to);
}

} // namespace

Kept_Pixels::Kept_Pixels(VT_Renderer_Data& renderer, const VT_Int_Rectangle& window) : renderer_(renderer), window_(window) {
    const VT_Option* option = renderer.current_table.find("Color Buffer");
    buffer_ = option ? option->as_object<Frame_Buffer>() : nullptr;
    origin_ = renderer.current_options.window_origin();
}

void Kept_Pixels::keep(const VT_Int_Rectangle& rectangle) {
    const VT_Int_Rectangle area = common_part(rectangle, window_);
    if (!buffer_ || area.left > area.right || area.bottom > area.top) {
        return;
    }
    const auto width = static_cast<std::size_t>(area.right - area.left) + 1;
    areas_.push_back(area);
    for (std::int32_t y = area.top; y >= area.bottom; --y) {
        const std::uint8_t* row = buffer_->rows[y - origin_.y] + 4 * std::ptrdiff_t{area.left - origin_.x};
        colors_.resize(colors_.size() + width);
        std::memcpy(colors_.data() + colors_.size() - width, row, 4 * width);
    }
}

void Kept_Pixels::restore(const VT_Rendition& rendition) {
    const VT_RGB32* colors = colors_.data();
    for (const VT_Int_Rectangle& area : areas_) {
        const VT_DCI_Point top_left{area.left, area.top, 0}, bottom_right{area.right, area.bottom, 0};
        const std::int32_t width = area.right - area.left + 1;
        VD_Draw_DCI_RGB32_Image(renderer_, rendition, &top_left, &bottom_right, 4 * width, colors, 0, nullptr);
        colors += std::ptrdiff_t{width} * (area.top - area.bottom + 1);
    }
    areas_.clear();
    colors_.clear();
}

Edge_Pen::Edge_Pen(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_Int_Rectangle& window, bool is_whole,
                   const Edge_Settings& settings, VT_RGB32 color)
    : renderer_(renderer), rendition_(new VT_Rendition(rendition)), window_(window), is_whole_(is_whole), width_(settings.width),
      beside_(pixels_beside(settings)) {
    VT_Line_Attributes& line = rendition_->line;
    line = {};
    line.color = color;
    line.index = static_cast<std::uint8_t>(renderer.current_options.palette().closest_match(color, false));
    // A wide line consists of lines side by side, which smoothing would make translucent.
    const bool smoothed = settings.smoothed && settings.width == 1;
    line.flags = smoothed ? vorna::line_flag::smoothed : 0;
    rendition_->clip.depth_test = settings.over_faces && !smoothed;
    if (settings.over_faces && smoothed) {
        depths_.emplace(renderer, rendition, window);
        kept_.emplace(renderer, window);
    }
}

void Edge_Pen::draw(const VT_DCI_Point& from, const VT_DCI_Point& to, const VT_RGB32* color) {
    if (!depths_ && is_whole_) {
        append(from, to, color);
    } else if (!depths_) {
        cut_in_pieces(from, to, longest_line, [&](const VT_DCI_Point& start, const VT_DCI_Point& end) {
            if (touches_window(start, end)) {
                append(start, end, color);
            } else {
                end_polyline();
            }
        });
    } else if (std::max(std::abs(to.x - from.x), std::abs(to.y - from.y)) > longest_seen_whole) {
        end_polyline();
        draw_visible_part(from, to, color);
    } else if (contains(window_, from.x, from.y) && contains(window_, to.x, to.y)) {
        draw_visible(from, to, color);
    } else {
        end_polyline(); // too far from the tile to be seen in it
    }
}

bool Edge_Pen::touches_window(const VT_DCI_Point& from, const VT_DCI_Point& to) const {
    Extent extent;
    extent.include(from);
    extent.include(to);
    const VT_Int_Rectangle box{extent.box.left - beside_, extent.box.right + beside_, extent.box.bottom - beside_,
                               extent.box.top + beside_};
    const VT_Int_Rectangle common = common_part(box, window_);
    return common.left <= common.right && common.bottom <= common.top;
}

void Edge_Pen::append(const VT_DCI_Point& from, const VT_DCI_Point& to, const VT_RGB32* color) {
    if (width_ > 1) {
        draw_wide(from, to, color);
        return;
    }
    if (points_.empty() || !same(points_.back(), from)) {
        end_polyline();
        points_.push_back(from);
    }
    points_.push_back(to);
    if (color) {
        colors_.push_back(*color);
    }
}

// Lines of one pixel side by side, which are the same in every tile. Nothing is joined: later segments lie over earlier ones.
void Edge_Pen::draw_wide(const VT_DCI_Point& from, const VT_DCI_Point& to, const VT_RGB32* color) {
    const bool by_columns = std::abs(to.x - from.x) > std::abs(to.y - from.y);
    for (std::int32_t shift = -(width_ - 1) / 2; shift <= width_ / 2; ++shift) {
        VT_DCI_Point points[2] = {from, to};
        for (VT_DCI_Point& p : points) {
            (by_columns ? p.y : p.x) += shift;
        }
        if (color) {
            VD_Draw_DCI_Colorized_Polyline(renderer_, *rendition_, 2, points, color, true);
        } else {
            VD_Draw_DCI_Polyline(renderer_, *rendition_, 2, points);
        }
    }
}

// Of a segment too long to be seen whole from a tile. All of it is drawn, for the pixels of a part depend on where it begins
// and ends, and what is hidden gets its colours back. No polyline: whether it is joined to others may not depend on the tile.
void Edge_Pen::draw_visible_part(const VT_DCI_Point& from, const VT_DCI_Point& to, const VT_RGB32* color) {
    if (!touches_window(from, to)) {
        return;
    }
    const std::int64_t dx = to.x - from.x, dy = to.y - from.y, dz = to.z - from.z;
    const bool by_columns = std::abs(dx) > std::abs(dy);
    const auto steps = static_cast<std::int32_t>(std::max(std::abs(dx), std::abs(dy)));
    // The steps inside the window.
    const std::int32_t start = by_columns ? from.x : from.y, direction = (by_columns ? dx : dy) > 0 ? 1 : -1;
    const std::int32_t low = (by_columns ? window_.left : window_.bottom) - start,
                       high = (by_columns ? window_.right : window_.top) - start;
    const std::int32_t first = std::max(direction > 0 ? low : -high, 0), end = std::min(direction > 0 ? high : -low, steps) + 1;
    const auto place = [&](std::int32_t i) {
        const auto moved = [=](std::int32_t from_here, std::int64_t change) {
            return from_here + static_cast<std::int32_t>(std::floor(static_cast<double>(change * i) / steps + 0.5));
        };
        return VT_DCI_Point{moved(from.x, dx), moved(from.y, dy), moved(from.z, dz)};
    };
    // In blocks of few steps, whose rectangles are small. All pixels of a step lie in its column, or in its row for steep
    // segments.
    const auto keep = [&](std::int32_t begin, std::int32_t stop) {
        // One more to each side than a line has.
        constexpr std::int32_t reach = 2, longest_block = 8;
        for (std::int32_t i = begin; i < stop; i += longest_block) {
            const std::int32_t last = std::min(i + longest_block, stop) - 1;
            Extent block;
            block.include(place(i));
            block.include(place(last));
            if (last == steps) { // The last pixel is drawn with those beside it in its row.
                block.include({to.x + direction, to.y, 0});
            }
            (by_columns ? block.box.bottom : block.box.left) -= reach;
            (by_columns ? block.box.top : block.box.right) += reach;
            kept_->keep(block.box);
        }
    };
    std::int32_t shown = first; // where the next hidden stretch may begin
    for (std::int32_t i = first; i < end; ++i) {
        const VT_DCI_Point p = place(i);
        if (!contains(window_, p.x, p.y) || p.z > depths_->at(p.x, p.y)) {
            continue;
        }
        if (i - shown > longest_gap || shown == first) {
            keep(shown, i);
        }
        shown = i + 1;
    }
    keep(shown, end);
    if (end - shown < end - first) {
        const VT_DCI_Point points[2] = {from, to};
        if (color) {
            VD_Draw_DCI_Colorized_Polyline(renderer_, *rendition_, 2, points, color, true);
        } else {
            VD_Draw_DCI_Polyline(renderer_, *rendition_, 2, points);
        }
    }
    kept_->restore(*rendition_);
}

void Edge_Pen::draw_visible(const VT_DCI_Point& from, const VT_DCI_Point& to, const VT_RGB32* color) {
    const std::int32_t dx = to.x - from.x, dy = to.y - from.y, dz = to.z - from.z;
    const std::int32_t steps = std::max(std::abs(dx), std::abs(dy));
    const auto point_at = [&](std::int32_t i) {
        const auto moved = [=](std::int32_t start, std::int32_t change) {
            return start + static_cast<std::int32_t>(std::floor(static_cast<double>(change) * i / steps + 0.5));
        };
        return i == 0 ? from : VT_DCI_Point{moved(from.x, dx), moved(from.y, dy), moved(from.z, dz)};
    };
    std::int32_t first = -1, last = -1; // of the stretch under way
    for (std::int32_t i = 0; i <= steps; ++i) {
        const VT_DCI_Point p = point_at(i);
        if (p.z > depths_->at(p.x, p.y)) {
            continue;
        }
        if (first >= 0 && i - last > longest_gap + 1) {
            append(point_at(first), point_at(last), color);
            first = i;
        }
        first = first < 0 ? i : first;
        last = i;
    }
    if (first >= 0) {
        append(point_at(first), point_at(last), color);
    }
    if (last != steps) {
        // A later edge may begin at the pixel seen last by chance: whether those between come along depends on the tile.
        end_polyline();
    }
}

void Edge_Pen::end_polyline() {
    const auto count = static_cast<std::int32_t>(points_.size());
    if (count > 1 && colors_.empty()) {
        VD_Draw_DCI_Polyline(renderer_, *rendition_, count, points_.data());
    } else if (count > 1) {
        VD_Draw_DCI_Colorized_Polyline(renderer_, *rendition_, count, points_.data(), colors_.data(), false);
    }
    points_.clear();
    colors_.clear();
}

} // namespace vorna::drawing::model
