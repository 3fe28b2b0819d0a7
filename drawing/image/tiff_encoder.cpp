// TIFF files, written by libtiff.
//
// Tiles are compressed here, in several threads, as the format asks: each a zlib stream of the differences to the pixel before.
// The library makes the directory and the places of the tiles. It goes back in the file to write where the directory is, which
// becomes a patch.
#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

#include <tiffio.h>

#include "drawing/image/color_rows.h"
#include "drawing/image/deflate.h"
#include "drawing/image/image_encoders.h"
#include "drawing/image/loaded_library.h"

namespace vorna::drawing {

namespace {

// What is used of the library.
#define VORNA_TIFF_FUNCTIONS(LIST)                                                                                               \
    LIST(TIFFCleanup)                                                                                                            \
    LIST(TIFFClientOpen)                                                                                                         \
    LIST(TIFFSetErrorHandler)                                                                                                    \
    LIST(TIFFSetField)                                                                                                           \
    LIST(TIFFSetWarningHandler)                                                                                                  \
    LIST(TIFFWriteDirectory)                                                                                                     \
    LIST(TIFFWriteRawTile)

// The functions under their own names.
struct Tiff_Functions {
#define DECLARE(function) decltype(&::function) function;
    VORNA_TIFF_FUNCTIONS(DECLARE)
#undef DECLARE

    Tiff_Functions() {
        const Loaded_Library library(VORNA_TIFF_LIBRARY, "TIFF");
#define LOAD(function) library.load(function, #function);
        VORNA_TIFF_FUNCTIONS(LOAD)
#undef LOAD
    }
};
#undef VORNA_TIFF_FUNCTIONS

const Tiff_Functions& tiff() {
    static const Tiff_Functions functions;
    return functions;
}

constexpr std::uint32_t tile_side = 256;
constexpr std::uint64_t smallest_big_file = std::uint64_t{1} << 31;

// A file that is written from front to back but for patches. What has been given away cannot be read.
class Growing_File {
public:
    std::string take() {
        given_ += waiting_.size();
        return std::exchange(waiting_, {});
    }
    std::vector<Patch> patches;

    static tmsize_t write(thandle_t handle, void* bytes, tmsize_t count) {
        Growing_File& file = of(handle);
        const std::string_view text(static_cast<const char*>(bytes), static_cast<std::size_t>(count));
        if (file.place_ < file.given_) {
            file.patches.push_back({file.place_, std::string(text)});
        } else {
            const std::size_t start = file.place_ - file.given_;
            file.waiting_.resize(std::max(file.waiting_.size(), start + text.size()));
            std::copy(text.begin(), text.end(), file.waiting_.begin() + static_cast<std::ptrdiff_t>(start));
        }
        file.place_ += text.size();
        return count;
    }
    static toff_t seek(thandle_t handle, toff_t offset, int from) {
        Growing_File& file = of(handle);
        const std::uint64_t base = from == SEEK_SET ? 0 : from == SEEK_CUR ? file.place_ : size(handle);
        return file.place_ = base + offset;
    }
    static toff_t size(thandle_t handle) { return of(handle).given_ + of(handle).waiting_.size(); }
    static tmsize_t read(thandle_t, void*, tmsize_t) { return 0; }
    static int close(thandle_t) { return 0; }

private:
    static Growing_File& of(thandle_t handle) { return *static_cast<Growing_File*>(handle); }

    std::string waiting_;
    std::uint64_t given_ = 0, place_ = 0;
};

class Tiff_Encoder : public Image_Encoder {
public:
    explicit Tiff_Encoder(const Image_Form& form) : form_(form), channels_(color_channels(form)) {}

    std::uint32_t block_rows() const override { return std::min(form_.height, tile_side); }

    std::string head() override {
        tiff().TIFFSetErrorHandler(nullptr);
        tiff().TIFFSetWarningHandler(nullptr);
        const bool is_big = std::uint64_t{form_.width} * form_.height * channels_ >= smallest_big_file;
        tiff_.reset(tiff().TIFFClientOpen("image", is_big ? "w8" : "w4", &file_, Growing_File::read, Growing_File::write,
                                          Growing_File::seek, Growing_File::close, Growing_File::size, nullptr, nullptr));
        check(tiff_ != nullptr);
        set(TIFFTAG_IMAGEWIDTH, form_.width);
        set(TIFFTAG_IMAGELENGTH, form_.height);
        set(TIFFTAG_TILEWIDTH, tile_side);
        set(TIFFTAG_TILELENGTH, tile_side);
        set(TIFFTAG_BITSPERSAMPLE, 8);
        set(TIFFTAG_SAMPLESPERPIXEL, static_cast<unsigned>(channels_));
        set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
        set(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
        set(TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
        set(TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
        if (form_.pixels_per_metre > 0) {
            set(TIFFTAG_RESOLUTIONUNIT, RESUNIT_CENTIMETER);
            set(TIFFTAG_XRESOLUTION, form_.pixels_per_metre / 100.0);
            set(TIFFTAG_YRESOLUTION, form_.pixels_per_metre / 100.0);
        }
        if (channels_ == 4) {
            const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
            check(tiff().TIFFSetField(tiff_.get(), TIFFTAG_EXTRASAMPLES, 1, &alpha) == 1);
        }
        return file_.take();
    }

    // The tiles one after the other, each with its size in front.
    Packed_Rows pack(const Sample_Rows& rows) const override {
        const std::size_t row_bytes = channels_ * form_.width, tile_row = channels_ * tile_side;
        std::vector<std::uint8_t> colors(row_bytes * (rows.end - rows.first)), tile(tile_row * tile_side);
        for (std::uint32_t row = 0; row < rows.end - rows.first; ++row) {
            store_colors(form_, rows.samples + row * form_.row_bytes(), channels_, &colors[row * row_bytes]);
        }
        Packed_Rows packed;
        for (std::size_t start = 0; start < row_bytes; start += tile_row) {
            std::ranges::fill(tile, std::uint8_t{0});
            const std::size_t count = std::min(tile_row, row_bytes - start);
            for (std::uint32_t row = 0; row < rows.end - rows.first; ++row) {
                const std::uint8_t* source = &colors[row * row_bytes + start];
                std::uint8_t* target = &tile[row * tile_row];
                std::memcpy(target, source, channels_);
                for (std::size_t i = channels_; i < count; ++i) {
                    target[i] = static_cast<std::uint8_t>(source[i] - source[i - channels_]);
                }
            }
            std::string stream = "\x78\x9C" + deflate_piece(tile, form_.compression, channels_, true);
            const std::uint32_t checksum = adler32_of(tile);
            for (int shift = 24; shift >= 0; shift -= 8) {
                stream += static_cast<char>(checksum >> shift & 0xFF);
            }
            const auto size = static_cast<std::uint32_t>(stream.size());
            packed.bytes.append(reinterpret_cast<const char*>(&size), sizeof size).append(stream);
        }
        return packed;
    }

    std::string join(const Sample_Rows&, Packed_Rows packed) override {
        for (std::size_t place = 0; place < packed.bytes.size(); ++tile_) {
            std::uint32_t size;
            std::memcpy(&size, &packed.bytes[place], sizeof size);
            place += sizeof size;
            check(tiff().TIFFWriteRawTile(tiff_.get(), tile_, &packed.bytes[place], size) == static_cast<tmsize_t>(size));
            place += size;
        }
        return file_.take();
    }

    std::string tail() override {
        check(tiff().TIFFWriteDirectory(tiff_.get()) == 1);
        return file_.take();
    }

    std::vector<Patch> patches() override { return std::move(file_.patches); }

private:
    static void check(bool is_done) {
        if (!is_done) {
            throw std::runtime_error("a TIFF image cannot be written");
        }
    }
    template <class Number> void set(std::uint32_t tag, Number value) {
        check(tiff().TIFFSetField(tiff_.get(), tag, value) == 1);
    }

    struct Cleanup {
        void operator()(TIFF* file) const noexcept { tiff().TIFFCleanup(file); }
    };

    Image_Form form_;
    std::size_t channels_;
    Growing_File file_;
    std::unique_ptr<TIFF, Cleanup> tiff_;
    std::uint32_t tile_ = 0;
};

} // namespace

std::unique_ptr<Image_Encoder> tiff_encoder(const Image_Form& form) {
    return std::make_unique<Tiff_Encoder>(form);
}

} // namespace vorna::drawing
