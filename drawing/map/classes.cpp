// Classes of numbers.
#include "drawing/map/classes.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vorna::drawing::map {
namespace {

constexpr std::size_t most_exact = 2000;

// Different values in increasing order with the number of their occurrences.
struct Counted {
    double value;
    double count;
};

std::vector<Counted> counted(const std::vector<double>& sorted) {
    std::vector<Counted> list;
    for (const double value : sorted) {
        if (list.empty() || list.back().value != value) {
            list.push_back({value, 0});
        }
        ++list.back().count;
    }
    return list;
}

// Optimal classes by dynamic programming over prefixes: W. D. Fisher, "On grouping for maximum homogeneity", 1958, whose method
// G. F. Jenks used for maps. least[i] is the smallest sum of squared deviations of the first i values in so many classes.
std::vector<double> natural_limits(const std::vector<Counted>& all, std::size_t classes) {
    std::vector<Counted> list;
    const std::size_t n = std::min(all.size(), most_exact);
    for (std::size_t i = 0; i < n; ++i) {
        list.push_back(all[n == all.size() ? i : i * (all.size() - 1) / (n - 1)]);
    }
    // Sums of counts, values and squares before each value. Values relative to the middle one keep digits, and their squares stay
    // finite as shares of the largest.
    std::vector<double> weight(n + 1), sum(n + 1), squares(n + 1);
    const double scale = std::max(std::abs(list.front().value), std::abs(list.back().value)), middle = list[n / 2].value / scale;
    for (std::size_t i = 0; i < n; ++i) {
        const double v = list[i].value / scale - middle, count = list[i].count;
        weight[i + 1] = weight[i] + count;
        sum[i + 1] = sum[i] + count * v;
        squares[i + 1] = squares[i] + count * v * v;
    }
    const auto deviation = [&](std::size_t first, std::size_t end) {
        const double total = sum[end] - sum[first];
        return squares[end] - squares[first] - total * total / (weight[end] - weight[first]);
    };
    std::vector<double> least(n + 1, INFINITY);
    least[0] = 0;
    std::vector<std::vector<std::size_t>> starts;
    for (std::size_t k = 0; k < classes; ++k) {
        std::vector<double> next(n + 1, INFINITY);
        std::vector<std::size_t>& start = starts.emplace_back(n + 1);
        for (std::size_t end = k + 1; end <= n; ++end) {
            for (std::size_t first = k; first < end; ++first) {
                if (const double found = least[first] + deviation(first, end); found < next[end]) {
                    next[end] = found;
                    start[end] = first;
                }
            }
        }
        least = std::move(next);
    }
    std::vector<double> limits;
    for (std::size_t k = classes, end = n; k-- > 1;) {
        end = starts[k][end];
        limits.push_back(list[end - 1].value);
    }
    std::ranges::reverse(limits);
    return limits;
}

} // namespace

std::optional<Class_Method> class_method_of(const std::string& name) {
    for (const auto& [known, method] :
         {std::pair("quantiles", Class_Method::quantiles), {"equal", Class_Method::equal}, {"natural", Class_Method::natural}}) {
        if (name == known) {
            return method;
        }
    }
    return std::nullopt;
}

std::vector<double> class_limits(std::vector<double> values, Class_Method method, std::size_t count) {
    std::ranges::sort(values);
    const std::vector<Counted> list = counted(values);
    count = std::min(count, list.size());
    std::vector<double> limits;
    if (count < 2) {
        return limits;
    }
    if (method == Class_Method::natural) {
        return natural_limits(list, count);
    }
    const double least = values.front(), most = values.back();
    for (std::size_t i = 1; i < count; ++i) {
        const double share = static_cast<double>(i) / static_cast<double>(count);
        const double limit = method == Class_Method::equal ? least * (1 - share) + most * share
                                                           : values[(i * values.size() + count - 1) / count - 1];
        if (limit < most && (limits.empty() || limit > limits.back())) {
            limits.push_back(limit);
        }
    }
    return limits;
}

std::size_t class_of(double value, const std::vector<double>& limits) {
    return static_cast<std::size_t>(std::ranges::lower_bound(limits, value) - limits.begin());
}

} // namespace vorna::drawing::map
