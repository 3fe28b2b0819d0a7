// Records what an application draws.
#include "drawing/recording/recorder.h"

#include <algorithm>
#include <stdexcept>

#include "drawing/recording/argument_copies.h"
#include "drawing/recording/call_kinds.h"
#include "drawing/recording/emptied_slot.h"
#include "vorna/draw.h"

namespace vorna::drawing::recording {

namespace {

constexpr const char* zbuffer_write = "ZBuffer Write";
constexpr const char* zbuffer_test = "ZBuffer Test";

std::vector<VT_RGB32> colors_of(const VT_Palette& palette) {
    std::vector<VT_RGB32> colors;
    colors.reserve(static_cast<std::size_t>(palette.size()));
    for (std::int32_t i = 0; i < palette.size(); ++i) {
        colors.push_back(palette.color(static_cast<std::uint8_t>(i)));
    }
    return colors;
}

Palette described_palette(const VT_Palette& palette) {
    Palette described{colors_of(palette), {}};
    if (const auto& cube = palette.color_cube()) {
        described.cube = Cube{cube->base, cube->levels()};
    }
    return described;
}

bool are_alike(const VT_Palette& a, const VT_Palette& b) {
    const auto cube_of = [](const VT_Palette& palette) {
        const auto& cube = palette.color_cube();
        return cube ? std::pair(int{cube->base}, cube->levels()) : std::pair(-1, VT_Int_RGB{});
    };
    return &a == &b || (colors_of(a) == colors_of(b) && cube_of(a) == cube_of(b));
}

} // namespace

class Recorder::Slots final : public VT_Renderer_Data {
public:
    explicit Slots(Recorder& of) : recorder(of) {}
    // The recorder that has replaced the slots of the renderer.
    static Recorder& recorder_of(VT_Renderer_Data& renderer) {
        return static_cast<Slots*>(renderer.actions.draw_window.owner)->recorder;
    }

    Recorder& recorder;
};

class Recorder::Pause {
public:
    explicit Pause(Recorder& recorder) : recorder_(recorder) { recorder_.renderer_.actions = recorder_.own_actions_; }
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
    ~Pause() {
        if (recorder_.is_recording_) {
            recorder_.install_slots();
        }
    }

private:
    Recorder& recorder_;
};

// The functions of the replaced slots.
struct Recorder::Made_Slots {
    template <auto Slot, auto& Draw, std::size_t position, class... Arguments>
    static void draw(VT_Renderer_Data& slots, const VT_Rendition& rendition, Arguments... arguments) {
        Recorder& recorder = static_cast<Slots&>(slots).recorder;
        const Call_Kind& kind = call_kinds[position];
        auto copied = copy(std::type_identity<typename Slot_Arguments<Slot>::Type>(), kind, rendition, arguments...);
        if (const std::string problem = problem_of(copied); !problem.empty() && recorder.problem_.empty()) {
            recorder.problem_ = problem;
        }
        recorder.add(kind, &rendition, std::move(copied));
        const Pause pause(recorder);
        recorder.recording_.calls.back().standard = recorder.is_standard_;
        const Emptied_Slot emptied((recorder.renderer_.actions.*Slot).enabled, recorder.is_standard_);
        Draw(recorder.renderer_, rendition, arguments...);
    }

    template <auto Slot, auto& Draw, std::size_t position, class... Arguments>
    static void replace(Action_Slot<void(VT_Renderer_Data&, const VT_Rendition&, Arguments...)>& slot, Slots& owner) {
        slot = {&owner, &draw<Slot, Draw, position, Arguments...>, 0, 1};
    }

    static constexpr std::size_t position_of_slot(std::string_view name) { return position_of(*find_call_kind(name)); }

    static void install(VT_Action_Table& table, Slots& owner) {
#define VT_ACTION(slot, name, ...) replace<&VT_Action_Table::slot, VD_##name, position_of_slot(#slot)>(table.slot, owner);
#include "host/action_list.inc"
#undef VT_ACTION
    }
};

Recorder::Recorder(Session& session) : session_(session), renderer_(session.renderer()), slots_(std::make_unique<Slots>(*this)) {
    options_.set_window_size({64, 64});
    options_.set_buffer_depth(16);
    const VT_Option_Table& table = renderer_.requested_table;
    for (std::size_t i = 0; i < table.size(); ++i) {
        settings_[table[i].name()] = table[i].value()->content;
    }
    session_.set_recorder(this);
}

Recorder::~Recorder() {
    restore();
    session_.set_recorder(nullptr);
}

Recording Recorder::finish(const std::optional<VT_Int_Rectangle>& output) {
    restore();
    session_.set_recorder(nullptr);
    if (const std::string& problem = problem_.empty() ? renditions_.problem() : problem_; !problem.empty()) {
        throw std::runtime_error("a recording cannot hold " + problem + ", which was drawn");
    }
    recording_.output = output;
    // The only rendition is the recording's own.
    const auto& calls = recording_.calls;
    const auto first = std::ranges::find_if(calls, [](const Call& call) { return call.rendition != nullptr; });
    if (first != calls.end() && std::all_of(first, calls.end(), [&](const Call& call) {
            return !call.rendition || call.rendition == first->rendition;
        })) {
        recording_.rendition = *first->rendition;
        for (Call& call : recording_.calls) {
            call.rendition = nullptr;
        }
    }
    return std::move(recording_);
}

void Recorder::before_establish() {
    restore();
}

void Recorder::after_establish() {
    Configuration changed = changed_configuration();
    if (is_established_) {
        add(*find_call_kind("establish"), nullptr, Establish{std::move(changed)});
    } else {
        recording_.configuration = std::move(changed);
    }
    is_established_ = true;
    is_recording_ = true;
    renditions_.begin(session_.window());
    install_slots();
    replace_setter<VT_Bool_Setter>(
        zbuffer_write, [](VT_Renderer_Data& renderer, bool value) { Slots::recorder_of(renderer).set_zbuffer_write(value); },
        own_set_zbuffer_write_);
    replace_setter<VT_Int_Setter>(
        zbuffer_test,
        [](VT_Renderer_Data& renderer, const std::int32_t* value) {
            return Slots::recorder_of(renderer).set_zbuffer_test(value);
        },
        own_set_zbuffer_test_);
    own_presentation_ = renderer_.presentation;
    renderer_.presentation = {note_presentation, this};
}

void Recorder::install_slots() {
    own_actions_ = renderer_.actions;
    Made_Slots::install(renderer_.actions, *slots_);
}

void Recorder::restore() {
    if (!is_recording_) {
        return;
    }
    is_recording_ = false;
    renderer_.actions = own_actions_;
    VT_Bool_Setter ignored_write = nullptr;
    VT_Int_Setter ignored_test = nullptr;
    replace_setter(zbuffer_write, own_set_zbuffer_write_, ignored_write);
    replace_setter(zbuffer_test, own_set_zbuffer_test_, ignored_test);
    if (renderer_.presentation.context == this) {
        renderer_.presentation = own_presentation_;
    }
}

template <class Setter> void Recorder::replace_setter(const char* name, Setter by, Setter& own) {
    VT_Option* option = renderer_.current_table.find(name);
    own = option ? option->as_setter<Setter>() : nullptr;
    if (own) {
        option->set(VT_Pointer(by));
    }
}

void Recorder::add(const Call_Kind& kind, const VT_Rendition* rendition, Arguments&& arguments) {
    recording_.calls.push_back({&kind, std::move(arguments), rendition ? renditions_.recorded(*rendition) : nullptr});
}

// Before the first call the setting belongs to the configuration.
void Recorder::set_zbuffer_write(bool value) {
    if (recording_.calls.empty()) {
        recording_.zbuffer_write = value;
    } else {
        add(*find_call_kind("set_zbuffer_write"), nullptr, ZBuffer_Write{value});
    }
    own_set_zbuffer_write_(renderer_, value);
}

std::int32_t Recorder::set_zbuffer_test(const std::int32_t* value) {
    if (recording_.calls.empty()) {
        recording_.zbuffer_test = *value;
    } else {
        add(*find_call_kind("set_zbuffer_test"), nullptr, ZBuffer_Test{*value});
    }
    return own_set_zbuffer_test_(renderer_, value);
}

std::int32_t Recorder::note_presentation(void* recorder, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                                         const VT_Reference<Frame_Buffer>& buffer, std::int32_t x, std::int32_t y) {
    auto& self = *static_cast<Recorder*>(recorder);
    self.add(*find_call_kind("present"), nullptr, Present{{top_left.x, bottom_right.x, bottom_right.y, top_left.y}});
    return self.own_presentation_.function(self.own_presentation_.context, top_left, bottom_right, buffer, x, y);
}

// Configuration: the differences from the previous options.
Configuration Recorder::changed_configuration() {
    const VT_Renderer_Options& now = renderer_.current_options;
    Configuration changed;
    if (now.window_size() != options_.window_size()) {
        changed.window.width = now.window_size().x;
        changed.window.height = now.window_size().y;
    }
    changed.window.origin = unless(now.window_origin(), options_.window_origin());
    changed.window.local_coordinates = unless(now.local_coordinates(), options_.local_coordinates());
    changed.color_system = unless(now.color_system(), options_.color_system());
    changed.buffer_depth = unless(now.buffer_depth(), options_.buffer_depth());
    changed.alpha_blending = unless(now.alpha_blending(), options_.alpha_blending());
    if (!are_alike(now.palette(), options_.palette())) {
        changed.palette = described_palette(now.palette());
    }
    options_ = now;
    const VT_Option_Table& table = renderer_.requested_table;
    for (std::size_t i = 0; i < table.size(); ++i) {
        const VT_Option_Content& content = table[i].value()->content;
        VT_Option_Content& before = settings_[table[i].name()];
        if (content != before && !std::holds_alternative<VT_Pointer>(content)) {
            const auto add = [&](const auto& value) {
                if constexpr (std::is_constructible_v<Option_Setting, decltype(value)>) {
                    changed.options.emplace_back(table[i].name(), value);
                }
            };
            std::visit(add, content);
        }
        before = content;
    }
    return changed;
}

} // namespace vorna::drawing::recording
