// The formats of image files.
#include "drawing/image/image_formats.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <stdexcept>

#include "drawing/files/interruption.h"
#include "drawing/files/path.h"
#include "drawing/image/image_encoders.h"
#include "drawing/image/pdf_writer.h"
#include "drawing/image/png_writer.h"

namespace vorna::drawing {

namespace {

template <class Encoder> std::unique_ptr<Image_Encoder> packer(const Image_Form& form) {
    return std::make_unique<Encoder>(form, Png_Layout(form));
}

#if defined(VORNA_WITH_IMAGE_LIBRARIES)
constexpr auto *jpeg = jpeg_encoder, *webp = webp_encoder, *tiff = tiff_encoder;
#else
constexpr decltype(&raw_encoder) jpeg = nullptr, webp = nullptr, tiff = nullptr;
#endif

constexpr std::uint32_t any_side = UINT32_MAX;

constexpr Image_Format table[] = {
    {Image_File::png, "png", "", "PNG", true, any_side, false, packer<Png_Encoder>},
    {Image_File::jpeg, "jpg", "jpeg", "JPEG", false, 65500, false, jpeg},
    {Image_File::webp, "webp", "", "WebP", true, 16383, false, webp},
    {Image_File::tiff, "tif", "tiff", "TIFF", true, any_side, true, tiff},
    {Image_File::pdf, "pdf", "", "PDF", false, any_side, false, packer<Pdf_Encoder>},
    {Image_File::ppm, "ppm", "pnm", "PPM", false, any_side, false, ppm_encoder},
    {Image_File::raw, "raw", "", "raw", true, any_side, false, raw_encoder},
};

} // namespace

std::span<const Image_Format> image_formats() {
    return table;
}

const Image_Format* find_image_format(std::string_view suffix) {
    const auto* found = std::ranges::find_if(table, [suffix](const Image_Format& format) {
        return format.suffix == suffix || (!suffix.empty() && format.other_suffix == suffix);
    });
    return found == std::end(table) ? nullptr : found;
}

const Image_Format* image_format_of(const std::string& file) {
    std::string suffix = path_of(file).extension().string();
    std::ranges::transform(suffix, suffix.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return suffix.empty() ? nullptr : find_image_format(suffix.substr(1));
}

const Image_Format& image_format(Image_File file) {
    return *std::ranges::find(table, file, &Image_Format::file);
}

std::vector<std::string> written_image_suffixes() {
    std::vector<std::string> suffixes;
    for (const Image_Format& format : table) {
        if (format.encoder) {
            suffixes.emplace_back(format.suffix);
        }
    }
    return suffixes;
}

std::unique_ptr<Image_Encoder> image_encoder(const Image_Form& form) {
    const Image_Format& format = image_format(form.file);
    if (!format.encoder) {
        throw std::runtime_error(std::string(format.name) + " files cannot be written by this build");
    }
    return format.encoder(form);
}

std::unique_ptr<Image_Encoder> image_encoder(const Image_Form& form, const std::uint8_t* samples) {
    if (form.file == Image_File::pdf) {
        return std::make_unique<Pdf_Encoder>(form, Png_Layout(form, samples));
    }
    if (form.file == Image_File::png) {
        return std::make_unique<Png_Encoder>(form, Png_Layout(form, samples));
    }
    return image_encoder(form);
}

std::string image_bytes(const Image_Form& form, const std::uint8_t* samples) {
    const std::unique_ptr<Image_Encoder> encoder = image_encoder(form, samples);
    const std::uint32_t block = encoder->block_rows();
    std::string file = encoder->head();
    for (std::uint32_t first = 0; first < form.height; first += block) {
        Interruption::check();
        const std::uint8_t* start = samples + first * form.row_bytes();
        const Sample_Rows rows{first, std::min(first + block, form.height), start,
                               first > 0 ? start - form.row_bytes() : nullptr};
        file += encoder->join(rows, encoder->pack(rows));
    }
    file += encoder->tail();
    for (const Patch& patch : encoder->patches()) {
        file.replace(patch.place, patch.bytes.size(), patch.bytes);
    }
    return file;
}

} // namespace vorna::drawing
