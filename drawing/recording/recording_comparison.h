// Two recordings, compared as documents and as what they draw.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "drawing/recording/document_comparison.h"
#include "drawing/recording/pixel_comparison.h"

namespace vorna::drawing::recording {

struct Recording_Difference {
    std::size_t calls[2] = {}; // of both
    Document_Difference documents;
    std::optional<Pixel_Difference> pixels;

    // Whether the documents say the same; then the pixels are the same as well.
    bool is_same() const { return documents.setup.empty() && !documents.call; }
};

// Replays only recordings that differ, with the module that the function gives. Throws Replay_Failure.
Recording_Difference compare(const Recording& a, const Recording& b, const std::function<Module_Choice()>& module);

// A line for each of: values of the set-up, the first call that differs, the first call after which pixels differ.
std::string text_of(const Recording_Difference& difference);

// JSON; docs/comparing.md lists the keys. first, second: the files.
std::string json_of(const Recording_Difference& difference, const std::string& first, const std::string& second);

} // namespace vorna::drawing::recording
