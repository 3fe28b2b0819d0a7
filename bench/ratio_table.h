// Medians as Markdown tables: drawings beside the peer, masked drawings beside open ones, fills beside memset.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace bench {

class Ratio_Table : public benchmark::ConsoleReporter {
public:
    void add_context(const std::string& name, const std::string& value) {
        context_ += (context_.empty() ? "" : "; ") + name + ": " + value;
    }
    // Measured as NAME/vorna and, where the peer draws it too, NAME/llvmpipe.
    void add_drawing(std::string name, std::string title, std::int64_t triangles) {
        drawings_.push_back({std::move(name), std::move(title), static_cast<double>(triangles)});
    }
    // The drawing measured as MASKED/vorna is the one measured as NAME/vorna, under a clip.
    void add_masked(std::string masked, std::string title, std::string name) {
        masked_.push_back({std::move(masked), std::move(title), std::move(name)});
    }
    // bytes: written by one iteration; unit: the fill that counts as 1.
    void add_fill(std::string name, std::string title, double bytes, std::string unit) {
        fills_.push_back({std::move(name), std::move(title), bytes});
        units_.push_back(std::move(unit));
    }

    void ReportRuns(const std::vector<Run>& runs) override;
    std::string markdown() const;

private:
    struct Row {
        std::string name, title;
        double amount;
    };

    struct Masked_Row {
        std::string name, title, open;
    };

    // Bytes a second; 0 when it was not measured.
    double rate(const Row& fill) const;

    std::string context_;
    std::vector<Row> drawings_, fills_;
    std::vector<Masked_Row> masked_;
    std::vector<std::string> units_;
    std::map<std::string, double> seconds_; // median of the processor time by name
};

} // namespace bench
