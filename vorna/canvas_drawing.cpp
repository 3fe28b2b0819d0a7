// How the threads of a canvas draw what was kept.
#include <algorithm>
#include <chrono>
#include <new>
#include <thread>
#include <utility>

#include <time.h>

#include "vorna/canvas_threads.h"
#include "vorna/drawn_rows.h"

namespace vorna {

namespace {

double seconds_on_the_clock() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Processor time of this thread.
double seconds_of_thread() {
#if defined(CLOCK_THREAD_CPUTIME_ID)
    timespec time{};
    if (clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time) == 0) {
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    }
#endif
    return seconds_on_the_clock();
}

} // namespace

// Every block of calls begins with the rules that are in force, and calls after a change of them follow it.
struct Canvas_Threads::Rule_Change {
    const Canvas_Threads* threads;
    Depth_Rules rules;

    static void draw(VT_Renderer_Data& worker, const VT_Rendition&, const void* change) {
        const auto& [threads, rules] = *static_cast<const Rule_Change*>(change);
        threads->apply(worker, rules);
    }
};

// Stands before a call while the threads are watched, so that a thread knows when it begins with the call.
struct Canvas_Threads::Call_Mark {
    Canvas_Threads* threads;
    std::uint64_t mark;

    static constexpr std::size_t bytes = sizeof(Kept_Call) + Call_List::rounded(2 * sizeof(std::uint64_t));

    static void draw(VT_Renderer_Data& worker, const VT_Rendition&, const void* kept) {
        const auto& [threads, mark] = *static_cast<const Call_Mark*>(kept);
        threads->begin_work(worker, mark);
    }
};

void Canvas_Threads::watch(Thread_Watch watch) {
    flush();
    watch_ = std::move(watch);
    watched_works_.assign(thread_count_, {});
    mark_bytes_ = watch_.note && watch_.mark ? Call_Mark::bytes : 0;
}

// Returns the place behind the mark.
std::byte* Canvas_Threads::put_mark(std::byte* place) {
    static_assert(sizeof(Kept_Call) + sizeof(Call_Mark) <= Call_Mark::bytes);
    new (place) Kept_Call{&Call_Mark::draw, unread_.get(), Call_Mark::bytes};
    new (place + sizeof(Kept_Call)) Call_Mark{this, watch_.mark()};
    return place + Call_Mark::bytes;
}

void Canvas_Threads::begin_work(const VT_Renderer_Data& worker, std::uint64_t mark) {
    const auto thread = static_cast<std::size_t>(
        std::ranges::find(workers_, &worker, [](const Module::Renderer& each) { return &*each; }) - workers_.begin());
    if (watched_works_[thread].has_begun && watched_works_[thread].mark == mark) {
        return; // another part of the same call
    }
    const auto now = std::chrono::steady_clock::now();
    end_work(thread, now);
    watched_works_[thread] = {true, mark, now};
}

void Canvas_Threads::end_work(std::size_t thread, std::chrono::steady_clock::time_point now) {
    auto& [has_begun, mark, begin] = watched_works_[thread];
    if (has_begun) {
        watch_.note({thread, mark, begin, now});
        has_begun = false;
    }
}

void Canvas_Threads::apply(VT_Renderer_Data& worker, const Depth_Rules& rules) const {
    if (rules.write && own_set_write_) {
        own_set_write_(worker, *rules.write);
    }
    if (rules.test && own_set_test_) {
        own_set_test_(worker, &*rules.test);
    }
}

void Canvas_Threads::set_rows(VT_Renderer_Data& worker, Row_Range rows) const {
    const std::int32_t first_and_last[2] = {rows.first, rows.last};
    set_rows_(worker, first_and_last);
    note_drawn_rows(worker, rows.first, rows.last);
}

// For calls that follow the depth rules that are in force.
void Canvas_Threads::make_room(std::size_t band, std::size_t bytes) {
    constexpr std::size_t rule_bytes = sizeof(Kept_Call) + Call_List::rounded(sizeof(Rule_Change));
    static_assert(rule_bytes + sizeof(Kept_Call) + 2 * Call_List::most_bytes_of_band <= Call_Queue::block_bytes);
    Call_Queue& queue = list_.queue(band);
    if (!queue.has_room(rule_bytes + bytes)) {
        if (queue.hand_over()) {
            team_.wake();
        }
        while (!queue.open()) {
            if (has_failed_) {
                flush();
            }
            if (!draw_fullest_band(0)) {
                std::this_thread::yield();
            }
        }
    }
    std::byte* const place = queue.take(rule_bytes);
    new (place) Kept_Call{&Rule_Change::draw, unread_.get(), rule_bytes};
    new (place + sizeof(Kept_Call)) Rule_Change{this, rules_};
    numbers_of_rules_[band] = rules_number_;
}

std::int32_t Canvas_Threads::band_height() const noexcept {
    // Renderers may keep values of blocks of up to so many rows, which no two of them should share.
    constexpr std::size_t block_height = 16;
    const auto height = static_cast<std::size_t>(window_.top - window_.bottom) + 1;
    const std::size_t rows = (height - 1) / most_bands() + 1;
    return static_cast<std::int32_t>((rows + block_height - 1) / block_height * block_height);
}

// Nothing when another thread has the band. After a failure calls are dropped.
void Canvas_Threads::draw_band(std::size_t thread, std::size_t band) {
    Call_Queue& queue = list_.queue(band);
    if (!queue.claim(thread)) {
        return;
    }
    bool has_rows = false;
    queue.empty([&](const std::byte* block, std::size_t bytes) {
        try {
            VT_Renderer_Data& worker = *workers_[thread];
            if (!has_rows && !has_failed_) {
                set_rows(worker, list_.band(band));
                has_rows = true;
            }
            for (const std::byte* next = block; next != block + bytes && !has_failed_;) {
                const auto& call = *reinterpret_cast<const Kept_Call*>(next);
                call.draw(worker, *call.rendition, call.arguments());
                next += call.bytes;
            }
        } catch (...) {
            if (!has_failed_.exchange(true)) {
                failure_ = std::current_exception();
            }
        }
        if (mark_bytes_ > 0) {
            end_work(thread, std::chrono::steady_clock::now());
        }
    });
    queue.release();
}

// Of those that no thread has: one that this thread drew the last time, whose pixels may still be in its processor's cache, or
// else another one. Returns false when there is none.
bool Canvas_Threads::draw_fullest_band(std::size_t thread) {
    std::size_t fullest = 0;
    std::pair<bool, std::uint32_t> most{false, 0}; // drawn by this thread, blocks
    for (std::size_t band = 0; band < most_bands(); ++band) {
        const Call_Queue& queue = list_.queue(band);
        const std::uint32_t ready = queue.ready();
        const std::pair found{queue.last_thread() == thread, ready};
        if (ready > 0 && found > most && !queue.is_claimed()) {
            fullest = band;
            most = found;
        }
    }
    if (most.second > 0) {
        draw_band(thread, fullest);
    }
    return most.second > 0;
}

void Canvas_Threads::flush() {
    if (list_.is_empty()) {
        return;
    }
    list_.hand_over();
    if (kept_points_ >= least_points_of_threads) {
        team_.wake();
    }
    const double began = seconds_on_the_clock(), worked = seconds_of_thread();
    team_.work_until([this] { return list_.is_drawn(); });
    waited_ += std::max(0.0, seconds_on_the_clock() - began - (seconds_of_thread() - worked));
    list_.clear();
    kept_points_ = 0;
    if (has_failed_.exchange(false)) {
        std::rethrow_exception(std::exchange(failure_, nullptr));
    }
}

void Canvas_Threads::flush_and_choose() {
    flush();
    if (workers_.empty()) {
        return;
    }
    const double now = seconds_of_thread();
    profit_.note(std::max(0.0, now - chosen_at_) + waited_, kept_calls_);
    chosen_at_ = now;
    waited_ = 0;
    kept_calls_ = 0;
    if (profit_.uses_threads() != uses_threads_) {
        use_threads(profit_.uses_threads());
    }
}

void Canvas_Threads::choose_anew() {
    uses_threads_ = true;
    profit_ = {};
    chosen_at_ = seconds_of_thread();
}

} // namespace vorna
