// A replay as events for viewers of timelines.
#include "drawing/recording/trace.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <utility>

#include "drawing/recording/call_kinds.h"
#include "drawing/recording/history_report.h"
#include "drawing/recording/summary.h"

namespace vorna::drawing::recording {

namespace {

// Microseconds with three decimals, exactly.
std::string microseconds(std::chrono::nanoseconds time) {
    char text[40];
    std::snprintf(text, sizeof text, "%lld.%03lld", static_cast<long long>(time.count() / 1000),
                  static_cast<long long>(time.count() % 1000));
    return text;
}

// An event of a lane, which viewers call a thread.
std::string event_text(const Call& call, std::size_t lane, std::chrono::nanoseconds begin, std::chrono::nanoseconds duration,
                       const nlohmann::ordered_json& arguments) {
    return ",\n{\"name\":\"" + std::string(call.kind->name) + "\",\"cat\":\"" + (is_slot(*call.kind) ? "slot" : "replay") +
           "\",\"ph\":\"X\",\"pid\":1,\"tid\":" + std::to_string(lane) + ",\"ts\":" + microseconds(begin) +
           ",\"dur\":" + microseconds(duration) + ",\"args\":" + arguments.dump() + '}';
}

std::string lane_name(std::size_t lane, const std::string& name) {
    return ",\n{\"name\":\"thread_name\",\"ph\":\"M\",\"pid\":1,\"tid\":" + std::to_string(lane) + ",\"args\":{\"name\":\"" +
           name + "\"}}";
}

constexpr std::size_t lane_of_calls = 1;

} // namespace

Call_Trace::Call_Trace(const Recording& recording, Canvas& canvas, unsigned threads, Load_Limits& limits, std::string name)
    : recording_(recording), canvas_(canvas), limits_(limits), name_(std::move(name)), works_(threads > 1 ? threads : 0) {
    if (!works_.empty()) {
        canvas_.watch_threads({[this] { return call_; }, [this](const Thread_Work& work) { note(work); }});
    }
}

// Room for so many more elements. Lists at least double, so that what is taken in all is never less than a list and the copy to
// which it grows.
template <class List> void Call_Trace::make_room(List& list, std::size_t more) {
    if (list.size() + more > list.capacity()) {
        const std::size_t capacity = std::max(2 * list.capacity(), list.size() + more);
        limits_.take_memory(name_, capacity * sizeof(typename List::value_type));
        list.reserve(capacity);
    }
}

void Call_Trace::add(std::string& text, const std::string& event) {
    make_room(text, event.size());
    text += event;
}

// Each thread has a list of its own.
void Call_Trace::note(const Thread_Work& work) noexcept {
    try {
        std::vector<Thread_Work>& works = works_[work.thread];
        make_room(works, 1);
        works.push_back(work);
    } catch (...) {
        if (!has_failed_.exchange(true)) {
            failure_ = std::current_exception();
        }
    }
}

Call_Trace::~Call_Trace() {
    try {
        canvas_.watch_threads({});
    } catch (...) {
        // A call has failed that was kept; the canvas has told so, or is about to end.
    }
}

void Call_Trace::before_call(std::size_t call) noexcept {
    call_ = call;
    start_ = Clock::now();
    first_ = has_begun_ ? first_ : start_;
    has_begun_ = true;
}

// The event is text at once, because a long recording would need many times its size as a JSON value.
void Call_Trace::after_call(std::size_t call) {
    const auto duration = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start_);
    const nlohmann::ordered_json arguments{
        {"call", call}, {"points", points_of(recording_.calls[call])}, {"rendition", short_rendition(recording_, call)}};
    add(events_,
        event_text(recording_.calls[call], lane_of_calls, works_.empty() ? elapsed_ : start_ - first_, duration, arguments));
    elapsed_ += duration;
}

std::string Call_Trace::json() {
    if (has_failed_) {
        std::rethrow_exception(failure_);
    }
    std::string text = R"({"displayTimeUnit":"ns","traceEvents":[
{"name":"process_name","ph":"M","pid":1,"tid":1,"args":{"name":"vorna replay"}})" +
                       lane_name(lane_of_calls, "calls");
    for (std::size_t thread = 0; thread < works_.size(); ++thread) {
        text += lane_name(lane_of_calls + 1 + thread, "thread " + std::to_string(thread));
    }
    add(text, events_);
    for (const std::vector<Thread_Work>& works : works_) {
        for (const Thread_Work& work : works) {
            const auto call = static_cast<std::size_t>(work.mark);
            add(text, event_text(recording_.calls[call], lane_of_calls + 1 + work.thread, work.begin - first_,
                                 work.end - work.begin, {{"call", call}}));
        }
    }
    return text + "\n]}\n";
}

} // namespace vorna::drawing::recording
