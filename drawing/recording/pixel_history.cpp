// What happened at single pixels of a replay.
#include "drawing/recording/pixel_history.h"

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <utility>

#include "drawing/files/interruption.h"
#include "drawing/recording/call_kinds.h"
#include "drawing/recording/call_probe.h"
#include "drawing/recording/device_checks.h"
#include "drawing/recording/document.h"
#include "drawing/recording/row_replay.h"
#include "drawing/recording/watched_pixels.h"
#include "host/window.h"

namespace vorna::drawing::recording {

bool may_have_indices_in_colors(const Recording& recording) {
    const auto keeps_buffers = [](const Configuration& configuration) {
        const std::int32_t system = configuration.color_system.value_or(1);
        return system != 0 && system != 1;
    };
    return keeps_buffers(recording.configuration) || std::ranges::any_of(recording.calls, [&](const Call& call) {
               const auto* const establish = std::get_if<Establish>(&call.arguments);
               return establish && keeps_buffers(establish->configuration);
           });
}

namespace {

// The options that say where the window lies after the calls.
VT_Renderer_Options last_window_options(const Recording& recording, std::size_t last) {
    VT_Renderer_Options options;
    lay_over(options, default_window);
    lay_over(options, recording.configuration.window);
    for (std::size_t i = 0; i < recording.calls.size() && i <= last; ++i) {
        if (const auto* const establish = std::get_if<Establish>(&recording.calls[i].arguments)) {
            lay_over(options, establish->configuration.window);
        }
    }
    return options;
}

// Device pixels as columns and rows from the window's lower left.
VT_Int_Rectangle counted_from(const VT_Int_Rectangle& window, const VT_Int_Rectangle& pixels) {
    return {pixels.left - window.left, pixels.right - window.left, pixels.bottom - window.bottom, pixels.top - window.bottom};
}

// A replay of the calls that matter for some pixels. Each of them is probed at those pixels that it may touch.
class Watched_Replay {
public:
    // What happened at a pixel, by its position in the list of those that are watched.
    using Note = std::function<void(std::size_t call, std::uint32_t position, const Probed_Pixel& pixel)>;

    Watched_Replay(const Recording& recording, const Module_Choice& module, const History_Settings& settings,
                   const Call_Areas& areas, const Watched_Pixels& watched, Note note)
        : recording_(recording), settings_(without_report(settings.replay)), areas_(areas), watched_(watched),
          note_(std::move(note)), makes_all_(may_have_indices_in_colors(recording)),
          drawn_(recording, module, settings_, watched.box().bottom, watched.box().top),
          probe_(recording, module, settings_, watched.box().bottom, watched.box().top) {}

    void begin() {
        drawn_.begin();
        probe_.begin();
    }

    void run() {
        for (std::size_t call = 0; call < recording_.calls.size() && call <= settings_.last; ++call) {
            if (call % 256 == 0) {
                Interruption::check();
            }
            const Call_Kind& kind = *recording_.calls[call].kind;
            if (sets_up(kind)) {
                set_up(call);
            } else if (call >= settings_.first) {
                draw(call, kind);
            }
        }
    }

    Pixel_Value value(std::uint32_t position) const { return drawn_.value(watched_.places()[position]); }

private:
    static Replay_Settings without_report(Replay_Settings settings) {
        settings.reports_standard = false;
        return settings;
    }

    void set_up(std::size_t call) {
        const bool makes_buffers = std::holds_alternative<Establish>(recording_.calls[call].arguments);
        std::vector<Probed_Pixel> pixels;
        for (std::uint32_t i = 0; makes_buffers && i < watched_.places().size(); ++i) {
            pixels.push_back({.place = watched_.places()[i], .before = value(i), .outcome = Outcome::renewed});
        }
        drawn_.make(call);
        probe_.set_up(call);
        for (std::uint32_t i = 0; i < pixels.size(); ++i) {
            Probed_Pixel& pixel = pixels[i];
            pixel.after = value(i);
            pixel.writes_color = pixel.before.kind != pixel.after.kind || pixel.before.color != pixel.after.color;
            if (pixel.before != pixel.after) {
                note_(call, i, pixel);
            }
        }
    }

    void draw(std::size_t call, const Call_Kind& kind) {
        if (std::holds_alternative<Present>(recording_.calls[call].arguments)) {
            return;
        }
        const VT_Int_Rectangle window = drawn_.session().window();
        VT_Int_Rectangle area = counted_from(window, areas_.area(call, window));
        if (drawn_.has_indices_in_colors()) {
            area.left /= static_cast<std::int32_t>(sizeof(VT_RGB32));
        }
        watched_.find(area, touched_);
        const bool is_checked = !settings_.unchecked && (has_trusted_points(kind.name) || !kind.name.starts_with("draw_"));
        if (touched_.empty()) {
            // A call that a replay refuses is refused here too.
            if (makes_all_ || (is_checked && !areas_.is_inside(call, window))) {
                drawn_.make(call);
            }
            return;
        }
        const bool is_trusted = !is_checked || areas_.is_inside(call, window);
        if (is_trusted && !makes_all_ && !drawn_.has_indices_in_colors()) {
            note_pixels_beside(call, window);
            if (touched_.empty()) {
                return;
            }
        }
        pixels_.clear();
        for (const std::uint32_t i : touched_) {
            pixels_.push_back({.place = watched_.places()[i], .before = value(i)});
        }
        drawn_.make(call);
        for (std::size_t i = 0; i < touched_.size(); ++i) {
            pixels_[i].after = value(touched_[i]);
        }
        if (drawn_.has_indices_in_colors()) {
            explain_by_values();
        } else {
            probe_.examine(call, pixels_);
        }
        for (std::size_t i = 0; i < touched_.size(); ++i) {
            note_(call, touched_[i], pixels_[i]);
        }
    }

    // Notes the pixels that lie beside all pieces of the call, and leaves them out. Many pixels with many pieces are drawn
    // sooner.
    void note_pixels_beside(std::size_t call, const VT_Int_Rectangle& window) {
        constexpr std::size_t most_comparisons = 4096;
        if (areas_.pieces(call) * touched_.size() > most_comparisons) {
            return;
        }
        std::erase_if(touched_, [&](std::uint32_t i) {
            const VT_Int_Pair place = watched_.places()[i];
            if (areas_.may_change(call, {window.left + place.x, window.bottom + place.y})) {
                return false;
            }
            const Pixel_Value now = value(i);
            note_(call, i, {.place = place, .before = now, .after = now});
            return true;
        });
    }

    // The probe knows single pixels, but indices in a buffer of colours depend on the depths of other columns.
    void explain_by_values() {
        for (Probed_Pixel& pixel : pixels_) {
            pixel.writes_color = pixel.before.color != pixel.after.color;
            pixel.outcome = pixel.before == pixel.after ? Outcome::outside
                            : pixel.writes_color        ? Outcome::blended
                                                        : Outcome::drawn;
        }
    }

    const Recording& recording_;
    Replay_Settings settings_;
    const Call_Areas& areas_;
    const Watched_Pixels& watched_;
    const Note note_;
    const bool makes_all_; // calls that touch no watched pixel matter too
    Row_Replay drawn_;
    Call_Probe probe_;
    std::vector<std::uint32_t> touched_;
    std::vector<Probed_Pixel> pixels_;
};

// Of each event that writes a colour the next one that stores a colour whatever was there.
void find_drawn_over(std::vector<Pixel_Event>& events) {
    std::size_t later = no_call;
    for (auto event = events.rbegin(); event != events.rend(); ++event) {
        const bool is_stored = event->outcome != Outcome::blended && event->writes_color;
        event->drawn_over = event->writes_color ? later : no_call;
        later = is_stored ? event->call : later;
    }
}

} // namespace

Replay_Histories::Replay_Histories(const Recording& recording, Module_Choice module, History_Settings settings)
    : recording_(recording), module_(std::move(module)), settings_(std::move(settings)), areas_(recording),
      window_(window_rectangle(last_window_options(recording, settings_.replay.last))),
      image_(recording.output.value_or(window_)) {
    if (is_empty(image_) || common_part(image_, window_) != image_) {
        throw Recording_Error("output: expected a rectangle inside the window");
    }
}

VT_Int_Pair Replay_Histories::image_size() const noexcept {
    return {image_.right - image_.left + 1, image_.top - image_.bottom + 1};
}

bool Replay_Histories::has(VT_Int_Pair pixel) const noexcept {
    const VT_Int_Pair size = image_size();
    return pixel.x >= 0 && pixel.y >= 0 && pixel.x < size.x && pixel.y < size.y;
}

bool Replay_Histories::has(const Image_Area& area) const noexcept {
    const auto& [corner, size] = area;
    const VT_Int_Pair image = image_size();
    return has(corner) && size.x >= 1 && size.y >= 1 && size.x <= image.x - corner.x && size.y <= image.y - corner.y &&
           std::int64_t{size.x} * size.y <= most_area_pixels;
}

// In the buffer, from its lower left.
VT_Int_Pair Replay_Histories::position_of(VT_Int_Pair pixel) const {
    if (!has(pixel)) {
        throw std::invalid_argument("the image does not have the pixel");
    }
    return {image_.left + pixel.x - window_.left, image_.top - pixel.y - window_.bottom};
}

Load_Limits::Loan Replay_Histories::memory_for(std::size_t pixels) const {
    constexpr std::size_t bytes_of_pixel = sizeof(VT_Int_Pair) + sizeof(std::uint32_t) + sizeof(Probed_Pixel);
    return settings_.limits ? Load_Limits::Loan(*settings_.limits, settings_.name, pixels * bytes_of_pixel) : Load_Limits::Loan();
}

std::vector<Pixel_History> Replay_Histories::of_pixels(std::span<const VT_Int_Pair> pixels) const {
    const Load_Limits::Loan loan = memory_for(pixels.size());
    std::vector<VT_Int_Pair> places;
    places.reserve(pixels.size());
    for (const VT_Int_Pair pixel : pixels) {
        places.push_back(position_of(pixel));
    }
    const Watched_Pixels watched(std::move(places));
    std::vector<Pixel_History> histories(watched.places().size());
    const auto note = [&](std::size_t call, std::uint32_t i, const Probed_Pixel& pixel) {
        const bool is_outside = pixel.outcome == Outcome::outside;
        histories[i].outside += is_outside;
        if (is_outside && !settings_.has_outside) {
            return;
        }
        if (settings_.limits) {
            settings_.limits->take_memory(settings_.name, sizeof(Pixel_Event));
        }
        histories[i].events.push_back(
            {call, pixel.outcome, pixel.writes_color, pixel.rules, pixel.shape_depth, pixel.before, pixel.after});
    };
    Watched_Replay replay(recording_, module_, settings_, areas_, watched, note);
    replay.begin();
    for (std::uint32_t i = 0; i < histories.size(); ++i) {
        const VT_Int_Pair place = watched.places()[i];
        histories[i].device = {window_.left + place.x, window_.bottom + place.y};
        histories[i].pixel = {histories[i].device.x - image_.left, image_.top - histories[i].device.y};
        histories[i].first = replay.value(i);
    }
    replay.run();
    for (std::uint32_t i = 0; i < histories.size(); ++i) {
        histories[i].last = replay.value(i);
        find_drawn_over(histories[i].events);
    }
    std::vector<Pixel_History> in_given_order;
    std::vector<bool> is_taken(histories.size());
    for (const VT_Int_Pair pixel : pixels) {
        const std::size_t i = watched.find(position_of(pixel));
        if (!is_taken[i]) {
            is_taken[i] = true;
            in_given_order.push_back(std::move(histories[i]));
        }
    }
    return in_given_order;
}

std::vector<Area_Event> Replay_Histories::of_area(const Image_Area& area) const {
    if (!has(area)) {
        throw std::invalid_argument("the image does not have the area");
    }
    const auto& [corner, size] = area;
    const auto count = static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y);
    const Load_Limits::Loan loan = memory_for(count);
    std::vector<VT_Int_Pair> places;
    places.reserve(count);
    for (std::int32_t y = 0; y < size.y; ++y) {
        for (std::int32_t x = 0; x < size.x; ++x) {
            places.push_back(position_of({corner.x + x, corner.y + y}));
        }
    }
    const Watched_Pixels watched(std::move(places));
    std::vector<Area_Event> events;
    const auto has_nothing_inside = [](const Area_Event& event) { return event.drawn + event.blended + event.refused == 0; };
    const auto note = [&](std::size_t call, std::uint32_t, const Probed_Pixel& pixel) {
        if (events.empty() || events.back().call != call) {
            if (!events.empty() && !settings_.has_outside && has_nothing_inside(events.back())) {
                events.pop_back();
            }
            events.push_back({.call = call});
        }
        Area_Event& event = events.back();
        event.drawn += pixel.outcome == Outcome::drawn || pixel.outcome == Outcome::renewed;
        event.blended += pixel.outcome == Outcome::blended;
        event.refused += pixel.outcome == Outcome::refused;
        event.outside += pixel.outcome == Outcome::outside;
        for (int r = 0; r < rule_count; ++r) {
            event.refused_by[r] += pixel.rules.has(Rule{static_cast<std::uint8_t>(r)});
        }
    };
    Watched_Replay replay(recording_, module_, settings_, areas_, watched, note);
    replay.begin();
    replay.run();
    if (!settings_.has_outside) {
        std::erase_if(events, has_nothing_inside);
    }
    return events;
}

} // namespace vorna::drawing::recording
