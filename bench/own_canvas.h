// The renderer as an application uses it: loaded as a module, drawing through its slots.
#pragma once

#include "bench/canvas.h"
#include "renderer/host/rendition.h"

namespace bench {

class Own_Canvas : public Canvas {
public:
    Own_Canvas(const vorna::Module& module, const Surface& surface);

    void clear_color() override;
    void clear_depth() override;
    void draw() final;
    void finish() override {}
    std::vector<bool> painted_pixels() override;

protected:
    // Between the begin and the end of a picture.
    virtual void draw_scene() = 0;

    const Surface& surface() const noexcept { return surface_; }
    VT_Renderer_Data& renderer() noexcept { return *renderer_; }
    VT_Rendition& rendition() noexcept { return *rendition_; }

private:
    Surface surface_;
    VT_Reference<VT_Renderer_Data> prototype_{new VT_Renderer_Data};
    VT_Reference<VT_Rendition> rendition_{new VT_Rendition};
    vorna::Module::Renderer renderer_;
};

} // namespace bench
