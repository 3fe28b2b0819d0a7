// Choice of the kernel set. This file is compiled for the oldest processor, since it runs before the choice.
#include "renderer/kernels/kernel_sets.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#if defined(_MSC_VER)
#include <intrin.h>
#endif

namespace krb {

#define KRB_DECLARE_SET(set)                                                                                                     \
    namespace set {                                                                                                              \
    extern const Triangle_Kernel_Table triangle_kernels;                                                                         \
    extern const Line_Kernel_Table line_kernels;                                                                                 \
    extern const Smoothed_Kernel_Table smoothed_kernels;                                                                         \
    extern const Span_Kernel_Table span_kernels;                                                                                 \
    }
#define KRB_SET(set, least_width)                                                                                                \
    { #set, least_width, &set::triangle_kernels, &set::line_kernels, &set::smoothed_kernels, &set::span_kernels }

#if defined(KRB_X86_64)
KRB_DECLARE_SET(baseline)
KRB_DECLARE_SET(avx2)
KRB_DECLARE_SET(avx512)
#elif defined(KRB_AARCH64)
KRB_DECLARE_SET(neon)
#elif defined(KRB_WASM)
KRB_DECLARE_SET(wasm)
#endif
KRB_DECLARE_SET(portable)

namespace {

struct Candidate {
    Kernel_Set set;
    bool (*supported)();
};

#if defined(KRB_X86_64)
#if defined(_MSC_VER)
// Bits that the processor reports, and bits of the registers that the operating system saves.
#if defined(__clang__)
__attribute__((target("xsave"))) // required by Clang for _xgetbv, which is called only on processors that have it
#endif
bool has_features(int leaf_1_ecx, int leaf_7_ebx, unsigned long long saved_registers) {
    int words[4];
    __cpuidex(words, 1, 0);
    if ((words[2] & leaf_1_ecx) != leaf_1_ecx) {
        return false;
    }
    if (saved_registers && ((words[2] & (1 << 27)) == 0 || (_xgetbv(0) & saved_registers) != saved_registers)) {
        return false;
    }
    __cpuidex(words, 7, 0);
    return (words[1] & leaf_7_ebx) == leaf_7_ebx;
}

bool has_baseline() {
    return has_features(1 << 20 | 1 << 19 | 1 << 9 | 1 << 23, 0, 0);
}

// With AVX2 enabled compilers may also use FMA, BMI1 and BMI2.
bool has_avx2() {
    return has_features(1 << 28 | 1 << 12, 1 << 5 | 1 << 3 | 1 << 8, 0x6);
}

bool has_avx512() {
    return has_features(1 << 28, static_cast<int>(1U << 5 | 1U << 16 | 1U << 17 | 1U << 30 | 1U << 31), 0xE6);
}
#else
bool has_baseline() {
    return __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt");
}

bool has_avx2() {
    return __builtin_cpu_supports("avx2");
}

bool has_avx512() {
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
           __builtin_cpu_supports("avx512vl");
}
#endif
#endif

bool always() {
    return true;
}

// From the best to the one that runs everywhere.
constexpr Candidate candidates[] = {
#if defined(KRB_X86_64)
    {KRB_SET(avx512, 1), has_avx512},
    {KRB_SET(avx2, 8), has_avx2},
    {KRB_SET(baseline, 4), has_baseline},
#elif defined(KRB_AARCH64)
    {KRB_SET(neon, 4), always},
#elif defined(KRB_WASM)
    {KRB_SET(wasm, 4), always}, // what cannot run it does not load the program
#endif
    {KRB_SET(portable, 1), always},
};

// Of all builds.
constexpr std::string_view known_names[] = {"portable", "baseline", "avx2", "avx512", "neon", "wasm"};

} // namespace

const Kernel_Set& chosen_kernel_set() {
    const char* forced = std::getenv("KRB_KERNELS");
    std::string names;
    for (const Candidate& candidate : candidates) {
        if (!forced || std::string_view(forced) == candidate.set.name) {
            if (candidate.supported()) {
                return candidate.set;
            }
            if (forced) {
                throw std::invalid_argument("KRB_KERNELS: this processor cannot run the kernel set '" + std::string(forced) +
                                            "'");
            }
        }
        names.insert(0, std::string(names.empty() ? "" : ", ").insert(0, candidate.set.name));
    }
    const bool is_known = std::find(std::begin(known_names), std::end(known_names), forced) != std::end(known_names);
    throw std::invalid_argument(std::string("KRB_KERNELS: ") +
                                (is_known ? "this build cannot run the kernel set '" : "there is no kernel set '") + forced +
                                "', expected one of: " + names);
}

const Kernel_Set& portable_kernel_set() noexcept {
    return std::end(candidates)[-1].set;
}

std::vector<const Kernel_Set*> supported_kernel_sets() {
    std::vector<const Kernel_Set*> sets;
    for (const Candidate& candidate : candidates) {
        if (candidate.supported()) {
            sets.push_back(&candidate.set);
        }
    }
    return sets;
}

} // namespace krb
