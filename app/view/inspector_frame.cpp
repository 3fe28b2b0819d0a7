// The window that goes through a recording call by call: what it shows.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "app/view/base_viewer.h"
#include "app/view/inspector.h"
#include "app/view/text_panel.h"
#include "drawing/recording/call_kinds.h"
#include "drawing/recording/history_report.h"
#include "drawing/recording/summary.h"

namespace vorna::app::view {
namespace {

constexpr VT_RGB32 accent{180, 60, 255, 255};
constexpr VT_RGB32 white{255, 255, 255, 255}, black{0, 0, 0, 255};
constexpr VT_RGB32 bar{150, 124, 104, 255}, base{36, 31, 28, 255};

// In dots of letters.
constexpr std::int32_t times_height = 28, gap = 8;
constexpr std::size_t text_lines = 3, most_history_lines = 14;

VT_RGB32 darkened(VT_RGB32 color) {
    const auto channel = [](std::uint8_t value) { return static_cast<std::uint8_t>(value / 4 + 20); };
    return {channel(color.blue), channel(color.green), channel(color.red), 255};
}

std::string cut(std::string line, std::size_t letters) {
    if (line.size() > letters) {
        line.resize(letters - std::min<std::size_t>(letters, 2));
        line += "..";
    }
    return line;
}

std::string milliseconds(double microseconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.*f ms", microseconds < 100 ? 4 : 2, microseconds / 1000);
    return text;
}

std::string range_text(const char* of, std::int32_t first, std::int32_t last) {
    return std::string(of) +
           (first == last ? " " + std::to_string(first) : "s " + std::to_string(first) + " to " + std::to_string(last));
}

} // namespace

// The image that the recording has; of a window that does not hold it, the whole window.
VT_Int_Rectangle Inspector::shown() const {
    const VT_Int_Rectangle window = steps_->window(), output = inspected_.recording.output.value_or(window);
    return !is_empty(output) && common_part(output, window) == output ? output : window;
}

// In columns and rows of the shown image.
Box Inspector::box_of(const VT_Int_Rectangle& device) const {
    const VT_Int_Rectangle image = shown();
    return {device.left - image.left, image.top - device.top, device.right - device.left + 1, device.top - device.bottom + 1};
}

Box Inspector::area_of_times() const {
    const std::int32_t height = times_height * letter_scale_, texts = panel_size(0, text_lines, letter_scale_).y;
    const std::int32_t side = gap * letter_scale_;
    return {side, size_.y - texts - height, std::max(size_.x - 2 * side, 1), height};
}

Box Inspector::area_of_image() const {
    return {0, 0, size_.x, std::max(area_of_times().top, 1)};
}

void Inspector::update_image() {
    const std::pair wanted(steps_->position(), view_);
    if (image_is_of_ != wanted) {
        const drawing::Raster raster = steps_->colors();
        if (raster.width != image_.width || raster.height != image_.height) {
            image_ = {};
            image_memory_ = {};
            image_memory_ = {inspected_.limits, inspected_.file,
                             sizeof(VT_RGB32) * static_cast<std::uint64_t>(raster.width) *
                                 static_cast<std::uint64_t>(raster.height)};
        }
        image_ = image_of(*steps_, view_);
        image_is_of_ = wanted;
    }
    const Box image = box_of(shown());
    place_.set(area_of_image(), {image.width, image.height});
}

bool Inspector::has_changed_pixel(std::int32_t column, std::int32_t row) const {
    const auto& change = steps_->change();
    const Box box = box_of(change.bounds);
    return box.has(column, row) && change.pixels[static_cast<std::size_t>(row - box.top) * static_cast<std::size_t>(box.width) +
                                                 static_cast<std::size_t>(column - box.left)] != 0;
}

// A reduced image shows the mean of up to four by four pixels for one.
void Inspector::paint_image() {
    const VT_Int_Rectangle window = steps_->window(), image = shown();
    const Box area = area_of_image(),
              part{image.left - window.left, window.top - image.top, image.right - image.left + 1, image.top - image.bottom + 1};
    const Box painted = place_.box_of({0, 0, part.width, part.height}).common_part(area);
    const int samples = place_.scale() >= 1 ? 1 : std::min(static_cast<int>(std::ceil(1 / place_.scale())), 4);
    const auto sample = [samples](std::int32_t at, int i) { return at + (i + 0.5) / samples; };
    for (std::int32_t y = painted.top; y < painted.bottom(); ++y) {
        VT_RGB32* const row = frame_.row(y);
        for (std::int32_t x = painted.left; x < painted.right(); ++x) {
            std::uint32_t blue = 0, green = 0, red = 0;
            for (int i = 0; i < samples * samples; ++i) {
                const std::int32_t column = std::clamp(place_.column_at(sample(x, i % samples)), 0, part.width - 1);
                const std::int32_t line = std::clamp(place_.row_at(sample(y, i / samples)), 0, part.height - 1);
                VT_RGB32 color =
                    image_.pixels[static_cast<std::size_t>(part.top + line) * static_cast<std::size_t>(image_.width) +
                                  static_cast<std::size_t>(part.left + column)];
                if (marking_ == Marking::dimmed && !has_changed_pixel(column, line)) {
                    color = darkened(color);
                }
                blue += color.blue;
                green += color.green;
                red += color.red;
            }
            const auto mean = [count = static_cast<std::uint32_t>(samples * samples)](std::uint32_t sum) {
                return static_cast<std::uint8_t>((sum + count / 2) / count);
            };
            row[x] = {mean(blue), mean(green), mean(red), 255};
        }
    }
}

// The outline runs around the changed pixels; a box around it shows where few of them are.
void Inspector::paint_marks() {
    const auto& change = steps_->change();
    if (marking_ != Marking::outline || is_empty(change.bounds)) {
        return;
    }
    const Box pixels = box_of(change.bounds), on_screen = place_.box_of(pixels);
    const Box image = place_.box_of(box_of(shown())).grown(letter_scale_);
    const Box region = on_screen.grown(letter_scale_).common_part(image).common_part(area_of_image());
    enum : std::uint8_t { nothing, beside, inside };
    std::vector<std::uint8_t> marks(static_cast<std::size_t>(region.width) * static_cast<std::size_t>(region.height), nothing);
    const auto mark = [&](const Box& box, std::uint8_t as) {
        const Box part = box.common_part(region);
        for (std::int32_t y = part.top; y < part.bottom(); ++y) {
            std::fill_n(marks.begin() + std::ptrdiff_t{y - region.top} * region.width + (part.left - region.left), part.width,
                        as);
        }
    };
    for (const std::uint8_t as : {beside, inside}) {
        auto bits = change.pixels.begin();
        for (std::int32_t y = 0; y < pixels.height; ++y, bits += pixels.width) {
            for (std::int32_t x = 0, end = 0; x < pixels.width; x = end + 1) {
                x = static_cast<std::int32_t>(std::find_if(bits + x, bits + pixels.width, [](auto bit) { return bit != 0; }) -
                                              bits);
                end = static_cast<std::int32_t>(std::find(bits + x, bits + pixels.width, std::uint8_t{0}) - bits);
                if (end > x) {
                    const Box run = place_.box_of({pixels.left + x, pixels.top + y, end - x, 1});
                    mark(as == beside ? run.grown(letter_scale_) : run, as);
                }
            }
        }
    }
    for (std::int32_t y = region.top; y < region.bottom(); ++y) {
        for (std::int32_t x = region.left; x < region.right(); ++x) {
            if (marks[static_cast<std::size_t>(y - region.top) * static_cast<std::size_t>(region.width) +
                      static_cast<std::size_t>(x - region.left)] == beside) {
                frame_.row(y)[x] = accent;
            }
        }
    }
    if (std::max(on_screen.width, on_screen.height) < 3 * gap * letter_scale_) {
        frame_.outline(on_screen.grown(gap * letter_scale_), letter_scale_, accent);
    }
}

void Inspector::paint_pixel() {
    if (pixel_) {
        const Box box = place_.box_of(box_of({pixel_->x, pixel_->x, pixel_->y, pixel_->y}));
        frame_.outline(box.grown(2 * letter_scale_), letter_scale_, black);
        frame_.outline(box.grown(letter_scale_), letter_scale_, white);
    }
}

// A bar for each call, or for the slowest one of several, by the logarithm of the time; and the position.
void Inspector::paint_times() {
    const Box area = area_of_times();
    frame_.fill({0, area.top, size_.x, size_.y - area.top}, base);
    const auto calls = static_cast<std::int64_t>(times_.size());
    const std::int32_t border = 4 * letter_scale_;
    const Box chart{area.left, area.top + border, area.width, area.height - border};
    const auto column_of = [&](std::int64_t position) {
        return chart.left + static_cast<std::int32_t>(calls == 0 ? 0 : position * (chart.width - 1) / calls);
    };
    constexpr double unit = 0.1; // microseconds
    const double longest = std::log1p(longest_time_ / unit);
    for (std::int64_t call = 0; call < calls;) {
        const std::int32_t left = column_of(call);
        double time = 0;
        for (; call < calls && column_of(call) == left; ++call) {
            time = std::max(time, times_[static_cast<std::size_t>(call)]);
        }
        const double part = longest > 0 ? std::min(std::log1p(time / unit) / longest, 1.0) : 0;
        const auto height = static_cast<std::int32_t>(std::lround(part * chart.height));
        const std::int32_t width = std::max(column_of(call) - left, 1);
        frame_.fill({left, chart.bottom() - height, width > 2 * letter_scale_ ? width - letter_scale_ : width, height}, bar);
    }
    const std::int32_t cursor = column_of(static_cast<std::int64_t>(wanted_));
    frame_.fill({cursor - letter_scale_, area.top, 2 * letter_scale_, area.height}, accent);
}

std::string Inspector::call_text() const {
    const std::size_t calls = steps_->calls();
    if (wanted_ == 0) {
        return "before the first of " + with_commas(calls) + (calls == 1 ? " call" : " calls");
    }
    const std::size_t number = wanted_ - 1;
    const auto& call = inspected_.recording.calls[number];
    const std::size_t points = drawing::recording::points_of(call);
    const std::string rendition = drawing::recording::short_rendition(inspected_.recording, number);
    return "call " + std::to_string(number) + " of 0 to " + std::to_string(calls - 1) + ": " + std::string(call.kind->name) +
           (points > 0 ? ", " + with_commas(points) + (points == 1 ? " point" : " points") : "") + ", " +
           milliseconds(times_[number]) + (rendition.empty() ? "" : "  [" + rendition + "]");
}

std::string Inspector::change_text() const {
    const auto& change = steps_->change();
    if (wanted_ == 0) {
        return "nothing drawn yet";
    }
    if (is_empty(change.bounds)) {
        return "changed nothing";
    }
    const VT_Int_Rectangle part = common_part(change.bounds, shown());
    const Box box = box_of(part);
    return "changed " + with_commas(static_cast<std::size_t>(change.colors)) + (change.colors == 1 ? " colour" : " colours") +
           " and " + with_commas(static_cast<std::size_t>(change.depths)) + (change.depths == 1 ? " depth" : " depths") +
           (is_empty(part)
                ? ", none of them in the image"
                : " in " + range_text("column", box.left, box.right() - 1) + ", " + range_text("row", box.top, box.bottom() - 1));
}

std::vector<std::string> Inspector::texts() const {
    constexpr std::string_view names[] = {"colours", "depth view", "mask view", "overdraw", "cost"};
    const std::string name(names[static_cast<std::size_t>(view_)]);
    const std::string legend = image_.legend.empty() ? "; h shows the keys" : ": " + image_.legend;
    return {call_text(), change_text(), message_.empty() ? name + legend : message_};
}

void Inspector::paint_texts() {
    const std::size_t letters = letters_in(size_.x, letter_scale_);
    std::vector<std::string> lines = texts();
    std::ranges::transform(lines, lines.begin(), [letters](const std::string& line) { return cut(line, letters); });
    const std::int32_t top = area_of_times().bottom();
    frame_.fill({0, top, size_.x, size_.y - top}, panel_background);
    frame_.put(*text_panel(lines, letter_scale_), 0, top);
    if (shows_help_) {
        frame_.put(*text_panel(inspector_help_lines(), letter_scale_), gap * letter_scale_, gap * letter_scale_);
    }
}

// The events around the position, on the side of the window where the pixel is not.
void Inspector::paint_history() {
    const Box area = area_of_image();
    const std::int32_t side = gap * letter_scale_;
    const std::size_t letters = letters_in(size_.x - 2 * side, letter_scale_);
    const std::int32_t line = panel_size(0, 1, letter_scale_).y - panel_size(0, 0, letter_scale_).y;
    const auto room = static_cast<std::size_t>(std::max(area.height / 2 / line, 2));
    if (history_lines_.empty() || shows_help_) {
        return;
    }
    // Line 0 is about the pixel, and each event has one.
    std::size_t here = 1, highlighted = SIZE_MAX;
    for (std::size_t i = 0; history_ && i < history_->events.size() && history_->events[i].call < wanted_; ++i) {
        here = 1 + i;
        highlighted = history_->events[i].call + 1 == wanted_ ? here : SIZE_MAX;
    }
    const std::size_t others = history_lines_.size() - 1, count = std::min({others, room - 1, most_history_lines});
    const std::size_t first = 1 + std::min(others - count, here - 1 - std::min(here - 1, count / 2));
    std::vector<std::string> lines{cut(history_lines_.front(), letters)};
    for (std::size_t i = first; i < first + count; ++i) {
        lines.push_back(cut(history_lines_[i], letters));
    }
    const auto panel = text_panel(lines, letter_scale_, highlighted == SIZE_MAX ? SIZE_MAX : highlighted - first + 1);
    const bool is_low = pixel_ && place_.box_of(box_of({pixel_->x, pixel_->x, pixel_->y, pixel_->y})).top > area.height / 2;
    frame_.put(*panel, side, is_low ? side : area.bottom() - side - panel->height());
}

} // namespace vorna::app::view
