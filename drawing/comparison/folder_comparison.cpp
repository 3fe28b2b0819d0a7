// Two folders of images, compared.
#include "drawing/comparison/folder_comparison.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "drawing/files/helpers.h"
#include "drawing/files/path.h"
#include "drawing/image/stored_image.h"

namespace vorna::drawing::comparison {

namespace {

namespace fs = std::filesystem;

// As path_of reads it.
std::string text_of(const fs::path& path) {
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

std::string file_in(const std::string& folder, const std::string& name) {
    return folder.ends_with('/') ? folder + name : folder + '/' + name;
}

// The images in a folder and below it, by their paths from there, sorted.
std::vector<std::string> images_in(const std::string& folder, std::size_t& other_files, Load_Limits& limits) {
    const auto refuse = [&](const std::error_code& error) { throw Usage_Error(folder + ": cannot be read: " + error.message()); };
    std::vector<std::string> names;
    std::error_code error;
    const fs::path root = path_of(folder);
    fs::recursive_directory_iterator entries(root, error);
    for (; !error && entries != fs::recursive_directory_iterator(); entries.increment(error)) {
        std::error_code unknown; // a link to nothing is not an image
        if (!entries->is_regular_file(unknown)) {
            continue;
        }
        const std::string name = text_of(entries->path().lexically_relative(root));
        if (!is_image_name(name)) {
            ++other_files;
            continue;
        }
        constexpr std::size_t result_bytes = 512;
        limits.take_memory(folder, name.size() + result_bytes);
        names.push_back(name);
    }
    if (error) {
        refuse(error);
    }
    std::ranges::sort(names);
    return names;
}

Pair_Result lonely(const std::string& name, const std::string& file, Verdict verdict, const Report& report) {
    Pair_Result result;
    result.name = name;
    result.verdict = verdict;
    const bool is_missing = verdict == Verdict::missing;
    (is_missing ? result.paths.first : result.paths.second) = file;
    result.text = is_missing ? "missing: it is in " + report.first + " alone" : "extra: it is in " + report.second + " alone";
    return result;
}

std::string mask_for(const std::string& mask, const std::string& name) {
    std::error_code unknown;
    if (mask.empty() || !fs::is_directory(path_of(mask), unknown)) {
        return mask;
    }
    const std::string file = file_in(mask, name);
    return fs::exists(path_of(file), unknown) ? file : "";
}

} // namespace

std::size_t Report::count_of(Verdict verdict) const {
    return static_cast<std::size_t>(
        std::ranges::count_if(pairs, [verdict](const Pair_Result& pair) { return pair.verdict == verdict; }));
}

bool Report::is_same() const {
    return count_of(Verdict::same) + count_of(Verdict::near) == pairs.size();
}

Report compare_folders(const std::string& first, const std::string& second, const Folder_Settings& settings) {
    constexpr std::uint64_t usual_memory = std::uint64_t{1} << 30, thread_memory = std::uint64_t{1} << 28;
    Report report{first, second, settings.accepted, {}, 0};
    Load_Limits names_limits(settings.memory);
    const std::vector<std::string> in_first = images_in(first, report.other_files, names_limits);
    const std::vector<std::string> in_second = images_in(second, report.other_files, names_limits);
    std::vector<std::string> names;
    std::ranges::set_union(in_first, in_second, std::back_inserter(names));
    if (names.empty()) {
        throw Usage_Error(first + ": expected images in it or in " + second + ", found none");
    }
    const auto is_in = [](const std::vector<std::string>& folder, const std::string& name) {
        return std::ranges::binary_search(folder, name);
    };
    report.pairs.resize(names.size());
    const auto compare_one = [&](std::size_t i, std::optional<std::uint64_t> memory) {
        const std::string& name = names[i];
        if (!is_in(in_second, name)) {
            report.pairs[i] = lonely(name, file_in(first, name), Verdict::missing, report);
        } else if (!is_in(in_first, name)) {
            report.pairs[i] = lonely(name, file_in(second, name), Verdict::extra, report);
        } else {
            Load_Limits limits(memory);
            const Pair_Paths paths{file_in(first, name), file_in(second, name), mask_for(settings.mask, name)};
            report.pairs[i] = compare(name, paths, settings.accepted, limits);
        }
    };
    const std::uint64_t threads_at_most =
        settings.memory ? std::max<std::uint64_t>(1, *settings.memory / thread_memory) : settings.threads;
    const auto threads = static_cast<unsigned>(std::clamp<std::uint64_t>(settings.threads, 1, threads_at_most));
    const std::uint64_t memory = settings.memory.value_or(std::max(usual_memory, threads * thread_memory));
    share_tasks(names.size(), threads, [&](std::size_t i, std::size_t) {
        compare_one(i, threads == 1 ? settings.memory : std::optional(memory / threads));
    });
    // Images that do not fit into a thread's share of the memory are compared one pair at a time.
    for (std::size_t i = 0; threads > 1 && i < names.size(); ++i) {
        if (report.pairs[i].verdict == Verdict::unreadable) {
            Interruption::check();
            compare_one(i, settings.memory);
        }
    }
    return report;
}

} // namespace vorna::drawing::comparison
