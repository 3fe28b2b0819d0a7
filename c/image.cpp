// Images: pixels in memory and in files.
#include "drawing/image/image.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>

#include "c/call.h"
#include "c/handles.h"
#include "c/reading.h"
#include "drawing/files/input_file.h"
#include "drawing/files/output_file.h"
#include "drawing/image/image_comparison.h"
#include "drawing/image/image_formats.h"
#include "drawing/image/png_reader.h"
#include "drawing/image/sha256.h"
#include "vorna/c_image.h"

namespace vorna::c {

using drawing::Png_Image;

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

// The depths of a PNG file with 16 bits of grey; null for all others.
std::unique_ptr<vorna_image> depths_of(const Png_Image& png) {
    if (png.colors != Png_Image::Colors::grey || png.sample_bits != 16) {
        return nullptr;
    }
    auto image = make_image(png.width, png.height, Buffer_Format::depth16, 0, nullptr);
    const std::size_t width = static_cast<std::size_t>(png.width);
    for (std::int32_t r = 0; r < png.height; ++r) {
        const std::uint8_t* const samples = png.samples.data() + static_cast<std::size_t>(r) * 2 * width;
        std::uint8_t* const row = image->pixels->row(r);
        for (std::size_t i = 0; i < width; ++i) {
            const auto depth = static_cast<std::uint16_t>(samples[2 * i] << 8 | samples[2 * i + 1]);
            std::memcpy(row + 2 * i, &depth, sizeof depth);
        }
    }
    return image;
}

std::unique_ptr<vorna_image> decoded(const std::string& name, std::string_view bytes, drawing::Load_Limits& limits) {
    try {
        if (bytes.starts_with("\x89PNG")) {
            if (auto depths = depths_of(drawing::read_png(name, bytes, limits))) {
                return depths;
            }
        }
        const drawing::Image image =
            drawing::decode_image(bytes, [&](std::uint64_t pixels) { limits.take_memory(name, 2 * sizeof(VT_RGB32) * pixels); });
        const std::ptrdiff_t row_bytes = std::ptrdiff_t{image.width} * 4;
        return image_of({reinterpret_cast<const std::uint8_t*>(image.pixels.data()), row_bytes, image.width, image.height},
                        new VT_Palette);
    } catch (const drawing::Png_Error& error) {
        throw drawing::Usage_Error(name + ": " + error.what());
    } catch (const drawing::Image_Error& error) {
        throw drawing::Usage_Error(name + ": " + error.what());
    }
}

drawing::Image_Format written_format(const drawing::Image_Format* format, const vorna_image& image, const std::string& name) {
    std::string suffixes;
    for (const std::string& suffix : drawing::written_image_suffixes()) {
        suffixes += (suffixes.empty() ? "" : ", ") + suffix;
    }
    require(format != nullptr, [&] { return name + ": expected a suffix of " + suffixes; });
    require(format->file == drawing::Image_File::png || bytes_per_pixel(image.pixels->format()) == 4,
            [&] { return name + ": expected png for palette indices and depths"; });
    const auto longest = static_cast<std::uint32_t>(std::max(image.pixels->width(), image.pixels->height()));
    require(longest <= format->largest_side, [&] {
        return name + ": expected at most " + std::to_string(format->largest_side) + " columns and rows, found " +
               std::to_string(longest);
    });
    return *format;
}

// The bytes of a file.
std::string encoded(const vorna_image& image, const drawing::Image_Format& format) {
    const drawing::Raster raster = drawing::raster_of(*image.pixels);
    if (format.file == drawing::Image_File::png) {
        return drawing::png_of(raster, *image.palette);
    }
    drawing::Image_Form form = drawing::image_form_of(raster, *image.palette);
    form.file = format.file;
    const std::size_t row_bytes = form.row_bytes();
    std::vector<std::uint8_t> samples(form.height * row_bytes);
    for (std::uint32_t r = 0; r < form.height; ++r) {
        drawing::store_samples(raster.top + std::ptrdiff_t{r} * raster.row_bytes, raster.width, raster.format,
                               samples.data() + r * row_bytes);
    }
    const std::unique_ptr<drawing::Image_Encoder> encoder = drawing::image_encoder(form, samples.data());
    std::string file = encoder->head();
    for (std::uint32_t first = 0; first < form.height;) {
        const std::uint32_t end = std::min(form.height, first + encoder->block_rows());
        const drawing::Sample_Rows rows{first, end, samples.data() + first * row_bytes,
                                        first > 0 ? samples.data() + (first - 1) * row_bytes : nullptr};
        file += encoder->join(rows, encoder->pack(rows));
        first = end;
    }
    file += encoder->tail();
    for (const drawing::Patch& patch : encoder->patches()) {
        file.replace(patch.place, patch.bytes.size(), patch.bytes);
    }
    return file;
}

// As a file has the image.
Png_Image png_image_of(const vorna_image& image) {
    const drawing::Raster raster = drawing::raster_of(*image.pixels);
    Png_Image png;
    png.width = raster.width;
    png.height = raster.height;
    if (raster.format == Buffer_Format::index8) {
        png.colors = Png_Image::Colors::palette;
        png.palette = drawing::png_palette_of(*image.palette);
    } else if (raster.format == Buffer_Format::depth16) {
        png.colors = Png_Image::Colors::grey;
        png.sample_bits = 16;
    }
    const std::size_t row_bytes = static_cast<std::size_t>(png.width) * png.pixel_bytes();
    png.samples.resize(static_cast<std::size_t>(png.height) * row_bytes);
    for (std::int32_t r = 0; r < png.height; ++r) {
        drawing::store_samples(raster.top + r * raster.row_bytes, raster.width, raster.format,
                               png.samples.data() + static_cast<std::size_t>(r) * row_bytes);
    }
    return png;
}

} // namespace

std::unique_ptr<vorna_image> image_of(const drawing::Raster& raster, VT_Reference<const VT_Palette> palette) {
    auto image = make_image(raster.width, raster.height, raster.format, 0, nullptr);
    for (std::int32_t r = 0; r < raster.height; ++r) {
        std::memcpy(image->pixels->row(r), raster.top + r * raster.row_bytes,
                    static_cast<std::size_t>(image->pixels->row_bytes()));
    }
    image->palette = std::move(palette);
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
        const std::string path = &required(file, "file");
        auto limits = limits_of(reading);
        const std::string bytes = vorna::drawing::read_input(path, limits);
        return decoded(vorna::drawing::name_of_input(path), bytes, limits);
    });
}

vorna_status vorna_image_decode(const void* bytes, size_t size, const vorna_reading* reading, vorna_image** image) {
    return make_handle(image, "image", [&] {
        const auto* const file = static_cast<const char*>(bytes);
        require_list(file, size, "bytes");
        auto limits = limits_of(reading);
        return decoded("image", {file, size}, limits);
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
        const std::string path = &required(file, "file");
        const auto format = written_format(vorna::drawing::image_format_of(path), written, path);
        vorna::drawing::Output_File::check(path);
        vorna::drawing::write_file(path, encoded(written, format));
    });
}

vorna_status vorna_image_encode(const vorna_image* image, const char* suffix, void** bytes, size_t* size) {
    return guarded([&] {
        required(bytes, "bytes") = nullptr;
        required(size, "size") = 0;
        const vorna_image& written = required(image, "image");
        const std::string name = &required(suffix, "suffix");
        const std::string file = encoded(written, written_format(vorna::drawing::find_image_format(name), written, name));
        *bytes = copied(file.data(), file.size());
        *size = file.size();
    });
}

vorna_status vorna_image_digest(const vorna_image* image, char* digest) {
    return guarded([&] {
        const Png_Image png = png_image_of(required(image, "image"));
        required(digest, "digest");
        vorna::drawing::Sha256 sum;
        sum.add(png.samples.data(), png.samples.size());
        const std::string digits = sum.finish();
        std::memcpy(digest, digits.c_str(), digits.size() + 1);
    });
}

vorna_status vorna_image_compare(const vorna_image* first, const vorna_image* second, const vorna_tolerance* tolerance,
                                 int32_t* is_same, const char** text) {
    return guarded([&] {
        required(is_same, "is_same") = 0;
        const vorna_image &a = required(first, "first"), &b = required(second, "second");
        std::optional<vorna::drawing::Fuzz> fuzz;
        if (tolerance) {
            require_range("difference", tolerance->difference, 0, INT32_MAX);
            require_range("count", tolerance->count, std::int64_t{0}, INT64_MAX);
            fuzz = {tolerance->difference, tolerance->count};
        }
        thread_local std::string line;
        vorna::drawing::Image_Difference difference = vorna::drawing::compare(png_image_of(a), png_image_of(b), fuzz);
        line = std::move(difference.text);
        *is_same = difference.is_same ? 1 : 0;
        if (text) {
            *text = line.c_str();
        }
    });
}

void vorna_image_free(vorna_image* image) {
    delete image;
}
