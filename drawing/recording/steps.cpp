// A recording that is drawn call by call, forwards and backwards.
#include "drawing/recording/steps.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

#include "drawing/files/interruption.h"
#include "drawing/recording/call_areas.h"
#include "drawing/recording/call_kinds.h"
#include "drawing/recording/kept_states.h"
#include "drawing/recording/pixel_history.h"
#include "drawing/recording/step_marks.h"

namespace vorna::drawing::recording {

namespace {

using Clock = std::chrono::steady_clock;

double microseconds_since(Clock::time_point start) {
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

Replay_Settings without_callbacks(Replay_Settings settings) {
    settings.reports_standard = false;
    settings.before_call = settings.after_call = nullptr;
    return settings;
}

template <class Value> Plane plane_of(std::vector<Value>& values, std::int32_t width) {
    return {reinterpret_cast<std::uint8_t*>(values.data()), width * std::ptrdiff_t{sizeof(Value)}, sizeof(Value)};
}

// A renderer and the replay that it draws.
struct Player {
    Player(const Recording& recording, const Module_Choice& module, const Replay_Settings& settings)
        : session(module), replayer(recording, session, settings) {}

    Session session;
    Replayer replayer;
};

} // namespace

class Recording_Steps::Implementation {
public:
    Implementation(const Recording& recording, Module_Choice module, const Steps_Settings& settings)
        : recording_(recording), module_(std::move(module)), settings_(without_callbacks(settings.replay)), name_(settings.name),
          limits_(settings.limits), has_heat_(settings.has_heat), has_bytes_in_colors_(may_have_indices_in_colors(recording)),
          areas_(recording), kept_(settings.memory, settings.interval), times_(recording.calls.size(), unknown),
          first_times_(has_heat_ ? times_ : Times()) {
        set_up({});
    }

    void go_to(std::size_t position) {
        position = std::min(position, calls());
        if (position == position_) {
            return;
        }
        change_ = {};
        // The last call is made at any rate, to see what it changes.
        const std::size_t last = position - std::min<std::size_t>(position, 1);
        const Kept_State* const state = kept_.find_last(last);
        if (last < position_ || (state && state->position > position_)) {
            restore(state);
        }
        while (position_ < position) {
            if (position_ % 256 == 0) {
                Interruption::check();
            }
            make(position_ == last);
        }
    }

    std::size_t calls() const noexcept { return recording_.calls.size(); }
    std::size_t position() const noexcept { return position_; }
    const Session& session() const noexcept { return player_->session; }
    const Frame_Buffer* depth_buffer() const {
        Session& session = player_->session;
        return session.has_depth_buffer() ? &session.canvas().depth_buffer() : nullptr;
    }
    const Step_Change& change() const noexcept { return change_; }
    std::vector<std::uint8_t> clip() const;
    const Step_Heat* heat() const noexcept { return has_heat_ ? &heat_ : nullptr; }
    std::optional<double> microseconds(std::size_t call) const noexcept {
        return times_[call] == unknown ? std::nullopt : std::optional(times_[call]);
    }
    std::uint64_t memory_used() const noexcept { return kept_.bytes(); }

private:
    using Times = std::vector<double>;
    static constexpr double unknown = std::numeric_limits<double>::max();

    const Call& next_call() const { return recording_.calls[position_]; }
    VT_Int_Rectangle window() const { return player_->session.window(); }
    Plane_Part whole() const { return part_of(window(), window()); }

    // A new renderer, on which those calls before the state have been made that set it up.
    void set_up(const Kept_State& state) {
        player_.reset();
        player_ = std::make_unique<Player>(recording_, module_, settings_);
        player_->replayer.begin();
        for (std::size_t call = 0; call < state.position; ++call) {
            if (sets_up(*recording_.calls[call].kind)) {
                player_->replayer.make(call);
            }
        }
        epoch_ = state.epoch;
        adopt_buffers();
    }

    void adopt_buffers() {
        player_->session.forbid_depth_blocks(); // states that are put back set depths
        std::vector<Plane> planes = buffers();
        const Plane_Part part = whole();
        borrow_memory(part.pixels());
        if (has_heat_) {
            if (heat_size_ != VT_Int_Pair{part.width, part.height}) {
                heat_size_ = {part.width, part.height};
                heat_.draws.assign(part.pixels(), 0);
                heat_.costs.assign(part.pixels(), 0);
            }
            planes.push_back(plane_of(heat_.draws, part.width));
            planes.push_back(plane_of(heat_.costs, part.width));
        }
        kept_.copies().set_planes(std::move(planes), {part.width, part.height});
    }

    // For copies of both buffers, one before a call and one after it, for marks and for heat.
    void borrow_memory(std::size_t pixels) {
        constexpr std::size_t copies = 4 + 2, marks = 1, heat = sizeof(std::uint16_t) + sizeof(float);
        if (limits_) {
            loan_ = Load_Limits::Loan();
            loan_ = Load_Limits::Loan(*limits_, name_, pixels * (copies + marks + (has_heat_ ? copies + heat : 0)));
        }
    }

    // The colours and, where there are any, the depths.
    std::vector<Plane> buffers() const {
        std::vector<Plane> planes{recording::plane_of(player_->session.color_buffer())};
        if (const Frame_Buffer* const depths = depth_buffer()) {
            planes.push_back(recording::plane_of(*depths));
        }
        return planes;
    }

    // Null: the state before the first call.
    void restore(const Kept_State* state) {
        const Kept_State first{.depth_write = recording_.zbuffer_write, .depth_test = recording_.zbuffer_test};
        const Kept_State& wanted = state ? *state : first;
        if (wanted.epoch != epoch_) {
            set_up(wanted);
        }
        kept_.put_back(state);
        depth_write_ = wanted.depth_write;
        depth_test_ = wanted.depth_test;
        player_->session.canvas().set_depth_write(depth_write_);
        player_->session.canvas().set_depth_test(Depth_Test{depth_test_});
        position_ = wanted.position;
    }

    void make(bool is_last) {
        const auto start = Clock::now();
        const Arguments& arguments = next_call().arguments;
        if (std::holds_alternative<Establish>(arguments)) {
            make_buffers(is_last);
        } else {
            draw(is_last);
        }
        if (const auto* const write = std::get_if<ZBuffer_Write>(&arguments)) {
            depth_write_ = write->value;
        } else if (const auto* const test = std::get_if<ZBuffer_Test>(&arguments)) {
            depth_test_ = test->value;
        }
        ++position_;
        kept_.add_time(microseconds_since(start)); // including the search for changes
        kept_.consider({.position = position_, .epoch = epoch_, .depth_write = depth_write_, .depth_test = depth_test_});
    }

    void make_call() {
        const auto start = Clock::now();
        player_->replayer.make(position_);
        const double time = microseconds_since(start);
        times_[position_] = std::min(times_[position_], time);
        if (has_heat_ && first_times_[position_] == unknown) {
            first_times_[position_] = time;
        }
        player_->replayer.drop_report();
    }

    void make_buffers(bool is_last) {
        const std::vector<Plane> before = buffers();
        const Plane_Part part = whole();
        if (is_last) {
            take_copies(before, part);
        }
        make_call();
        ++epoch_;
        adopt_buffers();
        if (is_last) {
            Marks marks(whole());
            if (marks.part == part && std::ranges::equal(before, buffers(), {}, &Plane::pixel_bytes, &Plane::pixel_bytes)) {
                add_changes(marks);
            } else {
                std::ranges::fill(marks.bits, Step_Change::color | (depth_buffer() ? Step_Change::depth : 0));
            }
            change_ = change_of(marks, window());
        }
    }

    void draw(bool is_last) {
        const VT_Int_Rectangle area = area_of(position_);
        const bool is_watched = !is_empty(area) && (is_last || has_heat_);
        const Plane_Part part = part_of(window(), area);
        if (is_watched) {
            take_copies(buffers(), part);
        }
        make_call();
        if (!is_empty(area)) {
            kept_.copies().mark(part);
        }
        if (is_watched) {
            Marks marks(part);
            add_changes(marks);
            if (is_last) {
                change_ = change_of(marks, window());
            }
            if (has_heat_) {
                add_drawn(marks);
                add(heat_, marks, heat_size_.x, first_times_[position_]);
            }
        }
    }

    // Column c of indices may be a byte of the colour c / 4.
    VT_Int_Rectangle area_of(std::size_t call) const {
        const VT_Int_Rectangle area = areas_.area(call, window());
        return has_bytes_in_colors_ && !is_empty(area) ? window() : area;
    }

    void take_copies(const std::vector<Plane>& planes, const Plane_Part& part) {
        colors_before_.take(planes[0], part);
        if (planes.size() > 1) {
            depths_before_.take(planes[1], part);
        }
    }

    void add_changes(Marks& marks) const {
        marks.add(colors_before_, Step_Change::color);
        if (depth_buffer()) {
            marks.add(depths_before_, Step_Change::depth);
        }
    }

    // Draws the call again, over the opposite colours: what changes then is drawn, and what changed before.
    void add_drawn(Marks& marks) {
        if (!is_slot(*next_call().kind) || !next_call().kind->name.starts_with("draw_")) {
            return;
        }
        const std::vector<Plane> planes = buffers();
        Area_Copy after[2];
        for (std::size_t i = 0; i < planes.size(); ++i) {
            after[i].take(planes[i], marks.part);
        }
        colors_before_.invert(has_bytes_in_colors_);
        colors_before_.put_back();
        if (depth_buffer()) {
            depths_before_.put_back();
        }
        player_->replayer.make(position_);
        marks.add(colors_before_, Marks::drawn);
        for (std::size_t i = 0; i < planes.size(); ++i) {
            after[i].put_back();
        }
    }

    const Recording& recording_;
    const Module_Choice module_;
    const Replay_Settings settings_;
    const std::string name_;
    Load_Limits* const limits_; // null = any memory
    Load_Limits::Loan loan_;
    const bool has_heat_, has_bytes_in_colors_;
    const Call_Areas areas_;
    std::unique_ptr<Player> player_;
    std::size_t position_ = 0, epoch_ = 0; // epoch: the number of calls that have made the buffers anew
    bool depth_write_ = true;
    std::int32_t depth_test_ = 2;
    Kept_States kept_;
    Area_Copy colors_before_, depths_before_;
    Step_Change change_;
    Step_Heat heat_;
    VT_Int_Pair heat_size_;
    Times times_, first_times_; // the first ones keep costs the same, however often calls are made
};

std::vector<std::uint8_t> Recording_Steps::Implementation::clip() const {
    const VT_Int_Rectangle shown = window();
    const Plane_Part part = whole();
    std::vector<std::uint8_t> clip(part.pixels(), 1);
    if (position_ == 0 || !is_slot(*recording_.calls[position_ - 1].kind)) {
        return clip;
    }
    const VT_Reference<VT_Rendition> rendition = player_->replayer.rendition_of(position_ - 1);
    const VT_Option* const uses_mask = player_->session.renderer().current_table.find("Use Mask");
    const bool has_mask = uses_mask && uses_mask->value()->content == VT_Option_Content(true);
    VT_Reference<const VT_Contour_Set> contours = has_mask ? rendition->clip.complex_clip : nullptr;
    if (contours && (rendition->clip.window_offset.x < 0 || rendition->clip.window_offset.y < 0)) {
        contours = rendition->shifted_complex_clip();
    }
    Frame_Buffer_Mask mask;
    if (contours) {
        mask.establish_configuration(part.width, part.height, shown.left, shown.bottom);
        mask.clear_and_rasterize_mask(*contours);
    }
    auto pixel = clip.begin();
    for (std::int32_t y = shown.top; y >= shown.bottom; --y) {
        const std::uint8_t* const excluded = contours ? mask.row(y - shown.bottom) : nullptr;
        for (std::int32_t x = shown.left; x <= shown.right; ++x, ++pixel) {
            const std::int32_t column = x - shown.left;
            const bool is_excluded = excluded && (excluded[column / 8] & (0x80 >> column % 8)) != 0;
            *pixel = contains(rendition->clip.hard_clip, x, y) && !is_excluded;
        }
    }
    return clip;
}

Recording_Steps::Recording_Steps(const Recording& recording, const Module_Choice& module, const Steps_Settings& settings)
    : steps_(std::make_unique<Implementation>(recording, module, settings)) {
}

Recording_Steps::~Recording_Steps() = default;

std::size_t Recording_Steps::calls() const noexcept {
    return steps_->calls();
}

std::size_t Recording_Steps::position() const noexcept {
    return steps_->position();
}

void Recording_Steps::go_to(std::size_t position) {
    steps_->go_to(position);
}

Raster Recording_Steps::colors() const {
    return raster_of(steps_->session().color_buffer());
}

Raster Recording_Steps::depths() const {
    const Frame_Buffer* const buffer = steps_->depth_buffer();
    return buffer ? raster_of(*buffer) : Raster{.format = Buffer_Format::depth16};
}

const VT_Palette& Recording_Steps::palette() const {
    return steps_->session().palette();
}

VT_Int_Rectangle Recording_Steps::window() const {
    return steps_->session().window();
}

const Step_Change& Recording_Steps::change() const noexcept {
    return steps_->change();
}

std::vector<std::uint8_t> Recording_Steps::clip() const {
    return steps_->clip();
}

const Step_Heat* Recording_Steps::heat() const noexcept {
    return steps_->heat();
}

std::optional<double> Recording_Steps::microseconds(std::size_t call) const noexcept {
    return steps_->microseconds(call);
}

std::uint64_t Recording_Steps::memory_used() const noexcept {
    return steps_->memory_used();
}

} // namespace vorna::drawing::recording
