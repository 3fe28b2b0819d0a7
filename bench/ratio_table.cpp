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

std::string milliseconds(std::optional<double> seconds) {
    return seconds ? formatted("%.2f ms", *seconds * 1e3) : "–";
}

// The title of the first column, then right-aligned ones.
std::string heading(const std::vector<std::string>& columns) {
    std::string titles, rule;
    for (const std::string& column : columns) {
        titles += "| " + column + " ";
        rule += rule.empty() ? "|---" : "|---:";
    }
    return "\n" + titles + "|\n" + rule + "|\n";
}

std::string row(const std::vector<std::string>& cells) {
    std::string text;
    for (const std::string& cell : cells) {
        text += "| " + cell + " ";
    }
    return text + "|\n";
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

std::optional<double> Ratio_Table::seconds(const std::string& name) const {
    const auto found = seconds_.find(name);
    return found == seconds_.end() ? std::nullopt : std::optional(found->second);
}

std::string Ratio_Table::drawings_markdown() const {
    std::string text, unit;
    for (const Row& drawing : drawings_) {
        const std::optional<double> ours = seconds(drawing.name + "/vorna");
        const auto rate = [&](std::optional<double> time) {
            return time ? formatted("%.3g", drawing.amount / *time / drawing.unit.size) : std::string("–");
        };
        const auto time_cell = [&](const std::string& who) {
            const auto remark = remarks_.find(drawing.name + "/" + who);
            return remark == remarks_.end() ? milliseconds(seconds(drawing.name + "/" + who)) : remark->second;
        };
        std::vector<std::string> cells{drawing.title, time_cell("vorna"), rate(ours)};
        std::optional<double> best;
        for (const std::string& peer : peers_) {
            const std::optional<double> theirs = seconds(drawing.name + "/" + peer);
            cells.push_back(time_cell(peer));
            best = theirs && best ? std::min(*theirs, *best) : theirs ? theirs : best;
        }
        if (!ours && !best) {
            continue;
        }
        cells.push_back(rate(best));
        cells.push_back(ours && best ? formatted("%.2f", *best / *ours) : "–");
        if (unit != drawing.unit.title) {
            unit = drawing.unit.title;
            std::vector<std::string> columns{"drawing", "krb.vrd", unit};
            columns.insert(columns.end(), peers_.begin(), peers_.end());
            columns.insert(columns.end(), {"best peer, " + unit, "best peer's time ÷ krb.vrd's"});
            text += heading(columns);
        }
        text += row(cells);
    }
    return text;
}

std::string Ratio_Table::masked_markdown() const {
    std::string text;
    for (const Masked_Row& drawing : masked_) {
        const auto open = seconds(drawing.open + "/vorna"), masked = seconds(drawing.name + "/vorna");
        if (open && masked) {
            text += row({drawing.title, milliseconds(open), milliseconds(masked), formatted("%.2f", *masked / *open)});
        }
    }
    return text.empty() ? text : heading({"drawing", "open", "masked", "masked ÷ open"}) + text;
}

std::string Ratio_Table::fills_markdown() const {
    std::string text;
    const auto rate = [this](const Fill_Row& fill) -> std::optional<double> {
        const std::optional<double> time = seconds(fill.name);
        return time ? std::optional(fill.bytes / *time) : std::nullopt;
    };
    for (const Fill_Row& fill : fills_) {
        const auto unit = std::find_if(fills_.begin(), fills_.end(), [&](const Fill_Row& row) { return row.name == fill.unit; });
        const std::optional<double> own_rate = rate(fill), unit_rate = unit == fills_.end() ? std::nullopt : rate(*unit);
        if (own_rate && unit_rate) {
            text += row(
                {fill.title, formatted("%.1f", *own_rate / 1e9), formatted("%.2f of ", *own_rate / *unit_rate) + unit->title});
        }
    }
    return text.empty() ? text : heading({"fill", "GB/s", "share"}) + text;
}

std::string Ratio_Table::markdown() const {
    return context_ + ".\n" + drawings_markdown() + masked_markdown() + fills_markdown();
}

} // namespace bench
