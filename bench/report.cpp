#include "bench/report.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace bench {

namespace {

constexpr const char* nothing = "–";

template <class... Arguments> std::string formatted(const char* format, Arguments... arguments) {
    char text[96];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

// Three digits that count.
std::string digits(double value) {
    return formatted(value < 999.5 ? "%.3g" : "%.0f", value);
}

// In the workload's unit.
double value_of(const Result& result, const Time& time, double amount) {
    const Counts counts = result.workload->counts;
    const Unit unit = unit_of(counts);
    return counts == Counts::frames ? time.median / unit.size : amount / time.median / unit.size;
}

double value_of(const Result& result, const Time& time) {
    return value_of(result, time, result.amount);
}

const Timed_Side* best_peer(const Result& result) {
    const auto best = std::min_element(result.peers.begin(), result.peers.end(),
                                       [](const auto& a, const auto& b) { return a.time.median < b.time.median; });
    return best == result.peers.end() ? nullptr : &*best;
}

// In the workload's unit.
std::optional<double> goal_of(const Result& result) {
    const Goal& goal = result.workload->goal;
    const double value = goal.value_for(result.kernel_set);
    if (value == 0) {
        return std::nullopt;
    }
    const auto from_memory = [&](const Time& time) {
        const double pixel_bytes = 4;
        return value * result.block_bytes / time.median / pixel_bytes / unit_of(result.workload->counts).size;
    };
    switch (goal.of) {
    case Goal::Of::none:
        break;
    case Goal::Of::rate:
        return value;
    case Goal::Of::memset:
        return from_memory(result.memset);
    case Goal::Of::memcpy:
        return from_memory(result.memcpy);
    case Goal::Of::reference:
        return result.reference ? std::optional(value * value_of(result, *result.reference)) : std::nullopt;
    case Goal::Of::best_peer:
        if (const Timed_Side* best = best_peer(result)) {
            const double peers = value_of(result, best->time);
            return result.workload->counts == Counts::frames ? peers / value : peers * value;
        }
        break;
    }
    return std::nullopt;
}

// 1 and more: reached.
std::optional<double> share_of_goal(const Result& result) {
    const std::optional<double> goal = goal_of(result);
    const double ours = value_of(result, result.ours);
    return !goal ? goal : result.workload->counts == Counts::frames ? *goal / ours : ours / *goal;
}

// How fast the frame would be if it did nothing but touch its memory: at the speed of memcpy for images, else of memset.
std::optional<double> share_of_limit(const Result& result) {
    const Time& memory = result.image_bytes > 0 ? result.memcpy : result.memset;
    const double least = result.bytes / result.block_bytes * memory.median;
    return least > 0 ? std::optional(least / result.ours.median) : std::nullopt;
}

std::string cell(const char* format, const std::optional<double>& value) {
    return value ? formatted(format, *value) : nothing;
}

} // namespace

std::string markdown(const Context& context, const std::vector<Result>& results) {
    const bool varied =
        std::any_of(results.begin(), results.end(), [](const Result& result) { return result.varied.has_value(); });
    const bool beside =
        std::any_of(results.begin(), results.end(), [](const Result& result) { return result.beside.has_value(); });
    std::string text;
    for (const auto& [name, value] : context) {
        text += text.empty() ? "" : "; ";
        text.append(name).append(": ").append(value);
    }
    text +=
        ".\n\n|  | workload | kernel set | unit | krb.vrd | best peer |  | krb.vrd ÷ peer | goal | of the goal | of the limit |";
    text += varied ? " varied ÷ exact |" : "";
    text += beside ? " ÷ other build |" : "";
    text += "\n|---|---|---|---|---:|---:|---|---:|---:|---:|---:|";
    text += std::string(varied ? "---:|" : "") + (beside ? "---:|" : "") + '\n';
    for (const Result& result : results) {
        const Workload& workload = *result.workload;
        text += "| " + workload.group + " | " + workload.title + " | " + result.kernel_set + " | " +
                unit_of(workload.counts).title + " | ";
        if (!result.failure.empty()) {
            text += "not measured | – | – | – | – | – | – |";
            text += std::string(varied ? " – |" : "") + (beside ? " – |" : "") + '\n';
            continue;
        }
        const Timed_Side* const best = best_peer(result);
        const std::optional<double> goal = goal_of(result);
        text += digits(value_of(result, result.ours)) + " | ";
        text += best ? digits(value_of(result, best->time)) + " | " + best->who + " | " +
                           formatted("%.2f", best->time.median / result.ours.median) + " | "
                     : "– | – | – | ";
        text += (goal ? digits(*goal) : nothing) + " | " + cell("%.2f", share_of_goal(result)) + " | " +
                cell("%.2f", share_of_limit(result)) + " |";
        if (varied) {
            text += result.varied ? formatted(" %.2f |",
                                              result.varied_amount / result.varied->median / (result.amount / result.ours.median))
                                  : " – |";
        }
        if (beside) {
            text += result.beside ? formatted(" %.2f |", result.beside->median / result.ours.median) : " – |";
        }
        text += '\n';
    }
    return text;
}

std::string json(const Context& context, const std::vector<Result>& results) {
    nlohmann::ordered_json document;
    for (const auto& [name, value] : context) {
        document["context"][name] = value;
    }
    for (const Result& result : results) {
        nlohmann::ordered_json row{{"group", result.workload->group},
                                   {"name", result.workload->name},
                                   {"title", result.workload->title},
                                   {"kernel_set", result.kernel_set},
                                   {"unit", unit_of(result.workload->counts).title}};
        if (!result.failure.empty()) {
            row["failure"] = result.failure;
            document["workloads"].push_back(row);
            continue;
        }
        const auto add = [&](const std::string& who, const Time& time, double amount) {
            row["sides"][who] = {
                {"median_seconds", time.median}, {"least_seconds", time.least}, {"value", value_of(result, time, amount)}};
        };
        add("krb.vrd", result.ours, result.amount);
        for (const Timed_Side& peer : result.peers) {
            add(peer.who, peer.time, result.amount);
        }
        for (const auto& [who, time, amount] : {std::tuple{"reference", result.reference, result.amount},
                                                {"varied", result.varied, result.varied_amount},
                                                {"other build", result.beside, result.amount},
                                                {"portable", result.portable, result.amount}}) {
            if (time) {
                add(who, *time, amount);
            }
        }
        row["memset_bytes_per_second"] = result.block_bytes / result.memset.median;
        row["memcpy_bytes_per_second"] = result.block_bytes / result.memcpy.median;
        const auto add_share = [&](const char* name, const std::optional<double>& value) {
            if (value) {
                row[name] = *value;
            }
        };
        add_share("goal", goal_of(result));
        add_share("share_of_goal", share_of_goal(result));
        add_share("share_of_limit", share_of_limit(result));
        document["workloads"].push_back(row);
    }
    return document.dump(1) + '\n';
}

std::string summary(const Result& result) {
    if (!result.failure.empty()) {
        return result.workload->name + " (" + result.kernel_set + "): " + result.failure;
    }
    std::string text = formatted("%-22s %-8s %9s %-10s", result.workload->name.c_str(), result.kernel_set.c_str(),
                                 digits(value_of(result, result.ours)).c_str(), unit_of(result.workload->counts).title);
    const auto add = [&text](const char* name, const std::optional<double>& value) {
        text += value ? formatted(" %s %.2f", name, *value) : "";
    };
    const Timed_Side* const best = best_peer(result);
    add("of goal", share_of_goal(result));
    add("of limit", share_of_limit(result));
    add("of best peer", best ? std::optional(best->time.median / result.ours.median) : std::nullopt);
    add("of other build", result.beside ? std::optional(result.beside->median / result.ours.median) : std::nullopt);
    add("(least", result.beside ? std::optional(result.beside->least / result.ours.least) : std::nullopt);
    return text + (result.beside ? ")" : "");
}

} // namespace bench
