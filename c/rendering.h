// What images of models and of maps have in common.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "c/handles.h"
#include "drawing/drawing.h"
#include "drawing/image_samples.h"
#include "vorna/c_model.h"

struct vorna_model {
    vorna::drawing::Model content;
};

namespace vorna::c {

inline std::optional<VT_RGB32> color_or_none(const vorna_color* color) {
    return color ? std::optional(host_color(*color)) : std::nullopt;
}

// Null stands for the defaults.
drawing::Model_View view_of(const vorna_view* view);
drawing::Image_Settings image_settings_of(const vorna_image_settings* settings);

std::unique_ptr<vorna_image> image_of(const drawing::Image& image, const drawing::Image_Settings& settings);
std::unique_ptr<vorna_image> image_of(const drawing::Image_Samples& samples);
drawing::Image_Samples samples_of(const vorna_image& image);

// The line with a number from 0 on.
void give_line(const std::vector<std::string>& lines, std::size_t number, const char** line);
// digest: null, or 65 bytes.
void give_digest(const std::string& digits, char* digest);

} // namespace vorna::c
