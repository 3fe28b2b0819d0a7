// Classes of numbers.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vorna::drawing::map {

enum class Class_Method {
    quantiles, // as many values in each class
    equal,     // the same width of each class
    natural,   // the smallest sum of squared deviations from the classes' means
};

// Null for another name.
std::optional<Class_Method> class_method_of(const std::string& name);

// The upper limits of all classes but the last, increasing; a value belongs to the first class whose limit is not below it. Fewer
// than `count` classes where there are fewer different values. values: finite, in any order.
//
// Natural classes are exact for up to 2000 different values; of more, 2000 at equal ranks stand for all.
std::vector<double> class_limits(std::vector<double> values, Class_Method method, std::size_t count);

// The class of a value, from 0.
std::size_t class_of(double value, const std::vector<double>& limits);

} // namespace vorna::drawing::map
