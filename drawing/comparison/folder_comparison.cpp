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

struct Folder_Content {
    std::vector<std::string> images;     // by their paths from the folder, sorted
    std::vector<Pair_Result> unreadable; // folders below it
    std::size_t other_files = 0;
};

// The images in a folder and below it.
Folder_Content content_of(const std::string& folder, Load_Limits& limits) {
    constexpr std::size_t result_bytes = 512;
    Folder_Content content;
    const fs::path root = path_of(folder);
    std::vector<fs::path> left{root};
    while (!left.empty()) {
        const fs::path here = std::move(left.back());
        left.pop_back();
        std::error_code error;
        for (fs::directory_iterator entries(here, error); !error && entries != fs::directory_iterator();
             entries.increment(error)) {
            std::error_code unknown; // a link to nothing is not an image
            const std::string name = text_of(entries->path().lexically_relative(root));
            if (entries->is_directory(unknown) && !entries->is_symlink(unknown)) {
                limits.take_memory(folder, name.size() + result_bytes);
                left.push_back(entries->path());
            } else if (entries->is_regular_file(unknown) && !is_image_name(name)) {
                ++content.other_files;
            } else if (entries->is_regular_file(unknown)) {
                limits.take_memory(folder, name.size() + result_bytes);
                content.images.push_back(name);
            }
        }
        if (error && here == root) {
            throw Usage_Error(folder + ": cannot be read: " + error.message());
        }
        if (error) {
            Pair_Result& result = content.unreadable.emplace_back();
            result.name = text_of(here.lexically_relative(root)) + '/';
            result.text = file_in(folder, result.name) + ": cannot be read: " + error.message();
        }
    }
    std::ranges::sort(content.images);
    return content;
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
    Folder_Content content_of_first = content_of(first, names_limits), content_of_second = content_of(second, names_limits);
    report.other_files = content_of_first.other_files + content_of_second.other_files;
    const std::vector<std::string>&in_first = content_of_first.images, &in_second = content_of_second.images;
    std::vector<std::string> names;
    std::ranges::set_union(in_first, in_second, std::back_inserter(names));
    std::vector<Pair_Result> unreadable = std::move(content_of_first.unreadable);
    std::ranges::move(content_of_second.unreadable, std::back_inserter(unreadable));
    if (names.empty() && unreadable.empty()) {
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
    std::ranges::move(unreadable, std::back_inserter(report.pairs));
    std::ranges::stable_sort(report.pairs, {}, &Pair_Result::name);
    return report;
}

} // namespace vorna::drawing::comparison
