// The options of a command as a table.
#include "app/cli/options.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <utility>

#include "app/cli/nearest_name.h"
#include "drawing/files/path.h"
#include "drawing/files/usage_error.h"
#include "drawing/job/formats.h"

namespace vorna::app {
namespace {

template <class Number> std::string text_of(Number number) {
    std::array<char, 32> text;
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

template <class Number> Value bounded_value(const std::string& word, Number least, Number most, const char* kind) {
    const std::string from = text_of(least), to = text_of(most);
    const auto problem = [=](const std::string& text) -> std::string {
        const char* const end = text.data() + text.size();
        Number number{};
        const auto [stop, error] = std::from_chars(text.data(), end, number);
        if (error == std::errc{} && stop == end && number >= least && number <= most) {
            return {};
        }
        return std::string("expected a ") + kind + " from " + from + " to " + to + ", found '" + text + "'";
    };
    return {.word = word, .range = from + " to " + to, .problem = problem};
}

bool contains(const std::vector<std::string>& names, const std::string& name) {
    return std::ranges::find(names, name) != names.end();
}

} // namespace

bool Given::has(std::string_view name) const {
    return std::ranges::find(names, name) != names.end();
}

Value text_value(std::string word) {
    return {.word = std::move(word)};
}

Value suggested_value(std::string word, std::vector<std::string> choices) {
    return {.word = std::move(word), .choices = std::move(choices)};
}

Value choice_value(std::string word, std::vector<std::string> choices) {
    const auto problem = [choices](const std::string& text) {
        return contains(choices, text) ? std::string()
                                       : "expected " + list_of(choices) + ", found '" + text + "'" + nearest_name(text, choices);
    };
    return {.word = std::move(word), .choices = std::move(choices), .problem = problem};
}

Value whole_value(const std::string& word, std::int64_t least, std::int64_t most) {
    return bounded_value(word, least, most, "whole number");
}

Value number_value(const std::string& word, double least, double most) {
    return bounded_value(word, least, most, "number");
}

Value output_value(std::string word, std::vector<std::string> endings) {
    static const std::vector<std::string> known{// besides the formats that can be read
                                                "png",  "jpg", "jpeg", "gif", "bmp", "tif",  "tiff", "webp", "svg",  "pdf",
                                                "ps",   "eps", "ppm",  "pgm", "pnm", "tga",  "exr",  "hdr",  "avif", "jxl",
                                                "heic", "ico", "qoi",  "gz",  "zst", "cbor", "zip",  "mtl",  "xml",  "txt"};
    const auto problem = [endings = std::move(endings)](const std::string& text) -> std::string {
        std::string ending = drawing::path_of(text).extension().string();
        ending.erase(0, 1); // the dot
        std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        const bool is_known = contains(known, ending) || drawing::find_format(ending);
        if (!is_known || contains(endings, ending)) {
            return {};
        }
        std::vector<std::string> shown = endings;
        std::ranges::for_each(shown, [](std::string& name) { name.insert(0, "."); });
        return "expected a name that ends in " + list_of(shown) + ", found '" + text + "'";
    };
    return {.word = std::move(word), .problem = problem};
}

Value optional_value(std::string bare, Value value) {
    value.bare = std::move(bare);
    return value;
}

Option memory_option(std::string& text) {
    return {.names = {"--max-memory"},
            .value = text_value("SIZE"),
            .text = "Memory to get along with, such as 512M or 2G; bytes without K, M, G or T. By default 1G, or 64 times what "
                    "the files have if that is more",
            .target = &text};
}

void reject_options_of_other_kind(const Given& given, bool is_map, const std::string& input) {
    const Applies_To other = is_map ? Applies_To::models : Applies_To::maps;
    for (const Option& option : given.command->options) {
        if (option.applies_to == other && given.has(option.names.back())) {
            throw drawing::Usage_Error(option.names.back() +
                                       (is_map ? ": expected a model, found " : ": expected a map or drawing, found ") + input);
        }
    }
}

Option& option_named(std::vector<Option>& table, std::string_view name) {
    return *std::ranges::find(table, name, [](const Option& option) { return std::string_view(option.names.back()); });
}

std::string list_of(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += (i == 0 ? "" : i + 1 < names.size() ? ", " : " or ") + names[i];
    }
    return text;
}

} // namespace vorna::app
