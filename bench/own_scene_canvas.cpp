// The renderer's side of the triangles.
#include <cstring>

#include "bench/own_canvas.h"
#include "vorna/draw.h"

namespace bench {

namespace {

VT_Reference<const VT_Basic_Material> noise_material() {
    const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
    const VT_Reference<VT_Shared_Image> image(
        new VT_Shared_Image(texture_side, texture_side, Buffer_Format::rgb32, 4 * texture_side, nullptr, false, true));
    const std::vector<VT_RGB32> texels = noise_texels();
    std::memcpy(image->row(0), texels.data(), texels.size() * sizeof texels[0]);
    material->texture = image;
    return material;
}

class Own_Scene_Canvas final : public Own_Canvas {
public:
    Own_Scene_Canvas(const vorna::Module& module, const Surface& surface, const Scene& scene)
        : Own_Canvas(module, surface), scene_(scene) {
        if (surface.shading == Shading::textured) {
            rendition().face.material = noise_material();
        }
    }

private:
    void draw_scene() override {
        scene_.for_each_strip([this](const Strip& strip) { draw_strip(strip); });
        if (!scene_.polygon.empty()) {
            VD_Draw_2D_Polygon(renderer(), rendition(), static_cast<std::int32_t>(scene_.polygon.size()), scene_.polygon.data(),
                               nullptr);
        }
    }

    void draw_strip(const Strip& strip) {
        switch (surface().shading) {
        case Shading::flat:
            VD_Draw_DCI_Colorized_Polytriangle(renderer(), rendition(), strip.length, strip.points, strip.colors + 2, false);
            break;
        case Shading::gouraud:
            VD_Draw_DCI_Gouraud_Polytriangle(renderer(), rendition(), strip.length, strip.points, strip.colors);
            break;
        case Shading::textured:
            VD_Draw_DCI_Textured_Polytriangle(renderer(), rendition(), strip.length, strip.points, strip.colors,
                                              &strip.texture_points->u, 2, nullptr, nullptr);
            break;
        }
    }

    const Scene& scene_;
};

} // namespace

std::unique_ptr<Canvas> make_own_canvas(const vorna::Module& module, const Surface& surface, const Scene& scene) {
    return std::make_unique<Own_Scene_Canvas>(module, surface, scene);
}

} // namespace bench
