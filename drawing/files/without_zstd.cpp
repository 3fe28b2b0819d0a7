// Builds without zstd.
#include <stdexcept>

#include "drawing/files/zstd.h"

namespace vorna::drawing {

std::string zstd(std::string_view) {
    throw std::runtime_error("this build does not compress with zstd");
}

std::size_t zstd_window(std::string_view) {
    return 0;
}

std::string unzstd(std::string_view, std::size_t, const std::function<void(std::size_t)>&) {
    throw std::runtime_error("this build does not read data that is compressed with zstd");
}

} // namespace vorna::drawing
