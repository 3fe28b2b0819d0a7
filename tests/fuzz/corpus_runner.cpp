// Runs a fuzzer as an ordinary test: over all files of folders, and over changed copies of each.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "app/check/random.h"
#include "tests/fuzz/fuzzing.h"

#if defined(HAS_MUTATOR)
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed);
#endif
#if defined(NOTES_REACH)
#include "tests/fuzz/reach.h"
#endif

// Cuts off, removes, repeats or changes bytes. The name is what fuzzers with mutators of their own expect.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most) {
    static vorna::app::check::Random random(1);
    const auto place = [&] { return static_cast<std::size_t>(random.number(0, static_cast<std::int32_t>(size) - 1)); };
    switch (size == 0 ? 0 : random.number(1, 5)) {
    case 1:
        return place();
    case 2: {
        const std::size_t from = place(), to = std::min(size, from + 1 + place() % 16);
        std::memmove(data + from, data + to, size - to);
        return size - (to - from);
    }
    case 3: {
        const std::size_t from = place(), count = std::min({size - from, most - size, 1 + place() % 64});
        std::memmove(data + from + count, data + from, size - from);
        return size + count;
    }
    case 4:
        data[place()] = random.byte();
        return size;
    case 5:
        data[place()] ^= static_cast<std::uint8_t>(1U << random.number(0, 7));
        return size;
    default:
        return 0;
    }
}

namespace {

constexpr std::size_t largest_input = 1 << 16;

int changes_of_each() {
    const char* const scale = std::getenv("VORNA_TEST_SCALE");
    return static_cast<int>(50 * (scale ? std::atof(scale) : 1));
}

std::size_t changed(std::vector<std::uint8_t>& input, std::size_t size, [[maybe_unused]] int change) {
#if defined(HAS_MUTATOR)
    return LLVMFuzzerCustomMutator(input.data(), size, input.size(), static_cast<unsigned>(change));
#else
    return LLVMFuzzerMutate(input.data(), size, input.size());
#endif
}

void run(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::vector<std::uint8_t> input{std::istreambuf_iterator<char>(stream), {}};
    // The last line tells which input was the fatal one.
    std::printf("%s\n", file.filename().string().c_str());
    std::fflush(stdout);
    {
#if defined(NOTES_REACH)
        const Reach_Notes notes;
#endif
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    if (input.size() > largest_input) {
        return;
    }
    constexpr int most_in_a_row = 3; // changes of changed inputs, which are soon refused at their beginning
    const std::vector<std::uint8_t> original = input;
    std::size_t size = 0;
    for (int i = 0; i < changes_of_each(); ++i) {
        if (i % most_in_a_row == 0) {
            input = original;
            size = input.size();
            input.resize(largest_input);
        }
        size = changed(input, size, i);
        // A copy of its own, so that memory checkers see its end.
        const std::vector<std::uint8_t> copy(input.begin(), input.begin() + static_cast<std::ptrdiff_t>(size));
        LLVMFuzzerTestOneInput(copy.data(), copy.size());
    }
}

} // namespace

int main(int count, char** arguments) {
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < count; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(arguments[i])) {
            if (entry.is_regular_file()) {
                files.push_back(entry.path());
            }
        }
    }
    std::ranges::sort(files);
    std::ranges::for_each(files, run);
#if defined(NOTES_REACH)
    if (const char* const file = std::getenv("VORNA_REACH")) {
        Reach_Notes::write(file);
    }
#endif
    std::printf("%zu inputs and %d changed copies of each\n", files.size(), changes_of_each());
    return files.empty() ? 1 : 0;
}
