// Pixels of buffers and images of the host as samples, and textures of samples.
#include "drawing/raster_samples.h"

#include <cstring>

#include "drawing/drawing.h"

namespace vorna::drawing {

using Kind = Image_Samples::Kind;

Image_Samples samples_of(const Raster& raster, const VT_Palette& palette) {
    const Kind kind = raster.format == Buffer_Format::index8    ? Kind::indices
                      : raster.format == Buffer_Format::depth16 ? Kind::depths
                                                                : Kind::colors;
    Image_Samples image = make_samples(kind, raster.width, raster.height);
    const std::size_t row_bytes = static_cast<std::size_t>(image.width) * image.pixel_bytes();
    for (std::int32_t row = 0; row < raster.height; ++row) {
        const std::uint8_t* from = raster.top + row * raster.row_bytes;
        std::uint8_t* to = image.bytes.get() + static_cast<std::size_t>(row) * row_bytes;
        if (kind == Kind::colors) {
            store_samples(from, raster.width, raster.format, to);
        } else {
            std::memcpy(to, from, row_bytes);
        }
    }
    for (std::size_t i = 0; kind == Kind::indices && i < 256; ++i) {
        image.palette.push_back(palette.color(static_cast<std::uint8_t>(i)));
    }
    return image;
}

void add_texture(model::Mesh& mesh, const Image_Samples& texture) {
    if (texture.kind != Kind::colors) {
        throw Usage_Error("texture: expected colours");
    }
    model::Image_Source& source = mesh.images.emplace_back();
    source.name = "texture";
    source.embedded = true;
    source.width = texture.width;
    source.height = texture.height;
    source.bytes.resize(texture.size());
    exchange_red_and_blue(texture.bytes.get(), texture.size() / 4, reinterpret_cast<std::uint8_t*>(source.bytes.data()));
    mesh.materials.emplace_back().image = static_cast<std::uint32_t>(mesh.images.size() - 1);
    mesh.triangle_materials.assign(mesh.triangle_count(), static_cast<std::uint32_t>(mesh.materials.size() - 1));
}

} // namespace vorna::drawing
