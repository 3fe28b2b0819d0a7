// Medians as Markdown tables.
#include "bench/ratio_table.h"

#include <algorithm>
#include <cstdio>

namespace bench {

namespace {

template <class... Arguments> std::string formatted(const char* format, Arguments... arguments) {
    char text[64];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

} // namespace

void Ratio_Table::ReportRuns(const std::vector<Run>& runs) {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
        if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
            seconds_[run.run_name.function_name] = run.GetAdjustedCPUTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
        }
    }
}

double Ratio_Table::rate(const Row& fill) const {
    const auto found = seconds_.find(fill.name);
    return found == seconds_.end() ? 0 : fill.amount / found->second;
}

std::string Ratio_Table::markdown() const {
    std::string text =
        context_ +
        ".\n\n| drawing | krb.vrd | million triangles/s | llvmpipe | llvmpipe ÷ krb.vrd |\n|---|---:|---:|---:|---:|\n";
    for (const Row& row : drawings_) {
        const auto ours = seconds_.find(row.name + "/vorna");
        if (ours == seconds_.end()) {
            continue;
        }
        const auto theirs = seconds_.find(row.name + "/llvmpipe");
        const bool has_peer = theirs != seconds_.end();
        text += "| " + row.title + formatted(" | %.2f ms | %.2f | ", ours->second * 1e3, row.amount / ours->second / 1e6) +
                (has_peer ? formatted("%.2f ms | %.1f |\n", theirs->second * 1e3, theirs->second / ours->second) : "– | – |\n");
    }
    text += "\n| drawing | open | masked | masked ÷ open |\n|---|---:|---:|---:|\n";
    for (const Masked_Row& row : masked_) {
        const auto open = seconds_.find(row.open + "/vorna"), masked = seconds_.find(row.name + "/vorna");
        if (open != seconds_.end() && masked != seconds_.end()) {
            text += "| " + row.title +
                    formatted(" | %.2f ms | %.2f ms | %.2f |\n", open->second * 1e3, masked->second * 1e3,
                              masked->second / open->second);
        }
    }
    text += "\n| fill | GB/s | of memset |\n|---|---:|---:|\n";
    for (std::size_t i = 0; i < fills_.size(); ++i) {
        const auto unit = std::find_if(fills_.begin(), fills_.end(), [&](const Row& row) { return row.name == units_[i]; });
        const double unit_rate = unit == fills_.end() ? 0 : rate(*unit);
        if (rate(fills_[i]) > 0 && unit_rate > 0) {
            text += "| " + fills_[i].title + formatted(" | %.1f | %.2f |\n", rate(fills_[i]) / 1e9, rate(fills_[i]) / unit_rate);
        }
    }
    return text;
}

} // namespace bench
