// What the page of a report shows.
#include "drawing/report/page_content.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <string_view>
#include <utility>

#include "drawing/files/gzip.h"
#include "drawing/files/interruption.h"
#include "drawing/files/usage_error.h"
#include "drawing/files/zstd.h"
#include "drawing/image/image_file.h"
#include "drawing/recording/call_areas.h"
#include "drawing/recording/call_kinds.h"
#include "drawing/recording/history_report.h"
#include "drawing/recording/pixel_history.h"
#include "drawing/recording/shown_part.h"
#include "drawing/recording/steps.h"
#include "drawing/recording/summary.h"
#include "drawing/recording/timing.h"
#include "drawing/report/call_thumbnails.h"
#include "drawing/report/page_history.h"
#include "vorna/version.h"

namespace vorna::drawing::report {

namespace {

using Json = nlohmann::ordered_json;
using recording::Image_Area;
using recording::Recording;

// Larger files are compressed in the page, and still larger ones are not in it.
constexpr std::size_t most_plain_file = std::size_t{1} << 18, most_file = std::size_t{1} << 25;
// A larger image is shown by some of its columns and rows.
constexpr std::size_t most_image_file = std::size_t{1} << 24;
// Depths are left out when they make a page much larger.
constexpr std::size_t most_depth_file = std::size_t{1} << 22;
// Histories that nobody asked for: the pixels at which calls are probed, which is their time, and the events.
constexpr std::int64_t most_probed_pixels = std::int64_t{1} << 21;
constexpr std::size_t most_events = std::size_t{1} << 18, most_wanted_events = std::size_t{1} << 21;

std::string number_text(std::uint64_t number) {
    std::string text = std::to_string(number);
    for (std::size_t i = text.size(); i > 3; i -= 3) {
        text.insert(i - 3, ",");
    }
    return text;
}

std::string counted(std::uint64_t number, const char* what) {
    return number_text(number) + ' ' + what + (number == 1 ? "" : "s");
}

// Every step-th column and row.
std::string reduced_png(const Raster& raster, const VT_Palette& palette, std::int32_t step) {
    const auto pixel_bytes = static_cast<std::size_t>(bytes_per_pixel(raster.format));
    Raster reduced = raster;
    reduced.width = (raster.width + step - 1) / step;
    reduced.height = (raster.height + step - 1) / step;
    reduced.row_bytes = static_cast<std::ptrdiff_t>(static_cast<std::size_t>(reduced.width) * pixel_bytes);
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(reduced.row_bytes) * static_cast<std::size_t>(reduced.height));
    std::uint8_t* next = bytes.data();
    for (std::int32_t y = 0; y < raster.height; y += step) {
        for (std::int32_t x = 0; x < raster.width; x += step, next += pixel_bytes) {
            std::memcpy(next, raster.top + y * raster.row_bytes + static_cast<std::size_t>(x) * pixel_bytes, pixel_bytes);
        }
    }
    reduced.top = bytes.data();
    return png_of(reduced, palette);
}

class Content_Maker {
public:
    Content_Maker(const Recording& recording, const Module_Choice& module, const Page_Settings& settings)
        : recording_(recording), module_(module), settings_(settings), replay_{.unchecked = settings.unchecked},
          thumbnails_(settings.most_thumbnails) {
        replay_.reports_standard = false;
        if (settings_.limits) {
            constexpr std::size_t bytes_of_call = 256, bytes_of_thumbnail = thumbnail_width * thumbnail_height * 4 + 128;
            const std::size_t thumbnails = std::min(settings_.most_thumbnails, recording.calls.size());
            settings_.limits->take_memory(settings_.name,
                                          recording.calls.size() * bytes_of_call + thumbnails * bytes_of_thumbnail);
        }
    }

    Page_Content make() {
        add_calls();
        add_times();
        add_history();
        add_document();
        return std::move(content_);
    }

private:
    // Numbers for texts of which many calls have the same.
    struct Text_Numbers {
        std::map<std::string, std::size_t, std::less<>> numbers;
        Json texts = Json::array();

        std::size_t of(std::string text) {
            const auto [known, is_new] = numbers.try_emplace(std::move(text), numbers.size());
            if (is_new) {
                texts.push_back(known->first);
            }
            return known->second;
        }
    };

    void add_calls() {
        recording::Recording_Steps steps(recording_, module_,
                                         {.replay = replay_, .memory = 0, .name = settings_.name, .limits = settings_.limits});
        Text_Numbers kinds, renditions;
        Json kind = Json::array(), rendition = Json::array(), points = Json::array(), colors = Json::array(),
             depths = Json::array();
        std::vector<VT_Int_Rectangle> changed; // columns and rows of the buffer, from its lower left
        std::size_t point_count = 0;
        for (std::size_t call = 0; call < steps.calls(); ++call) {
            Interruption::check();
            steps.go_to(call + 1);
            thumbnails_.add(steps);
            const recording::Step_Change& change = steps.change();
            const VT_Int_Rectangle window = steps.window(), &bounds = change.bounds;
            kind.push_back(kinds.of(std::string(recording_.calls[call].kind->name)));
            rendition.push_back(renditions.of(recording::short_rendition(recording_, call)));
            points.push_back(recording::points_of(recording_.calls[call]));
            point_count += recording::points_of(recording_.calls[call]);
            colors.push_back(change.colors);
            depths.push_back(change.depths);
            changed.push_back(is_empty(bounds) ? bounds
                                               : VT_Int_Rectangle{bounds.left - window.left, bounds.right - window.left,
                                                                  bounds.bottom - window.bottom, bounds.top - window.bottom});
        }
        content_.counts.calls = steps.calls();
        add_images(steps);
        const VT_Int_Rectangle window = steps.window(), shown = recording_.output.value_or(window);
        const VT_Int_Rectangle image{shown.left - window.left, shown.right - window.left, shown.bottom - window.bottom,
                                     shown.top - window.bottom};
        Json bounds = Json::array();
        for (const VT_Int_Rectangle& each : changed) {
            const VT_Int_Rectangle part = common_part(each, image); // what lies outside of the image is not shown
            const bool has_any = !is_empty(part);
            for (const std::int32_t number :
                 {has_any ? part.left - image.left : 0, has_any ? image.top - part.top : 0,
                  has_any ? part.right - part.left + 1 : 0, has_any ? part.top - part.bottom + 1 : 0}) {
                bounds.push_back(number);
            }
        }
        content_.json["calls"] = {{"kind", std::move(kind)},     {"points", std::move(points)},
                                  {"colors", std::move(colors)}, {"depths", std::move(depths)},
                                  {"bounds", std::move(bounds)}, {"rendition", std::move(rendition)}};
        content_.json["kinds"] = std::move(kinds.texts);
        content_.json["renditions"] = std::move(renditions.texts);
        const auto [thumbnail_calls, columns, png] = thumbnails_.atlas();
        content_.json["thumbnails"] = {
            {"width", thumbnail_width}, {"height", thumbnail_height}, {"columns", columns}, {"calls", thumbnail_calls}};
        content_.atlas_png = png;
        content_.counts.thumbnails = thumbnail_calls.size();
        content_.facts = number_text(static_cast<std::uint64_t>(image_size_.x)) + " × " +
                         number_text(static_cast<std::uint64_t>(image_size_.y)) + " pixels, " +
                         counted(content_.counts.calls, "call") + ", " + counted(point_count, "point") + "; drawn by vorna " +
                         vorna::version() + (module_.kernels.empty() ? "" : " with kernel set " + module_.kernels);
        content_.limits = "Thumbnails show what a call changed in strong colours. ";
        if (thumbnails_.left_out() > 0) {
            content_.limits += "The " + number_text(content_.counts.thumbnails) +
                               " calls that changed the most pixels have one; for " + number_text(thumbnails_.left_out()) +
                               " others a box shows where in the image they changed something. ";
        }
    }

    void add_images(const recording::Recording_Steps& steps) {
        const VT_Palette& palette = steps.palette();
        const Raster colors = recording::shown(steps.colors(), steps.window(), recording_);
        std::string png = png_of(colors, palette);
        std::int32_t step = 1;
        while (png.size() > most_image_file) {
            png = reduced_png(colors, palette, step *= 2);
        }
        content_.color_png = png;
        if (const Raster depths = steps.depths(); depths.top) {
            content_.depth_png = png_of(recording::shown(depths, steps.window(), recording_), palette);
            if (content_.depth_png.size() > most_depth_file) {
                content_.depth_png.clear();
                image_limits_ = "The depths are left out. ";
            }
        }
        if (step > 1) {
            image_limits_ += "The image has every " + std::to_string(step) + "th column and row. ";
        }
        image_size_ = {colors.width, colors.height};
        content_.json["image"] = {{"width", colors.width}, {"height", colors.height}, {"step", step}};
        Json entries = Json::array();
        if (colors.format == Buffer_Format::index8) {
            for (std::size_t i = 0; i < 256; ++i) {
                const VT_RGB32 color = palette.color(static_cast<std::uint8_t>(i));
                char text[16];
                std::snprintf(text, sizeof text, "#%02x%02x%02x", color.red, color.green, color.blue);
                entries.push_back(text);
            }
        }
        content_.json["palette"] = std::move(entries);
    }

    void add_times() {
        Json& microseconds = content_.json["calls"]["microseconds"] = nullptr;
        if (settings_.repetitions > 0) {
            std::vector<recording::Call_Cost> costs(recording_.calls.size());
            recording::measure(recording_, module_, replay_, settings_.repetitions, costs);
            microseconds = Json::array();
            double sum = 0;
            for (const recording::Call_Cost& cost : costs) {
                microseconds.push_back(std::round(cost.microseconds * 10) / 10);
                sum += cost.microseconds;
            }
            char text[64];
            std::snprintf(text, sizeof text, "; all calls take %.*f ms", sum < 10000 ? 2 : 0, sum / 1000);
            content_.facts += text;
        }
    }

    // The pixels of areas at which the calls would be probed.
    std::int64_t probed_pixels(const VT_Int_Rectangle& window, const VT_Int_Rectangle& image) const {
        const recording::Call_Areas areas(recording_);
        std::int64_t sum = 0;
        for (std::size_t call = 0; call < recording_.calls.size(); ++call) {
            if (const VT_Int_Rectangle area = common_part(areas.area(call, window), image); !is_empty(area)) {
                sum += (std::int64_t{area.right} - area.left + 1) * (area.top - area.bottom + 1);
            }
        }
        return sum;
    }

    void add_history() {
        const recording::Replay_Histories histories(recording_, module_,
                                                    {.replay = replay_, .name = settings_.name, .limits = settings_.limits});
        std::vector<Image_Area> areas;
        if (settings_.areas) {
            areas = *settings_.areas;
        } else if (const VT_Int_Rectangle window = histories.window();
                   probed_pixels(window, recording_.output.value_or(window)) <= most_probed_pixels) {
            areas.push_back({{0, 0}, image_size_});
        }
        for (const Image_Area& area : areas) {
            if (!histories.has(area) && area.size == VT_Int_Pair{1, 1}) {
                throw Usage_Error(settings_.name + ": expected a pixel of the image of " + std::to_string(image_size_.x) + " x " +
                                  std::to_string(image_size_.y) + ", found " + std::to_string(area.corner.x) + ',' +
                                  std::to_string(area.corner.y));
            }
            if (!histories.has(area)) {
                throw Usage_Error(settings_.name + ": expected an area of at most " +
                                  std::to_string(recording::most_area_pixels) + " pixels inside the image of " +
                                  std::to_string(image_size_.x) + " x " + std::to_string(image_size_.y) + ", found " +
                                  std::to_string(area.size.x) + " x " + std::to_string(area.size.y) + " at " +
                                  std::to_string(area.corner.x) + ',' + std::to_string(area.corner.y));
            }
        }
        const std::vector<VT_Int_Pair> pixels = pixels_of(areas);
        Page_History history;
        if (!pixels.empty()) {
            history = page_history(areas, histories.of_pixels(pixels));
        }
        if (settings_.areas && history.events > most_wanted_events) {
            throw Load_Error(settings_.name + ": expected at most " + std::to_string(most_wanted_events) +
                             " events at the pixels whose histories are recorded, found " + std::to_string(history.events));
        }
        if (pixels.empty() || (!settings_.areas && history.events > most_events)) {
            content_.json["history"] = nullptr;
            content_.limits +=
                "Histories of pixels are not recorded: the image and its calls are too large for those of all pixels. ";
        } else {
            content_.counts.pixels = pixels.size();
            content_.json["history"] = std::move(history.json);
            content_.values = std::move(history.values);
            content_.limits += "Histories are recorded for " +
                               (pixels.size() == static_cast<std::size_t>(image_size_.x) * static_cast<std::size_t>(image_size_.y)
                                    ? "all pixels"
                                    : counted(pixels.size(), "pixel")) +
                               ": the pointer over the image shows them, a click keeps one. ";
        }
        content_.limits += image_limits_;
    }

    void add_document() {
        std::string name = settings_.file_name;
        content_.file = settings_.file;
        const bool is_packed = is_gzip(content_.file) || is_zstd(content_.file);
        if (!is_packed && content_.file.size() > most_plain_file) {
            content_.file = gzip(content_.file);
            name += ".gz";
        }
        if (content_.file.size() > most_file) {
            content_.file.clear();
            content_.document =
                "The document is not in this page, because it has " + counted(settings_.file.size(), "byte") + '.';
            content_.json["document"] = nullptr;
        } else {
            content_.document = '(' + counted(content_.file.size(), "byte") + ')';
            content_.json["document"] = name;
        }
    }

    const Recording& recording_;
    const Module_Choice& module_;
    const Page_Settings& settings_;
    recording::Replay_Settings replay_;
    Call_Thumbnails thumbnails_;
    VT_Int_Pair image_size_;
    std::string image_limits_;
    Page_Content content_;
};

} // namespace

Page_Content page_content(const Recording& recording, const Module_Choice& module, const Page_Settings& settings) {
    return Content_Maker(recording, module, settings).make();
}

} // namespace vorna::drawing::report
