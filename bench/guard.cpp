#include "bench/guard.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace bench {

namespace {

constexpr double least_share = 0.85;

struct Ratios {
    double to_memset, to_portable;
};

// By the least times, which other work on the machine disturbs least.
Ratios ratios_of(const Result& result) {
    return {result.memset.least / result.ours.least, result.portable->least / result.ours.least};
}

// What is left of the stored ratios, by the one that fell less: memory and the portable kernels also become faster or slower.
double share_left(const Ratios& stored, const Ratios& now) {
    return std::max(now.to_memset / stored.to_memset, now.to_portable / stored.to_portable);
}

} // namespace

std::string stored_ratios(const std::vector<Result>& results) {
    nlohmann::ordered_json document;
    for (const Result& result : results) {
        if (result.failure.empty()) {
            const Ratios ratios = ratios_of(result);
            document[result.workload->name][result.kernel_set] = {{"memset", ratios.to_memset}, {"portable", ratios.to_portable}};
        }
    }
    return document.dump(1) + '\n';
}

std::vector<std::string> rows_fallen(const std::string& file, const std::vector<Result>& results, Session& session) {
    std::ifstream stream(file);
    const nlohmann::json document = nlohmann::json::parse(stream, nullptr, false);
    if (!document.is_object()) {
        throw std::runtime_error(file + ": expected a file that --store wrote");
    }
    const auto stored = [&](const Result& result) -> std::optional<Ratios> {
        try {
            const nlohmann::json& ratios = document.at(result.workload->name).at(result.kernel_set);
            return Ratios{ratios.at("memset").get<double>(), ratios.at("portable").get<double>()};
        } catch (const nlohmann::json::exception&) {
            return std::nullopt;
        }
    };
    std::vector<std::string> fallen;
    std::size_t compared = 0;
    for (const Result& result : results) {
        const std::optional<Ratios> before = stored(result);
        if (!result.failure.empty() || !before) {
            continue;
        }
        ++compared;
        double share = share_left(*before, ratios_of(result));
        if (share < least_share) {
            for (const Result& again : session.run(*result.workload)) {
                if (again.kernel_set == result.kernel_set && again.failure.empty()) {
                    share = std::max(share, share_left(*before, ratios_of(again)));
                }
            }
        }
        if (share < least_share) {
            char text[16];
            std::snprintf(text, sizeof text, "%.2f", share);
            fallen.push_back(result.workload->name + " (" + result.kernel_set + "): " + text + " of its stored rate");
        }
    }
    if (compared == 0) {
        throw std::runtime_error(file + ": expected at least one of the measured workloads and kernel sets");
    }
    return fallen;
}

} // namespace bench
