// Called where the noted readers' functions begin and end.
#include "tests/fuzz/reach.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <sys/mman.h>

namespace {

constexpr std::uintptr_t most_functions = 1 << 14; // and a power of two

// Shared with copies, in which foreign libraries read.
std::atomic<std::uintptr_t>* const noted = [] {
    void* const memory =
        mmap(nullptr, most_functions * sizeof(std::uintptr_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : static_cast<std::atomic<std::uintptr_t>*>(memory);
}();
std::atomic<bool> is_noting{false};

} // namespace

extern "C" {

extern const char __executable_start;

void __cyg_profile_func_enter(void* function, void*) {
    if (!is_noting.load(std::memory_order_relaxed) || !noted) {
        return;
    }
    const auto address = reinterpret_cast<std::uintptr_t>(function);
    for (std::uintptr_t place = address / 4;; ++place) {
        std::atomic<std::uintptr_t>& entry = noted[place % most_functions];
        std::uintptr_t before = 0;
        if (entry.compare_exchange_strong(before, address) || before == address) {
            return;
        }
    }
}

void __cyg_profile_func_exit(void*, void*) {
}
}

Reach_Notes::Reach_Notes() noexcept {
    is_noting = true;
}

Reach_Notes::~Reach_Notes() {
    is_noting = false;
}

void Reach_Notes::write(const char* file) {
    std::FILE* const out = std::fopen(file, "w");
    for (std::uintptr_t i = 0; out && noted && i < most_functions; ++i) {
        if (const std::uintptr_t address = noted[i]) {
            std::fprintf(out, "%016zx\n", address - reinterpret_cast<std::uintptr_t>(&__executable_start));
        }
    }
    if (!out || std::fclose(out) != 0) {
        std::perror(file);
        std::exit(1);
    }
}
