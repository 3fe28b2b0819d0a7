#include "bench/workloads.h"

#include <cmath>
#include <numbers>
#include <type_traits>

#include "bench/workload_list.h"

namespace bench {

namespace {

constexpr double cache_line = 64;

} // namespace

double Goal::value_for(std::string_view kernel_set) const noexcept {
    switch (of) {
    case Of::rate:
        return kernel_set == "avx512" ? value : 0;
    case Of::best_peer:
        return kernel_set == "avx512" ? value : kernel_set == "avx2" ? avx2 : kernel_set == "baseline" ? baseline : 0;
    default:
        return value;
    }
}

Unit unit_of(Counts counts) {
    switch (counts) {
    case Counts::pixels:
        return {"Mpix/s", 1e6};
    case Counts::triangles:
        return {"Mtri/s", 1e6};
    case Counts::lines:
        return {"Mlines/s", 1e6};
    case Counts::circles:
        return {"thousand/s", 1e3};
    case Counts::points:
        return {"Mpoints/s", 1e6};
    case Counts::frames:
        break;
    }
    return {"ms", 1e-3};
}

double amount_of(const Subject& subject, Counts counts) {
    if (counts == Counts::frames) {
        return 1;
    }
    return std::visit(
        [counts](const auto& drawn) -> double {
            using Drawn = std::decay_t<decltype(drawn)>;
            if constexpr (std::is_same_v<Drawn, Scene>) {
                return counts == Counts::pixels ? drawn.area() : static_cast<double>(drawn.triangle_count());
            } else if constexpr (std::is_same_v<Drawn, Lines>) {
                return static_cast<double>(drawn.points.size()) / 2;
            } else if constexpr (std::is_same_v<Drawn, Circles>) {
                return static_cast<double>(drawn.centers.size());
            } else if constexpr (std::is_same_v<Drawn, Image>) {
                return 1.0 * drawn.size.x * drawn.size.y;
            } else {
                return 100000;
            }
        },
        subject);
}

double bytes_touched(const Workload& workload, const Subject& subject) {
    const Surface& surface = workload.surface;
    const double pixel_bytes = surface.palette ? 1 : 4;
    double bytes = workload.clears == Clears::all ? pixel_bytes * window_pixels : 0;
    bytes += workload.clears != Clears::none ? 2.0 * window_pixels : 0;
    if (const auto* scene = std::get_if<Scene>(&subject)) {
        return bytes + scene->area() * (surface.depth ? 2 + pixel_bytes / 2 : pixel_bytes);
    }
    if (const auto* lines = std::get_if<Lines>(&subject)) {
        for (std::size_t i = 0; i < lines->points.size(); i += 2) {
            const VT_DCI_Point from = lines->points[i], to = lines->points[i + 1];
            const double columns = std::abs(to.x - from.x), rows = std::abs(to.y - from.y);
            bytes += (rows + 1) * cache_line + columns * pixel_bytes;
            bytes += surface.depth ? (rows + 1) * cache_line + columns * 2 : 0;
        }
        return bytes;
    }
    if (const auto* circles = std::get_if<Circles>(&subject)) {
        for (const double radius : circles->radii) {
            bytes += circles->filled ? std::numbers::pi * radius * radius * pixel_bytes + (2 * radius + 1) * cache_line
                                     : 2 * (2 * radius + 1) * cache_line;
        }
        return bytes;
    }
    if (std::holds_alternative<Image>(subject)) {
        return amount_of(subject, Counts::pixels) * pixel_bytes;
    }
    return 0;
}

std::vector<Workload> workloads(const Model_Files& models) {
    Workload_List list;
    add_triangles(list, models.bunny);
    add_lines(list);
    add_images(list);
    add_circles(list);
    add_others(list);
    add_forms(list);
    add_layers(list);
    add_models(list, models.dragon);
    return list.all;
}

} // namespace bench
