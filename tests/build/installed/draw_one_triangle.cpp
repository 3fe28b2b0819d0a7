// The least application: loads the module that its argument names and draws one triangle.
#include <cstdio>

#include "renderer/host/renderer_data.h"
#include "renderer/host/rendition.h"
#include "vorna/draw.h"
#include "vorna/module.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s MODULE\n", argv[0]);
        return 2;
    }
    const vorna::Module module(argv[1]);
    const VT_Reference<VT_Renderer_Data> prototype(new VT_Renderer_Data);
    const vorna::Module::Renderer renderer = module.create_renderer(*prototype);
    renderer->current_options.set_window_size({64, 64});
    renderer->current_options.set_color_system(1);
    renderer->establish_all();

    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->clip.hard_clip = {0, 63, 0, 63};
    rendition->face.color = {10, 20, 30, 255};
    const VT_DCI_Point points[] = {{0, 0, 0}, {63, 0, 0}, {0, 63, 0}};
    renderer->begin_picture_all();
    VD_Draw_DCI_Polytriangle(*renderer, *rendition, 3, points);
    renderer->end_picture_all();

    const VT_Option* option = renderer->current_table.find("Color Buffer");
    const auto* buffer = option ? option->as_object<Frame_Buffer>() : nullptr;
    if (!buffer || buffer->rows[10][4 * 10] != 10 || buffer->rows[10][4 * 10 + 2] != 30 || buffer->rows[60][4 * 60] != 0) {
        std::fprintf(stderr, "the triangle is not in the picture\n");
        return 1;
    }
    return 0;
}
