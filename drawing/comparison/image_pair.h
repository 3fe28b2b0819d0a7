// Two image files, compared.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "drawing/files/load_limits.h"
#include "drawing/image/image_comparison.h"
#include "drawing/image/image_measures.h"
#include "drawing/image/pixel_mask.h"

namespace vorna::drawing::comparison {

// The files; "-" is standard input. An empty mask: all pixels are compared.
struct Pair_Paths {
    std::string first, second, mask;
};

struct Image_Pair {
    Png_Image first, second;
    std::optional<Pixel_Mask> mask;
};

// Throws Usage_Error that names the file that cannot be read.
Image_Pair load(const Pair_Paths& paths, Load_Limits& limits);
// The same of what both files hold.
Image_Pair decoded(const Pair_Paths& paths, const std::string& first, const std::string& second, Load_Limits& limits);

// What counts as the same.
struct Accepted {
    std::optional<Fuzz> fuzz;
    bool by_colors = false;
};

Comparison_Settings settings_of(const Image_Pair& pair, const Accepted& accepted);

enum class Verdict {
    same,
    near, // within the fuzz
    different,
    missing,    // in the first folder alone
    extra,      // in the second folder alone
    unreadable, // one of the files, or of the mask's
};

// "near enough" and the like.
std::string name_of(Verdict verdict);

struct Pair_Result {
    std::string name; // that both files have in their folders; of two files the second's
    Pair_Paths paths; // that of a missing file is empty
    Verdict verdict = Verdict::unreadable;
    std::string text;                   // one line
    std::int32_t width = 0, height = 0; // of the first image
    std::optional<Image_Difference> difference;
    std::optional<Image_Measures> measures; // of images that could be compared
};

// Throws Usage_Error for a mask of another size.
Pair_Result result_of(const Image_Pair& pair, const Accepted& accepted);

// Loads and compares; what cannot be read is part of the result.
Pair_Result compare(const std::string& name, const Pair_Paths& paths, const Accepted& accepted, Load_Limits& limits);

} // namespace vorna::drawing::comparison
