// A model laid out for drawing, once for all pictures of it.
#pragma once

#include <string>
#include <vector>

#include "app/scene/camera.h"
#include "renderer/host/renderer_data.h"
#include "renderer/host/rendition.h"

namespace app::scene {

enum class Shading { flat, gouraud, textured, wireframe };
enum class Culling { none, back };

struct Picture_Settings {
    Shading shading = Shading::gouraud;
    Culling culling = Culling::none;
    VT_Vector_D light{-0.5, 0.65, 0.7}; // towards it, in view space
};

class Scene {
public:
    Scene() = default;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    virtual ~Scene() = default;

    // The vertices that are drawn, for fitting a camera.
    virtual const std::vector<VT_Vector>& points() const noexcept = 0;
    // How large it is, in words.
    virtual std::string summary() const = 0;

    // Draws into the window's pixels. Faces seen from behind are lit from behind.
    virtual void draw(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_Int_Rectangle& window,
                      const Camera& camera, const Picture_Settings& settings) = 0;
};

} // namespace app::scene
