// A model that is not kept in memory: its triangles are read from the file while they are drawn, in the file's order.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/job/drawing.h"
#include "drawing/job/image_part.h"
#include "drawing/job/model_drawing.h"
#include "drawing/model/bounds.h"
#include "drawing/model/camera.h"
#include "drawing/model/triangle_file.h"

namespace vorna::drawing {

// Where a model lies, which all shares of its triangles must know alike.
struct Model_Framing {
    VT_Vector_D center;
    double radius = 1;
    std::vector<VT_Vector> outermost; // corners in the unit sphere that decide how the camera is fitted
};

// Faces alone, flat or with the normals of the file. A face looks to the side from which its corners run counter-clockwise, or to
// which the file's normals point. The image must be drawn in one piece.
class Streamed_Drawing final : public Drawing {
public:
    // camera: in coordinates of the unit sphere. color: of triangles without a colour of their own; of all with own_colors off.
    // file and limits must outlive the object.
    Streamed_Drawing(const model::Triangle_File& file, const Triangle_Share& share, Model_Framing framing, const Model_Look& look,
                     VT_RGB32 color, bool own_colors, const model::Camera_Settings& camera, Load_Limits& limits);

    std::string summary() const override;
    Drawing_Needs needs(VT_Int_Pair size, std::int32_t supersample) const override;
    void prepare(const Tile_Grid& grid, std::int32_t supersample, std::int32_t frame) override;
    void set_options(Session& session) const override { set_model_options(session, look_); }
    void set_attributes(VT_Rendition&) const override {}
    void draw(Session& session, const VT_Rendition& rendition, std::size_t tile, const Background& background) const override;

private:
    model::Mesh placed_mesh(std::uint64_t first, std::uint64_t end) const;

    const model::Triangle_File& file_;
    std::uint64_t first_, end_; // triangles of the file
    Model_Framing framing_;
    Model_Look look_;
    VT_RGB32 color_;
    bool own_colors_;
    model::Camera camera_;
    Load_Limits& limits_;
    Tile_Grid grid_{{}};
};

} // namespace vorna::drawing
