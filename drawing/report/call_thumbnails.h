// Small images of what calls of a recording changed, packed into one image.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "drawing/recording/steps.h"
#include "host/color.h"

namespace vorna::drawing::report {

inline constexpr std::int32_t thumbnail_width = 64, thumbnail_height = 48;

// Keeps the thumbnails of those calls that changed the most pixels.
class Call_Thumbnails {
public:
    explicit Call_Thumbnails(std::size_t most) : most_(most) {}

    // Considers the last call that was made.
    void add(const recording::Recording_Steps& steps);

    // Calls that changed pixels and have no thumbnail.
    std::size_t left_out() const noexcept { return changing_ - kept_.size(); }

    struct Atlas {
        std::vector<std::size_t> calls; // in ascending order; their thumbnails lie row by row in the same order
        std::int32_t columns = 0;       // of thumbnails
        std::string png;                // empty without any thumbnail
    };
    Atlas atlas() const;

private:
    using Pixels = std::vector<VT_RGB32>; // rows from the top down
    // Changed pixels, then the number of the call, the first of which is the largest.
    using Weight = std::pair<std::int64_t, std::size_t>;

    const std::size_t most_;
    std::size_t changing_ = 0;
    std::map<Weight, Pixels> kept_;
};

} // namespace vorna::drawing::report
