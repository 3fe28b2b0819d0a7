// Options whose values are names of something else, and numbers as their texts.
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <utility>
#include <vector>

#include "app/cli/options.h"

namespace vorna::app {

// The first one is the default.
template <class Value> using Choices = std::vector<std::pair<std::string, Value>>;

template <class Chosen>
Option choice(const char* name, Chosen& target, const char* text, const Choices<Chosen>& choices, const char* word) {
    std::vector<std::string> names;
    names.reserve(choices.size());
    for (const auto& [known, value] : choices) {
        names.push_back(known);
    }
    const auto choose = [&target, &choices](const std::string& given) {
        target = std::ranges::find(choices, given, [](const auto& known) { return known.first; })->second;
    };
    return {.names = {name}, .value = choice_value(word, names), .text = text, .target = choose, .by_default = names.front()};
}

template <class Value> const std::string& name_of(const Value& value, const Choices<Value>& choices) {
    return std::ranges::find(choices, value, [](const auto& known) { return known.second; })->first;
}

// A number that reads back as the same.
inline std::string text_of(double number) {
    std::array<char, 32> text;
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

} // namespace vorna::app
