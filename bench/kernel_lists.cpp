// Measures every kernel of every list of configurations by itself, in each kernel set that the processor runs: nanoseconds of
// processor time a shape. What is drawn is the same for all kernels of a list: triangles and lines 20 pixels long, circles of
// radius 20 and rows of 256 pixels, scattered over a window of 512 x 512 pixels, which fits in a cache.
#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <regex>

#include "bench/random.h"
#include "bench/timing.h"
#include "renderer/configuration_words.h"
#include "renderer/kernels/kernel_sets.h"
#include "renderer/lines/line_setup.h"

namespace bench {

namespace {

constexpr std::int32_t size = 512, length = 20, count = 500;

struct Buffer {
    std::vector<std::uint8_t> bytes;
    std::vector<std::uint8_t*> rows;
    std::int32_t stride;

    Buffer(std::int32_t pixel_bytes, std::uint8_t value) : stride(size * pixel_bytes + 64) {
        bytes.assign(static_cast<std::size_t>(stride) * (size + 1), value);
        for (std::int32_t row = 0; row < size; ++row) {
            rows.push_back(bytes.data() + std::ptrdiff_t{size - 1 - row} * stride);
        }
    }
};

// What all kernels draw with.
class Shapes {
public:
    Shapes() : dither_(krb::make_dither(VT_Color_Cube({6, 5, 4}, 1, 7))) {
        Random random;
        const auto any = [&random](std::int32_t end) { return random.below(end); };
        const auto place = [&](std::int32_t margin) { return margin + any(size - 2 * margin); };
        for (std::int32_t i = 0; i < count; ++i) {
            const VT_DCI_Point a{place(length), place(length), any(65536)};
            const VT_DCI_Point b{a.x + any(2 * length) - length, a.y + any(2 * length) - length, any(65536)};
            const VT_DCI_Point c{a.x + any(2 * length) - length, a.y + any(2 * length) - length, any(65536)};
            points.insert(points.end(), {a, b, c});
        }
        for (std::size_t i = 0; i < points.size(); ++i) {
            colors.push_back(random.color());
            coordinates.push_back({any(64 << 16), any(64 << 16)});
        }
        for (VT_RGB32& texel : texels_) {
            texel = colors[static_cast<std::size_t>(any(3 * count))];
        }
        for (std::uint32_t& row : pattern_.stock_rows) {
            row = 0x55555555U;
        }
        // Half of it clipped away, in stretches of 64 pixels.
        for (std::int32_t i = 0; i < mask_stride * size; ++i) {
            mask_.push_back((i % mask_stride & 8) != 0 ? 0xFF : 0);
        }
        for (std::int32_t row = 0; row < size; ++row) {
            mask_rows_.push_back(mask_.data() + std::ptrdiff_t{row} * mask_stride);
        }
    }

    template <class Target> Target target(krb::Clip_Rule clip) {
        Target target{};
        target.color_rows = color_.rows.data();
        target.depth_rows = depth_.rows.data();
        target.color_row_bytes = -color_.stride;
        target.depth_row_bytes = -depth_.stride;
        target.width = size;
        target.height = target.end_row = size;
        target.depth_written = true;
        target.background = 0xFF000001U;
        target.alternate_background = 0xFF000002U;
        target.merged_index8 = [](const void*, std::uint8_t stored, std::uint8_t index) {
            return static_cast<std::uint8_t>(stored & index);
        };
        target.dither = &dither_;
        target.mask_rows = clip == krb::Clip_Rule::masked ? mask_rows_.data() : nullptr;
        return target;
    }

    krb::Triangle_Target triangle_target(krb::Clip_Rule clip) {
        auto triangles = target<krb::Triangle_Target>(clip);
        triangles.end_column = size;
        triangles.palette = reinterpret_cast<const std::uint8_t*>(texels_);
        triangles.pattern = &pattern_;
        triangles.texels = reinterpret_cast<const std::uint8_t*>(texels_);
        triangles.texture_width_mask = 63;
        triangles.texture_height_mask = 63;
        return triangles;
    }

    std::vector<VT_DCI_Point> points; // three by three
    std::vector<VT_RGB32> colors;
    std::vector<krb::Texel_Coordinates> coordinates;

private:
    static constexpr std::int32_t mask_stride = size / 8 + 4;

    Buffer color_{4, 0x55}, depth_{2, 0x80};
    krb::Dither dither_;
    krb::Face_Pattern pattern_{};
    VT_RGB32 texels_[64 * 64];
    std::vector<std::uint8_t> mask_;
    std::vector<const std::uint8_t*> mask_rows_;
};

class Report {
public:
    Report(const std::string& only, std::int32_t rounds) : only_(only), rounds_(rounds), sets_(krb::supported_kernel_sets()) {
        std::printf("%-64s", "kernel, ns a shape");
        for (const krb::Kernel_Set* set : sets_) {
            std::printf(" %9s", set->name);
        }
        std::printf("\n");
    }

    // draw(kernel set, configuration) draws all shapes.
    template <class List, class Draw> void add(const std::string& name, const List& list, Draw draw) {
        for (const auto& configuration : list.each) {
            const std::string title = name + ' ' + krb::words_of(configuration);
            if (!std::regex_search(title, only_)) {
                continue;
            }
            std::vector<Side> sides;
            for (const krb::Kernel_Set* set : sets_) {
                sides.push_back({set->name, [&draw, &configuration, set] { draw(*set, configuration); }});
            }
            std::printf("%-64s", title.c_str());
            for (const Time& time : measure(sides, rounds_)) {
                std::printf(" %9.1f", time.least * 1e9 / count);
            }
            std::printf("\n");
            std::fflush(stdout);
        }
    }

private:
    std::regex only_;
    std::int32_t rounds_;
    std::vector<const krb::Kernel_Set*> sets_;
};

void measure_triangles(Report& report, Shapes& shapes) {
    report.add("triangles", krb::triangle_configurations, [&](const krb::Kernel_Set& set, const krb::Triangle_Configuration& c) {
        const krb::Triangle_Target target = shapes.triangle_target(c.clip);
        krb::Triangle_Configuration flat = c;
        flat.shading = krb::Shading::flat;
        krb::Strip_Kernel* const near_flat = c.shading == krb::Shading::gouraud ? set.triangles->strips[flat] : nullptr;
        krb::Strip_Kernel* const kernel = set.triangles->strips[c];
        for (std::size_t i = 0; i < shapes.points.size(); i += 3) {
            kernel(target, {3, &shapes.points[i], &shapes.colors[i], true, near_flat, &shapes.coordinates[i]});
        }
    });
}

void measure_lines(Report& report, Shapes& shapes) {
    const auto polyline = [&](std::size_t i) -> krb::Polyline {
        return {2, &shapes.points[i], &shapes.colors[i], true, static_cast<std::uint8_t>(i)};
    };
    report.add("polylines", krb::polyline_configurations, [&](const krb::Kernel_Set& set, const krb::Line_Configuration& c) {
        const auto target = shapes.target<krb::Line_Target>(c.clip);
        for (std::size_t i = 0; i < shapes.points.size(); i += 3) {
            set.lines->polylines[c](target, polyline(i));
        }
    });
    // The first two thirds of each segment's rows.
    std::vector<krb::Cut_Segment> cut;
    for (std::size_t i = 0; i < shapes.points.size(); i += 3) {
        krb::Cut_Segment segment{};
        segment.from = shapes.points[i];
        segment.to = shapes.points[i + 1];
        segment.right = size - 1;
        segment.last_row = std::abs(segment.to.y - segment.from.y) * 2 / 3;
        segment.paint.color = shapes.colors[i];
        const krb::Line_Ramps ramps(segment.from, segment.to, segment);
        segment.ramps_from = ramps.start();
        segment.paint.depth = ramps.depth(segment.from.z, segment.to.z);
        segment.paint.blue = segment.paint.green = segment.paint.red = segment.paint.alpha = ramps.channel(40, 200);
        cut.push_back(segment);
    }
    report.add("cut segments", krb::cut_segment_configurations,
               [&](const krb::Kernel_Set& set, const krb::Line_Configuration& c) {
                   const auto target = shapes.target<krb::Line_Target>(c.clip);
                   for (const krb::Cut_Segment& segment : cut) {
                       set.lines->cut_segments[c](target, segment);
                   }
               });
    report.add("smoothed", krb::smoothed_configurations, [&](const krb::Kernel_Set& set, const krb::Smoothed_Configuration& c) {
        auto target = shapes.target<krb::Smoothed_Target>(c.clip);
        target.visible = target.clip = {0, size - 1, 0, size - 1};
        for (std::size_t i = 0; i < shapes.points.size(); i += 3) {
            set.smoothed->polylines[c](target, polyline(i));
        }
    });
}

void measure_spans(Report& report, Shapes& shapes) {
    std::vector<std::int32_t> extents;
    for (std::int32_t row = 0; row <= length; ++row) {
        extents.push_back(static_cast<std::int32_t>(std::sqrt(length * length - row * row)));
    }
    report.add("circles", krb::fill_configurations, [&](const krb::Kernel_Set& set, const krb::Span_Configuration& c) {
        const auto target = shapes.target<krb::Pixel_Target>(c.clip);
        for (std::size_t i = 0; i < shapes.points.size(); i += 3) {
            set.spans->fill[c](target, {shapes.points[i].x, shapes.points[i].y, length, extents.data()}, shapes.colors[i]);
        }
    });
    report.add("rows", krb::copy_configurations, [&](const krb::Kernel_Set& set, const krb::Span_Configuration& c) {
        const auto target = shapes.target<krb::Pixel_Target>(c.clip);
        const auto depth = krb::Fixed_Interpolator::between<15>(0, 65535, size / 2);
        const auto* source = reinterpret_cast<const std::uint8_t*>(shapes.colors.data());
        for (std::size_t i = 0; i < shapes.points.size(); i += 3) {
            set.spans->copy[c](target, {shapes.points[i].y, shapes.points[i].x / 2, size / 2}, source, depth);
        }
    });
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    std::string only;
    std::int32_t rounds = 5;
    CLI::App app("Measures every kernel by itself, in each kernel set that the processor runs.");
    app.add_option("--only", only, "Regular expression of the kernels that are measured, such as '^triangles flat .*masked'");
    app.add_option("--rounds", rounds, "How often each side is timed; the least time counts")->check(CLI::Range(1, 1000));
    CLI11_PARSE(app, argc, argv);
    try {
        bench::Shapes shapes;
        bench::Report report(only, rounds);
        bench::measure_triangles(report, shapes);
        bench::measure_lines(report, shapes);
        bench::measure_spans(report, shapes);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
}
