// Scenes: a model that is drawn from many cameras.
#include <algorithm>
#include <cstring>

#include "c/call.h"
#include "c/handles.h"
#include "c/rendering.h"
#include "drawing/drawing.h"

struct vorna_scene {
    vorna::drawing::Model_Images images;
};

using namespace vorna::c;

vorna_status vorna_scene_create(const vorna_model* model, const vorna_view* view, const vorna_image_settings* settings,
                                vorna_scene** scene) {
    return make_handle(scene, "scene", [&] {
        return std::make_unique<vorna_scene>(vorna_scene{
            vorna::drawing::Model_Images(required(model, "model").content, view_of(view), image_settings_of(settings))});
    });
}

vorna_status vorna_scene_draw(vorna_scene* scene, const vorna_view* camera, int32_t width, int32_t height, vorna_image** color,
                              vorna_image** depth, int32_t* faces, double* nearest, double* farthest) {
    return guarded([&] {
        for (vorna_image** const result : {color, depth}) {
            if (result) {
                *result = nullptr;
            }
        }
        vorna_scene& drawn = required(scene, "scene");
        require(color || depth || faces, "color, depth, faces: expected one or more pointers, found null");
        const vorna::drawing::Model_Image image =
            drawn.images.draw(view_of(camera).camera, {width, height},
                              {.colors = color != nullptr, .depths = depth != nullptr, .faces = faces != nullptr});
        std::unique_ptr<vorna_image> made_color = color ? image_of(image.colors) : nullptr;
        std::unique_ptr<vorna_image> made_depth = depth ? image_of(image.depths) : nullptr;
        if (faces) {
            std::memcpy(faces, image.faces.bytes.get(), image.faces.size());
        }
        if (nearest) {
            *nearest = image.near;
        }
        if (farthest) {
            *farthest = image.far;
        }
        if (color) {
            *color = made_color.release();
        }
        if (depth) {
            *depth = made_depth.release();
        }
    });
}

void vorna_scene_free(vorna_scene* scene) {
    delete scene;
}
