// Draws what is drawn on a canvas with several renderers, each in rows of its own.
//
// The slots of the canvas's renderer keep calls in a list, by the bands of rows that they touch. Threads take bands that have
// calls, while more are kept, and a renderer of each thread draws the calls of a band in order. The renderers share the buffers
// of the canvas's own, which draws nothing, and keep to their bands by the option "Scissor Rows". With a module that lacks the
// option the canvas's renderer draws by itself.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <tuple>
#include <vector>

#include "host/frame_buffer.h"
#include "host/renderer_data.h"
#include "vorna/call_list.h"
#include "vorna/call_runs.h"
#include "vorna/canvas.h"
#include "vorna/draw.h"
#include "vorna/module.h"
#include "vorna/thread_profit.h"
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
    // The same at the end of a picture or where its pixels are needed; then the threads are used further or not.
    void flush_and_choose();

    // See Canvas::watch_threads.
    void watch(Thread_Watch watch);

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
    template <auto& Draw, class Kept, Primitive primitive, class Run>
    void keep_run(const VT_Rendition& rendition, const Run& run);
    template <auto& Draw, class Kept, class Run> void keep_part(const VT_Rendition& rendition, const Run& run, Row_Range rows);
    void begin_areas();
    void begin_list();
    const VT_Rendition& begun_rendition(const VT_Rendition& rendition);
    template <class Visit> void for_each_band(Row_Range rows, Visit visit);
    template <auto& Draw, class Run> std::byte* take(std::size_t band, const VT_Rendition& kept, std::size_t list_bytes);
    void make_room(std::size_t band, std::size_t bytes);
    template <class Call> void draw_alone(Call call);
    template <class Value> void set_depth_rule(Value value, std::optional<Value>& now);

    // The depth rules that applications set; those of a new renderer are not known.
    struct Depth_Rules {
        std::optional<bool> write;
        std::optional<std::int32_t> test;
    };
    struct Rule_Change;
    struct Call_Mark;

    // The call that a thread is drawing while the threads are watched.
    struct Watched_Work {
        bool has_begun = false;
        std::uint64_t mark = 0;
        std::chrono::steady_clock::time_point begin;
    };

    std::byte* put_mark(std::byte* place);
    void begin_work(const VT_Renderer_Data& worker, std::uint64_t mark);
    void end_work(std::size_t thread, std::chrono::steady_clock::time_point now);
    void install_setters();
    void apply(VT_Renderer_Data& worker, const Depth_Rules& rules) const;
    void set_rows(VT_Renderer_Data& worker, Row_Range rows) const;
    std::int32_t band_height() const noexcept;
    std::size_t most_bands() const noexcept { return bands_of_thread * thread_count_; }
    Line_Surface line_surface() const;
    void choose_anew();
    void use_threads(bool uses_threads);
    bool draw_fullest_band(std::size_t thread);
    void draw_band(std::size_t thread, std::size_t band);

    // More than one, since some bands have more to draw than others; not many, since what crosses the border of two is drawn in
    // both.
    static constexpr std::size_t bands_of_thread = 2;
    // Fewer points are drawn before another thread has begun.
    static constexpr std::size_t least_points_of_threads = 256;

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
    Call_List list_;
    const VT_Reference<const VT_Rendition> unread_; // of calls that read none
    std::size_t kept_points_ = 0;                   // in the list, a measure of its work
    Depth_Rules rules_;
    std::uint32_t rules_number_ = 1;              // of these rules
    std::vector<std::uint32_t> numbers_of_rules_; // by band, that its last calls follow; 0 = none
    std::size_t kept_calls_ = 0;                  // since the last choice
    double waited_ = 0;                           // for the threads since then, seconds
    double chosen_at_ = 0;                        // processor time of the thread that draws on the canvas
    bool uses_threads_ = false;                   // the canvas's slots keep calls
    Thread_Profit profit_;
    Thread_Watch watch_;
    std::vector<Watched_Work> watched_works_; // by thread
    std::size_t mark_bytes_ = 0;              // before each kept call; 0 = the threads are not watched
    std::atomic<bool> has_failed_{false};
    std::exception_ptr failure_; // of the first call that failed
    Thread_Team team_;           // the last member: its threads end before what they use
};

} // namespace vorna
