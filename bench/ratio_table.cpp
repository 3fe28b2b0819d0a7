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

// Three digits that count.
std::string rate_text(double rate) {
    return formatted(rate < 1000 ? "%.3g" : "%.0f", rate);
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

std::string Ratio_Table::time_cell(const std::string& name) const {
    const auto remark = remarks_.find(name);
    return remark == remarks_.end() ? milliseconds(seconds(name)) : remark->second;
}

std::string Ratio_Table::table_of(const std::vector<Row>& drawings) const {
    const auto is_known = [this](const Row& drawing, const std::string& who) {
        return seconds_.contains(drawing.name + '/' + who) || remarks_.contains(drawing.name + '/' + who);
    };
    std::vector<std::string> peers;
    for (const std::string& peer : peers_) {
        if (std::any_of(drawings.begin(), drawings.end(), [&](const Row& drawing) { return is_known(drawing, peer); })) {
            peers.push_back(peer);
        }
    }
    const std::string& unit = drawings.front().unit.title;
    std::vector<std::string> columns{"drawing", "krb.vrd", unit};
    columns.insert(columns.end(), peers.begin(), peers.end());
    columns.insert(columns.end(), {"best peer, " + unit, "best peer's time ÷ krb.vrd's"});
    std::string rows;
    for (const Row& drawing : drawings) {
        const std::optional<double> ours = seconds(drawing.name + "/vorna");
        const auto rate_cell = [&](std::optional<double> time) {
            return time ? rate_text(drawing.amount / *time / drawing.unit.size) : "–";
        };
        std::vector<std::string> cells{drawing.title, time_cell(drawing.name + "/vorna"), rate_cell(ours)};
        std::optional<double> best;
        for (const std::string& peer : peers) {
            const std::optional<double> theirs = seconds(drawing.name + '/' + peer);
            cells.push_back(time_cell(drawing.name + '/' + peer));
            best = theirs && best ? std::min(*theirs, *best) : theirs ? theirs : best;
        }
        cells.push_back(rate_cell(best));
        cells.push_back(ours && best ? formatted("%.2f", *best / *ours) : "–");
        if (best || is_known(drawing, "vorna")) {
            rows += row(cells);
        }
    }
    return rows.empty() ? rows : heading(columns) + rows;
}

std::string Ratio_Table::drawings_markdown() const {
    std::string text;
    for (auto first = drawings_.begin(); first != drawings_.end();) {
        const auto last =
            std::find_if(first, drawings_.end(), [&](const Row& drawing) { return drawing.unit.title != first->unit.title; });
        text += table_of({first, last});
        first = last;
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
