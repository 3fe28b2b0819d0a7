// A replay as events for viewers of timelines.
#include "drawing/recording/trace.h"

#include <cstdio>
#include <nlohmann/json.hpp>

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

} // namespace

void Call_Trace::before_call() noexcept {
    start_ = Clock::now();
}

// The event is text at once, because a long recording would need many times its size as a JSON value.
void Call_Trace::after_call(std::size_t call) {
    const auto duration = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start_);
    const Call& made = recording_.calls[call];
    const nlohmann::ordered_json arguments{
        {"call", call}, {"points", points_of(made)}, {"rendition", short_rendition(recording_, call)}};
    events_ += ",\n{\"name\":\"" + std::string(made.kind->name) + "\",\"cat\":\"" + (is_slot(*made.kind) ? "slot" : "replay") +
               "\",\"ph\":\"X\",\"pid\":1,\"tid\":1,\"ts\":" + microseconds(elapsed_) + ",\"dur\":" + microseconds(duration) +
               ",\"args\":" + arguments.dump() + '}';
    elapsed_ += duration;
}

std::string Call_Trace::json() const {
    return R"({"displayTimeUnit":"ns","traceEvents":[
{"name":"process_name","ph":"M","pid":1,"tid":1,"args":{"name":"vorna replay"}},
{"name":"thread_name","ph":"M","pid":1,"tid":1,"args":{"name":"calls"}})" +
           events_ + "\n]}\n";
}

} // namespace vorna::drawing::recording
