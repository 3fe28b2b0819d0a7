// Drawing of transformed points that may lie anywhere, in the coordinates of the window, which is one tile of the picture.
#include "renderer/core/tile.h"

#include <algorithm>

#include "host/window.h"

namespace krb {

namespace {

constexpr std::int64_t guard_distance = vorna::farthest_window_side;

std::int32_t clamped_to_int32(std::int64_t coordinate) noexcept {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(coordinate, INT32_MIN, INT32_MAX));
}

// A side of the clip, moved into the tile. A clip beside the tile becomes the column or row of the tile next to it.
std::int32_t clamped_side(std::int32_t side, std::int32_t origin, std::int32_t size) noexcept {
    return static_cast<std::int32_t>(std::min<std::int64_t>(std::max<std::int64_t>(std::int64_t{side} - origin, 0), size - 1));
}

bool moves_complex_clip(const VT_Clip_Attributes& clip, VT_Int_Pair origin) noexcept {
    return clip.complex_clip && origin != VT_Int_Pair{};
}

// The complex clip moves with the points.
void move_complex_clip(VT_Clip_Attributes& clip, VT_Int_Pair origin) {
    const bool is_shifted = clip.window_offset.x < 0 || clip.window_offset.y < 0;
    const VT_Int_Pair before = is_shifted ? clip.window_offset : VT_Int_Pair{};
    clip.complex_clip = clip.complex_clip->moved({wrapping_subtract(before.x, origin.x), wrapping_subtract(before.y, origin.y)});
    clip.window_offset = {};
}

} // namespace

// The rendition is copied only where a clip changes, since a copy takes longer than a short line. Nothing holds a reference to the
// caller's: hosts keep renditions on the stack too, and the release of the last reference would delete them. The caller's
// rendition outlives the call.
Tile::Tile(Software_Z_Buffer& renderer, const VT_Rendition& rendition)
    : renderer_(renderer), origin_(renderer.window_origin), outer_origin_(renderer.tile_origin),
      keeps_to_hard_clip_(renderer.keeps_to_hard_clip),
      has_local_coordinates_(renderer.current_renderer_options().local_coordinates()),
      rendition_(&rendition), guard_band_{clamped_to_int32(origin_.x - guard_distance),
                                          clamped_to_int32(origin_.x + guard_distance),
                                          clamped_to_int32(origin_.y - guard_distance),
                                          clamped_to_int32(origin_.y + guard_distance)} {
    const VT_Int_Pair size = renderer.window_size;
    const VT_Int_Rectangle& clip = rendition.clip.hard_clip;
    const VT_Int_Rectangle of_tile{clamped_side(clip.left, origin_.x, size.x), clamped_side(clip.right, origin_.x, size.x),
                                   clamped_side(clip.bottom, origin_.y, size.y), clamped_side(clip.top, origin_.y, size.y)};
    const bool moves = moves_complex_clip(rendition.clip, origin_);
    if (moves || of_tile != clip) {
        copy_ = new VT_Rendition(rendition);
        copy_->set_hard_clip_unrestricted(of_tile, false);
        if (moves) {
            move_complex_clip(copy_->clip, origin_);
        }
        rendition_ = copy_.get();
    }
    renderer_.window_origin = {};
    renderer_.tile_origin = {wrapping_add(outer_origin_.x, origin_.x), wrapping_add(outer_origin_.y, origin_.y)};
    renderer_.keeps_to_hard_clip = true;
    renderer_.current_renderer_options_for_update().set_local_coordinates(true);
}

Tile::~Tile() {
    renderer_.window_origin = origin_;
    renderer_.tile_origin = outer_origin_;
    renderer_.keeps_to_hard_clip = keeps_to_hard_clip_;
    renderer_.current_renderer_options_for_update().set_local_coordinates(has_local_coordinates_);
}

} // namespace krb
