// Recordings drawn through a renderer.
#include "drawing/recording/replay.h"

#include <iterator>
#include <map>
#include <stdexcept>
#include <string_view>
#include <type_traits>

#include "drawing/recording/call_kinds.h"
#include "drawing/recording/device_checks.h"
#include "drawing/recording/document.h"
#include "drawing/recording/emptied_slot.h"
#include "drawing/recording/recorder.h"
#include "drawing/recording/rendition_maker.h"
#include "host/window.h"
#include "vorna/draw.h"

namespace vorna::drawing::recording {

namespace {

VT_Reference<const VT_Palette> make_palette(const Palette& palette) {
    const VT_Reference<const VT_Palette> standard(new VT_Palette);
    std::vector<VT_RGB32> colors = palette.colors.value_or(std::vector<VT_RGB32>());
    for (std::int32_t i = 0; !palette.colors && i < standard->size(); ++i) {
        colors.push_back(standard->color(static_cast<std::uint8_t>(i)));
    }
    std::optional<VT_Color_Cube> cube;
    if (palette.cube && *palette.cube) {
        cube = VT_Color_Cube((*palette.cube)->levels, 1.0F, (*palette.cube)->base);
    } else if (!palette.cube && !palette.colors) {
        cube = standard->color_cube();
    }
    return new VT_Palette(std::move(colors), cube);
}

class Replay {
public:
    Replay(const Recording& recording, Session& session, const Replay_Settings& settings)
        : recording_(recording), session_(session), renderer_(session.renderer()), settings_(settings),
          checks_(session, settings.unchecked), observer_before_(renderer_.standard_observer),
          presentation_before_(renderer_.presentation) {
        if (settings.reports_standard) {
            renderer_.standard_observer = {note_standard, this};
        }
        renderer_.presentation = {note_presentation, this};
    }

    Replay(const Replay&) = delete;
    Replay& operator=(const Replay&) = delete;
    ~Replay() {
        renderer_.standard_observer = observer_before_;
        renderer_.presentation = presentation_before_;
    }

    void begin();
    void make(std::size_t call);
    void draw_as(std::size_t call, const Arguments& arguments, const VT_Reference<VT_Rendition>& rendition);
    const VT_Reference<VT_Rendition>& rendition_of(std::size_t call);
    void drop_report() noexcept { report_ = {}; }
    Report end();

    // One overload for each kind of arguments; Draw is the drawing function of the slot.

    template <auto Draw, class Point> void draw(const VT_Rendition& rendition, const Points<Point>& arguments) {
        const auto& [points] = arguments;
        checks_.points(points);
        Draw(renderer_, rendition, count_of(points), points.data());
    }
    template <auto Draw, class Point> void draw(const VT_Rendition& rendition, const Colorized<Point>& arguments) {
        const auto& [points, colors, single] = arguments;
        checks_.points(points);
        Draw(renderer_, rendition, count_of(points), points.data(), address_of(colors), single);
    }
    template <auto Draw, class Point> void draw(const VT_Rendition& rendition, const Gouraud<Point>& arguments) {
        const auto& [points, colors] = arguments;
        checks_.points(points);
        Draw(renderer_, rendition, count_of(points), points.data(), colors.data());
    }
    template <auto Draw, class Point> void draw(const VT_Rendition& rendition, const Textured<Point>& arguments) {
        const auto& [points, colors, parameters] = arguments;
        checks_.points(points);
        Draw(renderer_, rendition, count_of(points), points.data(), colors.data(), parameters.data(),
             std::int32_t{parameter_width}, nullptr, nullptr);
    }
    template <auto Draw, class Point> void draw(const VT_Rendition& rendition, const Polygon<Point>& arguments) {
        const auto& [points, color] = arguments;
        checks_.points(points);
        Draw(renderer_, rendition, count_of(points), points.data(), address_of(color));
    }
    template <auto Draw> void draw(const VT_Rendition& rendition, const Dot& arguments) {
        const auto& [point, color] = arguments;
        checks_.point(point, [] { return "point"; });
        Draw(renderer_, rendition, &point, address_of(color));
    }
    template <auto Draw> void draw(const VT_Rendition& rendition, const Ellipse& arguments) {
        const auto& [center, radii, start, end, rotation, color] = arguments;
        checks_.point(center, [] { return "center"; });
        checks_.ellipse(rendition, arguments);
        Draw(renderer_, rendition, &center, &radii, start, end, rotation, address_of(color));
    }
    template <auto Draw> void draw(const VT_Rendition& rendition, const Index8_Image& arguments) {
        const auto& [start, end, pixels] = arguments;
        checks_.corners(start, end, every_side_but_the_right, "start and end");
        Draw(renderer_, rendition, &start, &end, pixels.row_pixels, pixels.pixels.data());
    }
    template <auto Draw> void draw(const VT_Rendition& rendition, const RGB32_Image& arguments) {
        const auto& [start, end, pixels] = arguments;
        checks_.corners(start, end, every_side_but_the_right, "start and end");
        Draw(renderer_, rendition, &start, &end, pixels.row_pixels * 4, pixels.pixels.data(), 0, nullptr);
    }
    template <auto Draw> void draw(const VT_Rendition& rendition, const Placed_Image& arguments) {
        const auto& [start, image] = arguments;
        VT_Reference<VT_Shared_Image> drawn;
        if (image) {
            std::vector<std::uint8_t> bytes = image->bytes;
            drawn = new VT_Shared_Image(image->width, image->height, image->format,
                                        static_cast<std::int32_t>(bytes.size()) / image->height, bytes.data(), true, true);
        }
        Draw(renderer_, rendition, &start, drawn.get());
    }
    template <auto Draw> void draw(const VT_Rendition& rendition, const Window_Fill& arguments) {
        const auto& [rectangle, fill, color, index] = arguments;
        VT_Reference<VT_Rendition> own(new VT_Rendition(rendition));
        own->window.rectangle = rectangle;
        own->window.fill = fill.value_or(vorna::face_pattern::solid);
        own->window.color = color.value_or(VT_RGB32{});
        own->window.index = index_of(index, own->window.color, session_.palette());
        Draw(renderer_, *own);
    }
    template <auto Draw> void draw(const VT_Rendition& rendition, const Depth_Clear& a) {
        const VT_Int_Rectangle& area = a.rectangle;
        checks_.ordered(area.left <= area.right && area.bottom <= area.top, "rectangle");
        checks_.corners({area.left, area.top, 0}, {area.right, area.bottom, 0}, every_side, "rectangle");
        VT_Reference<VT_Rendition> own(new VT_Rendition(rendition));
        own->window.rectangle = area;
        Draw(renderer_, *own);
    }
    template <auto Draw> void draw(const VT_Rendition& rendition, const Depth_Write& arguments) {
        const auto& [top_left, bottom_right, depths] = arguments;
        checks_.corners(top_left, bottom_right, every_side_but_the_right, "top_left and bottom_right");
        Draw(renderer_, rendition, &top_left, &bottom_right, depths ? depths->row_pixels * 2 : 0,
             depths ? depths->pixels.data() : nullptr);
    }
    template <auto Draw> void draw(const VT_Rendition& rendition, const Image_Read& arguments) {
        const auto& [top_left, bottom_right, format] = arguments;
        checks_.ordered(top_left.x <= bottom_right.x && bottom_right.y <= top_left.y, "top_left and bottom_right");
        checks_.corners(top_left, bottom_right, every_side, "top_left and bottom_right");
        Report::Read& read = report_.reads.emplace_back(Report::Read{call_, nullptr});
        Draw(renderer_, rendition, &top_left, &bottom_right, &format, read.image);
    }

    void run(const ZBuffer_Write& a) { session_.canvas().set_depth_write(a.value); }
    void run(const ZBuffer_Test& a) { session_.canvas().set_depth_test(vorna::Depth_Test{a.value}); }
    void run(const Establish& a) {
        configure(a.configuration, path_of_call(call_) + '.');
        session_.establish();
        made_.clear();
    }
    void run(const Present& a) {
        session_.canvas().flush();
        renderer_.update_all(a.rectangle);
    }

    VT_Renderer_Data& renderer() noexcept { return renderer_; }
    Recorder* recorder() const noexcept { return session_.recorder(); }
    // The call that is being drawn, and its rendition: not counted, because counting is a locked instruction, which waits until
    // the processor has stored the pixels of the call before.
    const Call& call() const noexcept { return recording_.calls[call_]; }
    const VT_Rendition& rendition() { return other_rendition_ ? *other_rendition_ : *rendition_of(call_); }

private:
    template <class Element> static std::int32_t count_of(const std::vector<Element>& list) {
        return static_cast<std::int32_t>(list.size());
    }
    static const VT_RGB32* address_of(const std::optional<VT_RGB32>& color) { return color ? &*color : nullptr; }
    static const VT_RGB32* address_of(const std::optional<std::vector<VT_RGB32>>& colors) {
        return colors ? colors->data() : nullptr;
    }

    void configure(const Configuration& configuration, const std::string& path);
    void set_window(const Window& window, const std::string& path);
    void set_option(const std::string& name, const Option_Setting& setting, const std::string& path);

    static void note_standard(void* replay, const char* name);
    static std::int32_t note_presentation(void* replay, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                                          const VT_Reference<Frame_Buffer>& buffer, std::int32_t x, std::int32_t y);

    const Recording& recording_;
    Session& session_;
    VT_Renderer_Data& renderer_;
    const Replay_Settings& settings_;
    Device_Checks checks_;
    VT_Standard_Observer observer_before_;
    VT_Presentation presentation_before_;
    Report report_;
    Rendition_Maker renditions_;
    std::map<const Rendition*, VT_Reference<VT_Rendition>> made_; // for the options in force; null = the recording's own
    VT_Reference<VT_Rendition> other_rendition_;                  // null = the call's own
    std::size_t call_ = 0;
};

template <auto& Draw, auto Slot> void draw_call(Replay& replay, const Arguments& arguments) {
    const auto& typed = std::get<typename Slot_Arguments<Slot>::Type>(arguments);
    const bool standard = replay.call().standard;
    if (Recorder* const recorder = replay.recorder()) {
        recorder->set_standard(standard);
        replay.draw<Draw>(replay.rendition(), typed);
        recorder->set_standard(false);
        return;
    }
    const Emptied_Slot emptied((replay.renderer().actions.*Slot).enabled, standard);
    replay.draw<Draw>(replay.rendition(), typed);
}

template <class Type> void run_call(Replay& replay, const Arguments& arguments) {
    replay.run(std::get<Type>(arguments));
}

// In the order of call_kinds.
constexpr void (*runners[])(Replay&, const Arguments&) = {
#define VT_ACTION(slot, name, ...) draw_call<VD_##name, &VT_Action_Table::slot>,
#include "host/action_list.inc"
#undef VT_ACTION
    run_call<ZBuffer_Write>,
    run_call<ZBuffer_Test>,
    run_call<Establish>,
    run_call<Present>,
};
static_assert(std::size(runners) == std::size(call_kinds));

void Replay::begin() {
    for (std::size_t i = 0; i < recording_.calls.size(); ++i) {
        const Call_Kind& kind = *recording_.calls[i].kind;
        if (!kind.is_drawn) {
            throw Not_Drawn(path_of_call(i) + ": " + std::string(kind.name) + " is not yet drawn");
        }
    }
    set_window(default_window, "");
    session_.options().set_color_system(1);
    session_.options().set_buffer_depth(16);
    session_.options().set_alpha_blending(false);
    configure(recording_.configuration, "");
    session_.establish();
    session_.canvas().set_depth_write(recording_.zbuffer_write);
    session_.canvas().set_depth_test(vorna::Depth_Test{recording_.zbuffer_test});
    renderer_.begin_picture_all();
}

void Replay::make(std::size_t call) {
    call_ = call;
    const Call& made = recording_.calls[call];
    checks_.begin(call, made);
    runners[position_of(*made.kind)](*this, made.arguments);
}

void Replay::draw_as(std::size_t call, const Arguments& arguments, const VT_Reference<VT_Rendition>& rendition) {
    call_ = call;
    const Call& made = recording_.calls[call];
    checks_.begin(call, made);
    other_rendition_ = rendition;
    runners[position_of(*made.kind)](*this, arguments);
    other_rendition_ = nullptr;
}

const VT_Reference<VT_Rendition>& Replay::rendition_of(std::size_t call) {
    const Rendition* own = recording_.calls[call].rendition.get();
    VT_Reference<VT_Rendition>& made = made_[own];
    if (!made) {
        made = renditions_.make(own ? overlaid(recording_.rendition, *own) : recording_.rendition, renderer_.current_options);
    }
    return made;
}

Report Replay::end() {
    session_.canvas().flush();
    renderer_.end_picture_all();
    return std::move(report_);
}

void Replay::configure(const Configuration& configuration, const std::string& path) {
    VT_Renderer_Options& options = session_.options();
    set_window(configuration.window, path);
    options.set_color_system(configuration.color_system.value_or(options.color_system()));
    options.set_buffer_depth(configuration.buffer_depth.value_or(options.buffer_depth()));
    options.set_alpha_blending(configuration.alpha_blending.value_or(options.alpha_blending()));
    if (configuration.palette) {
        options.set_palette(make_palette(*configuration.palette));
    }
    for (const auto& [name, setting] : configuration.options) {
        set_option(name, setting, path);
    }
}

void Replay::set_window(const Window& window, const std::string& path) {
    VT_Renderer_Options& options = session_.options();
    lay_over(options, window);
    const VT_Int_Pair wanted = options.window_size();
    if (wanted.x > settings_.largest_side || wanted.y > settings_.largest_side) {
        throw Recording_Error(path + "window: expected sides of at most " + std::to_string(settings_.largest_side) + " pixels");
    }
    if (const VT_Int_Pair origin = vorna::window_origin(options); !vorna::is_window_in_range(origin, wanted)) {
        throw Recording_Error(path + "window: expected a window between -2^30 and 2^30, found the origin [" +
                              std::to_string(origin.x) + ", " + std::to_string(origin.y) + "]");
    }
}

void Replay::set_option(const std::string& name, const Option_Setting& setting, const std::string& path) {
    try {
        session_.set_option(name, std::visit([](const auto& value) { return VT_Option_Content(value); }, setting));
    } catch (const std::invalid_argument& error) {
        throw Recording_Error(path + "options." + error.what());
    }
}

void Replay::note_standard(void* replay, const char* name) {
    auto& self = *static_cast<Replay*>(replay);
    self.report_.standard.push_back({self.call_, name});
}

std::int32_t Replay::note_presentation(void* replay, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                                       const VT_Reference<Frame_Buffer>&, std::int32_t x, std::int32_t y) {
    static_cast<Replay*>(replay)->report_.presented.push_back({top_left, bottom_right, x, y});
    return 0;
}

} // namespace

void lay_over(VT_Renderer_Options& options, const Window& window) {
    const VT_Int_Pair size = options.window_size();
    options.set_window_size({window.width.value_or(size.x), window.height.value_or(size.y)});
    options.set_window_origin(window.origin.value_or(options.window_origin()));
    options.set_local_coordinates(window.local_coordinates.value_or(options.local_coordinates()));
}

Report replay(const Recording& recording, Session& session, const Replay_Settings& settings) {
    Replay replay(recording, session, settings);
    replay.begin();
    for (std::size_t call = 0; call < recording.calls.size() && call <= settings.last; ++call) {
        if (call < settings.first && !sets_up(*recording.calls[call].kind)) {
            continue;
        }
        if (settings.before_call) {
            settings.before_call(call);
        }
        replay.make(call);
        if (settings.after_call) {
            settings.after_call(call);
        }
    }
    return replay.end();
}

class Replayer::Implementation : public Replay {
    using Replay::Replay;
};

Replayer::Replayer(const Recording& recording, Session& session, const Replay_Settings& settings)
    : settings_(settings), replay_(std::make_unique<Implementation>(recording, session, settings_)) {
}

Replayer::~Replayer() = default;

void Replayer::begin() {
    replay_->begin();
}

void Replayer::make(std::size_t call) {
    replay_->make(call);
}

void Replayer::draw_as(std::size_t call, const Arguments& arguments, const VT_Reference<VT_Rendition>& rendition) {
    replay_->draw_as(call, arguments, rendition);
}

void Replayer::drop_report() noexcept {
    replay_->drop_report();
}

VT_Reference<VT_Rendition> Replayer::rendition_of(std::size_t call) {
    return replay_->rendition_of(call);
}

} // namespace vorna::drawing::recording
