// A model as it is drawn: its faces, its edges or both.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "drawing/model/edge_renderer.h"
#include "drawing/model/scene.h"
#include "drawing/recording/session.h"

namespace vorna::drawing {

struct Drawn_Model {
    std::unique_ptr<model::Scene> faces;
    std::unique_ptr<model::Edge_Renderer> edges;
    bool only_hides = false; // of the prepared picture: faces leave nothing but their depths

    // For fitting a camera; none when there is nothing to draw.
    std::span<const VT_Vector> points() const;
    std::string summary() const;
    std::uint64_t prepared_memory() const;
    void prepare(const model::Tile_Grid& grid, const model::Camera& camera, const model::Picture_Settings& settings,
                 const model::Edge_Settings& edge_settings);
};

// A renderer with a window for one tile at a time. Every thread has its own.
class Tile_Artist {
public:
    // palette: of buffers with 8 bits a pixel; null = 32 bits.
    Tile_Artist(const Module_Choice& module, const VT_Reference<const VT_Palette>& palette);

    // Clears the window and draws a tile of a prepared model.
    void draw(const Drawn_Model& model, const model::Tile_Grid& grid, std::size_t tile, VT_RGB32 background);
    Session& session() noexcept { return session_; }

    // Bytes of the buffers, for every pixel of the window.
    static constexpr std::uint64_t pixel_memory = 4 + 2 + 2;

private:
    void move_to(const VT_Int_Rectangle& window, const VT_Int_Rectangle& frame);

    Session session_;
    VT_Reference<VT_Rendition> rendition_;
    VT_Int_Rectangle window_{0, -1, 0, -1};
};

} // namespace vorna::drawing
