// The slots of a canvas that several threads draw, and their renderers.
#include "vorna/canvas_threads.h"

#include <algorithm>
#include <new>
#include <thread>
#include <type_traits>
#include <utility>

#include "host/attributes.h"
#include "host/window.h"
#include "vorna/call_rows.h"
#include "vorna/drawn_rows.h"
#include "vorna/kept_arguments.h"

namespace vorna {

namespace {

constexpr const char* scissor_rows = "Scissor Rows";
constexpr const char* zbuffer_write = "ZBuffer Write";
constexpr const char* zbuffer_test = "ZBuffer Test";
constexpr const char* forced_merging = "Force Merge Control On";
constexpr const char* own_option = "Canvas Threads"; // leads from the renderer to the object

// Of canvases that nobody has told of another one.
constexpr std::int32_t usual_depth_test = 2;

template <class Setter> Setter setter_of(VT_Option_Table& table, const char* name) {
    const VT_Option* const option = table.find(name);
    return option ? option->as_setter<Setter>() : nullptr;
}

// The buffers of the canvas's renderer, as the buffers that another one asks for.
struct Shared_Buffers {
    VT_Reference<Frame_Buffer> color, depth;

    static void create(void* context, std::int32_t, std::int32_t, const Buffer_Format* format,
                       VT_Reference<Frame_Buffer>& buffer) {
        const auto& shared = *static_cast<const Shared_Buffers*>(context);
        buffer = *format == Buffer_Format::depth16 ? shared.depth : shared.color;
    }
};

template <auto& Draw, class Kept> void draw_kept(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const void* kept) {
    std::apply([&](auto... arguments) { Draw(renderer, rendition, arguments...); }, *static_cast<const Kept*>(kept));
}

} // namespace

// The owner of the canvas's slots, through which they find the object.
class Canvas_Threads::Slots final : public VT_Renderer_Data {
public:
    explicit Slots(Canvas_Threads& of) : threads(of) {}
    static Canvas_Threads& threads_of(VT_Renderer_Data& front) {
        return front.current_table.find(own_option)->as_object<Slots>()->threads;
    }

    Canvas_Threads& threads;
};

// The functions of the canvas's slots.
struct Canvas_Threads::Made_Slots {
    template <auto& Draw, class Kept, Primitive primitive, class... Arguments>
    static void draw(VT_Renderer_Data& slots, const VT_Rendition& rendition, Arguments... arguments) {
        static_cast<Slots&>(slots).threads.keep<Draw, Kept, primitive>(rendition, arguments...);
    }

    template <auto& Draw, Primitive primitive, class... Arguments>
    static void replace(Action_Slot<void(VT_Renderer_Data&, const VT_Rendition&, Arguments...)>& slot, Slots& owner) {
        using Kept = Kept_Arguments<void(VT_Renderer_Data&, const VT_Rendition&, Arguments...), primitive>;
        slot = {&owner, &draw<Draw, Kept, primitive, Arguments...>, 0, 1};
    }

    static void install(VT_Action_Table& table, Slots& owner) {
#define VT_ACTION(slot, name, ...) replace<VD_##name, primitive_of(#name)>(table.slot, owner);
#include "host/action_list.inc"
#undef VT_ACTION
    }

    // Whether all slots are the same. An application may have put others into the table.
    static bool are_same(const VT_Action_Table& a, const VT_Action_Table& b) {
        bool are_same = true;
#define VT_ACTION(slot, name, ...)                                                                                               \
    are_same &= a.slot.owner == b.slot.owner && a.slot.function == b.slot.function && a.slot.enabled == b.slot.enabled;
#include "host/action_list.inc"
#undef VT_ACTION
        return are_same;
    }
};

Canvas_Threads::Canvas_Threads(Module::Maker maker, VT_Renderer_Data& front, unsigned threads)
    : maker_(maker), front_(front), thread_count_(threads > 0 ? threads : std::max(1U, std::thread::hardware_concurrency())),
      slots_(new Slots(*this)), list_(most_bands()), unread_(new VT_Rendition), numbers_of_rules_(most_bands()),
      team_(thread_count_, [this](std::size_t thread) { return draw_fullest_band(thread); }) {
    front_.requested_table.add(VT_Option(scissor_rows, 0, VT_Pointer(nullptr)));
    front_.current_table.add(VT_Option(own_option, 0, VT_Pointer(VT_Reference<VT_Counted>(slots_))));
    install_setters();
}

Canvas_Threads::~Canvas_Threads() = default;

void Canvas_Threads::install_setters() {
    own_set_write_ = setter_of<VT_Bool_Setter>(front_.current_table, zbuffer_write);
    own_set_test_ = setter_of<VT_Int_Setter>(front_.current_table, zbuffer_test);
    if (own_set_write_) {
        const VT_Bool_Setter kept = [](VT_Renderer_Data& front, bool value) {
            Canvas_Threads& threads = Slots::threads_of(front);
            threads.set_depth_rule(value, threads.rules_.write);
            threads.own_set_write_(front, value);
        };
        front_.current_table.find(zbuffer_write)->set(VT_Pointer(kept));
    }
    if (own_set_test_) {
        const VT_Int_Setter kept = [](VT_Renderer_Data& front, const std::int32_t* value) {
            Canvas_Threads& threads = Slots::threads_of(front);
            threads.set_depth_rule(*value, threads.rules_.test);
            return threads.own_set_test_(front, value);
        };
        front_.current_table.find(zbuffer_test)->set(VT_Pointer(kept));
    }
}

template <class Value> void Canvas_Threads::set_depth_rule(Value value, std::optional<Value>& now) {
    if (!now) {
        flush(); // blocks could not begin with the rule that was in force
    }
    if (now != value) {
        now = value;
        ++rules_number_;
    }
}

Line_Surface Canvas_Threads::line_surface() const {
    const VT_Option* const merges = front_.current_table.find(forced_merging);
    return {window_, front_.current_options.alpha_blending() || (merges && merges->as_bool()),
            rules_.write.value_or(true) && rules_.test.value_or(usual_depth_test) == usual_depth_test};
}

template <auto& Draw, class Kept, Primitive primitive, class... Arguments>
void Canvas_Threads::keep(const VT_Rendition& rendition, Arguments&... arguments) {
    if constexpr (!std::is_base_of_v<Never_Kept, Kept>) {
        // Observers are told of standard functions while a call is drawn.
        if (!front_.standard_observer.function && Kept::can_be_kept(window_, arguments...)) {
            if constexpr (primitive == Primitive::other) {
                kept_points_ += least_points_of_threads; // areas
            } else {
                kept_points_ += list_size(std::get<0>(std::tie(arguments...)));
            }
            ++kept_calls_;
            List_Passer passer;
            for_each_run<primitive>(
                rendition, Kept::arguments(passer, window_, arguments...), [this] { return line_surface(); },
                [&](const auto& run) { keep_run<Draw, Kept, primitive>(rendition, run); });
            if constexpr (sizeof...(Arguments) == 0) {
                begin_areas();
            }
            return;
        }
    }
    draw_alone([&](VT_Renderer_Data& worker) { Draw(worker, rendition, arguments...); });
}

// Large areas take long enough for other threads to begin at once. Pictures begin with some, so that threads which sleep wake up
// while the first calls are kept.
void Canvas_Threads::begin_areas() {
    constexpr std::int64_t least_pixels = 1 << 17;
    if (std::int64_t{window_.right - window_.left} * (window_.top - window_.bottom) >= least_pixels) {
        list_.hand_over();
        team_.wake();
    }
}

// The renderer draws the triangles of a strip one by one where the strip crosses the border of a band: only those that do are
// kept for several bands.
template <auto& Draw, class Kept, Primitive primitive, class Run>
void Canvas_Threads::keep_run(const VT_Rendition& rendition, const Run& run) {
    const Row_Range rows = rows_of<primitive>(rendition, window_.bottom, run);
    if (rows.first > rows.last || rows.last < 0 || rows.first > window_.top - window_.bottom) {
        return;
    }
    if constexpr (primitive == Primitive::polytriangle) {
        const auto bands_of = [&](const auto& triangles) {
            const Row_Range touched = rows_of<primitive>(rendition, window_.bottom, triangles);
            return std::pair(list_.band_of(touched.first), list_.band_of(touched.last));
        };
        begin_list();
        if (std::get<0>(run) > least_points_of_parts && list_.band_of(rows.first) != list_.band_of(rows.last) &&
            drawn_by_renderer(rendition.face)) {
            for_each_part(run, bands_of, [&](const auto& part) {
                keep_part<Draw, Kept>(rendition, part, rows_of<primitive>(rendition, window_.bottom, part));
            });
            return;
        }
    }
    keep_part<Draw, Kept>(rendition, run, rows);
}

// Short lists are copied for each band, so that the calls of a band lie one after the other in memory, and longer ones once.
template <auto& Draw, class Kept, class Run>
void Canvas_Threads::keep_part(const VT_Rendition& rendition, const Run& run, Row_Range rows) {
    const auto with = [&](auto& lists) {
        return std::apply([&](const auto&... arguments) { return Kept::arguments(lists, window_, arguments...); }, run);
    };
    List_Counter counter;
    with(counter);
    if (counter.bytes() <= Call_List::most_bytes_of_band) {
        const VT_Rendition& kept = begun_rendition(rendition);
        for_each_band(rows, [&](std::size_t band) {
            std::byte* const place = take<Draw, Run>(band, kept, counter.bytes());
            List_Copier copier(place + Call_List::rounded(sizeof(Run)));
            new (place) Run(with(copier));
        });
        return;
    }
    const auto keep_lists = [&](const Run& kept_run, const VT_Rendition& kept) {
        for_each_band(rows, [&](std::size_t band) { new (take<Draw, Run>(band, kept, 0)) Run(kept_run); });
    };
    if (counter.bytes() <= Call_List::most_bytes_of_call) {
        if (!list_.has_shared_room(counter.bytes())) {
            flush();
        }
        const VT_Rendition& kept = begun_rendition(rendition);
        List_Copier copier(list_.take_shared(counter.bytes()));
        keep_lists(with(copier), kept);
    } else {
        // Drawn as they are, before the caller takes them back.
        try {
            keep_lists(run, begun_rendition(rendition));
        } catch (...) {
            flush(); // the bands that have the call
            throw;
        }
        kept_points_ += least_points_of_threads;
        flush();
    }
}

// The copy of the rendition, in a list that has begun.
const VT_Rendition& Canvas_Threads::begun_rendition(const VT_Rendition& rendition) {
    if (!list_.renditions().has_room()) {
        flush();
    }
    begin_list();
    return list_.renditions().kept(rendition);
}

void Canvas_Threads::begin_list() {
    if (list_.is_empty()) {
        list_.begin(window_.top - window_.bottom + 1, band_height());
        std::fill(numbers_of_rules_.begin(), numbers_of_rules_.end(), 0);
    }
}

template <class Visit> void Canvas_Threads::for_each_band(Row_Range rows, Visit visit) {
    for (std::size_t band = list_.band_of(rows.first), last = list_.band_of(rows.last); band <= last; ++band) {
        visit(band);
    }
}

// Memory for the arguments of a call and so many bytes after them.
template <auto& Draw, class Run>
std::byte* Canvas_Threads::take(std::size_t band, const VT_Rendition& kept, std::size_t list_bytes) {
    static_assert(std::is_trivially_destructible_v<Run> && alignof(Run) <= Call_List::alignment);
    const std::size_t bytes = sizeof(Kept_Call) + Call_List::rounded(sizeof(Run)) + list_bytes;
    Call_Queue& queue = list_.queue(band);
    if (!queue.has_room(mark_bytes_ + bytes) || numbers_of_rules_[band] != rules_number_) {
        make_room(band, mark_bytes_ + bytes);
    }
    std::byte* place = queue.take(mark_bytes_ + bytes);
    if (mark_bytes_ > 0) {
        place = put_mark(place);
    }
    new (place) Kept_Call{&draw_kept<Draw, Run>, &kept, bytes};
    return place + sizeof(Kept_Call);
}

// Before anything that follows, by a renderer that draws in all rows.
template <class Call> void Canvas_Threads::draw_alone(Call call) {
    flush();
    VT_Renderer_Data& worker = *workers_.front();
    apply(worker, rules_);
    set_rows(worker, every_row);
    worker.standard_observer = front_.standard_observer;
    struct Unobserved {
        VT_Renderer_Data& worker;
        ~Unobserved() { worker.standard_observer = {}; }
    } const unobserved{worker};
    call(worker);
}

void Canvas_Threads::use_threads(bool uses_threads) {
    VT_Action_Table keeping = own_actions_;
    Made_Slots::install(keeping, *slots_);
    if (!Made_Slots::are_same(front_.actions, uses_threads_ ? keeping : own_actions_)) {
        return;
    }
    if (!uses_threads) {
        set_rows(front_, every_row); // what the threads have drawn may have changed
    }
    front_.actions = uses_threads ? keeping : own_actions_;
    uses_threads_ = uses_threads;
}

// Workers go through every establish of the canvas's renderer: what is in force may depend on what was in force before, such as
// slots that the options of today do not name.
void Canvas_Threads::establish_workers(const VT_Reference<Frame_Buffer>& color, const VT_Reference<Frame_Buffer>& depth) {
    if (draws_alone_ || !setter_of<VT_Int_Setter>(front_.current_table, scissor_rows)) {
        workers_.clear();
        return;
    }
    Shared_Buffers buffers{color, depth};
    const VT_Buffer_Creation creation{Shared_Buffers::create, &buffers};
    while (workers_.size() < thread_count_) {
        const VT_Reference<VT_Renderer_Data> prototype(new VT_Renderer_Data);
        prototype->buffer_creation = creation;
        workers_.push_back(maker_(*prototype));
        note_drawn_rows(*workers_.back(), INT16_MIN, INT16_MAX); // made here, since threads may lack memory
    }
    for (const Module::Renderer& each : workers_) {
        VT_Renderer_Data& worker = *each;
        worker.buffer_creation = creation;
        worker.current_renderer_options_for_update() = front_.current_options;
        for (std::size_t k = 0; k < front_.requested_table.size(); ++k) {
            const VT_Option& option = front_.requested_table[k];
            VT_Option* const own = worker.requested_table.find(option.name());
            if (!own) {
                worker.requested_table.add(option);
            } else if (!std::holds_alternative<VT_Pointer>(option.value()->content)) {
                own->set_value(option.value()); // objects belong to one renderer
            }
        }
        if (VT_Option* const buffer = worker.requested_table.find("Color Buffer")) {
            buffer->set(VT_Pointer(VT_Reference<VT_Counted>(color)));
        }
        worker.establish_all();
        worker.buffer_creation = VT_Renderer_Data().buffer_creation;
    }
}

void Canvas_Threads::draw_alone_from_now() noexcept {
    draws_alone_ = true;
    workers_.clear();
}

Canvas_Threads::Own_Slots::Own_Slots(Canvas_Threads* threads) noexcept : threads_(threads) {
    if (threads_ && !threads_->workers_.empty()) {
        threads_->front_.actions = threads_->own_actions_;
    }
}

Canvas_Threads::Own_Slots::~Own_Slots() {
    if (threads_ && !threads_->workers_.empty()) {
        Canvas_Threads& threads = *threads_;
        threads.own_actions_ = threads.front_.actions;
        threads.window_ = window_rectangle(threads.front_.current_options);
        threads.set_rows_ = setter_of<VT_Int_Setter>(threads.front_.current_table, scissor_rows);
        Made_Slots::install(threads.front_.actions, *threads.slots_);
        threads.choose_anew();
    }
}

} // namespace vorna
