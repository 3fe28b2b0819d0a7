// Images of the C interface: pixels in memory and in files.
#pragma once

#include "vorna/c_types.h"

#if defined(__cplusplus)
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

// Pixels of one format, and the palette that indices mean.
typedef struct vorna_image vorna_image;

// An image of zeros. width, height: 1 or more, of at most 2^31 - 1 bytes in a row. format: VORNA_INDEX8, VORNA_RGB32,
// VORNA_DEPTH16 or VORNA_PRESENTATION. Indices mean the default palette.
vorna_status vorna_image_create(int32_t width, int32_t height, int32_t format, vorna_image** image);

// The caller's pixels, without a copy. They must stay until the image is freed and no canvas draws with it.
vorna_status vorna_image_wrap(const vorna_buffer* buffer, vorna_image** image);

// A file in PNG, JPEG, WebP, TGA, BMP or DDS, told apart by the content; sides of up to 16384 pixels. PNG files with 16 bits of
// grey become VORNA_DEPTH16, all others VORNA_RGB32. VORNA_INVALID_INPUT when the file cannot be read. reading: may be null.
vorna_status vorna_image_read(const char* file, const vorna_reading* reading, vorna_image** image);

// The same of a file's bytes. size: their number.
vorna_status vorna_image_decode(const void* bytes, size_t size, const vorna_reading* reading, vorna_image** image);

// The pixels. Valid until the image is freed. The caller may change them while no canvas draws with the image.
vorna_status vorna_image_buffer(const vorna_image* image, vorna_buffer* buffer);

// The colours of all 256 indices.
vorna_status vorna_image_palette(const vorna_image* image, vorna_color* colors);
// colors: 1 to 256 of them; indices beyond mean black.
vorna_status vorna_image_set_palette(vorna_image* image, size_t count, const vorna_color* colors);

// Writes a file, which appears whole or not at all. The suffix chooses the format: png, jpg, webp, tif, pdf, ppm or raw; formats
// other than png are for VORNA_RGB32. VORNA_INVALID_INPUT for other suffixes, VORNA_FAILED when the file cannot be written.
vorna_status vorna_image_write(const vorna_image* image, const char* file);

// The bytes of such a file, to be freed with vorna_free. suffix: as above, without a dot.
vorna_status vorna_image_encode(const vorna_image* image, const char* suffix, void** bytes, size_t* size);

// SHA-256 of the samples of the image's PNG file, in 64 hexadecimal digits and a zero byte. digest: 65 bytes. Depths count with
// their high byte first, colours as red, green, blue and alpha.
vorna_status vorna_image_digest(const vorna_image* image, char* digest);

// Pixels that may differ: no channel by more than the difference, no more pixels than the count.
typedef struct vorna_tolerance {
    int32_t difference;
    int64_t count;
} vorna_tolerance;

// Compares two images as `vorna compare` does. tolerance: null = every bit counts. is_same: becomes 1 or 0. text: null, or
// becomes one line that says how they differ, valid until this thread's next comparison.
vorna_status vorna_image_compare(const vorna_image* first, const vorna_image* second, const vorna_tolerance* tolerance,
                                 int32_t* is_same, const char** text);

void vorna_image_free(vorna_image* image);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#if defined(__cplusplus)
}
#endif
