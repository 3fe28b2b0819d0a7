// The window that goes through a recording call by call: what mouse and keys do.
#include "app/view/inspector.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <numeric>
#include <utility>

#include "app/cli/messages.h"
#include "app/view/base_viewer.h"
#include "drawing/files/input_file.h"
#include "drawing/files/output_file.h"
#include "drawing/files/printable.h"
#include "drawing/files/usage_error.h"
#include "drawing/recording/history_report.h"

namespace vorna::app::view {

using drawing::recording::Recording_Steps;

std::vector<std::string> inspector_help_lines() {
    return {
        "left, right      one call back, forward",
        "  with ctrl      a hundred calls, also with shift",
        "page up, down    a tenth of all calls",
        "home, end        before the first call, the last call",
        "drag below       any call; bars are the times of calls",
        "t, ctrl+t        the slowest call and on to faster ones, back",
        "click            history of a pixel; beside the image hides it",
        "up, down         the pixel's call before, its next one",
        "1 2 3            colours, depths, mask of the call's clips",
        "4 5              how often pixels were drawn, what they cost",
        "m                what the call changed: outlined, alone, not",
        "drag             move",
        "wheel, + -       zoom towards the pointer, the middle",
        "r                the whole image",
        "c                screenshot",
        "f                full screen",
        "h, F1            this help",
        "q, escape        quit",
    };
}

Inspector::Inspector(Inspected inspected, const std::string& folder, Screen& screen)
    : inspected_(std::move(inspected)), screen_(screen), files_(inspected_.file, folder),
      steps_(std::make_unique<Recording_Steps>(inspected_.recording, inspected_.module, inspected_.settings)),
      times_(inspected_.recording.calls.size(), 0), by_time_(times_.size()) {
    steps_->go_to(steps_->calls());
    wanted_ = steps_->position();
    last_window_ = steps_->window();
    note_times();
    std::iota(by_time_.begin(), by_time_.end(), std::size_t{0});
    std::ranges::stable_sort(by_time_, std::greater<>(), [this](std::size_t call) { return times_[call]; });
}

void Inspector::note_times() {
    for (std::size_t call = 0; call < times_.size(); ++call) {
        times_[call] = steps_->microseconds(call).value_or(0);
    }
    longest_time_ = times_.empty() ? 0 : std::ranges::max(times_);
}

void Inspector::resize(VT_Int_Pair size, std::int32_t letter_scale) {
    size_ = size;
    letter_scale_ = letter_scale;
    has_changed_ = true;
}

void Inspector::go_to(std::int64_t position) {
    wanted_ = static_cast<std::size_t>(std::clamp<std::int64_t>(position, 0, static_cast<std::int64_t>(steps_->calls())));
    has_changed_ = true;
}

void Inspector::go_to_slide(double x) {
    const Box times = area_of_times();
    const double part = std::clamp((x - times.left) / std::max(times.width - 1, 1), 0.0, 1.0);
    go_to(std::lround(part * static_cast<double>(steps_->calls())));
}

// To the calls that have an event at the chosen pixel.
void Inspector::go_in_history(bool forwards) {
    if (!history_) {
        return;
    }
    const auto position_of = [](const drawing::recording::Pixel_Event& event) { return event.call + 1; };
    const auto& events = history_->events;
    if (forwards) {
        const auto next = std::ranges::upper_bound(events, wanted_, {}, position_of);
        if (next != events.end()) {
            go_to(static_cast<std::int64_t>(position_of(*next)));
        }
    } else if (const auto here = std::ranges::lower_bound(events, wanted_, {}, position_of); here != events.begin()) {
        go_to(static_cast<std::int64_t>(position_of(*std::prev(here))));
    }
}

void Inspector::go_to_slow_call(bool forwards) {
    if (by_time_.empty()) {
        return;
    }
    const std::size_t last = by_time_.size() - 1;
    slow_ = !slow_ ? 0 : forwards ? std::min(*slow_ + 1, last) : *slow_ - std::min<std::size_t>(*slow_, 1);
    go_to(static_cast<std::int64_t>(by_time_[*slow_]) + 1);
}

// Heat is counted from its first view on, since it takes twice the time and memory.
void Inspector::choose(View view) {
    if ((view == View::overdraw || view == View::cost) && !steps_->heat()) {
        drawing::recording::Steps_Settings settings = inspected_.settings;
        settings.has_heat = true;
        steps_.reset();
        try {
            steps_ = std::make_unique<Recording_Steps>(inspected_.recording, inspected_.module, settings);
            steps_->go_to(wanted_);
        } catch (const drawing::Load_Error& error) {
            message_ = error.what();
            steps_.reset();
            steps_ = std::make_unique<Recording_Steps>(inspected_.recording, inspected_.module, inspected_.settings);
            return;
        }
    }
    view_ = view;
    has_changed_ = true;
}

void Inspector::press_at(const Place& pointer) {
    pressed_ = pointer;
    dragged_ = 0;
    is_sliding_ = pointer.y >= area_of_times().top;
    if (is_sliding_) {
        go_to_slide(pointer.x);
    }
}

void Inspector::turn(const Place& by) {
    if (!pressed_) {
        return;
    }
    pressed_ = Place{pressed_->x + by.x, pressed_->y + by.y};
    dragged_ += std::abs(by.x) + std::abs(by.y);
    if (is_sliding_) {
        go_to_slide(pressed_->x);
    } else if (dragged_ > click_reach) {
        move(by);
    }
}

void Inspector::release() {
    const std::optional<Place> place = std::exchange(pressed_, std::nullopt);
    if (!place || is_sliding_ || dragged_ > click_reach) {
        return;
    }
    const std::optional<VT_Int_Pair> pixel = place_.pixel_at(*place);
    pixel_.reset();
    history_.reset();
    history_lines_.clear();
    if (pixel) {
        choose_pixel(*pixel);
    }
    has_changed_ = true;
}

void Inspector::choose_pixel(VT_Int_Pair pixel) {
    const VT_Int_Rectangle image = shown();
    pixel_ = VT_Int_Pair{image.left + pixel.x, image.top - pixel.y};
    drawing::Load_Limits limits(inspected_.limits.memory_left()); // for this history alone
    drawing::recording::History_Settings settings;
    settings.replay = inspected_.settings.replay;
    settings.name = inspected_.file;
    settings.limits = &limits;
    // The image at the end is another one when the window has changed since; then the history ends here.
    if (steps_->window() != last_window_) {
        if (steps_->position() == 0) {
            return;
        }
        settings.replay.last = steps_->position() - 1;
    }
    std::string text;
    try {
        const drawing::recording::Replay_Histories histories(inspected_.recording, inspected_.module, settings);
        std::vector<drawing::recording::Pixel_History> found = histories.of_pixels(std::span(&pixel, 1));
        write_text(inspected_.recording, found, [&text](std::string_view piece) { text += piece; });
        history_ = std::move(found.front());
    } catch (const drawing::Usage_Error& error) {
        text = error.what();
    }
    for (std::size_t start = 0, end = 0; start < text.size(); start = end + 1) {
        end = std::min(text.find('\n', start), text.size());
        history_lines_.push_back(text.substr(start, end - start));
    }
}

void Inspector::move(const Place& by) {
    place_.move(by);
    has_changed_ = true;
}

void Inspector::zoom(double factor, const Place& pointer) {
    place_.zoom(factor, pointer);
    has_changed_ = true;
}

Answer Inspector::press(char key, bool reversed) {
    constexpr double step = 2;
    const auto here = static_cast<std::int64_t>(wanted_), calls = static_cast<std::int64_t>(steps_->calls());
    const std::int64_t tenth = std::max<std::int64_t>(calls / 10, 1);
    has_changed_ = true; // nearly every key
    message_.clear();
    switch (key) {
    case key::left:
        go_to(here - (reversed ? 100 : 1));
        break;
    case key::right:
        go_to(here + (reversed ? 100 : 1));
        break;
    case key::page_up:
        go_to(here - tenth);
        break;
    case key::page_down:
        go_to(here + tenth);
        break;
    case key::home:
        go_to(0);
        break;
    case key::end:
        go_to(calls);
        break;
    case key::up:
    case key::down:
        go_in_history(key == key::down);
        break;
    case 't':
        go_to_slow_call(!reversed);
        break;
    case '1':
    case '2':
    case '3':
    case '4':
    case '5':
        choose(View{key - '1'});
        break;
    case 'm':
        marking_ = marking_ == Marking::none ? Marking::outline : Marking{static_cast<int>(marking_) + 1};
        break;
    case '+':
        zoom(step, place_.middle());
        break;
    case '-':
        zoom(1 / step, place_.middle());
        break;
    case 'r':
        place_.fit();
        break;
    case 'h':
        shows_help_ = !shows_help_;
        break;
    case 'c':
        take_screenshot();
        break;
    case 'f':
        return Answer::change_full_screen;
    case 'q':
        return Answer::close;
    default:
        break;
    }
    return Answer::none;
}

void Inspector::draw() {
    const auto start = std::chrono::steady_clock::now();
    steps_->go_to(wanted_);
    if (wanted_ > 0) {
        double& time = times_[wanted_ - 1];
        time = std::min(time, steps_->microseconds(wanted_ - 1).value_or(time));
    }
    update_image();
    constexpr VT_RGB32 surroundings{52, 46, 42, 255};
    frame_.reset(size_, surroundings);
    paint_image();
    paint_marks();
    paint_pixel();
    paint_times();
    paint_texts();
    paint_history();
    has_changed_ = false;
    is_drawn_ = true;
    show();
    time_ = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

void Inspector::show() {
    if (is_drawn_) {
        screen_.show(frame_.raster(), VT_Palette(), {0, 0});
    }
}

// As the window shows it. The second line draws the image of the position.
void Inspector::take_screenshot() {
    draw();
    const std::string name = files_.next(".png");
    try {
        drawing::write_file(name, drawing::png_of(frame_.raster(), VT_Palette()));
    } catch (const std::runtime_error& error) {
        print(stderr, "vorna: " + drawing::printable(error.what()) + '\n');
        return;
    }
    std::string text = drawing::printable(shell_word(name)) + '\n';
    if (wanted_ > 0 && inspected_.file != drawing::name_of_input("-")) {
        text += "  vorna replay " + drawing::printable(shell_word(inspected_.file)) +
                (inspected_.settings.replay.unchecked ? " --unchecked" : "") + " --until " + std::to_string(wanted_ - 1) +
                " --color call-" + std::to_string(wanted_ - 1) + ".png\n";
    }
    print(stdout, text);
    std::fflush(stdout);
}

std::string Inspector::title() const {
    char time[48];
    std::snprintf(time, sizeof time, ", %.1f ms", time_);
    const std::string position = wanted_ == 0 ? "before the first call" : "call " + std::to_string(wanted_ - 1);
    return file_name_of(inspected_.file) + ": " + position + " of " + std::to_string(steps_->calls()) + time;
}

} // namespace vorna::app::view
