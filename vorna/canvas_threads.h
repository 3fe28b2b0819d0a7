// Draws what is drawn on a canvas with several renderers, each in rows of its own.
//
// The slots of the canvas's renderer keep calls in a list. When it is flushed, threads take bands of rows from the window's
// lowest to its highest, and a renderer of each thread draws the calls of a band in order. The renderers share the buffers of the
// canvas's own, which draws nothing, and keep to their bands by the option "Scissor Rows". With a module that lacks the option
// the canvas's renderer draws by itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <tuple>
#include <vector>

#include "host/frame_buffer.h"
#include "host/renderer_data.h"
#include "vorna/call_list.h"
#include "vorna/draw.h"
#include "vorna/module.h"
#include "vorna/thread_team.h"

namespace vorna {

class Canvas_Threads {
public:
    using Workers = std::vector<Module::Renderer>;

    // front: the canvas's renderer, which outlives the object. threads: 0 = as many as processors.
    Canvas_Threads(Module::Maker maker, VT_Renderer_Data& front, unsigned threads);
    Canvas_Threads(const Canvas_Threads&) = delete;
    Canvas_Threads& operator=(const Canvas_Threads&) = delete;
    ~Canvas_Threads();

    // Draws all kept calls. Throws what one of them throws; the others may be drawn or not then, and none is kept.
    void flush();

    // Gives the renderer its own slots for as long as it is established.
    class Own_Slots {
    public:
        explicit Own_Slots(Canvas_Threads* threads) noexcept;
        Own_Slots(const Own_Slots&) = delete;
        Own_Slots& operator=(const Own_Slots&) = delete;
        ~Own_Slots();

    private:
        Canvas_Threads* const threads_;
    };
    // Puts the options of the canvas's renderer into force in the others, for its buffers; depth may be null. Throws what
    // establish throws.
    void establish_workers(const VT_Reference<Frame_Buffer>& color, const VT_Reference<Frame_Buffer>& depth);
    // The canvas's renderer draws itself from now on: after a failure it has a history that the others lack.
    void draw_alone_from_now() noexcept;
    // Those that the canvas's renderer has installed.
    const VT_Action_Table& own_actions() const noexcept { return workers_.empty() ? front_.actions : own_actions_; }

private:
    class Slots;
    struct Made_Slots;

    template <auto& Draw, class Kept, Primitive primitive, class... Arguments>
    void keep(const VT_Rendition& rendition, Arguments&... arguments);
    template <auto& Draw, Primitive primitive, class... Kept>
    void add(const VT_Rendition& rendition, const std::tuple<Kept...>& arguments);
    template <auto& Draw, class... Kept>
    void add_call(Row_Range rows, const VT_Rendition& kept, const std::tuple<Kept...>& arguments);
    template <class Call> void draw_alone(Call call);
    template <class Setter, class Value> void set_depth_rule(Setter set, Value value, std::optional<Value>& now);

    // The depth rules that applications set; those of a new renderer are not known.
    struct Depth_Rules {
        std::optional<bool> write;
        std::optional<std::int32_t> test;
    };

    void install_setters();
    void apply(VT_Renderer_Data& worker, const Depth_Rules& rules, Row_Range rows) const;
    std::int32_t band_height() const noexcept;

    const Module::Maker maker_;
    VT_Renderer_Data& front_;
    const std::size_t thread_count_;
    VT_Reference<Slots> slots_;
    VT_Action_Table own_actions_;
    VT_Bool_Setter own_set_write_ = nullptr;
    VT_Int_Setter own_set_test_ = nullptr;
    VT_Int_Setter set_rows_ = nullptr;
    VT_Int_Rectangle window_; // of the renderers
    Workers workers_;         // none = the canvas's renderer draws
    bool draws_alone_ = false;
    Thread_Team team_;
    Call_List list_;
    const VT_Reference<const VT_Rendition> unread_; // of calls that read none
    std::size_t kept_points_ = 0;                   // in the list, a measure of its work
    Depth_Rules rules_at_start_;                    // before the first call of the list
    Depth_Rules rules_;
};

} // namespace vorna
