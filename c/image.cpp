// Images: pixels in memory and in files.
#include "drawing/image/image.h"

#include <cstring>
#include <optional>
#include <utility>

#include "c/call.h"
#include "c/handles.h"
#include "c/reading.h"
#include "c/rendering.h"
#include "drawing/image_samples.h"
#include "drawing/raster_samples.h"

namespace vorna::c {

namespace {

Buffer_Format format_of(std::int32_t format) {
    require(format == VORNA_INDEX8 || format == VORNA_RGB32 || format == VORNA_DEPTH16 || format == VORNA_PRESENTATION,
            [&] { return "format: expected a format of pixels, found " + std::to_string(format); });
    return static_cast<Buffer_Format>(format);
}

// pixels: null = zeros, and then there are no gaps between rows.
std::unique_ptr<vorna_image> make_image(std::int32_t width, std::int32_t height, Buffer_Format format, std::size_t stride,
                                        std::uint8_t* pixels) {
    require_range("width", width, 1, INT32_MAX / bytes_per_pixel(format));
    require_range("height", height, 1, INT32_MAX);
    const std::size_t row_bytes = stride_or(stride, width, static_cast<std::size_t>(bytes_per_pixel(format)));
    auto image = std::make_unique<vorna_image>();
    image->pixels = new VT_Shared_Image(width, height, format, static_cast<std::int32_t>(row_bytes), pixels, false, false);
    image->palette = new VT_Palette;
    return image;
}

} // namespace

drawing::Image_Samples samples_of(const vorna_image& image) {
    drawing::Image_Samples samples = drawing::samples_of(drawing::raster_of(*image.pixels), *image.palette);
    samples.pixels_per_metre = image.pixels_per_metre;
    return samples;
}

std::unique_ptr<vorna_image> image_of(const drawing::Raster& raster, VT_Reference<const VT_Palette> palette) {
    auto image = make_image(raster.width, raster.height, raster.format, 0, nullptr);
    for (std::int32_t r = 0; r < raster.height; ++r) {
        std::memcpy(image->pixels->row(r), raster.top + r * raster.row_bytes,
                    static_cast<std::size_t>(image->pixels->row_bytes()));
    }
    image->palette = std::move(palette);
    return image;
}

std::unique_ptr<vorna_image> image_of(const drawing::Image_Samples& samples) {
    using Kind = drawing::Image_Samples::Kind;
    const auto format = samples.kind == Kind::indices  ? Buffer_Format::index8
                        : samples.kind == Kind::depths ? Buffer_Format::depth16
                                                       : Buffer_Format::rgb32;
    const std::ptrdiff_t row_bytes = std::ptrdiff_t{samples.width} * bytes_per_pixel(format);
    auto image = image_of({samples.bytes.get(), row_bytes, samples.width, samples.height, format},
                          samples.kind == Kind::indices ? new VT_Palette(samples.palette) : new VT_Palette);
    if (format == Buffer_Format::rgb32) {
        std::uint8_t* const pixels = image->pixels->row(0);
        drawing::exchange_red_and_blue(pixels, samples.size() / 4, pixels);
    }
    image->pixels_per_metre = samples.pixels_per_metre;
    return image;
}

} // namespace vorna::c

using namespace vorna::c;

vorna_status vorna_image_create(int32_t width, int32_t height, int32_t format, vorna_image** image) {
    return make_handle(image, "image", [&] { return make_image(width, height, format_of(format), 0, nullptr); });
}

vorna_status vorna_image_wrap(const vorna_buffer* buffer, vorna_image** image) {
    return make_handle(image, "image", [&] {
        const vorna_buffer& given = required(buffer, "buffer");
        auto* const pixels = &required(static_cast<std::uint8_t*>(given.pixels), "buffer.pixels");
        return make_image(given.width, given.height, format_of(given.format), given.stride, pixels);
    });
}

vorna_status vorna_image_read(const char* file, const vorna_reading* reading, vorna_image** image) {
    return make_handle(image, "image", [&] {
        return image_of(vorna::drawing::read_samples(&required(file, "file"), reading_of(reading).max_memory));
    });
}

vorna_status vorna_image_decode(const void* bytes, size_t size, const vorna_reading* reading, vorna_image** image) {
    return make_handle(image, "image", [&] {
        const auto* const file = static_cast<const char*>(bytes);
        require_list(file, size, "bytes");
        return image_of(vorna::drawing::decode_samples("image", {file, size}, reading_of(reading).max_memory));
    });
}

vorna_status vorna_image_buffer(const vorna_image* image, vorna_buffer* buffer) {
    return guarded([&] {
        required(buffer, "buffer") = {};
        VT_Shared_Image& pixels = *required(image, "image").pixels;
        *buffer = {pixels.row(0), static_cast<std::size_t>(pixels.row_bytes()), pixels.width(), pixels.height(),
                   static_cast<std::int32_t>(pixels.format())};
    });
}

vorna_status vorna_image_palette(const vorna_image* image, vorna_color* colors) {
    return guarded([&] {
        required(colors, "colors");
        const VT_Palette& palette = *required(image, "image").palette;
        for (std::size_t i = 0; i < 256; ++i) {
            colors[i] = c_color(palette.color(static_cast<std::uint8_t>(i)));
        }
    });
}

vorna_status vorna_image_set_palette(vorna_image* image, size_t count, const vorna_color* colors) {
    return guarded([&] {
        vorna_image& changed = required(image, "image");
        require_range<std::size_t>("count", count, 1, 256);
        required(colors, "colors");
        changed.palette = new VT_Palette({host_colors(colors), host_colors(colors) + count});
    });
}

vorna_status vorna_image_write(const vorna_image* image, const char* file) {
    return guarded([&] {
        const vorna_image& written = required(image, "image");
        vorna::drawing::write_samples(&required(file, "file"), samples_of(written));
    });
}

vorna_status vorna_image_encode(const vorna_image* image, void** bytes, size_t* size) {
    return guarded([&] {
        required(bytes, "bytes") = nullptr;
        required(size, "size") = 0;
        const std::string file = vorna::drawing::png_of(samples_of(required(image, "image")));
        *bytes = copied(file.data(), file.size());
        *size = file.size();
    });
}

vorna_status vorna_image_digest(const vorna_image* image, char* digest) {
    return guarded([&] {
        required(digest, "digest");
        give_digest(vorna::drawing::digest_of(samples_of(required(image, "image"))), digest);
    });
}

vorna_status vorna_image_compare(const vorna_image* first, const vorna_image* second, const vorna_tolerance* tolerance,
                                 vorna_comparison* result, const char** text) {
    return guarded([&] {
        required(result, "result") = {};
        const vorna_image &a = required(first, "first"), &b = required(second, "second");
        std::optional<vorna::drawing::Tolerance> given;
        if (tolerance) {
            require_range("difference", tolerance->difference, 0, INT32_MAX);
            require_range("count", tolerance->count, std::int64_t{0}, INT64_MAX);
            given = {tolerance->difference, tolerance->count};
        }
        thread_local std::string line;
        vorna::drawing::Comparison comparison = vorna::drawing::compare_samples(samples_of(a), samples_of(b), given);
        line = std::move(comparison.text);
        *result = {comparison.is_same ? 1 : 0, comparison.most, comparison.count};
        if (text) {
            *text = line.c_str();
        }
    });
}

void vorna_image_free(vorna_image* image) {
    delete image;
}
