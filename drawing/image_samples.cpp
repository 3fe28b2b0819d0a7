// Images in memory as files have them.
#include "drawing/image_samples.h"

#include <algorithm>
#include <cstring>

#include "drawing/files/input_file.h"
#include "drawing/files/interruption.h"
#include "drawing/files/load_limits.h"
#include "drawing/files/output_file.h"
#include "drawing/files/usage_error.h"
#include "drawing/image/color_name.h"
#include "drawing/image/image.h"
#include "drawing/image/image_comparison.h"
#include "drawing/image/image_file.h"
#include "drawing/image/image_formats.h"
#include "drawing/image/png_reader.h"
#include "drawing/image/sha256.h"
#include "drawing/job/image_plan.h"
#include "drawing/job/image_stream.h"

namespace vorna::drawing {
namespace {

using Kind = Image_Samples::Kind;

Image_Form form_of(const Image_Samples& image) {
    Image_Form form{.width = static_cast<std::uint32_t>(image.width), .height = static_cast<std::uint32_t>(image.height)};
    form.reducible = true;
    form.pixels_per_metre = image.pixels_per_metre;
    switch (image.kind) {
    case Kind::colors:
        form.opaque = true;
        for (std::size_t i = 3; i < image.size() && form.opaque; i += 4) {
            form.opaque = image.bytes.get()[i] == 255;
        }
        break;
    case Kind::indices:
        form.colors = Image_Form::Colors::palette;
        form.palette = png_palette_of(image.palette);
        form.opaque = true;
        break;
    case Kind::depths:
        form.colors = Image_Form::Colors::grey;
        form.sample_bits = 16;
        form.linear = true;
        form.opaque = true;
        break;
    case Kind::faces:
        throw Usage_Error("image: expected colours, indices or depths, found face numbers");
    }
    return form;
}

// Rows of samples in the order of files.
void store_rows(const Image_Samples& image, std::uint32_t first, std::uint32_t end, const Row_Places& places) {
    const std::size_t row_bytes = static_cast<std::size_t>(image.width) * image.pixel_bytes();
    for (std::uint32_t row = first; row < end; ++row) {
        const std::uint8_t* from = image.bytes.get() + row * row_bytes;
        if (image.kind == Kind::depths) {
            store_samples(from, image.width, Buffer_Format::depth16, places(row));
        } else {
            std::memcpy(places(row), from, row_bytes);
        }
    }
}

std::vector<std::uint8_t> samples_in_files(const Image_Samples& image) {
    std::vector<std::uint8_t> samples(image.size());
    store_rows(image, 0, static_cast<std::uint32_t>(image.height),
               Row_Places(samples.data(), samples.size() / static_cast<std::size_t>(image.height),
                          static_cast<std::uint32_t>(image.height)));
    return samples;
}

// Face numbers count as colours of four bytes.
Png_Image png_image_of(const Image_Samples& image) {
    Png_Image png;
    png.width = image.width;
    png.height = image.height;
    png.samples = samples_in_files(image);
    if (image.kind == Kind::indices) {
        png.colors = Png_Image::Colors::palette;
        png.palette = png_palette_of(image.palette);
    } else if (image.kind == Kind::depths) {
        png.colors = Png_Image::Colors::grey;
        png.sample_bits = 16;
    }
    return png;
}

Png_Image read_png_file(const std::string& file, Load_Limits& limits) {
    try {
        return read_png(name_of_input(file), read_input(file, limits), limits);
    } catch (const Png_Error& error) {
        throw Usage_Error(name_of_input(file) + ": " + error.what());
    }
}

std::optional<Fuzz> fuzz_of(const std::optional<Tolerance>& tolerance) {
    if (!tolerance) {
        return {};
    }
    if (tolerance->difference < 0 || tolerance->count < 0) {
        throw Usage_Error("tolerance: expected a difference and a number of pixels of 0 or more");
    }
    return Fuzz{tolerance->difference, tolerance->count};
}

Comparison comparison_of(const Image_Difference& difference) {
    return {difference.is_same, difference.text, difference.count, difference.most};
}

// What files of 8-bit palettes and 16-bit greys hold is kept, every other kind becomes colours.
std::optional<Image_Samples> samples_of(const Png_Image& png) {
    using Colors = Png_Image::Colors;
    if (png.colors == Colors::palette && png.transparency.empty()) {
        Image_Samples image = make_samples(Kind::indices, png.width, png.height);
        std::ranges::copy(png.samples, image.bytes.get());
        for (std::size_t i = 0; i + 2 < png.palette.size(); i += 3) {
            const auto level = [&](std::size_t c) { return static_cast<std::uint8_t>(png.palette[i + c]); };
            image.palette.push_back({level(2), level(1), level(0), 255});
        }
        return image;
    }
    if (png.colors == Colors::grey && png.sample_bits == 16 && png.transparency.empty()) {
        Image_Samples image = make_samples(Kind::depths, png.width, png.height);
        for (std::size_t i = 0; i < image.size(); i += 2) {
            const auto depth = static_cast<std::uint16_t>(png.samples[i] << 8 | png.samples[i + 1]);
            std::memcpy(image.bytes.get() + i, &depth, sizeof depth);
        }
        return image;
    }
    return {};
}

Image_Samples decoded_samples(const std::string& name, std::string_view content, Load_Limits& limits) {
    if (content.starts_with("\x89PNG")) {
        try {
            if (std::optional<Image_Samples> image = samples_of(read_png(name, content, limits))) {
                return *std::move(image);
            }
        } catch (const Png_Error& error) {
            throw Usage_Error(name + ": " + error.what());
        }
    }
    try {
        const Image decoded = decode_image(content, [&](std::uint64_t pixels) { limits.take_memory(name, 8 * pixels); });
        Image_Samples image = make_samples(Kind::colors, decoded.width, decoded.height);
        store_samples(reinterpret_cast<const std::uint8_t*>(decoded.pixels.data()),
                      static_cast<std::int32_t>(decoded.pixels.size()), Buffer_Format::rgb32, image.bytes.get());
        return image;
    } catch (const Image_Error& error) {
        throw Usage_Error(name + ": " + error.what());
    }
}

} // namespace

Image_Samples make_samples(Image_Samples::Kind kind, std::int32_t width, std::int32_t height) {
    if (std::min(width, height) < 1 || std::max(width, height) > largest_side) {
        throw Usage_Error("size: expected sides from 1 to " + std::to_string(largest_side) + ", found " + std::to_string(width) +
                          "x" + std::to_string(height));
    }
    Image_Samples image{kind, width, height, {}, {}, 0};
    image.bytes = std::make_shared_for_overwrite<std::uint8_t[]>(image.size());
    return image;
}

std::string png_of(const Image_Samples& image) {
    return image_bytes(form_of(image), samples_in_files(image).data());
}

void write_samples(const std::string& file, const Image_Samples& image) {
    Image_Form form = form_of(image);
    const Image_Format* named = image_format_of(file);
    const Image_Format& format = named ? *named : image_format(Image_File::png);
    if (!format.encoder) {
        throw Usage_Error(file + ": expected a format that this build writes, found " + std::string(format.suffix));
    }
    if (std::max(form.width, form.height) > format.largest_side) {
        throw Usage_Error(file + ": expected sides of up to " + std::to_string(format.largest_side) + " pixels in " +
                          std::string(format.name) + " files, found " + std::to_string(form.width) + 'x' +
                          std::to_string(form.height));
    }
    if (!form.opaque && !format.keeps_alpha) {
        throw Usage_Error(file + ": expected an opaque image in " + std::string(format.name) + " files");
    }
    if (image.kind == Kind::depths && format.file != Image_File::png) {
        throw Usage_Error(file + ": expected a PNG file for depths");
    }
    form.file = format.file;
    Row_Source source;
    constexpr std::uint32_t band = 256;
    for (std::uint32_t end = band; end < form.height; end += band) {
        source.band_ends.push_back(end);
    }
    source.band_ends.push_back(form.height);
    source.make = [&](unsigned, std::uint32_t number, std::uint32_t, const Row_Places& places) {
        store_rows(image, number > 0 ? source.band_ends[number - 1] : 0, source.band_ends[number], places);
    };
    Output_File output(file);
    stream_image(output, form, source, {.threads = processor_count(), .rows_ahead = 4 * band});
    output.commit();
}

std::string digest_of(const Image_Samples& image) {
    form_of(image); // throws for kinds that files do not have
    Sha256 sum;
    if (image.kind == Kind::depths) {
        const std::vector<std::uint8_t> samples = samples_in_files(image);
        sum.add(samples.data(), samples.size());
    } else {
        sum.add(image.bytes.get(), image.size());
    }
    return sum.finish();
}

Image_Samples read_samples(const std::string& file, std::uint64_t max_memory) {
    Load_Limits limits(max_memory > 0 ? std::optional(max_memory) : std::nullopt);
    return decoded_samples(name_of_input(file), read_input(file, limits), limits);
}

Image_Samples decode_samples(const std::string& name, std::string_view content, std::uint64_t max_memory) {
    Load_Limits limits(max_memory > 0 ? std::optional(max_memory) : std::nullopt);
    return decoded_samples(name, content, limits);
}

Comparison compare_samples(const Image_Samples& a, const Image_Samples& b, const std::optional<Tolerance>& tolerance) {
    const std::optional<Fuzz> fuzz = fuzz_of(tolerance);
    const bool are_numbers = a.kind == Kind::faces || b.kind == Kind::faces; // neighbours are not alike
    return comparison_of(compare(png_image_of(a), png_image_of(b), {.fuzz = are_numbers ? std::nullopt : fuzz}));
}

Comparison compare_files(const std::string& a, const std::string& b, const std::optional<Tolerance>& tolerance) {
    const std::optional<Fuzz> fuzz = fuzz_of(tolerance);
    Load_Limits limits;
    const Png_Image first = read_png_file(a, limits);
    return comparison_of(compare(first, read_png_file(b, limits), {.fuzz = fuzz}));
}

VT_RGB32 parsed_color(const std::string& text) {
    const std::optional<VT_RGB32> color = color_named(text);
    if (!color) {
        throw Usage_Error("expected #rgb, #rrggbb or the name of a colour, found '" + text + "'");
    }
    return *color;
}

} // namespace vorna::drawing
