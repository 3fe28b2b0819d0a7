// Two folders of images, compared.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "drawing/comparison/image_pair.h"

namespace vorna::drawing::comparison {

// What was compared: two files or two folders.
struct Report {
    std::string first, second; // as they were given
    Accepted accepted;
    std::vector<Pair_Result> pairs; // in the order of their names' bytes
    std::size_t other_files = 0;    // that are not images, in both folders

    std::size_t count_of(Verdict verdict) const;
    // Whether every pair is the same or near enough.
    bool is_same() const;
};

struct Folder_Settings {
    Accepted accepted;
    std::string mask;                    // a file for all images, or a folder with masks of their names; empty = none
    std::optional<std::uint64_t> memory; // bytes that reading may take at a time; none = 1 GiB, or 256 MiB a thread
    unsigned threads = 1;
};

// Compares images that have the same name in both folders and the folders below them; links to folders are not followed. Files
// count as images by the endings of their names. The result does not depend on the number of threads. Throws Usage_Error when a
// folder cannot be read, and when there is no image in either.
Report compare_folders(const std::string& first, const std::string& second, const Folder_Settings& settings);

} // namespace vorna::drawing::comparison
