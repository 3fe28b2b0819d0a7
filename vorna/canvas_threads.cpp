// Draws what is drawn on a canvas with several renderers, each in rows of its own.
#include "vorna/canvas_threads.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <functional>
#include <thread>
#include <type_traits>
#include <utility>

#include "host/attributes.h"
#include "host/window.h"
#include "vorna/call_rows.h"
#include "vorna/kept_arguments.h"

namespace vorna {

namespace {

constexpr const char* scissor_rows = "Scissor Rows";
constexpr const char* zbuffer_write = "ZBuffer Write";
constexpr const char* zbuffer_test = "ZBuffer Test";
constexpr const char* own_option = "Canvas Threads"; // leads from the renderer to the object

// Longer strips are kept in runs of so many triangles, so that a band draws those of its rows only.
constexpr std::int32_t triangles_of_run = 32;

// Fewer points are drawn before another thread has begun.
constexpr std::size_t least_points_of_threads = 256;

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

// The part of a strip from a triangle on, of arguments that begin with count and points.
template <class Point> auto run_of(const std::tuple<std::int32_t, const Point*>& strip, std::int32_t first, std::int32_t length) {
    return std::tuple(length, std::get<1>(strip) + first);
}
template <class Point>
auto run_of(const std::tuple<std::int32_t, const Point*, const VT_RGB32*, bool>& strip, std::int32_t first, std::int32_t length) {
    const auto& [count, points, colors, single] = strip;
    return std::tuple(length, points + first, single || !colors ? colors : colors + first, single);
}
template <class Point>
auto run_of(const std::tuple<std::int32_t, const Point*, const VT_RGB32*>& strip, std::int32_t first, std::int32_t length) {
    const auto& [count, points, colors] = strip;
    return std::tuple(length, points + first, colors ? colors + first : colors);
}
template <class Point>
auto run_of(const std::tuple<std::int32_t, const Point*, const VT_RGB32*, const VT_Parameter*, std::int32_t, const float*,
                             const VT_Vector*>& strip,
            std::int32_t first, std::int32_t length) {
    const auto& [count, points, colors, parameters, width, weights, normals] = strip;
    return std::tuple(length, points + first, colors ? colors + first : colors,
                      parameters ? parameters + std::ptrdiff_t{first} * width : parameters, width,
                      weights ? weights + first : weights, normals ? normals + first : normals);
}

// In how many runs a call is kept.
template <Primitive primitive, class... Kept>
std::size_t run_count(const VT_Rendition& rendition, const std::tuple<Kept...>& arguments) {
    if constexpr (primitive == Primitive::polytriangle) {
        const std::int32_t count = std::get<0>(arguments);
        if (count > 2 * triangles_of_run + 2 && drawn_by_renderer(rendition.face)) {
            return static_cast<std::size_t>((count - 3) / triangles_of_run + 1);
        }
    }
    return 1;
}

template <auto& Draw, class Kept> void draw_kept(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const void* kept) {
    std::apply([&](auto... arguments) { Draw(renderer, rendition, arguments...); }, *static_cast<const Kept*>(kept));
}

// A change of the depth rules between two calls.
template <class Setter, class Value> struct Rule_Change {
    Setter set;
    Value value;

    static void apply(VT_Renderer_Data& renderer, const VT_Rendition&, const void* kept) {
        const auto& [set, value] = *static_cast<const Rule_Change*>(kept);
        if constexpr (std::is_same_v<Value, bool>) {
            set(renderer, value);
        } else {
            set(renderer, &value);
        }
    }
};

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
};

Canvas_Threads::Canvas_Threads(Module::Maker maker, VT_Renderer_Data& front, unsigned threads)
    : maker_(maker), front_(front), thread_count_(threads > 0 ? threads : std::max(1U, std::thread::hardware_concurrency())),
      slots_(new Slots(*this)), team_(thread_count_), unread_(new VT_Rendition) {
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
            threads.set_depth_rule(threads.own_set_write_, value, threads.rules_.write);
            threads.own_set_write_(front, value);
        };
        front_.current_table.find(zbuffer_write)->set(VT_Pointer(kept));
    }
    if (own_set_test_) {
        const VT_Int_Setter kept = [](VT_Renderer_Data& front, const std::int32_t* value) {
            Canvas_Threads& threads = Slots::threads_of(front);
            threads.set_depth_rule(threads.own_set_test_, *value, threads.rules_.test);
            return threads.own_set_test_(front, value);
        };
        front_.current_table.find(zbuffer_test)->set(VT_Pointer(kept));
    }
}

template <class Setter, class Value> void Canvas_Threads::set_depth_rule(Setter set, Value value, std::optional<Value>& now) {
    if (!now) {
        flush(); // bands could not begin with the rule that was in force
    }
    if (!list_.is_empty() && now != value) {
        using Change = Rule_Change<Setter, Value>;
        if (!list_.has_room(sizeof(Change), 1)) {
            flush();
        }
        list_.add(every_row, &Change::apply, *unread_, new (list_.take(sizeof(Change))) Change{set, value});
    }
    now = value;
    if (list_.is_empty()) {
        rules_at_start_ = rules_;
    }
}

void Canvas_Threads::apply(VT_Renderer_Data& worker, const Depth_Rules& rules, Row_Range rows) const {
    if (rules.write && own_set_write_) {
        own_set_write_(worker, *rules.write);
    }
    if (rules.test && own_set_test_) {
        own_set_test_(worker, &*rules.test);
    }
    const std::int32_t first_and_last[2] = {rows.first, rows.last};
    set_rows_(worker, first_and_last);
}

template <auto& Draw, class Kept, Primitive primitive, class... Arguments>
void Canvas_Threads::keep(const VT_Rendition& rendition, Arguments&... arguments) {
    if constexpr (!std::is_base_of_v<Never_Kept, Kept>) {
        // Observers are told of standard functions while a call is drawn.
        if (!front_.standard_observer.function && Kept::can_be_kept(window_, arguments...)) {
            if (list_.is_empty()) {
                list_.set_bands(window_.top - window_.bottom + 1, band_height());
            }
            List_Counter counter;
            const auto given = Kept::arguments(counter, window_, arguments...);
            const std::size_t calls = run_count<primitive>(rendition, given);
            const std::size_t bytes = calls * Call_List::rounded(sizeof given);
            const bool copies = counter.bytes() + bytes <= Call_List::most_bytes_of_call;
            if (!list_.has_room(copies ? counter.bytes() + bytes : bytes, calls)) {
                flush();
            }
            if (copies) {
                List_Copier copier(list_);
                add<Draw, primitive>(rendition, Kept::arguments(copier, window_, arguments...));
                return;
            }
            // Large lists are drawn as they are, before the caller takes them back.
            if (list_.has_room(bytes, calls)) {
                add<Draw, primitive>(rendition, given);
                flush();
                return;
            }
        }
    }
    draw_alone([&](VT_Renderer_Data& worker) { Draw(worker, rendition, arguments...); });
}

template <auto& Draw, Primitive primitive, class... Kept>
void Canvas_Threads::add(const VT_Rendition& rendition, const std::tuple<Kept...>& arguments) {
    const VT_Rendition& kept = list_.kept(rendition);
    if constexpr (primitive == Primitive::polytriangle) {
        if (run_count<primitive>(rendition, arguments) > 1) {
            const std::int32_t count = std::get<0>(arguments);
            for (std::int32_t first = 0; first < count - 2; first += triangles_of_run) {
                const auto run = run_of(arguments, first, std::min(triangles_of_run + 2, count - first));
                add_call<Draw>(rows_of<primitive>(rendition, window_.bottom, run), kept, run);
            }
            kept_points_ += list_size(count);
            return;
        }
    }
    add_call<Draw>(rows_of<primitive>(rendition, window_.bottom, arguments), kept, arguments);
    if constexpr (primitive == Primitive::other) {
        kept_points_ += least_points_of_threads; // areas
    } else {
        kept_points_ += list_size(std::get<0>(arguments));
    }
}

template <auto& Draw, class... Kept>
void Canvas_Threads::add_call(Row_Range rows, const VT_Rendition& kept, const std::tuple<Kept...>& arguments) {
    using Arguments = std::tuple<Kept...>;
    static_assert(std::is_trivially_destructible_v<Arguments>);
    if (rows.first > rows.last || rows.last < 0 || rows.first > window_.top - window_.bottom) {
        return;
    }
    void* const place = new (list_.take(sizeof(Arguments))) Arguments(arguments);
    list_.add(rows, &draw_kept<Draw, Arguments>, kept, place);
}

// Before anything that follows, by a renderer that draws in all rows.
template <class Call> void Canvas_Threads::draw_alone(Call call) {
    flush();
    VT_Renderer_Data& worker = *workers_.front();
    apply(worker, rules_, every_row);
    worker.standard_observer = front_.standard_observer;
    struct Unobserved {
        VT_Renderer_Data& worker;
        ~Unobserved() { worker.standard_observer = {}; }
    } const unobserved{worker};
    call(worker);
}

// Several for each thread, since some have more to draw than others.
std::int32_t Canvas_Threads::band_height() const noexcept {
    constexpr std::size_t bands_of_thread = 4;
    // Renderers may keep values of blocks of up to so many rows, which no two of them should share.
    constexpr std::size_t block_height = 16;
    const auto height = static_cast<std::size_t>(window_.top - window_.bottom + 1);
    const std::size_t rows = (height - 1) / (bands_of_thread * thread_count_) + 1;
    return static_cast<std::int32_t>((rows + block_height - 1) / block_height * block_height);
}

void Canvas_Threads::flush() {
    if (list_.is_empty()) {
        return;
    }
    struct Emptied {
        Canvas_Threads& threads;
        ~Emptied() {
            threads.list_.clear();
            threads.kept_points_ = 0;
            threads.rules_at_start_ = threads.rules_;
        }
    } const emptied{*this};
    const std::size_t bands = list_.band_count();
    std::atomic<std::size_t> next{0};
    std::atomic<bool> has_failed{false};
    std::exception_ptr failure;
    const auto draw_bands = [&](std::size_t thread) {
        try {
            VT_Renderer_Data& worker = *workers_[thread];
            for (std::size_t band = next.fetch_add(1); band < bands; band = next.fetch_add(1)) {
                apply(worker, rules_at_start_, list_.band(band));
                list_.draw(worker, band);
            }
        } catch (...) {
            next = bands;
            if (!has_failed.exchange(true)) {
                failure = std::current_exception();
            }
        }
    };
    if (kept_points_ < least_points_of_threads) {
        draw_bands(0);
    } else {
        team_.run(std::ref(draw_bands));
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
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
    }
}

} // namespace vorna
