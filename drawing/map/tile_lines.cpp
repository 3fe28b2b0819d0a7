// Solid lines of one pixel in a window on a part of an image.
#include "drawing/map/tile_lines.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "host/clip.h"
#include "host/frame_buffer.h"
#include "host/segment_clip.h"
#include "vorna/draw.h"

namespace vorna::drawing::map {
namespace {

constexpr std::int32_t beside = 2; // columns and rows around the window: segments there may have pixels in it

bool touches(const VT_Int_Rectangle& window, const VT_DCI_Point& a, const VT_DCI_Point& b) {
    return std::max(a.x, b.x) >= window.left - beside && std::min(a.x, b.x) <= window.right + beside &&
           std::max(a.y, b.y) >= window.bottom - beside && std::min(a.y, b.y) <= window.top + beside;
}

// Device lines, joined into polylines while they touch the window: the ends of polylines lie outside it.
class Device_Lines {
public:
    Device_Lines(VT_Renderer_Data& renderer, const VT_Rendition& rendition) : renderer_(renderer), rendition_(rendition) {}

    void add(const VT_DCI_Point& from, const VT_DCI_Point& to) {
        if (!touches(rendition_.window.rectangle, from, to)) {
            finish();
            return;
        }
        if (points_.empty()) {
            points_.push_back(from);
        }
        points_.push_back(to);
    }

    // The next segment begins a polyline.
    void finish() {
        if (!points_.empty()) {
            VD_Draw_DCI_Polyline(renderer_, rendition_, static_cast<std::int32_t>(points_.size()), points_.data());
            points_.clear();
        }
    }

private:
    VT_Renderer_Data& renderer_;
    const VT_Rendition& rendition_;
    std::vector<VT_DCI_Point> points_;
};

// A long segment in pieces short enough for device lines, whose columns relative to the window must fit 16 bits. Piece k ends
// where the segment passes nearest to a pixel centre among the steps around (k + 1) * length, independent of the window.
class Long_Segment {
public:
    static constexpr std::int64_t length = 8192;

    Long_Segment(const VT_DCI_Point& from, const VT_DCI_Point& to)
        : from_(from), to_(to), dx_(std::int64_t{to.x} - from.x), dy_(std::int64_t{to.y} - from.y),
          steps_(std::max(std::abs(dx_), std::abs(dy_))) {}

    std::int64_t pieces() const { return steps_ / length + 1; }
    std::int64_t steps() const { return steps_; }

    // The start of piece k.
    VT_DCI_Point start(std::int64_t k) const {
        if (k <= 0) {
            return from_;
        }
        if (k >= pieces()) {
            return to_;
        }
        const std::int64_t movement = std::min(std::abs(dx_), std::abs(dy_));
        std::int64_t best = k * length, least = steps_;
        for (std::int64_t i = best; i > best - length / 4; --i) {
            const std::int64_t past = movement * i % steps_, distance = std::min(past, steps_ - past);
            if (distance < least) {
                least = distance;
                best = i;
            }
        }
        const auto moved = [&](std::int32_t start, std::int64_t change) {
            const double way = static_cast<double>(change * best) / static_cast<double>(steps_);
            return start + static_cast<std::int32_t>(std::floor(way + 0.5));
        };
        return {moved(from_.x, dx_), moved(from_.y, dy_), 0};
    }

private:
    VT_DCI_Point from_, to_;
    std::int64_t dx_, dy_, steps_;
};

void add_long_segment(Device_Lines& lines, const VT_Int_Rectangle& window, const VT_DCI_Point& from, const VT_DCI_Point& to) {
    const Long_Segment segment(from, to);
    if (segment.steps() <= Long_Segment::length) {
        lines.add(from, to);
        return;
    }
    Segment_Part part;
    part.cut_between(from.x, double(to.x) - from.x, window.left - beside, window.right + beside);
    part.cut_between(from.y, double(to.y) - from.y, window.bottom - beside, window.top + beside);
    if (!part.is_visible()) {
        lines.finish();
        return;
    }
    // One more piece on each side, since ends are rounded.
    const auto piece_at = [&](double parameter) {
        return static_cast<std::int64_t>(parameter * static_cast<double>(segment.steps()) / Long_Segment::length);
    };
    const std::int64_t first = std::max<std::int64_t>(piece_at(part.entering) - 1, 0);
    const std::int64_t last = std::min(piece_at(part.leaving) + 1, segment.pieces() - 1);
    if (first > 0) {
        lines.finish();
    }
    for (std::int64_t k = first; k <= last; ++k) {
        lines.add(segment.start(k), segment.start(k + 1));
    }
    if (last + 1 < segment.pieces()) {
        lines.finish();
    }
}

// A segment that crosses the image's edge. Its last pixel belongs to the next segment; a polyline ends with it, so the clip
// excludes its column or row.
void draw_crossing(VT_Renderer_Data& renderer, VT_Rendition& rendition, const VT_DCI_Point& from, const VT_DCI_Point& to,
                   bool ends_inside) {
    const VT_DCI_Point segment[] = {from, to};
    const VT_Int_Rectangle image = rendition.clip.hard_clip;
    if (ends_inside) {
        VT_Int_Rectangle& clip = rendition.clip.hard_clip;
        if (std::abs(std::int64_t{to.x} - from.x) >= std::abs(std::int64_t{to.y} - from.y)) {
            from.x < to.x ? clip.right = to.x - 1 : clip.left = to.x + 1;
        } else {
            from.y < to.y ? clip.top = to.y - 1 : clip.bottom = to.y + 1;
        }
    }
    VD_Draw_2DI_Polyline(renderer, rendition, 2, segment);
    rendition.clip.hard_clip = image;
}

} // namespace

void draw_line_in_tile(VT_Renderer_Data& renderer, VT_Rendition& rendition, const std::vector<VT_DCI_Point>& points) {
    const VT_Int_Rectangle image = rendition.clip.hard_clip, window = rendition.window.rectangle;
    Device_Lines lines(renderer, rendition);
    if (std::max(image.right - image.left, image.top - image.bottom) >= largest_buffer_side) {
        for (std::size_t k = 0; k + 1 < points.size(); ++k) {
            add_long_segment(lines, window, points[k], points[k + 1]);
        }
        lines.finish();
        return;
    }
    const auto count = static_cast<std::int32_t>(points.size());
    std::vector<std::uint16_t> outcodes(points.size());
    const std::int32_t inside = VD_Clip(image, count, points.data(), outcodes.data());
    if (inside == 0) {
        return;
    }
    const std::size_t end = points.size() - 1;
    if (outcodes[end] == 0 && outcodes[end - 1] != 0) {
        VD_Draw_DCI_Dot(renderer, rendition, &points[end], nullptr);
    }
    for (std::size_t k = 0; k < end; ++k) {
        const std::uint16_t a = outcodes[k], b = outcodes[k + 1];
        if ((a | b) == 0) {
            lines.add(points[k], points[k + 1]);
            continue;
        }
        lines.finish();
        if ((a & b) == 0 && touches(window, points[k], points[k + 1])) {
            draw_crossing(renderer, rendition, points[k], points[k + 1], b == 0);
        }
    }
    lines.finish();
}

} // namespace vorna::drawing::map
