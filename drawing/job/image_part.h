// Parts of an image that are drawn apart from each other, perhaps by many machines, and joined later.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/geometry.h"

namespace vorna::drawing {

// Some of the shares into which the triangles of a model are cut, in the file's order: those from first on, up to end. They are
// drawn as an image as large as what the renderer draws, with depths beside the colours; see share_rows.h.
struct Triangle_Share {
    std::int32_t count = 1, first = 0, end = 1;
    std::int32_t supersample = 1; // columns and rows of it for a pixel of the joined image
    bool transparent = false;     // whether the joined image is, where nothing is drawn

    friend bool operator==(const Triangle_Share&, const Triangle_Share&) = default;

    // The triangles, of so many.
    std::uint64_t start_in(std::uint64_t triangles) const noexcept { return border(triangles, first); }
    std::uint64_t end_in(std::uint64_t triangles) const noexcept { return border(triangles, end); }

private:
    std::uint64_t border(std::uint64_t triangles, std::int32_t share) const noexcept {
        const auto n = static_cast<std::uint64_t>(count), k = static_cast<std::uint64_t>(share);
        return triangles / n * k + triangles % n * k / n;
    }
};

inline constexpr std::int32_t most_shares = 100000;

// One of columns x rows parts, counted from 0 on in rows from the upper left one. Parts meet at multiples of 8 pixels from the
// image's lower left corner.
struct Image_Part {
    VT_Int_Pair size; // of the whole image
    std::int32_t columns = 1, rows = 1, number = 0;
    bool is_whole = true; // whether it is an image by itself; false also for a part that is the only one of its image
    // Its pixels where parts are not equally large, with the image's lower left one at (0, 0). Parts of one image all have them
    // or none has.
    std::optional<VT_Int_Rectangle> cut = std::nullopt;
    // A text for what is drawn and how, equal for all parts of an image: up to 64 characters. Empty = not known.
    std::string origin = {};
    // Of a part that has all pixels and some of the triangles. The size is that of the drawn image then.
    std::optional<Triangle_Share> share = std::nullopt;

    // Whether every part has pixels, and a cut begins and ends where parts may.
    bool is_possible() const noexcept;
    // Its pixels, with the image's lower left one at (0, 0).
    VT_Int_Rectangle area() const noexcept;

    // As the content of a file's chunk.
    std::string bytes() const;
    // False for bytes that do not describe a part.
    bool read(const std::string& bytes);
};

// Whether both are parts of one image, drawn from the same inputs in the same way.
bool belong_together(const Image_Part& one, const Image_Part& other) noexcept;

} // namespace vorna::drawing
