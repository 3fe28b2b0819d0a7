// What reading files may cost, and which files may be read.
#include "drawing/files/load_limits.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "drawing/files/memory.h"
#include "drawing/files/path.h"
#include "drawing/files/setting_names.h"

namespace vorna::drawing {

void Load_Limits::add_file(const std::string& file, std::uint64_t size) {
    constexpr std::uint64_t most = std::uint64_t{1} << 40; // products stay in range
    if (files_.insert(file).second) {
        size_ = std::min(size_ + std::min(size, most), most);
    }
}

std::uint64_t Load_Limits::memory_left() const noexcept {
    const std::uint64_t taken = taken_, all = memory();
    return taken < all ? all - taken : 0;
}

// What was refused is not taken.
void Load_Limits::fail_memory(const std::string& file, std::uint64_t bytes) {
    taken_ -= bytes;
    throw Load_Error(memory_refusal(file));
}

std::string Load_Limits::memory_refusal(const std::string& file) const {
    return file + ": expected what can be read within " + memory_text(memory()) + " of memory, found more; " +
           name_of(Setting::max_memory) + " sets how much";
}

void Load_Limits::fail_work(const std::string& file, std::uint64_t steps) {
    worked_ -= steps;
    throw Load_Error(file + ": expected what can be read in " + std::to_string(work() / 1000000) +
                     " million steps, found more; a larger " + name_of(Setting::max_memory) + " than " + memory_text(memory()) +
                     " allows more");
}

std::string outside_message(const std::string& file) {
    return file + ": lies outside the model's folder and is not read; " + name_of(Setting::outside_of_folder) + " reads it";
}

bool Load_Limits::allows(const std::string& model, const std::string& file) const {
    if (outside_) {
        return true;
    }
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path folder = fs::weakly_canonical(fs::absolute(path_of(model), error).parent_path(), error);
    if (error) {
        return false;
    }
    const fs::path named = fs::weakly_canonical(fs::absolute(path_of(file), error), error);
    return !error && std::mismatch(folder.begin(), folder.end(), named.begin(), named.end()).first == folder.end();
}

} // namespace vorna::drawing
