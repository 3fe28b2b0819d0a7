// A map or drawing of a file as something to draw.
#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "drawing/job/drawing.h"
#include "drawing/job/print_settings.h"
#include "drawing/map/map_scene.h"

namespace vorna::drawing {

// How the pixels of a map look.
struct Map_Look {
    VT_RGB32 background{255, 255, 255, 255};
    bool indexed = false;  // 8 bits a pixel
    bool smoothed = false; // lines
};

class Map_Drawing final : public Drawing {
public:
    // The layout of the scene is this drawing's until another one is prepared.
    Map_Drawing(std::shared_ptr<map::Map_Scene> scene, const Map_Look& look) : scene_(std::move(scene)), look_(look) {}

    const map::Map_Scene& scene() const noexcept { return *scene_; }
    // The palette that the renderer draws with; null = 32 bits a pixel.
    VT_Reference<const VT_Palette> palette() const {
        return look_.indexed ? scene_->palette() : VT_Reference<const VT_Palette>();
    }
    // Without a view the image shows what the settings say.
    void set_view(const map::View& view);
    // Sets the view in which lengths have the scale of the settings, which give one, and returns its size. A size of {0, 0} is
    // computed.
    VT_Int_Pair set_scale(VT_Int_Pair size, const Print_Settings& print);
    void set_look(const Map_Look& look) { look_ = look; }

    std::string summary() const override { return scene_->summary(); }
    Drawing_Needs needs(VT_Int_Pair size, std::int32_t supersample) const override;
    void prepare(const Tile_Grid& grid, std::int32_t supersample, std::int32_t frame) override;
    void set_options(Session& session) const override;
    void set_attributes(VT_Rendition& rendition) const override;
    void draw(Session& session, const VT_Rendition& rendition, std::size_t tile, const Background& background) const override;

    // What an image of this size shows.
    map::View view_of(VT_Int_Pair size) const { return view_ ? *view_ : scene_->fitted(size); }

private:
    std::shared_ptr<map::Map_Scene> scene_;
    Map_Look look_;
    std::optional<map::View> view_;
    // Of the prepared image.
    VT_Int_Rectangle clip_{};
    std::int32_t supersample_ = 0; // 0 = not laid out yet
    VT_Int_Pair laid_out_size_;
    model::Tile_Bins items_, overlay_items_, label_items_; // numbers of items, by tile
};

} // namespace vorna::drawing
