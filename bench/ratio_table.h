// Medians as Markdown tables: drawings beside the peers, masked drawings beside open ones, fills beside memset.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace bench {

// What a drawing's rate counts.
struct Unit {
    std::string title;
    double size;
};

class Ratio_Table : public benchmark::ConsoleReporter {
public:
    // peers: in the order of the columns.
    explicit Ratio_Table(std::vector<std::string> peers) : peers_(std::move(peers)) {}

    void add_context(const std::string& name, const std::string& value) {
        context_ += (context_.empty() ? "" : "; ") + name + ": " + value;
    }
    // Measured as NAME/vorna and, where they draw it too, NAME/PEER; amount: how much one frame draws. Drawings that follow each
    // other with the same unit share a table.
    void add_drawing(std::string name, std::string title, double amount, Unit unit) {
        drawings_.push_back({std::move(name), std::move(title), amount, std::move(unit)});
    }
    // Stands in the table instead of a time.
    void add_remark(const std::string& name, std::string remark) { remarks_[name] = std::move(remark); }
    // The drawing measured as MASKED/vorna is the one measured as NAME/vorna, under a clip.
    void add_masked(std::string masked, std::string title, std::string name) {
        masked_.push_back({std::move(masked), std::move(title), std::move(name)});
    }
    // bytes: written by one iteration; unit: the fill that it is a share of.
    void add_fill(std::string name, std::string title, double bytes, std::string unit) {
        fills_.push_back({std::move(name), std::move(title), bytes, std::move(unit)});
    }

    void ReportRuns(const std::vector<Run>& runs) override;
    std::string markdown() const;

private:
    struct Row {
        std::string name, title;
        double amount;
        Unit unit;
    };

    struct Masked_Row {
        std::string name, title, open;
    };

    struct Fill_Row {
        std::string name, title;
        double bytes;
        std::string unit;
    };

    // Nothing when it was not measured.
    std::optional<double> seconds(const std::string& name) const;
    // The remark or the time.
    std::string time_cell(const std::string& name) const;
    std::string table_of(const std::vector<Row>& drawings) const; // of the same unit
    std::string drawings_markdown() const;
    std::string masked_markdown() const;
    std::string fills_markdown() const;

    std::string context_;
    std::vector<std::string> peers_;
    std::vector<Row> drawings_;
    std::vector<Masked_Row> masked_;
    std::vector<Fill_Row> fills_;
    std::map<std::string, std::string> remarks_;
    std::map<std::string, double> seconds_; // median of the processor time by name
};

} // namespace bench
