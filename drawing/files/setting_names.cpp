// What messages call the settings of a drawing.
#include "drawing/files/setting_names.h"

#include <atomic>

namespace vorna::drawing {
namespace {

constexpr Setting_Names own_names{"allow_empty", "bbox",   "center",       "clip_to",    "dpi",
                                  "flip_y",      "font",   "input_format", "graticule",  "kernels",
                                  "layer",       "layout", "map_scale",    "max_memory", "outside_of_folder",
                                  "overlay",     "paper",  "part",         "projection", "record",
                                  "scale",       "size",   "unit",         "water"};
static_assert(own_names.back() != nullptr);

std::atomic<const Setting_Names*> current{&own_names};

} // namespace

std::string name_of(Setting setting) {
    return (*current.load())[static_cast<std::size_t>(setting)];
}

std::string list_of_names(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names) {
        list += (list.empty() ? "" : ", ") + name;
    }
    return list;
}

void call_settings(const Setting_Names& names) noexcept {
    current = &names;
}

} // namespace vorna::drawing
