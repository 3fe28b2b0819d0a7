// Two image files, compared.
#include "drawing/comparison/image_pair.h"

#include <cstdio>

#include "drawing/files/input_file.h"
#include "drawing/image/stored_image.h"

namespace vorna::drawing::comparison {

namespace {

// Infinite ratios are not told: the images do not differ.
std::string text_of(const Image_Measures& measures) {
    char text[80] = "";
    if (measures.psnr) {
        std::snprintf(text, sizeof text, "; PSNR %.2f dB", *measures.psnr);
    }
    std::string result = text;
    if (measures.psnr && measures.ssim) {
        std::snprintf(text, sizeof text, ", SSIM %.5f", *measures.ssim);
        result += text;
    }
    return result;
}

} // namespace

Image_Pair load(const Pair_Paths& paths, Load_Limits& limits) {
    return decoded(paths, read_input(paths.first, limits), read_input(paths.second, limits), limits);
}

Image_Pair decoded(const Pair_Paths& paths, const std::string& first, const std::string& second, Load_Limits& limits) {
    Image_Pair pair{read_stored_image(name_of_input(paths.first), first, limits),
                    read_stored_image(name_of_input(paths.second), second, limits),
                    {}};
    if (!paths.mask.empty()) {
        const Png_Image mask = read_stored_image(name_of_input(paths.mask), read_input(paths.mask, limits), limits);
        if (mask.width != pair.first.width || mask.height != pair.first.height) {
            throw Usage_Error(name_of_input(paths.mask) + ": expected a mask of " + std::to_string(pair.first.width) + " x " +
                              std::to_string(pair.first.height) + " pixels as in " + name_of_input(paths.first) + ", found " +
                              std::to_string(mask.width) + " x " + std::to_string(mask.height));
        }
        pair.mask.emplace(mask);
        if (!pair.mask->counts_any()) {
            throw Usage_Error(name_of_input(paths.mask) + ": expected pixels to compare, found none");
        }
    }
    return pair;
}

Comparison_Settings settings_of(const Image_Pair& pair, const Accepted& accepted) {
    return {accepted.fuzz, accepted.by_colors, pair.mask ? &*pair.mask : nullptr};
}

std::string name_of(Verdict verdict) {
    switch (verdict) {
    case Verdict::same:
        return "same";
    case Verdict::near:
        return "near enough";
    case Verdict::different:
        return "different";
    case Verdict::missing:
        return "missing";
    case Verdict::extra:
        return "extra";
    case Verdict::unreadable:
        break;
    }
    return "unreadable";
}

Pair_Result result_of(const Image_Pair& pair, const Accepted& accepted) {
    const Comparison_Settings settings = settings_of(pair, accepted);
    Pair_Result result;
    result.width = pair.first.width;
    result.height = pair.first.height;
    result.difference = drawing::compare(pair.first, pair.second, settings);
    result.text = result.difference->text;
    const bool is_near = result.difference->is_same && result.difference->count > 0;
    result.verdict = is_near ? Verdict::near : result.difference->is_same ? Verdict::same : Verdict::different;
    if (result.difference->count == 0 && result.difference->is_same) {
        result.measures = Image_Measures{}; // nothing differs: no need to look at all pixels again
        result.measures->ssim = 1;
    } else {
        result.measures = measure(pair.first, pair.second, settings.mask);
        result.text += result.measures ? text_of(*result.measures) : "";
    }
    return result;
}

Pair_Result compare(const std::string& name, const Pair_Paths& paths, const Accepted& accepted, Load_Limits& limits) {
    Pair_Result result;
    try {
        result = result_of(load(paths, limits), accepted);
    } catch (const Usage_Error& error) {
        result.text = error.what();
    }
    result.name = name;
    result.paths = paths;
    return result;
}

} // namespace vorna::drawing::comparison
