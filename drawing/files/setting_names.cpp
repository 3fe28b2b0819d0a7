// What messages call the settings of a drawing.
#include "drawing/files/setting_names.h"

#include <atomic>

namespace vorna::drawing {
namespace {

constexpr Setting_Names own_names{"allow_empty",
                                  "bbox",
                                  "center",
                                  "clip_to",
                                  "flip_y",
                                  "font",
                                  "format",
                                  "graticule",
                                  "kernels",
                                  "layer",
                                  "layout",
                                  "max_memory",
                                  "outside_of_folder",
                                  "overlay",
                                  "part",
                                  "projection",
                                  "record",
                                  "scale",
                                  "scale_bar",
                                  "size",
                                  "unit",
                                  "water"};
static_assert(own_names.back() != nullptr);

std::atomic<const Setting_Names*> current{&own_names};

} // namespace

std::string name_of(Setting setting) {
    return (*current.load())[static_cast<std::size_t>(setting)];
}

void call_settings(const Setting_Names& names) noexcept {
    current = &names;
}

} // namespace vorna::drawing
