// Models of the formats that have readers here: read, and drawn when they are right. The first byte says the format, the second
// one how it is drawn; an OBJ file's material library may follow it behind a line of its own.
#include <filesystem>
#include <fstream>
#include <random>

#include "app/commands/model_options.h"
#include "drawing/model/model_reader.h"
#include "tests/fuzz/fuzzing.h"

namespace {

using namespace vorna::app;
using namespace vorna::drawing;

// Where material libraries lie, with an image that they may name.
class Folder {
public:
    Folder() : path_(std::filesystem::temp_directory_path() / ("vorna-fuzz-" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directories(path_);
        std::ofstream image(path_ / "image.png", std::ios::binary);
        constexpr unsigned char png[] = {0x89, 'P',  'N',  'G',  13,   10,   26,   10,   0,   0,    0,    13,   'I',  'H',  'D',
                                         'R',  0,    0,    0,    2,    0,    0,    0,    2,   8,    6,    0,    0,    0,    0x72,
                                         0xB6, 0x0D, 0x24, 0,    0,    0,    0x11, 'I',  'D', 'A',  'T',  0x78, 0x9C, 0x63, 0xF8,
                                         0xCF, 0xC0, 0xF0, 0x1F, 0x84, 0x19, 0x60, 0x0C, 0,   0x47, 0xCA, 0x07, 0xF9, 0x67, 0x59,
                                         0x6E, 0xB7, 0,    0,    0,    0,    'I',  'E',  'N', 'D',  0xAE, 0x42, 0x60, 0x82};
        image.write(reinterpret_cast<const char*>(png), sizeof png);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    std::string file(const char* name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

model::Mesh read_obj_with_library(std::string_view content, Load_Limits& limits) {
    static const Folder folder;
    constexpr std::string_view border = "\n----\n";
    const std::size_t end = content.find(border);
    if (end != content.npos) {
        const std::string_view library = content.substr(end + border.size());
        std::ofstream(folder.file("library.mtl"), std::ios::binary)
            .write(library.data(), static_cast<std::streamsize>(library.size()));
    }
    return model::read_obj(folder.file("model.obj"), content.substr(0, end), limits);
}

model::Mesh read(std::size_t format, std::string_view content) {
    const std::string name = "model";
    Load_Limits limits;
    return format == 0   ? model::read_ply(name, content, limits)
           : format == 1 ? model::read_stl(name, content, limits)
                         : read_obj_with_library(content, limits);
}

void draw(const model::Mesh& mesh, std::uint8_t style) {
    Model_Options options;
    constexpr model::Shading shadings[] = {model::Shading::automatic, model::Shading::flat, model::Shading::textured,
                                           model::Shading::wireframe, model::Shading::hidden_line};
    options.picture.shading = shadings[style % 5];
    options.edges = (style & 4) != 0 ? "all" : (style & 8) != 0 ? "feature" : "";
    options.colors = (style & 16) != 0 ? 8 : 32;
    options.antialias = (style & 32) != 0 && options.colors == 32 && (options.has_edges() || !mesh.lines.empty());
    constexpr VT_Int_Pair size{48, 40};
    const Model_Look look = look_of(options, !mesh.lines.empty(), palette_of(options).drawn);
    Model_Drawing drawing(make_model(options, mesh), look, camera_settings_of(options, mesh, size));
    const Tile_Grid grid({0, size.x, 0, size.y});
    drawing.prepare(grid, 1, 0);
    Tile_Renderer(fuzzing::renderer_module()).draw(drawing, grid, 0, background_of(options));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::Bytes input(fuzzing::text_of(data, size));
    const std::size_t format = input.choice(3);
    const std::uint8_t style = input.byte();
    fuzzing::try_out([&] {
        model::Mesh mesh = read(format, input.rest());
        model::finish_mesh(mesh, "model", (style & 64) != 0 ? std::optional(180.0) : std::nullopt);
        draw(mesh, style);
    });
    return 0;
}
