// Images as vorna compare, palettes and textures read them, palettes as text, parts of pictures as vorna assemble
// does, and compressed files. The first byte says which, and whether the check sums of a PNG file are made right, as fuzzers
// cannot.
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include <zlib.h>

#include "drawing/files/gzip.h"
#include "drawing/files/zstd.h"
#include "drawing/image/image_comparison.h"
#include "drawing/image/image_measures.h"
#include "drawing/image/palette.h"
#include "drawing/image/pixel_values.h"
#include "drawing/image/stored_image.h"
#include "drawing/job/part_reader.h"
#include "drawing/model/texture.h"
#include "tests/fuzz/fuzzing.h"

namespace {

using namespace fuzzing;

// Short files may state large images, which would take most of the time. Textures are several times as large as their images.
constexpr std::int64_t most_pixels = 1 << 16, most_texture_pixels = 1 << 10;
constexpr std::uint64_t most_memory = std::uint64_t{1} << 22;

std::string with_check_sums(std::string_view given) {
    constexpr std::size_t signature = 8, frame = 12; // length, name and check sum of a chunk
    std::string png(given);
    const auto byte = [&](std::size_t place) { return std::size_t{static_cast<std::uint8_t>(png[place])}; };
    for (std::size_t start = signature; start + frame <= png.size();) {
        const std::size_t length = byte(start) << 24 | byte(start + 1) << 16 | byte(start + 2) << 8 | byte(start + 3);
        if (length > png.size() - start - frame) {
            break;
        }
        const auto sum = crc32(0, reinterpret_cast<const Bytef*>(png.data() + start + 4), static_cast<uInt>(length + 4));
        for (std::size_t i = 0; i < 4; ++i) {
            png[start + 8 + length + i] = static_cast<char>(sum >> (24 - 8 * i) & 0xFF);
        }
        start += frame + length;
    }
    return png;
}

// A file that is there as long as the process, in memory where the system has a folder for that: thousands are written a second.
class Temporary_File {
public:
    Temporary_File() {
        std::error_code none;
        const std::filesystem::path memory("/dev/shm");
        path_ = std::filesystem::is_directory(memory, none) ? memory : std::filesystem::temp_directory_path();
        path_ /= "vorna-fuzz-" + std::to_string(std::random_device()()) + ".png";
    }
    Temporary_File(const Temporary_File&) = delete;
    Temporary_File& operator=(const Temporary_File&) = delete;
    ~Temporary_File() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }

    std::string name() const { return path_.string(); }
    void write(std::string_view bytes) const {
        std::ofstream(path_, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

private:
    std::filesystem::path path_;
};

void read_part(std::string_view bytes) {
    static const Temporary_File file;
    file.write(bytes);
    vorna::drawing::Part_Reader reader(file.name());
    if (std::uint64_t{reader.form().width} * reader.form().height <= most_pixels) {
        std::vector<std::uint8_t> row(reader.form().width * reader.form().pixel_bytes());
        for (std::uint32_t r = 0; r < reader.form().height; ++r) {
            reader.read_row(row.data());
        }
    }
}

void make_texture(std::string_view bytes, std::uint8_t style) {
    const vorna::drawing::Image image = vorna::drawing::decode_image(bytes, [](std::uint64_t pixels) {
        if (pixels > most_pixels) {
            throw vorna::drawing::Image_Error("expected fewer pixels");
        }
    });
    if (std::int64_t{image.width} * image.height > most_texture_pixels) {
        return;
    }
    vorna::drawing::model::Material material;
    material.wrap_u = static_cast<vorna::drawing::Wrap>(style % 3);
    material.wrap_v = static_cast<vorna::drawing::Wrap>(style / 3 % 3);
    vorna::drawing::Load_Limits limits;
    vorna::drawing::model::Texture texture("image", image, material, limits);
    const double covered[] = {0.01 * style, 0.1}, low[] = {-0.5, 0}, high[] = {1.5, 1};
    texture.cut(covered, low, high);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes input(text_of(data, size));
    const std::uint8_t way = input.byte();
    const std::string bytes = way < 128 ? with_check_sums(input.rest()) : std::string(input.rest());
    vorna::drawing::Load_Limits limits(most_memory);
    switch (way % 4) {
    case 0:
        try_out([&] { vorna::drawing::palette_colors("palette", bytes, limits); });
        try_out<std::runtime_error>([&] {
            const vorna::drawing::Png_Image image = vorna::drawing::read_png("image", bytes, limits);
            if (std::int64_t{image.width} * image.height > most_pixels) {
                return;
            }
            const vorna::drawing::Pixel_Mask mask(image);
            if (!vorna::drawing::compare(image, image, {.mask = &mask}).is_same) {
                fail("an image differs from itself");
            }
            if (vorna::drawing::measure(image, image, &mask)->psnr) {
                fail("an image has noise beside itself");
            }
            vorna::drawing::color_png(image);
        });
        break;
    case 1:
        try_out<std::runtime_error>([&] { make_texture(bytes, way / 4); });
        try_out([&] {
            vorna::drawing::Load_Limits small(std::uint64_t{16} << 20);
            vorna::drawing::read_stored_image("image", bytes, small);
        });
        break;
    case 2:
        try_out([&] { read_part(bytes); });
        break;
    default:
        // Damaged compressed data is an error of no class of its own.
        try_out<std::runtime_error>([&] {
            constexpr std::size_t most = 1 << 18;
            const auto unpack = vorna::drawing::is_zstd(input.rest()) ? vorna::drawing::unzstd : vorna::drawing::gunzip;
            if (unpack(input.rest(), most, {}).size() > most) {
                fail("more was unpacked than was asked for");
            }
        });
    }
    return 0;
}
