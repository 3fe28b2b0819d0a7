// Numbers with a fraction that options take.
#pragma once

#include <CLI/CLI.hpp>
#include <cmath>

namespace app {

// As CLI::Range, which lets what is no number pass, because no comparison holds for it.
inline CLI::Validator number_range(double least, double most) {
    CLI::Range range(least, most);
    CLI::Validator validator = range;
    return validator.operation([range](std::string& text) {
        double number = 0;
        return CLI::detail::lexical_cast(text, number) && std::isnan(number) ? "Value " + text + " is no number" : range(text);
    });
}

} // namespace app
